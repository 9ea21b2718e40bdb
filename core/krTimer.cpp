// Timer functions over the platform counter.
#include "core/krTimer.h"

#include "platform/krSystem.h"

namespace {
// The counter frequency, read once before anything measures.
const long double frequency = static_cast<long double>(krSystem::counterFrequency());

long double secondsSince(krTimer sample) {
    return static_cast<long double>(krSystem::counter() - sample) / frequency;
}
}

krTimer* timerStart() { return new krTimer(krSystem::counter()); }

long double timerLap(krTimer* timer) {
    const krTimer now = krSystem::counter();
    const long double seconds = static_cast<long double>(now - *timer) / frequency;
    *timer = now;
    return seconds;
}

long double timerElapsed(const krTimer* timer) { return secondsSince(*timer); }

long double timerStop(krTimer*& timer) {
    const long double seconds = secondsSince(*timer);
    delete timer;
    timer = nullptr;
    return seconds;
}

void sleepMs(int milliseconds) { krSystem::sleepMs(milliseconds); }
