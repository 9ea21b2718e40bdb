// krEngine: a rotating mass with a torque curve. It takes a throttle and a load and exposes its
// rotation speed; a propeller turns that into thrust. krRocketEngine: an engine that pushes its
// owner directly. Both are children of a body and run at the world's substep rate.
#pragma once

#include <cstdint>

#include "core/krModule.h"
#include "core/krVector3.h"

class krSound;

class krEngine : public krModule {
public:
    explicit krEngine(krModule* owner) : krModule(owner) {}
    const char* className() const override { return "krEngine"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // The speed under throttle and load, the fuel, the rpm and the sound; the matrix follows the
    // owner's.
    bool update(float dt) override;
    // The throttle, or 0 without fuel or when broken.
    virtual void setThrottle(float value);
    virtual void addLoad(float value) { load += value; }

    // Null when none is set or it has gone.
    krSound* getSound() const;

    float power = 100000.0f;
    // Radians per second.
    float rotationSpeed = 0;
    float throttle = 0;
    // Braking load gathered during the substep.
    float load = 0;
    // Whole revolutions per minute.
    int32_t rpm = 0;
    // False: the speed comes from elsewhere (a server's state) and the engine does not simulate.
    bool active = true;
    bool broken = false;
    float fuelAmount = 1.0f;
    // Fuel per second at full throttle.
    float fuelConsumption = 0;

protected:
    // The owner's matrix, so that the engine's sound stands where the owner is.
    void followOwner();
    // A factor around 1 that keeps engine sounds from beating in unison: 0.9 to 1.1.
    static float wobble();

    // The sound, held by handle: it may be deleted at any time.
    int32_t sound = 0;
};

class krRocketEngine : public krEngine {
public:
    explicit krRocketEngine(krModule* owner) : krEngine(owner) {}
    const char* className() const override { return "krRocketEngine"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    // Pushes the owner along its direction with power x throttle; no rotation.
    bool update(float dt) override;

    // Both in the owner's axes, and both of length 1 or 0.
    krVector3 direction{0, 0, 1};
    krVector3 position;
};
