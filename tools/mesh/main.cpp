// kerrin-mesh: a Wavefront OBJ or glTF 2.0 model to a mesh file of one object with one mesh.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "krMeshCompiler.h"

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: kerrin-mesh [--scale S] [--kind drawn|hull|rays|plain] [--name NAME] MODEL OUTPUT\n"
                 "  MODEL is .obj (with its .mtl), .gltf or .glb; OUTPUT is the mesh file to write.\n");
    return 2;
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
    std::string input, output;
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

    krModel model;
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
    std::ofstream out(output, std::ios::binary);
    out.write(file.data(), static_cast<std::streamsize>(file.size()));
    if (!out.flush()) {
        std::fprintf(stderr, "kerrin-mesh: cannot write '%s'\n", output.c_str());
        return 1;
    }
    return 0;
}
