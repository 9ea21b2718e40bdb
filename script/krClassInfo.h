// krClassInfo: what scripts can reach on a class, written down as data. Each class heads its
// member ladders with one of these tables, and its subsystem hands it to the host, which keeps
// them so that the engine can print a reference of itself that cannot drift from the code.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// How scripts reach a member; combined with "|".
enum krAccess : uint8_t {
    krRead = 1,   // getMember answers it without arguments
    krWrite = 2,  // setMember takes it
    krCall = 4,   // a method: getMember with the arguments of `type`
};

struct krMemberInfo {
    const char* name;
    uint8_t access;
    // A value's type ("float", "int", "bool", "string", "object", "array"), or a method's
    // arguments, as "(x, y, z)".
    const char* type;
    // One line: what the member is; for a member that can be written but not read, why.
    const char* note;
};

struct krEventInfo {
    const char* name;
    // The handler's arguments in order, as "(object, speed)"; "()" for none.
    const char* arguments;
    const char* note;
};

struct krClassInfo {
    const char* name;
    // The class whose ladder a name falls through to, or null at the top.
    const char* base;
    // The script function that makes one, or null when scripts cannot make it directly.
    const char* factory;
    std::span<const krMemberInfo> members;
    std::span<const krEventInfo> events;
    // One line: what the class is, for the reference.
    const char* note = nullptr;
};

namespace krClasses {
    // Keeps a class's table for the reference; the table must outlive the host's library.
    void add(const krClassInfo& info);
    const std::vector<const krClassInfo*>& all();
    // The table of a class by name, or null.
    const krClassInfo* find(const char* name);
    void clear();
}
