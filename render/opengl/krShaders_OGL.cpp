// The shader table: .shader files run as scripts, their GLSL sources compiled into programs.
#include "render/opengl/krShaders_OGL.h"

#include <memory>

#include "core/krFile.h"
#include "render/opengl/krShader_GLSL.h"
#include "render/opengl/krVideo_OGL.h"
#include "script/krClassInfo.h"
#include "script/krScript.h"
#include "script/krScripting.h"

const krClassInfo krShaders_OGL::info = {"krShaders_OGL", "krModule", nullptr, {}, {},
                                         "the video's shader table, shared by file name; made at the window's init"};

namespace {

// A variable the .shader script left behind; a missing one reads as "" or 0.
std::string stringVariable(krScript& script, const char* name) {
    krVariant* v = script.getField(name);
    if (!v) return {};
    std::string text = v->toString();
    v->release();
    return text;
}

int32_t intVariable(krScript& script, const char* name) {
    krVariant* v = script.getField(name);
    if (!v) return 0;
    const int32_t value = v->toInt();
    v->release();
    return value;
}

}  // namespace

krShaders_OGL::krShaders_OGL(krModule* o) : krModule(o) {
    const auto* v = dynamic_cast<const krVideo_OGL*>(video);
    glsl = v && v->glsl;
    shadersOn = glsl;
    if (glsl) {
        extension = ".glsl";
        // No program: binding it selects fixed-function drawing.
        defaultShader = new krShader_GLSL(this);
    } else {
        defaultShader = new krShader_OGL(this);
    }
    defaultShader->attach();
    defaultShader->addRef();
    // Fixed-function drawing samples the diffuse texture.
    defaultShader->textures |= 1;
}

krShaders_OGL::~krShaders_OGL() {
    if (current) current->release();
    defaultShader->release();
}

void krShaders_OGL::setOwner(krModule*) {}

void krShaders_OGL::removeChild(krModule* child) {
    for (auto it = shaders.begin(); it != shaders.end();) {
        if (it->second == child) it = shaders.erase(it);
        else ++it;
    }
    krModule::removeChild(child);
}

krShader_OGL* krShaders_OGL::get(const std::string& name) {
    if (!shadersOn) return defaultShader;
    auto it = shaders.find(name);
    if (it != shaders.end()) return it->second;
    // A .shader script may load things that ask for this very shader: they get the default.
    shaders[name] = defaultShader;
    krShader_OGL* shader = load(name);
    if (!shader) shader = defaultShader;
    shaders[name] = shader;
    return shader;
}

void krShaders_OGL::bind(krShader_OGL* shader, krModule* module) {
    if (!shader) {
        unbind();
        return;
    }
    const bool changed = shader != current;
    // The bound shader is held: what drew with it may go before the next unbind.
    if (changed) {
        shader->addRef();
        if (current) current->release();
        current = shader;
    }
    shader->bind(module, changed);
}

void krShaders_OGL::unbind() {
    krShader_OGL* bound = current;
    if (!bound) return;
    current = nullptr;
    bound->unbind();
    bound->release();
}

krShader_OGL* krShaders_OGL::load(const std::string& name) {
    std::unique_ptr<krScript> script;
    {
        krFile file(name, true);
        if (file.size == 0) return nullptr;
        script = std::make_unique<krScript>();
        script->setHost(krScripting::instance());
        script->setFile(name);
        script->load(file.data);
    }
    if (krVariant* result = script->eval()) result->release();
    // The script may have deleted this table (or the video with it): what it would make now
    // could never be drawn.
    if (isTornDown()) return nullptr;
    const std::string vertex = stringVariable(*script, "vertex");
    const std::string fragment = stringVariable(*script, "fragment");
    const int32_t attributes = intVariable(*script, "attributes");
    const int32_t textures = intVariable(*script, "textures");
    const int32_t parameters = intVariable(*script, "parameters");
    if (vertex.empty() || fragment.empty()) return nullptr;

    // The sources lie beside the .shader file.
    const size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
    krFile vertexFile(folder + vertex + extension, true);
    krFile fragmentFile(folder + fragment + extension, true);
    if (vertexFile.size == 0 || fragmentFile.size == 0) return nullptr;

    // GLSL is the one shader language there is, so every shader here is a GLSL program; one with a
    // bone palette is a skinned mesh's.
    krShader_GLSL* shader = (parameters & krShaderMask::paletteSize) ? new krSkinShader_GLSL(this)
                                                                     : new krShader_GLSL(this);
    shader->attach();
    shader->attributes = attributes;
    shader->textures = textures;
    shader->parameters = parameters;
    if (!shader->compile(vertexFile.data, fragmentFile.data, script.get())) {
        shader->dispose();
        return nullptr;
    }
    return shader;
}
