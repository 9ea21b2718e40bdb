// krDynamicPointsItem_OGL: draws the record's points (world positions, colours, size factors)
// facing the camera: as point sprites in runs of equal size where the video has them, otherwise
// as four-cornered billboards. krDynamicShadedPointsItem_OGL draws them with a program that sizes
// each point from its factor, in one run: the record's shader, or the stock points shader.
#pragma once

#include "render/opengl/krPrimitiveItem_OGL.h"

class krDynamicPointsItem_OGL : public krPrimitiveItem_OGL {
public:
    krDynamicPointsItem_OGL(krModule* module, krVideo_OGL* video, krDynamicData* data, int32_t kind);
    const char* className() const override { return "krDynamicPointsItem_OGL"; }

protected:
    // Additive points sort as if one unit nearer, so that they lie over plain ones at one place.
    float alphaKey() const override;
    void drawNow() override;
    // The blend and culling of the record and kind around the drawing.
    void begin() const;
    void end() const;
    void drawBillboards(const krPointVertex* points, int32_t n) const;
    void drawSprites(const krPointVertex* points, int32_t n) const;
    // Pixels across a point of size factor 1 one unit ahead: the record's pointSize seen through
    // the current camera, or 1 without one.
    float spriteScale() const;
};

class krDynamicShadedPointsItem_OGL : public krDynamicPointsItem_OGL {
public:
    // Names the default shader in the record when it names none.
    krDynamicShadedPointsItem_OGL(krModule* module, krVideo_OGL* video, krDynamicData* data, int32_t kind);
    ~krDynamicShadedPointsItem_OGL() override;
    const char* className() const override { return "krDynamicShadedPointsItem_OGL"; }

    // Takes the record's shader as well.
    void setData(krDynamicData* data) override;

private:
    void takeResources() override;
    void drawNow() override;
    void selectShader();
};
