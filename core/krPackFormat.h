// The .kr pack archive's record layouts: chunk ids and the entry header. The engine's index reads
// them and the pack tool writes them, both from this one description.
//
// A pack is a root chunk "KR10" holding a content chunk; inside the content, a directory chunk
// holds a reserved word and then one entry chunk per file. Entry data is reached through an
// offset relative to the content base, the first byte after the content chunk's header.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "core/krChunk.h"

namespace krPack {

// The root id is the four bytes "KR10" read as a little-endian word.
constexpr uint32_t rootId = uint32_t('K') | uint32_t('R') << 8 | uint32_t('1') << 16 | uint32_t('0') << 24;
constexpr uint32_t contentId = 0x1000000;
constexpr uint32_t directoryId = 0x1100000;
// Entry chunk ids double as the entry's storage method.
constexpr uint32_t storedId = 0x1110000;
constexpr uint32_t zlibId = 0x1120000;

// The directory payload starts with a word no reader looks at.
constexpr uint32_t directoryReserved = 4;

// Entry header, at the start of an entry chunk's payload. The file data normally follows it in
// the same chunk, but readers reach it only through dataOffset.
constexpr uint32_t entryHeaderSize = 80;
// Names are NUL-terminated within their field, so the longest is one byte shorter.
constexpr uint32_t nameFieldSize = 64;
constexpr uint32_t maxNameLength = nameFieldSize - 1;

struct EntryHeader {
    uint32_t dataOffset = 0;  // relative to the content base
    uint32_t size = 0;        // uncompressed
    uint32_t storedSize = 0;  // bytes of stored data: the zlib stream for zlibId
    std::string name;

    // Field offsets inside the header; the first word is reserved.
    static constexpr uint32_t dataOffsetAt = 4, sizeAt = 8, storedSizeAt = 12, nameAt = 16;

    // Reads entryHeaderSize bytes. A name that fills its field without a NUL ends at the field.
    static EntryHeader decode(const uint8_t* bytes) {
        EntryHeader h;
        h.dataOffset = krGetU32(bytes + dataOffsetAt);
        h.size = krGetU32(bytes + sizeAt);
        h.storedSize = krGetU32(bytes + storedSizeAt);
        const char* name = reinterpret_cast<const char*>(bytes + nameAt);
        h.name.assign(name, strnlen(name, nameFieldSize));
        return h;
    }

    // Writes entryHeaderSize bytes; the name must be at most maxNameLength long.
    void encode(uint8_t* bytes) const {
        std::memset(bytes, 0, entryHeaderSize);
        krPutU32(bytes + dataOffsetAt, dataOffset);
        krPutU32(bytes + sizeAt, size);
        krPutU32(bytes + storedSizeAt, storedSize);
        std::memcpy(bytes + nameAt, name.data(), name.size() < maxNameLength ? name.size() : maxNameLength);
    }
};

}  // namespace krPack
