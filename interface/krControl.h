// krControl: the one widget of the engine, a rectangle with fill, image, border and one line of
// text, nested in other controls; krDesktop: the root of such a tree, which owns the mouse, finds
// the control under it, and passes keys down the chain of active controls. Menus, panels and
// instruments are trees of controls built by scripts, drawn through dynamic items in an overlay.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/krColor.h"
#include "core/krModule.h"
#include "interface/krInputObject.h"
#include "render/krDynamicData.h"

class krVideoItem;

// The sides of a border (the script constants BORDER_TOP and on).
inline constexpr int32_t krBorderTop = 1;
inline constexpr int32_t krBorderBottom = 2;
inline constexpr int32_t krBorderLeft = 4;
inline constexpr int32_t krBorderRight = 8;
// Alignment of a control's text (the script constants ALIGN_TOP and on).
inline constexpr int32_t krAlignTop = 1;
inline constexpr int32_t krAlignMiddle = 2;
inline constexpr int32_t krAlignBottom = 4;
inline constexpr int32_t krAlignLeft = 8;
inline constexpr int32_t krAlignCenter = 16;
inline constexpr int32_t krAlignRight = 32;

class krControl : public krModule, public krInputObject {
public:
    // Arguments a text template can refer to: %0 to %9.
    static constexpr int32_t argumentCount = 10;
    // The font of a control's text until the script names another.
    static constexpr const char* defaultFont = "fonts/verdana";

    explicit krControl(krModule* owner);
    ~krControl() override;
    const char* className() const override { return "krControl"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // Blending and the expansion of a text with arguments.
    bool update(float dt) override;
    void removeChild(krModule* child) override;
    void setVisible(bool v) override;
    // The items go with the video that drew them.
    void clearItems() override;

    virtual void updateGeometry();
    virtual void updateFill();
    virtual void updateTextLayout();
    virtual void setActiveChild(krControl* child);
    // The deepest control at x, y (relative to this one) below this one, or null.
    virtual krControl* findChildAt(float x, float y);
    void mouseMove(float x, float y) override;
    virtual void mouseDown(float x, float y, int32_t code);
    virtual void mouseUp(float x, float y, int32_t code);
    virtual void mouseEnter();
    virtual void mouseLeave();
    // A key pressed with Control or Alt, offered down the active chain; true when taken.
    virtual bool hotKey(int32_t code);
    void keyDown(int32_t code) override;
    void keyChar(int32_t character) override;
    void keyUp(int32_t code) override;
    virtual void setRect(float left, float top, float width, float height);
    virtual void setPosition(float left, float top);
    virtual void setSize(float width, float height);
    virtual void setImage(const std::string& name, int32_t alpha);
    virtual void setBackground(krColor color, bool clearImage);
    virtual void setHotBackground(krColor color);
    virtual void setBorder(krColor color, float width, int32_t sides);
    virtual void setFont(const std::string& name, krColor color, float width, float height);
    virtual void setTextShadow(krColor color, float dx, float dy);
    virtual void setText(const std::string& text);
    virtual void setArg(int32_t index, krVariant* value);
    virtual void setActiveState(bool value);
    virtual void setVisibility(float v);
    virtual void blendTo(float target, float seconds);
    // Activates this control and then its parents up the tree.
    virtual void activateChain();
    // A control left the tree below this one; the news travels up to the desktop.
    virtual void childGone(krControl* child);

    // The owner, if it is a control.
    krControl* parentControl() const;
    float absoluteX() const { return absX; }
    float absoluteY() const { return absY; }
    bool isActive() const { return active; }
    bool isHot() const { return hot; }
    // The text as drawn: the template, or its expansion.
    const char* shownText() const { return textData.text; }

    float left = 0, top = 0, width = 0, height = 0;
    bool canActivate = true;
    // The mouse search passes over this control and its children.
    bool clickThrough = false;
    int32_t textAlign = krAlignTop | krAlignLeft;

protected:
    // Runs a call on the active child with it held; a child released meanwhile is forgotten.
    template <class Call>
    void withActiveChild(Call call);
    // Colours of the fill and border with alphas scaled by visibility.
    void recolor();
    void colorBorder();

    float absX = 0, absY = 0;
    krColor background{255, 255, 255, 0};
    krColor hotBackground{255, 255, 255, 0};
    krColor borderColor{0, 0, 0, 0};
    krColor textColor{255, 255, 255, 255};
    krColor shadowColor{0, 0, 0, 128};
    // The shadow draws once a script asks for one: at the default offset of 0 it would only lie
    // under the text.
    bool shadowWanted = false;
    std::array<krVertex, 4> fillVertices{};
    std::array<krVertex, 16> borderVertices{};
    krDynamicData fill;
    krDynamicData border;
    krTextData textData;
    krVideoItem* fillItem = nullptr;
    krVideoItem* borderItem = nullptr;
    krVideoItem* textItem = nullptr;
    std::string expandedText;
    std::string text;
    bool formatCheck = true;
    bool hasArguments = false;
    bool active = false;
    bool hot = false;
    bool dragging = false;
    std::array<krVariant*, argumentCount> arguments{};
    float borderWidth = 0;
    int32_t borderSides = krBorderTop | krBorderBottom | krBorderLeft | krBorderRight;
    float dragStartX = 0, dragStartY = 0;
    // Held by handle, as the script may delete either at any time.
    int32_t activeChild = 0;
    int32_t dragTarget = 0;
    bool blending = false;
    float blendTarget = 1, blendSpeed = 1;
    float visibility = 1;
    // Left, top, right, bottom.
    float margins[4] = {0.01f, 0.005f, 0.01f, 0.005f};
};

class krDesktop : public krControl {
public:
    explicit krDesktop(krModule* owner) : krControl(owner) {}
    const char* className() const override { return "krDesktop"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // Relative steps of the mouse, summed into a position on the desktop.
    void mouseMove(float dx, float dy) override;
    void keyDown(int32_t code) override;
    void keyChar(int32_t character) override;
    void keyUp(int32_t code) override;
    void childGone(krControl* child) override;
    void childrenChanged() override;
    void deinit() override;
    void setActive(bool active) override;
    // The control that serves as pointer: it follows the mouse and never takes a click.
    virtual void setMouse(krControl* control);

    float mouseX() const { return mouseXPos; }
    float mouseY() const { return mouseYPos; }
    krControl* hotControl() const;
    krControl* capturedControl() const;

private:
    // Finds the control under the mouse and moves the hot mark to it.
    krControl* trackHot();

    float mouseXPos = 0, mouseYPos = 0;
    int32_t mouse = 0;
    int32_t captured = 0;
    int32_t hotOne = 0;
    int32_t capturedButton = 0;
    bool modifierDown = false;
};
