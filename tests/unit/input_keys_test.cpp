// Key codes and names, held-key buffers, key sets.
#include "engine_testing.h"

#include "interface/krInputKeys.h"
#include "interface/krInputObject.h"
#include "interface/krKeysetObject.h"

TEST(InputKeys, TableRunsInCodeOrder) {
    const std::pair<int32_t, const char*> spots[] = {
        {0, "Undefined"}, {1, "Left"},      {4, "Down"},        {5, "Backspace"},   {13, "Pause"},
        {19, "PageDown"}, {20, "A"},        {45, "Z"},          {46, "0"},          {55, "9"},
        {56, "Numpad0"},  {65, "Numpad9"},  {66, "F1"},         {89, "F24"},        {90, "MouseLeft"},
        {92, "MouseRight"}, {93, "MouseWheelUp"}, {94, "MouseWheelDown"},
    };
    for (auto [code, name] : spots) EXPECT_EQ(keyName(code), name) << code;
    // Every name leads back to its own code: the table has no duplicates.
    for (int32_t code = 1; code < krKeyCount; ++code) EXPECT_EQ(keyCode(keyName(code)), code) << code;
}

TEST(InputKeys, UnknownNamesAndCodes) {
    EXPECT_EQ(keyCode("Undefined"), 0);
    EXPECT_EQ(keyCode("a"), 0);
    EXPECT_EQ(keyCode("enter"), 0);
    EXPECT_EQ(keyCode(""), 0);
    EXPECT_EQ(keyCode("F25"), 0);
    EXPECT_EQ(keyName(-1), "Undefined");
    EXPECT_EQ(keyName(krKeyCount), "Undefined");
}

TEST(InputKeys, BufferedInputHoldsAndForgets) {
    krBufferedInput in;
    in.keyDown(krKeyShift);
    in.keyDown(krLetterKey('W'));
    in.keyDown(krKeyMouseWheelUp);
    in.keyUp(krKeyShift);
    EXPECT_FALSE(in.isHeld(krKeyShift));
    EXPECT_TRUE(in.isHeld(krLetterKey('W')));
    EXPECT_TRUE(in.isHeld(krKeyMouseWheelUp));
    // Codes from outside the table are ignored rather than written past it.
    in.keyDown(-3);
    in.keyDown(krKeyCount);
    EXPECT_FALSE(in.isHeld(krKeyCount));
    // Becoming the target clears as well as losing it.
    in.setActive(true);
    EXPECT_FALSE(in.isHeld(krLetterKey('W')));
    EXPECT_FALSE(in.isHeld(krKeyMouseWheelUp));
}

namespace {
struct Bindings : krKeysetObject {
    int32_t forward = 0, fire = 0, jump = 0;
    float sensitivity = 0;
    bool invert = false;
    int applied = 0;
    void applyKeys() override {
        ++applied;
        forward = getKey("forward", krLetterKey('W'));
        fire = getKey("fire", 7);
        jump = getKey("jump", 7);
        sensitivity = getFloat("sensitivity", 1.5f);
        invert = getBool("invert", false);
    }
    // The getters outside applyKeys, as a class might call them.
    float lateFloat() const { return getFloat("sensitivity", -1); }
};
}

using InputKeyset = engineTesting::Engine;

TEST_F(InputKeyset, LoadsBindingsOnce) {
    write("keys.script", "$forward = \"Up\";\n$fire = \"Enter\";\n$jump = \"Jump\";\n$sensitivity = 0.25;\n"
                         "$invert = true;\n");
    Bindings b;
    b.loadKeys("keys.script");
    EXPECT_EQ(b.applied, 1);
    EXPECT_EQ(b.forward, krKeyUp);
    EXPECT_EQ(b.fire, krKeyEnter);
    EXPECT_EQ(b.jump, 7);  // an unknown name gives the default
    EXPECT_FLOAT_EQ(b.sensitivity, 0.25f);
    EXPECT_TRUE(b.invert);
    EXPECT_FLOAT_EQ(b.lateFloat(), -1);
    // Later changes of the file count only at the next load.
    write("keys.script", "$forward = \"S\";\n");
    EXPECT_EQ(b.forward, krKeyUp);
    b.loadKeys("keys.script");
    EXPECT_EQ(b.forward, krLetterKey('S'));
    EXPECT_EQ(b.fire, 7);
    EXPECT_TRUE(engineTesting::reports().empty());
}

TEST_F(InputKeyset, MissingOrBrokenFilesGiveDefaults) {
    Bindings b;
    b.loadKeys("nothere.script");
    EXPECT_EQ(b.applied, 1);
    EXPECT_EQ(b.forward, krLetterKey('W'));
    EXPECT_FLOAT_EQ(b.sensitivity, 1.5f);
    EXPECT_FALSE(engineTesting::reports().empty());

    engineTesting::reports().clear();
    write("broken.script", "$forward = \"A\"; $fire = 3 @ 4; $sensitivity = \"unterminated;\n");
    b.loadKeys("broken.script");
    EXPECT_EQ(b.forward, krLetterKey('A'));
    EXPECT_FALSE(engineTesting::reports().empty());
}

namespace {
struct ModuleBindings : krModule, krKeysetObject {
    using krModule::krModule;
    float sensitivity = 0;
    void applyKeys() override { sensitivity = getFloat("sensitivity", 1); }
};
}

TEST_F(InputKeyset, AKeySetMayDeleteTheObjectItConfigures) {
    auto* m = make<ModuleBindings>();
    const int32_t handle = m->handle();
    ASSERT_EQ(root->getChildren().back(), m);
    write("keys.script", "delete(MAIN.child(MAIN.count - 1));\n$sensitivity = 0.5;\n");
    m->loadKeys("keys.script");
    EXPECT_EQ(krScriptObject::fromHandle(handle), nullptr);
    EXPECT_TRUE(engineTesting::reports().empty());
}
