// krInputObject: what keyboard and mouse input goes to. A module takes it as a further base; the
// window hands its input to one such target at a time. krBufferedInput is the target that only
// remembers which keys are held, for classes that poll keys in their update.
#pragma once

#include <cstdint>

#include "interface/krInputKeys.h"

class krInputObject {
public:
    virtual ~krInputObject() = default;

    // The cursor moved this much since the last frame, both axes as fractions of the window's
    // width; sent only while the mouse is captured.
    virtual void mouseMove(float, float) {}
    // A key went down, or auto-repeated.
    virtual void keyDown(int32_t) {}
    // A character was typed, 0 to 255.
    virtual void keyChar(int32_t) {}
    virtual void keyUp(int32_t) {}
    // The object became, or stopped being, the target in force.
    virtual void setActive(bool) {}
};

class krBufferedInput : public krInputObject {
public:
    void keyDown(int32_t code) override;
    void keyUp(int32_t code) override;
    // Either way every key is let go: a key held while the target changed must not stick.
    void setActive(bool active) override;

    bool isHeld(int32_t code) const { return code >= 0 && code < krKeyCount && keys[code]; }

protected:
    // 1 while the key is held. Wheel codes only ever go down; their owner clears them.
    uint8_t keys[krKeyCount] = {};
};
