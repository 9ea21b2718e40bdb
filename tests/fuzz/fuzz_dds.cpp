// Arbitrary bytes as a DDS texture. A header the reader accepts must promise no pixel that is
// not in the file: the upload hands the whole top level to the driver.
#include <cstdint>
#include <cstdlib>

#include "render/krTextureInfo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    const auto* bytes = reinterpret_cast<const char*>(data);
    krTextureInfo info;
    if (!info.parse(bytes, static_cast<uint32_t>(size))) return 0;
    if (info.pixels < bytes || info.pixels + info.pixelsSize > bytes + size || info.pixelsSize == 0) std::abort();
    // The first and last bytes of the level, read where the sanitizer watches.
    volatile char ends = static_cast<char>(info.pixels[0] ^ info.pixels[info.pixelsSize - 1]);
    (void)ends;
    return 0;
}
