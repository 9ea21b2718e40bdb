// Rigid bodies: integration, the proposal and commit of a pose, sleep, mass and inertia, shapes.
#include "physics/krPhysObj.h"

#include <algorithm>
#include <cmath>

#include "core/krMain.h"
#include "physics/krPhysics.h"
#include "render/krMesh.h"
#include "script/krVariant.h"

namespace {

// Calm means slower than these, squared: metres and radians per second.
constexpr float calmSpeedSquared = 0.02f;
constexpr float calmSpinSquared = 0.005f;
// Seconds of calm after which a body falls asleep.
constexpr float sleepAfter = 2.0f;
// Velocities keep this fraction of themselves per second.
constexpr double dampingPerSecond = 0.99;
// The solid box: a moment of inertia is mass x (a^2 + b^2) / 12.
constexpr float boxInertia = 0.083333336f;

// Per component a / b, where a zero b (no mass, no extent) takes nothing instead of dividing by
// it: force on a body that has no mass must not turn into infinite speed.
krVector3 quotient(const krVector3& a, const krVector3& b) {
    return {b.x != 0 ? a.x / b.x : 0.0f, b.y != 0 ? a.y / b.y : 0.0f, b.z != 0 ? a.z / b.z : 0.0f};
}

}  // namespace

krPhysObj::~krPhysObj() { delete netTrack; }

void krPhysObj::integrateForces(float dt) {
    velocity += quotient(force, linearMass) * dt;
    const krVector3 b = rotate(conjugate(rotation), torque);
    const krVector3 c = quotient(b * dt, inertia);
    angularVelocity += rotate(rotation, c);
    force = krVector3();
    torque = krVector3();
}

void krPhysObj::predictMotion(float dt) {
    const float half = length(angularVelocity) * dt * 0.5f;
    if (half == 0) {
        nextOrientation = rotation;
    } else {
        const krVector3 n = normalized(angularVelocity);
        const float s = std::sin(half);
        nextOrientation = normalized(multiply(rotation, krQuat(n.x * s, n.y * s, n.z * s, std::cos(half))));
    }
    nextPosition = position + velocity * dt;
    const krMatrix m = krMatrix::fromQuatTranslation(nextOrientation, nextPosition);
    if (collStyle == krCollBox) transformBox(m);
    else if (collStyle == krCollMesh) transformMesh(m);
    else nextBox = krBox(nextPosition - krVector3(radius, radius, radius), nextPosition + krVector3(radius, radius, radius));
    if (krPhysics* w = getWorld()) w->nextBoxChanged(this);
}

void krPhysObj::transformBox(const krMatrix& m) {
    krCollisionObject::transformBox(m);
    boxAroundShape();
}

void krPhysObj::transformMesh(const krMatrix& m) {
    krCollisionObject::transformMesh(m);
    boxAroundShape();
}

void krPhysObj::boxAroundShape() {
    const krCollisionData* g = collisionGeometry;
    size_t n = 0;
    if (g) n = collStyle == krCollBox ? (g->boxCorners() ? 8 : 0) : std::min(g->sourceVertices.size(), g->vertices.size());
    if (n == 0) {
        const krVector3 r(radius, radius, radius);
        nextBox = krBox(nextPosition - r, nextPosition + r);
        return;
    }
    nextBox.makeEmpty();
    for (size_t i = 0; i < n; ++i) nextBox.extend(g->vertices[i]);
}

bool krPhysObj::update(float elapsed) {
    if (active) {
        rotation = nextOrientation;
        position = nextPosition;
        worldRotation = rotation;
        if (krPhysics* w = getWorld()) w->moveInGrid(this, currentBox, nextBox);
        currentBox = nextBox;
        // Substeps of a world are alike: the power is taken again only when the step changes.
        static float lastElapsed = 0, lastFactor = 1;
        if (elapsed != lastElapsed) {
            lastFactor = static_cast<float>(std::pow(dampingPerSecond, static_cast<double>(elapsed)));
            lastElapsed = elapsed;
        }
        const float f = lastFactor;
        velocity *= f;
        angularVelocity *= f;
        if (lengthSquared(velocity) < calmSpeedSquared && lengthSquared(angularVelocity) < calmSpinSquared) {
            restTime += elapsed;
            if (restTime > sleepAfter) stop();
        }
        if (airResistance != 0) {
            force -= velocity * airResistance;
            torque -= angularVelocity * airResistance;
        }
    }
    if (netTrack) {
        netTrack->t = std::clamp(netTrack->t + elapsed * netTrack->rate, 0.0f, 3.0f);
        predictMotion(elapsed);
        position = lerp(netTrack->fromPosition, netTrack->toPosition, netTrack->t);
        rotation = slerp(netTrack->fromOrientation, netTrack->toOrientation, netTrack->t);
        worldRotation = rotation;
        currentBox = nextBox;
    }
    return krCollisionObject::update(elapsed);
}

void krPhysObj::recomputeInertia() {
    // A box that was never extended has no size.
    krVector3 s = localBox.min.x <= localBox.max.x ? localBox.size() : krVector3();
    // A flat or shapeless body takes its bounding sphere's width on the axes it lacks.
    if (s.x == 0) s.x = 2 * radius;
    if (s.y == 0) s.y = 2 * radius;
    if (s.z == 0) s.z = 2 * radius;
    inertia = krVector3(s.y * s.y + s.z * s.z, s.x * s.x + s.z * s.z, s.x * s.x + s.y * s.y) * (mass * boxInertia);
    if (rotationLock & 1) inertia.x = krLockedMass;
    if (rotationLock & 2) inertia.y = krLockedMass;
    if (rotationLock & 4) inertia.z = krLockedMass;
    linearMass = krVector3(mass, mass, mass);
    if (translationLock & 1) linearMass.x = krLockedMass;
    if (translationLock & 2) linearMass.y = krLockedMass;
    if (translationLock & 4) linearMass.z = krLockedMass;
}

void krPhysObj::activate() {
    if (active || mass == 0) return;
    force = krVector3();
    torque = krVector3();
    recomputeInertia();
    if (krPhysics* w = getWorld()) w->addActiveBody(this);
    restTime = 0;
    active = true;
}

void krPhysObj::stop() {
    if (!active) return;
    velocity = krVector3();
    angularVelocity = krVector3();
    if (krPhysics* w = getWorld()) w->removeActiveBody(this);
    active = false;
    if (krVariant* r = fireEvent("stop", noArgs)) r->release();
}

void krPhysObj::setMass(float m) {
    if (!(std::isfinite(m) && m >= 0 && m <= krMaxMass)) {
        krMain::instance()->errorMsg("Mass of " + describe() + " refused: it must be a number from 0 to 1e30");
        return;
    }
    mass = m;
    recomputeInertia();
    // Without mass there is nothing to integrate: the body can only stand.
    if (mass == 0) stop();
}

bool krPhysObj::isPoisoned() const {
    return !isFinite(position) || !isFinite(rotation) || !isFinite(velocity) || !isFinite(angularVelocity) ||
           !isFinite(force) || !isFinite(torque);
}

void krPhysObj::setOwner(krModule* newOwner) {
    if (owner) velocity = owner->getVelocityAt(transformVector(owner->getMatrix(), position));
    else velocity = krVector3();
    krCollisionObject::setOwner(newOwner);
    nextPosition = position;
    nextOrientation = rotation;
}

krVector3 krPhysObj::getVelocityAt(const krVector3& arm) { return velocity + cross(arm, angularVelocity); }

bool krPhysObj::collectObjects(krCollectResult& result, const krBox& query) {
    if (!nextBox.overlaps(query)) return false;
    result.add(this);
    collectChildren(result, query);
    return true;
}

void krPhysObj::setPosition(const krVector3& p) {
    if (!isFinite(p)) {
        krMain::instance()->errorMsg("Position of " + describe() + " refused: not a finite number");
        return;
    }
    nextPosition = p;
    if (netTrack) netTrack->fromPosition = netTrack->toPosition = p;
    krCollisionObject::setPosition(p);
}

void krPhysObj::setOrientation(const krQuat& q) {
    if (!isFinite(q)) {
        krMain::instance()->errorMsg("Orientation of " + describe() + " refused: not a finite number");
        return;
    }
    nextOrientation = q;
    worldRotation = q;
    if (netTrack) netTrack->fromOrientation = netTrack->toOrientation = q;
    krCollisionObject::setOrientation(q);
}

void krPhysObj::addMesh(krMesh& mesh) {
    if (mesh.indexCount >= 3) {
        if ((mesh.kind & krMeshFile::kindHull) && collStyle == krCollNone) {
            if (krCollisionData* shape = makeShape(mesh, nullptr)) {
                collStyle = krCollMesh;
                if (rayGeometry == collisionGeometry) rayGeometry = nullptr;
                delete collisionGeometry;
                collisionGeometry = shape;
                if (!rayGeometry) rayGeometry = shape;
            }
        } else if (mesh.kind & krMeshFile::kindRays) {
            if (krCollisionData* shape = makeShape(mesh, nullptr)) {
                dropRayGeometry();
                rayGeometry = shape;
            }
        }
    }
    krCollisionObject::addMesh(mesh);
    if (!localBox.isPoint()) recomputeInertia();
}

void krPhysObj::genMeshBox(const krVector3& size) {
    krCollisionObject::genMeshBox(size);
    if (!localBox.isPoint()) recomputeInertia();
}

void krPhysObj::genMeshEllipsoid(const krVector3& size, int32_t segments) {
    krCollisionObject::genMeshEllipsoid(size, segments);
    if (!localBox.isPoint()) recomputeInertia();
}
