// Loading mesh files into object trees: poses and bounds, mesh kinds, vertices, weights,
// materials and their texture slots, companion scripts, and split trees with their leaves.
#include <cmath>

#include "core/krMatrix.h"
#include "render/krSplit.h"
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

class SceneLoad : public Scene {};

krQuat quarterTurnY() { return krQuat::fromAxisAngle(krPi / 2, krVector3::axisY); }

}  // namespace

TEST_F(SceneLoad, ObjectPoseBoundsAndDrawDistance) {
    krChunkWriter w;
    krBeginObject(w, "crate", {5, 0, 0}, quarterTurnY());
    krWriteMesh(w, cube(1));
    krBeginObject(w, "lid", {0, 3, 0}, krQuat::identity);
    krWriteMesh(w, cube(0.5f));
    w.end();
    w.end();
    write("models/crate.mesh", w.data());

    krObject* o = newObject();
    o->setPosition({10, 0, 0});
    o->loadFromFile("models/crate.mesh", 0);
    EXPECT_TRUE(reports().empty());

    // The top level keeps the pose it had; the sub-object takes its own from the file.
    EXPECT_EQ(o->position, krVector3(10, 0, 0));
    EXPECT_EQ(o->name, "crate");
    EXPECT_EQ(o->path, "models/");
    EXPECT_EQ(o->initialPosition, krVector3(10, 0, 0));
    ASSERT_EQ(o->getChildren().size(), 1u);
    auto* lid = dynamic_cast<krObject*>(o->getChildren()[0]);
    ASSERT_NE(lid, nullptr);
    EXPECT_EQ(lid->name, "lid");
    EXPECT_EQ(lid->position, krVector3(0, 3, 0));
    EXPECT_EQ(lid->path, "models/");
    EXPECT_TRUE(lid->isVisible());

    // Own vertices reach 1; the lid's box sits 3 up and reaches 3.5.
    EXPECT_EQ(o->localBox.min, krVector3(-1, -1, -1));
    EXPECT_EQ(o->localBox.max, krVector3(1, 3.5f, 1));
    EXPECT_FLOAT_EQ(o->radius, 3 + std::sqrt(0.75f));
    // The world box went through the matrix: centred on x = 10.
    EXPECT_NEAR(o->box.min.x, 9, 1e-5);
    EXPECT_NEAR(o->box.max.x, 11, 1e-5);
    // A 2 x 2 x 2 box sees 200 metres; the object's own box here is 2 x 4.5 x 2.
    EXPECT_FLOAT_EQ(lid->maxDrawDistance, 100);
    EXPECT_FLOAT_EQ(o->maxDrawDistance, 100 * std::sqrt(9.0f));

    // Both meshes went to the video, each with its own module.
    ASSERT_EQ(video->seen.size(), 2u);
    EXPECT_EQ(video->seen[0].module, o);
    EXPECT_EQ(video->seen[1].module, lid);
    EXPECT_EQ(video->seen[0].indices.size(), 36u);
}

TEST_F(SceneLoad, MeshKindsDecideWhatIsDrawn) {
    std::vector<krMeshFileMesh> meshes;
    for (int32_t kind : {0, krMeshFile::kindHull, krMeshFile::kindRays, krMeshFile::kindDrawn | krMeshFile::kindDrawnA,
                         krMeshFile::kindDrawn | krMeshFile::kindDrawnB, krMeshFile::kindDrawn | krMeshFile::kindDrawnC}) {
        meshes.push_back(cube(1));
        meshes.back().kind = kind;
    }
    write("kinds.mesh", objectFile("kinds", meshes));
    newObject()->loadFromFile("kinds.mesh", 0);
    ASSERT_EQ(video->seen.size(), 3u);
    EXPECT_EQ(video->seen[0].kind, 2 | 8);
    EXPECT_EQ(video->seen[1].kind, 2 | 16);
    EXPECT_EQ(video->seen[2].kind, 2 | 32);
}

TEST_F(SceneLoad, UnknownChunksArePassedOverAnywhere) {
    krChunkWriter w;
    krBeginObject(w, "odd", {}, krQuat::identity);
    w.begin(0x2999999);
    w.putU32(12345);
    w.end();
    krWriteMesh(w, cube(1));
    w.end();
    // A second root chunk is never read.
    krBeginObject(w, "second", {}, krQuat::identity);
    krWriteMesh(w, cube(1));
    w.end();
    write("odd.mesh", w.data());
    krObject* o = newObject();
    o->loadFromFile("odd.mesh", 0);
    EXPECT_EQ(o->name, "odd");
    EXPECT_EQ(video->seen.size(), 1u);
    EXPECT_TRUE(reports().empty());

    // A root of another kind makes an empty load.
    krChunkWriter other;
    other.begin(0x3000000);
    other.end();
    write("font.mesh", other.data());
    krObject* p = newObject();
    p->loadFromFile("font.mesh", 0);
    EXPECT_EQ(p->name, "");
    EXPECT_EQ(video->seen.size(), 1u);
}

TEST_F(SceneLoad, ScaleAppliesToTheFileBeingRead) {
    write("c.mesh", objectFile("c", {cube(1)}));
    krObject* o = newObject();
    o->loadFromFile("c.mesh", 3);
    EXPECT_EQ(o->localBox.max, krVector3(3, 3, 3));
    EXPECT_EQ(video->seen[0].vertices[7].position, krVector3(3, 3, 3));
    // The next load without a scale is at the file's size again.
    krObject* p = newObject();
    p->loadFromFile("c.mesh", 0);
    EXPECT_EQ(p->localBox.max, krVector3(1, 1, 1));
}

TEST_F(SceneLoad, WeightsKeepFourRenormalisedAndMarkTheirBones) {
    krMeshFileMesh m = cube(1);
    m.vertices.resize(2);
    m.indices = {0, 1, 1};
    m.materials[0].record.vertexCount = 2;
    m.materials[0].record.indexCount = 3;
    m.weightsPerVertex = 5;
    // Vertex 0: five weights; the fifth (bone 40) is dropped before normalising.
    m.weights = {{1, 0, 0.1f}, {2, 0, 0.1f}, {3, 0, 0.1f}, {4, 0, 0.2f}, {40, 0, 0.5f},
                 // Vertex 1: all zero weights stay zero.
                 {7, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    krChunkWriter w;
    krBeginObject(w, "arm", {0, 0, 0}, krQuat::identity);
    krBeginObject(w, "hand", {0, 2, 0}, quarterTurnY());
    krWriteMesh(w, m);
    w.end();
    w.end();
    write("arm.mesh", w.data());
    krObject* o = newObject();
    o->loadFromFile("arm.mesh", 0);
    ASSERT_EQ(video->seen.size(), 1u);
    const SeenMesh& seen = video->seen[0];
    ASSERT_EQ(seen.weights.size(), 8u);
    EXPECT_EQ(seen.weights[0].bone, 1);
    EXPECT_FLOAT_EQ(seen.weights[0].weight, 0.2f);
    EXPECT_FLOAT_EQ(seen.weights[3].weight, 0.4f);
    EXPECT_EQ(seen.weights[3].bone, 4);
    EXPECT_EQ(seen.weights[4].bone, 7);
    EXPECT_FLOAT_EQ(seen.weights[4].weight, 0);

    auto* hand = dynamic_cast<krObject*>(o->getChildren()[0]);
    EXPECT_EQ(hand->boneLimit, 8);
    // The places after vertex 1's first name bone 0 too.
    const std::vector<uint8_t> used{1, 1, 1, 1, 1, 0, 0, 1};
    EXPECT_EQ(hand->getBonesUsed(), used);
    // The bind pose is in the owner's space: turned a quarter about y and lifted by 2.
    const krVector3 expected =
        transformPoint(krMatrix::fromQuatTranslation(quarterTurnY(), {0, 2, 0}), krVector3(1, -1, -1));
    const krVector3 p = seen.vertices[1].position;
    EXPECT_NEAR(p.x, expected.x, 1e-5);
    EXPECT_NEAR(p.y, 1, 1e-5);
    EXPECT_NEAR(p.z, expected.z, 1e-5);
    EXPECT_NEAR(std::fabs(p.x), 1, 1e-5);
}

TEST_F(SceneLoad, MaterialsFlagsAndTextureSlots) {
    krMeshFileMesh m = cube(1);
    krMeshFileMaterial base = m.materials[0];
    m.materials.clear();
    auto add = [&](const std::string& name, std::vector<krMeshFileMaterial::Slot> slots) -> krMeshFileMaterial& {
        krMeshFileMaterial mat = base;
        krMeshFile::setName(mat.record.name, name);
        mat.slots = std::move(slots);
        m.materials.push_back(mat);
        return m.materials.back();
    };
    add("glass", {slot(krMeshFile::diffuseSlotId, "glass.dds", 2)});
    add("leaves", {slot(krMeshFile::diffuseSlotId, "leaf.dds", 1)});
    add("shiny", {slot(krMeshFile::specularSlotId, "shine.dds")}).record.specularStrength = 128;
    add("bumpy", {slot(krMeshFile::normalSlotId, "n.dds"), slot(krMeshFile::specularSlotId, "s.dds")});
    add("elsewhere", {slot(krMeshFile::diffuseSlotId, "x.dds", 2, 1), slot(krMeshFile::normalSlotId, "", 0)});
    krMeshFileMaterial& lamp = add("lamp", {});
    lamp.record.emission = krColor(48, 0, 0, 255);
    lamp.record.specular = krColor(255, 255, 255, 255);
    lamp.record.specularStrength = 12;
    lamp.record.shininess = 40;
    write("set/m.mesh", objectFile("m", {m}));

    krObject* o = newObject();
    o->sortAlpha = true;
    o->loadFromFile("set/m.mesh", 0);
    ASSERT_EQ(video->seen.size(), 1u);
    const std::vector<krMaterial>& mats = video->seen[0].materials;
    ASSERT_EQ(mats.size(), 6u);

    EXPECT_EQ(mats[0].flags, krMaterialBlended | krMaterialSorted);
    EXPECT_EQ(mats[0].textures[0], "set/glass.dds");
    EXPECT_EQ(mats[0].surface, krSurfaceDefault);
    EXPECT_EQ(mats[1].flags, krMaterialAlphaTested);
    // A specular map without a normal map takes the second unit; no normal flag.
    EXPECT_EQ(mats[2].flags, krMaterialSpecularMapped);
    EXPECT_EQ(mats[2].textures[1], "set/shine.dds");
    EXPECT_EQ(mats[2].specular, krColor(127, 127, 127, 255));
    EXPECT_EQ(mats[3].flags, krMaterialNormalMapped | krMaterialSpecularMapped);
    EXPECT_EQ(mats[3].textures[1], "set/n.dds");
    EXPECT_EQ(mats[3].textures[2], "set/s.dds");
    // A slot of another source is not used; an empty normal slot still sets its flag.
    EXPECT_EQ(mats[4].flags, krMaterialNormalMapped);
    EXPECT_EQ(mats[4].textures[0], "");
    EXPECT_EQ(mats[4].textures[1], "");
    // Strength 12 leaves a highlight of 11 (bright enough); an emission of 48 red is 16.
    EXPECT_EQ(mats[5].flags, krMaterialSpecular | krMaterialGlowing);
    EXPECT_EQ(mats[5].specular, krColor(11, 11, 11, 255));
    EXPECT_FLOAT_EQ(mats[5].shininess, 40);
    EXPECT_EQ(mats[5].vertexCount, 8);
    EXPECT_EQ(mats[5].indexCount, 36);
}

TEST_F(SceneLoad, CompanionScriptNamesAndTheirObject) {
    // The script runs before the meshes are read, with the object as $_.
    write("a/b.c/mesh", objectFile("plain", {cube(1)}));
    write("a/b.c/mesh.script", "GLOBALS[\"first\"] = \"[\" + $_.name + \"]\"; event $_: loaded() { GLOBALS[\"loaded\"] = $_.name; }");
    write("a/mesh.bin", objectFile("binary", {cube(1)}));
    write("a/mesh.script", "GLOBALS[\"second\"] = 1;");
    krObject* o = newObject();
    o->loadFromFile("a/b.c/mesh", 0);
    newObject()->loadFromFile("a/mesh.bin", 0);
    krScript* check = run("$first = GLOBALS[\"first\"]; $loaded = GLOBALS[\"loaded\"]; $second = GLOBALS[\"second\"];");
    EXPECT_EQ(field(check, "first"), "[]");
    EXPECT_EQ(field(check, "loaded"), "plain");
    EXPECT_EQ(field(check, "second"), "1");
    ASSERT_NE(o->getScript(), nullptr);
    EXPECT_EQ(o->getScript()->getFile(), "a/b.c/mesh.script");
    // Missing companions are silent; the missing mesh file is not.
    newObject()->loadFromFile("nothing.mesh", 0);
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0], "File \"nothing.mesh\" not found!");
}

TEST_F(SceneLoad, SplitTreeBuildsSplitsAndLoadsLeaves) {
    write("level/rock.mesh", objectFile("rock", {cube(1)}));
    krChunkWriter w;
    w.begin(krMeshFile::splitTreeId);
    w.begin(krMeshFile::splitId);
    krMeshFile::SplitRecord split{{-50, -10, -50}, {50, 10, 50}, 71};
    w.put(split);
    for (int i = 0; i < 16; ++i) {
        krMeshFile::LeafRecord leaf{};
        const float x = -40.0f + 5 * i;
        leaf.boxMin[0] = x - 1;
        leaf.boxMax[0] = x + 1;
        leaf.radius = 1.8f;
        krMeshFile::setName(leaf.name, "rock" + std::to_string(i));
        krMeshFile::setName(leaf.file, "rock.mesh");
        leaf.position[0] = x;
        leaf.rotation[3] = 1;
        w.begin(krMeshFile::leafId);
        w.put(leaf);
        w.end();
    }
    w.end();
    w.end();
    write("level/level.tree", w.data());

    krScript* s = run("$loading = 0; $fraction = 0; event MAIN: loading($f) { $loading += 1; $fraction = $f; }");
    krObject* o = newObject();
    o->loadFromFile("level/level.tree", 0);
    EXPECT_TRUE(reports().empty());
    ASSERT_EQ(o->getChildren().size(), 1u);
    auto* node = dynamic_cast<krSplit*>(o->getChildren()[0]);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->position, krVector3(0, 0, 0));
    EXPECT_FLOAT_EQ(node->radius, 71);
    EXPECT_TRUE(node->isVisible());
    ASSERT_EQ(node->getChildren().size(), 16u);
    auto* leaf = dynamic_cast<krObject*>(node->getChildren()[3]);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->name, "rock3");
    EXPECT_EQ(leaf->position, krVector3(-25, 0, 0));
    EXPECT_EQ(leaf->box.min.x, -26);
    EXPECT_FLOAT_EQ(leaf->radius, 1.8f);
    EXPECT_EQ(leaf->path, "level/");
    EXPECT_EQ(leaf->getEventTarget(), o);
    EXPECT_FLOAT_EQ(o->radius, 40 + 1.8f);
    EXPECT_EQ(video->seen.size(), 16u);
    EXPECT_EQ(o->findObject("rock15"), node->getChildren()[15]);
    // Sixteen leaves in a row meet the process-wide counter's multiple of 16 exactly once.
    EXPECT_EQ(field(s, "loading"), "1");
    EXPECT_GT(std::stof(field(s, "fraction")), 0.0f);
}
