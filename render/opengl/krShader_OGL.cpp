// The fixed-function shader: a clock and nothing to compile.
#include "render/opengl/krShader_OGL.h"

bool krShader_OGL::update(float dt) {
    timer += dt;
    return krModule::update(dt);
}

bool krShader_OGL::compile(const char*, const char*, krScript*) { return true; }
