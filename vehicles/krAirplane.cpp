// Airplanes: the six controls into hinge angles, throttles, steering and brakes.
#include "vehicles/krAirplane.h"

#include <algorithm>
#include <cmath>

#include "script/krClassInfo.h"
#include "script/krVArray.h"
#include "script/krVBound.h"
#include "script/krVObject.h"
#include "vehicles/krAutoPilot.h"
#include "vehicles/krEngine.h"
#include "vehicles/krTyre.h"
#include "vehicles/krWing.h"

namespace {

// The controls in the airplane's record, by index.
constexpr int32_t rollControl = 0;
constexpr int32_t yawControl = 1;
constexpr int32_t pitchControl = 2;
constexpr int32_t throttleControl = 3;
constexpr int32_t throttle2Control = 4;
constexpr int32_t brakeControl = 5;
constexpr int32_t airplaneControls = 6;

// Script names of the controls, in record order.
const char* const controlNames[] = {"roll", "yaw", "pitch", "throttle", "throttle2", "brake"};

const krMemberInfo airplaneMembers[] = {
    {"speed", krRead | krWrite, "float", "signed speed along the nose, m/s"},
    {"velocity", krRead | krWrite, "float", "length of the velocity, m/s"},
    {"elevators", krWrite, "array", "the wings that pitch; write-only, as the list only refers to children"},
    {"ailerons", krWrite, "array", "the wings that roll, with opposed hinge axes; write-only"},
    {"primary_engines", krWrite, "array", "the engines of throttle; write-only"},
    {"secondary_engines", krWrite, "array", "the engines of throttle2; write-only"},
    {"rudder", krWrite, "object", "the wing that yaws; write-only"},
    {"autopilot", krRead, "object", "the heading hold, made on the first read; assign it to driver to engage it"},
    {"roll", krRead | krWrite, "float", "control: +1 rolls left, -1 right; a non-zero control wakes the airplane"},
    {"yaw", krRead | krWrite, "float", "control: +1 turns left, -1 right; rudder and steered wheels"},
    {"pitch", krRead | krWrite, "float", "control: +1 noses down, -1 up"},
    {"throttle", krRead | krWrite, "float", "control: 0 to 1, the primary engines"},
    {"throttle2", krRead | krWrite, "float", "control: 0 to 1, the secondary engines"},
    {"brake", krRead | krWrite, "float", "control: 0 to 1, the braked wheels"},
};

// As a car's: steering fades above fullSteerSpeed m/s by steerFade for each m/s further.
constexpr float fullSteerSpeed = 8.0f;
constexpr float steerFade = 0.2f;
constexpr float fullLock = 0.7f;
// Push of a braked wheel at full brake, newtons.
constexpr float wheelBrake = 5000.0f;
// Hinge authority in radians: fullHinge up to hingeFadeSpeed m/s, less by hingeFade per m/s above.
constexpr float fullHinge = 0.25f;
constexpr float hingeFadeSpeed = 75.0f;
constexpr float hingeFade = 0.0075f;
// The rudder follows the ailerons by this share of their angle.
constexpr float rudderHelp = 0.5f;

// The network record: speed x speedScale and the first engine's rad/s x engineScale as bytes, then
// five controls of controlBits each, (input + 1) x controlSteps, lowest first.
constexpr float speedScale = 1.2f;
constexpr float engineScale = 0.4f;
constexpr int32_t controlBits = 3;
constexpr float controlSteps = 3.0f;
constexpr int32_t sentControls = 5;
constexpr int32_t headerSize = 4;

uint8_t byteOf(float f) { return static_cast<uint8_t>(truncateSaturating(f, 0, 255)); }

float sign(float f) { return f > 0 ? 1.0f : f < 0 ? -1.0f : 0.0f; }

int32_t controlIndex(const std::string& name) {
    for (int32_t i = 0; i < airplaneControls; ++i)
        if (name == controlNames[i]) return i;
    return -1;
}

// The objects of a script array as handles; anything else in it counts as no object.
std::vector<int32_t> handlesOf(krVariant* value) {
    std::vector<int32_t> handles;
    if (auto* array = dynamic_cast<krVArray*>(value))
        for (const auto& [key, element] : array->elements())
            if (element && element->type() == krTypeObject) handles.push_back(element->toInt());
    return handles;
}

template <class T>
T* partOf(int32_t handle) {
    return handle ? dynamic_cast<T*>(krScriptObject::fromHandle(handle)) : nullptr;
}

}  // namespace

const krClassInfo krAirplane::info = {"krAirplane", "krTyreVehicle", "new_airplane", airplaneMembers, {},
                                      "a vehicle on wheels that flies by its wings"};

krAirplane::krAirplane(krModule* owner) : krTyreVehicle(owner) {
    setControlClass(krControlAirplane, airplaneControls * static_cast<int32_t>(sizeof(float)));
}

krVariant* krAirplane::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "speed") return new krVFloatPtr(&speed, this);
    if (member == "velocity") return new krVFloatPtr(&velocityLength, this);
    if (member == "autopilot") {
        auto* pilot = partOf<krAutoPilot>(autopilot);
        if (!pilot) {
            pilot = new krAutoPilot(this);
            pilot->attach();
            autopilot = pilot->handle();
        }
        return new krVObject(pilot);
    }
    if (const int32_t i = controlIndex(member); i >= 0) return new krVFloat(control(i));
    return krTyreVehicle::getMember(member, caller, args);
}

void krAirplane::setMember(const std::string& member, krVariant* value) {
    if (member == "speed") speed = value->toFloat();
    else if (member == "velocity") velocityLength = value->toFloat();
    else if (member == "elevators") elevators = handlesOf(value);
    else if (member == "ailerons") ailerons = handlesOf(value);
    else if (member == "primary_engines") primaryEngines = handlesOf(value);
    else if (member == "secondary_engines") secondaryEngines = handlesOf(value);
    else if (member == "rudder") rudder = value->toInt();
    else if (const int32_t i = controlIndex(member); i >= 0) setControlFromScript(i, value);
    else krTyreVehicle::setMember(member, value);
}

bool krAirplane::update(float dt) {
    const float roll = control(rollControl);
    const float yaw = control(yawControl);
    const float pitch = control(pitchControl);
    const float brake = control(brakeControl);
    const krVector3 nose = rotate(rotation, krVector3(0, 0, -1));
    velocityLength = length(velocity);
    if (active) speed = dot(normalized(velocity), nose) * velocityLength;
    const float slow = std::max(0.0f, std::fabs(speed) - fullSteerSpeed);
    for (krTyre* t : tyres) {
        if (t->flags & krTyreSteer) t->steerAngle = yaw * fullLock / (slow * steerFade + 1.0f);
        if ((t->flags & krTyreBrake) && t->onGround) {
            const float s = sign(dot(velocity, nose));
            addForceAt(nose * (s * brake * -wheelBrake), t->arm);
        }
    }
    for (int32_t h : primaryEngines)
        if (auto* e = partOf<krEngine>(h)) e->setThrottle(control(throttleControl));
    for (int32_t h : secondaryEngines)
        if (auto* e = partOf<krEngine>(h)) e->setThrottle(control(throttle2Control));
    const float f = fullHinge / (std::max(0.0f, std::fabs(speed) - hingeFadeSpeed) * hingeFade + 1.0f);
    const float aileron = f * roll;
    if (!std::isnan(aileron))
        for (int32_t h : ailerons)
            if (auto* w = partOf<krWing>(h)) w->setAngle(-aileron);
    const float elevator = f * pitch;
    if (!std::isnan(elevator))
        for (int32_t h : elevators)
            if (auto* w = partOf<krWing>(h)) w->setAngle(-elevator);
    const float r = std::clamp(aileron * rudderHelp + f * yaw, -fullHinge, fullHinge);
    if (!std::isnan(r))
        if (auto* w = partOf<krWing>(rudder)) w->setAngle(r);
    return krTyreVehicle::update(dt);
}

void krAirplane::writeState(uint8_t* buffer, int32_t& size, int32_t frame) {
    uint8_t* out = buffer + size;
    out[0] = byteOf(speed * speedScale);
    krEngine* first = primaryEngines.empty() ? nullptr : partOf<krEngine>(primaryEngines[0]);
    out[1] = byteOf(first ? first->rotationSpeed * engineScale : 0.0f);
    uint32_t bits = 0;
    for (int32_t i = 0; i < sentControls; ++i) {
        const auto step = static_cast<uint32_t>(truncateSaturating(control(i) * controlSteps + controlSteps, 0, 7));
        bits |= step << (i * controlBits);
    }
    out[2] = static_cast<uint8_t>(bits & 0xFF);
    out[3] = static_cast<uint8_t>(bits >> 8);
    size += headerSize;
    krTyreVehicle::writeState(buffer, size, frame);
}

void krAirplane::readState(const uint8_t* buffer, int32_t size, float lag) {
    if (size < headerSize) return;
    speed = buffer[0] / speedScale;
    if (krEngine* first = primaryEngines.empty() ? nullptr : partOf<krEngine>(primaryEngines[0])) {
        first->rotationSpeed = buffer[1] / engineScale;
        first->active = false;
    }
    if (!getDriver()) {
        const uint32_t bits = buffer[2] | static_cast<uint32_t>(buffer[3]) << 8;
        for (int32_t i = 0; i < sentControls; ++i)
            setControl(i, static_cast<float>((bits >> (i * controlBits)) & 7u) / controlSteps - 1);
    }
    krTyreVehicle::readState(buffer + headerSize, size - headerSize, lag);
}
