// Rotation quaternions, stored x, y, z, w. A quaternion q turns a vector v into conj(q) v q, which
// is the rotation of the matrix made from q under the engine's row-vector rule; so in a product
// q1 x q2 the rotation q1 acts first, the same reading order as matrix products.
#pragma once

#include <cmath>

#include "core/krVector3.h"

struct krMatrix;

struct krQuat {
    float x, y, z, w;

    // true gives the identity rotation, false the all-zero quaternion used as an accumulator.
    constexpr explicit krQuat(bool unit) : x(0), y(0), z(0), w(unit ? 1.0f : 0.0f) {}
    constexpr krQuat(float x_, float y_, float z_, float w_) : x(x_), y(y_), z(z_), w(w_) {}

    static const krQuat identity;

    // Rotation by angle radians about axis, which need not be of unit length.
    static krQuat fromAxisAngle(float angle, const krVector3& axis);
    // Rotation part of a matrix without scale; picks the largest diagonal term to stay accurate.
    static krQuat fromMatrix(const krMatrix& m);

    // In-place Hamilton product: *this becomes *this x q.
    krQuat& operator*=(const krQuat& q);
    bool operator==(const krQuat&) const = default;
};

inline constexpr krQuat krQuat::identity{true};

// Hamilton product a x b: a's rotation first, then b's.
krQuat multiply(const krQuat& a, const krQuat& b);
// The rotation that takes b to a: conj(b) x a.
krQuat difference(const krQuat& a, const krQuat& b);
inline krQuat conjugate(const krQuat& q) { return {-q.x, -q.y, -q.z, q.w}; }
inline bool isFinite(const krQuat& q) {
    return std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
}
inline float dot(const krQuat& a, const krQuat& b) { return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w; }
// Unit quaternion along q; one too short to have a direction becomes the identity.
krQuat normalized(const krQuat& q);
// Spherical interpolation from a (t = 0) to b (t = 1) along the shorter arc.
krQuat slerp(const krQuat& a, const krQuat& b, float t);
// Scales the rotation's axis part by t and rebuilds w to keep unit length; this is how a partial
// additive animation layer is weighted.
krQuat scaleRotation(const krQuat& q, float t);
// v turned by q: the vector part of conj(q) x (v, 0) x q.
krVector3 rotate(const krQuat& q, const krVector3& v);
// q x the rotation read from m, normalised. Unlike fromMatrix it has no branches and reads m as
// its transpose, the inverse rotation, which is what re-expressing an orientation under a new
// owner needs.
krQuat relativeTo(const krMatrix& m, const krQuat& q);

// Network form: each component x 32760 truncated toward zero into 16 bits, decoded as
// value x (1 / 32760), so that the identity decodes to w = 1 exactly.
struct krQuantQuat {
    int16_t x = 0, y = 0, z = 0, w = 0;
};

krQuantQuat quantise(const krQuat& q);
krQuat dequantise(const krQuantQuat& q);
