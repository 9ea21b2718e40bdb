// Engines: the torque curve, the idle speed, the fuel, the rpm and the sound; rockets push.
#include "vehicles/krEngine.h"

#include <algorithm>
#include <cmath>

#include "audio/krSound.h"
#include "core/krMain.h"
#include "core/krRandom.h"
#include "physics/krPhysObj.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo engineMembers[] = {
    {"rpm", krRead | krWrite, "int", "revolutions per minute"},
    {"sound", krRead | krWrite, "object", "a sound whose pitch and volume follow the engine"},
    {"active", krRead | krWrite, "bool", "false: the engine does not simulate; its speed comes from elsewhere"},
    {"broken", krRead | krWrite, "bool", "the throttle is held at 0"},
    {"acceleration", krRead | krWrite, "float", "the throttle, 0 to 1"},
    {"power", krRead | krWrite, "float", "scale of the torque"},
    {"fuelAmount", krRead | krWrite, "float", "fuel left; at 0 the throttle falls to 0"},
    {"fuelConsumption", krRead | krWrite, "float", "fuel per second at full throttle"},
};

const krMemberInfo rocketMembers[] = {
    {"setDirection", krCall, "(x, y, z)", "the push, in the owner's axes"},
    {"setPosition", krCall, "(x, y, z)", "where it pushes, in the owner's axes; kept at length 1 or 0"},
};

// The torque curve: drive = min(2 x throttle, curveTop - (w - curvePeak)^2 x curveBend - w x curveSlope).
constexpr float curveTop = 2.5f;
constexpr float curvePeak = 300.0f;
constexpr float curveBend = 0.00002f;
constexpr float curveSlope = 0.002f;
// The idle term (idleGain / (w + idleOffset) - idleDrag) x dt x power x idleScale settles an engine
// without throttle where idleGain / (w + idleOffset) = idleDrag, about 48 rad/s.
constexpr float idleGain = 20.0f;
constexpr float idleOffset = 12.5f;
constexpr float idleDrag = 0.33f;
constexpr float idleScale = 0.004f;
constexpr float driveScale = 0.005f;
constexpr float loadScale = 0.08f;
// A running engine never turns slower than this, rad/s.
constexpr float stallSpeed = 30.0f;
constexpr float radiansPerTurn = 6.2831855f;
// Sound pitch = wobble x (w x pitchPerSpeed + pitchBase); volume = wobble x (throttle x volumePerThrottle + volumeBase).
constexpr float pitchPerSpeed = 0.0015f;
constexpr float pitchBase = 0.45f;
constexpr float volumePerThrottle = 0.2f;
constexpr float volumeBase = 0.8f;

krVector3 vectorOf(const krArgs& args) { return {args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()}; }

}  // namespace

const krClassInfo krEngine::info = {"krEngine", "krModule", "new_physicEngine", engineMembers, {},
                                    "a rotating mass with a torque curve, turned into thrust by a propeller"};
const krClassInfo krRocketEngine::info = {"krRocketEngine", "krEngine", "new_rocketEngine", rocketMembers, {},
                                          "an engine that pushes its owner directly"};

krSound* krEngine::getSound() const {
    return sound ? dynamic_cast<krSound*>(krScriptObject::fromHandle(sound)) : nullptr;
}

float krEngine::wobble() { return static_cast<float>(krRand()) / static_cast<float>(krRandMax) * 0.2f + 0.9f; }

krVariant* krEngine::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "rpm") return new krVIntPtr(&rpm, this);
    if (member == "sound") return new krVObject(getSound());
    if (member == "active") return new krVBool(active);
    if (member == "broken") return new krVBool(broken);
    if (member == "acceleration") return new krVFloatPtr(&throttle, this);
    if (member == "power") return new krVFloat(power);
    if (member == "fuelAmount") return new krVFloat(fuelAmount);
    if (member == "fuelConsumption") return new krVFloat(fuelConsumption);
    return krModule::getMember(member, caller, args);
}

void krEngine::setMember(const std::string& member, krVariant* value) {
    if (member == "sound") {
        auto* s = dynamic_cast<krSound*>(krScriptObject::fromHandle(value->toInt()));
        sound = s ? s->handle() : 0;
        return;
    }
    if (member == "active") {
        active = value->toBool();
        return;
    }
    if (member == "broken") {
        broken = value->toBool();
        return;
    }
    if (member == "rpm") {
        rpm = value->toInt();
        return;
    }
    float* field = member == "acceleration"      ? &throttle
                   : member == "power"           ? &power
                   : member == "fuelAmount"      ? &fuelAmount
                   : member == "fuelConsumption" ? &fuelConsumption
                                                 : nullptr;
    if (!field) {
        krModule::setMember(member, value);
        return;
    }
    // A number that is not finite would poison the owner through the forces.
    const float f = value->toFloat();
    if (std::isfinite(f)) *field = f;
    else krMain::instance()->errorMsg(member + " of an engine must be a finite number, not " + value->toString());
}

void krEngine::setThrottle(float value) {
    throttle = value;
    if (fuelAmount == 0) throttle = 0;
    if (broken) throttle = 0;
}

void krEngine::followOwner() {
    if (owner) matrix = owner->getMatrix();
}

bool krEngine::update(float dt) {
    float w = rotationSpeed;
    const float p = power;
    if (active) {
        const float curve = (curveTop - (w - curvePeak) * (w - curvePeak) * curveBend) - w * curveSlope;
        const float drive = std::min(throttle * 2, curve);
        w = w + (idleGain / (w + idleOffset) - idleDrag) * dt * p * idleScale + dt * drive * p * driveScale -
            dt * load * loadScale;
        w = std::max(w, stallSpeed);
        rotationSpeed = w;
        load = 0;
        fuelAmount = std::max(0.0f, fuelAmount - fuelConsumption * throttle * dt);
    }
    rpm = truncateSaturating(w / radiansPerTurn * 60, INT32_MIN, INT32_MAX);
    if (krSound* s = getSound()) {
        s->setPitch(wobble() * (w * pitchPerSpeed + pitchBase));
        s->setVolume(wobble() * (throttle * volumePerThrottle + volumeBase));
    }
    followOwner();
    return krModule::update(dt);
}

krVariant* krRocketEngine::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if ((member == "setDirection" || member == "setPosition") && args.size() == 3) {
        const krVector3 v = vectorOf(args);
        if (!isFinite(v)) return reportError(caller, member + " needs finite numbers");
        (member == "setDirection" ? direction : position) = normalized(v);
        return nullptr;
    }
    return krEngine::getMember(member, caller, args);
}

bool krRocketEngine::update(float dt) {
    followOwner();
    if (active) {
        if (auto* body = dynamic_cast<krPhysObj*>(owner)) {
            const krVector3 d = transformVector(owner->getMatrix(), direction);
            const krVector3 p = transformVector(owner->getMatrix(), position);
            body->addForceAt(d * (power * throttle), p);
        }
        fuelAmount = std::max(0.0f, fuelAmount - fuelConsumption * throttle * dt);
    }
    if (krSound* s = getSound()) {
        s->setAudible(throttle > 0);
        s->setVolume(wobble() * throttle);
    }
    return krModule::update(dt);
}
