// krPcm: sound as the content tools make it: 16-bit signed samples, channels interleaved.
#pragma once

#include <cstdint>
#include <vector>

struct krPcm {
    uint16_t channels = 1;
    uint32_t rate = 22050;
    std::vector<int16_t> samples;

    uint32_t frames() const { return channels ? static_cast<uint32_t>(samples.size() / channels) : 0; }
};
