// Arbitrary bytes as vehicles in a world: cars with any number of wheels, suspensions, frictions,
// flags and controls, and airplanes with wings, engines, propellers and rockets of any size,
// direction and power (values that are not numbers among them), then substeps. Counts are capped
// so that every input steps in bounded time. Nothing may crash or convert a number out of range,
// and a body whose motion stops being a number must stop at the world's check.
#include "fuzz_world.h"

#include <cstdint>
#include <cstring>

#include "core/krMain.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "platform/krSystem.h"
#include "script/krVArray.h"
#include "script/krVObject.h"
#include "vehicles/krAirplane.h"
#include "vehicles/krCar.h"
#include "vehicles/krEngine.h"
#include "vehicles/krPropeller.h"
#include "vehicles/krTyre.h"
#include "vehicles/krWing.h"

namespace {

using fuzzWorld::Bytes;
using fuzzWorld::make;
using fuzzWorld::root;

constexpr int maxVehicles = 6;
constexpr int maxParts = 8;
constexpr int maxSubsteps = 40;

void tyres(Bytes& in, krTyreVehicle* v) {
    v->tyreCountSetting = in.byte() % maxParts;
    const int n = in.byte() % maxParts;
    for (int i = 0; i < n; ++i) {
        auto* t = make<krTyre>(v);
        t->setPosition(in.vector());
        t->flags = in.byte();
        t->stiffness = in.number();
        t->progression = in.number();
        t->damping = in.number();
        t->travel = in.number();
        t->minCompression = in.number();
        t->friction = in.number();
        t->computeRestPosition();
    }
}

void controls(Bytes& in, krVehicle* v, int count) {
    for (int i = 0; i < count; ++i) v->setControl(i, in.number());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    auto* world = make<krPhysics>(root());
    make<krStaticObj>(world)->genMeshBox({200, 1, 200});
    const int vehicles = in.byte() % maxVehicles;
    for (int k = 0; k < vehicles; ++k) {
        krTyreVehicle* v = nullptr;
        if (in.byte() & 1) {
            auto* car = make<krCar>(world);
            v = car;
            car->genMeshBox(in.vector());
            car->setMass(in.number());
            car->setPosition(in.vector());
            tyres(in, car);
            controls(in, car, 5);
        } else {
            auto* plane = make<krAirplane>(world);
            v = plane;
            plane->genMeshBox(in.vector());
            plane->setMass(in.number());
            plane->setPosition(in.vector());
            plane->velocity = in.vector();
            tyres(in, plane);
            auto* wings = new krVArray();
            auto* engines = new krVArray();
            const int parts = in.byte() % maxParts;
            for (int i = 0; i < parts; ++i) {
                switch (in.byte() % 4) {
                case 0: {
                    auto* w = make<krWing>(plane);
                    w->position = in.vector();
                    w->setDirectionVector(in.vector());
                    w->axis = in.vector();
                    w->area = in.number();
                    wings->append(new krVObject(w));
                    break;
                }
                case 1: {
                    auto* e = make<krEngine>(plane);
                    e->power = in.number();
                    e->fuelConsumption = in.number();
                    e->throttle = in.number();
                    engines->append(new krVObject(e));
                    auto* p = make<krPropeller>(plane);
                    p->setPosition(in.vector());
                    p->direction = in.vector();
                    p->thrust = in.number();
                    p->flowSpeed = in.number();
                    krVariant* link = new krVObject(e);
                    p->setMember("engine", link);
                    link->release();
                    break;
                }
                case 2: {
                    auto* r = make<krRocketEngine>(plane);
                    r->power = in.number();
                    r->direction = in.vector();
                    r->position = in.vector();
                    engines->append(new krVObject(r));
                    break;
                }
                default: {
                    // A propeller without an engine: it must stay idle.
                    make<krPropeller>(plane)->thrust = in.number();
                    break;
                }
                }
            }
            plane->setMember("ailerons", wings);
            plane->setMember("elevators", wings);
            plane->setMember("primary_engines", engines);
            wings->release();
            engines->release();
            controls(in, plane, 6);
        }
        if (!(in.byte() & 1)) v->activate();
    }
    const int substeps = in.byte() % maxSubsteps;
    for (int i = 0; i < substeps; ++i) world->update(0.002f);
    world->dispose();
    return 0;
}
