// The window's input targets: priorities, activation, targets that die, the script members.
#include "engine_testing.h"

#include "interface/krInputObject.h"
#include "render/krWindow.h"
#include "script/krVObject.h"

namespace {
struct Target : krModule, krInputObject {
    using krModule::krModule;
    std::vector<bool> activations;
    void setActive(bool active) override { activations.push_back(active); }
};
}

using InputTargets = engineTesting::Engine;

TEST_F(InputTargets, HighestPriorityLaterOfEquals) {
    auto* window = make<krWindow>();
    auto* a = make<Target>();
    auto* b = make<Target>();
    auto* c = make<Target>();
    window->addInputTarget(a, 0);
    EXPECT_EQ(window->getInputTarget(), a);
    window->addInputTarget(b, 0);
    EXPECT_EQ(window->getInputTarget(), b);
    window->addInputTarget(c, -5);
    EXPECT_EQ(window->getInputTarget(), b);
    window->removeInputTarget(b);
    EXPECT_EQ(window->getInputTarget(), a);
    EXPECT_EQ(a->activations, (std::vector<bool>{true, false, true}));
    EXPECT_EQ(b->activations, (std::vector<bool>{true, false}));
    EXPECT_TRUE(c->activations.empty());
}

TEST_F(InputTargets, RemovesOnlyTheLastEntryOfATarget) {
    auto* window = make<krWindow>();
    auto* a = make<Target>();
    auto* b = make<Target>();
    window->addInputTarget(a, 3);
    window->addInputTarget(b, 1);
    window->addInputTarget(a, 0);
    window->removeInputTarget(a);
    EXPECT_EQ(window->getInputTarget(), a);  // the priority 3 entry is still there
    window->removeInputTarget(a);
    EXPECT_EQ(window->getInputTarget(), b);
    // Setting one outside the list puts it in force without listing it.
    auto* c = make<Target>();
    window->setInputTarget(c);
    EXPECT_EQ(window->getInputTarget(), c);
    window->setInputTarget(nullptr);
    EXPECT_EQ(window->getInputTarget(), b);
}

TEST_F(InputTargets, DeletedTargetsDropOut) {
    auto* window = make<krWindow>();
    auto* a = make<Target>();
    auto* b = make<Target>();
    window->addInputTarget(a, 0);
    window->addInputTarget(b, 9);
    b->deinit();
    b->release();
    EXPECT_EQ(window->getInputTarget(), nullptr);
    window->setInputTarget(nullptr);
    EXPECT_EQ(window->getInputTarget(), a);
}

TEST_F(InputTargets, ScriptMembers) {
    auto* window = make<krWindow>();
    auto* a = make<Target>();
    auto* plain = make<krModule>();
    krVariant* w = new krVObject(window);
    krVariant* t = new krVObject(a);
    krVariant* p = new krVObject(plain);
    krVariant* priority = new krVInt(2);
    auto call = [&](const char* name, krArgs args) {
        if (krVariant* r = window->getMember(name, nullptr, args)) r->release();
    };
    call("addInputTarget", {t, priority});
    EXPECT_EQ(window->getInputTarget(), a);
    krVariant* in = window->getMember("inputTarget", nullptr, {});
    EXPECT_EQ(in->toInt(), a->handle());
    in->release();
    // A module that takes no input is refused with a report, and changes nothing.
    call("addInputTarget", {p});
    EXPECT_EQ(engineTesting::reports().size(), 1u);
    window->setMember("inputTarget", p);
    EXPECT_EQ(window->getInputTarget(), a);
    call("removeInputTarget", {t});
    EXPECT_EQ(window->getInputTarget(), nullptr);
    for (krVariant* v : {w, t, p, priority}) v->release();
}

TEST_F(InputTargets, PropertiesBeforeInit) {
    krScript* s = run("$w = new_window(OPENGL); $w.width = 800; $w.height = 600; $w.title = \"T\";\n"
                      "$w.background = color(255, 0, 0);\n"
                      "$r = \"\" + $w.width + \"x\" + $w.height + \" \" + $w.title + \" \" + strcolor($w.background);\n"
                      "$none = new_window(2); $missing = new_window();\n"
                      "$v = $w.video.class; $ready = $w.video.polyCount;\n");
    EXPECT_EQ(field(s, "r"), "800x600 T FF0000FF");
    EXPECT_EQ(field(s, "none"), "(none)");  // a null result stores nothing
    EXPECT_EQ(field(s, "missing"), "(none)");
    EXPECT_EQ(field(s, "v"), "krVideo_OGL");
    EXPECT_EQ(field(s, "ready"), "0");
}
