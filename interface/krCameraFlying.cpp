// The flying camera: keys move it along its own axes, mouse moves turn it.
#include "interface/krCameraFlying.h"

#include "script/krClassInfo.h"
#include "script/krVBound.h"

namespace {

const krMemberInfo cameraMembers[] = {
    {"setPosition", krCall, "(x, y, z)", "where it stands"},
    {"setOrientation", krCall, "(angle, x, y, z)", "turns to angle radians about the axis"},
    {"x", krRead | krWrite, "float", "position"},
    {"y", krRead | krWrite, "float", "position"},
    {"z", krRead | krWrite, "float", "position"},
    {"speed", krRead | krWrite, "float", "metres a second while a move key is held; Shift makes it four times"},
    {"distance", krRead | krWrite, "float", "the far plane"},
    {"fov", krRead | krWrite, "float", "field of view in degrees"},
};

// Shift makes a fast camera for crossing a big scene.
constexpr float shiftFactor = 4;
// Radians of turn per window width of mouse travel.
constexpr float mouseTurn = 2;
}

const krClassInfo krFlyingCamera::info = {"krFlyingCamera", "krCamera", "new_flyingCamera", cameraMembers, {},
                                          "a free camera: arrows or W, A, S, D move it and the captured mouse turns it "
                                          "while it is the window's input target"};

bool krFlyingCamera::update(float dt) {
    const float step = dt * speed * (isHeld(krKeyShift) ? shiftFactor : 1);
    // Each held key adds its own move, so opposite keys cancel.
    const struct {
        int32_t key, alternative;
        krVector3 move;
    } moves[] = {
        {krKeyLeft, krLetterKey('A'), {-step, 0, 0}},
        {krKeyRight, krLetterKey('D'), {step, 0, 0}},
        {krKeyUp, krLetterKey('W'), {0, 0, -step}},
        {krKeyDown, krLetterKey('S'), {0, 0, step}},
    };
    for (const auto& m : moves)
        if (isHeld(m.key) || isHeld(m.alternative)) position += rotate(orientation, m.move);
    setMatrix(krMatrix::fromQuatTranslation(orientation, position));
    return krModule::update(dt);
}

void krFlyingCamera::mouseMove(float dx, float dy) {
    // Heading turns about the world's up axis, pitch about the camera's own side axis.
    orientation = multiply(orientation, krQuat::fromAxisAngle(mouseTurn * dx, krVector3::axisY));
    orientation = multiply(krQuat::fromAxisAngle(mouseTurn * dy, krVector3::axisX), orientation);
}

krVector3 krFlyingCamera::getTarget() {
    return position + rotate(orientation, krVector3::negAxisZ);
}

krVector3 krFlyingCamera::getUp() {
    return rotate(orientation, krVector3::axisY);
}

krVariant* krFlyingCamera::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "setPosition" && args.size() == 3) {
        position = krCameraVectorArgs(args);
        return nullptr;
    }
    if (name == "setOrientation" && args.size() == 4) {
        orientation = krCameraRotationArgs(args);
        return nullptr;
    }
    if (name == "x") return new krVFloatPtr(&position.x, this);
    if (name == "y") return new krVFloatPtr(&position.y, this);
    if (name == "z") return new krVFloatPtr(&position.z, this);
    if (name == "speed") return new krVFloatPtr(&speed, this);
    if (name == "distance") return new krVFloatPtr(&distance, this);
    if (name == "fov") return new krVFloatPtr(&fov, this);
    return krCamera::getMember(name, caller, args);
}

void krFlyingCamera::setMember(const std::string& name, krVariant* value) {
    if (name == "x") position.x = value->toFloat();
    else if (name == "y") position.y = value->toFloat();
    else if (name == "z") position.z = value->toFloat();
    else if (name == "speed") speed = value->toFloat();
    else if (name == "distance") distance = value->toFloat();
    else if (name == "fov") fov = value->toFloat();
    else krCamera::setMember(name, value);
}
