// kerrin-texture: a PNG image to a DDS texture, uncompressed BGRA unless a block format is asked
// for, optionally with its chain of smaller levels.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "krDdsWriter.h"
#include "render/krTextureInfo.h"

namespace {

const char usageText[] = "usage: kerrin-texture [--format bgra|dxt1|dxt5] [--mipmaps] IMAGE.png OUTPUT.dds\n";

const char helpText[] =
    "\n"
    "Converts a PNG image to the DDS texture the engine reads.\n"
    "  --format bgra   uncompressed, exact colours (default; for normal and specular maps)\n"
    "  --format dxt1   block-compressed colour, no alpha (colour maps)\n"
    "  --format dxt5   block-compressed colour with smooth alpha\n"
    "  --mipmaps       adds the chain of smaller levels\n"
    "Put the texture where the mesh names it: beside the mesh file, under the image's name with .dds.\n";

int usage() {
    std::fputs(usageText, stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usageText, stdout);
        std::fputs(helpText, stdout);
        return 0;
    }
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

    if (!std::ifstream(input)) {
        std::fprintf(stderr, "kerrin-texture: cannot read '%s': %s\n", input.c_str(), std::strerror(errno));
        return 1;
    }
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
    if (out) out.write(file.data(), static_cast<std::streamsize>(file.size()));
    if (!out || !out.flush()) {
        std::fprintf(stderr, "kerrin-texture: cannot write '%s': %s\n", output.c_str(), std::strerror(errno));
        return 1;
    }
    return 0;
}
