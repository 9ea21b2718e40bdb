// Constant and function tables.
#include "script/krSymbols.h"

#include <map>

#include "script/krClassInfo.h"
#include "script/krVariant.h"

namespace {
std::map<std::string, krVariant*>& constants() {
    static std::map<std::string, krVariant*> table;
    return table;
}
std::map<std::string, krFunctionEntry>& functions() {
    static std::map<std::string, krFunctionEntry> table;
    return table;
}
}

void krSymbols::addConstant(const std::string& word, krVariant* value) {
    if (!value) return;
    value->freeze();
    auto [it, inserted] = constants().try_emplace(word, value);
    if (inserted) return;
    krVariant* old = it->second;
    it->second = value;
    old->release();
}

void krSymbols::addInt(const std::string& word, int32_t value) { addConstant(word, new krVInt(value)); }

krVariant* krSymbols::findConstant(const std::string& word) {
    auto it = constants().find(word);
    return it == constants().end() ? nullptr : it->second;
}

void krSymbols::addFunction(const std::string& word, krNativeFunction function, int flags, const char* usage) {
    functions()[word] = krFunctionEntry{function, nullptr, flags & ~krFuncExternal, usage};
}

void krSymbols::addExternalFunction(const std::string& word, krExternalFunction function, int flags,
                                    const char* usage) {
    functions()[word] = krFunctionEntry{nullptr, function, flags | krFuncExternal, usage};
}

const krFunctionEntry* krSymbols::findFunction(const std::string& word) {
    auto it = functions().find(word);
    return it == functions().end() ? nullptr : &it->second;
}

std::vector<std::string> krSymbols::functionNames() {
    std::vector<std::string> names;
    for (auto& entry : functions()) names.push_back(entry.first);
    return names;
}

void krSymbols::removeFunction(const std::string& word) { functions().erase(word); }

std::vector<std::string> krSymbols::constantNames() {
    std::vector<std::string> names;
    for (auto& entry : constants()) names.push_back(entry.first);
    return names;
}

void krSymbols::clear() {
    auto old = std::move(constants());
    constants().clear();
    for (auto& entry : old) entry.second->release();
    functions().clear();
    krClasses::clear();
}
