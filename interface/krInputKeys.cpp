// The key name table, in code order.
#include "interface/krInputKeys.h"

#include <array>

namespace {
using NameTable = std::array<std::string, krKeyCount>;

NameTable buildNames() {
    NameTable table;
    size_t code = 0;
    for (const char* name : {"Undefined", "Left", "Right", "Up", "Down", "Backspace", "Enter", "Space", "Tab",
                             "Control", "Alt", "Shift", "Esc", "Pause", "Insert", "Delete", "Home", "End",
                             "PageUp", "PageDown"})
        table[code++] = name;
    for (char c = 'A'; c <= 'Z'; ++c) table[code++] = std::string(1, c);
    for (char c = '0'; c <= '9'; ++c) table[code++] = std::string(1, c);
    for (int i = 0; i <= 9; ++i) table[code++] = std::string("Numpad").append(std::to_string(i));
    for (int i = 1; i <= 24; ++i) table[code++] = std::string("F").append(std::to_string(i));
    for (const char* name : {"MouseLeft", "MouseMiddle", "MouseRight", "MouseWheelUp", "MouseWheelDown"})
        table[code++] = name;
    return table;
}

const NameTable& names() {
    static const NameTable table = buildNames();
    return table;
}
}

const std::string& keyName(int32_t code) {
    // A code from outside the table reads as the name of the unnamed key rather than past it.
    if (code < 0 || code >= krKeyCount) code = krKeyUndefined;
    return names()[static_cast<size_t>(code)];
}

int32_t keyCode(const std::string& name) {
    const NameTable& table = names();
    for (int32_t code = 0; code < krKeyCount; ++code)
        if (table[static_cast<size_t>(code)] == name) return code;
    return krKeyUndefined;
}
