// krPrimitiveItem_OGL: the base of the items that draw an owner's krDynamicData record, and
// krDynamicPrimitiveItem_OGL, which draws the record's vertices as quads, a quad strip, lines or a
// line strip. The item reads the record's arrays and count each time it draws; its texture (the
// record's first texture name) changes only through setData. Items of the alpha kind wait in the
// video's alpha queue and draw far to near; the others draw as the walk reaches them.
#pragma once

#include <cstdint>
#include <string>

#include "render/krDynamicData.h"
#include "render/krVideoItem.h"
#include "render/opengl/krVideo_OGL.h"

class krPrimitiveItem_OGL : public krVideoItem_OGL {
public:
    krPrimitiveItem_OGL(krModule* module, krVideo_OGL* video, krDynamicData* data, int32_t kind);
    ~krPrimitiveItem_OGL() override;
    const char* className() const override { return "krPrimitiveItem_OGL"; }

    // Draws from this record from now on, with its texture: the new one is loaded before the old
    // one is let go, so a texture that stays is not read again.
    virtual void setData(krDynamicData* data);

    void draw() override;
    // The alpha queue calls back here.
    void drawAlpha() override { drawNow(); }

    // Whether the item can draw in its video now. Takes what it draws with (the texture, the
    // program) the first time in a context: at once when made in one, otherwise at the first draw.
    bool prepare();

    bool isFlat() const { return flat; }
    int32_t getKind() const { return kind; }
    const std::string& getTextureName() const { return textureName; }
    const krDynamicData* getData() const { return data; }

protected:
    // What the item loads in the context it draws in: the texture, in derived classes more.
    virtual void takeResources();
    virtual void drawNow() = 0;
    // The key of the alpha queue.
    virtual float alphaKey() const;
    // The record's count, never below 0.
    int32_t count() const { return data->count > 0 ? data->count : 0; }
    // Whether the resources were taken in the context the video draws in now.
    bool inContext() const { return stamp.isCurrentIn(video); }
    // White material, so that vertex colours show as they are, and the texture bound or off.
    void setMaterialAndTexture() const;

    bool flat;
    uint32_t texture = 0;
    std::string textureName;
    int32_t kind;
    int32_t materialFlags;
    krDynamicData* data;

private:
    // The context the resources were taken in; a default stamp before.
    krContextStamp stamp;
};

class krDynamicPrimitiveItem_OGL : public krPrimitiveItem_OGL {
public:
    // kind holds one of the primitive bits; see createDynamicItem.
    krDynamicPrimitiveItem_OGL(krModule* module, krVideo_OGL* video, krDynamicData* data, int32_t kind);
    const char* className() const override { return "krDynamicPrimitiveItem_OGL"; }

    // The primitive of a kind, from the highest of its primitive bits; 0 when it has none.
    static uint32_t modeOf(int32_t kind);
    uint32_t getMode() const { return mode; }
    int32_t getPolygons() const { return polygons; }

private:
    void drawNow() override;

    uint32_t mode;
    // Of the record's count at creation.
    int32_t polygons;
};
