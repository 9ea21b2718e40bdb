// krMeshShaderHWSkin_OGL: a skinned material blended in a vertex shader. A shader holds a small
// palette of bones, so at load the material's triangles are cut into groups that each need no more
// bones than the palette has (a triangle with more loses its lightest bones), and each group is a
// display list whose vertices carry one weight per palette place in texture coordinate sets 2 and
// 3. Drawing uploads each group's palette and calls its list; all the work is done at load.
#pragma once

#include <map>
#include <vector>

#include "render/opengl/krMeshShader_OGL.h"

class krMeshShaderHWSkin_OGL : public krMeshShader_OGL {
public:
    struct Group {
        uint32_t list;
        // paletteSize bone indices, 0 in places not used.
        std::vector<int32_t> bones;
    };

    krMeshShaderHWSkin_OGL(krModule* module, krVideo_OGL* video);
    ~krMeshShaderHWSkin_OGL() override;
    const char* className() const override { return "krMeshShaderHWSkin_OGL"; }

    void draw() override;
    void beginBuild() override {}
    void endBuild() override {}
    // Each material opens a group of its own, whose list starts with its state.
    void beginMaterialState() override;
    void endMaterialState() override {}
    void addGeometry(const krMesh& mesh, const krMaterial& material) override;
    void beginRestoreState() override {}
    // The restore state ends the list that is open, the last group's.
    void endRestoreState() override;

    const std::vector<Group>& getGroups() const { return groups; }
    int32_t getPaletteSize() const { return paletteSize; }

private:
    // A triangle while the groups are cut.
    struct SkinTriangle {
        bool done = false;
        int32_t firstIndex = 0;  // from the material's first index
        std::map<int32_t, float> boneWeights;
    };

    void openGroup();
    void closeGroup();

    std::vector<Group> groups;
    int32_t paletteSize = 0;
    bool listOpen = false;
};
