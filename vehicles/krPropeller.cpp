// Propellers: thrust from the engine's speed against the air's, and the engine's load.
#include "vehicles/krPropeller.h"

#include <algorithm>
#include <cmath>

#include "core/krMain.h"
#include "physics/krPhysObj.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "script/krVObject.h"
#include "vehicles/krEngine.h"

namespace {

const krMemberInfo propellerMembers[] = {
    {"setDirection", krCall, "(x, y, z)", "the thrust axis in the owner's axes"},
    {"engine", krRead | krWrite, "object", "the engine that turns it; assign it before the first frame"},
    {"thrust", krRead | krWrite, "float", "newtons per m/s of flow difference"},
    {"flowspeed", krRead | krWrite, "float", "metres of flow per radian of engine rotation"},
};

}  // namespace

const krClassInfo krPropeller::info = {"krPropeller", "krObject", "new_physicPropeller", propellerMembers, {},
                                       "turns an engine's speed into thrust on its owner"};

krPropeller::krPropeller(krModule* owner) : krObject(owner) { enabled = true; }

krEngine* krPropeller::getEngine() const {
    return engine ? dynamic_cast<krEngine*>(krScriptObject::fromHandle(engine)) : nullptr;
}

krVariant* krPropeller::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "setDirection" && args.size() == 3) {
        const krVector3 v{args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()};
        if (!isFinite(v)) return reportError(caller, "setDirection needs finite numbers");
        direction = normalized(v);
        return nullptr;
    }
    if (member == "engine") return new krVObject(getEngine());
    if (member == "thrust") return new krVFloat(thrust);
    if (member == "flowspeed") return new krVFloat(flowSpeed);
    return krObject::getMember(member, caller, args);
}

void krPropeller::setMember(const std::string& member, krVariant* value) {
    if (member == "engine") {
        auto* e = dynamic_cast<krEngine*>(krScriptObject::fromHandle(value->toInt()));
        engine = e ? e->handle() : 0;
    } else if (member == "thrust" || member == "flowspeed") {
        const float f = value->toFloat();
        if (!std::isfinite(f)) krMain::instance()->errorMsg(member + " of a propeller must be a finite number");
        else (member == "thrust" ? thrust : flowSpeed) = f;
    } else {
        krObject::setMember(member, value);
    }
}

bool krPropeller::update(float dt) {
    krEngine* e = getEngine();
    auto* body = dynamic_cast<krObject*>(owner);
    // Without an engine there is nothing to turn; the mesh stays as it is.
    if (e && body) {
        const krQuat& q = body->rotation;
        const krVector3 arm = rotate(q, position);
        const krVector3 axis = rotate(q, direction);
        const krVector3 v = owner->getVelocityAt(arm);
        const float f = (-dot(v, axis) - flowSpeed * e->rotationSpeed) * thrust;
        if (auto* physical = dynamic_cast<krPhysObj*>(owner)) physical->addForceAt(axis * f, arm);
        e->addLoad(std::max(0.0f, -f));
        angle += dt * e->rotationSpeed;
        // A long flight would lose the spin's precision in the float; a whole turn changes nothing.
        angle = std::fmod(angle, 6.2831855f);
        rotation = krQuat::fromAxisAngle(angle, krVector3(0, 0, 1));
    }
    return krObject::update(dt);
}
