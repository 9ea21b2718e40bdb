// The host's list of class tables.
#include "script/krClassInfo.h"

#include <cstring>

namespace {
std::vector<const krClassInfo*>& table() {
    static std::vector<const krClassInfo*> classes;
    return classes;
}
}

void krClasses::add(const krClassInfo& info) {
    for (const krClassInfo*& known : table()) {
        if (std::strcmp(known->name, info.name) == 0) {
            known = &info;
            return;
        }
    }
    table().push_back(&info);
}

const std::vector<const krClassInfo*>& krClasses::all() { return table(); }

const krClassInfo* krClasses::find(const char* name) {
    for (const krClassInfo* info : table())
        if (std::strcmp(info->name, name) == 0) return info;
    return nullptr;
}

void krClasses::clear() { table().clear(); }
