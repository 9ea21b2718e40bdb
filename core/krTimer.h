// Timer functions over the platform's monotonic counter. A timer is one heap-held counter sample;
// results are seconds as extended-precision floats.
#pragma once

#include <cstdint>

using krTimer = uint64_t;

krTimer* timerStart();
// Seconds since the last sample; stores a new sample.
long double timerLap(krTimer* timer);
// Seconds since the last sample; the sample stays.
long double timerElapsed(const krTimer* timer);
// Seconds since the last sample; frees the timer and nulls the pointer.
long double timerStop(krTimer*& timer);
void sleepMs(int milliseconds);
