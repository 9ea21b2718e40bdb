// Helpers of the scene tests: a fresh working directory with the root, the script host and its
// library, a video that records the meshes it is handed and whose view a test sets, scripts run
// from text, and mesh files built with the shared layout.
#pragma once

#include <string>
#include <vector>

#include "engine_testing.h"
#include "render/krMesh.h"
#include "render/krMeshFileWriter.h"
#include "render/krObject.h"
#include "render/krVideo.h"

namespace sceneTesting {

using engineTesting::reports;

// What a drawn mesh looked like when the video was handed it: copies, since the mesh is gone
// after the call.
struct SeenMesh {
    krModule* module;
    int32_t kind;
    std::vector<krVertex> vertices;
    std::vector<uint32_t> indices;
    std::vector<krMaterial> materials;
    std::vector<krBoneWeight> weights;
};

class RecordingVideo : public krVideo {
public:
    using krVideo::krVideo;
    krVideoItem* createMeshItem(krModule* module, krMesh* mesh, int32_t kind) override {
        seen.push_back({module, kind, std::vector<krVertex>(mesh->vertices, mesh->vertices + mesh->vertexCount),
                        std::vector<uint32_t>(mesh->indices, mesh->indices + mesh->indexCount), mesh->materials,
                        mesh->weights});
        return nullptr;
    }
    void setView(const krVector3& eyeAt, const krVector3& direction, float cone) {
        eye = eyeAt;
        viewDirection = direction;
        viewCone = cone;
    }
    std::vector<SeenMesh> seen;
};

class Scene : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        video = make<RecordingVideo>();
    }

    krObject* newObject(krModule* owner = nullptr) { return make<krObject>(owner); }

    RecordingVideo* video = nullptr;
};

// The vertex of a test mesh at p, facing up, white, with texture coordinates from p.
inline krVertex vertexAt(float x, float y, float z) { return {{x, y, z}, {0, 1, 0}, {}, x, z}; }

// A cube of 8 corners from -h to +h with 12 triangles and one material over all of it.
inline krMeshFileMesh cube(float h, const std::string& material = "stone") {
    krMeshFileMesh m;
    for (int i = 0; i < 8; ++i) m.vertices.push_back(vertexAt(i & 1 ? h : -h, i & 2 ? h : -h, i & 4 ? h : -h));
    m.indices = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4, 2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
    krMeshFileMaterial mat;
    krMeshFile::setName(mat.record.name, material);
    mat.record.ambient = mat.record.diffuse = krColor(200, 200, 200, 255);
    mat.record.specular = mat.record.emission = krColor(0, 0, 0, 255);
    mat.record.vertexCount = 8;
    mat.record.indexCount = 36;
    m.materials.push_back(mat);
    return m;
}

inline krMeshFileMaterial::Slot slot(uint32_t id, const std::string& file, uint8_t alphaMode = 0, uint8_t source = 0) {
    krMeshFileMaterial::Slot s{id, {}};
    s.slot.source = source;
    s.slot.alphaMode = alphaMode;
    krMeshFile::setName(s.slot.file, file);
    return s;
}

// A whole object file: one object with the given meshes.
inline std::string objectFile(const std::string& name, const std::vector<krMeshFileMesh>& meshes,
                              const krVector3& position = {}) {
    krChunkWriter w;
    krBeginObject(w, name, position, krQuat::identity);
    for (const krMeshFileMesh& m : meshes) krWriteMesh(w, m);
    w.end();
    return w.data();
}

}  // namespace sceneTesting
