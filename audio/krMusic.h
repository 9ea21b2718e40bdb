// krMusic: a sound whose data is an Ogg Vorbis file, decoded whole at load into buffers of its
// own, which are not shared and go with it.
#pragma once

#include "audio/krSound.h"

class krMusic : public krSound {
public:
    static const krClassInfo info;

    explicit krMusic(krModule* owner) : krSound(owner) {}
    ~krMusic() override;

    const char* className() const override { return "krMusic"; }

    // Decodes the file on the spot, on this thread; a further load adds a further piece.
    void load(const std::string& name) override;
    // Deletes every buffer of this music.
    void clear() override;

private:
    void deleteBuffers();
};
