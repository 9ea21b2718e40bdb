// Fonts and dynamic items without a window: the font table's sharing and reports, the .font
// reader on broken files, text measures from glyph metrics, and what the item factory refuses.
#include <cmath>
#include <cstring>
#include <limits>

#include "core/krFile.h"
#include "engine_testing.h"
#include "krFontCompiler.h"
#include "render/krDynamicData.h"
#include "render/krMeshFileWriter.h"
#include "render/opengl/krDynamicPointsItem_OGL.h"
#include "render/opengl/krFonts_OGL.h"
#include "render/opengl/krVideo_OGL.h"

namespace {

using engineTesting::reports;

// Glyph a is one font height wide, b half of one, digits a quarter; nothing else is defined.
void testGlyphs(krGlyph (&g)[krFont::glyphCount]) {
    for (krGlyph& x : g) x = krGlyph();
    g[uint8_t('a')] = {0, 0, 0.5f, 0.5f};
    g[uint8_t('b')] = {0.5f, 0, 0.25f, 0.5f};
    for (int c = '0'; c <= '9'; ++c) g[c] = {0, 0.5f, 0.125f, 0.5f};
    g[uint8_t('F')] = g[uint8_t('0')];
}

std::string testFontFile() {
    krGlyph g[krFont::glyphCount];
    testGlyphs(g);
    return krEncodeFontFile(g);
}

krFontFile::Result readBytes(const std::string& bytes, krGlyph (&glyphs)[krFont::glyphCount]) {
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    return krFontFile::read(file, glyphs);
}

class RenderFonts : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        video = make<krVideo_OGL>();
        owner = make<krModule>(video);
    }
    krFonts_OGL* fonts() const { return video->getFonts(); }

    krVideo_OGL* video = nullptr;
    krModule* owner = nullptr;
};

TEST_F(RenderFonts, FontsAreSharedByNameAndCounted) {
    write("t/font/normal.font", testFontFile());
    krFont* first = fonts()->get("t/font", 0);
    EXPECT_FLOAT_EQ(first->advance('a'), 1);
    EXPECT_FLOAT_EQ(first->advance('b'), 0.5f);
    EXPECT_EQ(fonts()->get("t/font", 0), first);
    EXPECT_EQ(fonts()->useCount("t/font"), 2);
    fonts()->release(first);
    EXPECT_EQ(fonts()->useCount("t/font"), 1);
    fonts()->release(first);
    EXPECT_EQ(fonts()->useCount("t/font"), 0);
    // Without a context no atlas was asked for: the only file read is the table.
    EXPECT_TRUE(reports().empty());
}

TEST_F(RenderFonts, AFontThatFailsStaysWithoutGlyphsAndReportsOnce) {
    krFont* missing = fonts()->get("t/missing", 0);
    EXPECT_EQ(reports(), std::vector<std::string>{"File \"t/missing/normal.font\" not found!"});
    EXPECT_EQ(fonts()->get("t/missing", 0), missing);
    EXPECT_EQ(reports().size(), 1u);
    for (int c = 0; c < krFont::glyphCount; ++c) EXPECT_EQ(missing->advance(static_cast<uint8_t>(c)), 0);
    // Read again once its users are gone.
    fonts()->release(missing);
    fonts()->release(missing);
    fonts()->get("t/missing", 0);
    EXPECT_EQ(reports().size(), 2u);

    krChunkWriter other;
    other.begin(0x2000000);
    other.putU32(7);
    other.end();
    write("t/mesh/normal.font", other.data());
    EXPECT_EQ(fonts()->get("t/mesh", 0)->advance('a'), 0);
    EXPECT_EQ(reports().back(), "Invalid font file: 't/mesh/normal.font'");
}

TEST_F(RenderFonts, TheReaderTakesOnlyWholeDrawableTables) {
    krGlyph g[krFont::glyphCount];
    EXPECT_EQ(readBytes(testFontFile(), g), krFontFile::Result::ok);
    EXPECT_EQ(g[uint8_t('b')].width, 0.25f);

    // Unknown chunks are passed over; a short table is none.
    krGlyph table[krFont::glyphCount];
    testGlyphs(table);
    krChunkWriter w;
    w.begin(krFontFile::rootId);
    w.begin(0x3020000);
    w.putU32(1);
    w.end();
    w.begin(krFontFile::glyphsId);
    w.put(table, krFontFile::glyphTableSize - 4);
    w.end();
    w.end();
    EXPECT_EQ(readBytes(w.data(), g), krFontFile::Result::noTable);
    EXPECT_EQ(g[uint8_t('a')].width, 0);

    // A table cut off by the end of the file, though its chunk claims the whole.
    std::string cut = testFontFile();
    cut.resize(cut.size() - 1);
    EXPECT_EQ(readBytes(cut, g), krFontFile::Result::noTable);

    // Glyphs that could not be drawn sensibly are left out; the rest stay.
    table[uint8_t('a')].width = std::numeric_limits<float>::quiet_NaN();
    table[uint8_t('b')].height = -1;
    table[uint8_t('0')].u = std::numeric_limits<float>::infinity();
    table[uint8_t('1')].u = 0.9f;
    table[uint8_t('2')] = {0, 0, 1, 1e-30f};
    table[uint8_t('3')] = {0, 0, 1, 1 / krFont::maxAdvance};
    EXPECT_EQ(readBytes(krEncodeFontFile(table), g), krFontFile::Result::ok);
    for (int c : {'a', 'b', '0', '1', '2'}) EXPECT_EQ(g[c].width + g[c].height, 0) << char(c);
    EXPECT_EQ(g[uint8_t('3')].width, 1);
    EXPECT_EQ(g[uint8_t('4')].width, 0.125f);

    EXPECT_EQ(readBytes(std::string(3, 'x'), g), krFontFile::Result::wrongRoot);
}

TEST_F(RenderFonts, TextMeasuresComeFromTheGlyphMetrics) {
    write("t/font/normal.font", testFontFile());
    krGlyph wide[krFont::glyphCount];
    wide[uint8_t('a')] = {0, 0, 1, 0.5f};
    write("t/other/normal.font", krEncodeFontFile(wide));
    krTextData data;
    data.font = "t/font";
    data.size = {0.1f, 0.2f, 1};
    data.text = "ab?a";
    EXPECT_EQ(video->createTextItem(owner, &data, krDynamicKind::flat), nullptr);
    EXPECT_EQ(video->createTextItem(owner, &data, krDynamicKind::required), nullptr);
    krVideoItem* item = video->createTextItem(owner, &data, krDynamicKind::interfaceText);
    ASSERT_NE(item, nullptr);
    // Undefined glyphs have no width; size.x scales, size.y does not.
    EXPECT_FLOAT_EQ(video->textWidth(item), 0.25f);
    EXPECT_FLOAT_EQ(video->textCharWidth(item, 'a'), 0.1f);
    EXPECT_FLOAT_EQ(video->textCharWidth(item, '?'), 0);
    EXPECT_FLOAT_EQ(video->textCharWidth(item, 256), 0);
    EXPECT_EQ(video->textWidth(nullptr), 0);
    EXPECT_EQ(video->textCharWidth(nullptr, 'a'), 0);
    // The eight digits of a colour code measure as glyphs although they are never drawn.
    data.text = "a\x04" "FF00FF0F" "a";
    EXPECT_FLOAT_EQ(video->textWidth(item), 0.2f + 8 * 0.025f);
    data.text = nullptr;
    EXPECT_EQ(video->textWidth(item), 0);
    data.text = "a";

    // Naming another font in the record is followed; the first one is let go.
    data.font = "t/other";
    EXPECT_FLOAT_EQ(video->textWidth(item), 0.2f);
    EXPECT_EQ(fonts()->useCount("t/font"), 0);
    EXPECT_EQ(fonts()->useCount("t/other"), 1);
    delete item;
    EXPECT_EQ(fonts()->useCount("t/other"), 0);
    EXPECT_TRUE(reports().empty());
}

TEST_F(RenderFonts, TheFactoryMakesNoItemWithoutSomethingToDraw) {
    krVertex vertices[4] = {};
    krPointVertex points[2] = {};
    krDynamicData data;
    data.vertices = vertices;
    data.count = 0;
    // Nothing yet: the owner asks again once it has vertices.
    EXPECT_EQ(video->createDynamicItem(owner, &data, krDynamicKind::interfaceQuads), nullptr);
    data.count = 4;
    EXPECT_EQ(video->createDynamicItem(owner, &data, krDynamicKind::flat | krDynamicKind::quads), nullptr);
    EXPECT_EQ(video->createDynamicItem(owner, &data, krDynamicKind::required), nullptr);
    EXPECT_EQ(video->createDynamicItem(owner, &data, krDynamicKind::particles), nullptr);
    data.vertices = nullptr;
    EXPECT_EQ(video->createDynamicItem(owner, &data, krDynamicKind::interfaceQuads), nullptr);
    data.vertices = vertices;
    // Made without a context: the item waits for one to draw.
    krVideoItem* quads = video->createDynamicItem(owner, &data, krDynamicKind::interfaceQuads);
    ASSERT_NE(quads, nullptr);
    EXPECT_STREQ(quads->className(), "krDynamicPrimitiveItem_OGL");
    quads->draw();

    data.points = points;
    data.count = 2;
    krVideoItem* plain = video->createDynamicItem(owner, &data, krDynamicKind::particles);
    EXPECT_STREQ(plain->className(), "krDynamicPointsItem_OGL");
    EXPECT_TRUE(data.shader.empty());
    // With a shader language and point sprites the points size themselves in a program, whose
    // name the record gets when it names none.
    video->glsl = video->pointSprites = true;
    krVideoItem* shaded = video->createDynamicItem(owner, &data, krDynamicKind::particles);
    EXPECT_STREQ(shaded->className(), "krDynamicShadedPointsItem_OGL");
    EXPECT_EQ(data.shader, krDynamicData::defaultPointShader);
    EXPECT_EQ(owner->getVideoItems().size(), 3u);
    EXPECT_TRUE(reports().empty());
}

}  // namespace
