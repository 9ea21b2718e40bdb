// krContact: one touch between a moving body and what it met, as the contact tests find it, and
// the world's fixed table of them for the body being worked on.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "core/krVector3.h"

class krPhysObj;
class krCollisionObject;

struct krContact {
    // Contacts are answered lowest key first: the key ranks the kind of contact, then the speed
    // of approach.
    float sortKey;
    krVector3 point;
    // Points at the body.
    krVector3 normal;
    krPhysObj* body;
    // Surface bytes of the materials involved, or null where there is no material.
    const uint8_t* bodyMaterial;
    krCollisionObject* other;
    const uint8_t* otherMaterial;
};

// The contacts of one visit of one body. Two boxes alone can cross in 288 ways, so the table
// stops taking contacts when it is full.
struct krContactTable {
    static constexpr int32_t capacity = 256;
    krContact entries[capacity];
    int32_t count = 0;

    bool full() const { return count >= capacity; }
    void add(float key, const krVector3& point, const krVector3& normal, krPhysObj* body, const uint8_t* bodyMaterial,
             krCollisionObject* other, const uint8_t* otherMaterial) {
        if (full()) return;
        // A key that is not a number would have no place in the order; it goes last.
        if (std::isnan(key)) key = std::numeric_limits<float>::infinity();
        entries[count++] = {key, point, normal, body, bodyMaterial, other, otherMaterial};
    }
};
