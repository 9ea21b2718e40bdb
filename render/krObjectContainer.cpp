// Containers: box queries, name searches and the view test shared by objects and splits.
#include "render/krObjectContainer.h"

#include "platform/krSystem.h"
#include "render/krVideo.h"
#include "script/krClassInfo.h"

const krClassInfo krObjectContainer::info = {"krObjectContainer", "krModule", nullptr, {}, {},
                                             "what has a place and bounds in the 3D world: objects and splits"};

bool krObjectContainer::collectObjects(krCollectResult& result, const krBox& query) {
    if (!box.overlaps(query)) return false;
    collectChildren(result, query);
    return true;
}

bool krObjectContainer::collectChildren(krCollectResult& result, const krBox& query) {
    bool any = false;
    // A tree deeper than the stack allows is searched as deep as it can be.
    if (krSystem::stackLow()) return false;
    // By index against the present size: the walk is plain, but cheap to keep safe.
    for (size_t i = children.size(); i-- > 0;) {
        if (i >= children.size()) continue;
        if (auto* c = dynamic_cast<krObjectContainer*>(children[i]))
            if (c->collectObjects(result, query)) any = true;
    }
    return any;
}

krObject* krObjectContainer::findObject(const std::string& name) { return findInChildren(name); }

krObject* krObjectContainer::findInChildren(const std::string& name) {
    if (krSystem::stackLow()) return nullptr;
    for (size_t i = children.size(); i-- > 0;) {
        if (auto* c = dynamic_cast<krObjectContainer*>(children[i]))
            if (krObject* found = c->findObject(name)) return found;
    }
    return nullptr;
}

bool krObjectContainer::sphereInView(const krVector3& centre, float minDistance, float maxDistance) const {
    if (!video) return true;
    const krVector3 d = video->getEye() - centre;
    const float q = lengthSquared(d);
    if (q > maxDistance * maxDistance) return false;
    if (q < minDistance * minDistance) return false;
    if (q < radius * radius) return true;

    // Along the view axis: behind the eye, or beyond the far end of the view.
    const krVector3& view = video->getViewDirection();
    const float l = length(view);
    if (l == 0) return true;
    const float t = -dot(d, view) / l;
    if (t < -radius) return false;
    if (t - radius > l) return false;

    // Across it: the cone's width at that depth, widened by the radius on both counts.
    const float cone = video->getViewCone();
    const float w = (cone * radius + t) * cone + radius;
    return lineDistanceSquared(view, d) <= w * w;
}
