// The device, the context and the buffer table.
#include "audio/krAudio.h"

#include <AL/al.h>
#include <AL/alc.h>

#include <cfloat>
#include <cmath>
#include <map>

#include "audio/krWavReader.h"
#include "core/krFile.h"
#include "core/krMain.h"
#include "core/krVector3.h"
#include "platform/krSystem.h"

namespace {

bool isReady = false;
ALCdevice* device = nullptr;
ALCcontext* context = nullptr;
std::map<std::string, ALuint> buffers;
krListener* current = nullptr;

void report(const std::string& text) {
    if (krMain* root = krMain::instance()) root->errorMsg(text);
}

}  // namespace

void krAudio::start() {
    if (isReady) return;
    device = alcOpenDevice(nullptr);
    if (device) context = alcCreateContext(device, nullptr);
    if (context && alcGetError(device) == ALC_NO_ERROR && alcMakeContextCurrent(context) &&
        alcGetError(device) == ALC_NO_ERROR) {
        alDistanceModel(AL_INVERSE_DISTANCE_CLAMPED);
        isReady = true;
        return;
    }
    if (context) alcDestroyContext(context);
    if (device) alcCloseDevice(device);
    context = nullptr;
    device = nullptr;
    // The box has an empty title. The platform writes it to standard error where no box can
    // appear, so a machine without sound never waits on it.
    krSystem::messageBox("Audio initialization failed", "");
}

bool krAudio::ready() { return isReady; }

void krAudio::close() {
    if (!isReady) return;
    for (const auto& [name, buffer] : buffers)
        if (buffer) alDeleteBuffers(1, &buffer);
    buffers.clear();
    alcMakeContextCurrent(nullptr);
    alcDestroyContext(context);
    alcCloseDevice(device);
    context = nullptr;
    device = nullptr;
    isReady = false;
}

uint32_t krAudio::soundBuffer(const std::string& name) {
    if (!isReady) return 0;
    if (auto known = buffers.find(name); known != buffers.end()) return known->second;
    alGetError();
    ALuint buffer = 0;
    alGenBuffers(1, &buffer);
    if (alGetError() != AL_NO_ERROR) report("Creating sound buffer failed");
    // The name is kept whatever follows, so that a file that fails is not tried, nor told, again.
    buffers[name] = buffer;
    krFile file(name, true);
    // A missing file has been told by the file layer already.
    if (!file.data) return buffer;
    krWavSound wav;
    bool loaded = krReadWav(file.data, file.size, wav);
    if (loaded) {
        alBufferData(buffer, format(wav.channels, wav.bits), wav.samples, static_cast<ALsizei>(wav.bytes),
                     static_cast<ALsizei>(wav.rate));
        loaded = alGetError() == AL_NO_ERROR;
    }
    if (!loaded) report("Loading sound \"" + name + "\" failed");
    return buffer;
}

int krAudio::format(uint16_t channels, uint16_t bits) {
    if (channels == 1) return bits == 8 ? AL_FORMAT_MONO8 : AL_FORMAT_MONO16;
    return bits == 8 ? AL_FORMAT_STEREO8 : AL_FORMAT_STEREO16;
}

krListener* krAudio::listener() { return current; }

void krAudio::setListener(krListener* listener) { current = listener; }

float krAudio::safe(float value) {
    if (value == INFINITY) return FLT_MAX;
    return value > 0 ? value : 0;
}

bool krAudio::isFinite(const krVector3& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }
