// DDS headers and levels.
#include "krDdsWriter.h"

#include "core/krChunk.h"
#include "krBlockCompress.h"
#include "render/krTextureInfo.h"

namespace {

void put(std::string& file, uint32_t at, uint32_t value) { krPutU32(&file[at], value); }

void appendLevel(const krImage& image, krTextureFormat format, std::string& out) {
    switch (format) {
    case krTextureFormat::dxt1: krCompressDXT1(image, out); break;
    case krTextureFormat::dxt5: krCompressDXT5(image, out); break;
    case krTextureFormat::bgra:
        for (size_t i = 0; i < image.rgba.size(); i += 4) {
            const uint8_t* p = &image.rgba[i];
            out += {char(p[2]), char(p[1]), char(p[0]), char(p[3])};
        }
        break;
    }
}

}  // namespace

std::string krEncodeDds(const krImage& image, krTextureFormat format, bool mipmaps) {
    const bool compressed = format != krTextureFormat::bgra;
    std::string file(krDDS::headerSize, '\0');
    put(file, 0, krDDS::magic);
    put(file, krDDS::structSizeAt, krDDS::structSize);
    put(file, krDDS::heightAt, uint32_t(image.height));
    put(file, krDDS::widthAt, uint32_t(image.width));
    put(file, krDDS::pixelFormatAt, krDDS::pixelFormatSize);

    std::string levels;
    appendLevel(image, format, levels);
    const auto topSize = uint32_t(levels.size());
    uint32_t count = 1;
    if (mipmaps) {
        krImage level = image;
        while (level.width > 1 || level.height > 1) {
            level = krHalve(level);
            appendLevel(level, format, levels);
            ++count;
        }
    }

    uint32_t flags = krDDS::flagCaps | krDDS::flagHeight | krDDS::flagWidth | krDDS::flagPixelFormat;
    flags |= compressed ? krDDS::flagLinearSize : krDDS::flagPitch;
    if (mipmaps) flags |= krDDS::flagMipCount;
    put(file, krDDS::flagsAt, flags);
    put(file, krDDS::pitchAt, compressed ? topSize : uint32_t(image.width) * 4);
    // The published layout counts the top level among the mipmaps.
    put(file, krDDS::mipCountAt, mipmaps ? count : 0);
    if (compressed) {
        put(file, krDDS::pixelFlagsAt, krDDS::pixelFourCC);
        put(file, krDDS::fourCCAt, format == krTextureFormat::dxt1 ? krDDS::dxt1 : krDDS::dxt5);
    } else {
        put(file, krDDS::pixelFlagsAt, krDDS::pixelRGB | krDDS::pixelAlpha);
        put(file, krDDS::bitCountAt, 32);
        put(file, krDDS::redMaskAt, 0x00FF0000);
        put(file, krDDS::greenMaskAt, 0x0000FF00);
        put(file, krDDS::blueMaskAt, 0x000000FF);
        put(file, krDDS::alphaMaskAt, 0xFF000000);
    }
    put(file, krDDS::capsAt, krDDS::capsTexture | (mipmaps ? krDDS::capsComplex | krDDS::capsMipMap : 0));
    return file + levels;
}
