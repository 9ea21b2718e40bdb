// Collision shapes as plain data: the vertices and triangles of a shape with the surface byte of
// each material, and the bounding tree over the triangles of level geometry, whose leaves are
// the triangles themselves.
#pragma once

#include <cstdint>
#include <vector>

#include "core/krBox.h"
#include "core/krVector3.h"

struct krPhysTriangle;

// The triangles one tree query yields. The contact tests work through every one of them at the
// substep rate, so a query stops adding when the list is full.
struct krTriangleList {
    static constexpr int32_t capacity = 256;
    krPhysTriangle* triangles[capacity];
    int32_t count = 0;
};

// A node of the bounding tree.
struct krPhysItem {
    virtual ~krPhysItem() = default;
    // Deletes this node and what it owns; triangles live in their shape's array and stay.
    virtual void release() = 0;
    // Appends the triangles below this node whose boxes overlap box.
    virtual void collect(krTriangleList& list, const krBox& box) = 0;
};

struct krPhysTriangle final : krPhysItem {
    krVector3* corner0 = nullptr;
    krVector3* corner1 = nullptr;
    krVector3* corner2 = nullptr;
    // Index into the shape's materialPhysics.
    int32_t material = 0;

    void release() override {}
    // A leaf answers without a box test of its own: its parent tested its box.
    void collect(krTriangleList& list, const krBox& box) override;
};

struct krPhysSplit final : krPhysItem {
    krBox boxA, boxB;
    krPhysItem* itemA = nullptr;
    krPhysItem* itemB = nullptr;

    void release() override;
    void collect(krTriangleList& list, const krBox& box) override;
};

// Surface bytes of materials (the script constants PHYSIC_NONE, PHYSIC_DEFAULT, PHYSIC_WATER).
// Only a contact with the default surface is answered; the others are for rays to read.
inline constexpr uint8_t krPhysicNone = 0;
inline constexpr uint8_t krPhysicDefault = 1;
inline constexpr uint8_t krPhysicWater = 2;

struct krCollisionData {
    krCollisionData() = default;
    krCollisionData(const krCollisionData&) = delete;
    krCollisionData& operator=(const krCollisionData&) = delete;

    // Body coordinates; empty in level geometry, which is placed once when it loads.
    std::vector<krVector3> sourceVertices;
    // World coordinates of the pose last transformed to. Triangles point into this array, so it
    // is sized once and never reallocated while they do.
    std::vector<krVector3> vertices;
    std::vector<krPhysTriangle> triangles;
    // One surface byte per material.
    std::vector<uint8_t> materialPhysics;

    // The surface byte of a triangle's material, or null when the shape has no such material.
    const uint8_t* surfaceOf(const krPhysTriangle& t) const {
        return t.material >= 0 && static_cast<size_t>(t.material) < materialPhysics.size()
                   ? &materialPhysics[static_cast<size_t>(t.material)]
                   : nullptr;
    }
    // The eight world corners of a box shape, or null when this record holds a mesh.
    const krVector3* boxCorners() const {
        return vertices.size() == 8 && triangles.empty() && sourceVertices.empty() ? vertices.data() : nullptr;
    }
};

// Builds the bounding tree over triangles first to last (both included), reordering that range
// of the array into tree order, and extends box by everything below. The result is a triangle
// for a range of one, else a split.
krPhysItem* krBuildTree(krCollisionData& data, int32_t first, int32_t last, krBox& box);
