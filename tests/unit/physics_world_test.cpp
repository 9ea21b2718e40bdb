// The world beyond single contacts: substeps of a frame, the box query against a walk over every
// object, the grid of triggers, state records, inertia and locks, handlers that delete bodies
// in the middle of a substep, and crowds that must not make a substep unbounded.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "engine_testing.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "script/krFunction.h"

namespace {

// Counts the substeps of its world and the time they were given.
class StepCounter : public krModule {
public:
    explicit StepCounter(krModule* owner) : krModule(owner) {}
    bool update(float dt) override {
        ++steps;
        last = dt;
        return true;
    }
    int steps = 0;
    float last = 0;
};

class World : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        world = make<krPhysics>();
    }
    krPhysObj* body(const krVector3& at, int32_t style, float size = 1) {
        auto* b = make<krPhysObj>(world);
        if (style == krCollBox) b->genMeshBox({size, size, size});
        b->collStyle = style;
        b->radius = size / 2;
        b->mass = 1;
        b->setPosition(at);
        return b;
    }
    krPhysics* world = nullptr;
};

TEST_F(World, AFrameOfAFiftiethIs25SubstepsAndTwiceAsFast50) {
    auto* counter = make<StepCounter>(world);
    world->update(0.05f);
    EXPECT_EQ(counter->steps, 25);
    EXPECT_FLOAT_EQ(counter->last, 0.002f);
    counter->steps = 0;
    world->timeSpeed = 2;
    world->update(0.05f);
    EXPECT_EQ(counter->steps, 50);
    EXPECT_FLOAT_EQ(counter->last, 0.002f);
    counter->steps = 0;
    world->timeSpeed = 1000;
    world->update(0.05f);
    EXPECT_EQ(counter->steps, krPhysics::maxSubsteps) << "beyond the limit substeps grow instead";
    EXPECT_FLOAT_EQ(counter->last, 0.05f);
}

TEST_F(World, TheQueryFindsWhatAWalkOverEveryObjectFinds) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> at(-30, 30), size(0.1f, 12);
    auto* level = make<krStaticObj>(world);
    level->genMeshBox({50, 1, 50});
    for (int i = 0; i < 400; ++i) {
        krPhysObj* b = body({at(random), at(random), at(random)}, i % 3 == 0 ? krCollBox : krCollSphere, size(random));
        b->predictMotion(0);
    }
    std::vector<krCollisionObject*> all;
    world->getCollisionObjects(all);
    for (int q = 0; q < 300; ++q) {
        const krVector3 c{at(random), at(random), at(random)};
        const float h = q % 50 == 0 ? 5000.0f : size(random);
        const krBox query(c - krVector3(h, h, h), c + krVector3(h, h, h));
        krCollectResult fast, walk;
        world->collectObjects(fast, query);
        for (krCollisionObject* o : all) o->collectObjects(walk, query);
        ASSERT_EQ(fast.count, walk.count);
        for (int32_t i = 0; i < fast.count; ++i) ASSERT_EQ(fast.objects[i], walk.objects[i]);
    }
}

TEST_F(World, TheGridFindsBodiesFromTheirFirstMoveOn) {
    krPhysObj* a = body({40, 40, 40}, krCollSphere);
    krPhysObj* far = body({1e9f, 0, 0}, krCollSphere, 1e8f);
    std::vector<krPhysObj*> found;
    world->queryGrid(krBox({0, 0, 0}, {100, 100, 100}), found);
    EXPECT_TRUE(found.empty()) << "nobody has moved yet";
    a->activate();
    far->activate();
    world->update(0.001f);
    world->queryGrid(krBox({0, 0, 0}, {100, 100, 100}), found);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0], a);
    world->queryGrid(krBox({0.9e9f, -1, -1}, {1.1e9f, 1, 1}), found);
    ASSERT_EQ(found.size(), 1u) << "a body over too many cells is still found";
    EXPECT_EQ(found[0], far);
    world->queryGrid(krBox({-1e12f, -1e12f, -1e12f}, {1e12f, 1e12f, 1e12f}), found);
    EXPECT_EQ(found.size(), 2u);
    far->dispose();
    world->queryGrid(krBox({-1e12f, -1e12f, -1e12f}, {1e12f, 1e12f, 1e12f}), found);
    EXPECT_EQ(found.size(), 1u);
}

TEST_F(World, StateRecordsRoundTrip) {
    krPhysObj* server = body({130, -70, 5}, krCollSphere);
    server->setOrientation(krQuat::fromAxisAngle(1, {0, 1, 0}));
    uint8_t buffer[krNetRecordCapacity];
    int32_t size = 0;
    server->writeState(buffer, size, 0);
    ASSERT_EQ(size, 21);
    EXPECT_EQ(buffer[0], 2);
    EXPECT_EQ(server->netBase, krVector3(128, -128, 0));
    EXPECT_EQ(server->netWrites, 1);

    krPhysObj* client = body({0, 0, 0}, krCollSphere);
    client->readState(buffer, 14, 0.1f);
    EXPECT_EQ(client->netTrack, nullptr) << "a record of 14 bytes changes nothing";
    client->readState(buffer, size, 0.1f);
    ASSERT_NE(client->netTrack, nullptr);
    EXPECT_EQ(client->netTrack->toPosition, krVector3(130, -70, 5));
    EXPECT_FLOAT_EQ(client->velocity.x, 1300);
    EXPECT_NEAR(client->netTrack->toOrientation.y, std::sin(0.5f), 1e-4);
    // Half way after 0.05 seconds, and on past the target up to three intervals.
    client->update(0.05f);
    EXPECT_NEAR(client->position.x, 65, 1e-3);
    for (int i = 0; i < 20; ++i) client->update(0.05f);
    EXPECT_NEAR(client->position.x, 390, 1e-2);

    // A short absolute record restarts the segment and leaves the target.
    client->readState(buffer, 18, 0.2f);
    EXPECT_EQ(client->netTrack->toPosition, krVector3(130, -70, 5));
    EXPECT_FLOAT_EQ(client->netTrack->rate, 5);
    EXPECT_FLOAT_EQ(client->netTrack->t, 0);

    // A relative record: 16-bit fractions of 128 m from the base, which follows the target.
    client->readState(buffer, size, 0.1f);
    uint8_t relative[15];
    std::memcpy(relative, buffer, 9);
    relative[0] = 0;
    const int16_t offsets[3] = {static_cast<int16_t>(10.0f / 128 * 32760), static_cast<int16_t>(-10.0f / 128 * 32760), 0};
    std::memcpy(relative + 9, offsets, sizeof offsets);
    client->readState(relative, 15, 0.1f);
    EXPECT_NEAR(client->netTrack->toPosition.x, 138, 0.01);
    // -138 would lie more than 64 m below the last target: the base moves up a cell.
    EXPECT_NEAR(client->netTrack->toPosition.y, -10, 0.01);

    // Setting the pose from outside moves both ends of the track.
    client->setPosition({1, 2, 3});
    client->update(0.01f);
    EXPECT_NEAR(client->position.z, 3, 1e-5);

    float bad[3] = {std::numeric_limits<float>::infinity(), 0, 0};
    std::memcpy(buffer + 9, bad, sizeof bad);
    client->readState(buffer, size, 0.1f);
    EXPECT_EQ(client->netTrack->toPosition, krVector3(1, 2, 3));
}

TEST_F(World, InertiaOfTheBoundsAndLockedAxes) {
    krPhysObj* b = body({0, 10, 0}, krCollBox, 1);
    b->genMeshBox({1, 2, 3});
    b->setMass(12);
    EXPECT_FLOAT_EQ(b->inertia.x, (4 + 9) * 12 * 0.083333336f);
    EXPECT_FLOAT_EQ(b->inertia.y, (1 + 9) * 12 * 0.083333336f);
    EXPECT_FLOAT_EQ(b->inertia.z, (1 + 4) * 12 * 0.083333336f);
    b->rotationLock = 7;
    b->translationLock = 2;
    b->recomputeInertia();
    EXPECT_EQ(b->inertia, krVector3(krLockedMass, krLockedMass, krLockedMass));
    EXPECT_EQ(b->linearMass, krVector3(12, krLockedMass, 12));
    b->activate();
    // An off-centre pull: a locked body neither falls nor turns.
    b->weightpoint = {0.5f, 0, 0.5f};
    for (int i = 0; i < 100; ++i) world->update(0.002f);
    EXPECT_FLOAT_EQ(b->position.y, 10);
    EXPECT_NEAR(b->rotation.w, 1, 1e-7);
    EXPECT_NEAR(b->rotation.x, 0, 1e-7);
    b->rotationLock = 0;
    b->recomputeInertia();
    for (int i = 0; i < 100; ++i) world->update(0.002f);
    EXPECT_NE(b->rotation, krQuat::identity);

    // A shapeless body takes its radius; a body without any size gets no spin from torque.
    krPhysObj* point = body({5, 0, 0}, krCollSphere, 0);
    point->activate();
    point->addForceAt({0, 1, 0}, {1, 0, 0});
    point->integrateForces(0.002f);
    EXPECT_TRUE(isFinite(point->angularVelocity));
    EXPECT_EQ(point->angularVelocity, krVector3());
}

TEST_F(World, HandlersMayDeleteBodiesInTheMiddleOfASubstep) {
    auto* level = make<krStaticObj>(world);
    level->genMeshBox({40, 1, 40});
    level->setPosition({0, -0.5f, 0});
    for (int i = 0; i < 8; ++i) {
        krPhysObj* a = body({static_cast<float>(i), 0.6f, 0}, krCollSphere);
        a->velocity = {0, -6, 0};
        a->activate();
    }
    // Every other body deletes itself when it touches the level; the others delete the level
    // itself when they take damage from it.
    run("foreach (MAIN.children) { if ($_.class == \"krPhysics\") $w = $_; }"
        "$n = 0;"
        "foreach ($w.children) { if ($_.class == \"krPhysObj\") { $n += 1;"
        "  if ($n % 2) { event $_: contact() { delete $_; } }"
        "  else { event $_: damage($c, $k, $s, $a) { delete $w.child(0); } } } }");
    for (int i = 0; i < 200; ++i) ASSERT_TRUE(world->update(0.002f));
    EXPECT_LE(world->getActiveBodies().size(), 8u);
}

TEST_F(World, AThousandBodiesInOnePlaceStayBounded) {
    for (int i = 0; i < 1000; ++i) {
        krPhysObj* b = body({0, 0, 0}, i % 2 ? krCollSphere : krCollBox);
        b->activate();
    }
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(world->update(0.002f));
    for (krPhysObj* b : world->getActiveBodies()) ASSERT_TRUE(isFinite(b->position));
}

}  // namespace
