// krHandles: the process-wide table that turns objects and scripts into 32-bit script ints and back.
// A 64-bit pointer does not fit a script int, and a script may keep an int after the thing is gone,
// so every such int is a handle: made once per thing, never reused, and resolving to null once
// the thing has been destroyed.
#pragma once

#include <cstdint>

enum class krHandleKind : uint8_t { object = 1, script = 2 };

namespace krHandles {
    // A new handle for `target`; handles count up from 1 and are never handed out twice.
    int32_t acquire(void* target, krHandleKind kind);
    // The target of a live handle of that kind, else null.
    void* resolve(int32_t handle, krHandleKind kind);
    // Forgets the handle when its target dies.
    void drop(int32_t handle);
    // Number of live handles, for tests.
    int32_t liveCount();
}
