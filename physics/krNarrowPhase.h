// The contact tests between the shapes of a moving body and of a candidate it may hit. Each test
// appends what it finds to the contact table; the normal of a contact points at the body, and its
// key ranks the kind of contact before the speed of approach. The body's shape stands at its
// proposed pose, a candidate's where it was last placed.
#pragma once

#include <cstdint>

#include "core/krVector3.h"

class krCollisionObject;
class krPhysObj;
struct krContactTable;

namespace krNarrow {

// Corner i of a box takes x from bit 1, y from bit 2 and z from bit 0 of i (clear: min, set: max).
// Edges are corner pairs; faces are a corner and its two neighbours (c0, c1, c2), whose edges
// e1 = c1 - c0 and e2 = c2 - c0 have e2 x e1 pointing out of the box.
extern const int boxEdges[12][2];
extern const int boxFaces[6][3];

// Key offsets: contacts sort ascending and only the first usable one is answered, so these rank
// a box edge in a candidate's face first and a mesh edge in a body's triangle last.
inline constexpr float keyBoxEdgeInCandidateFace = -5000.0f;
inline constexpr float keyCandidateEdgeInBodyFace = -4000.0f;
inline constexpr float keySurface = -3000.0f;
inline constexpr float keyTriangleEdgeInFace = -2000.0f;
inline constexpr float keyBodyEdgeInTriangle = -1000.0f;

// A triangle by its three world corners and the surface byte of its material (or null).
struct Triangle {
    const krVector3& c0;
    const krVector3& c1;
    const krVector3& c2;
    const uint8_t* surface;
};

// Two spheres: the body's at its proposed position against the candidate's at its own. Movable
// candidates give key 0; level geometry ranks like every other surface.
void sphereSphere(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3& centre,
                  float radius, bool movable);
// The body's sphere against the faces of a candidate's box, two triangles a face.
void sphereBox(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3* corners);
// The body's sphere against a triangle of the candidate's mesh.
void sphereTriangle(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& t);
// The faces of the body's box against a candidate's sphere.
void boxSphere(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3* corners,
               const krVector3& centre, float radius);
// A triangle of the body's mesh against a candidate's sphere.
void triangleSphere(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& t,
                    const krVector3& centre, float radius);
// Edges of each box through the faces of the other.
void boxBox(krContactTable& table, krPhysObj* body, krPhysObj* other, const krVector3* bodyCorners,
            const krVector3* otherCorners);
// The body's box against a triangle of the candidate's mesh.
void boxTriangle(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3* corners,
                 const Triangle& t);
// A triangle of the body's mesh against a candidate's box.
void triangleBox(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& u,
                 const krVector3* corners);
// A triangle t of the candidate's mesh against a triangle u of the body's.
void triangleTriangle(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& t,
                      const Triangle& u);

}  // namespace krNarrow
