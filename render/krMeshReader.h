// krMeshReader: one mesh, split, skeleton or animation file being read. It holds the file with the
// chunk reader, the nesting depth reached so far, and the one report that a damaged file earns,
// so that every number the file gives is checked against the bytes that are really there.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "core/krFile.h"

class krMeshReader {
public:
    // Opens the file; a missing one is reported by the file layer. kind names the format in
    // reports ("mesh", "skeleton", "animation").
    explicit krMeshReader(const std::string& name, const char* kind = "mesh");
    // Reads chunks from bytes already in memory; name is only used in reports.
    krMeshReader(const std::string& name, const void* bytes, uint32_t count, const char* kind = "mesh");

    // The root chunk; false for an empty or missing file.
    bool first(krChunk& root) { return file.readChunk(&root, nullptr, 0); }
    // The next chunk of parent's list, cut to what parent holds; false at its end.
    bool next(krChunk& parent, krChunk& child) { return file.readChunk(&child, &parent, 0); }
    void skip(krChunk& chunk) { file.skipChunk(&chunk); }

    // Copies a fixed record out of chunk; false, reporting the file, when chunk is too short.
    template <typename T>
    bool record(krChunk& chunk, T& out, const char* what) {
        const void* p = take(chunk, sizeof(T), what);
        if (p) std::memcpy(&out, p, sizeof(T));
        return p != nullptr;
    }
    bool count(krChunk& chunk, uint32_t& out, const char* what);
    // count items of itemSize bytes, in place; null, reporting the file, when they are not there.
    void* array(krChunk& chunk, uint64_t count, uint32_t itemSize, const char* what);

    // Tells the root once per file what is wrong with it; later problems of the same file are
    // consequences more often than not.
    void damaged(const std::string& what);

    // How far the cursor has come, 0 to 1.
    float fraction() const { return file.size ? static_cast<float>(file.cursor) / file.size : 1.0f; }
    const std::string& getName() const { return name; }

    // Objects and splits nest no deeper than this in one file: a hostile file cannot recurse the
    // loader off its stack, and no modelled scene comes near it.
    static constexpr int maxNesting = 64;
    int depth = 0;

private:
    void* take(krChunk& chunk, uint64_t bytes, const char* what);

    krFile file;
    std::string name;
    const char* kind;
    bool reported = false;
};
