// The WAV walk. Every size read from the image is held against the bytes that are really there
// before anything behind it is read.
#include "audio/krWavReader.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/krChunk.h"

namespace {

// The RIFF header: "RIFF", the size of what follows from offset 8, and "WAVE".
constexpr uint32_t riffHeaderBytes = 12;
constexpr uint32_t riffSizeCountsFrom = 8;
// The fields of "fmt " that the engine reads end at byte 16: tag at 0, channels at 2, rate at 4,
// bits per sample at 14.
constexpr uint32_t fmtBytes = 16;
constexpr uint16_t pcmTag = 1;
// OpenAL takes rates and buffer sizes as signed 32-bit numbers.
constexpr uint32_t maxOpenALCount = std::numeric_limits<int32_t>::max();

bool isId(const char* at, const char* id) { return std::memcmp(at, id, 4) == 0; }

uint16_t getU16(const char* at) {
    const auto* b = reinterpret_cast<const uint8_t*>(at);
    return static_cast<uint16_t>(b[0] | b[1] << 8);
}

}  // namespace

bool krReadWav(const char* image, uint32_t size, krWavSound& out) {
    out = krWavSound();
    if (!image || size < riffHeaderBytes || !isId(image, "RIFF") || !isId(image + 8, "WAVE")) return false;
    // The walk ends where the RIFF size is used up, or the image if that comes first.
    const uint64_t end = std::min<uint64_t>(size, uint64_t(riffSizeCountsFrom) + krGetU32(image + 4));
    bool pcm = false;
    uint64_t at = riffHeaderBytes;
    while (at + krChunk::headerSize <= end) {
        const char* header = image + at;
        const uint32_t bytes = krGetU32(header + 4);
        at += krChunk::headerSize;
        if (bytes > end - at) return false;
        const char* payload = image + at;
        if (isId(header, "fmt ")) {
            if (bytes < fmtBytes) return false;
            pcm = getU16(payload) == pcmTag;
            out.channels = getU16(payload + 2);
            out.rate = krGetU32(payload + 4);
            out.bits = getU16(payload + 14);
        } else if (isId(header, "data") && pcm) {
            if ((out.channels != 1 && out.channels != 2) || (out.bits != 8 && out.bits != 16) || out.rate == 0 ||
                out.rate > maxOpenALCount || bytes > maxOpenALCount)
                return false;
            const uint32_t frameBytes = out.channels * out.bits / 8u;
            out.samples = payload;
            out.bytes = bytes - bytes % frameBytes;
            return true;
        }
        // Chunks are padded to even length.
        at += bytes + (bytes & 1u);
    }
    return false;
}
