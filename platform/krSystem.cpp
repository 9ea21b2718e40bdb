// Linux forms of the core's system services.
#include "platform/krSystem.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <thread>

namespace {
bool quitFlag = false;
krSystem::MessageBoxHook boxHook = nullptr;
krSystem::MessageBoxShow boxShow = nullptr;
bool boxAvailable = false;

// The share of the stack limit that recursion may use; the rest is left to the C library,
// sanitizer bookkeeping and the handlers that report the overflow.
constexpr double stackShare = 0.6;
// The further share opened while an error report is delivered.
constexpr double reserveShare = 0.15;
// Used when the limit is unlimited or cannot be read.
constexpr size_t defaultStackBytes = 8u << 20;
// The floor with the further share opened.
const char* reserveFloor = nullptr;
}

uint64_t krSystem::counter() {
    return static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

uint64_t krSystem::counterFrequency() {
    using period = std::chrono::steady_clock::period;
    return static_cast<uint64_t>(period::den / period::num);
}

void krSystem::sleepMs(int milliseconds) {
    if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void krSystem::postQuit() { quitFlag = true; }
bool krSystem::quitPosted() { return quitFlag; }
void krSystem::clearQuit() { quitFlag = false; }

void krSystem::writeLine(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void krSystem::writeError(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}

void krSystem::messageBox(const std::string& text, const std::string& caption) {
    if (boxHook) {
        boxHook(text, caption);
        return;
    }
    if (boxAvailable && boxShow) {
        boxShow(text, caption);
        return;
    }
    // A box without a title is just its text.
    writeError(caption.empty() ? text : caption + ": " + text);
}

void krSystem::setMessageBoxAvailable(bool available) { boxAvailable = available; }
void krSystem::setMessageBoxHook(MessageBoxHook hook) { boxHook = hook; }
void krSystem::setMessageBoxShow(MessageBoxShow show) { boxShow = show; }

std::string krSystem::executablePath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.string();
}

const char* krSystem::stackFloor = nullptr;

void krSystem::markStackBase() {
    const auto* base = static_cast<const char*>(__builtin_frame_address(0));
    rlimit limit{};
    size_t bytes = defaultStackBytes;
    if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
        bytes = static_cast<size_t>(limit.rlim_cur);
    const auto budget = static_cast<size_t>(static_cast<double>(bytes) * stackShare);
    const auto reserve = static_cast<size_t>(static_cast<double>(bytes) * reserveShare);
    stackFloor = base - budget;
    reserveFloor = base - budget - reserve;
}

// Nested reserves do not add up: one further share is all there is.
krSystem::StackReserve::StackReserve() : saved(stackFloor) {
    if (reserveFloor) stackFloor = reserveFloor;
}
krSystem::StackReserve::~StackReserve() { stackFloor = saved; }

namespace {
bool wildcardMatch(const char* pattern, const char* name) {
    // Iterative matching with one backtrack point for the last '*'.
    const char* star = nullptr;
    const char* resume = nullptr;
    while (*name) {
        if (*pattern == '?' || *pattern == *name) {
            ++pattern;
            ++name;
        } else if (*pattern == '*') {
            star = pattern++;
            resume = name;
        } else if (star) {
            pattern = star + 1;
            name = ++resume;
        } else {
            return false;
        }
    }
    while (*pattern == '*') ++pattern;
    return *pattern == 0;
}
}

std::vector<std::string> krSystem::listDirectory(const std::string& dir, const std::string& pattern) {
    std::vector<std::string> names;
    std::error_code error;
    const std::filesystem::path path = dir.empty() ? std::filesystem::path(".") : std::filesystem::path(dir);
    if (!std::filesystem::is_directory(path, error)) return names;
    names.push_back(".");
    names.push_back("..");
    for (std::filesystem::directory_iterator it(path, error), end; !error && it != end; it.increment(error))
        names.push_back(it->path().filename().string());
    // "*.*" is the pattern of every name, with or without a point.
    if (pattern != "*.*") {
        names.erase(std::remove_if(names.begin(), names.end(),
                                   [&](const std::string& n) { return !wildcardMatch(pattern.c_str(), n.c_str()); }),
                    names.end());
    }
    std::sort(names.begin(), names.end());
    return names;
}
