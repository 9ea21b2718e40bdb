// Text items: the layout walk over the bytes, the glyph quads, boxes and shadow.
#include "render/opengl/krDynamic2DTextItem_OGL.h"

#include <cstring>
#include <string_view>

#include "core/krModule.h"
#include "render/krFont.h"
#include "render/opengl/krFonts_OGL.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"

namespace {
// The glyph's cell, one font height tall and its advance wide, with its atlas rectangle.
inline void glyphQuad(float x, float y, float advance, const krGlyph& g) {
    glTexCoord2f(g.u, g.v);
    glVertex2f(x, y);
    glTexCoord2f(g.u, g.v + g.height);
    glVertex2f(x, y + 1);
    glTexCoord2f(g.u + g.width, g.v + g.height);
    glVertex2f(x + advance, y + 1);
    glTexCoord2f(g.u + g.width, g.v);
    glVertex2f(x + advance, y);
}

inline void boxQuad(float x, float y, float advance) {
    glVertex2f(x, y);
    glVertex2f(x, y + 1);
    glVertex2f(x + advance, y + 1);
    glVertex2f(x + advance, y);
}
}  // namespace

krDynamic2DTextItem_OGL::krDynamic2DTextItem_OGL(krModule* m, krVideo_OGL* v, krTextData* d)
    : krVideoItem_OGL(m, true, v), data(d), fonts(v->getFonts()), videoHandle(v->handle()) {
    getFont();
}

krDynamic2DTextItem_OGL::~krDynamic2DTextItem_OGL() {
    if (krFonts_OGL* table = liveFonts(); table && font) table->release(font);
}

krFonts_OGL* krDynamic2DTextItem_OGL::liveFonts() const {
    const auto* v = dynamic_cast<const krVideo_OGL*>(krScriptObject::fromHandle(videoHandle));
    return fonts && v == video && v->getFonts() == fonts ? fonts : nullptr;
}

krFont* krDynamic2DTextItem_OGL::getFont() {
    krFonts_OGL* table = liveFonts();
    if (!table) return nullptr;
    if (!font || data->font != fontName) {
        // The new one first, so that a font that stays is not read again.
        krFont* next = table->get(data->font, 0);
        if (font) table->release(font);
        font = next;
        fontName = data->font;
    }
    return font;
}

float krDynamic2DTextItem_OGL::charWidth(int32_t character) {
    // Characters come as bytes, which may have been signed on the way.
    if (character < -128 || character > 255) return 0;
    const krFont* f = getFont();
    return f ? f->advance(static_cast<uint8_t>(character)) * data->size.x : 0;
}

float krDynamic2DTextItem_OGL::width() {
    const krFont* f = getFont();
    if (!f || !data->text) return 0;
    float sum = 0;
    for (const char* p = data->text; *p; ++p) sum += f->advance(static_cast<uint8_t>(*p));
    return sum * data->size.x;
}

void krDynamic2DTextItem_OGL::draw() {
    if (!data->text || module->getVideo() != video || !video->contextReady) return;
    krFont* f = getFont();
    if (!f) return;
    const uint32_t atlas = fonts->texture(f);
    const krVector3& size = data->size;
    const float startX = size.x != 0 ? data->startX / size.x : 0;
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, atlas);
    if (data->shadowColor.a != 0) {
        const krVector3 at = data->position + data->shadowOffset;
        glPushMatrix();
        glTranslatef(at.x, at.y, at.z);
        glScalef(size.x, size.y, size.z);
        video->addPolygons(drawText(data->text, data->shadowColor, data->background, startX, false));
        glPopMatrix();
    }
    glPushMatrix();
    glTranslatef(data->position.x, data->position.y, data->position.z);
    glScalef(size.x, size.y, size.z);
    video->addPolygons(drawText(data->text, data->color, data->background, startX, true));
    glPopMatrix();
}

int32_t krDynamic2DTextItem_OGL::drawText(const char* text, krColor color, krColor background, float startX,
                                          bool colourCodes) {
    const krFont& f = *font;
    // Without boxes the glyphs go in one run. With them, each glyph's box must lie under it and
    // over nothing drawn before: boxes and glyphs are held back and drawn in two runs, until a
    // tab leads back over what is held.
    const bool boxes = background.a != 0;
    krColor current = color;
    glColor4ubv(&current.r);
    float pen = startX, y = 0, tab = 0;
    int32_t drawn = 0;
    if (!boxes) glBegin(GL_QUADS);
    for (const char* p = text; *p; ++p) {
        const auto c = static_cast<uint8_t>(*p);
        if (c == '\t') {
            tab += tabWidth;
            if (boxes && tab < pen) drawn += flushBoxed(background, current);
            pen = tab;
        } else if (c == '\n') {
            pen = 0;
            y += lineSpacing;
        } else if (c == colourCode) {
            // A code cut short by the end of the text ends it.
            if (strnlen(p + 1, colourCodeLength) < colourCodeLength) break;
            if (colourCodes) {
                krColor code;
                code.setHex(std::string_view(p + 1, colourCodeLength));
                current = krColor(code, static_cast<uint8_t>(code.a * color.a / 256));
                if (!boxes) glColor4ubv(&current.r);
            }
            p += colourCodeLength;
        } else if (const krGlyph& g = f.glyphs[c]; g.height > 0) {
            const float advance = g.width / g.height;
            if (boxes) {
                boxed.push_back({pen, y, &g, current});
            } else {
                glyphQuad(pen, y, advance, g);
                ++drawn;
            }
            pen += advance;
        }
    }
    if (!boxes) glEnd();
    else drawn += flushBoxed(background, current);
    return drawn;
}

int32_t krDynamic2DTextItem_OGL::flushBoxed(krColor background, krColor current) {
    if (boxed.empty()) return 0;
    glDisable(GL_TEXTURE_2D);
    glColor4ubv(&background.r);
    glBegin(GL_QUADS);
    for (const Placed& q : boxed) boxQuad(q.x, q.y, q.glyph->width / q.glyph->height);
    glEnd();
    glEnable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    for (const Placed& q : boxed) {
        glColor4ubv(&q.color.r);
        glyphQuad(q.x, q.y, q.glyph->width / q.glyph->height, *q.glyph);
    }
    glEnd();
    glColor4ubv(&current.r);
    const auto drawn = static_cast<int32_t>(2 * boxed.size());
    boxed.clear();
    return drawn;
}
