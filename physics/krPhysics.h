// krPhysics: one simulated world. Each frame becomes fixed substeps; each substep applies gravity
// or water to the awake bodies, works their proposed moves through a queue that answers one
// contact at a time, and then updates the world's children, which commit their moves. Every
// rigid body and every piece of level geometry of the world is a direct child of it.
#pragma once

#include <cstdint>
#include <vector>

#include "core/krModule.h"
#include "physics/krBroadPhase.h"
#include "physics/krContact.h"
#include "physics/krPhysGrid.h"

class krCollisionObject;
class krPhysObj;
class krRayObject;
struct krClassInfo;

class krPhysics : public krModule {
public:
    // Substeps of one update at most: a frame of 0.05 seconds at twenty times the speed of time.
    // Beyond it the substeps grow longer instead of more.
    static constexpr int32_t maxSubsteps = 1000;

    explicit krPhysics(krModule* owner) : krModule(owner) {}
    ~krPhysics() override;
    const char* className() const override { return "krPhysics"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    void addChild(krModule* child) override;
    void removeChild(krModule* child) override;
    // The frame's time in substeps; false as soon as a substep's update of the children is.
    bool update(float elapsed) override;

    void addActiveBody(krPhysObj* body);
    // Removes every entry of the body.
    void removeActiveBody(krPhysObj* body);
    // Ray owners whose rays are cast every substep.
    void addActiveRayObject(krRayObject* rays);
    void removeActiveRayObject(krRayObject* rays);
    void moveInGrid(krPhysObj* body, const krBox& oldBox, const krBox& newBox) { grid.move(body, oldBox, newBox); }
    void removeFromGrid(krPhysObj* body, const krBox& box) { grid.remove(body, box); }
    // The bodies whose boxes in the grid overlap box, each once, ordered by pointer.
    void queryGrid(const krBox& box, std::vector<krPhysObj*>& found) const { grid.query(box, found); }
    // The objects whose boxes overlap box, as collectObjects on every collision child in turn
    // finds them.
    void collectObjects(krCollectResult& candidates, const krBox& box) { broad.collect(candidates, box); }
    // A child body proposed a new box.
    void nextBoxChanged(krPhysObj* body) { broad.moved(body); }
    // Forgets a collision object in every list: it is leaving the world.
    void detach(krCollisionObject* object);

    const std::vector<krPhysObj*>& getActiveBodies() const { return activeBodies; }
    void getCollisionObjects(std::vector<krCollisionObject*>& out) const { broad.list(out); }

    krVector3 gravitation{0, -9.81f, 0};
    // Milliseconds the last update took.
    float physicTime = 0;
    // Wanted substep length in seconds.
    float stepTime = 0.002f;
    // Simulated seconds per real second.
    float timeSpeed = 1.0f;
    // Height of the water surface.
    float waterLevel = -100000.0f;

private:
    bool substep(float dt);
    // Casts every active ray once and hands each its nearest hit.
    void castRays(float dt);
    // Gravity or water on every awake body, turned into velocity; fills the work queue.
    void applyExternalForces(float dt);
    // Stops a body whose state is not a finite number, after a report.
    void quarantine(krPhysObj* body);
    // Proposes, tests and answers the moves of the queued bodies.
    void resolveCollisions(float dt);
    // Answers one contact with a force that reverses its approach over dt (krContactResponse.cpp).
    void respond(krContact& contact, float dt);
    // The work queue holds a reference on each body it holds, since handlers of contact events
    // may delete bodies while they wait.
    void enqueue(krPhysObj* body);
    krPhysObj* dequeue();
    void clearQueue();

    std::vector<krPhysObj*> activeBodies;
    std::vector<krRayObject*> activeRayObjects;
    // The copy of activeRayObjects that a ray phase walks, kept to spare the allocation.
    std::vector<krRayObject*> castList;
    krBroadPhase broad;
    krPhysGrid grid;
    krContactTable contacts;
    std::vector<krPhysObj*> queue;
    size_t queueHead = 0;
    // Set while substeps run: a handler that steps the frame again must not step this world.
    bool stepping = false;
};
