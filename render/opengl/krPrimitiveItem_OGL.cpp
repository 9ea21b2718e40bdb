// Dynamic primitive items: the record's texture in the item's context, the alpha queue, and the
// vertices in immediate mode.
#include "render/opengl/krPrimitiveItem_OGL.h"

#include "core/krModule.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krTextures_OGL.h"

namespace {
constexpr GLfloat white[4] = {1, 1, 1, 1};
constexpr GLfloat black[4] = {0, 0, 0, 1};
}  // namespace

krPrimitiveItem_OGL::krPrimitiveItem_OGL(krModule* m, krVideo_OGL* v, krDynamicData* d, int32_t k)
    : krVideoItem_OGL(m, true, v),
      flat(k & krDynamicKind::flat),
      textureName(d->textures[0]),
      kind(k),
      materialFlags(d->flags),
      data(d) {}

krPrimitiveItem_OGL::~krPrimitiveItem_OGL() {
    // A texture of a context that went away went with it.
    krVideo_OGL* v = stamp.current();
    krTextures_OGL* textures = v ? v->getTextures() : nullptr;
    if (textures) textures->release(textureName);
}

bool krPrimitiveItem_OGL::prepare() {
    if (module->getVideo() != video || !video->contextReady) return false;
    if (!stamp.isCurrentIn(video)) {
        takeResources();
        stamp = krContextStamp(video);
    }
    return true;
}

void krPrimitiveItem_OGL::takeResources() {
    krTextures_OGL* textures = video->getTextures();
    texture = textures ? textures->load(textureName) : 0;
}

void krPrimitiveItem_OGL::setData(krDynamicData* d) {
    data = d;
    materialFlags = d->flags;
    const std::string old = textureName;
    textureName = d->textures[0];
    // Outside the context the texture was taken in, the next draw takes the new one.
    if (!inContext()) return;
    if (krTextures_OGL* textures = video->getTextures()) {
        texture = textures->load(textureName);
        textures->release(old);
    }
}

void krPrimitiveItem_OGL::draw() {
    if (count() == 0 || !prepare()) return;
    if (!(kind & krDynamicKind::alpha)) drawNow();
    else video->queueAlpha(this, alphaKey());
}

float krPrimitiveItem_OGL::alphaKey() const {
    return distanceSquared(translation(module->getMatrix()), video->getEyeCopy());
}

void krPrimitiveItem_OGL::setMaterialAndTexture() const {
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, white);
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, white);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, black);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, black);
    if (texture) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, texture);
    } else {
        glDisable(GL_TEXTURE_2D);
    }
}

krDynamicPrimitiveItem_OGL::krDynamicPrimitiveItem_OGL(krModule* m, krVideo_OGL* v, krDynamicData* d, int32_t k)
    : krPrimitiveItem_OGL(m, v, d, k), mode(modeOf(k)) {
    const int32_t n = count();
    int32_t p = 0;
    switch (mode) {
    case GL_QUADS: p = n / 2; break;
    case GL_QUAD_STRIP: p = n - 2; break;
    case GL_LINES: p = n / 2; break;
    case GL_LINE_STRIP: p = n - 1; break;
    }
    polygons = p > 0 ? p : 0;
}

uint32_t krDynamicPrimitiveItem_OGL::modeOf(int32_t kind) {
    if (kind & krDynamicKind::lineStrip) return GL_LINE_STRIP;
    if (kind & krDynamicKind::lines) return GL_LINES;
    if (kind & krDynamicKind::quadStrip) return GL_QUAD_STRIP;
    if (kind & krDynamicKind::quads) return GL_QUADS;
    return 0;
}

void krDynamicPrimitiveItem_OGL::drawNow() {
    const krVertex* v = data->vertices;
    const int32_t n = count();
    if (!v || n == 0) return;
    const bool twoSided = kind & krDynamicKind::noCulling;
    if (twoSided) glDisable(GL_CULL_FACE);
    if (!flat) video->unbindShaders();
    glPushMatrix();
    glMultMatrixf(module->getMatrix().m);
    setMaterialAndTexture();
    if (flat) {
        glBegin(mode);
        for (int32_t i = 0; i < n; ++i) {
            glColor4ubv(&v[i].color.r);
            glTexCoord2fv(&v[i].u);
            glVertex3fv(&v[i].position.x);
        }
        glEnd();
    } else {
        glEnable(GL_COLOR_MATERIAL);
        glBegin(mode);
        for (int32_t i = 0; i < n; ++i) {
            glColor4ubv(&v[i].color.r);
            glNormal3fv(&v[i].normal.x);
            glTexCoord2fv(&v[i].u);
            glVertex3fv(&v[i].position.x);
        }
        glEnd();
        glDisable(GL_COLOR_MATERIAL);
    }
    video->addPolygons(polygons);
    glPopMatrix();
    if (twoSided) glEnable(GL_CULL_FACE);
}
