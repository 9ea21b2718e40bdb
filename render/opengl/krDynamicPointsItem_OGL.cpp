// Points items: billboards, point sprites in runs of one size, and points sized by a program.
#include "render/opengl/krDynamicPointsItem_OGL.h"

#include <cmath>

#include "core/krModule.h"
#include "interface/krCamera.h"
#include "render/krViewPort.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krShader_OGL.h"
#include "render/opengl/krShaders_OGL.h"
#include "render/opengl/krTextures_OGL.h"

krDynamicPointsItem_OGL::krDynamicPointsItem_OGL(krModule* m, krVideo_OGL* v, krDynamicData* d, int32_t k)
    : krPrimitiveItem_OGL(m, v, d, k) {}

float krDynamicPointsItem_OGL::alphaKey() const {
    if (!(materialFlags & (krMaterialAdditive | krMaterialAdditiveAlpha))) return krPrimitiveItem_OGL::alphaKey();
    const float d = distance(translation(module->getMatrix()), video->getEyeCopy()) - 1;
    return d * d;
}

void krDynamicPointsItem_OGL::begin() const {
    if (kind & krDynamicKind::noCulling) glDisable(GL_CULL_FACE);
    if (materialFlags & krMaterialAdditive) glBlendFunc(GL_ONE, GL_ONE);
    if (materialFlags & krMaterialAdditiveAlpha) glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    setMaterialAndTexture();
}

void krDynamicPointsItem_OGL::end() const {
    glDisable(GL_COLOR_MATERIAL);
    video->addPolygons(2 * count());
    if (materialFlags & (krMaterialAdditive | krMaterialAdditiveAlpha)) glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (kind & krDynamicKind::noCulling) glEnable(GL_CULL_FACE);
}

void krDynamicPointsItem_OGL::drawNow() {
    const krPointVertex* points = data->points;
    const int32_t n = count();
    if (!points || n == 0) return;
    begin();
    video->unbindShaders();
    glEnable(GL_COLOR_MATERIAL);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    if (video->pointSprites) drawSprites(points, n);
    else drawBillboards(points, n);
    end();
}

void krDynamicPointsItem_OGL::drawBillboards(const krPointVertex* points, int32_t n) const {
    // Every point faces back along the view, so all share one pair of axes.
    const krVector3 facing = normalized(-video->getViewDirection());
    const krVector3 right = normalized(cross(facing, krVector3::axisY));
    const krVector3 up = cross(facing, right);
    const float size = data->pointSize;
    glBegin(GL_QUADS);
    for (int32_t i = 0; i < n; ++i) {
        const krPointVertex& p = points[i];
        const float h = size * p.size;
        const krVector3 r = right * h, u = up * h;
        glColor4ubv(&p.color.r);
        glNormal3f(0, 0, 0);
        const krVector3 corners[4] = {p.position + r + u, p.position - r + u, p.position - r - u, p.position + r - u};
        constexpr GLfloat st[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        for (int c = 0; c < 4; ++c) {
            glTexCoord2fv(st[c]);
            glVertex3fv(&corners[c].x);
        }
    }
    glEnd();
}

float krDynamicPointsItem_OGL::spriteScale() const {
    const krViewPort* viewport = video->getCurrentViewPort();
    krCamera* camera = video->getCurrentCamera();
    if (!camera) return 1;
    return data->pointSize * viewport->getHeight() / (2 * std::tan(camera->getFov() / 360 * krPi));
}

void krDynamicPointsItem_OGL::drawSprites(const krPointVertex* points, int32_t n) const {
    if (!video->getCurrentViewPort()) return;
    const float scale = spriteScale();
    // A run of points of one size factor is one glBegin.
    float factor = points[0].size;
    glPointSize(scale * factor);
    glBegin(GL_POINTS);
    for (int32_t i = 0; i < n; ++i) {
        const krPointVertex& p = points[i];
        if (p.size != factor) {
            glEnd();
            factor = p.size;
            glPointSize(scale * factor);
            glBegin(GL_POINTS);
        }
        glColor4ubv(&p.color.r);
        glVertex3fv(&p.position.x);
    }
    glEnd();
}

krDynamicShadedPointsItem_OGL::krDynamicShadedPointsItem_OGL(krModule* m, krVideo_OGL* v, krDynamicData* d,
                                                             int32_t k)
    : krDynamicPointsItem_OGL(m, v, d, k) {
    if (d->shader.empty()) d->shader = krDynamicData::defaultPointShader;
}

krDynamicShadedPointsItem_OGL::~krDynamicShadedPointsItem_OGL() {
    if (shader) shader->release();
}

void krDynamicShadedPointsItem_OGL::setData(krDynamicData* d) {
    krDynamicPointsItem_OGL::setData(d);
    if (d->shader.empty()) d->shader = krDynamicData::defaultPointShader;
    if (inContext()) selectShader();
}

void krDynamicShadedPointsItem_OGL::takeResources() {
    krDynamicPointsItem_OGL::takeResources();
    selectShader();
}

void krDynamicShadedPointsItem_OGL::selectShader() {
    krShader_OGL* s = video->selectShader(0, data->shader, false);
    if (s) s->addRef();
    if (shader) shader->release();
    shader = s;
    // A program reads black from an empty unit, where untextured points should show their colour.
    krTextures_OGL* textures = video->getTextures();
    if (!texture && textures && shader && shader->programmable() && shader->samples(0))
        texture = textures->getBlankTexture();
}

void krDynamicShadedPointsItem_OGL::drawNow() {
    // A program that failed (or a driver that lost its programs) leaves the fixed-function ways.
    krShaders_OGL* shaders = video->getShaders();
    if (!shaders || !shader || !shader->programmable()) {
        krDynamicPointsItem_OGL::drawNow();
        return;
    }
    const krPointVertex* points = data->points;
    const int32_t n = count();
    if (!points || n == 0) return;
    begin();
    shaders->bind(shader, module);
    glEnable(GL_COLOR_MATERIAL);
    // The program reads the size factor as its first texture coordinate.
    glEnable(GL_VERTEX_PROGRAM_POINT_SIZE_ARB);
    if (video->getCurrentViewPort()) {
        glPointSize(spriteScale());
        glBegin(GL_POINTS);
        for (int32_t i = 0; i < n; ++i) {
            glColor4ubv(&points[i].color.r);
            glTexCoord1f(points[i].size);
            glVertex3fv(&points[i].position.x);
        }
        glEnd();
    }
    glDisable(GL_VERTEX_PROGRAM_POINT_SIZE_ARB);
    end();
}
