// Objects in the tree: pose and matrix, changing owners, bounds of children, box queries and
// name searches, culling against the view, and the script members.
#include <cmath>

#include "core/krMatrix.h"
#include "render/krSplit.h"
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

class SceneObject : public Scene {};

void expectNear(const krVector3& a, const krVector3& b) {
    EXPECT_NEAR(a.x, b.x, 1e-4);
    EXPECT_NEAR(a.y, b.y, 1e-4);
    EXPECT_NEAR(a.z, b.z, 1e-4);
}

krVector3 worldOf(const krModule* m) { return translation(m->getMatrix()); }

}  // namespace

TEST_F(SceneObject, MatricesFollowPosesAndOwners) {
    krObject* parent = newObject();
    krObject* child = newObject(parent);
    parent->setOrientation(krQuat::fromAxisAngle(krPi / 2, krVector3::axisY));
    parent->setPosition({10, 0, 0});
    child->position = {1, 0, 0};
    // The child's matrix follows only when the tree updates.
    EXPECT_EQ(worldOf(child), krVector3(0, 0, 0));
    ASSERT_TRUE(root->update(0.01f));
    const krVector3 turned = rotate(parent->rotation, krVector3(1, 0, 0));
    expectNear(worldOf(child), krVector3(10, 0, 0) + turned);

    // A new owner keeps the child where it is in the world.
    krObject* other = newObject();
    other->setPosition({0, 5, 0});
    const krVector3 before = worldOf(child);
    child->setOwner(other);
    EXPECT_EQ(child->getOwner(), other);
    expectNear(worldOf(child), before);
    ASSERT_TRUE(root->update(0.01f));
    expectNear(worldOf(child), before);
    expectNear(child->position, before - krVector3(0, 5, 0));

    // Moving below itself is refused and changes nothing.
    const krVector3 kept = other->position;
    other->setOwner(child);
    EXPECT_EQ(other->getOwner(), root);
    EXPECT_EQ(other->position, kept);

    // A bone-driven object keeps the matrix its skeleton gives it.
    child->boneDriven = true;
    child->setMatrix(krMatrix::fromTranslation({7, 7, 7}));
    ASSERT_TRUE(root->update(0.01f));
    EXPECT_EQ(worldOf(child), krVector3(7, 7, 7));
}

TEST_F(SceneObject, PivotAndRestore) {
    write("door.mesh", objectFile("door", {cube(1)}, {}));
    krObject* door = newObject();
    door->setPosition({3, 0, 0});
    door->loadFromFile("door.mesh", 0);
    // A quarter turn about a hinge one metre along x: the hinge itself stays put.
    const krQuat q = krQuat::fromAxisAngle(krPi / 2, krVector3::axisY);
    const krVector3 hinge{1, 0, 0};
    door->rotateAboutPivot(q, hinge);
    expectNear(door->position + rotate(q, hinge), door->initialPosition + hinge);
    door->restoreTransform();
    EXPECT_EQ(door->position, krVector3(3, 0, 0));
    EXPECT_EQ(door->rotation, krQuat::identity);
    EXPECT_EQ(worldOf(door), krVector3(3, 0, 0));
}

TEST_F(SceneObject, ContainObjectGrowsTheBounds) {
    krObject* a = newObject();
    a->genMeshBox({2, 2, 2});
    krObject* b = newObject(a);
    b->setPosition({0, 10, 0});
    b->genMeshBox({2, 2, 2});
    a->containObject(*b);
    EXPECT_EQ(a->localBox.max, krVector3(1, 11, 1));
    EXPECT_EQ(a->box.max, krVector3(1, 11, 1));
    EXPECT_FLOAT_EQ(a->radius, 10 + std::sqrt(3.0f));
}

TEST_F(SceneObject, CollectAndFindWalkContainersOnly) {
    krObject* level = newObject();
    level->box = krBox({-100, -100, -100}, {100, 100, 100});
    auto* split = new krSplit(level);
    split->attach();
    split->box = krBox({0, 0, 0}, {50, 50, 50});
    krObject* near = newObject(split);
    near->name = "near";
    near->box = krBox({1, 1, 1}, {2, 2, 2});
    krObject* far = newObject(split);
    far->name = "far";
    far->box = krBox({40, 40, 40}, {45, 45, 45});
    krObject* between = newObject(level);
    between->box = krBox({-90, -90, -90}, {-80, -80, -80});
    krObject* deep = newObject(between);
    deep->name = "deep";
    deep->box = between->box;
    // A plain module between containers hides what is below it.
    auto* plain = new krModule(level);
    plain->attach();
    newObject(plain)->name = "hidden";

    krCollectResult result;
    EXPECT_TRUE(level->collectObjects(result, krBox({0, 0, 0}, {3, 3, 3})));
    ASSERT_EQ(result.count, 2);
    EXPECT_EQ(result.objects[0], near);
    EXPECT_EQ(result.objects[1], level);
    // A split that overlaps without any child that does is no hit.
    result.count = 0;
    EXPECT_FALSE(split->collectObjects(result, krBox({20, 20, 20}, {21, 21, 21})));
    EXPECT_EQ(result.count, 0);

    // The record never takes more than its capacity.
    for (int i = 0; i < 300; ++i) newObject(split)->box = krBox({1, 1, 1}, {2, 2, 2});
    result.count = 0;
    split->collectObjects(result, krBox({0, 0, 0}, {3, 3, 3}));
    EXPECT_EQ(result.count, krCollectResult::capacity);

    EXPECT_EQ(level->findObject("far"), far);
    EXPECT_EQ(level->findObject("deep")->name, "deep");
    EXPECT_EQ(level->findObject("hidden"), nullptr);
    EXPECT_EQ(level->findObject("nobody"), nullptr);
}

TEST_F(SceneObject, CullingByDistanceAndView) {
    krObject* o = newObject();
    o->genMeshBox({2, 2, 2});
    o->maxDrawDistance = 200;
    o->setPosition({0, 0, -100});
    video->setView({0, 0, 0}, {0, 0, -1000}, 1);
    EXPECT_TRUE(o->isInView());
    // Beyond the draw distance, or nearer than the least.
    o->setPosition({0, 0, -201});
    EXPECT_FALSE(o->isInView());
    o->maxDrawDistance = 1000;
    EXPECT_TRUE(o->isInView());
    o->minDrawDistance = 250;
    EXPECT_FALSE(o->isInView());
    o->minDrawDistance = 0;
    // Behind the eye, beyond the far end, or off to the side of the cone.
    o->setPosition({0, 0, 10});
    EXPECT_FALSE(o->isInView());
    o->setPosition({0, 0, -1003});
    o->maxDrawDistance = 5000;
    EXPECT_FALSE(o->isInView());
    o->setPosition({200, 0, -100});
    EXPECT_FALSE(o->isInView());
    o->setPosition({90, 0, -100});
    EXPECT_TRUE(o->isInView());
    // The eye inside the sphere sees it whichever way it looks.
    o->setPosition({0, 0, 1});
    EXPECT_TRUE(o->isInView());
    // Bone-driven objects are always drawn; their skeleton knows where they are.
    o->setPosition({0, 0, 500});
    o->boneDriven = true;
    EXPECT_TRUE(o->isInView());

    // A split answers from its own sphere, in world space, without draw distances.
    auto* split = new krSplit(root);
    split->attach();
    split->position = {0, 0, -900};
    split->radius = 5;
    EXPECT_TRUE(split->isInView());
    split->position = {0, 0, 900};
    EXPECT_FALSE(split->isInView());
    split->radius = 1000;
    EXPECT_TRUE(split->isInView());
}

TEST_F(SceneObject, ScriptMembers) {
    krScript* s = run(R"(
        $o = new_object();
        $o.name = "crate";
        $x = $o.x;
        $o.setPosition(1, 2, 3);
        $live = $x;
        $x += 1;
        $moved = $o.x;
        $c = new_object($o);
        $c.genMeshBox(1, 1, 1);
        new_module($o);
        $count = $o.objects.count;
        $found = $o.getObject("Box 1x1x1") == $c;
        $o.radius = 7;
        $radius = $o.radius;
        $o.maxDrawDistance = 50;
        $max = $o.maxDrawDistance;
        $class = $o.class;
        $noScript = $o.script;
        $o.sortAlpha = true;
        $sort = $o.sortAlpha;
        $o.setOrientation(1, 0, 0, 0);
        $fellThrough = 0;
        event $o: setPosition($a) { $fellThrough = $a; }
        $o.setPosition(9);
    )");
    EXPECT_EQ(field(s, "live"), "1.00");
    EXPECT_EQ(field(s, "moved"), "2.00");
    EXPECT_EQ(field(s, "count"), "1");
    EXPECT_EQ(field(s, "found"), "true");
    EXPECT_EQ(field(s, "radius"), "7.00");
    EXPECT_EQ(field(s, "max"), "50.0");
    EXPECT_EQ(field(s, "class"), "krObject");
    EXPECT_EQ(field(s, "noScript"), "");
    EXPECT_EQ(field(s, "sort"), "true");
    EXPECT_EQ(field(s, "fellThrough"), "9");
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_NE(reports()[0].find("setOrientation needs an axis that is not zero"), std::string::npos);
}
