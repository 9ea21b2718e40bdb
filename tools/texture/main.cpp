// kerrin-texture: a PNG image to a DDS texture, uncompressed BGRA unless a block format is asked
// for, optionally with its chain of smaller levels.
#include <cstdio>
#include <fstream>
#include <string>

#include "krDdsWriter.h"
#include "render/krTextureInfo.h"

namespace {

int usage() {
    std::fprintf(stderr, "usage: kerrin-texture [--format bgra|dxt1|dxt5] [--mipmaps] IMAGE.png OUTPUT.dds\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    krTextureFormat format = krTextureFormat::bgra;
    bool mipmaps = false;
    std::string input, output;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--format" && i + 1 < argc) {
            const std::string f = argv[++i];
            if (f == "bgra") format = krTextureFormat::bgra;
            else if (f == "dxt1") format = krTextureFormat::dxt1;
            else if (f == "dxt5") format = krTextureFormat::dxt5;
            else {
                std::fprintf(stderr, "kerrin-texture: unknown format '%s'\n", f.c_str());
                return 1;
            }
        } else if (arg == "--mipmaps") {
            mipmaps = true;
        } else if (arg.rfind("--", 0) == 0) {
            return usage();
        } else if (input.empty()) {
            input = arg;
        } else if (output.empty()) {
            output = arg;
        } else {
            return usage();
        }
    }
    if (output.empty()) return usage();

    krImage image;
    std::string error;
    if (!krLoadPng(input, image, error)) {
        std::fprintf(stderr, "kerrin-texture: %s: %s\n", input.c_str(), error.c_str());
        return 1;
    }
    if (image.width > krMaxTextureSide || image.height > krMaxTextureSide) {
        std::fprintf(stderr, "kerrin-texture: %s: %dx%d is larger than the engine takes (%d a side)\n", input.c_str(),
                     image.width, image.height, krMaxTextureSide);
        return 1;
    }
    const std::string file = krEncodeDds(image, format, mipmaps);
    std::ofstream out(output, std::ios::binary);
    out.write(file.data(), static_cast<std::streamsize>(file.size()));
    if (!out.flush()) {
        std::fprintf(stderr, "kerrin-texture: cannot write '%s'\n", output.c_str());
        return 1;
    }
    return 0;
}
