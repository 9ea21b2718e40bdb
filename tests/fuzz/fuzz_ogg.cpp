// Arbitrary bytes as an Ogg Vorbis file, decoded through the engine's file reader. Whatever the
// stream claims, the decoded samples come in whole frames, stay within the limit, and the reader
// never reads past the file.
#include <cstdint>
#include <cstdlib>

#include "audio/krVorbisReader.h"
#include "core/krFile.h"

namespace {
// Small, so that an input that decodes to a flood costs the fuzzer little time.
constexpr size_t decodeLimit = size_t(1) << 20;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    krFile file(krFile::inMemory, data, static_cast<uint32_t>(size));
    krDecodedMusic music;
    const krVorbisResult result = krDecodeVorbis(file, music, decodeLimit);
    if (result == krVorbisResult::refused && !music.samples.empty()) std::abort();
    if (result != krVorbisResult::refused &&
        ((music.channels != 1 && music.channels != 2) || music.rate == 0 ||
         music.samples.size() % (2u * music.channels) != 0 || music.samples.size() > decodeLimit))
        std::abort();
    return 0;
}
