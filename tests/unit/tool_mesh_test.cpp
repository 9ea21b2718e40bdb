// The mesh compiler, round trip: OBJ and glTF models compiled to mesh files and read back with
// the engine's loader; ranges, welding, generated normals, materials, and models it must refuse.
#include <cmath>
#include <cstring>

#include "krMeshCompiler.h"
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

class ToolMesh : public Scene {
protected:
    // Compiles a model read from path into models/out.mesh and loads it into a new object.
    krObject* compileAndLoad(krModel& model, const krMeshCompileOptions& options) {
        std::string file, error;
        EXPECT_TRUE(krCompileMesh(model, options, file, error)) << error;
        write("models/out.mesh", file);
        krObject* o = newObject();
        o->loadFromFile("models/out.mesh", 0);
        EXPECT_TRUE(reports().empty()) << reports().front();
        return o;
    }
};

const char* cubeObj = R"(mtllib cube.mtl
v -1 -1 -1
v 1 -1 -1
v 1 1 -1
v -1 1 -1
v -1 -1 1
v 1 -1 1
v 1 1 1
v -1 1 1
vt 0 0
vt 1 0
vt 1 1
vt 0 1
usemtl red
f 1/1 4/4 3/3 2/2
f 5/1 6/2 7/3 8/4
usemtl glass
f 1/1 2/2 6/3 5/4
f 4/1 8/2 7/3 3/4
usemtl red
f 1/1 5/2 8/3 4/4
f 2/1 3/2 7/3 6/4
)";

const char* cubeMtl = R"(newmtl red
Ka 0.2 0 0
Kd 0.8 0 0
Ks 1 1 1
Ns 40
map_Kd textures\red.png
newmtl glass
Kd 0.5 0.5 0.9
d 0.4
map_bump textures/glass_n.png
)";

}  // namespace

TEST_F(ToolMesh, ObjRoundTrip) {
    write("src/cube.obj", cubeObj);
    write("src/cube.mtl", cubeMtl);
    krModel model;
    std::string error;
    ASSERT_TRUE(krReadObjModel("src/cube.obj", model, error)) << error;
    krMeshCompileOptions options;
    options.name = "cube";
    options.scale = 2;
    krObject* o = compileAndLoad(model, options);
    EXPECT_EQ(o->name, "cube");
    EXPECT_EQ(o->localBox.max, krVector3(2, 2, 2));
    ASSERT_EQ(video->seen.size(), 1u);
    const SeenMesh& m = video->seen[0];
    // Corners weld where position and texture corner agree: 13 for the red faces, 8 for glass.
    EXPECT_EQ(m.vertices.size(), 21u);
    EXPECT_EQ(m.indices.size(), 36u);
    ASSERT_EQ(m.materials.size(), 2u);

    const krMaterial& red = m.materials[0];
    const krMaterial& glass = m.materials[1];
    // The faces of a material are gathered into one contiguous range.
    EXPECT_EQ(red.firstVertex, 0);
    EXPECT_EQ(red.vertexCount, 13);
    EXPECT_EQ(red.indexCount, 24);
    EXPECT_EQ(glass.firstVertex, 13);
    EXPECT_EQ(glass.firstIndex, 24);
    EXPECT_EQ(red.diffuse, krColor(204, 0, 0, 255));
    EXPECT_EQ(red.textures[krTextureDiffuse], "models/textures/red.dds");
    EXPECT_EQ(red.flags & krMaterialSpecular, krMaterialSpecular);
    EXPECT_EQ(glass.flags, krMaterialBlended | krMaterialNormalMapped);
    EXPECT_EQ(glass.textures[krTextureNormal], "models/textures/glass_n.dds");

    // The model has no normals: each corner gets the mean of the faces that meet there, which
    // at a cube's corner points outwards; and texture rows count from the top.
    for (const krVertex& v : m.vertices) {
        EXPECT_NEAR(length(v.normal), 1, 1e-5);
        EXPECT_GT(dot(v.normal, normalized(v.position)), 0.5f);
    }
    EXPECT_EQ(m.vertices[0].v, 1);
}

TEST_F(ToolMesh, GltfRoundTripWithNodeTransforms) {
    // A quad of two triangles, indexed, with normals, placed by a parent node (moved up 5) and
    // a child node (scaled by 2).
    const float positions[] = {0, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1};
    const float normals[] = {0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0};
    const uint16_t indices[] = {0, 2, 1, 0, 3, 2};
    std::string bin(reinterpret_cast<const char*>(positions), sizeof positions);
    bin.append(reinterpret_cast<const char*>(normals), sizeof normals);
    bin.append(reinterpret_cast<const char*>(indices), sizeof indices);
    write("src/quad.bin", bin);
    write("src/quad.gltf", R"({
      "asset": {"version": "2.0"},
      "scene": 0, "scenes": [{"nodes": [0]}],
      "nodes": [{"translation": [0, 5, 0], "children": [1]}, {"scale": [2, 2, 2], "mesh": 0}],
      "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2, "material": 0}]}],
      "materials": [{"name": "leaf", "alphaMode": "MASK",
                     "pbrMetallicRoughness": {"baseColorFactor": [0, 1, 0, 1], "roughnessFactor": 0.5,
                                              "baseColorTexture": {"index": 0}}}],
      "textures": [{"source": 0}], "images": [{"uri": "tex/leaf.png"}],
      "buffers": [{"uri": "quad.bin", "byteLength": 108}],
      "bufferViews": [{"buffer": 0, "byteOffset": 0, "byteLength": 48},
                      {"buffer": 0, "byteOffset": 48, "byteLength": 48},
                      {"buffer": 0, "byteOffset": 96, "byteLength": 12}],
      "accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3"},
                    {"bufferView": 1, "componentType": 5126, "count": 4, "type": "VEC3"},
                    {"bufferView": 2, "componentType": 5123, "count": 6, "type": "SCALAR"}]
    })");
    krModel model;
    std::string error;
    ASSERT_TRUE(krReadGltfModel("src/quad.gltf", model, error)) << error;
    krMeshCompileOptions options;
    options.name = "quad";
    krObject* o = compileAndLoad(model, options);
    EXPECT_EQ(o->localBox.min, krVector3(0, 5, 0));
    EXPECT_EQ(o->localBox.max, krVector3(2, 5, 2));
    const SeenMesh& m = video->seen[0];
    EXPECT_EQ(m.vertices.size(), 4u);
    EXPECT_EQ(m.indices.size(), 6u);
    EXPECT_EQ(m.vertices[0].normal, krVector3(0, 1, 0));
    const krMaterial& leaf = m.materials[0];
    EXPECT_EQ(leaf.flags & (krMaterialAlphaTested | krMaterialBlended), krMaterialAlphaTested);
    EXPECT_EQ(leaf.diffuse, krColor(0, 255, 0, 255));
    EXPECT_EQ(leaf.textures[krTextureDiffuse], "models/tex/leaf.dds");
    // Counter-clockwise seen from above: the faces look up, as their normals do.
    const krVector3 a = m.vertices[m.indices[0]].position, b = m.vertices[m.indices[1]].position,
                    c = m.vertices[m.indices[2]].position;
    EXPECT_GT(cross(b - a, c - a).y, 0);
}

TEST_F(ToolMesh, LargeMaterialsSplitIntoRanges) {
    krModel model;
    const size_t mat = model.material("ground");
    // 30000 triangles whose 90000 corners differ in their texture coordinates and cannot
    // weld: more than one range holds.
    for (int t = 0; t < 30000; ++t) {
        const float x = float(t);
        for (const krVector3& p : {krVector3(x, 0, 0), krVector3(x, 0, 1), krVector3(x + 1, 0, 0)}) {
            krModelCorner c;
            c.position = p;
            c.u = float(model.triangles[mat].size());
            model.triangles[mat].push_back(c);
        }
    }
    krMeshFileMesh mesh;
    std::string error;
    ASSERT_TRUE(krBuildMesh(model, {}, mesh, error)) << error;
    ASSERT_EQ(mesh.materials.size(), 2u);
    uint32_t covered = 0;
    for (const krMeshFileMaterial& m : mesh.materials) {
        EXPECT_LE(m.record.vertexCount, krMaxRangeVertices);
        EXPECT_EQ(m.record.firstIndex, covered);
        covered += m.record.indexCount;
        for (uint32_t i = m.record.firstIndex; i < m.record.firstIndex + m.record.indexCount; ++i) {
            EXPECT_GE(mesh.indices[i], m.record.firstVertex);
            EXPECT_LT(mesh.indices[i], m.record.firstVertex + m.record.vertexCount);
        }
        EXPECT_EQ(std::string(m.record.name), "ground");
    }
    EXPECT_EQ(covered, 90000u);
}

TEST_F(ToolMesh, ModelsItRefuses) {
    krModel model;
    std::string error;
    EXPECT_FALSE(krReadObjModel("src/missing.obj", model, error));
    EXPECT_NE(error.find("missing.obj"), std::string::npos);

    write("src/bad.gltf", R"({"asset": {"version": "2.0"}, "nodes": [{"mesh": 3}]})");
    EXPECT_FALSE(krReadGltfModel("src/bad.gltf", model, error));
    EXPECT_EQ(error, "node '' refers to a mesh that is not there");

    write("src/loop.gltf", R"({"asset": {"version": "2.0"}, "scenes": [{"nodes": [0]}], "nodes": [{"children": [0]}]})");
    EXPECT_FALSE(krReadGltfModel("src/loop.gltf", model, error));
    EXPECT_EQ(error, "nodes nested deeper than 64");

    krModel empty;
    empty.material("nothing");
    krMeshFileMesh mesh;
    EXPECT_FALSE(krBuildMesh(empty, {}, mesh, error));
    EXPECT_EQ(error, "the model has no triangles");

    krModel longName;
    const size_t m = longName.material("a");
    longName.materials[m].diffuseTexture = "textures/a_name_that_is_far_too_long_for_a_slot.png";
    longName.triangles[m].resize(3);
    EXPECT_FALSE(krBuildMesh(longName, {}, mesh, error));
    EXPECT_NE(error.find("longer than the 31 characters"), std::string::npos);
}
