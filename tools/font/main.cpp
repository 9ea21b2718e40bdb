// kerrin-font: a TrueType or OpenType font at one pixel size to the engine's font files, the glyph
// table and its atlas, in the folder that is the font's name.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "krDdsWriter.h"
#include "krFontCompiler.h"

namespace fs = std::filesystem;

namespace {

const char usage[] =
    "usage: kerrin-font [options] FONT.ttf SIZE OUTPUT\n"
    "Renders the font at SIZE pixels to the em and writes OUTPUT/normal.font (the glyph table) and\n"
    "OUTPUT/normal.dds (the atlas). Scripts then name the font OUTPUT, as a path in the data tree.\n"
    "  --atlas SIDE      side of the square atlas, a power of two (default: the smallest that fits)\n"
    "  --padding PIXELS  transparent pixels around each glyph, against bleeding (default 2)\n"
    "  --help            shows this\n"
    "Bytes stand for Latin-1 characters, 0x80 to 0x9F for the usual extension (euro sign, quotes).\n";

int fail(const std::string& text) {
    std::fprintf(stderr, "kerrin-font: %s\n", text.c_str());
    return 1;
}

// A whole decimal number, or false.
bool number(const char* text, int32_t* value) {
    char* end = nullptr;
    const long v = std::strtol(text, &end, 10);
    if (end == text || *end || v < INT32_MIN || v > INT32_MAX) return false;
    *value = static_cast<int32_t>(v);
    return true;
}

bool writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out.flush());
}

}  // namespace

int main(int argc, char** argv) {
    krFontOptions options;
    std::string positional[3];
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::fputs(usage, stdout);
            return 0;
        }
        if (arg == "--atlas" || arg == "--padding") {
            int32_t* target = arg == "--atlas" ? &options.atlasSide : &options.padding;
            if (i + 1 >= argc || !number(argv[++i], target)) return fail(arg + " needs a whole number");
        } else if (arg.rfind("--", 0) == 0 || count == 3) {
            std::fputs(usage, stderr);
            return 2;
        } else {
            positional[count++] = arg;
        }
    }
    if (count < 3) {
        std::fputs(usage, stderr);
        return 2;
    }
    if (!number(positional[1].c_str(), &options.pixelSize)) return fail("the size '" + positional[1] + "' is no number");

    krCompiledFont font;
    std::string error;
    if (!krCompileFont(positional[0], options, font, error)) return fail(positional[0] + ": " + error);

    const fs::path folder = positional[2];
    std::error_code ec;
    fs::create_directories(folder, ec);
    const fs::path table = folder / (std::string(krFontFile::styleNames[0]) + krFontFile::tableExtension);
    const fs::path atlas = folder / (std::string(krFontFile::styleNames[0]) + krFontFile::atlasExtension);
    if (!writeFile(table, krEncodeFontFile(font.glyphs))) return fail("cannot write '" + table.string() + "'");
    if (!writeFile(atlas, krEncodeDds(font.atlas, krTextureFormat::bgra, false)))
        return fail("cannot write '" + atlas.string() + "'");
    return 0;
}
