// Opening files through the index, and the chunk reader. Every count read from a file is held
// against the bytes that are really there before anything is allocated or read.
#include "core/krFile.h"

#include <sys/stat.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <vector>

#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "core/krPackFormat.h"

namespace {

// `size` is 32-bit and the buffer holds one byte more.
constexpr uint64_t maxContentSize = std::numeric_limits<uint32_t>::max() - 1;

// Deflate cannot expand its input by more than this factor, so a zlib entry whose declared size
// goes beyond it lies, and gets no bigger buffer than its stream could ever fill.
constexpr uint64_t maxDeflateRatio = 1032;

void report(const std::string& text) {
    if (krMain* root = krMain::instance()) root->errorMsg(text);
}

// An open file with its length, closed on every way out.
class DiskFile {
public:
    explicit DiskFile(const std::string& path) {
        // Only a regular file: a directory would open here, and a pipe would block the open.
        std::error_code error;
        if (!std::filesystem::is_regular_file(path, error)) return;
        file = std::fopen(path.c_str(), "rb");
        struct stat info;
        if (file && (fstat(fileno(file), &info) != 0 || !S_ISREG(info.st_mode))) {
            std::fclose(file);
            file = nullptr;
        }
        if (file) length = static_cast<uint64_t>(info.st_size);
    }
    ~DiskFile() {
        if (file) std::fclose(file);
    }
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    bool isOpen() const { return file != nullptr; }
    // Bytes that lie at or after pos, at most count.
    uint64_t available(uint64_t pos, uint64_t count) const {
        const uint64_t there = pos < length ? length - pos : 0;
        return count < there ? count : there;
    }
    uint32_t readAt(uint64_t pos, void* target, uint64_t count) {
        if (count == 0 || std::fseek(file, static_cast<long>(pos), SEEK_SET) != 0) return 0;
        return static_cast<uint32_t>(std::fread(target, 1, count, file));
    }

private:
    FILE* file = nullptr;
    uint64_t length = 0;
};

}  // namespace

krFile::krFile(const std::string& name, bool reportMissing) {
    const krFileEntry* entry = krFileIndex::find(name);
    // A file that vanished after the scan fails like one that never was.
    const bool loaded = entry && (entry->packed ? loadPacked(name, *entry) : loadLoose(name));
    if (!loaded && reportMissing) report("File \"" + name + "\" not found!");
}

krFile::krFile(InMemory, const void* bytes, uint32_t count) {
    allocate(count);
    if (count) std::memcpy(data, bytes, count);
    size = count;
    data[size] = 0;
}

krFile::~krFile() { delete[] data; }

void krFile::allocate(uint64_t capacity) {
    data = new char[capacity + 1];
    data[0] = 0;
}

bool krFile::loadLoose(const std::string& name) {
    DiskFile file(name);
    if (!file.isOpen()) return false;
    const uint64_t length = file.available(0, maxContentSize);
    allocate(length);
    size = file.readAt(0, data, length);
    data[size] = 0;
    return true;
}

bool krFile::loadPacked(const std::string& name, const krFileEntry& entry) {
    DiskFile pack(entry.packPath);
    if (!pack.isOpen()) return false;
    if (entry.method == krPack::storedId) {
        // A stored entry cut short by the end of the pack gives the bytes that are there.
        const uint64_t length = pack.available(entry.offset, entry.size);
        allocate(length);
        size = pack.readAt(entry.offset, data, length);
        data[size] = 0;
        return true;
    }
    std::vector<Bytef> stream(pack.available(entry.offset, entry.storedSize));
    const uint32_t got = pack.readAt(entry.offset, stream.data(), stream.size());
    const uint64_t bound = static_cast<uint64_t>(got) * maxDeflateRatio;
    const uint64_t capacity = entry.size < bound ? entry.size : bound;
    allocate(capacity);
    uLongf length = static_cast<uLongf>(capacity);
    if (uncompress(reinterpret_cast<Bytef*>(data), &length, stream.data(), got) == Z_OK) {
        size = static_cast<uint32_t>(length);
    } else {
        size = 0;
        report("File '" + name + "' in '" + entry.packPath + "' is corrupted!");
    }
    data[size] = 0;
    return true;
}

bool krFile::readChunk(krChunk* out, krChunk* parent, uint32_t expectedId) {
    uint32_t available = remaining();
    if (parent && parent->size < available) available = parent->size;
    if (available < krChunk::headerSize) return false;
    *out = krGetChunkHeader(data + cursor);
    cursor += krChunk::headerSize;
    available -= krChunk::headerSize;
    if (out->size > available) out->size = available;
    if (parent) parent->size -= out->size + krChunk::headerSize;
    return expectedId == 0 || out->id == expectedId;
}

const void* krFile::readData(krChunk* chunk, uint32_t count) {
    if (count > chunk->size || count > remaining()) return nullptr;
    const char* at = data + cursor;
    cursor += count;
    chunk->size -= count;
    return at;
}

void krFile::skipChunk(krChunk* chunk) {
    const uint32_t left = remaining();
    cursor += chunk->size < left ? chunk->size : left;
    chunk->size = 0;
}

uint32_t krFile::read(void* target, uint32_t count) {
    const uint32_t n = count < remaining() ? count : remaining();
    if (n) std::memcpy(target, data + cursor, n);
    cursor += n;
    return n;
}
