// Glows: the flare over a visible glow and none over a hidden one, the rule without occlusion
// queries, the glow queue's bound, and the flare's spiked rim.
#include <cmath>

#include "gl_scene.h"
#include "interface/krCameraFlying.h"
#include "render/opengl/krMeshItem_OGL.h"
#include "render/opengl/krMeshShaderGlow_OGL.h"

using glContent::MeshMaker;
using glTesting::reports;

namespace {
// A small lamp of the given colour, which glows in it.
MeshMaker lamp(uint32_t rgb = 0xFFFFFF) {
    MeshMaker m;
    m.material(rgb, 255, krMaterialGlowing).emission = glContent::emissionFor(rgb);
    m.square({}, 0.5f);
    return m;
}

krMeshShaderGlow_OGL* glowOf(krModule* m) {
    auto* item = dynamic_cast<krMeshItem_OGL*>(m->getVideoItems().front());
    return dynamic_cast<krMeshShaderGlow_OGL*>(item->getShaders()[0]);
}

class GLGlows : public glTesting::Scene {
protected:
    void SetUp() override {
        Scene::SetUp();
        video->occlusionQuery = true;
    }

    // Glows need a camera's view direction: from the origin down -Z, as the default view.
    bool openWithCamera() {
        if (!openScene(64, 48)) return false;
        auto* camera = new krFlyingCamera(root);
        camera->attach();
        view->setCamera(camera);
        return true;
    }
};
}  // namespace

TEST_F(GLGlows, AVisibleGlowFlaresAndAHiddenOneDoesNot) {
    ASSERT_TRUE(openWithCamera());
    ASSERT_TRUE(video->occlusionQuery);
    MeshMaker m = lamp();
    krObject* o = object(m, {0, 0, -5});
    ASSERT_NE(glowOf(o)->query, 0u);
    ASSERT_TRUE(frame());
    // The mesh itself, and the flare around it on the black background.
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
    EXPECT_EQ(video->getGlowCount(), 1);
    EXPECT_GT(glowOf(o)->brightness, 0.0f);
    EXPECT_NE(pixel(32 + 8, 24), 0u);
    EXPECT_EQ(video->getPolyCount(), 2 + krMeshShaderGlow_OGL::flareRimPoints);
    // Behind a wall nothing of it passes: no flare, the wall as it is.
    MeshMaker wall;
    wall.material(0x404040);
    wall.square({}, 4);
    object(wall, {0, 0, -3});
    ASSERT_TRUE(frame());
    EXPECT_EQ(video->getGlowCount(), 0);
    EXPECT_EQ(pixel(32, 24), 0x404040u);
    EXPECT_EQ(pixel(32 + 8, 24), 0x404040u);
}

TEST_F(GLGlows, WithoutQueriesTheViewDecides) {
    video->occlusionQuery = false;
    ASSERT_TRUE(openWithCamera());
    MeshMaker m = lamp();
    krObject* behind = object(m, {0, 0, 5});
    EXPECT_EQ(glowOf(behind)->query, 0u);
    ASSERT_TRUE(frame());
    EXPECT_EQ(video->getGlowCount(), 0);
    object(m, {0, 0, -5});
    ASSERT_TRUE(frame());
    EXPECT_EQ(video->getGlowCount(), 1);
    EXPECT_NE(pixel(32 + 8, 24), 0u);
}

TEST_F(GLGlows, TheGlowQueueHoldsTwoHundredAndFiftySix) {
    ASSERT_TRUE(openWithCamera());
    MeshMaker wall;
    wall.material(0x404040);
    wall.square({}, 8);
    object(wall, {0, 0, -6});
    // The first ones fill the queue, hidden behind the wall; the last, in front of it, finds no
    // room and is not drawn at all.
    MeshMaker hidden = lamp(0x00FF00);
    for (int i = 0; i < krVideo_OGL::glowQueueSize; ++i) object(hidden, {0, 0, -7});
    MeshMaker last = lamp(0xFF0000);
    object(last, {1, 0, -5});
    ASSERT_TRUE(frame());
    EXPECT_EQ(video->getGlowCount(), 0);
    EXPECT_EQ(pixel(32 + 7, 24), 0x404040u);
}

TEST_F(GLGlows, TheFlareIsAStarWithItsLongestSpikesEverySixthOfATurn) {
    ASSERT_TRUE(open(200, 200));
    glViewport(0, 0, 200, 200);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 1, 1, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    video->resetPolygonCounter();
    const float r = 0.4f;
    krMeshShaderGlow_OGL::drawFlare(video, 0.5f, 0.5f, r, krColor(255, 255, 255, 255));
    video->closePolygonCount();
    EXPECT_EQ(video->getPolyCount(), krMeshShaderGlow_OGL::flareRimPoints);
    std::vector<uint8_t> rgba(200 * 200 * 4);
    glReadPixels(0, 0, 200, 200, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    auto at = [&](float angle, float distance) {
        const int x = static_cast<int>(100 + std::cos(angle) * distance * 200);
        const int y = static_cast<int>(100 - std::sin(angle) * distance * 200);
        return rgba[static_cast<size_t>((y * 200 + x) * 4)];
    };
    // The rim: 0.75 r, and 0.26 r^3 further for each of: an even point, a fourth, an eighth.
    const auto point = [](int i) { return krTwoPi * static_cast<float>(i) / krMeshShaderGlow_OGL::flareRimPoints; };
    const float spike = (0.75f + 3 * 0.26f * r * r) * r;
    const float shoulder = (0.75f + 0.26f * r * r) * r;
    const float nearSpike = spike - 0.01f;
    EXPECT_GT(at(point(0), nearSpike), 0);
    EXPECT_GT(at(point(8), nearSpike), 0);
    EXPECT_EQ(at(point(4), nearSpike), 0);
    EXPECT_EQ(at(point(6), nearSpike), 0);
    EXPECT_GT(at(point(6), shoulder - 0.01f), 0);
    EXPECT_EQ(at(point(7), shoulder - 0.01f), 0);
    // Bright at the centre, fading out to the rim.
    EXPECT_GT(at(0, 0), 250);
    EXPECT_GT(at(0, 0.1f), at(0, 0.2f));
    EXPECT_TRUE(reports().errors.empty());
}
