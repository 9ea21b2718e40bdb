// The chunk ids kerrin-dump knows by name, and which of them hold further chunks. A new format
// teaches the dump its chunks with lines in the table of krChunkNames.cpp.
#pragma once

#include <cstdint>
#include <string>

struct krChunkName {
    uint32_t id;
    const char* name;
    // Where the child chunks start in the payload, or leaf for a payload of plain data.
    int32_t childrenAt;
    // The fields of the payload worth a look, as text after the chunk's line; null for none.
    // Called with the payload's bytes, which may be fewer than the record.
    std::string (*describe)(const uint8_t* payload, uint32_t size) = nullptr;

    static constexpr int32_t leaf = -1;
};

// The entry for an id, or null for an id nobody has named.
const krChunkName* krFindChunkName(uint32_t id);
