// Arbitrary bytes as a WAV file. Samples the reader accepts must lie inside the bytes, in whole
// frames of a format OpenAL takes: the buffer upload hands them to the driver as they are.
#include <cstdint>
#include <cstdlib>

#include "audio/krWavReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    const auto* bytes = reinterpret_cast<const char*>(data);
    krWavSound wav;
    if (!krReadWav(bytes, static_cast<uint32_t>(size), wav)) return 0;
    if ((wav.channels != 1 && wav.channels != 2) || (wav.bits != 8 && wav.bits != 16) || wav.rate == 0) std::abort();
    if (wav.samples < bytes || wav.samples + wav.bytes > bytes + size || wav.bytes % (wav.channels * wav.bits / 8))
        std::abort();
    if (wav.bytes) {
        // The first and last bytes of the samples, read where the sanitizer watches.
        volatile char ends = static_cast<char>(wav.samples[0] ^ wav.samples[wav.bytes - 1]);
        (void)ends;
    }
    return 0;
}
