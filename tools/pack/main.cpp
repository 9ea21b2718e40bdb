// kerrin-pack: packs a folder into a .kr archive. Entry names are the files' paths below the
// folder with "/" separators, in sorted order so that the same folder gives the same pack.
#include <fnmatch.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "core/krPackFormat.h"
#include "krPackWriter.h"

namespace fs = std::filesystem;

namespace {

const char usage[] =
    "usage: kerrin-pack [options] FOLDER PACK.kr\n"
    "  --method zlib|stored   how entries are kept unless a pattern says otherwise (default zlib)\n"
    "  --store PATTERN        keep entries whose name matches PATTERN uncompressed\n"
    "  --compress PATTERN     compress entries whose name matches PATTERN\n"
    "Patterns use * and ? and match the whole entry name, '/' included; the last matching one wins.\n";

const char helpText[] =
    "\n"
    "A pack in a game's folder mounts its entries below the pack's own path without \".kr\": maps/a.kr\n"
    "holds maps/a/... A pack named data.kr, or one in a folder named data, mounts at the root. Loose\n"
    "files win over pack entries of the same name, and among packs the first one listed wins.\n";

struct Rule {
    std::string pattern;
    uint32_t method;
};

struct Options {
    uint32_t method = krPack::zlibId;
    std::vector<Rule> rules;
    fs::path folder, pack;
};

int fail(const std::string& text) {
    std::fprintf(stderr, "kerrin-pack: %s\n", text.c_str());
    return 1;
}

bool methodNamed(const std::string& name, uint32_t* method) {
    if (name == "zlib") *method = krPack::zlibId;
    else if (name == "stored") *method = krPack::storedId;
    else return false;
    return true;
}

bool parseArgs(int argc, char** argv, Options* o, std::string* error) {
    std::vector<std::string> positional;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool takesValue = arg == "--method" || arg == "--store" || arg == "--compress";
        if (takesValue && i + 1 >= argc) {
            *error = arg + " needs a value";
            return false;
        }
        if (arg == "--method") {
            if (!methodNamed(argv[++i], &o->method)) {
                *error = std::string("unknown method \"") + argv[i] + "\" (zlib or stored)";
                return false;
            }
        } else if (arg == "--store" || arg == "--compress") {
            o->rules.push_back({argv[++i], arg == "--store" ? krPack::storedId : krPack::zlibId});
        } else if (arg.size() > 1 && arg[0] == '-') {
            *error = "unknown option " + arg;
            return false;
        } else {
            positional.push_back(arg);
        }
    }
    if (positional.size() != 2) {
        *error = "expected a folder and a pack name";
        return false;
    }
    o->folder = positional[0];
    o->pack = positional[1];
    return true;
}

uint32_t methodFor(const Options& o, const std::string& name) {
    uint32_t method = o.method;
    for (const Rule& r : o.rules)
        if (fnmatch(r.pattern.c_str(), name.c_str(), 0) == 0) method = r.method;
    return method;
}

// Why the last file operation failed, in words.
std::string reason() { return std::strerror(errno); }

bool readWhole(const fs::path& path, std::string* content) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    content->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        std::fputs(helpText, stdout);
        return 0;
    }
    Options options;
    std::string error;
    if (!parseArgs(argc, argv, &options, &error)) {
        std::fputs(usage, stderr);
        return fail(error);
    }
    std::error_code ec;
    if (!fs::is_directory(options.folder, ec)) return fail(options.folder.string() + " is not a folder");

    // Symbolic links to folders are not followed, so a folder that links back into itself packs once.
    std::vector<std::pair<std::string, fs::path>> files;
    const fs::path packTarget = fs::weakly_canonical(options.pack, ec);
    for (fs::recursive_directory_iterator it(options.folder, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code statusError;
        if (!it->is_regular_file(statusError)) continue;
        // A pack written into the folder it packs must not end up inside itself.
        if (fs::weakly_canonical(it->path(), statusError) == packTarget) continue;
        files.emplace_back(it->path().lexically_relative(options.folder).generic_string(), it->path());
    }
    if (ec) return fail("cannot list " + options.folder.string() + ": " + ec.message());
    std::sort(files.begin(), files.end());

    krPackWriter writer;
    for (const auto& [name, path] : files) {
        std::string content;
        if (!readWhole(path, &content)) return fail("cannot read " + path.string() + ": " + reason());
        if (!writer.add(name, content, methodFor(options, name), &error)) return fail(error);
    }
    std::string pack;
    if (!writer.build(&pack, &error)) return fail(error);

    std::ofstream out(options.pack, std::ios::binary | std::ios::trunc);
    if (!out) return fail("cannot write " + options.pack.string() + ": " + reason());
    out.write(pack.data(), static_cast<std::streamsize>(pack.size()));
    out.close();
    if (!out) return fail("cannot write " + options.pack.string() + ": " + reason());
    return 0;
}
