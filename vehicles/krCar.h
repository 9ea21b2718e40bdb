// krCar: a vehicle on wheels driven by five controls: steer, accelerate, brake, handbrake and a
// spare. It pushes at its driven and braked wheels and steers its steered ones.
#pragma once

#include "vehicles/krTyreVehicle.h"

class krCar : public krTyreVehicle {
public:
    explicit krCar(krModule* owner);
    const char* className() const override { return "krCar"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // Speed, downforce, steering and the wheels' push, then the tyre vehicle's step.
    bool update(float dt) override;

    // Signed speed along the nose (local -z), m/s.
    float speed = 0;
};
