// Keyboard and mouse codes of the video library in the engine's numbering, and typed text.
#include "platform/krKeyCodes.h"
#include "platform/krWindowSystemSDL.h"

int32_t krWindowSystemSDL::keyCode(SDL_Keycode key) {
    if (key >= SDLK_a && key <= SDLK_z) return krLetterKey(static_cast<char>('A' + (key - SDLK_a)));
    if (key >= SDLK_0 && key <= SDLK_9) return krDigitKey(key - SDLK_0);
    if (key >= SDLK_KP_1 && key <= SDLK_KP_9) return krNumpadKey(key - SDLK_KP_1 + 1);
    if (key >= SDLK_F1 && key <= SDLK_F12) return krFunctionKey(key - SDLK_F1 + 1);
    if (key >= SDLK_F13 && key <= SDLK_F24) return krFunctionKey(key - SDLK_F13 + 13);
    switch (key) {
    case SDLK_KP_0: return krNumpadKey(0);
    case SDLK_BACKSPACE: return krKeyBackspace;
    case SDLK_TAB: return krKeyTab;
    case SDLK_RETURN:
    case SDLK_KP_ENTER: return krKeyEnter;
    case SDLK_LSHIFT:
    case SDLK_RSHIFT: return krKeyShift;
    case SDLK_LCTRL:
    case SDLK_RCTRL: return krKeyControl;
    case SDLK_LALT:
    case SDLK_RALT: return krKeyAlt;
    case SDLK_PAUSE: return krKeyPause;
    case SDLK_ESCAPE: return krKeyEsc;
    case SDLK_SPACE: return krKeySpace;
    case SDLK_PAGEUP: return krKeyPageUp;
    case SDLK_PAGEDOWN: return krKeyPageDown;
    case SDLK_END: return krKeyEnd;
    case SDLK_HOME: return krKeyHome;
    case SDLK_LEFT: return krKeyLeft;
    case SDLK_UP: return krKeyUp;
    case SDLK_RIGHT: return krKeyRight;
    case SDLK_DOWN: return krKeyDown;
    case SDLK_INSERT: return krKeyInsert;
    case SDLK_DELETE: return krKeyDelete;
    default: return krKeyUndefined;
    }
}

int32_t krWindowSystemSDL::buttonCode(uint8_t button) {
    switch (button) {
    case SDL_BUTTON_LEFT: return krKeyMouseLeft;
    case SDL_BUTTON_MIDDLE: return krKeyMouseMiddle;
    case SDL_BUTTON_RIGHT: return krKeyMouseRight;
    default: return krKeyUndefined;
    }
}

int32_t krWindowSystemSDL::controlCharacter(SDL_Keycode key) {
    switch (key) {
    case SDLK_BACKSPACE: return '\b';
    case SDLK_TAB: return '\t';
    case SDLK_RETURN:
    case SDLK_KP_ENTER: return '\r';
    case SDLK_ESCAPE: return 0x1B;
    default: return 0;
    }
}

void krWindowSystemSDL::latin1Characters(const char* text, void (*emit)(void*, int32_t), void* context) {
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    while (*p) {
        const unsigned char lead = *p++;
        int32_t code;
        int follow;
        if (lead < 0x80) {
            code = lead;
            follow = 0;
        } else if ((lead & 0xE0) == 0xC0) {
            code = lead & 0x1F;
            follow = 1;
        } else if ((lead & 0xF0) == 0xE0) {
            code = lead & 0x0F;
            follow = 2;
        } else if ((lead & 0xF8) == 0xF0) {
            code = lead & 0x07;
            follow = 3;
        } else {
            continue;  // a stray continuation byte or an invalid lead
        }
        bool whole = true;
        for (int i = 0; i < follow; ++i) {
            if ((*p & 0xC0) != 0x80) {
                whole = false;
                break;
            }
            code = code << 6 | (*p++ & 0x3F);
        }
        // Two bytes for a code below 0x80 is an overlong form, which could smuggle in a NUL.
        if (follow == 1 && code < 0x80) whole = false;
        if (whole && code <= 0xFF) emit(context, code);
    }
}
