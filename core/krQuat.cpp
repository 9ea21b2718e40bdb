// Quaternion construction, products, interpolation and the 16-bit network form.
#include "core/krQuat.h"

#include <cmath>

#include "core/krMatrix.h"

// Below this length a quaternion has no usable direction and normalising it would only
// amplify rounding noise.
static constexpr float kMinQuatLength = 0.00001f;

// Below this trace term the w-first branch of fromMatrix divides by a small number; one of the
// diagonal branches is then the accurate one.
static constexpr float kMinTrace = 0.01f;

krQuat krQuat::fromAxisAngle(float angle, const krVector3& axis) {
    krVector3 n = normalized(axis) * std::sin(angle / 2);
    return {n.x, n.y, n.z, std::cos(angle / 2)};
}

krQuat krQuat::fromMatrix(const krMatrix& matrix) {
    const float* m = matrix.m;
    float t = 1 + m[0] + m[5] + m[10];
    if (t > kMinTrace) {
        float s = 2 * std::sqrt(t);
        return {(m[9] - m[6]) / s, (m[2] - m[8]) / s, (m[4] - m[1]) / s, s / 4};
    }
    if (m[0] > m[5] && m[0] > m[10]) {
        float s = 2 * std::sqrt(m[0] + 1 - m[5] - m[10]);
        return {s / 4, (m[4] + m[1]) / s, (m[2] + m[8]) / s, (m[9] - m[6]) / s};
    }
    if (m[5] > m[10]) {
        float s = 2 * std::sqrt(m[5] + 1 - m[0] - m[10]);
        return {(m[4] + m[1]) / s, s / 4, (m[9] + m[6]) / s, (m[2] - m[8]) / s};
    }
    float s = 2 * std::sqrt(1 + m[10] - m[0] - m[5]);
    return {(m[2] + m[8]) / s, (m[9] + m[6]) / s, s / 4, (m[4] - m[1]) / s};
}

krQuat multiply(const krQuat& a, const krQuat& b) {
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w,
            a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}

krQuat& krQuat::operator*=(const krQuat& q) {
    *this = multiply(*this, q);
    return *this;
}

krQuat difference(const krQuat& a, const krQuat& b) { return multiply(conjugate(b), a); }

krQuat normalized(const krQuat& q) {
    float len = std::sqrt(dot(q, q));
    if (len <= kMinQuatLength) return krQuat::identity;
    return {q.x / len, q.y / len, q.z / len, q.w / len};
}

krQuat slerp(const krQuat& a, const krQuat& b, float t) {
    float d = dot(a, b);
    float cosTheta = std::fabs(d);
    float wa = 1 - t, wb = t;
    // At |d| = 1 the two rotations coincide and sin(theta) is 0: the linear weights are exact.
    if (cosTheta < 1) {
        float theta = std::acos(cosTheta);
        float sinTheta = std::sin(theta);
        wa = std::sin((1 - t) * theta) / sinTheta;
        wb = std::sin(t * theta) / sinTheta;
    }
    // q and -q are the same rotation; flipping b's weight takes the shorter of the two arcs.
    if (d < 0) wb = -wb;
    return normalized(krQuat(wa * a.x + wb * b.x, wa * a.y + wb * b.y, wa * a.z + wb * b.z,
                             wa * a.w + wb * b.w));
}

krQuat scaleRotation(const krQuat& q, float t) {
    float x = q.x * t, y = q.y * t, z = q.z * t;
    float ww = 1 - x * x - y * y - z * z;
    float w = ww > 0 ? std::sqrt(ww) : 0;
    return {x, y, z, q.w < 0 ? -w : w};
}

krVector3 rotate(const krQuat& q, const krVector3& v) {
    krQuat r = multiply(multiply(conjugate(q), krQuat(v.x, v.y, v.z, 0)), q);
    return {r.x, r.y, r.z};
}

krQuat relativeTo(const krMatrix& matrix, const krQuat& q) {
    const float* m = matrix.m;
    float w = std::sqrt(std::fabs(m[0] + m[5] + m[10] + m[15])) / 2;
    float f = w != 0 ? 0.25f / w : 1;
    krQuat r((m[6] - m[9]) * f, (m[8] - m[2]) * f, (m[1] - m[4]) * f, w);
    return normalized(multiply(q, r));
}

krQuantQuat quantise(const krQuat& q) {
    return {quantiseComponent(q.x * krQuantScale), quantiseComponent(q.y * krQuantScale),
            quantiseComponent(q.z * krQuantScale), quantiseComponent(q.w * krQuantScale)};
}

krQuat dequantise(const krQuantQuat& q) {
    constexpr float unit = 1 / krQuantScale;
    return {q.x * unit, q.y * unit, q.z * unit, q.w * unit};
}
