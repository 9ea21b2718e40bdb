// krWavReader: finds the format and the PCM samples of a WAV file image, in place.
#pragma once

#include <cstdint>

// Until the file says otherwise: 16-bit mono at 22050 Hz, and no samples.
struct krWavSound {
    uint16_t channels = 1;
    uint16_t bits = 16;
    uint32_t rate = 22050;
    // Inside the image; whole frames only.
    const char* samples = nullptr;
    uint32_t bytes = 0;
};

// Walks the chunks of a RIFF WAVE image of size bytes up to its first "data" chunk behind a PCM
// "fmt ". False when there is nothing the engine can play: no RIFF WAVE header, a chunk that
// runs past the end of the image or of the RIFF size, a "fmt " cut short, a format other than
// PCM, other than 1 or 2 channels, other than 8 or 16 bits, a rate of 0 or one OpenAL cannot
// hold, or no data.
bool krReadWav(const char* image, uint32_t size, krWavSound& out);
