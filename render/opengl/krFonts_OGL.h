// krFonts_OGL: the video's table of fonts, shared by name and counted like textures: each get adds
// a use, each release takes one, and the last release deletes the font and lets go of its atlas.
// Loading never fails: a font whose files are missing or broken stays in the table with no
// glyphs, so its text draws nothing, and is read again only once all its users have gone.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "core/krModule.h"
#include "render/krFont.h"
#include "render/opengl/krVideo_OGL.h"

class krFonts_OGL : public krModule {
public:
    explicit krFonts_OGL(krModule* owner);
    ~krFonts_OGL() override;
    const char* className() const override { return "krFonts_OGL"; }

    // The table stays with its video: the atlases live in the video's context.
    void setOwner(krModule*) override;

    // Never null. Every style is "normal", the only one there is.
    krFont* get(const std::string& name, int32_t style);
    // Takes back one use of a font from get.
    void release(krFont* font);
    // The font's atlas in the current context, loaded when first needed there (a context that
    // went away took the old one with it); 0 without a context.
    uint32_t texture(krFont* font);
    // Uses of the font of that name not yet released; 0 when it is not in the table.
    int32_t useCount(const std::string& name) const;

private:
    struct Entry : krFont {
        std::string name;
        int32_t count = 0;
        // The context `texture` was loaded in; a default stamp for none.
        krContextStamp stamp;
    };
    std::string atlasName(const Entry& font) const;
    void releaseTexture(Entry& font);

    std::map<std::string, Entry*> fonts;
};
