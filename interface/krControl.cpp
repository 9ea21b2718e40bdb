// Controls: geometry, fill, border and text through dynamic items, the active chain, the mouse
// search, blending and text arguments.
#include "interface/krControl.h"

#include <algorithm>

#include "core/krMain.h"
#include "interface/krInputKeys.h"
#include "render/krVideo.h"
#include "render/krVideoItem.h"
#include "script/krVariant.h"

namespace {

// Vertices 8 to 15 of the border repeat corners of the top and bottom sides: the left side takes
// 0, 1, 6, 7 and the right side 2, 3, 4, 5.
constexpr int sideCopies[8] = {0, 1, 6, 7, 2, 3, 4, 5};

krColor scaled(krColor c, float visibility) {
    c.a = static_cast<uint8_t>(std::clamp(static_cast<float>(c.a) * visibility, 0.0f, 255.0f));
    return c;
}

}  // namespace

krControl::krControl(krModule* owner) : krModule(owner) {
    for (krVertex& v : fillVertices) v.normal = {0, 0, 1};
    for (krVertex& v : borderVertices) v.normal = {0, 0, 1};
    fillVertices[1].u = fillVertices[2].u = 1;
    fillVertices[2].v = fillVertices[3].v = 1;
    fill.vertices = fillVertices.data();
    fill.count = static_cast<int32_t>(fillVertices.size());
    border.vertices = borderVertices.data();
    border.count = static_cast<int32_t>(borderVertices.size());
    textData.font = defaultFont;
    textData.size = {0.015f, 0.015f, 1};
    textData.color = textColor;
    recolor();
}

krControl::~krControl() {
    // The items read the records: they go first.
    delete fillItem;
    delete borderItem;
    delete textItem;
    for (krVariant*& a : arguments)
        if (a) a->release();
}

void krControl::clearItems() {
    fillItem = borderItem = textItem = nullptr;
    krModule::clearItems();
}

krControl* krControl::parentControl() const { return dynamic_cast<krControl*>(owner); }

void krControl::updateGeometry() {
    absX = left;
    absY = top;
    if (krControl* p = parentControl()) {
        absX += p->absX;
        absY += p->absY;
    }
    const float b = borderWidth, x = absX, y = absY, w = width, h = height;
    fillVertices[0].position = {x + b, y + b, 0};
    fillVertices[1].position = {x + w - b, y + b, 0};
    fillVertices[2].position = {x + w - b, y + h - b, 0};
    fillVertices[3].position = {x + b, y + h - b, 0};
    const krVector3 corners[8] = {{x + b, y + b, 0},         {x, y, 0},         {x + w, y, 0},
                                  {x + w - b, y + b, 0},     {x + w - b, y + h - b, 0},
                                  {x + w, y + h, 0},         {x, y + h, 0},     {x + b, y + h - b, 0}};
    for (int i = 0; i < 8; ++i) borderVertices[static_cast<size_t>(i)].position = corners[i];
    for (int i = 0; i < 8; ++i) borderVertices[static_cast<size_t>(8 + i)].position = corners[sideCopies[i]];
    updateTextLayout();
    for (krModule* child : children)
        if (auto* c = dynamic_cast<krControl*>(child)) c->updateGeometry();
}

void krControl::recolor() {
    const krColor c = scaled(hot || active ? hotBackground : background, visibility);
    for (krVertex& v : fillVertices) v.color = c;
    colorBorder();
    textData.color = scaled(textColor, visibility);
    if (shadowWanted) textData.shadowColor = scaled(shadowColor, visibility);
}

void krControl::colorBorder() {
    const krColor c = scaled(borderColor, visibility);
    for (size_t i = 0; i < borderVertices.size(); ++i) {
        borderVertices[i].color = c;
        if (!(borderSides & (1 << (i / 4)))) borderVertices[i].color.a = 0;
    }
}

void krControl::updateFill() {
    const krColor c = scaled(hot || active ? hotBackground : background, visibility);
    for (krVertex& v : fillVertices) v.color = c;
    if (!video) return;
    if (!fillItem) fillItem = video->createDynamicItem(this, &fill, krDynamicKind::interfaceQuads);
    else video->setItemData(fillItem, &fill);
}

void krControl::updateTextLayout() {
    if (!textItem || !video) return;
    const float fontHeight = textData.size.y;
    float x = absX + margins[0];
    if (textAlign & krAlignRight) x = absX + width - margins[2] - video->textWidth(textItem);
    else if (textAlign & krAlignCenter) x = absX + (width - video->textWidth(textItem)) / 2;
    float y = absY + margins[1];
    if (textAlign & krAlignBottom) y = absY + height - margins[3] - fontHeight;
    else if (textAlign & krAlignMiddle) y = absY + (height - fontHeight) / 2;
    textData.position = {x, y, 0};
}

template <class Call>
void krControl::withActiveChild(Call call) {
    auto* child = dynamic_cast<krControl*>(krScriptObject::fromHandle(activeChild));
    if (!child) {
        activeChild = 0;
        return;
    }
    krModuleHold hold{child};
    call(child);
    if (child->isTornDown() && activeChild == child->handle()) activeChild = 0;
}

void krControl::setActiveChild(krControl* child) {
    auto* present = dynamic_cast<krControl*>(krScriptObject::fromHandle(activeChild));
    if (present && present != child) withActiveChild([](krControl* c) { c->setActiveState(false); });
    activeChild = child ? child->handle() : 0;
}

krControl* krControl::findChildAt(float x, float y) {
    for (auto it = children.rbegin(); it != children.rend(); ++it) {
        auto* c = dynamic_cast<krControl*>(*it);
        if (!c || c->clickThrough || !c->isVisible() || !c->isEnabled()) continue;
        if (x < c->left || y < c->top || x >= c->left + c->width || y >= c->top + c->height) continue;
        krControl* deeper = c->findChildAt(x - c->left, y - c->top);
        return deeper ? deeper : c;
    }
    return nullptr;
}

void krControl::mouseMove(float x, float y) {
    auto* target = dynamic_cast<krControl*>(krScriptObject::fromHandle(dragTarget));
    if (dragging && target) target->setPosition(x + target->left - dragStartX, y + target->top - dragStartY);
}

void krControl::mouseDown(float x, float y, int32_t code) {
    if (code == krKeyMouseLeft) {
        dragStartX = x;
        dragStartY = y;
        if (dragTarget && krScriptObject::fromHandle(dragTarget)) dragging = true;
    }
    if (krVariant* r = fireEvent("mouseDown_" + keyName(code), noArgs)) r->release();
}

void krControl::mouseUp(float, float, int32_t code) {
    if (code == krKeyMouseLeft) dragging = false;
    if (krVariant* r = fireEvent("mouseUp_" + keyName(code), noArgs)) r->release();
}

void krControl::mouseEnter() {
    if (krControl* p = parentControl()) p->mouseEnter();
    hot = true;
    if (hotBackground != background) updateFill();
}

void krControl::mouseLeave() {
    if (krControl* p = parentControl()) p->mouseLeave();
    hot = false;
    if (hotBackground != background) updateFill();
}

bool krControl::hotKey(int32_t code) {
    bool taken = false;
    withActiveChild([&](krControl* c) { taken = c->hotKey(code); });
    return taken;
}

void krControl::keyDown(int32_t code) {
    krModuleHold hold{this};
    if (krVariant* r = fireEvent("keyDown_" + keyName(code), noArgs)) r->release();
    krArgs args{new krVString(keyName(code))};
    if (krVariant* r = fireEvent("keyDown", args)) r->release();
    args[0]->release();
    if (!isTornDown()) withActiveChild([&](krControl* c) { c->keyDown(code); });
}

void krControl::keyChar(int32_t character) {
    withActiveChild([&](krControl* c) { c->keyChar(character); });
}

void krControl::keyUp(int32_t code) {
    krModuleHold hold{this};
    if (krVariant* r = fireEvent("keyUp_" + keyName(code), noArgs)) r->release();
    if (!isTornDown()) withActiveChild([&](krControl* c) { c->keyUp(code); });
}

void krControl::setRect(float l, float t, float w, float h) {
    left = l;
    top = t;
    width = w;
    height = h;
    updateGeometry();
}

void krControl::setPosition(float l, float t) {
    left = l;
    top = t;
    updateGeometry();
}

void krControl::setSize(float w, float h) {
    width = w;
    height = h;
    updateGeometry();
}

void krControl::setImage(const std::string& name, int32_t alpha) {
    fill.textures[0] = name;
    const auto a = static_cast<uint8_t>(std::clamp(alpha, 0, 255));
    background = hotBackground = krColor(255, 255, 255, a);
    updateFill();
}

void krControl::setBackground(krColor color, bool clearImage) {
    background = hotBackground = color;
    if (clearImage) fill.textures[0].clear();
    updateFill();
}

void krControl::setHotBackground(krColor color) {
    hotBackground = color;
    updateFill();
}

void krControl::setBorder(krColor color, float w, int32_t sides) {
    borderColor = color;
    borderSides = sides;
    colorBorder();
    borderWidth = w;
    updateGeometry();
    if (!borderItem && video) borderItem = video->createDynamicItem(this, &border, krDynamicKind::interfaceQuads);
}

void krControl::setFont(const std::string& name, krColor color, float w, float h) {
    textData.font = name;
    textColor = color;
    textData.color = scaled(color, visibility);
    textData.size = {w, h, 1};
    // The item reads the font by name when it is made: a new face needs a new item.
    if (textItem && video) {
        delete textItem;
        textItem = video->createTextItem(this, &textData, krDynamicKind::interfaceText);
    }
    updateTextLayout();
}

void krControl::setTextShadow(krColor color, float dx, float dy) {
    shadowColor = color;
    shadowWanted = true;
    textData.shadowColor = scaled(color, visibility);
    textData.shadowOffset = {dx, dy, 0};
}

void krControl::setText(const std::string& value) {
    text = value;
    if (formatCheck) {
        hasArguments = false;
        for (size_t i = 0; i + 1 < text.size(); ++i) {
            if (text[i] != '%') continue;
            if (text[i + 1] == '%') ++i;
            else hasArguments = true;
        }
    }
    textData.text = hasArguments ? nullptr : text.c_str();
    if (video) {
        if (!textItem) textItem = video->createTextItem(this, &textData, krDynamicKind::interfaceText);
        updateTextLayout();
    }
}

void krControl::setArg(int32_t index, krVariant* value) {
    if (index < 0 || index >= argumentCount) return;
    krVariant*& slot = arguments[static_cast<size_t>(index)];
    if (value) value->addRef();
    if (slot) slot->release();
    slot = value;
}

void krControl::setActiveState(bool value) {
    if (!canActivate || value == active) return;
    krModuleHold hold{this};
    active = value;
    krControl* parent = parentControl();
    if (!value) {
        if (krVariant* r = fireEvent("deactivate", noArgs)) r->release();
        if (parent && parent->activeChild == handle()) parent->activeChild = 0;
        withActiveChild([](krControl* c) { c->setActiveState(false); });
    } else {
        if (krVariant* r = fireEvent("activate", noArgs)) r->release();
        if (parent && !isTornDown()) {
            parent->setActiveChild(this);
            moveToLast();
        }
        setVisible(true);
        auto* remembered = dynamic_cast<krControl*>(krScriptObject::fromHandle(activeChild));
        if (remembered && remembered->isVisible()) withActiveChild([](krControl* c) { c->setActiveState(true); });
        else activeChild = 0;
    }
    if (background != hotBackground) updateFill();
}

void krControl::setVisible(bool v) {
    if (!v && active) setActiveState(false);
    krModule::setVisible(v);
}

void krControl::setVisibility(float v) {
    visibility = v;
    recolor();
    if (fillItem && video) video->setItemData(fillItem, &fill);
}

void krControl::blendTo(float target, float seconds) {
    if (!isVisible()) visibility = 0;
    setVisible(true);
    blending = true;
    blendTarget = target;
    blendSpeed = (target - visibility) / seconds;
}

void krControl::activateChain() {
    krModuleHold hold{this};
    setActiveState(true);
    if (krControl* p = parentControl(); p && !isTornDown()) p->activateChain();
}

void krControl::childGone(krControl* child) {
    if (krControl* p = parentControl()) p->childGone(child);
}

void krControl::removeChild(krModule* child) {
    if (child && activeChild == child->handle()) activeChild = 0;
    // The news goes up while the child is surely still in memory: leaving the list may free it.
    if (auto* c = dynamic_cast<krControl*>(child)) childGone(c);
    krModule::removeChild(child);
}

bool krControl::update(float dt) {
    if (blending) {
        float v = dt * blendSpeed + visibility;
        if ((blendSpeed > 0 && v >= blendTarget) || (blendSpeed < 0 && v <= blendTarget) || !(blendSpeed != 0)) {
            v = blendTarget;
            blending = false;
            if (blendTarget == 0) setVisible(false);
        }
        setVisibility(v);
    }
    if (hasArguments && isVisible()) {
        expandedText.clear();
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '%' || i + 1 >= text.size()) {
                expandedText += text[i];
                continue;
            }
            const char next = text[++i];
            if (next >= '0' && next <= '9') {
                if (krVariant* a = arguments[static_cast<size_t>(next - '0')]) expandedText += a->toString();
            } else {
                expandedText += '%';
            }
        }
        textData.text = expandedText.c_str();
        updateTextLayout();
    }
    return krModule::update(dt);
}
