// The 3-vector operations that need a square root or a branch, the angle helpers, and the
// integer and 16-bit conversions.
#include "core/krVector3.h"

#include <cmath>

float angleOf(float x, float y) {
    float len = std::sqrt(x * x + y * y);
    if (len == 0) return 0;
    float nx = x / len;
    // Rounding can leave nx a hair outside [-1, 1], where acos has no value.
    if (nx >= 1) return 0;
    if (nx <= -1) return krPi;
    float a = std::acos(nx);
    return y >= 0 ? a : krTwoPi - a;
}

float wrapAngle(float a) {
    if (a <= -krPi) return a + krTwoPi;
    if (a > krPi) return a - krTwoPi;
    return a;
}

float length(const krVector3& v) { return std::sqrt(lengthSquared(v)); }

float distance(const krVector3& a, const krVector3& b) { return length(a - b); }

krVector3 normalized(const krVector3& v) { return withLength(v, 1); }

krVector3 withLength(const krVector3& v, float l) {
    float len = length(v);
    if (len == 0) return krVector3::zero;
    return v * (l / len);
}

krVector3 clampLength(const krVector3& v, float l) {
    float len = length(v);
    if (len <= l) return v;
    return v * (l / len);
}

krVector3 project(const krVector3& a, const krVector3& b) {
    float bb = dot(b, b);
    if (bb == 0) return krVector3::zero;
    return b * (dot(a, b) / bb);
}

float lineDistanceSquared(const krVector3& a, const krVector3& b) {
    float aa = dot(a, a);
    if (aa == 0) return dot(b, b);
    return lengthSquared(cross(a, b)) / aa;
}

int32_t truncateSaturating(float v, int32_t lo, int32_t hi) {
    if (std::isnan(v)) return 0;
    if (double(v) >= double(hi)) return hi;
    if (double(v) <= double(lo)) return lo;
    return static_cast<int32_t>(v);
}

krIntVector3::krIntVector3(const krVector3& v) {
    constexpr int32_t lo = std::numeric_limits<int32_t>::min();
    constexpr int32_t hi = std::numeric_limits<int32_t>::max();
    x = truncateSaturating(v.x, lo, hi);
    y = truncateSaturating(v.y, lo, hi);
    z = truncateSaturating(v.z, lo, hi);
}

int16_t quantiseComponent(float scaled) {
    return static_cast<int16_t>(truncateSaturating(scaled, std::numeric_limits<int16_t>::min(),
                                                   std::numeric_limits<int16_t>::max()));
}

krQuantVector3 quantise(const krVector3& v, float range) {
    return {quantiseComponent(v.x * krQuantScale / range), quantiseComponent(v.y * krQuantScale / range),
            quantiseComponent(v.z * krQuantScale / range)};
}

krVector3 dequantise(const krQuantVector3& q, float range) {
    constexpr float unit = 1 / krQuantScale;
    return {q.x * unit * range, q.y * unit * range, q.z * unit * range};
}
