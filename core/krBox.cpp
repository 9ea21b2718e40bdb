// Growing and testing axis-aligned boxes.
#include "core/krBox.h"

#include <algorithm>

static krVector3 minOf(const krVector3& a, const krVector3& b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
}

static krVector3 maxOf(const krVector3& a, const krVector3& b) {
    return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
}

krBox krBox::fromTriangle(const krVector3& a, const krVector3& b, const krVector3& c) {
    return {minOf(minOf(a, b), c), maxOf(maxOf(a, b), c)};
}

void krBox::makeEmpty() {
    min = {krBoxEmptyExtent, krBoxEmptyExtent, krBoxEmptyExtent};
    max = -min;
}

void krBox::extend(const krVector3& p) {
    min = minOf(min, p);
    max = maxOf(max, p);
}

void krBox::extend(const krBox& b) {
    min = minOf(min, b.min);
    max = maxOf(max, b.max);
}

void krBox::offset(const krVector3& v) {
    min += v;
    max += v;
}

bool krBox::contains(const krVector3& p) const {
    return p.x >= min.x && p.x <= max.x && p.y >= min.y && p.y <= max.y && p.z >= min.z && p.z <= max.z;
}

bool krBox::overlaps(const krBox& b) const {
    return min.x <= b.max.x && max.x >= b.min.x && min.y <= b.max.y && max.y >= b.min.y &&
           min.z <= b.max.z && max.z >= b.min.z;
}
