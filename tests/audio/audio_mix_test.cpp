// What comes out: OpenAL Soft's wave driver writes the mix to a file, which is read back when the
// device closes at the end of each test and measured. Mixing runs in real time, so each test
// lasts about a second.
#include "audio/krAudio.h"
#include "audio/krListener.h"
#include "audio/krMusic.h"
#include "audio/krSound.h"
#include "audio_testing.h"

using namespace audioTesting;

namespace {

// The device's rate, as the wave driver's settings give it; tones at this rate are not resampled.
constexpr uint32_t mixRate = 48000;
// Starts, stops and pitch changes reach the mix at the driver's next period (about 5 ms), but on
// a busy machine its thread may come tens of milliseconds late: lengths that depend on when the
// test acts hold to within this.
constexpr double timing = 0.04;

double since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

class AudioMix : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        root->setAudible(true);
        krAudio::start();
        ASSERT_TRUE(krAudio::ready());
    }

    // Closes the device, which finishes the file, and reads it.
    static Mix finish() {
        krAudio::close();
        Mix mix = readMix(KERRIN_MIX_FILE);
        EXPECT_EQ(mix.rate, mixRate);
        return mix;
    }

    krSound* sound(const std::string& file, const krVector3& at = {}) {
        auto* s = make<krSound>();
        s->setPosition(at);
        s->load(file);
        return s;
    }
};

}  // namespace

TEST_F(AudioMix, ASoundPlaysForItsLengthAndIsSilentAfter) {
    write("tone.wav", toneWav(480, 0.25f, mixRate));
    krSound* s = sound("tone.wav");
    s->start(true, false);
    runFor(root, 1.0);
    EXPECT_FALSE(s->isPlaying());
    const Mix mix = finish();
    const auto spans = mix.spans();
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_NEAR(mix.seconds(spans[0]), 0.25, 0.002);
    EXPECT_GT(mix.left.size() - spans[0].second, mixRate * 0.5);
}

TEST_F(AudioMix, PitchChangesTheLength) {
    write("tone.wav", toneWav(480, 0.4f, mixRate));
    krSound* fast = sound("tone.wav");
    fast->setPitch(2);
    fast->start(true, false);
    runFor(root, 0.3);
    // Raised by a script in the middle: the rest goes by at twice the speed.
    run(R"(
        $s = new_sound();
        $s.load("tone.wav");
        $s.play(false);
        event MAIN: raise() { $s.pitch += 1; }
    )");
    const auto played = std::chrono::steady_clock::now();
    runFor(root, 0.1);
    const double before = since(played);
    if (krVariant* result = root->fireEvent("raise", krScriptObject::noArgs)) result->release();
    runFor(root, 0.5);
    const Mix mix = finish();
    const auto spans = mix.spans();
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_NEAR(mix.seconds(spans[0]), 0.2, 0.002);
    EXPECT_NEAR(mix.seconds(spans[1]), before + (0.4 - before) / 2, timing);
}

TEST_F(AudioMix, StopEndsALoop) {
    write("tone.wav", toneWav(480, 0.1f, mixRate));
    krSound* s = sound("tone.wav");
    const auto played = std::chrono::steady_clock::now();
    s->start(true, true);
    runFor(root, 0.35);
    const double stopped = since(played);
    s->start(false, false);
    runFor(root, 0.3);
    const Mix mix = finish();
    const auto spans = mix.spans();
    ASSERT_EQ(spans.size(), 1u);
    // Longer than the sound, as a loop; ended by the stop, and silent after it.
    EXPECT_GT(mix.seconds(spans[0]), 0.25);
    EXPECT_NEAR(mix.seconds(spans[0]), stopped, timing);
    EXPECT_GT(mix.left.size() - spans[0].second, mixRate * 0.2);
}

TEST_F(AudioMix, AFarSoundIsQuieterByTheDistanceModel) {
    write("tone.wav", toneWav(480, 0.2f, mixRate));
    const float minDistance = 10, maxDistance = 100, nearAt = 20, farAt = 80;
    for (float at : {nearAt, farAt}) {
        krSound* s = sound("tone.wav", {0, 0, -at});
        s->setDistances(minDistance, maxDistance);
        s->start(true, false);
        runFor(root, 0.3);
    }
    const Mix mix = finish();
    const auto spans = mix.spans();
    ASSERT_EQ(spans.size(), 2u);
    // Inverse distance, clamped, with the rolloff that brings the gain to a tenth at maxDistance.
    const float rolloff = minDistance * 9 / (maxDistance - minDistance);
    auto gain = [&](float d) { return minDistance / (minDistance + rolloff * (d - minDistance)); };
    EXPECT_NEAR(gain(maxDistance), 0.1f, 1e-6f);
    EXPECT_NEAR(mix.level(spans[0]) / mix.level(spans[1]), gain(nearAt) / gain(farAt), 0.02);
}

TEST_F(AudioMix, MusicPlaysAWholeOggFile) {
    write("tune.ogg", toneOgg(480, 0.6f, mixRate, 2));
    auto* music = make<krMusic>();
    music->load("tune.ogg");
    music->setRelative(true);
    music->start(true, false);
    runFor(root, 0.9);
    const Mix mix = finish();
    const auto spans = mix.spans();
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_NEAR(mix.seconds(spans[0]), 0.6, 0.003);
}
