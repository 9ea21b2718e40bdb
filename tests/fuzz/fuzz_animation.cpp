// Arbitrary bytes as an animation file: read, then every track sampled at times in, before and
// past its duration, looping and not, so that the address sanitizer sees any count the reader
// failed to check and any key index the sampler could take out of range.
#include <cstdint>
#include <cstdlib>

#include "render/krAnimation.h"

namespace {

void check(bool holds) {
    if (!holds) std::abort();
}

// Keeps the sums the targets compute from being optimised away.
volatile float sink;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    krAnimationData* animation = krAnimationData::fromMemory("fuzz.anim", data, static_cast<uint32_t>(size));
    check(animation->duration >= 0);
    float sum = 0;
    const float d = animation->duration;
    const float times[] = {0, d * 0.37f, d, d * 1.5f, -d, -1e30f, 1e30f};
    for (const krAnimationTrack& track : animation->tracks) {
        check(track.data == animation);
        for (float t : times)
            for (bool noLoop : {false, true}) {
                krVector3 p;
                krQuat q = krQuat::identity;
                animation->sample(track, t, noLoop, p, q);
                sum += p.x + q.w;
            }
    }
    krAnimationInstance instance;
    instance.data = animation;
    instance.speed = 1e30f;
    instance.advance(0.01f);
    instance.blend(0, 1, 0.5f, 25, 50);
    instance.advance(0.3f);
    animation->release();
    sink = sum;
    return 0;
}
