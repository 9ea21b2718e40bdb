// Triggers: the box against the world's grid, and the enter and exit events.
#include "physics/krTrigger.h"

#include <algorithm>

#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "script/krClassInfo.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo triggerMembers[] = {
    {"tracked", krRead | krWrite, "object", "the box moves with this object's position; null keeps it in place"},
};

const krEventInfo triggerEvents[] = {
    {"enter", "(body)", "a body came into the box"},
    {"exit", "(body)", "a body left the box"},
};

}  // namespace

const krClassInfo krTrigger::info = {"krTrigger", "krModule", nullptr, triggerMembers, triggerEvents,
                                     "a box that reports bodies; made by a world's trigger method"};

krTrigger::krTrigger(krModule* world, const krBox& b) : krModule(world), box(b) {}

krTrigger::~krTrigger() {
    for (krPhysObj* body : inside) body->release();
}

void krTrigger::fireFor(const char* event, const std::vector<krPhysObj*>& bodies,
                        const std::vector<krPhysObj*>& except, const krObject* trackedObject) {
    for (krPhysObj* body : bodies) {
        if (std::binary_search(except.begin(), except.end(), body) || body == trackedObject) continue;
        if (body->isTornDown() || isTornDown()) continue;
        krArgs args{new krVObject(body)};
        if (krVariant* r = fireEvent(event, args)) r->release();
        args[0]->release();
    }
}

krObject* krTrigger::getTracked() const {
    return tracked ? dynamic_cast<krObject*>(krScriptObject::fromHandle(tracked)) : nullptr;
}

krVariant* krTrigger::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "tracked") return new krVObject(getTracked());
    return krModule::getMember(member, caller, args);
}

void krTrigger::setMember(const std::string& member, krVariant* value) {
    if (member == "tracked") {
        auto* o = dynamic_cast<krObject*>(krScriptObject::fromHandle(value->toInt()));
        tracked = o ? o->handle() : 0;
    } else {
        krModule::setMember(member, value);
    }
}

bool krTrigger::update(float dt) {
    auto* world = dynamic_cast<krPhysics*>(owner);
    if (!world) return krModule::update(dt);
    krModuleHold hold{this};
    krObject* trackedObject = getTracked();
    const krVector3 offset = trackedObject ? translation(trackedObject->getMatrix()) : krVector3();
    world->queryGrid(krBox(box.min + offset, box.max + offset), now);
    // Handlers may delete bodies, the trigger or the world: each body is held until its event
    // is over, and a torn-down body is let go of without one.
    std::vector<krPhysObj*> before;
    before.swap(inside);
    inside = now;
    for (krPhysObj* body : inside) body->addRef();
    const std::vector<krPhysObj*> entered = inside;
    fireFor("exit", before, entered, trackedObject);
    fireFor("enter", entered, before, trackedObject);
    for (krPhysObj* body : before) body->release();
    if (isTornDown()) return false;
    return krModule::update(dt);
}
