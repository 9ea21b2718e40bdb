// The desktop: the mouse position summed from relative steps, the hot and captured controls,
// clicks, and keys passed down the active chain.
#include <algorithm>
#include <cmath>

#include "interface/krControl.h"
#include "interface/krInputKeys.h"

namespace {

bool isMouseButton(int32_t code) { return code >= krKeyMouseLeft && code <= krKeyMouseRight; }
bool isModifier(int32_t code) { return code == krKeyControl || code == krKeyAlt; }

krControl* controlOf(int32_t handle) {
    return handle ? dynamic_cast<krControl*>(krScriptObject::fromHandle(handle)) : nullptr;
}

}  // namespace

krControl* krDesktop::hotControl() const { return controlOf(hotOne); }
krControl* krDesktop::capturedControl() const { return controlOf(captured); }

krControl* krDesktop::trackHot() {
    krControl* under = findChildAt(mouseXPos - absX, mouseYPos - absY);
    krControl* present = hotControl();
    if (under != present) {
        krModuleHold hold{under, present};
        if (present) present->mouseLeave();
        hotOne = under ? under->handle() : 0;
        if (under) under->mouseEnter();
    }
    return under;
}

void krDesktop::mouseMove(float dx, float dy) {
    krModuleHold hold{this};
    mouseXPos = std::clamp(mouseXPos + dx, 0.0f, std::max(width, 0.0f));
    mouseYPos = std::clamp(mouseYPos + dy, 0.0f, std::max(height, 0.0f));
    // Steps that are not numbers leave the mouse where it was.
    if (!std::isfinite(mouseXPos) || !std::isfinite(mouseYPos)) mouseXPos = mouseYPos = 0;
    if (krControl* pointer = controlOf(mouse)) pointer->setPosition(mouseXPos, mouseYPos);
    if (krControl* c = capturedControl()) {
        c->mouseMove(mouseXPos - c->absoluteX(), mouseYPos - c->absoluteY());
    } else if (krControl* under = trackHot()) {
        under->mouseMove(mouseXPos - under->absoluteX(), mouseYPos - under->absoluteY());
    }
    krControl::mouseMove(dx, dy);
}

void krDesktop::keyDown(int32_t code) {
    krModuleHold hold{this};
    if (isMouseButton(code)) {
        capturedButton = code;
        krControl* under = trackHot();
        captured = under ? under->handle() : 0;
        if (under) {
            krModuleHold held{under};
            under->activateChain();
            if (capturedControl() == under)
                under->mouseDown(mouseXPos - under->absoluteX(), mouseYPos - under->absoluteY(), code);
        }
    } else if (isModifier(code)) {
        modifierDown = true;
    } else if (modifierDown && hotKey(code)) {
        return;
    }
    if (!isTornDown()) krControl::keyDown(code);
}

void krDesktop::keyChar(int32_t character) { krControl::keyChar(character); }

void krDesktop::keyUp(int32_t code) {
    krModuleHold hold{this};
    if (isMouseButton(code)) {
        if (krControl* c = capturedControl()) {
            krModuleHold held{c};
            const bool ends = code == capturedButton;
            if (ends) captured = 0;
            c->mouseUp(mouseXPos - c->absoluteX(), mouseYPos - c->absoluteY(), code);
            if (ends && !isTornDown()) trackHot();
        }
    } else if (isModifier(code)) {
        modifierDown = false;
    }
    if (!isTornDown()) krControl::keyUp(code);
}

void krDesktop::childGone(krControl* child) {
    if (!child) return;
    const int32_t h = child->handle();
    if (hotOne == h) hotOne = 0;
    if (captured == h) captured = 0;
    if (mouse == h) mouse = 0;
}

void krDesktop::childrenChanged() {
    if (krControl* pointer = controlOf(mouse); pointer && pointer->getOwner() == this && children.back() != pointer)
        pointer->moveToLast();
}

void krDesktop::deinit() {
    mouse = 0;
    krControl::deinit();
}

void krDesktop::setActive(bool on) {
    krModuleHold hold{this};
    if (on) {
        mouseMove(0, 0);
        return;
    }
    if (krControl* c = capturedControl()) {
        captured = 0;
        c->mouseUp(mouseXPos - c->absoluteX(), mouseYPos - c->absoluteY(), capturedButton);
    }
    if (krControl* h = hotControl()) {
        hotOne = 0;
        h->mouseLeave();
    }
}

void krDesktop::setMouse(krControl* control) {
    mouse = control ? control->handle() : 0;
    if (!control) return;
    control->clickThrough = true;
    mouseXPos = control->left;
    mouseYPos = control->top;
}
