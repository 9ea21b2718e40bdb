// Sounds: their script interface, starting and stopping, and the source that follows the owner.
#include "audio/krSound.h"

#include <AL/al.h>

#include <cstdlib>

#include "audio/krAudio.h"
#include "audio/krListener.h"
#include "script/krVBound.h"

namespace {

const krMemberInfo soundMembers[] = {
    {"setPosition", krCall, "(x, y, z)", "place in the owner's space"},
    {"load", krCall, "(file)", "adds a WAV file's sound; files are loaded once and shared by name"},
    {"play", krCall, "(loop)", "plays from the start when audible and within maxDistance; several files: one at random"},
    {"stop", krCall, "(...)", "ends playing and looping; takes any arguments"},
    {"pitch", krRead | krWrite, "float", "playback speed, 1 as recorded"},
    {"volume", krRead | krWrite, "float", "gain from 0 to 1"},
    {"relative", krRead | krWrite, "bool", "the position is taken relative to the listener"},
    {"minDistance", krRead | krWrite, "float", "up to this distance the gain is whole; keep it below maxDistance"},
    {"maxDistance", krRead | krWrite, "float", "the gain falls to a tenth here, and further away nothing plays"},
};

// A sound that has ended, or a loop that has left the range, gives up its source after this long;
// the delay spares a sound that wavers at the edge from a new source every frame.
constexpr float releaseDelay = 0.5f;
// The clamped inverse distance model falls to 1 / (1 + rolloff x (max - min) / min) at maxDistance:
// a rolloff of min x 9 / (max - min) makes that a tenth.
constexpr float gainFallAtMax = 9;

}  // namespace

const krClassInfo krSound::info = {"krSound", "krModule", "new_sound", soundMembers, {},
                                   "a sound of WAV files that moves with its owner; it plays while audible and in range"};

krSound::krSound(krModule* owner) : krModule(owner) {
    // A sound is heard unless it is muted; its owner must be audible as well.
    audible = true;
}

krSound::~krSound() { setPlaying(false); }

krVariant* krSound::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    if (name == "setPosition" && n == 3) {
        setPosition({args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()});
        return nullptr;
    }
    if (name == "load" && n == 1) {
        load(args[0]->toString());
        return nullptr;
    }
    if (name == "play" && n == 1) {
        start(true, args[0]->toBool());
        return nullptr;
    }
    if (name == "stop") {
        start(false, false);
        return nullptr;
    }
    // Bound to the fields, so that `+=` reaches them; the next update hands a change to the source.
    if (name == "pitch") return new krVFloatPtr(&pitch, this);
    if (name == "volume") return new krVFloatPtr(&volume, this);
    if (name == "relative") return new krVBool(relative);
    if (name == "minDistance") return new krVFloatPtr(&minDistance, this);
    if (name == "maxDistance") return new krVFloatPtr(&maxDistance, this);
    return krModule::getMember(name, caller, args);
}

void krSound::setMember(const std::string& name, krVariant* value) {
    if (name == "pitch") setPitch(value->toFloat());
    else if (name == "volume") setVolume(value->toFloat());
    else if (name == "relative") setRelative(value->toBool());
    else if (name == "minDistance") setDistances(value->toFloat(), maxDistance);
    else if (name == "maxDistance") setDistances(minDistance, value->toFloat());
    else krModule::setMember(name, value);
}

void krSound::load(const std::string& name) {
    const uint32_t buffer = krAudio::soundBuffer(name);
    if (!buffer) return;
    currentBuffer = buffer;
    buffers.push_back(buffer);
}

void krSound::clear() {
    setPlaying(false);
    buffers.clear();
    currentBuffer = 0;
    krModule::clear();
}

bool krSound::heard() const { return audible && owner && owner->isAudible(); }

void krSound::locate() {
    worldPosition = owner ? transformPoint(owner->getMatrix(), offset) : offset;
}

float krSound::listenerDistance() const {
    if (relative) return length(offset);
    if (const krListener* listener = krAudio::listener()) return length(worldPosition - listener->getWorldPosition());
    return length(worldPosition);
}

void krSound::start(bool on, bool loop) {
    if (!on || !heard() || !krAudio::ready()) {
        looping = false;
        setPlaying(false);
        return;
    }
    looping = loop;
    locate();
    // A sound out of range does not start; a loop starts by itself when it comes in range.
    if (!playing) setPlaying(listenerDistance() < maxDistance);
    if (!playing) return;
    sent.looping = looping;
    alSourcei(source, AL_LOOPING, looping);
    // Several files give variations: each play draws one.
    if (buffers.size() > 1) {
        const uint32_t drawn = buffers[static_cast<size_t>(std::rand()) % buffers.size()];
        if (drawn) {
            currentBuffer = drawn;
            alSourceStop(source);
            alSourcei(source, AL_BUFFER, static_cast<ALint>(drawn));
        }
    }
    alSourceRewind(source);
    alSourcePlay(source);
}

void krSound::setPlaying(bool value) {
    if (value && !currentBuffer) value = false;
    if (value == playing) return;
    if (value) {
        if (!krAudio::ready()) return;
        alGetError();
        ALuint made = 0;
        alGenSources(1, &made);
        // No source left: the sound stays silent, and a loop tries again next frame.
        if (alGetError() != AL_NO_ERROR) return;
        source = made;
        playing = true;
        stopClock = 0;
        alSourcei(source, AL_BUFFER, static_cast<ALint>(currentBuffer));
        sendParameters();
        locate();
        sendPlace();
        alSourcePlay(source);
        return;
    }
    // After the end of the run the source went with the context.
    if (krAudio::ready()) {
        alSourceStop(source);
        alDeleteSources(1, &source);
    }
    source = 0;
    playing = false;
}

void krSound::setAudible(bool a) {
    krModule::setAudible(a);
    if (!heard()) {
        setPlaying(false);
    } else if (looping) {
        locate();
        setPlaying(listenerDistance() < maxDistance);
    }
}

krSound::Parameters krSound::wanted() const {
    return {pitch, volume * gainScale, minDistance, maxDistance, looping, relative};
}

void krSound::sendParameters() {
    const Parameters p = wanted();
    alSourcef(source, AL_PITCH, krAudio::safe(p.pitch));
    alSourcef(source, AL_GAIN, krAudio::safe(p.gain));
    alSourcef(source, AL_MIN_GAIN, 0);
    alSourcef(source, AL_MAX_GAIN, 1);
    alSourcef(source, AL_ROLLOFF_FACTOR, krAudio::safe(p.minDistance * gainFallAtMax / (p.maxDistance - p.minDistance)));
    alSourcef(source, AL_REFERENCE_DISTANCE, krAudio::safe(p.minDistance));
    alSourcef(source, AL_MAX_DISTANCE, krAudio::safe(p.maxDistance));
    alSourcei(source, AL_LOOPING, p.looping);
    alSourcei(source, AL_SOURCE_RELATIVE, p.relative);
    sent = p;
}

void krSound::setPitch(float value) {
    pitch = value;
    if (playing && sent.pitch != value) {
        alSourcef(source, AL_PITCH, krAudio::safe(value));
        sent.pitch = value;
    }
}

void krSound::setVolume(float value) {
    volume = value;
    if (playing && sent.gain != volume * gainScale) {
        sent.gain = volume * gainScale;
        alSourcef(source, AL_GAIN, krAudio::safe(sent.gain));
    }
}

void krSound::setGainScale(float value) {
    gainScale = value;
    setVolume(volume);
}

void krSound::setRelative(bool value) {
    relative = value;
    if (playing) sendParameters();
}

void krSound::setDistances(float min, float max) {
    minDistance = min;
    maxDistance = max;
    if (playing) sendParameters();
}

void krSound::sendPlace() {
    // Relative to the listener the place is the offset itself, as the distance is.
    const krVector3& position = relative ? offset : worldPosition;
    if (krAudio::isFinite(position)) alSource3f(source, AL_POSITION, position.x, position.y, position.z);
    if (relative || !owner) return;
    // The owner's velocity at the sound's place, the offset turned into the world's axes.
    const krVector3 velocity = owner->getVelocityAt(transformVector(owner->getMatrix(), offset));
    if (krAudio::isFinite(velocity)) alSource3f(source, AL_VELOCITY, velocity.x, velocity.y, velocity.z);
}

bool krSound::update(float dt) {
    locate();
    const float distance = listenerDistance();
    if (playing && !heard()) setPlaying(false);
    if (!playing && looping && heard() && distance < maxDistance) setPlaying(true);
    if (playing) {
        ALint state = AL_STOPPED;
        alGetSourcei(source, AL_SOURCE_STATE, &state);
        if ((state == AL_PLAYING || looping) && distance <= maxDistance) stopClock = 0;
        else if ((stopClock += dt) >= releaseDelay) setPlaying(false);
    }
    if (playing) {
        if (!(wanted() == sent)) sendParameters();
        sendPlace();
    }
    return krModule::update(dt);
}
