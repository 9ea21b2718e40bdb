// kerrin-sound: makes the engine's generated sounds and writes them as WAV or Ogg Vorbis, chosen
// by the output's extension.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "krSynth.h"
#include "krVorbisWriter.h"
#include "krWavWriter.h"

namespace {

// Vorbis quality of the written files: small files that still sound clean.
constexpr float defaultQuality = 0.3f;

const char usageText[] =
    "usage: kerrin-sound [--quality Q] engine|music OUTPUT.wav|OUTPUT.ogg\n"
    "       kerrin-sound [--quality Q] tone HZ SECONDS RATE CHANNELS OUTPUT.wav|OUTPUT.ogg\n";

const char helpText[] =
    "\n"
    "Makes a generated sound: the engine hum that vehicles pitch with their speed, the demo's music,\n"
    "or a plain tone. The output's extension chooses PCM WAV (for new_sound) or Ogg Vorbis (for\n"
    "new_music), of quality Q from 0 to 1 (0.3).\n";

int usage() {
    std::fputs(usageText, stderr);
    return 2;
}

bool endsWith(const std::string& s, const std::string& tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usageText, stdout);
        std::fputs(helpText, stdout);
        return 0;
    }
    float quality = defaultQuality;
    int i = 1;
    if (i + 1 < argc && std::string(argv[i]) == "--quality") {
        quality = std::strtof(argv[i + 1], nullptr);
        i += 2;
    }
    if (i >= argc) return usage();
    const std::string kind = argv[i++];
    krPcm pcm;
    if (kind == "engine" && i + 1 == argc) {
        pcm = krSynthEngineHum();
    } else if (kind == "music" && i + 1 == argc) {
        pcm = krSynthMusic();
    } else if (kind == "tone" && i + 5 == argc) {
        const float hz = std::strtof(argv[i], nullptr);
        const float seconds = std::strtof(argv[i + 1], nullptr);
        const long rate = std::strtol(argv[i + 2], nullptr, 10);
        const long channels = std::strtol(argv[i + 3], nullptr, 10);
        if (!(hz > 0) || !(seconds > 0) || seconds > 3600 || rate < 1000 || rate > 192000 || channels < 1 ||
            channels > 2) {
            std::fprintf(stderr, "kerrin-sound: a tone needs a frequency, up to an hour, 1000 to 192000 Hz and 1 or 2 channels\n");
            return 1;
        }
        pcm = krSynthTone(hz, seconds, static_cast<uint32_t>(rate), static_cast<uint16_t>(channels), 0.5f);
        i += 4;
    } else {
        return usage();
    }

    const std::string output = argv[i];
    std::string file;
    if (endsWith(output, ".wav")) {
        file = krEncodeWav(pcm);
    } else if (endsWith(output, ".ogg")) {
        std::string error;
        if (!krEncodeVorbis(pcm, quality, file, error)) {
            std::fprintf(stderr, "kerrin-sound: %s\n", error.c_str());
            return 1;
        }
    } else {
        return usage();
    }
    std::ofstream out(output, std::ios::binary);
    if (out) out.write(file.data(), static_cast<std::streamsize>(file.size()));
    if (!out || !out.flush()) {
        std::fprintf(stderr, "kerrin-sound: cannot write %s: %s\n", output.c_str(), std::strerror(errno));
        return 1;
    }
    return 0;
}
