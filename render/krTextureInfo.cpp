// Parsing DDS headers.
#include "render/krTextureInfo.h"

#include <bit>
#include <cstdint>

#include "core/krChunk.h"
#include "core/krMain.h"

namespace {

bool unsupported(const char* format) {
    if (krMain* root = krMain::instance())
        root->errorMsg(std::string(format) + " texture format is not supported!");
    return false;
}

}  // namespace

bool krTextureInfo::parse(const char* data, uint32_t size) {
    *this = krTextureInfo();
    // A failed parse leaves nothing half-filled behind.
    if (!read(data, size)) *this = krTextureInfo();
    return pixels != nullptr;
}

bool krTextureInfo::read(const char* data, uint32_t size) {
    if (!data || size < krDDS::headerSize || krGetU32(data) != krDDS::magic) return false;
    const uint32_t h = krGetU32(data + krDDS::heightAt);
    const uint32_t w = krGetU32(data + krDDS::widthAt);
    if (w == 0 || h == 0 || w > uint32_t(krMaxTextureSide) || h > uint32_t(krMaxTextureSide)) return false;
    width = static_cast<int32_t>(w);
    height = static_cast<int32_t>(h);
    // The field counts the levels below the top one. A lying count saturates: the upload never
    // uses it.
    const uint32_t below = krGetU32(data + krDDS::mipCountAt);
    mipCount = below >= uint32_t(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(below) + 1;

    uint64_t bytes;
    switch (krGetU32(data + krDDS::fourCCAt)) {
    case krDDS::dxt1: format = krFormatDXT1; break;
    case krDDS::dxt2: return unsupported("DXT2");
    case krDDS::dxt3: format = krFormatDXT3; break;
    case krDDS::dxt4: return unsupported("DXT4");
    case krDDS::dxt5: format = krFormatDXT5; break;
    default: break;
    }
    if (format) {
        compressed = true;
        components = format == krFormatDXT1 ? 3 : 4;
        const uint32_t block = format == krFormatDXT1 ? krDDS::dxt1BlockSize : krDDS::dxtBlockSize;
        bytes = uint64_t((w + 3) / 4) * ((h + 3) / 4) * block;
    } else {
        // Only the number of bits in each mask counts; the channels are taken to lie blue,
        // green, red, alpha.
        auto bits = [&](uint32_t at) { return std::popcount(krGetU32(data + at)); };
        if (bits(krDDS::redMaskAt) != 8 || bits(krDDS::greenMaskAt) != 8 || bits(krDDS::blueMaskAt) != 8) return false;
        const int alpha = bits(krDDS::alphaMaskAt);
        if (alpha == 8) format = krFormatBGRA;
        else if (alpha == 0) format = krFormatBGR;
        else return false;
        components = 4;
        bytes = uint64_t(w) * h * (format == krFormatBGRA ? 4 : 3);
    }
    if (bytes > size - krDDS::headerSize) return false;
    pixels = data + krDDS::headerSize;
    pixelsSize = static_cast<uint32_t>(bytes);
    return true;
}
