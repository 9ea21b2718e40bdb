// Building the file index: the listing of the working directory, the mount rule of packs, and
// the precedence of loose files over pack entries.
#include "core/krFileIndex.h"

#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <utility>

#include "core/krFileIndexPack.h"

namespace {

std::map<std::string, krFileEntry> index;
bool built = false;
std::string stockPack;

// Deeper than any asset tree goes; stops the walk in a tree nested without end.
constexpr int maxListingDepth = 128;

// The suffix that makes a listed file a pack: exact bytes, so "x.KR" is a loose file.
constexpr char packSuffix[] = ".kr";
constexpr size_t packSuffixLength = sizeof packSuffix - 1;

// Packs below a folder "data" mount as if that folder were the root of the logical tree.
constexpr char dataFolder[] = "data/";
constexpr size_t dataFolderLength = sizeof dataFolder - 1;

using DirectoryId = std::pair<dev_t, ino_t>;

// Enters each directory once: a link back up the tree (or two links to one place) must neither
// loop nor repeat the walk.
void listDirectory(const std::string& prefix, int depth, std::set<DirectoryId>& entered,
                   std::vector<std::string>& out) {
    namespace fs = std::filesystem;
    std::error_code error;
    for (fs::directory_iterator it(prefix.empty() ? fs::path(".") : fs::path(prefix), error), end;
         !error && it != end; it.increment(error)) {
        const std::string path = prefix.empty() ? it->path().filename().string()
                                                : prefix + "/" + it->path().filename().string();
        std::error_code statusError;
        const fs::file_status status = it->status(statusError);
        if (statusError) continue;
        if (fs::is_regular_file(status)) {
            out.push_back(path);
        } else if (fs::is_directory(status) && depth < maxListingDepth) {
            struct stat info;
            if (stat(path.c_str(), &info) == 0 && entered.insert({info.st_dev, info.st_ino}).second)
                listDirectory(path, depth + 1, entered, out);
        }
    }
}

bool isPack(const std::string& path) {
    return path.size() >= packSuffixLength &&
           path.compare(path.size() - packSuffixLength, packSuffixLength, packSuffix) == 0;
}

// `root` mounts the pack at the root of the tree, wherever it lies.
void mountPack(const std::string& packPath, bool root = false) {
    const std::string mount = root ? std::string() : packPath.substr(0, packPath.size() - packSuffixLength) + "/";
    krReadPackDirectory(packPath, [&](const krPackEntry& e) {
        std::string key = mount + e.name;
        if (!root && key.compare(0, dataFolderLength, dataFolder) == 0) key.erase(0, dataFolderLength);
        krFileEntry entry;
        entry.packed = 1;
        entry.packPath = packPath;
        entry.offset = e.offset;
        entry.size = e.size;
        entry.storedSize = e.storedSize;
        entry.method = e.method;
        // emplace keeps what stands: a loose file, or the entry of an earlier pack.
        index.emplace(std::move(key), std::move(entry));
    });
}

}  // namespace

std::vector<std::string> krFileIndex::listWorkingDirectory() {
    std::vector<std::string> paths;
    std::set<DirectoryId> entered;
    struct stat info;
    if (stat(".", &info) == 0) entered.insert({info.st_dev, info.st_ino});
    listDirectory("", 0, entered, paths);
    return paths;
}

void krFileIndex::build(const std::vector<std::string>& listing) {
    index.clear();
    for (const std::string& path : listing) {
        if (isPack(path))
            mountPack(path);
        else
            index[path] = krFileEntry();
    }
    // Last: its entries only fill what the working directory left open.
    if (!stockPack.empty()) mountPack(stockPack, true);
    built = true;
}

void krFileIndex::setStockPack(const std::string& path) { stockPack = path; }

void krFileIndex::forget() {
    index.clear();
    built = false;
}

const krFileEntry* krFileIndex::find(const std::string& key) {
    if (!built) build(listWorkingDirectory());
    const auto it = index.find(key);
    return it == index.end() ? nullptr : &it->second;
}

const std::map<std::string, krFileEntry>& krFileIndex::entries() { return index; }
