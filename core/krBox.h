// Axis-aligned bounding box: min corner, then max corner.
#pragma once

#include <bit>

#include "core/krVector3.h"

// Corner value of the empty box: far beyond any world coordinate, yet finite so that sums and
// centres of an empty box stay finite too.
inline constexpr float krBoxEmptyExtent = 1e32f;
static_assert(std::bit_cast<uint32_t>(krBoxEmptyExtent) == 0x749DC5AE);

struct krBox {
    krVector3 min, max;

    // The cleared box: both corners at the origin.
    constexpr krBox() = default;
    constexpr krBox(const krVector3& min_, const krVector3& max_) : min(min_), max(max_) {}

    // Componentwise minimum and maximum of the three corners.
    static krBox fromTriangle(const krVector3& a, const krVector3& b, const krVector3& c);

    void clear() { *this = krBox(); }
    // Inside out, so that the first extend sets both corners to that point.
    void makeEmpty();
    void extend(const krVector3& p);
    // Extending by an empty box changes nothing.
    void extend(const krBox& b);
    void offset(const krVector3& v);

    bool isPoint() const { return min == max; }
    // Both tests count the faces as inside.
    bool contains(const krVector3& p) const;
    bool overlaps(const krBox& b) const;
    krVector3 centre() const { return (min + max) * 0.5f; }
    krVector3 size() const { return max - min; }
};
