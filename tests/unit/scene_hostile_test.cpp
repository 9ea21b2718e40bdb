// Damaged and hostile mesh and split files: cut short anywhere, lying counts, indices and ranges
// beyond the geometry, arrays off their alignment, trees that nest without end or contain
// themselves. Each gives a report or a quiet partial load, never a crash or a hang.
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

class SceneHostile : public Scene {
protected:
    // A file with every kind of chunk: a sub-object, weights, materials with slots.
    static std::string richFile() {
        krMeshFileMesh m = cube(1);
        m.weightsPerVertex = 2;
        for (int i = 0; i < 8; ++i) m.weights.insert(m.weights.end(), {{uint16_t(i), 0, 1}, {3, 0, 1}});
        m.materials[0].slots = {slot(krMeshFile::diffuseSlotId, "a.dds", 2), slot(krMeshFile::normalSlotId, "n.dds")};
        krChunkWriter w;
        krBeginObject(w, "rich", {}, krQuat::identity);
        krWriteMesh(w, m);
        krBeginObject(w, "sub", {0, 1, 0}, krQuat::identity);
        krWriteMesh(w, cube(0.5f));
        w.end();
        w.end();
        return w.data();
    }

    static std::string withIndex(uint32_t index) {
        krMeshFileMesh m = cube(1);
        m.indices[5] = index;
        return objectFile("bad", {m});
    }

    void expectReport(const std::string& text) {
        ASSERT_EQ(reports().size(), 1u);
        EXPECT_EQ(reports()[0], text);
        reports().clear();
    }
};

}  // namespace

TEST_F(SceneHostile, CutShortAtEveryLength) {
    const std::string full = richFile();
    for (size_t n = 0; n <= full.size(); ++n) {
        krObject* o = newObject();
        o->loadFromMemory("cut.mesh", full.data(), static_cast<uint32_t>(n));
        o->deinit();
        o->release();
    }
    // Whatever was cut, each mesh the video saw had been checked, and the whole file loads.
    const size_t seenBefore = video->seen.size();
    krObject* o = newObject();
    o->loadFromMemory("cut.mesh", full.data(), static_cast<uint32_t>(full.size()));
    EXPECT_EQ(video->seen.size(), seenBefore + 2);
    EXPECT_EQ(o->findObject("sub")->name, "sub");
}

TEST_F(SceneHostile, IndicesAndRangesBeyondTheGeometry) {
    krObject* o = newObject();
    o->loadFromMemory("bad.mesh", withIndex(7).data(), static_cast<uint32_t>(withIndex(7).size()));
    EXPECT_EQ(video->seen.size(), 1u);
    EXPECT_TRUE(reports().empty());
    o->loadFromMemory("bad.mesh", withIndex(8).data(), static_cast<uint32_t>(withIndex(8).size()));
    expectReport("Invalid mesh file: 'bad.mesh' (a vertex index beyond the vertices)");

    krMeshFileMesh m = cube(1);
    m.materials[0].record.indexCount = 39;
    std::string file = objectFile("bad", {m});
    o->loadFromMemory("range.mesh", file.data(), static_cast<uint32_t>(file.size()));
    expectReport("Invalid mesh file: 'range.mesh' (a material's indices beyond the mesh)");

    m = cube(1);
    m.materials[0].record.firstVertex = 0xFFFFFFFF;
    file = objectFile("bad", {m});
    o->loadFromMemory("neg.mesh", file.data(), static_cast<uint32_t>(file.size()));
    expectReport("Invalid mesh file: 'neg.mesh' (a material range below zero)");

    // Two materials that split the vertices; the second's triangles reach into the first's.
    m = cube(1);
    m.materials.push_back(m.materials[0]);
    m.materials[0].record.vertexCount = 4;
    m.materials[0].record.indexCount = 18;
    m.materials[1].record.firstVertex = 4;
    m.materials[1].record.vertexCount = 4;
    m.materials[1].record.firstIndex = 18;
    m.materials[1].record.indexCount = 18;
    file = objectFile("bad", {m});
    o->loadFromMemory("split.mesh", file.data(), static_cast<uint32_t>(file.size()));
    expectReport("Invalid mesh file: 'split.mesh' (a material's index outside its vertex range)");
    EXPECT_EQ(video->seen.size(), 1u);
}

TEST_F(SceneHostile, CountsThatLie) {
    auto load = [&](const std::string& bytes) {
        krObject* o = newObject();
        o->loadFromMemory("lie.mesh", bytes.data(), static_cast<uint32_t>(bytes.size()));
    };
    krChunkWriter w;
    krBeginObject(w, "lie", {}, krQuat::identity);
    w.begin(krMeshFile::drawnMeshId);
    w.begin(krMeshFile::verticesId);
    w.putU32(0xFFFFFFF0);
    w.end();
    w.end();
    w.end();
    load(w.data());
    expectReport("Invalid mesh file: 'lie.mesh' (vertex count out of range)");

    krChunkWriter v;
    krBeginObject(v, "lie", {}, krQuat::identity);
    v.begin(krMeshFile::drawnMeshId);
    v.begin(krMeshFile::verticesId);
    v.putU32(1000);
    v.put(vertexAt(0, 0, 0));
    v.end();
    v.begin(krMeshFile::materialsId);
    v.putU32(0x7FFFFFFF);
    v.end();
    v.end();
    v.end();
    load(v.data());
    expectReport("Invalid mesh file: 'lie.mesh' (vertices run past their chunk)");

    krMeshFileMesh m = cube(1);
    m.weightsPerVertex = 65535;
    m.weights.resize(8);
    load(objectFile("lie", {m}));
    expectReport("Invalid mesh file: 'lie.mesh' (weights run past their chunk)");

    // More materials counted than there are chunks: reported, and no memory taken for them.
    krChunkWriter x;
    krBeginObject(x, "lie", {}, krQuat::identity);
    x.begin(krMeshFile::drawnMeshId);
    x.begin(krMeshFile::materialsId);
    x.putU32(0xFFFFFFFF);
    x.end();
    x.end();
    x.end();
    load(x.data());
    expectReport("Invalid mesh file: 'lie.mesh' (more materials counted than there are)");
}

TEST_F(SceneHostile, MisalignedArraysAreCopied) {
    krMeshFileMesh m = cube(1);
    m.weightsPerVertex = 1;
    m.weights.assign(8, {2, 0, 1});
    krChunkWriter w;
    krBeginObject(w, "odd", {}, krQuat::identity);
    w.begin(krMeshFile::drawnMeshId);
    // An unknown chunk of one byte puts everything after it off the 4-byte grid.
    w.begin(0x2999999);
    w.put("", 1);
    w.end();
    w.end();
    w.end();
    std::string file = w.data();
    // Splice the mesh's own chunks in after the odd one: re-write them inside the mesh chunk.
    krChunkWriter mesh;
    krWriteMesh(mesh, m);
    const std::string body = mesh.data().substr(krChunk::headerSize);
    file.insert(file.size(), body);
    krPutU32(&file[krChunk::headerSize + sizeof(krMeshFile::ObjectHeader) + 4],
             static_cast<uint32_t>(krChunk::headerSize + 1 + body.size()));
    krPutU32(&file[4], static_cast<uint32_t>(file.size() - krChunk::headerSize));

    krObject* o = newObject();
    o->loadFromMemory("odd.mesh", file.data(), static_cast<uint32_t>(file.size()));
    EXPECT_TRUE(reports().empty());
    ASSERT_EQ(video->seen.size(), 1u);
    EXPECT_EQ(video->seen[0].vertices[7].position, krVector3(1, 1, 1));
    EXPECT_EQ(video->seen[0].indices, m.indices);
    EXPECT_EQ(video->seen[0].weights[0].bone, 2);
    EXPECT_EQ(o->localBox.max, krVector3(1, 1, 1));
}

TEST_F(SceneHostile, TreesThatContainThemselves) {
    auto leafTo = [](krChunkWriter& w, const std::string& file) {
        krMeshFile::LeafRecord leaf{};
        krMeshFile::setName(leaf.file, file);
        leaf.rotation[3] = 1;
        w.begin(krMeshFile::leafId);
        w.put(leaf);
        w.end();
    };
    krChunkWriter loop;
    loop.begin(krMeshFile::splitTreeId);
    leafTo(loop, "loop.tree");
    leafTo(loop, "loop.tree");
    loop.end();
    write("maps/loop.tree", loop.data());
    newObject()->loadFromFile("maps/loop.tree", 0);
    ASSERT_EQ(reports().size(), 2u);
    EXPECT_EQ(reports()[0], "Mesh file 'maps/loop.tree' contains itself");
    reports().clear();

    // A chain of distinct files, each a leaf of the one before, ends at a fixed depth.
    for (int i = 0; i < 40; ++i) {
        krChunkWriter w;
        w.begin(krMeshFile::splitTreeId);
        leafTo(w, "chain" + std::to_string(i + 1) + ".tree");
        w.end();
        write("chain" + std::to_string(i) + ".tree", w.data());
    }
    newObject()->loadFromFile("chain0.tree", 0);
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0], "Mesh files nested too deep at 'chain16.tree'");
}

TEST_F(SceneHostile, NestingWithoutEnd) {
    krChunkWriter w;
    for (int i = 0; i < 200; ++i) {
        std::string name = "o";
        name += std::to_string(i);
        krBeginObject(w, name, {0, 1, 0}, krQuat::identity);
    }
    krWriteMesh(w, cube(1));
    for (int i = 0; i < 200; ++i) w.end();
    krObject* o = newObject();
    o->loadFromMemory("deep.mesh", w.data().data(), static_cast<uint32_t>(w.data().size()));
    expectReport("Invalid mesh file: 'deep.mesh' (objects nested too deep)");
    EXPECT_EQ(o->findObject("o64")->name, "o64");
    EXPECT_EQ(o->findObject("o65"), nullptr);

    krChunkWriter t;
    t.begin(krMeshFile::splitTreeId);
    for (int i = 0; i < 200; ++i) {
        t.begin(krMeshFile::splitId);
        t.put(krMeshFile::SplitRecord{});
    }
    for (int i = 0; i < 200; ++i) t.end();
    t.end();
    o->loadFromMemory("deep.tree", t.data().data(), static_cast<uint32_t>(t.data().size()));
    expectReport("Invalid mesh file: 'deep.tree' (splits nested too deep)");
}
