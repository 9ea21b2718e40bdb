// The video layer's side of the window tests: synthetic device events and the cursor.
#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include <cstring>

#include "gl_events.h"

namespace glTesting {

bool offscreenDriver() {
    const char* driver = SDL_GetCurrentVideoDriver();
    return !driver || (std::strcmp(driver, "x11") != 0 && std::strcmp(driver, "wayland") != 0);
}

namespace events {

const int32_t symA = SDLK_a, symB = SDLK_b, symC = SDLK_c, symD = SDLK_d, symS = SDLK_s, symW = SDLK_w,
              symF13 = SDLK_F13, symKeypad0 = SDLK_KP_0, symCapsLock = SDLK_CAPSLOCK, symLeftShift = SDLK_LSHIFT,
              symRightShift = SDLK_RSHIFT, symLeftCtrl = SDLK_LCTRL, symRightCtrl = SDLK_RCTRL,
              symLeftAlt = SDLK_LALT, symRightAlt = SDLK_RALT, symSpace = SDLK_SPACE, symBackspace = SDLK_BACKSPACE,
              symReturn = SDLK_RETURN;
const int buttonLeft = SDL_BUTTON_LEFT, buttonMiddle = SDL_BUTTON_MIDDLE, buttonRight = SDL_BUTTON_RIGHT,
          buttonX1 = SDL_BUTTON_X1;

namespace {
uint32_t windowId() { return SDL_GetWindowID(SDL_GL_GetCurrentWindow()); }
}

void key(bool down, int32_t sym, bool repeat) {
    SDL_Event e{};
    e.type = down ? SDL_KEYDOWN : SDL_KEYUP;
    e.key.windowID = windowId();
    e.key.state = down ? SDL_PRESSED : SDL_RELEASED;
    e.key.repeat = repeat;
    e.key.keysym.sym = sym;
    SDL_PushEvent(&e);
}

void wheel(float notches) {
    SDL_Event e{};
    e.type = SDL_MOUSEWHEEL;
    e.wheel.windowID = windowId();
    e.wheel.preciseY = notches;
    e.wheel.y = static_cast<Sint32>(notches);
    e.wheel.direction = SDL_MOUSEWHEEL_NORMAL;
    SDL_PushEvent(&e);
}

void text(const char* utf8) {
    SDL_Event e{};
    e.type = SDL_TEXTINPUT;
    e.text.windowID = windowId();
    std::strncpy(e.text.text, utf8, sizeof e.text.text - 1);
    SDL_PushEvent(&e);
}

void button(bool down, int which) {
    SDL_Event e{};
    e.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
    e.button.windowID = windowId();
    e.button.button = static_cast<Uint8>(which);
    SDL_PushEvent(&e);
}

void close() {
    SDL_Event e{};
    e.type = SDL_WINDOWEVENT;
    e.window.event = SDL_WINDOWEVENT_CLOSE;
    e.window.windowID = windowId();
    SDL_PushEvent(&e);
}

void flush() {
    if (SDL_WasInit(SDL_INIT_VIDEO)) SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
}

void cursor(int32_t& x, int32_t& y) { SDL_GetGlobalMouseState(&x, &y); }
void warpCursor(int32_t x, int32_t y) { SDL_WarpMouseGlobal(x, y); }

void moveWindow(int32_t x, int32_t y) {
    SDL_SetWindowPosition(SDL_GL_GetCurrentWindow(), x, y);
    // The window system tells of the move by an event of its own.
    SDL_Delay(50);
    SDL_PumpEvents();
}

}
}

namespace {
// The driver stays loaded for the whole run, as in a program that keeps its window: without this
// each test would load and unload it, and the leak checker, which looks at exit, could no longer
// name the driver in what it keeps, nor tell it from the engine's own leaks.
class DriverResident : public testing::Environment {
public:
    void SetUp() override {
        if (SDL_InitSubSystem(SDL_INIT_VIDEO) == 0) SDL_GL_LoadLibrary(nullptr);
    }
};

const testing::Environment* const driver = testing::AddGlobalTestEnvironment(new DriverResident);
}
