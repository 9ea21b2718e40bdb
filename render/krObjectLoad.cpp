// Loading objects from mesh and split-tree files: the tree of objects and splits, the meshes
// with their vertices, weights, faces and materials, and the load-time events that let a script
// change materials and replace sub-objects while the file is read.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/krMain.h"
#include "core/krMatrix.h"
#include "platform/krSystem.h"
#include "render/krMesh.h"
#include "render/krMeshReader.h"
#include "render/krObject.h"
#include "render/krSkeleton.h"
#include "render/krSplit.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

// A load runs to its end before anything else happens in the process, so its state can be
// process-wide. The scale applies to the file being read; nested loads set their own.
krVector3 loadScale = krVector3::one;
// Leaves read by all loads together; every 16th tells the scripts how far the load has come.
uint32_t leafCounter = 0;
constexpr uint32_t loadingReportMask = 15;
// Files being read, outermost first. A leaf naming a file on this list would load forever.
std::vector<std::string> filesLoading;
// Nested files (leaves whose files hold leaves) deeper than any level a scene is built from;
// with the nesting inside each file this bounds the stack a load can take.
constexpr size_t maxNestedFiles = 16;

krQuat toQuat(const float (&q)[4]) { return {q[0], q[1], q[2], q[3]}; }
krVector3 toVector(const float (&v)[3]) { return {v[0], v[1], v[2]}; }

// An object that a "subObj_" handler may hand back: a live object that is not this one or one
// of its owners, since loading into those would make the tree a cycle.
krObject* replacementFrom(krVariant* value, krObject* loading) {
    if (!value) return nullptr;
    auto* object = dynamic_cast<krObject*>(krScriptObject::fromHandle(value->toInt()));
    value->release();
    for (krModule* m = loading; m && object; m = m->getOwner())
        if (m == object) return nullptr;
    return object;
}

// The mesh file's arrays sit where the chunks put them; a hostile file can put them where the
// processor may not read them in place, and then they are copied.
template <typename T>
T* placeArray(void* raw, uint32_t count, std::vector<T>& copy) {
    if (reinterpret_cast<uintptr_t>(raw) % alignof(T) == 0) return static_cast<T*>(raw);
    copy.resize(count);
    if (count) std::memcpy(copy.data(), raw, sizeof(T) * count);
    return nullptr;
}

}  // namespace

void krObject::loadFromFile(const std::string& fileName, float scale) {
    krMeshReader reader(fileName);
    readFile(reader, scale);
}

void krObject::loadFromMemory(const std::string& fileName, const void* bytes, uint32_t count) {
    krMeshReader reader(fileName, bytes, count);
    readFile(reader, 0);
}

void krObject::readFile(krMeshReader& reader, float scale) {
    const std::string& fileName = reader.getName();
    krMain* root = krMain::instance();
    if (std::find(filesLoading.begin(), filesLoading.end(), fileName) != filesLoading.end()) {
        if (root) root->errorMsg("Mesh file '" + fileName + "' contains itself");
        return;
    }
    if (filesLoading.size() >= maxNestedFiles || krSystem::stackLow()) {
        if (root) root->errorMsg("Mesh files nested too deep at '" + fileName + "'");
        return;
    }
    // Handlers of the load may delete this object; it stays in memory until the load is over.
    addRef();
    filesLoading.push_back(fileName);

    dropScript();
    const size_t slash = fileName.rfind('/');
    if (slash != std::string::npos) path = fileName.substr(0, slash + 1);
    const size_t dot = fileName.rfind('.');
    const bool extension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    loadScript(extension ? fileName.substr(0, dot + 1) + "script" : fileName + ".script");

    const krVector3 outerScale = loadScale;
    loadScale = scale != 0 ? krVector3(scale, scale, scale) : krVector3::one;
    krChunk chunk;
    if (!closed && reader.first(chunk)) {
        if (chunk.id == krMeshFile::objectId) readRootObject(reader, chunk, true);
        else if (chunk.id == krMeshFile::splitTreeId) readObjectTree(reader, chunk);
    }
    loadScale = outerScale;
    // A skeleton may come before or after the meshes; either way the bones they name are computed.
    if (krSkeleton* s = getSkeleton(); s && !closed) s->bind(this, true);

    filesLoading.pop_back();
    release();
}

void krObject::readRootObject(krMeshReader& reader, krChunk& chunk, bool top) {
    krMeshFile::ObjectHeader header;
    if (reader.record(chunk, header, "object header")) readObject(reader, chunk, header, top);
}

void krObject::readObject(krMeshReader& reader, krChunk& chunk, const krMeshFile::ObjectHeader& header, bool top) {
    if (!top) {
        position = toVector(header.position);
        rotation = toQuat(header.rotation);
    }
    updateMatrix();
    name = krMeshFile::getName(header.name);
    box.makeEmpty();
    localBox.makeEmpty();
    radius = 0;

    krChunk sub;
    while (!closed && reader.next(chunk, sub)) {
        if (krMeshFile::isMeshId(sub.id)) readMesh(reader, sub);
        else if (sub.id == krMeshFile::objectId) readSubObject(reader, sub);
        reader.skip(sub);
    }

    initialPosition = position;
    initialRotation = rotation;
    // A hundred times the side of a square as large as the biggest face of the box.
    const krVector3 s = localBox.size();
    maxDrawDistance = 100 * std::sqrt(std::max({s.x * s.y, s.x * s.z, s.y * s.z}));
    if (top) onLoaded();
}

void krObject::readSubObject(krMeshReader& reader, krChunk& chunk) {
    krMeshFile::ObjectHeader header;
    if (!reader.record(chunk, header, "sub-object header")) return;
    if (reader.depth >= krMeshReader::maxNesting) {
        reader.damaged("objects nested too deep");
        return;
    }
    const std::string subName = krMeshFile::getName(header.name);
    krObject* target = getEventTarget();
    krObject* sub = replacementFrom(target->fireEvent("subObj_" + subName, noArgs), this);
    if (!sub) sub = createChild(1, this);
    if (!sub) return;
    sub->addRef();
    sub->setEventTarget(this);
    sub->sortAlpha = sortAlpha;
    sub->path = path;
    sub->setVisible(true);
    ++reader.depth;
    sub->readObject(reader, chunk, header, false);
    --reader.depth;

    auto* value = new krVObject(sub);
    if (krVariant* r = getEventTarget()->fireEvent("loaded_" + subName, {value})) r->release();
    value->release();
    sub->onLoaded();
    containObject(*sub);
    sub->release();
}

void krObject::readMesh(krMeshReader& reader, krChunk& chunk) {
    krMesh mesh;
    mesh.kind = krMeshFile::meshKind(chunk.id);
    krChunk sub;
    while (!closed && reader.next(chunk, sub)) {
        switch (sub.id) {
        case krMeshFile::verticesId: readVertices(reader, sub, mesh); break;
        case krMeshFile::facesId: readFaces(reader, sub, mesh); break;
        case krMeshFile::materialsId: readMaterials(reader, sub, mesh); break;
        default: break;
        }
        reader.skip(sub);
    }
    if (closed) return;
    if (const char* wrong = mesh.inconsistency()) {
        reader.damaged(wrong);
        return;
    }
    addMesh(mesh);
}

void krObject::readVertices(krMeshReader& reader, krChunk& chunk, krMesh& mesh) {
    uint32_t count;
    if (!reader.count(chunk, count, "vertices")) return;
    if (count > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
        reader.damaged("vertex count out of range");
        return;
    }
    void* raw = reader.array(chunk, count, sizeof(krVertex), "vertices");
    if (!raw) return;
    std::vector<krVertex> copy;
    if (krVertex* inPlace = placeArray(raw, count, copy)) {
        mesh.vertices = inPlace;
        mesh.vertexCount = static_cast<int32_t>(count);
    } else {
        mesh.ownVertices(std::move(copy));
    }
    mesh.weights.clear();

    krChunk sub;
    while (reader.next(chunk, sub)) {
        if (sub.id == krMeshFile::weightsId) readWeights(reader, sub, mesh);
        reader.skip(sub);
    }

    for (int32_t i = 0; i < mesh.vertexCount; ++i) {
        krVector3& p = mesh.vertices[i].position;
        p = multiply(p, loadScale);
        box.extend(transformPoint(matrix, p));
        localBox.extend(p);
        radius = std::max(radius, length(p));
    }
    // A skinned mesh keeps its bind pose in the space of its owner, where the skeleton is.
    if (mesh.hasWeights()) {
        const krMatrix pose = krMatrix::fromQuatTranslation(rotation, position);
        for (int32_t i = 0; i < mesh.vertexCount; ++i) {
            krVertex& v = mesh.vertices[i];
            v.position = transformPoint(pose, v.position);
            v.normal = transformVector(pose, v.normal);
        }
    }
}

void krObject::readWeights(krMeshReader& reader, krChunk& chunk, krMesh& mesh) {
    krMeshFile::WeightsHeader header;
    if (!reader.record(chunk, header, "weights")) return;
    const uint32_t perVertex = header.perVertex;
    const auto* records = static_cast<const uint8_t*>(
        reader.array(chunk, uint64_t(perVertex) * static_cast<uint32_t>(mesh.vertexCount),
                     sizeof(krMeshFile::WeightRecord), "weights"));
    if (!records) return;

    const uint32_t used = std::min<uint32_t>(perVertex, krWeightsPerVertex);
    mesh.weights.assign(static_cast<size_t>(mesh.vertexCount) * krWeightsPerVertex, krBoneWeight{});
    for (int32_t v = 0; v < mesh.vertexCount; ++v) {
        krBoneWeight* out = &mesh.weights[static_cast<size_t>(v) * krWeightsPerVertex];
        const uint8_t* in = records + static_cast<size_t>(v) * perVertex * sizeof(krMeshFile::WeightRecord);
        float sum = 0;
        for (uint32_t k = 0; k < used; ++k) {
            krMeshFile::WeightRecord r;
            std::memcpy(&r, in + k * sizeof r, sizeof r);
            out[k] = {r.bone, r.weight};
            sum += r.weight;
            if (r.bone >= boneLimit) {
                boneLimit = r.bone + 1;
                bonesUsed.resize(static_cast<size_t>(boneLimit), 0);
            }
            bonesUsed[r.bone] = 1;
        }
        if (sum > 0)
            for (uint32_t k = 0; k < used; ++k) out[k].weight /= sum;
    }
}

void krObject::readFaces(krMeshReader& reader, krChunk& chunk, krMesh& mesh) {
    uint32_t count;
    if (!reader.count(chunk, count, "faces")) return;
    if (count > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
        reader.damaged("index count out of range");
        return;
    }
    void* raw = reader.array(chunk, count, sizeof(uint32_t), "indices");
    if (!raw) return;
    std::vector<uint32_t> copy;
    if (uint32_t* inPlace = placeArray(raw, count, copy)) {
        mesh.indices = inPlace;
        mesh.indexCount = static_cast<int32_t>(count);
    } else {
        mesh.ownIndices(std::move(copy));
    }
}

void krObject::readMaterials(krMeshReader& reader, krChunk& chunk, krMesh& mesh) {
    uint32_t count;
    if (!reader.count(chunk, count, "materials")) return;
    // Each material needs its chunk header and record; a count beyond that is a lie that must
    // not decide how much memory the load takes.
    constexpr uint32_t smallest = krChunk::headerSize + sizeof(krMeshFile::MaterialRecord);
    if (count > chunk.size / smallest) {
        reader.damaged("more materials counted than there are");
        count = chunk.size / smallest;
    }
    mesh.materials.assign(count, krMaterial{});
    uint32_t read = 0;
    krChunk sub;
    while (read < count && !closed && reader.next(chunk, sub)) {
        if (sub.id == krMeshFile::materialId) readMaterial(reader, sub, mesh.materials[read++]);
        reader.skip(sub);
    }
}

void krObject::readMaterial(krMeshReader& reader, krChunk& chunk, krMaterial& m) {
    krMeshFile::MaterialRecord record;
    if (!reader.record(chunk, record, "material")) return;
    m.ambient = record.ambient;
    m.diffuse = record.diffuse;
    m.emission = record.emission;
    m.specular = scaleByte(record.specular, record.specularStrength);
    m.shininess = record.shininess;
    // Dim highlights and faint glows are not worth their shaders.
    if (brightness(m.specular) > 3) m.flags |= krMaterialSpecular;
    if (brightness(m.emission) > 15) m.flags |= krMaterialGlowing;

    krChunk sub;
    while (reader.next(chunk, sub)) {
        krMeshFile::TextureSlot slot;
        const bool isSlot = sub.id == krMeshFile::diffuseSlotId || sub.id == krMeshFile::normalSlotId ||
                            sub.id == krMeshFile::specularSlotId;
        if (isSlot && reader.record(sub, slot, "texture slot") && slot.source == krMeshFile::sourceFile) {
            const std::string file = krMeshFile::getName(slot.file);
            const std::string texture = file.empty() ? std::string() : path + file;
            if (sub.id == krMeshFile::diffuseSlotId) {
                if (!texture.empty()) m.textures[krTextureDiffuse] = texture;
                if (slot.alphaSource == krMeshFile::sourceFile) {
                    if (slot.alphaMode >= krMeshFile::alphaBlend) m.flags |= krMaterialBlended;
                    else if (slot.alphaMode == krMeshFile::alphaTest) m.flags |= krMaterialAlphaTested;
                }
            } else if (sub.id == krMeshFile::normalSlotId) {
                if (!texture.empty()) m.textures[krTextureNormal] = texture;
                m.flags |= krMaterialNormalMapped;
            } else {
                // Without a normal map the specular map takes the second unit.
                if (!texture.empty())
                    m.textures[m.flags & krMaterialNormalMapped ? krTextureSpecular : krTextureNormal] = texture;
                m.specular = scaleByte(krColor(255, 255, 255, 255), record.specularStrength);
                m.flags |= krMaterialSpecularMapped;
            }
        }
        reader.skip(sub);
    }

    // The handler gets the shader, the diffuse texture and the surface by reference. The values
    // are cut loose from these fields afterwards, so a handler that keeps one holds no pointer.
    auto* shader = new krVStringPtr(&m.shader);
    auto* texture = new krVStringPtr(&m.textures[krTextureDiffuse]);
    auto* surface = new krVIntField<uint8_t>(&m.surface);
    const std::string materialName = krMeshFile::getName(record.name);
    if (krVariant* r = getEventTarget()->fireEvent("material_" + materialName, {shader, texture, surface}))
        r->release();
    for (krVariant* v : {static_cast<krVariant*>(shader), static_cast<krVariant*>(texture),
                         static_cast<krVariant*>(surface)}) {
        v->reset();
        v->release();
    }

    if ((m.flags & krMaterialBlended) && sortAlpha) m.flags |= krMaterialSorted;
    m.firstVertex = static_cast<int32_t>(record.firstVertex);
    m.vertexCount = static_cast<int32_t>(record.vertexCount);
    m.firstIndex = static_cast<int32_t>(record.firstIndex);
    m.indexCount = static_cast<int32_t>(record.indexCount);
}

void krObject::readObjectTree(krMeshReader& reader, krChunk& chunk) {
    krChunk sub;
    while (!closed && reader.next(chunk, sub)) {
        if (sub.id == krMeshFile::splitId) readSplit(reader, sub, this);
        else if (sub.id == krMeshFile::leafId) readLeaf(reader, sub, this);
        reader.skip(sub);
    }
}

void krObject::readSplit(krMeshReader& reader, krChunk& chunk, krModule* splitOwner) {
    krMeshFile::SplitRecord record;
    if (!reader.record(chunk, record, "split")) return;
    if (reader.depth >= krMeshReader::maxNesting) {
        reader.damaged("splits nested too deep");
        return;
    }
    auto* split = new krSplit(splitOwner);
    split->attach();
    split->box = krBox(toVector(record.boxMin), toVector(record.boxMax));
    split->radius = record.radius;
    split->position = split->box.centre();
    split->setVisible(true);
    box.extend(split->box);

    // A handler may delete the split while its leaves load.
    split->addRef();
    ++reader.depth;
    krChunk sub;
    while (!closed && reader.next(chunk, sub)) {
        if (sub.id == krMeshFile::splitId) readSplit(reader, sub, split);
        else if (sub.id == krMeshFile::leafId) readLeaf(reader, sub, split);
        reader.skip(sub);
    }
    --reader.depth;
    split->release();
}

void krObject::readLeaf(krMeshReader& reader, krChunk& chunk, krModule* leafOwner) {
    krMeshFile::LeafRecord record;
    if (!reader.record(chunk, record, "leaf")) return;
    krObject* child = createChild(record.type, leafOwner);
    if (!child) return;
    child->addRef();
    child->setEventTarget(this);
    child->position = toVector(record.position);
    child->rotation = toQuat(record.rotation);
    child->matrix = multiply(krMatrix::fromQuatTranslation(child->rotation, child->position), matrix);
    child->loadFromFile(path + krMeshFile::getName(record.file), 0);
    child->name = krMeshFile::getName(record.name);
    child->box = krBox(toVector(record.boxMin), toVector(record.boxMax));
    child->radius = record.radius;
    child->setVisible(true);
    radius = std::max(radius, length(child->position) + record.radius);
    box.extend(child->box);
    child->release();

    if ((++leafCounter & loadingReportMask) == 0) {
        if (krMain* root = krMain::instance()) {
            auto* fraction = new krVFloat(reader.fraction());
            if (krVariant* r = root->fireEvent("loading", {fraction})) r->release();
            fraction->release();
        }
    }
}
