// krMeshShaderAlphaBuffered_OGL: a blended material whose triangles are drawn far to near, for
// objects with `sortAlpha`. Its vertices lie in a buffer object and its indices in another, which
// is rewritten in the sorted order. Sorting every such mesh every frame would cost too much, so
// each re-sorts in one frame of eight (its slot), and in between draws the last order; a jump of
// the camera forces all to re-sort at once.
#pragma once

#include <vector>

#include "render/opengl/krMeshShaderAlpha_OGL.h"

// A triangle of a sorted mesh: its 16-bit indices and the centre its distance is taken from.
struct krSortedTriangle {
    float distance;
    uint16_t index[3];
    krVector3 centroid;
};

// Sorts the triangles far to near from the eye (in the space of the centroids) and writes their
// indices in that order to target.
void krSortTriangles(std::vector<krSortedTriangle>& triangles, const krVector3& eye, uint16_t* target);

// Frames over which the sorted meshes take turns.
constexpr int32_t krSortSlots = 8;
// The slot of a new sorted mesh: the next one round, so that the re-sorts spread over the frames.
int32_t krTakeSortSlot();

class krMeshShaderAlphaBuffered_OGL : public krMeshShaderAlpha_OGL {
public:
    static constexpr int32_t sortSlots = krSortSlots;

    krMeshShaderAlphaBuffered_OGL(krModule* module, krVideo_OGL* video);
    ~krMeshShaderAlphaBuffered_OGL() override;
    const char* className() const override { return "krMeshShaderAlphaBuffered_OGL"; }

    void drawAlpha() override;

    // State and restore state go to lists of their own; the geometry goes to the buffers.
    void beginBuild() override {}
    void endBuild() override {}
    void beginMaterialState() override;
    void endMaterialState() override;
    void beginRestoreState() override;
    void endRestoreState() override;
    // With 65536 vertices or more the indices do not fit 16 bits: nothing is drawn.
    void addGeometry(const krMesh& mesh, const krMaterial& material) override;

    int32_t getTriangleCount() const { return static_cast<int32_t>(triangles.size()); }
    int32_t getSortSlot() const { return sortSlot; }

private:
    using Triangle = krSortedTriangle;
    // Far to near from the eye, then the index buffer rewritten in that order.
    void sort();
    void enableArrays();
    void disableArrays();

    uint32_t restoreList = 0;
    uint32_t vertexBuffer = 0;
    uint32_t indexBuffer = 0;
    std::vector<Triangle> triangles;
    int32_t sortSlot = 0;
    // The interleaved vertex record.
    int32_t stride = 0;
    int32_t texCoordOffset = 0, colorOffset = 0, normalOffset = 0, positionOffset = 0;
    int32_t tangentOffset = 0;  // 0: no tangents
};
