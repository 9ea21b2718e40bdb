// krShaders_OGL: the video's table of shaders, shared by the name of their .shader file. A .shader
// file is a small script that leaves behind the stems of its two GLSL sources and the masks of
// what it consumes. Every failure ends at the default shader, fixed-function drawing, and the
// table remembers it under the failed name, so a bad file is read and reported only once.
//
// The table also knows which shader is bound: binding the same one again sends only what changes
// from object to object.
#pragma once

#include <map>
#include <string>

#include "core/krModule.h"

class krShader_OGL;

class krShaders_OGL : public krModule {
public:
    explicit krShaders_OGL(krModule* owner);
    ~krShaders_OGL() override;
    const char* className() const override { return "krShaders_OGL"; }
    static const krClassInfo info;

    // The table stays with its video: the programs live in the video's context.
    void setOwner(krModule*) override;
    // A shader deleted by a script leaves the table; what still draws with it keeps it alive.
    void removeChild(krModule* child) override;

    // Never null: the shader of that file, or the default.
    krShader_OGL* get(const std::string& name);
    void bind(krShader_OGL* shader, krModule* module);
    void unbind();

    krShader_OGL* getDefaultShader() const { return defaultShader; }
    krShader_OGL* getCurrent() const { return current; }
    bool areShadersOn() const { return shadersOn; }

private:
    krShader_OGL* load(const std::string& name);

    std::map<std::string, krShader_OGL*> shaders;
    krShader_OGL* current = nullptr;
    // Held with a reference of the table's own: it is handed out for as long as the table lives.
    krShader_OGL* defaultShader = nullptr;
    // Appended to the stems of a .shader file.
    std::string extension;
    bool shadersOn = false;
    bool glsl = false;
};
