// The index of a world's collision children for box queries.
#include "physics/krBroadPhase.h"

#include <algorithm>
#include <cmath>

#include "physics/krPhysObj.h"

uint64_t krBroadPhase::key(int32_t x, int32_t y, int32_t z) {
    auto bits = [](int32_t v) { return static_cast<uint64_t>(v + cellLimit) & 0x1FFFFF; };
    return bits(x) << 42 | bits(y) << 21 | bits(z);
}

bool krBroadPhase::rangeOf(const krBox& box, int64_t limit, Range& r) {
    const float lo[3] = {box.min.x, box.min.y, box.min.z};
    const float hi[3] = {box.max.x, box.max.y, box.max.z};
    int64_t cellsCovered = 1;
    constexpr float inverse = 1.0f / cellSize;
    constexpr float reach = static_cast<float>(cellLimit - 1);
    for (int a = 0; a < 3; ++a) {
        const float l = std::floor(lo[a] * inverse), h = std::floor(hi[a] * inverse);
        // Written so that a coordinate that is not a number fails too.
        if (!(l >= -reach && h <= reach && l <= h)) return false;
        r.lo[a] = static_cast<int32_t>(l);
        r.hi[a] = static_cast<int32_t>(h);
        cellsCovered *= int64_t(r.hi[a]) - r.lo[a] + 1;
    }
    return cellsCovered <= limit;
}

void krBroadPhase::insertSorted(std::vector<int32_t>& list, int32_t slot) {
    const uint64_t ordinal = slots[static_cast<size_t>(slot)].ordinal;
    auto at = std::lower_bound(list.begin(), list.end(), ordinal,
                               [this](int32_t s, uint64_t o) { return slots[static_cast<size_t>(s)].ordinal < o; });
    list.insert(at, slot);
}

void krBroadPhase::eraseSorted(std::vector<int32_t>& list, int32_t slot) {
    const uint64_t ordinal = slots[static_cast<size_t>(slot)].ordinal;
    auto at = std::lower_bound(list.begin(), list.end(), ordinal,
                               [this](int32_t s, uint64_t o) { return slots[static_cast<size_t>(s)].ordinal < o; });
    if (at != list.end() && *at == slot) list.erase(at);
}

void krBroadPhase::add(krCollisionObject* object) {
    if (object->broadSlot >= 0) return;
    int32_t slot;
    if (!freeSlots.empty()) {
        slot = freeSlots.back();
        freeSlots.pop_back();
    } else {
        slot = static_cast<int32_t>(slots.size());
        slots.emplace_back();
    }
    Slot& s = slots[static_cast<size_t>(slot)];
    s = Slot{};
    s.object = object;
    s.body = dynamic_cast<krPhysObj*>(object);
    s.ordinal = nextOrdinal++;
    object->broadSlot = slot;
    order.push_back(slot);
    place(slot);
}

void krBroadPhase::remove(krCollisionObject* object) {
    const int32_t slot = object->broadSlot;
    if (slot < 0) return;
    Slot& s = slots[static_cast<size_t>(slot)];
    if (s.indexed) unindex(slot);
    else eraseSorted(loose, slot);
    eraseSorted(order, slot);
    s.object = nullptr;
    s.body = nullptr;
    object->broadSlot = -1;
    freeSlots.push_back(slot);
}

void krBroadPhase::moved(krPhysObj* body) {
    if (body->broadSlot >= 0) place(body->broadSlot);
}

void krBroadPhase::index(int32_t slot) {
    Slot& s = slots[static_cast<size_t>(slot)];
    for (int32_t x = s.range.lo[0]; x <= s.range.hi[0]; ++x)
        for (int32_t y = s.range.lo[1]; y <= s.range.hi[1]; ++y)
            for (int32_t z = s.range.lo[2]; z <= s.range.hi[2]; ++z) insertSorted(cells[key(x, y, z)], slot);
    s.indexed = true;
}

void krBroadPhase::unindex(int32_t slot) {
    Slot& s = slots[static_cast<size_t>(slot)];
    for (int32_t x = s.range.lo[0]; x <= s.range.hi[0]; ++x)
        for (int32_t y = s.range.lo[1]; y <= s.range.hi[1]; ++y)
            for (int32_t z = s.range.lo[2]; z <= s.range.hi[2]; ++z) {
                auto it = cells.find(key(x, y, z));
                if (it == cells.end()) continue;
                eraseSorted(it->second, slot);
                if (it->second.empty()) cells.erase(it);
            }
    s.indexed = false;
}

void krBroadPhase::place(int32_t slot) {
    Slot& s = slots[static_cast<size_t>(slot)];
    if (s.indexed) {
        const krBox& b = s.body->nextBox;
        if (s.fat.contains(b.min) && s.fat.contains(b.max)) return;
    }
    Range r;
    krBox fat;
    bool indexable = false;
    if (s.body) {
        const krVector3 grow(slack, slack, slack);
        fat = krBox(s.body->nextBox.min - grow, s.body->nextBox.max + grow);
        indexable = rangeOf(fat, maxEntryCells, r);
    }
    if (s.indexed) unindex(slot);
    else if (indexable) eraseSorted(loose, slot);
    if (indexable) {
        s.range = r;
        s.fat = fat;
        index(slot);
    } else if (!std::binary_search(loose.begin(), loose.end(), slot, [this](int32_t a, int32_t b) {
                   return slots[static_cast<size_t>(a)].ordinal < slots[static_cast<size_t>(b)].ordinal;
               })) {
        insertSorted(loose, slot);
    }
}

void krBroadPhase::collect(krCollectResult& result, const krBox& box) {
    Range r;
    if (!rangeOf(box, maxQueryCells, r)) {
        for (size_t i = 0; i < order.size() && result.count < krCollectResult::capacity; ++i)
            slots[static_cast<size_t>(order[i])].object->collectObjects(result, box);
        return;
    }
    cursors.clear();
    if (!loose.empty()) cursors.push_back({loose.data(), loose.data() + loose.size()});
    for (int32_t x = r.lo[0]; x <= r.hi[0]; ++x)
        for (int32_t y = r.lo[1]; y <= r.hi[1]; ++y)
            for (int32_t z = r.lo[2]; z <= r.hi[2]; ++z) {
                auto it = cells.find(key(x, y, z));
                if (it != cells.end()) cursors.push_back({it->second.data(), it->second.data() + it->second.size()});
            }
    // Merge the lists by ordinal; an object over several cells heads several lists at once and
    // is asked once. Once the result is full, nothing further could enter it.
    while (result.count < krCollectResult::capacity) {
        uint64_t least = UINT64_MAX;
        int32_t next = -1;
        for (const Cursor& c : cursors) {
            if (c.at == c.end) continue;
            const uint64_t o = slots[static_cast<size_t>(*c.at)].ordinal;
            if (o < least) {
                least = o;
                next = *c.at;
            }
        }
        if (next < 0) break;
        for (Cursor& c : cursors)
            if (c.at != c.end && *c.at == next) ++c.at;
        slots[static_cast<size_t>(next)].object->collectObjects(result, box);
    }
}

void krBroadPhase::list(std::vector<krCollisionObject*>& out) const {
    out.clear();
    for (int32_t slot : order) out.push_back(slots[static_cast<size_t>(slot)].object);
}
