// Small geometric routines on vectors for the collision and ray code: closest points and ray
// intersections with triangles, parallelograms and spheres. Shapes are given relative to a
// point of interest (the origin or the ray start) so that callers can move them cheaply.
#pragma once

#include "core/krVector3.h"

// a . (b x c): the signed volume of the parallelepiped on a, b, c.
inline float tripleProduct(const krVector3& a, const krVector3& b, const krVector3& c) { return dot(a, cross(b, c)); }

// The point of the triangle (p, p + e1, p + e2) nearest to the origin. outside, if given, tells
// whether that point lies on the border because the origin's projection falls outside the
// triangle. A degenerate triangle, with collinear or coincident corners, counts as outside.
krVector3 closestPointOnTriangleToOrigin(const krVector3& p, const krVector3& e1, const krVector3& e2,
                                         bool* outside = nullptr);

// Ray parameter t at which start + t dir meets the triangle (corner, corner + e1, corner + e2),
// where offset is start - corner; -1 for a miss or a ray parallel to the triangle. t is not
// limited to positive values: the caller decides which part of the line is the ray.
float rayTriangle(const krVector3& e1, const krVector3& e2, const krVector3& offset, const krVector3& dir);
// The same for the parallelogram spanned by e1 and e2 from the corner.
float rayParallelogram(const krVector3& e1, const krVector3& e2, const krVector3& offset, const krVector3& dir);

// Where start + t dir crosses the sphere of radius around start + toCentre. False for a zero
// dir or a line that misses; else t1 >= t2 are the two crossings.
bool raySphere(const krVector3& toCentre, const krVector3& dir, float radius, float& t1, float& t2);
