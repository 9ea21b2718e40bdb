// krMesh and krMaterial: the records a load hands to whoever turns geometry into something that
// lasts (video items, collision data). They live only for one addMesh call: vertices and indices
// usually point into the file buffer, which goes when the load ends.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/krColor.h"
#include "render/krMeshFile.h"

// Material flags.
constexpr int32_t krMaterialBlended = 1;
constexpr int32_t krMaterialAlphaTested = 2;
constexpr int32_t krMaterialSpecular = 4;
constexpr int32_t krMaterialNormalMapped = 8;
constexpr int32_t krMaterialSpecularMapped = 16;
constexpr int32_t krMaterialGlowing = 32;
constexpr int32_t krMaterialSorted = 64;

// Texture slots of a material.
constexpr int krTextureDiffuse = 0;
constexpr int krTextureNormal = 1;
constexpr int krTextureSpecular = 2;
constexpr int krTextureSlots = 4;

// Physics surface of a material, as scripts name it (PHYSIC_NONE, PHYSIC_DEFAULT, PHYSIC_WATER).
constexpr uint8_t krSurfaceNone = 0;
constexpr uint8_t krSurfaceDefault = 1;
constexpr uint8_t krSurfaceWater = 2;

struct krMaterial {
    // Ranges into the mesh; a loaded mesh's indices of this material lie inside its vertex range.
    int32_t firstIndex = 0, indexCount = 0;
    int32_t firstVertex = 0, vertexCount = 0;
    std::string textures[krTextureSlots];
    std::string shader;  // empty: the video picks one by the flags
    int32_t flags = 0;
    krColor ambient, diffuse, specular, emission;
    float shininess = 0;
    uint8_t surface = krSurfaceDefault;
};

// Skinning: each vertex has this many (bone, weight) places; unused ones hold bone 0, weight 0.
constexpr int krWeightsPerVertex = 4;

struct krBoneWeight {
    int32_t bone = 0;
    float weight = 0;
};

struct krMesh {
    krMesh() = default;
    krMesh(const krMesh&) = delete;
    krMesh& operator=(const krMesh&) = delete;

    krVertex* vertices = nullptr;
    int32_t vertexCount = 0;
    uint32_t* indices = nullptr;
    int32_t indexCount = 0;
    std::vector<krMaterial> materials;
    // Empty, or krWeightsPerVertex places for each vertex.
    std::vector<krBoneWeight> weights;
    int32_t kind = 0;

    // Geometry the mesh holds itself: made in memory, or copied because the file had it at an
    // address that the processor cannot use in place.
    void ownVertices(std::vector<krVertex> v);
    void ownIndices(std::vector<uint32_t> i);

    bool hasWeights() const { return !weights.empty(); }
    bool isDrawn() const;

    // Null when every index names a vertex and every material range lies inside the mesh with
    // its indices inside its own vertex range; otherwise what is wrong, for a report. Consumers
    // may rely on a mesh handed to addMesh having passed this.
    const char* inconsistency() const;

private:
    std::vector<krVertex> vertexStore;
    std::vector<uint32_t> indexStore;
};
