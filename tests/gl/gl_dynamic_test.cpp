// Dynamic items on the screen: text laid out from glyph metrics (widths, tabs, line feeds,
// boxes, shadows, colour codes), the stock font, and quads, lines and points drawn from records
// that their owner changes without telling the video.
#include <cmath>

#include "gl_scene.h"
#include "krFontCompiler.h"
#include "render/krDynamicData.h"
#include "render/opengl/krFonts_OGL.h"

using glContent::halvesTexture;
using glContent::solidTexture;
using glTesting::reports;

namespace {

constexpr krColor red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255}, grey{128, 128, 128, 255};
constexpr krColor white{255, 255, 255, 255};

// Overlays are 200 pixels across: a unit of the overlay's coordinates is 200 pixels, and text of
// size 0.1 has cells 20 pixels high. The text tests place text at (0.1, 0.1), 20 pixels in.
constexpr int32_t overlayWidth = 200, overlayHeight = 100;
constexpr float textSize = 0.1f;

class Dynamic : public glTesting::Scene {
protected:
    bool openOverlay() {
        if (!open(overlayWidth, overlayHeight)) return false;
        overlay = module(window);
        viewport(0, 0, overlayWidth, overlayHeight, overlay, true);
        return true;
    }

    // A font whose glyphs A and o are one height wide, A solid and o clear, and i solid and half
    // as wide; its atlas is opaque white on the left and clear on the right.
    void writeTestFont() {
        files.write("t/font/normal.dds", halvesTexture(0xFFFFFFFF, 0x00FFFFFF, 16, 16));
        krGlyph g[krFont::glyphCount];
        g[uint8_t('A')] = {1 / 16.0f, 0.25f, 0.375f, 0.375f};
        g[uint8_t('o')] = {9 / 16.0f, 0.25f, 0.375f, 0.375f};
        g[uint8_t('i')] = {1 / 16.0f, 0.25f, 0.1875f, 0.375f};
        files.write("t/font/normal.font", krEncodeFontFile(g));
    }

    krVideoItem* text(krTextData& data, const char* letters) {
        data.font = "t/font";
        data.text = letters;
        data.position = {0.1f, 0.1f, 0};
        data.size = {textSize, textSize, 1};
        data.color = red;
        return video->createTextItem(overlay, &data, krDynamicKind::interfaceText);
    }

    // A pixel counted from the top left, as the overlay counts.
    uint32_t top(int32_t x, int32_t y) const { return pixel(x, overlayHeight - 1 - y); }

    // The first and last column of a row of the overlay that is not background.
    std::pair<int32_t, int32_t> inkAlong(int32_t y) const {
        int32_t first = -1, last = -1;
        for (int32_t x = 0; x < overlayWidth; ++x)
            if (top(x, y) != 0) {
                if (first < 0) first = x;
                last = x;
            }
        return {first, last};
    }

    // Rows of a column of the 64 x 48 scene, counted from the bottom, brighter than half.
    std::vector<int32_t> litRows(int32_t x) const {
        std::vector<int32_t> rows;
        for (int32_t y = 0; y < 48; ++y)
            if (glTesting::green(pixel(x, y)) > 128) rows.push_back(y);
        return rows;
    }

    krModule* overlay = nullptr;
};

using GLText = Dynamic;
using GLDynamicItems = Dynamic;

uint32_t rgb(const krColor& c) { return uint32_t(c.r) << 16 | uint32_t(c.g) << 8 | c.b; }

}  // namespace

TEST_F(GLText, TextHasItsWidthAndColourOverItsBackground) {
    writeTestFont();
    ASSERT_TRUE(openOverlay());
    krTextData data;
    data.background = blue;
    krVideoItem* item = text(data, "AoA");
    ASSERT_NE(item, nullptr);
    ASSERT_TRUE(frame());
    // Three cells of 20 pixels from x 20, rows 20 to 39: the glyph, the box through a clear
    // glyph, the glyph.
    EXPECT_EQ(top(30, 30), rgb(red));
    EXPECT_EQ(top(50, 30), rgb(blue));
    EXPECT_EQ(top(70, 30), rgb(red));
    EXPECT_EQ(inkAlong(30), std::make_pair(20, 79));
    EXPECT_EQ(top(30, 18), 0u);
    EXPECT_EQ(top(30, 41), 0u);
    EXPECT_FLOAT_EQ(video->textWidth(item), 0.3f);
    // A glyph and its box for each letter.
    EXPECT_EQ(video->getPolyCount(), 6);

    // The owner changes its record; the video is not told.
    data.text = "iA";
    data.color = green;
    data.background = krColor::none;
    data.position.x = 0.2f;
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30), std::make_pair(40, 69));
    EXPECT_EQ(top(45, 30), rgb(green));
    EXPECT_EQ(video->getPolyCount(), 2);
    data.text = "";
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30).first, -1);
    EXPECT_TRUE(reports().errors.empty());
}

TEST_F(GLText, TabsAndLineFeedsMoveThePen) {
    writeTestFont();
    ASSERT_TRUE(openOverlay());
    krTextData data;
    text(data, "A\tA\nA");
    // Half a height in, in units of the size before scaling.
    data.startX = 0.5f * textSize;
    ASSERT_TRUE(frame());
    // The first line starts at 0.5, a tab goes to 3 from the start of the text; the second line
    // starts at 0, 1.25 heights down.
    EXPECT_EQ(inkAlong(30), std::make_pair(30, 99));
    EXPECT_EQ(top(60, 30), 0u);
    EXPECT_EQ(inkAlong(55), std::make_pair(20, 39));
    EXPECT_EQ(top(30, 42), 0u);

    // Two tabs reach 6; a tab measures from the start, so it may lead back over what is drawn.
    data.startX = 0;
    data.text = "\t\tA";
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30), std::make_pair(140, 159));
    data.text = "AAAA\tA";
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30), std::make_pair(20, 99));
    // Drawn in order: the box of a glyph a tab led back to lies over the glyph drawn there before.
    data.text = "AAAA\to";
    data.background = blue;
    ASSERT_TRUE(frame());
    EXPECT_EQ(top(70, 30), rgb(red));
    EXPECT_EQ(top(90, 30), rgb(blue));
}

TEST_F(GLText, ShadowsAndColourCodes) {
    writeTestFont();
    ASSERT_TRUE(open(overlayWidth, overlayHeight));
    overlay = module(window);
    viewport(0, 0, overlayWidth, overlayHeight, overlay, true);
    krTextData data;
    text(data, "A\x04" "0000FFFF" "A");
    ASSERT_TRUE(frame());
    // The code's eight digits are not drawn, and the glyph after it is green.
    EXPECT_EQ(top(30, 30), rgb(red));
    EXPECT_NEAR(glTesting::green(top(50, 30)), 254, 1);
    EXPECT_EQ(glTesting::red(top(50, 30)), 0);
    EXPECT_EQ(inkAlong(30), std::make_pair(20, 59));
    EXPECT_EQ(video->getPolyCount(), 2);

    // The shadow lies two pixels right and down, in its own colour throughout.
    data.shadowColor = grey;
    data.shadowOffset = {0.01f, 0.01f, 0};
    ASSERT_TRUE(frame());
    EXPECT_EQ(top(30, 30), rgb(red));
    EXPECT_EQ(top(61, 30), rgb(grey));
    EXPECT_EQ(top(41, 41), rgb(grey));
    EXPECT_EQ(top(30, 43), 0u);
    EXPECT_EQ(video->getPolyCount(), 4);

    // A code cut short ends the text.
    data.shadowColor = krColor::none;
    data.text = "A\x04" "00FF";
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30), std::make_pair(20, 39));
}

TEST_F(GLText, TheStockFontDrawsAsWideAsItMeasures) {
    ASSERT_TRUE(openOverlay());
    krTextData data;
    data.font = krDefaultFont;
    data.text = "Kerrin 3.0";
    data.position = {0.1f, 0.1f, 0};
    data.size = {textSize, textSize, 1};
    data.color = red;
    data.background = white;
    krVideoItem* item = video->createTextItem(overlay, &data, krDynamicKind::interfaceText);
    ASSERT_TRUE(frame());
    EXPECT_TRUE(reports().errors.empty());
    const float width = video->textWidth(item);
    EXPECT_GT(width, 0.4f);
    // The boxes run unbroken from the start for the measured width.
    const auto [first, last] = inkAlong(22);
    EXPECT_EQ(first, 20);
    EXPECT_NEAR(last + 1 - first, width * overlayWidth, 1);
    // Red ink on the white boxes somewhere in the middle of the cells.
    int32_t reddish = 0;
    for (int32_t x = first; x <= last; ++x) reddish += glTesting::green(top(x, 30)) < 128;
    EXPECT_GT(reddish, 10);
    EXPECT_EQ(video->getFonts()->useCount(krDefaultFont), 1);
}

TEST_F(GLDynamicItems, QuadsFollowTheirRecordAndTakeNewTextures) {
    files.write("t/blue.dds", solidTexture(0xFF0000FF));
    files.write("t/orange.dds", solidTexture(0xFFFF8000));
    ASSERT_TRUE(openOverlay());
    krVertex v[4] = {};
    const float corners[4][2] = {{0.1f, 0.1f}, {0.3f, 0.1f}, {0.3f, 0.2f}, {0.1f, 0.2f}};
    for (int i = 0; i < 4; ++i) {
        v[i].position = {corners[i][0], corners[i][1], 0};
        v[i].color = red;
    }
    krDynamicData data;
    data.vertices = v;
    data.count = 4;
    krVideoItem* item = video->createDynamicItem(overlay, &data, krDynamicKind::interfaceQuads);
    ASSERT_NE(item, nullptr);
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30), std::make_pair(20, 59));
    EXPECT_EQ(top(40, 30), rgb(red));

    // Moved and recoloured in the owner's own array.
    for (krVertex& x : v) x.color = green;
    v[1].position.x = v[2].position.x = 0.4f;
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30), std::make_pair(20, 79));
    EXPECT_EQ(top(70, 30), rgb(green));
    data.count = 0;
    ASSERT_TRUE(frame());
    EXPECT_EQ(inkAlong(30).first, -1);

    // A texture comes only through setItemData, which lets the old one go.
    data.count = 4;
    for (krVertex& x : v) x.color = white;
    data.textures[0] = "t/blue.dds";
    ASSERT_TRUE(frame());
    EXPECT_EQ(top(40, 30), rgb(white));
    video->setItemData(item, &data);
    ASSERT_TRUE(frame());
    EXPECT_EQ(top(40, 30), rgb(blue));
    EXPECT_EQ(textures()->useCount("t/blue.dds"), 1);
    data.textures[0] = "t/orange.dds";
    video->setItemData(item, &data);
    ASSERT_TRUE(frame());
    EXPECT_EQ(top(40, 30), 0xFF8000u);
    EXPECT_EQ(textures()->useCount("t/blue.dds"), 0);
    delete item;
    EXPECT_EQ(textures()->useCount("t/orange.dds"), 0);
    EXPECT_TRUE(reports().errors.empty());
}

TEST_F(GLDynamicItems, LinesLieWhereTheirRecordSays) {
    ASSERT_TRUE(openScene());
    krModule* owner = module(scene);
    krVertex v[2] = {};
    v[0].position = {-1, 0.05f, -5};
    v[1].position = {1, 0.05f, -5};
    v[0].color = v[1].color = white;
    krDynamicData data;
    data.vertices = v;
    data.count = 2;
    ASSERT_NE(video->createDynamicItem(owner, &data, krDynamicKind::skeletonLines), nullptr);
    ASSERT_TRUE(frame());
    // One row through the middle, lit by the scene's ambient light alone.
    EXPECT_EQ(litRows(32), std::vector<int32_t>{24});
    EXPECT_EQ(pixel(32, 24), 0xCCCCCCu);
    EXPECT_EQ(video->getPolyCount(), 1);
    // A unit up at 5 deep is 24 / (5 tan 30) pixels up.
    v[0].position.y = v[1].position.y = 1;
    ASSERT_TRUE(frame());
    EXPECT_EQ(litRows(32), std::vector<int32_t>{32});
}

TEST_F(GLDynamicItems, PointsWithoutSpritesAreSquaresFacingTheEye) {
    ASSERT_TRUE(openScene());
    krModule* owner = module(scene);
    krPointVertex p[1];
    p[0].position = {0, 0, -5};
    p[0].color = white;
    krDynamicData data;
    data.points = p;
    data.count = 1;
    data.pointSize = 0.5f;
    krVideoItem* item = video->createDynamicItem(owner, &data, krDynamicKind::particles);
    ASSERT_STREQ(item->className(), "krDynamicPointsItem_OGL");
    ASSERT_TRUE(frame());
    // Half a unit each way at 5 deep: 8.3 pixels across, around the middle.
    const auto across = [&](int32_t y) {
        int32_t n = 0;
        for (int32_t x = 0; x < 64; ++x) n += pixel(x, y) == 0xCCCCCCu;
        return n;
    };
    EXPECT_NEAR(across(24), 8, 1);
    EXPECT_EQ(pixel(32, 24), 0xCCCCCCu);
    EXPECT_EQ(video->getPolyCount(), 2);
    p[0].position.x = 1;
    p[0].size = 2;
    ASSERT_TRUE(frame());
    EXPECT_NEAR(across(24), 17, 1);
    EXPECT_EQ(pixel(48, 24), 0xCCCCCCu);
    EXPECT_EQ(pixel(28, 24), 0u);
}

TEST_F(GLDynamicItems, PointSpritesWithoutACameraAreSizedByTheirFactorAlone) {
    video->pointSprites = true;
    ASSERT_TRUE(openScene());
    ASSERT_TRUE(video->pointSprites);
    krModule* owner = module(scene);
    krPointVertex p[2];
    p[0].position = {-1, 0, -5};
    p[1].position = {1, 0, -5};
    p[0].color = p[1].color = white;
    p[0].size = p[1].size = 20;
    krDynamicData data;
    data.points = p;
    data.count = 2;
    // Not a size the camera-less view reads.
    data.pointSize = 100;
    krVideoItem* item = video->createDynamicItem(owner, &data, krDynamicKind::particles);
    ASSERT_STREQ(item->className(), "krDynamicPointsItem_OGL");
    ASSERT_TRUE(frame());
    // 20 pixels shrunk by the distance attenuation 1 / sqrt(0.5 + 0.25 d + 0.25 d^2) at d = 5.
    const float expected = 20 / std::sqrt(8.0f);
    int32_t lit = 0;
    for (int32_t x = 0; x < 32; ++x) lit += glTesting::green(pixel(x, 24)) > 128;
    EXPECT_NEAR(lit, expected, 1.5f);
    EXPECT_GT(glTesting::green(pixel(24, 24)), 128);
    EXPECT_GT(glTesting::green(pixel(40, 24)), 128);
    EXPECT_EQ(pixel(32, 24), 0u);
}

TEST_F(GLDynamicItems, ShadedPointsSizeThemselvesInTheStockProgram) {
    video->pointSprites = true;
    video->glsl = true;
    ASSERT_TRUE(openScene());
    ASSERT_TRUE(video->glsl && video->pointSprites);
    krModule* owner = module(scene);
    krPointVertex p[1];
    p[0].position = {0, 0, -5};
    p[0].color = green;
    p[0].size = 20;
    krDynamicData data;
    data.points = p;
    data.count = 1;
    krVideoItem* item = video->createDynamicItem(owner, &data, krDynamicKind::particles);
    ASSERT_STREQ(item->className(), "krDynamicShadedPointsItem_OGL");
    ASSERT_TRUE(frame());
    EXPECT_TRUE(reports().boxes.empty());
    EXPECT_TRUE(reports().errors.empty());
    int32_t lit = 0;
    for (int32_t x = 0; x < 64; ++x) lit += pixel(x, 24) == rgb(green);
    EXPECT_NEAR(lit, 20 / std::sqrt(8.0f), 1.5f);
    p[0].position.x = 1;
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(40, 24), rgb(green));
    EXPECT_EQ(pixel(32, 24), 0u);
}

TEST_F(GLDynamicItems, ItemsMadeBeforeAWindowOrAcrossANewOneTakeTheirTexturesAgain) {
    writeTestFont();
    files.write("t/blue.dds", solidTexture(0xFF0000FF));
    // Owners may ask for items before the window has a context.
    overlay = module(window);
    krTextData text;
    text.font = "t/font";
    text.text = "A";
    text.position = {0.1f, 0.1f, 0};
    text.size = {textSize, textSize, 1};
    text.color = red;
    krVideoItem* label = video->createTextItem(overlay, &text, krDynamicKind::interfaceText);
    krVertex v[4] = {};
    const float corners[4][2] = {{0.5f, 0.1f}, {0.6f, 0.1f}, {0.6f, 0.2f}, {0.5f, 0.2f}};
    for (int i = 0; i < 4; ++i) v[i].position = {corners[i][0], corners[i][1], 0};
    krDynamicData fill;
    fill.vertices = v;
    fill.count = 4;
    fill.textures[0] = "t/blue.dds";
    krVideoItem* quad = video->createDynamicItem(overlay, &fill, krDynamicKind::interfaceQuads);
    ASSERT_TRUE(label && quad);
    EXPECT_EQ(textures()->useCount("t/blue.dds"), 0);

    for (int round = 0; round < 2; ++round) {
        // The second round makes the window anew: what lived in the old context went with it.
        ASSERT_TRUE(open(overlayWidth, overlayHeight));
        if (round == 0) viewport(0, 0, overlayWidth, overlayHeight, overlay, true);
        ASSERT_TRUE(frame());
        EXPECT_EQ(top(30, 30), rgb(red)) << round;
        EXPECT_EQ(top(110, 30), rgb(blue)) << round;
        EXPECT_EQ(textures()->useCount("t/blue.dds"), 1);
        EXPECT_EQ(textures()->useCount("t/font/normal.dds"), 1);
    }
    delete quad;
    delete label;
    EXPECT_EQ(textures()->useCount("t/blue.dds"), 0);
    EXPECT_EQ(textures()->useCount("t/font/normal.dds"), 0);
    EXPECT_EQ(video->getFonts()->useCount("t/font"), 0);
    EXPECT_TRUE(reports().errors.empty());
}

TEST_F(GLDynamicItems, BackFacesAreCulledUnlessToldAndTracersBlendInTheAlphaPass) {
    ASSERT_TRUE(openScene());
    // A square at 5 deep, wound clockwise as the eye sees it: its back faces the eye.
    krVertex back[4] = {};
    const float corners[4][2] = {{-1, -1}, {-1, 1}, {1, 1}, {1, -1}};
    for (int i = 0; i < 4; ++i) {
        back[i].position = {corners[i][0], corners[i][1], -5};
        back[i].color = red;
    }
    krDynamicData data;
    data.vertices = back;
    data.count = 4;
    video->createDynamicItem(module(scene), &data, krDynamicKind::required | krDynamicKind::quads);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0u);
    krVideoItem* twoSided = video->createDynamicItem(
        module(scene), &data, krDynamicKind::required | krDynamicKind::quads | krDynamicKind::noCulling);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xCC0000u);
    delete twoSided;

    // A tracer in front, half transparent, waits for the alpha pass and blends over the square.
    krVertex front[4] = {};
    for (int i = 0; i < 4; ++i) {
        front[i].position = {corners[3 - i][0], corners[3 - i][1], -4};
        front[i].color = krColor(0, 255, 0, 128);
        back[i].position = front[i].position - krVector3(0, 0, 1);
    }
    krDynamicData tracer;
    tracer.vertices = front;
    tracer.count = 4;
    video->createDynamicItem(module(scene), &tracer, krDynamicKind::tracers);
    ASSERT_TRUE(frame());
    EXPECT_NEAR(glTesting::red(pixel(32, 24)), 102, 2);
    EXPECT_NEAR(glTesting::green(pixel(32, 24)), 102, 2);
}
