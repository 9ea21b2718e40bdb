// Reading the directory of one .kr pack archive: the one pass over its chunks that tells which
// entries it holds and where their data lies. The file index mounts what it yields; the content
// tools show it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

struct krPackEntry {
    std::string name;     // as stored: the path below the pack's mount point
    uint32_t method = 0;  // the entry chunk's id: krPack::storedId or krPack::zlibId
    uint32_t offset = 0;  // absolute position of the data in the pack file
    uint32_t size = 0;
    uint32_t storedSize = 0;
};

// Calls visit for each entry of the pack's first directory, in file order. Returns false when the
// file cannot be opened or is no pack (shorter than a chunk header, or another root id); a pack
// whose chunks run past its end yields the entries read up to that point.
bool krReadPackDirectory(const std::string& path, const std::function<void(const krPackEntry&)>& visit);
