// krVehicle: a rigid body with a seat for one driver, any number of passengers, and a control
// record that its driver fills in every substep. Cars and airplanes build on it.
#pragma once

#include <cstdint>
#include <vector>

#include "physics/krPhysObj.h"
#include "vehicles/krController.h"

class krVehicle : public krPhysObj {
public:
    explicit krVehicle(krModule* owner) : krPhysObj(owner) {}
    ~krVehicle() override;
    const char* className() const override { return "krVehicle"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    void addChild(krModule* child) override;
    void removeChild(krModule* child) override;
    // Asks the driver for this substep's controls, then moves as a body.
    bool update(float dt) override;
    // Tells the old driver it is out and the new one it is in, with "driverChange" between.
    virtual void setDriver(krController* controller);

    krController* getDriver() const { return driver; }
    // Float i of the control record, 0 beyond its end.
    float control(int32_t i) const;
    void setControl(int32_t i, float value);
    int32_t getControlClass() const { return controlClass; }
    int32_t getControlSize() const { return static_cast<int32_t>(controls.size()); }
    uint8_t* getControls() { return controls.data(); }

    std::vector<krPassenger*> passengers;

protected:
    // Gives the record its class and a zeroed buffer of size bytes.
    void setControlClass(int32_t controlClass, int32_t size);
    // A control written by a script: refused unless a finite number; a non-zero one wakes the
    // vehicle, which asleep would ignore its controls until something bumped it.
    void setControlFromScript(int32_t i, krVariant* value);

private:
    // Not owned. A driver that goes tells its vehicle (krDriver's destructor), and a vehicle that
    // goes tells its driver.
    krController* driver = nullptr;
    int32_t controlClass = krControlVehicle;
    std::vector<uint8_t> controls;
};
