// The WAV image is written byte by byte in little-endian order, whatever the host's order.
#include "krWavWriter.h"

namespace {

void put16(std::string& out, uint32_t v) {
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>((v >> 8) & 0xFF);
}

void put32(std::string& out, uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

// PCM's "fmt " payload is 16 bytes; the format tag 1 means plain PCM.
constexpr uint32_t fmtBytes = 16;
constexpr uint32_t pcmTag = 1;
constexpr uint32_t bitsPerSample = 16;

}  // namespace

std::string krEncodeWav(const krPcm& pcm) {
    const auto dataBytes = static_cast<uint32_t>(pcm.samples.size() * 2);
    const uint32_t frameBytes = pcm.channels * bitsPerSample / 8;
    std::string out;
    out.reserve(44 + dataBytes);
    out += "RIFF";
    put32(out, 4 + 8 + fmtBytes + 8 + dataBytes);
    out += "WAVE";
    out += "fmt ";
    put32(out, fmtBytes);
    put16(out, pcmTag);
    put16(out, pcm.channels);
    put32(out, pcm.rate);
    put32(out, pcm.rate * frameBytes);
    put16(out, frameBytes);
    put16(out, bitsPerSample);
    out += "data";
    put32(out, dataBytes);
    for (int16_t s : pcm.samples) put16(out, static_cast<uint16_t>(s));
    return out;
}
