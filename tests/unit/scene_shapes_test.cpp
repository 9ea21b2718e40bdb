// Generated boxes and ellipsoids: counts, normals, winding, bounds, names and the material.
#include <cmath>

#include "render/krMeshShapes.h"
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

// Every triangle's face normal points away from the centre and agrees with its vertex normals.
void expectOutwardWinding(const SeenMesh& m) {
    for (size_t t = 0; t + 2 < m.indices.size(); t += 3) {
        const krVector3& a = m.vertices[m.indices[t]].position;
        const krVector3& b = m.vertices[m.indices[t + 1]].position;
        const krVector3& c = m.vertices[m.indices[t + 2]].position;
        const krVector3 n = cross(b - a, c - a);
        const krVector3 centroid = (a + b + c) * (1.0f / 3);
        EXPECT_GT(dot(n, centroid), 0) << "triangle " << t / 3;
        EXPECT_GT(dot(n, m.vertices[m.indices[t]].normal), 0) << "triangle " << t / 3;
    }
}

class SceneShapes : public Scene {};

}  // namespace

TEST_F(SceneShapes, BoxGeometryAndBounds) {
    krObject* o = newObject();
    o->setPosition({1, 1, 1});
    o->genMeshBox({2, 4, 6});
    EXPECT_EQ(o->name, "Box 2x4x6");
    ASSERT_EQ(video->seen.size(), 1u);
    const SeenMesh& m = video->seen[0];
    EXPECT_EQ(m.kind, krMeshFile::kindDrawn);
    ASSERT_EQ(m.vertices.size(), 24u);
    ASSERT_EQ(m.indices.size(), 36u);
    // Faces in the order +Y, -Y, +Z, -Z, +X, -X; each corner lies on its face.
    const krVector3 normals[] = {krVector3::axisY, krVector3::negAxisY, krVector3::axisZ,
                                 krVector3::negAxisZ, krVector3::axisX, krVector3::negAxisX};
    const krVector3 half{1, 2, 3};
    for (size_t v = 0; v < 24; ++v) {
        const krVertex& x = m.vertices[v];
        EXPECT_EQ(x.normal, normals[v / 4]);
        EXPECT_FLOAT_EQ(dot(x.position, x.normal), dot(half, multiply(x.normal, x.normal)));
        EXPECT_EQ(x.color, krColor(255, 255, 255, 255));
    }
    EXPECT_EQ(m.vertices[1].u, 0);
    EXPECT_EQ(m.vertices[1].v, 1);
    EXPECT_EQ(m.vertices[2].u, 1);
    EXPECT_EQ(m.vertices[2].v, 0);
    const std::vector<uint32_t> firstFace{0, 1, 2, 3, 2, 1};
    EXPECT_EQ(std::vector<uint32_t>(m.indices.begin(), m.indices.begin() + 6), firstFace);
    expectOutwardWinding(m);

    EXPECT_EQ(o->localBox.min, krVector3(-1, -2, -3));
    EXPECT_EQ(o->localBox.max, krVector3(1, 2, 3));
    EXPECT_EQ(o->box.max, krVector3(2, 3, 4));
    EXPECT_FLOAT_EQ(o->radius, std::sqrt(14.0f));

    ASSERT_EQ(m.materials.size(), 1u);
    const krMaterial& mat = m.materials[0];
    EXPECT_EQ(mat.flags, krMaterialNormalMapped);
    EXPECT_EQ(mat.diffuse, krColor(128, 128, 128, 255));
    EXPECT_EQ(mat.specular, krColor(0, 0, 0, 255));
    EXPECT_EQ(mat.textures[0], "textures/colormap.dds");
    EXPECT_EQ(mat.textures[1], "textures/normalmap.dds");
    EXPECT_EQ(mat.indexCount, 36);
    EXPECT_EQ(mat.vertexCount, 24);
}

TEST_F(SceneShapes, EllipsoidRingsPolesAndNormals) {
    krObject* o = newObject();
    o->name = "egg";
    o->genMeshEllipsoid({2, 4, 2}, 12);
    EXPECT_EQ(o->name, "egg");
    ASSERT_EQ(video->seen.size(), 1u);
    const SeenMesh& m = video->seen[0];
    // 12 segments: rings for j = -2 to 2, 12 vertices each, and the two poles.
    ASSERT_EQ(m.vertices.size(), 5u * 12 + 2);
    EXPECT_EQ(m.indices.size(), 4u * 12 * 6 + 2 * 12 * 3);
    EXPECT_EQ(m.vertices[60].position, krVector3(0, 2, 0));
    EXPECT_EQ(m.vertices[61].position, krVector3(0, -2, 0));
    for (const krVertex& v : m.vertices) {
        EXPECT_NEAR(length(v.normal), 1, 1e-5);
        // On the surface: (x / 1)^2 + (y / 2)^2 + (z / 1)^2 = 1.
        const krVector3& p = v.position;
        EXPECT_NEAR(p.x * p.x + p.y * p.y / 4 + p.z * p.z, 1, 1e-5);
    }
    // Texture coordinates of ring j, column i: (8 i / S, 8 (S / 4 + j) / S).
    EXPECT_FLOAT_EQ(m.vertices[12 + 3].u, 2);
    EXPECT_FLOAT_EQ(m.vertices[12 + 3].v, 8.0f * 2 / 12);
    expectOutwardWinding(m);
    EXPECT_EQ(m.materials[0].specular, krColor(128, 128, 128, 255));
    EXPECT_EQ(m.materials[0].flags, krMaterialNormalMapped);
    EXPECT_EQ(o->localBox.max, krVector3(1, 2, 1));

    krObject* p = newObject();
    p->genMeshEllipsoid({1.5f, 1, 1}, 4);
    EXPECT_EQ(p->name, "Ellipsoid 1.5x1x1");
    EXPECT_EQ(video->seen[1].vertices.size(), 4u + 2);
    EXPECT_EQ(video->seen[1].indices.size(), 2u * 4 * 3);
}

TEST_F(SceneShapes, ScriptsMakeShapesAndBadCountsAreReported) {
    krScript* s = run(R"(
        $o = new_object();
        $o.genMeshBox(1, 1, 1);
        $box = $o.name;
        $e = new_object();
        $e.genMeshEllipsoid(1, 1, 1, 3);
        $e.genMeshEllipsoid(1, 1, 1, 100000);
        $e.genMeshEllipsoid(1, 1, 1);
    )");
    EXPECT_EQ(field(s, "box"), "Box 1x1x1");
    EXPECT_EQ(video->seen.size(), 1u);
    ASSERT_EQ(reports().size(), 2u);
    EXPECT_NE(reports()[0].find("genMeshEllipsoid needs 4 to 1024 segments, not 3"), std::string::npos);
    EXPECT_NE(reports()[1].find("not 100000"), std::string::npos);
}
