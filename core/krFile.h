// krFile: one data file, whole in memory, found by its logical path through the file index, with
// the chunk reader that the binary asset formats are walked with.
//
// A loader opens a krFile on its stack, reads it in place, copies what must stay, and lets it go.
// The buffer always ends in one NUL past `size`, so text loaders can use `data` as a C string.
#pragma once

#include <cstdint>
#include <string>

#include "core/krChunk.h"

struct krFileEntry;

class krFile {
public:
    // Loads the file under a logical path, loose or from a pack. When it is not there (or cannot
    // be read) the object stays empty, `data` null, and with reportMissing the root is told.
    krFile(const std::string& name, bool reportMissing);

    // Wraps a copy of bytes that did not come through the index, for the content tools and tests
    // that walk chunk data of their own.
    struct InMemory {};
    static constexpr InMemory inMemory{};
    krFile(InMemory, const void* bytes, uint32_t count);

    ~krFile();
    krFile(const krFile&) = delete;
    krFile& operator=(const krFile&) = delete;

    // Reads the chunk header at the cursor. Bytes available are those left in parent, or in the
    // file without one; fewer than a header gives false and consumes nothing. Otherwise the header
    // is consumed (and taken from parent) and the result says whether expectedId (0: any) matched.
    // A chunk that claims more than the bytes there is cut to them, so a truncated or lying file
    // can never move the cursor past the end.
    bool readChunk(krChunk* out, krChunk* parent, uint32_t expectedId);
    // Points at count bytes at the cursor and consumes them from chunk; null, with nothing
    // consumed, when the chunk has fewer. The pointer may sit at any alignment.
    const void* readData(krChunk* chunk, uint32_t count);
    // Passes over what is left of the chunk.
    void skipChunk(krChunk* chunk);
    // Copies up to count bytes from the cursor; gives the count copied.
    uint32_t read(void* target, uint32_t count);

    char* data = nullptr;
    uint32_t cursor = 0;
    uint32_t size = 0;

private:
    uint32_t remaining() const { return cursor < size ? size - cursor : 0; }
    void allocate(uint64_t capacity);
    bool loadLoose(const std::string& name);
    bool loadPacked(const std::string& name, const krFileEntry& entry);
};
