// Contact tests: spheres against triangles by their closest points, and edges through faces and
// triangles as short rays.
#include "physics/krNarrowPhase.h"

#include "core/krGeometry.h"
#include "physics/krContact.h"
#include "physics/krPhysObj.h"

namespace krNarrow {

const int boxEdges[12][2] = {{0, 4}, {1, 5}, {2, 6}, {3, 7}, {0, 1}, {0, 2},
                             {1, 3}, {2, 3}, {4, 5}, {4, 6}, {5, 7}, {6, 7}};
const int boxFaces[6][3] = {{0, 1, 2}, {0, 2, 4}, {0, 4, 1}, {7, 5, 6}, {7, 3, 5}, {7, 6, 3}};

namespace {

// The body's velocity at a world point.
krVector3 bodyVelocity(krPhysObj* body, const krVector3& point) { return body->getVelocityAt(point - body->position); }

// A face of a box as its corner and its two edges.
struct Face {
    krVector3 c0, e1, e2;
};

Face faceOf(const krVector3* corners, int f) {
    const krVector3& c0 = corners[boxFaces[f][0]];
    return {c0, corners[boxFaces[f][1]] - c0, corners[boxFaces[f][2]] - c0};
}

// Where the edge from a to b crosses a surface: the ray result t with 0 <= t <= 1, else -1.
bool onEdge(float t) { return t >= 0 && t <= 1; }

// Whether the edge from offset (relative to a surface's corner) along dir reaches the plane of
// the surface, whose edges have the cross product n, within its length. This is the ray test's
// own parameter, reckoned the same way, so a miss here is a miss there: the full test, with
// its two further products, runs only for edges that pass.
bool reachesPlane(const krVector3& n, const krVector3& offset, const krVector3& dir) {
    const float t = -dot(offset, n) / dot(dir, n);
    return t >= 0 && t <= 1;
}

// Sphere test A: the body's sphere at its proposed position against the triangle (p0, a, b).
// Inside the triangle the normal is `inside`, given lazily since most tests miss.
template <class Normal>
void sphereAgainst(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3& p0,
                   const krVector3& a, const krVector3& b, Normal inside, const uint8_t* surface) {
    bool outside;
    const krVector3 q = closestPointOnTriangleToOrigin(p0 - body->nextPosition, a, b, &outside);
    if (!(lengthSquared(q) < body->radius * body->radius)) return;
    const krVector3 n = outside ? normalized(-q) : inside();
    const krVector3 point = body->position - n * body->radius;
    table.add(dot(n, bodyVelocity(body, point)) + keySurface, point, n, body, nullptr, other, surface);
}

// Sphere test B: the candidate's sphere against the body's triangle (p0, a, b).
template <class Normal>
void sphereAgainstBody(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3& p0,
                       const krVector3& a, const krVector3& b, Normal inside, const krVector3& centre, float radius,
                       const uint8_t* surface) {
    bool outside;
    const krVector3 q = closestPointOnTriangleToOrigin(p0 - centre, a, b, &outside);
    if (!(lengthSquared(q) < radius * radius)) return;
    const krVector3 n = outside ? normalized(q) : inside();
    const krVector3 point = centre - n * radius;
    table.add(dot(n, bodyVelocity(body, point)) + keySurface, point, n, body, surface, other, nullptr);
}

}  // namespace

void sphereSphere(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3& centre,
                  float radius, bool movable) {
    if (!(length(body->nextPosition - centre) < body->radius + radius)) return;
    const krVector3 n = normalized(body->position - centre);
    const krVector3 point = centre + n * radius;
    const float key = movable ? 0.0f : dot(n, bodyVelocity(body, point)) + keySurface;
    table.add(key, point, n, body, nullptr, other, nullptr);
}

void sphereBox(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3* corners) {
    for (int f = 0; f < 6; ++f) {
        const Face face = faceOf(corners, f);
        // Both triangles of the face take the face's outward normal.
        auto outward = [&face] { return normalized(cross(face.e2, face.e1)); };
        sphereAgainst(table, body, other, face.c0, face.e1, face.e2, outward, nullptr);
        sphereAgainst(table, body, other, face.c0 + face.e1 + face.e2, -face.e2, -face.e1, outward, nullptr);
    }
}

void sphereTriangle(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& t) {
    const krVector3 e1 = t.c1 - t.c0, e2 = t.c2 - t.c0;
    // Mesh triangles wind counter-clockwise seen from outside, so e1 x e2 points out of the mesh,
    // as the box and mesh tests take it; a box face's corners run the other way round.
    sphereAgainst(
        table, body, other, t.c0, e1, e2, [&] { return normalized(cross(e1, e2)); }, t.surface);
}

void boxSphere(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3* corners,
               const krVector3& centre, float radius) {
    for (int f = 0; f < 6; ++f) {
        const Face face = faceOf(corners, f);
        auto inward = [&face] { return normalized(cross(face.e1, face.e2)); };
        sphereAgainstBody(table, body, other, face.c0, face.e1, face.e2, inward, centre, radius, nullptr);
        sphereAgainstBody(table, body, other, face.c0 + face.e1 + face.e2, -face.e2, -face.e1, inward, centre,
                          radius, nullptr);
    }
}

void triangleSphere(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& t,
                    const krVector3& centre, float radius) {
    const krVector3 e1 = t.c1 - t.c0, e2 = t.c2 - t.c0;
    sphereAgainstBody(
        table, body, other, t.c0, e1, e2, [&] { return normalized(cross(t.c2 - t.c0, t.c1 - t.c0)); }, centre,
        radius, t.surface);
}

void boxBox(krContactTable& table, krPhysObj* body, krPhysObj* other, const krVector3* bodyCorners,
            const krVector3* otherCorners) {
    auto relative = [&](const krVector3& point) {
        return bodyVelocity(body, point) - other->getVelocityAt(point - other->position);
    };
    for (int f = 0; f < 6 && !table.full(); ++f) {
        const Face otherFace = faceOf(otherCorners, f);
        const Face bodyFace = faceOf(bodyCorners, f);
        const krVector3 otherPlane = cross(otherFace.e1, otherFace.e2);
        const krVector3 bodyPlane = cross(bodyFace.e1, bodyFace.e2);
        for (int k = 0; k < 12; ++k) {
            const krVector3& a = bodyCorners[boxEdges[k][0]];
            const krVector3 dir = bodyCorners[boxEdges[k][1]] - a;
            if (reachesPlane(otherPlane, a - otherFace.c0, dir)) {
                const float t = rayParallelogram(otherFace.e1, otherFace.e2, a - otherFace.c0, dir);
                if (onEdge(t)) {
                    const krVector3 point = a + dir * t;
                    const krVector3 n = normalized(cross(otherFace.e2, otherFace.e1));
                    table.add(dot(n, relative(point)) + keyBoxEdgeInCandidateFace, point, n, body, nullptr, other,
                              nullptr);
                }
            }
            const krVector3& b = otherCorners[boxEdges[k][0]];
            const krVector3 dirB = otherCorners[boxEdges[k][1]] - b;
            if (reachesPlane(bodyPlane, b - bodyFace.c0, dirB)) {
                const float u = rayParallelogram(bodyFace.e1, bodyFace.e2, b - bodyFace.c0, dirB);
                if (onEdge(u)) {
                    const krVector3 point = b + dirB * u;
                    const krVector3 n = normalized(cross(bodyFace.e1, bodyFace.e2));
                    table.add(dot(n, relative(point)) + keyCandidateEdgeInBodyFace, point, n, body, nullptr, other,
                              nullptr);
                }
            }
        }
    }
}

// The three edges of a triangle as origins and directions: c0 to c1, c0 to c2, c1 to c2.
struct Edges {
    krVector3 origin[3], dir[3];
    explicit Edges(const Triangle& t) : origin{t.c0, t.c0, t.c1}, dir{t.c1 - t.c0, t.c2 - t.c0, t.c2 - t.c1} {}
};

// The six faces of a box with the cross products of their edges.
struct Faces {
    Face face[6];
    krVector3 plane[6];
    explicit Faces(const krVector3* corners) {
        for (int f = 0; f < 6; ++f) {
            face[f] = faceOf(corners, f);
            plane[f] = cross(face[f].e1, face[f].e2);
        }
    }
};

void boxTriangle(krContactTable& table, krPhysObj* body, krCollisionObject* other, const krVector3* corners,
                 const Triangle& t) {
    const krVector3 e1 = t.c1 - t.c0, e2 = t.c2 - t.c0;
    const krVector3 plane = cross(e1, e2);
    for (int k = 0; k < 12; ++k) {
        const krVector3& a = corners[boxEdges[k][0]];
        const krVector3 dir = corners[boxEdges[k][1]] - a;
        if (!reachesPlane(plane, a - t.c0, dir)) continue;
        const float s = rayTriangle(e1, e2, a - t.c0, dir);
        if (!onEdge(s)) continue;
        const krVector3 point = a + dir * s;
        const krVector3 n = normalized(cross(e1, e2));
        table.add(dot(n, bodyVelocity(body, point)) + keySurface, point, n, body, nullptr, other, t.surface);
    }
    const Edges edges(t);
    const Faces faces(corners);
    for (int i = 0; i < 3; ++i) {
        for (int f = 0; f < 6; ++f) {
            const Face& face = faces.face[f];
            if (!reachesPlane(faces.plane[f], edges.origin[i] - face.c0, edges.dir[i])) continue;
            const float s = rayParallelogram(face.e1, face.e2, edges.origin[i] - face.c0, edges.dir[i]);
            if (!onEdge(s)) continue;
            const krVector3 point = edges.origin[i] + edges.dir[i] * s;
            const krVector3 n = normalized(cross(face.e1, face.e2));
            table.add(dot(n, bodyVelocity(body, point)) + keyTriangleEdgeInFace, point, n, body, nullptr, other,
                      t.surface);
        }
    }
}

void triangleBox(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& u,
                 const krVector3* corners) {
    const krVector3 e1 = u.c1 - u.c0, e2 = u.c2 - u.c0;
    const krVector3 plane = cross(e1, e2);
    for (int k = 0; k < 12; ++k) {
        const krVector3& a = corners[boxEdges[k][0]];
        const krVector3 dir = corners[boxEdges[k][1]] - a;
        if (!reachesPlane(plane, a - u.c0, dir)) continue;
        const float s = rayTriangle(e1, e2, a - u.c0, dir);
        if (!onEdge(s)) continue;
        const krVector3 point = a + dir * s;
        const krVector3 n = normalized(cross(e2, e1));
        table.add(dot(n, bodyVelocity(body, point)) + keySurface, point, n, body, u.surface, other, nullptr);
    }
    const Edges edges(u);
    const Faces faces(corners);
    for (int i = 0; i < 3; ++i) {
        for (int f = 0; f < 6; ++f) {
            const Face& face = faces.face[f];
            if (!reachesPlane(faces.plane[f], edges.origin[i] - face.c0, edges.dir[i])) continue;
            const float s = rayParallelogram(face.e1, face.e2, edges.origin[i] - face.c0, edges.dir[i]);
            if (!onEdge(s)) continue;
            const krVector3 point = edges.origin[i] + edges.dir[i] * s;
            const krVector3 n = normalized(cross(face.e2, face.e1));
            table.add(dot(n, bodyVelocity(body, point)) + keyTriangleEdgeInFace, point, n, body, u.surface, other,
                      nullptr);
        }
    }
}

void triangleTriangle(krContactTable& table, krPhysObj* body, krCollisionObject* other, const Triangle& t,
                      const Triangle& u) {
    const krVector3 te1 = t.c1 - t.c0, te2 = t.c2 - t.c0;
    const krVector3 ue1 = u.c1 - u.c0, ue2 = u.c2 - u.c0;
    const krVector3 tPlane = cross(te1, te2), uPlane = cross(ue1, ue2);
    const Edges tEdges(t), uEdges(u);
    for (int i = 0; i < 3; ++i) {
        if (reachesPlane(uPlane, tEdges.origin[i] - u.c0, tEdges.dir[i])) {
            const float s = rayTriangle(ue1, ue2, tEdges.origin[i] - u.c0, tEdges.dir[i]);
            if (onEdge(s)) {
                const krVector3 point = tEdges.origin[i] + tEdges.dir[i] * s;
                const krVector3 n = normalized(cross(ue2, ue1));
                table.add(dot(n, bodyVelocity(body, point)), point, n, body, u.surface, other, t.surface);
            }
        }
        if (reachesPlane(tPlane, uEdges.origin[i] - t.c0, uEdges.dir[i])) {
            const float r = rayTriangle(te1, te2, uEdges.origin[i] - t.c0, uEdges.dir[i]);
            if (onEdge(r)) {
                const krVector3 point = uEdges.origin[i] + uEdges.dir[i] * r;
                const krVector3 n = normalized(cross(te1, te2));
                table.add(dot(n, bodyVelocity(body, point)) + keyBodyEdgeInTriangle, point, n, body, u.surface,
                          other, t.surface);
            }
        }
    }
}

}  // namespace krNarrow
