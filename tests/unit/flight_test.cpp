// The flight model's numbers: a wing's lift at its peak angle, in its plane and past its stall;
// an engine's idle speed, its stall floor and its fuel; a propeller's pull and the load it puts
// on its engine; a rocket's arm; an airplane's hinge authority and its steering.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "physics_testing.h"
#include "script/krVArray.h"
#include "script/krVObject.h"
#include "vehicles/krAirplane.h"
#include "vehicles/krAutoPilot.h"
#include "vehicles/krEngine.h"
#include "vehicles/krPropeller.h"
#include "vehicles/krTyre.h"
#include "vehicles/krWing.h"

namespace {

class Flight : public physicsTesting::Scene {
protected:
    // A body of a tonne at the origin, level, moving at v.
    krPhysObj* body(const krVector3& v) {
        auto* b = make<krPhysObj>(world);
        b->mass = 1000;
        b->setPosition({0, 0, 0});
        b->velocity = v;
        return b;
    }
    // The force one update of the wing leaves on its body.
    krVector3 forceOf(krWing* wing) {
        auto* b = dynamic_cast<krPhysObj*>(wing->getOwner());
        b->force = krVector3();
        wing->update(0.002f);
        return b->force;
    }
};

void expectNear(const krVector3& v, const krVector3& e, float tolerance) {
    EXPECT_NEAR(v.x, e.x, tolerance);
    EXPECT_NEAR(v.y, e.y, tolerance);
    EXPECT_NEAR(v.z, e.z, tolerance);
}

TEST_F(Flight, AWingOfTenSquareMetresAtItsPeakAngleInFiftyMetresASecondLifts12500) {
    // Flow along -z, the normal 1.33 rad from it: the lift coefficient is 1.
    const float incidence = 1.33f;
    auto* wing = make<krWing>(body({0, 0, -50}));
    wing->area = 10;
    wing->setDirectionVector({0, std::sin(incidence), -std::cos(incidence)});
    const krVector3 flow{0, 0, -1};
    const krVector3 normal = wing->direction;
    const float lift = 12500;
    const float vn = dot(krVector3(0, 0, -50), normal);
    const krVector3 expected = cross(flow, cross(flow, normal)) * lift + flow * (lift * -0.0225f) +
                               normal * (10 * vn * std::fabs(vn) * -0.5f);
    expectNear(forceOf(wing), expected, 2.0f);
}

TEST_F(Flight, NoAirNoForceAndFlowInThePlaneOnlyDrags) {
    auto* still = make<krWing>(body({0, 0, 0}));
    expectNear(forceOf(still), {}, 0);
    // In the plane: incidence a right angle, c = 0.0368, but vn = 0 gives the lift no sign.
    auto* edge = make<krWing>(body({0, 0, -20}));
    const float l = 400 * 1.0f * 0.5f * 0.0368f;
    expectNear(forceOf(edge), krVector3(0, 0, -1) * (l * -0.0225f), 1e-3f);
    // Flow square to the wing: no lift at all, only the flat plate.
    auto* flat = make<krWing>(body({0, -10, 0}));
    expectNear(forceOf(flat), krVector3(0, 50, 0), 1e-3f);
}

TEST_F(Flight, LiftFallsPastThePeakAndChangesSignWithTheSideTheFlowComesFrom) {
    auto liftAt = [&](float offPlane) {
        auto* wing = make<krWing>(body({0, 0, -40}));
        wing->setDirectionVector({0, std::cos(offPlane), std::sin(offPlane)});
        return forceOf(wing).y;
    };
    const float peak = liftAt(0.2408f);
    EXPECT_GT(peak, liftAt(0.1f));
    EXPECT_GT(peak, liftAt(0.4f));
    // Stalled: a quarter radian past the peak the coefficient is 0 and only the plate pushes.
    EXPECT_LT(std::fabs(liftAt(0.5f)), peak / 2);
    EXPECT_LT(liftAt(-0.2408f), 0);
}

TEST_F(Flight, AnEngineIdlesNear48RadiansASecondAndNeverTurnsSlowerThan30) {
    auto* engine = make<krEngine>(body({}));
    engine->update(0.002f);
    EXPECT_FLOAT_EQ(engine->rotationSpeed, 30.0f);
    for (int i = 0; i < 20000; ++i) engine->update(0.002f);
    EXPECT_NEAR(engine->rotationSpeed, 48.1f, 0.1f);
    EXPECT_EQ(engine->rpm, static_cast<int32_t>(engine->rotationSpeed / 6.2831855f * 60));
    engine->setThrottle(1);
    for (int i = 0; i < 5000; ++i) {
        engine->addLoad(1e9f);
        engine->update(0.002f);
    }
    EXPECT_FLOAT_EQ(engine->rotationSpeed, 30.0f);
}

TEST_F(Flight, FuelRunsOutExactlyAndTheThrottleFollowsAtItsNextSetting) {
    auto* engine = make<krEngine>(body({}));
    engine->fuelConsumption = 1;
    engine->setThrottle(1);
    for (int i = 0; i < 600; ++i) engine->update(0.002f);
    EXPECT_EQ(engine->fuelAmount, 0.0f);
    EXPECT_EQ(engine->throttle, 1.0f);
    engine->setThrottle(1);
    EXPECT_EQ(engine->throttle, 0.0f);
    engine->fuelAmount = 1;
    engine->broken = true;
    engine->setThrottle(0.5f);
    EXPECT_EQ(engine->throttle, 0.0f);
}

TEST_F(Flight, APropellerPullsHarderTheFasterItsEngineTurnsAndLoadsItOnlyWhilePulling) {
    krPhysObj* b = body({});
    auto* engine = make<krEngine>(b);
    auto* prop = make<krPropeller>(b);
    krVariant* e = new krVObject(engine);
    prop->setMember("engine", e);
    e->release();
    auto pull = [&](float w) {
        engine->rotationSpeed = w;
        engine->load = 0;
        b->force = krVector3();
        prop->update(0.002f);
        return -b->force.z;
    };
    EXPECT_FLOAT_EQ(pull(100), 0.2f * 100 * 100);
    EXPECT_FLOAT_EQ(engine->load, 2000);
    EXPECT_GT(pull(300), pull(100));
    // Air faster than the disc's flow: it brakes, and the engine feels nothing.
    b->velocity = {0, 0, -100};
    EXPECT_LT(pull(100), 0);
    EXPECT_EQ(engine->load, 0);
}

TEST_F(Flight, ARocketPushesAtAnArmOfLengthOneUntilItsThrottleGoes) {
    krPhysObj* b = body({});
    auto* rocket = make<krRocketEngine>(b);
    krArgs at{new krVFloat(0), new krVFloat(0), new krVFloat(5)};
    if (krVariant* r = rocket->getMember("setPosition", nullptr, at)) r->release();
    for (krVariant* a : at) a->release();
    EXPECT_FLOAT_EQ(rocket->position.z, 1);
    rocket->power = 1000;
    rocket->fuelConsumption = 2;
    rocket->setThrottle(1);
    rocket->update(0.25f);
    EXPECT_FLOAT_EQ(b->force.z, 1000);
    EXPECT_FLOAT_EQ(rocket->fuelAmount, 0.5f);
    rocket->update(0.25f);
    rocket->setThrottle(1);
    b->force = krVector3();
    rocket->update(0.25f);
    EXPECT_EQ(b->force.z, 0);
    EXPECT_EQ(rocket->rpm, 0);
}

TEST_F(Flight, HingesHaveHalfTheirAuthorityAt208MetresASecondAndTheWheelsSteerLessWhenFast) {
    auto* plane = make<krAirplane>(world);
    plane->mass = 1000;
    auto* elevator = make<krWing>(plane);
    auto* tyre = make<krTyre>(plane);
    tyre->flags = krTyreSteer;
    auto* list = new krVArray();
    list->append(new krVObject(elevator));
    plane->setMember("elevators", list);
    list->release();
    krVariant* full = new krVFloat(1);
    plane->setMember("pitch", full);
    plane->setMember("yaw", full);
    full->release();
    plane->velocity = {0, 0, -208.33334f};
    plane->update(0.002f);
    // The hinge turns by -0.125 about x: half of 0.25.
    EXPECT_NEAR(2 * std::asin(std::fabs(elevator->rotation.x)), 0.125f, 1e-4f);
    EXPECT_NEAR(tyre->steerAngle, 0.7f / (200.33334f * 0.2f + 1), 1e-5f);
    plane->velocity = {0, 0, -18};
    plane->update(0.002f);
    EXPECT_NEAR(tyre->steerAngle, 0.7f / 3, 1e-5f);
}

}  // namespace

namespace {

TEST_F(Flight, AnAirplanesRecordCarriesItsSpeedsControlsAndWheelsToAClient) {
    auto build = [&]() {
        auto* plane = make<krAirplane>(world);
        plane->mass = 1000;
        auto* engine = make<krEngine>(plane);
        make<krTyre>(plane);
        auto* list = new krVArray();
        list->append(new krVObject(engine));
        plane->setMember("primary_engines", list);
        list->release();
        return std::pair{plane, engine};
    };
    auto [server, serverEngine] = build();
    auto [client, clientEngine] = build();
    server->speed = 50;
    serverEngine->rotationSpeed = 300;
    server->setControl(0, -1);
    server->setControl(2, 0.5f);
    server->setControl(3, 1);
    server->tyres[0]->ray->compression = 0.5f;
    uint8_t record[krNetRecordCapacity] = {};
    int32_t size = 0;
    server->writeState(record, size, 1);
    ASSERT_EQ(size, 4 + 1 + 21);
    EXPECT_EQ(record[0], 60);
    EXPECT_EQ(record[1], 120);
    // roll 0, yaw 3, pitch truncated from 4.5 to 4, throttle 6, throttle2 3: three bits each.
    EXPECT_EQ(record[2] | record[3] << 8, 0 | 3 << 3 | 4 << 6 | 6 << 9 | 3 << 12);
    EXPECT_EQ(record[4], 127);
    // Too short for the airplane's own bytes: nothing is taken.
    client->readState(record, 3, 0.1f);
    EXPECT_EQ(client->speed, 0);
    client->readState(record, size, 0.1f);
    EXPECT_FLOAT_EQ(client->speed, 50);
    EXPECT_FLOAT_EQ(clientEngine->rotationSpeed, 300);
    EXPECT_FALSE(clientEngine->active);
    EXPECT_FLOAT_EQ(client->control(0), -1);
    EXPECT_FLOAT_EQ(client->control(2), 4.0f / 3 - 1);
    EXPECT_FLOAT_EQ(client->tyres[0]->ray->compression, 127.0f / 255);
}

}  // namespace

namespace {

TEST_F(Flight, TheAutopilotBanksTowardItsHeadingAndPassesThePilotsControlsOn) {
    auto* plane = make<krAirplane>(world);
    plane->mass = 1000;
    krVariant* read = plane->getMember("autopilot", nullptr, {});
    auto* pilot = dynamic_cast<krAutoPilot*>(krScriptObject::fromHandle(read->toInt()));
    read->release();
    ASSERT_NE(pilot, nullptr);
    // The same one on every read.
    read = plane->getMember("autopilot", nullptr, {});
    EXPECT_EQ(krScriptObject::fromHandle(read->toInt()), pilot);
    read->release();
    pilot->setControl(1, 0.25f);
    pilot->setControl(2, 0.75f);
    pilot->setControl(3, 1);
    plane->setControl(4, 0.5f);
    float record[6] = {9, 9, 9, 9, 0.5f, 9};
    auto fill = [&](int32_t controlClass) {
        pilot->control(plane, controlClass, reinterpret_cast<uint8_t*>(record), sizeof record, 0.002f);
    };
    // Level on heading 0 wanting 0: no roll, no yaw; the rest comes through, throttle2 untouched.
    fill(krControlAirplane);
    EXPECT_FLOAT_EQ(record[0], 0);
    EXPECT_FLOAT_EQ(record[1], 0);
    EXPECT_FLOAT_EQ(record[2], 0.25f);
    EXPECT_FLOAT_EQ(record[3], 0.75f);
    EXPECT_FLOAT_EQ(record[4], 0.5f);
    EXPECT_FLOAT_EQ(record[5], 1);
    // 1.5 rad to go: the wanted bank is at its limit, so full roll; yaw limited to 1.
    pilot->wantedHeading = 1.5f;
    fill(krControlAirplane);
    EXPECT_FLOAT_EQ(record[0], 1);
    EXPECT_FLOAT_EQ(record[1], -1);
    // A car's record is left alone.
    record[0] = 7;
    fill(krControlCar);
    EXPECT_FLOAT_EQ(record[0], 7);
    // The pilot's turn rate moves the wanted heading.
    pilot->wantedHeading = 0;
    pilot->setControl(0, 0.5f);
    pilot->update(2);
    EXPECT_FLOAT_EQ(pilot->wantedHeading, 1);
}

}  // namespace
