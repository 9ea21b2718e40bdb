// Objects: pose and matrix, bounds, culling, tree queries and generated shapes.
#include "render/krObject.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "core/krMatrix.h"
#include "render/krMesh.h"
#include "render/krMeshShapes.h"
#include "render/krSkeleton.h"
#include "render/krVideo.h"
#include "script/krVObject.h"

krObject::krObject(krModule* o) : krObjectContainer(o), self(new krVObject(this)) {}

krObject::~krObject() {
    dropScript();
    self->release();
}

void krObject::deinit() {
    closed = true;
    dropScript();
    skeletonHandle = 0;
    krObjectContainer::deinit();
}

krSkeleton* krObject::getSkeleton() {
    return skeletonHandle ? dynamic_cast<krSkeleton*>(krScriptObject::fromHandle(skeletonHandle)) : nullptr;
}

void krObject::setSkeleton(krSkeleton* s) { skeletonHandle = s ? s->handle() : 0; }

krSkeleton* krObject::createSkeleton() {
    auto* s = new krSkeleton(this);
    s->attach();
    return s;
}

krSkeleton* krObject::loadSkeleton(const std::string& file) {
    // Only the object's own skeleton goes; one that a sub-object merely draws with stays its owner's.
    if (krSkeleton* old = getSkeleton(); old && old->getOwner() == this) old->dispose();
    setSkeleton(nullptr);
    krSkeleton* s = createSkeleton();
    if (!s) return nullptr;
    setSkeleton(s);
    s->load(file);
    return s;
}

void krObject::updateMatrix() {
    const krMatrix pose = krMatrix::fromQuatTranslation(rotation, position);
    matrix = owner ? multiply(pose, owner->getMatrix()) : pose;
}

bool krObject::update(float dt) {
    if (!boneDriven) updateMatrix();
    return krObjectContainer::update(dt);
}

void krObject::setOwner(krModule* newOwner) {
    // The base refuses to move a module below itself; refuse before the pose changes too.
    for (krModule* m = newOwner; m; m = m->getOwner())
        if (m == this) return;
    const krMatrix from = owner ? owner->getMatrix() : krMatrix(true);
    const krMatrix to = newOwner ? newOwner->getMatrix() : krMatrix(true);
    const krMatrix t = multiply(from, inverse(to));
    position = transformPoint(t, position);
    rotation = conjugate(relativeTo(t, conjugate(rotation)));
    const krMatrix pose = krMatrix::fromQuatTranslation(rotation, position);
    matrix = newOwner ? multiply(pose, to) : pose;
    krObjectContainer::setOwner(newOwner);
}

bool krObject::isInView() {
    if (boneDriven) return true;
    const krVector3 centre = owner ? transformPoint(owner->getMatrix(), position) : position;
    return sphereInView(centre, minDrawDistance, maxDrawDistance);
}

bool krObject::collectObjects(krCollectResult& result, const krBox& query) {
    if (!box.overlaps(query)) return false;
    collectChildren(result, query);
    result.add(this);
    return true;
}

krObject* krObject::findObject(const std::string& n) { return n == name ? this : findInChildren(n); }

krObject* krObject::createChild(int32_t, krModule* o) {
    auto* child = new krObject(o);
    child->attach();
    return child;
}

void krObject::onLoaded() {
    if (krVariant* r = fireEvent("loaded", noArgs)) r->release();
}

krObject* krObject::getEventTarget() {
    if (eventTargetHandle)
        if (auto* target = dynamic_cast<krObject*>(krScriptObject::fromHandle(eventTargetHandle))) return target;
    return this;
}

void krObject::setEventTarget(krObject* target) { eventTargetHandle = target && target != this ? target->handle() : 0; }

void krObject::setPosition(const krVector3& p) {
    position = p;
    updateMatrix();
}

void krObject::setOrientation(const krQuat& q) {
    rotation = q;
    updateMatrix();
}

void krObject::rotateAboutPivot(const krQuat& q, const krVector3& pivot) {
    rotation = q;
    position = initialPosition + pivot - rotate(q, pivot);
}

void krObject::restoreTransform() {
    position = initialPosition;
    rotation = initialRotation;
    updateMatrix();
}

void krObject::containObject(const krObject& child) {
    krBox childLocal = child.localBox;
    childLocal.offset(child.position);
    localBox.extend(childLocal);
    box.extend(child.box);
    radius = std::max(radius, length(child.position) + child.radius);
}

void krObject::addMesh(krMesh& mesh) {
    if (mesh.isDrawn() && video) video->createMeshItem(this, &mesh, mesh.kind);
}

void krObject::boundShape(const krVector3& size) {
    const krVector3 half = size * 0.5f;
    localBox = krBox(-half, half);
    box = localBox;
    box.offset(position);
    radius = length(half);
}

void krObject::nameShape(const char* kind, const krVector3& size) {
    if (!name.empty()) return;
    std::ostringstream text;
    text << kind << ' ' << size.x << 'x' << size.y << 'x' << size.z;
    name = text.str();
}

void krObject::genMeshBox(const krVector3& size) {
    krMesh mesh;
    krMakeBoxMesh(mesh, size);
    addMesh(mesh);
    boundShape(size);
    nameShape("Box", size);
}

void krObject::genMeshEllipsoid(const krVector3& size, int32_t segments) {
    krMesh mesh;
    krMakeEllipsoidMesh(mesh, size, segments);
    addMesh(mesh);
    boundShape(size);
    nameShape("Ellipsoid", size);
}
