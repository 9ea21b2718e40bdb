// kerrin-split: a list of placed mesh files to a split-tree file that a level loads in one go.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "core/krMain.h"
#include "krSplitBuilder.h"

namespace {

const char usageText[] =
    "usage: kerrin-split [--leaves N] LIST OUTPUT\n"
    "  LIST has a line \"FILE X Y Z [rotate DEGREES AX AY AZ] [name NAME] [type N]\" for each\n"
    "  placed mesh file, relative to the list's folder; N leaves at most per split (8).\n";

const char helpText[] =
    "\n"
    "Builds a split tree: a level's placed mesh files in boxes within boxes, which the engine loads\n"
    "in one go and culls whole branches of. Text after # on a line is a comment. The tree names\n"
    "each mesh file relative to the tree's own folder: keep them there, in the folder or pack.\n";

int usage() {
    std::fputs(usageText, stderr);
    return 2;
}

bool damaged = false;

// The engine's loader reports damaged mesh files on the root; a tool shows them and fails.
void report(const char* event, const std::string& text) {
    if (std::string(event) != "errorMsg") return;
    std::fprintf(stderr, "kerrin-split: %s\n", text.c_str());
    damaged = true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usageText, stdout);
        std::fputs(helpText, stdout);
        return 0;
    }
    krSplitOptions options;
    std::string list, output;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--leaves" && i + 1 < argc) {
            char* end = nullptr;
            const long n = std::strtol(argv[++i], &end, 10);
            if (*end || n < 1) {
                std::fprintf(stderr, "kerrin-split: --leaves takes a whole number above 0, not '%s'\n", argv[i]);
                return 1;
            }
            options.leavesPerSplit = size_t(n);
        } else if (arg.rfind("--", 0) == 0) {
            return usage();
        } else if (list.empty()) {
            list = arg;
        } else if (output.empty()) {
            output = arg;
        } else {
            return usage();
        }
    }
    if (output.empty()) return usage();

    std::ifstream in(list, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "kerrin-split: cannot read '%s': %s\n", list.c_str(), std::strerror(errno));
        return 1;
    }
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto* root = new krMain(argc, argv);
    krMain::setReportObserver(report);
    std::vector<krPlacement> placements;
    std::string file, error;
    const std::string listDir = std::filesystem::path(list).parent_path().string();
    const std::string outputDir = std::filesystem::path(output).parent_path().string();
    const bool built = krParsePlacements(text, placements, error) &&
                       krBuildSplitTree(placements, listDir.empty() ? "." : listDir, outputDir.empty() ? "." : outputDir,
                                        options, file, error);
    krMain::setReportObserver(nullptr);
    root->release();
    if (!built) {
        std::fprintf(stderr, "kerrin-split: %s: %s\n", list.c_str(), error.c_str());
        return 1;
    }
    if (damaged) return 1;
    std::ofstream out(output, std::ios::binary);
    if (out) out.write(file.data(), static_cast<std::streamsize>(file.size()));
    if (!out || !out.flush()) {
        std::fprintf(stderr, "kerrin-split: cannot write '%s': %s\n", output.c_str(), std::strerror(errno));
        return 1;
    }
    return 0;
}
