// Helpers of the skeleton tests: a small body of four bones, animation files that turn bones
// about z by hand-picked angles, and reading a bone's turn back as an angle.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "engine_testing.h"
#include "render/krObject.h"
#include "render/krSkeleton.h"
#include "render/krSkeletonFileWriter.h"

namespace skeletonTesting {

// hips at (0, 1, 0); spine 0.5 above the hips; arm 0.5 to the side of the spine; leg 0.5 below
// the hips. All without a turn in the bind pose.
inline std::vector<krSkeletonFileBone> body() {
    return {{"hips", -1, {0, 1, 0}, krQuat::identity, {}},
            {"spine", 0, {0, 0.5f, 0}, krQuat::identity, {}},
            {"arm", 1, {0.5f, 0, 0}, krQuat::identity, {}},
            {"leg", 0, {0, -0.5f, 0}, krQuat::identity, {}}};
}

inline const krVector3 armPosition{0.5f, 0, 0};

inline std::string skeletonFile(const std::vector<krSkeletonFileBone>& bones, const std::string& name = "body") {
    krChunkWriter w;
    krWriteSkeleton(w, name, bones);
    return w.data();
}

inline krQuat aboutZ(float angle) { return krQuat::fromAxisAngle(angle, krVector3::axisZ); }
inline krQuat aboutX(float angle) { return krQuat::fromAxisAngle(angle, krVector3::axisX); }

// A track that turns a bone about z through the angles, one key each, at a fixed position.
inline krAnimationFileTrack turn(const std::string& bone, const krVector3& at, const std::vector<float>& angles) {
    krAnimationFileTrack t{bone, {}};
    for (float a : angles) t.keys.push_back({at, aboutZ(a)});
    return t;
}

inline std::string animationFile(float duration, const std::vector<krAnimationFileTrack>& tracks,
                                 const std::string& name = "anim") {
    krChunkWriter w;
    krWriteAnimation(w, name, duration, tracks);
    return w.data();
}

// The turn about z of a rotation that has no other part.
inline float angleAboutZ(const krQuat& q) { return 2 * std::atan2(q.z, q.w); }

// Same rotation (q and -q alike) within a tolerance per component.
inline void expectSameRotation(const krQuat& a, const krQuat& b, float tolerance = 1e-4f) {
    const float s = dot(a, b) < 0 ? -1.0f : 1.0f;
    EXPECT_NEAR(a.x, s * b.x, tolerance);
    EXPECT_NEAR(a.y, s * b.y, tolerance);
    EXPECT_NEAR(a.z, s * b.z, tolerance);
    EXPECT_NEAR(a.w, s * b.w, tolerance);
}

inline void expectNear(const krVector3& a, const krVector3& b, float tolerance = 1e-4f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

// The engine with the body's skeleton file in the working folder, and the object and skeleton
// that a script made, found by their global names.
class Skeletons : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        write("body.skeleton", skeletonFile(body()));
    }

    template <class T>
    static T* global(krScript* s, const std::string& name) {
        krVariant* v = s->getField(name);
        T* object = v ? dynamic_cast<T*>(krScriptObject::fromHandle(v->toInt())) : nullptr;
        if (v) v->release();
        return object;
    }

    // Frames of MAIN.move, from C++.
    void move(int frames) {
        for (int i = 0; i < frames; ++i) ASSERT_TRUE(root->update(krMain::moveStep));
    }
};

}  // namespace skeletonTesting
