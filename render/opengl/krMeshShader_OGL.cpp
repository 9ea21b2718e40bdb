// Mesh shaders in display lists: geometry through vertex arrays into the list, tangents, drawing.
#include "render/opengl/krMeshShader_OGL.h"

#include "render/krMesh.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krShader_OGL.h"
#include "render/opengl/krShaders_OGL.h"

krMeshShader_OGL::krMeshShader_OGL(krModule* m, krVideo_OGL* v)
    : krVideoItem_OGL(m, false, v), list(glGenLists(1)), stamp(v) {
    box.makeEmpty();
}

krMeshShader_OGL::~krMeshShader_OGL() {
    if (stamp.current()) glDeleteLists(list, 1);
    if (shader) shader->release();
}

void krMeshShader_OGL::setShader(krShader_OGL* s) {
    if (s) s->addRef();
    if (shader) shader->release();
    shader = s;
}

const krMatrix& krMeshShader_OGL::placement() const {
    static const krMatrix identity(true);
    if (!ownerSpace) return module->getMatrix();
    const krModule* owner = module->getOwner();
    return owner ? owner->getMatrix() : identity;
}

void krMeshShader_OGL::pushTransform() {
    glPushMatrix();
    glMultMatrixf(placement().m);
    if (krShaders_OGL* table = video->getShaders()) table->bind(shader, module);
}

void krMeshShader_OGL::popTransform() {
    glPopMatrix();
}

bool krMeshShader_OGL::selectClientUnit(uint32_t unit) {
    if (krglClientActiveTexture) krglClientActiveTexture(unit);
    return krglClientActiveTexture || unit == GL_TEXTURE0;
}

void krMeshShader_OGL::draw() {
    pushTransform();
    glCallList(list);
    popTransform();
}

void krMeshShader_OGL::beginBuild() {
    glNewList(list, GL_COMPILE);
}

void krMeshShader_OGL::endBuild() {
    glEndList();
}

void krMeshShader_OGL::addGeometry(const krMesh& mesh, const krMaterial& material) {
    const krVertex* v = mesh.vertices + material.firstVertex;
    constexpr GLsizei stride = sizeof(krVertex);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, stride, &v->position);
    glEnableClientState(GL_NORMAL_ARRAY);
    glNormalPointer(GL_FLOAT, stride, &v->normal);
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_UNSIGNED_BYTE, stride, &v->color);
    selectClientUnit(GL_TEXTURE0);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glTexCoordPointer(2, GL_FLOAT, stride, &v->u);

    // Normal-mapping shaders take the tangent as texture coordinate set 1.
    const bool withTangents = shader && shader->wants(krShaderMask::tangent) && selectClientUnit(GL_TEXTURE1);
    std::vector<krVector3> t;
    if (withTangents) {
        t = tangents(mesh, material);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(3, GL_FLOAT, sizeof(krVector3), t.data());
    }

    // Indices are made relative to the material's range, in the smallest type that holds them.
    const uint32_t* indices = mesh.indices + material.firstIndex;
    const auto base = static_cast<uint32_t>(material.firstVertex);
    if (material.vertexCount < shortIndexLimit) {
        std::vector<uint16_t> shorts(static_cast<size_t>(material.indexCount));
        for (size_t i = 0; i < shorts.size(); ++i) shorts[i] = static_cast<uint16_t>(indices[i] - base);
        glDrawElements(GL_TRIANGLES, material.indexCount, GL_UNSIGNED_SHORT, shorts.data());
    } else {
        std::vector<uint32_t> longs(static_cast<size_t>(material.indexCount));
        for (size_t i = 0; i < longs.size(); ++i) longs[i] = indices[i] - base;
        glDrawElements(GL_TRIANGLES, material.indexCount, GL_UNSIGNED_INT, longs.data());
    }

    if (withTangents) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        selectClientUnit(GL_TEXTURE0);
    }
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

std::vector<krVector3> krMeshShader_OGL::tangents(const krMesh& mesh, const krMaterial& material) {
    std::vector<krVector3> result(static_cast<size_t>(material.vertexCount));
    const krVertex* v = mesh.vertices + material.firstVertex;
    const uint32_t* indices = mesh.indices + material.firstIndex;
    const auto base = static_cast<uint32_t>(material.firstVertex);
    for (int32_t i = 0; i + 2 < material.indexCount; i += 3) {
        const uint32_t k[3] = {indices[i] - base, indices[i + 1] - base, indices[i + 2] - base};
        const krVertex &a = v[k[0]], &b = v[k[1]], &c = v[k[2]];
        const float du1 = b.u - a.u, dv1 = b.v - a.v;
        const float du2 = c.u - a.u, dv2 = c.v - a.v;
        // Solved by each edge's share of u, so that a triangle with no change of v along an edge
        // still gives a direction.
        float x = 0;
        if (dv1 != 0) {
            x = du2 - du1 * dv2 / dv1;
            if (x != 0) x = 1 / x;
        }
        float y = 0;
        if (dv2 != 0) {
            y = du1 - du2 * dv1 / dv2;
            if (y != 0) y = 1 / y;
        }
        const krVector3 t = (c.position - a.position) * x + (b.position - a.position) * y;
        for (uint32_t corner : k) result[corner] += t;
    }
    for (krVector3& t : result) t = normalized(t);
    return result;
}
