// The window: its frame, its format, its capability tests, its failures.
#include "gl_testing.h"

using glTesting::reports;
using GLWindow = glTesting::Window;

TEST_F(GLWindow, BackgroundFillsAFrameOfTheAskedSize) {
    ASSERT_TRUE(open(80, 60));
    EXPECT_EQ(window->getWidth(), 80);
    EXPECT_EQ(window->getHeight(), 60);
    // Packed colours hold blue above green: 0xRRBBGGAA.
    glTesting::set(window, "background", new krVInt(static_cast<int32_t>(0x20406080u)));
    ASSERT_TRUE(frame());
    ASSERT_EQ(probe->width, 80);
    ASSERT_EQ(probe->height, 60);
    for (auto [x, y] : {std::pair{0, 0}, {79, 59}, {40, 30}, {0, 59}}) EXPECT_EQ(pixel(x, y), 0x206040u) << x << "," << y;
    EXPECT_EQ(reports().infos.front(), "initializing OpenGL-window...");
    EXPECT_EQ(reports().infos[1], "[done]");
}

TEST_F(GLWindow, ModeAndVersionDescribeTheContext) {
    ASSERT_TRUE(open(64, 48));
    const std::string& mode = window->getMode();
    const char* lines[] = {"Video: OpenGL ", "Device: ", "Screen: ", "Display: 64x48 24bit", "Antialias: off",
                           "Filter: trilinear", "Depth: ", "Stencil: ", "Accumulation: ", "GLSL: no", "CG: no",
                           "Motionblur: no"};
    size_t at = 0;
    for (const char* line : lines) {
        ASSERT_EQ(mode.compare(at, std::strlen(line), line), 0) << line << " in\n" << mode;
        at = mode.find('\n', at) + 1;
    }
    EXPECT_EQ(at, mode.size());
    EXPECT_EQ(window->getVersion(), "kerrin_gl_tests v. 3.0.0.0");
}

TEST_F(GLWindow, CapabilityWishesAreTestedAndCleared) {
    glTesting::set(video, "shaders", new krVInt(3));
    glTesting::set(video, "occlusionQuery", new krVBool(true));
    glTesting::set(video, "pointSprites", new krVBool(true));
    glTesting::set(video, "maxVertexWeights", new krVInt(9));
    ASSERT_TRUE(open());
    krVariant* shaders = video->getMember("shaders", nullptr, {});
    EXPECT_EQ(shaders->toInt(), 1);  // no driver here compiles the second language
    shaders->release();
    EXPECT_EQ(video->getMaxVertexWeights(), 4);
    EXPECT_TRUE(reports().hasError("CG not supported"));
    EXPECT_TRUE(video->occlusionQuery);
    EXPECT_NE(video->getQuery(), 0u);
    EXPECT_TRUE(video->pointSprites && video->vertexBuffers && video->vertexAttributes && video->pixelBuffers);
    EXPECT_NE(krglUseProgramObjectARB, nullptr);
    const auto& infos = reports().infos;
    EXPECT_NE(std::find(infos.begin(), infos.end(), "GLSL initialized"), infos.end());
    EXPECT_NE(window->getMode().find("GLSL: yes"), std::string::npos);
}

TEST_F(GLWindow, HardwareSkinningNeedsAShaderLanguage) {
    glTesting::set(video, "hardwareSkinning", new krVBool(true));
    ASSERT_TRUE(open());
    EXPECT_FALSE(video->hardwareSkinning);
    EXPECT_TRUE(reports().hasError("Shaders needed for hardware skinning"));
    EXPECT_FALSE(reports().hasError("GLSL not supported"));
}

TEST_F(GLWindow, AntialiasingLadderSettlesOnWhatExists) {
    // The driver here offers four samples at most: eight and six are refused, four is taken.
    glTesting::set(window, "antialiasing", new krVInt(8));
    ASSERT_TRUE(open());
    EXPECT_EQ(window->getAntialiasing(), 4);
    EXPECT_NE(window->getMode().find("Antialias: 4x"), std::string::npos);
    ASSERT_TRUE(frame());
}

TEST_F(GLWindow, MotionBlurAsksForAnAccumulationBuffer) {
    glTesting::set(video, "motionBlur", new krVFloat(0.5f));
    ASSERT_TRUE(open());
    GLint bits = 0;
    glGetIntegerv(GL_ACCUM_RED_BITS, &bits);
    if (glTesting::offscreenDriver() && bits == 0) GTEST_SKIP() << "this video driver has no accumulation buffers";
    EXPECT_GT(bits, 0);
    EXPECT_NE(window->getMode().find("Motionblur: yes"), std::string::npos);
}

TEST_F(GLWindow, BadSizesFailWithAReport) {
    for (auto [w, h] : {std::pair{0, 48}, {64, -1}, {100000, 10}}) {
        reports().errors.clear();
        EXPECT_FALSE(open(w, h));
        ASSERT_EQ(reports().errors.size(), 1u);
        EXPECT_EQ(reports().errors[0], "Invalid window size: " + std::to_string(w) + "x" + std::to_string(h));
        // The frame goes on without a context, drawing nothing.
        EXPECT_TRUE(frame());
        EXPECT_TRUE(probe->pixels.empty());
    }
    // A later init with a good size works.
    EXPECT_TRUE(open(32, 32));
    EXPECT_TRUE(frame());
    EXPECT_EQ(probe->width, 32);
}

TEST_F(GLWindow, InitAgainMakesTheWindowAnew) {
    video->occlusionQuery = true;
    ASSERT_TRUE(open(64, 48));
    auto* v = new krViewPort(video);
    v->attach();
    v->setVisible(true);
    v->setSize(0, 0, 64, 48);
    ASSERT_TRUE(frame());
    EXPECT_FLOAT_EQ(v->pixelCount, 64 * 48);
    ASSERT_TRUE(open(40, 30));
    ASSERT_TRUE(frame());
    EXPECT_EQ(probe->width, 40);
    EXPECT_EQ(probe->height, 30);
    // What lived in the old context is made again: the viewport is measured in the new frame.
    EXPECT_NE(video->getQuery(), 0u);
    EXPECT_FLOAT_EQ(v->pixelCount, 40 * 30);
}

TEST_F(GLWindow, QuitAndCloseEndTheFrameLoop) {
    ASSERT_TRUE(open());
    ASSERT_TRUE(frame());
    krSystem::postQuit();
    EXPECT_FALSE(frame());
    krSystem::clearQuit();
    ASSERT_TRUE(frame());
    glTesting::events::close();
    EXPECT_FALSE(frame());
    EXPECT_TRUE(krSystem::quitPosted());
}

TEST_F(GLWindow, FullscreenThatCannotBeHadFallsBackToAWindow) {
    ASSERT_TRUE(open());
    if (glTesting::offscreenDriver()) GTEST_SKIP() << "no display modes without a screen";
    window->setFullscreen(true);
    // Larger than the virtual screen's only mode.
    ASSERT_TRUE(open(2048, 1600));
    EXPECT_TRUE(reports().hasError("Switching to fullscreen-mode failed!"));
    EXPECT_FALSE(window->isFullscreen());
    EXPECT_TRUE(frame());
}

TEST_F(GLWindow, RefreshRedrawsOnlyTheVideo) {
    ASSERT_TRUE(open(32, 32));
    // A child of the window other than the video must not run in a refresh.
    struct Counter : krModule {
        using krModule::krModule;
        int updates = 0;
        bool update(float) override {
            ++updates;
            return true;
        }
    };
    auto* counter = new Counter(window);
    counter->attach();
    const int32_t before = video->getFrameNumber();
    krVariant* r = window->getMember("update", nullptr, {});
    EXPECT_EQ(r, nullptr);
    EXPECT_EQ(video->getFrameNumber(), before + 1);
    EXPECT_EQ(counter->updates, 0);
}

TEST_F(GLWindow, DeletingTheVideoLeavesAWorkingWindow) {
    ASSERT_TRUE(open(32, 32));
    video->deinit();
    video->release();
    video = nullptr;
    EXPECT_EQ(window->getVideoModule(), nullptr);
    EXPECT_TRUE(frame());
    window->refresh();
    EXPECT_EQ(probe->width, 32);
}
