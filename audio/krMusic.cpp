// Music: Ogg Vorbis files through the engine's file reader into buffers of their own.
#include "audio/krMusic.h"

#include <AL/al.h>

#include "audio/krAudio.h"
#include "audio/krVorbisReader.h"
#include "core/krFile.h"
#include "core/krMain.h"

namespace {

// Its script interface is that of krSound, with load reading Ogg Vorbis instead.
const krMemberInfo musicMembers[] = {
    {"load", krCall, "(file)", "decodes a whole Ogg Vorbis file into a piece of its own; plays choose among the pieces"},
};

void report(const std::string& text) {
    if (krMain* root = krMain::instance()) root->errorMsg(text);
}

}  // namespace

const krClassInfo krMusic::info = {"krMusic", "krSound", "new_music", musicMembers, {},
                                   "a sound of Ogg Vorbis files, each decoded whole at its load"};

krMusic::~krMusic() {
    setPlaying(false);
    deleteBuffers();
}

void krMusic::load(const std::string& name) {
    krDecodedMusic music;
    krVorbisResult result;
    {
        krFile file(name, true);
        // A missing file has been told by the file layer.
        if (!file.data) return;
        result = krDecodeVorbis(file, music);
    }
    const std::string quoted = "\"" + name + "\"";
    if (result == krVorbisResult::refused) {
        report("Opening music " + quoted + " failed");
        return;
    }
    // A stream cut short keeps what came before the break, and says so.
    bool failed = result == krVorbisResult::incomplete;
    if (krAudio::ready()) {
        alGetError();
        ALuint buffer = 0;
        alGenBuffers(1, &buffer);
        if (alGetError() == AL_NO_ERROR && buffer) {
            currentBuffer = buffer;
            alBufferData(buffer, krAudio::format(music.channels, 16), music.samples.data(),
                         static_cast<ALsizei>(music.samples.size()), static_cast<ALsizei>(music.rate));
            failed = failed || alGetError() != AL_NO_ERROR;
            buffers.push_back(buffer);
        }
    }
    if (failed) report("Loading music " + quoted + " failed");
}

void krMusic::clear() {
    setPlaying(false);
    deleteBuffers();
    krSound::clear();
}

void krMusic::deleteBuffers() {
    // After the end of the run the buffers went with the device.
    if (krAudio::ready())
        for (uint32_t buffer : buffers) alDeleteBuffers(1, &buffer);
    buffers.clear();
    currentBuffer = 0;
}
