// The module tree: the update walk when modules delete themselves or siblings, init counting its
// children once, the "delete" order of teardown, owner moves, and the root's own members.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/krMain.h"
#include "script/krVObject.h"

namespace {

std::vector<std::string> journal;

// A module whose update and teardown are written down, and which may delete a module when it
// updates.
class Probe : public krModule {
public:
    Probe(krModule* owner, std::string n) : krModule(owner), name(std::move(n)) { attach(); }
    bool update(float dt) override {
        journal.push_back("update " + name);
        if (victim) {
            krModule* v = victim;
            victim = nullptr;
            v->deinit();
            v->release();
        }
        return result && krModule::update(dt);
    }
    bool init() override {
        journal.push_back("init " + name);
        if (spawnOnInit) new Probe(getOwner(), name + ".spawned");
        return krModule::init();
    }
    void deinit() override {
        journal.push_back("deinit " + name);
        krModule::deinit();
    }
    void childrenChanged() override { ++changes; }
    std::string name;
    krModule* victim = nullptr;
    bool result = true;
    bool spawnOnInit = false;
    int changes = 0;
};

class ModuleTree : public testing::Test {
protected:
    void SetUp() override { journal.clear(); }
    void TearDown() override {
        root->deinit();
        root->release();
    }
    Probe* root = new Probe(nullptr, "root");
};

TEST_F(ModuleTree, UpdateRunsLastChildFirstAndSkipsDisabledSubtrees) {
    new Probe(root, "a");
    auto* b = new Probe(root, "b");
    new Probe(b, "b1");
    auto* c = new Probe(root, "c");
    c->setEnabled(false);
    new Probe(c, "c1");
    EXPECT_TRUE(root->update(0.01f));
    EXPECT_EQ(journal, (std::vector<std::string>{"update root", "update b", "update b1", "update a"}));
}

TEST_F(ModuleTree, AModuleMayDeleteItselfOrASiblingDuringTheWalk) {
    auto* a = new Probe(root, "a");
    auto* b = new Probe(root, "b");
    auto* c = new Probe(root, "c");
    auto* d = new Probe(root, "d");
    d->victim = c;  // d runs first and deletes its lower sibling c
    b->victim = b;  // b deletes itself; the walk's reference keeps it alive until it returns
    (void)a;
    EXPECT_TRUE(root->update(0.01f));
    // The walk goes by index against the present size: once c is gone, d has slid down into
    // the next index and runs again; nothing is visited that no longer exists.
    EXPECT_EQ(journal, (std::vector<std::string>{"update root", "update d", "deinit c", "update d", "update b",
                                                 "deinit b", "update a"}));
    EXPECT_EQ(root->getChildren().size(), 2u);
}

TEST_F(ModuleTree, FalseFromAnyLevelEndsTheWalk) {
    new Probe(root, "a");
    auto* b = new Probe(root, "b");
    b->result = false;
    EXPECT_FALSE(root->update(0.01f));
    EXPECT_EQ(journal, (std::vector<std::string>{"update root", "update b"}));
}

TEST_F(ModuleTree, InitCountsTheChildrenOnceAndTeardownGoesLastChildFirst) {
    auto* a = new Probe(root, "a");
    a->spawnOnInit = true;
    new Probe(root, "b");
    EXPECT_TRUE(root->init());
    EXPECT_EQ(journal, (std::vector<std::string>{"init root", "init b", "init a"}))
        << "a module made during init is not visited by the same pass";
    journal.clear();
    root->clear();
    EXPECT_EQ(journal, (std::vector<std::string>{"deinit a.spawned", "deinit b", "deinit a"}));
    EXPECT_TRUE(root->getChildren().empty());
}

TEST_F(ModuleTree, MovesAndOwners) {
    auto* a = new Probe(root, "a");
    auto* b = new Probe(root, "b");
    const int before = root->changes;
    b->moveToLast();
    EXPECT_EQ(root->changes, before) << "moving the last child to the end changes nothing";
    b->moveToFirst();
    EXPECT_EQ(root->getChildren().front(), b);
    EXPECT_EQ(root->changes, before + 1);
    a->setOwner(b);
    EXPECT_EQ(root->getChildren().size(), 1u);
    EXPECT_EQ(b->getChildren().front(), a);
    b->setOwner(a);
    EXPECT_EQ(b->getOwner(), root) << "a module never moves below itself";
}

TEST_F(ModuleTree, MembersOfADisabledModuleStillAnswer) {
    auto* a = new Probe(root, "a");
    a->setEnabled(false);
    krVariant* cls = a->getMember("class", nullptr, krScriptObject::noArgs);
    EXPECT_EQ(cls->toString(), "krModule");
    cls->release();
    auto* index = new krVInt(3);
    EXPECT_EQ(root->getMember("child", nullptr, {index}), nullptr) << "an index outside the children is null";
    index->release();
    EXPECT_EQ(root->getMember("child", nullptr, krScriptObject::noArgs), nullptr);
}

TEST(Root, FpsLimitStoresThePeriodAndMoveRunsOneFixedStep) {
    krMain root(0, nullptr);
    auto* limit = new krVFloat(50);
    root.setMember("fpsLimit", limit);
    limit->release();
    EXPECT_FLOAT_EQ(root.getFramePeriod(), 0.02f);
    krVariant* read = root.getMember("fpsLimit", nullptr, krScriptObject::noArgs);
    EXPECT_NEAR(read->toFloat(), 50.0f, 1e-3f);
    read->release();
    auto* negative = new krVInt(-5);
    root.setMember("fpsLimit", negative);
    negative->release();
    read = root.getMember("fpsLimit", nullptr, krScriptObject::noArgs);
    EXPECT_EQ(read->toFloat(), 0.0f);
    read->release();

    journal.clear();
    auto* probe = new Probe(&root, "probe");
    krVariant* moved = root.getMember("move", nullptr, krScriptObject::noArgs);
    EXPECT_TRUE(moved->toBool());
    moved->release();
    EXPECT_EQ(journal, (std::vector<std::string>{"update probe"}));
    EXPECT_EQ(root.getVelocityAt(krVector3(1, 2, 3)).x, 0.0f);
    (void)probe;
    root.deinit();
}

TEST(Root, ReportsReachTheObserverAndGoNowhereWithoutHandlers) {
    krMain root(0, nullptr);
    static std::vector<std::string> seen;
    seen.clear();
    krMain::setReportObserver([](const char* event, const std::string& text) { seen.push_back(std::string(event) + ":" + text); });
    const int32_t before = krVariant::instanceCount;
    root.errorMsg("bad");
    root.infoMsg("fine");
    krMain::setReportObserver(nullptr);
    EXPECT_EQ(seen, (std::vector<std::string>{"errorMsg:bad", "infoMsg:fine"}));
    EXPECT_EQ(krVariant::instanceCount, before);
}

} // namespace
