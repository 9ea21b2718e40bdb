// The chunk: the (id, size) header that every binary asset and the pack archive are built from.
// Holds the one description of its 8-byte layout, for the engine's readers and the content tools.
#pragma once

#include <cstdint>

struct krChunk {
    uint32_t id = 0;
    // Payload bytes as read from the file; afterwards the payload bytes not yet consumed.
    uint32_t size = 0;

    // Id at offset 0, payload size at offset 4; the size does not count the header.
    static constexpr uint32_t headerSize = 8;
};

// Files hold little-endian integers; these are the only place that knows.
inline uint32_t krGetU32(const void* at) {
    const auto* b = static_cast<const uint8_t*>(at);
    return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
}

inline void krPutU32(void* at, uint32_t value) {
    auto* b = static_cast<uint8_t*>(at);
    for (int i = 0; i < 4; ++i) b[i] = static_cast<uint8_t>(value >> (8 * i));
}

inline krChunk krGetChunkHeader(const void* at) {
    krChunk c;
    c.id = krGetU32(at);
    c.size = krGetU32(static_cast<const uint8_t*>(at) + 4);
    return c;
}

inline void krPutChunkHeader(void* at, uint32_t id, uint32_t size) {
    krPutU32(at, id);
    krPutU32(static_cast<uint8_t*>(at) + 4, size);
}
