// krFlyingCamera: a free camera steered by the keyboard (arrows or W, A, S, D; Shift for speed)
// and the captured mouse. It hears input only while it is the window's input target.
#pragma once

#include "interface/krCamera.h"
#include "interface/krInputObject.h"

class krFlyingCamera : public krCamera, public krBufferedInput {
public:
    explicit krFlyingCamera(krModule* owner) : krCamera(owner) {}
    const char* className() const override { return "krFlyingCamera"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool update(float dt) override;
    void mouseMove(float dx, float dy) override;

    krVector3 getPosition() override { return position; }
    krVector3 getTarget() override;
    krVector3 getUp() override;
    float getFov() override { return fov; }
    float getDistance() override { return distance; }

    void setPosition(const krVector3& p) { position = p; }
    void setOrientation(const krQuat& q) { orientation = q; }
    const krQuat& getOrientation() const { return orientation; }

private:
    krVector3 position;
    krQuat orientation = krQuat::identity;
    float speed = 10;
    float distance = 100;
    float fov = 60;
};
