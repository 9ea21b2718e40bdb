// Writing skeleton and animation files, for the content tools and the tests that build files by
// hand; the engine only reads them.
#pragma once

#include <string>
#include <vector>

#include "core/krQuat.h"
#include "render/krMeshFileWriter.h"
#include "render/krSkeletonFile.h"

// A bone as written.
struct krSkeletonFileBone {
    std::string name;
    int32_t parent = -1;
    krVector3 position;
    krQuat rotation = krQuat::identity;
    std::vector<std::string> attachments;
};

// A key as written; keys of a track lie evenly over the animation's duration.
struct krAnimationFileKey {
    krVector3 position;
    krQuat rotation = krQuat::identity;
};

struct krAnimationFileTrack {
    std::string bone;
    std::vector<krAnimationFileKey> keys;
};

inline void krWriteSkeleton(krChunkWriter& w, const std::string& name, const std::vector<krSkeletonFileBone>& bones) {
    krSkeletonFile::SkeletonHeader h{};
    krMeshFile::setName(h.name, name);
    h.boneCount = static_cast<int32_t>(bones.size());
    w.begin(krSkeletonFile::skeletonId);
    w.put(h);
    for (const krSkeletonFileBone& b : bones) {
        krSkeletonFile::BoneRecord r{};
        krMeshFile::setName(r.name, b.name);
        r.parent = b.parent;
        r.position[0] = b.position.x;
        r.position[1] = b.position.y;
        r.position[2] = b.position.z;
        r.rotation[0] = b.rotation.x;
        r.rotation[1] = b.rotation.y;
        r.rotation[2] = b.rotation.z;
        r.rotation[3] = b.rotation.w;
        w.begin(krSkeletonFile::boneId);
        w.put(r);
        for (const std::string& a : b.attachments) {
            krSkeletonFile::AttachmentRecord ar{};
            krMeshFile::setName(ar.name, a);
            w.begin(krSkeletonFile::attachmentId);
            w.put(ar);
            w.end();
        }
        w.end();
    }
    w.end();
}

inline void krWriteAnimation(krChunkWriter& w, const std::string& name, float duration,
                             const std::vector<krAnimationFileTrack>& tracks) {
    krSkeletonFile::AnimationHeader h{};
    krMeshFile::setName(h.name, name);
    h.trackCount = static_cast<int32_t>(tracks.size());
    h.duration = duration;
    w.begin(krSkeletonFile::animationId);
    w.put(h);
    for (const krAnimationFileTrack& t : tracks) {
        krSkeletonFile::TrackHeader th{};
        krMeshFile::setName(th.name, t.bone);
        th.keyCount = static_cast<int32_t>(t.keys.size());
        w.begin(krSkeletonFile::trackId);
        w.put(th);
        for (const krAnimationFileKey& k : t.keys) {
            const krSkeletonFile::KeyRecord r{{k.position.x, k.position.y, k.position.z},
                                              {k.rotation.x, k.rotation.y, k.rotation.z, k.rotation.w}};
            w.begin(krSkeletonFile::keyId);
            w.put(r);
            w.end();
        }
        w.end();
    }
    w.end();
}
