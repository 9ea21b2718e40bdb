// krShader_GLSL: a linked GLSL program made from a vertex and a fragment source, with the locations
// of the built-in uniforms its masks ask for. krSkinShader_GLSL adds the bone palette of hardware
// skinning. A program of 0 is fixed-function drawing: the shader table's default when GLSL is on.
#pragma once

#include <string>

#include "render/opengl/krShader_OGL.h"
#include "render/opengl/krVideo_OGL.h"

class krShader_GLSL : public krShader_OGL {
public:
    // Longest compile or link log shown.
    static constexpr int32_t maxLogSize = 4096;

    explicit krShader_GLSL(krModule* owner) : krShader_OGL(owner) {}
    ~krShader_GLSL() override;
    const char* className() const override { return "krShader_GLSL"; }

    // A failed compile or link shows its log in a message box and gives false.
    bool compile(const char* vertexSource, const char* fragmentSource, krScript* script) override;
    // Samplers, eye and timer go with a change of program; the matrix goes with every object.
    void bind(krModule* module, bool changed) override;
    void unbind() override;
    bool programmable() const override { return program != 0; }

    uint32_t program = 0;
    uint32_t vertexShader = 0;
    uint32_t fragmentShader = 0;
    // Uniform locations, -1 where not wanted (OpenGL's "no uniform": 0 is a real location).
    int32_t texture0 = -1, texture1 = -1, texture2 = -1, texture3 = -1;
    int32_t matrix = -1;
    int32_t eyepos = -1;
    int32_t timerUniform = -1;

protected:
    int32_t uniform(const char* name) const;
    // The program was bound and usable when it was last bound.
    bool isLive() const { return live; }

private:
    // The stage's object, kept in `target` even when it fails so the destructor deletes it.
    bool compileStage(uint32_t type, const char* source, const char* errorTitle, uint32_t& target);
    // Shows the object's log in a box with that title.
    static void showLog(uint32_t object, const char* title);

    // Where the objects live; a context that went away took them with it.
    krContextStamp stamp;
    // The program was usable when it was last bound.
    bool live = false;
};

// A skinned mesh's program: it also takes the bone palette, `paletteSize` matrices.
class krSkinShader_GLSL : public krShader_GLSL {
public:
    explicit krSkinShader_GLSL(krModule* owner) : krShader_GLSL(owner) {}
    const char* className() const override { return "krSkinShader_GLSL"; }

    bool compile(const char* vertexSource, const char* fragmentSource, krScript* script) override;
    // The palette from the skeleton's skin matrices of the bones named; without a skeleton it
    // keeps what it has.
    void setBones(krSkeleton* skeleton, const int32_t* boneIndices, int32_t boneCount) override;
    // The palette from count matrices of 16 floats each, for the bound program.
    void setPalette(const float* matrices, int32_t count);

    int32_t bones = -1;
};
