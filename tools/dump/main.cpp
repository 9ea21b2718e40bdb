// kerrin-dump: shows the chunk tree of any chunk file (id, name where known, offset, size, nesting,
// and the main fields of skeleton and animation records), for a pack its directory, and for a
// font the glyphs of its table. Problems in the file go to standard error and make the exit
// status non-zero; what could be read is still shown.
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "core/krFile.h"
#include "core/krFileIndexPack.h"
#include "core/krPackFormat.h"
#include "krChunkNames.h"
#include "render/krFont.h"

namespace {

// Deeper nesting than any format has; a hostile file gets no deeper into the stack.
constexpr int maxDepth = 32;

// The families of chunk files, by the top byte of their ids: packs, meshes and skeletons, fonts,
// replays.
constexpr uint32_t firstFamily = 0x1, lastFamily = 0x4;

const char usage[] = "usage: kerrin-dump FILE...\n";
const char help[] =
    "\n"
    "Shows the chunk tree of each chunk file (packs, meshes, split trees and the other binary\n"
    "assets): id, name where known, offset, size and nesting, and a pack's directory. Problems go\n"
    "to standard error and make the exit status 1; what could be read is still shown.\n";

// Whether the bytes start like a chunk file: a first chunk of a known id or family.
bool isChunkFile(const krFile& file) {
    if (file.size < krChunk::headerSize) return false;
    const uint32_t id = krGetChunkHeader(file.data).id;
    const uint32_t family = id >> 24;
    return krFindChunkName(id) || (family >= firstFamily && family <= lastFamily);
}

class Dump {
public:
    Dump(const std::string& path, krFile& file) : path(path), file(file) {}

    void chunks(krChunk* parent, int depth) {
        krChunk chunk;
        for (;;) {
            const uint32_t at = file.cursor;
            const uint32_t left = parent ? parent->size : file.size - file.cursor;
            if (!file.readChunk(&chunk, parent, 0)) {
                if (left) problem("%" PRIu32 " bytes at offset %" PRIu32 " are too few for a chunk", left, at);
                return;
            }
            const uint32_t claimed = krGetChunkHeader(file.data + at).size;
            const krChunkName* known = krFindChunkName(chunk.id);
            std::printf("%*s0x%08" PRIX32 " %-16s at %-10" PRIu32 " size %" PRIu32, depth * 2, "", chunk.id,
                        known ? known->name : "?", at, claimed);
            if (known && known->describe) {
                const std::string fields = known->describe(reinterpret_cast<const uint8_t*>(file.data + file.cursor), chunk.size);
                if (!fields.empty()) std::printf("  %s", fields.c_str());
            }
            std::printf("\n");
            if (claimed != chunk.size)
                problem("chunk 0x%08" PRIX32 " at offset %" PRIu32 " claims %" PRIu32 " bytes, %" PRIu32 " are there",
                        chunk.id, at, claimed, chunk.size);
            int32_t childrenAt = known ? known->childrenAt : guessChildren(chunk);
            if (childrenAt != krChunkName::leaf && depth + 1 >= maxDepth) {
                problem("chunks nested deeper than %d at offset %" PRIu32, maxDepth, at);
                childrenAt = krChunkName::leaf;
            }
            if (childrenAt != krChunkName::leaf && file.readData(&chunk, static_cast<uint32_t>(childrenAt)))
                chunks(&chunk, depth + 1);
            if (chunk.id == krFontFile::glyphsId) glyphs(chunk, depth + 1);
            file.skipChunk(&chunk);
        }
    }

    void packDirectory() {
        std::printf("\n%-40s %-6s %10s %10s %10s\n", "entry", "method", "offset", "size", "stored");
        krReadPackDirectory(path, [](const krPackEntry& e) {
            std::printf("%-40s %-6s %10" PRIu32 " %10" PRIu32 " %10" PRIu32 "\n", e.name.c_str(),
                        e.method == krPack::storedId ? "stored" : "zlib", e.offset, e.size, e.storedSize);
        });
    }

    bool clean() const { return problems == 0; }

private:
    // The glyphs a font's table defines: byte, the character where it is printable, the
    // rectangle in the atlas, and the drawn width in font heights.
    void glyphs(const krChunk& chunk, int depth) {
        if (chunk.size < krFontFile::glyphTableSize) {
            problem("glyph table at offset %" PRIu32 " holds %" PRIu32 " bytes, not %" PRIu32, file.cursor, chunk.size,
                    krFontFile::glyphTableSize);
            return;
        }
        krFont font;
        std::memcpy(font.glyphs, file.data + file.cursor, krFontFile::glyphTableSize);
        int defined = 0;
        for (int c = 0; c < krFont::glyphCount; ++c) {
            const krGlyph& g = font.glyphs[c];
            if (g.width == 0 && g.height == 0) continue;
            ++defined;
            const char shown[2] = {c >= 0x20 && c < 0x7F ? static_cast<char>(c) : ' ', 0};
            std::printf("%*s%3d %s  u %.6f v %.6f width %.6f height %.6f  advance %.4f\n", depth * 2, "", c, shown,
                        g.u, g.v, g.width, g.height, font.advance(static_cast<uint8_t>(c)));
        }
        std::printf("%*s%d glyphs defined\n", depth * 2, "", defined);
    }

    // A chunk of an unknown id is shown as a parent when its payload is exactly a run of chunks.
    int32_t guessChildren(const krChunk& chunk) const {
        const uint8_t* at = reinterpret_cast<const uint8_t*>(file.data + file.cursor);
        uint32_t left = chunk.size;
        while (left >= krChunk::headerSize) {
            const uint32_t size = krGetChunkHeader(at).size;
            if (size > left - krChunk::headerSize) return krChunkName::leaf;
            at += krChunk::headerSize + size;
            left -= krChunk::headerSize + size;
        }
        return chunk.size > 0 && left == 0 ? 0 : krChunkName::leaf;
    }

    template <typename... Args>
    void problem(const char* format, Args... args) {
        std::fprintf(stderr, "kerrin-dump: %s: ", path.c_str());
        std::fprintf(stderr, format, args...);
        std::fputc('\n', stderr);
        ++problems;
    }

    const std::string& path;
    krFile& file;
    int problems = 0;
};

bool dumpFile(const std::string& path) {
    // A device or a pipe could go on without end.
    std::error_code error;
    if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
        std::fprintf(stderr, "kerrin-dump: %s: not a regular file\n", path.c_str());
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "kerrin-dump: cannot open %s: %s\n", path.c_str(), std::strerror(errno));
        return false;
    }
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad() || bytes.size() >= UINT32_MAX) {
        std::fprintf(stderr, "kerrin-dump: cannot read %s: %s\n", path.c_str(),
                     in.bad() ? std::strerror(errno) : "larger than a chunk file can be");
        return false;
    }
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (!isChunkFile(file)) {
        std::fprintf(stderr, "kerrin-dump: %s: not a chunk file\n", path.c_str());
        return false;
    }
    Dump dump(path, file);
    dump.chunks(nullptr, 0);
    if (file.size >= krChunk::headerSize && krGetU32(file.data) == krPack::rootId) dump.packDirectory();
    return dump.clean();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        std::fputs(help, stdout);
        return 0;
    }
    if (argc < 2) {
        std::fputs(usage, stderr);
        return 1;
    }
    bool ok = true;
    for (int i = 1; i < argc; ++i) {
        if (argc > 2) std::printf("%s%s:\n", i > 1 ? "\n" : "", argv[i]);
        ok = dumpFile(argv[i]) && ok;
    }
    return ok ? 0 : 1;
}
