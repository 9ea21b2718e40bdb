// Playing and mixing animations on a skeleton, driven by scripts and stepped by MAIN.move, with
// the bone poses checked against values worked out by hand: a loop wrapping from its last key to
// its first, blends at their half way and along their curves, an additive layer, a group masking
// half the body, synced clocks, noise, and the bone matrices that come out.
#include "skeleton_testing.h"

using namespace skeletonTesting;

namespace {

class SkeletonPlay : public Skeletons {
protected:
    // A shown skeleton computes every bone, with or without meshes.
    krSkeleton* play(const std::string& script, int frames) {
        krScript* s = run("$o = new_object(); $o.setPosition(10, 0, 0); $s = $o.loadSkeleton(\"body.skeleton\"); "
                          "$s.show(); MAIN.tag = $s; " +
                          script + " for ($i = 0; $i < " + std::to_string(frames) + "; $i++) { MAIN.move; }");
        object = global<krObject>(s, "o");
        return global<krSkeleton>(s, "s");
    }

    // More script for the skeleton of play.
    void more(const std::string& script) { run("$s = MAIN.tag; " + script); }

    float armAngle(krSkeleton* s) { return angleAboutZ(s->bone(s->findBone("arm")).rotation); }

    krObject* object = nullptr;
};

}  // namespace

TEST_F(SkeletonPlay, ALoopingAnimationWrapsFromItsLastKeyToItsFirst) {
    // Four keys over one second: 0, 0.5, 1 and 1.5 radians at 0, 0.25, 0.5 and 0.75 seconds.
    write("wave.anim", animationFile(1, {turn("arm", armPosition, {0, 0.5f, 1, 1.5f})}));
    krSkeleton* s = play("$s.loadAnimation(\"wave\", \"wave.anim\");", 900);
    ASSERT_NE(s, nullptr);
    // At 0.9 s, f = 3.6: 60 percent of the way from the last key back to the first.
    EXPECT_NEAR(armAngle(s), 1.5f * 0.4f, 1e-3);
    move(200);
    // 1.1 s wrapped to 0.1: f = 0.4 between the first two keys.
    EXPECT_NEAR(armAngle(s), 0.2f, 1e-3);
    EXPECT_NEAR(s->findAnimation("wave")->time, 0.1f, 1e-4);

    // Backwards, it wraps to the end.
    more("$s.playAnimation(\"wave\", -1);");
    move(150);
    EXPECT_NEAR(s->findAnimation("wave")->time, 0.95f, 1e-4);
    // The arm's world place: the object's, the hips', the spine's and its own offset.
    expectNear(translation(s->bone(2).world), {10.5f, 1.5f, 0});
    // Its skin matrix takes the bind pose (in the object's space) to the world.
    expectNear(transformPoint(s->bone(2).skin, {0.5f, 1.5f, 0}), {10.5f, 1.5f, 0});
}

TEST_F(SkeletonPlay, AnAnimationThatDoesNotLoopStopsAtItsEnd) {
    // Without a loop the four keys lie over three intervals.
    write("raise.anim", animationFile(0.3f, {turn("arm", armPosition, {0, 0.3f, 0.6f, 0.9f})}));
    krSkeleton* s = play("$s.loadAnimation(\"raise\", \"raise.anim\", DONT_LOOP);", 150);
    EXPECT_NEAR(armAngle(s), 0.45f, 1e-3);
    move(250);
    krAnimationInstance* a = s->findAnimation("raise");
    EXPECT_EQ(a->time, 0.3f);
    EXPECT_EQ(a->speed, 0.0f);
    EXPECT_NEAR(armAngle(s), 0.9f, 1e-4);
    // Played backwards past its start, it holds its first key.
    more("$s.playAnimation(\"raise\", -1, false);");
    move(500);
    EXPECT_NEAR(armAngle(s), 0, 1e-4);
}

TEST_F(SkeletonPlay, BlendsFollowTheirCurves) {
    write("rest.anim", animationFile(1, {turn("arm", armPosition, {0})}));
    write("lift.anim", animationFile(1, {turn("arm", armPosition, {1})}));
    // The second animation blends in over a second: at half way it has weight 0.5, and the arm
    // turns half the way from the first's pose to the second's.
    krSkeleton* s = play("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"lift\", \"lift.anim\");"
                         "$s.blendAnimation(\"lift\", 0, 1, 1);",
                         500);
    EXPECT_NEAR(s->findAnimation("lift")->weight, 0.5f, 1e-4);
    EXPECT_NEAR(armAngle(s), 0.5f, 1e-3);
    move(600);
    EXPECT_EQ(s->findAnimation("lift")->weight, 1.0f);
    EXPECT_EQ(s->findAnimation("lift")->blendRate, 0.0f);
    EXPECT_NEAR(armAngle(s), 1, 1e-4);

    // Midpoint 25: shape ln 0.25 / ln 0.75, so a quarter of the way in the weight is
    // 0.25 ^ 4.8188.
    more("$s.blendAnimation(\"lift\", 0, 1, 1, 25);");
    move(250);
    EXPECT_NEAR(s->findAnimation("lift")->weight, std::pow(0.25f, std::log(0.25f) / std::log(0.75f)), 1e-4);
    // Softness 50 makes an S of power 2: at a quarter, 0.5 (2 x 0.25)^2 = 0.125; at three
    // quarters 1 - 0.125.
    more("$s.blendAnimation(\"lift\", 0, 1, 1, 50, 50);");
    move(250);
    EXPECT_NEAR(s->findAnimation("lift")->weight, 0.125f, 1e-4);
    move(500);
    EXPECT_NEAR(s->findAnimation("lift")->weight, 0.875f, 1e-4);
    // A weight set at once ends a blend; a blend of no time, or with midpoint 100, jumps to its
    // end, and midpoint 0 to its start.
    more("$s.blendAnimation(\"lift\", 0.25);");
    move(10);
    EXPECT_EQ(s->findAnimation("lift")->weight, 0.25f);
    more("$s.blendAnimation(\"lift\", 0, 0.75, 0);");
    EXPECT_EQ(s->findAnimation("lift")->weight, 0.75f);
    more("$s.blendAnimation(\"lift\", 0.1, 0.6, 1, 100);");
    EXPECT_EQ(s->findAnimation("lift")->weight, 0.6f);
    more("$s.blendAnimation(\"lift\", 0.1, 0.6, 1, 0);");
    EXPECT_EQ(s->findAnimation("lift")->weight, 0.1f);
}

TEST_F(SkeletonPlay, TheFirstAnimationSetsThePoseAndLaterOnesMixIn) {
    write("rest.anim", animationFile(1, {turn("arm", armPosition, {0.2f})}));
    write("lift.anim", animationFile(1, {turn("arm", {0.5f, 0.4f, 0}, {1})}));
    // Two at full weight: the second replaces the first, which is never blended from the bind pose.
    krSkeleton* s = play("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"lift\", \"lift.anim\");", 1);
    EXPECT_NEAR(armAngle(s), 1, 1e-4);
    // A quarter of the second, and the first at a tenth: the first still sets the pose alone.
    more("$s.blendAnimation(\"rest\", 0.1); $s.blendAnimation(\"lift\", 0.25);");
    move(1);
    EXPECT_NEAR(armAngle(s), 0.2f + 0.8f * 0.25f, 1e-4);
    expectNear(s->bone(2).position, {0.5f, 0.1f, 0});
    // Disabled, an animation does not act; the other alone sets the pose.
    more("$s.disableAnimation(\"rest\");");
    move(1);
    EXPECT_NEAR(armAngle(s), 1, 1e-4);
    more("$s.enableAnimation(\"rest\"); $s.enableAnimation(\"lift\", false);");
    move(1);
    EXPECT_NEAR(armAngle(s), 0.2f, 1e-4);
    // Without any, the bone keeps the pose it had.
    more("$s.unloadAnimation(\"rest\");");
    move(1);
    EXPECT_NEAR(armAngle(s), 0.2f, 1e-4);
    EXPECT_EQ(s->findAnimation("rest"), nullptr);
}

TEST_F(SkeletonPlay, AnAdditiveLayerAddsItsDifferenceFromTheBindPose) {
    write("rest.anim", animationFile(1, {turn("arm", armPosition, {0.6f})}));
    // Half of a turn of 0.8 about x with a lift of 0.2, on top of the rest pose.
    krAnimationFileTrack lift{"arm", {{armPosition + krVector3(0, 0.2f, 0), aboutX(0.8f)}}};
    write("nod.anim", animationFile(1, {lift}));
    krSkeleton* s = play("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"nod\", \"nod.anim\", "
                         "ADDITIVE_BLEND); $s.blendAnimation(\"nod\", 0.5);",
                         1);
    const krBone& arm = s->bone(2);
    expectNear(arm.position, armPosition + krVector3(0, 0.1f, 0));
    // d = conj(conj(bind) x q) = conj(q), since the bind pose is no turn; weighted by
    // scaleRotation: x = -sin(0.4) / 2, w = sqrt(1 - x^2); then d x rest.
    const float x = -std::sin(0.4f) * 0.5f;
    const krQuat d(x, 0, 0, std::sqrt(1 - x * x));
    expectSameRotation(arm.rotation, multiply(d, aboutZ(0.6f)));
}

TEST_F(SkeletonPlay, AGroupLimitsAnAnimationToItsBones) {
    // The animation moves the arm and the leg; limited to the upper body it leaves the leg alone.
    write("stretch.anim",
          animationFile(1, {turn("arm", armPosition, {0.7f}), turn("leg", {0, -0.5f, 0}, {0.3f})}));
    krSkeleton* s = play("$s.addGroup(\"upper\", [\"spine\", \"arm\"]); $s.addGroup(\"lower\", [\"hips\", \"leg\"]);"
                         "$s.loadAnimation(\"stretch\", \"stretch.anim\", 0, \"upper\");",
                         1);
    EXPECT_NEAR(armAngle(s), 0.7f, 1e-4);
    EXPECT_NEAR(angleAboutZ(s->bone(3).rotation), 0, 1e-6);
    EXPECT_EQ(s->bone(2).groups, 1u);
    EXPECT_EQ(s->bone(3).groups, 2u);
    // A virtual group is the union; an unknown group is no bone at all, so with it alone the
    // animation takes every bone.
    more("$s.virtualGroup(\"all\", \"upper\", \"lower\"); $s.loadAnimation(\"stretch\", \"stretch.anim\", 0, \"all\");");
    move(1);
    EXPECT_NEAR(angleAboutZ(s->bone(3).rotation), 0.3f, 1e-4);
    // Under a base pose of no turn, the stretch at half its weight on the upper body only: the
    // arm turns half way, the leg all the way.
    write("rest.anim", animationFile(1, {turn("arm", armPosition, {0}), turn("leg", {0, -0.5f, 0}, {0})}));
    more("$s.loadAnimation(\"rest\", \"rest.anim\"); $s.loadAnimation(\"stretch\", \"stretch.anim\", 0, \"all\");"
        "$s.blendGroup(\"stretch\", \"upper\", 0.5);");
    move(1);
    EXPECT_NEAR(armAngle(s), 0.35f, 1e-4);
    EXPECT_NEAR(angleAboutZ(s->bone(3).rotation), 0.3f, 1e-4);
}

TEST_F(SkeletonPlay, SyncedAnimationsFollowTheHeavierOnesClock) {
    write("walk.anim", animationFile(1, {turn("arm", armPosition, {0, 1})}));
    write("run.anim", animationFile(0.5f, {turn("leg", {0, -0.5f, 0}, {0, 1})}));
    krSkeleton* s = play("$s.loadAnimation(\"walk\", \"walk.anim\"); $s.loadAnimation(\"run\", \"run.anim\");"
                         "$s.blendAnimation(\"run\", 0.5); $s.syncAnimations(\"walk\", \"run\", \"nothing\");",
                         400);
    // The walk leads: the run's clock is the walk's scaled to its length.
    EXPECT_NEAR(s->findAnimation("walk")->time, 0.4f, 1e-4);
    EXPECT_NEAR(s->findAnimation("run")->time, 0.2f, 1e-4);
    // At equal weights neither leads: each runs on.
    more("$s.blendAnimation(\"run\", 1); $s.rewindAnimation(\"walk\");");
    move(100);
    EXPECT_NEAR(s->findAnimation("walk")->time, 0.1f, 1e-4);
    EXPECT_NEAR(s->findAnimation("run")->time, 0.3f, 1e-4);
    EXPECT_EQ(s->findAnimation("walk")->synced.size(), 1u);
}

TEST_F(SkeletonPlay, NoiseMovesOnlyItsGroupsAndStaysSmall) {
    krSkeleton* s = play("$s.addGroup(\"head\", [\"arm\"]); $s.setNoiseGroups(\"head\"); $s.noiseAmount = 0.5;", 300);
    const krBone& arm = s->bone(2);
    EXPECT_NE(arm.rotation, krQuat::identity);
    EXPECT_NEAR(dot(arm.rotation, arm.rotation), 1, 1e-4);
    EXPECT_LT(length(arm.noise), 1);
    EXPECT_EQ(s->bone(1).rotation, krQuat::identity);
    // NaN strength is no strength.
    more("$s.noiseAmount = 0.0 / 0.0;");
    move(5);
    EXPECT_TRUE(std::isfinite(s->bone(2).rotation.w));
}

TEST_F(SkeletonPlay, OnlyBonesInUseAreComputed) {
    write("stretch.anim", animationFile(1, {turn("arm", armPosition, {0.7f}), turn("leg", {0, -0.5f, 0}, {0.3f})}));
    krScript* script = run("$o = new_object(); $s = $o.loadSkeleton(\"body.skeleton\");"
                           "$s.loadAnimation(\"stretch\", \"stretch.anim\"); MAIN.tag = $s; MAIN.move;");
    krSkeleton* s = global<krSkeleton>(script, "s");
    EXPECT_EQ(s->bone(2).rotation, krQuat::identity);
    // A mesh that names the arm: the arm, the spine and the hips are needed, the leg is not.
    s->useBone(2, 1);
    move(1);
    EXPECT_EQ(s->bone(0).useCount, 1);
    EXPECT_EQ(s->bone(3).useCount, 0);
    EXPECT_NEAR(armAngle(s), 0.7f, 1e-4);
    EXPECT_EQ(s->bone(3).rotation, krQuat::identity);
    // Shown, every bone is drawn and so computed; hidden again, the count goes back.
    more("$s.show();");
    move(1);
    EXPECT_NEAR(angleAboutZ(s->bone(3).rotation), 0.3f, 1e-4);
    more("$s.hide();");
    EXPECT_EQ(s->bone(3).useCount, 0);
}
