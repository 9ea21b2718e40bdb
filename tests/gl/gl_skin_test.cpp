// Skinned meshes: a figure bends with its bones on the processor and in the vertex shader alike,
// the two paths give the same picture, blended skins sort and blend, a driver without vertex
// buffers still draws them, and the cut into palette groups follows its rules.
#include <cmath>

#include "gl_scene.h"
#include "render/krSkeleton.h"
#include "render/krSkeletonFileWriter.h"
#include "render/opengl/krMeshItem_OGL.h"
#include "render/opengl/krMeshShaderHWSkin_OGL.h"
#include "render/opengl/krMeshShaderSWSkin_OGL.h"

using glContent::MeshMaker;
using glTesting::near;

namespace {

constexpr int32_t width = 96, height = 72;
// The figure stands 4 in front of the eye: a unit there covers this many pixels.
constexpr float pixelsPerUnit = 36 / (4 * 0.57735026f);

// The hips at (0, -1, -4), the arm 1 above them.
std::string twoBones() {
    krChunkWriter w;
    krWriteSkeleton(w, "two", {{"hips", -1, {0, -1, -4}, krQuat::identity, {}}, {"arm", 0, {0, 1, 0}, krQuat::identity, {}}});
    return w.data();
}

void expectNear(const krVector3& a, const krVector3& b) {
    EXPECT_NEAR(a.x, b.x, 1e-4);
    EXPECT_NEAR(a.y, b.y, 1e-4);
    EXPECT_NEAR(a.z, b.z, 1e-4);
}

// A pixel's place for a world point at the figure's depth.
int32_t screenX(float x) { return static_cast<int32_t>(std::lround(width / 2 + x * pixelsPerUnit)); }
int32_t screenY(float y) { return static_cast<int32_t>(std::lround(height / 2 + y * pixelsPerUnit)); }

class GLSkinning : public glTesting::Scene {
protected:
    void SetUp() override {
        Scene::SetUp();
        files.write("t/two.skeleton", twoBones());
    }

    // A figure of two unit squares: the lower one on the hips, the upper one on the arm, with
    // weights in places that the renormalising at load must put right. Material flags as given.
    krObject* figure(int32_t flags = 0, uint32_t rgb = 0xFFFFFF, uint8_t alpha = 255) {
        MeshMaker m;
        m.material(rgb, alpha, flags);
        m.square({0, -0.5f, -4}, 1);
        m.square({0, 0.5f, -4}, 1);
        krMesh mesh;
        m.make(mesh);
        for (int32_t v = 0; v < mesh.vertexCount; ++v) {
            const int32_t bone = v < 4 ? 0 : 1;
            const krBoneWeight w[krWeightsPerVertex] = {{bone, 2}, {1 - bone, 0}, {0, 0}, {0, 0}};
            mesh.weights.insert(mesh.weights.end(), w, w + krWeightsPerVertex);
        }
        krObject* o = holder();
        skeleton = o->loadSkeleton("t/two.skeleton");
        skeleton->useBone(1, 1);
        o->addMesh(mesh);
        return o;
    }

    // A visible object at the origin, for meshes added by hand.
    krObject* holder() {
        auto* o = new krObject(scene);
        o->attach();
        o->setVisible(true);
        o->radius = everywhere;
        return o;
    }

    static krMeshShader_OGL* firstShader(krObject* o) {
        auto* item = dynamic_cast<krMeshItem_OGL*>(o->getVideoItems().back());
        return item ? item->getShaders()[0] : nullptr;
    }

    const char* pathOf(krObject* o) {
        auto* item = dynamic_cast<krMeshItem_OGL*>(o->getVideoItems().front());
        return item ? item->getShaders()[0]->className() : "";
    }

    // Bends the arm by angle about z and draws; gives where the upper square's centre went.
    krVector3 bend(float angle) {
        skeleton->bone(1).rotation = krQuat::fromAxisAngle(angle, krVector3::axisZ);
        EXPECT_TRUE(frame());
        return transformPoint(skeleton->bone(1).skin, {0, 0.5f, -4});
    }

    bool lit(const krVector3& p) { return pixel(screenX(p.x), screenY(p.y)) != 0; }

    krSkeleton* skeleton = nullptr;
};

}  // namespace

TEST_F(GLSkinning, AFigureBendsWithItsBonesOnTheProcessor) {
    ASSERT_TRUE(openScene(width, height));
    krObject* o = figure();
    EXPECT_STREQ(pathOf(o), "krMeshShaderSWSkin_OGL");
    krVector3 upper = bend(0);
    expectNear(upper, {0, 0.5f, -4});
    EXPECT_EQ(pixel(screenX(0), screenY(0.5f)), 0xFFFFFFu);
    EXPECT_EQ(pixel(screenX(0), screenY(-0.5f)), 0xFFFFFFu);
    // A quarter turn takes the upper square to the side of the joint; the lower one stays.
    upper = bend(krPi / 2);
    EXPECT_NEAR(std::fabs(upper.x), 0.5f, 1e-4);
    EXPECT_NEAR(upper.y, 0, 1e-4);
    EXPECT_TRUE(lit(upper));
    EXPECT_FALSE(lit({0, 0.5f, -4}));
    EXPECT_FALSE(lit({-upper.x, 0, -4}));
    EXPECT_EQ(pixel(screenX(0), screenY(-0.5f)), 0xFFFFFFu);
    // The object moves, and the figure with it, through the skeleton's root.
    o->setPosition({1, 0, 0});
    bend(0);
    EXPECT_TRUE(lit({1, 0.5f, -4}));
    EXPECT_FALSE(lit({-0.6f, 0.5f, -4}));
}

TEST_F(GLSkinning, TheVertexShaderGivesTheSamePicture) {
    video->glsl = true;
    ASSERT_TRUE(openScene(width, height));
    std::vector<std::vector<uint8_t>> pictures;
    for (bool hardware : {false, true}) {
        video->hardwareSkinning = hardware;
        krObject* o = figure(0, 0xF0A040);
        EXPECT_STREQ(pathOf(o), hardware ? "krMeshShaderHWSkin_OGL" : "krMeshShaderSWSkin_OGL");
        bend(0.7f);
        pictures.push_back(probe->pixels);
        EXPECT_TRUE(lit(transformPoint(skeleton->bone(1).skin, {0, 0.5f, -4})));
        remove(o);
    }
    ASSERT_EQ(pictures[0].size(), pictures[1].size());
    // Rasterisers may round edges differently; the colours inside agree.
    int differing = 0;
    for (size_t i = 0; i < pictures[0].size(); ++i) {
        const int d = std::abs(pictures[0][i] - pictures[1][i]);
        if (d > 8) ++differing;
    }
    EXPECT_LE(differing, 16) << "of " << pictures[0].size() << " channels";
}

TEST_F(GLSkinning, BlendedSkinsGoThroughTheAlphaQueue) {
    ASSERT_TRUE(openScene(width, height));
    krObject* o = figure(krMaterialBlended, 0x00FF00, 128);
    EXPECT_STREQ(pathOf(o), "krMeshShaderSWSkinAlpha_OGL");
    krVector3 upper = bend(krPi / 2);
    const uint32_t p = pixel(screenX(upper.x), screenY(upper.y));
    EXPECT_LE(near(glTesting::green(p), 128), 2);
    EXPECT_EQ(glTesting::red(p), 0);
    auto* sorted = dynamic_cast<krMeshShaderSWSkinAlpha_OGL*>(firstShader(o));
    EXPECT_EQ(sorted->getTriangles().size(), 4u);
}

TEST_F(GLSkinning, WithoutVertexBuffersTheSkinDrawsFromMemory) {
    ASSERT_TRUE(openScene(width, height));
    video->vertexBuffers = false;
    figure();
    const krVector3 upper = bend(-krPi / 2);
    EXPECT_TRUE(lit(upper));
    EXPECT_FALSE(lit({0, 0.5f, -4}));
    // Without a skeleton the bind pose shows where it was loaded.
    skeleton->dispose();
    ASSERT_TRUE(frame());
    EXPECT_TRUE(lit({0, 0.5f, -4}));
}

TEST_F(GLSkinning, PalettesCutTrianglesToTheirBones) {
    // A palette of four with four weights a vertex.
    files.write("t/skin4.shader",
                "$vertex = \"skin4\"; $fragment = \"lit\"; $attributes = POSITION | NORMAL | TEXCOORD0 | WEIGHTx4;"
                "$textures = TEXTURE0; $parameters = BONEx4;");
    files.write("t/lit.glsl", "#version 120\nvoid main() { gl_FragColor = vec4(1.0); }\n");
    files.write("t/skin4.glsl",
                "#version 120\nuniform mat4 bones[4];\nvoid main() {\n"
                "  vec4 w = gl_MultiTexCoord2;\n"
                "  mat4 s = bones[0] * w.x + bones[1] * w.y + bones[2] * w.z + bones[3] * w.w;\n"
                "  gl_Position = gl_ModelViewProjectionMatrix * (s * gl_Vertex);\n}\n");
    video->glsl = true;
    ASSERT_TRUE(openScene(width, height));
    // One triangle whose corners name six bones: the two lightest go from all three corners,
    // bone 5 (0.1) and then bone 0 (0.2, as light as bone 4 but with the lower number).
    MeshMaker m;
    m.material().shader = "t/skin4.shader";
    m.square({0, 0, -4}, 1);
    krMesh mesh;
    m.make(mesh);
    mesh.indexCount = 3;
    mesh.materials[0].indexCount = 3;
    const krBoneWeight corners[3][krWeightsPerVertex] = {{{1, 0.4f}, {2, 0.3f}, {5, 0.1f}, {0, 0.2f}},
                                                         {{3, 0.5f}, {4, 0.2f}, {1, 0.3f}, {0, 0}},
                                                         {{2, 0.9f}, {3, 0.1f}, {0, 0}, {0, 0}}};
    for (const auto& c : corners) mesh.weights.insert(mesh.weights.end(), c, c + krWeightsPerVertex);
    mesh.weights.resize(static_cast<size_t>(mesh.vertexCount) * krWeightsPerVertex);
    krObject* o = holder();
    o->addMesh(mesh);
    auto* hw = dynamic_cast<krMeshShaderHWSkin_OGL*>(firstShader(o));
    ASSERT_NE(hw, nullptr);
    EXPECT_EQ(hw->getPaletteSize(), 4);
    ASSERT_EQ(hw->getGroups().size(), 1u);
    EXPECT_EQ(hw->getGroups()[0].bones, (std::vector<int32_t>{1, 2, 3, 4}));

    // Triangles on one bone each make groups that fit: all on bone 7 is one group of one place.
    MeshMaker one;
    one.material().shader = "t/skin4.shader";
    for (int i = 0; i < 3; ++i) one.square({static_cast<float>(i), 0, -4}, 0.5f);
    one.material().shader = "t/skin4.shader";
    one.square({0, 1, -4}, 0.5f);
    krMesh single;
    one.make(single);
    const krBoneWeight seven[krWeightsPerVertex] = {{7, 1}, {0, 0}, {0, 0}, {0, 0}};
    for (int32_t v = 0; v < single.vertexCount; ++v) single.weights.insert(single.weights.end(), seven, seven + 4);
    krObject* p = holder();
    p->addMesh(single);
    auto* item = dynamic_cast<krMeshItem_OGL*>(p->getVideoItems().back());
    // Two materials of one skin shader merge into one object, a group each.
    ASSERT_EQ(item->getShaders().size(), 1u);
    hw = dynamic_cast<krMeshShaderHWSkin_OGL*>(item->getShaders()[0]);
    ASSERT_EQ(hw->getGroups().size(), 2u);
    EXPECT_EQ(hw->getGroups()[0].bones, (std::vector<int32_t>{7, 0, 0, 0}));
    // With optimizeSkinGroups 1 a triangle keeps three bones at most.
    glTesting::set(video, "optimizeSkinGroups", new krVInt(1));
    krMesh again;
    m.make(again);
    again.indexCount = 3;
    again.materials[0].indexCount = 3;
    again.weights = mesh.weights;
    krObject* q = holder();
    q->addMesh(again);
    hw = dynamic_cast<krMeshShaderHWSkin_OGL*>(firstShader(q));
    EXPECT_EQ(hw->getGroups()[0].bones, (std::vector<int32_t>{1, 2, 3, 0}));
    ASSERT_TRUE(frame());
}

TEST_F(GLSkinning, LargeSkinsUseLongIndicesOnTheCardAndAreNotDrawnOnTheProcessor) {
    video->glsl = true;
    ASSERT_TRUE(openScene(width, height));
    for (bool hardware : {false, true}) {
        video->hardwareSkinning = hardware;
        MeshMaker m;
        m.material();
        m.padding(70000);
        m.square({0, 0, -4}, 2);
        krMesh mesh;
        m.make(mesh);
        const krBoneWeight w[krWeightsPerVertex] = {{0, 1}, {0, 0}, {0, 0}, {0, 0}};
        for (int32_t v = 0; v < mesh.vertexCount; ++v) mesh.weights.insert(mesh.weights.end(), w, w + 4);
        krObject* o = holder();
        o->loadSkeleton("t/two.skeleton")->useBone(0, 1);
        // The skeleton's hips lie at (0, -1, -4): the bind pose is where the mesh was made.
        o->addMesh(mesh);
        ASSERT_TRUE(frame());
        EXPECT_EQ(pixel(width / 2, height / 2) != 0, hardware);
        if (!hardware) {
            auto* sw = dynamic_cast<krMeshShaderSWSkin_OGL*>(firstShader(o));
            ASSERT_NE(sw, nullptr);
            EXPECT_EQ(sw->getIndexCount(), 0);
        }
        remove(o);
    }
}

TEST_F(GLSkinning, AShownSkeletonDrawsItsBonesAsLines) {
    ASSERT_TRUE(openScene(width, height));
    krObject* o = holder();
    skeleton = o->loadSkeleton("t/two.skeleton");
    glTesting::set(skeleton, "color", new krVInt(static_cast<int32_t>(toPacked(krColor(255, 0, 0, 255)))));
    skeleton->setVisible(true);
    // A line from the hips at (0, -1, -4) up to the arm's joint at (0, 0, -4), in its colour as
    // the scene's light shows it.
    auto shows = [&](float y, uint32_t mask) {
        bool found = false;
        for (int32_t dx = -1; dx <= 1; ++dx) {
            const uint32_t p = pixel(screenX(0) + dx, screenY(y));
            found = found || ((p & ~mask) == 0 && (p & mask & 0x808080u) != 0);
        }
        return found;
    };
    auto redNear = [&](float y) { return shows(y, 0xFF0000u); };
    ASSERT_TRUE(frame());
    EXPECT_TRUE(redNear(-0.5f));
    EXPECT_FALSE(redNear(0.5f));
    // The arm turned a quarter: the line stays between the two joints, which have not moved.
    skeleton->bone(1).rotation = krQuat::fromAxisAngle(krPi / 2, krVector3::axisZ);
    ASSERT_TRUE(frame());
    EXPECT_TRUE(redNear(-0.5f));
    // Recoloured, and then hidden: the item goes and the bones are counted out again.
    glTesting::set(skeleton, "color", new krVInt(static_cast<int32_t>(toPacked(krColor(0, 255, 0, 255)))));
    ASSERT_TRUE(frame());
    EXPECT_TRUE(shows(-0.5f, 0x00FF00u));
    skeleton->setVisible(false);
    ASSERT_TRUE(frame());
    EXPECT_FALSE(redNear(-0.5f));
    EXPECT_TRUE(skeleton->getVideoItems().empty());
    EXPECT_EQ(skeleton->bone(1).useCount, 0);
}
