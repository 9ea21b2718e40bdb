// Helpers of the data file tests: a fresh working directory with its own file index, the reports
// the root sends, and raw chunk bytes for files that no writer would make.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/krChunk.h"
#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "core/krPackFormat.h"

namespace fileTesting {

inline std::vector<std::string>& reports() {
    static std::vector<std::string> seen;
    return seen;
}

inline void observe(const char* event, const std::string& text) {
    if (std::string(event) == "errorMsg") reports().push_back(text);
}

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
        previous = std::filesystem::current_path();
        dir = std::filesystem::temp_directory_path() /
              ("kerrin-files-" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
               std::to_string(::getpid()));
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        std::filesystem::current_path(dir);
        krFileIndex::forget();
        root = new krMain(0, nullptr);
        reports().clear();
        krMain::setReportObserver(observe);
    }
    void TearDown() override {
        krMain::setReportObserver(nullptr);
        root->release();
        std::filesystem::current_path(previous);
        std::filesystem::remove_all(dir);
        krFileIndex::forget();
    }

    static void write(const std::string& path, const std::string& content) {
        const std::filesystem::path p(path);
        if (p.has_parent_path()) std::filesystem::create_directories(p.parent_path());
        std::ofstream(p, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    }

    krMain* root = nullptr;

private:
    std::filesystem::path previous, dir;
};

}  // namespace fileTesting
