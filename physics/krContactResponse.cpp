// The answer to one contact: no restitution and no position correction. The body's proposed move
// is undone, and a force is worked out in one shot that over the substep reverses the approach
// along the normal with a small margin, with friction across it. The body then waits at the back
// of the queue to propose again. Against another body the force is shared, and a sleeping body
// hit gently does not react at all.
#include <algorithm>
#include <cmath>

#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "script/krVariant.h"

namespace {

// Speed in m/s added to the approach, so that a body leaves the surface.
constexpr float marginImmovable = 0.02f;
constexpr float marginMovable = 0.04f;
// Upper limit of the friction ratio.
constexpr float frictionLimit = 0.33f;
// Factor on the normal force.
constexpr float overshoot = 1.1f;
// Least impact (squared speed) that does damage.
constexpr float damageThreshold = 25.0f;
// Impacts between two bodies count half.
constexpr float movableImpact = 0.5f;

// How far the point at arm r of body x gives way along n per unit of force over dt by turning.
krVector3 yield(const krPhysObj& x, const krVector3& n, const krVector3& r, float dt) {
    krVector3 c = rotate(conjugate(x.rotation), cross(n, r));
    // A moment of 0 (a body without extent) gives no way by turning.
    c = {x.inertia.x != 0 ? c.x / x.inertia.x : 0.0f, x.inertia.y != 0 ? c.y / x.inertia.y : 0.0f,
         x.inertia.z != 0 ? c.z / x.inertia.z : 0.0f};
    const krVector3 w = rotate(x.rotation, c) * dt;
    return cross(r, w);
}

// (dt, dt, dt) / mass per axis; an axis without mass gives way not at all.
krVector3 linearYield(const krPhysObj& x, float dt) {
    const krVector3& m = x.linearMass;
    return {m.x != 0 ? dt / m.x : 0.0f, m.y != 0 ? dt / m.y : 0.0f, m.z != 0 ? dt / m.z : 0.0f};
}

void damage(krCollisionObject* x, const krVector3& arm, float impact) {
    x->applyDamage(nullptr, arm, krDamageCollision, 0, impact);
}

}  // namespace

void krPhysics::respond(krContact& contact, float dt) {
    krPhysObj* a = contact.body;
    krCollisionObject* other = contact.other;
    auto* b = dynamic_cast<krPhysObj*>(other);
    // Handlers of the events below may delete either side.
    a->addRef();
    other->addRef();

    const krVector3 n = normalized(contact.normal);
    contact.normal = n;
    a->nextPosition = a->position;
    a->nextOrientation = a->rotation;
    const krVector3 rA = contact.point - a->position;
    const krVector3 rB = contact.point - other->position;
    const krVector3 rel = a->getVelocityAt(rA) - other->getVelocityAt(rB);
    const float closing = dot(rel, n);
    const krVector3 push = n * (std::fabs(closing) + (b ? marginMovable : marginImmovable));
    krVector3 slide, slideDir;
    if (closing < 0) {
        slide = n * closing - rel;
        slideDir = normalized(slide);
    }
    // Sums of components, not lengths: that is how much push and slide the response weighs.
    const float sumPush = std::fabs(push.x + push.y + push.z);
    const float sumSlide = std::fabs(slide.x + slide.y + slide.z);
    float mu = frictionLimit;
    if (sumPush > 0) mu = std::min(frictionLimit, sumSlide / sumPush);
    const krVector3 spread = slideDir * (slideDir.x + slideDir.y + slideDir.z) * mu + krVector3::one;

    krVector3 denominator = spread * dot(n, yield(*a, n, rA, dt));
    if (b) denominator += spread * dot(n, yield(*b, n, rB, dt));
    denominator += linearYield(*a, dt);
    if (b) denominator += linearYield(*b, dt);
    const float d = std::fabs(dot(denominator, n));
    const float lambda = d == 0 ? 0.0f : sumPush * overshoot / d;
    const krVector3 fn = n * lambda;
    const krVector3 f = fn + slideDir * (length(fn) * mu);
    a->addForceAt(f, rA);

    if (!b) {
        const float impact = lengthSquared(push);
        if (krVariant* r = a->fireEvent("contact", krScriptObject::noArgs)) r->release();
        if (impact > damageThreshold) {
            damage(a, rA, impact);
            damage(other, rB, impact);
        }
    } else {
        const float impact = lengthSquared(push) * movableImpact;
        if (impact > damageThreshold) damage(a, rA, impact);
        if (b->active || lengthSquared(fn) > b->mass * dt) {
            b->addForceAt(-f, rB);
            b->activate();
            if (impact > damageThreshold) damage(b, rB, impact);
            if (!b->inQueue && b->getWorld() == this) {
                b->inQueue = true;
                enqueue(b);
            }
            b->integrateForces(dt);
        }
    }
    enqueue(a);
    a->integrateForces(dt);
    other->release();
    a->release();
}
