// Rays: their segments in the world, their owners' activation, and the tests shared by the
// objects that rays meet.
#include "physics/krPhysRay.h"

#include <algorithm>

#include "core/krGeometry.h"
#include "core/krMatrix.h"
#include "core/krModule.h"
#include "physics/krPhysics.h"

krPhysRay::krPhysRay(int32_t segments, bool sided, krRayObject* owner)
    : rayObject(owner),
      module(owner ? owner->rayModule() : nullptr),
      localOrigins(static_cast<size_t>(std::max(segments, 0))),
      localVectors(localOrigins.size()),
      worldOrigins(localOrigins.size()),
      worldVectors(localOrigins.size()),
      oneSided(sided) {
    box.makeEmpty();
    if (rayObject) rayObject->rays.push_back(this);
}

krPhysRay::~krPhysRay() {
    if (rayObject) rayObject->rays.erase(std::remove(rayObject->rays.begin(), rayObject->rays.end(), this),
                                         rayObject->rays.end());
}

void krPhysRay::setSegment(int32_t index, const krVector3& origin, const krVector3& vector) {
    if (index < 0 || index >= count()) return;
    const size_t i = static_cast<size_t>(index);
    localOrigins[i] = origin;
    localVectors[i] = vector;
    worldOrigins[i] = krVector3();
    worldVectors[i] = krVector3();
}

void krPhysRay::onHit(float, float, const krRayHit&) {}

void krPhysRay::update(float) {
    if (!rayObject || !module) return;
    box.makeEmpty();
    const krMatrix& m = module->getMatrix();
    for (size_t i = 0; i < localOrigins.size(); ++i) {
        worldOrigins[i] = transformPoint(m, localOrigins[i]);
        worldVectors[i] = transformVector(m, localVectors[i]);
        box.extend(worldOrigins[i]);
        box.extend(worldOrigins[i] + worldVectors[i]);
    }
}

bool krPhysRay::accepts(const krVector3& normal, int32_t segment) const {
    return !oneSided || dot(worldVectors[static_cast<size_t>(segment)], normal) < 0;
}

krRayObject::~krRayObject() {
    // A ray takes itself out of the list as it goes.
    while (!rays.empty()) delete rays.back();
}

void krRayObject::activateRays() {
    if (raysActive) return;
    krModule* m = rayModule();
    auto* world = m ? dynamic_cast<krPhysics*>(m->getOwner()) : nullptr;
    if (!world) return;
    world->addActiveRayObject(this);
    raysActive = true;
}

void krRayObject::deactivateRays() {
    if (!raysActive) return;
    krModule* m = rayModule();
    if (auto* world = m ? dynamic_cast<krPhysics*>(m->getOwner()) : nullptr) world->removeActiveRayObject(this);
    raysActive = false;
}

bool krRaySphere(const krPhysRay& ray, const krVector3& centre, float radius, float& best, krRayHit& hit) {
    bool found = false;
    for (int32_t s = 0; s < ray.count(); ++s) {
        const krVector3& origin = ray.worldOrigins[static_cast<size_t>(s)];
        const krVector3& vector = ray.worldVectors[static_cast<size_t>(s)];
        float t1 = 0, t2 = 0;
        if (!raySphere(centre - origin, vector, radius, t1, t2)) continue;
        for (const float t : {t1, t2}) {
            if (!(t >= 0 && t <= best)) continue;
            const krVector3 n = normalized(origin + vector * t - centre);
            if (!ray.accepts(n, s)) continue;
            best = t;
            hit.segment = s;
            hit.normal = n;
            hit.material = 0;
            found = true;
        }
    }
    return found;
}

void krRayFlat(const krPhysRay& ray, const krVector3& c0, const krVector3& e1, const krVector3& e2,
               const krVector3& normal, int32_t material, bool parallelogram, float& best, krRayHit& hit) {
    for (int32_t s = 0; s < ray.count(); ++s) {
        const krVector3 offset = ray.worldOrigins[static_cast<size_t>(s)] - c0;
        const krVector3& vector = ray.worldVectors[static_cast<size_t>(s)];
        const float t = parallelogram ? rayParallelogram(e1, e2, offset, vector) : rayTriangle(e1, e2, offset, vector);
        if (!(t >= 0 && t < best) || !ray.accepts(normal, s)) continue;
        best = t;
        hit.segment = s;
        hit.normal = normal;
        hit.material = material;
    }
}
