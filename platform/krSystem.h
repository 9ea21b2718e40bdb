// Operating-system services of the engine core: the monotonic counter, sleeping, the quit request,
// standard output, message boxes, and the stack budget that bounds deep recursion.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace krSystem {
    uint64_t counter();
    uint64_t counterFrequency();
    void sleepMs(int milliseconds);

    // The quit request of the script function `quit`. The window's update and the headless frame
    // loop both end when it is set.
    void postQuit();
    bool quitPosted();
    void clearQuit();

    // Writes the text and a newline to standard output and flushes.
    void writeLine(const std::string& text);
    void writeError(const std::string& text);

    // A modal box where one can be shown; otherwise the caption and text go to standard error.
    void messageBox(const std::string& text, const std::string& caption);
    // Where a real box can appear (a window system with a window manager). Set by the window layer.
    void setMessageBoxAvailable(bool available);
    // Test seam: when set, every message box goes here instead.
    using MessageBoxHook = void (*)(const std::string& text, const std::string& caption);
    void setMessageBoxHook(MessageBoxHook hook);
    // Hands the box to the window layer, which alone may talk to the window system.
    using MessageBoxShow = void (*)(const std::string& text, const std::string& caption);
    void setMessageBoxShow(MessageBoxShow show);

    // Names of the entries of one directory ("" is the working directory) that match a pattern
    // of '*' and '?' wildcards, sorted. "." and ".." are entries too; "*.*" matches every name.
    std::vector<std::string> listDirectory(const std::string& dir, const std::string& pattern);
    // The full path of the running program, or "" where the system does not tell.
    std::string executablePath();

    // The lowest stack address that recursion may reach (stacks grow downwards here).
    extern const char* stackFloor;
    // Records the top of the stack and sets the floor; called once at the start of main.
    void markStackBase();
    // True when the caller has used up the stack share that recursion may take, so that deep
    // script recursion and deeply nested source stop with a report before the guard page.
    inline bool stackLow() {
        if (!stackFloor) markStackBase();
        return static_cast<const char*>(__builtin_frame_address(0)) < stackFloor;
    }
    // While one lives, recursive code may use a further share of the stack: an error found
    // because the stack ran low can still be delivered to the script handlers that show it.
    class StackReserve {
    public:
        StackReserve();
        ~StackReserve();
        StackReserve(const StackReserve&) = delete;
        StackReserve& operator=(const StackReserve&) = delete;

    private:
        const char* saved;
    };
}
