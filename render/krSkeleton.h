// krSkeleton: a bone hierarchy that lives as a child module of an object. It plays and mixes
// keyframed animations on its bones (with blends, bone groups as masks, additive layers, synced
// clocks and procedural noise), cross-fades whole sets of them through a small state machine per
// track, and each frame leaves the matrices that skinned meshes draw with and that bone-attached
// sub-objects follow. A character steers it through the state tracks and its owner's entry filter.
//
// The skeleton reads its owner's matrix when its own update runs: the object updates its matrix
// first, then its children, this among them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "core/krColor.h"
#include "core/krMatrix.h"
#include "core/krModule.h"
#include "render/krAnimation.h"
#include "render/krDynamicData.h"
#include "render/krMeshFile.h"

class krMeshReader;
class krObject;
class krVideoItem;
struct krClassInfo;

struct krBone {
    // What acts on the bone, in the order the animations were loaded.
    struct Track {
        krAnimationInstance* instance;
        const krAnimationTrack* track;
        float groupWeight;
    };

    std::string name;
    int32_t parent = -1;  // a parent stands before its children
    krVector3 bindPosition;
    krQuat bindRotation = krQuat::identity;
    krVector3 position;  // current, relative to the parent
    krQuat rotation = krQuat::identity;
    krVector3 noise, noiseVelocity;
    krMatrix inverseBind{true};  // of the bind pose in the owner's space
    krMatrix world{true};
    krMatrix skin{true};  // inverseBind x world: what meshes draw with
    std::vector<std::string> attachedNames;
    // Objects that follow the bone, by handle: a script may delete one at any time.
    std::vector<int32_t> attached;
    std::vector<Track> tracks;
    // Meshes, attachments and the debug lines that need the bone; at 0 it is not computed.
    int32_t useCount = 0;
    uint32_t groups = 0;
};

class krSkeleton : public krModule {
public:
    // Group masks are the bits of a 32-bit word.
    static constexpr int32_t maxGroups = 32;

    // A plain object's skeleton has no states; a character's has its states and tracks.
    krSkeleton(krModule* owner, int32_t stateCount = 0, int32_t trackCount = 0);
    ~krSkeleton() override;
    const char* className() const override { return "krSkeleton"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool update(float dt) override;
    void deinit() override;
    // Shown, it draws a line from each bone to its parent, and keeps every bone computed.
    void setVisible(bool v) override;

    // Replaces the bones by those of a skeleton file and binds the owner's tree.
    void load(const std::string& file);
    void loadFromMemory(const std::string& name, const void* bytes, uint32_t count);
    // Takes an object and its sub-objects into use: they draw with this skeleton, the bones their
    // meshes name are computed, and below the top the objects named by bones follow them.
    void bind(krObject* object, bool top);

    // Group masks: a group is one bit, given to the named bones; a virtual group is a name for
    // the union of others. 0 where there is no such group, or no bit left.
    uint32_t addGroup(const std::string& name, const std::vector<std::string>& boneNames);
    uint32_t virtualGroup(const std::string& name, const std::vector<std::string>& groupNames);
    uint32_t groupMask(const std::string& name) const;

    // Loads an animation under a name, or replaces the one of that name in place. groups limits
    // it to the bones of those groups, 0 to all.
    krAnimationInstance* loadAnimation(const std::string& name, const std::string& file, uint32_t flags,
                                       uint32_t groups);
    void unloadAnimation(const std::string& name);
    krAnimationInstance* findAnimation(const std::string& name);
    // The weight of an animation on the bones of the groups.
    void blendGroup(const std::string& name, uint32_t groups, float weight);
    // The heavier of each pair leads the other's clock.
    void syncAnimations(const std::vector<std::string>& names);

    // States are 1 to getStateCount(); 0 is none. Methods given a state or track out of range do
    // nothing and give false.
    bool setStateData(int32_t state, float blendTime, float midpoint, float softness);
    bool setStateAnim(int32_t state, krAnimationInstance* instance, float speed, float weight, int32_t flags);
    bool setStateRandomizer(int32_t state, int32_t index, float minTime, float maxTime, float blendTime,
                            float midpoint, float softness);
    bool setState(int32_t track, int32_t state, bool force = false);
    // Every track anew in the state it is in, after the owner's filter has changed its mind.
    void reevaluate();
    int32_t getState(int32_t track) const;
    krAnimationState* getStateRecord(int32_t state);
    int32_t getStateCount() const { return stateCount; }
    int32_t getTrackCount() const { return trackCount; }

    int32_t getBoneCount() const { return static_cast<int32_t>(bones.size()); }
    krBone& bone(int32_t index) { return bones[static_cast<size_t>(index)]; }
    const krBone& bone(int32_t index) const { return bones[static_cast<size_t>(index)]; }
    // The first bone of that name, or -1.
    int32_t findBone(const std::string& name) const;
    // The matrix a mesh draws a bone with; a bone the skeleton does not have leaves the bind pose
    // as it is.
    const krMatrix& skinMatrix(int32_t bone) const;
    // Counts the bone and its ancestors in (or out of) use.
    void useBone(int32_t bone, int32_t count);

    krColor color;
    std::string name;
    float noiseAmount = 0;
    uint32_t noiseGroups = 0;  // 0: every bone

private:
    void read(krMeshReader& reader);
    void clearBones();
    // The filter of the owner object: the entry to play, or null to leave it out.
    const krStateEntry* filter(const krStateEntry& entry) const;
    void runRandomizers(float dt);
    void poseBone(krBone& bone, float dt, float damping);
    void placeBone(krBone& bone);
    void updateLines();
    void dropLines();
    void dropInstance(krAnimationInstance* instance);

    std::vector<krBone> bones;
    std::map<std::string, krAnimationInstance> animations;
    std::map<std::string, uint32_t> groups;
    std::vector<krAnimationState> states;
    std::vector<int32_t> trackStates;
    bool statesInitialised = false;
    int32_t stateCount;
    int32_t trackCount;

    // The bone lines: two vertices per bone with a parent, drawn by an item of the video while
    // the skeleton is shown. The item reads the record, which holds the vertices, each frame.
    std::vector<krVertex> lineVertices;
    krDynamicData lineData;
    krVideoItem* lineItem = nullptr;
    bool linesShown = false;
};
