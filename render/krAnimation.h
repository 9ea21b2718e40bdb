// Keyframed animations: the data of an animation file, shared by file name across every skeleton
// of the process and counted by the instances that use it; an instance, which is one skeleton's
// playing of an animation (time, speed, weight and the blend in progress); and the records of the
// state machine that cross-fades sets of instances.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/krQuat.h"
#include "core/krVector3.h"

struct krAnimationKey {
    krVector3 position;
    krQuat rotation = krQuat::identity;
};

struct krAnimationData;
class krMeshReader;

struct krAnimationTrack {
    krAnimationData* data = nullptr;
    std::string name;  // of the bone it moves
    std::vector<krAnimationKey> keys;
};

// Flags of loadAnimation, kept in the instance.
constexpr uint32_t krAnimationAdditive = 0x10000;
constexpr uint32_t krAnimationDontLoop = 0x20000;

struct krAnimationData {
    int32_t references = 1;
    std::string name;  // the file's
    float duration = 0;
    std::vector<krAnimationTrack> tracks;

    // The data of a file, shared: loaded at the first request (a missing or broken file gives
    // empty data, after the file layer's report), one more reference at each further one.
    static krAnimationData* acquire(const std::string& file);
    // The same from bytes in memory, not shared, for tools and tests; one reference.
    static krAnimationData* fromMemory(const std::string& name, const void* bytes, uint32_t count);
    // Drops one reference; the last frees the data and takes it out of the table.
    void release();
    // How many files the table holds, for tests.
    static size_t shared();

    // The pose of a track at time, keys taken as evenly spaced over the duration: n keys over n
    // intervals, wrapping from the last to the first, or over n - 1 without looping.
    void sample(const krAnimationTrack& track, float time, bool noLoop, krVector3& position, krQuat& rotation) const;

private:
    void read(krMeshReader& reader);
    // The table's key; empty for data made from memory.
    std::string file;
};

// One skeleton's use of an animation.
struct krAnimationInstance {
    bool enabled = true;
    krAnimationData* data = nullptr;
    uint32_t flags = 0;
    float weight = 1;
    float speed = 1;  // seconds of animation per second
    float time = 0;
    float blendFrom = 0, blendTo = 0;
    float blendRate = 0;  // 1 / the blend's duration; 0 while none runs
    float blendShape = 1;
    float blendSoftness = 1;
    float blendProgress = 0;
    bool loop = true;
    std::vector<krAnimationInstance*> synced;

    float duration() const { return data ? data->duration : 0; }
    bool additive() const { return (flags & krAnimationAdditive) != 0; }
    bool noLoop() const { return (flags & krAnimationDontLoop) != 0; }

    // Starts a blend of the weight from `from` to `to` over `time` seconds. midpoint (percent)
    // shapes the curve, softness (percent) makes it an S; 50 and 0 blend linearly.
    void blend(float from, float to, float time, float midpoint, float softness);
    // Advances time (wrapping or stopping at the end) and the blend in progress.
    void advance(float dt);
};

// Flags of a state entry. The low bits are the owner's to read (a character's walk speed and
// mood); these choose where the entry plays.
constexpr int32_t krStateRandom0 = 0x10000;
constexpr int32_t krStateRandom1 = 0x20000;
constexpr int32_t krStateStartBeginning = 0x40000;

struct krStateEntry {
    krAnimationInstance* instance = nullptr;
    float speed = 1;
    float weight = 1;
    int32_t flags = 0;
};

// Picks one of its entries at a time and changes to another after a random while, so that a
// state's idle motion varies.
struct krRandomizer {
    float minTime = 0, maxTime = 0;
    float countdown = 0;
    int32_t current = -1;  // index into entries
    std::vector<krStateEntry> entries;
    int32_t usable = 0;  // entries that passed the owner's filter, at the front
};

struct krAnimationState {
    static constexpr int randomizerCount = 2;

    float blendTime = 1;  // seconds
    float blendMidpoint = 50;  // percent
    float blendSoftness = 0;  // percent
    float randomBlendTime = 1;
    float randomMidpoint = 50;
    float randomSoftness = 0;
    std::vector<krStateEntry> entries;
    krRandomizer randomizers[randomizerCount];
};
