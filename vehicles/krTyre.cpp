// Wheels: the suspension ray's hit, the spring and friction of each substep, the rest position,
// and the script members.
#include "vehicles/krTyre.h"

#include <cmath>

#include "core/krMain.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "vehicles/krTyreVehicle.h"

namespace {

const krMemberInfo tyreMembers[] = {
    {"setSuspension", krCall, "(stiffness, progression, damping, travel, minCompression)",
     "the spring; the vehicle's mass and tyreCount must be set first"},
    {"setFriction", krCall, "(friction, friction2, friction3)", "grip; only the first acts"},
    {"flags", krWrite, "int", "CAR_STEER, CAR_BRAKE, CAR_ACCELERATE, CAR_HANDBRAKE; write-only, as the vehicle reads it"},
};

// The ray sits this share of a wheel's width further out than the wheel's centre.
constexpr float rayOutset = 0.4f;
// Gravity the rest position assumes, m/s^2.
constexpr float restGravity = 9.81f;
// The friction load grows slower than the spring force: load = loadScale x (force / loadScale)^loadExponent.
constexpr float loadScale = 5000.0f;
constexpr float loadExponent = 0.85f;
// A sideways stop force is made this much larger than the slide it stops.
constexpr float stopOvershoot = 1.1f;

float sign(float f) { return f > 0 ? 1.0f : f < 0 ? -1.0f : 0.0f; }

krVector3 quotient(const krVector3& a, const krVector3& b) {
    return {b.x != 0 ? a.x / b.x : 0.0f, b.y != 0 ? a.y / b.y : 0.0f, b.z != 0 ? a.z / b.z : 0.0f};
}

}  // namespace

const krClassInfo krTyre::info = {"krTyre", "krPhysObj", "new_tyre", tyreMembers, {},
                                  "a wheel of the vehicle it is made below"};

krTyreRay::krTyreRay(krTyreVehicle* v) : krPhysRay(1, true, v), vehicle(v) {}

void krTyreRay::update(float dt) {
    compression = 0;
    krPhysRay::update(dt);
}

void krTyreRay::onHit(float t, float, const krRayHit& hit) {
    if (!hit.object || !vehicle || dot(hit.normal, worldVectors[0]) >= 0) return;
    contactPoint = worldOrigins[0] + worldVectors[0] * t;
    relativeVelocity = hit.object->getVelocityAt(contactPoint - hit.object->position) -
                       vehicle->getVelocityAt(contactPoint - vehicle->position);
    contactNormal = hit.normal;
    compression = 1 - t;
}

krTyre::krTyre(krModule* owner) : krPhysObj(owner), vehicle(dynamic_cast<krTyreVehicle*>(owner)) {
    if (vehicle) ray = new krTyreRay(vehicle);
    // Never simulated: its box must not place it anywhere in a query.
    nextBox.makeEmpty();
}

krTyre::~krTyre() { delete ray; }

void krTyre::leaveVehicle() {
    delete ray;
    ray = nullptr;
    vehicle = nullptr;
}

krVariant* krTyre::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    if (member == "setSuspension" && n == 5) {
        const float v[5] = {args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat(), args[3]->toFloat(),
                            args[4]->toFloat()};
        for (float f : v)
            if (!std::isfinite(f)) return reportError(caller, "setSuspension needs finite numbers");
        stiffness = v[0];
        progression = v[1];
        damping = v[2];
        travel = v[3];
        minCompression = v[4];
        computeRestPosition();
        return nullptr;
    }
    if (member == "setFriction" && n == 3) {
        const float v[3] = {args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()};
        for (float f : v)
            if (!std::isfinite(f)) return reportError(caller, "setFriction needs finite numbers");
        friction = v[0];
        friction2 = v[1];
        friction3 = v[2];
        return nullptr;
    }
    return krPhysObj::getMember(member, caller, args);
}

void krTyre::setMember(const std::string& member, krVariant* value) {
    if (member == "flags") flags = value->toInt();
    else krPhysObj::setMember(member, value);
}

void krTyre::addMesh(krMesh& mesh) {
    krPhysObj::addMesh(mesh);
    // A hull in the wheel's file gives it no shape: the ray is its only contact.
    collStyle = krCollNone;
}

void krTyre::computeRestPosition() {
    if (!vehicle) return;
    const float m = vehicle->mass;
    const auto n = static_cast<float>(vehicle->tyreCountSetting);
    const float root = std::sqrt(m * progression * 4 * restGravity / n + stiffness * stiffness);
    const float c = (root - stiffness) / (2 * progression);
    restPosition = krVector3(position.x, (1 - c) * travel + position.y - radius, position.z);
    const float side = position.x < 0 ? -width : width;
    if (ray)
        ray->setSegment(0, krVector3(restPosition.x + side * rayOutset, restPosition.y, restPosition.z),
                        krVector3(0, -travel, 0));
}

void krTyre::onLoaded() {
    baseOrientation = rotation;
    const krVector3 a = rotate(baseOrientation, localBox.max);
    const krVector3 b = rotate(baseOrientation, localBox.min);
    width = std::fabs(a.x - b.x);
    radius = std::fabs(b.y);
    computeRestPosition();
    krPhysObj::onLoaded();
}

bool krTyre::update(float dt) {
    if (!vehicle || !ray) return krPhysObj::update(dt);
    const krVector3 g = ray->relativeVelocity;
    const krVector3 n = ray->contactNormal;
    const float c = ray->compression;
    onGround = minCompression < c;
    const float s = position.z > 0 ? -steerAngle : steerAngle;
    if (onGround) {
        const float f = std::max(0.0f, dot(g, n) * damping + c * c * progression + c * stiffness);
        const krVector3 spring = n * f;
        arm = ray->contactPoint - vehicle->position;
        vehicle->addForceAt(spring, arm);
        tyreLoad = static_cast<float>(loadScale * std::pow(length(spring) / loadScale, static_cast<double>(loadExponent)));
        const krQuat& q = vehicle->rotation;
        const krVector3 h = rotate(q, krVector3(std::sin(s), 0, std::cos(s)));
        const krVector3 side = cross(h, n);
        sideForce = side * (tyreLoad * friction * sign(dot(side, g)));
        slip = std::fabs(dot(normalized(g), side));
        const float sigma = sign(dot(g, side));
        const krVector3 d = side * sigma;
        const krVector3 lateral = side * dot(g, side);
        const float sumLateral = std::fabs(lateral.x + lateral.y + lateral.z);
        const krVector3 yield = cross(arm, rotate(q, quotient(rotate(conjugate(q), cross(d, arm)), vehicle->inertia)) * dt);
        const krVector3 e = krVector3(1, 1, 1) * dot(d, yield) + quotient(krVector3(dt, dt, dt), vehicle->linearMass);
        const float den = std::fabs(dot(e, d));
        stopForce = den != 0 ? d * (sumLateral * stopOvershoot / den) : krVector3();
        if (lengthSquared(stopForce) < lengthSquared(sideForce)) sideForce = stopForce;
    }
    position = krVector3(restPosition.x, restPosition.y + radius - (1 - std::max(minCompression, c)) * travel,
                         restPosition.z);
    rotation = multiply(baseOrientation, krQuat::fromAxisAngle(-s, krVector3::axisY));
    return krPhysObj::update(dt);
}
