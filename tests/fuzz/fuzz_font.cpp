// Arbitrary bytes as a .font file. Whatever the reader keeps must be drawable: rectangles inside
// the atlas, of bounded width, so that layout and drawing never meet NaN or infinite pens, or pens
// that run back.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "core/krFile.h"
#include "render/krFont.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    krFile file(krFile::inMemory, data, static_cast<uint32_t>(size));
    krFont font;
    const krFontFile::Result result = krFontFile::read(file, font.glyphs);
    float pen = 0;
    for (int c = 0; c < krFont::glyphCount; ++c) {
        const krGlyph& g = font.glyphs[c];
        if (result != krFontFile::Result::ok && (g.width != 0 || g.height != 0)) std::abort();
        for (float value : {g.u, g.v, g.width, g.height})
            if (!(value >= 0 && value <= 1.001f)) std::abort();
        const float advance = font.advance(static_cast<uint8_t>(c));
        if (!(advance >= 0 && advance <= krFont::maxAdvance)) std::abort();
        pen += advance;
    }
    if (!std::isfinite(pen)) std::abort();
    if (file.cursor > file.size) std::abort();
    volatile float sink = pen;
    (void)sink;
    return 0;
}
