// krBroadPhase: the collision children of a world in the order they joined it, with an index over
// the proposed boxes of the bodies among them. A box query asks only the objects the index cannot
// rule out, in list order, and so finds exactly what asking every object in turn would find.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "core/krBox.h"
#include "render/krObjectContainer.h"

class krCollisionObject;
class krPhysObj;

class krBroadPhase {
public:
    // Edge of an index cell in metres: a crate covers one to eight cells, a car a few more.
    static constexpr float cellSize = 2.0f;
    // A body is indexed by its box grown by this much, and indexed again only when its box
    // leaves that: a body resting on a cell border does not move between cells every substep.
    static constexpr float slack = 0.25f;
    // A body over more cells than this is asked by every query instead of being indexed.
    static constexpr int64_t maxEntryCells = 64;
    // A query over more cells than this asks every object in turn.
    static constexpr int64_t maxQueryCells = 512;
    // Cell coordinates are packed into 21 bits each; further out everything is asked.
    static constexpr int32_t cellLimit = 1 << 20;

    krBroadPhase() = default;
    krBroadPhase(const krBroadPhase&) = delete;
    krBroadPhase& operator=(const krBroadPhase&) = delete;

    // Appends an object at the end of the list.
    void add(krCollisionObject* object);
    void remove(krCollisionObject* object);
    // A body of the list proposed a new box.
    void moved(krPhysObj* body);
    // What collectObjects(result, box) on every object of the list, in list order, would give.
    void collect(krCollectResult& result, const krBox& box);
    // The objects in list order.
    void list(std::vector<krCollisionObject*>& out) const;
    size_t size() const { return order.size(); }

private:
    struct Range {
        int32_t lo[3], hi[3];
        bool operator==(const Range&) const = default;
    };
    struct Slot {
        krCollisionObject* object = nullptr;
        // Bodies are indexed by their proposed box; anything else is asked by every query.
        krPhysObj* body = nullptr;
        uint64_t ordinal = 0;
        bool indexed = false;
        Range range{};
        // The box the cells were taken from.
        krBox fat;
    };

    // The cells of box, false when it has none that can be indexed.
    static bool rangeOf(const krBox& box, int64_t limit, Range& r);
    static uint64_t key(int32_t x, int32_t y, int32_t z);
    // Inserts a slot into a list kept in ordinal order, and takes it out.
    void insertSorted(std::vector<int32_t>& list, int32_t slot);
    void eraseSorted(std::vector<int32_t>& list, int32_t slot);
    void index(int32_t slot);
    void unindex(int32_t slot);
    void place(int32_t slot);

    std::vector<Slot> slots;
    std::vector<int32_t> freeSlots;
    // Every object, in list order.
    std::vector<int32_t> order;
    // The objects the index does not hold, in list order.
    std::vector<int32_t> loose;
    // Per cell, the indexed bodies over it, in list order.
    std::unordered_map<uint64_t, std::vector<int32_t>> cells;
    uint64_t nextOrdinal = 0;
    // Reused by queries: where each merged list stands.
    struct Cursor {
        const int32_t* at;
        const int32_t* end;
    };
    std::vector<Cursor> cursors;
};
