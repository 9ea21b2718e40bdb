// krSound: a sound that belongs to a module and moves with it. It holds an OpenAL source only
// while it plays, and only while it is audible and within maxDistance of the listener.
#pragma once

#include <cstdint>
#include <vector>

#include "core/krModule.h"
#include "script/krClassInfo.h"

class krSound : public krModule {
public:
    static const krClassInfo info;

    explicit krSound(krModule* owner);
    ~krSound() override;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    const char* className() const override { return "krSound"; }

    bool update(float dt) override;
    // Muting stops the sound; turning it on again resumes a loop that is in range.
    void setAudible(bool a) override;
    // Forgets what was loaded, which stops the sound, and clears the children.
    void clear() override;

    // Adds the sound of a WAV file; a further load adds a further file, and repeated plays then
    // choose among them at random. Nothing while sound is off.
    virtual void load(const std::string& name);

    // play(loop) is start(true, loop), stop is start(false, false). A sound starts from its
    // beginning if its owner and it are audible, sound is on, and it is within maxDistance of the
    // listener; a loop out of range starts by itself once it comes in range.
    void start(bool on, bool loop);
    // Each setter takes effect on the playing source at once.
    void setPitch(float value);
    void setVolume(float value);
    // A second factor of the gain, for the classes that drive a sound (an engine's throttle).
    void setGainScale(float value);
    void setRelative(bool value);
    void setDistances(float min, float max);
    void setPosition(const krVector3& p) { offset = p; }
    // Opens or gives up the source; opening takes a current buffer.
    void setPlaying(bool value);

    bool isPlaying() const { return playing; }
    bool isLooping() const { return looping; }
    float getPitch() const { return pitch; }
    float getVolume() const { return volume; }
    const krVector3& getWorldPosition() const { return worldPosition; }

protected:
    std::vector<uint32_t> buffers;
    uint32_t currentBuffer = 0;

private:
    // The parameters as the source has them, so that only a change is sent.
    struct Parameters {
        float pitch = 1, gain = 1, minDistance = 10, maxDistance = 100;
        bool looping = false, relative = false;
        bool operator==(const Parameters&) const = default;
    };
    Parameters wanted() const;
    void sendParameters();
    // Takes the world position from the owner's matrix.
    void locate();
    // The source's position and velocity.
    void sendPlace();
    float listenerDistance() const;
    // Whether this sound and its owner are audible.
    bool heard() const;

    uint32_t source = 0;
    krVector3 offset;
    bool playing = false;
    bool looping = false;
    bool relative = false;
    float minDistance = 10;
    float maxDistance = 100;
    float pitch = 1;
    float volume = 1;
    float gainScale = 1;
    krVector3 worldPosition;
    float stopClock = 0;
    Parameters sent;
};
