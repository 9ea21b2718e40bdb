// The table of known chunk ids, one line per id, grouped by family (the id's top byte).
#include "krChunkNames.h"

#include "core/krPackFormat.h"
#include "render/krFont.h"
#include "render/krMeshFile.h"

namespace {

const krChunkName names[] = {
    // 0x1: pack archives
    {krPack::rootId, "pack", 0},
    {krPack::contentId, "pack content", 0},
    {krPack::directoryId, "pack directory", krPack::directoryReserved},
    {krPack::storedId, "stored entry", krChunkName::leaf},
    {krPack::zlibId, "zlib entry", krChunkName::leaf},

    // 0x2: mesh files and split trees. The vertex records come before the weights, in a number
    // the payload gives, so the dump shows vertices as plain data.
    {krMeshFile::objectId, "object", sizeof(krMeshFile::ObjectHeader)},
    {krMeshFile::plainMeshId, "mesh", 0},
    {krMeshFile::hullMeshId, "hull mesh", 0},
    {krMeshFile::rayMeshId, "ray mesh", 0},
    {krMeshFile::drawnMeshId, "drawn mesh", 0},
    {krMeshFile::drawnMeshId2, "drawn mesh 2", 0},
    {krMeshFile::drawnMeshId3, "drawn mesh 3", 0},
    {krMeshFile::plainMeshId2, "mesh 2", 0},
    {krMeshFile::verticesId, "vertices", krChunkName::leaf},
    {krMeshFile::weightsId, "weights", krChunkName::leaf},
    {krMeshFile::facesId, "faces", krChunkName::leaf},
    {krMeshFile::materialsId, "materials", krMeshFile::countSize},
    {krMeshFile::materialId, "material", sizeof(krMeshFile::MaterialRecord)},
    {krMeshFile::diffuseSlotId, "diffuse texture", krChunkName::leaf},
    {krMeshFile::normalSlotId, "normal texture", krChunkName::leaf},
    {krMeshFile::specularSlotId, "specular texture", krChunkName::leaf},
    {krMeshFile::splitTreeId, "split tree", 0},
    {krMeshFile::splitId, "split", sizeof(krMeshFile::SplitRecord)},
    {krMeshFile::leafId, "leaf", sizeof(krMeshFile::LeafRecord)},

    // 0x3: fonts
    {krFontFile::rootId, "font", 0},
    {krFontFile::glyphsId, "glyph table", krChunkName::leaf},
};

}  // namespace

const krChunkName* krFindChunkName(uint32_t id) {
    for (const krChunkName& n : names)
        if (n.id == id) return &n;
    return nullptr;
}
