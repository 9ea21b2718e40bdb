// The pack layout, written: root, content, directory, then per entry its header followed by its
// data, so that each data offset points just past the entry's own header.
#include "krPackWriter.h"

#include <zlib.h>

#include <limits>

#include "core/krPackFormat.h"

namespace {

constexpr uint64_t maxChunkSize = std::numeric_limits<uint32_t>::max();

bool fail(std::string* error, const std::string& text) {
    *error = text;
    return false;
}

void putHeader(std::string& out, uint32_t id, uint64_t size) {
    char header[krChunk::headerSize];
    krPutChunkHeader(header, id, static_cast<uint32_t>(size));
    out.append(header, sizeof header);
}

}  // namespace

bool krPackWriter::add(const std::string& name, const std::string& content, uint32_t method, std::string* error) {
    if (name.empty()) return fail(error, "empty entry name");
    if (name.size() > krPack::maxNameLength)
        return fail(error, "entry name \"" + name + "\" is longer than " + std::to_string(krPack::maxNameLength) +
                               " characters");
    if (name.find('\0') != std::string::npos) return fail(error, "entry name holds a NUL byte");
    for (const Entry& e : entries)
        if (e.name == name) return fail(error, "entry \"" + name + "\" added twice");
    if (content.size() > maxChunkSize) return fail(error, "\"" + name + "\" is too large for a pack");

    Entry entry{name, method, static_cast<uint32_t>(content.size()), std::string()};
    if (method == krPack::storedId) {
        entry.stored = content;
    } else if (method == krPack::zlibId) {
        uLongf length = compressBound(content.size());
        entry.stored.resize(length);
        if (compress2(reinterpret_cast<Bytef*>(entry.stored.data()), &length,
                      reinterpret_cast<const Bytef*>(content.data()), content.size(), Z_BEST_COMPRESSION) != Z_OK)
            return fail(error, "cannot compress \"" + name + "\"");
        entry.stored.resize(length);
    } else {
        return fail(error, "unknown storage method for \"" + name + "\"");
    }
    entries.push_back(std::move(entry));
    return true;
}

bool krPackWriter::build(std::string* pack, std::string* error) const {
    const uint64_t entryOverhead = krChunk::headerSize + krPack::entryHeaderSize;
    uint64_t directorySize = krPack::directoryReserved;
    for (const Entry& e : entries) directorySize += entryOverhead + e.stored.size();
    const uint64_t contentSize = krChunk::headerSize + directorySize;
    const uint64_t rootSize = krChunk::headerSize + contentSize;
    if (krChunk::headerSize + rootSize > maxChunkSize) return fail(error, "pack would exceed 4 GB");

    std::string out;
    out.reserve(krChunk::headerSize + rootSize);
    putHeader(out, krPack::rootId, rootSize);
    putHeader(out, krPack::contentId, contentSize);
    const size_t contentBase = out.size();
    putHeader(out, krPack::directoryId, directorySize);
    out.append(krPack::directoryReserved, '\0');
    for (const Entry& e : entries) {
        putHeader(out, e.method, krPack::entryHeaderSize + e.stored.size());
        krPack::EntryHeader h;
        h.dataOffset = static_cast<uint32_t>(out.size() + krPack::entryHeaderSize - contentBase);
        h.size = e.size;
        h.storedSize = static_cast<uint32_t>(e.stored.size());
        h.name = e.name;
        uint8_t header[krPack::entryHeaderSize];
        h.encode(header);
        out.append(reinterpret_cast<const char*>(header), sizeof header);
        out += e.stored;
    }
    *pack = std::move(out);
    return true;
}
