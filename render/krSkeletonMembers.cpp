// The script interface of skeletons. Methods act only with their argument counts; any other count
// falls through to the base, and so ends as an event of that name. Unknown animation, group and
// bone names are passed over without a word: scripts share one set of calls across characters
// whose skeletons differ.
#include "render/krSkeleton.h"

#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVArray.h"
#include "script/krVBound.h"

namespace {

const krMemberInfo skeletonMembers[] = {
    {"addGroup", krCall, "(name, boneNames)", "a bone group of the named bones; gives its mask, 0 past 32 groups"},
    {"virtualGroup", krCall, "(name, group, ...)", "a name for the union of groups; gives its mask"},
    {"loadAnimation", krCall, "(name, file, flags?, group...)",
     "loads or replaces an animation; ADDITIVE_BLEND, DONT_LOOP; groups limit it to their bones"},
    {"unloadAnimation", krCall, "(name)", "drops an animation"},
    {"playAnimation", krCall, "(name, speed, loop?)", "plays at a speed, looping unless told not to"},
    {"stopAnimation", krCall, "(name)", "speed 0, looping"},
    {"rewindAnimation", krCall, "(name)", "back to time 0"},
    {"enableAnimation", krCall, "(name, flag?)", "lets the animation act, or not with a false flag"},
    {"disableAnimation", krCall, "(name)", "the animation no longer acts"},
    {"blendAnimation", krCall, "(name, weight) or (name, from, to, time, midpoint?, softness?)",
     "sets the weight at once, or blends it over time seconds; midpoint and softness in percent"},
    {"blendGroup", krCall, "(name, group, weight)", "the animation's weight on the bones of a group"},
    {"setStateData", krCall, "(state, blendTime, midpoint, softness?)", "how changes into the state blend"},
    {"setStateAnim", krCall, "(state, name, speed, weight, flags)",
     "an animation the state plays; SELECT_RANDOM0/1 give it to a randomizer, START_BEGINNING rewinds it"},
    {"setStateRandomizer", krCall, "(state, index, minTime, maxTime, blendTime, midpoint?, softness?)",
     "randomizer 0 or 1 changes its animation every minTime to maxTime seconds"},
    {"setState", krCall, "(track, state)", "cross-fades the track into the state"},
    {"setNoiseGroups", krCall, "(group, ...)", "the groups that noise moves; none set means all bones"},
    {"syncAnimations", krCall, "(name, name, ...)", "the heavier animation of each pair leads the other's clock"},
    {"color", krRead | krWrite, "int", "colour of the bone lines shown while the skeleton is visible"},
    {"name", krRead | krWrite, "string", "from the skeleton file"},
    {"noiseAmount", krRead | krWrite, "float", "strength of the random motion of the noise groups, 0 for none"},
};

}  // namespace

const krClassInfo krSkeleton::info = {"krSkeleton", "krModule", nullptr, skeletonMembers, {},
                                      "an object's bones, made by its loadSkeleton: plays and mixes animations on them"};

namespace {

// An array of strings, or a single string, as a list of names.
std::vector<std::string> namesOf(krVariant* value) {
    std::vector<std::string> names;
    if (auto* array = dynamic_cast<krVArray*>(value)) {
        for (const auto& [key, element] : array->elements()) names.push_back(element->toString());
    } else {
        names.push_back(value->toString());
    }
    return names;
}

std::vector<std::string> stringsFrom(const krArgs& args, size_t first) {
    std::vector<std::string> names;
    for (size_t i = first; i < args.size(); ++i) names.push_back(args[i]->toString());
    return names;
}

}  // namespace

krVariant* krSkeleton::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    auto groupsFrom = [&](size_t first) {
        uint32_t mask = 0;
        for (size_t i = first; i < n; ++i) mask |= groupMask(args[i]->toString());
        return mask;
    };
    auto animation = [&]() { return n > 0 ? findAnimation(args[0]->toString()) : nullptr; };
    auto badState = [&](int32_t state) {
        return reportError(caller, member + ": state " + std::to_string(state) + " does not exist (states are 1 to " +
                                       std::to_string(stateCount) + ")");
    };

    if (member == "addGroup" && n == 2) return new krVInt(static_cast<int32_t>(addGroup(args[0]->toString(), namesOf(args[1]))));
    if (member == "virtualGroup" && n >= 2)
        return new krVInt(static_cast<int32_t>(virtualGroup(args[0]->toString(), stringsFrom(args, 1))));
    if (member == "loadAnimation" && n >= 2) {
        const uint32_t flags = n >= 3 ? static_cast<uint32_t>(args[2]->toInt()) : 0;
        loadAnimation(args[0]->toString(), args[1]->toString(), flags, groupsFrom(3));
        return nullptr;
    }
    if (member == "unloadAnimation" && n == 1) {
        unloadAnimation(args[0]->toString());
        return nullptr;
    }
    if (member == "playAnimation" && (n == 2 || n == 3)) {
        if (krAnimationInstance* a = animation()) {
            a->speed = args[1]->toFloat();
            a->loop = n == 3 ? args[2]->toBool() : true;
        }
        return nullptr;
    }
    if (member == "stopAnimation" && n == 1) {
        if (krAnimationInstance* a = animation()) {
            a->speed = 0;
            a->loop = true;
        }
        return nullptr;
    }
    if (member == "rewindAnimation" && n == 1) {
        if (krAnimationInstance* a = animation()) a->time = 0;
        return nullptr;
    }
    if (member == "enableAnimation" && (n == 1 || n == 2)) {
        if (krAnimationInstance* a = animation()) a->enabled = n == 2 ? args[1]->toBool() : true;
        return nullptr;
    }
    if (member == "disableAnimation" && n == 1) {
        if (krAnimationInstance* a = animation()) a->enabled = false;
        return nullptr;
    }
    if (member == "blendAnimation" && n == 2) {
        if (krAnimationInstance* a = animation()) {
            a->weight = args[1]->toFloat();
            a->blendRate = 0;
        }
        return nullptr;
    }
    if (member == "blendAnimation" && n >= 4 && n <= 6) {
        if (krAnimationInstance* a = animation())
            a->blend(args[1]->toFloat(), args[2]->toFloat(), args[3]->toFloat(), n >= 5 ? args[4]->toFloat() : 50,
                     n == 6 ? args[5]->toFloat() : 0);
        return nullptr;
    }
    if (member == "blendGroup" && n == 3) {
        blendGroup(args[0]->toString(), groupMask(args[1]->toString()), args[2]->toFloat());
        return nullptr;
    }
    if (member == "setStateData" && (n == 3 || n == 4)) {
        const int32_t state = args[0]->toInt();
        if (!setStateData(state, args[1]->toFloat(), args[2]->toFloat(), n == 4 ? args[3]->toFloat() : 0))
            return badState(state);
        return nullptr;
    }
    if (member == "setStateAnim" && n == 5) {
        const int32_t state = args[0]->toInt();
        if (!getStateRecord(state)) return badState(state);
        krAnimationInstance* a = findAnimation(args[1]->toString());
        if (!a) return reportError(caller, "setStateAnim: no animation '" + args[1]->toString() + "' is loaded");
        setStateAnim(state, a, args[2]->toFloat(), args[3]->toFloat(), args[4]->toInt());
        return nullptr;
    }
    if (member == "setStateRandomizer" && n >= 5 && n <= 7) {
        const int32_t state = args[0]->toInt(), index = args[1]->toInt();
        if (!getStateRecord(state)) return badState(state);
        if (!setStateRandomizer(state, index, args[2]->toFloat(), args[3]->toFloat(), args[4]->toFloat(),
                                n >= 6 ? args[5]->toFloat() : 50, n == 7 ? args[6]->toFloat() : 0))
            return reportError(caller, "setStateRandomizer: randomizer " + std::to_string(index) +
                                           " does not exist (there are 0 and 1)");
        return nullptr;
    }
    if (member == "setState" && n == 2) {
        const int32_t track = args[0]->toInt(), state = args[1]->toInt();
        if (track < 0 || track >= trackCount)
            return reportError(caller, "setState: track " + std::to_string(track) + " does not exist (this skeleton has " +
                                           std::to_string(trackCount) + ")");
        if (state != 0 && !getStateRecord(state)) return badState(state);
        setState(track, state);
        return nullptr;
    }
    if (member == "setNoiseGroups" && n >= 1) {
        noiseGroups = groupsFrom(0);
        return nullptr;
    }
    if (member == "syncAnimations" && n >= 2) {
        syncAnimations(stringsFrom(args, 0));
        return nullptr;
    }
    if (member == "color") return new krVInt(static_cast<int32_t>(toPacked(color)));
    if (member == "name") return new krVStringPtr(&name, this);
    if (member == "noiseAmount") return new krVFloatPtr(&noiseAmount, this);
    return krModule::getMember(member, caller, args);
}

void krSkeleton::setMember(const std::string& member, krVariant* value) {
    if (member == "color") {
        color = krColor(static_cast<uint32_t>(value->toInt()));
        for (krVertex& v : lineVertices) v.color = color;
    } else if (member == "name") {
        name = value->toString();
    } else if (member == "noiseAmount") {
        noiseAmount = value->toFloat();
    } else {
        krModule::setMember(member, value);
    }
}
