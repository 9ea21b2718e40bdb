// The WAV reader and the Ogg Vorbis decoder on files our writers make, and on files broken in
// each way the engine must refuse without reading past the bytes it was given.
#include <gtest/gtest.h>

#include "audio/krVorbisReader.h"
#include "audio/krWavReader.h"
#include "audio_testing.h"
#include "core/krFile.h"

using namespace audioTesting;

namespace {

std::string u16(uint16_t v) { return {static_cast<char>(v & 0xFF), static_cast<char>(v >> 8)}; }

std::string u32(uint32_t v) {
    std::string out(4, '\0');
    krPutU32(out.data(), v);
    return out;
}

std::string chunk(const char* id, const std::string& payload) {
    std::string out = std::string(id, 4) + u32(static_cast<uint32_t>(payload.size())) + payload;
    if (payload.size() % 2) out += '\0';
    return out;
}

std::string fmt(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits) {
    return chunk("fmt ", u16(tag) + u16(channels) + u32(rate) + u32(rate * channels * bits / 8) +
                             u16(static_cast<uint16_t>(channels * bits / 8)) + u16(bits));
}

std::string riff(const std::string& chunks) { return "RIFF" + u32(static_cast<uint32_t>(4 + chunks.size())) + "WAVE" + chunks; }

// Reads an image from a buffer of exactly its size, so the sanitizer sees any read behind it.
bool read(const std::string& image, krWavSound& out) {
    std::vector<char> exact(image.begin(), image.end());
    const bool ok = krReadWav(exact.data(), static_cast<uint32_t>(exact.size()), out);
    if (ok) {
        EXPECT_GE(out.samples, exact.data());
        EXPECT_LE(out.samples + out.bytes, exact.data() + exact.size());
        out.samples = out.samples - exact.data() + image.data();
    }
    return ok;
}

krVorbisResult decode(const std::string& image, krDecodedMusic& out, size_t limit = krMaxMusicBytes) {
    krFile file(krFile::inMemory, image.data(), static_cast<uint32_t>(image.size()));
    return krDecodeVorbis(file, out, limit);
}

}  // namespace

TEST(AudioFiles, WavGivesFormatAndSamplesInPlace) {
    krWavSound wav;
    const std::string written = toneWav(440, 0.1f, 22050, 2);
    ASSERT_TRUE(read(written, wav));
    EXPECT_EQ(wav.channels, 2);
    EXPECT_EQ(wav.bits, 16);
    EXPECT_EQ(wav.rate, 22050u);
    EXPECT_EQ(wav.bytes, 2205u * 4);
    EXPECT_EQ(wav.samples, written.data() + 44);

    // Other chunks, odd-sized ones padded, stand before the data and are stepped over; an odd
    // byte behind the last whole frame is left out.
    const std::string samples = "\x80\x90\xA0\xB0\xC0";
    const std::string image = riff(fmt(1, 1, 8000, 8) + chunk("LIST", "odd") + chunk("smpl", std::string(36, 'x')) +
                                   chunk("data", samples));
    ASSERT_TRUE(read(image, wav));
    EXPECT_EQ(wav.channels, 1);
    EXPECT_EQ(wav.bits, 8);
    EXPECT_EQ(wav.rate, 8000u);
    EXPECT_EQ(std::string(wav.samples, wav.bytes), samples);
    ASSERT_TRUE(read(riff(fmt(1, 2, 8000, 16) + chunk("data", samples)), wav));
    EXPECT_EQ(wav.bytes, 4u);
}

TEST(AudioFiles, WavRefusesWhatItCannotPlay) {
    const std::string data = chunk("data", std::string(64, '\1'));
    const std::string good = riff(fmt(1, 1, 22050, 16) + data);
    krWavSound wav;
    ASSERT_TRUE(read(good, wav));
    std::string lyingData = good;
    krPutU32(lyingData.data() + 40, 65);
    std::string lyingRiff = good;
    krPutU32(lyingRiff.data() + 4, 30);
    const std::pair<const char*, std::string> broken[] = {
        {"empty", ""},
        {"header cut short", good.substr(0, 11)},
        {"no RIFF", "RIFX" + good.substr(4)},
        {"no WAVE", good.substr(0, 8) + "AVI " + good.substr(12)},
        {"fmt cut short", riff(chunk("fmt ", std::string(14, '\1')) + data)},
        {"fmt cut by the end of the file", good.substr(0, 30)},
        {"data larger than the file", lyingData},
        {"data beyond the RIFF size", lyingRiff},
        {"no data", riff(fmt(1, 1, 22050, 16))},
        {"data before fmt", riff(data + fmt(1, 1, 22050, 16))},
        {"not PCM", riff(fmt(3, 1, 22050, 32) + data)},
        {"no channels", riff(fmt(1, 0, 22050, 16) + data)},
        {"three channels", riff(fmt(1, 3, 22050, 16) + data)},
        {"rate 0", riff(fmt(1, 1, 0, 16) + data)},
        {"rate too high", riff(fmt(1, 1, 0x80000000u, 16) + data)},
        {"24 bits", riff(fmt(1, 1, 22050, 24) + data)},
        {"0 bits", riff(fmt(1, 1, 22050, 0) + data)},
    };
    for (const auto& [what, image] : broken) EXPECT_FALSE(read(image, wav)) << what;
}

TEST(AudioFiles, VorbisDecodesTheWholeStream) {
    for (uint16_t channels : {1, 2}) {
        const krPcm tone = krSynthTone(440, 0.5f, 22050, channels, 0.5f);
        std::string ogg, error;
        ASSERT_TRUE(krEncodeVorbis(tone, 0.3f, ogg, error)) << error;
        krDecodedMusic music;
        ASSERT_EQ(decode(ogg, music), krVorbisResult::decoded);
        EXPECT_EQ(music.channels, channels);
        EXPECT_EQ(music.rate, 22050u);
        ASSERT_EQ(music.samples.size(), tone.samples.size() * 2);
        // Lossy, but the tone comes back close.
        double error2 = 0, signal2 = 0;
        for (size_t i = 0; i < tone.samples.size(); ++i) {
            int16_t s;
            std::memcpy(&s, music.samples.data() + 2 * i, 2);
            error2 += std::pow(double(s) - tone.samples[i], 2);
            signal2 += std::pow(double(tone.samples[i]), 2);
        }
        EXPECT_LT(error2, signal2 * 0.01);
    }
}

TEST(AudioFiles, VorbisRefusesOtherStreams) {
    krDecodedMusic music;
    EXPECT_EQ(decode("", music), krVorbisResult::refused);
    EXPECT_EQ(decode(std::string(5000, 'x'), music), krVorbisResult::refused);
    EXPECT_EQ(decode(toneWav(440, 0.1f, 22050), music), krVorbisResult::refused);
    // Three channels would be played as two.
    EXPECT_EQ(decode(encodeOgg(krSynthTone(440, 0.2f, 22050, 3, 0.5f)), music), krVorbisResult::refused);
    EXPECT_TRUE(music.samples.empty());
    // A stream whose headers are cut short is no stream either.
    EXPECT_EQ(decode(toneOgg(440, 0.2f, 22050, 1).substr(0, 200), music), krVorbisResult::refused);
}

TEST(AudioFiles, VorbisCutShortKeepsWhatCameBefore) {
    const std::string ogg = humOgg();
    krDecodedMusic whole, cut;
    ASSERT_EQ(decode(ogg, whole), krVorbisResult::decoded);
    ASSERT_EQ(decode(ogg.substr(0, ogg.size() * 2 / 3), cut), krVorbisResult::incomplete);
    EXPECT_GT(cut.samples.size(), 0u);
    EXPECT_LT(cut.samples.size(), whole.samples.size());
    EXPECT_EQ(cut.samples.size() % 2, 0u);
    // A page damaged in the middle ends the decoding there as well.
    std::string damaged = ogg;
    for (size_t i = ogg.size() / 2; i < ogg.size() / 2 + 400; ++i) damaged[i] = static_cast<char>(i * 7);
    EXPECT_EQ(decode(damaged, cut), krVorbisResult::incomplete);
    // Music beyond the limit of decoded bytes is cut at the limit.
    EXPECT_EQ(decode(ogg, cut, 10000), krVorbisResult::incomplete);
    EXPECT_LE(cut.samples.size(), 10000u);
}
