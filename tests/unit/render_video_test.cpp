// The video's walk without a window: a viewport without a camera culls the way it draws, and
// modules forget a video that goes away instead of keeping a pointer to it.
#include "scene_testing.h"
#include "render/krViewPort.h"

namespace {

using RenderVideo = sceneTesting::Scene;

TEST_F(RenderVideo, WithoutACameraTheViewLooksDownMinusZ) {
    root->setVisible(true);
    auto* viewport = make<krViewPort>(video);
    krObject* ahead = newObject();
    ahead->setPosition(krVector3(0, 0, -5));
    krObject* behind = newObject();
    behind->setPosition(krVector3(0, 0, 5));
    ahead->update(0);
    behind->update(0);
    viewport->setModule(root);
    video->drawScene(0, 0, 640, 480);
    EXPECT_FLOAT_EQ(video->getViewDirection().z, -krVideo::defaultFarPlane);
    EXPECT_TRUE(ahead->isInView());
    EXPECT_FALSE(behind->isInView());
}

TEST_F(RenderVideo, ModulesForgetAVideoThatGoesAway) {
    krObject* object = newObject();
    ASSERT_EQ(object->getVideo(), video);
    video->deinit();
    video->release();
    video = nullptr;
    EXPECT_EQ(object->getVideo(), nullptr);
    // A load after the video went makes no items and touches nothing that is gone.
    run("$o = new_object(); $o.genMeshBox(1, 1, 1);");
    EXPECT_TRUE(sceneTesting::reports().empty());
}

}  // namespace
