// Vehicles: the driver's seat, the passengers, the control record and its script members.
#include "vehicles/krVehicle.h"

#include <cmath>
#include <cstring>

#include "core/krMain.h"
#include "script/krClassInfo.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo vehicleMembers[] = {
    {"driver", krRead | krWrite, "object", "who fills the control record: a player, a character, or null"},
};

const krEventInfo vehicleEvents[] = {
    {"passengerEnter", "(passenger)", "a passenger became a child of the vehicle"},
    {"passengerExit", "(passenger)", "a passenger left the vehicle"},
    {"driverChange", "(old, new)", "the driver changed; either may be null"},
};

// A controller as a script value: null unless it is a script object.
krVariant* objectOf(krController* c) { return new krVObject(dynamic_cast<krScriptObject*>(c)); }

}  // namespace

const krClassInfo krVehicle::info = {"krVehicle", "krPhysObj", "new_vehicle", vehicleMembers, vehicleEvents,
                                     "a body with a driver's seat, passengers and a control record"};

void krController::control(krVehicle*, int32_t, uint8_t*, int32_t, float) {}
void krController::feedback(krVehicle*, int32_t, uint8_t*) {}

krDriver::~krDriver() {
    if (vehicle) vehicle->setDriver(nullptr);
}

krVehicle::~krVehicle() { setDriver(nullptr); }

krVariant* krVehicle::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "driver") return objectOf(driver);
    return krPhysObj::getMember(member, caller, args);
}

void krVehicle::setMember(const std::string& member, krVariant* value) {
    if (member == "driver") {
        setDriver(dynamic_cast<krController*>(krScriptObject::fromHandle(value->toInt())));
    } else {
        krPhysObj::setMember(member, value);
    }
}

void krVehicle::setDriver(krController* controller) {
    if (controller == driver) return;
    krController* old = driver;
    if (auto* d = dynamic_cast<krDriver*>(old)) d->setVehicle(nullptr);
    driver = controller;
    // A vehicle in teardown tells no scripts.
    if (!isTornDown()) {
        krArgs args{objectOf(old), objectOf(controller)};
        if (krVariant* r = fireEvent("driverChange", args)) r->release();
        for (krVariant* a : args) a->release();
    }
    // A handler may have seated someone else meanwhile.
    if (driver != controller) return;
    if (auto* d = dynamic_cast<krDriver*>(controller)) {
        // A driver sits in one vehicle at a time.
        if (d->vehicle && d->vehicle != this) d->vehicle->setDriver(nullptr);
        d->setVehicle(this);
    }
}

void krVehicle::addChild(krModule* child) {
    if (auto* p = dynamic_cast<krPassenger*>(child)) {
        passengers.push_back(p);
        p->setVehicle(this);
        krArgs args{new krVObject(child)};
        if (krVariant* r = fireEvent("passengerEnter", args)) r->release();
        args[0]->release();
    }
    krPhysObj::addChild(child);
}

void krVehicle::removeChild(krModule* child) {
    if (auto* p = dynamic_cast<krPassenger*>(child)) {
        for (size_t i = 0; i < passengers.size(); ++i) {
            if (passengers[i] != p) continue;
            passengers.erase(passengers.begin() + static_cast<long>(i));
            p->setVehicle(nullptr);
            if (!isTornDown()) {
                krArgs args{new krVObject(child)};
                if (krVariant* r = fireEvent("passengerExit", args)) r->release();
                args[0]->release();
            }
            break;
        }
    }
    krPhysObj::removeChild(child);
}

bool krVehicle::update(float dt) {
    if (driver) driver->control(this, controlClass, controls.data(), static_cast<int32_t>(controls.size()), dt);
    return krPhysObj::update(dt);
}

void krVehicle::setControlClass(int32_t c, int32_t size) {
    controlClass = c;
    controls.assign(static_cast<size_t>(size), 0);
}

float krVehicle::control(int32_t i) const {
    if (i < 0 || static_cast<size_t>(i + 1) * sizeof(float) > controls.size()) return 0;
    float v;
    std::memcpy(&v, controls.data() + static_cast<size_t>(i) * sizeof(float), sizeof v);
    return v;
}

void krVehicle::setControl(int32_t i, float value) {
    if (i < 0 || static_cast<size_t>(i + 1) * sizeof(float) > controls.size()) return;
    std::memcpy(controls.data() + static_cast<size_t>(i) * sizeof(float), &value, sizeof value);
}

void krVehicle::setControlFromScript(int32_t i, krVariant* value) {
    const float f = value->toFloat();
    if (!std::isfinite(f)) {
        krMain::instance()->errorMsg("A control of " + describe() + " must be a finite number, not " + value->toString());
        return;
    }
    setControl(i, f);
    if (f != 0) activate();
}
