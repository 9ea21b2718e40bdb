// The contact tests on hand-made geometry: spheres against spheres, box faces and triangles,
// box edges through faces and triangles, mesh edges through triangles; what yields no contact;
// the level tree and its limit of 256 triangles; the contact table's limit.
#include <gtest/gtest.h>

#include "physics_testing.h"
#include "physics/krContact.h"
#include "physics/krNarrowPhase.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "render/krMesh.h"

namespace {

class Collision : public physicsTesting::Scene {
protected:
    krContactTable contacts;
};

void expectNear(const krVector3& v, const krVector3& e) {
    EXPECT_NEAR(v.x, e.x, 1e-5);
    EXPECT_NEAR(v.y, e.y, 1e-5);
    EXPECT_NEAR(v.z, e.z, 1e-5);
}

TEST_F(Collision, SpheresTouchOnlyWhenCloserThanTheirRadii) {
    krPhysObj* a = sphere({0, 0, 0}, 1);
    krPhysObj* b = sphere({2, 0, 0}, 1);
    b->collideSphere(contacts, a);
    EXPECT_EQ(contacts.count, 0) << "exactly touching is no contact";
    a->velocity = {1, 0, 0};
    a->predictMotion(0.5f);
    b->collideSphere(contacts, a);
    ASSERT_EQ(contacts.count, 1);
    const krContact& c = contacts.entries[0];
    expectNear(c.normal, {-1, 0, 0});
    expectNear(c.point, {1, 0, 0});
    EXPECT_EQ(c.sortKey, 0) << "between bodies the key is 0";
    EXPECT_EQ(c.body, a);
    EXPECT_EQ(c.other, b);

    contacts.count = 0;
    b->nonstaticCollisions = false;
    b->collideSphere(contacts, a);
    EXPECT_EQ(contacts.count, 0);
}

TEST_F(Collision, SphereOnAFloorGetsTheUpwardNormalAndItsApproachInTheKey) {
    krStaticObj* f = floor();
    krPhysObj* s = sphere({1, 0.6f, 2}, 0.5f);
    s->velocity = {0, -100, 0};
    s->predictMotion(0.002f);
    f->collideSphere(contacts, s);
    ASSERT_EQ(contacts.count, 1);
    const krContact& c = contacts.entries[0];
    expectNear(c.normal, {0, 1, 0});
    expectNear(c.point, {1, 0.1f, 2});
    EXPECT_FLOAT_EQ(c.sortKey, -100 - 3000);
    ASSERT_NE(c.otherMaterial, nullptr);
    EXPECT_EQ(*c.otherMaterial, krPhysicDefault);
}

TEST_F(Collision, SphereBesideATriangleIsPushedAwayFromItsNearestPoint) {
    krStaticObj* t = level({{0, 0, 0}, {0, 0, 1}, {1, 0, 0}});
    krPhysObj* s = sphere({-0.3f, 0.4f, 0.5f}, 0.6f);
    t->collideSphere(contacts, s);
    ASSERT_EQ(contacts.count, 1);
    expectNear(contacts.entries[0].normal, normalized(krVector3(-0.3f, 0.4f, 0)));
}

TEST_F(Collision, SphereAgainstBoxFacesUsesTheFaceNormal) {
    krPhysObj* b = box({0, 0, 0}, {2, 2, 2});
    krPhysObj* s = sphere({0.2f, 1.3f, 0.1f}, 0.5f);
    b->collideSphere(contacts, s);
    // The top face's triangle under the sphere; its twin meets the sphere only by a border.
    ASSERT_GE(contacts.count, 1);
    expectNear(contacts.entries[0].normal, {0, 1, 0});
    expectNear(contacts.entries[0].point, {0.2f, 0.8f, 0.1f});
}

TEST_F(Collision, BoxFacesAgainstASphereCandidate) {
    krPhysObj* b = box({0, 0, 0}, {2, 2, 2});
    krPhysObj* s = sphere({1.3f, 0.2f, 0}, 0.5f);
    s->collideBox(contacts, b);
    ASSERT_GE(contacts.count, 1);
    // The normal points into the box, at the body; the point lies on the far side of the sphere.
    expectNear(contacts.entries[0].normal, {-1, 0, 0});
    expectNear(contacts.entries[0].point, {1.8f, 0.2f, 0});
}

TEST_F(Collision, BoxEdgesThroughAFloorAndItsNormal) {
    krStaticObj* f = floor();
    krPhysObj* b = box({3, 0.4f, 3}, {1, 1, 1});
    f->collideBox(contacts, b);
    // The four upright edges cross the floor.
    ASSERT_EQ(contacts.count, 4);
    for (int i = 0; i < contacts.count; ++i) {
        expectNear(contacts.entries[i].normal, {0, 1, 0});
        EXPECT_NEAR(contacts.entries[i].point.y, 0, 1e-6);
        EXPECT_FLOAT_EQ(contacts.entries[i].sortKey, -3000);
    }
}

TEST_F(Collision, TriangleEdgesThroughBoxFacesRankAfterBoxEdges) {
    // A small triangle standing up through the bottom face of the box: its edges cross faces.
    krStaticObj* t = level({{0, -1, 0}, {0.2f, 0.3f, 0}, {-0.2f, 0.3f, 0}});
    krPhysObj* b = box({0, 0.5f, 0}, {1, 1, 1});
    t->collideBox(contacts, b);
    ASSERT_GE(contacts.count, 1);
    for (int i = 0; i < contacts.count; ++i) {
        EXPECT_FLOAT_EQ(contacts.entries[i].sortKey, -2000);
        expectNear(contacts.entries[i].normal, {0, 1, 0});
    }
}

TEST_F(Collision, CrossingBoxesButNotNestedOnes) {
    krPhysObj* a = box({0, 0, 0}, {1, 1, 1});
    krPhysObj* b = box({0.8f, 0, 0}, {1, 1, 1});
    b->collideBox(contacts, a);
    ASSERT_GT(contacts.count, 0);
    bool bodyEdge = false, otherEdge = false;
    for (int i = 0; i < contacts.count; ++i) {
        bodyEdge |= contacts.entries[i].sortKey == -5000;
        otherEdge |= contacts.entries[i].sortKey == -4000;
    }
    EXPECT_TRUE(bodyEdge && otherEdge);

    contacts.count = 0;
    krPhysObj* inner = box({5, 0, 0}, {0.5f, 0.5f, 0.5f});
    krPhysObj* outer = box({5, 0, 0}, {2, 2, 2});
    outer->collideBox(contacts, inner);
    EXPECT_EQ(contacts.count, 0) << "only crossing edges count";
}

TEST_F(Collision, TheContactTableStopsAtItsEnd) {
    krPhysObj* a = box({0, 0, 0}, {1, 1, 1});
    krPhysObj* b = box({0, 0, 0}, {1, 1, 1});
    contacts.count = krContactTable::capacity - 3;
    b->collideBox(contacts, a);
    EXPECT_EQ(contacts.count, krContactTable::capacity);
}

TEST_F(Collision, MeshBodyAgainstAFloor) {
    krStaticObj* f = floor();
    auto* m = make<krPhysObj>(world);
    krMesh mesh;
    std::vector<krVertex> v = {{{-1, -0.5f, -1}, {}, krColor(), 0, 0},
                               {{1, -0.5f, -1}, {}, krColor(), 0, 0},
                               {{0, 1, 1}, {}, krColor(), 0, 0}};
    mesh.ownVertices(v);
    mesh.ownIndices({0, 1, 2});
    mesh.kind = krMeshFile::kindHull;
    m->addMesh(mesh);
    ASSERT_EQ(m->collStyle, krCollMesh);
    m->mass = 1;
    m->setPosition({0, 0.2f, 0});
    m->predictMotion(0);
    f->collideMesh(contacts, m);
    ASSERT_GT(contacts.count, 0);
    bool meshEdge = false;
    for (int i = 0; i < contacts.count; ++i) {
        const krContact& c = contacts.entries[i];
        if (c.sortKey == 0 || c.sortKey == -1000) meshEdge = true;
        EXPECT_NEAR(c.point.y, 0, 1e-6);
    }
    EXPECT_TRUE(meshEdge);
}

TEST_F(Collision, WhatYieldsNoContact) {
    // Too few indices: the style is set, the shape is missing.
    auto* s = make<krStaticObj>(world);
    krMesh two;
    two.ownVertices({{{0, 0, 0}, {}, krColor(), 0, 0}, {{1, 0, 0}, {}, krColor(), 0, 0}});
    two.ownIndices({0, 1});
    s->addMesh(two);
    EXPECT_EQ(s->collStyle, krCollMesh);
    EXPECT_EQ(s->collisionGeometry, nullptr);
    krPhysObj* ball = sphere({0, 0, 0}, 5);
    s->collideSphere(contacts, ball);
    EXPECT_EQ(contacts.count, 0);

    // A box body that never proposed has no corners.
    auto* b = make<krPhysObj>(world);
    b->collStyle = krCollBox;
    floor()->collideBox(contacts, b);
    EXPECT_EQ(contacts.count, 0);

    // A degenerate triangle is crossed by nothing; its edges still cross faces.
    krStaticObj* flat = level({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    flat->collideBox(contacts, box({0.5f, 0, 0}, {1, 1, 1}));
    for (int i = 0; i < contacts.count; ++i) {
        EXPECT_FLOAT_EQ(contacts.entries[i].sortKey, -2000);
        EXPECT_TRUE(isFinite(contacts.entries[i].normal));
    }
}

TEST_F(Collision, CornersThatAreNotNumbersKeepTheMeshOut) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    krStaticObj* s = level({{0, 0, 0}, {nan, 0, 1}, {1, 0, 0}});
    EXPECT_EQ(s->collisionGeometry, nullptr);
    ASSERT_FALSE(engineTesting::reports().empty());
    EXPECT_NE(engineTesting::reports().back().find("not a finite number"), std::string::npos);
}

TEST_F(Collision, TheTreeYieldsAtMost256TrianglesItemAFirst) {
    std::vector<krVector3> corners;
    for (int i = 0; i < 300; ++i) {
        const float x = static_cast<float>(i);
        corners.insert(corners.end(), {{x, 0, 0}, {x, 0, 1}, {x + 1, 0, 0}});
    }
    krStaticObj* s = level(corners);
    ASSERT_NE(s->tree, nullptr);
    EXPECT_FLOAT_EQ(s->box.min.x, 0);
    EXPECT_FLOAT_EQ(s->box.max.x, 300);
    krTriangleList list;
    s->tree->collect(list, krBox({-1, -1, -1}, {400, 1, 2}));
    ASSERT_EQ(list.count, krTriangleList::capacity);
    // Sorted along x and walked itemA first: the first triangles met are the leftmost.
    EXPECT_FLOAT_EQ(list.triangles[0]->corner0->x, 0);
    EXPECT_FLOAT_EQ(list.triangles[255]->corner0->x, 255);
    list.count = 0;
    s->tree->collect(list, krBox({10.5f, -1, -1}, {11.5f, 1, 2}));
    EXPECT_EQ(list.count, 2);
}

TEST_F(Collision, SurfacesOtherThanDefaultAreFoundButNotAnswered) {
    krStaticObj* water = level({{-10, 0, -10}, {-10, 0, 10}, {10, 0, -10}}, krPhysicWater);
    krPhysObj* s = sphere({-5, 0.3f, -5}, 0.5f);
    water->collideSphere(contacts, s);
    ASSERT_EQ(contacts.count, 1);
    EXPECT_EQ(*contacts.entries[0].otherMaterial, krPhysicWater);
    // In the world the body falls through.
    s->activate();
    world->timeSpeed = 2;
    for (int i = 0; i < 400; ++i) world->update(0.001f);
    EXPECT_LT(s->position.y, -0.5f);
}

}  // namespace
