// Splits: culling and box queries of whole branches of a spatial tree.
#include "render/krSplit.h"

#include <limits>

#include "script/krClassInfo.h"

const krClassInfo krSplit::info = {"krSplit", "krObjectContainer", nullptr, {}, {},
                                   "a node of a loaded spatial tree: a box around further splits and objects"};

bool krSplit::isInView() {
    return sphereInView(position, 0, std::numeric_limits<float>::infinity());
}

bool krSplit::collectObjects(krCollectResult& result, const krBox& query) {
    if (!box.overlaps(query)) return false;
    return collectChildren(result, query);
}
