// kerrin-mesh: a Wavefront OBJ or glTF 2.0 model to a mesh file of one object with its mesh; for
// a skinned glTF model also the skeleton file and one animation file per animation.
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "krMeshCompiler.h"

namespace {

const char usageText[] =
    "usage: kerrin-mesh [--scale S] [--kind drawn|hull|rays|plain] [--name NAME] [--images DIR]\n"
    "                   [--skeleton FILE] [--animations FOLDER] [--keys-per-second N] [--once ANIMATION]...\n"
    "                   MODEL OUTPUT\n"
    "  MODEL is .obj (with its .mtl), .gltf or .glb; OUTPUT is the mesh file to write.\n";

const char helpText[] =
    "\n"
    "Writes one object with its mesh. What a game must do with it:\n"
    "  - Textures are named in the mesh as .dds files at the path the model gives, relative to\n"
    "    the mesh file: convert each image with kerrin-texture (x.png to x.dds) and put it there,\n"
    "    beside the mesh, in the same folder or pack.\n"
    "  - Give every material an ambient colour (Ka in a .mtl file): without one it draws black\n"
    "    where no lamp shines on it.\n"
    "  --scale S              multiplies every position (default 1)\n"
    "  --kind K               drawn (default), hull or rays (collision), plain (neither)\n"
    "  --name NAME            the object's name (default: the model's file name)\n"
    "  --images DIR           where the model's images are, when not beside it (for the warnings only)\n"
    "  --skeleton FILE        a skinned glTF model's skeleton goes to FILE\n"
    "  --animations FOLDER    and each of its animations to FOLDER/NAME.anim\n"
    "  --keys-per-second N    animation keys a second (30)\n"
    "  --once ANIMATION       played once: its keys end on its last pose (load it with DONT_LOOP)\n"
    "Warnings (a missing .mtl or texture, a renamed texture, a material without ambient colour)\n"
    "go to standard error; the mesh is still written.\n";

int usage() {
    std::fputs(usageText, stderr);
    return 2;
}

bool writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    if (out) out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (out && out.flush()) return true;
    std::fprintf(stderr, "kerrin-mesh: cannot write '%s': %s\n", path.c_str(), std::strerror(errno));
    return false;
}

// An animation's name as a file name: letters, digits, '-' and '_' kept, the rest '_'.
std::string fileNameOf(const std::string& name) {
    std::string file = name;
    for (char& c : file)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_') c = '_';
    return file;
}

bool endsWith(const std::string& s, const std::string& tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

bool kindOf(const std::string& word, int32_t& kind) {
    if (word == "drawn") kind = krMeshFile::kindDrawn;
    else if (word == "hull") kind = krMeshFile::kindHull;
    else if (word == "rays") kind = krMeshFile::kindRays;
    else if (word == "plain") kind = 0;
    else return false;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usageText, stdout);
        std::fputs(helpText, stdout);
        return 0;
    }
    krMeshCompileOptions options;
    krModel model;
    std::string input, output, skeletonFile, animationFolder, images;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--scale" && hasValue) {
            char* end = nullptr;
            options.scale = std::strtof(argv[++i], &end);
            if (*end || !(options.scale > 0)) {
                std::fprintf(stderr, "kerrin-mesh: the scale must be a number above 0, not '%s'\n", argv[i]);
                return 1;
            }
        } else if (arg == "--kind" && hasValue) {
            if (!kindOf(argv[++i], options.kind)) {
                std::fprintf(stderr, "kerrin-mesh: unknown mesh kind '%s'\n", argv[i]);
                return 1;
            }
        } else if (arg == "--name" && hasValue) {
            options.name = argv[++i];
        } else if (arg == "--images" && hasValue) {
            images = argv[++i];
        } else if (arg == "--skeleton" && hasValue) {
            skeletonFile = argv[++i];
        } else if (arg == "--animations" && hasValue) {
            animationFolder = argv[++i];
        } else if (arg == "--keys-per-second" && hasValue) {
            char* end = nullptr;
            model.keysPerSecond = std::strtof(argv[++i], &end);
            if (*end || !(model.keysPerSecond >= 1 && model.keysPerSecond <= 1000)) {
                std::fprintf(stderr, "kerrin-mesh: keys a second must be from 1 to 1000, not '%s'\n", argv[i]);
                return 1;
            }
        } else if (arg == "--once" && hasValue) {
            model.playedOnce.insert(argv[++i]);
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
    if (options.name.empty()) {
        const size_t slash = input.find_last_of("/\\");
        options.name = input.substr(slash == std::string::npos ? 0 : slash + 1);
        options.name = options.name.substr(0, options.name.rfind('.'));
    }

    if (!std::ifstream(input)) {
        std::fprintf(stderr, "kerrin-mesh: cannot read '%s': %s\n", input.c_str(), std::strerror(errno));
        return 1;
    }
    std::string error;
    bool read;
    if (endsWith(input, ".obj")) read = krReadObjModel(input, model, error);
    else if (endsWith(input, ".gltf") || endsWith(input, ".glb")) read = krReadGltfModel(input, model, error);
    else {
        std::fprintf(stderr, "kerrin-mesh: '%s' is neither .obj nor .gltf nor .glb\n", input.c_str());
        return 1;
    }
    std::string file;
    if (!read || !krCompileMesh(model, options, file, error)) {
        std::fprintf(stderr, "kerrin-mesh: %s: %s\n", input.c_str(), error.c_str());
        return 1;
    }
    if (images.empty()) images = std::filesystem::path(input).parent_path().string();
    std::vector<std::string> warnings = model.warnings;
    for (const std::string& w : krTextureWarnings(model, images, std::filesystem::path(output).parent_path().string()))
        warnings.push_back(w);
    for (const std::string& w : warnings) std::fprintf(stderr, "kerrin-mesh: %s: warning: %s\n", input.c_str(), w.c_str());
    if (!writeFile(output, file)) return 1;
    if (!skeletonFile.empty()) {
        if (!krCompileSkeleton(model, options, file, error)) {
            std::fprintf(stderr, "kerrin-mesh: %s: %s\n", input.c_str(), error.c_str());
            return 1;
        }
        if (!writeFile(skeletonFile, file)) return 1;
    }
    if (!animationFolder.empty()) {
        std::error_code failed;
        std::filesystem::create_directories(animationFolder, failed);
        for (const krModelAnimation& a : model.animations) {
            if (!krCompileAnimation(a, options, file, error)) {
                std::fprintf(stderr, "kerrin-mesh: %s: %s\n", input.c_str(), error.c_str());
                return 1;
            }
            if (!writeFile(animationFolder + "/" + fileNameOf(a.name) + ".anim", file)) return 1;
        }
    }
    return 0;
}
