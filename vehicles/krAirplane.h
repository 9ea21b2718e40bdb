// krAirplane: a vehicle on wheels that turns six controls (roll, yaw, pitch, two throttles and the
// brakes) into hinge angles of its wings, throttles of its engines, and the steering and brakes
// of its wheels. It flies by the forces of its wings.
#pragma once

#include <cstdint>
#include <vector>

#include "vehicles/krTyreVehicle.h"

class krEngine;
class krWing;

class krAirplane : public krTyreVehicle {
public:
    explicit krAirplane(krModule* owner);
    const char* className() const override { return "krAirplane"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // The controls into hinges, throttles and wheels, then the tyre vehicle's step, in which the
    // wings and engines update as children.
    bool update(float dt) override;
    // The speed, the first engine's speed and five controls in front of the tyre vehicle's record.
    void writeState(uint8_t* buffer, int32_t& size, int32_t frame) override;
    // Takes over the speeds, switches the first engine's own simulation off, and takes the
    // controls unless someone here drives.
    void readState(const uint8_t* buffer, int32_t size, float lag) override;

    // Signed speed along the nose (local -z), m/s.
    float speed = 0;
    // Length of the velocity, m/s.
    float velocityLength = 0;

private:
    // The lists refer to children and are held by handle: a part deleted by a script is passed over.
    std::vector<int32_t> primaryEngines;
    std::vector<int32_t> secondaryEngines;
    std::vector<int32_t> elevators;
    std::vector<int32_t> ailerons;
    int32_t rudder = 0;
    // Made on the first read of the script member, a child of the airplane.
    int32_t autopilot = 0;
};
