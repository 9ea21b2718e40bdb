// krStaticObj: immovable level geometry. Its first mesh becomes a triangle mesh in world
// coordinates with a bounding tree, which bodies query by their proposed boxes. It never moves
// after its mesh loads, and it never updates.
#pragma once

#include "physics/krCollisionObject.h"

class krStaticObj : public krCollisionObject {
public:
    explicit krStaticObj(krModule* owner);
    const char* className() const override { return "krStaticObj"; }
    static const krClassInfo info;

    bool isInView() override;
    // Sub-objects and leaves of a level are level geometry too; bit 0 of type makes them always
    // count as in view.
    krObject* createChild(int32_t type, krModule* owner) override;
    void addMesh(krMesh& mesh) override;
    void collideSphere(krContactTable& contacts, krPhysObj* body) override;
    void collideBox(krContactTable& contacts, krPhysObj* body) override;
    void collideMesh(krContactTable& contacts, krPhysObj* body) override;
    // A sphere by its bounding radius, or the triangles of the tree in the ray's box. A box is
    // invisible to rays, as it is to bodies.
    float collideRay(const krPhysRay& ray, krRayHit& hit) override;

    bool alwaysInView = false;

private:
    // The triangles of the tree that the body's proposed box reaches.
    void query(krTriangleList& list, const krPhysObj* body) const;
};
