// DDS headers: the size and magic checks, the formats by FourCC and by mask bits, the level
// sizes, and files that promise more pixels than they hold.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/krChunk.h"
#include "core/krMain.h"
#include "render/krTextureInfo.h"

namespace {

std::vector<std::string> messages;

void observe(const char* event, const std::string& text) {
    if (std::string(event) == "errorMsg") messages.push_back(text);
}

class SceneTexture : public testing::Test {
protected:
    void SetUp() override {
        messages.clear();
        krMain::setReportObserver(observe);
        root = new krMain(0, nullptr);
    }
    void TearDown() override {
        krMain::setReportObserver(nullptr);
        root->release();
    }
    krMain* root = nullptr;
};

// A header with the given size, FourCC and masks, followed by `pixels` bytes.
std::string dds(uint32_t width, uint32_t height, uint32_t fourCC, uint32_t pixels, uint32_t alphaMask = 0xFF000000,
                uint32_t redMask = 0x00FF0000) {
    std::string file(krDDS::headerSize + pixels, '\0');
    krPutU32(&file[0], krDDS::magic);
    krPutU32(&file[krDDS::widthAt], width);
    krPutU32(&file[krDDS::heightAt], height);
    krPutU32(&file[krDDS::mipCountAt], 2);
    krPutU32(&file[krDDS::fourCCAt], fourCC);
    krPutU32(&file[krDDS::redMaskAt], redMask);
    krPutU32(&file[krDDS::greenMaskAt], 0x0000FF00);
    krPutU32(&file[krDDS::blueMaskAt], 0x000000FF);
    krPutU32(&file[krDDS::alphaMaskAt], alphaMask);
    return file;
}

bool parse(const std::string& file, krTextureInfo& info) {
    return info.parse(file.data(), static_cast<uint32_t>(file.size()));
}

}  // namespace

TEST_F(SceneTexture, CompressedFormatsAndBlockSizes) {
    krTextureInfo info;
    // Five pixels wide and one high are 2 x 1 blocks of 8 bytes.
    ASSERT_TRUE(parse(dds(5, 1, krDDS::dxt1, 16), info));
    EXPECT_TRUE(info.compressed);
    EXPECT_EQ(info.format, krFormatDXT1);
    EXPECT_EQ(info.components, 3);
    EXPECT_EQ(info.pixelsSize, 16u);
    EXPECT_EQ(info.width, 5);
    EXPECT_EQ(info.height, 1);
    EXPECT_EQ(info.mipCount, 3);
    EXPECT_FALSE(parse(dds(5, 1, krDDS::dxt1, 15), info));
    EXPECT_EQ(info.pixels, nullptr);

    ASSERT_TRUE(parse(dds(8, 8, krDDS::dxt3, 64), info));
    EXPECT_EQ(info.format, krFormatDXT3);
    EXPECT_EQ(info.components, 4);
    ASSERT_TRUE(parse(dds(8, 4, krDDS::dxt5, 32), info));
    EXPECT_EQ(info.format, krFormatDXT5);
    EXPECT_EQ(info.pixelsSize, 32u);
    EXPECT_FALSE(parse(dds(8, 8, krDDS::dxt5, 63), info));
    EXPECT_TRUE(messages.empty());
}

TEST_F(SceneTexture, PremultipliedFormatsAreRefusedWithAMessage) {
    krTextureInfo info;
    EXPECT_FALSE(parse(dds(4, 4, krDDS::dxt2, 16), info));
    EXPECT_FALSE(parse(dds(4, 4, krDDS::dxt4, 16), info));
    const std::vector<std::string> expected{"DXT2 texture format is not supported!",
                                            "DXT4 texture format is not supported!"};
    EXPECT_EQ(messages, expected);
}

TEST_F(SceneTexture, UncompressedByMaskBits) {
    krTextureInfo info;
    ASSERT_TRUE(parse(dds(3, 2, 0, 24), info));
    EXPECT_FALSE(info.compressed);
    EXPECT_EQ(info.format, krFormatBGRA);
    EXPECT_EQ(info.pixelsSize, 24u);
    EXPECT_FALSE(parse(dds(3, 2, 0, 23), info));
    // No alpha: three bytes a pixel. The masks are counted, not compared.
    ASSERT_TRUE(parse(dds(3, 2, krDDS::fourCC('A', 'B', 'C', 'D'), 18, 0, 0x000000FF), info));
    EXPECT_EQ(info.format, krFormatBGR);
    EXPECT_EQ(info.pixelsSize, 18u);
    // 5-6-5 and 4-bit alpha are not taken.
    EXPECT_FALSE(parse(dds(2, 2, 0, 64, 0, 0x0000F800), info));
    EXPECT_FALSE(parse(dds(2, 2, 0, 64, 0xF0000000), info));
    EXPECT_TRUE(messages.empty());
}

TEST_F(SceneTexture, HeaderChecks) {
    krTextureInfo info;
    std::string file = dds(1, 1, 0, 4);
    EXPECT_TRUE(parse(file, info));
    EXPECT_EQ(info.pixels, file.data() + 128);
    // 127 bytes are too few, even with the magic in front.
    EXPECT_FALSE(info.parse(file.data(), 127));
    file[3] = 'X';
    EXPECT_FALSE(parse(file, info));
    EXPECT_FALSE(parse(dds(0, 4, 0, 64), info));
    EXPECT_FALSE(parse(dds(0x80000000u, 0x80000000u, krDDS::dxt1, 64), info));
    EXPECT_FALSE(info.parse(nullptr, 0));
}
