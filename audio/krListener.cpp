// The listener: its script interface and the place, motion and facing it gives OpenAL.
#include "audio/krListener.h"

#include <AL/al.h>

#include "audio/krAudio.h"
#include "script/krBlock.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo listenerMembers[] = {
    {"setPosition", krCall, "(x, y, z)", "place of the ears in the space of tracked, or of the world"},
    {"setOrientation", krCall, "(angle, x, y, z)", "turns the ears by angle radians about a non-zero axis"},
    {"volume", krRead | krWrite, "float", "gain of everything heard"},
    {"tracked", krRead | krWrite, "object", "the object the ears move with, or null"},
};

}  // namespace

const krClassInfo krListener::info = {"krListener", "krModule", "new_listener", listenerMembers, {},
                                      "the ears: distances and directions of sounds are taken from here"};

krListener::krListener(krModule* owner) : krModule(owner) { krAudio::setListener(this); }

krListener::~krListener() { krAudio::setListener(nullptr); }

krVariant* krListener::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    if (name == "setPosition" && n == 3) {
        setPosition({args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()});
        return nullptr;
    }
    if (name == "setOrientation" && n == 4) {
        const krVector3 axis(args[1]->toFloat(), args[2]->toFloat(), args[3]->toFloat());
        if (isZero(axis)) return reportError(caller, "setOrientation needs an axis that is not zero");
        setOrientation(krQuat::fromAxisAngle(args[0]->toFloat(), axis));
        return nullptr;
    }
    // Bound to the field, so that `+=` reaches it; each update hands the gain to OpenAL.
    if (name == "volume") return new krVFloatPtr(&volume, this);
    if (name == "tracked") return new krVObject(getTracked());
    return krModule::getMember(name, caller, args);
}

void krListener::setMember(const std::string& name, krVariant* value) {
    if (name == "volume") {
        setVolume(value->toFloat());
    } else if (name == "tracked") {
        // An object value's int is its handle; anything that is no live module tracks nothing.
        setTracked(dynamic_cast<krModule*>(krScriptObject::fromHandle(value->toInt())));
    } else {
        krModule::setMember(name, value);
    }
}

void krListener::setVolume(float value) {
    volume = value;
    if (krAudio::ready() && krAudio::listener() == this) alListenerf(AL_GAIN, krAudio::safe(volume));
}

void krListener::setTracked(krModule* module) { tracked = module ? module->handle() : 0; }

krModule* krListener::getTracked() const {
    return tracked ? dynamic_cast<krModule*>(krScriptObject::fromHandle(tracked)) : nullptr;
}

bool krListener::update(float dt) {
    krModule* object = getTracked();
    const krMatrix place = object ? object->getMatrix() : krMatrix(true);
    worldPosition = transformPoint(place, offset);
    // Only the listener in force speaks for the ears.
    if (krAudio::ready() && krAudio::listener() == this) {
        const krVector3 velocity = object ? object->getVelocityAt(transformVector(place, offset)) : krVector3();
        const krVector3 forward = transformVector(place, rotate(orientation, krVector3::negAxisZ));
        const krVector3 up = transformVector(place, rotate(orientation, krVector3::axisY));
        const float facing[6] = {forward.x, forward.y, forward.z, up.x, up.y, up.z};
        if (krAudio::isFinite(worldPosition) && krAudio::isFinite(velocity) && krAudio::isFinite(forward) &&
            krAudio::isFinite(up)) {
            alListener3f(AL_POSITION, worldPosition.x, worldPosition.y, worldPosition.z);
            alListener3f(AL_VELOCITY, velocity.x, velocity.y, velocity.z);
            alListenerfv(AL_ORIENTATION, facing);
        }
        alListenerf(AL_GAIN, krAudio::safe(volume));
    }
    return krModule::update(dt);
}
