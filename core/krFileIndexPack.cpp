// The pack directory walk. Every position is 64-bit and every chunk is held inside its parent and
// inside the file, so sizes and offsets that lie can neither wrap around nor send a read past the
// end; each step moves forward by at least a chunk header, so the walk always ends.
#include "core/krFileIndexPack.h"

#include <cstdio>
#include <limits>

#include "core/krPackFormat.h"

namespace {

class PackReader {
public:
    explicit PackReader(const std::string& path) : file(std::fopen(path.c_str(), "rb")) {
        if (file && std::fseek(file, 0, SEEK_END) == 0) {
            const long end = std::ftell(file);
            length = end > 0 ? static_cast<uint64_t>(end) : 0;
        }
    }
    ~PackReader() {
        if (file) std::fclose(file);
    }
    PackReader(const PackReader&) = delete;
    PackReader& operator=(const PackReader&) = delete;

    uint64_t size() const { return length; }

    // Reads count bytes at pos when all of them lie before limit (and so inside the file).
    bool readAt(uint64_t pos, uint64_t limit, void* target, uint32_t count) {
        if (!file || limit > length || pos > limit || limit - pos < count) return false;
        if (std::fseek(file, static_cast<long>(pos), SEEK_SET) != 0) return false;
        return std::fread(target, 1, count, file) == count;
    }

    // Reads the chunk header at pos; on success payloadEnd is where the chunk claims to end, cut
    // to limit.
    bool readChunk(uint64_t pos, uint64_t limit, krChunk* out, uint64_t* payloadEnd) {
        uint8_t header[krChunk::headerSize];
        if (!readAt(pos, limit, header, sizeof header)) return false;
        *out = krGetChunkHeader(header);
        const uint64_t end = pos + krChunk::headerSize + out->size;
        *payloadEnd = end < limit ? end : limit;
        return true;
    }

    // Steps over chunks from pos until one with the id; gives the bounds of its payload.
    bool findChunk(uint64_t pos, uint64_t limit, uint32_t id, uint64_t* payload, uint64_t* payloadEnd) {
        krChunk chunk;
        while (readChunk(pos, limit, &chunk, payloadEnd)) {
            if (chunk.id == id) {
                *payload = pos + krChunk::headerSize;
                return true;
            }
            pos = *payloadEnd;
        }
        return false;
    }

private:
    FILE* file;
    uint64_t length = 0;
};

// Offsets are 32-bit in the index; one that does not fit points past the end of any pack the
// index can hold, where a read finds nothing.
uint32_t clampOffset(uint64_t offset) {
    constexpr uint64_t most = std::numeric_limits<uint32_t>::max();
    return static_cast<uint32_t>(offset < most ? offset : most);
}

}  // namespace

bool krReadPackDirectory(const std::string& path, const std::function<void(const krPackEntry&)>& visit) {
    PackReader pack(path);
    krChunk root;
    uint64_t rootEnd;
    if (!pack.readChunk(0, pack.size(), &root, &rootEnd) || root.id != krPack::rootId) return false;

    uint64_t contentBase, contentEnd, directory, directoryEnd;
    if (!pack.findChunk(krChunk::headerSize, rootEnd, krPack::contentId, &contentBase, &contentEnd)) return true;
    if (!pack.findChunk(contentBase, contentEnd, krPack::directoryId, &directory, &directoryEnd)) return true;

    krChunk chunk;
    uint64_t entryEnd;
    for (uint64_t pos = directory + krPack::directoryReserved; pack.readChunk(pos, directoryEnd, &chunk, &entryEnd);
         pos = entryEnd) {
        if (chunk.id != krPack::storedId && chunk.id != krPack::zlibId) continue;
        // A chunk too small for its header holds no entry; its bytes belong to whatever follows.
        if (chunk.size < krPack::entryHeaderSize) continue;
        uint8_t header[krPack::entryHeaderSize];
        if (!pack.readAt(pos + krChunk::headerSize, directoryEnd, header, sizeof header)) break;
        const krPack::EntryHeader h = krPack::EntryHeader::decode(header);
        krPackEntry entry;
        entry.name = h.name;
        entry.method = chunk.id;
        entry.offset = clampOffset(contentBase + h.dataOffset);
        entry.size = h.size;
        entry.storedSize = h.storedSize;
        visit(entry);
    }
    return true;
}
