// The process-wide file index: every logical path below the working directory, mapped to a loose
// file or to an entry of a .kr pack. Built once, on the first open, and never rebuilt, so a file
// created later is not found.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct krFileEntry {
    uint8_t packed = 0;  // 0: loose file, opened under its key; 1: pack entry
    // The pack as it was listed. Held as a string, so a pack path of any length mounts.
    std::string packPath;
    uint32_t offset = 0;  // absolute position of the stored data in the pack
    uint32_t size = 0;    // uncompressed
    uint32_t storedSize = 0;
    uint32_t method = 0;  // krPack::storedId or krPack::zlibId
};

class krFileIndex {
public:
    // The entry under a logical path (exact bytes, case-sensitive), or null. Builds the index over
    // the working directory on first use.
    static const krFileEntry* find(const std::string& key);

    // Every regular file below the working directory, depth-first in the order the file system
    // gives: "name" at the top, "dir/name" below.
    static std::vector<std::string> listWorkingDirectory();

    // Replaces the index with one built from a listing, taken in order: paths ending exactly in
    // ".kr" are packs and mount their entries, every other path is a loose file. A loose file
    // beats a pack entry under the same key in either order; among packs the first one wins.
    static void build(const std::vector<std::string>& listing);

    // The engine's stock data pack (shaders, fallback textures), mounted at the root of the
    // logical tree below everything of the working directory, so that a game's own files win.
    // An empty path mounts none. Counts from the next build.
    static void setStockPack(const std::string& path);

    // Test seam: forgets the index, so that the next open scans the working directory again.
    // The engine itself never calls it.
    static void forget();

    static const std::map<std::string, krFileEntry>& entries();
};
