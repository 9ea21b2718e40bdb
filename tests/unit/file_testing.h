// Helpers of the data file tests: a fresh working directory with its own file index, the reports
// the root sends, and raw chunk bytes for files that no writer would make.
#pragma once

#include <string>

#include "engine_testing.h"
#include "core/krChunk.h"
#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "core/krPackFormat.h"

namespace fileTesting {

using engineTesting::reports;

inline std::string chunk(uint32_t id, const std::string& payload) {
    std::string out(krChunk::headerSize, '\0');
    krPutChunkHeader(out.data(), id, static_cast<uint32_t>(payload.size()));
    return out + payload;
}

inline std::string u32(uint32_t value) {
    std::string out(4, '\0');
    krPutU32(out.data(), value);
    return out;
}

// Where a hand-made pack's content begins: after the root's and the content chunk's headers.
constexpr uint32_t contentBase = 2 * krChunk::headerSize;

// An entry chunk whose data lies elsewhere, reached by dataOffset from the content base.
inline std::string entry(uint32_t method, const std::string& name, uint32_t dataOffset, uint32_t size,
                         uint32_t storedSize) {
    krPack::EntryHeader h;
    h.dataOffset = dataOffset;
    h.size = size;
    h.storedSize = storedSize;
    h.name = name;
    std::string header(krPack::entryHeaderSize, '\0');
    h.encode(reinterpret_cast<uint8_t*>(header.data()));
    return chunk(method, header);
}

// A pack whose content is a data chunk (payload at content offset 8) and then a directory.
constexpr uint32_t dataAt = krChunk::headerSize;
inline std::string pack(const std::string& data, const std::string& entries) {
    const std::string content = chunk(0x1234, data) + chunk(krPack::directoryId, u32(0) + entries);
    return chunk(krPack::rootId, chunk(krPack::contentId, content));
}

// Each test runs in a fresh temporary working directory with a root module to report to, and
// leaves the index forgotten for whoever comes next.
class WorkDir : public testing::Test {
protected:
    void SetUp() override {
        scratch = new engineTesting::ScratchDir("kerrin-files");
        root = new krMain(0, nullptr);
        reports().clear();
        krMain::setReportObserver(engineTesting::observe);
    }
    void TearDown() override {
        krMain::setReportObserver(nullptr);
        root->release();
        delete scratch;
    }

    static void write(const std::string& path, const std::string& content) { engineTesting::writeFile(path, content); }

    krMain* root = nullptr;

private:
    engineTesting::ScratchDir* scratch = nullptr;
};

}  // namespace fileTesting
