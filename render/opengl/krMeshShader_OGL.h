// krMeshShader_OGL: one run of a mesh's materials that share a shader, baked into a display list
// with its material state at load, and drawn from the opaque queue. The classes derived from it
// hold and draw their geometry in other ways (sorted transparent triangles, glows); the mesh item
// builds every one of them through the same hooks, in this order for each material:
//   beginMaterialState, (material state), endMaterialState, addGeometry,
//   beginRestoreState, (restore state), endRestoreState
// between beginBuild and endBuild.
#pragma once

#include <cstdint>
#include <vector>

#include "core/krBox.h"
#include "render/krVideoItem.h"
#include "render/opengl/krVideo_OGL.h"

struct krMesh;
struct krMaterial;

class krMeshShader_OGL : public krVideoItem_OGL {
public:
    // Indices of a range with this many vertices or more do not fit 16 bits.
    static constexpr int32_t shortIndexLimit = 65536;

    krMeshShader_OGL(krModule* module, krVideo_OGL* video);
    ~krMeshShader_OGL() override;
    const char* className() const override { return "krMeshShader_OGL"; }

    // Holds the shader for as long as this draws with it.
    void setShader(krShader_OGL* s);

    // From the opaque queue: the list, with the shader bound and the module's transform.
    void draw() override;

    virtual void beginBuild();
    virtual void beginMaterialState() {}
    virtual void endMaterialState() {}
    virtual void addGeometry(const krMesh& mesh, const krMaterial& material);
    virtual void beginRestoreState() {}
    virtual void endRestoreState() {}
    virtual void endBuild();
    // Whether a following material with the same shader may join this object.
    virtual bool canMerge() const { return true; }

    // Tangents of a material's vertices, one for each, from its triangles and texture
    // coordinates: the direction in which u grows, for normal maps.
    static std::vector<krVector3> tangents(const krMesh& mesh, const krMaterial& material);

    // Of the materials built in, in object space.
    krBox box;
    krVector3 centre;
    // The vertices lie in the space of the module's owner, as a skinned mesh's bind pose does.
    bool ownerSpace = false;

protected:
    // Object space to world space: the module's matrix, or its owner's for a bind pose.
    const krMatrix& placement() const;
    // The module's transform and the shader, for what follows until popTransform.
    void pushTransform();
    void popTransform();
    // Selects the unit whose texture coordinate array follows; false for a unit other than the
    // first without multitexture.
    static bool selectClientUnit(uint32_t unit);

    uint32_t list = 0;
    // Where the list and what derived classes make live.
    krContextStamp stamp;
};
