// krController, krDriver, krPassenger: how players, the network, autopilots and scripts reach a
// vehicle. A controller fills the vehicle's control record every substep; a driver is a
// controller that sits in one vehicle; a passenger is a child of one.
#pragma once

#include <cstdint>

class krVehicle;

// Classes of control records: the class says how the raw bytes of a record are read.
// No record.
inline constexpr int32_t krControlVehicle = 0x10000;
// Five floats: steer, accelerate, brake, handbrake, one spare.
inline constexpr int32_t krControlCar = 0x10100;
// Six floats of an airplane's controls.
inline constexpr int32_t krControlAirplane = 0x10200;
// Four floats of an autopilot.
inline constexpr int32_t krControlAutoPilot = 0x10210;
inline constexpr int32_t krControlWeapon = 0x20000;
inline constexpr int32_t krControlRotatingObject = 0x30100;

class krController {
public:
    virtual ~krController() = default;
    // Writes the inputs of this substep into buffer, as controlClass says.
    virtual void control(krVehicle* vehicle, int32_t controlClass, uint8_t* buffer, int32_t size, float dt);
    // A value handed back by the controlled object.
    virtual void feedback(krVehicle* vehicle, int32_t controlClass, uint8_t* buffer);
};

class krDriver : public krController {
public:
    // A driver that goes leaves its vehicle without a driver.
    ~krDriver() override;
    virtual void setVehicle(krVehicle* v) { vehicle = v; }

    krVehicle* vehicle = nullptr;
};

class krPassenger {
public:
    virtual ~krPassenger() = default;
    virtual void setVehicle(krVehicle* v) { vehicle = v; }

    krVehicle* vehicle = nullptr;
};
