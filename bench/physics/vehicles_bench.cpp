// Vehicles benchmark: 100 cars driving in circles on a flat floor, and 50 airplanes of six wings,
// one engine and one propeller each flying side by side, each set in a world of its own stepped
// at 0.002 s. After 250 substeps to get going, 2,500 substeps are timed; milliseconds per
// substep are printed, with the share of real time that 500 substeps a second take, and how many
// of the vehicles are still awake at the end (all of them, or the scene would measure sleep).
//
// Usage: kerrin_bench_vehicles   (no display needed)
#include "bench_timing.h"

#include <cstdio>
#include <functional>

#include "core/krMain.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "vehicles/krAirplane.h"
#include "vehicles/krCar.h"
#include "vehicles/krEngine.h"
#include "vehicles/krPropeller.h"
#include "vehicles/krTyre.h"
#include "script/krVObject.h"
#include "vehicles/krWing.h"

namespace {

constexpr float step = 0.002f;
constexpr int warmUp = 250;
constexpr int timed = 2500;
constexpr int carCount = 100;
constexpr int airplaneCount = 50;
// Cars stand 12 m apart on a 10 x 10 grid; each circles within its own cell.
constexpr float carSpacing = 12.0f;

template <class T>
T* make(krModule* owner) {
    auto* m = new T(owner);
    m->attach();
    return m;
}

// A body-relative wheel with the suspension of the demo's car.
krTyre* wheel(krTyreVehicle* vehicle, const krVector3& at, int32_t flags) {
    auto* t = make<krTyre>(vehicle);
    t->setPosition(at);
    t->flags = flags;
    t->computeRestPosition();
    return t;
}

void car(krPhysics* world, const krVector3& at) {
    auto* c = make<krCar>(world);
    c->genMeshBox({1.8f, 0.6f, 4});
    c->setMass(1000);
    c->tyreCountSetting = 4;
    c->setPosition(at);
    for (float x : {-0.8f, 0.8f}) {
        wheel(c, {x, -0.3f, -1.3f}, krTyreSteer | krTyreBrake);
        wheel(c, {x, -0.3f, 1.3f}, krTyreAccelerate | krTyreBrake);
    }
    c->setControl(0, 0.6f);
    c->setControl(1, 0.3f);
    c->activate();
}

void airplane(krPhysics* world, const krVector3& at) {
    auto* a = make<krAirplane>(world);
    a->genMeshBox({11, 1.5f, 7.5f});
    a->setMass(1100);
    a->tyreCountSetting = 3;
    a->setPosition(at);
    a->velocity = {0, 0, -50};
    const krVector3 wings[6] = {{-2.5f, 0.8f, 0}, {2.5f, 0.8f, 0}, {-4.6f, 0.8f, 0.3f},
                                {4.6f, 0.8f, 0.3f}, {0, 0.2f, 4.3f}, {0, 0.8f, 4.3f}};
    for (int i = 0; i < 6; ++i) {
        auto* w = make<krWing>(a);
        w->position = wings[i];
        w->area = i < 2 ? 6.6f : i < 4 ? 1.5f : 3.0f;
        w->setDirectionVector(i == 5 ? krVector3(1, 0, 0) : normalized(krVector3(0, 1, 0.1f)));
    }
    auto* engine = make<krEngine>(a);
    engine->power = 40000;
    engine->setThrottle(1);
    auto* propeller = make<krPropeller>(a);
    propeller->setPosition({0, 0, -3.1f});
    propeller->thrust = 70;
    krVariant* e = new krVObject(engine);
    propeller->setMember("engine", e);
    e->release();
    a->activate();
}

struct Timing {
    double ms;
    size_t awake;
};

Timing run(krMain* root, const std::function<void(krPhysics*)>& build) {
    auto* world = make<krPhysics>(root);
    build(world);
    for (int i = 0; i < warmUp; ++i) world->update(step);
    const uint64_t t0 = krSystem::counter();
    for (int i = 0; i < timed; ++i) world->update(step);
    const double ms = benchTiming::seconds(t0, krSystem::counter()) * 1000 / timed;
    const size_t awake = world->getActiveBodies().size();
    world->dispose();
    return {ms, awake};
}

}  // namespace

int main() {
    krSystem::markStackBase();
    auto* root = new krMain(0, nullptr);
    root->attach();
    const Timing cars = run(root, [](krPhysics* world) {
        auto* floor = make<krStaticObj>(world);
        floor->genMeshBox({400, 1, 400});
        for (int i = 0; i < carCount; ++i)
            car(world, {(static_cast<float>(i % 10) - 4.5f) * carSpacing, 1.5f,
                        (static_cast<float>(i / 10) - 4.5f) * carSpacing});
    });
    const Timing airplanes = run(root, [](krPhysics* world) {
        for (int i = 0; i < airplaneCount; ++i)
            airplane(world, {static_cast<float>(i) * 20.0f, 1000, 0});
    });
    // 500 substeps a second: the share of real time is ms x 500 / 1000.
    std::printf("%-34s %12s %16s %7s\n", "scene", "ms/substep", "of real time", "awake");
    std::printf("%-34s %12.4f %15.1f%% %7zu\n", "100 cars driving in circles", cars.ms, cars.ms * 50, cars.awake);
    std::printf("%-34s %12.4f %15.1f%% %7zu\n", "50 airplanes of 6 wings flying", airplanes.ms, airplanes.ms * 50,
                airplanes.awake);
    root->deinit();
    root->release();
    return 0;
}
