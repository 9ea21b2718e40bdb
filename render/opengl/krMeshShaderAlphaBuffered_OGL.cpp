// Sorted transparent meshes: buffers, triangle records, the turn-taking re-sort.
#include "render/opengl/krMeshShaderAlphaBuffered_OGL.h"

#include <algorithm>
#include <cstring>

#include "render/krMesh.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krShader_OGL.h"

namespace {
int32_t nextSortSlot = 0;

// The record layout: position, normal, colour, texture coordinates, then the tangent if wanted.
constexpr int32_t recordSize = sizeof(krVertex);
constexpr int32_t tangentRecordSize = recordSize + sizeof(krVector3);

const void* offset(int32_t bytes) { return reinterpret_cast<const void*>(static_cast<uintptr_t>(bytes)); }
}  // namespace

int32_t krTakeSortSlot() {
    const int32_t slot = nextSortSlot;
    nextSortSlot = (nextSortSlot + 1) % krSortSlots;
    return slot;
}

void krSortTriangles(std::vector<krSortedTriangle>& triangles, const krVector3& eye, uint16_t* target) {
    for (krSortedTriangle& t : triangles) t.distance = distanceSquared(t.centroid, eye);
    std::sort(triangles.begin(), triangles.end(),
              [](const krSortedTriangle& a, const krSortedTriangle& b) { return a.distance > b.distance; });
    for (const krSortedTriangle& t : triangles) {
        std::memcpy(target, t.index, sizeof t.index);
        target += 3;
    }
}

krMeshShaderAlphaBuffered_OGL::krMeshShaderAlphaBuffered_OGL(krModule* m, krVideo_OGL* v)
    : krMeshShaderAlpha_OGL(m, v), restoreList(glGenLists(1)), sortSlot(krTakeSortSlot()) {
    krglGenBuffersARB(1, &vertexBuffer);
    krglGenBuffersARB(1, &indexBuffer);
}

krMeshShaderAlphaBuffered_OGL::~krMeshShaderAlphaBuffered_OGL() {
    if (!stamp.current()) return;
    glDeleteLists(restoreList, 1);
    krglDeleteBuffersARB(1, &vertexBuffer);
    krglDeleteBuffersARB(1, &indexBuffer);
}

void krMeshShaderAlphaBuffered_OGL::beginMaterialState() { glNewList(list, GL_COMPILE); }
void krMeshShaderAlphaBuffered_OGL::endMaterialState() { glEndList(); }
void krMeshShaderAlphaBuffered_OGL::beginRestoreState() { glNewList(restoreList, GL_COMPILE); }
void krMeshShaderAlphaBuffered_OGL::endRestoreState() { glEndList(); }

void krMeshShaderAlphaBuffered_OGL::addGeometry(const krMesh& mesh, const krMaterial& material) {
    const bool withTangents = shader && shader->wants(krShaderMask::tangent);
    stride = withTangents ? tangentRecordSize : recordSize;
    positionOffset = offsetof(krVertex, position);
    normalOffset = offsetof(krVertex, normal);
    colorOffset = offsetof(krVertex, color);
    texCoordOffset = offsetof(krVertex, u);
    tangentOffset = withTangents ? recordSize : 0;

    const krVertex* v = mesh.vertices + material.firstVertex;
    const auto count = static_cast<size_t>(material.vertexCount);
    std::vector<char> records(count * static_cast<size_t>(stride));
    std::vector<krVector3> t;
    if (withTangents) t = tangents(mesh, material);
    for (size_t i = 0; i < count; ++i) {
        char* record = records.data() + i * static_cast<size_t>(stride);
        std::memcpy(record, &v[i], sizeof(krVertex));
        if (withTangents) std::memcpy(record + tangentOffset, &t[i], sizeof(krVector3));
    }
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, vertexBuffer);
    krglBufferDataARB(GL_ARRAY_BUFFER_ARB, static_cast<GLsizeiptrARB>(records.size()), records.data(),
                      GL_STATIC_DRAW_ARB);
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);

    triangles.clear();
    if (material.vertexCount >= shortIndexLimit) return;
    const uint32_t* indices = mesh.indices + material.firstIndex;
    const auto base = static_cast<uint32_t>(material.firstVertex);
    std::vector<uint16_t> shorts;
    shorts.reserve(static_cast<size_t>(material.indexCount));
    triangles.reserve(static_cast<size_t>(material.indexCount / 3));
    for (int32_t i = 0; i + 2 < material.indexCount; i += 3) {
        Triangle tri{};
        for (int k = 0; k < 3; ++k) {
            tri.index[k] = static_cast<uint16_t>(indices[i + k] - base);
            shorts.push_back(tri.index[k]);
        }
        tri.centroid = (v[tri.index[0]].position + v[tri.index[1]].position + v[tri.index[2]].position) * (1.0f / 3);
        triangles.push_back(tri);
    }
    // Rewritten at every re-sort.
    krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    krglBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, static_cast<GLsizeiptrARB>(shorts.size() * sizeof(uint16_t)),
                      shorts.data(), GL_DYNAMIC_DRAW_ARB);
    krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

void krMeshShaderAlphaBuffered_OGL::drawAlpha() {
    if (triangles.empty()) return;
    pushTransform();
    glCallList(list);
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, vertexBuffer);
    enableArrays();
    krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    if (video->getForceAlphaSort() || video->getFrameNumber() % sortSlots == sortSlot) sort();
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(triangles.size() * 3), GL_UNSIGNED_SHORT, offset(0));
    krglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    krglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    disableArrays();
    glCallList(restoreList);
    popTransform();
}

void krMeshShaderAlphaBuffered_OGL::sort() {
    auto* target = static_cast<uint16_t*>(krglMapBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, GL_WRITE_ONLY_ARB));
    // A buffer the driver cannot map keeps the order it has.
    if (!target) return;
    krSortTriangles(triangles, transformPoint(inverse(placement()), video->getEye()), target);
    krglUnmapBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB);
}

void krMeshShaderAlphaBuffered_OGL::enableArrays() {
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, stride, offset(positionOffset));
    glEnableClientState(GL_NORMAL_ARRAY);
    glNormalPointer(GL_FLOAT, stride, offset(normalOffset));
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_UNSIGNED_BYTE, stride, offset(colorOffset));
    selectClientUnit(GL_TEXTURE0);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glTexCoordPointer(2, GL_FLOAT, stride, offset(texCoordOffset));
    if (tangentOffset && selectClientUnit(GL_TEXTURE1)) {
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(3, GL_FLOAT, stride, offset(tangentOffset));
        selectClientUnit(GL_TEXTURE0);
    }
}

void krMeshShaderAlphaBuffered_OGL::disableArrays() {
    if (tangentOffset && selectClientUnit(GL_TEXTURE1)) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        selectClientUnit(GL_TEXTURE0);
    }
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}
