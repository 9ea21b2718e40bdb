// Rendering a font's characters with FreeType and packing their cells into an atlas.
#include "krFontCompiler.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <vector>

#include "render/krMeshFileWriter.h"

namespace {

// What 0x80 to 0x9F stand for, where Latin-1 has control characters; 0 where nothing is.
constexpr uint16_t extension[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// FreeType measures in 26.6 fixed point.
int32_t pixelsUp(FT_Pos v) { return static_cast<int32_t>((v + 63) >> 6); }
int32_t pixelsNearest(FT_Pos v) { return static_cast<int32_t>((v + 32) >> 6); }

struct Library {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    ~Library() {
        if (face) FT_Done_Face(face);
        if (library) FT_Done_FreeType(library);
    }
};

// One glyph's cell: advance wide and a line tall, and where it lies in the atlas.
struct Cell {
    uint8_t byte;
    FT_UInt index;
    int32_t width;
    int32_t x = 0, y = 0;
};

// Renders the glyph into its cell of the atlas's alpha, its origin on the baseline at the cell's
// left edge; ink outside the cell is cut off.
void renderCell(const FT_GlyphSlot slot, const Cell& cell, int32_t ascent, int32_t height, krImage& atlas) {
    const FT_Bitmap& b = slot->bitmap;
    const int32_t left = slot->bitmap_left, top = ascent - slot->bitmap_top;
    for (int32_t row = 0; row < static_cast<int32_t>(b.rows); ++row) {
        const int32_t y = top + row;
        if (y < 0 || y >= height) continue;
        const unsigned char* line = b.buffer + static_cast<ptrdiff_t>(row) * b.pitch;
        for (int32_t col = 0; col < static_cast<int32_t>(b.width); ++col) {
            const int32_t x = left + col;
            if (x < 0 || x >= cell.width) continue;
            uint8_t value = 0;
            if (b.pixel_mode == FT_PIXEL_MODE_GRAY) value = line[col];
            else if (b.pixel_mode == FT_PIXEL_MODE_MONO) value = (line[col / 8] >> (7 - col % 8) & 1) ? 255 : 0;
            const size_t at = static_cast<size_t>(cell.y + y) * static_cast<size_t>(atlas.width) +
                              static_cast<size_t>(cell.x + x);
            atlas.rgba[at * 4 + 3] = value;
        }
    }
}

// Rows of cells from the top left, padding around each; false when they run past the bottom.
bool pack(std::vector<Cell>& cells, int32_t height, int32_t side, int32_t padding) {
    int32_t x = padding, y = padding;
    for (Cell& c : cells) {
        if (c.width + 2 * padding > side) return false;
        if (x + c.width + padding > side) {
            x = padding;
            y += height + padding;
        }
        c.x = x;
        c.y = y;
        x += c.width + padding;
    }
    return y + height + padding <= side;
}

}  // namespace

uint32_t krFontCharacterOf(uint8_t byte) {
    if (byte < 0x20 || byte == 0x7F) return 0;
    if (byte >= 0x80 && byte < 0xA0) return extension[byte - 0x80];
    return byte;
}

bool krCompileFont(const std::string& fontPath, const krFontOptions& options, krCompiledFont& out,
                   std::string& error) {
    if (options.pixelSize < 1 || options.pixelSize > krFontMaxPixelSize) {
        error = "the size must be 1 to " + std::to_string(krFontMaxPixelSize) + " pixels, not " +
                std::to_string(options.pixelSize);
        return false;
    }
    const int32_t side = options.atlasSide;
    if (side != 0 && (side < krFontMinAtlasSide || side > krFontMaxAtlasSide || (side & (side - 1)))) {
        error = "the atlas side must be a power of two from " + std::to_string(krFontMinAtlasSide) + " to " +
                std::to_string(krFontMaxAtlasSide) + ", not " + std::to_string(side);
        return false;
    }
    if (options.padding < 0 || options.padding > krFontMaxPadding) {
        error = "the padding must be 0 to " + std::to_string(krFontMaxPadding) + " pixels";
        return false;
    }

    Library ft;
    if (FT_Init_FreeType(&ft.library)) {
        error = "FreeType did not start";
        return false;
    }
    if (const FT_Error e = FT_New_Face(ft.library, fontPath.c_str(), 0, &ft.face)) {
        error = e == FT_Err_Cannot_Open_Resource ? "cannot open the file" : "not a font file";
        return false;
    }
    if (FT_Set_Pixel_Sizes(ft.face, 0, static_cast<FT_UInt>(options.pixelSize))) {
        error = "the font has no size of " + std::to_string(options.pixelSize) + " pixels";
        return false;
    }
    const FT_Size_Metrics& metrics = ft.face->size->metrics;
    const int32_t ascent = pixelsUp(metrics.ascender);
    const int32_t height = ascent + pixelsUp(-metrics.descender);
    if (height <= 0) {
        error = "the font gives no line height";
        return false;
    }

    // Measured first, so that a size that cannot fit fails before anything is rendered.
    std::vector<Cell> cells;
    for (int32_t byte = 0; byte < krFont::glyphCount; ++byte) {
        const uint32_t character = krFontCharacterOf(static_cast<uint8_t>(byte));
        const FT_UInt index = character ? FT_Get_Char_Index(ft.face, character) : 0;
        if (!index || FT_Load_Glyph(ft.face, index, FT_LOAD_DEFAULT)) continue;
        const int32_t advance = pixelsNearest(ft.face->glyph->advance.x);
        // Marks that do not move the pen have no cell to show them in.
        if (advance > 0) cells.push_back({static_cast<uint8_t>(byte), index, advance});
    }
    if (cells.empty()) {
        error = "the font has none of the characters";
        return false;
    }

    int32_t atlasSide = side;
    if (!atlasSide) {
        for (int32_t s = krFontMinAtlasSide; s <= krFontMaxAtlasSide && !atlasSide; s *= 2)
            if (pack(cells, height, s, options.padding)) atlasSide = s;
        if (!atlasSide) {
            error = "the glyphs of " + std::to_string(options.pixelSize) + " pixels do not fit the largest atlas (" +
                    std::to_string(krFontMaxAtlasSide) + " a side)";
            return false;
        }
    } else if (!pack(cells, height, atlasSide, options.padding)) {
        error = "the glyphs of " + std::to_string(options.pixelSize) + " pixels do not fit an atlas of " +
                std::to_string(atlasSide) + " a side";
        return false;
    }

    // White throughout, so that filtering at a glyph's edge blends towards its own colour.
    out.atlas.width = out.atlas.height = atlasSide;
    out.atlas.rgba.assign(static_cast<size_t>(atlasSide) * static_cast<size_t>(atlasSide) * 4, 255);
    for (size_t i = 3; i < out.atlas.rgba.size(); i += 4) out.atlas.rgba[i] = 0;
    for (krGlyph& g : out.glyphs) g = krGlyph();
    const float unit = 1.0f / static_cast<float>(atlasSide);
    for (const Cell& c : cells) {
        if (!FT_Load_Glyph(ft.face, c.index, FT_LOAD_RENDER)) renderCell(ft.face->glyph, c, ascent, height, out.atlas);
        out.glyphs[c.byte] = {static_cast<float>(c.x) * unit, static_cast<float>(c.y) * unit,
                              static_cast<float>(c.width) * unit, static_cast<float>(height) * unit};
    }
    out.cellHeight = height;
    out.glyphCount = static_cast<int32_t>(cells.size());
    return true;
}

std::string krEncodeFontFile(const krGlyph (&glyphs)[krFont::glyphCount]) {
    krChunkWriter w;
    w.begin(krFontFile::rootId);
    w.begin(krFontFile::glyphsId);
    w.put(glyphs, krFontFile::glyphTableSize);
    w.end();
    w.end();
    return w.data();
}
