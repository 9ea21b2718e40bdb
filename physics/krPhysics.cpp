// The world: its script members, its lists of children, and the substep.
#include "physics/krPhysics.h"

#include <algorithm>
#include <cmath>

#include "core/krMain.h"
#include "core/krTimer.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysRay.h"
#include "physics/krTrigger.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "script/krFactory.h"

namespace {

const krMemberInfo physicsMembers[] = {
    {"physicTime", krRead, "float", "milliseconds the last frame's substeps took"},
    {"timeSpeed", krRead | krWrite, "float", "simulated seconds per real second, at least 0"},
    {"targetFPS", krRead | krWrite, "float", "substeps per simulated second; 0 makes one substep a frame"},
    {"setGravitation", krCall, "(x, y, z)", "acceleration of gravity in m/s^2"},
    {"waterLevel", krRead | krWrite, "float", "height of the water surface"},
    {"trigger", krCall, "(minX, maxX, minY, maxY, minZ, maxZ)", "a new trigger box in this world"},
};

// Under water a body is lifted by this many newtons per kilogram and metre of depth, and slowed
// by this many per kilogram and m/s of velocity.
constexpr float buoyancyPerMetre = 100.0f;
constexpr float waterDrag = -5.0f;
// The visits of the collision queue in one substep: two per awake body and some to spare.
constexpr size_t visitsPerBody = 2;
constexpr size_t spareVisits = 25;

bool finite(float f) { return std::isfinite(f); }

}  // namespace

const krClassInfo krPhysics::info = {"krPhysics", "krModule", "new_physics", physicsMembers, {}};

krPhysics::~krPhysics() {
    clearQueue();
    std::vector<krCollisionObject*> left;
    broad.list(left);
    for (krCollisionObject* o : left) detach(o);
}

krVariant* krPhysics::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "physicTime") return new krVFloatPtr(&physicTime, this);
    if (member == "timeSpeed") return new krVFloat(timeSpeed);
    if (member == "targetFPS") return new krVFloat(1.0f / stepTime);
    if (member == "waterLevel") return new krVFloat(waterLevel);
    if (member == "setGravitation" && args.size() == 3) {
        const krVector3 g{args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()};
        if (!isFinite(g)) return reportError(caller, "setGravitation needs finite numbers");
        gravitation = g;
        return nullptr;
    }
    if (member == "trigger" && args.size() == 6) {
        float v[6];
        for (size_t i = 0; i < 6; ++i) v[i] = args[i]->toFloat();
        if (!std::all_of(v, v + 6, [](float f) { return finite(f); })) return reportError(caller, "trigger needs finite numbers");
        return krFactory::attachAndReturn(new krTrigger(this, krBox({v[0], v[2], v[4]}, {v[1], v[3], v[5]})));
    }
    return krModule::getMember(member, caller, args);
}

void krPhysics::setMember(const std::string& member, krVariant* value) {
    const float f = value->toFloat();
    if (member == "timeSpeed") {
        if (finite(f) && f >= 0) timeSpeed = f;
        else krMain::instance()->errorMsg("timeSpeed must be a finite number of at least 0, not " + value->toString());
    } else if (member == "targetFPS") {
        // 0 gives an endless substep, which the step turns into one substep a frame.
        if (f >= 0) stepTime = 1.0f / f;
        else krMain::instance()->errorMsg("targetFPS must be a number of at least 0, not " + value->toString());
    } else if (member == "waterLevel") {
        if (finite(f)) waterLevel = f;
        else krMain::instance()->errorMsg("waterLevel must be a finite number, not " + value->toString());
    } else {
        krModule::setMember(member, value);
    }
}

void krPhysics::addChild(krModule* child) {
    if (auto* object = dynamic_cast<krCollisionObject*>(child)) {
        // A module is a child of one owner at a time; anything else is a bookkeeping fault.
        if (object->world && object->world != this) object->world->detach(object);
        object->world = this;
        broad.add(object);
        if (auto* body = dynamic_cast<krPhysObj*>(object))
            if (body->active) addActiveBody(body);
    }
    krModule::addChild(child);
}

void krPhysics::removeChild(krModule* child) {
    if (auto* object = dynamic_cast<krCollisionObject*>(child))
        if (object->world == this) detach(object);
    if (auto* rays = dynamic_cast<krRayObject*>(child)) {
        removeActiveRayObject(rays);
        rays->raysActive = false;
    }
    krModule::removeChild(child);
}

void krPhysics::detach(krCollisionObject* object) {
    broad.remove(object);
    if (auto* body = dynamic_cast<krPhysObj*>(object)) {
        grid.remove(body, body->currentBox);
        removeActiveBody(body);
    }
    object->world = nullptr;
}

void krPhysics::addActiveBody(krPhysObj* body) { activeBodies.push_back(body); }

void krPhysics::addActiveRayObject(krRayObject* rays) { activeRayObjects.push_back(rays); }

void krPhysics::removeActiveRayObject(krRayObject* rays) {
    activeRayObjects.erase(std::remove(activeRayObjects.begin(), activeRayObjects.end(), rays),
                           activeRayObjects.end());
}

void krPhysics::removeActiveBody(krPhysObj* body) {
    activeBodies.erase(std::remove(activeBodies.begin(), activeBodies.end(), body), activeBodies.end());
}

bool krPhysics::update(float elapsed) {
    if (stepping) return true;
    krTimer* timer = timerStart();
    bool result = true;
    const float total = elapsed * timeSpeed;
    // Written so that a quotient that is not a number (no time, no substep length) makes one.
    const float wanted = total / stepTime;
    const int32_t count = !(wanted >= 1) ? 1 : wanted >= maxSubsteps ? maxSubsteps : static_cast<int32_t>(wanted);
    const float dt = total / static_cast<float>(count);
    stepping = true;
    addRef();
    for (int32_t i = 0; i < count; ++i) {
        if (!substep(dt)) {
            result = false;
            break;
        }
    }
    stepping = false;
    physicTime = static_cast<float>(timerStop(timer) * 1000);
    release();
    return result;
}

bool krPhysics::substep(float dt) {
    castRays(dt);
    applyExternalForces(dt);
    resolveCollisions(dt);
    clearQueue();
    return krModule::update(dt);
}

void krPhysics::castRays(float dt) {
    // Hit handlers may switch rays on and off; the phase walks the list as it was.
    castList = activeRayObjects;
    for (size_t k = 0; k < castList.size(); ++k) {
        krRayObject* owner = castList[k];
        // An owner that a handler switched off since is passed over: it may be gone.
        if (std::find(activeRayObjects.begin(), activeRayObjects.end(), owner) == activeRayObjects.end()) continue;
        krModule* module = owner->rayModule();
        if (!module) continue;
        auto* self = dynamic_cast<krCollisionObject*>(module);
        krModuleHold hold{module};
        for (size_t r = 0; r < owner->rays.size(); ++r) {
            krPhysRay* ray = owner->rays[r];
            ray->update(dt);
            krRayHit hit, scratch;
            float best = krRayBestStart;
            krCollectResult candidates;
            collectObjects(candidates, ray->box);
            for (int32_t i = 0; i < candidates.count; ++i) {
                auto* candidate = dynamic_cast<krCollisionObject*>(candidates.objects[i]);
                if (!candidate || candidate == self) continue;
                scratch = krRayHit();
                const float t = candidate->collideRay(*ray, scratch);
                if (0 <= t && t < best) {
                    best = t;
                    hit = scratch;
                }
            }
            if (best <= 1.0f) ray->onHit(best, dt, hit);
            // A hit handler may have switched the owner off and deleted its rays.
            if (module->isTornDown() || !owner->raysActive) break;
        }
    }
}

void krPhysics::enqueue(krPhysObj* body) {
    body->addRef();
    queue.push_back(body);
}

krPhysObj* krPhysics::dequeue() {
    if (queueHead == queue.size()) return nullptr;
    return queue[queueHead++];
}

void krPhysics::clearQueue() {
    // Bodies the visit limit left waiting commit what they proposed last.
    for (size_t i = queueHead; i < queue.size(); ++i) {
        queue[i]->inQueue = false;
        queue[i]->release();
    }
    queue.clear();
    queueHead = 0;
}

void krPhysics::applyExternalForces(float dt) {
    clearQueue();
    for (krPhysObj* body : activeBodies) enqueue(body);
    for (size_t i = 0; i < queue.size(); ++i) {
        krPhysObj* body = queue[i];
        // Waiting bodies without the flag are passed over by the collision phase.
        body->inQueue = false;
        if (body->getWorld() != this) continue;
        if (body->isPoisoned()) {
            quarantine(body);
            continue;
        }
        if (body->position.y <= waterLevel) {
            const float lift = (waterLevel - body->position.y) * buoyancyPerMetre * body->mass;
            body->addForceAt(krVector3::axisY * lift, rotate(body->rotation, krVector3::axisY));
            body->addForceAt(body->velocity * (body->mass * waterDrag), krVector3());
        } else {
            body->addForceAt(gravitation * body->mass, rotate(body->rotation, body->weightpoint));
        }
        body->inQueue = true;
        body->integrateForces(dt);
    }
}

void krPhysics::quarantine(krPhysObj* body) {
    // Someone wrote a value that is not a number into the body, and it would carry it into
    // everything it touches. It stops where it was last whole.
    krMain::instance()->errorMsg("Body " + body->describe() + " stopped: its motion is not a finite number");
    if (!isFinite(body->position)) body->position = isFinite(body->nextPosition) ? body->nextPosition : krVector3();
    if (!isFinite(body->rotation)) body->rotation = krQuat::identity;
    body->nextPosition = body->position;
    body->nextOrientation = body->rotation;
    body->force = krVector3();
    body->torque = krVector3();
    body->stop();
}

void krPhysics::resolveCollisions(float dt) {
    const size_t limit = visitsPerBody * (queue.size() - queueHead) + spareVisits;
    for (size_t visits = 0; visits < limit; ++visits) {
        krPhysObj* body = dequeue();
        if (!body) break;
        // A handler may have deleted the body or moved it elsewhere while it waited.
        if (!body->inQueue || body->getWorld() != this) {
            body->inQueue = false;
            body->release();
            continue;
        }
        body->predictMotion(dt);
        contacts.count = 0;
        krCollectResult candidates;
        if (body->collStyle != krCollNone) broad.collect(candidates, body->nextBox);
        for (int32_t i = 0; i < candidates.count && !contacts.full(); ++i) {
            auto* other = dynamic_cast<krCollisionObject*>(candidates.objects[i]);
            if (!other || other == body) continue;
            if (body->collStyle == krCollSphere) other->collideSphere(contacts, body);
            else if (body->collStyle == krCollBox) other->collideBox(contacts, body);
            else if (body->collStyle == krCollMesh) other->collideMesh(contacts, body);
        }
        // Contacts are answered lowest key first; only the first on a surface that stops bodies
        // is answered now, the others are found again on the next visit. Of equal keys the first
        // found is taken.
        krContact* chosen = nullptr;
        for (int32_t i = 0; i < contacts.count; ++i) {
            krContact& c = contacts.entries[i];
            if (c.otherMaterial && *c.otherMaterial != krPhysicDefault) continue;
            if (!chosen || c.sortKey < chosen->sortKey) chosen = &c;
        }
        if (chosen) respond(*chosen, dt);
        else body->inQueue = false;
        body->release();
    }
}
