// Skinning on the processor: the static and stream records, blending each frame, sorted blending.
#include "render/opengl/krMeshShaderSWSkin_OGL.h"

#include <cstring>

#include "render/krSkeleton.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krShader_OGL.h"
#include "render/opengl/krShaders_OGL.h"

namespace {
// Static record: s, t, then the colour's four bytes.
constexpr int32_t staticRecordSize = 2 * sizeof(float) + sizeof(krColor);
// Stream record: position and normal, then the tangent when the shader wants one.
constexpr int32_t streamRecordSize = 2 * sizeof(krVector3);
constexpr int32_t tangentStreamRecordSize = 3 * sizeof(krVector3);

const void* offset(int32_t bytes) { return reinterpret_cast<const void*>(static_cast<uintptr_t>(bytes)); }

// The affine part of p x m: skin matrices have no projection.
inline void addPoint(krVector3& sum, const float* m, const krVector3& p) {
    sum.x += p.x * m[0] + p.y * m[4] + p.z * m[8] + m[12];
    sum.y += p.x * m[1] + p.y * m[5] + p.z * m[9] + m[13];
    sum.z += p.x * m[2] + p.y * m[6] + p.z * m[10] + m[14];
}
}  // namespace

krMeshShaderSWSkin_OGL::krMeshShaderSWSkin_OGL(krModule* m, krVideo_OGL* v)
    : krMeshShader_OGL(m, v), restoreList(glGenLists(1)), buffered(v->vertexBuffers && krglGenBuffersARB) {
    // The bind pose lies in the space of the module's owner, where the skeleton is.
    ownerSpace = true;
    if (!buffered) return;
    krglGenBuffersARB(1, &staticBuffer);
    krglGenBuffersARB(1, &dynamicBuffer);
    krglGenBuffersARB(1, &indexBuffer);
}

krMeshShaderSWSkin_OGL::~krMeshShaderSWSkin_OGL() {
    if (!stamp.current()) return;
    glDeleteLists(restoreList, 1);
    if (!buffered) return;
    for (uint32_t* b : {&staticBuffer, &dynamicBuffer, &indexBuffer}) krglDeleteBuffersARB(1, b);
}

void krMeshShaderSWSkin_OGL::beginMaterialState() { glNewList(list, GL_COMPILE); }
void krMeshShaderSWSkin_OGL::endMaterialState() { glEndList(); }
void krMeshShaderSWSkin_OGL::beginRestoreState() { glNewList(restoreList, GL_COMPILE); }
void krMeshShaderSWSkin_OGL::endRestoreState() { glEndList(); }

void krMeshShaderSWSkin_OGL::addGeometry(const krMesh& mesh, const krMaterial& material) {
    vertexCount = material.vertexCount;
    const auto count = static_cast<size_t>(vertexCount);
    const krVertex* v = mesh.vertices + material.firstVertex;
    weights.assign(mesh.weights.begin() + material.firstVertex * krWeightsPerVertex,
                   mesh.weights.begin() + (material.firstVertex + material.vertexCount) * krWeightsPerVertex);

    staticStride = staticRecordSize;
    staticRecords.resize(count * staticRecordSize);
    for (size_t i = 0; i < count; ++i) {
        uint8_t* record = &staticRecords[i * staticRecordSize];
        std::memcpy(record, &v[i].u, 2 * sizeof(float));
        std::memcpy(record + colorOffset, &v[i].color, sizeof(krColor));
    }

    const bool withTangents = shader && shader->wants(krShaderMask::tangent);
    std::vector<krVector3> t;
    if (withTangents) t = tangents(mesh, material);
    dynamicStride = withTangents ? tangentStreamRecordSize : streamRecordSize;
    tangentOffset = withTangents ? streamRecordSize : 0;
    bindVertices.resize(count);
    for (size_t i = 0; i < count; ++i) bindVertices[i] = {v[i].position, v[i].normal, withTangents ? t[i] : krVector3()};
    streamRecords.resize(count * static_cast<size_t>(dynamicStride));
    writeStream(streamRecords.data(), nullptr);

    indexCount = 0;
    indices.clear();
    if (material.vertexCount < shortIndexLimit) {
        indexCount = material.indexCount;
        const auto base = static_cast<uint32_t>(material.firstVertex);
        for (int32_t i = 0; i < indexCount; ++i)
            indices.push_back(static_cast<uint16_t>(mesh.indices[material.firstIndex + i] - base));
    }
    if (!buffered) return;
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, staticBuffer);
    krglBufferDataARB(GL_ARRAY_BUFFER_ARB, static_cast<GLsizeiptrARB>(staticRecords.size()), staticRecords.data(),
                      GL_STATIC_DRAW_ARB);
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, dynamicBuffer);
    krglBufferDataARB(GL_ARRAY_BUFFER_ARB, static_cast<GLsizeiptrARB>(streamRecords.size()), streamRecords.data(),
                      GL_STREAM_DRAW_ARB);
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    krglBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, static_cast<GLsizeiptrARB>(indices.size() * sizeof(uint16_t)),
                      indices.data(), GL_STATIC_DRAW_ARB);
    krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    // The buffers hold the records now.
    staticRecords = {};
    streamRecords = {};
}

void krMeshShaderSWSkin_OGL::writeStream(uint8_t* target, const krSkeleton* skeleton) const {
    const size_t stride = static_cast<size_t>(dynamicStride);
    const int32_t places = skeleton ? std::min(video->getMaxVertexWeights(), krWeightsPerVertex) : 0;
    for (size_t i = 0; i < bindVertices.size(); ++i) {
        const BindVertex& b = bindVertices[i];
        krVector3 p = b.position, n = b.normal, t = b.tangent;
        if (skeleton) {
            // The bones' matrices blended by the weights, then applied once.
            float m[16] = {};
            const krBoneWeight* w = &weights[i * krWeightsPerVertex];
            for (int32_t k = 0; k < places; ++k) {
                if (w[k].weight == 0) continue;
                const float* s = skeleton->skinMatrix(w[k].bone).m;
                for (int e = 0; e < 16; ++e) m[e] += s[e] * w[k].weight;
            }
            p = krVector3();
            addPoint(p, m, b.position);
            krMatrix blended(false);
            std::memcpy(blended.m, m, sizeof m);
            n = normalized(transformVector(blended, b.normal));
            if (tangentOffset) t = normalized(transformVector(blended, b.tangent));
        }
        uint8_t* record = target + i * stride;
        std::memcpy(record + positionOffset, &p, sizeof p);
        std::memcpy(record + normalOffset, &n, sizeof n);
        if (tangentOffset) std::memcpy(record + tangentOffset, &t, sizeof t);
    }
}

const void* krMeshShaderSWSkin_OGL::at(const std::vector<uint8_t>& records, int32_t field) const {
    return buffered ? offset(field) : records.data() + field;
}

void krMeshShaderSWSkin_OGL::draw() { drawSkinned(); }

void krMeshShaderSWSkin_OGL::drawSkinned() {
    if (indexCount == 0) return;
    krSkeleton* skeleton = module->getSkeleton();
    if (skeleton && skeleton->getBoneCount() == 0) skeleton = nullptr;
    // Without a skeleton the bind pose shows where the load put it, in the owner's space.
    if (!skeleton) {
        glPushMatrix();
        glMultMatrixf(placement().m);
    }
    if (krShaders_OGL* table = video->getShaders()) table->bind(shader, module);
    glCallList(list);

    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    selectClientUnit(GL_TEXTURE0);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);

    if (buffered) krglBindBufferARB(GL_ARRAY_BUFFER_ARB, staticBuffer);
    glTexCoordPointer(2, GL_FLOAT, staticStride, at(staticRecords, texCoordOffset));
    glColorPointer(4, GL_UNSIGNED_BYTE, staticStride, at(staticRecords, colorOffset));

    if (buffered) krglBindBufferARB(GL_ARRAY_BUFFER_ARB, dynamicBuffer);
    if (skeleton || posed) {
        auto* target = buffered ? static_cast<uint8_t*>(krglMapBufferARB(GL_ARRAY_BUFFER_ARB, GL_WRITE_ONLY_ARB))
                                : streamRecords.data();
        // A buffer the driver cannot map keeps the pose it has.
        if (target) {
            writeStream(target, skeleton);
            posed = skeleton != nullptr;
            if (buffered) krglUnmapBufferARB(GL_ARRAY_BUFFER_ARB);
        }
    }
    glNormalPointer(GL_FLOAT, dynamicStride, at(streamRecords, normalOffset));
    glVertexPointer(3, GL_FLOAT, dynamicStride, at(streamRecords, positionOffset));
    const bool withTangents = tangentOffset && selectClientUnit(GL_TEXTURE1);
    if (withTangents) {
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(3, GL_FLOAT, dynamicStride, at(streamRecords, tangentOffset));
    }

    if (buffered) {
        krglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
        glDrawElements(GL_TRIANGLES, indexCount, GL_UNSIGNED_SHORT, offset(0));
        krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    } else {
        glDrawElements(GL_TRIANGLES, indexCount, GL_UNSIGNED_SHORT, indices.data());
    }

    if (withTangents) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        selectClientUnit(GL_TEXTURE0);
    }
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glCallList(restoreList);
    if (!skeleton) glPopMatrix();
}

krMeshShaderSWSkinAlpha_OGL::krMeshShaderSWSkinAlpha_OGL(krModule* m, krVideo_OGL* v)
    : krMeshShaderSWSkin_OGL(m, v), sortSlot(krTakeSortSlot()) {}

void krMeshShaderSWSkinAlpha_OGL::addGeometry(const krMesh& mesh, const krMaterial& material) {
    krMeshShaderSWSkin_OGL::addGeometry(mesh, material);
    triangles.clear();
    for (int32_t i = 0; i + 2 < indexCount; i += 3) {
        krSortedTriangle t{};
        krVector3 sum;
        for (int k = 0; k < 3; ++k) {
            t.index[k] = indices[static_cast<size_t>(i + k)];
            sum += bindVertices[t.index[k]].position;
        }
        t.centroid = sum * 0.33333334f;
        triangles.push_back(t);
    }
    if (buffered) {
        // The order changes at each re-sort.
        krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
        krglBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, static_cast<GLsizeiptrARB>(indices.size() * sizeof(uint16_t)),
                          indices.data(), GL_STREAM_DRAW_ARB);
        krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
        indices = {};
    }
}

void krMeshShaderSWSkinAlpha_OGL::draw() {
    if (indexCount == 0) return;
    const krVector3 world = transformPoint(placement(), centre);
    video->queueAlpha(this, distanceSquared(video->getEyeCopy(), world));
}

void krMeshShaderSWSkinAlpha_OGL::drawAlpha() {
    if (video->getForceAlphaSort() || video->getFrameNumber() % krSortSlots == sortSlot) {
        const krVector3 eye = transformPoint(inverse(placement()), video->getEye());
        if (buffered) {
            krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
            if (auto* target = static_cast<uint16_t*>(krglMapBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, GL_WRITE_ONLY_ARB))) {
                krSortTriangles(triangles, eye, target);
                krglUnmapBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB);
            }
            krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
        } else {
            krSortTriangles(triangles, eye, indices.data());
        }
    }
    drawSkinned();
}
