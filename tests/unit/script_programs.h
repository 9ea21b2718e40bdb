// Random script programs for the differential test of the evaluator: every construct of the
// language mixed at random with values of every type, from a seed, the same on every machine.
// Programs end: loops count a counter of their own, functions call only later functions, and
// the runner bounds loop passes and calls.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace scriptPrograms {

class Generator {
public:
    explicit Generator(uint64_t seed) : state(seed * 0x9E3779B97F4A7C15ull + 1) {}

    // A whole program: an error handler, a few functions, main code.
    std::string program();
    // The variables a program's main code leaves behind, for the runner to show.
    static const std::vector<std::string>& fieldNames();

private:
    uint64_t next();
    int below(int n) { return static_cast<int>(next() % static_cast<uint64_t>(n)); }
    bool chance(int percent) { return below(100) < percent; }
    template <size_t N>
    const char* pick(const char* const (&items)[N]) { return items[below(static_cast<int>(N))]; }

    std::string statement(int depth);
    std::string body(int depth);
    std::string expression(int depth);
    std::string atom();
    std::string literal();
    std::string variable();
    std::string target(int depth);
    std::string call(int depth);
    std::string quote(const std::string& text) const;
    std::string evalText();

    uint64_t state;
    // The function being written (-1 in main code); calls go only to later functions.
    int function = -1;
    int functionCount = 0;
    std::vector<int> paramCounts;
    int loops = 0;
    int counters = 0;
    // Inside eval text, whose strings take the other quote.
    bool inner = false;
    bool inCurrent = false;
    bool tame = false;
};

}  // namespace scriptPrograms
