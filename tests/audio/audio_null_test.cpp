// Sounds, music and listeners on OpenAL's null driver: what plays when, the shared buffers, the
// messages of missing and broken files, and scripts that pass values OpenAL would refuse.
#include <AL/al.h>

#include <cstdlib>
#include <set>

#include "audio/krAudio.h"
#include "audio/krListener.h"
#include "audio/krMusic.h"
#include "audio/krSound.h"
#include "audio_testing.h"
#include "core/krFileIndex.h"
#include "krPackWriter.h"
#include "core/krPackFormat.h"

using namespace audioTesting;
using engineTesting::reports;

namespace {

// A sound whose buffers the tests may look at.
struct Probe : krSound {
    using krSound::krSound;
    using krSound::buffers;
    using krSound::currentBuffer;
};

class AudioNull : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        root->setAudible(true);
        write("tone.wav", toneWav(440, 0.05f, 22050));
        write("long.wav", toneWav(440, 2, 22050));
    }

    static void enable() {
        krAudio::start();
        ASSERT_TRUE(krAudio::ready());
    }

    // A sound at a place under the root, loaded with a file.
    template <class T = krSound>
    T* sound(const std::string& file, const krVector3& at = {}) {
        T* s = make<T>();
        s->setPosition(at);
        s->load(file);
        return s;
    }
};

}  // namespace

TEST_F(AudioNull, SilentUntilEnabled) {
    krSound* early = sound("tone.wav");
    early->start(true, true);
    EXPECT_FALSE(early->isPlaying());
    EXPECT_FALSE(early->isLooping());
    EXPECT_TRUE(reports().empty());
    enable();
    // What was loaded while sound was off stays empty.
    early->start(true, false);
    EXPECT_FALSE(early->isPlaying());
    early->load("tone.wav");
    early->start(true, false);
    EXPECT_TRUE(early->isPlaying());
}

TEST_F(AudioNull, FilesAreLoadedOnceAndShared) {
    enable();
    Probe* first = sound<Probe>("tone.wav");
    ASSERT_NE(first->currentBuffer, 0u);
    // Gone from the disk, the name still gives the buffer loaded before.
    std::filesystem::remove("tone.wav");
    krFileIndex::forget();
    Probe* second = sound<Probe>("tone.wav");
    EXPECT_EQ(second->currentBuffer, first->currentBuffer);
    second->start(true, false);
    EXPECT_TRUE(second->isPlaying());
    EXPECT_TRUE(reports().empty());
}

TEST_F(AudioNull, MissingAndBrokenFilesAreToldOncePerFile) {
    enable();
    write("broken.wav", "not a wave file");
    write("bad.ogg", std::string(3000, 'x'));
    const std::string ogg = humOgg();
    write("cut.ogg", ogg.substr(0, ogg.size() * 3 / 4));
    for (int i = 0; i < 2; ++i) {
        sound("missing.wav");
        sound("broken.wav");
    }
    EXPECT_EQ(reports(), (std::vector<std::string>{"File \"missing.wav\" not found!", "Loading sound \"broken.wav\" failed"}));
    reports().clear();
    // Music is not shared: every load reads its file again.
    sound<krMusic>("missing.ogg");
    sound<krMusic>("bad.ogg");
    krMusic* cut = sound<krMusic>("cut.ogg");
    EXPECT_EQ(reports(), (std::vector<std::string>{"File \"missing.ogg\" not found!", "Opening music \"bad.ogg\" failed",
                                                   "Loading music \"cut.ogg\" failed"}));
    // What came before the break plays.
    cut->start(true, false);
    EXPECT_TRUE(cut->isPlaying());
}

TEST_F(AudioNull, EndedSoundsGiveUpTheirSourceLoopsPlayOn) {
    enable();
    krSound* once = sound("tone.wav");
    krSound* loop = sound("tone.wav");
    once->start(true, false);
    loop->start(true, true);
    EXPECT_TRUE(once->isPlaying());
    // The null driver plays in real time too.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    root->update(0.3f);
    EXPECT_TRUE(once->isPlaying());
    root->update(0.3f);
    EXPECT_FALSE(once->isPlaying());
    EXPECT_TRUE(loop->isPlaying());
    loop->start(false, false);
    EXPECT_FALSE(loop->isPlaying());
    EXPECT_FALSE(loop->isLooping());
}

TEST_F(AudioNull, TheDistanceToTheListenerDecidesWhatPlays) {
    enable();
    krSound* once = sound("long.wav", {0, 0, -150});
    krSound* loop = sound("long.wav", {0, 0, -150});
    krSound* near = sound("long.wav", {0, 0, -50});
    near->setRelative(true);
    once->start(true, false);
    loop->start(true, true);
    EXPECT_FALSE(once->isPlaying());
    EXPECT_FALSE(loop->isPlaying());
    EXPECT_TRUE(loop->isLooping());
    // The ears come within range: the loop starts by itself, the one-shot does not.
    auto* ears = make<krListener>();
    ears->setPosition({0, 0, -100});
    root->update(0.01f);
    EXPECT_TRUE(loop->isPlaying());
    EXPECT_FALSE(once->isPlaying());
    // Out of range for half a second, the loop gives up its source, and takes one again on return.
    ears->setPosition({0, 0, 100});
    root->update(0.3f);
    EXPECT_TRUE(loop->isPlaying());
    root->update(0.3f);
    EXPECT_FALSE(loop->isPlaying());
    EXPECT_TRUE(loop->isLooping());
    ears->setPosition({0, 0, -60});
    root->update(0.01f);
    EXPECT_TRUE(loop->isPlaying());
    // Relative to the ears, only the offset counts, wherever they are.
    near->start(true, false);
    EXPECT_TRUE(near->isPlaying());
}

TEST_F(AudioNull, MutedSoundsAndOwnersStopAndLoopsResume) {
    enable();
    auto* owner = make<krModule>();
    krSound* loop = make<krSound>(owner);
    loop->load("long.wav");
    loop->start(true, true);
    EXPECT_FALSE(loop->isPlaying());
    EXPECT_FALSE(loop->isLooping());
    owner->setAudible(true);
    loop->start(true, true);
    EXPECT_TRUE(loop->isPlaying());
    loop->setAudible(false);
    EXPECT_FALSE(loop->isPlaying());
    root->update(0.01f);
    EXPECT_FALSE(loop->isPlaying());
    loop->setAudible(true);
    EXPECT_TRUE(loop->isPlaying());
    // Muting the owner stops the sound at its next update, and turning it on resumes the loop.
    owner->setAudible(false);
    root->update(0.01f);
    EXPECT_FALSE(loop->isPlaying());
    owner->setAudible(true);
    root->update(0.01f);
    EXPECT_TRUE(loop->isPlaying());
    // A one-shot does not resume.
    krSound* once = make<krSound>(owner);
    once->load("long.wav");
    once->start(true, false);
    once->setAudible(false);
    once->setAudible(true);
    root->update(0.01f);
    EXPECT_FALSE(once->isPlaying());
}

TEST_F(AudioNull, SeveralFilesAreDrawnAtRandom) {
    enable();
    Probe* s = sound<Probe>("tone.wav");
    s->load("long.wav");
    ASSERT_EQ(s->buffers.size(), 2u);
    std::srand(1);
    std::set<uint32_t> drawn;
    for (int i = 0; i < 40; ++i) {
        s->start(true, false);
        drawn.insert(s->currentBuffer);
    }
    EXPECT_EQ(drawn, std::set<uint32_t>(s->buffers.begin(), s->buffers.end()));
}

TEST_F(AudioNull, TheLastListenerBuiltIsInForceUntilOneGoes) {
    enable();
    auto* first = make<krListener>();
    auto* last = make<krListener>();
    EXPECT_EQ(krAudio::listener(), last);
    last->setPosition({0, 0, 1000});
    root->update(0.01f);
    krSound* s = sound("long.wav");
    s->start(true, true);
    EXPECT_FALSE(s->isPlaying());
    // Destroying any listener leaves none: distances are then taken from the origin.
    first->dispose();
    EXPECT_EQ(krAudio::listener(), nullptr);
    root->update(0.01f);
    EXPECT_TRUE(s->isPlaying());
}

TEST_F(AudioNull, ScriptsReachEveryMember) {
    krScript* s = run(R"(
        enable_sounds();
        MAIN.audible = true;
        $s = new_sound();
        $s.load("tone.wav");
        $s.pitch = 1.5;
        $s.pitch += 0.5;
        $s.volume = 0.25;
        $s.relative = true;
        $s.minDistance = 2;
        $s.maxDistance = 20;
        $s.setPosition(0, 0, -5);
        $m = new_music($s);
        $l = new_listener();
        $l.tracked = $s;
        $l.volume = 0.5;
        $l.volume *= 2;
        $l.setPosition(1, 2, 3);
        $l.setOrientation(1, 0, 1, 0);
        $read = $s.class + " " + $m.class + " " + $l.class + " " + $s.pitch + " " + $s.volume + " " + $s.relative +
                " " + $s.minDistance + " " + $s.maxDistance + " " + $l.tracked.class + " " + $l.volume;
        $s.play(true);
        $playing = $s.audible;
        $s.stop(1, 2, 3);
        event $s: play($a, $b) { return "event " + $a + $b; }
        $event = $s.play(1, 2);
        $l.tracked = 0;
        $untracked = ($l.tracked.class ? "none");
        $l.setOrientation(1, 0, 0, 0);
    )");
    EXPECT_EQ(field(s, "read"), "krSound krMusic krListener 2.00 0.250 true 2.00 20.0 krSound 1.00");
    EXPECT_EQ(field(s, "event"), "event 12");
    EXPECT_EQ(field(s, "untracked"), "none");
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_NE(reports()[0].find("setOrientation needs an axis that is not zero"), std::string::npos);
}

TEST_F(AudioNull, ValuesOpenALWouldRefuseLeaveNoErrorBehind) {
    enable();
    krSound* s = sound("long.wav");
    auto* ears = make<krListener>();
    s->start(true, true);
    ASSERT_TRUE(s->isPlaying());
    const float nan = std::nanf("");
    s->setPitch(nan);
    s->setVolume(-1);
    s->setGainScale(INFINITY);
    s->setDistances(10, 10);
    s->setDistances(50, 10);
    s->setPosition({nan, 0, 0});
    ears->setPosition({INFINITY, 0, 0});
    ears->setVolume(nan);
    root->update(0.01f);
    EXPECT_EQ(alGetError(), AL_NO_ERROR);
    s->setPosition({0, 0, -1});
    ears->setPosition({0, 0, 0});
    s->setDistances(1, 100);
    root->update(0.01f);
    EXPECT_TRUE(s->isPlaying());
    EXPECT_EQ(alGetError(), AL_NO_ERROR);
}

TEST_F(AudioNull, SoundsAndMusicPlayFromPacks) {
    enable();
    krPackWriter writer;
    std::string pack, error;
    ASSERT_TRUE(writer.add("sounds/tone.wav", toneWav(440, 0.5f, 22050), krPack::zlibId, &error)) << error;
    ASSERT_TRUE(writer.add("sounds/tune.ogg", toneOgg(440, 0.5f, 22050, 2), krPack::storedId, &error)) << error;
    ASSERT_TRUE(writer.build(&pack, &error)) << error;
    write("data.kr", pack);
    krSound* s = sound("sounds/tone.wav");
    krMusic* m = sound<krMusic>("sounds/tune.ogg");
    s->start(true, false);
    m->start(true, false);
    EXPECT_TRUE(s->isPlaying());
    EXPECT_TRUE(m->isPlaying());
    EXPECT_TRUE(reports().empty());
}
