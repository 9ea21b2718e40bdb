// krDynamic2DTextItem_OGL: draws an owner's krTextData record in the 2D overlay, a quad per glyph
// from the font's atlas, with an optional shadow pass below it and an optional box behind each
// glyph. It draws as the walk reaches it. The record's font name is followed: an owner that names
// another font gets it at the next draw or measure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/krColor.h"
#include "render/krDynamicData.h"
#include "render/krVideoItem.h"

struct krFont;
struct krGlyph;
class krFonts_OGL;
class krVideo_OGL;

class krDynamic2DTextItem_OGL : public krVideoItem_OGL {
public:
    // Layout rules, in font heights.
    static constexpr float tabWidth = 3;
    static constexpr float lineSpacing = 1.25f;
    // Byte that starts a colour code, and the hex digits that follow it.
    static constexpr uint8_t colourCode = 4;
    static constexpr int32_t colourCodeLength = 8;

    krDynamic2DTextItem_OGL(krModule* module, krVideo_OGL* video, krTextData* data);
    ~krDynamic2DTextItem_OGL() override;
    const char* className() const override { return "krDynamic2DTextItem_OGL"; }

    void draw() override;

    // Drawn width of a character's glyph at the record's size; 0 for a value that is no byte.
    float charWidth(int32_t character);
    // The sum of the glyph widths of every byte of the text, colour codes included, at the
    // record's size.
    float width();

    const krTextData* getData() const { return data; }
    // The font of the record's name, or null once the video's font table is gone.
    krFont* getFont();

private:
    struct Placed {
        float x, y;
        const krGlyph* glyph;
        krColor color;
    };
    krFonts_OGL* liveFonts() const;
    // Lays out and draws the text in the space where a font height is 1; gives the quads drawn.
    int32_t drawText(const char* text, krColor color, krColor background, float startX, bool colourCodes);
    // Draws the boxes of the glyphs held back, then the glyphs over them.
    int32_t flushBoxed(krColor background, krColor current);

    krTextData* data;
    krFont* font = nullptr;
    std::string fontName;
    krFonts_OGL* fonts;
    // The video may go before the item; this says whether it still lives.
    int32_t videoHandle;
    // Glyphs with boxes, waiting until no later box can cover an earlier glyph.
    std::vector<Placed> boxed;
};
