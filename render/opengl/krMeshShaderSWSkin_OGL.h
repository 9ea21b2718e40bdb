// krMeshShaderSWSkin_OGL: a skinned material blended on the processor. Each frame every vertex of
// the bind pose goes through the skin matrices of its bones into a stream buffer that holds only
// positions and normals (and tangents); texture coordinates and colours lie in a static buffer of
// their own. The skin matrices already hold the object's place, so the result is drawn in world
// space. The material state and its restoring go to two display lists around the drawing.
//
// krMeshShaderSWSkinAlpha_OGL is the same for blended materials: it draws from the alpha queue,
// its triangles re-sorted far to near in their turn, by the centres of the bind pose.
//
// Without vertex buffers both keep the same records in memory and draw from there.
#pragma once

#include <vector>

#include "render/krMesh.h"
#include "render/opengl/krMeshShaderAlphaBuffered_OGL.h"
#include "render/opengl/krMeshShader_OGL.h"

class krMeshShaderSWSkin_OGL : public krMeshShader_OGL {
public:
    krMeshShaderSWSkin_OGL(krModule* module, krVideo_OGL* video);
    ~krMeshShaderSWSkin_OGL() override;
    const char* className() const override { return "krMeshShaderSWSkin_OGL"; }

    void draw() override;
    void beginBuild() override {}
    void endBuild() override {}
    void beginMaterialState() override;
    void endMaterialState() override;
    void beginRestoreState() override;
    void endRestoreState() override;
    // With 65536 vertices or more the indices do not fit 16 bits: nothing is drawn.
    void addGeometry(const krMesh& mesh, const krMaterial& material) override;
    bool canMerge() const override { return false; }

    int32_t getIndexCount() const { return indexCount; }
    int32_t getVertexCount() const { return vertexCount; }

protected:
    // The bind pose of a vertex; the tangent is only read when the shader wants one.
    struct BindVertex {
        krVector3 position, normal, tangent;
    };

    // Blends the vertices into the stream record and draws them.
    void drawSkinned();
    // The array pointer of a record field: an offset into a bound buffer, or an address in memory.
    const void* at(const std::vector<uint8_t>& records, int32_t offset) const;
    // Writes the stream records of the pose: skinned by the skeleton's bones, or the bind pose.
    void writeStream(uint8_t* target, const krSkeleton* skeleton) const;

    uint32_t restoreList = 0;
    uint32_t staticBuffer = 0;
    uint32_t dynamicBuffer = 0;
    uint32_t indexBuffer = 0;
    int32_t staticStride = 12;
    int32_t dynamicStride = 24;
    int32_t texCoordOffset = 0;
    int32_t colorOffset = 8;
    int32_t normalOffset = 12;
    int32_t positionOffset = 0;
    int32_t tangentOffset = 0;  // 0: no tangents
    int32_t indexCount = 0;
    int32_t vertexCount = 0;
    std::vector<BindVertex> bindVertices;
    // krWeightsPerVertex places for each vertex.
    std::vector<krBoneWeight> weights;
    // Vertex buffers are there; without them the records below are what is drawn.
    bool buffered = false;
    std::vector<uint8_t> staticRecords, streamRecords;
    std::vector<uint16_t> indices;
    // The stream holds a skinned pose rather than the bind pose.
    bool posed = false;
};

class krMeshShaderSWSkinAlpha_OGL : public krMeshShaderSWSkin_OGL {
public:
    krMeshShaderSWSkinAlpha_OGL(krModule* module, krVideo_OGL* video);
    const char* className() const override { return "krMeshShaderSWSkinAlpha_OGL"; }

    // Enters the alpha queue; beyond its room the material is not drawn this frame.
    void draw() override;
    void drawAlpha() override;
    void addGeometry(const krMesh& mesh, const krMaterial& material) override;

    int32_t getSortSlot() const { return sortSlot; }
    const std::vector<krSortedTriangle>& getTriangles() const { return triangles; }

private:
    std::vector<krSortedTriangle> triangles;
    int32_t sortSlot;
};
