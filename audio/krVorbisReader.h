// krVorbisReader: a whole Ogg Vorbis stream, decoded from a file in memory into 16-bit samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class krFile;

// Decoded music is held whole in memory; more than this (about 25 minutes of 44.1 kHz stereo)
// is not kept, so that a small file that decodes to a flood cannot take the machine's memory.
constexpr size_t krMaxMusicBytes = size_t(256) << 20;

struct krDecodedMusic {
    uint16_t channels = 0;
    uint32_t rate = 0;
    // Signed 16-bit little-endian, channels interleaved.
    std::vector<char> samples;
};

enum class krVorbisResult {
    // The whole stream, to its last page.
    decoded,
    // Not an Ogg Vorbis stream the engine plays: no Vorbis headers, or other than 1 or 2
    // channels, or a rate OpenAL cannot hold. Nothing decoded.
    refused,
    // The stream breaks off before its end, is damaged, or decodes to more than the limit; out
    // holds what came before that.
    incomplete,
};

// Decodes the stream in file from its cursor on. The file is read through its cursor only, as a
// stream that cannot seek.
krVorbisResult krDecodeVorbis(krFile& file, krDecodedMusic& out, size_t maxBytes = krMaxMusicBytes);
