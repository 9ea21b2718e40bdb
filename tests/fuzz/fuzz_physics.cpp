// Arbitrary bytes as a world: level meshes, bodies of every style with raw poses, velocities,
// masses, sizes and locks (values that are not numbers among them), a movable mesh, then
// substeps. Counts are capped so that every input steps in bounded time.
#include "fuzz_world.h"

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

using fuzzWorld::Bytes;
using fuzzWorld::root;

constexpr int maxBodies = 24;
constexpr int maxLevels = 3;
constexpr int maxCorners = 48;
constexpr int maxSubsteps = 40;

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
