// The decoder reads through callbacks over the engine's own file, so music in packs decodes like
// loose files. Vorbis itself cannot tell a stream cut short from one that ended: the last page of a
// whole stream carries the end-of-stream flag, and that is looked for in the file.
#include "audio/krVorbisReader.h"

#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/krFile.h"

namespace {

// Bytes asked of the decoder at a time.
constexpr int decodeStep = 32768;
// ov_read's output form: little-endian, 16-bit words, signed.
constexpr int littleEndian = 0;
constexpr int wordBytes = 2;
constexpr int isSigned = 1;
// OpenAL takes the rate as a signed 32-bit number.
constexpr long maxRate = std::numeric_limits<int32_t>::max();

// An Ogg page header: "OggS", version, flags at 5, granule, serial, sequence, checksum, and the
// number of lacing values at 26, which follow; the body is as long as their sum. A page is never
// longer than its header, 255 lacing values and 255 bodies of 255 bytes.
constexpr uint32_t pageHeaderBytes = 27;
constexpr uint32_t pageFlagsAt = 5;
constexpr uint32_t pageSegmentsAt = 26;
constexpr uint8_t endOfStreamFlag = 4;
constexpr uint32_t maxPageBytes = pageHeaderBytes + 255 + 255 * 255;

size_t readFile(void* target, size_t elementSize, size_t count, void* source) {
    auto* file = static_cast<krFile*>(source);
    if (elementSize == 0) return 0;
    const size_t wanted = std::min<size_t>(elementSize * count, std::numeric_limits<uint32_t>::max());
    const uint32_t left = file->cursor < file->size ? file->size - file->cursor : 0;
    // Whole elements only: what does not fill one stays for the next call.
    const auto bytes = static_cast<uint32_t>(std::min<size_t>(wanted, left) / elementSize * elementSize);
    return file->read(target, bytes) / elementSize;
}

long tellFile(void* source) { return static_cast<long>(static_cast<krFile*>(source)->cursor); }

// Whether the page at `at` is whole, ends exactly at `end` and closes its stream.
bool closesStream(const uint8_t* bytes, uint32_t at, uint32_t end) {
    if (end - at < pageHeaderBytes || std::memcmp(bytes + at, "OggS", 4) != 0) return false;
    const uint32_t segments = bytes[at + pageSegmentsAt];
    if (end - at - pageHeaderBytes < segments) return false;
    uint32_t body = 0;
    for (uint32_t i = 0; i < segments; ++i) body += bytes[at + pageHeaderBytes + i];
    return at + pageHeaderBytes + segments + body == end && (bytes[at + pageFlagsAt] & endOfStreamFlag);
}

// Whether the file ends with a stream's last page: one of the page starts in the reach of the
// longest page from the end must be it.
bool endsWithLastPage(const krFile& file) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(file.data);
    const uint32_t end = file.size;
    const uint32_t first = end > maxPageBytes ? end - maxPageBytes : 0;
    for (uint32_t at = end; at-- > first;)
        if (bytes[at] == 'O' && closesStream(bytes, at, end)) return true;
    return false;
}

// The decoder's state, cleared on every way out once it is open.
struct Stream {
    OggVorbis_File vf;
    bool open = false;
    ~Stream() {
        if (open) ov_clear(&vf);
    }
};

}  // namespace

krVorbisResult krDecodeVorbis(krFile& file, krDecodedMusic& out, size_t maxBytes) {
    out = krDecodedMusic();
    if (!file.data) return krVorbisResult::refused;
    // The file is the caller's: the decoder gets no close callback, and no seek, so it reads the
    // stream once from front to back.
    const ov_callbacks callbacks{readFile, nullptr, nullptr, tellFile};
    Stream stream;
    if (ov_open_callbacks(&file, &stream.vf, nullptr, 0, callbacks) != 0) return krVorbisResult::refused;
    stream.open = true;
    const vorbis_info* info = ov_info(&stream.vf, -1);
    if (!info || (info->channels != 1 && info->channels != 2) || info->rate <= 0 || info->rate > maxRate)
        return krVorbisResult::refused;
    out.channels = static_cast<uint16_t>(info->channels);
    out.rate = static_cast<uint32_t>(info->rate);

    char block[decodeStep];
    int section = 0, lastSection = 0;
    for (;;) {
        const long got = ov_read(&stream.vf, block, decodeStep, littleEndian, wordBytes, isSigned, &section);
        if (got == 0) break;
        if (got < 0 || out.samples.size() + static_cast<size_t>(got) > maxBytes) return krVorbisResult::incomplete;
        // A chained stream may change its form from one link to the next; one buffer holds one form.
        if (section != lastSection) {
            lastSection = section;
            info = ov_info(&stream.vf, -1);
            if (!info || info->channels != out.channels || info->rate != static_cast<long>(out.rate))
                return krVorbisResult::incomplete;
        }
        out.samples.insert(out.samples.end(), block, block + got);
    }
    return endsWithLastPage(file) ? krVorbisResult::decoded : krVorbisResult::incomplete;
}
