// Arbitrary bytes as the state records a server streams: each record, cut to an arbitrary length,
// is applied through readState to a body, a car with a number of wheels and an airplane with an
// engine, as a client applies what a datagram carried; then the world steps. Nothing may be read
// past a record, and a state that is no number must stop at the world's check, not spread.
#include "fuzz_world.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/krMain.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "platform/krSystem.h"
#include "script/krVArray.h"
#include "script/krVObject.h"
#include "vehicles/krAirplane.h"
#include "vehicles/krCar.h"
#include "vehicles/krEngine.h"
#include "vehicles/krTyre.h"

namespace {

using fuzzWorld::make;
using fuzzWorld::root;

constexpr int maxRecords = 16;
constexpr int maxTyres = 8;
constexpr int substeps = 5;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    auto* world = make<krPhysics>(root());
    make<krStaticObj>(world)->genMeshBox({100, 1, 100});
    auto* body = make<krPhysObj>(world);
    body->setMass(1);
    auto* car = make<krCar>(world);
    car->setMass(1000);
    const int tyres = data[0] % (maxTyres + 1);
    car->tyreCountSetting = tyres;
    for (int i = 0; i < tyres; ++i) make<krTyre>(car)->computeRestPosition();
    auto* airplane = make<krAirplane>(world);
    airplane->setMass(1000);
    auto* engine = make<krEngine>(airplane);
    auto* engines = new krVArray();
    engines->append(new krVObject(engine));
    airplane->setMember("primary_engines", engines);
    engines->release();
    make<krTyre>(airplane);
    krNetObject* receivers[] = {body, car, airplane};

    // Records follow the first byte: a length byte, then that many bytes (fewer at the end).
    size_t at = 1;
    for (int r = 0; r < maxRecords && at < size; ++r) {
        const size_t length = data[at++] % (krNetRecordCapacity + 1);
        const size_t available = std::min(length, size - at);
        // The record in a buffer of its own, so that a read past it is caught.
        std::vector<uint8_t> record(data + at, data + at + available);
        receivers[r % 3]->readState(record.data(), static_cast<int32_t>(record.size()), 0.05f);
        at += available;
    }
    for (int i = 0; i < substeps; ++i) world->update(0.002f);
    // What a server would write back must fit the wire's record.
    for (krNetObject* o : receivers) {
        uint8_t out[krNetRecordCapacity];
        int32_t written = 0;
        o->writeState(out, written, 1);
        if (written > krNetRecordCapacity) __builtin_trap();
    }
    world->dispose();
    return 0;
}
