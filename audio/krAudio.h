// krAudio: the sound device and its context, the table of sound buffers shared by file name, and
// the listener in force. One for the process, off until a script calls enable_sounds; without it
// every sound is silent and touches nothing.
#pragma once

#include <cstdint>
#include <string>

class krListener;
struct krVector3;

namespace krAudio {
    // Opens the default device with a context and the clamped inverse distance model. A device or
    // context that fails is told in a message box, and sound stays off. Does nothing once on.
    void start();
    bool ready();
    // Deletes every buffer of the table and closes the context and the device; sound is off
    // again. The end of the run.
    void close();

    // The buffer of a WAV file, loaded the first time its name is asked for and shared after
    // that; a file that fails is told once and keeps its (empty) buffer under its name. 0 while
    // sound is off.
    uint32_t soundBuffer(const std::string& name);
    // OpenAL's format for PCM of 1 or 2 channels of 8 or 16 bits.
    int format(uint16_t channels, uint16_t bits);

    // The listener in force: the last one built, until any listener is destroyed.
    krListener* listener();
    void setListener(krListener* listener);

    // OpenAL refuses negative and non-finite parameters with an error that would stay pending
    // and be blamed on the next load; such values go to it as the nearest it takes.
    float safe(float value);
    bool isFinite(const krVector3& v);
}
