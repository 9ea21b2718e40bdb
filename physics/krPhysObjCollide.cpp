// A body as the candidate of another body's contact tests. Bodies meet each other only when both
// take part in collisions between bodies.
#include "physics/krContact.h"
#include "physics/krNarrowPhase.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysRay.h"

namespace {

krNarrow::Triangle triangleOf(const krCollisionData& data, const krPhysTriangle& t) {
    return {*t.corner0, *t.corner1, *t.corner2, data.surfaceOf(t)};
}

bool meshOf(const krCollisionObject* o) { return o->collisionGeometry && !o->collisionGeometry->triangles.empty(); }

const krVector3* cornersOf(const krCollisionObject* o) {
    return o->collisionGeometry ? o->collisionGeometry->boxCorners() : nullptr;
}

}  // namespace

void krPhysObj::collideSphere(krContactTable& contacts, krPhysObj* body) {
    if (!nonstaticCollisions || !body->nonstaticCollisions) return;
    if (collStyle == krCollSphere) {
        krNarrow::sphereSphere(contacts, body, this, position, radius, true);
    } else if (collStyle == krCollBox) {
        if (const krVector3* corners = cornersOf(this)) krNarrow::sphereBox(contacts, body, this, corners);
    } else if (collStyle == krCollMesh && meshOf(this)) {
        for (const krPhysTriangle& t : collisionGeometry->triangles) {
            if (contacts.full()) break;
            krNarrow::sphereTriangle(contacts, body, this, triangleOf(*collisionGeometry, t));
        }
    }
}

void krPhysObj::collideBox(krContactTable& contacts, krPhysObj* body) {
    if (!nonstaticCollisions || !body->nonstaticCollisions) return;
    const krVector3* bodyCorners = cornersOf(body);
    if (!bodyCorners) return;
    if (collStyle == krCollSphere) {
        krNarrow::boxSphere(contacts, body, this, bodyCorners, position, radius);
    } else if (collStyle == krCollBox) {
        if (const krVector3* corners = cornersOf(this)) krNarrow::boxBox(contacts, body, this, bodyCorners, corners);
    } else if (collStyle == krCollMesh && meshOf(this)) {
        for (const krPhysTriangle& t : collisionGeometry->triangles) {
            if (contacts.full()) break;
            krNarrow::boxTriangle(contacts, body, this, bodyCorners, triangleOf(*collisionGeometry, t));
        }
    }
}

void krPhysObj::collideMesh(krContactTable& contacts, krPhysObj* body) {
    if (!nonstaticCollisions || !body->nonstaticCollisions || !meshOf(body)) return;
    const krCollisionData& bodyShape = *body->collisionGeometry;
    if (collStyle == krCollSphere) {
        for (const krPhysTriangle& u : bodyShape.triangles) {
            if (contacts.full()) break;
            krNarrow::triangleSphere(contacts, body, this, triangleOf(bodyShape, u), position, radius);
        }
    } else if (collStyle == krCollBox) {
        const krVector3* corners = cornersOf(this);
        if (!corners) return;
        for (const krPhysTriangle& u : bodyShape.triangles) {
            if (contacts.full()) break;
            krNarrow::triangleBox(contacts, body, this, triangleOf(bodyShape, u), corners);
        }
    } else if (collStyle == krCollMesh && meshOf(this)) {
        // Between two movable meshes, the box around a triangle spares most pairs their tests.
        for (const krPhysTriangle& t : collisionGeometry->triangles) {
            const krBox around = krBox::fromTriangle(*t.corner0, *t.corner1, *t.corner2);
            for (const krPhysTriangle& u : bodyShape.triangles) {
                if (contacts.full()) return;
                if (!around.contains(*u.corner0) && !around.contains(*u.corner1) && !around.contains(*u.corner2))
                    continue;
                krNarrow::triangleTriangle(contacts, body, this, triangleOf(*collisionGeometry, t),
                                           triangleOf(bodyShape, u));
            }
        }
    }
}

float krPhysObj::collideRay(const krPhysRay& ray, krRayHit& hit) {
    float best = krRayBestStart;
    if (collStyle == krCollSphere) {
        krRaySphere(ray, position, radius, best, hit);
    } else if (collStyle == krCollBox && rayGeometry) {
        const krVector3* corners = rayGeometry->boxCorners();
        if (!corners) return -1.0f;
        for (const auto& face : krNarrow::boxFaces) {
            const krVector3& c0 = corners[face[0]];
            const krVector3 e1 = corners[face[1]] - c0, e2 = corners[face[2]] - c0;
            krRayFlat(ray, c0, e1, e2, normalized(cross(e2, e1)), 0, true, best, hit);
        }
    } else if (collStyle == krCollMesh && rayGeometry) {
        for (const krPhysTriangle& t : rayGeometry->triangles) {
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
