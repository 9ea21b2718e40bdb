// The animations of a skeleton: bone groups, loading and replacing animations on the bones they
// move, group weights, synced clocks; and the state tracks with their random variations.
#include <algorithm>

#include "core/krMain.h"
#include "core/krRandom.h"
#include "render/krObject.h"
#include "render/krSkeleton.h"

uint32_t krSkeleton::addGroup(const std::string& groupName, const std::vector<std::string>& boneNames) {
    uint32_t mask;
    auto it = groups.find(groupName);
    if (it != groups.end()) {
        // The group grows: its bones join it with the bit (or bits) it already has.
        mask = it->second;
    } else if (groups.size() >= static_cast<size_t>(maxGroups)) {
        if (krMain* root = krMain::instance())
            root->errorMsg("Cannot add group '" + groupName + "'! Maximum number of bone-groups (" +
                           std::to_string(maxGroups) + ") exceeded!");
        return 0;
    } else {
        mask = 1u << groups.size();
        groups[groupName] = mask;
    }
    for (const std::string& boneName : boneNames) {
        const int32_t index = findBone(boneName);
        if (index >= 0) bone(index).groups |= mask;
    }
    return mask;
}

uint32_t krSkeleton::virtualGroup(const std::string& groupName, const std::vector<std::string>& groupNames) {
    uint32_t mask = 0;
    for (const std::string& g : groupNames) mask |= groupMask(g);
    auto it = groups.find(groupName);
    if (it != groups.end()) {
        it->second = mask;
        return mask;
    }
    // A virtual group has no bit, but the bits are numbered by the names there are: it spends one.
    if (groups.size() >= static_cast<size_t>(maxGroups)) {
        if (krMain* root = krMain::instance())
            root->errorMsg("Cannot add group '" + groupName + "'! Maximum number of bone-groups (" +
                           std::to_string(maxGroups) + ") exceeded!");
        return 0;
    }
    groups[groupName] = mask;
    return mask;
}

uint32_t krSkeleton::groupMask(const std::string& groupName) const {
    auto it = groups.find(groupName);
    return it != groups.end() ? it->second : 0;
}

krAnimationInstance* krSkeleton::findAnimation(const std::string& animationName) {
    auto it = animations.find(animationName);
    return it != animations.end() ? &it->second : nullptr;
}

krAnimationInstance* krSkeleton::loadAnimation(const std::string& animationName, const std::string& file,
                                               uint32_t flags, uint32_t groupMask) {
    krAnimationInstance& instance = animations[animationName];
    krAnimationData* old = instance.data;
    for (krBone& b : bones)
        std::erase_if(b.tracks, [&](const krBone::Track& t) { return t.instance == &instance; });
    krAnimationData* data = krAnimationData::acquire(file);
    instance = krAnimationInstance();
    instance.data = data;
    instance.flags = flags;
    instance.loop = !instance.noLoop();
    for (const krAnimationTrack& track : data->tracks) {
        const int32_t index = findBone(track.name);
        if (index < 0) continue;
        krBone& b = bone(index);
        if (groupMask == 0 || (b.groups & groupMask) != 0) b.tracks.push_back({&instance, &track, 1});
    }
    if (old) old->release();
    return &instance;
}

void krSkeleton::unloadAnimation(const std::string& animationName) {
    auto it = animations.find(animationName);
    if (it == animations.end()) return;
    dropInstance(&it->second);
    if (it->second.data) it->second.data->release();
    animations.erase(it);
}

void krSkeleton::dropInstance(krAnimationInstance* instance) {
    for (krBone& b : bones) std::erase_if(b.tracks, [&](const krBone::Track& t) { return t.instance == instance; });
    for (auto& [key, other] : animations) std::erase(other.synced, instance);
    for (krAnimationState& s : states) {
        std::erase_if(s.entries, [&](const krStateEntry& e) { return e.instance == instance; });
        for (krRandomizer& r : s.randomizers) {
            for (int32_t i = static_cast<int32_t>(r.entries.size()); i-- > 0;) {
                if (r.entries[static_cast<size_t>(i)].instance != instance) continue;
                r.entries.erase(r.entries.begin() + i);
                if (i < r.usable) --r.usable;
                if (r.current == i) r.current = -1;
                else if (r.current > i) --r.current;
            }
        }
    }
}

void krSkeleton::blendGroup(const std::string& animationName, uint32_t groupMask, float weight) {
    krAnimationInstance* instance = findAnimation(animationName);
    if (!instance) return;
    for (krBone& b : bones) {
        if ((b.groups & groupMask) == 0) continue;
        for (krBone::Track& t : b.tracks)
            if (t.instance == instance) t.groupWeight = weight;
    }
}

void krSkeleton::syncAnimations(const std::vector<std::string>& names) {
    std::vector<krAnimationInstance*> found;
    for (const std::string& n : names)
        if (krAnimationInstance* i = findAnimation(n)) found.push_back(i);
    for (size_t a = 0; a < found.size(); ++a)
        for (size_t b = a + 1; b < found.size(); ++b) {
            if (found[a] == found[b]) continue;
            found[a]->synced.push_back(found[b]);
            found[b]->synced.push_back(found[a]);
        }
}

krAnimationState* krSkeleton::getStateRecord(int32_t state) {
    return state >= 1 && state <= stateCount ? &states[static_cast<size_t>(state)] : nullptr;
}

int32_t krSkeleton::getState(int32_t track) const {
    return track >= 0 && track < trackCount ? trackStates[static_cast<size_t>(track)] : 0;
}

bool krSkeleton::setStateData(int32_t state, float blendTime, float midpoint, float softness) {
    krAnimationState* s = getStateRecord(state);
    if (!s) return false;
    s->blendTime = blendTime;
    s->blendMidpoint = midpoint;
    s->blendSoftness = softness;
    for (krRandomizer& r : s->randomizers) r.countdown = 0;
    return true;
}

bool krSkeleton::setStateAnim(int32_t state, krAnimationInstance* instance, float speed, float weight, int32_t flags) {
    krAnimationState* s = getStateRecord(state);
    if (!s || !instance) return false;
    const krStateEntry entry{instance, speed, weight, flags};
    if (flags & krStateRandom0) s->randomizers[0].entries.push_back(entry);
    else if (flags & krStateRandom1) s->randomizers[1].entries.push_back(entry);
    else s->entries.push_back(entry);
    return true;
}

bool krSkeleton::setStateRandomizer(int32_t state, int32_t index, float minTime, float maxTime, float blendTime,
                                    float midpoint, float softness) {
    krAnimationState* s = getStateRecord(state);
    if (!s || index < 0 || index >= krAnimationState::randomizerCount) return false;
    krRandomizer& r = s->randomizers[index];
    r.minTime = minTime;
    r.maxTime = maxTime;
    s->randomBlendTime = blendTime;
    s->randomMidpoint = midpoint;
    s->randomSoftness = softness;
    return true;
}

const krStateEntry* krSkeleton::filter(const krStateEntry& entry) const {
    if (!entry.instance) return nullptr;
    if (auto* object = dynamic_cast<krObject*>(owner)) return object->filterStateEntry(&entry);
    return &entry;
}

namespace {

float randomWhile(const krRandomizer& r) {
    return r.minTime + static_cast<float>(krRand()) * (r.maxTime - r.minTime) / krRandMax;
}

void startEntry(const krStateEntry& e) {
    e.instance->speed = e.speed;
    if (e.flags & krStateStartBeginning) e.instance->time = 0;
}

}  // namespace

bool krSkeleton::setState(int32_t track, int32_t state, bool force) {
    if (track < 0 || track >= trackCount || state < 0 || state > stateCount) return false;
    int32_t& current = trackStates[static_cast<size_t>(track)];
    if (state == current && !force) return true;
    krAnimationState& next = states[static_cast<size_t>(state)];
    if (!statesInitialised) {
        statesInitialised = true;
        for (size_t i = 0; i < states.size(); ++i) {
            if (i == static_cast<size_t>(state)) continue;
            for (krStateEntry& e : states[i].entries) e.instance->weight = 0;
            for (krRandomizer& r : states[i].randomizers)
                for (krStateEntry& e : r.entries) e.instance->weight = 0;
        }
    }
    const float time = next.blendTime, midpoint = next.blendMidpoint, softness = next.blendSoftness;
    if (current != 0) {
        krAnimationState& old = states[static_cast<size_t>(current)];
        for (krStateEntry& e : old.entries)
            if (e.instance->weight > 0) e.instance->blend(e.instance->weight, 0, time, midpoint, softness);
        for (krRandomizer& r : old.randomizers) {
            if (r.current < 0) continue;
            krAnimationInstance* i = r.entries[static_cast<size_t>(r.current)].instance;
            r.current = -1;
            i->blend(i->weight, 0, time, midpoint, softness);
        }
    }
    current = state;
    for (const krStateEntry& e : next.entries) {
        const krStateEntry* chosen = filter(e);
        if (!chosen) continue;
        chosen->instance->blend(chosen->instance->weight, chosen->weight, time, midpoint, softness);
        startEntry(*chosen);
    }
    for (krRandomizer& r : next.randomizers) {
        r.usable = 0;
        for (size_t i = 0; i < r.entries.size(); ++i) {
            if (!filter(r.entries[i])) continue;
            std::swap(r.entries[static_cast<size_t>(r.usable)], r.entries[i]);
            startEntry(r.entries[static_cast<size_t>(r.usable)]);
            ++r.usable;
        }
        if (r.usable == 0) continue;
        r.current = krRand() % r.usable;
        const krStateEntry& e = r.entries[static_cast<size_t>(r.current)];
        e.instance->blend(e.instance->weight, e.weight, time, midpoint, softness);
        r.countdown = randomWhile(r);
    }
    return true;
}

void krSkeleton::reevaluate() {
    for (int32_t t = 0; t < trackCount; ++t) setState(t, trackStates[static_cast<size_t>(t)], true);
}

void krSkeleton::runRandomizers(float dt) {
    for (int32_t state : trackStates) {
        krAnimationState& s = states[static_cast<size_t>(state)];
        for (krRandomizer& r : s.randomizers) {
            if (r.maxTime == 0) continue;
            r.countdown -= dt;
            if (r.countdown > 0) continue;
            r.countdown = randomWhile(r);
            if (r.usable <= 1) continue;
            if (r.current >= 0) {
                krAnimationInstance* i = r.entries[static_cast<size_t>(r.current)].instance;
                i->blend(i->weight, 0, s.randomBlendTime, s.randomMidpoint, s.randomSoftness);
            }
            int32_t pick = krRand() % (r.usable - 1);
            if (pick == r.current) pick = r.usable - 1;
            const krStateEntry& e = r.entries[static_cast<size_t>(pick)];
            e.instance->blend(e.instance->weight, e.weight, s.randomBlendTime, s.randomMidpoint, s.randomSoftness);
            r.current = pick;
        }
    }
}
