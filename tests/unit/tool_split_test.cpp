// The split-tree builder, round trip: placed mesh files become a split file that the engine
// loads into splits and leaf objects where the list put them.
#include <cmath>

#include "krSplitBuilder.h"
#include "render/krSplit.h"
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

class ToolSplit : public Scene {
protected:
    // Every leaf's box lies inside the box of each split above it.
    void expectNested(krObjectContainer* node, int& leaves) {
        for (krModule* child : node->getChildren()) {
            auto* c = dynamic_cast<krObjectContainer*>(child);
            ASSERT_NE(c, nullptr);
            if (dynamic_cast<krSplit*>(node)) {
                EXPECT_TRUE(node->box.contains(c->box.min));
                EXPECT_TRUE(node->box.contains(c->box.max));
            }
            if (dynamic_cast<krSplit*>(c)) expectNested(c, leaves);
            else ++leaves;
        }
    }
};

}  // namespace

TEST_F(ToolSplit, PlacedFilesRoundTrip) {
    write("level/props/crate.mesh", objectFile("crate", {cube(1)}));
    write("level/props/barrel.mesh", objectFile("barrel", {cube(0.5f)}));
    std::string list = "# props\n";
    for (int i = 0; i < 10; ++i)
        list += "props/crate.mesh " + std::to_string(i * 10) + " 0 " + std::to_string(i % 3) + "\n";
    list += "props/barrel.mesh 3 1 4 rotate 90 0 1 0 name keg type 1  # turned\n";
    std::vector<krPlacement> placements;
    std::string file, error;
    ASSERT_TRUE(krParsePlacements(list, placements, error)) << error;
    ASSERT_EQ(placements.size(), 11u);
    krSplitOptions options;
    options.leavesPerSplit = 3;
    // A leaf names its file relative to the tree's folder, and only below it.
    EXPECT_FALSE(krBuildSplitTree(placements, "level", "level/maps", options, file, error));
    EXPECT_EQ(error, "line 2: 'level/props/crate.mesh' lies outside the split file's folder");
    ASSERT_TRUE(krBuildSplitTree(placements, "level", "level", options, file, error)) << error;
    write("level/level.tree", file);

    krObject* o = newObject();
    o->loadFromFile("level/level.tree", 0);
    EXPECT_TRUE(reports().empty());
    int leaves = 0;
    expectNested(o, leaves);
    EXPECT_EQ(leaves, 11);
    EXPECT_EQ(video->seen.size(), 11u);

    krObject* keg = o->findObject("keg");
    ASSERT_NE(keg, nullptr);
    EXPECT_EQ(keg->path, "level/props/");
    EXPECT_EQ(keg->position, krVector3(3, 1, 4));
    EXPECT_NEAR(keg->rotation.y, std::sin(krPi / 4), 1e-6);
    EXPECT_FLOAT_EQ(keg->radius, std::sqrt(0.75f));
    EXPECT_NEAR(keg->box.min.x, 2.5f, 1e-5);
    EXPECT_NEAR(keg->box.max.y, 1.5f, 1e-5);

    krObject* crate = o->findObject("crate");
    ASSERT_NE(crate, nullptr);
    EXPECT_EQ(crate->box.max.y, 1);
    // The root split holds everything.
    auto* top = dynamic_cast<krSplit*>(o->getChildren()[0]);
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->box.min, krVector3(-1, -1, -1));
    EXPECT_EQ(top->box.max, krVector3(91, 1.5f, 4.5f));
    EXPECT_FLOAT_EQ(top->radius, length(top->box.size()) / 2);
}

TEST_F(ToolSplit, ListsItRefuses) {
    std::vector<krPlacement> placements;
    std::string error;
    EXPECT_FALSE(krParsePlacements("a.mesh 1 2\n", placements, error));
    EXPECT_EQ(error, "line 1: a position of three numbers must follow the file name");
    EXPECT_FALSE(krParsePlacements("\n\na.mesh 1 2 3 spin 4\n", placements, error));
    EXPECT_EQ(error, "line 3: unknown word 'spin'");
    EXPECT_FALSE(krParsePlacements("a.mesh 1 2 3 rotate 90 0 0 0\n", placements, error));
    EXPECT_EQ(error, "line 1: the axis of a rotation cannot be zero");
    EXPECT_FALSE(krParsePlacements("# nothing\n", placements, error));
    EXPECT_EQ(error, "the list places no mesh files");

    placements.clear();
    ASSERT_TRUE(krParsePlacements("a.mesh 0 0 0\nb.mesh 0 0 0\n", placements, error));
    write("a.mesh", objectFile("a", {cube(1)}));
    write("b.mesh", objectFile("b", {}));
    std::string file;
    EXPECT_FALSE(krBuildSplitTree(placements, ".", ".", {}, file, error));
    EXPECT_EQ(error, "line 2: './b.mesh' holds no geometry");
    placements.resize(1);
    placements[0].file = "missing.mesh";
    EXPECT_FALSE(krBuildSplitTree(placements, ".", ".", {}, file, error));
    EXPECT_EQ(error, "line 1: cannot read './missing.mesh'");
}
