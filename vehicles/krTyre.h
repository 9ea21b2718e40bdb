// krTyre: a wheel of a vehicle, a child object that never collides. Its suspension ray finds the
// ground; the wheel turns the hit into a spring force and a friction force on the vehicle and
// places its mesh where the suspension holds it.
#pragma once

#include <cstdint>

#include "physics/krPhysObj.h"
#include "physics/krPhysRay.h"

class krTyreVehicle;

// Bits of a tyre's flags: what the controls of its vehicle do to it.
inline constexpr int32_t krTyreSteer = 1;
inline constexpr int32_t krTyreBrake = 2;
inline constexpr int32_t krTyreAccelerate = 4;
inline constexpr int32_t krTyreHandbrake = 8;

// The suspension ray of one wheel: one one-sided segment straight down in the vehicle's axes.
class krTyreRay : public krPhysRay {
public:
    explicit krTyreRay(krTyreVehicle* vehicle);
    // Clears the last hit, then places the segment.
    void update(float dt) override;
    void onHit(float t, float dt, const krRayHit& hit) override;

    // 1 - the hit fraction; 0 without a hit.
    float compression = 0;
    // World coordinates.
    krVector3 contactPoint;
    // The ground's velocity minus the vehicle's at the contact.
    krVector3 relativeVelocity;
    krVector3 contactNormal{0, 1, 0};
    krTyreVehicle* vehicle = nullptr;
};

class krTyre : public krPhysObj {
public:
    // A tyre belongs to the vehicle it is made below; below anything else it stays idle.
    explicit krTyre(krModule* owner);
    ~krTyre() override;
    const char* className() const override { return "krTyre"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // The wheel's forces from the last ray phase, and its place under the vehicle.
    bool update(float dt) override;
    // Takes width and radius from the mesh, then places the rest position.
    void onLoaded() override;
    // A wheel never collides and is never simulated as a body of its own.
    void activate() override {}
    void setCollStyle(int32_t) override {}
    void addMesh(krMesh& mesh) override;
    // Works out the rest position from the load per wheel and sets the ray's segment under it.
    void computeRestPosition();
    // The vehicle lets go of the wheel: it keeps no ray.
    void leaveVehicle();

    krTyreVehicle* vehicle = nullptr;
    // Owned by the vehicle's ray list; null once the wheel has left its vehicle.
    krTyreRay* ray = nullptr;
    int32_t flags = 0;
    // Wheel centre at zero compression, in the vehicle's axes.
    krVector3 restPosition;
    bool onGround = false;
    float width = 0.1f;
    // The wheel's radius; the bounding radius of the object is the container's, below.
    float radius = 0.5f;
    // Friction load of the last substep.
    float tyreLoad = 0;
    // Linear and quadratic spring terms.
    float stiffness = 10000.0f;
    float progression = 10000.0f;
    float damping = 2500.0f;
    // Length of the suspension ray in metres.
    float travel = 0.5f;
    // At or below this compression the wheel counts as off the ground.
    float minCompression = 0;
    float friction = 1.5f;
    // Stored by setFriction; nothing reads them.
    float friction2 = 1.0f;
    float friction3 = 0.75f;
    // Radians, written by the vehicle in each step.
    float steerAngle = 0;
    // Share of the ground speed that is sideways, 0 to 1.
    float slip = 0;
    // From the vehicle's position to the contact point, world axes.
    krVector3 arm;
    // The friction force the wheel could give.
    krVector3 sideForce;
    // The force that would stop the sideways motion in one substep.
    krVector3 stopForce;
    // Orientation of the mesh as loaded.
    krQuat baseOrientation = krQuat::identity;
};
