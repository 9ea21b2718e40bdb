// krAutoPilot: sits between a pilot and an airplane. Towards the airplane it is a driver that fills
// the airplane's controls every substep; towards the pilot it is a vehicle with a small record of
// its own (turn rate, pitch, throttle, brake). The pilot commands a rate of turn, and the
// autopilot keeps a wanted heading and banks the airplane towards it.
#pragma once

#include "vehicles/krVehicle.h"

class krAutoPilot : public krVehicle, public krDriver {
public:
    // The airplane is the owner; the autopilot has no mass and never moves as a body.
    explicit krAutoPilot(krModule* airplane);
    const char* className() const override { return "krAutoPilot"; }
    static const krClassInfo info;

    // Turns the wanted heading at the commanded rate, then lets the pilot fill the record.
    bool update(float dt) override;
    // Fills an airplane's record: roll and yaw toward the wanted heading, the rest passed on.
    void control(krVehicle* vehicle, int32_t controlClass, uint8_t* buffer, int32_t size, float dt) override;

    // Radians; heading 0 has the nose toward world -z.
    float wantedHeading = 0;
};
