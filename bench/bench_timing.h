// Timing of the benchmarks: seconds between two counter readings, and the median and 95th
// percentile of a run of frame times.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/krSystem.h"

namespace benchTiming {

inline double seconds(uint64_t from, uint64_t to) {
    return static_cast<double>(to - from) / static_cast<double>(krSystem::counterFrequency());
}

struct Stats {
    double median, p95;
};

inline Stats stats(std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    const size_t n = ms.size();
    return {ms[n / 2], ms[std::min(n - 1, static_cast<size_t>(0.95 * static_cast<double>(n)))]};
}

}  // namespace benchTiming
