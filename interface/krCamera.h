// krCamera: what a viewport looks through. The video asks it five things at every draw: where it
// stands, a point one unit ahead, which way is up, the field of view and the far plane. The
// classes differ only in how they come to their pose; all look along their own -Z with +Y up.
#pragma once

#include "core/krModule.h"
#include "core/krQuat.h"
#include "core/krVector3.h"

class krCamera : public krModule {
public:
    explicit krCamera(krModule* owner) : krModule(owner) {}
    const char* className() const override { return "krCamera"; }
    static const krClassInfo info;

    virtual krVector3 getPosition() = 0;
    virtual krVector3 getTarget() = 0;
    virtual krVector3 getUp() = 0;
    // Degrees.
    virtual float getFov() = 0;
    virtual float getDistance() = 0;

    // The view has jumped at least once (a look back): viewports then re-sort transparent
    // items every frame, since an order worked out for the old view means nothing.
    bool isCut() const { return cut; }

protected:
    bool cut = false;
};

// A module whose view turns apart from its body (a walking character's head) offers its look
// orientation here; cameras that follow it turn with it. Others look along their matrix alone.
class krLookSource {
public:
    virtual ~krLookSource() = default;
    virtual krQuat getLookOrientation() = 0;
};

// Script arguments (x, y, z) as a vector; the caller has checked that there are three.
krVector3 krCameraVectorArgs(const krArgs& args);
// Script arguments (angle in radians, axis x, y, z) as a rotation; the caller has checked four.
krQuat krCameraRotationArgs(const krArgs& args);
