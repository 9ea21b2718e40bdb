// Times the engine's own work for sound in a frame: 64 looping sounds on 64 objects that move on
// circles around the listener, each given a new pitch every frame as an engine's sound is, for
// 10 seconds of frames at 60 a second. Beside it, a bare loop makes the same OpenAL calls on 64
// sources: pitch, state, position and velocity of each, and the listener's place.
//
// The sounds are children of their objects, kept out of the tree's walk and updated by the
// benchmark itself, so that the time taken is theirs alone; the objects' own updates are not
// counted. OpenAL's mixing runs on its own thread and is not counted either.
//
// Usage: kerrin_bench_audio [rounds]
#include <AL/al.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "audio/krAudio.h"
#include "audio/krListener.h"
#include "audio/krSound.h"
#include "core/krMain.h"
#include "krProgram.h"
#include "krSynth.h"
#include "krWavWriter.h"
#include "render/krObject.h"

namespace {

constexpr int soundCount = 64;
constexpr float frameStep = 1.0f / 60;
constexpr int frames = 600;  // 10 seconds
constexpr int defaultRounds = 5;
// The objects circle the listener within this radius, well inside the sounds' maxDistance.
constexpr float circleRadius = 40;

using clock = std::chrono::steady_clock;

struct Times {
    double median, p95;
};

Times summarise(std::vector<double>& microseconds) {
    std::sort(microseconds.begin(), microseconds.end());
    return {microseconds[microseconds.size() / 2], microseconds[microseconds.size() * 95 / 100]};
}

krVector3 placeOf(int i, int frame) {
    const float angle = static_cast<float>(i) * 0.7f + static_cast<float>(frame) * frameStep * (0.5f + 0.01f * i);
    return {std::cos(angle) * circleRadius * (0.2f + 0.8f * i / soundCount), 1, std::sin(angle) * circleRadius};
}

float pitchOf(int i, int frame) { return 0.8f + 0.4f * std::sin(static_cast<float>(frame) * 0.05f + i); }

double microsecondsSince(clock::time_point start) {
    return std::chrono::duration<double, std::micro>(clock::now() - start).count();
}

// Per-frame times of the engine's sound updates.
std::vector<double> engineRound(krMain* root) {
    std::vector<krObject*> objects;
    std::vector<krSound*> sounds;
    for (int i = 0; i < soundCount; ++i) {
        auto* object = new krObject(root);
        object->attach();
        object->setAudible(true);
        auto* sound = new krSound(object);
        sound->attach();
        sound->setEnabled(false);
        sound->load("hum.wav");
        sound->start(true, true);
        objects.push_back(object);
        sounds.push_back(sound);
    }
    auto* ears = new krListener(root);
    ears->attach();
    ears->setEnabled(false);
    std::vector<double> times;
    for (int frame = 0; frame < frames; ++frame) {
        for (int i = 0; i < soundCount; ++i) objects[i]->setPosition(placeOf(i, frame));
        root->update(frameStep);
        const auto start = clock::now();
        ears->update(frameStep);
        for (int i = 0; i < soundCount; ++i) {
            sounds[i]->setPitch(pitchOf(i, frame));
            sounds[i]->update(frameStep);
        }
        times.push_back(microsecondsSince(start));
    }
    int playing = 0;
    for (krSound* s : sounds) playing += s->isPlaying();
    if (playing != soundCount) std::fprintf(stderr, "kerrin_bench_audio: only %d sounds played\n", playing);
    for (krObject* o : objects) o->dispose();
    ears->dispose();
    return times;
}

// Per-frame times of the same OpenAL calls made directly.
std::vector<double> bareRound(ALuint buffer) {
    std::vector<ALuint> sources(soundCount);
    alGenSources(soundCount, sources.data());
    for (ALuint s : sources) {
        alSourcei(s, AL_BUFFER, static_cast<ALint>(buffer));
        alSourcei(s, AL_LOOPING, AL_TRUE);
        alSourcePlay(s);
    }
    std::vector<double> times;
    const float facing[6] = {0, 0, -1, 0, 1, 0};
    for (int frame = 0; frame < frames; ++frame) {
        const auto start = clock::now();
        alListener3f(AL_POSITION, 0, 0, 0);
        alListener3f(AL_VELOCITY, 0, 0, 0);
        alListenerfv(AL_ORIENTATION, facing);
        alListenerf(AL_GAIN, 1);
        for (int i = 0; i < soundCount; ++i) {
            const krVector3 p = placeOf(i, frame);
            ALint state;
            alSourcef(sources[i], AL_PITCH, pitchOf(i, frame));
            alGetSourcei(sources[i], AL_SOURCE_STATE, &state);
            alSource3f(sources[i], AL_POSITION, p.x, p.y, p.z);
            alSource3f(sources[i], AL_VELOCITY, 0, 0, 0);
        }
        times.push_back(microsecondsSince(start));
    }
    alDeleteSources(soundCount, sources.data());
    return times;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : defaultRounds;
    setenv("ALSOFT_DRIVERS", "null", 0);
    const std::filesystem::path work = std::filesystem::temp_directory_path() / "kerrin-bench-audio";
    std::filesystem::create_directories(work);
    std::filesystem::current_path(work);
    const std::string hum = krEncodeWav(krSynthEngineHum());
    std::ofstream("hum.wav", std::ios::binary).write(hum.data(), static_cast<std::streamsize>(hum.size()));

    krProgram::start(0, nullptr);
    krMain* root = krProgram::root();
    root->setAudible(true);
    krAudio::start();
    if (!krAudio::ready()) {
        std::fprintf(stderr, "kerrin_bench_audio: no sound device\n");
        return 1;
    }
    std::vector<double> engine, bare;
    for (int r = 0; r < rounds; ++r) {
        const std::vector<double> e = engineRound(root);
        engine.insert(engine.end(), e.begin(), e.end());
        const std::vector<double> b = bareRound(krAudio::soundBuffer("hum.wav"));
        bare.insert(bare.end(), b.begin(), b.end());
    }
    const Times e = summarise(engine), b = summarise(bare);
    std::printf("%d sounds, %d frames of %.4f s, %d rounds; microseconds a frame\n", soundCount, frames, frameStep, rounds);
    std::printf("%-8s %10s %10s %10s %10s %8s\n", "", "engine med", "engine p95", "bare med", "bare p95", "ratio");
    std::printf("%-8s %10.1f %10.1f %10.1f %10.1f %8.2f\n", "frame", e.median, e.p95, b.median, b.p95, e.median / b.median);
    std::printf("%-8s %10.3f %10.3f %10.3f %10.3f\n", "a sound", e.median / soundCount, e.p95 / soundCount,
                b.median / soundCount, b.p95 / soundCount);
    krProgram::stop();
    std::filesystem::current_path(work.parent_path());
    std::filesystem::remove_all(work);
    return 0;
}
