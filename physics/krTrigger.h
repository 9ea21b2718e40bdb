// krTrigger: a box in a world that tells scripts when bodies come into it and leave it. It finds
// them through the world's grid, the only user of that grid, once per substep.
#pragma once

#include <cstdint>
#include <vector>

#include "core/krBox.h"
#include "core/krModule.h"

class krObject;
class krPhysObj;
struct krClassInfo;

class krTrigger : public krModule {
public:
    // box is in world coordinates, or relative to the tracked object's position once one is set.
    krTrigger(krModule* world, const krBox& box);
    ~krTrigger() override;
    const char* className() const override { return "krTrigger"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // Fires "exit" for the bodies that left since the last update, then "enter" for those that
    // came in, then updates the children.
    bool update(float dt) override;

    // Null when none is set or it has gone.
    krObject* getTracked() const;

    krBox box;

private:
    // Fires the event for each of bodies that is not in except (both ordered) and not the tracked
    // object.
    void fireFor(const char* event, const std::vector<krPhysObj*>& bodies, const std::vector<krPhysObj*>& except,
                 const krObject* trackedObject);

    // Held by handle: the tracked object may be deleted at any time.
    int32_t tracked = 0;
    // The bodies inside at the last update, ordered by address as the grid yields them. Each
    // holds a reference, so that one deleted meanwhile is still there to be let go of.
    std::vector<krPhysObj*> inside;
    std::vector<krPhysObj*> now;
};
