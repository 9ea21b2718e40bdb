// The table of known chunk ids, one line per id, grouped by family (the id's top byte).
#include "krChunkNames.h"

#include <cstdio>
#include <cstring>

#include "core/krPackFormat.h"
#include "render/krFont.h"
#include "render/krMeshFile.h"
#include "render/krSkeletonFile.h"

namespace {

// The record at the payload's start, when the payload holds one whole.
template <typename T>
bool recordOf(const uint8_t* payload, uint32_t size, T& out) {
    if (size < sizeof(T)) return false;
    std::memcpy(&out, payload, sizeof(T));
    return true;
}

template <typename... Args>
std::string format(const char* pattern, Args... args) {
    char text[160];
    std::snprintf(text, sizeof text, pattern, args...);
    return text;
}

std::string skeleton(const uint8_t* p, uint32_t size) {
    krSkeletonFile::SkeletonHeader h;
    if (!recordOf(p, size, h)) return {};
    return format("'%s', %d bones", krMeshFile::getName(h.name).c_str(), h.boneCount);
}

std::string bone(const uint8_t* p, uint32_t size) {
    krSkeletonFile::BoneRecord r;
    if (!recordOf(p, size, r)) return {};
    return format("'%s', parent %d, at (%g, %g, %g), turned (%g, %g, %g, %g)", krMeshFile::getName(r.name).c_str(),
                  r.parent, r.position[0], r.position[1], r.position[2], r.rotation[0], r.rotation[1], r.rotation[2],
                  r.rotation[3]);
}

std::string attachment(const uint8_t* p, uint32_t size) {
    krSkeletonFile::AttachmentRecord r;
    if (!recordOf(p, size, r)) return {};
    return format("'%s'", krMeshFile::getName(r.name).c_str());
}

std::string animation(const uint8_t* p, uint32_t size) {
    krSkeletonFile::AnimationHeader h;
    if (!recordOf(p, size, h)) return {};
    return format("'%s', %d tracks, %g s", krMeshFile::getName(h.name).c_str(), h.trackCount, h.duration);
}

std::string track(const uint8_t* p, uint32_t size) {
    krSkeletonFile::TrackHeader h;
    if (!recordOf(p, size, h)) return {};
    return format("bone '%s', %d keys", krMeshFile::getName(h.name).c_str(), h.keyCount);
}

std::string key(const uint8_t* p, uint32_t size) {
    krSkeletonFile::KeyRecord k;
    if (!recordOf(p, size, k)) return {};
    return format("at (%g, %g, %g), turned (%g, %g, %g, %g)", k.position[0], k.position[1], k.position[2],
                  k.rotation[0], k.rotation[1], k.rotation[2], k.rotation[3]);
}

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

    // 0x2: skeletons and animations.
    {krSkeletonFile::skeletonId, "skeleton", sizeof(krSkeletonFile::SkeletonHeader), skeleton},
    {krSkeletonFile::boneId, "bone", sizeof(krSkeletonFile::BoneRecord), bone},
    {krSkeletonFile::attachmentId, "attachment", krChunkName::leaf, attachment},
    {krSkeletonFile::animationId, "animation", sizeof(krSkeletonFile::AnimationHeader), animation},
    {krSkeletonFile::trackId, "track", sizeof(krSkeletonFile::TrackHeader), track},
    {krSkeletonFile::keyId, "key", krChunkName::leaf, key},

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
