// The grid of bodies for trigger boxes.
#include "physics/krPhysGrid.h"

#include <algorithm>
#include <cmath>

#include "physics/krPhysObj.h"

krPhysGrid::~krPhysGrid() {
    for (const auto& entry : cells) entry.second->gridCells = 0;
}

krPhysGrid::Range krPhysGrid::rangeOf(const krBox& box) {
    constexpr float inverse = 1.0f / cellSize;
    Range r{krIntVector3(box.min * inverse), krIntVector3(box.max * inverse), false};
    // Cell indices saturate at the int range, and a box that is not a number at all has no cells
    // it could be found in: both count as oversized.
    if (!isFinite(box.min) || !isFinite(box.max)) {
        r.oversized = true;
        return r;
    }
    const int64_t nx = std::max<int64_t>(0, int64_t(r.hi.x) - r.lo.x + 1);
    const int64_t ny = std::max<int64_t>(0, int64_t(r.hi.y) - r.lo.y + 1);
    const int64_t nz = std::max<int64_t>(0, int64_t(r.hi.z) - r.lo.z + 1);
    r.oversized = nx > maxCells || ny > maxCells || nz > maxCells || nx * ny * nz > maxCells;
    return r;
}

template <class F>
void krPhysGrid::forEachCell(const Range& r, F f) {
    for (int64_t x = r.lo.x; x <= r.hi.x; ++x)
        for (int64_t y = r.lo.y; y <= r.hi.y; ++y)
            for (int64_t z = r.lo.z; z <= r.hi.z; ++z)
                f(krIntVector3(static_cast<int32_t>(x), static_cast<int32_t>(y), static_cast<int32_t>(z)));
}

void krPhysGrid::enter(krPhysObj* body, const krIntVector3& cell) {
    if (cells.emplace(cell, body).second) ++body->gridCells;
}

void krPhysGrid::leave(krPhysObj* body, const krIntVector3& cell) {
    if (cells.erase({cell, body})) --body->gridCells;
}

void krPhysGrid::move(krPhysObj* body, const krBox& oldBox, const krBox& newBox) {
    const Range from = rangeOf(oldBox), to = rangeOf(newBox);
    if (from.oversized && to.oversized) return;
    if (from.oversized) {
        // It stood on the list, not in cells: all of the new cells are new to it.
        oversized.erase(body);
        forEachCell(to, [&](const krIntVector3& c) { enter(body, c); });
        return;
    }
    if (to.oversized) {
        forEachCell(from, [&](const krIntVector3& c) { leave(body, c); });
        oversized.insert(body);
        return;
    }
    if (from.lo == to.lo && from.hi == to.hi) return;
    forEachCell(from, [&](const krIntVector3& c) {
        if (!to.contains(c)) leave(body, c);
    });
    forEachCell(to, [&](const krIntVector3& c) {
        if (!from.contains(c)) enter(body, c);
    });
}

void krPhysGrid::remove(krPhysObj* body, const krBox& box) {
    oversized.erase(body);
    const Range r = rangeOf(box);
    if (!r.oversized) forEachCell(r, [&](const krIntVector3& c) { leave(body, c); });
    // A body driven by received states stands under boxes the grid never saw; what is left of
    // it goes by a walk over everything.
    if (body->gridCells > 0) purge(body);
}

void krPhysGrid::purge(krPhysObj* body) {
    for (auto it = cells.begin(); it != cells.end();) {
        if (it->second == body) it = cells.erase(it);
        else ++it;
    }
    body->gridCells = 0;
}

void krPhysGrid::query(const krBox& box, std::vector<krPhysObj*>& found) const {
    found.clear();
    auto consider = [&](krPhysObj* body) {
        if (body->currentBox.overlaps(box)) found.push_back(body);
    };
    const Range r = rangeOf(box);
    if (r.oversized) {
        for (const auto& entry : cells) consider(entry.second);
    } else {
        forEachCell(r, [&](const krIntVector3& c) {
            for (auto it = cells.lower_bound({c, nullptr}); it != cells.end() && it->first == c; ++it)
                consider(it->second);
        });
    }
    for (krPhysObj* body : oversized) consider(body);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
}
