// Skinning in a vertex shader: cutting a material's triangles into groups that fit the bone
// palette, the weights of each group's vertices by palette place, drawing group by group.
#include "render/opengl/krMeshShaderHWSkin_OGL.h"

#include <algorithm>
#include <set>

#include "render/krMesh.h"
#include "render/krSkeleton.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krShader_GLSL.h"
#include "render/opengl/krShaders_OGL.h"

namespace {
// Larger than any summed weight: where the search for the lightest bone starts.
constexpr float heaviest = 1000;
// Larger than any number of bones a triangle can add.
constexpr int32_t mostBones = 1000000;
// Palette places per texture coordinate set.
constexpr int32_t placesPerSet = 4;
// Places of the two sets together.
constexpr int32_t mostPlaces = 2 * placesPerSet;
}  // namespace

krMeshShaderHWSkin_OGL::krMeshShaderHWSkin_OGL(krModule* m, krVideo_OGL* v) : krMeshShader_OGL(m, v) {
    // The bind pose lies in the space of the module's owner, where the skeleton is.
    ownerSpace = true;
}

krMeshShaderHWSkin_OGL::~krMeshShaderHWSkin_OGL() {
    if (!stamp.current()) return;
    for (const Group& g : groups) glDeleteLists(g.list, 1);
}

void krMeshShaderHWSkin_OGL::openGroup() {
    groups.push_back({glGenLists(1), std::vector<int32_t>(static_cast<size_t>(paletteSize), 0)});
    glNewList(groups.back().list, GL_COMPILE);
    listOpen = true;
}

void krMeshShaderHWSkin_OGL::closeGroup() {
    if (!listOpen) return;
    glEndList();
    listOpen = false;
}

void krMeshShaderHWSkin_OGL::beginMaterialState() {
    paletteSize = shader ? shader->parameters & krShaderMask::paletteSize : 0;
    openGroup();
}

void krMeshShaderHWSkin_OGL::endRestoreState() { closeGroup(); }

void krMeshShaderHWSkin_OGL::addGeometry(const krMesh& mesh, const krMaterial& material) {
    const auto first = static_cast<uint32_t>(material.firstVertex);
    const auto count = static_cast<size_t>(material.vertexCount);
    const krVertex* vertices = mesh.vertices + first;
    const uint32_t* indices = mesh.indices + material.firstIndex;
    const int32_t weightCount = shader ? shader->attributes & krShaderMask::weightCount : 0;
    const bool withTangents = shader && shader->wants(krShaderMask::tangent);
    std::vector<krVector3> tangent;
    if (withTangents) tangent = tangents(mesh, material);
    // The range's weights, which the cut below changes.
    std::vector<krBoneWeight> weights(mesh.weights.begin() + first * krWeightsPerVertex,
                                      mesh.weights.begin() + (first + count) * krWeightsPerVertex);
    std::vector<float> w0(count * placesPerSet, 0), w1(weightCount > placesPerSet ? count * placesPerSet : 0, 0);

    auto corner = [&](const SkinTriangle& t, int k) { return indices[t.firstIndex + k] - first; };
    auto fill = [&](SkinTriangle& t) {
        t.boneWeights.clear();
        for (int k = 0; k < 3; ++k)
            for (int p = 0; p < krWeightsPerVertex; ++p) {
                const krBoneWeight& w = weights[corner(t, k) * krWeightsPerVertex + p];
                if (w.weight > 0) t.boneWeights[w.bone] += w.weight;
            }
    };

    // Triangles with more bones than a palette place lose their lightest ones, in all three
    // corners, and so in every triangle that shares those vertices.
    int32_t T = material.indexCount / 3;
    std::vector<SkinTriangle> triangles(static_cast<size_t>(T));
    const int32_t limit = std::max(paletteSize - video->getOptimizeSkinGroups(), 0);
    for (int32_t i = 0; i < T; ++i) {
        SkinTriangle& t = triangles[static_cast<size_t>(i)];
        t.firstIndex = 3 * i;
        fill(t);
        while (static_cast<int32_t>(t.boneWeights.size()) > limit) {
            auto lightest = t.boneWeights.end();
            float least = heaviest;
            for (auto it = t.boneWeights.begin(); it != t.boneWeights.end(); ++it)
                if (it->second < least) {
                    least = it->second;
                    lightest = it;
                }
            // Weights of a thousand and more are not weights a file should hold; the first goes.
            if (lightest == t.boneWeights.end()) lightest = t.boneWeights.begin();
            const int32_t cut = lightest->first;
            t.boneWeights.erase(lightest);
            for (int k = 0; k < 3; ++k)
                for (int p = 0; p < krWeightsPerVertex; ++p) {
                    krBoneWeight& w = weights[corner(t, k) * krWeightsPerVertex + p];
                    if (w.bone == cut) w = krBoneWeight();
                }
        }
    }
    // A later triangle may have cut a bone of an earlier one.
    for (SkinTriangle& t : triangles) fill(t);

    const bool shortIndices = material.vertexCount < shortIndexLimit;
    while (T > 0) {
        Group& group = groups.back();
        const auto size = [&](int32_t i) { return static_cast<int32_t>(triangles[static_cast<size_t>(i)].boneWeights.size()); };
        int32_t seed = 0;
        if (size(0) < paletteSize)
            for (int32_t i = 1; i < T; ++i) {
                if (size(i) > size(seed)) seed = i;
                if (size(i) == paletteSize) break;
            }
        std::vector<int32_t> palette;
        std::set<int32_t> inPalette;
        for (const auto& [bone, weight] : triangles[static_cast<size_t>(seed)].boneWeights) {
            palette.push_back(bone);
            inPalette.insert(bone);
        }
        while (static_cast<int32_t>(palette.size()) < paletteSize) {
            int32_t best = mostBones, bestSize = 0, candidate = -1;
            for (int32_t i = 0; i < T; ++i) {
                int32_t extra = 0;
                for (const auto& [bone, weight] : triangles[static_cast<size_t>(i)].boneWeights) extra += !inPalette.count(bone);
                if (extra > 0 && extra <= best && bestSize <= size(i)) {
                    candidate = i;
                    best = extra;
                    bestSize = size(i);
                    if (best == 1 && bestSize == paletteSize) break;
                }
            }
            if (bestSize == 0) break;
            for (const auto& [bone, weight] : triangles[static_cast<size_t>(candidate)].boneWeights) {
                if (static_cast<int32_t>(palette.size()) >= paletteSize) break;
                if (inPalette.insert(bone).second) palette.push_back(bone);
            }
        }
        std::copy(palette.begin(), palette.end(), group.bones.begin());
        const int32_t c = static_cast<int32_t>(palette.size());

        for (int32_t i = 0; i < T; ++i) {
            SkinTriangle& t = triangles[static_cast<size_t>(i)];
            t.done = std::all_of(t.boneWeights.begin(), t.boneWeights.end(),
                                 [&](const auto& entry) { return inPalette.count(entry.first) != 0; });
        }
        const auto end = triangles.begin() + T;
        const auto doneFrom = std::stable_partition(triangles.begin(), end, [](const SkinTriangle& t) { return !t.done; });
        const auto D = static_cast<int32_t>(end - doneFrom);
        T -= D;

        // The weights of the group's vertices by palette place; a vertex shared with another
        // group gets other weights there, since the list keeps what the arrays hold now.
        std::vector<uint32_t> groupIndices;
        groupIndices.reserve(static_cast<size_t>(3 * D));
        for (int32_t i = T; i < T + D; ++i) {
            const SkinTriangle& t = triangles[static_cast<size_t>(i)];
            for (int k = 0; k < 3; ++k) {
                const uint32_t v = corner(t, k);
                groupIndices.push_back(v);
                const krBoneWeight* vw = &weights[v * krWeightsPerVertex];
                float sum = 0;
                for (int p = 0; p < krWeightsPerVertex; ++p)
                    if (inPalette.count(vw[p].bone)) sum += vw[p].weight;
                const float s = sum != 0 ? 1 / sum : 0;
                const int32_t places = std::min(c, weightCount > placesPerSet ? mostPlaces : placesPerSet);
                for (int32_t p = 0; p < places; ++p) {
                    float w = 0;
                    for (int q = 0; q < krWeightsPerVertex; ++q)
                        if (vw[q].weight > 0 && vw[q].bone == palette[static_cast<size_t>(p)]) w += vw[q].weight;
                    float* target = p < placesPerSet ? &w0[v * placesPerSet + static_cast<size_t>(p)]
                                                     : &w1[v * placesPerSet + static_cast<size_t>(p - placesPerSet)];
                    *target = s * w;
                }
                for (int32_t p = places; p < mostPlaces; ++p) {
                    if (p < placesPerSet) w0[v * placesPerSet + static_cast<size_t>(p)] = 0;
                    else if (!w1.empty()) w1[v * placesPerSet + static_cast<size_t>(p - placesPerSet)] = 0;
                }
            }
        }

        constexpr GLsizei stride = sizeof(krVertex);
        glEnableClientState(GL_VERTEX_ARRAY);
        glVertexPointer(3, GL_FLOAT, stride, &vertices->position);
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, stride, &vertices->normal);
        glEnableClientState(GL_COLOR_ARRAY);
        glColorPointer(4, GL_UNSIGNED_BYTE, stride, &vertices->color);
        selectClientUnit(GL_TEXTURE0);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(2, GL_FLOAT, stride, &vertices->u);
        const bool tangentUnit = withTangents && selectClientUnit(GL_TEXTURE1);
        if (tangentUnit) {
            glEnableClientState(GL_TEXTURE_COORD_ARRAY);
            glTexCoordPointer(3, GL_FLOAT, sizeof(krVector3), tangent.data());
        }
        const bool set0 = selectClientUnit(GL_TEXTURE2);
        if (set0) {
            glEnableClientState(GL_TEXTURE_COORD_ARRAY);
            glTexCoordPointer(placesPerSet, GL_FLOAT, 0, w0.data());
        }
        const bool set1 = !w1.empty() && selectClientUnit(GL_TEXTURE3);
        if (set1) {
            glEnableClientState(GL_TEXTURE_COORD_ARRAY);
            glTexCoordPointer(placesPerSet, GL_FLOAT, 0, w1.data());
        }
        if (shortIndices) {
            std::vector<uint16_t> shorts(groupIndices.begin(), groupIndices.end());
            glDrawElements(GL_TRIANGLES, 3 * D, GL_UNSIGNED_SHORT, shorts.data());
        } else {
            glDrawElements(GL_TRIANGLES, 3 * D, GL_UNSIGNED_INT, groupIndices.data());
        }
        for (GLenum unit : {GL_TEXTURE3, GL_TEXTURE2, GL_TEXTURE1}) {
            const bool used = unit == GL_TEXTURE3 ? set1 : unit == GL_TEXTURE2 ? set0 : tangentUnit;
            if (used && selectClientUnit(unit)) glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        }
        selectClientUnit(GL_TEXTURE0);
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        glDisableClientState(GL_NORMAL_ARRAY);
        glDisableClientState(GL_VERTEX_ARRAY);

        if (T > 0) {
            closeGroup();
            openGroup();
        }
    }
}

void krMeshShaderHWSkin_OGL::draw() {
    if (krShaders_OGL* table = video->getShaders()) table->bind(shader, module);
    krSkeleton* skeleton = module->getSkeleton();
    if (skeleton && skeleton->getBoneCount() == 0) skeleton = nullptr;
    auto* skin = dynamic_cast<krSkinShader_GLSL*>(shader);
    for (const Group& g : groups) {
        if (skeleton) {
            shader->setBones(skeleton, g.bones.data(), paletteSize);
        } else if (skin) {
            // Without a skeleton the bind pose shows where the load put it, in the owner's space.
            std::vector<krMatrix> placed(static_cast<size_t>(paletteSize), placement());
            skin->setPalette(placed.data()->m, paletteSize);
        }
        glCallList(g.list);
    }
}
