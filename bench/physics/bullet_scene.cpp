// The benchmark scene in a discrete dynamics world of libbullet: box shapes, a static box as the
// floor, fixed steps of 0.002 s, its default sleeping.
#include <btBulletDynamicsCommon.h>

#include <memory>
#include <vector>

#include "bench_scene.h"

namespace bench {

Result runBullet(int n) {
    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher(&configuration);
    btDbvtBroadphase broadphase;
    btSequentialImpulseConstraintSolver solver;
    btDiscreteDynamicsWorld world(&dispatcher, &broadphase, &solver, &configuration);
    world.setGravity(btVector3(0, -9.81f, 0));

    const float size = floorSize(n);
    btBoxShape floorShape(btVector3(size / 2, 0.5f, size / 2));
    btDefaultMotionState floorState(btTransform(btQuaternion::getIdentity(), btVector3(0, -0.5f, 0)));
    btRigidBody floor(btRigidBody::btRigidBodyConstructionInfo(0, &floorState, &floorShape));
    world.addRigidBody(&floor);

    btBoxShape boxShape(btVector3(0.5f, 0.5f, 0.5f));
    btVector3 inertia;
    boxShape.calculateLocalInertia(1, inertia);
    std::vector<std::unique_ptr<btDefaultMotionState>> states;
    std::vector<std::unique_ptr<btRigidBody>> boxes;
    for (int i = 0; i < n; ++i) {
        float x, z;
        place(i, n, x, z);
        states.push_back(std::make_unique<btDefaultMotionState>(
            btTransform(btQuaternion::getIdentity(), btVector3(x, dropHeight + 0.5f, z))));
        boxes.push_back(std::make_unique<btRigidBody>(
            btRigidBody::btRigidBodyConstructionInfo(1, states.back().get(), &boxShape, inertia)));
        world.addRigidBody(boxes.back().get());
    }
    Result r = measure([&world] { world.stepSimulation(step, 1, step); });
    for (auto& b : boxes) {
        if (b->isActive()) ++r.awake;
        world.removeRigidBody(b.get());
    }
    world.removeRigidBody(&floor);
    return r;
}

}  // namespace bench
