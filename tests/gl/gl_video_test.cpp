// The video: viewports and their order, the overlay's coordinates, the queues, fog, lights,
// motion blur and the occlusion measurements, read back from the frame before the swap.
#include "gl_testing.h"

#include <algorithm>

#include "interface/krCameraFollow.h"
#include "render/krLight.h"
#include "script/krVObject.h"

using glTesting::QuadItem;
using glTesting::reports;
using GLVideo = glTesting::Window;

namespace {
const krColorF red{1, 0, 0, 1}, green{0, 1, 0, 1}, blue{0, 0, 1, 1}, white{1, 1, 1, 1};

krModule* at(krModule* m, const krVector3& p) {
    m->setMatrix(krMatrix::fromTranslation(p));
    return m;
}

int near(int value, int wanted) { return std::abs(value - wanted); }
}

TEST_F(GLVideo, DefaultViewAndFarPlaneWithoutACamera) {
    ASSERT_TRUE(open(64, 48));
    krModule* scene = module();
    // Looking down -Z from the origin with a far plane at 100.
    quad(at(module(scene), {-2, 0, -5}), QuadItem::opaque, red);
    quad(at(module(scene), {2, 0, 5}), QuadItem::opaque, green);
    quad(at(module(scene), {0, 0, -150}), QuadItem::opaque, blue, 400);
    viewport(0, 0, 64, 48, scene);
    ASSERT_TRUE(frame());
    // 2 units left at 5 deep, where half the width is tan(30) x 5 x 4 / 3 units.
    EXPECT_EQ(pixel(15, 24), 0xFF0000u);
    EXPECT_EQ(pixel(32, 24), 0u);
    EXPECT_EQ(pixel(44, 24), 0u);
    EXPECT_EQ(pixel(60, 5), 0u);
    // All three were queued and drawn; the view alone kept two off the screen.
    EXPECT_EQ(QuadItem::drawOrder().size(), 3u);
}

TEST_F(GLVideo, ViewportRectanglesAndTheirOrder) {
    ASSERT_TRUE(open(64, 48));
    krModule* left = module();
    krModule* right = module();
    quad(at(module(left), {0, 0, -5}), QuadItem::opaque, red, 50);
    quad(at(module(right), {0, 0, -5}), QuadItem::opaque, green, 50);
    krViewPort* a = viewport(0, 0, 32, 48, left);
    krViewPort* b = viewport(16, 8, 48, 40, right);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(4, 24), 0xFF0000u);
    EXPECT_EQ(pixel(24, 24), 0x00FF00u);  // the later viewport lies on top
    EXPECT_EQ(pixel(60, 24), 0x00FF00u);
    EXPECT_EQ(pixel(24, 4), 0xFF0000u);  // origin bottom left: b starts 8 rows up
    EXPECT_EQ(pixel(40, 4), 0u);
    krVariant* r = a->getMember("bringToFront", nullptr, {});
    EXPECT_EQ(r, nullptr);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0xFF0000u);
    a->getMember("sendToBack", nullptr, {});
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0x00FF00u);
    // Hidden viewports and viewports without a module draw nothing and clear nothing.
    b->setVisible(false);
    a->setModule(nullptr);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0u);
    EXPECT_EQ(video->getViewPorts().size(), 2u);
    b->deinit();
    b->release();
    EXPECT_EQ(video->getViewPorts(), std::vector<krViewPort*>{a});
}

TEST_F(GLVideo, OverlayRunsAcrossToOneAndDownToTheAspect) {
    ASSERT_TRUE(open(64, 48));
    krModule* overlay = module();
    // At a quarter across and a quarter down of the 0.75 high overlay.
    quad(at(module(overlay), {0.25f, 0.1875f, 0}), QuadItem::direct, green, 0.1f);
    viewport(0, 0, 64, 48, overlay, true);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(16, 48 - 12), 0x00FF00u);
    EXPECT_EQ(pixel(16, 12), 0u);
    EXPECT_EQ(pixel(48, 36), 0u);
    // Items of an overlay draw during the walk, outside the queues.
    EXPECT_TRUE(QuadItem::drawOrder().empty());
}

TEST_F(GLVideo, ScreenMatrixTakesTheWorldToTheOverlay) {
    ASSERT_TRUE(open(64, 48));
    krViewPort* v = viewport(0, 0, 64, 48, module());
    ASSERT_TRUE(frame());
    const krVector3 centre = transformPoint(v->getMatrix(), {0, 0, -5});
    EXPECT_NEAR(centre.x, 0.5f, 1e-4f);
    EXPECT_NEAR(centre.y, 0.375f, 1e-4f);
    const krVector3 corner = transformPoint(video->getScreenMatrix(), {0, 0, -5});
    EXPECT_NEAR(corner.x, centre.x, 1e-6f);
}

TEST_F(GLVideo, FogBlendsWithDistance) {
    ASSERT_TRUE(open(64, 48));
    krModule* scene = module();
    quad(at(module(scene), {0, 0, -5}), QuadItem::opaque, red, 4);
    viewport(0, 0, 64, 48, scene);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFF0000u);
    video->fogEnabled = true;
    video->fogColor = blue;
    video->fogStart = 0;
    video->fogEnd = 10;
    ASSERT_TRUE(frame());
    // Halfway into linear fog: half the object, half the fog.
    const uint32_t p = pixel(32, 24);
    EXPECT_LE(near(glTesting::red(p), 128), 3) << std::hex << p;
    EXPECT_LE(near(glTesting::blue(p), 128), 3) << std::hex << p;
    video->fogEnd = 5;
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0x0000FFu);
}

TEST_F(GLVideo, LightsComeAndGoWithTheirModules) {
    ASSERT_TRUE(open(64, 48));
    krModule* scene = module();
    quad(at(module(scene), {0, 0, -5}), QuadItem::opaque, white, 4)->lit = true;
    viewport(0, 0, 64, 48, scene);
    ASSERT_TRUE(frame());
    // The scene's ambient light alone.
    const uint32_t unlit = pixel(32, 24);
    EXPECT_LE(near(glTesting::red(unlit), 204), 2);
    EXPECT_EQ(glTesting::red(unlit), glTesting::blue(unlit));
    auto* light = new krLight(video);
    light->attach();
    light->diffuse = blue;
    light->ambient = krColorF(0, 0, 0, 1);
    light->specular = krColorF(0, 0, 0, 1);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), (unlit & 0xFFFF00u) | 0xFFu);
    light->deinit();
    light->release();
    EXPECT_TRUE(video->getLights().empty());
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), unlit);
}

TEST_F(GLVideo, NeverMoreLightsThanTheDriverHas) {
    ASSERT_TRUE(open(32, 32));
    viewport(0, 0, 32, 32, module());
    GLint offered = 0;
    glGetIntegerv(GL_MAX_LIGHTS, &offered);
    for (int i = 0; i < offered + 4; ++i) (new krLight(video))->attach();
    while (glGetError() != GL_NO_ERROR) {}
    ASSERT_TRUE(frame());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GLVideo, TransparentItemsDrawFarToNear) {
    ASSERT_TRUE(open(64, 48));
    krModule* scene = module();
    // The near one comes first in the tree.
    QuadItem* nearQuad = quad(at(module(scene), {0, 0, -3}), QuadItem::alpha, krColorF(0, 1, 0, 0.5f), 2);
    QuadItem* farQuad = quad(at(module(scene), {0, 0, -6}), QuadItem::alpha, krColorF(1, 0, 0, 0.5f), 4);
    viewport(0, 0, 64, 48, scene);
    ASSERT_TRUE(frame());
    EXPECT_EQ(QuadItem::drawOrder(), (std::vector<const QuadItem*>{farQuad, nearQuad}));
    // Red under green: green over half-red.
    const uint32_t p = pixel(32, 24);
    EXPECT_LE(near(glTesting::red(p), 64), 2) << std::hex << p;
    EXPECT_LE(near(glTesting::green(p), 128), 2) << std::hex << p;
    EXPECT_EQ(video->getAlphaCount(), 0);
}

TEST_F(GLVideo, OpaqueItemsRunGroupedByShader) {
    ASSERT_TRUE(open(32, 32));
    krModule* scene = module();
    std::vector<QuadItem*> items;
    for (uintptr_t key : {3, 1, 2, 1, 3, 2, 1}) {
        items.push_back(quad(at(module(scene), {0, 0, -5}), QuadItem::opaque, red, 0.1f));
        items.back()->setShaderKey(key * 64);
    }
    viewport(0, 0, 32, 32, scene);
    ASSERT_TRUE(frame());
    const auto& order = QuadItem::drawOrder();
    ASSERT_EQ(order.size(), items.size());
    for (size_t i = 1; i < order.size(); ++i)
        EXPECT_LE(reinterpret_cast<uintptr_t>(order[i - 1]->getShader()), reinterpret_cast<uintptr_t>(order[i]->getShader()));
}

TEST_F(GLVideo, QueuesStopAtTheirBounds) {
    video->occlusionQuery = true;
    ASSERT_TRUE(open(16, 16));
    krModule* scene = module();
    krModule* holder = at(module(scene), {0, 0, -5});
    for (int i = 0; i < krVideo_OGL::opaqueQueueSize + 5; ++i) quad(holder, QuadItem::opaque, red, 0.01f);
    for (int i = 0; i < krVideo_OGL::alphaQueueSize + 5; ++i) quad(holder, QuadItem::alpha, red, 0.01f);
    for (int i = 0; i < krVideo_OGL::glowQueueSize + 5; ++i) quad(holder, QuadItem::glow, red, 0.01f);
    viewport(0, 0, 16, 16, scene);
    ASSERT_TRUE(frame());
    EXPECT_EQ(QuadItem::drawOrder().size(),
              static_cast<size_t>(krVideo_OGL::opaqueQueueSize + krVideo_OGL::alphaQueueSize +
                                  krVideo_OGL::glowQueueSize));
    EXPECT_EQ(video->getOpaqueCount(), krVideo_OGL::opaqueQueueSize);
}

TEST_F(GLVideo, GlowsSeenByTheirQueryReachTheOverlayPass) {
    video->occlusionQuery = true;
    ASSERT_TRUE(open(64, 48));
    krModule* scene = module();
    QuadItem* seen = quad(at(module(scene), {-2, 0, -5}), QuadItem::glow, white, 1);
    QuadItem* hidden = quad(at(module(scene), {2, 0, -8}), QuadItem::glow, white, 1);
    quad(at(module(scene), {2, 0, -5}), QuadItem::opaque, red, 2);
    viewport(0, 0, 64, 48, scene);
    ASSERT_TRUE(frame());
    EXPECT_GT(seen->samples, 0u);
    EXPECT_EQ(hidden->samples, 0u);
    EXPECT_EQ(seen->glowDrawn, 1);
    EXPECT_EQ(hidden->glowDrawn, 0);
    EXPECT_EQ(video->getGlowCount(), 1);
}

TEST_F(GLVideo, PixelCountOfAViewportByOcclusionQuery) {
    video->occlusionQuery = true;
    ASSERT_TRUE(open(64, 48));
    krViewPort* whole = viewport(0, 0, 64, 48, module());
    krViewPort* part = viewport(0, 0, 20, 10, module());
    ASSERT_TRUE(frame());
    EXPECT_FLOAT_EQ(whole->pixelCount, 64 * 48);
    EXPECT_FLOAT_EQ(part->pixelCount, 20 * 10);
}

TEST_F(GLVideo, PixelCountIsOneWithoutQueries) {
    ASSERT_TRUE(open(32, 32));
    krViewPort* v = viewport(0, 0, 32, 32, module());
    ASSERT_TRUE(frame());
    EXPECT_FLOAT_EQ(v->pixelCount, 1);
}

TEST_F(GLVideo, MotionBlurLandsBetweenTwoFrames) {
    glTesting::set(video, "motionBlur", new krVFloat(0.5f));
    ASSERT_TRUE(open(32, 32));
    GLint bits = 0;
    glGetIntegerv(GL_ACCUM_RED_BITS, &bits);
    if (bits == 0) GTEST_SKIP() << "this video driver has no accumulation buffers";
    viewport(0, 0, 32, 32, module());
    glTesting::set(window, "background", new krVInt(static_cast<int32_t>(0xFF0000FFu)));
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(16, 16), 0xFF0000u);
    glTesting::set(window, "background", new krVInt(static_cast<int32_t>(0x0000FFFFu)));
    ASSERT_TRUE(frame());
    // The accumulation buffer's encoding differs between drivers: only strictly between.
    const uint32_t p = pixel(16, 16);
    EXPECT_GT(glTesting::red(p), 0) << std::hex << p;
    EXPECT_LT(glTesting::red(p), 255) << std::hex << p;
    EXPECT_GT(glTesting::green(p), 0) << std::hex << p;
    EXPECT_LT(glTesting::green(p), 255) << std::hex << p;
}

TEST_F(GLVideo, HiddenAndOutOfViewSubtreesAreDropped) {
    ASSERT_TRUE(open(32, 32));
    struct Outside : krModule {
        using krModule::krModule;
        bool isInView() override { return false; }
    };
    krModule* scene = module();
    krModule* hidden = module(scene);
    hidden->setVisible(false);
    quad(at(module(hidden), {0, 0, -5}), QuadItem::opaque, red);
    auto* outside = new Outside(scene);
    outside->attach();
    outside->setVisible(true);
    quad(at(module(outside), {0, 0, -5}), QuadItem::opaque, red);
    QuadItem* shown = quad(at(module(scene), {0, 0, -5}), QuadItem::opaque, green);
    viewport(0, 0, 32, 32, scene);
    ASSERT_TRUE(frame());
    EXPECT_EQ(QuadItem::drawOrder(), std::vector<const QuadItem*>{shown});
}

TEST_F(GLVideo, CamerasGiveTheViewAndMarkAlphaSorting) {
    ASSERT_TRUE(open(64, 48));
    krModule* scene = module();
    quad(at(module(scene), {0, 0, 10}), QuadItem::opaque, green, 2);
    krViewPort* v = viewport(0, 0, 64, 48, scene);
    auto* camera = new krFixedCamera(root);
    camera->attach();
    krArgs place{new krVFloat(0), new krVFloat(0), new krVFloat(20)};
    camera->getMember("setPivot", nullptr, place);
    for (krVariant* a : place) a->release();
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0u);  // without a camera the quad lies behind the viewer
    EXPECT_FALSE(video->getForceAlphaSort());
    krVariant* c = new krVObject(camera);
    v->setMember("camera", c);
    c->release();
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0x00FF00u);
    EXPECT_TRUE(video->getForceAlphaSort());
    EXPECT_EQ(video->getEye(), krVector3(0, 0, 20));
    EXPECT_FLOAT_EQ(video->getViewDirection().z, -100);
    // A deleted camera leaves the default view, not a dangling one.
    camera->deinit();
    camera->release();
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0u);
    EXPECT_TRUE(v->isCameraAssigned());
}
