// The bounding tree over level triangles: a balanced binary tree built by halving sorted ranges.
#include "physics/krCollisionData.h"

#include <algorithm>

void krPhysTriangle::collect(krTriangleList& list, const krBox&) {
    if (list.count < krTriangleList::capacity) list.triangles[list.count++] = this;
}

void krPhysSplit::release() {
    if (itemA) itemA->release();
    if (itemB) itemB->release();
    delete this;
}

void krPhysSplit::collect(krTriangleList& list, const krBox& box) {
    if (boxA.overlaps(box)) itemA->collect(list, box);
    if (boxB.overlaps(box)) itemB->collect(list, box);
}

krPhysItem* krBuildTree(krCollisionData& data, int32_t first, int32_t last, krBox& box) {
    krPhysTriangle* t = data.triangles.data();
    if (first == last) {
        box.extend(*t[first].corner0);
        box.extend(*t[first].corner1);
        box.extend(*t[first].corner2);
        return &t[first];
    }
    krBox around;
    around.makeEmpty();
    for (int32_t i = first; i <= last; ++i) {
        around.extend(*t[i].corner0);
        around.extend(*t[i].corner1);
        around.extend(*t[i].corner2);
    }
    box.extend(around);

    // Split across the longest side: x when it is longer than both others, else z unless y is
    // longer than z.
    const krVector3 s = around.size();
    const int axis = s.x > s.y && s.x > s.z ? 0 : s.y <= s.z ? 2 : 1;
    auto key = [axis](const krPhysTriangle& tri) {
        return axis == 0 ? tri.corner0->x : axis == 1 ? tri.corner0->y : tri.corner0->z;
    };
    std::sort(t + first, t + last + 1,
              [&key](const krPhysTriangle& a, const krPhysTriangle& b) { return key(a) < key(b); });

    const int32_t mid = first + (last - first) / 2;
    auto* split = new krPhysSplit;
    split->boxA.makeEmpty();
    split->boxB.makeEmpty();
    split->itemA = krBuildTree(data, first, mid, split->boxA);
    split->itemB = krBuildTree(data, mid + 1, last, split->boxB);
    return split;
}
