// krShader_OGL: a shader of the video's shader table, and the base of the GLSL programs. This class
// itself stands for fixed-function drawing: binding it selects no program. Its masks say what the
// shader consumes, so that mesh items feed it the right vertex data and textures.
#pragma once

#include <cstdint>

#include "core/krModule.h"

class krScript;

// The masks a .shader file sets, with the values of the script constants of the same names.
namespace krShaderMask {
// attributes: vertex data consumed.
constexpr int32_t position = 0x1000000;
constexpr int32_t normal = 0x2000000;
constexpr int32_t texCoord0 = 0x100;  // set n is texCoord0 << n
constexpr int32_t tangent = 0x10000;
constexpr int32_t pointSize = 0x20000;
constexpr int32_t weightCount = 0xF;  // skin weights per vertex
constexpr int32_t indexCount = 0xF0;  // bone indices per vertex, in steps of 0x10
// textures: unit n sampled is 1 << n; units 0 to 3 have a sampler uniform.
constexpr int32_t samplerUnits = 4;
// parameters: the bone palette's size, and the built-in uniforms wanted.
constexpr int32_t paletteSize = 0xFF;
constexpr int32_t matrix = 0x100;
constexpr int32_t eyePosition = 0x200;
constexpr int32_t timer = 0x400;
}  // namespace krShaderMask

class krShader_OGL : public krModule {
public:
    explicit krShader_OGL(krModule* owner) : krModule(owner) {}
    const char* className() const override { return "krShader_OGL"; }

    // The shader's clock runs with the tree.
    bool update(float dt) override;

    // Fixed-function drawing has nothing to compile, bind or upload.
    virtual bool compile(const char* vertexSource, const char* fragmentSource, krScript* script);
    // changed: another shader was bound before, so per-program state must be sent again.
    virtual void bind(krModule*, bool) {}
    virtual void unbind() {}
    virtual void setBones(krSkeleton*, const int32_t*, int32_t) {}
    // Whether binding runs a program of its own rather than fixed-function drawing.
    virtual bool programmable() const { return false; }

    bool wants(int32_t attribute) const { return (attributes & attribute) != 0; }
    bool samples(int32_t unit) const { return (textures >> unit & 1) != 0; }

    int32_t attributes = 0;
    int32_t textures = 0;
    int32_t parameters = 0;
    // Seconds since the shader was made: the `timer` uniform of animated shaders.
    float timer = 0;
};
