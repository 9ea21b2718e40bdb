// The chunk ids kerrin-dump knows by name, and which of them hold further chunks. A new format
// teaches the dump its chunks with lines in the table of krChunkNames.cpp.
#pragma once

#include <cstdint>

struct krChunkName {
    uint32_t id;
    const char* name;
    // Where the child chunks start in the payload, or leaf for a payload of plain data.
    int32_t childrenAt;

    static constexpr int32_t leaf = -1;
};

// The entry for an id, or null for an id nobody has named.
const krChunkName* krFindChunkName(uint32_t id);
