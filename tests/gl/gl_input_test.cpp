// Input through the window: synthetic events of the video layer pushed between frames reach the
// target in force and fire the key events; the wheel, auto-repeat, typed text, the captured mouse.
#include "gl_testing.h"

#include "interface/krCameraFlying.h"
#include "interface/krInputObject.h"
#include "script/krScript.h"

using glTesting::reports;
using namespace glTesting::events;
class GLInput : public glTesting::Window {
protected:
    // Opens the window and lets the window system's own first messages (focus) pass, so that a
    // test sees only the events it made.
    void openQuietly() {
        ASSERT_TRUE(open());
        ASSERT_TRUE(frame());
        window->fired.clear();
    }
};

namespace {
struct Recorder : krModule, krInputObject {
    using krModule::krModule;
    std::vector<int32_t> downs, ups, chars;
    std::vector<std::pair<float, float>> moves;
    std::vector<bool> activations;
    void keyDown(int32_t code) override { downs.push_back(code); }
    void keyUp(int32_t code) override { ups.push_back(code); }
    void keyChar(int32_t c) override { chars.push_back(c); }
    void mouseMove(float dx, float dy) override { moves.push_back({dx, dy}); }
    void setActive(bool active) override { activations.push_back(active); }
};

}

TEST_F(GLInput, KeysReachTheTargetAndFireNamedEvents) {
    openQuietly();
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    key(true, symA);
    key(true, symF13);
    key(false, symA);
    key(true, symKeypad0);
    key(true, symCapsLock);
    ASSERT_TRUE(frame());
    EXPECT_EQ(window->fired, (std::vector<std::string>{"keyDown_A", "keyDown_F13", "keyUp_A", "keyDown_Numpad0",
                                                      "keyDown_Undefined"}));
    EXPECT_EQ(target->downs, (std::vector<int32_t>{krLetterKey('A'), krFunctionKey(13), krNumpadKey(0), 0}));
    EXPECT_EQ(target->ups, (std::vector<int32_t>{krLetterKey('A')}));
}

TEST_F(GLInput, LeftAndRightModifiersGiveOneCode) {
    openQuietly();
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    for (int32_t k : {symLeftShift, symRightShift, symLeftCtrl, symRightCtrl, symLeftAlt, symRightAlt}) key(true, k);
    ASSERT_TRUE(frame());
    EXPECT_EQ(target->downs, (std::vector<int32_t>{krKeyShift, krKeyShift, krKeyControl, krKeyControl, krKeyAlt,
                                                   krKeyAlt}));
    EXPECT_EQ(window->fired.front(), "keyDown_Shift");
}

TEST_F(GLInput, AutoRepeatFiresOnceButReachesTheTargetEachTime) {
    openQuietly();
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    key(true, symSpace);
    key(true, symSpace, true);
    key(true, symSpace, true);
    key(false, symSpace);
    ASSERT_TRUE(frame());
    EXPECT_EQ(window->fired, (std::vector<std::string>{"keyDown_Space", "keyUp_Space"}));
    EXPECT_EQ(target->downs.size(), 3u);
}

TEST_F(GLInput, WheelStepsAddUpAndOnlyGoDown) {
    openQuietly();
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    // Half steps: the second completes one step up.
    wheel(0.5f);
    ASSERT_TRUE(frame());
    EXPECT_TRUE(target->downs.empty());
    wheel(0.5f);
    ASSERT_TRUE(frame());
    EXPECT_EQ(target->downs, std::vector<int32_t>{krKeyMouseWheelUp});
    wheel(-2);
    ASSERT_TRUE(frame());
    EXPECT_EQ(target->downs, (std::vector<int32_t>{krKeyMouseWheelUp, krKeyMouseWheelDown, krKeyMouseWheelDown}));
    EXPECT_TRUE(target->ups.empty());
    EXPECT_EQ(window->fired.back(), "keyDown_MouseWheelDown");
}

TEST_F(GLInput, TextArrivesAsLatin1Bytes) {
    openQuietly();
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    // "a", e acute, the euro sign (beyond one byte), y diaeresis, and an overlong encoding of "/".
    text("a\xC3\xA9\xE2\x82\xAC\xC3\xBF\xC0\xAF");
    key(true, symBackspace);
    ASSERT_TRUE(frame());
    EXPECT_EQ(target->chars, (std::vector<int32_t>{'a', 0xE9, 0xFF, '\b'}));
    // Typing fires no event.
    EXPECT_EQ(window->fired, std::vector<std::string>{"keyDown_Backspace"});
}

TEST_F(GLInput, MouseButtonsAreKeys) {
    openQuietly();
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    button(true, buttonLeft);
    button(false, buttonLeft);
    button(true, buttonRight);
    button(true, buttonMiddle);
    button(true, buttonX1);
    ASSERT_TRUE(frame());
    EXPECT_EQ(window->fired, (std::vector<std::string>{"keyDown_MouseLeft", "keyUp_MouseLeft", "keyDown_MouseRight",
                                                      "keyDown_MouseMiddle"}));
    krVariant* k = new krVInt(0);
    window->setMember("key", k);
    k->release();
}

TEST_F(GLInput, TheTargetOfAFrameIsTheOneInForceWhenItBegan) {
    ASSERT_TRUE(open());
    auto* first = new Recorder(root);
    first->attach();
    auto* second = new Recorder(root);
    second->attach();
    window->addInputTarget(first, 0);
    key(true, symB);
    ASSERT_TRUE(frame());
    window->addInputTarget(second, 0);
    EXPECT_EQ(first->activations, (std::vector<bool>{true, false}));
    key(true, symC);
    ASSERT_TRUE(frame());
    EXPECT_EQ(first->downs, std::vector<int32_t>{krLetterKey('B')});
    EXPECT_EQ(second->downs, std::vector<int32_t>{krLetterKey('C')});
    // A target deleted by a key's own event handler is not called.
    second->deinit();
    second->release();
    key(true, symD);
    ASSERT_TRUE(frame());
    EXPECT_EQ(first->downs.size(), 1u);
}

TEST_F(GLInput, ScriptHandlersHearKeysAndMayEndTheWait) {
    ASSERT_TRUE(open());
    auto* s = new krScript();
    s->setHost(host);
    s->setFile("keys.script");
    s->load("$w = MAIN.child(1); $count = 0;\n"
            "event $w: keyDown_Enter() { global $count += 1; MAIN.child(1).waitMessages = false; }\n");
    if (krVariant* r = s->eval()) r->release();
    window->setWaitMessages(true);
    key(true, symReturn);
    // Blocks until the handler clears the wait: the frame then runs.
    EXPECT_TRUE(frame());
    EXPECT_FALSE(window->getWaitMessages());
    krVariant* count = s->getField("count");
    ASSERT_NE(count, nullptr);
    EXPECT_EQ(count->toInt(), 1);
    count->release();
    delete s;
}

TEST_F(GLInput, CapturedMouseMovesAreWidthsFromTheCentre) {
    ASSERT_TRUE(open(200, 100));
    if (glTesting::offscreenDriver()) GTEST_SKIP() << "this video driver has no cursor";
    auto* target = new Recorder(root);
    target->attach();
    window->addInputTarget(target, 0);
    window->setMouseCapture(true);
    ASSERT_TRUE(frame());
    ASSERT_EQ(target->moves.size(), 1u);
    int32_t cx, cy;
    cursor(cx, cy);
    warpCursor(cx + 50, cy - 20);
    ASSERT_TRUE(frame());
    ASSERT_EQ(target->moves.size(), 2u);
    EXPECT_FLOAT_EQ(target->moves[1].first, 0.25f);
    EXPECT_FLOAT_EQ(target->moves[1].second, -0.1f);
    // The first frame after the window moved reports nothing.
    moveWindow(300, 200);
    ASSERT_TRUE(frame());
    EXPECT_EQ(target->moves.size(), 2u);
    ASSERT_TRUE(frame());
    EXPECT_EQ(target->moves.size(), 3u);
    EXPECT_FLOAT_EQ(target->moves[2].first, 0);
}

TEST_F(GLInput, FlyingCameraSteeredThroughTheWindow) {
    ASSERT_TRUE(open());
    auto* camera = new krFlyingCamera(root);
    camera->attach();
    window->addInputTarget(camera, 0);
    key(true, symW);
    key(true, symLeftShift);
    ASSERT_TRUE(frame());
    camera->update(0.5f);
    EXPECT_NEAR(camera->getPosition().z, -20, 1e-4f);
    key(false, symW);
    ASSERT_TRUE(frame());
    camera->update(0.5f);
    EXPECT_NEAR(camera->getPosition().z, -20, 1e-4f);
    // Another target takes over: the camera lets go of its keys.
    key(true, symS);
    ASSERT_TRUE(frame());
    auto* other = new Recorder(root);
    other->attach();
    window->addInputTarget(other, 1);
    camera->update(0.5f);
    EXPECT_NEAR(camera->getPosition().z, -20, 1e-4f);
}
