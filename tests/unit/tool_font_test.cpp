// The font compiler, round trip: a real face compiled, its table written and read back with the
// engine's reader, its atlas read with the engine's texture header reader; and the refusals.
#include <gtest/gtest.h>

#include <cstring>

#include "core/krFile.h"
#include "krDdsWriter.h"
#include "krFontCompiler.h"
#include "render/krTextureInfo.h"

namespace {

krFontOptions sized(int32_t pixels, int32_t atlas = 0) {
    krFontOptions o;
    o.pixelSize = pixels;
    o.atlasSide = atlas;
    return o;
}

uint8_t alphaAt(const krTextureInfo& info, int32_t x, int32_t y) {
    return static_cast<uint8_t>(info.pixels[(static_cast<size_t>(y) * static_cast<size_t>(info.width) + x) * 4 + 3]);
}

TEST(ToolFont, AFaceRoundTripsThroughTheEnginesReaders) {
    krCompiledFont font;
    std::string error;
    ASSERT_TRUE(krCompileFont(KERRIN_STOCK_FONT, sized(24), font, error)) << error;
    const std::string table = krEncodeFontFile(font.glyphs);
    krFile file(krFile::inMemory, table.data(), static_cast<uint32_t>(table.size()));
    krGlyph read[krFont::glyphCount];
    ASSERT_EQ(krFontFile::read(file, read), krFontFile::Result::ok);
    EXPECT_EQ(std::memcmp(read, font.glyphs, sizeof read), 0);

    const std::string dds = krEncodeDds(font.atlas, krTextureFormat::bgra, false);
    krTextureInfo info;
    ASSERT_TRUE(info.parse(dds.data(), static_cast<uint32_t>(dds.size())));
    ASSERT_EQ(info.width, font.atlas.width);
    ASSERT_EQ(info.width, info.height);
    const float side = static_cast<float>(info.width);

    // Every glyph is one line tall; controls and the gaps of the code page have none.
    const krGlyph& a = read[uint8_t('A')];
    EXPECT_FLOAT_EQ(a.height * side, static_cast<float>(font.cellHeight));
    for (int c : {0, 4, 9, 10, 31, 127, 0x81}) EXPECT_EQ(read[c].height, 0) << c;
    EXPECT_GT(read[uint8_t(' ')].width, 0);
    EXPECT_GT(read[0x80].width, 0);  // the euro sign
    EXPECT_GT(read[0xE9].width, 0);  // e acute
    // Wide letters are wider than narrow ones, and at 24 pixels a capital is about 0.7 lines wide.
    krFont f;
    std::memcpy(f.glyphs, read, sizeof read);
    EXPECT_GT(f.advance('W'), f.advance('i'));
    EXPECT_NEAR(f.advance('A'), 0.6f, 0.15f);

    // Ink inside the capital's cell; the padding around the cell stays clear.
    const auto x0 = static_cast<int32_t>(a.u * side), y0 = static_cast<int32_t>(a.v * side);
    const auto w = static_cast<int32_t>(a.width * side), h = static_cast<int32_t>(a.height * side);
    int32_t ink = 0;
    for (int32_t y = y0; y < y0 + h; ++y)
        for (int32_t x = x0; x < x0 + w; ++x) ink += alphaAt(info, x, y) > 128;
    EXPECT_GT(ink, w * h / 8);
    for (int32_t y = y0 - 1; y <= y0 + h; ++y) {
        EXPECT_EQ(alphaAt(info, x0 - 1, y), 0);
        EXPECT_EQ(alphaAt(info, x0 + w, y), 0);
    }
}

TEST(ToolFont, BadInputIsRefusedWithAReason) {
    krCompiledFont font;
    std::string error;
    EXPECT_FALSE(krCompileFont(KERRIN_STOCK_FONT, sized(0), font, error));
    EXPECT_NE(error.find("size must be"), std::string::npos) << error;
    EXPECT_FALSE(krCompileFont(KERRIN_STOCK_FONT, sized(32, 64), font, error));
    EXPECT_NE(error.find("do not fit an atlas of 64"), std::string::npos) << error;
    EXPECT_FALSE(krCompileFont(KERRIN_STOCK_FONT, sized(32, 100), font, error));
    EXPECT_NE(error.find("power of two"), std::string::npos) << error;
    EXPECT_FALSE(krCompileFont(KERRIN_STOCK_FONT, sized(krFontMaxPixelSize), font, error));
    EXPECT_NE(error.find("do not fit the largest atlas"), std::string::npos) << error;
    EXPECT_FALSE(krCompileFont("no-such-font.ttf", sized(16), font, error));
    EXPECT_EQ(error, "cannot open the file");
    EXPECT_FALSE(krCompileFont(__FILE__, sized(16), font, error));
    EXPECT_EQ(error, "not a font file");
}

}  // namespace
