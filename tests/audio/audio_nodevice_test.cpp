// A machine without a sound device: enable_sounds says so in a box (kept from the screen here),
// and the engine, its scripts and their sounds go on, silent.
#include "audio/krAudio.h"
#include "audio_testing.h"
#include "platform/krSystem.h"

using namespace audioTesting;
using engineTesting::reports;

namespace {

std::vector<std::string>& boxes() {
    static std::vector<std::string> shown;
    return shown;
}

void keepBox(const std::string& text, const std::string& caption) { boxes().push_back(caption + "|" + text); }

class AudioNoDevice : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        boxes().clear();
        krSystem::setMessageBoxHook(keepBox);
    }
    void TearDown() override {
        krSystem::setMessageBoxHook(nullptr);
        Engine::TearDown();
    }
};

}  // namespace

TEST_F(AudioNoDevice, TheStartFailsInABoxAndEverythingGoesOn) {
    write("tone.wav", toneWav(440, 0.1f, 22050));
    write("tune.ogg", toneOgg(440, 0.1f, 22050, 1));
    krScript* s = run(R"(
        enable_sounds();
        MAIN.audible = true;
        $s = new_sound();
        $s.load("tone.wav");
        $s.play(true);
        $m = new_music();
        $m.load("tune.ogg");
        $m.play(false);
        $l = new_listener();
        $l.volume = 0.5;
        $l.tracked = $s;
        MAIN.move();
        enable_sounds();
        $after = "still running";
    )");
    EXPECT_EQ(field(s, "after"), "still running");
    EXPECT_FALSE(krAudio::ready());
    // Each call tries again, and each failure is told.
    EXPECT_EQ(boxes(), (std::vector<std::string>{"|Audio initialization failed", "|Audio initialization failed"}));
    EXPECT_TRUE(reports().empty());
}
