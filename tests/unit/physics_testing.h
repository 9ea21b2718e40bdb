// A world with hand-made shapes for the physics tests: spheres, boxes, and level geometry from
// corners.
#pragma once

#include <vector>

#include "engine_testing.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "render/krMesh.h"

namespace physicsTesting {

class Scene : public engineTesting::Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        world = make<krPhysics>();
    }

    krPhysObj* sphere(const krVector3& at, float r) {
        auto* b = make<krPhysObj>(world);
        b->collStyle = krCollSphere;
        b->radius = r;
        b->setPosition(at);
        b->mass = 1;
        b->predictMotion(0);
        return b;
    }

    krPhysObj* box(const krVector3& at, const krVector3& size) {
        auto* b = make<krPhysObj>(world);
        b->genMeshBox(size);
        b->mass = 1;
        b->setPosition(at);
        b->predictMotion(0);
        return b;
    }

    // Level geometry of one mesh given by corners, three a triangle, all of one surface.
    krStaticObj* level(const std::vector<krVector3>& corners, uint8_t surface = krPhysicDefault) {
        auto* s = make<krStaticObj>(world);
        std::vector<krVertex> vertices;
        std::vector<uint32_t> indices;
        for (const krVector3& c : corners) {
            indices.push_back(static_cast<uint32_t>(vertices.size()));
            vertices.push_back({c, krVector3::axisY, krColor(), 0, 0});
        }
        krMesh mesh;
        mesh.ownVertices(vertices);
        mesh.ownIndices(indices);
        krMaterial m;
        m.indexCount = static_cast<int32_t>(indices.size());
        m.vertexCount = static_cast<int32_t>(vertices.size());
        m.surface = surface;
        mesh.materials.push_back(m);
        s->addMesh(mesh);
        return s;
    }

    // A floor at height 0 over [-h, h] on x and z, wound counter-clockwise seen from above.
    krStaticObj* floor(float h = 10) {
        return level({{-h, 0, -h}, {-h, 0, h}, {h, 0, -h}, {h, 0, -h}, {-h, 0, h}, {h, 0, h}});
    }

    krPhysics* world = nullptr;
};

}  // namespace physicsTesting
