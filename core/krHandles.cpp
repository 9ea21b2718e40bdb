// Handle table: a hash map from handle to target; handles are taken from a counter that only grows.
#include "core/krHandles.h"

#include <unordered_map>

namespace {
struct Entry {
    void* target;
    krHandleKind kind;
};

std::unordered_map<int32_t, Entry>& table() {
    static std::unordered_map<int32_t, Entry> entries;
    return entries;
}

int32_t lastHandle = 0;
}

int32_t krHandles::acquire(void* target, krHandleKind kind) {
    // After 2^31 - 1 handles the counter would have to start over; skip any handle still alive
    // so that two live things never share one.
    do {
        lastHandle = lastHandle == INT32_MAX ? 1 : lastHandle + 1;
    } while (table().count(lastHandle));
    table()[lastHandle] = Entry{target, kind};
    return lastHandle;
}

void* krHandles::resolve(int32_t handle, krHandleKind kind) {
    if (handle <= 0) return nullptr;
    auto it = table().find(handle);
    if (it == table().end() || it->second.kind != kind) return nullptr;
    return it->second.target;
}

void krHandles::drop(int32_t handle) {
    if (handle > 0) table().erase(handle);
}

int32_t krHandles::liveCount() {
    return static_cast<int32_t>(table().size());
}
