// Extension checks and entry point loading through the window system.
#include "render/opengl/krGL.h"

#include <cstring>

#include "platform/krWindowSystem.h"

#define KR_GL_DEFINE(type, name) type kr##name = nullptr;
KR_GL_ALL(KR_GL_DEFINE)
#undef KR_GL_DEFINE

namespace {
template <typename F>
bool load(F& pointer, const char* name) {
    pointer = reinterpret_cast<F>(krWindowSystem::procAddress(name));
    return pointer != nullptr;
}

bool hasAll(std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (!krGL::hasExtension(name)) return false;
    return true;
}

#define KR_GL_LOAD(type, name) ok = load(kr##name, #name) && ok;
#define KR_GL_CLEAR(type, name) kr##name = nullptr;
// Loads every entry point of a group, or none.
#define KR_GL_GROUP(LIST, ...)            \
    {                                     \
        bool ok = hasAll({__VA_ARGS__});  \
        if (ok) { LIST(KR_GL_LOAD) }      \
        if (!ok) { LIST(KR_GL_CLEAR) }    \
        return ok;                        \
    }
}

bool krGL::hasExtension(const char* name) {
    // A plain substring search, as the extension string has always been read.
    const char* all = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    return all && std::strstr(all, name) != nullptr;
}

const char* krGL::string(GLenum name) {
    const char* s = reinterpret_cast<const char*>(glGetString(name));
    return s ? s : "";
}

bool krGL::loadGroup(krGLGroup group) {
    switch (group) {
    case krGLGroup::minimum:
        KR_GL_GROUP(KR_GL_MINIMUM, "GL_SGIS_generate_mipmap", "GL_ARB_texture_compression",
                    "GL_EXT_texture_compression_s3tc", "GL_ARB_multitexture")
    case krGLGroup::occlusion:
        KR_GL_GROUP(KR_GL_OCCLUSION, "GL_ARB_occlusion_query")
    case krGLGroup::pointSprites:
        KR_GL_GROUP(KR_GL_POINT_SPRITES, "GL_ARB_point_parameters", "GL_ARB_point_sprite")
    case krGLGroup::vertexAttributes:
        KR_GL_GROUP(KR_GL_VERTEX_ATTRIBUTES, "GL_ARB_vertex_program")
    case krGLGroup::vertexBuffers:
        KR_GL_GROUP(KR_GL_VERTEX_BUFFERS, "GL_ARB_vertex_buffer_object")
    case krGLGroup::pixelBuffers:
        KR_GL_GROUP(KR_GL_PIXEL_BUFFERS, "GL_ARB_framebuffer_object")
    case krGLGroup::glsl:
        KR_GL_GROUP(KR_GL_GLSL, "GL_ARB_shading_language_100", "GL_ARB_fragment_shader", "GL_ARB_shader_objects",
                    "GL_ARB_vertex_shader")
    }
    return false;
}

void krGL::clearFrame(const krColor& background) {
    // 0.0039215684 is 1 / 255 as the float the frame has always been cleared with.
    constexpr float byteScale = 0.0039215684f;
    glDepthMask(GL_TRUE);
    glClearColor(background.r * byteScale, background.g * byteScale, background.b * byteScale, 0);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}
