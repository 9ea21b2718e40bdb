// Arbitrary bytes as a chunk file, walked the way the asset loaders walk theirs: nested chunks,
// records taken in place, bytes copied out, and whatever is left skipped. The reader must never
// hand out a byte past the buffer nor let the cursor pass the end.
#include <cstdint>
#include <cstdlib>

#include "core/krFile.h"

namespace {

// Loaders nest a handful of levels; the fuzzer goes deeper than any of them.
constexpr int maxDepth = 16;

void check(bool holds) {
    if (!holds) std::abort();
}

// Reads every byte handed out, so that the address sanitizer sees a read past the buffer.
uint32_t touch(const void* at, uint32_t count) {
    uint32_t sum = 0;
    for (uint32_t i = 0; i < count; ++i) sum += static_cast<const uint8_t*>(at)[i];
    return sum;
}

void walk(krFile& file, krChunk* parent, int depth) {
    krChunk chunk;
    while (file.readChunk(&chunk, parent, 0)) {
        check(file.cursor <= file.size && chunk.size <= file.size - file.cursor);
        // The id's low bits decide what a loader would do with the payload.
        const uint32_t count = chunk.id >> 8 & 0xFF;
        switch (chunk.id & 3) {
        case 0:
            if (depth < maxDepth) walk(file, &chunk, depth + 1);
            break;
        case 1:
            if (const void* at = file.readData(&chunk, count)) touch(at, count);
            break;
        case 2: {
            uint8_t buffer[256];
            touch(buffer, file.read(buffer, count));
            break;
        }
        default:
            break;
        }
        file.skipChunk(&chunk);
        check(chunk.size == 0 && file.cursor <= file.size);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size >= UINT32_MAX) return 0;
    krFile file(krFile::inMemory, data, static_cast<uint32_t>(size));
    walk(file, nullptr, 0);
    check(file.data[file.size] == 0);
    return 0;
}
