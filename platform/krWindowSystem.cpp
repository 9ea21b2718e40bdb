// The window system on SDL: windows with OpenGL contexts, display modes, the event queue, the
// cursor. Messages are fetched for all windows at once and handed to the window they belong to,
// so several windows can share one queue.
#include "platform/krWindowSystem.h"

#include <map>

#include "platform/krSystem.h"
#include "platform/krWindowSystemSDL.h"

struct krNativeWindow {
    SDL_Window* window = nullptr;
    SDL_GLContext context = nullptr;
    krWindowListener* listener = nullptr;
};

namespace {
int startCount = 0;
// By the video library's window id; ordered, so the oldest window comes first.
std::map<uint32_t, krNativeWindow*> windows;

// Wheel notches are reported in the classic units of 120 a notch.
constexpr float wheelUnitsPerNotch = 120;

// Bits per channel of a colour depth asked as red + green + blue.
int channelBits(int32_t colorBits) { return colorBits >= 24 ? 8 : colorBits >= 15 ? 5 : 4; }

void askFormat(const krPixelFormat& f) {
    SDL_GL_ResetAttributes();
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_COMPATIBILITY);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    const int channel = channelBits(f.colorBits);
    SDL_GL_SetAttribute(SDL_GL_RED_SIZE, channel);
    SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, channel);
    SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, channel);
    SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, f.alphaBits);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, f.depthBits);
    SDL_GL_SetAttribute(SDL_GL_STENCIL_SIZE, f.stencilBits);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, f.samples > 0 ? 1 : 0);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, f.samples > 0 ? f.samples : 0);
    // The total is asked as a floor for each colour channel; alpha is never accumulated.
    const int accum = f.accumBits > 0 ? (f.accumBits + 3) / 4 : 0;
    SDL_GL_SetAttribute(SDL_GL_ACCUM_RED_SIZE, accum);
    SDL_GL_SetAttribute(SDL_GL_ACCUM_GREEN_SIZE, accum);
    SDL_GL_SetAttribute(SDL_GL_ACCUM_BLUE_SIZE, accum);
    SDL_GL_SetAttribute(SDL_GL_ACCUM_ALPHA_SIZE, 0);
}

int glAttribute(SDL_GLattr attribute) {
    int value = 0;
    SDL_GL_GetAttribute(attribute, &value);
    return value;
}

bool closestMode(int display, const krDisplayMode& mode, SDL_DisplayMode& found) {
    SDL_DisplayMode want{};
    want.w = mode.width;
    want.h = mode.height;
    want.refresh_rate = mode.frequency;
    return SDL_GetClosestDisplayMode(display < 0 ? 0 : display, &want, &found) != nullptr;
}

krNativeWindow* windowOf(uint32_t id) {
    if (windows.empty()) return nullptr;
    auto it = windows.find(id);
    // Events with no window of ours (keys while none has the focus) belong to the oldest one,
    // the application's main window.
    return it != windows.end() ? it->second : windows.begin()->second;
}

void send(krNativeWindow* w, const krWindowMessage& m) {
    if (w && w->listener) w->listener->handleMessage(m);
}

void sendCharacter(void* context, int32_t character) {
    krWindowMessage m;
    m.kind = krWindowMessage::keyChar;
    m.character = character;
    send(static_cast<krNativeWindow*>(context), m);
}

void translate(const SDL_Event& e) {
    krWindowMessage m;
    switch (e.type) {
    case SDL_QUIT:
        krSystem::postQuit();
        return;
    case SDL_WINDOWEVENT:
        if (e.window.event == SDL_WINDOWEVENT_CLOSE) m.kind = krWindowMessage::close;
        else if (e.window.event == SDL_WINDOWEVENT_FOCUS_GAINED) m.kind = krWindowMessage::activate;
        else if (e.window.event == SDL_WINDOWEVENT_FOCUS_LOST) m.kind = krWindowMessage::deactivate;
        else return;
        send(windowOf(e.window.windowID), m);
        return;
    case SDL_KEYDOWN:
    case SDL_KEYUP: {
        krNativeWindow* w = windowOf(e.key.windowID);
        m.kind = e.type == SDL_KEYDOWN ? krWindowMessage::keyDown : krWindowMessage::keyUp;
        m.key = krWindowSystemSDL::keyCode(e.key.keysym.sym);
        m.repeat = e.key.repeat != 0;
        send(w, m);
        // Control keys type their character after the key, as each repeat does.
        if (e.type == SDL_KEYDOWN)
            if (int32_t c = krWindowSystemSDL::controlCharacter(e.key.keysym.sym)) sendCharacter(w, c);
        return;
    }
    case SDL_TEXTINPUT:
        krWindowSystemSDL::latin1Characters(e.text.text, sendCharacter, windowOf(e.text.windowID));
        return;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        m.kind = e.type == SDL_MOUSEBUTTONDOWN ? krWindowMessage::keyDown : krWindowMessage::keyUp;
        m.key = krWindowSystemSDL::buttonCode(e.button.button);
        if (m.key) send(windowOf(e.button.windowID), m);
        return;
    case SDL_MOUSEWHEEL: {
        m.kind = krWindowMessage::wheel;
        float notches = e.wheel.preciseY;
        if (e.wheel.direction == SDL_MOUSEWHEEL_FLIPPED) notches = -notches;
        m.wheelUnits = static_cast<int32_t>(notches * wheelUnitsPerNotch + (notches < 0 ? -0.5f : 0.5f));
        if (m.wheelUnits) send(windowOf(e.wheel.windowID), m);
        return;
    }
    default:
        return;
    }
}
}

bool krWindowSystem::start(std::string& error) {
    if (startCount == 0) {
        // Without a display the video library would fall back to drawing off screen, and a game
        // would run unseen. Off-screen drawing is for whoever asks for its driver by name.
        const char* driver = SDL_getenv("SDL_VIDEODRIVER");
        const char* display = SDL_getenv("DISPLAY");
        const char* wayland = SDL_getenv("WAYLAND_DISPLAY");
        const bool chosen = driver && *driver;
        if (!chosen && !(display && *display) && !(wayland && *wayland)) {
            error = "there is no display (DISPLAY is not set); to draw without one, set SDL_VIDEODRIVER=offscreen";
            return false;
        }
        if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
            error = SDL_GetError();
            // The library's last word is of the last driver it tried, often not the one wanted.
            if (!chosen && display && *display) error = "cannot open the display \"" + std::string(display) + "\" (" + error + ")";
            return false;
        }
        krWindowSystemSDL::installMessageBox();
    }
    ++startCount;
    return true;
}

void krWindowSystem::stop() {
    if (startCount == 0) return;
    if (--startCount == 0) SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

krNativeWindow* krWindowSystem::create(const std::string& title, int32_t width, int32_t height,
                                       const krDisplayMode* fullscreen, const krPixelFormat& format,
                                       krWindowListener* listener, std::string& error) {
    askFormat(format);
    Uint32 flags = SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN;
    if (fullscreen) flags |= SDL_WINDOW_FULLSCREEN;
    SDL_Window* window = SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, width,
                                          height, flags);
    if (!window) {
        error = SDL_GetError();
        return nullptr;
    }
    SDL_DisplayMode mode;
    if (fullscreen && closestMode(SDL_GetWindowDisplayIndex(window), *fullscreen, mode))
        SDL_SetWindowDisplayMode(window, &mode);
    SDL_GLContext context = SDL_GL_CreateContext(window);
    if (!context) {
        error = SDL_GetError();
        SDL_DestroyWindow(window);
        return nullptr;
    }
    auto* w = new krNativeWindow{window, context, listener};
    windows[SDL_GetWindowID(window)] = w;
    return w;
}

void krWindowSystem::destroy(krNativeWindow* w) {
    if (!w) return;
    windows.erase(SDL_GetWindowID(w->window));
    if (SDL_GL_GetCurrentContext() == w->context) SDL_GL_MakeCurrent(w->window, nullptr);
    SDL_GL_DeleteContext(w->context);
    SDL_DestroyWindow(w->window);
    delete w;
}

krPixelFormat krWindowSystem::describe(krNativeWindow*) {
    krPixelFormat f;
    f.colorBits = glAttribute(SDL_GL_RED_SIZE) + glAttribute(SDL_GL_GREEN_SIZE) + glAttribute(SDL_GL_BLUE_SIZE);
    f.alphaBits = glAttribute(SDL_GL_ALPHA_SIZE);
    f.depthBits = glAttribute(SDL_GL_DEPTH_SIZE);
    f.stencilBits = glAttribute(SDL_GL_STENCIL_SIZE);
    f.samples = glAttribute(SDL_GL_MULTISAMPLEBUFFERS) ? glAttribute(SDL_GL_MULTISAMPLESAMPLES) : 0;
    f.accumBits = glAttribute(SDL_GL_ACCUM_RED_SIZE) + glAttribute(SDL_GL_ACCUM_GREEN_SIZE) +
                  glAttribute(SDL_GL_ACCUM_BLUE_SIZE) + glAttribute(SDL_GL_ACCUM_ALPHA_SIZE);
    return f;
}

void krWindowSystem::clientSize(krNativeWindow* w, int32_t& width, int32_t& height) {
    SDL_GL_GetDrawableSize(w->window, &width, &height);
}

void krWindowSystem::clientCentre(krNativeWindow* w, int32_t& x, int32_t& y) {
    int left, top, width, height;
    SDL_GetWindowPosition(w->window, &left, &top);
    SDL_GetWindowSize(w->window, &width, &height);
    x = left + width / 2;
    y = top + height / 2;
}

void krWindowSystem::setTitle(krNativeWindow* w, const std::string& title) {
    SDL_SetWindowTitle(w->window, title.c_str());
}

void krWindowSystem::show(krNativeWindow* w) {
    SDL_ShowWindow(w->window);
}

void krWindowSystem::swap(krNativeWindow* w) {
    SDL_GL_SwapWindow(w->window);
}

void krWindowSystem::makeCurrent(krNativeWindow* w) {
    SDL_GL_MakeCurrent(w->window, w->context);
}

bool krWindowSystem::enterFullscreen(krNativeWindow* w, const krDisplayMode& mode) {
    SDL_DisplayMode found;
    if (!closestMode(w ? SDL_GetWindowDisplayIndex(w->window) : 0, mode, found)) return false;
    if (!w) return true;
    return SDL_SetWindowDisplayMode(w->window, &found) == 0 && SDL_SetWindowFullscreen(w->window, SDL_WINDOW_FULLSCREEN) == 0;
}

void krWindowSystem::leaveFullscreen(krNativeWindow* w) {
    SDL_SetWindowFullscreen(w->window, 0);
}

krDisplayMode krWindowSystem::screenMode(krNativeWindow* w) {
    krDisplayMode result;
    SDL_DisplayMode mode;
    const int display = SDL_GetWindowDisplayIndex(w->window);
    if (SDL_GetDesktopDisplayMode(display < 0 ? 0 : display, &mode) != 0) return result;
    result.width = mode.w;
    result.height = mode.h;
    result.bitsPerPixel = static_cast<int32_t>(SDL_BITSPERPIXEL(mode.format));
    result.frequency = mode.refresh_rate;
    return result;
}

bool krWindowSystem::dispatch(bool wait) {
    if (startCount == 0) return false;
    SDL_Event e;
    if (!(wait ? SDL_WaitEvent(&e) : SDL_PollEvent(&e))) return false;
    translate(e);
    return true;
}

void krWindowSystem::showCursor(bool show) {
    if (startCount) SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
}

void krWindowSystem::cursorPosition(int32_t& x, int32_t& y) {
    SDL_GetGlobalMouseState(&x, &y);
}

void krWindowSystem::warpCursor(int32_t x, int32_t y) {
    if (startCount) SDL_WarpMouseGlobal(x, y);
}

void* krWindowSystem::procAddress(const char* name) {
    return startCount ? SDL_GL_GetProcAddress(name) : nullptr;
}
