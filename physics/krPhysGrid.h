// krPhysGrid: the world's uniform spatial hash of bodies by the boxes they stand under, for trigger
// boxes to find who is inside. Cells are keyed by coordinates divided by the cell size and
// truncated toward zero, so cell 0 is twice as wide as the others on each axis.
#pragma once

#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "core/krBox.h"
#include "core/krVector3.h"

class krPhysObj;

class krPhysGrid {
public:
    // Edge of a cell in metres.
    static constexpr float cellSize = 32.0f;
    // A box over more cells than this (a body scaled beyond reason, or one far out) is kept on a
    // list of its own, so that no move or query has to walk its cells one by one.
    static constexpr int64_t maxCells = 4096;

    ~krPhysGrid();

    // Takes the body out of the cells that oldBox covers and newBox doesn't, and enters it in the
    // cells that newBox covers and oldBox doesn't.
    void move(krPhysObj* body, const krBox& oldBox, const krBox& newBox);
    // Takes the body out of every cell of box, and out of the grid altogether.
    void remove(krPhysObj* body, const krBox& box);
    // The bodies found in the cells of box whose current boxes overlap box, each once, ordered
    // by pointer.
    void query(const krBox& box, std::vector<krPhysObj*>& found) const;

private:
    struct Range {
        krIntVector3 lo, hi;
        bool oversized;
        bool contains(const krIntVector3& c) const {
            return c.x >= lo.x && c.x <= hi.x && c.y >= lo.y && c.y <= hi.y && c.z >= lo.z && c.z <= hi.z;
        }
    };
    static Range rangeOf(const krBox& box);
    template <class F>
    static void forEachCell(const Range& r, F f);
    void enter(krPhysObj* body, const krIntVector3& cell);
    void leave(krPhysObj* body, const krIntVector3& cell);
    void purge(krPhysObj* body);

    std::set<std::pair<krIntVector3, krPhysObj*>> cells;
    std::set<krPhysObj*> oversized;
};
