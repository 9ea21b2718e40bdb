// krMeshItem_OGL: what a drawn mesh of a load becomes. The mesh is cut by material into mesh
// shaders, one for each run of neighbouring materials that share a shader and may merge, and all
// geometry and state is handed to OpenGL while the load's file buffer still holds it. Each frame
// the item puts its mesh shaders in the opaque queue, where the shader sort brings together what
// binds one program.
#pragma once

#include <string>
#include <vector>

#include "core/krBox.h"
#include "render/krVideoItem.h"
#include "render/opengl/krVideo_OGL.h"

struct krMesh;
class krMeshShader_OGL;

class krMeshItem_OGL : public krVideoItem_OGL {
public:
    // Builds everything from the mesh at once; the mesh's weights are renormalised to the
    // video's `maxVertexWeights` on the way. The item is not in the module's list yet: shader
    // scripts run while it is built, and one may tear the module down (joinModule).
    krMeshItem_OGL(krModule* module, krVideo_OGL* video, krMesh& mesh);
    ~krMeshItem_OGL() override;
    const char* className() const override { return "krMeshItem_OGL"; }

    void draw() override;

    const std::vector<krMeshShader_OGL*>& getShaders() const { return shaders; }

    // Of all materials, in object space.
    krBox box;
    krVector3 centre;
    int32_t triangleCount = 0;

private:
    void build(krMesh& mesh);

    std::vector<krMeshShader_OGL*> shaders;
    // What the materials loaded, released when the item goes.
    std::vector<std::string> textureNames;
    krContextStamp stamp;
};
