// The process-wide tables that the parser consults for bare words: constants and engine functions.
// The host fills them before any script is read and empties them at teardown.
#pragma once

#include <string>
#include <vector>

#include "script/krBFuncCall.h"

// Function flags: bit 0 the raw calling form, bit 1 foldable when all arguments are constant.
constexpr int krFuncExternal = 1;
constexpr int krFuncFoldable = 2;

struct krFunctionEntry {
    krNativeFunction native = nullptr;
    krExternalFunction external = nullptr;
    int flags = 0;
    // The arguments and what the function does, in one line, for the reference: "(text): ...".
    const char* usage = nullptr;
};

namespace krSymbols {
    // Stores `value` under `word`, taking over its reference and freezing it; an older value
    // under the word is released.
    void addConstant(const std::string& word, krVariant* value);
    // An int constant, the common kind of the subsystems' flag tables.
    void addInt(const std::string& word, int32_t value);
    // The constant of a word, borrowed, or null.
    krVariant* findConstant(const std::string& word);
    // `usage` is one line for the reference: the arguments, then what the function does, as
    // "(name, mode): opens a plain file".
    void addFunction(const std::string& word, krNativeFunction function, int flags, const char* usage);
    void addExternalFunction(const std::string& word, krExternalFunction function, int flags, const char* usage);
    const krFunctionEntry* findFunction(const std::string& word);
    // The words of the function table, and their removal: for hosts that run untrusted text
    // with part of the library only.
    std::vector<std::string> functionNames();
    void removeFunction(const std::string& word);
    // The words of the constant table, in order.
    std::vector<std::string> constantNames();
    // Releases every constant and empties both tables.
    void clear();
}
