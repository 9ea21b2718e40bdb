// Writing chunk files: nested chunks whose sizes are filled in when each one closes, and whole
// meshes in the mesh file layout. The engine never writes these files; the content tools and
// the tests that hand-build files do.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/krChunk.h"
#include "core/krQuat.h"
#include "render/krMeshFile.h"

class krChunkWriter {
public:
    void begin(uint32_t id) {
        open.push_back(bytes.size());
        bytes.append(krChunk::headerSize, '\0');
        krPutU32(&bytes[open.back()], id);
    }

    // Closes the innermost open chunk, its size counting everything written since its begin.
    void end() {
        const size_t at = open.back();
        open.pop_back();
        krPutU32(&bytes[at + 4], static_cast<uint32_t>(bytes.size() - at - krChunk::headerSize));
    }

    void put(const void* data, size_t count) { bytes.append(static_cast<const char*>(data), count); }

    template <typename T>
    void put(const T& record) {
        put(&record, sizeof record);
    }

    void putU32(uint32_t value) {
        char b[4];
        krPutU32(b, value);
        put(b, 4);
    }

    template <typename T>
    void putArray(const std::vector<T>& items) {
        if (!items.empty()) put(items.data(), items.size() * sizeof(T));
    }

    bool closed() const { return open.empty(); }
    const std::string& data() const { return bytes; }

private:
    std::string bytes;
    std::vector<size_t> open;
};

// A material as written: its record and its texture slots in file order.
struct krMeshFileMaterial {
    struct Slot {
        uint32_t id;  // krMeshFile::diffuseSlotId, normalSlotId or specularSlotId
        krMeshFile::TextureSlot slot;
    };
    krMeshFile::MaterialRecord record{};
    std::vector<Slot> slots;
};

// A mesh as written. Weights, when there are any, are weightsPerVertex records for each vertex.
struct krMeshFileMesh {
    int32_t kind = krMeshFile::kindDrawn;
    std::vector<krVertex> vertices;
    std::vector<uint32_t> indices;
    std::vector<krMeshFileMaterial> materials;
    uint16_t weightsPerVertex = 0;
    std::vector<krMeshFile::WeightRecord> weights;
};

inline void krWriteMesh(krChunkWriter& w, const krMeshFileMesh& mesh) {
    w.begin(krMeshFile::meshIdFor(mesh.kind));
    w.begin(krMeshFile::verticesId);
    w.putU32(static_cast<uint32_t>(mesh.vertices.size()));
    w.putArray(mesh.vertices);
    if (mesh.weightsPerVertex) {
        w.begin(krMeshFile::weightsId);
        w.put(krMeshFile::WeightsHeader{mesh.weightsPerVertex, 0});
        w.putArray(mesh.weights);
        w.end();
    }
    w.end();
    w.begin(krMeshFile::facesId);
    w.putU32(static_cast<uint32_t>(mesh.indices.size()));
    w.putArray(mesh.indices);
    w.end();
    w.begin(krMeshFile::materialsId);
    w.putU32(static_cast<uint32_t>(mesh.materials.size()));
    for (const krMeshFileMaterial& m : mesh.materials) {
        w.begin(krMeshFile::materialId);
        w.put(m.record);
        for (const krMeshFileMaterial::Slot& s : m.slots) {
            w.begin(s.id);
            w.put(s.slot);
            w.end();
        }
        w.end();
    }
    w.end();
    w.end();
}

// Opens an object chunk; its meshes and sub-objects follow, then the caller's end().
inline void krBeginObject(krChunkWriter& w, const std::string& name, const krVector3& position,
                          const krQuat& rotation) {
    krMeshFile::ObjectHeader h{};
    krMeshFile::setName(h.name, name);
    h.position[0] = position.x;
    h.position[1] = position.y;
    h.position[2] = position.z;
    h.rotation[0] = rotation.x;
    h.rotation[1] = rotation.y;
    h.rotation[2] = rotation.z;
    h.rotation[3] = rotation.w;
    w.begin(krMeshFile::objectId);
    w.put(h);
}
