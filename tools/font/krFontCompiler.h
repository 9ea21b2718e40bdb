// The font compiler of kerrin-font: renders the characters of a TrueType or OpenType font at one
// pixel size into an atlas, and gives the glyph table of the engine's .font files. Bytes stand
// for the characters of Latin-1, with the common extension in 0x80 to 0x9F (euro sign,
// typographic quotes and dashes); control characters and characters the font lacks get no glyph.
//
// Every glyph is a cell one line tall (ascent and descent) and its advance wide, so that the pen
// moves by the cell: ink that reaches beyond the advance is cut off. Cells lie in rows, with
// transparent padding around each, so that filtering and the smaller levels of the atlas do not
// mix neighbours. The atlas is square, which keeps width / height of a glyph rectangle the drawn
// aspect, white, with the coverage in alpha.
#pragma once

#include <cstdint>
#include <string>

#include "krImage.h"
#include "render/krFont.h"

struct krFontOptions {
    // Height of the em square in pixels, as type sizes are given.
    int32_t pixelSize = 0;
    // Side of the atlas; 0 takes the smallest power of two that holds every cell.
    int32_t atlasSide = 0;
    // Transparent pixels between cells and around the atlas edge.
    int32_t padding = 2;
};

// Limits of the options: no driver need take a larger atlas, and no cell could fit a larger size.
constexpr int32_t krFontMaxAtlasSide = 4096;
constexpr int32_t krFontMinAtlasSide = 16;
constexpr int32_t krFontMaxPixelSize = krFontMaxAtlasSide / 2;
constexpr int32_t krFontMaxPadding = 64;

struct krCompiledFont {
    krGlyph glyphs[krFont::glyphCount];
    krImage atlas;
    // Cell height in pixels, and how many bytes got a glyph.
    int32_t cellHeight = 0;
    int32_t glyphCount = 0;
};

// False with a message on a file that is missing or no font, options out of range, or cells that
// do not fit the atlas.
bool krCompileFont(const std::string& fontPath, const krFontOptions& options, krCompiledFont& out,
                   std::string& error);
// The .font file of a glyph table.
std::string krEncodeFontFile(const krGlyph (&glyphs)[krFont::glyphCount]);
// The character a byte stands for; 0 for a byte without one.
uint32_t krFontCharacterOf(uint8_t byte);
