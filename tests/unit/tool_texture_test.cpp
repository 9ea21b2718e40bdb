// The texture converter, round trip: images encoded to DDS and read back with the engine's
// header reader, blocks decoded here to compare with the source pixels.
#include <gtest/gtest.h>
#include <stb/stb_image_write.h>

#include <cstdlib>
#include <filesystem>

#include "core/krChunk.h"
#include "krDdsWriter.h"
#include "render/krTextureInfo.h"

namespace {

krImage makeImage(int w, int h, auto pixel) {
    krImage image;
    image.width = w;
    image.height = h;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const std::array<uint8_t, 4> p = pixel(x, y);
            image.rgba.insert(image.rgba.end(), p.begin(), p.end());
        }
    return image;
}

std::array<int, 3> expand565(uint16_t c) {
    const int r = c >> 11, g = (c >> 5) & 63, b = c & 31;
    return {r << 3 | r >> 2, g << 2 | g >> 4, b << 3 | b >> 2};
}

// Decodes a level of blocks the way the graphics hardware does.
krImage decode(const uint8_t* data, int w, int h, bool dxt5) {
    krImage out = makeImage(w, h, [](int, int) { return std::array<uint8_t, 4>{}; });
    const int blockSize = dxt5 ? 16 : 8;
    for (int by = 0; by < (h + 3) / 4; ++by)
        for (int bx = 0; bx < (w + 3) / 4; ++bx) {
            const uint8_t* b = data + (by * ((w + 3) / 4) + bx) * blockSize;
            std::array<int, 8> alpha{};
            uint64_t alphaBits = 0;
            if (dxt5) {
                alpha[0] = b[0];
                alpha[1] = b[1];
                for (int k = 2; k < 8; ++k)
                    alpha[size_t(k)] = alpha[0] > alpha[1] ? ((8 - k) * alpha[0] + (k - 1) * alpha[1]) / 7
                                       : k < 6            ? ((6 - k) * alpha[0] + (k - 1) * alpha[1]) / 5
                                                          : (k == 6 ? 0 : 255);
                for (int i = 0; i < 6; ++i) alphaBits |= uint64_t(b[2 + i]) << (8 * i);
                b += 8;
            }
            const uint16_t c0 = uint16_t(b[0] | b[1] << 8), c1 = uint16_t(b[2] | b[3] << 8);
            const auto e0 = expand565(c0), e1 = expand565(c1);
            std::array<std::array<int, 4>, 4> palette{};
            for (size_t i = 0; i < 3; ++i) {
                palette[0][i] = e0[i];
                palette[1][i] = e1[i];
                if (c0 > c1 || dxt5) {
                    palette[2][i] = (2 * e0[i] + e1[i]) / 3;
                    palette[3][i] = (e0[i] + 2 * e1[i]) / 3;
                } else {
                    palette[2][i] = (e0[i] + e1[i]) / 2;
                    palette[3][i] = 0;
                }
            }
            for (auto& p : palette) p[3] = 255;
            if (c0 <= c1 && !dxt5) palette[3][3] = 0;
            const uint32_t bits = uint32_t(b[4] | b[5] << 8 | b[6] << 16 | uint32_t(b[7]) << 24);
            for (int i = 0; i < 16; ++i) {
                const int x = bx * 4 + i % 4, y = by * 4 + i / 4;
                if (x >= w || y >= h) continue;
                const auto& c = palette[(bits >> (2 * i)) & 3];
                uint8_t* p = &out.rgba[(size_t(y) * size_t(w) + size_t(x)) * 4];
                for (int k = 0; k < 4; ++k) p[k] = uint8_t(c[size_t(k)]);
                if (dxt5) p[3] = uint8_t(alpha[(alphaBits >> (3 * i)) & 7]);
            }
        }
    return out;
}

int largestError(const krImage& a, const krImage& b) {
    int worst = 0;
    for (size_t i = 0; i < a.rgba.size(); ++i) worst = std::max(worst, std::abs(a.rgba[i] - b.rgba[i]));
    return worst;
}

bool parse(const std::string& file, krTextureInfo& info) {
    return info.parse(file.data(), static_cast<uint32_t>(file.size()));
}

}  // namespace

TEST(ToolTexture, UncompressedKeepsEveryPixel) {
    const krImage image = makeImage(5, 3, [](int x, int y) {
        return std::array<uint8_t, 4>{uint8_t(x * 50), uint8_t(y * 80), uint8_t(x * y * 10), uint8_t(255 - x)};
    });
    const std::string file = krEncodeDds(image, krTextureFormat::bgra, false);
    krTextureInfo info;
    ASSERT_TRUE(parse(file, info));
    EXPECT_FALSE(info.compressed);
    EXPECT_EQ(info.format, krFormatBGRA);
    EXPECT_EQ(info.width, 5);
    EXPECT_EQ(info.height, 3);
    EXPECT_EQ(info.mipCount, 1);
    ASSERT_EQ(info.pixelsSize, 60u);
    for (size_t i = 0; i < 15; ++i) {
        const auto* p = reinterpret_cast<const uint8_t*>(info.pixels) + i * 4;
        EXPECT_EQ(p[0], image.rgba[i * 4 + 2]);
        EXPECT_EQ(p[1], image.rgba[i * 4 + 1]);
        EXPECT_EQ(p[2], image.rgba[i * 4]);
        EXPECT_EQ(p[3], image.rgba[i * 4 + 3]);
    }
}

TEST(ToolTexture, BlockFormatsDecodeCloseToTheSource) {
    // Each 4x4 block holds two colours that 16 bits represent exactly, and an alpha ramp.
    const krImage image = makeImage(10, 6, [](int x, int y) {
        const bool a = (x + y) % 2 != 0;
        return std::array<uint8_t, 4>{uint8_t(a ? 255 : 0), uint8_t(a ? 0 : 255), uint8_t(x < 4 ? 0 : 255),
                                      uint8_t(std::min(255, x * 28))};
    });
    krTextureInfo info;
    const std::string dxt5 = krEncodeDds(image, krTextureFormat::dxt5, false);
    ASSERT_TRUE(parse(dxt5, info));
    EXPECT_EQ(info.format, krFormatDXT5);
    EXPECT_EQ(info.pixelsSize, 3u * 2 * 16);
    const krImage back = decode(reinterpret_cast<const uint8_t*>(info.pixels), 10, 6, true);
    // Two colours at the corners of their box come back exactly; alpha within a step of seven.
    EXPECT_LE(largestError(image, back), 255 / 14);

    const std::string dxt1 = krEncodeDds(image, krTextureFormat::dxt1, false);
    ASSERT_TRUE(parse(dxt1, info));
    EXPECT_EQ(info.format, krFormatDXT1);
    EXPECT_EQ(info.pixelsSize, 3u * 2 * 8);
    const krImage one = decode(reinterpret_cast<const uint8_t*>(info.pixels), 10, 6, false);
    for (size_t i = 0; i < image.rgba.size(); i += 4) {
        // One bit of alpha: below half opacity is transparent, the rest opaque in its colour.
        const bool clear = image.rgba[i + 3] < 128;
        EXPECT_EQ(one.rgba[i + 3], clear ? 0 : 255) << i / 4;
        if (clear) continue;
        for (size_t k = 0; k < 3; ++k) EXPECT_EQ(one.rgba[i + k], image.rgba[i + k]) << i / 4;
    }
}

TEST(ToolTexture, MipmapChainsDownToOnePixel) {
    const krImage image = makeImage(8, 4, [](int x, int) { return std::array<uint8_t, 4>{uint8_t(x * 32), 0, 0, 255}; });
    const std::string file = krEncodeDds(image, krTextureFormat::bgra, true);
    krTextureInfo info;
    ASSERT_TRUE(parse(file, info));
    // Levels 8x4, 4x2, 2x1, 1x1; the reader counts the file's field plus one.
    EXPECT_EQ(krGetU32(file.data() + krDDS::mipCountAt), 4u);
    EXPECT_EQ(info.mipCount, 5);
    EXPECT_EQ(file.size(), krDDS::headerSize + 4u * (32 + 8 + 2 + 1));
    // The 1x1 level is the mean of the whole image.
    const auto* last = reinterpret_cast<const uint8_t*>(file.data() + file.size() - 4);
    EXPECT_NEAR(last[2], (0 + 32 + 64 + 96 + 128 + 160 + 192 + 224) / 8, 2);

    const std::string blocks = krEncodeDds(image, krTextureFormat::dxt1, true);
    EXPECT_EQ(blocks.size(), krDDS::headerSize + 8u * (2 + 1 + 1 + 1));
}

TEST(ToolTexture, PngFilesInAndOut) {
    const auto dir = std::filesystem::temp_directory_path() / "kerrin-tool-texture";
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "a.png").string();
    const krImage image = makeImage(3, 2, [](int x, int y) {
        return std::array<uint8_t, 4>{uint8_t(x * 100), uint8_t(y * 100), 7, 200};
    });
    ASSERT_TRUE(stbi_write_png(path.c_str(), 3, 2, 4, image.rgba.data(), 12));
    krImage read;
    std::string error;
    ASSERT_TRUE(krLoadPng(path, read, error)) << error;
    EXPECT_EQ(read.rgba, image.rgba);
    EXPECT_FALSE(krLoadPng((dir / "missing.png").string(), read, error));
    EXPECT_FALSE(error.empty());
    std::filesystem::remove_all(dir);
}
