// The table of known chunk ids, one line per id, grouped by family (the id's top byte).
#include "krChunkNames.h"

#include "core/krPackFormat.h"

namespace {

const krChunkName names[] = {
    // 0x1: pack archives
    {krPack::rootId, "pack", 0},
    {krPack::contentId, "pack content", 0},
    {krPack::directoryId, "pack directory", krPack::directoryReserved},
    {krPack::storedId, "stored entry", krChunkName::leaf},
    {krPack::zlibId, "zlib entry", krChunkName::leaf},
};

}  // namespace

const krChunkName* krFindChunkName(uint32_t id) {
    for (const krChunkName& n : names)
        if (n.id == id) return &n;
    return nullptr;
}
