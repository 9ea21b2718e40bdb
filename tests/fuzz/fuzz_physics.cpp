// Arbitrary bytes as a world: level meshes, bodies of every style with raw poses, velocities,
// masses, sizes and locks (values that are not numbers among them), a movable mesh, then
// substeps. Counts are capped so that every input steps in bounded time.
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/krMain.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "platform/krSystem.h"
#include "render/krMesh.h"

namespace {

constexpr int maxBodies = 24;
constexpr int maxLevels = 3;
constexpr int maxCorners = 48;
constexpr int maxSubsteps = 40;

// Reads the input front to back; past its end everything reads as zero.
class Bytes {
public:
    Bytes(const uint8_t* d, size_t n) : data(d), size(n) {}
    uint8_t byte() { return at < size ? data[at++] : 0; }
    float number() {
        uint8_t raw[4] = {byte(), byte(), byte(), byte()};
        // Most inputs should be ordinary numbers: small values from one byte, raw floats else.
        if (raw[0] < 0xF0) return (static_cast<int8_t>(raw[1]) + raw[2] / 256.0f) * (raw[0] & 3 ? 1.0f : 0.1f);
        float f;
        std::memcpy(&f, raw, 4);
        return f;
    }
    krVector3 vector() { return {number(), number(), number()}; }

private:
    const uint8_t* data;
    size_t size;
    size_t at = 0;
};

krMain* root() {
    static krMain* main = [] {
        krSystem::markStackBase();
        auto* m = new krMain(0, nullptr);
        m->attach();
        return m;
    }();
    return main;
}

void mesh(Bytes& in, krMesh& m, int32_t kind) {
    const int corners = 3 + in.byte() % maxCorners;
    std::vector<krVertex> vertices;
    for (int i = 0; i < corners; ++i) vertices.push_back({in.vector(), krVector3::axisY, krColor(), 0, 0});
    std::vector<uint32_t> indices;
    const int count = in.byte() % (3 * maxCorners);
    for (int i = 0; i < count; ++i) indices.push_back(in.byte() % static_cast<uint32_t>(corners));
    m.ownVertices(vertices);
    m.ownIndices(indices);
    krMaterial material;
    material.indexCount = static_cast<int32_t>(indices.size());
    material.vertexCount = corners;
    material.surface = in.byte() % 3;
    m.materials.push_back(material);
    m.kind = kind;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    krMain* main = root();
    Bytes in(data, size);
    auto* world = new krPhysics(main);
    world->attach();
    world->waterLevel = in.number();
    world->gravitation = in.vector();
    const int levels = in.byte() % (maxLevels + 1);
    for (int i = 0; i < levels; ++i) {
        auto* level = new krStaticObj(world);
        level->attach();
        level->setPosition(in.vector());
        if (in.byte() & 1) level->collStyle = krCollSphere;
        level->radius = in.number();
        krMesh m;
        mesh(in, m, krMeshFile::kindDrawn);
        level->addMesh(m);
    }
    const int bodies = in.byte() % (maxBodies + 1);
    for (int i = 0; i < bodies; ++i) {
        auto* b = new krPhysObj(world);
        b->attach();
        const uint8_t style = in.byte();
        if (style % 4 == krCollBox) b->genMeshBox(in.vector());
        if (style % 4 == krCollMesh) {
            krMesh m;
            mesh(in, m, krMeshFile::kindHull);
            b->addMesh(m);
        }
        b->collStyle = style % 4;
        b->radius = in.number();
        b->setPosition(in.vector());
        b->setOrientation(krQuat::fromAxisAngle(in.number(), in.vector()));
        b->velocity = in.vector();
        b->angularVelocity = in.vector();
        b->weightpoint = in.vector();
        b->translationLock = in.byte();
        b->rotationLock = in.byte();
        b->nonstaticCollisions = (style & 16) == 0;
        b->airResistance = (style & 32) ? in.number() : 0;
        b->setMass(in.number());
        if (!(style & 64)) b->activate();
    }
    const int substeps = in.byte() % maxSubsteps;
    for (int i = 0; i < substeps; ++i) world->update(0.002f);
    world->dispose();
    return 0;
}
