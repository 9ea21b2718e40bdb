// krPackWriter: builds a .kr pack archive in memory from named files, each stored or
// zlib-compressed, in the layout the engine's file index reads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class krPackWriter {
public:
    // Adds one entry; method is krPack::storedId or krPack::zlibId. Refuses, with the reason in
    // error, a name that is empty, too long for the entry's name field or already added, a file
    // too large for the format, and a method it does not know.
    bool add(const std::string& name, const std::string& content, uint32_t method, std::string* error);

    // The whole archive, entries in the order added; false when it outgrows 32-bit sizes.
    bool build(std::string* pack, std::string* error) const;

private:
    struct Entry {
        std::string name;
        uint32_t method;
        uint32_t size;
        std::string stored;  // the bytes as they go into the pack
    };
    std::vector<Entry> entries;
};
