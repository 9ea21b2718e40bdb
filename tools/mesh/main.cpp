// kerrin-mesh: a Wavefront OBJ or glTF 2.0 model to a mesh file of one object with its mesh; for
// a skinned glTF model also the skeleton file and one animation file per animation.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "krMeshCompiler.h"

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: kerrin-mesh [--scale S] [--kind drawn|hull|rays|plain] [--name NAME]\n"
                 "                   [--skeleton FILE] [--animations FOLDER] [--keys-per-second N] [--once ANIMATION]...\n"
                 "                   MODEL OUTPUT\n"
                 "  MODEL is .obj (with its .mtl), .gltf or .glb; OUTPUT is the mesh file to write.\n"
                 "  A skinned glTF model's skeleton goes to FILE, and each of its animations to FOLDER/NAME.anim,\n"
                 "  sampled at N keys a second (30); an animation named by --once is played once, so its keys\n"
                 "  end on its last pose (load it with DONT_LOOP).\n");
    return 2;
}

bool writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (out.flush()) return true;
    std::fprintf(stderr, "kerrin-mesh: cannot write '%s'\n", path.c_str());
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
    krMeshCompileOptions options;
    krModel model;
    std::string input, output, skeletonFile, animationFolder;
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
