// Camera poses: the flying camera under keys and mouse, the floating camera's smoothing rate,
// the fixed camera's rigid tie, targets that go away, and the script members.
#include "engine_testing.h"

#include <cmath>

#include "interface/krCameraFlying.h"
#include "interface/krCameraFollow.h"
#include "render/krObject.h"
#include "script/krVObject.h"

namespace {
void expectNear(const krVector3& a, const krVector3& b, float tolerance = 1e-4f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

// The angle between two rotations.
float angleBetween(const krQuat& a, const krQuat& b) {
    return 2 * std::acos(std::min(1.0f, std::fabs(dot(a, b))));
}

void setFloat(krScriptObject* o, const char* name, float value) {
    krVariant* v = new krVFloat(value);
    o->setMember(name, v);
    v->release();
}

void setObject(krScriptObject* o, const char* name, krScriptObject* value) {
    krVariant* v = new krVObject(value);
    o->setMember(name, v);
    v->release();
}

bool getBool(krScriptObject* o, const char* name) {
    krVariant* v = o->getMember(name, nullptr, {});
    const bool b = v && v->toBool();
    if (v) v->release();
    return b;
}
}

using Cameras = engineTesting::Engine;

TEST_F(Cameras, FlyingCameraMovesAlongItsAxes) {
    auto* cam = make<krFlyingCamera>();
    const krQuat turn = krQuat::fromAxisAngle(krPi / 2, krVector3::axisY);
    const krVector3 forward = rotate(turn, krVector3::negAxisZ), right = rotate(turn, krVector3::axisX);
    cam->setOrientation(turn);
    cam->keyDown(krKeyUp);
    cam->update(0.5f);
    // Speed 10 for half a second along the camera's own -Z.
    expectNear(cam->getPosition(), forward * 5);
    expectNear(translation(cam->getMatrix()), forward * 5);
    // Shift is four times the speed, not three.
    cam->keyDown(krKeyShift);
    cam->update(0.5f);
    expectNear(cam->getPosition(), forward * 25);
    cam->keyUp(krKeyShift);
    cam->keyUp(krKeyUp);
    // Opposite keys cancel; the letters move as the arrows do.
    cam->keyDown(krKeyLeft);
    cam->keyDown(krLetterKey('D'));
    cam->update(1);
    expectNear(cam->getPosition(), forward * 25);
    cam->keyUp(krKeyLeft);
    cam->update(0.1f);
    expectNear(cam->getPosition(), forward * 25 + right);
    // Losing the input releases every key.
    cam->setActive(false);
    cam->update(1);
    expectNear(cam->getPosition(), forward * 25 + right);
    expectNear(cam->getTarget(), cam->getPosition() + forward);
    expectNear(cam->getUp(), {0, 1, 0});
}

TEST_F(Cameras, FlyingCameraTurnsWithTheMouse) {
    auto* cam = make<krFlyingCamera>();
    // Half a width to the side is a turn of one radian about +Y.
    cam->mouseMove(0.5f, 0);
    EXPECT_NEAR(angleBetween(cam->getOrientation(), krQuat::fromAxisAngle(1, krVector3::axisY)), 0, 1e-4f);
    auto* pitch = make<krFlyingCamera>();
    pitch->mouseMove(0, 0.25f);
    EXPECT_NEAR(angleBetween(pitch->getOrientation(), krQuat::fromAxisAngle(0.5f, krVector3::axisX)), 0, 1e-4f);
}

TEST_F(Cameras, FloatingCameraConvergesAtItsRate) {
    auto* cam = make<krFloatingCamera>();
    const krQuat wanted = krQuat::fromAxisAngle(1, krVector3::axisY);
    krArgs turn;
    for (float f : {1.0f, 0.0f, 1.0f, 0.0f}) turn.push_back(new krVFloat(f));
    if (krVariant* r = cam->getMember("setOrientation", nullptr, turn)) r->release();
    for (krVariant* v : turn) v->release();
    // The default smoothness leaves a tenth of the turn after one second, in any steps.
    for (int i = 0; i < 10; ++i) cam->update(0.1f);
    EXPECT_NEAR(angleBetween(cam->getView(), krQuat::identity), 0.9f, 2e-3f);
    EXPECT_NEAR(angleBetween(cam->getView(), wanted), 0.1f, 2e-3f);
    cam->update(1);
    EXPECT_NEAR(angleBetween(cam->getView(), wanted), 0.01f, 2e-3f);
    if (krVariant* r = cam->getMember("reset", nullptr, {})) r->release();
    EXPECT_NEAR(angleBetween(cam->getView(), wanted), 0, 1e-4f);
}

TEST_F(Cameras, FloatingCameraSmoothnessLimitsAndLocks) {
    auto* cam = make<krFloatingCamera>();
    auto* target = make<krObject>();
    target->setMatrix(krMatrix::fromQuatTranslation(krQuat::fromAxisAngle(0.6f, krVector3::axisY), {0, 0, 0}));
    setObject(cam, "target", target);
    setFloat(cam, "smoothness", 0);
    cam->update(0.001f);
    EXPECT_NEAR(angleBetween(cam->getView(), krQuat::fromAxisAngle(0.6f, krVector3::axisY)), 0, 1e-4f);
    setFloat(cam, "smoothness", 1);
    target->setMatrix(krMatrix(true));
    cam->update(5);
    EXPECT_NEAR(angleBetween(cam->getView(), krQuat::fromAxisAngle(0.6f, krVector3::axisY)), 0, 1e-4f);
    setFloat(cam, "smoothness", 0);
    krVariant* yes = new krVBool(true);
    cam->setMember("lockOrient", yes);
    cam->update(1);
    EXPECT_NEAR(angleBetween(cam->getView(), krQuat::fromAxisAngle(0.6f, krVector3::axisY)), 0, 1e-4f);
    yes->release();
}

TEST_F(Cameras, LockVerticalKeepsOnlyTheHeading) {
    auto* cam = make<krFloatingCamera>();
    auto* target = make<krObject>();
    // Heading a quarter turn left, then banked and pitched.
    const krQuat pose = multiply(multiply(krQuat::fromAxisAngle(0.4f, krVector3::axisZ),
                                          krQuat::fromAxisAngle(0.3f, krVector3::axisX)),
                                 krQuat::fromAxisAngle(krPi / 2, krVector3::axisY));
    target->setMatrix(krMatrix::fromQuat(pose));
    setObject(cam, "target", target);
    krVariant* yes = new krVBool(true);
    cam->setMember("lockVertical", yes);
    yes->release();
    if (krVariant* r = cam->getMember("reset", nullptr, {})) r->release();
    expectNear(cam->getUp(), {0, 1, 0});
    const krVector3 forward = rotate(pose, krVector3::negAxisZ);
    const krVector3 level = normalized(krVector3(forward.x, 0, forward.z));
    expectNear(cam->getTarget() - cam->getPosition(), level);
}

TEST_F(Cameras, LookbackTurnsHalfAndCutStays) {
    auto* cam = make<krFixedCamera>();
    EXPECT_FALSE(cam->isCut());
    krVariant* yes = new krVBool(true);
    krVariant* no = new krVBool(false);
    cam->setMember("lookback", yes);
    cam->update(0.01f);
    expectNear(cam->getTarget() - cam->getPosition(), {0, 0, 1});
    cam->setMember("lookback", no);
    cam->update(0.01f);
    expectNear(cam->getTarget() - cam->getPosition(), {0, 0, -1});
    EXPECT_TRUE(cam->isCut());
    EXPECT_FALSE(getBool(cam, "lookback"));
    yes->release();
    no->release();
}

TEST_F(Cameras, FixedCameraIsRigidlyTied) {
    auto* cam = make<krFixedCamera>();
    auto* target = make<krObject>();
    setObject(cam, "target", target);
    krArgs pivot{new krVFloat(0), new krVFloat(1), new krVFloat(0)};
    krArgs offset{new krVFloat(0), new krVFloat(0), new krVFloat(5)};
    if (krVariant* r = cam->getMember("setPivot", nullptr, pivot)) r->release();
    if (krVariant* r = cam->getMember("setPosition", nullptr, offset)) r->release();
    const krQuat turn = krQuat::fromAxisAngle(krPi / 2, krVector3::axisY);
    target->setMatrix(krMatrix::fromQuatTranslation(turn, {10, 0, 0}));
    cam->update(0.01f);
    // Behind the target's back, at its pivot: the offset turns with the target.
    expectNear(cam->getPosition(), krVector3(10, 1, 0) + rotate(turn, {0, 0, 5}));
    expectNear(cam->getTarget() - cam->getPosition(), rotate(turn, {0, 0, -1}));
    // Its matrix stands at the eye and looks the same way, for a listener that tracks it.
    expectNear(transformPoint(cam->getMatrix(), {}), cam->getPosition());
    expectNear(transformVector(cam->getMatrix(), krVector3::negAxisZ), rotate(turn, {0, 0, -1}));
    // The position follows the target at once, the view at the next update.
    target->setMatrix(krMatrix::fromQuatTranslation(turn, {20, 0, 0}));
    expectNear(cam->getPosition(), krVector3(20, 1, 0) + rotate(turn, {0, 0, 5}));
    for (krVariant* v : pivot) v->release();
    for (krVariant* v : offset) v->release();
}

TEST_F(Cameras, TargetsThatGoAwayOrAreNoSceneObjects) {
    auto* cam = make<krFloatingCamera>();
    auto* target = make<krObject>();
    target->setMatrix(krMatrix::fromTranslation({3, 0, 0}));
    setObject(cam, "target", target);
    krArgs pivot{new krVFloat(1), new krVFloat(2), new krVFloat(3)};
    krArgs offset{new krVFloat(0), new krVFloat(0), new krVFloat(4)};
    if (krVariant* r = cam->getMember("setPivot", nullptr, pivot)) r->release();
    if (krVariant* r = cam->getMember("setPosition", nullptr, offset)) r->release();
    expectNear(cam->getPosition(), {4, 2, 7});
    target->deinit();
    target->release();
    EXPECT_EQ(cam->getFollowed(), nullptr);
    cam->update(0.1f);
    // Without a target the pivot is a world point and the offset simply adds.
    expectNear(cam->getPosition(), {1, 2, 7});
    krVariant* number = new krVInt(12345);
    cam->setMember("target", number);
    number->release();
    EXPECT_EQ(cam->getFollowed(), nullptr);
    // Only scene objects are followed: any other module clears the target.
    auto* other = make<krObject>();
    setObject(cam, "target", other);
    EXPECT_EQ(cam->getFollowed(), other);
    setObject(cam, "target", make<krModule>());
    EXPECT_EQ(cam->getFollowed(), nullptr);
    // Methods with the wrong number of arguments do nothing.
    krArgs two{pivot[0], pivot[1]};
    if (krVariant* r = cam->getMember("setPivot", nullptr, two)) r->release();
    expectNear(cam->getPosition(), {1, 2, 7});
    for (krVariant* v : pivot) v->release();
    for (krVariant* v : offset) v->release();
}

TEST_F(Cameras, ScriptFactoriesAndProperties) {
    krScript* s = run("$f = new_flyingCamera(); $f.setPosition(1, 2, 3); $f.x += 1; $f.speed = 3; $f.fov = 45;\n"
                      "$a = \"\" + $f.x + \" \" + $f.y + \" \" + $f.speed + \" \" + $f.fov + \" \" + $f.distance;\n"
                      "$g = new_floatingCamera(0); $o = $g.owner; delete $g;\n"
                      "$c = $f.class + \" \" + new_fixedCamera().class;\n");
    EXPECT_EQ(field(s, "a"), "2.00 2.00 3.00 45.0 100");
    EXPECT_EQ(field(s, "o"), "");
    EXPECT_EQ(field(s, "c"), "krFlyingCamera krFixedCamera");
}
