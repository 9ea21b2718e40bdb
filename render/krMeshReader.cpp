// Checked reads of the chunk files of scenes: meshes, split trees, skeletons, animations.
#include "render/krMeshReader.h"

#include "core/krMain.h"

krMeshReader::krMeshReader(const std::string& n, const char* k) : file(n, true), name(n), kind(k) {}

krMeshReader::krMeshReader(const std::string& n, const void* bytes, uint32_t count, const char* k)
    : file(krFile::inMemory, bytes, count), name(n), kind(k) {}

void* krMeshReader::take(krChunk& chunk, uint64_t bytes, const char* what) {
    // Counts from the file times a record size may exceed 32 bits; such a count is a lie.
    const void* p = bytes <= chunk.size ? file.readData(&chunk, static_cast<uint32_t>(bytes)) : nullptr;
    if (!p) {
        damaged(std::string(what) + " run past their chunk");
        return nullptr;
    }
    // Loads move and scale vertices in place: the buffer is the reader's own.
    return const_cast<void*>(p);
}

bool krMeshReader::count(krChunk& chunk, uint32_t& out, const char* what) {
    const void* p = take(chunk, 4, what);
    if (p) out = krGetU32(p);
    return p != nullptr;
}

void* krMeshReader::array(krChunk& chunk, uint64_t n, uint32_t itemSize, const char* what) {
    if (n == 0) return file.data ? file.data + file.cursor : nullptr;
    return take(chunk, n * itemSize, what);
}

void krMeshReader::damaged(const std::string& what) {
    if (reported) return;
    reported = true;
    if (krMain* root = krMain::instance()) root->errorMsg(std::string("Invalid ") + kind + " file: '" + name + "' (" + what + ")");
}
