// The mesh and split-tree file layouts: chunk ids and the fixed records inside them. The engine's
// object loader reads them and the content tools write them, both from this one description.
//
// A mesh file is a chunk file whose first chunk is an object (a name, a pose, then meshes and
// sub-objects) or a split tree (boxes nesting down to leaves that each name a further mesh file).
// Records sit at any alignment in the file, so fixed records are copied out with read(); only
// the vertex, index and weight arrays are used in place, which their 4-byte multiples allow in
// any file a tool wrote.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "core/krChunk.h"
#include "core/krColor.h"
#include "core/krVector3.h"

// Records are the processor's own layout, which is the file's only on a little-endian machine.
static_assert(std::endian::native == std::endian::little, "mesh files are read in place as little-endian");

namespace krMeshFile {

constexpr uint32_t objectId = 0x2000000;
constexpr uint32_t splitTreeId = 0x2100000;

// Mesh chunks: the id says what the mesh is for. Ids between these are read as meshes too, with
// the kind of the id that starts their block of 0x10000.
constexpr uint32_t firstMeshId = 0x2010000;
constexpr uint32_t lastMeshId = 0x2070000;
constexpr uint32_t plainMeshId = 0x2010000;
constexpr uint32_t hullMeshId = 0x2020000;
constexpr uint32_t rayMeshId = 0x2030000;
constexpr uint32_t drawnMeshId = 0x2040000;
constexpr uint32_t drawnMeshId2 = 0x2050000;
constexpr uint32_t drawnMeshId3 = 0x2060000;
constexpr uint32_t plainMeshId2 = 0x2070000;

constexpr uint32_t verticesId = 0x2011000;
constexpr uint32_t weightsId = 0x2011100;
constexpr uint32_t facesId = 0x2012000;
constexpr uint32_t materialsId = 0x2013000;
constexpr uint32_t materialId = 0x2013100;
constexpr uint32_t diffuseSlotId = 0x2013110;
constexpr uint32_t normalSlotId = 0x2013120;
constexpr uint32_t specularSlotId = 0x2013130;

constexpr uint32_t splitId = 0x2101000;
constexpr uint32_t leafId = 0x2102000;

// Kind bits of a mesh, from its chunk id.
constexpr int32_t kindHull = 1;
constexpr int32_t kindDrawn = 2;
constexpr int32_t kindRays = 4;
// Which of the three drawn ids it came from: recorded for the item factory, not used by objects.
constexpr int32_t kindDrawnA = 8;
constexpr int32_t kindDrawnB = 16;
constexpr int32_t kindDrawnC = 32;

constexpr bool isMeshId(uint32_t id) { return id >= firstMeshId && id <= lastMeshId; }

constexpr int32_t meshKind(uint32_t id) {
    constexpr int32_t kinds[] = {0, kindHull, kindRays, kindDrawn | kindDrawnA, kindDrawn | kindDrawnB,
                                 kindDrawn | kindDrawnC, 0};
    return isMeshId(id) ? kinds[(id - firstMeshId) >> 16] : 0;
}

// The chunk id a tool writes for a kind; the inverse of meshKind on the ids above.
constexpr uint32_t meshIdFor(int32_t kind) {
    if (kind & kindDrawn) return kind & kindDrawnC ? drawnMeshId3 : kind & kindDrawnB ? drawnMeshId2 : drawnMeshId;
    if (kind & kindHull) return hullMeshId;
    if (kind & kindRays) return rayMeshId;
    return plainMeshId;
}

// Fixed-size string fields hold a NUL-terminated name, so the longest fits one byte short.
template <size_t N>
std::string getName(const char (&field)[N]) {
    return std::string(field, strnlen(field, N));
}

// False, with the field left empty, when the text does not fit.
template <size_t N>
bool setName(char (&field)[N], const std::string& text) {
    std::memset(field, 0, N);
    if (text.size() >= N) return false;
    std::memcpy(field, text.data(), text.size());
    return true;
}

// Payload start of an object chunk (also of a sub-object); sub-chunks follow it.
struct ObjectHeader {
    char name[32];
    float position[3];
    float rotation[4];  // quaternion x, y, z, w
};
static_assert(sizeof(ObjectHeader) == 60);

// Payload start of a vertices chunk: the count, then that many vertex records, then sub-chunks.
constexpr uint32_t vertexCountSize = 4;

// Payload start of a weights chunk: records per vertex, then that many records for each vertex.
struct WeightsHeader {
    uint16_t perVertex;
    uint16_t reserved;
};
static_assert(sizeof(WeightsHeader) == 4);

struct WeightRecord {
    uint16_t bone;
    uint16_t reserved;
    float weight;
};
static_assert(sizeof(WeightRecord) == 8);

// Faces: a count, then that many vertex indices, three a triangle. Materials: a count, then one
// material chunk each.
constexpr uint32_t countSize = 4;

struct MaterialRecord {
    char name[36];
    uint8_t specularStrength;  // 0 to 255
    uint8_t shininess;
    uint8_t reserved[2];
    krColor ambient, diffuse, specular, emission;
    uint32_t firstVertex, vertexCount, firstIndex, indexCount;
};
static_assert(sizeof(MaterialRecord) == 72);
static_assert(offsetof(MaterialRecord, ambient) == 40 && offsetof(MaterialRecord, firstVertex) == 56);

// Sources other than 0 mean a texture made some other way, which the engine does not use.
constexpr uint8_t sourceFile = 0;

// Alpha modes of a diffuse slot.
constexpr uint8_t alphaNone = 0;
constexpr uint8_t alphaTest = 1;
constexpr uint8_t alphaBlend = 2;

struct TextureSlot {
    uint8_t source;
    uint8_t reserved0;
    uint8_t alphaSource;
    uint8_t alphaMode;
    uint8_t reserved1[4];
    char file[32];  // relative to the mesh file's folder
};
static_assert(sizeof(TextureSlot) == 40);

struct SplitRecord {
    float boxMin[3], boxMax[3];
    float radius;
};
static_assert(sizeof(SplitRecord) == 28);

struct LeafRecord {
    float boxMin[3], boxMax[3];
    float radius;
    int32_t type;  // handed to the loading object's createChild
    char name[32];
    char file[64];  // relative to the split file's folder
    float position[3];
    float rotation[4];
};
static_assert(sizeof(LeafRecord) == 156);

}  // namespace krMeshFile

// One vertex as the file holds it and as meshes hand it on: drawn straight from this layout.
struct krVertex {
    krVector3 position;
    krVector3 normal;
    krColor color;
    float u, v;
};
static_assert(sizeof(krVertex) == 36 && offsetof(krVertex, color) == 24 && offsetof(krVertex, u) == 28);
