// The chunk reader: headers against parents and the end of the file, in-place data, skipping, and
// the byte reader, with files whose sizes lie.
#include <gtest/gtest.h>

#include <cstring>

#include "core/krFile.h"
#include "file_testing.h"

using fileTesting::chunk;
using fileTesting::u32;

namespace {

krFile fileOf(const std::string& bytes) { return krFile(krFile::inMemory, bytes.data(), bytes.size()); }

}  // namespace

TEST(FileChunk, LoaderPatternWalksNestedChunksAndPassesOverUnknownOnes) {
    const std::string bytes =
        chunk(0x2000000, chunk(0x2000001, u32(7) + u32(9)) + chunk(0x2FFFFFF, "unknown!") + chunk(0x2000002, "xyz"));
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    krChunk root, child;
    ASSERT_TRUE(file.readChunk(&root, nullptr, 0x2000000));
    EXPECT_EQ(root.size, bytes.size() - 8);
    std::vector<uint32_t> seen;
    while (file.readChunk(&child, &root, 0)) {
        seen.push_back(child.id);
        if (child.id == 0x2000001) {
            const auto* first = static_cast<const uint8_t*>(file.readData(&child, 4));
            ASSERT_NE(first, nullptr);
            EXPECT_EQ(krGetU32(first), 7u);
            EXPECT_EQ(child.size, 4u);
        }
        file.skipChunk(&child);
        EXPECT_EQ(child.size, 0u);
    }
    EXPECT_EQ(seen, (std::vector<uint32_t>{0x2000001, 0x2FFFFFF, 0x2000002}));
    EXPECT_EQ(root.size, 0u);
    EXPECT_EQ(file.cursor, file.size);
}

TEST(FileChunk, HeaderNeedsEightBytesAndIsConsumedEvenOnAWrongId) {
    const std::string bytes = chunk(0x42, "abcdefg");
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    krChunk out;
    EXPECT_FALSE(file.readChunk(&out, nullptr, 0x43));
    EXPECT_EQ(out.id, 0x42u);
    EXPECT_EQ(out.size, 7u);
    EXPECT_EQ(file.cursor, 8u);

    // Seven bytes left in the file, then in a parent: nothing is consumed.
    krChunk parent{0, 7};
    EXPECT_FALSE(file.readChunk(&out, nullptr, 0));
    EXPECT_FALSE(file.readChunk(&out, &parent, 0));
    EXPECT_EQ(file.cursor, 8u);
    EXPECT_EQ(parent.size, 7u);

    file.cursor = 0;
    parent.size = 7;
    EXPECT_FALSE(file.readChunk(&out, &parent, 0));
    EXPECT_EQ(file.cursor, 0u);
}

TEST(FileChunk, ChildIsChargedToItsParent) {
    const std::string bytes = chunk(1, chunk(2, "ab") + chunk(3, "cdef"));
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    krChunk root, child;
    ASSERT_TRUE(file.readChunk(&root, nullptr, 1));
    ASSERT_TRUE(file.readChunk(&child, &root, 2));
    EXPECT_EQ(root.size, 12u);
    EXPECT_EQ(child.size, 2u);
}

TEST(FileChunk, SizesThatRunPastTheirParentOrTheFileAreCutToTheBytesThere) {
    // A root claiming a megabyte in a file of 20 bytes, holding a child claiming more than its parent.
    std::string bytes = chunk(1, chunk(2, "abcd") + "wxyz");
    krPutU32(&bytes[4], 1 << 20);
    krPutU32(&bytes[12], 0xFFFFFFF0u);
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    krChunk root, child;
    ASSERT_TRUE(file.readChunk(&root, nullptr, 1));
    EXPECT_EQ(root.size, 16u);
    ASSERT_TRUE(file.readChunk(&child, &root, 2));
    EXPECT_EQ(child.size, 8u);
    EXPECT_EQ(root.size, 0u);
    EXPECT_EQ(file.readData(&child, 9), nullptr);
    file.skipChunk(&child);
    EXPECT_EQ(file.cursor, file.size);
    EXPECT_FALSE(file.readChunk(&child, &root, 0));
    EXPECT_FALSE(file.readChunk(&child, nullptr, 0));
}

TEST(FileChunk, ReadDataGivesBytesInPlaceOrNothing) {
    const std::string bytes = chunk(5, "0123456789");
    krFile file(krFile::inMemory, bytes.data(), static_cast<uint32_t>(bytes.size()));
    krChunk c;
    ASSERT_TRUE(file.readChunk(&c, nullptr, 5));
    EXPECT_EQ(file.readData(&c, 11), nullptr);
    EXPECT_EQ(file.cursor, 8u);
    EXPECT_EQ(c.size, 10u);

    const char* at = static_cast<const char*>(file.readData(&c, 3));
    EXPECT_EQ(at, file.data + 8);
    EXPECT_EQ(std::string(at, 3), "012");
    EXPECT_NE(file.readData(&c, 7), nullptr);
    EXPECT_EQ(c.size, 0u);
    EXPECT_NE(file.readData(&c, 0), nullptr);
    EXPECT_EQ(file.readData(&c, 1), nullptr);

    // A chunk record made up by hand cannot reach past the buffer either.
    krChunk invented{0, 100};
    file.cursor = 16;
    EXPECT_EQ(file.readData(&invented, 3), nullptr);
    EXPECT_NE(file.readData(&invented, 2), nullptr);
}

TEST(FileChunk, ReadCopiesWhatIsLeft) {
    krFile file = fileOf("hello");
    char buffer[8] = {};
    EXPECT_EQ(file.read(buffer, 3), 3u);
    EXPECT_EQ(file.read(buffer + 3, 8), 2u);
    EXPECT_EQ(std::string(buffer), "hello");
    EXPECT_EQ(file.read(buffer, 8), 0u);
    EXPECT_EQ(file.data[file.size], '\0');
}

TEST(FileChunk, CursorMovedPastTheEndByALoaderReadsNothing) {
    krFile file = fileOf(chunk(1, "abcd"));
    file.cursor = 1000;
    krChunk c{0, 50};
    char buffer[4];
    EXPECT_FALSE(file.readChunk(&c, nullptr, 0));
    EXPECT_EQ(file.readData(&c, 1), nullptr);
    EXPECT_EQ(file.read(buffer, 4), 0u);
    file.skipChunk(&c);
    EXPECT_EQ(file.cursor, 1000u);
}

TEST(FileChunk, EmptyAndMissingFilesHaveNoChunks) {
    krFile empty = fileOf("");
    ASSERT_NE(empty.data, nullptr);
    EXPECT_EQ(empty.data[0], '\0');
    krChunk c;
    EXPECT_FALSE(empty.readChunk(&c, nullptr, 0));

    krFileIndex::build({});
    krFile missing("nothing.bin", false);
    EXPECT_EQ(missing.data, nullptr);
    EXPECT_EQ(missing.size, 0u);
    EXPECT_FALSE(missing.readChunk(&c, nullptr, 0));
    EXPECT_EQ(missing.read(&c, 4), 0u);
    krFileIndex::forget();
}
