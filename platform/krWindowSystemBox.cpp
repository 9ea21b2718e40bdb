// Message boxes through the video library, shown only where a box can come and go: under X11
// that takes a window manager, without one the box never appears and waits forever. The X11
// library is opened at run time for the one question, so the engine does not link against it.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <dlfcn.h>

#include <cstring>

#include "platform/krSystem.h"
#include "platform/krWindowSystemSDL.h"

namespace {
struct Xlib {
    decltype(&XOpenDisplay) openDisplay;
    decltype(&XCloseDisplay) closeDisplay;
    decltype(&XDefaultRootWindow) rootWindow;
    decltype(&XInternAtom) internAtom;
    decltype(&XGetWindowProperty) getWindowProperty;
    decltype(&XFree) free;
    decltype(&XSetErrorHandler) setErrorHandler;
    decltype(&XSync) sync;
};

template <typename F>
bool bind(void* lib, const char* name, F& out) {
    out = reinterpret_cast<F>(dlsym(lib, name));
    return out != nullptr;
}

// The window named by the check property of `window`, or 0.
Window checkWindow(const Xlib& x, Display* display, Window window, Atom check) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    Window result = 0;
    if (x.getWindowProperty(display, window, check, 0, 1, False, XA_WINDOW, &type, &format, &count, &after,
                            &data) == Success &&
        type == XA_WINDOW && format == 32 && count == 1 && data)
        std::memcpy(&result, data, sizeof result);
    if (data) x.free(data);
    return result;
}

// A property naming a window that has since gone would raise an error, whose default handler
// ends the process; while we ask, errors are only noted.
int ignoreError(Display*, XErrorEvent*) { return 0; }

// A running manager names a window of its own on the root, and that window names itself.
bool x11WindowManagerRuns() {
    void* lib = dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
    if (!lib) return false;
    Xlib x{};
    bool runs = false;
    if (bind(lib, "XOpenDisplay", x.openDisplay) && bind(lib, "XCloseDisplay", x.closeDisplay) &&
        bind(lib, "XDefaultRootWindow", x.rootWindow) && bind(lib, "XInternAtom", x.internAtom) &&
        bind(lib, "XGetWindowProperty", x.getWindowProperty) && bind(lib, "XFree", x.free) &&
        bind(lib, "XSetErrorHandler", x.setErrorHandler) && bind(lib, "XSync", x.sync)) {
        if (Display* display = x.openDisplay(nullptr)) {
            const Atom check = x.internAtom(display, "_NET_SUPPORTING_WM_CHECK", True);
            if (check != None) {
                auto previous = x.setErrorHandler(ignoreError);
                const Window manager = checkWindow(x, display, x.rootWindow(display), check);
                runs = manager && checkWindow(x, display, manager, check) == manager;
                x.sync(display, False);
                x.setErrorHandler(previous);
            }
            x.closeDisplay(display);
        }
    }
    dlclose(lib);
    return runs;
}

void showBox(const std::string& text, const std::string& caption) {
    if (SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_INFORMATION, caption.c_str(), text.c_str(), nullptr) != 0)
        krSystem::writeError(caption + ": " + text);
}

bool boxCanAppear() {
    const char* driver = SDL_GetCurrentVideoDriver();
    if (!driver) return false;
    if (std::strcmp(driver, "x11") == 0) return x11WindowManagerRuns();
    // A compositor is its own window manager.
    return std::strcmp(driver, "wayland") == 0;
}
}

void krWindowSystemSDL::installMessageBox() {
    krSystem::setMessageBoxShow(showBox);
    krSystem::setMessageBoxAvailable(boxCanAppear());
}
