// The fixture of the content tests: a scratch working folder with the stock data, a window, and
// a scene below it (so that its objects have the video) shown by one viewport without a camera:
// the eye at the origin, looking down -Z.
#pragma once

#include "gl_content.h"
#include "gl_testing.h"
#include "render/krObject.h"
#include "render/opengl/krShaders_OGL.h"
#include "render/opengl/krTextures_OGL.h"

namespace glTesting {

class Scene : public Window {
protected:
    bool openScene(int32_t width = 64, int32_t height = 48) {
        if (!open(width, height)) return false;
        scene = new krModule(window);
        scene->attach();
        scene->setVisible(true);
        view = viewport(0, 0, static_cast<float>(width), static_cast<float>(height), scene);
        return true;
    }

    // A visible object at a place, its mesh made by the maker; it counts as in view from anywhere.
    krObject* object(glContent::MeshMaker& maker, const krVector3& at = {}, krModule* owner = nullptr) {
        auto* o = new krObject(owner ? owner : scene);
        o->attach();
        o->setVisible(true);
        o->setPosition(at);
        o->radius = everywhere;
        krMesh mesh;
        maker.make(mesh);
        o->addMesh(mesh);
        return o;
    }

    static void remove(krModule* m) {
        m->deinit();
        m->release();
    }

    krTextures_OGL* textures() const { return video->getTextures(); }
    krShaders_OGL* shaders() const { return video->getShaders(); }

    static constexpr float everywhere = 1000;
    glContent::Scratch files;
    krModule* scene = nullptr;
    krViewPort* view = nullptr;
};

inline int near(int value, int wanted) { return std::abs(value - wanted); }

}  // namespace glTesting
