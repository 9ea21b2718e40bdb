// krFont: a bitmap font, an atlas texture with a table of 256 glyph rectangles indexed by byte,
// and the .font file that holds the table. The engine reads the file here, with no graphics
// context; the content tool writes it from the same description.
//
// A font named N is two files: N + "/normal.dds", the atlas, and N + "/normal.font", a chunk file
// whose root holds the glyph table. A glyph's rectangle is in texture coordinates, and its drawn
// width in font heights is width / height: glyphs are cells of one line height and their own
// advance. A glyph of height 0 is undefined and has no width.
#pragma once

#include <cstdint>
#include <string>

class krFile;

struct krGlyph {
    float u = 0, v = 0, width = 0, height = 0;
};
static_assert(sizeof(krGlyph) == 16);

struct krFont {
    // One glyph for every byte value.
    static constexpr int32_t glyphCount = 256;
    // No glyph is wider than this many font heights: a table that says so is broken, and text
    // measured with it would run off to infinity.
    static constexpr float maxAdvance = 64;

    int32_t style = 0;
    // The atlas, in the context it was loaded in; 0 before.
    uint32_t texture = 0;
    krGlyph glyphs[glyphCount];

    // Drawn width of a byte's glyph, in font heights.
    float advance(uint8_t c) const {
        const krGlyph& g = glyphs[c];
        return g.height > 0 ? g.width / g.height : 0;
    }
};

namespace krFontFile {

constexpr uint32_t rootId = 0x3000000;
constexpr uint32_t glyphsId = 0x3010000;
// The glyph chunk's payload: every glyph's four floats, in byte order.
constexpr uint32_t glyphTableSize = krFont::glyphCount * sizeof(krGlyph);

// The styles fonts come in; a file name is the font's name, "/", the style, and the extension.
constexpr const char* styleNames[] = {"normal"};
constexpr const char* atlasExtension = ".dds";
constexpr const char* tableExtension = ".font";

enum class Result { ok, wrongRoot, noTable };

// Reads the first chunk of the file and, if it is a font, the glyph table among its sub-chunks;
// other sub-chunks are passed over. Glyphs stay zero where there is no table. A glyph that could
// not be drawn sensibly (a rectangle that is not inside the atlas, wider than maxAdvance) is
// left zero as well.
Result read(krFile& file, krGlyph (&glyphs)[krFont::glyphCount]);

// The file name of one of a font's files; styles without a name take the first.
std::string path(const std::string& name, int32_t style, const char* extension);

}  // namespace krFontFile
