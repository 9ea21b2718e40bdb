// Placeholder until the data layer lands.
#include "core/krFile.h"

#include <cstdio>

#include "core/krMain.h"

krFile::krFile(const std::string& name, bool reportMissing) {
    FILE* f = std::fopen(name.c_str(), "rb");
    if (!f) {
        if (reportMissing && krMain::instance()) krMain::instance()->errorMsg("File \"" + name + "\" not found!");
        return;
    }
    std::fseek(f, 0, SEEK_END);
    long length = std::ftell(f);
    std::fseek(f, 0, SEEK_SET);
    data = new char[static_cast<size_t>(length) + 1];
    size = static_cast<uint32_t>(std::fread(data, 1, static_cast<size_t>(length), f));
    data[size] = 0;
    std::fclose(f);
}

krFile::~krFile() { delete[] data; }
