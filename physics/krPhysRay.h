// krPhysRay: line segments fixed to an object, cast by the world once per substep before anything
// moves; krRayObject: the mix-in of whatever owns such rays and switches them on in its world.
// Wheels find the road, characters the ground and bullets their targets this way.
#pragma once

#include <cstdint>
#include <vector>

#include "core/krBox.h"
#include "core/krVector3.h"

class krCollisionObject;
class krModule;
class krRayObject;

// Where a cast starts looking: just past the end of the segment, so that a surface at its very
// end still counts.
inline constexpr float krRayBestStart = 1.000001f;

// What one cast found: the nearest surface of the nearest object along the ray.
struct krRayHit {
    // The segment that hit.
    int32_t segment = 0;
    krCollisionObject* object = nullptr;
    krVector3 normal;
    // Index into the object's materialPhysics; 0 on anything but a mesh.
    int32_t material = 0;
};

class krPhysRay {
public:
    // All segments start zeroed. The ray adds itself to the rays of rayObject, which may be null.
    krPhysRay(int32_t segments, bool oneSided, krRayObject* rayObject);
    virtual ~krPhysRay();
    krPhysRay(const krPhysRay&) = delete;
    krPhysRay& operator=(const krPhysRay&) = delete;

    // Stores the local pair of a segment and zeroes its world pair.
    virtual void setSegment(int32_t index, const krVector3& origin, const krVector3& vector);
    // The nearest hit of the substep, at fraction t of its segment.
    virtual void onHit(float t, float dt, const krRayHit& hit);
    // Places the segments in the world by the module's matrix and boxes them.
    virtual void update(float dt);

    int32_t count() const { return static_cast<int32_t>(localOrigins.size()); }
    // Whether a surface of this normal may stop the segment: always, unless the ray is one-sided
    // and the segment runs along the normal.
    bool accepts(const krVector3& normal, int32_t segment) const;

    krRayObject* rayObject = nullptr;
    // The owner as a module: its matrix places the ray.
    krModule* module = nullptr;
    std::vector<krVector3> localOrigins;
    // Full length, not normalised.
    std::vector<krVector3> localVectors;
    std::vector<krVector3> worldOrigins;
    std::vector<krVector3> worldVectors;
    // Around all segments: the query box of the ray.
    krBox box;
    // A hit counts only where the segment runs against the surface normal.
    bool oneSided = false;
};

class krRayObject {
public:
    virtual ~krRayObject();

    // Puts the rays on the world's list of cast rays; the owner as a module must be a child of
    // the world. Vehicles call these from activate and stop.
    void activateRays();
    void deactivateRays();
    // The object as a module, whose owner is the world; null while the ray object is not one.
    virtual krModule* rayModule() = 0;

    bool raysActive = false;
    // Owned: the destructor deletes them. Rays add and remove themselves.
    std::vector<krPhysRay*> rays;
};

// The sphere test of collideRay, shared by bodies and level geometry: every segment against the
// sphere at centre; updates best and hit, and returns whether anything was found.
bool krRaySphere(const krPhysRay& ray, const krVector3& centre, float radius, float& best, krRayHit& hit);
// The flat tests: every segment against the triangle (c0, c0 + e1, c0 + e2) or, with parallelogram,
// the face (c0, c0 + e1, c0 + e2, c0 + e1 + e2), with the given normal.
void krRayFlat(const krPhysRay& ray, const krVector3& c0, const krVector3& e1, const krVector3& e2,
               const krVector3& normal, int32_t material, bool parallelogram, float& best, krRayHit& hit);
