// The script interface of rigid bodies. Methods act only with their exact argument counts; any
// other count falls through to the base, and so ends as an event of that name. Values that are
// not finite numbers are refused: one of them would spread to everything the body touches.
#include <cmath>

#include "core/krMain.h"
#include "physics/krPhysObj.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"

namespace {

const krMemberInfo physObjMembers[] = {
    {"setVelocity", krCall, "(x, y, z)", "linear velocity in m/s; a non-zero one wakes the body"},
    {"setRotation", krCall, "(x, y, z)", "angular velocity in rad/s about the world axes; a non-zero one wakes the body"},
    {"setWeightpoint", krCall, "(x, y, z)", "where gravity acts, in the body's own axes"},
    {"lock", krCall, "(translation, rotation)", "bit masks of X, Y, Z: the body does not move along or turn about them"},
    {"activate", krCall, "()", "wakes the body unless its mass is 0"},
    {"stop", krCall, "()", "puts the body to sleep with zero velocities"},
    {"mass", krRead | krWrite, "float", "kilograms, 0 to 1e30; a body of mass 0 never moves"},
    {"airResistance", krRead | krWrite, "float", "drag on velocity and turning, per m/s"},
    {"vx", krRead | krWrite, "float", "velocity along x; writing does not wake the body"},
    {"vy", krRead | krWrite, "float", "velocity along y; writing does not wake the body"},
    {"vz", krRead | krWrite, "float", "velocity along z; writing does not wake the body"},
    {"nonstaticCollisions", krRead | krWrite, "bool", "false: the body passes through other bodies, not level geometry"},
    {"x", krRead | krWrite, "float", "position; writing moves the body there"},
    {"y", krRead | krWrite, "float", "position; writing moves the body there"},
    {"z", krRead | krWrite, "float", "position; writing moves the body there"},
};

const krEventInfo physObjEvents[] = {
    {"stop", "()", "the body fell asleep"},
    {"contact", "()", "the world answered a contact of the body with level geometry"},
};

krVector3 vectorOf(const krArgs& args) { return {args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()}; }

void refuse(const std::string& what, krVariant* value) {
    krMain::instance()->errorMsg(what + " must be a finite number, not " + value->toString());
}

}  // namespace

const krClassInfo krPhysObj::info = {"krPhysObj", "krCollisionObject", "new_physicObject", physObjMembers,
                                     physObjEvents};

krVariant* krPhysObj::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    if (n == 3 && (member == "setVelocity" || member == "setRotation" || member == "setWeightpoint")) {
        const krVector3 v = vectorOf(args);
        if (!isFinite(v)) return reportError(caller, member + " needs finite numbers");
        if (member == "setWeightpoint") {
            weightpoint = v;
            return nullptr;
        }
        if (member == "setVelocity") setVelocityVector(v);
        else angularVelocity = v;
        if (!isZero(v)) activate();
        return nullptr;
    }
    if (member == "lock" && n == 2) {
        translationLock = static_cast<uint8_t>(args[0]->toInt());
        rotationLock = static_cast<uint8_t>(args[1]->toInt());
        recomputeInertia();
        return nullptr;
    }
    if (member == "activate" && n == 0) {
        activate();
        return nullptr;
    }
    if (member == "stop" && n == 0) {
        stop();
        return nullptr;
    }
    if (member == "mass") return new krVFloatPtr(&mass, this);
    if (member == "airResistance") return new krVFloatPtr(&airResistance, this);
    if (member == "vx") return new krVFloatPtr(&velocity.x, this);
    if (member == "vy") return new krVFloatPtr(&velocity.y, this);
    if (member == "vz") return new krVFloatPtr(&velocity.z, this);
    if (member == "nonstaticCollisions") return new krVBool(nonstaticCollisions);
    return krCollisionObject::getMember(member, caller, args);
}

void krPhysObj::setMember(const std::string& member, krVariant* value) {
    const float f = value->toFloat();
    if (member == "mass") {
        setMass(f);
    } else if (member == "airResistance" || member == "vx" || member == "vy" || member == "vz") {
        if (!std::isfinite(f)) refuse(member, value);
        else if (member == "airResistance") airResistance = f;
        else if (member == "vx") velocity.x = f;
        else if (member == "vy") velocity.y = f;
        else velocity.z = f;
    } else if (member == "x" || member == "y" || member == "z") {
        krVector3 p = position;
        (member == "x" ? p.x : member == "y" ? p.y : p.z) = f;
        setPosition(p);
    } else if (member == "nonstaticCollisions") {
        nonstaticCollisions = value->toBool();
    } else {
        krCollisionObject::setMember(member, value);
    }
}
