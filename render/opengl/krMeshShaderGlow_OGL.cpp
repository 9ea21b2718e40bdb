// Glows: the queried draw, the brightness rule, and the flare.
#include "render/opengl/krMeshShaderGlow_OGL.h"

#include <algorithm>
#include <cmath>

#include "render/krViewPort.h"
#include "render/opengl/krGL.h"

namespace {
// The flare's alpha never reaches full: a glow lights the scene up, it does not paint it over.
constexpr float maxFlareAlpha = 224;
// Brightness to flare alpha and to flare radius (in widths of the viewport).
constexpr float alphaPerBrightness = 5000;
constexpr float radiusPerBrightness = 20;
constexpr float minFlareRadius = 0.05f;
// Without queries: the glow fades in over this much of the view cone, from a floor.
constexpr float angleFloor = 0.1f;
constexpr float angleRamp = 0.2f;
// The rim: a base radius, and how far each spike level reaches beyond it.
constexpr float rimBase = 0.75f;
constexpr float spikeReach = 0.26f;
}  // namespace

krMeshShaderGlow_OGL::krMeshShaderGlow_OGL(krModule* m, krVideo_OGL* v, const krColor& c)
    : krMeshShader_OGL(m, v), color(c) {
    if (v->occlusionQuery && krglGenQueriesARB) krglGenQueriesARB(1, &query);
}

krMeshShaderGlow_OGL::~krMeshShaderGlow_OGL() {
    if (query && stamp.current()) krglDeleteQueriesARB(1, &query);
}

void krMeshShaderGlow_OGL::draw() {
    video->queueGlow(this);
}

void krMeshShaderGlow_OGL::drawQuery() {
    pushTransform();
    const bool counted = video->occlusionQuery && query;
    if (counted) krglBeginQueryARB(GL_SAMPLES_PASSED_ARB, query);
    glCallList(list);
    if (counted) krglEndQueryARB(GL_SAMPLES_PASSED_ARB);
    popTransform();
}

bool krMeshShaderGlow_OGL::readQuery() {
    const krVector3 at = worldCentre();
    const krVector3 toGlow = at - video->getEye();
    const float cone = video->getViewCone();
    if (video->occlusionQuery && query) {
        GLuint samples = 0;
        krglGetQueryObjectuivARB(query, GL_QUERY_RESULT_ARB, &samples);
        if (samples == 0) return false;
        const float d = 0.5f * dot(normalized(toGlow), normalized(video->getViewDirection()));
        const krViewPort* viewport = video->getCurrentViewPort();
        const float pixels = viewport ? std::max(viewport->pixelCount, 1.0f) : 1;
        brightness = std::sqrt(std::max(static_cast<float>(samples) * d * d * d * cone * cone / pixels, 0.0f));
        return true;
    }
    const float d = dot(normalized(toGlow), normalized(video->getViewDirection()));
    const float distance = length(toGlow);
    if (d <= 0 || distance <= 0) return false;
    const krVector3 size = box.size();
    const float s = (size.x + size.y + size.z) / 3 / distance;
    const float fade = std::clamp(angleFloor + angleRamp * (cone - std::tan(std::acos(std::min(d, 1.0f)))), 0.0f, 1.0f);
    brightness = std::sqrt(fade * s * s);
    return true;
}

void krMeshShaderGlow_OGL::drawGlow() {
    const krVector3 p = transformPoint(video->getScreenMatrix(), worldCentre());
    const auto alpha = static_cast<uint8_t>(std::min(maxFlareAlpha, brightness * alphaPerBrightness));
    drawFlare(video, p.x, p.y, std::max(minFlareRadius, brightness * radiusPerBrightness), krColor(color, alpha));
}

void krMeshShaderGlow_OGL::drawFlare(krVideo_OGL* video, float x, float y, float radius, const krColor& c) {
    glBegin(GL_TRIANGLE_FAN);
    glColor4ub(c.r, c.g, c.b, c.a);
    glVertex2f(x, y);
    glColor4ub(c.r, c.g, c.b, 0);
    for (int32_t i = 0; i <= flareRimPoints; ++i) {
        const int spikes = (i % 2 == 0) + (i % 4 == 0) + (i % 8 == 0);
        const float rim = (rimBase + static_cast<float>(spikes) * spikeReach * radius * radius) * radius;
        const float angle = krTwoPi * static_cast<float>(i) / flareRimPoints;
        glVertex2f(x + std::cos(angle) * rim, y + std::sin(angle) * rim);
    }
    glEnd();
    video->addPolygons(flareRimPoints);
}
