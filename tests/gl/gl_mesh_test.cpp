// Mesh items: transparent objects in any tree order, alpha testing and its restored state, the
// sorted buffers and their turns, 16- and 32-bit indices, merging of materials, the opaque
// queue's bound, weights, and a window made anew under its objects.
#include "gl_scene.h"
#include "render/opengl/krMeshItem_OGL.h"
#include "render/opengl/krMeshShaderAlphaBuffered_OGL.h"
#include "script/krVariant.h"

using glContent::MeshMaker;
using glContent::solidTexture;
using glTesting::near;
using glTesting::reports;
using GLMeshItems = glTesting::Scene;

namespace {
const int32_t blended = krMaterialBlended;
const krVector3 ahead(0, 0, -5);

krMeshItem_OGL* itemOf(krModule* m) {
    return m->getVideoItems().empty() ? nullptr : dynamic_cast<krMeshItem_OGL*>(m->getVideoItems().front());
}

size_t meshShaders(krModule* m) {
    krMeshItem_OGL* item = itemOf(m);
    return item ? item->getShaders().size() : 0;
}

// Half green over half red over black.
void expectGreenOverRed(uint32_t p) {
    EXPECT_LE(near(glTesting::red(p), 64), 2) << std::hex << p;
    EXPECT_LE(near(glTesting::green(p), 128), 2) << std::hex << p;
}

void expectRedOverGreen(uint32_t p) {
    EXPECT_LE(near(glTesting::red(p), 128), 2) << std::hex << p;
    EXPECT_LE(near(glTesting::green(p), 64), 2) << std::hex << p;
}
}  // namespace

TEST_F(GLMeshItems, TransparentObjectsCompositeAlikeInEitherTreeOrder) {
    ASSERT_TRUE(openScene());
    MeshMaker red, green;
    red.material(0xFF0000, 128, blended);
    red.square({}, 4);
    green.material(0x00FF00, 128, blended);
    green.square({}, 2);
    krObject* far = object(red, {0, 0, -6});
    krObject* near = object(green, {0, 0, -3});
    ASSERT_TRUE(frame());
    expectGreenOverRed(pixel(32, 24));
    remove(far);
    remove(near);
    near = object(green, {0, 0, -3});
    far = object(red, {0, 0, -6});
    ASSERT_TRUE(frame());
    expectGreenOverRed(pixel(32, 24));
    EXPECT_STREQ(itemOf(near)->getShaders()[0]->className(), "krMeshShaderAlpha_OGL");
}

TEST_F(GLMeshItems, AlphaTestingLeavesTheBackgroundAndRestoresCulling) {
    files.write("t/half.dds", glContent::halvesTexture(0x00FFFFFF, 0xFFFFFFFF));
    ASSERT_TRUE(openScene());
    MeshMaker tested;
    tested.material(0xFFFFFF, 255, krMaterialAlphaTested).textures[krTextureDiffuse] = "t/half.dds";
    tested.square({}, 4);
    krObject* o = object(tested, ahead);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0u);
    EXPECT_EQ(pixel(40, 24), 0xFFFFFFu);
    // Seen from behind: alpha-tested materials are not culled; the clear half is now on the right.
    const krQuat turned = krQuat::fromAxisAngle(krPi, krVector3::axisY);
    o->setOrientation(turned);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0xFFFFFFu);
    EXPECT_EQ(pixel(40, 24), 0u);
    // The material after it in the same list is culled again: its red square, in front of the
    // other when turned, shows its back.
    tested.material(0xFF0000);
    tested.square({0, 0, -1}, 4);
    remove(o);
    object(tested, ahead)->setOrientation(turned);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0xFFFFFFu);
    EXPECT_EQ(pixel(40, 24), 0u);
}

TEST_F(GLMeshItems, SortedTrianglesReSortFarToNearInTheirTurn) {
    files.write("t/pair.dds", glContent::halvesTexture(0x80FF0000, 0x8000FF00));
    ASSERT_TRUE(openScene());
    ASSERT_TRUE(video->vertexBuffers);
    // One material: the near square takes the green half of the texture, the far one the red.
    // In the file the near square comes first, the wrong order to draw them in.
    MeshMaker m;
    m.material(0xFFFFFF, 255, blended | krMaterialSorted).textures[krTextureDiffuse] = "t/pair.dds";
    m.square({0, 0, 1}, 2, 0.75f, 1);
    m.square({0, 0, -1}, 4, 0, 0.25f);
    krObject* o = object(m, ahead);
    auto* sorted = dynamic_cast<krMeshShaderAlphaBuffered_OGL*>(itemOf(o)->getShaders()[0]);
    ASSERT_NE(sorted, nullptr);
    EXPECT_EQ(sorted->getTriangleCount(), 4);
    const auto turnComes = [&] {
        return (video->getFrameNumber() + 1) % krMeshShaderAlphaBuffered_OGL::sortSlots == sorted->getSortSlot();
    };
    for (int i = 0; !turnComes(); ++i) {
        ASSERT_TRUE(frame());
        expectRedOverGreen(pixel(32, 24));
    }
    ASSERT_TRUE(frame());
    expectGreenOverRed(pixel(32, 24));
    // Turned around, the red square is the near one; the last order holds until the next turn.
    o->setOrientation(krQuat::fromAxisAngle(krPi, krVector3::axisY));
    while (!turnComes()) {
        ASSERT_TRUE(frame());
        expectGreenOverRed(pixel(32, 24));
    }
    ASSERT_TRUE(frame());
    expectRedOverGreen(pixel(32, 24));
    // A viewport given a camera by a script re-sorts every frame.
    glTesting::set(view, "camera", new krVInt(0));
    o->setOrientation(krQuat::identity);
    ASSERT_TRUE(frame());
    expectGreenOverRed(pixel(32, 24));
    // Each sorted mesh takes the next of the turns.
    krObject* next = object(m, {0, 0, -50});
    EXPECT_EQ(dynamic_cast<krMeshShaderAlphaBuffered_OGL*>(itemOf(next)->getShaders()[0])->getSortSlot(),
              (sorted->getSortSlot() + 1) % krMeshShaderAlphaBuffered_OGL::sortSlots);
}

TEST_F(GLMeshItems, RangesBeyondSixteenBitIndices) {
    ASSERT_TRUE(openScene());
    const int32_t many = 70000;
    // The square's own vertices come after the padding, with indices above 65535.
    MeshMaker plain;
    plain.material(0xFFFFFF);
    plain.padding(many);
    plain.square({}, 4);
    krObject* o = object(plain, ahead);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
    remove(o);
    // Sorted transparent triangles keep 16-bit indices: such a range draws nothing.
    MeshMaker sorted;
    sorted.material(0xFFFFFF, 128, blended | krMaterialSorted);
    sorted.padding(many);
    sorted.square({}, 4);
    o = object(sorted, ahead);
    EXPECT_EQ(dynamic_cast<krMeshShaderAlphaBuffered_OGL*>(itemOf(o)->getShaders()[0])->getTriangleCount(), 0);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0u);
}

TEST_F(GLMeshItems, NeighbouringMaterialsOfOneShaderShareAList) {
    ASSERT_TRUE(openScene());
    // Without GLSL every material has the default shader: one list holds both colours.
    MeshMaker two;
    two.material(0xFF0000);
    two.square({-1, 0, 0}, 1);
    two.material(0x00FF00);
    two.square({1, 0, 0}, 1);
    EXPECT_EQ(meshShaders(object(two, ahead)), 1u);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(24, 24), 0xFF0000u);
    EXPECT_EQ(pixel(40, 24), 0x00FF00u);
}

TEST_F(GLMeshItems, OnlyNeighboursOfOneShaderThatMayMergeDo) {
    video->glsl = true;
    ASSERT_TRUE(openScene());
    const char* a = "shaders/spec.shader";
    const char* b = "shaders/normal.shader";
    auto objectsFor = [&](std::initializer_list<std::pair<const char*, int32_t>> materials) {
        MeshMaker m;
        float x = 0;
        for (const auto& [shader, flags] : materials) {
            m.material(0xFFFFFF, 255, flags).shader = shader;
            m.square({x, 0, -20}, 0.5f);
            x += 1;
        }
        return meshShaders(object(m));
    };
    EXPECT_EQ(objectsFor({{a, 0}, {a, 0}}), 1u);
    EXPECT_EQ(objectsFor({{a, 0}, {a, 0}, {b, 0}, {a, 0}}), 3u);
    EXPECT_EQ(objectsFor({{a, 0}, {a, blended}}), 2u);
    EXPECT_EQ(objectsFor({{a, blended}, {a, blended}}), 2u);
    EXPECT_EQ(objectsFor({{a, krMaterialGlowing}, {a, 0}}), 2u);
    EXPECT_TRUE(reports().boxes.empty());
}

TEST_F(GLMeshItems, TheOpaqueQueueStopsAtItsBound) {
    video->glsl = true;
    ASSERT_TRUE(openScene(16, 16));
    const int32_t count = krVideo_OGL::opaqueQueueSize + 8;
    MeshMaker m;
    for (int32_t i = 0; i < count; ++i) {
        m.material().shader = i % 2 ? "shaders/spec.shader" : "shaders/specmap.shader";
        m.square({}, 0.01f);
    }
    EXPECT_EQ(meshShaders(object(m, ahead)), static_cast<size_t>(count));
    ASSERT_TRUE(frame());
    EXPECT_EQ(video->getOpaqueCount(), krVideo_OGL::opaqueQueueSize);
    // The item counts all its triangles, drawn or not.
    EXPECT_EQ(video->getPolyCount(), 2 * count);
}

TEST_F(GLMeshItems, WeightsAreCutToTheVideosCountAndTheBindPoseDrawsInPlace) {
    ASSERT_TRUE(openScene());
    glTesting::set(video, "maxVertexWeights", new krVInt(2));
    // A load leaves a skinned mesh's bind pose in the space of the object's owner.
    MeshMaker m;
    m.material();
    m.square(ahead, 4);
    krMesh mesh;
    m.make(mesh);
    const krBoneWeight four[krWeightsPerVertex] = {{1, 0.5f}, {2, 0.3f}, {3, 0.2f}, {0, 0}};
    for (int32_t v = 0; v < mesh.vertexCount; ++v) mesh.weights.insert(mesh.weights.end(), four, four + 4);
    auto* o = new krObject(scene);
    o->attach();
    o->setVisible(true);
    o->setPosition(ahead);
    o->radius = everywhere;
    o->addMesh(mesh);
    EXPECT_EQ(mesh.weights[0].bone, 1);
    EXPECT_FLOAT_EQ(mesh.weights[0].weight, 0.625f);
    EXPECT_FLOAT_EQ(mesh.weights[1].weight, 0.375f);
    EXPECT_EQ(mesh.weights[2].bone, 0);
    EXPECT_EQ(mesh.weights[2].weight, 0.0f);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
}

TEST_F(GLMeshItems, NoItemWithoutVerticesOrWithoutAContext) {
    MeshMaker m;
    m.material();
    m.square({}, 1);
    krMesh mesh, empty;
    m.make(mesh);
    EXPECT_EQ(video->createMeshItem(window, &mesh, krMeshFile::kindDrawn), nullptr);
    // A video made ready before its window makes nothing of its context yet.
    video->occlusionQuery = true;
    EXPECT_TRUE(video->init());
    EXPECT_EQ(video->getShaders(), nullptr);
    EXPECT_EQ(video->getQuery(), 0u);
    ASSERT_TRUE(openScene());
    EXPECT_NE(video->getShaders(), nullptr);
    EXPECT_NE(textures()->getDefaultTexture(), 0u);
    EXPECT_EQ(video->createMeshItem(scene, &empty, krMeshFile::kindDrawn), nullptr);
    krVideoItem* item = video->createMeshItem(scene, &mesh, krMeshFile::kindDrawn);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(scene->getVideoItems().back(), item);
}

TEST_F(GLMeshItems, AWindowMadeAnewLeavesOldObjectsUndrawnAndItsTablesFresh) {
    files.write("t/white.dds", solidTexture(0xFFFFFFFF));
    video->glsl = true;
    ASSERT_TRUE(openScene());
    MeshMaker m;
    m.material(0xFFFFFF, 255, krMaterialNormalMapped).textures[krTextureDiffuse] = "t/white.dds";
    m.square({}, 4);
    krObject* old = object(m, ahead);
    ASSERT_TRUE(frame());
    EXPECT_EQ(textures()->useCount("t/white.dds"), 1);
    krShaders_OGL* oldTable = shaders();

    ASSERT_TRUE(window->init());
    EXPECT_EQ(textures()->useCount("t/white.dds"), 0);
    EXPECT_NE(textures()->getDefaultTexture(), 0u);
    EXPECT_NE(shaders(), nullptr);
    EXPECT_NE(shaders(), oldTable);
    ASSERT_TRUE(frame());
    // What was made in the old context is gone with it.
    EXPECT_EQ(pixel(32, 24), 0u);
    EXPECT_EQ(video->getPolyCount(), 0);

    krObject* fresh = object(m, ahead);
    EXPECT_EQ(textures()->useCount("t/white.dds"), 1);
    remove(old);
    EXPECT_EQ(textures()->useCount("t/white.dds"), 1);
    ASSERT_TRUE(frame());
    EXPECT_EQ(video->getPolyCount(), 2);
    EXPECT_NE(pixel(32, 24), 0u);
    remove(fresh);
    EXPECT_EQ(textures()->useCount("t/white.dds"), 0);
}
