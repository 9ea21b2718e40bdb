// Rays and triggers: the nearest hit of each ray once per substep, one-sided rays, hits at the
// very end of a segment, zero-length segments, rays that skip their own object, and the order of
// a trigger's enter and exit events.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "physics/krPhysRay.h"
#include "physics/krTrigger.h"
#include "physics_testing.h"
#include "script/krVObject.h"

namespace {

// A body that owns rays and keeps what they report.
class Caster : public krPhysObj, public krRayObject {
public:
    explicit Caster(krModule* owner) : krPhysObj(owner) {}
    krModule* rayModule() override { return this; }
};

class Probe : public krPhysRay {
public:
    Probe(krRayObject* owner, int32_t segments, bool oneSided) : krPhysRay(segments, oneSided, owner) {}
    void onHit(float t, float, const krRayHit& h) override {
        hits.push_back(t);
        hit = h;
    }
    std::vector<float> hits;
    krRayHit hit;
};

class Rays : public physicsTesting::Scene {
protected:
    // A caster at the origin of the world, its rays switched on.
    Caster* caster() {
        auto* c = make<Caster>(world);
        c->mass = 1;
        c->setPosition({0, 0, 0});
        c->update(0);
        c->activateRays();
        return c;
    }
};

TEST_F(Rays, EachRayReportsOnlyItsNearestHitOnceASubstep) {
    floor();
    sphere({0, 3, 0}, 0.5f)->update(0);
    Caster* c = caster();
    auto* down = new Probe(c, 1, false);
    down->setSegment(0, {0, 10, 0}, {0, -20, 0});
    auto* sideways = new Probe(c, 2, false);
    sideways->setSegment(0, {-5, 1, 5}, {10, 0, 0});
    sideways->setSegment(1, {-5, 5, 0}, {0, -10, 0});
    world->update(0.002f);
    ASSERT_EQ(down->hits.size(), 1u);
    // The sphere's top at 3.5 comes before the floor at 0: t = (10 - 3.5) / 20.
    EXPECT_NEAR(down->hits[0], 0.325f, 1e-5);
    EXPECT_NEAR(down->hit.normal.y, 1, 1e-5);
    // The second segment reaches the floor at t = 0.5; the first hits nothing.
    ASSERT_EQ(sideways->hits.size(), 1u);
    EXPECT_EQ(sideways->hit.segment, 1);
    EXPECT_NEAR(sideways->hits[0], 0.5f, 1e-5);
    EXPECT_EQ(sideways->hit.material, 0);
    world->update(0.002f);
    EXPECT_EQ(down->hits.size(), 2u);
}

TEST_F(Rays, OneSidedRaysPassThroughSurfacesFromBehindAndTheEndOfASegmentCounts) {
    floor();
    sphere({0, 0, 5}, 1)->update(0);
    Caster* c = caster();
    // From inside the sphere: the exit faces along the ray and the entry lies behind the start.
    auto* inside = new Probe(c, 1, true);
    inside->setSegment(0, {0, 0.5f, 5}, {0, 3, 0});
    auto* twoSided = new Probe(c, 1, false);
    twoSided->setSegment(0, {0, 0.5f, 5}, {0, 3, 0});
    // From under the floor upward: the floor's normal points along the ray.
    auto* under = new Probe(c, 1, true);
    under->setSegment(0, {3, -1, 3}, {0, 2, 0});
    // A segment that ends exactly on the floor.
    auto* touching = new Probe(c, 1, true);
    touching->setSegment(0, {3, 2, 3}, {0, -2, 0});
    auto* empty = new Probe(c, 1, false);
    empty->setSegment(0, {3, 0, 3}, {0, 0, 0});
    world->update(0.002f);
    EXPECT_TRUE(inside->hits.empty());
    ASSERT_EQ(twoSided->hits.size(), 1u);
    EXPECT_NEAR(twoSided->hits[0], 0.5f / 3, 1e-5);
    EXPECT_TRUE(under->hits.empty());
    ASSERT_EQ(touching->hits.size(), 1u);
    EXPECT_FLOAT_EQ(touching->hits[0], 1.0f);
    EXPECT_TRUE(empty->hits.empty());
}

TEST_F(Rays, ARayNeverHitsItsOwnBodyAndBoxesAnswerByTheirFaces) {
    Caster* c = caster();
    c->collStyle = krCollSphere;
    c->radius = 1;
    krPhysObj* crate = box({0, 0, -5}, {2, 2, 2});
    crate->update(0);
    auto* ahead = new Probe(c, 1, true);
    ahead->setSegment(0, {0, 0, 0}, {0, 0, -10});
    world->update(0.002f);
    ASSERT_EQ(ahead->hits.size(), 1u);
    EXPECT_EQ(ahead->hit.object, crate);
    EXPECT_NEAR(ahead->hits[0], 0.4f, 1e-5);
    EXPECT_NEAR(ahead->hit.normal.z, 1, 1e-5);
}

TEST_F(Rays, RaysCastOnlyWhileTheirOwnerIsOnTheList) {
    floor();
    Caster* c = caster();
    auto* down = new Probe(c, 1, false);
    down->setSegment(0, {0, 1, 0}, {0, -2, 0});
    c->deactivateRays();
    world->update(0.002f);
    EXPECT_TRUE(down->hits.empty());
    c->activateRays();
    c->activateRays();
    world->update(0.002f);
    EXPECT_EQ(down->hits.size(), 1u);
    // Deleting the owner deletes its rays and takes it off the list.
    c->dispose();
    world->update(0.002f);
}

// A trigger that writes its events in order, with the body's name.
class EventLog : public krTrigger {
public:
    using krTrigger::krTrigger;
    krVariant* fireEvent(const std::string& name, const krArgs& args) override {
        if (args.size() != 1) return nullptr;
        auto* body = dynamic_cast<krPhysObj*>(krScriptObject::fromHandle(args[0]->toInt()));
        log += name;
        log += ' ';
        log += body ? body->name : "?";
        log += ';';
        return nullptr;
    }
    std::string log;
};

TEST_F(Rays, TriggersReportExitBeforeEnterAndIgnoreTheirTrackedBody) {
    auto* trigger = new EventLog(world, krBox({-1, -1, -1}, {1, 1, 1}));
    trigger->attach();
    krPhysObj* a = sphere({0, 0, 0}, 0.2f);
    a->name.assign(1, 'a');
    krPhysObj* b = sphere({5, 0, 0}, 0.2f);
    b->name.assign(1, 'b');
    for (krPhysObj* p : {a, b}) {
        p->activate();
        p->predictMotion(0);
        p->update(0);
    }
    world->update(0.002f);
    EXPECT_EQ(trigger->log, "enter a;");
    // The two swap places: a leaves as b comes in, in one update.
    a->setPosition({5, 0, 0});
    b->setPosition({0, 0, 0});
    for (krPhysObj* p : {a, b}) {
        p->predictMotion(0);
        p->update(0);
    }
    trigger->log.clear();
    trigger->update(0.002f);
    EXPECT_EQ(trigger->log, "exit a;enter b;");
    // A tracked body stands in its own box and fires nothing.
    trigger->log.clear();
    krVariant* tracked = new krVObject(b);
    trigger->setMember("tracked", tracked);
    tracked->release();
    trigger->update(0.002f);
    EXPECT_EQ(trigger->log, "");
}

}  // namespace
