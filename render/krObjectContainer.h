// krObjectContainer: what has a place and a bounding volume in the 3D world, the common base of
// objects and of the splits of a loaded spatial tree. Box queries and name searches descend
// through containers only, so a tree of splits prunes whole branches at once.
#pragma once

#include <cstdint>
#include <string>

#include "core/krBox.h"
#include "core/krModule.h"
#include "core/krVector3.h"

class krObject;

// The candidates of one box query. The physics owns the bound: a query never asks for more
// objects than its contact pass can work through.
struct krCollectResult {
    static constexpr int32_t capacity = 256;
    krObject* objects[capacity];
    int32_t count = 0;

    // A full record takes no more; the query still answers as if it had.
    void add(krObject* object) {
        if (count < capacity) objects[count++] = object;
    }
};

class krObjectContainer : public krModule {
public:
    explicit krObjectContainer(krModule* owner) : krModule(owner) {}
    const char* className() const override { return "krObjectContainer"; }
    static const krClassInfo info;

    // Gathers the objects whose boxes overlap box; true when this container did overlap.
    virtual bool collectObjects(krCollectResult& result, const krBox& box);
    // The first object of that name in this subtree, last child first; null if there is none.
    virtual krObject* findObject(const std::string& name);

    // Relative to the owner.
    krVector3 position;
    // Bounds in the space the load gave them: an object's vertices went in through its world
    // matrix, a split's box comes from the file.
    krBox box;
    float radius = 0;

protected:
    // Collects from the child containers, last child first; true when any of them overlapped.
    bool collectChildren(krCollectResult& result, const krBox& box);
    krObject* findInChildren(const std::string& name);
    // The sphere (centre, radius) against the current view of the video: further than
    // maxDistance or nearer than minDistance is out, an eye inside the sphere is in, otherwise
    // the sphere must reach into the view cone between the eye and the far plane. Without a
    // video every container counts as in view.
    bool sphereInView(const krVector3& centre, float minDistance, float maxDistance) const;
};
