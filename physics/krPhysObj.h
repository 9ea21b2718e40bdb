// krPhysObj: the rigid body of a world. The world turns its accumulated force and torque into
// velocity, asks it to propose a next pose, tests the proposal against everything it could hit
// and answers contacts one at a time; the body commits the proposal in its own update, the last
// thing of a substep. On clients a body follows the states a server streams instead.
#pragma once

#include <cstdint>

#include "core/krBox.h"
#include "core/krQuat.h"
#include "physics/krCollisionObject.h"
#include "physics/krNetObject.h"

// A locked axis has this mass or moment of inertia: dividing by it leaves the axis as good as
// immovable while every product stays finite.
inline constexpr float krLockedMass = 1e20f;
static_assert(std::bit_cast<uint32_t>(krLockedMass) == 0x60AD78EC);

// The heaviest body there can be: masses beyond this times the accelerations of a world leave
// the float range.
inline constexpr float krMaxMass = 1e30f;

// The interpolation of a received state: the body moves from the pose it had when the state came
// to the pose the state names, at rate (1 / seconds), with t running on past 1 up to 3.
struct krNetTrack {
    krVector3 fromPosition, toPosition;
    krQuat fromOrientation = krQuat::identity, toOrientation = krQuat::identity;
    float rate = 0;
    float t = 0;
};

class krPhysObj : public krCollisionObject, public krNetObject {
public:
    // The grid box starts empty, so that the first committed move enters the body in every cell
    // of its box.
    explicit krPhysObj(krModule* owner) : krCollisionObject(owner) { currentBox.makeEmpty(); }
    ~krPhysObj() override;
    const char* className() const override { return "krPhysObj"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool update(float elapsed) override;
    // Takes the old owner's velocity at the body's place before it moves below the new one.
    void setOwner(krModule* newOwner) override;
    krVector3 getVelocityAt(const krVector3& arm) override;
    // Tests the proposed box, then adds itself before its children.
    bool collectObjects(krCollectResult& result, const krBox& box) final;
    void addMesh(krMesh& mesh) override;
    void genMeshBox(const krVector3& size) override;
    void genMeshEllipsoid(const krVector3& size, int32_t segments) override;
    // Setting the pose from outside sets the proposal (and a received track) too, so the body
    // does not jump back when the proposal is committed.
    void setPosition(const krVector3& p) override;
    void setOrientation(const krQuat& q) override;
    void transformBox(const krMatrix& m) override;
    void transformMesh(const krMatrix& m) override;
    void collideSphere(krContactTable& contacts, krPhysObj* body) override;
    void collideBox(krContactTable& contacts, krPhysObj* body) override;
    void collideMesh(krContactTable& contacts, krPhysObj* body) override;
    // A sphere by its bounding radius; a box or a mesh only with a ray shape.
    float collideRay(const krPhysRay& ray, krRayHit& hit) override;

    // Wakes the body: it is integrated and collided from the next substep on. A body of mass 0
    // cannot wake.
    virtual void activate();
    // Puts the body to sleep with zero velocities, and tells the scripts through "stop".
    virtual void stop();
    void writeState(uint8_t* buffer, int32_t& size, int32_t frame) override;
    void readState(const uint8_t* buffer, int32_t size, float lag) override;
    // Assigns the velocity without waking the body.
    virtual void setVelocityVector(const krVector3& v) { velocity = v; }
    virtual void setMass(float m);

    // force += f and torque += f x arm; wakes nothing.
    void addForceAt(const krVector3& f, const krVector3& arm) {
        force += f;
        torque += cross(f, arm);
    }
    // Turns force and torque into velocity over dt and clears them.
    void integrateForces(float dt);
    // Proposes the pose after dt at the present velocities, with the box around it.
    void predictMotion(float dt);
    // Inertia of the solid box of the bounds, and the locks applied.
    void recomputeInertia();
    // A state that is not a finite number in any field that moves the body.
    bool isPoisoned() const;

    krVector3 velocity;
    krVector3 angularVelocity;
    krVector3 force;
    krVector3 torque;
    // Mass per world axis, or krLockedMass on a locked axis.
    krVector3 linearMass;
    // Moments about the body axes, or krLockedMass on a locked axis.
    krVector3 inertia;
    // Body-local arm at which gravity acts.
    krVector3 weightpoint;
    float mass = 0;
    bool inQueue = false;
    bool active = false;
    // Bits 0, 1, 2 lock rotation about, and motion along, x, y, z.
    uint8_t rotationLock = 0;
    uint8_t translationLock = 0;
    // Calm time in seconds; only activate sets it back.
    float restTime = 0;
    krVector3 nextPosition;
    // The position's grid base of the network's relative records: a multiple of 128 per axis.
    krVector3 netBase;
    krQuat nextOrientation = krQuat::identity;
    // The box the body stands under in the world's grid.
    krBox currentBox;
    // The box of the proposed pose.
    krBox nextBox;
    krNetTrack* netTrack = nullptr;
    int32_t netWrites = 0;
    // False: the body neither hits nor is hit by other bodies; level geometry still stops it.
    bool nonstaticCollisions = true;
    // Drag on force and torque, per unit of velocity.
    float airResistance = 0;

private:
    friend class krPhysGrid;
    // Cells of the world's grid the body is entered in.
    int32_t gridCells = 0;
    // Where the proposed box goes after a transform: around the collision vertices, or the
    // bounding sphere where there are none.
    void boxAroundShape();
};
