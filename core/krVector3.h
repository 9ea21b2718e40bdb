// The 3-vector of the whole engine, its integer twin for grid keys, the 16-bit network form,
// and the scalar angle helpers that the vector code and its callers share.
#pragma once

#include <bit>
#include <cmath>
#include <compare>
#include <cstdint>
#include <limits>

// Angles are radians everywhere below the script boundary. These are the float values the
// engine has always used; they are written out so that every caller rounds the same way.
inline constexpr float krPi = 3.1415927f;
inline constexpr float krTwoPi = 6.2831855f;
// Script properties that speak in degrees convert with this factor at their own boundary.
inline constexpr float krDegToRad = 0.017453292f;

// Angle of the direction (x, y) in [0, 2 pi), measured from +x towards +y; a zero pair gives 0.
float angleOf(float x, float y);
// One step of wrapping into (-pi, pi]: callers only ever pass angles a single turn away.
float wrapAngle(float a);
inline float lerp(float a, float b, float t) { return t * b + (1 - t) * a; }

struct krVector3 {
    float x = 0, y = 0, z = 0;

    constexpr krVector3() = default;
    constexpr krVector3(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

    static const krVector3 zero, one;
    // Smallest normal and largest finite float on every axis: seeds for running minima and maxima.
    static const krVector3 minValue, maxValue;
    static const krVector3 axisX, axisY, axisZ;
    static const krVector3 negAxisX, negAxisY, negAxisZ;

    krVector3& operator+=(const krVector3& v) { x += v.x; y += v.y; z += v.z; return *this; }
    krVector3& operator-=(const krVector3& v) { x -= v.x; y -= v.y; z -= v.z; return *this; }
    krVector3& operator*=(float s) { x *= s; y *= s; z *= s; return *this; }
    bool operator==(const krVector3&) const = default;
};

// Files and network records store the vector as three packed floats.
static_assert(sizeof(krVector3) == 12);

inline constexpr krVector3 krVector3::zero{0, 0, 0};
inline constexpr krVector3 krVector3::one{1, 1, 1};
inline constexpr krVector3 krVector3::minValue{std::numeric_limits<float>::min(),
                                               std::numeric_limits<float>::min(),
                                               std::numeric_limits<float>::min()};
inline constexpr krVector3 krVector3::maxValue{std::numeric_limits<float>::max(),
                                               std::numeric_limits<float>::max(),
                                               std::numeric_limits<float>::max()};
static_assert(std::bit_cast<uint32_t>(krVector3::minValue.x) == 0x00800000);
static_assert(std::bit_cast<uint32_t>(krVector3::maxValue.x) == 0x7F7FFFFF);
inline constexpr krVector3 krVector3::axisX{1, 0, 0};
inline constexpr krVector3 krVector3::axisY{0, 1, 0};
inline constexpr krVector3 krVector3::axisZ{0, 0, 1};
inline constexpr krVector3 krVector3::negAxisX{-1, 0, 0};
inline constexpr krVector3 krVector3::negAxisY{0, -1, 0};
inline constexpr krVector3 krVector3::negAxisZ{0, 0, -1};

// The named forms are what the engine code reads; the operators are shorthand for the same.
inline krVector3 add(const krVector3& a, const krVector3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline krVector3 subtract(const krVector3& a, const krVector3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline krVector3 multiply(const krVector3& a, const krVector3& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline krVector3 divide(const krVector3& a, const krVector3& b) { return {a.x / b.x, a.y / b.y, a.z / b.z}; }
inline krVector3 scale(const krVector3& v, float s) { return {v.x * s, v.y * s, v.z * s}; }
inline krVector3 negated(const krVector3& v) { return {-v.x, -v.y, -v.z}; }

inline krVector3 operator+(const krVector3& a, const krVector3& b) { return add(a, b); }
inline krVector3 operator-(const krVector3& a, const krVector3& b) { return subtract(a, b); }
inline krVector3 operator-(const krVector3& v) { return negated(v); }
inline krVector3 operator*(const krVector3& v, float s) { return scale(v, s); }
inline krVector3 operator*(float s, const krVector3& v) { return scale(v, s); }

inline float dot(const krVector3& a, const krVector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline krVector3 cross(const krVector3& a, const krVector3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float lengthSquared(const krVector3& v) { return dot(v, v); }
float length(const krVector3& v);
inline float distanceSquared(const krVector3& a, const krVector3& b) { return lengthSquared(a - b); }
float distance(const krVector3& a, const krVector3& b);
inline bool isZero(const krVector3& v) { return v.x == 0 && v.y == 0 && v.z == 0; }
// No component is infinite or not a number.
inline bool isFinite(const krVector3& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }
inline krVector3 lerp(const krVector3& a, const krVector3& b, float t) { return t * b + (1 - t) * a; }

// Unit vector along v; the zero vector stays zero instead of turning into NaNs.
krVector3 normalized(const krVector3& v);
// v rescaled to length l; zero stays zero.
krVector3 withLength(const krVector3& v, float l);
// v shortened to length l if it is longer; never lengthened.
krVector3 clampLength(const krVector3& v, float l);
// The part of a along b. Projecting on the zero vector gives zero.
krVector3 project(const krVector3& a, const krVector3& b);
// Squared distance of point b from the line through the origin along a. A zero a has no
// direction, so the line shrinks to the origin and the result is b's squared length.
float lineDistanceSquared(const krVector3& a, const krVector3& b);

// Truncation toward zero into [lo, hi]. Out-of-range float-to-int conversion is undefined in
// C++, and script or network input can hold anything, so the ends saturate and NaN gives 0.
int32_t truncateSaturating(float v, int32_t lo, int32_t hi);

// Integer cell coordinates, for ordered maps keyed by position. Built by truncating toward zero;
// values beyond the int range saturate and NaN becomes 0, so that no float input is undefined.
struct krIntVector3 {
    int32_t x = 0, y = 0, z = 0;

    constexpr krIntVector3() = default;
    constexpr krIntVector3(int32_t x_, int32_t y_, int32_t z_) : x(x_), y(y_), z(z_) {}
    explicit krIntVector3(const krVector3& v);

    // Member order makes the defaulted comparison lexicographic: x, then y, then z.
    auto operator<=>(const krIntVector3&) const = default;
};

// Network records carry a vector as three signed 16-bit fractions of a range known to both sides.
// The scale is 32760 rather than 32767: the few counts of headroom keep components that rounding
// has pushed a hair past the range, as in a unit quaternion, from reaching the limit.
inline constexpr float krQuantScale = 32760.0f;

struct krQuantVector3 {
    int16_t x = 0, y = 0, z = 0;
};

// Each component x 32760 / range, truncated toward zero; values outside the range saturate at
// the 16-bit limits instead of wrapping to the opposite sign.
krQuantVector3 quantise(const krVector3& v, float range);
krVector3 dequantise(const krQuantVector3& q, float range);
// Shared by the quaternion form: truncate toward zero into 16 bits, saturating, NaN to 0.
int16_t quantiseComponent(float scaled);
