// GLSL programs: compile, link, uniform locations, binding.
#include "render/opengl/krShader_GLSL.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/krSystem.h"
#include "render/krSkeleton.h"
#include "render/opengl/krGL.h"

krShader_GLSL::~krShader_GLSL() {
    if (!stamp.current()) return;
    for (uint32_t object : {vertexShader, fragmentShader, program})
        if (object) krglDeleteObjectARB(object);
}

bool krShader_GLSL::compile(const char* vertexSource, const char* fragmentSource, krScript*) {
    if (!krglCreateProgramObjectARB) return false;
    stamp = krContextStamp(dynamic_cast<krVideo_OGL*>(video));
    program = krglCreateProgramObjectARB();
    if (!compileStage(GL_VERTEX_SHADER_ARB, vertexSource, "Vertex Shader Compile Error", vertexShader)) return false;
    if (!compileStage(GL_FRAGMENT_SHADER_ARB, fragmentSource, "Fragment Shader Compile Error", fragmentShader))
        return false;
    krglLinkProgramARB(program);
    GLint linked = 0;
    krglGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &linked);
    if (!linked) {
        showLog(program, "Linking Error");
        return false;
    }
    int32_t* samplers[] = {&texture0, &texture1, &texture2, &texture3};
    const char* samplerNames[] = {"texture0", "texture1", "texture2", "texture3"};
    for (int unit = 0; unit < krShaderMask::samplerUnits; ++unit)
        if (samples(unit)) *samplers[unit] = uniform(samplerNames[unit]);
    if (parameters & krShaderMask::matrix) matrix = uniform("matrix");
    if (parameters & krShaderMask::eyePosition) eyepos = uniform("eyepos");
    if (parameters & krShaderMask::timer) timerUniform = uniform("timer");
    return true;
}

bool krShader_GLSL::compileStage(uint32_t type, const char* source, const char* errorTitle, uint32_t& target) {
    target = krglCreateShaderObjectARB(type);
    krglShaderSourceARB(target, 1, &source, nullptr);
    krglCompileShaderARB(target);
    GLint compiled = 0;
    krglGetObjectParameterivARB(target, GL_OBJECT_COMPILE_STATUS_ARB, &compiled);
    if (!compiled) {
        showLog(target, errorTitle);
        return false;
    }
    krglAttachObjectARB(program, target);
    return true;
}

void krShader_GLSL::showLog(uint32_t object, const char* title) {
    std::vector<char> log(maxLogSize, '\0');
    GLsizei length = 0;
    krglGetInfoLogARB(object, maxLogSize, &length, log.data());
    krSystem::messageBox(std::string(log.data(), static_cast<size_t>(std::max(length, 0))), title);
}

int32_t krShader_GLSL::uniform(const char* name) const {
    return krglGetUniformLocationARB(program, name);
}

void krShader_GLSL::bind(krModule* module, bool changed) {
    if (changed) {
        // Program 0 is fixed-function drawing, which has no uniforms; so is a program of a context
        // that has gone, whose name may now stand for something else.
        live = program && stamp.current();
        if (krglUseProgramObjectARB) krglUseProgramObjectARB(live ? program : 0);
        if (!live) return;
        const int32_t samplers[] = {texture0, texture1, texture2, texture3};
        for (int unit = 0; unit < krShaderMask::samplerUnits; ++unit)
            if (samples(unit)) krglUniform1iARB(samplers[unit], unit);
        if (parameters & krShaderMask::eyePosition)
            if (const auto* v = dynamic_cast<const krVideo_OGL*>(video)) krglUniform3fvARB(eyepos, 1, &v->getEyeCopy().x);
        if (parameters & krShaderMask::timer) krglUniform1fARB(timerUniform, timer);
    }
    if (live && (parameters & krShaderMask::matrix) && module)
        krglUniformMatrix4fvARB(matrix, 1, GL_FALSE, module->getMatrix().m);
}

void krShader_GLSL::unbind() {
    if (krglUseProgramObjectARB) krglUseProgramObjectARB(0);
}

bool krSkinShader_GLSL::compile(const char* vertexSource, const char* fragmentSource, krScript* script) {
    if (!krShader_GLSL::compile(vertexSource, fragmentSource, script)) return false;
    bones = uniform("bones");
    return true;
}

void krSkinShader_GLSL::setBones(krSkeleton* skeleton, const int32_t* boneIndices, int32_t boneCount) {
    if (!skeleton) return;
    // Room for the largest palette a shader can ask for.
    float palette[krShaderMask::paletteSize * 16];
    boneCount = std::clamp(boneCount, 0, krShaderMask::paletteSize);
    for (int32_t i = 0; i < boneCount; ++i)
        std::memcpy(&palette[i * 16], skeleton->skinMatrix(boneIndices[i]).m, sizeof(krMatrix));
    setPalette(palette, boneCount);
}

void krSkinShader_GLSL::setPalette(const float* matrices, int32_t count) {
    if (isLive() && count > 0) krglUniformMatrix4fvARB(bones, count, GL_FALSE, matrices);
}
