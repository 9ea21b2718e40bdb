// Controls on the screen and under the mouse: a button's fill, border and text where its layout
// puts them; clicks that activate and fire in order; the control on top taking the click; keys
// going down the active chain; hidden, disabled and click-through controls; text arguments,
// fades, and a capture whose control goes away. Input reaches the desktop as the window hands it
// over: relative mouse steps and key codes.
#include <string>

#include "gl_scene.h"
#include "interface/krControl.h"
#include "script/krVariant.h"

namespace {

constexpr krColor red{255, 0, 0, 255}, green{0, 255, 0, 255}, white{255, 255, 255, 255};

// A control that writes down the events it fires.
class Recorder : public krControl {
public:
    using krControl::krControl;
    krVariant* fireEvent(const std::string& name, const krArgs& args) override {
        log += name;
        if (args.size() == 1) {
            log += '(';
            log += args[0]->toString();
            log += ')';
        }
        log += ';';
        return krControl::fireEvent(name, args);
    }
    std::string log;
};

// The overlay is 200 x 100 pixels: a unit of the desktop is 200 pixels.
constexpr int32_t width = 200, height = 100;

class Controls : public glTesting::Scene {
protected:
    bool openDesktop() {
        if (!open(width, height)) return false;
        desktop = new krDesktop(window);
        desktop->attach();
        desktop->setVisible(true);
        desktop->setRect(0, 0, 1, 0.5f);
        viewport(0, 0, width, height, desktop, true);
        return true;
    }
    Recorder* control(krControl* owner, float l, float t, float w, float h) {
        auto* c = new Recorder(owner);
        c->attach();
        c->setVisible(true);
        c->setRect(l, t, w, h);
        return c;
    }
    // Moves the mouse to x, y of the desktop.
    void point(float x, float y) { desktop->mouseMove(x - desktop->mouseX(), y - desktop->mouseY()); }
    void click() {
        desktop->keyDown(krKeyMouseLeft);
        desktop->keyUp(krKeyMouseLeft);
    }
    uint32_t top(int32_t x, int32_t y) const { return pixel(x, height - 1 - y); }

    krDesktop* desktop = nullptr;
};

TEST_F(Controls, AButtonDrawsItsFillBorderAndTextWhereItsLayoutSays) {
    if (!openDesktop()) GTEST_SKIP() << "no window";
    Recorder* b = control(desktop, 0.1f, 0.1f, 0.3f, 0.2f);
    b->setBackground(red, true);
    b->setBorder(green, 0.02f, krBorderTop | krBorderBottom | krBorderLeft | krBorderRight);
    b->setFont("fonts/default", white, 0.08f, 0.08f);
    b->textAlign = krAlignCenter | krAlignMiddle;
    b->setText("HI");
    ASSERT_TRUE(frame());
    // Button from pixel 20 to 80 across and 20 to 60 down; the border 4 pixels wide.
    EXPECT_EQ(top(10, 10), 0u);
    EXPECT_EQ(top(90, 40), 0u);
    EXPECT_EQ(top(21, 40), 0x00FF00u);
    EXPECT_EQ(top(50, 21), 0x00FF00u);
    EXPECT_EQ(top(78, 58), 0x00FF00u);
    EXPECT_EQ(top(27, 25), 0xFF0000u);
    // The text is centred: its ink lightens the fill in the middle, and only there.
    int ink = 0, inkAtEnds = 0;
    for (int y = 32; y < 48; ++y)
        for (int x = 25; x < 75; ++x) {
            const bool lit = glTesting::green(top(x, y)) > 64;
            ink += lit;
            if (x < 36 || x > 64) inkAtEnds += lit;
        }
    EXPECT_GT(ink, 20);
    EXPECT_EQ(inkAtEnds, 0);
}

TEST_F(Controls, AClickActivatesThenFiresDownAndUpAndOnlyOverTheControl) {
    if (!openDesktop()) GTEST_SKIP() << "no window";
    Recorder* b = control(desktop, 0.1f, 0.1f, 0.3f, 0.2f);
    // The right and bottom edges are outside.
    point(0.4f, 0.2f);
    EXPECT_EQ(desktop->hotControl(), nullptr);
    point(0.39f, 0.2f);
    EXPECT_EQ(desktop->hotControl(), b);
    EXPECT_TRUE(b->isHot());
    click();
    EXPECT_EQ(b->log, "activate;mouseDown_MouseLeft;keyDown_MouseLeft;keyDown(MouseLeft);mouseUp_MouseLeft;keyUp_MouseLeft;");
    EXPECT_TRUE(b->isActive());
    point(0.9f, 0.4f);
    EXPECT_FALSE(b->isHot());
    b->log.clear();
    click();
    EXPECT_EQ(b->log, "keyDown_MouseLeft;keyDown(MouseLeft);keyUp_MouseLeft;");
}

TEST_F(Controls, TheControlOnTopTakesTheClickUnlessItLetsItThrough) {
    if (!openDesktop()) GTEST_SKIP() << "no window";
    Recorder* below = control(desktop, 0.1f, 0.1f, 0.3f, 0.2f);
    Recorder* above = control(desktop, 0.2f, 0.15f, 0.3f, 0.2f);
    point(0.25f, 0.2f);
    click();
    EXPECT_EQ(below->log, "");
    EXPECT_NE(above->log.find("mouseDown_MouseLeft"), std::string::npos);
    above->clickThrough = true;
    above->log.clear();
    point(0.26f, 0.2f);
    click();
    EXPECT_EQ(above->log.find("mouseDown"), std::string::npos);
    EXPECT_NE(below->log.find("mouseDown_MouseLeft"), std::string::npos);
    // Activating the lower one brought it to the front.
    EXPECT_EQ(desktop->getChildren().back(), below);
}

TEST_F(Controls, KeysGoDownTheActiveChainToTheFocusedControl) {
    if (!openDesktop()) GTEST_SKIP() << "no window";
    Recorder* panel = control(desktop, 0, 0, 0.5f, 0.5f);
    Recorder* field = control(panel, 0.1f, 0.1f, 0.2f, 0.1f);
    Recorder* other = control(panel, 0.1f, 0.3f, 0.2f, 0.1f);
    point(0.15f, 0.15f);
    click();
    panel->log.clear();
    field->log.clear();
    desktop->keyDown(krKeyA);
    EXPECT_EQ(panel->log, "keyDown_A;keyDown(A);");
    EXPECT_EQ(field->log, "keyDown_A;keyDown(A);");
    EXPECT_EQ(other->log, "");
    // A control that cannot activate passes the click to its parent's activation.
    other->canActivate = false;
    point(0.15f, 0.35f);
    click();
    EXPECT_FALSE(other->isActive());
    EXPECT_EQ(other->log.find("activate"), std::string::npos);
    EXPECT_NE(other->log.find("mouseDown_MouseLeft"), std::string::npos);
    EXPECT_TRUE(field->isActive());
}

TEST_F(Controls, HiddenAndDisabledControlsTakeNoInputAndHidingDeactivates) {
    if (!openDesktop()) GTEST_SKIP() << "no window";
    Recorder* b = control(desktop, 0.1f, 0.1f, 0.3f, 0.2f);
    point(0.2f, 0.2f);
    click();
    ASSERT_TRUE(b->isActive());
    b->log.clear();
    b->setVisible(false);
    EXPECT_EQ(b->log, "deactivate;");
    point(0.21f, 0.2f);
    click();
    EXPECT_EQ(b->log, "deactivate;");
    b->setVisible(true);
    b->setEnabled(false);
    point(0.22f, 0.2f);
    click();
    EXPECT_EQ(b->log, "deactivate;");
}

TEST_F(Controls, TextArgumentsFadesAndACaptureWhoseControlGoes) {
    if (!openDesktop()) GTEST_SKIP() << "no window";
    Recorder* label = control(desktop, 0, 0, 0.5f, 0.1f);
    label->setText("%0 km/h, 100%% and %a%5.");
    krVariant* speed = new krVInt(88);
    label->setArg(0, speed);
    speed->release();
    ASSERT_TRUE(frame());
    EXPECT_STREQ(label->shownText(), "88 km/h, 100% and %.");
    label->blendTo(0, 1);
    for (int i = 0; i < 30; ++i) frame(0.05f);
    EXPECT_FALSE(label->isVisible());
    krVariant* v = label->getMember("visibility", nullptr, {});
    EXPECT_EQ(v->toFloat(), 0);
    v->release();
    // A button goes away while the left button holds it: no mouseUp, and the capture is over.
    Recorder* held = control(desktop, 0.6f, 0.1f, 0.2f, 0.2f);
    point(0.7f, 0.2f);
    desktop->keyDown(krKeyMouseLeft);
    EXPECT_EQ(desktop->capturedControl(), held);
    held->dispose();
    EXPECT_EQ(desktop->capturedControl(), nullptr);
    desktop->keyUp(krKeyMouseLeft);
}

}  // namespace
