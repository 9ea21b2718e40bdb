// Colour packing, hex strings, channel arithmetic, ranges and the named colour table.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "core/krColor.h"

namespace {

krColor named(const char* name) {
    for (int i = 0; i < krNamedColorCount; ++i)
        if (std::strcmp(krNamedColors[i].name, name) == 0) {
            const krNamedColor& n = krNamedColors[i];
            return {n.r, n.g, n.b, 255};
        }
    ADD_FAILURE() << "no colour named " << name;
    return krColor::none;
}

}  // namespace

TEST(MathColor, PackedOrderIsRedBlueGreenAlpha) {
    EXPECT_EQ(toPacked(named("LIME")), 0x0000FFFFu);
    EXPECT_EQ(toPacked(named("BLUE")), 0x00FF00FFu);
    EXPECT_EQ(toPacked(named("BROWN")), 0x800040FFu);
    EXPECT_EQ(toPacked(krColor(0x12, 0x34, 0x56, 0x78)), 0x12563478u);
    const krColor samples[] = {{1, 2, 3, 4}, {255, 0, 128, 7}, krColor::none, krColor()};
    for (const krColor& c : samples) EXPECT_EQ(krColor(toPacked(c)), c);

    EXPECT_EQ(krNamedColorCount, 18);
    EXPECT_STREQ(krNamedColors[0].name, "BLACK");
    EXPECT_STREQ(krNamedColors[krNamedColorCount - 1].name, "ORANGE");
}

TEST(MathColor, HexStrings) {
    EXPECT_EQ(krColor("12ab34Cd"), krColor(0x12, 0x34, 0xAB, 0xCD));
    EXPECT_EQ(krColor("FF0000FF-and-more"), krColor(255, 0, 0, 255));
    EXPECT_EQ(krColor("zz00FF8g"), krColor(0, 0xFF, 0, 0x80));
    krColor c(9, 8, 7, 6);
    c.setHex("1234567");
    EXPECT_EQ(c, krColor(9, 8, 7, 6));
    c.setHex("");
    EXPECT_EQ(c, krColor(9, 8, 7, 6));
}

// The shift by 8 makes white a near-identity: every channel drops by one at most, and 255 by one.
TEST(MathColor, ModulateWithWhiteDropsAtMostOne) {
    const krColor white;
    for (int v = 0; v < 256; ++v) {
        uint8_t byte = uint8_t(v);
        krColor m = modulate(krColor(byte, byte, byte, byte), white);
        EXPECT_TRUE(m.r <= v && m.r + 1 >= v && m == krColor(m.r, m.r, m.r, m.r)) << v;
    }
    EXPECT_EQ(modulate(white, white), krColor(254, 254, 254, 254));
    EXPECT_EQ(modulate(krColor(200, 100, 0, 255), krColor(128, 128, 128, 128)), krColor(100, 50, 0, 127));
}

TEST(MathColor, ChannelArithmetic) {
    EXPECT_EQ(add(krColor(200, 1, 2, 3), krColor(100, 1, 2, 3)), krColor(44, 2, 4, 6));
    EXPECT_EQ(scaleByte(krColor(255, 128, 10, 77), 128), krColor(127, 64, 5, 77));
    EXPECT_EQ(fadeAlpha(krColor(1, 2, 3, 255), 0.5f), krColor(1, 2, 3, 128));
    EXPECT_EQ(withAlpha(krColor(1, 2, 3, 4), 9), krColor(1, 2, 3, 9));
    EXPECT_EQ(inverted(krColor(0, 255, 15, 240)), krColor(255, 0, 240, 15));
    EXPECT_EQ(brightness(krColor(1, 2, 4, 0)), 2);
}

TEST(MathColor, FloatColours) {
    EXPECT_EQ(krColor(krColorF(0.5f, 1, 0, 0.2f)), krColor(128, 255, 0, 51));
    // Out-of-range channels keep the low byte, and NaN gives 0, without undefined conversions.
    EXPECT_EQ(krColor(krColorF(2, -0.1f, NAN, INFINITY)), krColor(254, 230, 0, 0));
    EXPECT_EQ(krColorF(krColor(255, 0, 51, 255)), krColorF(1, 0, 0.2f, 1));
    krColorF l = lit(krColor(255, 102, 0, 51), 127.5f);
    EXPECT_FLOAT_EQ(l.r, 127.5f);
    EXPECT_FLOAT_EQ(l.g, 51);
    EXPECT_FLOAT_EQ(l.a, 0.2f);
    EXPECT_EQ(clamped(krColorF(-1, 0.5f, 2, 1)), krColorF(0, 0.5f, 1, 1));
    EXPECT_FLOAT_EQ(brightness(krColorF(0.3f, 0.6f, 0.9f, 0)), 0.6f);
    EXPECT_EQ(multiply(krColorF(0.5f, 1, 0, 2), krColorF(0.5f, 0.25f, 1, 2)), krColorF(0.25f, 0.25f, 0, 4));
}

TEST(MathColor, Ranges) {
    krColorRange range(krColor(0, 255, 10, 255), krColor(255, 0, 11, 0));
    EXPECT_EQ(range.at(0), range.start);
    EXPECT_EQ(range.at(1), range.end);
    EXPECT_EQ(range.at(0.5f), krColor(128, 128, 11, 128));
    krColorRange dim = range.modulated(krColor(128, 128, 128, 128));
    EXPECT_EQ(dim.start, krColor(0, 127, 5, 127));
    EXPECT_EQ(dim.end, krColor(127, 0, 5, 0));
}
