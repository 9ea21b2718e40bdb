// Cameras that follow a target module: krFloatingCamera trails its target's orientation with a
// frame-rate independent smoothing, krFixedCamera is rigidly tied to it. Both stand at an offset
// from a pivot in the target's space, turned with the view. Without a target the pivot is a
// world point and the set orientation is the view.
#pragma once

#include "interface/krCamera.h"

class krObject;

class krFollowCamera : public krCamera {
public:
    explicit krFollowCamera(krModule* owner) : krCamera(owner) {}
    const char* className() const override { return "krFollowCamera"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;

    krVector3 getPosition() override;
    krVector3 getTarget() override;
    krVector3 getUp() override;
    float getFov() override { return fov; }
    float getDistance() override { return distance; }

    // Null when none is set or it has gone.
    krModule* getFollowed() const;
    // Scene objects are followed; null clears the target.
    void setFollowed(krObject* target);
    const krQuat& getView() const { return view; }

protected:
    // The orientation the camera wants to have this frame.
    virtual krQuat desired() = 0;
    // The view jumps to the desired orientation at once.
    virtual void reset() = 0;
    // The look orientation of the target, for targets that have one apart from their matrix.
    krQuat lookOrientation(krModule* target) const;
    // Sets the view and keeps the matrix on the pose it gives, so that what tracks the camera
    // (a listener, a module below it) stands where the eye is.
    void setView(const krQuat& q);

    // The target is held by handle: a followed module can be deleted at any time.
    int32_t targetHandle = 0;
    krVector3 offset;
    krVector3 pivot;
    krQuat orientation = krQuat::identity;
    krQuat view = krQuat::identity;
    bool lookback = false;
    float distance = 100;
    float fov = 60;
};

class krFloatingCamera : public krFollowCamera {
public:
    explicit krFloatingCamera(krModule* owner) : krFollowCamera(owner) {}
    const char* className() const override { return "krFloatingCamera"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool update(float dt) override;

protected:
    krQuat desired() override;
    void reset() override;

private:
    krQuat smoothed = krQuat::identity;
    bool lockVertical = false;
    bool lockOrient = false;
    // Share of the remaining turn still left after one second.
    float smoothness = 0.1f;
};

class krFixedCamera : public krFollowCamera {
public:
    explicit krFixedCamera(krModule* owner) : krFollowCamera(owner) {}
    const char* className() const override { return "krFixedCamera"; }
    static const krClassInfo info;

    bool update(float dt) override;

protected:
    krQuat desired() override;
    void reset() override { view = desired(); }
};
