// Shared inside the window system layer: the pieces that work on the video library's own types.
#pragma once

#include <SDL2/SDL.h>

#include <cstdint>

#include "platform/krWindowSystem.h"

namespace krWindowSystemSDL {
    // The engine key code of a key; 0 for keys without a name. Left and right modifier keys give
    // the one code of their kind.
    int32_t keyCode(SDL_Keycode key);
    // The engine code of a mouse button; 0 for buttons beyond the three named ones.
    int32_t buttonCode(uint8_t button);
    // The character a key-down types where the text layer has none: the control characters of
    // Backspace, Tab, Enter and Esc. 0 for every other key.
    int32_t controlCharacter(SDL_Keycode key);
    // Decodes UTF-8 text and calls `emit` with each code point up to 255, the characters that the
    // engine's one-byte text can hold; malformed bytes are passed over.
    void latin1Characters(const char* text, void (*emit)(void* context, int32_t character), void* context);

    // Installs the message box and says whether one can appear on this video driver: one that
    // needs a window manager is held back when none runs, since it would wait forever for one.
    void installMessageBox();
}
