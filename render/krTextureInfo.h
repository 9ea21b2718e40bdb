// DDS texture files: the header layout, and the parse step that tells the texture table what to
// upload. Parsing needs no graphics context; the table hands the result to the driver as it is.
// The texture tool writes the same layout from here.
#pragma once

#include <cstdint>

namespace krDDS {

constexpr uint32_t fourCC(char a, char b, char c, char d) {
    return uint32_t(uint8_t(a)) | uint32_t(uint8_t(b)) << 8 | uint32_t(uint8_t(c)) << 16 | uint32_t(uint8_t(d)) << 24;
}

// The magic word and the header that follows it; the top level's pixels start right after.
constexpr uint32_t magic = fourCC('D', 'D', 'S', ' ');
constexpr uint32_t headerSize = 128;

// File offsets of the fields the engine reads.
constexpr uint32_t heightAt = 12;
constexpr uint32_t widthAt = 16;
constexpr uint32_t mipCountAt = 28;
constexpr uint32_t fourCCAt = 84;
constexpr uint32_t redMaskAt = 92;
constexpr uint32_t greenMaskAt = 96;
constexpr uint32_t blueMaskAt = 100;
constexpr uint32_t alphaMaskAt = 104;

// The rest of the published layout, which writers fill for other readers' sake.
constexpr uint32_t structSizeAt = 4;
constexpr uint32_t structSize = 124;
constexpr uint32_t flagsAt = 8;
constexpr uint32_t pitchAt = 20;
constexpr uint32_t pixelFormatAt = 76;
constexpr uint32_t pixelFormatSize = 32;
constexpr uint32_t pixelFlagsAt = 80;
constexpr uint32_t bitCountAt = 88;
constexpr uint32_t capsAt = 108;

constexpr uint32_t flagCaps = 0x1, flagHeight = 0x2, flagWidth = 0x4, flagPitch = 0x8;
constexpr uint32_t flagPixelFormat = 0x1000, flagMipCount = 0x20000, flagLinearSize = 0x80000;
constexpr uint32_t pixelAlpha = 0x1, pixelFourCC = 0x4, pixelRGB = 0x40;
constexpr uint32_t capsComplex = 0x8, capsTexture = 0x1000, capsMipMap = 0x400000;

constexpr uint32_t dxt1 = fourCC('D', 'X', 'T', '1');
constexpr uint32_t dxt2 = fourCC('D', 'X', 'T', '2');
constexpr uint32_t dxt3 = fourCC('D', 'X', 'T', '3');
constexpr uint32_t dxt4 = fourCC('D', 'X', 'T', '4');
constexpr uint32_t dxt5 = fourCC('D', 'X', 'T', '5');

// Bytes of one 4x4 block.
constexpr uint32_t dxt1BlockSize = 8;
constexpr uint32_t dxtBlockSize = 16;

}  // namespace krDDS

// The graphics library's names of the formats, as the upload takes them.
constexpr uint32_t krFormatDXT1 = 0x83F1;
constexpr uint32_t krFormatDXT3 = 0x83F2;
constexpr uint32_t krFormatDXT5 = 0x83F3;
constexpr uint32_t krFormatBGR = 0x80E0;
constexpr uint32_t krFormatBGRA = 0x80E1;

// Wider than any driver takes; keeps the size arithmetic of a lying header far from overflow.
constexpr int32_t krMaxTextureSide = 1 << 16;

struct krTextureInfo {
    bool compressed = false;
    int32_t width = 0, height = 0;
    int32_t components = 0;  // 3 for DXT1, else 4
    uint32_t format = 0;
    // Levels in the file counted with the top level; the upload lets the driver build its own.
    int32_t mipCount = 0;
    // The top level, in the file buffer, and its byte count.
    const char* pixels = nullptr;
    uint32_t pixelsSize = 0;

    // Reads a DDS header. False for anything the upload cannot take, including a file shorter
    // than the top level it promises; the unsupported DXT2 and DXT4 are also reported to the root.
    bool parse(const char* data, uint32_t size);

private:
    bool read(const char* data, uint32_t size);
};
