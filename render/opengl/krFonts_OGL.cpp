// The font table: glyph tables from .font files, atlases through the texture table.
#include "render/opengl/krFonts_OGL.h"

#include "core/krFile.h"
#include "core/krMain.h"
#include "render/opengl/krTextures_OGL.h"

krFonts_OGL::krFonts_OGL(krModule* o) : krModule(o) {}

krFonts_OGL::~krFonts_OGL() {
    for (auto& [name, font] : fonts) {
        releaseTexture(*font);
        delete font;
    }
}

void krFonts_OGL::setOwner(krModule*) {}

krFont* krFonts_OGL::get(const std::string& name, int32_t style) {
    auto it = fonts.find(name);
    if (it != fonts.end()) {
        ++it->second->count;
        return it->second;
    }
    auto* font = new Entry;
    font->name = name;
    font->style = style;
    font->count = 1;
    fonts[name] = font;
    // The atlas first, as drawing will want it; without a context it waits for the first draw.
    texture(font);
    const std::string table = krFontFile::path(name, style, krFontFile::tableExtension);
    krFile file(table, true);
    // A missing file has been reported by the file layer.
    if (file.size > 0 && krFontFile::read(file, font->glyphs) != krFontFile::Result::ok)
        if (krMain* root = krMain::instance()) root->errorMsg("Invalid font file: '" + table + "'");
    return font;
}

void krFonts_OGL::release(krFont* font) {
    auto* entry = static_cast<Entry*>(font);
    auto it = fonts.find(entry->name);
    if (it == fonts.end() || it->second != entry || --entry->count > 0) return;
    releaseTexture(*entry);
    fonts.erase(it);
    delete entry;
}

uint32_t krFonts_OGL::texture(krFont* font) {
    auto* entry = static_cast<Entry*>(font);
    auto* v = dynamic_cast<krVideo_OGL*>(video);
    if (!v || !v->contextReady) return 0;
    if (!entry->stamp.isCurrentIn(v)) {
        krTextures_OGL* textures = v->getTextures();
        entry->texture = textures ? textures->load(atlasName(*entry)) : 0;
        entry->stamp = krContextStamp(v);
    }
    return entry->texture;
}

int32_t krFonts_OGL::useCount(const std::string& name) const {
    auto it = fonts.find(name);
    return it == fonts.end() ? 0 : it->second->count;
}

std::string krFonts_OGL::atlasName(const Entry& font) const {
    return krFontFile::path(font.name, font.style, krFontFile::atlasExtension);
}

void krFonts_OGL::releaseTexture(Entry& font) {
    // An atlas of a context that went away went with it.
    krVideo_OGL* v = font.stamp.current();
    krTextures_OGL* textures = v ? v->getTextures() : nullptr;
    if (textures) textures->release(atlasName(font));
    font.texture = 0;
    font.stamp = krContextStamp();
}
