// krPropeller: the visible part of an engine that turns its rotation speed into thrust on the
// owner and into load on the engine.
#pragma once

#include <cstdint>

#include "render/krObject.h"

class krEngine;

class krPropeller : public krObject {
public:
    explicit krPropeller(krModule* owner);
    const char* className() const override { return "krPropeller"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // Thrust from the flow through the disc, the engine's load, and the spin of the mesh.
    bool update(float dt) override;

    // Null when none is set or it has gone.
    krEngine* getEngine() const;

    // Thrust axis in the owner's axes.
    krVector3 direction{0, 0, 1};
    // Newtons per m/s of difference between the disc's flow and the air's.
    float thrust = 100.0f;
    // Metres of flow per radian of engine rotation.
    float flowSpeed = 0.2f;
    // Turn of the mesh so far, radians.
    float angle = 0;

private:
    // The engine, held by handle: it may be deleted at any time.
    int32_t engine = 0;
};
