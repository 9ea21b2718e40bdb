// The texture table: loading DDS files into OpenGL, sharing and releasing them.
#include "render/opengl/krTextures_OGL.h"

#include "core/krFile.h"
#include "core/krMain.h"
#include "render/krTextureInfo.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "script/krClassInfo.h"

const krClassInfo krTextures_OGL::info = {"krTextures_OGL", "krModule", nullptr, {}, {},
                                          "the video's texture table, shared by file name"};

krTextures_OGL::krTextures_OGL(krModule* o) : krModule(o) {}

krTextures_OGL::~krTextures_OGL() {
    for (const auto& [name, entry] : entries) glDeleteTextures(1, &entry.texture);
    if (blankTexture) glDeleteTextures(1, &blankTexture);
}

bool krTextures_OGL::init() {
    // Textures need the video's context; a failed load hands back the fallback it has not got
    // yet: 0, untextured.
    const auto* v = dynamic_cast<const krVideo_OGL*>(video);
    if (!defaultTexture && v && v->contextReady) defaultTexture = load(defaultName);
    return krModule::init();
}

uint32_t krTextures_OGL::load(const std::string& name) {
    if (name.empty()) return 0;
    auto it = entries.find(name);
    if (it != entries.end()) {
        ++it->second.count;
        return it->second.texture;
    }
    GLuint texture = 0;
    glGenTextures(1, &texture);
    if (!upload(name, texture)) {
        glDeleteTextures(1, &texture);
        return defaultTexture;
    }
    entries[name] = {texture, 1};
    return texture;
}

bool krTextures_OGL::upload(const std::string& name, uint32_t texture) {
    // The filter is the one asked for when the texture comes in; a later change of the video's
    // setting is for textures loaded after it.
    const auto* v = dynamic_cast<const krVideo_OGL*>(video);
    const float anisotropy = v ? v->getAnisotropy() : 0;
    krFile file(name, true);
    // A missing file has been reported by the file layer; an empty one has nothing to show.
    if (file.size == 0) return false;
    krTextureInfo info;
    if (!info.parse(file.data, file.size)) {
        if (krMain* root = krMain::instance()) root->errorMsg("Invalid texture file: '" + name + "'");
        return false;
    }
    // Without the minimum entry points the window has reported, and block data has no way in.
    if (info.compressed && !krglCompressedTexImage2DARB) return false;

    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    // 1 is no anisotropic filtering; 0 is what the setting holds when it is off.
    if (anisotropy >= 1) glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, anisotropy);
    // The driver builds the smaller levels from the top one; levels in the file are not used.
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP_SGIS, GL_TRUE);
    if (info.compressed) {
        krglCompressedTexImage2DARB(GL_TEXTURE_2D, 0, info.format, info.width, info.height, 0,
                                    static_cast<GLsizei>(info.pixelsSize), info.pixels);
    } else {
        // Rows of three-byte pixels are packed tight, not padded to four bytes.
        GLint alignment = 4;
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, info.width, info.height, 0, info.format, GL_UNSIGNED_BYTE,
                     info.pixels);
        glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
    }
    // A load leaves no texture bound: untextured drawing must not pick this one up.
    glBindTexture(GL_TEXTURE_2D, 0);
    return true;
}

void krTextures_OGL::release(const std::string& name) {
    auto it = entries.find(name);
    if (it == entries.end()) return;
    if (--it->second.count > 0) return;
    glDeleteTextures(1, &it->second.texture);
    if (it->second.texture == defaultTexture) defaultTexture = 0;
    entries.erase(it);
}

uint32_t krTextures_OGL::getBlankTexture() {
    if (blankTexture) return blankTexture;
    const GLubyte white[4] = {255, 255, 255, 255};
    glGenTextures(1, &blankTexture);
    glBindTexture(GL_TEXTURE_2D, blankTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, white);
    glBindTexture(GL_TEXTURE_2D, 0);
    return blankTexture;
}

int32_t krTextures_OGL::useCount(const std::string& name) const {
    auto it = entries.find(name);
    return it == entries.end() ? 0 : it->second.count;
}

void krTextures_OGL::contextLost() {
    entries.clear();
    defaultTexture = 0;
    blankTexture = 0;
}

void krTextures_OGL::setOwner(krModule*) {}
