// Packs written by kerrin-pack's writer and read back through the index, and packs that are
// corrupt, cut short or lying about their sizes.
#include <gtest/gtest.h>

#include <zlib.h>

#include <random>

#include "core/krFile.h"
#include "file_testing.h"
#include "krPackWriter.h"

using namespace fileTesting;

namespace {

struct Source {
    std::string name, content;
    uint32_t method;
};

class FilePack : public WorkDir {
protected:
    static std::string written(const std::vector<Source>& sources) {
        krPackWriter writer;
        std::string error, out;
        for (const Source& s : sources) EXPECT_TRUE(writer.add(s.name, s.content, s.method, &error)) << error;
        EXPECT_TRUE(writer.build(&out, &error)) << error;
        return out;
    }

    static std::string noise(size_t count) {
        std::mt19937 random(7);
        std::string out(count, '\0');
        for (char& c : out) c = static_cast<char>(random());
        return out;
    }

    // The offset of an entry's data in a pack, as the index saw it.
    static uint32_t offsetOf(const std::string& key) { return krFileIndex::find(key)->offset; }
};

}  // namespace

TEST_F(FilePack, StoredAndZlibEntriesRoundTrip) {
    const std::string text(5000, 'k');
    const std::string binary = std::string("\0\1\2\0", 4) + noise(3000);
    for (uint32_t method : {krPack::storedId, krPack::zlibId}) {
        write("data.kr", written({{"text.txt", text, method},
                                  {"dir/sub/binary.bin", binary, method},
                                  {"empty", "", method},
                                  {std::string(krPack::maxNameLength, 'n'), "long", method}}));
        krFileIndex::forget();
        for (const auto& [name, expected] : std::vector<std::pair<std::string, std::string>>{
                 {"text.txt", text}, {"dir/sub/binary.bin", binary}, {"empty", ""},
                 {std::string(krPack::maxNameLength, 'n'), "long"}}) {
            krFile file(name, true);
            ASSERT_NE(file.data, nullptr) << name;
            EXPECT_EQ(std::string(file.data, file.size), expected) << name;
            EXPECT_EQ(file.data[file.size], '\0');
            EXPECT_EQ(krFileIndex::find(name)->method, method);
        }
    }
    EXPECT_TRUE(reports().empty());
}

TEST_F(FilePack, WriterRefusesNamesThatDoNotFitOrRepeat) {
    krPackWriter writer;
    std::string error;
    EXPECT_FALSE(writer.add(std::string(krPack::maxNameLength + 1, 'n'), "", krPack::storedId, &error));
    EXPECT_NE(error.find("longer than 63"), std::string::npos) << error;
    EXPECT_FALSE(writer.add("", "", krPack::storedId, &error));
    EXPECT_FALSE(writer.add("a", "", 0x1130000, &error));
    EXPECT_TRUE(writer.add("a", "", krPack::storedId, &error));
    EXPECT_FALSE(writer.add("a", "x", krPack::zlibId, &error));
}

TEST_F(FilePack, CorruptZlibEntryIsReportedAndReadsEmpty) {
    std::string p = written({{"a.txt", std::string(2000, 'a'), krPack::zlibId}});
    write("data.kr", p);
    const uint32_t at = offsetOf("a.txt");
    p[at + 5] ^= 0x55;
    p[at + 6] ^= 0x55;
    write("data.kr", p);
    krFile file("a.txt", true);
    ASSERT_NE(file.data, nullptr);
    EXPECT_EQ(file.size, 0u);
    EXPECT_EQ(file.data[0], '\0');
    EXPECT_EQ(reports(), std::vector<std::string>{"File 'a.txt' in 'data.kr' is corrupted!"});
}

TEST_F(FilePack, ZlibSizeThatLiesIsHeldToTheStream) {
    const std::string text = "the real content of the entry";
    std::string stream(compressBound(text.size()), '\0');
    uLongf length = stream.size();
    ASSERT_EQ(compress(reinterpret_cast<Bytef*>(stream.data()), &length,
                       reinterpret_cast<const Bytef*>(text.data()), text.size()),
              Z_OK);
    stream.resize(length);
    const auto lying = [&](uint32_t size) {
        return pack(stream, entry(krPack::zlibId, "e", dataAt, size, static_cast<uint32_t>(stream.size())));
    };
    write("big.kr", lying(0xFFFFFFF0u));
    write("small.kr", lying(static_cast<uint32_t>(text.size() - 1)));
    write("exact.kr", lying(static_cast<uint32_t>(text.size())));
    krFile big("big/e", true), exact("exact/e", true);
    EXPECT_EQ(std::string(big.data, big.size), text);
    EXPECT_EQ(std::string(exact.data, exact.size), text);
    EXPECT_TRUE(reports().empty());
    krFile small("small/e", true);
    EXPECT_EQ(small.size, 0u);
    EXPECT_EQ(reports(), std::vector<std::string>{"File 'small/e' in 'small.kr' is corrupted!"});
}

TEST_F(FilePack, EntriesPointingPastTheEndReadWhatIsThere) {
    const std::string p = pack("0123456789", entry(krPack::storedId, "cut", dataAt + 6, 1000, 1000) +
                                                 entry(krPack::storedId, "far", 0xFFFFFFF0u, 5, 5) +
                                                 entry(krPack::zlibId, "zfar", 0x7FFFFFFF, 5, 0xFFFFFFFFu));
    write("p.kr", p);
    krFile cut("p/cut", true), far("p/far", true);
    const size_t cutAt = contentBase + dataAt + 6;
    EXPECT_EQ(std::string(cut.data, cut.size), p.substr(cutAt));
    EXPECT_EQ(std::string(cut.data, 4), "6789");
    ASSERT_NE(far.data, nullptr);
    EXPECT_EQ(far.size, 0u);
    EXPECT_TRUE(reports().empty());
    krFile zfar("p/zfar", true);
    EXPECT_EQ(zfar.size, 0u);
    EXPECT_EQ(reports(), std::vector<std::string>{"File 'p/zfar' in 'p.kr' is corrupted!"});
}

TEST_F(FilePack, StoredEntryCutShortByTheEndOfThePackGivesTheBytesThere) {
    const std::string full = written({{"a", "first", krPack::storedId}, {"b", "second entry", krPack::storedId}});
    write("data.kr", full.substr(0, full.size() - 5));
    krFile b("b", true);
    EXPECT_EQ(std::string(b.data, b.size), "second ");
    EXPECT_EQ(b.data[b.size], '\0');
}

TEST_F(FilePack, EveryTruncationOfAPackIndexesWhatIsWhole) {
    const std::vector<Source> sources = {{"a", "alpha", krPack::storedId},
                                         {"b", std::string(300, 'b'), krPack::zlibId},
                                         {"c", "gamma", krPack::storedId}};
    const std::string full = written(sources);
    size_t indexed = 0;
    for (size_t length = 0; length <= full.size(); ++length) {
        write("data.kr", full.substr(0, length));
        krFileIndex::forget();
        krFile("nothing", false);
        // Cutting the pack shorter never adds entries; longer never loses them.
        EXPECT_GE(krFileIndex::entries().size(), indexed) << length;
        indexed = krFileIndex::entries().size();
        for (const Source& s : sources) {
            krFile file(s.name, false);
            if (!file.data) continue;
            EXPECT_EQ(file.data[file.size], '\0');
            // What a cut stored entry gives is the start of the real content.
            if (s.method == krPack::storedId) {
                EXPECT_EQ(s.content.compare(0, file.size, file.data, file.size), 0);
            }
        }
    }
    EXPECT_EQ(indexed, sources.size());
}

TEST_F(FilePack, OuterSizesThatLieDoNotHideEntries) {
    std::string p = written({{"a", "alpha", krPack::storedId}});
    krPutU32(&p[4], 0xFFFFFFFFu);   // root
    krPutU32(&p[12], 0xFFFFFFFFu);  // content
    krPutU32(&p[20], 0xFFFFFFFFu);  // directory
    write("data.kr", p);
    krFile a("a", true);
    EXPECT_EQ(std::string(a.data, a.size), "alpha");
}
