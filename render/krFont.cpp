// The .font reader.
#include "render/krFont.h"

#include <bit>
#include <cstring>

#include "core/krFile.h"

static_assert(std::endian::native == std::endian::little, "glyph tables are copied as little-endian floats");

namespace {
// Texture coordinates of the atlas run from 0 to 1; a writer's rounding may overshoot the edge.
constexpr float atlasEdge = 1 + 1.0f / 65536;

bool inAtlas(float start, float size) {
    return start >= 0 && size >= 0 && start <= atlasEdge && size <= atlasEdge && start + size <= atlasEdge;
}

// The comparisons are false for NaN, which is thereby refused too.
bool drawable(const krGlyph& g) {
    return inAtlas(g.u, g.width) && inAtlas(g.v, g.height) && g.width <= krFont::maxAdvance * g.height;
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
