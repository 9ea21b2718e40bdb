// Cars: the five controls turned into steering angles and pushes at the wheels.
#include "vehicles/krCar.h"

#include <cmath>

#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "vehicles/krTyre.h"

namespace {

// The controls in the car's record, by index.
constexpr int32_t steerControl = 0;
constexpr int32_t accelerateControl = 1;
constexpr int32_t brakeControl = 2;
constexpr int32_t carControls = 5;

// Script names of the first four controls, in record order.
const char* const controlNames[] = {"steer", "accelerate", "brake", "handbrake"};

const krMemberInfo carMembers[] = {
    {"speed", krRead | krWrite, "float", "signed speed along the nose, m/s"},
    {"steer", krRead | krWrite, "float",
     "control: +1 full left to -1 full right; kept while no driver writes it; a non-zero control wakes the car"},
    {"accelerate", krRead | krWrite, "float", "control: 0 to 1"},
    {"brake", krRead | krWrite, "float", "control: 0 to 1; pushes backward, so a standing car reverses"},
    {"handbrake", krRead | krWrite, "float", "control: carried for the scripts and the network; acts on nothing"},
};

// Newtons of downforce per m/s of speed.
constexpr float downforcePerSpeed = 200.0f;
// Above this speed (m/s) the steering turns less, by steerFade for each m/s further.
constexpr float fullSteerSpeed = 8.0f;
constexpr float steerFade = 0.2f;
// Steering angle at full lock, radians.
constexpr float fullLock = 0.7f;
// Push of a driven or braked wheel at full control, newtons.
constexpr float wheelPush = 5000.0f;

int32_t controlIndex(const std::string& name) {
    for (int32_t i = 0; i < static_cast<int32_t>(std::size(controlNames)); ++i)
        if (name == controlNames[i]) return i;
    return -1;
}

}  // namespace

const krClassInfo krCar::info = {"krCar", "krTyreVehicle", "new_car", carMembers, {},
                                 "a vehicle on wheels with steering, throttle and brakes"};

krCar::krCar(krModule* owner) : krTyreVehicle(owner) {
    setControlClass(krControlCar, carControls * static_cast<int32_t>(sizeof(float)));
}

krVariant* krCar::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "speed") return new krVFloatPtr(&speed, this);
    if (const int32_t i = controlIndex(member); i >= 0) return new krVFloat(control(i));
    return krTyreVehicle::getMember(member, caller, args);
}

void krCar::setMember(const std::string& member, krVariant* value) {
    const int32_t i = controlIndex(member);
    if (member == "speed") {
        speed = value->toFloat();
    } else if (i >= 0) {
        setControlFromScript(i, value);
    } else {
        krTyreVehicle::setMember(member, value);
    }
}

bool krCar::update(float dt) {
    const float steer = control(steerControl);
    const float accelerate = control(accelerateControl);
    const float brake = control(brakeControl);
    const krVector3 nose = rotate(rotation, krVector3(0, 0, -1));
    speed = dot(normalized(velocity), nose) * length(velocity);
    const krVector3 up = rotate(rotation, krVector3(0, 1, 0));
    force -= up * (std::fabs(speed) * downforcePerSpeed);
    const float slow = std::max(0.0f, std::fabs(speed) - fullSteerSpeed);
    for (krTyre* t : tyres) {
        if (t->flags & krTyreSteer) t->steerAngle = steer * fullLock / (1 + slow * steerFade);
        if ((t->flags & krTyreAccelerate) && t->onGround) addForceAt(nose * (accelerate * wheelPush), t->arm);
        if ((t->flags & krTyreBrake) && t->onGround) addForceAt(nose * (brake * -wheelPush), t->arm);
    }
    return krTyreVehicle::update(dt);
}
