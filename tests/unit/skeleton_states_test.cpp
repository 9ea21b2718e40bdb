// Skeletons as characters use them, and as files and objects make them: state tracks that
// cross-fade, the owner's filter, random variations, the group limit, sub-objects that follow
// bones, the shared animation table, and damaged files.
#include "render/krObject.h"
#include "script/krVObject.h"
#include "skeleton_testing.h"

using namespace skeletonTesting;
using engineTesting::reports;

namespace {

// A character's object: its skeleton has four states on two tracks, and it refuses the entries
// whose flags share a bit with `refused`.
class Character : public krObject {
public:
    using krObject::krObject;
    krSkeleton* createSkeleton() override {
        auto* s = new krSkeleton(this, 4, 2);
        s->attach();
        return s;
    }
    const krStateEntry* filterStateEntry(const krStateEntry* entry) override {
        return entry->flags & refused ? nullptr : entry;
    }
    int32_t refused = 0;
};

class SkeletonStates : public Skeletons {
protected:
    void SetUp() override {
        Skeletons::SetUp();
        write("rest.anim", animationFile(1, {turn("arm", armPosition, {0})}));
        write("lift.anim", animationFile(1, {turn("arm", armPosition, {1})}));
        write("wave.anim", animationFile(1, {turn("leg", {0, -0.5f, 0}, {0.5f})}));
        character = make<Character>();
        skeleton = character->loadSkeleton("body.skeleton");
        skeleton->setVisible(true);
        root->setMember("tag", held = new krVObject(skeleton));
    }
    void TearDown() override {
        held->release();
        Skeletons::TearDown();
    }

    krScript* more(const std::string& script) { return run("$s = MAIN.tag; " + script); }
    float armAngle() { return angleAboutZ(skeleton->bone(2).rotation); }
    float weight(const char* name) { return skeleton->findAnimation(name)->weight; }

    Character* character = nullptr;
    krSkeleton* skeleton = nullptr;
    krVariant* held = nullptr;
};

}  // namespace

TEST_F(SkeletonStates, AStateChangeCrossFadesItsAnimations) {
    more("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"lift\", \"lift.anim\");"
         "$s.setStateData(1, 1, 50); $s.setStateAnim(1, \"rest\", 1, 1, 0);"
         "$s.setStateData(2, 0.5, 50); $s.setStateAnim(2, \"lift\", 1, 1, 0);"
         "$s.setState(0, 1);");
    // The first state change sets every other state's animations to nothing.
    EXPECT_EQ(weight("lift"), 0.0f);
    move(10);
    EXPECT_NEAR(armAngle(), 0, 1e-5);
    // Into state 2 with its half second: a quarter second on, both stand at a half.
    more("$s.setState(0, 2);");
    EXPECT_EQ(skeleton->getState(0), 2);
    move(250);
    EXPECT_NEAR(weight("rest"), 0.5f, 1e-4);
    EXPECT_NEAR(weight("lift"), 0.5f, 1e-4);
    EXPECT_NEAR(armAngle(), 0.5f, 1e-3);
    move(300);
    EXPECT_EQ(weight("rest"), 0.0f);
    EXPECT_EQ(weight("lift"), 1.0f);
    EXPECT_NEAR(armAngle(), 1, 1e-4);
    // The same state again changes nothing; another track is independent.
    more("$s.setState(0, 2); $s.setState(1, 1);");
    EXPECT_EQ(skeleton->getState(0), 2);
    EXPECT_EQ(skeleton->getState(1), 1);
}

TEST_F(SkeletonStates, EntriesSetSpeedsStartFromTheBeginningAndPassTheOwnersFilter) {
    more("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"lift\", \"lift.anim\");"
         "$s.loadAnimation(\"wave\", \"wave.anim\");"
         "$s.setStateAnim(1, \"rest\", 2, 1, 0); $s.setStateAnim(1, \"wave\", 0.5, 0.75, START_BEGINNING);"
         "$s.setStateAnim(1, \"lift\", 1, 1, 8); $s.setStateData(1, 0, 50); $s.blendAnimation(\"lift\", 0);");
    character->refused = 8;
    move(300);
    more("$s.setState(0, 1);");
    EXPECT_EQ(skeleton->findAnimation("rest")->speed, 2.0f);
    EXPECT_EQ(skeleton->findAnimation("wave")->speed, 0.5f);
    EXPECT_EQ(skeleton->findAnimation("wave")->time, 0.0f);
    EXPECT_NEAR(skeleton->findAnimation("rest")->time, 0.3f, 1e-4);
    EXPECT_EQ(weight("wave"), 0.75f);
    // Refused by the owner: left as it was. Once the owner lets it through, a new look at the
    // tracks brings it in.
    EXPECT_EQ(weight("lift"), 0.0f);
    character->refused = 0;
    skeleton->reevaluate();
    EXPECT_EQ(weight("lift"), 1.0f);
    // An animation that goes takes its entries with it.
    more("$s.unloadAnimation(\"wave\");");
    EXPECT_EQ(skeleton->getStateRecord(1)->entries.size(), 2u);
    skeleton->reevaluate();
}

TEST_F(SkeletonStates, RandomizersVaryTheAnimationOfAState) {
    more("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"lift\", \"lift.anim\");"
         "$s.setStateData(3, 0, 50);"
         "$s.setStateAnim(3, \"rest\", 1, 1, SELECT_RANDOM0); $s.setStateAnim(3, \"lift\", 1, 1, SELECT_RANDOM0);"
         "$s.setStateRandomizer(3, 0, 0.1, 0.1, 0);"
         "$s.setState(0, 3);");
    const krRandomizer& r = skeleton->getStateRecord(3)->randomizers[0];
    EXPECT_EQ(r.usable, 2);
    ASSERT_GE(r.current, 0);
    // With two entries the randomizer alternates: the only pick is the first, and the second
    // takes its place when the first is playing.
    krAnimationInstance* playing = r.entries[static_cast<size_t>(r.current)].instance;
    EXPECT_EQ(playing->weight, 1.0f);
    for (int change = 0; change < 3; ++change) {
        move(110);
        krAnimationInstance* next = r.entries[static_cast<size_t>(r.current)].instance;
        EXPECT_NE(next, playing);
        EXPECT_EQ(next->weight, 1.0f);
        EXPECT_EQ(playing->weight, 0.0f);
        playing = next;
    }
    // With one entry let through there is nothing to vary.
    character->refused = 8;
    more("$s.setStateAnim(3, \"rest\", 1, 1, SELECT_RANDOM1 | 8);"
         "$s.setStateAnim(3, \"lift\", 1, 1, SELECT_RANDOM1); $s.setStateRandomizer(3, 1, 0.05, 0.05, 0);");
    skeleton->reevaluate();
    const krRandomizer& one = skeleton->getStateRecord(3)->randomizers[1];
    EXPECT_EQ(one.usable, 1);
    move(200);
    EXPECT_EQ(one.current, 0);
    EXPECT_EQ(one.entries[0].instance, skeleton->findAnimation("lift"));
}

TEST_F(SkeletonStates, ScriptsAreToldOfStatesTracksAndAnimationsThatDoNotExist) {
    more("$s.loadAnimation(\"rest\", \"rest.anim\");"
         "$s.setState(2, 1); $s.setState(0, 5); $s.setStateData(0, 1, 50); $s.setStateAnim(1, \"nothing\", 1, 1, 0);"
         "$s.setStateRandomizer(1, 2, 1, 2, 1);"
         // Unknown names elsewhere are passed over.
         "$s.playAnimation(\"nothing\", 1); $s.blendGroup(\"nothing\", \"none\", 1); $s.unloadAnimation(\"nothing\");");
    ASSERT_EQ(reports().size(), 5u);
    EXPECT_NE(reports()[0].find("setState: track 2 does not exist (this skeleton has 2)"), std::string::npos);
    EXPECT_NE(reports()[1].find("setState: state 5 does not exist (states are 1 to 4)"), std::string::npos);
    EXPECT_NE(reports()[2].find("setStateData: state 0 does not exist"), std::string::npos);
    EXPECT_NE(reports()[3].find("setStateAnim: no animation 'nothing' is loaded"), std::string::npos);
    EXPECT_NE(reports()[4].find("setStateRandomizer: randomizer 2 does not exist"), std::string::npos);
    // A plain object's skeleton has no states at all.
    krSkeleton* plain = make<krObject>()->loadSkeleton("body.skeleton");
    EXPECT_FALSE(plain->setState(0, 0));
    EXPECT_EQ(plain->getStateRecord(1), nullptr);
}

TEST_F(SkeletonStates, The33rdGroupIsRefused) {
    krScript* s = more("for ($i = 0; $i < 32; $i++) { $m = $s.addGroup(\"g\" + $i, [\"arm\"]); }"
                       "$last = $m; $over = $s.addGroup(\"g32\", [\"leg\"]); $again = $s.addGroup(\"g3\", [\"leg\"]);");
    EXPECT_EQ(field(s, "last"), std::to_string(int32_t(0x80000000u)));
    EXPECT_EQ(field(s, "over"), "0");
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0], "Cannot add group 'g32'! Maximum number of bone-groups (32) exceeded!");
    EXPECT_EQ(skeleton->bone(2).groups, 0xFFFFFFFFu);
    // An existing group takes more bones with its own bit.
    EXPECT_EQ(field(s, "again"), "8");
    EXPECT_EQ(skeleton->bone(3).groups, 8u);
}

TEST_F(SkeletonStates, SubObjectsNamedByBonesFollowThem) {
    std::vector<krSkeletonFileBone> bones = body();
    bones[2].attachments = {"hat"};
    write("armed.skeleton", skeletonFile(bones));
    krChunkWriter w;
    krBeginObject(w, "man", {}, krQuat::identity);
    krBeginObject(w, "hat", {0, 3, 0}, krQuat::identity);
    w.end();
    w.end();
    write("man.mesh", w.data());
    write("wave.anim", animationFile(1, {turn("arm", armPosition, {0.5f})}));

    // The skeleton first, the meshes after, and the other way round: both bind the hat.
    for (bool skeletonFirst : {true, false}) {
        auto* man = make<krObject>();
        man->setPosition({0, 0, 4});
        if (skeletonFirst) man->loadSkeleton("armed.skeleton");
        man->loadFromFile("man.mesh", 0);
        krSkeleton* s = skeletonFirst ? man->getSkeleton() : man->loadSkeleton("armed.skeleton");
        ASSERT_NE(s, nullptr);
        s->loadAnimation("wave", "wave.anim", 0, 0);
        auto* hat = man->findObject("hat");
        ASSERT_NE(hat, nullptr);
        EXPECT_TRUE(hat->boneDriven);
        EXPECT_EQ(hat->getSkeleton(), s);
        EXPECT_EQ(s->bone(2).useCount, 1);
        EXPECT_EQ(s->bone(0).useCount, 1);
        move(1);
        EXPECT_EQ(hat->getMatrix().m[12], s->bone(2).world.m[12]);
        expectNear(translation(hat->getMatrix()), {0.5f, 1.5f, 4});
        expectSameRotation(hat->rotation, aboutZ(0.5f));
        // The skeleton gone, the hat is its own again.
        s->dispose();
        EXPECT_FALSE(hat->boneDriven);
        EXPECT_EQ(hat->getSkeleton(), nullptr);
        man->dispose();
    }
    // A followed object that goes is forgotten.
    auto* man = make<krObject>();
    man->loadFromFile("man.mesh", 0);
    krSkeleton* s = man->loadSkeleton("armed.skeleton");
    man->findObject("hat")->dispose();
    move(1);
    EXPECT_TRUE(s->bone(2).attached.empty());
}

TEST_F(SkeletonStates, AnimationDataIsSharedByFileName) {
    const size_t before = krAnimationData::shared();
    krSkeleton* other = make<krObject>()->loadSkeleton("body.skeleton");
    krAnimationInstance* a = skeleton->loadAnimation("rest", "rest.anim", 0, 0);
    krAnimationInstance* b = other->loadAnimation("still", "rest.anim", 0, 0);
    EXPECT_EQ(a->data, b->data);
    EXPECT_EQ(a->data->references, 2);
    EXPECT_EQ(krAnimationData::shared(), before + 1);
    // Replaced in place: pointers to the instance stay good.
    EXPECT_EQ(skeleton->loadAnimation("rest", "lift.anim", 0, 0), a);
    EXPECT_EQ(b->data->references, 1);
    other->unloadAnimation("still");
    EXPECT_EQ(krAnimationData::shared(), before + 1);
    // A missing file gives empty data after the file layer's report.
    skeleton->loadAnimation("gone", "gone.anim", 0, 0);
    EXPECT_TRUE(skeleton->findAnimation("gone")->data->tracks.empty());
    EXPECT_EQ(reports().size(), 1u);
    move(1);
}

TEST_F(SkeletonStates, DamagedFilesAreReportedAndReadAsFarAsTheyHold) {
    std::vector<krSkeletonFileBone> bones = body();
    bones[1].parent = 3;
    std::string file = skeletonFile(bones);
    // A bone count far beyond the chunks that follow.
    file[8 + 32] = '\x7F';
    write("bad.skeleton", file);
    krSkeleton* s = make<krObject>()->loadSkeleton("bad.skeleton");
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0], "Invalid skeleton file: 'bad.skeleton' (more bones counted than there are)");
    ASSERT_EQ(s->getBoneCount(), 4);
    EXPECT_EQ(s->bone(1).parent, -1);

    write("anim.skeleton", animationFile(1, {turn("arm", armPosition, {0})}));
    EXPECT_EQ(make<krObject>()->loadSkeleton("anim.skeleton")->getBoneCount(), 0);
    EXPECT_EQ(reports().back(), "Invalid skeleton file: 'anim.skeleton' (not a skeleton)");

    std::string anim = animationFile(1, {turn("arm", armPosition, {0, 1, 2})});
    // The track claims more keys than its chunk holds.
    anim[8 + 40 + 8 + 32] = '\x40';
    krAnimationData* data = krAnimationData::fromMemory("bad.anim", anim.data(), static_cast<uint32_t>(anim.size()));
    EXPECT_EQ(reports().back(), "Invalid animation file: 'bad.anim' (more keys counted than there are)");
    ASSERT_EQ(data->tracks.size(), 1u);
    EXPECT_EQ(data->tracks[0].keys.size(), 3u);
    data->release();
    // An empty skeleton file leaves no bones and no report.
    write("empty.skeleton", "");
    const size_t count = reports().size();
    EXPECT_EQ(make<krObject>()->loadSkeleton("empty.skeleton")->getBoneCount(), 0);
    EXPECT_EQ(reports().size(), count);
}
