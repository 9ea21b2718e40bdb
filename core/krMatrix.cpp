// Building, multiplying, inverting and applying 4x4 transforms.
#include "core/krMatrix.h"

#include <cmath>

// A homogeneous w this close to zero would blow the divided point up to infinity.
static constexpr float kMinHomogeneousW = 0.00001f;

krMatrix krMatrix::fromQuat(const krQuat& q) {
    krMatrix r(false);
    float* m = r.m;
    m[0] = 1 - 2 * (q.y * q.y + q.z * q.z);
    m[1] = 2 * (q.x * q.y - q.w * q.z);
    m[2] = 2 * (q.x * q.z + q.w * q.y);
    m[4] = 2 * (q.x * q.y + q.w * q.z);
    m[5] = 1 - 2 * (q.x * q.x + q.z * q.z);
    m[6] = 2 * (q.y * q.z - q.w * q.x);
    m[8] = 2 * (q.x * q.z - q.w * q.y);
    m[9] = 2 * (q.y * q.z + q.w * q.x);
    m[10] = 1 - 2 * (q.x * q.x + q.y * q.y);
    m[15] = 1;
    return r;
}

krMatrix krMatrix::fromQuatTranslation(const krQuat& q, const krVector3& t) {
    krMatrix r = fromQuat(q);
    translation(r) = t;
    return r;
}

krMatrix krMatrix::fromTranslation(const krVector3& t) {
    krMatrix r(true);
    translation(r) = t;
    return r;
}

krMatrix krMatrix::fromTranslationScale(const krVector3& t, const krVector3& s) {
    krMatrix r(true);
    r.m[0] = s.x;
    r.m[5] = s.y;
    r.m[10] = s.z;
    translation(r) = t;
    return r;
}

krMatrix krMatrix::fromScale(float s) {
    krMatrix r(true);
    r.m[0] = r.m[5] = r.m[10] = s;
    return r;
}

krMatrix krMatrix::fromAxisAngle(float angle, const krVector3& axis) {
    krVector3 n = normalized(axis);
    float c = std::cos(angle), s = std::sin(angle), k = 1 - c;
    krMatrix r(false);
    float* m = r.m;
    m[0] = n.x * n.x * k + c;
    m[1] = n.x * n.y * k - s * n.z;
    m[2] = n.x * n.z * k + s * n.y;
    m[4] = n.x * n.y * k + s * n.z;
    m[5] = n.y * n.y * k + c;
    m[6] = n.y * n.z * k - s * n.x;
    m[8] = n.x * n.z * k - s * n.y;
    m[9] = n.y * n.z * k + s * n.x;
    m[10] = n.z * n.z * k + c;
    m[15] = 1;
    return r;
}

krMatrix multiply(const krMatrix& a, const krMatrix& b) {
    krMatrix r(false);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            for (int k = 0; k < 4; ++k) r.m[4 * i + j] += a.m[4 * i + k] * b.m[4 * k + j];
    return r;
}

// Laplace expansion along row pairs: the 2x2 minors of rows 0-1 (s) and rows 2-3 (c) each
// appear in several cofactors, so they are formed once.
krMatrix inverse(const krMatrix& matrix) {
    auto a = [&](int row, int col) { return matrix.m[4 * row + col]; };

    float s0 = a(0, 0) * a(1, 1) - a(1, 0) * a(0, 1);
    float s1 = a(0, 0) * a(1, 2) - a(1, 0) * a(0, 2);
    float s2 = a(0, 0) * a(1, 3) - a(1, 0) * a(0, 3);
    float s3 = a(0, 1) * a(1, 2) - a(1, 1) * a(0, 2);
    float s4 = a(0, 1) * a(1, 3) - a(1, 1) * a(0, 3);
    float s5 = a(0, 2) * a(1, 3) - a(1, 2) * a(0, 3);

    float c0 = a(2, 0) * a(3, 1) - a(3, 0) * a(2, 1);
    float c1 = a(2, 0) * a(3, 2) - a(3, 0) * a(2, 2);
    float c2 = a(2, 0) * a(3, 3) - a(3, 0) * a(2, 3);
    float c3 = a(2, 1) * a(3, 2) - a(3, 1) * a(2, 2);
    float c4 = a(2, 1) * a(3, 3) - a(3, 1) * a(2, 3);
    float c5 = a(2, 2) * a(3, 3) - a(3, 2) * a(2, 3);

    float det = s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
    if (det == 0) return krMatrix(true);
    float k = 1 / det;

    krMatrix r(false);
    float* m = r.m;
    m[0] = (a(1, 1) * c5 - a(1, 2) * c4 + a(1, 3) * c3) * k;
    m[1] = (-a(0, 1) * c5 + a(0, 2) * c4 - a(0, 3) * c3) * k;
    m[2] = (a(3, 1) * s5 - a(3, 2) * s4 + a(3, 3) * s3) * k;
    m[3] = (-a(2, 1) * s5 + a(2, 2) * s4 - a(2, 3) * s3) * k;
    m[4] = (-a(1, 0) * c5 + a(1, 2) * c2 - a(1, 3) * c1) * k;
    m[5] = (a(0, 0) * c5 - a(0, 2) * c2 + a(0, 3) * c1) * k;
    m[6] = (-a(3, 0) * s5 + a(3, 2) * s2 - a(3, 3) * s1) * k;
    m[7] = (a(2, 0) * s5 - a(2, 2) * s2 + a(2, 3) * s1) * k;
    m[8] = (a(1, 0) * c4 - a(1, 1) * c2 + a(1, 3) * c0) * k;
    m[9] = (-a(0, 0) * c4 + a(0, 1) * c2 - a(0, 3) * c0) * k;
    m[10] = (a(3, 0) * s4 - a(3, 1) * s2 + a(3, 3) * s0) * k;
    m[11] = (-a(2, 0) * s4 + a(2, 1) * s2 - a(2, 3) * s0) * k;
    m[12] = (-a(1, 0) * c3 + a(1, 1) * c1 - a(1, 2) * c0) * k;
    m[13] = (a(0, 0) * c3 - a(0, 1) * c1 + a(0, 2) * c0) * k;
    m[14] = (-a(3, 0) * s3 + a(3, 1) * s1 - a(3, 2) * s0) * k;
    m[15] = (a(2, 0) * s3 - a(2, 1) * s1 + a(2, 2) * s0) * k;
    return r;
}

// krVector3 is three floats with nothing between them, so elements 12 to 14 have its layout.

krVector3& translation(krMatrix& m) { return *reinterpret_cast<krVector3*>(&m.m[12]); }

const krVector3& translation(const krMatrix& m) { return *reinterpret_cast<const krVector3*>(&m.m[12]); }

krVector3 transformPoint(const krMatrix& matrix, const krVector3& p) {
    const float* m = matrix.m;
    krVector3 r(p.x * m[0] + p.y * m[4] + p.z * m[8] + m[12],
                p.x * m[1] + p.y * m[5] + p.z * m[9] + m[13],
                p.x * m[2] + p.y * m[6] + p.z * m[10] + m[14]);
    float w = p.x * m[3] + p.y * m[7] + p.z * m[11] + m[15];
    if (std::fabs(w) <= kMinHomogeneousW) return r;
    return r * (1 / w);
}

krVector3 transformVector(const krMatrix& matrix, const krVector3& v) {
    const float* m = matrix.m;
    return {v.x * m[0] + v.y * m[4] + v.z * m[8],
            v.x * m[1] + v.y * m[5] + v.z * m[9],
            v.x * m[2] + v.y * m[6] + v.z * m[10]};
}
