// krCollisionObject: a scene object with a collision shape, the base of level geometry and of
// rigid bodies. It holds the shape's records, answers the contact questions of the world (by
// default with nothing), and takes damage.
#pragma once

#include <cstdint>

#include "core/krMatrix.h"
#include "physics/krCollisionData.h"
#include "render/krObject.h"

class krPhysics;
class krPhysObj;
class krPhysRay;
struct krClassInfo;
struct krContactTable;
struct krRayHit;

// Collision styles (the script constants NONE, BOX, SPHERE, MESH).
inline constexpr int32_t krCollNone = 0;
// The object's local box, as eight corners.
inline constexpr int32_t krCollBox = 1;
// The bounding radius around the position.
inline constexpr int32_t krCollSphere = 2;
// A triangle mesh.
inline constexpr int32_t krCollMesh = 3;

// Kinds of damage (the script constants DAMAGE_BULLET, DAMAGE_COLLISION).
inline constexpr int32_t krDamageBullet = 1;
inline constexpr int32_t krDamageCollision = 2;

class krCollisionObject : public krObject {
public:
    explicit krCollisionObject(krModule* owner) : krObject(owner) {}
    ~krCollisionObject() override;
    const char* className() const override { return "krCollisionObject"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    void deinit() override;
    // A generated shape gives an object without a style its own: a box, or a sphere of the
    // bounding radius.
    void genMeshBox(const krVector3& size) override;
    void genMeshEllipsoid(const krVector3& size, int32_t segments) override;

    // Makes collisionGeometry hold the eight corners of localBox, moved by m.
    virtual void transformBox(const krMatrix& m);
    // Moves the body coordinates of both shape records to world coordinates by m.
    virtual void transformMesh(const krMatrix& m);
    // The contact questions of the world: this object is the candidate, body the moving one of
    // the style in the name. Each appends what it finds to contacts.
    virtual void collideSphere(krContactTable& contacts, krPhysObj* body);
    virtual void collideBox(krContactTable& contacts, krPhysObj* body);
    virtual void collideMesh(krContactTable& contacts, krPhysObj* body);
    // Where along the ray this object is hit first, as a fraction of its segment, with hit
    // filled in; -1 for no hit.
    virtual float collideRay(const krPhysRay& ray, krRayHit& hit);
    // Tells the scripts through "damage". source is what caused it; point is an arm from the
    // object's position.
    virtual void applyDamage(krModule* source, const krVector3& point, int32_t kind, int32_t subkind, float amount);
    virtual void setCollStyle(int32_t style) { collStyle = style; }

    // How messages name the object: its name in quotes, or its class.
    std::string describe() const { return name.empty() ? std::string("a ") + className() : "'" + name + "'"; }
    // The world this object is a direct child of, or null.
    krPhysics* getWorld() const { return world; }

    // Root of the triangle tree; only level geometry builds one.
    krPhysItem* tree = nullptr;
    int32_t collStyle = krCollNone;
    // The shape of contacts.
    krCollisionData* collisionGeometry = nullptr;
    // The shape that rays meet on a body: the same record as collisionGeometry or one of its own.
    krCollisionData* rayGeometry = nullptr;

protected:
    // A shape record from a mesh of at least one triangle; null, after a report, for a mesh
    // with corners that are not finite numbers. Level geometry passes its world matrix and
    // gets world vertices only; bodies pass null and keep the body coordinates as well.
    krCollisionData* makeShape(const krMesh& mesh, const krMatrix* toWorld);
    // Deletes the ray shape if it is a record of its own, and forgets it.
    void dropRayGeometry();

private:
    friend class krPhysics;
    friend class krBroadPhase;
    // Set and cleared by the world whose child this is.
    krPhysics* world = nullptr;
    // This object's place in the world's broad phase.
    int32_t broadSlot = -1;
};
