// Wings: lift and drag from the flow at the wing's own point.
#include "vehicles/krWing.h"

#include <algorithm>
#include <cmath>

#include "core/krMain.h"
#include "physics/krPhysObj.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo wingMembers[] = {
    {"setPosition", krCall, "(x, y, z)", "the centre of pressure in the owner's axes"},
    {"setDirection", krCall, "(x, y, z)", "the wing's normal in the owner's axes"},
    {"setAxis", krCall, "(x, y, z)", "the hinge axis in the owner's axes"},
    {"area", krRead | krWrite, "float", "scales every force of the wing"},
    {"setLinked", krCall, "(object, x, y, z)", "a visual surface that turns with the hinge about that point"},
};

// Lift coefficient c = max(0, 1 - liftFall x |peakIncidence - incidence|), incidence measured from
// the normal: it peaks with the flow 0.24 rad off the wing's plane and stalls 0.49 rad off it.
constexpr float peakIncidence = 1.33f;
constexpr float liftFall = 4.0f;
constexpr float rightAngle = 1.5707964f;
// Drag that comes with lift, as a share of it.
constexpr float inducedDrag = 0.0225f;

float sign(float f) { return f > 0 ? 1.0f : f < 0 ? -1.0f : 0.0f; }

krVector3 vectorOf(const krArgs& args, size_t from) {
    return {args[from]->toFloat(), args[from + 1]->toFloat(), args[from + 2]->toFloat()};
}

}  // namespace

const krClassInfo krWing::info = {"krWing", "krModule", "new_physicWing", wingMembers, {},
                                  "a lifting surface of the body that owns it"};

krObject* krWing::getLinked() const {
    return linked ? dynamic_cast<krObject*>(krScriptObject::fromHandle(linked)) : nullptr;
}

void krWing::setAngle(float angle) { rotation = krQuat::fromAxisAngle(angle, axis); }

krVariant* krWing::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    if (n == 3 && (member == "setPosition" || member == "setDirection" || member == "setAxis")) {
        const krVector3 v = vectorOf(args, 0);
        if (!isFinite(v)) return reportError(caller, member + " needs finite numbers");
        if (member == "setPosition") position = v;
        else if (member == "setDirection") setDirectionVector(normalized(v));
        else axis = normalized(v);
        return nullptr;
    }
    if (member == "setLinked" && n == 4) {
        const krVector3 pivot = vectorOf(args, 1);
        if (!isFinite(pivot)) return reportError(caller, "setLinked needs finite numbers");
        auto* o = dynamic_cast<krObject*>(krScriptObject::fromHandle(args[0]->toInt()));
        linked = o ? o->handle() : 0;
        linkPivot = pivot;
        return nullptr;
    }
    if (member == "area") return new krVFloat(area);
    return krModule::getMember(member, caller, args);
}

void krWing::setMember(const std::string& member, krVariant* value) {
    if (member == "area") {
        const float f = value->toFloat();
        if (std::isfinite(f)) area = f;
        else krMain::instance()->errorMsg("area of a wing must be a finite number, not " + value->toString());
    } else {
        krModule::setMember(member, value);
    }
}

bool krWing::update(float dt) {
    auto* body = dynamic_cast<krPhysObj*>(owner);
    if (body) {
        const krQuat& q = body->rotation;
        const krVector3 arm = rotate(q, position);
        const krVector3 normal = rotate(q, rotate(rotation, direction));
        const krVector3 v = body->getVelocityAt(arm);
        const float speed = length(v);
        const krVector3 flow = normalized(v);
        const float vn = dot(v, normal);
        const float sgn = sign(vn);
        const float a = std::fabs(dot(flow, normal));
        const float incidence = a >= 1 ? 0.0f : a <= 0 ? rightAngle : std::acos(a);
        const float c = std::max(0.0f, 1 - liftFall * std::fabs(peakIncidence - incidence));
        const float lift = speed * speed * area * 0.5f * c;
        const krVector3 s = cross(flow, cross(flow, normal));
        body->addForceAt(s * (lift * sgn), arm);
        body->addForceAt(flow * (lift * -inducedDrag), arm);
        body->addForceAt(normal * (area * vn * std::fabs(vn) * -0.5f), arm);
    }
    if (krObject* surface = getLinked()) surface->rotateAboutPivot(rotation, linkPivot);
    return krModule::update(dt);
}
