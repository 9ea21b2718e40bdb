// Closest points and ray intersections for the collision and ray code.
#include "core/krGeometry.h"

#include <algorithm>
#include <cmath>

// Nearest point to the origin on the segment from a to a + d.
static krVector3 closestPointOnSegmentToOrigin(const krVector3& a, const krVector3& d) {
    float dd = dot(d, d);
    if (dd == 0) return a;
    return a + d * std::clamp(-dot(a, d) / dd, 0.0f, 1.0f);
}

krVector3 closestPointOnTriangleToOrigin(const krVector3& p, const krVector3& e1, const krVector3& e2, bool* outside) {
    float A = dot(e1, e1), B = dot(e2, e2), C = dot(e1, e2), D = dot(p, e1), E = dot(p, e2);
    // (s, t) are the coordinates along e1 and e2 of the origin's projection onto the plane.
    // A degenerate triangle has no plane; s = t = -1 sends it to the two edges from p, which
    // together cover a triangle flattened to a segment.
    float det = A * B - C * C;
    float s = -1, t = -1;
    if (det != 0) {
        s = (E * C - D * B) / det;
        t = -(C * s + E) / B;
    }
    if (s >= 0 && t >= 0 && s + t <= 1) {
        if (outside) *outside = false;
        return p + e1 * s + e2 * t;
    }
    if (outside) *outside = true;

    // Outside: only the edges facing the projection can hold the nearest point.
    krVector3 best = p;
    if (s >= 0 || t >= 0) best = closestPointOnSegmentToOrigin(p + e1, e2 - e1);
    if (s < 0) {
        krVector3 q = closestPointOnSegmentToOrigin(p, e2);
        if (lengthSquared(q) < lengthSquared(best)) best = q;
    }
    if (t < 0) {
        krVector3 q = closestPointOnSegmentToOrigin(p, e1);
        if (lengthSquared(q) < lengthSquared(best)) best = q;
    }
    return best;
}

// The ray meets the plane of corner + u e1 + v e2; Cramer's rule gives u, v and the ray
// parameter as ratios of triple products. A triangle keeps u + v <= 1, a parallelogram does not.
static float rayPlaneFace(const krVector3& e1, const krVector3& e2, const krVector3& offset, const krVector3& dir,
                          bool triangle) {
    constexpr float kMiss = -1;
    // Written as "not inside" so that a NaN from degenerate input counts as a miss.
    float det = tripleProduct(dir, e1, e2);
    if (det == 0) return kMiss;
    float u = tripleProduct(dir, offset, e2) / det;
    if (!(u >= 0 && u <= 1)) return kMiss;
    float v = tripleProduct(dir, e1, offset) / det;
    if (!(v >= 0 && v <= 1)) return kMiss;
    if (triangle && !(u + v <= 1)) return kMiss;
    return -tripleProduct(offset, e1, e2) / det;
}

float rayTriangle(const krVector3& e1, const krVector3& e2, const krVector3& offset, const krVector3& dir) {
    return rayPlaneFace(e1, e2, offset, dir, true);
}

float rayParallelogram(const krVector3& e1, const krVector3& e2, const krVector3& offset, const krVector3& dir) {
    return rayPlaneFace(e1, e2, offset, dir, false);
}

bool raySphere(const krVector3& toCentre, const krVector3& dir, float radius, float& t1, float& t2) {
    float a = dot(dir, dir);
    float b = 2 * dot(dir, toCentre);
    float c = dot(toCentre, toCentre) - radius * radius;
    float disc = b * b - 4 * a * c;
    if (a == 0 || disc < 0) return false;
    float root = std::sqrt(disc);
    t1 = (b + root) / (2 * a);
    t2 = (b - root) / (2 * a);
    return true;
}
