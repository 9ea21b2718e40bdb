// The kerrin executable: reads the command line, then starts the engine, runs the first script and
// the frames, and stops.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "core/krFileIndex.h"
#include "core/krVersion.h"
#include "krProgram.h"
#include "krReference.h"
#include "platform/krSystem.h"
#include "script/krScripting.h"

namespace {

// Exit code of a command line that names no first script that exists.
constexpr int usageExitCode = 2;

// The engine's stock data pack: beside the program, in the data folder of the prefix it was
// installed to, or where the build made it. "" when there is none.
std::string stockDataPack() {
    namespace fs = std::filesystem;
    std::vector<fs::path> candidates;
    const std::string program = krSystem::executablePath();
    if (!program.empty()) {
        const fs::path folder = fs::path(program).parent_path();
        candidates.push_back(folder / "data.kr");
        candidates.push_back(folder.parent_path() / KERRIN_DATA_INSTALL_DIR / "data.kr");
    }
    candidates.push_back(KERRIN_BUILD_DATA_PACK);
    for (const fs::path& candidate : candidates) {
        std::error_code error;
        if (fs::is_regular_file(candidate, error)) return candidate.string();
    }
    return {};
}

const char usage[] =
    "usage: kerrin [-i first.script]\n"
    "       kerrin --help | --version | --reference\n";

const char help[] =
    "Kerrin runs a game made of scripts and assets in the working directory.\n"
    "\n"
    "  kerrin                  runs init.script of the working directory\n"
    "  kerrin -i name.script   runs that script first instead\n"
    "  kerrin --version        prints the version\n"
    "  kerrin --reference      prints every script function, constant and class as Markdown\n"
    "  kerrin --help           prints this\n"
    "\n"
    "Run it from the game's folder: scripts name files relative to the working directory.\n"
    "Messages of the engine go to the script event MAIN.errorMsg; errors no handler takes are\n"
    "written to standard error.\n";

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        std::fputs("\n", stdout);
        std::fputs(help, stdout);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("kerrin %s\n", krVersion);
        return 0;
    }

    krFileIndex::setStockPack(stockDataPack());
    krProgram::start(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], "--reference") == 0) {
        std::fputs(krReference::markdown().c_str(), stdout);
        krProgram::stop();
        return 0;
    }
    // Without its first script the engine would run on with nothing to do.
    const std::string first = krScripting::firstScriptName(argc, argv);
    if (!krFileIndex::find(first)) {
        std::error_code error;
        std::fprintf(stderr, "kerrin: no first script: \"%s\" was not found below the working directory %s\n%s",
                     first.c_str(), std::filesystem::current_path(error).c_str(), usage);
        krProgram::stop();
        return usageExitCode;
    }
    const int exitCode = krProgram::run();
    krProgram::stop();
    return exitCode;
}
