// krTyreVehicle: a vehicle on wheels. Each wheel casts one suspension ray; after the wheels have
// worked out their forces, the vehicle combines their side forces so that they act together.
#pragma once

#include <cstdint>
#include <vector>

#include "physics/krPhysRay.h"
#include "vehicles/krVehicle.h"

class krTyre;

class krTyreVehicle : public krVehicle, public krRayObject {
public:
    explicit krTyreVehicle(krModule* owner) : krVehicle(owner) {}
    ~krTyreVehicle() override;
    const char* className() const override { return "krTyreVehicle"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    void addChild(krModule* child) override;
    void removeChild(krModule* child) override;
    // The vehicle's step (the wheels run in its children phase), then the wheels' side forces.
    bool update(float dt) override;
    // Rays are cast only while the body is awake.
    void activate() override;
    void stop() override;
    krModule* rayModule() override { return this; }
    void writeState(uint8_t* buffer, int32_t& size, int32_t frame) override;
    void readState(const uint8_t* buffer, int32_t size, float lag) override;

    // What scripts assign to tyreCount: the number of wheels the load per wheel assumes.
    int32_t tyreCountSetting = 0;
    // Children that are tyres, in the order they were added.
    std::vector<krTyre*> tyres;
};
