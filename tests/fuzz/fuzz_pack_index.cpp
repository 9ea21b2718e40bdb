// Arbitrary bytes as a .kr pack: the index mounts what it can read of the directory, and every
// entry it mounted is opened, stored or zlib, through the same path as the engine's loads.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/krFile.h"
#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "core/krPackFormat.h"

namespace {

std::string scratch, packPath;

void check(bool holds) {
    if (!holds) std::abort();
}

void removeScratch() {
    std::remove(packPath.c_str());
    rmdir(scratch.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    char dir[] = "/tmp/kerrin-fuzz-XXXXXX";
    if (!mkdtemp(dir)) std::abort();
    scratch = dir;
    // An absolute pack path mounts its entries below itself, wherever the fuzzer runs.
    packPath = scratch + "/fuzz.kr";
    std::atexit(removeScratch);
    // The root gives corrupt entries the channel they are reported through.
    new krMain(0, nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FILE* f = std::fopen(packPath.c_str(), "wb");
    if (!f) std::abort();
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    krFileIndex::build({packPath});
    std::vector<std::string> keys;
    for (const auto& entry : krFileIndex::entries()) keys.push_back(entry.first);
    for (const std::string& key : keys) {
        krFile file(key, true);
        check(file.data != nullptr && file.data[file.size] == 0);
        // Nothing can come out of a pack that is larger than the pack, bar what zlib inflates.
        if (krFileIndex::find(key)->method != krPack::zlibId) check(file.size <= size);
    }
    return 0;
}
