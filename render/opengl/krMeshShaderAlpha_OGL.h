// krMeshShaderAlpha_OGL: a blended material. It does not draw from the opaque queue but moves on
// to the alpha queue, keyed by its distance from the eye, and draws its list from there, farthest
// first. Its triangles keep the order of the file.
#pragma once

#include "render/opengl/krMeshShader_OGL.h"

class krMeshShaderAlpha_OGL : public krMeshShader_OGL {
public:
    using krMeshShader_OGL::krMeshShader_OGL;
    const char* className() const override { return "krMeshShaderAlpha_OGL"; }

    // Enters the alpha queue; beyond its room the material is not drawn this frame.
    void draw() override;
    void drawAlpha() override { krMeshShader_OGL::draw(); }
    bool canMerge() const override { return false; }
};
