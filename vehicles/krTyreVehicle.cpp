// Vehicles on wheels: the list of wheels, their rays while awake, the combined side forces, and
// the network record of the suspension.
#include "vehicles/krTyreVehicle.h"

#include <algorithm>
#include <cmath>

#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "vehicles/krTyre.h"

namespace {

const krMemberInfo tyreVehicleMembers[] = {
    {"tyreCount", krRead | krWrite, "int",
     "read: the wheels there are; write: how many the rest position shares the load among (before setSuspension)"},
};

// A compression is sent as one byte: 0 to 255 for 0 to 1.
constexpr float compressionScale = 255.0f;
// Room the body's own record after the wheels' bytes needs at most.
constexpr int32_t bodyRecordRoom = 21;

krVector3 maxEach(const krVector3& a, const krVector3& b) {
    return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
}

krVector3 minEach(const krVector3& a, const krVector3& b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
}

krVector3 clampEach(const krVector3& v, const krVector3& lo, const krVector3& hi) { return minEach(maxEach(v, lo), hi); }

}  // namespace

const krClassInfo krTyreVehicle::info = {"krTyreVehicle", "krVehicle", nullptr, tyreVehicleMembers, {},
                                         "a vehicle on wheels"};

krTyreVehicle::~krTyreVehicle() {
    // The rays go with the vehicle's ray list; the wheels, released later, keep none.
    for (krTyre* t : tyres) t->ray = nullptr;
}

krVariant* krTyreVehicle::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "tyreCount") return new krVInt(static_cast<int32_t>(tyres.size()));
    return krVehicle::getMember(member, caller, args);
}

void krTyreVehicle::setMember(const std::string& member, krVariant* value) {
    if (member == "tyreCount") tyreCountSetting = value->toInt();
    else krVehicle::setMember(member, value);
}

void krTyreVehicle::addChild(krModule* child) {
    if (auto* t = dynamic_cast<krTyre*>(child))
        if (t->vehicle == this && std::find(tyres.begin(), tyres.end(), t) == tyres.end()) tyres.push_back(t);
    krVehicle::addChild(child);
}

void krTyreVehicle::removeChild(krModule* child) {
    if (auto* t = dynamic_cast<krTyre*>(child)) {
        const auto at = std::find(tyres.begin(), tyres.end(), t);
        if (at != tyres.end()) {
            tyres.erase(at);
            t->leaveVehicle();
        }
    }
    krVehicle::removeChild(child);
}

void krTyreVehicle::activate() {
    krVehicle::activate();
    if (active) activateRays();
}

void krTyreVehicle::stop() {
    deactivateRays();
    krVehicle::stop();
}

bool krTyreVehicle::update(float dt) {
    if (!krVehicle::update(dt)) return false;
    float w = 0;
    krVector3 avgForce, avgTorque, posForce, negForce, posTorque, negTorque;
    for (const krTyre* t : tyres) {
        if (!t->onGround) continue;
        w += t->slip;
        const krVector3 share = t->stopForce * t->slip;
        avgForce += share;
        avgTorque += cross(share, t->arm);
        posForce += maxEach(t->sideForce, krVector3());
        negForce += minEach(t->sideForce, krVector3());
        const krVector3 turn = cross(t->sideForce, t->arm);
        posTorque += maxEach(turn, krVector3());
        negTorque += minEach(turn, krVector3());
    }
    if (w > 0) {
        avgForce = krVector3(avgForce.x / w, avgForce.y / w, avgForce.z / w);
        avgTorque = krVector3(avgTorque.x / w, avgTorque.y / w, avgTorque.z / w);
    }
    force += clampEach(avgForce, negForce, posForce);
    torque += clampEach(avgTorque, negTorque, posTorque);
    return true;
}

void krTyreVehicle::writeState(uint8_t* buffer, int32_t& size, int32_t frame) {
    for (const krTyre* t : tyres) {
        if (size + bodyRecordRoom >= krNetRecordCapacity) break;
        const float c = t->ray ? t->ray->compression : 0.0f;
        buffer[size++] = static_cast<uint8_t>(truncateSaturating(c * compressionScale, 0, 255));
    }
    krVehicle::writeState(buffer, size, frame);
}

void krTyreVehicle::readState(const uint8_t* buffer, int32_t size, float lag) {
    const auto count = static_cast<int32_t>(tyres.size());
    // A record without a byte for every wheel is not this vehicle's.
    if (size < count) return;
    for (int32_t i = 0; i < count; ++i)
        if (krTyreRay* ray = tyres[static_cast<size_t>(i)]->ray) ray->compression = buffer[i] / compressionScale;
    krVehicle::readState(buffer + count, size - count, lag);
}
