// The skeleton and animation file layouts: chunk ids and the fixed records inside them, read by
// the skeleton and written by the content tools and the tests from this one description.
//
// A skeleton file is a root record (name, bone count) followed by one chunk per bone, parents
// before their children; a bone may carry the names of sub-objects that follow it. An animation
// file is a root record (name, track count, duration) followed by one track per bone it moves,
// each a run of key chunks evenly spaced over the duration.
#pragma once

#include <cstdint>

namespace krSkeletonFile {

constexpr uint32_t skeletonId = 0x2200000;
constexpr uint32_t boneId = 0x2201000;
constexpr uint32_t attachmentId = 0x2201010;

constexpr uint32_t animationId = 0x2300000;
constexpr uint32_t trackId = 0x2301000;
constexpr uint32_t keyId = 0x2301010;

// Meshes name a bone by a 16-bit index, so a skeleton with more bones could not be skinned.
constexpr int32_t maxBones = 65536;

struct SkeletonHeader {
    char name[32];
    int32_t boneCount;
};
static_assert(sizeof(SkeletonHeader) == 36);

struct BoneRecord {
    char name[32];
    int32_t parent;  // negative for a root
    float position[3];
    float rotation[4];  // quaternion x, y, z, w
};
static_assert(sizeof(BoneRecord) == 64);

// The payload of an attachment chunk: the name of a sub-object that follows the bone.
struct AttachmentRecord {
    char name[32];
};
static_assert(sizeof(AttachmentRecord) == 32);

struct AnimationHeader {
    char name[32];
    int32_t trackCount;
    float duration;  // seconds
};
static_assert(sizeof(AnimationHeader) == 40);

struct TrackHeader {
    char name[32];  // of the bone
    int32_t keyCount;
};
static_assert(sizeof(TrackHeader) == 36);

struct KeyRecord {
    float position[3];
    float rotation[4];
};
static_assert(sizeof(KeyRecord) == 28);

}  // namespace krSkeletonFile
