// krMeshShaderGlow_OGL: a glowing material, such as a lamp. The mesh is drawn after the opaque
// scene, counted by an occlusion query; how much of it showed, and how squarely the camera looks
// at it, makes the brightness of a flare drawn over the scene in the 2D pass. Without queries the
// brightness comes from the view angle and the distance alone.
#pragma once

#include "core/krColor.h"
#include "render/opengl/krMeshShader_OGL.h"

class krMeshShaderGlow_OGL : public krMeshShader_OGL {
public:
    // Points of the flare's rim; every second, fourth and eighth reaches further.
    static constexpr int32_t flareRimPoints = 48;

    krMeshShaderGlow_OGL(krModule* module, krVideo_OGL* video, const krColor& color);
    ~krMeshShaderGlow_OGL() override;
    const char* className() const override { return "krMeshShaderGlow_OGL"; }

    // Enters the glow queue; beyond its room the material is not drawn at all this frame.
    void draw() override;
    void drawQuery() override;
    bool readQuery() override;
    void drawGlow() override;
    bool canMerge() const override { return false; }

    // A star of colour at (x, y) of the 2D pass, fading out towards its spiked rim.
    static void drawFlare(krVideo_OGL* video, float x, float y, float radius, const krColor& color);

    float brightness = 0;
    uint32_t query = 0;
    krColor color;

private:
    krVector3 worldCentre() const { return transformPoint(placement(), centre); }
};
