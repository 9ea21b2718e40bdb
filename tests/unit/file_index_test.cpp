// The file index: the listing of the working directory, which files are packs, where packs
// mount, who wins a key, and what is found after the one scan.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/krFile.h"
#include "file_testing.h"

using namespace fileTesting;

namespace {

class FileIndex : public WorkDir {
protected:
    // A pack holding each (name, content) pair stored.
    static std::string storedPack(const std::vector<std::pair<std::string, std::string>>& files) {
        std::string data, entries;
        for (const auto& [name, content] : files) {
            entries += entry(krPack::storedId, name, dataAt + static_cast<uint32_t>(data.size()),
                             static_cast<uint32_t>(content.size()), static_cast<uint32_t>(content.size()));
            data += content;
        }
        return pack(data, entries);
    }

    static std::string content(const std::string& name) {
        krFile file(name, false);
        return file.data ? std::string(file.data, file.size) : "<missing>";
    }
};

}  // namespace

TEST_F(FileIndex, ListingIsDepthFirstWithSlashPaths) {
    write("top.txt", "");
    write("a/one.txt", "");
    write("a/b/two.txt", "");
    write("a/b/c/three.txt", "");
    write("d/four.txt", "");
    std::filesystem::create_directories("empty");
    const std::vector<std::string> listed = krFileIndex::listWorkingDirectory();
    std::vector<std::string> sorted = listed;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, (std::vector<std::string>{"a/b/c/three.txt", "a/b/two.txt", "a/one.txt", "d/four.txt", "top.txt"}));
    // Depth first: everything below a folder comes together.
    const auto firstA = std::find_if(listed.begin(), listed.end(), [](auto& p) { return p[0] == 'a'; });
    EXPECT_TRUE(std::all_of(firstA, firstA + 3, [](auto& p) { return p[0] == 'a'; }));
}

TEST_F(FileIndex, ListingEntersEachFolderOnceThroughLinksThatLoop) {
    write("a/b/file.txt", "x");
    std::filesystem::create_directory_symlink("..", "a/b/up");
    std::filesystem::create_directory_symlink("../..", "a/b/top");
    std::filesystem::create_directory_symlink("a", "alias");
    std::vector<std::string> listed = krFileIndex::listWorkingDirectory();
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_TRUE(listed[0] == "a/b/file.txt" || listed[0] == "alias/b/file.txt") << listed[0];
}

TEST_F(FileIndex, PacksMountByTheirPathWithDataStrippedOnlyFromPackKeys) {
    write("data.kr", storedPack({{"textures/a.dds", "root"}, {"a.txt", "data a"}}));
    write("aa.kr", storedPack({{"a.txt", "aa a"}}));
    write("data/x.kr", storedPack({{"c.txt", "x c"}}));
    write("maps/foo.kr", storedPack({{"d.txt", "foo d"}}));
    write("data/loose.txt", "loose");
    EXPECT_EQ(content("textures/a.dds"), "root");
    EXPECT_EQ(content("a.txt"), "data a");
    EXPECT_EQ(content("aa/a.txt"), "aa a");
    EXPECT_EQ(content("x/c.txt"), "x c");
    EXPECT_EQ(content("maps/foo/d.txt"), "foo d");
    EXPECT_EQ(content("data/loose.txt"), "loose");
    EXPECT_EQ(content("loose.txt"), "<missing>");
    EXPECT_EQ(content("data/x/c.txt"), "<missing>");
    // Packs are not files of their own, and keys are exact bytes.
    EXPECT_EQ(content("data.kr"), "<missing>");
    EXPECT_EQ(content("A.txt"), "<missing>");
    EXPECT_EQ(content("./a.txt"), "<missing>");
}

TEST_F(FileIndex, LooseFileBeatsPackEntryInEitherListingOrder) {
    write("data.kr", storedPack({{"textures/a.dds", "packed"}}));
    write("textures/a.dds", "loose");
    for (const auto& listing : {std::vector<std::string>{"data.kr", "textures/a.dds"},
                                std::vector<std::string>{"textures/a.dds", "data.kr"}}) {
        krFileIndex::build(listing);
        EXPECT_EQ(content("textures/a.dds"), "loose") << listing[0];
        EXPECT_EQ(krFileIndex::find("textures/a.dds")->packed, 0);
    }
}

TEST_F(FileIndex, TheStockPackMountsAtTheRootBelowEverythingOfTheWorkingDirectory) {
    write("elsewhere/engine/data.kr", storedPack({{"shaders/a.shader", "stock a"}, {"shaders/b.shader", "stock b"},
                                                  {"textures/c.dds", "stock c"}}));
    write("data.kr", storedPack({{"shaders/b.shader", "game b"}}));
    write("shaders/a.shader", "loose a");
    write("elsewhere/not-scanned.txt", "");
    krFileIndex::setStockPack(std::filesystem::absolute("elsewhere/engine/data.kr").string());
    krFileIndex::build({"shaders/a.shader", "data.kr"});
    krFileIndex::setStockPack("");
    EXPECT_EQ(content("shaders/a.shader"), "loose a");
    EXPECT_EQ(content("shaders/b.shader"), "game b");
    EXPECT_EQ(content("textures/c.dds"), "stock c");
    krFileIndex::forget();
    EXPECT_EQ(content("textures/c.dds"), "<missing>") << "no stock pack once it is unset";
}

TEST_F(FileIndex, FirstPackInListingOrderWins) {
    write("data.kr", storedPack({{"x/same.txt", "from data"}}));
    write("x.kr", storedPack({{"same.txt", "from x"}}));
    krFileIndex::build({"data.kr", "x.kr"});
    EXPECT_EQ(content("x/same.txt"), "from data");
    krFileIndex::build({"x.kr", "data.kr"});
    EXPECT_EQ(content("x/same.txt"), "from x");
    EXPECT_EQ(krFileIndex::find("x/same.txt")->packPath, "x.kr");
}

TEST_F(FileIndex, OnlyTheExactSuffixMakesAPackAndBrokenPacksAreSilent) {
    const std::string p = storedPack({{"in.txt", "inside"}});
    write("UPPER.KR", p);
    write("kr", "two letters");
    write("short.kr", "KR1");
    write("wrongid.kr", chunk(0x1234, "whatever"));
    write("cut.kr", p.substr(0, 30));
    EXPECT_EQ(content("UPPER.KR"), p);
    EXPECT_EQ(content("UPPER/in.txt"), "<missing>");
    EXPECT_EQ(content("kr"), "two letters");
    EXPECT_EQ(content("short.kr"), "<missing>");
    EXPECT_EQ(content("wrongid.kr"), "<missing>");
    EXPECT_EQ(krFileIndex::entries().size(), 2u);
    EXPECT_TRUE(reports().empty());
}

TEST_F(FileIndex, LongPackPathsMount) {
    const std::string folder(80, 'd');
    write(folder + "/p.kr", storedPack({{"f.txt", "deep"}}));
    EXPECT_EQ(content(folder + "/p/f.txt"), "deep");
}

TEST_F(FileIndex, UnknownChunksInContentAndDirectoryAreSteppedOver) {
    const std::string entries = chunk(0x1130000, std::string(100, 'u')) +
                                entry(krPack::storedId, "a.txt", dataAt, 3, 3) +
                                chunk(krPack::zlibId, "too small for an entry header") +
                                entry(krPack::storedId, "b.txt", dataAt + 3, 2, 2);
    write("p.kr", pack("AAABB", entries));
    EXPECT_EQ(content("p/a.txt"), "AAA");
    EXPECT_EQ(content("p/b.txt"), "BB");
    EXPECT_EQ(krFileIndex::entries().size(), 2u);
}

TEST_F(FileIndex, OnlyTheFirstDirectoryIsRead) {
    const std::string data = "12";
    const std::string content2 = chunk(krPack::directoryId, u32(0) + entry(krPack::storedId, "one", dataAt, 1, 1)) +
                                 chunk(krPack::directoryId, u32(0) + entry(krPack::storedId, "two", dataAt, 1, 1));
    write("p.kr", chunk(krPack::rootId, chunk(krPack::contentId, chunk(0x99, data) + content2)));
    EXPECT_EQ(content("p/one"), "1");
    EXPECT_EQ(content("p/two"), "<missing>");
}

TEST_F(FileIndex, FilesAppearingOrVanishingAfterTheScanAreNotFound) {
    write("here.txt", "here");
    write("goes.txt", "goes");
    EXPECT_EQ(content("here.txt"), "here");
    write("later.txt", "later");
    std::filesystem::remove("goes.txt");
    {
        krFile later("later.txt", true);
        krFile goes("goes.txt", true);
        EXPECT_EQ(later.data, nullptr);
        EXPECT_EQ(goes.data, nullptr);
        EXPECT_EQ(goes.size, 0u);
    }
    EXPECT_EQ(reports(), (std::vector<std::string>{"File \"later.txt\" not found!", "File \"goes.txt\" not found!"}));

    // A file turned into a folder after the scan is no file either.
    std::filesystem::remove("here.txt");
    std::filesystem::create_directory("here.txt");
    EXPECT_EQ(content("here.txt"), "<missing>");

    krFileIndex::forget();
    EXPECT_EQ(content("later.txt"), "later");
}

TEST_F(FileIndex, MissingFileIsReportedOnlyWhenAsked) {
    { krFile quiet("nope.txt", false); }
    EXPECT_TRUE(reports().empty());
    { krFile loud("nope.txt", true); }
    EXPECT_EQ(reports(), std::vector<std::string>{"File \"nope.txt\" not found!"});
}

TEST_F(FileIndex, LooseFilesLoadWholeWithATerminatingNul) {
    write("empty.txt", "");
    write("bin.dat", std::string("a\0b\0", 4));
    krFile empty("empty.txt", true);
    ASSERT_NE(empty.data, nullptr);
    EXPECT_EQ(empty.size, 0u);
    EXPECT_EQ(empty.data[0], '\0');
    krFile bin("bin.dat", true);
    EXPECT_EQ(std::string(bin.data, bin.size), std::string("a\0b\0", 4));
    EXPECT_EQ(bin.data[4], '\0');
    EXPECT_EQ(bin.cursor, 0u);
}
