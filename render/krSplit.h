// krSplit: a node of a loaded spatial tree. It has a box and a sphere from the file and nothing
// else; its children are further splits and the objects of the leaves.
#pragma once

#include "render/krObjectContainer.h"

class krSplit : public krObjectContainer {
public:
    explicit krSplit(krModule* owner) : krObjectContainer(owner) {}
    const char* className() const override { return "krSplit"; }
    static const krClassInfo info;

    // Its position is already in world space: the file places splits, nothing moves them.
    bool isInView() override;
    // A split is no candidate itself; it only counts when one of its children was.
    bool collectObjects(krCollectResult& result, const krBox& box) override;
};
