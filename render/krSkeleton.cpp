// Skeletons: the checked read of skeleton files, binding objects, and the frame's work of mixing
// the animations into the bones and leaving their matrices.
#include "render/krSkeleton.h"

#include <algorithm>
#include <cmath>

#include "core/krMain.h"
#include "core/krRandom.h"
#include "render/krMeshReader.h"
#include "render/krObject.h"
#include "render/krMeshFile.h"
#include "render/krSkeletonFile.h"
#include "render/krVideo.h"
#include "render/krVideoItem.h"

namespace {

// Noise springs back to rest by this factor each second.
constexpr float noiseDamping = 0.7f;
// How strongly the noise is pulled back towards zero against the random push.
constexpr float noiseReturn = 0.2f;

krQuat toQuat(const float (&q)[4]) { return {q[0], q[1], q[2], q[3]}; }

}  // namespace

krSkeleton::krSkeleton(krModule* o, int32_t states_, int32_t tracks_)
    : krModule(o), states(static_cast<size_t>(std::max(states_, 0)) + 1),
      trackStates(static_cast<size_t>(std::max(tracks_, 0)), 0), stateCount(std::max(states_, 0)),
      trackCount(std::max(tracks_, 0)) {}

krSkeleton::~krSkeleton() {
    clearBones();
    for (auto& [key, instance] : animations)
        if (instance.data) instance.data->release();
}

void krSkeleton::deinit() {
    // Objects that followed the bones are theirs again; meshes drawn with the skeleton find it
    // empty until it is gone.
    clearBones();
    krModule::deinit();
}

void krSkeleton::dropLines() {
    // The item reads the vertices: it goes first.
    delete lineItem;
    lineItem = nullptr;
    lineVertices.clear();
    lineData.vertices = nullptr;
    lineData.count = 0;
}

void krSkeleton::clearBones() {
    dropLines();
    for (krBone& b : bones)
        for (int32_t handle : b.attached)
            if (auto* object = dynamic_cast<krObject*>(krScriptObject::fromHandle(handle))) object->boneDriven = false;
    bones.clear();
}

void krSkeleton::load(const std::string& file) {
    krMeshReader reader(file, "skeleton");
    read(reader);
}

void krSkeleton::loadFromMemory(const std::string& file, const void* bytes, uint32_t count) {
    krMeshReader reader(file, bytes, count, "skeleton");
    read(reader);
}

void krSkeleton::read(krMeshReader& reader) {
    krChunk root;
    if (!reader.first(root)) return;
    clearBones();
    if (root.id != krSkeletonFile::skeletonId) {
        reader.damaged("not a skeleton");
        return;
    }
    krSkeletonFile::SkeletonHeader header;
    if (!reader.record(root, header, "skeleton header")) return;
    name = krMeshFile::getName(header.name);
    // Each bone needs its chunk header and record: the count cannot claim more.
    constexpr uint32_t smallestBone = krChunk::headerSize + sizeof(krSkeletonFile::BoneRecord);
    uint32_t count = header.boneCount > 0 ? static_cast<uint32_t>(header.boneCount) : 0;
    if (count > root.size / smallestBone) {
        reader.damaged("more bones counted than there are");
        count = root.size / smallestBone;
    }
    if (count > static_cast<uint32_t>(krSkeletonFile::maxBones)) {
        reader.damaged("more bones than meshes can name");
        count = krSkeletonFile::maxBones;
    }
    bones.reserve(count);

    const krMatrix& ownerMatrix = owner ? owner->getMatrix() : krMatrix(true);
    // Bind poses in the owner's space, parents before children.
    std::vector<krMatrix> bindPose;
    bindPose.reserve(count);
    krChunk sub;
    while (bones.size() < count && reader.next(root, sub)) {
        krSkeletonFile::BoneRecord record;
        if (sub.id == krSkeletonFile::boneId && reader.record(sub, record, "bone")) {
            const auto index = static_cast<int32_t>(bones.size());
            krBone& b = bones.emplace_back();
            b.name = krMeshFile::getName(record.name);
            b.parent = record.parent;
            if (b.parent >= index) {
                reader.damaged("a bone before its parent");
                b.parent = -1;
            }
            if (b.parent < 0) b.parent = -1;
            b.position = b.bindPosition = {record.position[0], record.position[1], record.position[2]};
            b.rotation = b.bindRotation = toQuat(record.rotation);
            const krMatrix local = krMatrix::fromQuatTranslation(b.rotation, b.position);
            bindPose.push_back(b.parent < 0 ? local : multiply(local, bindPose[static_cast<size_t>(b.parent)]));
            b.inverseBind = inverse(bindPose.back());
            b.world = multiply(bindPose.back(), ownerMatrix);
            b.skin = multiply(b.inverseBind, b.world);
            krChunk attachment;
            while (reader.next(sub, attachment)) {
                krSkeletonFile::AttachmentRecord a;
                if (attachment.id == krSkeletonFile::attachmentId && reader.record(attachment, a, "attachment"))
                    b.attachedNames.push_back(krMeshFile::getName(a.name));
                reader.skip(attachment);
            }
        }
        reader.skip(sub);
    }
    if (bones.size() < count) reader.damaged("fewer bones than counted");
    if (auto* object = dynamic_cast<krObject*>(owner)) bind(object, true);
    if (linesShown) {
        linesShown = false;
        setVisible(true);
    }
}

void krSkeleton::useBone(int32_t index, int32_t count) {
    while (index >= 0 && index < getBoneCount()) {
        krBone& b = bone(index);
        b.useCount += count;
        index = b.parent;
    }
}

void krSkeleton::bind(krObject* top, bool isTop) {
    // The walk keeps its own stack: scripts can build object trees of any depth.
    std::vector<std::pair<krObject*, bool>> pending{{top, isTop}};
    while (!pending.empty()) {
        auto [object, atTop] = pending.back();
        pending.pop_back();
        object->setSkeleton(this);
        const std::vector<uint8_t>& used = object->getBonesUsed();
        for (size_t i = 0; i < used.size() && i < bones.size(); ++i)
            if (used[i]) useBone(static_cast<int32_t>(i), 1);
        if (!atTop) {
            const int32_t handle = object->handle();
            for (size_t i = 0; i < bones.size(); ++i) {
                krBone& b = bones[i];
                bool named = false;
                for (const std::string& n : b.attachedNames) named = named || n == object->name;
                if (!named || std::find(b.attached.begin(), b.attached.end(), handle) != b.attached.end()) continue;
                b.attached.push_back(handle);
                object->boneDriven = true;
                useBone(static_cast<int32_t>(i), 1);
            }
        }
        const std::vector<krModule*>& children = object->getChildren();
        for (size_t i = children.size(); i-- > 0;)
            if (auto* child = dynamic_cast<krObject*>(children[i])) pending.emplace_back(child, false);
    }
}

int32_t krSkeleton::findBone(const std::string& boneName) const {
    for (size_t i = 0; i < bones.size(); ++i)
        if (bones[i].name == boneName) return static_cast<int32_t>(i);
    return -1;
}

const krMatrix& krSkeleton::skinMatrix(int32_t index) const {
    static const krMatrix identity(true);
    return index >= 0 && index < getBoneCount() ? bone(index).skin : identity;
}

bool krSkeleton::update(float dt) {
    runRandomizers(dt);
    const float damping = noiseAmount != 0 ? std::pow(noiseDamping, dt) : 1;
    for (auto& [key, instance] : animations) {
        if (!instance.enabled) continue;
        instance.advance(dt);
        const float length = instance.duration();
        for (krAnimationInstance* partner : instance.synced)
            if (partner->weight < instance.weight && length > 0)
                partner->time = instance.time * partner->duration() / length;
    }
    for (krBone& b : bones) {
        if (b.useCount == 0) continue;
        poseBone(b, dt, damping);
        placeBone(b);
    }
    updateLines();
    return krModule::update(dt);
}

void krSkeleton::poseBone(krBone& b, float dt, float damping) {
    const bool noisy = noiseAmount != 0 && std::isfinite(noiseAmount) && (noiseGroups == 0 || (b.groups & noiseGroups) != 0);
    if (noisy) {
        b.position = b.bindPosition;
        b.rotation = b.bindRotation;
    }
    bool first = true;
    for (const krBone::Track& t : b.tracks) {
        krAnimationInstance& a = *t.instance;
        const float w = a.weight * t.groupWeight;
        // A weight a script made NaN would spread to every bone below.
        if (!a.enabled || w == 0 || !std::isfinite(w)) continue;
        if (first) {
            // The first animation that counts sets the pose; it is never blended from the bind pose.
            a.data->sample(*t.track, a.time, a.noLoop(), b.position, b.rotation);
            first = false;
            continue;
        }
        krVector3 p = b.position;
        krQuat q = b.rotation;
        a.data->sample(*t.track, a.time, a.noLoop(), p, q);
        if (a.additive()) {
            b.position += (p - b.bindPosition) * w;
            const krQuat d = conjugate(difference(q, b.bindRotation));
            b.rotation = multiply(scaleRotation(d, w), b.rotation);
        } else {
            b.position = lerp(b.position, p, w);
            b.rotation = slerp(b.rotation, q, w);
        }
    }
    if (noisy) {
        const krVector3 push(2.0f * static_cast<float>(krRand()) / krRandMax - 1 - noiseReturn * b.noise.x,
                             2.0f * static_cast<float>(krRand()) / krRandMax - 1 - noiseReturn * b.noise.y,
                             2.0f * static_cast<float>(krRand()) / krRandMax - 1 - noiseReturn * b.noise.z);
        b.noiseVelocity = b.noiseVelocity * damping + push * dt;
        b.noise = b.noise * damping + b.noiseVelocity * dt;
        const krQuat& r = b.rotation;
        b.rotation = normalized(krQuat(r.x + b.noise.x * noiseAmount, r.y + b.noise.y * noiseAmount,
                                       r.z + b.noise.z * noiseAmount, r.w));
    }
}

void krSkeleton::placeBone(krBone& b) {
    const krMatrix local = krMatrix::fromQuatTranslation(b.rotation, b.position);
    if (b.parent >= 0) b.world = multiply(local, bone(b.parent).world);
    else b.world = owner ? multiply(local, owner->getMatrix()) : local;
    b.skin = multiply(b.inverseBind, b.world);
    for (size_t i = 0; i < b.attached.size();) {
        auto* object = dynamic_cast<krObject*>(krScriptObject::fromHandle(b.attached[i]));
        if (!object) {
            b.attached.erase(b.attached.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        object->setPosition(b.position);
        object->setOrientation(b.rotation);
        object->setMatrix(b.world);
        ++i;
    }
}

void krSkeleton::setVisible(bool v) {
    krModule::setVisible(v);
    if (v == linesShown) return;
    linesShown = v;
    // Every bone is drawn, so every bone is computed.
    for (krBone& b : bones) b.useCount += v ? 1 : -1;
    dropLines();
    if (!v || !video) return;
    for (const krBone& b : bones) {
        if (b.parent < 0) continue;
        const krVertex end{{}, {0, 1, 0}, color, 0, 0};
        lineVertices.push_back(end);
        lineVertices.push_back(end);
    }
    updateLines();
    lineData.vertices = lineVertices.data();
    lineData.count = static_cast<int32_t>(lineVertices.size());
    lineItem = video->createDynamicItem(this, &lineData, krDynamicKind::skeletonLines);
}

void krSkeleton::updateLines() {
    size_t at = 0;
    for (const krBone& b : bones) {
        if (b.parent < 0 || at + 1 >= lineVertices.size()) continue;
        lineVertices[at++].position = translation(bone(b.parent).world);
        lineVertices[at++].position = translation(b.world);
    }
}
