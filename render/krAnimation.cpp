// Animation data: the shared table, the checked read of animation files, sampling; and the time
// and blend of an instance.
#include "render/krAnimation.h"

#include <cmath>
#include <map>

#include "render/krMeshReader.h"
#include "render/krMeshFile.h"
#include "render/krSkeletonFile.h"

namespace {

// The data of every animation file in use, by file name.
std::map<std::string, krAnimationData*>& table() {
    static std::map<std::string, krAnimationData*> files;
    return files;
}

// Softness of 100 percent and above: a blend that jumps at its middle.
constexpr float hardSoftness = 1e11f;

krQuat toQuat(const float (&q)[4]) { return {q[0], q[1], q[2], q[3]}; }

}  // namespace

krAnimationData* krAnimationData::acquire(const std::string& name) {
    auto it = table().find(name);
    if (it != table().end()) {
        ++it->second->references;
        return it->second;
    }
    auto* data = new krAnimationData();
    data->file = name;
    krMeshReader reader(name, "animation");
    data->read(reader);
    table()[name] = data;
    return data;
}

krAnimationData* krAnimationData::fromMemory(const std::string& name, const void* bytes, uint32_t count) {
    auto* data = new krAnimationData();
    krMeshReader reader(name, bytes, count, "animation");
    data->read(reader);
    return data;
}

void krAnimationData::release() {
    if (--references > 0) return;
    auto it = table().find(file);
    if (it != table().end() && it->second == this) table().erase(it);
    delete this;
}

size_t krAnimationData::shared() { return table().size(); }

void krAnimationData::read(krMeshReader& reader) {
    krChunk root;
    if (!reader.first(root)) return;
    if (root.id != krSkeletonFile::animationId) {
        reader.damaged("not an animation");
        return;
    }
    krSkeletonFile::AnimationHeader header;
    if (!reader.record(root, header, "animation header")) return;
    name = krMeshFile::getName(header.name);
    // A duration that is not a positive number would stop time or divide by zero.
    duration = std::isfinite(header.duration) && header.duration > 0 ? header.duration : 0;
    // Each track needs its chunk header and record: the count cannot claim more.
    constexpr uint32_t smallestTrack = krChunk::headerSize + sizeof(krSkeletonFile::TrackHeader);
    uint32_t trackCount = header.trackCount > 0 ? static_cast<uint32_t>(header.trackCount) : 0;
    if (trackCount > root.size / smallestTrack) {
        reader.damaged("more tracks counted than there are");
        trackCount = root.size / smallestTrack;
    }
    tracks.reserve(trackCount);
    krChunk sub;
    while (tracks.size() < trackCount && reader.next(root, sub)) {
        krSkeletonFile::TrackHeader th;
        if (sub.id == krSkeletonFile::trackId && reader.record(sub, th, "track")) {
            krAnimationTrack& track = tracks.emplace_back();
            track.data = this;
            track.name = krMeshFile::getName(th.name);
            constexpr uint32_t keyChunk = krChunk::headerSize + sizeof(krSkeletonFile::KeyRecord);
            uint32_t keyCount = th.keyCount > 0 ? static_cast<uint32_t>(th.keyCount) : 0;
            if (keyCount > sub.size / keyChunk) {
                reader.damaged("more keys counted than there are");
                keyCount = sub.size / keyChunk;
            }
            track.keys.reserve(keyCount);
            krChunk keyChunkHeader;
            while (track.keys.size() < keyCount && reader.next(sub, keyChunkHeader)) {
                krSkeletonFile::KeyRecord k;
                if (keyChunkHeader.id == krSkeletonFile::keyId && reader.record(keyChunkHeader, k, "key"))
                    track.keys.push_back({{k.position[0], k.position[1], k.position[2]}, toQuat(k.rotation)});
                reader.skip(keyChunkHeader);
            }
        }
        reader.skip(sub);
    }
}

void krAnimationData::sample(const krAnimationTrack& track, float time, bool noLoop, krVector3& position,
                             krQuat& rotation) const {
    const auto n = static_cast<int64_t>(track.keys.size());
    if (n == 0) return;
    const int64_t intervals = noLoop ? n - 1 : n;
    float f = duration > 0 ? static_cast<float>(intervals) * time / duration : 0;
    if (!std::isfinite(f)) f = 0;
    const float whole = std::floor(f);
    const float u = f - whole;
    // Times outside the animation (a stopped one played backwards, one told not to loop that
    // has keys for looping) hold at the ends or wrap, never index past the keys.
    auto place = [&](float k) -> int64_t {
        if (noLoop) return k <= 0 ? 0 : k >= static_cast<float>(n - 1) ? n - 1 : static_cast<int64_t>(k);
        const float wrapped = std::fmod(k, static_cast<float>(n));
        const auto i = static_cast<int64_t>(wrapped < 0 ? wrapped + static_cast<float>(n) : wrapped);
        return i >= n ? 0 : i;
    };
    const int64_t i = place(whole);
    const int64_t j = place(std::ceil(f));
    const krAnimationKey& a = track.keys[static_cast<size_t>(i)];
    const krAnimationKey& b = track.keys[static_cast<size_t>(j)];
    position = lerp(a.position, b.position, u);
    rotation = slerp(a.rotation, b.rotation, u);
}

void krAnimationInstance::blend(float from, float to, float time, float midpoint, float softness) {
    if (!std::isfinite(midpoint)) midpoint = 50;
    if (!std::isfinite(softness)) softness = 0;
    if (!(time > 0) || !std::isfinite(time) || midpoint >= 100) {
        blendRate = 0;
        weight = to;
        return;
    }
    if (midpoint <= 0) {
        blendRate = 0;
        weight = from;
        return;
    }
    weight = blendFrom = from;
    blendTo = to;
    blendRate = 1 / time;
    blendProgress = 0;
    const float m = midpoint / 100;
    blendShape = midpoint == 50 ? 1 : std::log(m) / std::log(1 - m);
    blendSoftness = softness < 100 ? 1 / (1 - softness / 100) : hardSoftness;
}

void krAnimationInstance::advance(float dt) {
    const float length = duration();
    time += speed * dt;
    if (!std::isfinite(time) || length <= 0) {
        time = 0;
    } else if (loop) {
        // One step past either end comes back exactly as a subtraction would; a long one in one go.
        if (time >= length || time < 0) {
            time = std::fmod(time, length);
            if (time < 0) time += length;
            if (time >= length) time = 0;
        }
    } else if (time > length) {
        time = length;
        speed = 0;
    }

    if (blendRate == 0) return;
    blendProgress += blendRate * dt;
    if (blendProgress >= 1) {
        blendRate = 0;
        weight = blendTo;
        return;
    }
    float f = blendProgress;
    if (blendShape > 1) f = std::pow(f, blendShape);
    else if (blendShape < 1) f = 1 - std::pow(1 - f, 1 / blendShape);
    if (blendSoftness != 1) {
        if (f > 0.5f) f = 1 - 0.5f * std::pow(1 - 2 * (f - 0.5f), blendSoftness);
        else f = 0.5f * std::pow(2 * f, blendSoftness);
    }
    weight = f * blendTo + (1 - f) * blendFrom;
}
