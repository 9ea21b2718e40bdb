// The window system behind the engine's windows: native windows with an OpenGL context, display
// modes, the event queue, the cursor, and the message box. Only this layer talks to the video
// library, and only once a window starts it, so a run that never opens a window never touches it.
#pragma once

#include <cstdint>
#include <string>

// A framebuffer format: asked for when a window is made, read back from the one obtained.
struct krPixelFormat {
    int32_t colorBits = 24;  // red + green + blue
    int32_t alphaBits = 0;
    int32_t depthBits = 16;
    int32_t stencilBits = 0;
    int32_t samples = 0;    // multisampling; 0 is none
    int32_t accumBits = 0;  // red + green + blue + alpha of the accumulation buffer
};

struct krDisplayMode {
    int32_t width = 0, height = 0;
    int32_t bitsPerPixel = 32;
    int32_t frequency = 0;  // Hz; 0 is any
};

// One message for a window, already in the engine's terms.
struct krWindowMessage {
    enum Kind { close, activate, deactivate, keyDown, keyUp, keyChar, wheel };
    Kind kind = close;
    // Engine key code (platform/krKeyCodes.h) of keys and mouse buttons.
    int32_t key = 0;
    // A key-down that the keyboard's auto-repeat made.
    bool repeat = false;
    // A typed character, 0 to 255.
    int32_t character = 0;
    // Wheel travel, 120 units a notch, positive away from the user.
    int32_t wheelUnits = 0;
};

// Whoever owns a native window hears its messages here.
class krWindowListener {
public:
    virtual void handleMessage(const krWindowMessage& message) = 0;

protected:
    ~krWindowListener() = default;
};

struct krNativeWindow;

namespace krWindowSystem {
    // Brings the video layer up for one more window (counted); false with the reason in `error`.
    // The first start also decides whether message boxes can be shown.
    bool start(std::string& error);
    // Takes back one start; the last one shuts the video layer down.
    void stop();

    // A hidden window with a client area of width x height and a double-buffered compatibility
    // OpenGL context of the format asked, made current. Null with the reason in `error` when the
    // system has no such format or no window can be made.
    krNativeWindow* create(const std::string& title, int32_t width, int32_t height, const krDisplayMode* fullscreen,
                           const krPixelFormat& format, krWindowListener* listener, std::string& error);
    void destroy(krNativeWindow* window);
    // The format in force for the current context of the window.
    krPixelFormat describe(krNativeWindow* window);
    void clientSize(krNativeWindow* window, int32_t& width, int32_t& height);
    // The centre of the client area in screen coordinates, where a captured cursor is held.
    void clientCentre(krNativeWindow* window, int32_t& x, int32_t& y);
    void setTitle(krNativeWindow* window, const std::string& title);
    void show(krNativeWindow* window);
    void swap(krNativeWindow* window);
    void makeCurrent(krNativeWindow* window);

    // With a window: switch it to the closest display mode in fullscreen. Without: only whether
    // such a mode exists, for a window yet to be made. False when there is none.
    bool enterFullscreen(krNativeWindow* window, const krDisplayMode& mode);
    void leaveFullscreen(krNativeWindow* window);
    // The desktop mode of the screen the window is on.
    krDisplayMode screenMode(krNativeWindow* window);

    // Takes the next message from the queue and hands it to its window's listener; with `wait`
    // it blocks until there is one. False when the queue was empty. A request to close the
    // application posts the quit request.
    bool dispatch(bool wait);

    void showCursor(bool show);
    void cursorPosition(int32_t& x, int32_t& y);
    void warpCursor(int32_t x, int32_t y);

    // An OpenGL entry point of the current context's driver, or null.
    void* procAddress(const char* name);
}
