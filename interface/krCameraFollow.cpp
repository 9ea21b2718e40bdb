// Following cameras: the shared pose and script members, and the two ways of turning the view.
#include "interface/krCameraFollow.h"

#include <cmath>

#include "render/krObject.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo followMembers[] = {
    {"setPosition", krCall, "(x, y, z)", "the offset from the pivot, turned with the view"},
    {"setPivot", krCall, "(x, y, z)", "the point it circles, in the target's space"},
    {"setOrientation", krCall, "(angle, x, y, z)", "the view relative to the target, angle radians about the axis"},
    {"reset", krCall, "()", "jumps to the wanted view at once"},
    {"target", krRead | krWrite, "object", "the scene object it follows; anything else clears it"},
    {"x", krRead | krWrite, "float", "offset from the pivot"},
    {"y", krRead | krWrite, "float", "offset from the pivot"},
    {"z", krRead | krWrite, "float", "offset from the pivot"},
    {"distance", krRead | krWrite, "float", "the far plane"},
    {"fov", krRead | krWrite, "float", "field of view in degrees"},
    {"lookback", krRead | krWrite, "bool", "looks the other way"},
};

const krMemberInfo floatingMembers[] = {
    {"smoothness", krRead | krWrite, "float", "share of a turn still left after one second, 0 to 1"},
    {"lockVertical", krRead | krWrite, "bool", "follows the target's heading only and stays level"},
    {"lockOrient", krRead | krWrite, "bool", "keeps its view and does not turn with the target"},
};

// Looking back is half a turn about the up axis.
const krQuat halfTurn = krQuat::fromAxisAngle(krPi, krVector3::axisY);
// angleOf measures from +X, a heading from -Z: a quarter turn apart.
constexpr float quarterTurn = 1.5707964f;
}

const krClassInfo krFollowCamera::info = {"krFollowCamera", "krCamera", nullptr, followMembers, {},
                                          "the cameras that follow a target"};
const krClassInfo krFloatingCamera::info = {"krFloatingCamera", "krFollowCamera", "new_floatingCamera",
                                            floatingMembers, {}, "trails its target's turns smoothly"};
const krClassInfo krFixedCamera::info = {"krFixedCamera", "krFollowCamera", "new_fixedCamera", {}, {},
                                         "tied rigidly to its target"};

krModule* krFollowCamera::getFollowed() const {
    return dynamic_cast<krModule*>(krScriptObject::fromHandle(targetHandle));
}

void krFollowCamera::setFollowed(krObject* target) {
    targetHandle = target ? target->handle() : 0;
}

krQuat krFollowCamera::lookOrientation(krModule* target) const {
    auto* source = dynamic_cast<krLookSource*>(target);
    return source ? source->getLookOrientation() : krQuat::identity;
}

krVector3 krFollowCamera::getPosition() {
    // The target's matrix is read now, not at the last update: a camera drawn after its target
    // moved stays glued to it.
    krModule* target = getFollowed();
    const krVector3 base = target ? transformPoint(target->getMatrix(), pivot) : pivot;
    return base + rotate(view, offset);
}

void krFollowCamera::setView(const krQuat& q) {
    view = q;
    setMatrix(krMatrix::fromQuatTranslation(view, getPosition()));
}

krVector3 krFollowCamera::getTarget() {
    return getPosition() + rotate(view, krVector3::negAxisZ);
}

krVector3 krFollowCamera::getUp() {
    return rotate(view, krVector3::axisY);
}

krVariant* krFollowCamera::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "setPosition" && args.size() == 3) {
        offset = krCameraVectorArgs(args);
        return nullptr;
    }
    if (name == "setPivot" && args.size() == 3) {
        pivot = krCameraVectorArgs(args);
        return nullptr;
    }
    if (name == "setOrientation" && args.size() == 4) {
        orientation = krCameraRotationArgs(args);
        return nullptr;
    }
    if (name == "reset" && args.empty()) {
        reset();
        return nullptr;
    }
    if (name == "target") return new krVObject(getFollowed());
    if (name == "x") return new krVFloatPtr(&offset.x, this);
    if (name == "y") return new krVFloatPtr(&offset.y, this);
    if (name == "z") return new krVFloatPtr(&offset.z, this);
    if (name == "distance") return new krVFloatPtr(&distance, this);
    if (name == "fov") return new krVFloatPtr(&fov, this);
    if (name == "lookback") return new krVBool(lookback);
    return krCamera::getMember(name, caller, args);
}

void krFollowCamera::setMember(const std::string& name, krVariant* value) {
    if (name == "target") {
        // A value that names no scene object clears the target.
        setFollowed(dynamic_cast<krObject*>(krScriptObject::fromHandle(value->toInt())));
    } else if (name == "x") {
        offset.x = value->toFloat();
    } else if (name == "y") {
        offset.y = value->toFloat();
    } else if (name == "z") {
        offset.z = value->toFloat();
    } else if (name == "distance") {
        distance = value->toFloat();
    } else if (name == "fov") {
        fov = value->toFloat();
    } else if (name == "lookback") {
        lookback = value->toBool();
        cut = true;
    } else {
        krCamera::setMember(name, value);
    }
}

krQuat krFloatingCamera::desired() {
    krModule* target = getFollowed();
    if (!target) return orientation;
    krQuat t = multiply(lookOrientation(target), krQuat::fromMatrix(target->getMatrix()));
    if (lockVertical) {
        // Only the heading survives: the camera stays level while the target banks and pitches.
        const krVector3 forward = rotate(t, krVector3::negAxisZ);
        t = krQuat::fromAxisAngle(angleOf(forward.x, forward.z) + quarterTurn, krVector3::axisY);
    }
    return multiply(orientation, t);
}

void krFloatingCamera::reset() {
    smoothed = desired();
    setView(smoothed);
}

bool krFloatingCamera::update(float dt) {
    if (!lockOrient) {
        // The old orientation keeps smoothness^dt of its weight: the same share of the turn is
        // left after one second whatever the frame rate.
        smoothed = slerp(desired(), smoothed, std::pow(smoothness, dt));
    }
    if (!lookback) setView(smoothed);
    else if (!lockVertical) setView(multiply(halfTurn, smoothed));
    else setView(multiply(smoothed, halfTurn));
    return krModule::update(dt);
}

krVariant* krFloatingCamera::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "smoothness") return new krVFloatPtr(&smoothness, this);
    if (name == "lockVertical") return new krVBool(lockVertical);
    if (name == "lockOrient") return new krVBool(lockOrient);
    return krFollowCamera::getMember(name, caller, args);
}

void krFloatingCamera::setMember(const std::string& name, krVariant* value) {
    if (name == "smoothness") smoothness = value->toFloat();
    else if (name == "lockVertical") lockVertical = value->toBool();
    else if (name == "lockOrient") lockOrient = value->toBool();
    else krFollowCamera::setMember(name, value);
}

krQuat krFixedCamera::desired() {
    krModule* target = getFollowed();
    if (!target) return orientation;
    return multiply(multiply(orientation, lookOrientation(target)), krQuat::fromMatrix(target->getMatrix()));
}

bool krFixedCamera::update(float dt) {
    setView(lookback ? multiply(halfTurn, desired()) : desired());
    return krModule::update(dt);
}
