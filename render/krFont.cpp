// The .font reader.
#include "render/krFont.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "core/krFile.h"

static_assert(std::endian::native == std::endian::little, "glyph tables are copied as little-endian floats");

namespace {
bool drawable(const krGlyph& g) {
    return std::isfinite(g.u) && std::isfinite(g.v) && std::isfinite(g.width) && std::isfinite(g.height) &&
           g.width >= 0 && g.height >= 0;
}
}  // namespace

krFontFile::Result krFontFile::read(krFile& file, krGlyph (&glyphs)[krFont::glyphCount]) {
    for (krGlyph& g : glyphs) g = krGlyph();
    krChunk root;
    if (!file.readChunk(&root, nullptr, rootId)) return Result::wrongRoot;
    bool found = false;
    krChunk chunk;
    while (file.readChunk(&chunk, &root, 0)) {
        const void* table = chunk.id == glyphsId ? file.readData(&chunk, glyphTableSize) : nullptr;
        if (table) {
            std::memcpy(glyphs, table, glyphTableSize);
            found = true;
        }
        file.skipChunk(&chunk);
    }
    for (krGlyph& g : glyphs)
        if (!drawable(g)) g = krGlyph();
    return found ? Result::ok : Result::noTable;
}

std::string krFontFile::path(const std::string& name, int32_t style, const char* extension) {
    constexpr int32_t styles = sizeof styleNames / sizeof styleNames[0];
    const char* styleName = styleNames[style >= 0 && style < styles ? style : 0];
    return name + "/" + styleName + extension;
}
