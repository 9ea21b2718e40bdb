// The mesh tool on skinned glTF models, round trip: joints to a skeleton file, weights (the four
// heaviest, renormalised) to the mesh file, animations sampled to animation files, all read back
// by the engine and posed; and the skins it must refuse.
#include <cmath>

#include "krMeshCompiler.h"
#include "render/krSkeleton.h"
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

// Builds the binary buffer and the accessor JSON of a glTF file.
class Buffers {
public:
    // Appends the bytes as a buffer view with one accessor; gives the accessor's index.
    int add(const void* data, size_t bytes, int count, int componentType, const char* type) {
        while (bin.size() % 4) bin.push_back('\0');
        views += std::string(views.empty() ? "" : ",") + R"({"buffer": 0, "byteOffset": )" + std::to_string(bin.size()) +
                 R"(, "byteLength": )" + std::to_string(bytes) + "}";
        accessors += std::string(accessors.empty() ? "" : ",") + R"({"bufferView": )" + std::to_string(next) +
                     R"(, "componentType": )" + std::to_string(componentType) + R"(, "count": )" +
                     std::to_string(count) + R"(, "type": ")" + type + "\"}";
        bin.append(static_cast<const char*>(data), bytes);
        return next++;
    }
    // The buffers, views and accessors members of the JSON.
    std::string json(const std::string& binName) const {
        return R"("buffers": [{"uri": ")" + binName + R"(", "byteLength": )" + std::to_string(bin.size()) +
               R"(}], "bufferViews": [)" + views + R"(], "accessors": [)" + accessors + "]";
    }
    std::string bin;

private:
    std::string views, accessors;
    int next = 0;
};

constexpr int floatType = 5126, byteType = 5121;

// Joints in the skin's order: hips, arm, hand, a, b. Bones put parents first: hips, arm, a, b,
// hand. The arm turns a quarter about z over a second.
std::string figure(Buffers& b, const std::string& weightsJson) {
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const int p = b.add(positions, sizeof positions, 3, floatType, "VEC3");
    const float binds[5][3] = {{0, 1, 0}, {0, 2, 0}, {1, 2, 0}, {0.5f, 1, 0}, {-0.5f, 1, 0}};
    float ibm[5][16] = {};
    for (int j = 0; j < 5; ++j) {
        for (int d = 0; d < 4; ++d) ibm[j][d * 5] = 1;
        for (int k = 0; k < 3; ++k) ibm[j][12 + k] = -binds[j][k];
    }
    const int inverseBinds = b.add(ibm, sizeof ibm, 5, floatType, "MAT4");
    const float times[] = {0, 1};
    const float s = std::sin(krPi / 4), c = std::cos(krPi / 4);
    const float turns[] = {0, 0, 0, 1, 0, 0, s, c};
    const int t = b.add(times, sizeof times, 2, floatType, "SCALAR");
    const int r = b.add(turns, sizeof turns, 2, floatType, "VEC4");
    return R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0, 5]}],
      "nodes": [{"name": "hips", "translation": [0, 1, 0], "children": [1, 3, 4]},
                {"name": "arm", "translation": [0, 1, 0], "children": [2]},
                {"name": "hand", "translation": [1, 0, 0]},
                {"name": "a", "translation": [0.5, 0, 0]},
                {"name": "b", "translation": [-0.5, 0, 0]},
                {"name": "body", "mesh": 0, "skin": 0, "translation": [100, 0, 0]}],
      "skins": [{"joints": [0, 1, 2, 3, 4], "inverseBindMatrices": )" +
           std::to_string(inverseBinds) + R"(}],
      "meshes": [{"name": "body", "primitives": [{"attributes": {"POSITION": )" + std::to_string(p) + ", " + weightsJson + R"(}}]}],
      "animations": [{"name": "raise", "samplers": [{"input": )" +
           std::to_string(t) + R"(, "output": )" + std::to_string(r) + R"(}],
                      "channels": [{"sampler": 0, "target": {"node": 1, "path": "rotation"}}]}],
      )" + b.json("figure.bin") + "}";
}

// Joints and weights of the three vertices: the first has five influences.
std::string weights(Buffers& b, float firstWeight = 0.1f) {
    const uint8_t joints0[] = {0, 1, 2, 3, 1, 0, 0, 0, 2, 0, 0, 0};
    const float weights0[] = {firstWeight, 0.2f, 0.3f, 0.1f, 2, 2, 0, 0, 1, 0, 0, 0};
    const uint8_t joints1[] = {4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const float weights1[] = {0.3f, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    return R"("JOINTS_0": )" + std::to_string(b.add(joints0, sizeof joints0, 3, byteType, "VEC4")) +
           R"(, "WEIGHTS_0": )" + std::to_string(b.add(weights0, sizeof weights0, 3, floatType, "VEC4")) +
           R"(, "JOINTS_1": )" + std::to_string(b.add(joints1, sizeof joints1, 3, byteType, "VEC4")) +
           R"(, "WEIGHTS_1": )" + std::to_string(b.add(weights1, sizeof weights1, 3, floatType, "VEC4"));
}

class ToolSkin : public Scene {
protected:
    // Writes the figure's glTF and reads it as a model.
    bool readFigure(krModel& model, std::string& error, float firstWeight = 0.1f) {
        Buffers b;
        const std::string w = weights(b, firstWeight);
        const std::string json = figure(b, w);
        write("src/figure.bin", b.bin);
        write("src/figure.gltf", json);
        return krReadGltfModel("src/figure.gltf", model, error);
    }
};

}  // namespace

TEST_F(ToolSkin, SkeletonWeightsAndAnimationsRoundTrip) {
    krModel model;
    model.keysPerSecond = 4;
    std::string error, file;
    ASSERT_TRUE(readFigure(model, error)) << error;
    krMeshCompileOptions options;
    options.name = "man";

    // The skin in a sub-object, its bind pose where the skin's space has it (the node's place
    // does not move a skin), with the weights of the four heaviest joints, renormalised.
    ASSERT_TRUE(krCompileMesh(model, options, file, error)) << error;
    write("man.mesh", file);
    ASSERT_TRUE(krCompileSkeleton(model, options, file, error)) << error;
    write("man.skeleton", file);
    ASSERT_EQ(model.animations.size(), 1u);
    ASSERT_TRUE(krCompileAnimation(model.animations[0], options, file, error)) << error;
    write("raise.anim", file);

    krObject* man = newObject();
    man->loadFromFile("man.mesh", 0);
    krSkeleton* s = man->loadSkeleton("man.skeleton");
    EXPECT_TRUE(reports().empty());
    ASSERT_EQ(video->seen.size(), 1u);
    const SeenMesh& skin = video->seen[0];
    EXPECT_EQ(static_cast<krObject*>(skin.module)->name, "man_skin");
    EXPECT_EQ(skin.vertices[1].position, krVector3(1, 0, 0));
    ASSERT_EQ(skin.weights.size(), 3u * krWeightsPerVertex);
    // Bones: hips 0, arm 1, a 2, b 3, hand 4. The first vertex's heaviest: b and hand (0.3),
    // the arm (0.2), then the hips (0.1), which comes before a (0.1) by its number.
    const int32_t bones[] = {3, 4, 1, 0};
    const float shares[] = {0.3f / 0.9f, 0.3f / 0.9f, 0.2f / 0.9f, 0.1f / 0.9f};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(skin.weights[static_cast<size_t>(k)].bone, bones[k]);
        EXPECT_NEAR(skin.weights[static_cast<size_t>(k)].weight, shares[k], 1e-6);
    }
    // The second's two weights of 2 become a half each.
    EXPECT_EQ(skin.weights[4].bone, 0);
    EXPECT_EQ(skin.weights[4].weight, 0.5f);
    EXPECT_EQ(skin.weights[5].bone, 1);
    EXPECT_EQ(skin.weights[5].weight, 0.5f);

    ASSERT_EQ(s->getBoneCount(), 5);
    const char* names[] = {"hips", "arm", "a", "b", "hand"};
    const int32_t parents[] = {-1, 0, 0, 0, 1};
    for (int32_t i = 0; i < 5; ++i) {
        EXPECT_EQ(s->bone(i).name, names[i]);
        EXPECT_EQ(s->bone(i).parent, parents[i]);
    }
    EXPECT_EQ(s->bone(4).bindPosition, krVector3(1, 0, 0));
    // The skin's bones are the ones its weights name.
    EXPECT_EQ(s->bone(4).useCount, 1);

    // Keys at 0, 0.25, 0.5 and 0.75 seconds: at half a second the arm has turned an eighth, and
    // the hand (1 along the arm) stands at 45 degrees from it, counter-clockwise about z.
    krAnimationInstance* raise = s->loadAnimation("raise", "raise.anim", 0, 0);
    ASSERT_EQ(raise->data->tracks.size(), 5u);
    EXPECT_EQ(raise->data->tracks[4].keys.size(), 4u);
    raise->time = 0.5f;
    raise->speed = 0;
    ASSERT_TRUE(root->update(0.001f));
    const krVector3 hand = translation(s->bone(4).world);
    EXPECT_NEAR(hand.x, std::sqrt(0.5f), 1e-5);
    EXPECT_NEAR(hand.y, 2 + std::sqrt(0.5f), 1e-5);
    // Its skin matrix takes the bind pose to the pose.
    const krVector3 moved = transformPoint(s->bone(4).skin, {1, 2, 0});
    EXPECT_NEAR(moved.x, hand.x, 1e-5);
    EXPECT_NEAR(moved.y, hand.y, 1e-5);
}

TEST_F(ToolSkin, AnimationsPlayedOnceEndOnTheirLastPose) {
    krModel model;
    model.keysPerSecond = 4;
    model.playedOnce.insert("raise");
    std::string error;
    ASSERT_TRUE(readFigure(model, error)) << error;
    const krAnimationFileTrack& arm = model.animations[0].tracks[1];
    ASSERT_EQ(arm.keys.size(), 5u);
    EXPECT_NEAR(std::fabs(arm.keys[4].rotation.z), std::sin(krPi / 4), 1e-6);
    EXPECT_EQ(model.animations[0].duration, 1.0f);
}

TEST_F(ToolSkin, SkinsItRefuses) {
    krModel model;
    std::string error;
    // A vertex whose weights sum to nothing.
    Buffers b;
    const uint8_t joints[] = {0, 1, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0};
    const float zero[] = {0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    const std::string w = R"("JOINTS_0": )" + std::to_string(b.add(joints, sizeof joints, 3, byteType, "VEC4")) +
                          R"(, "WEIGHTS_0": )" + std::to_string(b.add(zero, sizeof zero, 3, floatType, "VEC4"));
    const std::string json = figure(b, w);
    write("src/zero.bin", b.bin);
    std::string named = json;
    named.replace(named.find("figure.bin"), 10, "zero.bin");
    write("src/zero.gltf", named);
    EXPECT_FALSE(krReadGltfModel("src/zero.gltf", model, error));
    EXPECT_EQ(error, "vertex 0 of mesh 'body' has weights that sum to 0");

    // More joints than a skeleton file holds.
    std::string nodes, list;
    for (int i = 0; i <= krSkeletonFile::maxBones; ++i) {
        nodes += std::string(i ? "," : "") + "{}";
        list += std::string(i ? "," : "") + std::to_string(i);
    }
    write("src/many.gltf", R"({"asset": {"version": "2.0"}, "nodes": [)" + nodes +
                               R"(, {"mesh": 0, "skin": 0}], "skins": [{"joints": [)" + list +
                               R"(]}], "meshes": [{"primitives": []}]})");
    model = krModel();
    EXPECT_FALSE(krReadGltfModel("src/many.gltf", model, error));
    EXPECT_EQ(error, "the skin has 65537 joints, more than the 65536 bones a skeleton file holds");

    // Two skins for one object; a skeleton asked of a model without one.
    write("src/two.gltf", R"({"asset": {"version": "2.0"}, "nodes": [{}, {"mesh": 0, "skin": 0}, {"mesh": 0, "skin": 1}],
        "skins": [{"joints": [0]}, {"joints": [0]}], "meshes": [{"primitives": []}]})");
    model = krModel();
    EXPECT_FALSE(krReadGltfModel("src/two.gltf", model, error));
    EXPECT_EQ(error, "the model has more than one skin; the engine's objects have one skeleton");
    std::string file;
    EXPECT_FALSE(krCompileSkeleton(krModel(), krMeshCompileOptions(), file, error));
    EXPECT_EQ(error, "the model has no skin, so no skeleton");
}
