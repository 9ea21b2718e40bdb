// The engine's random numbers: the process's generator cut to 0 to krRandMax, the range every
// formula of the simulation divides by, whatever the C library's own maximum is.
#pragma once

#include <cstdint>
#include <cstdlib>

inline constexpr int32_t krRandMax = 32767;

inline int32_t krRand() { return std::rand() & krRandMax; }
