// Welding corners into vertices, making the normals a model lacks, and splitting material ranges.
#include "krMeshCompiler.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>

namespace {

using CornerLists = std::vector<std::vector<krModelCorner>>;

// Normals for corners that came without one: the area-weighted mean of the faces that meet at
// the same position, so that a smooth surface stays smooth.
std::map<std::tuple<float, float, float>, krVector3> smoothNormals(const CornerLists& lists) {
    std::map<std::tuple<float, float, float>, krVector3> sums;
    for (const std::vector<krModelCorner>& list : lists) {
        for (size_t i = 0; i + 2 < list.size(); i += 3) {
            const krVector3 face = cross(list[i + 1].position - list[i].position, list[i + 2].position - list[i].position);
            for (size_t k = i; k < i + 3; ++k)
                if (isZero(list[k].normal)) {
                    const krVector3& p = list[k].position;
                    sums[{p.x, p.y, p.z}] += face;
                }
        }
    }
    return sums;
}

bool setName(char* field, size_t size, const std::string& text, const char* what, std::string& error) {
    if (text.size() >= size) {
        error = std::string(what) + " '" + text + "' is longer than the " + std::to_string(size - 1) +
                " characters the mesh file holds";
        return false;
    }
    std::memset(field, 0, size);
    std::memcpy(field, text.data(), text.size());
    return true;
}

bool addSlot(krMeshFileMaterial& m, uint32_t id, const std::string& texture, uint8_t alphaMode, std::string& error) {
    krMeshFileMaterial::Slot s{id, {}};
    s.slot.alphaMode = alphaMode;
    if (!setName(s.slot.file, sizeof s.slot.file, krTextureFileName(texture), "texture name", error)) return false;
    m.slots.push_back(s);
    return true;
}

// The record of one range of a material, without the range itself.
bool materialRecord(const krModelMaterial& in, krMeshFileMaterial& out, std::string& error) {
    krMeshFile::MaterialRecord& r = out.record;
    if (!setName(r.name, sizeof r.name, in.name, "material name", error)) return false;
    r.specularStrength = in.specularStrength;
    r.shininess = in.shininess;
    r.ambient = in.ambient;
    r.diffuse = in.diffuse;
    r.specular = in.specular;
    r.emission = in.emission;
    if (!in.diffuseTexture.empty() || in.alphaMode != krMeshFile::alphaNone)
        if (!addSlot(out, krMeshFile::diffuseSlotId, in.diffuseTexture, in.alphaMode, error)) return false;
    if (!in.normalTexture.empty() && !addSlot(out, krMeshFile::normalSlotId, in.normalTexture, 0, error)) return false;
    if (!in.specularTexture.empty() && !addSlot(out, krMeshFile::specularSlotId, in.specularTexture, 0, error))
        return false;
    return true;
}

bool finish(const krChunkWriter& w, std::string& file, std::string& error) {
    if (w.data().size() > std::numeric_limits<uint32_t>::max()) {
        error = "the file would be larger than its chunk sizes can say";
        return false;
    }
    file = w.data();
    return true;
}

}  // namespace

std::string krTextureFileName(const std::string& modelName) {
    if (modelName.empty()) return {};
    std::string name = modelName;
    for (char& c : name)
        if (c == '\\') c = '/';
    const size_t slash = name.rfind('/');
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) name.erase(dot);
    return name + ".dds";
}

std::vector<std::string> krTextureWarnings(const krModel& model, const std::string& imageFolder,
                                           const std::string& meshFolder) {
    namespace fs = std::filesystem;
    auto there = [](const std::string& folder, const std::string& name) {
        std::error_code error;
        return fs::exists(fs::path(folder.empty() ? "." : folder) / name, error);
    };
    std::vector<std::string> warnings;
    std::set<std::string> seen;
    for (const krModelMaterial& m : model.materials) {
        for (const std::string* texture : {&m.diffuseTexture, &m.normalTexture, &m.specularTexture}) {
            if (texture->empty() || !seen.insert(*texture).second) continue;
            const std::string named = krTextureFileName(*texture);
            std::string path = *texture;
            for (char& c : path)
                if (c == '\\') c = '/';
            if (!there(imageFolder, path))
                warnings.push_back("texture '" + *texture + "' of material '" + m.name + "' is not there (looked in '" +
                                   (imageFolder.empty() ? std::string(".") : imageFolder) + "')");
            if (named != path && !there(meshFolder, named))
                warnings.push_back("texture '" + *texture + "' is named '" + named + "' in the mesh, and there is no " +
                                   "such file beside it: convert the image with kerrin-texture and put it there");
        }
    }
    return warnings;
}

namespace {

// One mesh from the lists of corners, one list a material; with weights when skinned.
bool buildMesh(const krModel& model, const CornerLists& lists, bool skinned, const krMeshCompileOptions& options,
               krMeshFileMesh& mesh, std::string& error) {
    mesh = krMeshFileMesh();
    mesh.kind = options.kind;
    if (skinned) mesh.weightsPerVertex = krWeightsPerVertex;
    const auto normals = smoothNormals(lists);
    for (size_t m = 0; m < model.materials.size() && m < lists.size(); ++m) {
        const std::vector<krModelCorner>& corners = lists[m];
        krMeshFileMaterial record;
        if (corners.size() < 3) continue;
        if (!materialRecord(model.materials[m], record, error)) return false;

        // One range per run of triangles whose vertices fit 16-bit indices.
        std::unordered_map<std::string, uint32_t> welded;
        auto open = [&] {
            welded.clear();
            mesh.materials.push_back(record);
            mesh.materials.back().record.firstVertex = static_cast<uint32_t>(mesh.vertices.size());
            mesh.materials.back().record.firstIndex = static_cast<uint32_t>(mesh.indices.size());
        };
        open();
        for (size_t t = 0; t + 2 < corners.size(); t += 3) {
            if (welded.size() + 3 > krMaxRangeVertices) open();
            for (size_t k = t; k < t + 3; ++k) {
                const krModelCorner& c = corners[k];
                krVertex v{c.position * options.scale, c.normal, c.color, c.u, c.v};
                if (isZero(v.normal)) {
                    auto it = normals.find({c.position.x, c.position.y, c.position.z});
                    v.normal = it != normals.end() ? normalized(it->second) : krVector3();
                    if (isZero(v.normal)) v.normal = krVector3::axisY;
                }
                std::string key(reinterpret_cast<const char*>(&v), sizeof v);
                if (skinned) key.append(reinterpret_cast<const char*>(c.weights), sizeof c.weights);
                auto [it, added] = welded.try_emplace(key, static_cast<uint32_t>(mesh.vertices.size()));
                if (added) {
                    mesh.vertices.push_back(v);
                    if (skinned)
                        for (const krBoneWeight& w : c.weights)
                            mesh.weights.push_back({static_cast<uint16_t>(w.bone), 0, w.weight});
                }
                mesh.indices.push_back(it->second);
            }
            krMeshFile::MaterialRecord& r = mesh.materials.back().record;
            r.vertexCount = static_cast<uint32_t>(mesh.vertices.size()) - r.firstVertex;
            r.indexCount = static_cast<uint32_t>(mesh.indices.size()) - r.firstIndex;
        }
        if (mesh.vertices.size() > size_t(std::numeric_limits<int32_t>::max()) / sizeof(krVertex)) {
            error = "the model has more vertices than a mesh file holds";
            return false;
        }
    }
    return true;
}

}  // namespace

bool krBuildMesh(const krModel& model, const krMeshCompileOptions& options, krMeshFileMesh& mesh, std::string& error) {
    if (!buildMesh(model, model.triangles, false, options, mesh, error)) return false;
    if (mesh.indices.empty()) {
        error = "the model has no triangles";
        return false;
    }
    return true;
}

bool krBuildSkinnedMesh(const krModel& model, const krMeshCompileOptions& options, krMeshFileMesh& mesh,
                        std::string& error) {
    return buildMesh(model, model.skinned, true, options, mesh, error);
}

bool krCompileMesh(const krModel& model, const krMeshCompileOptions& options, std::string& file, std::string& error) {
    krMeshFileMesh placed, skinned;
    if (!buildMesh(model, model.triangles, false, options, placed, error) ||
        !krBuildSkinnedMesh(model, options, skinned, error))
        return false;
    if (placed.indices.empty() && skinned.indices.empty()) {
        error = "the model has no triangles";
        return false;
    }
    krMeshFile::ObjectHeader header{};
    if (!setName(header.name, sizeof header.name, options.name, "object name", error)) return false;
    if (!skinned.indices.empty() &&
        !setName(header.name, sizeof header.name, krSkinObjectName(options.name), "skin object name", error))
        return false;
    krChunkWriter w;
    krBeginObject(w, options.name, {}, krQuat::identity);
    if (!placed.indices.empty()) krWriteMesh(w, placed);
    // The skin lies in a sub-object at the object's origin: a skinned mesh's bind pose is read in
    // the space of its object's owner, which there is the object that carries the skeleton.
    if (!skinned.indices.empty()) {
        krBeginObject(w, krSkinObjectName(options.name), {}, krQuat::identity);
        krWriteMesh(w, skinned);
        w.end();
    }
    w.end();
    return finish(w, file, error);
}

std::string krSkinObjectName(const std::string& objectName) { return objectName + "_skin"; }

bool krCompileSkeleton(const krModel& model, const krMeshCompileOptions& options, std::string& file, std::string& error) {
    if (model.bones.empty()) {
        error = "the model has no skin, so no skeleton";
        return false;
    }
    std::vector<krSkeletonFileBone> bones = model.bones;
    for (krSkeletonFileBone& b : bones) {
        krSkeletonFile::BoneRecord r{};
        if (!setName(r.name, sizeof r.name, b.name, "bone name", error)) return false;
        b.position *= options.scale;
    }
    krSkeletonFile::SkeletonHeader h{};
    if (!setName(h.name, sizeof h.name, options.name, "skeleton name", error)) return false;
    krChunkWriter w;
    krWriteSkeleton(w, options.name, bones);
    return finish(w, file, error);
}

bool krCompileAnimation(const krModelAnimation& animation, const krMeshCompileOptions& options, std::string& file,
                        std::string& error) {
    krSkeletonFile::AnimationHeader h{};
    if (!setName(h.name, sizeof h.name, animation.name, "animation name", error)) return false;
    std::vector<krAnimationFileTrack> tracks = animation.tracks;
    for (krAnimationFileTrack& t : tracks)
        for (krAnimationFileKey& k : t.keys) k.position *= options.scale;
    krChunkWriter w;
    krWriteAnimation(w, animation.name, animation.duration, tracks);
    return finish(w, file, error);
}
