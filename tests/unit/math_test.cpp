// Vectors, rotations, transforms, boxes and the collision geometry routines.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "core/krBox.h"
#include "core/krGeometry.h"
#include "core/krMatrix.h"
#include "core/krQuat.h"
#include "core/krVector3.h"

namespace {

constexpr float kTol = 1e-5f;

testing::AssertionResult vecNear(const char* ea, const char* eb, const krVector3& a, const krVector3& b) {
    if (distance(a, b) <= kTol) return testing::AssertionSuccess();
    return testing::AssertionFailure() << ea << " = (" << a.x << ", " << a.y << ", " << a.z << "), " << eb
                                       << " = (" << b.x << ", " << b.y << ", " << b.z << ")";
}

testing::AssertionResult quatNear(const char* ea, const char* eb, const krQuat& a, const krQuat& b) {
    krQuat d(a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w);
    if (std::sqrt(dot(d, d)) <= kTol) return testing::AssertionSuccess();
    return testing::AssertionFailure() << ea << " = (" << a.x << ", " << a.y << ", " << a.z << ", " << a.w
                                       << "), " << eb << " = (" << b.x << ", " << b.y << ", " << b.z << ", "
                                       << b.w << ")";
}

#define EXPECT_VEC(a, b) EXPECT_PRED_FORMAT2(vecNear, a, b)
#define EXPECT_QUAT(a, b) EXPECT_PRED_FORMAT2(quatNear, a, b)

void expectMatrixNear(const krMatrix& a, const krMatrix& b, float tol) {
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(a.m[i], b.m[i], tol) << "element " << i;
}

const krVector3 X = krVector3::axisX, Y = krVector3::axisY, Z = krVector3::axisZ;

}  // namespace

TEST(MathVector, ZeroLengthNormalisationsStayZero) {
    EXPECT_EQ(normalized(krVector3::zero), krVector3::zero);
    EXPECT_EQ(withLength(krVector3::zero, 5), krVector3::zero);
    EXPECT_EQ(project(X, krVector3::zero), krVector3::zero);
    EXPECT_FLOAT_EQ(lineDistanceSquared(krVector3::zero, {3, 4, 0}), 25);
}

TEST(MathVector, LengthsAndProjections) {
    krVector3 v(3, 0, 4);
    EXPECT_VEC(normalized(v), krVector3(0.6f, 0, 0.8f));
    EXPECT_VEC(withLength(v, 10), krVector3(6, 0, 8));
    EXPECT_EQ(clampLength(v, 6), v);
    EXPECT_VEC(clampLength(v, 2.5f), krVector3(1.5f, 0, 2));
    EXPECT_VEC(project({2, 7, -1}, {0, 3, 0}), krVector3(0, 7, 0));
    EXPECT_FLOAT_EQ(lineDistanceSquared({2, 0, 0}, {5, 3, 4}), 25);
    EXPECT_VEC(cross(X, Y), Z);
    EXPECT_VEC(lerp(krVector3(0, 0, 0), krVector3(2, 4, 6), 0.25f), krVector3(0.5f, 1, 1.5f));
}

TEST(MathVector, AngleHelpers) {
    EXPECT_FLOAT_EQ(angleOf(5, 0), 0);
    EXPECT_FLOAT_EQ(angleOf(0, 2), krPi / 2);
    EXPECT_FLOAT_EQ(angleOf(-3, 0), krPi);
    EXPECT_FLOAT_EQ(angleOf(0, -1), 3 * krPi / 2);
    EXPECT_FLOAT_EQ(angleOf(0, 0), 0);
    EXPECT_FLOAT_EQ(wrapAngle(4), 4 - krTwoPi);
    EXPECT_FLOAT_EQ(wrapAngle(-krPi), krPi);
    EXPECT_FLOAT_EQ(wrapAngle(krPi), krPi);
    EXPECT_FLOAT_EQ(wrapAngle(-1), -1);
}

TEST(MathVector, IntegerKeysTruncateAndOrderLexicographically) {
    krIntVector3 k(krVector3(-1.7f, 2.9f, 0.5f));
    EXPECT_EQ(k, krIntVector3(-1, 2, 0));
    std::map<krIntVector3, int> cells{{{1, 0, 0}, 3}, {{0, 9, 9}, 2}, {{0, 9, 1}, 1}};
    int order = 0;
    for (const auto& cell : cells) EXPECT_EQ(cell.second, ++order);
    // Inputs beyond the int range saturate instead of being undefined.
    EXPECT_EQ(krIntVector3(krVector3(1e20f, -1e20f, NAN)), krIntVector3(INT32_MAX, INT32_MIN, 0));
}

TEST(MathVector, QuantisedForms) {
    krQuat id = dequantise(quantise(krQuat::identity));
    EXPECT_EQ(id.w, 1.0f);
    EXPECT_EQ(quantise(krQuat(0.5f, -0.5f, 0, 0)).y, -16380);
    krQuantVector3 q = quantise(krVector3(64, -1, 200), 128);
    EXPECT_EQ(q.x, 16380);
    EXPECT_EQ(q.y, -255);  // -255.9 truncates toward zero
    EXPECT_EQ(q.z, INT16_MAX);
    EXPECT_NEAR(dequantise(q, 128).x, 64, 1e-4f);
}

TEST(MathBox, EmptyExtendAndTests) {
    krBox box;
    EXPECT_TRUE(box.isPoint());
    box.makeEmpty();
    EXPECT_EQ(box.min.x, 1e32f);
    EXPECT_EQ(box.max.z, -1e32f);
    box.extend(krVector3(1, 2, 3));
    EXPECT_TRUE(box.isPoint());
    box.extend(krVector3(-1, 4, 3));
    krBox empty;
    empty.makeEmpty();
    box.extend(empty);
    EXPECT_EQ(box.min, krVector3(-1, 2, 3));
    EXPECT_EQ(box.max, krVector3(1, 4, 3));
    EXPECT_EQ(box.centre(), krVector3(0, 3, 3));
    EXPECT_EQ(box.size(), krVector3(2, 2, 0));
    EXPECT_TRUE(box.contains({1, 4, 3}));
    EXPECT_FALSE(box.contains({1, 4.01f, 3}));

    krBox touching({1, 4, 3}, {5, 5, 5});
    EXPECT_TRUE(box.overlaps(touching));
    touching.offset({0.01f, 0, 0});
    EXPECT_FALSE(box.overlaps(touching));
    krBox tri = krBox::fromTriangle({0, 5, -1}, {2, -3, 0}, {1, 1, 4});
    EXPECT_EQ(tri.min, krVector3(0, -3, -1));
    EXPECT_EQ(tri.max, krVector3(2, 5, 4));
}

// A quarter turn about +Z by the engine's rule conj(q) v q takes +X to -Y; the matrix from the
// same quaternion must agree under p' = p x M, and so must the axis-angle matrix.
TEST(MathRotation, QuaternionAndMatrixAgree) {
    krQuat q = krQuat::fromAxisAngle(krPi / 2, {0, 0, 3});
    EXPECT_VEC(rotate(q, X), -Y);
    EXPECT_VEC(rotate(q, Y), X);
    krMatrix m = krMatrix::fromQuat(q);
    EXPECT_VEC(transformPoint(m, X), -Y);
    expectMatrixNear(krMatrix::fromAxisAngle(krPi / 2, Z), m, kTol);

    krQuat r = krQuat::fromAxisAngle(1.1f, {1, -2, 0.5f});
    krVector3 v(0.3f, -4, 2);
    EXPECT_VEC(transformPoint(krMatrix::fromQuat(r), v), rotate(r, v));
    EXPECT_VEC(transformPoint(krMatrix::fromAxisAngle(1.1f, {1, -2, 0.5f}), v), rotate(r, v));
}

// In q1 x q2 the first factor acts first: Z-quarter takes X to -Y, then the X-quarter takes -Y to +Z.
TEST(MathRotation, ProductsApplyLeftFactorFirst) {
    krQuat q1 = krQuat::fromAxisAngle(krPi / 2, Z);
    krQuat q2 = krQuat::fromAxisAngle(krPi / 2, X);
    EXPECT_VEC(rotate(multiply(q1, q2), X), Z);
    krMatrix m = multiply(krMatrix::fromQuat(q1), krMatrix::fromQuat(q2));
    EXPECT_VEC(transformPoint(m, X), Z);
    krQuat inPlace = q1;
    inPlace *= q2;
    EXPECT_EQ(inPlace, multiply(q1, q2));
    EXPECT_QUAT(multiply(q2, difference(q1, q2)), q1);
}

// Rotations of 178 degrees leave the trace term below 0.01, so each axis exercises one of the
// diagonal branches; a gentle rotation takes the w branch.
TEST(MathRotation, FromMatrixAllBranches) {
    const krVector3 axes[] = {{1, 2, 3}, {1, 0.3f, 0.2f}, {0.2f, 1, 0.3f}, {0.3f, 0.2f, 1}};
    const float angles[] = {1.0f, 178 * krDegToRad, 178 * krDegToRad, 178 * krDegToRad};
    for (int i = 0; i < 4; ++i) {
        krQuat q = krQuat::fromAxisAngle(angles[i], axes[i]);
        EXPECT_QUAT(krQuat::fromMatrix(krMatrix::fromQuat(q)), q) << "branch " << i;
    }
}

TEST(MathRotation, Slerp) {
    krQuat q = krQuat::fromAxisAngle(0.7f, {1, 1, 0});
    krQuat same = slerp(q, q, 0.3f);
    EXPECT_FALSE(std::isnan(same.w));
    EXPECT_QUAT(same, q);
    krQuat minusQ(-q.x, -q.y, -q.z, -q.w);
    EXPECT_QUAT(slerp(q, minusQ, 0.5f), q);

    krQuat quarter = krQuat::fromAxisAngle(krPi / 2, Y);
    krQuat eighth = krQuat::fromAxisAngle(krPi / 4, Y);
    EXPECT_QUAT(slerp(krQuat::identity, quarter, 0.5f), eighth);
    krQuat farSide(-quarter.x, -quarter.y, -quarter.z, -quarter.w);
    EXPECT_QUAT(slerp(krQuat::identity, farSide, 0.5f), eighth);
}

TEST(MathRotation, NormalisingAndScaling) {
    EXPECT_EQ(normalized(krQuat(0.00001f, 0, 0, 0)), krQuat::identity);
    EXPECT_EQ(normalized(krQuat(false)), krQuat::identity);
    EXPECT_QUAT(normalized(krQuat(0, 0, 0, -3)), krQuat(0, 0, 0, -1));

    krQuat q = krQuat::fromAxisAngle(2.0f, X);
    EXPECT_QUAT(scaleRotation(q, 1), q);
    EXPECT_QUAT(scaleRotation(q, 0), krQuat::identity);
    EXPECT_EQ(scaleRotation(krQuat(0, 0, 0, -1), 0.5f).w, -1);
    EXPECT_EQ(scaleRotation(krQuat(1, 0, 0, 0), 2).w, 0);
}

TEST(MathRotation, RelativeTo) {
    krQuat q = krQuat::fromAxisAngle(0.4f, {0, 1, 1});
    krQuat r = krQuat::fromAxisAngle(-1.2f, {1, 0, 2});
    EXPECT_QUAT(relativeTo(krMatrix(true), q), q);
    EXPECT_QUAT(relativeTo(krMatrix::fromQuat(r), q), multiply(q, conjugate(r)));
    // An all-zero matrix has w = 0: no division by it, and the zero product normalises to the identity.
    EXPECT_EQ(relativeTo(krMatrix(false), q), krQuat::identity);
}

TEST(MathMatrix, InverseUndoesTransform) {
    krMatrix m = multiply(krMatrix::fromQuatTranslation(krQuat::fromAxisAngle(0.9f, {1, 2, 0}), {4, -2, 7}),
                          krMatrix::fromTranslationScale({1, 1, 1}, {2, 3, 0.5f}));
    m.m[3] = 0.1f;  // a projective column too, so that every cofactor matters
    m.m[11] = -0.2f;
    expectMatrixNear(multiply(m, inverse(m)), krMatrix(true), 1e-5f);
    expectMatrixNear(multiply(inverse(m), m), krMatrix(true), 1e-5f);

    for (const krMatrix& singular : {krMatrix(false), krMatrix::fromScale(0), krMatrix::fromTranslationScale({}, {1, 0, 1})})
        expectMatrixNear(inverse(singular), krMatrix(true), 0);
}

TEST(MathMatrix, PointsVectorsAndTranslation) {
    krMatrix m = krMatrix::fromTranslationScale({10, 20, 30}, {2, 3, 4});
    EXPECT_VEC(transformPoint(m, {1, 1, 1}), krVector3(12, 23, 34));
    EXPECT_VEC(transformVector(m, {1, 1, 1}), krVector3(2, 3, 4));
    translation(m) = {0, 0, -1};
    EXPECT_EQ(m.m[14], -1);
    EXPECT_EQ(translation(krMatrix::fromTranslation({5, 6, 7})), krVector3(5, 6, 7));
    EXPECT_EQ(transformPoint(krMatrix::fromScale(2), {1, 2, 3}), krVector3(2, 4, 6));

    // A projection: w = -z, divided out; on the eye plane w = 0 and the result stays finite.
    krMatrix p(true);
    p.m[11] = -1;
    p.m[15] = 0;
    EXPECT_VEC(transformPoint(p, {4, 2, -2}), krVector3(2, 1, -1));
    krVector3 onEyePlane = transformPoint(p, {4, 2, 0});
    EXPECT_TRUE(std::isfinite(onEyePlane.x) && std::isfinite(onEyePlane.y) && std::isfinite(onEyePlane.z));
}

// Triangle in the plane z = 1 with legs of 2 along x and y; moving its corner p puts the origin's
// projection inside, beyond each edge, or off the corner.
TEST(MathGeometry, ClosestPointOnTriangle) {
    const krVector3 e1(2, 0, 0), e2(0, 2, 0);
    struct Case {
        krVector3 p, expected;
        bool outside;
    };
    const Case cases[] = {
        {{-1, -1, 1}, {0, 0, 1}, false},   // inside
        {{1, 1, 1}, {1, 1, 1}, true},      // off the corner p
        {{-2, -2, 1}, {-1, -1, 1}, true},  // beyond the hypotenuse
        {{1, -1, 1}, {1, 0, 1}, true},     // beyond the edge along e2
        {{-1, 1, 1}, {0, 1, 1}, true},     // beyond the edge along e1
    };
    for (const Case& c : cases) {
        bool outside = !c.outside;
        EXPECT_VEC(closestPointOnTriangleToOrigin(c.p, e1, e2, &outside), c.expected);
        EXPECT_EQ(outside, c.outside) << "corner " << c.p.x << ", " << c.p.y;
    }
    // At an obtuse corner both coordinates are negative, yet the nearest point lies inside an edge.
    EXPECT_VEC(closestPointOnTriangleToOrigin({-1, 2, 1}, {-2, 2, 0}, {2, 0, 0}), krVector3(0, 2, 1));
    // Collinear corners have no plane; the nearest point of the segment still comes back.
    bool outside = false;
    EXPECT_VEC(closestPointOnTriangleToOrigin({1, -1, 1}, {0, 1, 0}, {0, 2, 0}, &outside), krVector3(1, 0, 1));
    EXPECT_TRUE(outside);
    EXPECT_VEC(closestPointOnTriangleToOrigin({1, 1, 1}, {}, {}), krVector3(1, 1, 1));
}

// A ray from the origin down -Z against faces in the plane z = -5, spanned by 2 x 2 legs.
TEST(MathGeometry, RayAgainstTriangleAndParallelogram) {
    const krVector3 e1(2, 0, 0), e2(0, 2, 0), dir(0, 0, -1);
    auto offset = [](float cx, float cy) { return krVector3(0, 0, 0) - krVector3(cx, cy, -5); };
    EXPECT_FLOAT_EQ(rayTriangle(e1, e2, offset(-0.5f, -0.5f), dir), 5);
    EXPECT_FLOAT_EQ(rayTriangle(e1, e2, offset(-0.5f, -0.5f), dir * 2), 2.5f);
    EXPECT_FLOAT_EQ(rayTriangle(e1, e2, offset(-1.5f, -1.5f), dir), -1);
    EXPECT_FLOAT_EQ(rayParallelogram(e1, e2, offset(-1.5f, -1.5f), dir), 5);
    EXPECT_FLOAT_EQ(rayParallelogram(e1, e2, offset(-3, -0.5f), dir), -1);
    EXPECT_FLOAT_EQ(rayTriangle(e1, e2, offset(0.5f, -0.5f), dir), -1);
    EXPECT_FLOAT_EQ(rayTriangle(e1, e2, offset(-0.5f, -0.5f), X), -1);
    EXPECT_FLOAT_EQ(rayParallelogram(e1, e2, offset(-0.5f, -0.5f), X), -1);
}

TEST(MathGeometry, RaySphere) {
    float t1 = 0, t2 = 0;
    ASSERT_TRUE(raySphere({0, 0, -10}, {0, 0, -1}, 2, t1, t2));
    EXPECT_FLOAT_EQ(t1, 12);
    EXPECT_FLOAT_EQ(t2, 8);
    ASSERT_TRUE(raySphere({2, 0, -10}, {0, 0, -2}, 2, t1, t2));
    EXPECT_FLOAT_EQ(t1, 5);
    EXPECT_FLOAT_EQ(t2, 5);
    EXPECT_FALSE(raySphere({5, 0, -10}, {0, 0, -1}, 2, t1, t2));
    EXPECT_FALSE(raySphere({0, 0, -10}, {}, 2, t1, t2));
}
