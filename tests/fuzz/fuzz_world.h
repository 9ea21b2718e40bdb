// What the fuzzers of simulated worlds share: a reader of the input as bytes and numbers, the
// engine's root made once per process, and attached modules.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/krMain.h"
#include "core/krVector3.h"
#include "platform/krSystem.h"

namespace fuzzWorld {

// Reads the input front to back; past its end everything reads as zero.
class Bytes {
public:
    Bytes(const uint8_t* d, size_t n) : data(d), size(n) {}
    uint8_t byte() { return at < size ? data[at++] : 0; }
    float number() {
        uint8_t raw[4] = {byte(), byte(), byte(), byte()};
        // Most inputs should be ordinary numbers: small values from one byte, raw floats else.
        if (raw[0] < 0xF0) return (static_cast<int8_t>(raw[1]) + raw[2] / 256.0f) * (raw[0] & 3 ? 1.0f : 0.1f);
        float f;
        std::memcpy(&f, raw, 4);
        return f;
    }
    krVector3 vector() { return {number(), number(), number()}; }

private:
    const uint8_t* data;
    size_t size;
    size_t at = 0;
};

inline krMain* root() {
    static krMain* main = [] {
        krSystem::markStackBase();
        auto* m = new krMain(0, nullptr);
        m->attach();
        return m;
    }();
    return main;
}

template <class T>
T* make(krModule* owner) {
    auto* m = new T(owner);
    m->attach();
    return m;
}

}  // namespace fuzzWorld
