// Level geometry: the collision mesh with its tree, and the contact tests against it.
#include "physics/krStaticObj.h"

#include "physics/krContact.h"
#include "physics/krNarrowPhase.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysRay.h"
#include "render/krMesh.h"
#include "script/krClassInfo.h"

const krClassInfo krStaticObj::info = {"krStaticObj", "krCollisionObject", "new_staticObject", {}, {}};

krStaticObj::krStaticObj(krModule* owner) : krCollisionObject(owner) { enabled = false; }

bool krStaticObj::isInView() {
    if (alwaysInView) return true;
    // Level geometry sits where its position says in the world, whatever holds it.
    return sphereInView(position, minDrawDistance, maxDrawDistance);
}

krObject* krStaticObj::createChild(int32_t type, krModule* o) {
    auto* child = new krStaticObj(o);
    child->alwaysInView = (type & 1) != 0;
    child->attach();
    return child;
}

void krStaticObj::addMesh(krMesh& mesh) {
    if (collStyle == krCollNone) {
        collStyle = krCollMesh;
        if (mesh.indexCount >= 3) {
            if (tree) tree->release();
            tree = nullptr;
            dropRayGeometry();
            delete collisionGeometry;
            collisionGeometry = makeShape(mesh, &matrix);
            if (collisionGeometry && !collisionGeometry->triangles.empty())
                tree = krBuildTree(*collisionGeometry, 0, static_cast<int32_t>(collisionGeometry->triangles.size()) - 1,
                                   box);
        }
    }
    krCollisionObject::addMesh(mesh);
}

void krStaticObj::query(krTriangleList& list, const krPhysObj* body) const {
    list.count = 0;
    if (tree && collisionGeometry) tree->collect(list, body->nextBox);
}

namespace {

krNarrow::Triangle triangleOf(const krCollisionData& data, const krPhysTriangle& t) {
    return {*t.corner0, *t.corner1, *t.corner2, data.surfaceOf(t)};
}

}  // namespace

void krStaticObj::collideSphere(krContactTable& contacts, krPhysObj* body) {
    if (collStyle == krCollSphere) {
        krNarrow::sphereSphere(contacts, body, this, position, radius, false);
    } else if (collStyle == krCollMesh) {
        krTriangleList list;
        query(list, body);
        for (int32_t i = 0; i < list.count && !contacts.full(); ++i)
            krNarrow::sphereTriangle(contacts, body, this, triangleOf(*collisionGeometry, *list.triangles[i]));
    }
}

void krStaticObj::collideBox(krContactTable& contacts, krPhysObj* body) {
    const krVector3* corners = body->collisionGeometry ? body->collisionGeometry->boxCorners() : nullptr;
    if (!corners) return;
    if (collStyle == krCollSphere) {
        krNarrow::boxSphere(contacts, body, this, corners, position, radius);
    } else if (collStyle == krCollMesh) {
        krTriangleList list;
        query(list, body);
        for (int32_t i = 0; i < list.count && !contacts.full(); ++i)
            krNarrow::boxTriangle(contacts, body, this, corners, triangleOf(*collisionGeometry, *list.triangles[i]));
    }
}

void krStaticObj::collideMesh(krContactTable& contacts, krPhysObj* body) {
    const krCollisionData* bodyShape = body->collisionGeometry;
    if (!bodyShape || bodyShape->triangles.empty()) return;
    if (collStyle == krCollSphere) {
        for (const krPhysTriangle& u : bodyShape->triangles) {
            if (contacts.full()) break;
            krNarrow::triangleSphere(contacts, body, this, triangleOf(*bodyShape, u), position, radius);
        }
    } else if (collStyle == krCollMesh) {
        krTriangleList list;
        query(list, body);
        for (int32_t i = 0; i < list.count; ++i)
            for (const krPhysTriangle& u : bodyShape->triangles) {
                if (contacts.full()) return;
                krNarrow::triangleTriangle(contacts, body, this, triangleOf(*collisionGeometry, *list.triangles[i]),
                                           triangleOf(*bodyShape, u));
            }
    }
}

float krStaticObj::collideRay(const krPhysRay& ray, krRayHit& hit) {
    float best = krRayBestStart;
    if (collStyle == krCollSphere) {
        krRaySphere(ray, position, radius, best, hit);
    } else if (collStyle == krCollMesh && tree && collisionGeometry) {
        krTriangleList list;
        tree->collect(list, ray.box);
        for (int32_t i = 0; i < list.count; ++i) {
            const krPhysTriangle& t = *list.triangles[i];
            const krVector3 e1 = *t.corner1 - *t.corner0, e2 = *t.corner2 - *t.corner0;
            krRayFlat(ray, *t.corner0, e1, e2, normalized(cross(e1, e2)), t.material, false, best, hit);
        }
    } else {
        return -1.0f;
    }
    if (!(best <= 1.0f)) return -1.0f;
    hit.object = this;
    return best;
}
