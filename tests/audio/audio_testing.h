// Helpers of the sound tests: generated sound files, frames run in real time (OpenAL mixes in
// real time), and the mix that OpenAL Soft's wave driver wrote, read back and measured.
#pragma once

#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "core/krChunk.h"
#include "krSynth.h"
#include "krVorbisWriter.h"
#include "krWavWriter.h"
#include "unit/engine_testing.h"

namespace audioTesting {

inline std::string toneWav(float hz, float seconds, uint32_t rate, uint16_t channels = 1, float peak = 0.5f) {
    return krEncodeWav(krSynthTone(hz, seconds, rate, channels, peak));
}

inline std::string encodeOgg(const krPcm& pcm) {
    std::string out, error;
    EXPECT_TRUE(krEncodeVorbis(pcm, 0.3f, out, error)) << error;
    return out;
}

inline std::string toneOgg(float hz, float seconds, uint32_t rate, uint16_t channels) {
    return encodeOgg(krSynthTone(hz, seconds, rate, channels, 0.5f));
}

// A pure tone takes few bytes beside the stream's headers; the engine hum, with its noise, takes
// most of its file, so that a file cut in the middle still holds some of it.
inline std::string humOgg() { return encodeOgg(krSynthEngineHum()); }

// Runs frames of the tree for `seconds` of real time, each with the time since the last.
inline void runFor(krModule* root, double seconds) {
    using clock = std::chrono::steady_clock;
    const auto end = clock::now() + std::chrono::duration<double>(seconds);
    auto last = clock::now();
    while (clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
        const auto now = clock::now();
        root->update(std::chrono::duration<float>(now - last).count());
        last = now;
    }
}

// The mix as the wave driver writes it (32-bit float frames); the first channel is enough, since
// every sound in the tests stands straight ahead of the ears or on them.
struct Mix {
    uint32_t rate = 0;
    std::vector<float> left;

    // The stretches where the mix is not silent, as [first, last] sample, parted by at least
    // `gap` seconds of silence.
    std::vector<std::pair<size_t, size_t>> spans(double gap = 0.03) const {
        constexpr float silence = 1e-4f;
        std::vector<std::pair<size_t, size_t>> out;
        const auto gapFrames = static_cast<size_t>(gap * rate);
        for (size_t i = 0; i < left.size(); ++i) {
            if (std::fabs(left[i]) <= silence) continue;
            if (!out.empty() && i - out.back().second <= gapFrames) out.back().second = i;
            else out.push_back({i, i});
        }
        return out;
    }

    double seconds(const std::pair<size_t, size_t>& span) const {
        return static_cast<double>(span.second - span.first) / rate;
    }

    // The root mean square of the middle of a span, away from its edges.
    double level(const std::pair<size_t, size_t>& span) const {
        const size_t edge = (span.second - span.first) / 5;
        double sum = 0;
        size_t count = 0;
        for (size_t i = span.first + edge; i < span.second - edge; ++i, ++count) sum += double(left[i]) * left[i];
        return count ? std::sqrt(sum / count) : 0;
    }
};

// Reads the wave driver's file: a RIFF image whose "fmt " says 32-bit float frames.
inline Mix readMix(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string image((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Mix mix;
    uint16_t channels = 0;
    for (size_t at = 12; at + 8 <= image.size();) {
        const uint32_t size = krGetU32(image.data() + at + 4);
        const char* payload = image.data() + at + 8;
        const size_t available = std::min<size_t>(size, image.size() - at - 8);
        if (std::memcmp(image.data() + at, "fmt ", 4) == 0 && available >= 16) {
            channels = static_cast<uint16_t>(static_cast<uint8_t>(payload[2]) | static_cast<uint8_t>(payload[3]) << 8);
            mix.rate = krGetU32(payload + 4);
        } else if (std::memcmp(image.data() + at, "data", 4) == 0 && channels) {
            const size_t frames = available / (4u * channels);
            mix.left.resize(frames);
            for (size_t f = 0; f < frames; ++f) std::memcpy(&mix.left[f], payload + f * 4 * channels, 4);
        }
        at += 8 + size + (size & 1);
    }
    return mix;
}

}  // namespace audioTesting
