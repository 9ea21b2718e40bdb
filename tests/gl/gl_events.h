// The video layer's side of the window tests, kept in its own source (gl_events.cpp) since the
// video layer's headers clash with the engine's math.
#pragma once

#include <cstdint>

namespace glTesting {

// True when the video layer runs without a screen of its own (no cursor, no window positions).
bool offscreenDriver();
// Synthetic events for the current window, as the user's devices would make them.
namespace events {
    void key(bool down, int32_t sym, bool repeat = false);
    void wheel(float notches);
    void text(const char* utf8);
    void button(bool down, int which);
    void close();
    void flush();
    // The cursor in screen coordinates.
    void cursor(int32_t& x, int32_t& y);
    void warpCursor(int32_t x, int32_t y);
    void moveWindow(int32_t x, int32_t y);
    // Key symbols and buttons of the video layer.
    extern const int32_t symA, symB, symC, symD, symS, symW, symF13, symKeypad0, symCapsLock, symLeftShift,
        symRightShift, symLeftCtrl, symRightCtrl, symLeftAlt, symRightAlt, symSpace, symBackspace, symReturn;
    extern const int buttonLeft, buttonMiddle, buttonRight, buttonX1;
}

}
