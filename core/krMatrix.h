// The 4x4 transform. Points are row vectors transformed as p' = p x M, so in A x B the transform A
// acts first. The 16 floats are stored row after row with the translation in elements 12 to 14;
// this is the memory order the OpenGL matrix calls take, so a matrix goes to them as it is.
#pragma once

#include "core/krQuat.h"
#include "core/krVector3.h"

struct krMatrix {
    float m[16];

    // true gives the identity, false the all-zero matrix.
    constexpr explicit krMatrix(bool identity) : m{} {
        if (identity) m[0] = m[5] = m[10] = m[15] = 1;
    }

    static krMatrix fromQuat(const krQuat& q);
    static krMatrix fromQuatTranslation(const krQuat& q, const krVector3& t);
    static krMatrix fromTranslation(const krVector3& t);
    // Scale along each axis, then move by t.
    static krMatrix fromTranslationScale(const krVector3& t, const krVector3& s);
    static krMatrix fromScale(float s);
    // Rotation by angle radians about axis, which need not be of unit length; the same rotation
    // as the matrix of krQuat::fromAxisAngle.
    static krMatrix fromAxisAngle(float angle, const krVector3& axis);
};

// Full 4x4 product: a's transform first, then b's.
krMatrix multiply(const krMatrix& a, const krMatrix& b);
// Inverse by cofactors. A singular matrix has none; callers get the identity rather than
// infinities, so a degenerate transform leaves things where they were.
krMatrix inverse(const krMatrix& m);

// Elements 12 to 14 seen as a vector, to read or move a transform in place.
krVector3& translation(krMatrix& m);
const krVector3& translation(const krMatrix& m);

// p x m with the homogeneous divide. When w is within 0.00001 of zero the point lies on the
// projection's eye plane and has no image; the divide is skipped there, which keeps the result
// finite and equal to the affine result for the w = 1 matrices the engine uses.
krVector3 transformPoint(const krMatrix& m, const krVector3& p);
// v x the upper 3x3 part: directions and offsets, no translation, no divide.
krVector3 transformVector(const krMatrix& m, const krVector3& v);
