// Placeholder until the data layer lands: a whole loose file in memory, NUL-terminated.
#pragma once

#include <cstdint>
#include <string>

class krFile {
public:
    krFile(const std::string& name, bool reportMissing);
    ~krFile();
    krFile(const krFile&) = delete;
    krFile& operator=(const krFile&) = delete;

    char* data = nullptr;
    uint32_t cursor = 0;
    uint32_t size = 0;
};
