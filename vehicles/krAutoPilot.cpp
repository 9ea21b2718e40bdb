// The autopilot: a heading held by banking, with the pilot's pitch, throttle and brake passed on.
#include "vehicles/krAutoPilot.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "script/krClassInfo.h"

namespace {

// The autopilot's own record.
constexpr int32_t turnControl = 0;
constexpr int32_t pitchControl = 1;
constexpr int32_t throttleControl = 2;
constexpr int32_t brakeControl = 3;
constexpr int32_t autopilotControls = 4;
// In the airplane's record.
constexpr int32_t airplaneRoll = 0, airplaneYaw = 1, airplanePitch = 2, airplaneThrottle = 3, airplaneBrake = 5;
constexpr int32_t airplaneControls = 6;
// Heading error to wanted bank, and bank error to roll control.
constexpr float bankPerError = 3.0f;
constexpr float rollPerBank = 2.0f;
// The steepest bank wanted: 0.95 of a right angle either way.
constexpr float lowestBank = -0.95f * 1.5707964f;
constexpr float highestBank = 1.4922565f;

float sign(float f) { return f > 0 ? 1.0f : f < 0 ? -1.0f : 0.0f; }

}  // namespace

const krClassInfo krAutoPilot::info = {"krAutoPilot", "krVehicle", nullptr, {}, {},
                                       "an airplane's heading hold: made by reading its autopilot member"};

krAutoPilot::krAutoPilot(krModule* airplane) : krVehicle(airplane) {
    setControlClass(krControlAutoPilot, autopilotControls * static_cast<int32_t>(sizeof(float)));
}

bool krAutoPilot::update(float dt) {
    wantedHeading = wantedHeading + dt * krVehicle::control(turnControl);
    // The heading grows without end while the pilot circles; whole turns change nothing, and a
    // float that large would lose the fraction that matters.
    if (std::isfinite(wantedHeading)) wantedHeading = std::remainder(wantedHeading, krTwoPi);
    else wantedHeading = 0;
    return krVehicle::update(dt);
}

void krAutoPilot::control(krVehicle* vehicle, int32_t controlClass, uint8_t* buffer, int32_t size, float) {
    if (controlClass != krControlAirplane || !vehicle || !buffer ||
        size < airplaneControls * static_cast<int32_t>(sizeof(float)))
        return;
    const krQuat& q = vehicle->rotation;
    const krVector3 up = rotate(q, krVector3(0, 1, 0));
    const krVector3 tail = rotate(q, krVector3(0, 0, 1));
    const float heading = angleOf(tail.z, tail.x);
    const krVector3 right(std::cos(heading), 0, -std::sin(heading));
    const float side = sign(dot(right, up)) * std::sqrt(up.x * up.x + up.z * up.z);
    const float bank = wrapAngle(angleOf(up.y, side));
    const float error = wrapAngle(wantedHeading - heading);
    const float wantedBank = std::clamp(error * bankPerError, lowestBank, highestBank);
    const float values[6] = {std::clamp((wantedBank + bank) * rollPerBank, -1.0f, 1.0f),
                             -std::clamp(error, -1.0f, 1.0f),
                             krVehicle::control(pitchControl),
                             krVehicle::control(throttleControl),
                             0,
                             krVehicle::control(brakeControl)};
    for (int32_t i : {airplaneRoll, airplaneYaw, airplanePitch, airplaneThrottle, airplaneBrake})
        std::memcpy(buffer + i * sizeof(float), &values[i], sizeof(float));
}
