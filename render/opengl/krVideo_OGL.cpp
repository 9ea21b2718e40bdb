// The OpenGL draw loop: scene set-up, the three queues, the 2D pass, motion blur; the tables of
// textures, shaders and fonts, and the item factories.
#include "render/opengl/krVideo_OGL.h"

#include <algorithm>
#include <functional>

#include "interface/krCamera.h"
#include "render/krDynamicData.h"
#include "render/krLight.h"
#include "render/krMesh.h"
#include "render/krVideoItem.h"
#include "render/krViewPort.h"
#include "render/krWindow.h"
#include "render/opengl/krDynamic2DTextItem_OGL.h"
#include "render/opengl/krDynamicPointsItem_OGL.h"
#include "render/opengl/krFonts_OGL.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krMeshItem_OGL.h"
#include "render/opengl/krShaders_OGL.h"
#include "render/opengl/krTextures_OGL.h"
#include "script/krClassInfo.h"
#include "script/krVariant.h"

namespace {

const krMemberInfo videoMembers[] = {
    {"anisotropy", krRead | krWrite, "float", "texture filter for textures loaded afterwards; written as an int"},
    {"shaders", krRead | krWrite, "int", "shader languages wanted before the window's init (GLSL, CG), then those found"},
    {"polyCount", krRead, "int", "polygons drawn in the last frame"},
    {"nearPlane", krRead | krWrite, "float", "distance of the near clipping plane"},
    {"motionBlur", krRead | krWrite, "float", "weight of the last frames; before init it asks for an accumulation buffer"},
    {"hardwareSkinning", krRead | krWrite, "bool", "wanted before the window's init, then whether it is on"},
    {"maxVertexWeights", krRead | krWrite, "int", "bone weights a vertex keeps, 4 at most"},
    {"optimizeSkinGroups", krRead | krWrite, "int", "how skinned meshes are grouped for drawing"},
    {"occlusionQuery", krWrite, "bool", "a wish before the window's init; its outcome shows only as an errorMsg"},
    {"pointSprites", krWrite, "bool", "a wish before the window's init; its outcome shows only as an errorMsg"},
};

// Ambient light of the scene, on top of each light's own.
constexpr float sceneAmbient[4] = {0.8f, 0.8f, 0.8f, 1};
// Points shrink with distance by 1 / (a + b d + c d^2).
constexpr float pointAttenuation[3] = {0.5f, 0.25f, 0.25f};
// Texture units that materials may have left enabled.
constexpr int textureUnits = 4;
// Alpha tests of the passes: the 2D pass keeps solid texels, the transparent pass all but the
// wholly clear ones.
constexpr float overlayAlphaRef = 0.5f;
constexpr float transparentAlphaRef = 0.001f;

float aspectOf(float width, float height) { return height != 0 ? width / height : 1; }
}

const krClassInfo krVideo_OGL::info = {"krVideo_OGL", "krVideo", nullptr, videoMembers, {},
                                       "the window's draw loop on OpenGL: read it as the window's video"};

krVideo_OGL::krVideo_OGL(krModule* o)
    : krVideo(o), glowQueue(glowQueueSize), alphaQueue(alphaQueueSize), opaqueQueue(opaqueQueueSize) {
    textures = new krTextures_OGL(this);
    textures->attach();
    fonts = new krFonts_OGL(this);
    fonts->attach();
}

krVideo_OGL::~krVideo_OGL() {
    if (query && krglDeleteQueriesARB) krglDeleteQueriesARB(1, &query);
}

krWindow* krVideo_OGL::window() const {
    return dynamic_cast<krWindow*>(owner);
}

void krVideo_OGL::removeChild(krModule* child) {
    if (child == textures) textures = nullptr;
    if (child == shaders) shaders = nullptr;
    if (child == fonts) fonts = nullptr;
    krVideo::removeChild(child);
}

bool krVideo_OGL::init() {
    // Tables, filters and queries belong to the window's context; a script may init the video
    // before there is one, and then only the children are set up.
    if (!contextReady) return krVideo::init();
    // Made once the window knows whether GLSL is there, since that decides the default shader.
    if (!shaders) {
        shaders = new krShaders_OGL(this);
        shaders->attach();
    }
    GLfloat maxAnisotropy = 0;
    if (krGL::hasExtension("GL_EXT_texture_filter_anisotropic"))
        glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &maxAnisotropy);
    if (anisotropy > maxAnisotropy) anisotropy = maxAnisotropy;
    GLint lightCount = 0;
    glGetIntegerv(GL_MAX_LIGHTS, &lightCount);
    maxLights = lightCount;
    if (occlusionQuery && !query) krglGenQueriesARB(1, &query);
    return krVideo::init();
}

bool krVideo_OGL::update(float dt) {
    timer += dt;
    ++frameNumber;
    forceAlphaSort = false;
    // Without a context the subtree still runs; only drawing waits for a window.
    if (!contextReady) return krModule::update(dt);
    return krVideo::update(dt);
}

bool krVideo_OGL::queueOpaque(krVideoItem_OGL* item) {
    if (opaqueCount >= opaqueQueueSize) return false;
    opaqueQueue[static_cast<size_t>(opaqueCount)] = {item->getShader(), opaqueCount, item};
    ++opaqueCount;
    return true;
}

bool krVideo_OGL::queueAlpha(krVideoItem_OGL* item, float depthKey) {
    if (alphaCount >= alphaQueueSize) return false;
    alphaQueue[static_cast<size_t>(alphaCount++)] = {depthKey, item};
    return true;
}

bool krVideo_OGL::queueGlow(krVideoItem_OGL* item) {
    if (glowCount >= glowQueueSize) return false;
    glowQueue[static_cast<size_t>(glowCount++)] = item;
    return true;
}

void krVideo_OGL::contextLost() {
    contextReady = false;
    ++contextGeneration;
    if (textures) textures->contextLost();
    // The programs went with the context; the next init makes a table for the new one. Shaders
    // that items still draw with stay alive, bound to no program.
    if (krShaders_OGL* old = shaders) {
        shaders = nullptr;
        old->dispose();
    }
    query = 0;
    firstFrame = true;
    for (krViewPort* viewport : viewports) viewport->pixelCount = 0;
}

void krVideo_OGL::unbindShaders() {
    if (shaders) shaders->unbind();
}

krShader_OGL* krVideo_OGL::selectShader(int32_t flags, const std::string& name, bool skinned) {
    if (!shaders) return nullptr;
    if (!name.empty()) return shaders->get(name);
    // Blended materials are never skinned on the graphics card.
    const bool skin = skinned && hardwareSkinning && !(flags & krMaterialBlended);
    const bool specular = flags & krMaterialSpecular;
    // A specular map counts only on a specular material.
    const int specularKind = !specular ? 0 : (flags & krMaterialSpecularMapped) ? 2 : 1;
    const bool normal = flags & krMaterialNormalMapped;
    // [normal map][none, specular, specular map][skinned]
    static const char* const stock[2][3][2] = {
        {{nullptr, "shaders/skin.shader"},
         {"shaders/spec.shader", "shaders/spec_skin.shader"},
         {"shaders/specmap.shader", "shaders/specmap_skin.shader"}},
        {{"shaders/normal.shader", "shaders/normal_skin.shader"},
         {"shaders/normal_spec.shader", "shaders/normal_spec_skin.shader"},
         {"shaders/normal_specmap.shader", "shaders/normal_specmap_skin.shader"}},
    };
    const char* file = stock[normal][specularKind][skin];
    return file ? shaders->get(file) : shaders->getDefaultShader();
}

krVideoItem* krVideo_OGL::createMeshItem(krModule* module, krMesh* mesh, int32_t) {
    if (!mesh || mesh->vertexCount <= 0 || !mesh->vertices || !contextReady) return nullptr;
    // Choosing shaders runs their .shader scripts, which may delete this video, its tables or the
    // module: all stay in memory until the item is built, and it joins a module that still stands.
    krModuleHold hold{this, module, shaders, textures};
    auto* item = new krMeshItem_OGL(module, this, *mesh);
    if (module->isTornDown()) {
        delete item;
        return nullptr;
    }
    item->joinModule();
    return item;
}

krVideoItem* krVideo_OGL::createDynamicItem(krModule* module, krDynamicData* data, int32_t kind) {
    // Without vertices there is nothing to draw yet; the owner asks again once it has some.
    if (!module || !data || data->count <= 0 || !(kind & krDynamicKind::required)) return nullptr;
    krPrimitiveItem_OGL* item = nullptr;
    if (kind & krDynamicKind::points) {
        if (!data->points) return nullptr;
        if (glsl && pointSprites) item = new krDynamicShadedPointsItem_OGL(module, this, data, kind);
        else item = new krDynamicPointsItem_OGL(module, this, data, kind);
    } else {
        if (!data->vertices || !krDynamicPrimitiveItem_OGL::modeOf(kind)) return nullptr;
        item = new krDynamicPrimitiveItem_OGL(module, this, data, kind);
    }
    item->prepare();
    return item;
}

krVideoItem* krVideo_OGL::createTextItem(krModule* module, krTextData* data, int32_t kind) {
    constexpr int32_t wanted = krDynamicKind::flat | krDynamicKind::required;
    if (!module || !data || (kind & wanted) != wanted || !fonts) return nullptr;
    return new krDynamic2DTextItem_OGL(module, this, data);
}

void krVideo_OGL::setItemData(krVideoItem* item, krDynamicData* data) {
    if (auto* primitive = dynamic_cast<krPrimitiveItem_OGL*>(item); primitive && data) primitive->setData(data);
}

float krVideo_OGL::textCharWidth(krVideoItem* item, int32_t character) {
    auto* text = dynamic_cast<krDynamic2DTextItem_OGL*>(item);
    return text ? text->charWidth(character) : 0;
}

float krVideo_OGL::textWidth(krVideoItem* item) {
    auto* text = dynamic_cast<krDynamic2DTextItem_OGL*>(item);
    return text ? text->width() : 0;
}

krContextStamp::krContextStamp(krVideo_OGL* video)
    : madeBy(video), videoHandle(video ? video->handle() : 0), generation(video ? video->getContextGeneration() : 0) {}

krVideo_OGL* krContextStamp::current() const {
    auto* video = dynamic_cast<krVideo_OGL*>(krScriptObject::fromHandle(videoHandle));
    return video && video->contextReady && video->getContextGeneration() == generation ? video : nullptr;
}

void krVideo_OGL::setOverlayProjection(float width, float height) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 1, aspectOf(height, width), 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void krVideo_OGL::drawViewport() {
    krViewPort* viewport = currentViewPort;
    const float x = viewport->getX(), y = viewport->getY();
    const float width = viewport->getWidth(), height = viewport->getHeight();
    const auto rect = [&] {
        glViewport(static_cast<GLint>(x), static_cast<GLint>(y), static_cast<GLsizei>(width),
                   static_cast<GLsizei>(height));
    };
    if (viewport->is2D()) {
        unbindShaders();
        rect();
        setOverlayProjection(width, height);
        glDisable(GL_CULL_FACE);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        glEnable(GL_COLOR_MATERIAL);
        glColor4f(1, 1, 1, 1);
        glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_TEXTURE_2D);
        glAlphaFunc(GL_GREATER, overlayAlphaRef);
        glEnable(GL_DITHER);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        // Overlay items draw as the walk reaches them.
        krVideo::drawScene(x, y, width, height);
        glDisable(GL_BLEND);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_COLOR_MATERIAL);
        return;
    }
    krCamera* camera = currentCamera;
    forceAlphaSort = viewport->isCameraAssigned() || (camera && camera->isCut());
    // Here the post effects' chain will wrap the scene in their off-screen targets; without
    // effects the scene goes straight to the frame.
    drawScene(x, y, width, height);
    rect();
    unbindShaders();
    draw2DPass();
    firstFrame = false;
}

void krVideo_OGL::draw2DPass() {
    const krViewPort* viewport = currentViewPort;
    setOverlayProjection(viewport->getWidth(), viewport->getHeight());
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_COLOR_MATERIAL);
    glDisable(GL_ALPHA_TEST);
    glDisable(GL_TEXTURE_2D);
    glAlphaFunc(GL_GREATER, overlayAlphaRef);
    glEnable(GL_DITHER);
    glEnable(GL_BLEND);
    // Flares add light.
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    for (int32_t i = 0; i < glowCount; ++i) glowQueue[static_cast<size_t>(i)]->drawGlow();
    unbindShaders();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
}

void krVideo_OGL::drawScene(float x, float y, float width, float height) {
    krViewPort* viewport = currentViewPort;
    krCamera* camera = currentCamera;
    glowCount = 0;
    glDepthMask(GL_TRUE);
    glViewport(static_cast<GLint>(x), static_cast<GLint>(y), static_cast<GLsizei>(width), static_cast<GLsizei>(height));
    if (viewport->pixelCount == 0) viewport->pixelCount = measurePixels(width, height);

    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(camera ? camera->getFov() : defaultFieldOfView, aspectOf(width, height), nearPlane,
                   camera ? camera->getDistance() : defaultFarPlane);

    glDisable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, overlayAlphaRef);
    glEnable(GL_DITHER);
    glDepthFunc(GL_LEQUAL);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, sceneAmbient);

    if (pointSprites) {
        glEnable(GL_POINT_SPRITE_ARB);
        glTexEnvf(GL_POINT_SPRITE_ARB, GL_COORD_REPLACE_ARB, 1.0f);
        krglPointParameterfvARB(GL_POINT_DISTANCE_ATTENUATION_ARB, pointAttenuation);
        GLfloat largest = 1;
        glGetFloatv(GL_POINT_SIZE_MAX_ARB, &largest);
        krglPointParameterfARB(GL_POINT_SIZE_MIN_ARB, 1);
        krglPointParameterfARB(GL_POINT_SIZE_MAX_ARB, largest);
    }

    glDisable(GL_COLOR_MATERIAL);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    // Without a camera the model view stays the identity: the eye is at the origin.
    eyeCopy = krVector3();
    if (camera) {
        const krVector3 p = camera->getPosition(), t = camera->getTarget(), u = camera->getUp();
        gluLookAt(p.x, p.y, p.z, t.x, t.y, t.z, u.x, u.y, u.z);
        eyeCopy = p;
    }

    glGetFloatv(GL_PROJECTION_MATRIX, projection.m);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelView.m);
    // From clip space (-1 to 1, y up) to the overlay's 0 to 1 across and 0 to height / width down.
    const float down = aspectOf(height, width);
    const krMatrix toOverlay =
        krMatrix::fromTranslationScale(krVector3(0.5f, 0.5f * down, 0), krVector3(0.5f, -0.5f * down, 1));
    screenMatrix = multiply(multiply(modelView, projection), toOverlay);
    viewport->setMatrix(screenMatrix);

    setLights();
    if (fogEnabled) {
        const GLfloat color[4] = {fogColor.r, fogColor.g, fogColor.b, fogColor.a};
        glFogi(GL_FOG_MODE, GL_LINEAR);
        glFogf(GL_FOG_DENSITY, 1);
        glFogf(GL_FOG_START, fogStart);
        glFogf(GL_FOG_END, fogEnd);
        glFogfv(GL_FOG_COLOR, color);
        glEnable(GL_FOG);
    } else {
        // The stock GLSL programs cannot see whether fog is enabled; a density of 0 tells them,
        // and linear fog itself never reads it.
        glFogf(GL_FOG_DENSITY, 0);
    }
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    opaqueCount = 0;

    krVideo::drawScene(x, y, width, height);
    drawScene3D();
}

void krVideo_OGL::setLights() {
    const size_t count = std::min(lights.size(), static_cast<size_t>(std::max(maxLights, 0)));
    for (size_t i = 0; i < count; ++i) {
        const krLight* light = lights[i];
        const GLenum id = GL_LIGHT0 + static_cast<GLenum>(i);
        // Fixed-function lighting saturates; shaders take the colours as they are.
        const krColorF diffuse = glsl ? light->diffuse : clamped(light->diffuse);
        const krColorF specular = glsl ? light->specular : clamped(light->specular);
        const krColorF ambient = glsl ? light->ambient : clamped(light->ambient);
        const GLfloat position[4] = {light->position.x, light->position.y, light->position.z, 1};
        glLightfv(id, GL_DIFFUSE, &diffuse.r);
        glLightfv(id, GL_SPECULAR, &specular.r);
        glLightfv(id, GL_AMBIENT, &ambient.r);
        glLightfv(id, GL_POSITION, position);
        glLightf(id, GL_CONSTANT_ATTENUATION, 1);
        glLightf(id, GL_LINEAR_ATTENUATION, 0);
        glLightf(id, GL_QUADRATIC_ATTENUATION, 0);
        glEnable(id);
    }
    // Lights that left the list since the last scene go dark.
    for (size_t i = count; i < static_cast<size_t>(enabledLights); ++i) glDisable(GL_LIGHT0 + static_cast<GLenum>(i));
    enabledLights = static_cast<int32_t>(count);
}

void krVideo_OGL::drawScene3D() {
    runOpaqueQueue();
    for (int32_t i = 0; i < glowCount; ++i) glowQueue[static_cast<size_t>(i)]->drawQuery();

    glDepthMask(GL_FALSE);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, transparentAlphaRef);
    glEnable(GL_TEXTURE_2D);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    runAlphaQueue();

    unbindShaders();
    if (krglActiveTexture) {
        for (int unit = textureUnits - 1; unit >= 0; --unit) {
            krglActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
            glDisable(GL_TEXTURE_2D);
        }
    } else {
        glDisable(GL_TEXTURE_2D);
    }
    glDisable(GL_CULL_FACE);
    glDisable(GL_ALPHA_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_COLOR_MATERIAL);
    glDisable(GL_LIGHTING);
    glDisable(GL_FOG);
    glFogf(GL_FOG_DENSITY, 0);

    filterGlows();
    unbindShaders();
    accumulate();
}

void krVideo_OGL::runOpaqueQueue() {
    // Grouped by shader so that each program is bound once.
    std::sort(opaqueQueue.begin(), opaqueQueue.begin() + opaqueCount, [](const OpaqueEntry& a, const OpaqueEntry& b) {
        if (a.shader != b.shader) return std::less<const krShader_OGL*>()(a.shader, b.shader);
        return a.order < b.order;
    });
    for (int32_t i = 0; i < opaqueCount; ++i) opaqueQueue[static_cast<size_t>(i)].item->draw();
}

void krVideo_OGL::runAlphaQueue() {
    std::sort(alphaQueue.begin(), alphaQueue.begin() + alphaCount,
              [](const AlphaEntry& a, const AlphaEntry& b) { return a.key < b.key; });
    // Farthest first, so that nearer transparent pieces blend over it.
    for (int32_t i = alphaCount - 1; i >= 0; --i) alphaQueue[static_cast<size_t>(i)].item->drawAlpha();
    alphaCount = 0;
}

void krVideo_OGL::filterGlows() {
    // Only glows whose query saw something keep their place, in order, for the 2D pass.
    int32_t kept = 0;
    for (int32_t i = 0; i < glowCount; ++i) {
        krVideoItem_OGL* item = glowQueue[static_cast<size_t>(i)];
        if (item->readQuery()) glowQueue[static_cast<size_t>(kept++)] = item;
    }
    glowCount = kept;
}

void krVideo_OGL::accumulate() {
    if (motionBlur <= 0) return;
    // The first frame has nothing to blend with: it fills the buffer.
    if (firstFrame) {
        glAccum(GL_LOAD, 1);
        return;
    }
    glAccum(GL_MULT, motionBlur);
    glAccum(GL_ACCUM, 1 - motionBlur);
    glAccum(GL_RETURN, 1);
}

float krVideo_OGL::measurePixels(float width, float height) {
    if (!occlusionQuery) return 1;
    glDepthMask(GL_TRUE);
    glClearDepth(1);
    glClear(GL_DEPTH_BUFFER_BIT);
    setOverlayProjection(width, height);
    const float down = aspectOf(height, width);
    const GLfloat quad[] = {0, 0, 0, 1, 0, 0, 1, down, 0, 0, down, 0};
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, quad);
    glDrawArrays(GL_QUADS, 0, 4);
    glDisable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    GLuint counter = 0;
    krglGenQueriesARB(1, &counter);
    krglBeginQueryARB(GL_SAMPLES_PASSED_ARB, counter);
    glDrawArrays(GL_QUADS, 0, 4);
    krglEndQueryARB(GL_SAMPLES_PASSED_ARB);
    // Asking for the result waits until the driver has it.
    GLuint samples = 0;
    krglGetQueryObjectuivARB(counter, GL_QUERY_RESULT_ARB, &samples);
    krglDeleteQueriesARB(1, &counter);
    glDisableClientState(GL_VERTEX_ARRAY);
    krWindow* w = window();
    krGL::clearFrame(w ? w->getBackground() : krColor(0, 0, 0, 255));
    return std::max(1.0f, static_cast<float>(samples));
}

krVariant* krVideo_OGL::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "anisotropy") return new krVFloat(anisotropy);
    if (name == "shaders") return new krVInt((glsl ? 1 : 0) | (cg ? 2 : 0));
    if (name == "polyCount") return new krVInt(polyCount);
    if (name == "nearPlane") return new krVFloat(nearPlane);
    if (name == "motionBlur") return new krVFloat(motionBlur);
    if (name == "hardwareSkinning") return new krVBool(hardwareSkinning);
    if (name == "maxVertexWeights") return new krVInt(maxVertexWeights);
    if (name == "optimizeSkinGroups") return new krVInt(optimizeSkinGroups);
    return krVideo::getMember(name, caller, args);
}

void krVideo_OGL::setMember(const std::string& name, krVariant* value) {
    if (name == "anisotropy") {
        // Filters come in whole steps.
        anisotropy = static_cast<float>(value->toInt());
    } else if (name == "shaders") {
        const int32_t bits = value->toInt();
        glsl = bits & 1;
        cg = bits & 2;
    } else if (name == "nearPlane") {
        nearPlane = value->toFloat();
    } else if (name == "motionBlur") {
        motionBlur = value->toFloat();
    } else if (name == "hardwareSkinning") {
        hardwareSkinning = value->toBool();
    } else if (name == "maxVertexWeights") {
        // A vertex carries four weights at most.
        maxVertexWeights = std::clamp(value->toInt(), 0, 4);
    } else if (name == "optimizeSkinGroups") {
        optimizeSkinGroups = value->toInt();
    } else if (name == "occlusionQuery") {
        occlusionQuery = value->toBool();
    } else if (name == "pointSprites") {
        pointSprites = value->toBool();
    } else {
        krVideo::setMember(name, value);
    }
}
