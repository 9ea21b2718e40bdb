// Collision objects: their script members, shape records, default contact answers and damage.
#include "physics/krCollisionObject.h"

#include <cmath>

#include "core/krMain.h"
#include "physics/krPhysics.h"
#include "render/krMesh.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVObject.h"
#include "vehicles/krController.h"

namespace {

const krMemberInfo collisionMembers[] = {
    {"collstyle", krRead | krWrite, "int", "collision shape: NONE, BOX, SPHERE or MESH"},
    {"radius", krRead | krWrite, "float", "bounding sphere; the shape of SPHERE; a finite number of at least 0"},
};

const krEventInfo collisionEvents[] = {
    {"damage", "(controller, kind, subkind, amount)",
     "something hit the object: the driver behind it or null, DAMAGE_BULLET or DAMAGE_COLLISION, a number of "
     "the kind's own, and how hard"},
};

}  // namespace

const krClassInfo krCollisionObject::info = {"krCollisionObject", "krObject", nullptr, collisionMembers,
                                             collisionEvents};

krVariant* krCollisionObject::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "collstyle") return new krVInt(collStyle);
    return krObject::getMember(member, caller, args);
}

void krCollisionObject::setMember(const std::string& member, krVariant* value) {
    if (member == "collstyle") {
        const int32_t style = value->toInt();
        if (style < krCollNone || style > krCollMesh)
            krMain::instance()->errorMsg("collstyle must be NONE, BOX, SPHERE or MESH, not " + std::to_string(style));
        else
            setCollStyle(style);
    } else if (member == "radius") {
        const float r = value->toFloat();
        if (!(std::isfinite(r) && r >= 0))
            krMain::instance()->errorMsg("radius must be a finite number of at least 0, not " + value->toString());
        else
            radius = r;
    } else {
        krObject::setMember(member, value);
    }
}

krCollisionObject::~krCollisionObject() {
    if (world) world->detach(this);
    if (tree) tree->release();
    dropRayGeometry();
    delete collisionGeometry;
}

void krCollisionObject::deinit() {
    krObject::deinit();
    // Normally leaving the owner's child list has detached it; a teardown that a handler began
    // while the world was clearing its children skips that.
    if (world) world->detach(this);
}

void krCollisionObject::dropRayGeometry() {
    if (rayGeometry != collisionGeometry) delete rayGeometry;
    rayGeometry = nullptr;
}

void krCollisionObject::genMeshBox(const krVector3& size) {
    krObject::genMeshBox(size);
    if (collStyle == krCollNone) setCollStyle(krCollBox);
}

void krCollisionObject::genMeshEllipsoid(const krVector3& size, int32_t segments) {
    krObject::genMeshEllipsoid(size, segments);
    if (collStyle == krCollNone) setCollStyle(krCollSphere);
}

void krCollisionObject::transformBox(const krMatrix& m) {
    if (!collisionGeometry) {
        collisionGeometry = new krCollisionData;
        collisionGeometry->vertices.resize(8);
        if (!rayGeometry) rayGeometry = collisionGeometry;
    }
    // A mesh shape stays what it is; the box tests find no corners in it.
    if (!collisionGeometry->boxCorners()) return;
    krVector3* corners = collisionGeometry->vertices.data();
    // Corner i takes x from bit 1, y from bit 2 and z from bit 0: clear is min, set is max.
    for (int i = 0; i < 8; ++i) {
        const krVector3 local{i & 2 ? localBox.max.x : localBox.min.x, i & 4 ? localBox.max.y : localBox.min.y,
                              i & 1 ? localBox.max.z : localBox.min.z};
        corners[i] = transformPoint(m, local);
    }
}

void krCollisionObject::transformMesh(const krMatrix& m) {
    for (krCollisionData* data : {collisionGeometry, rayGeometry}) {
        if (!data || (data == rayGeometry && rayGeometry == collisionGeometry)) continue;
        const size_t n = std::min(data->sourceVertices.size(), data->vertices.size());
        for (size_t i = 0; i < n; ++i) data->vertices[i] = transformPoint(m, data->sourceVertices[i]);
    }
}

void krCollisionObject::collideSphere(krContactTable&, krPhysObj*) {}
void krCollisionObject::collideBox(krContactTable&, krPhysObj*) {}
void krCollisionObject::collideMesh(krContactTable&, krPhysObj*) {}

float krCollisionObject::collideRay(const krPhysRay&, krRayHit&) { return -1.0f; }

void krCollisionObject::applyDamage(krModule* source, const krVector3&, int32_t kind, int32_t subkind, float amount) {
    // Only what controls something (a player, a driver) can be blamed for damage.
    krModule* blamed = dynamic_cast<krController*>(source) ? source : nullptr;
    krVariant* args[] = {new krVObject(blamed), new krVInt(kind), new krVInt(subkind), new krVFloat(amount)};
    if (krVariant* r = fireEvent("damage", krArgs(std::begin(args), std::end(args)))) r->release();
    for (krVariant* a : args) a->release();
}

krCollisionData* krCollisionObject::makeShape(const krMesh& mesh, const krMatrix* toWorld) {
    if (mesh.indexCount < 3) return nullptr;
    auto* data = new krCollisionData;
    const auto n = static_cast<size_t>(mesh.vertexCount);
    data->vertices.resize(n);
    if (!toWorld) data->sourceVertices.resize(n);
    for (size_t i = 0; i < n; ++i) {
        const krVector3& p = mesh.vertices[i].position;
        const krVector3 w = toWorld ? transformPoint(*toWorld, p) : p;
        // One corner that is not a number would spread through every contact it takes part in.
        if (!isFinite(w)) {
            delete data;
            krMain::instance()->errorMsg("Collision mesh of " + describe() +
                                         " has a corner that is not a finite number; the mesh is left out");
            return nullptr;
        }
        data->vertices[i] = w;
        if (!toWorld) data->sourceVertices[i] = p;
    }
    const int32_t count = mesh.indexCount / 3;
    data->triangles.resize(static_cast<size_t>(count));
    for (int32_t t = 0; t < count; ++t) {
        krPhysTriangle& tri = data->triangles[static_cast<size_t>(t)];
        tri.corner0 = &data->vertices[mesh.indices[3 * t]];
        tri.corner1 = &data->vertices[mesh.indices[3 * t + 1]];
        tri.corner2 = &data->vertices[mesh.indices[3 * t + 2]];
    }
    data->materialPhysics.resize(mesh.materials.size());
    for (size_t i = 0; i < mesh.materials.size(); ++i) {
        const krMaterial& m = mesh.materials[i];
        data->materialPhysics[i] = m.surface;
        // The triangles whose three indices all lie in the material's range.
        const int64_t first = (int64_t(m.firstIndex) + 2) / 3;
        const int64_t end = std::min<int64_t>((int64_t(m.firstIndex) + m.indexCount) / 3, count);
        for (int64_t t = first; t < end; ++t) data->triangles[static_cast<size_t>(t)].material = static_cast<int32_t>(i);
    }
    return data;
}
