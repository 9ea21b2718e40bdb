// Mesh items: cutting a mesh into mesh shaders, baking material state, queueing.
#include "render/opengl/krMeshItem_OGL.h"

#include <algorithm>
#include <array>
#include <memory>

#include "render/krMesh.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krMeshShaderAlphaBuffered_OGL.h"
#include "render/opengl/krMeshShaderGlow_OGL.h"
#include "render/opengl/krMeshShaderHWSkin_OGL.h"
#include "render/opengl/krMeshShaderSWSkin_OGL.h"
#include "render/opengl/krShader_OGL.h"
#include "render/opengl/krTextures_OGL.h"

namespace {
// Emission bytes are lit by this: 32 of 255 gives full light, so a material can glow.
constexpr float emissionScale = 8;
// The largest specular exponent OpenGL takes.
constexpr float maxShininess = 128;
// Texture units a material can fill.
constexpr int materialUnits = krTextureSlots;

using TextureIds = std::array<uint32_t, materialUnits>;

// The class that holds a material's geometry. Weights go to the graphics card when the shader
// takes them by palette place, and are blended on the processor otherwise.
std::unique_ptr<krMeshShader_OGL> makeMeshShader(krModule* module, krVideo_OGL* video, const krMaterial& m,
                                                 const krShader_OGL* shader, bool weighted) {
    if (weighted) {
        if (shader && shader->programmable() && (shader->attributes & krShaderMask::weightCount) &&
            (shader->parameters & krShaderMask::paletteSize))
            return std::make_unique<krMeshShaderHWSkin_OGL>(module, video);
        if (m.flags & krMaterialBlended) return std::make_unique<krMeshShaderSWSkinAlpha_OGL>(module, video);
        return std::make_unique<krMeshShaderSWSkin_OGL>(module, video);
    }
    if (m.flags & krMaterialBlended) {
        if (video->vertexBuffers && (m.flags & krMaterialSorted))
            return std::make_unique<krMeshShaderAlphaBuffered_OGL>(module, video);
        return std::make_unique<krMeshShaderAlpha_OGL>(module, video);
    }
    if (m.flags & krMaterialGlowing) return std::make_unique<krMeshShaderGlow_OGL>(module, video, m.emission);
    return std::make_unique<krMeshShader_OGL>(module, video);
}

// The first places of each vertex carry the whole weight; the others are cleared.
void limitWeights(krMesh& mesh, int32_t places) {
    for (size_t at = 0; at < mesh.weights.size(); at += krWeightsPerVertex) {
        krBoneWeight* w = &mesh.weights[at];
        float sum = 0;
        for (int32_t k = 0; k < places; ++k) sum += w[k].weight;
        if (sum > 0)
            for (int32_t k = 0; k < places; ++k) w[k].weight /= sum;
        for (int32_t k = std::max(places, 0); k < krWeightsPerVertex; ++k) w[k] = krBoneWeight();
    }
}

// Without multitexture there is unit 0 alone.
bool selectUnit(int unit) {
    if (krglActiveTexture) krglActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    return krglActiveTexture || unit == 0;
}

void setMaterialColor(GLenum which, const krColorF& c) {
    glMaterialfv(GL_FRONT_AND_BACK, which, &c.r);
}

void materialState(const krMaterial& m, const TextureIds& ids) {
    if (m.flags & krMaterialAlphaTested) {
        glEnable(GL_ALPHA_TEST);
        glDisable(GL_CULL_FACE);
    }
    setMaterialColor(GL_AMBIENT, krColorF(m.ambient));
    setMaterialColor(GL_DIFFUSE, krColorF(m.diffuse));
    setMaterialColor(GL_EMISSION, lit(m.emission, emissionScale));
    if (m.flags & krMaterialSpecular) {
        glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, std::min(m.shininess, maxShininess));
        setMaterialColor(GL_SPECULAR, krColorF(m.specular));
    } else {
        glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 0);
        setMaterialColor(GL_SPECULAR, krColorF(0, 0, 0, 1));
    }
    glColor4f(1, 1, 1, 1);
    // The transparent pass turns texturing on for all; an untextured material must not show
    // whatever texture was bound last.
    if (!ids[0]) {
        selectUnit(0);
        glDisable(GL_TEXTURE_2D);
    }
    for (int unit = 0; unit < materialUnits; ++unit) {
        if (!ids[static_cast<size_t>(unit)] || !selectUnit(unit)) continue;
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, ids[static_cast<size_t>(unit)]);
    }
}

void restoreState(const krMaterial& m, const TextureIds& ids) {
    if (m.flags & krMaterialAlphaTested) {
        glDisable(GL_ALPHA_TEST);
        glEnable(GL_CULL_FACE);
    }
    for (int unit = materialUnits - 1; unit >= 0; --unit)
        if (ids[static_cast<size_t>(unit)] && selectUnit(unit)) glDisable(GL_TEXTURE_2D);
    selectUnit(0);
}

}  // namespace

krMeshItem_OGL::krMeshItem_OGL(krModule* m, krVideo_OGL* v, krMesh& mesh)
    : krVideoItem_OGL(m, false, v), stamp(v) {
    build(mesh);
}

krMeshItem_OGL::~krMeshItem_OGL() {
    for (krMeshShader_OGL* s : shaders) delete s;
    // Names of a context that went away may stand for other textures by now.
    krVideo_OGL* v = stamp.current();
    krTextures_OGL* table = v ? v->getTextures() : nullptr;
    if (table)
        for (const std::string& name : textureNames) table->release(name);
}

void krMeshItem_OGL::build(krMesh& mesh) {
    if (mesh.hasWeights()) limitWeights(mesh, video->getMaxVertexWeights());
    box.makeEmpty();
    triangleCount = mesh.indexCount / 3;

    // First pass: the mesh shader of each material, merged with the one before where they may,
    // and the textures its shader samples.
    const size_t count = mesh.materials.size();
    std::vector<size_t> owner(count);
    std::vector<TextureIds> ids(count);
    krShader_OGL* previousShader = nullptr;
    krTextures_OGL* table = video->getTextures();
    for (size_t i = 0; i < count; ++i) {
        const krMaterial& m = mesh.materials[i];
        krShader_OGL* shader = video->selectShader(m.flags, m.shader, mesh.hasWeights());
        std::unique_ptr<krMeshShader_OGL> fresh = makeMeshShader(module, video, m, shader, mesh.hasWeights());
        if (i > 0 && shader == previousShader && shaders.back()->canMerge() && fresh->canMerge()) {
            owner[i] = shaders.size() - 1;
        } else {
            fresh->setShader(shader);
            owner[i] = shaders.size();
            shaders.push_back(fresh.release());
        }
        previousShader = shader;
        // Fixed-function drawing, with no shader at all, samples the diffuse texture.
        const int32_t wanted = shader ? shader->textures : 1;
        for (int unit = 0; unit < materialUnits; ++unit) {
            const std::string& name = m.textures[unit];
            if (!table || name.empty() || !(wanted >> unit & 1)) continue;
            ids[i][static_cast<size_t>(unit)] = table->load(name);
            textureNames.push_back(name);
        }
        // A program reads black from an empty unit, where fixed-function drawing would show the
        // material's colour.
        if (table && !ids[i][0] && shader && shader->programmable() && shader->samples(0))
            ids[i][0] = table->getBlankTexture();
    }

    // Second pass: each object's list takes state, geometry and restore state of its materials.
    krMeshShader_OGL* building = nullptr;
    for (size_t i = 0; i < count; ++i) {
        const krMaterial& m = mesh.materials[i];
        krMeshShader_OGL* object = shaders[owner[i]];
        if (object != building) {
            if (building) building->endBuild();
            object->beginBuild();
            building = object;
        }
        object->beginMaterialState();
        materialState(m, ids[i]);
        for (int32_t k = 0; k < m.vertexCount; ++k) object->box.extend(mesh.vertices[m.firstVertex + k].position);
        object->centre = object->box.centre();
        box.extend(object->box);
        object->endMaterialState();
        object->addGeometry(mesh, m);
        object->beginRestoreState();
        restoreState(m, ids[i]);
        object->endRestoreState();
    }
    if (building) building->endBuild();
    centre = box.centre();
}

void krMeshItem_OGL::draw() {
    // Geometry lives in the context it was made in, which only this item's video draws with.
    if (module->getVideo() != video || !stamp.isCurrentIn(video)) return;
    for (size_t i = shaders.size(); i-- > 0;)
        if (!video->queueOpaque(shaders[i])) break;
    video->addPolygons(triangleCount);
}
