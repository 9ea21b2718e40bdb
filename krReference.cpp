// The reference of the engine, written from its registration tables.
#include "krReference.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <string>

#include "core/krScriptObject.h"
#include "script/krClassInfo.h"
#include "script/krSymbols.h"
#include "script/krVObject.h"
#include "script/krVariant.h"

namespace {

// Ints this small read best in decimal; larger ones are bit sets and packed colours.
constexpr int32_t largestDecimal = 255;

// A table cell: a bar would end the cell early.
std::string cell(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '|') out += "\\|";
        else out += c;
    }
    return out;
}

std::string code(const std::string& text) { return "`" + text + "`"; }

// The heading anchor that Markdown renderers give "### krFoo".
std::string anchor(const std::string& className) {
    std::string out;
    for (char c : className) out += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return "[" + className + "](#" + out + ")";
}

// "(a, b): what it does" split into its arguments and its note.
void splitUsage(const char* usage, std::string& arguments, std::string& note) {
    const std::string text = usage ? usage : "";
    const size_t end = text.find("): ");
    if (!text.empty() && text[0] == '(' && end != std::string::npos) {
        arguments = text.substr(0, end + 1);
        note = text.substr(end + 3);
    } else {
        arguments = "";
        note = text;
    }
}

std::string stringLiteral(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '\n') out += "\\n";
        else if (c == '\t') out += "\\t";
        else out += c;
    }
    return out + "\"";
}

std::string valueText(krVariant* v) {
    switch (v->type()) {
    case krTypeInt: {
        // A bound int (the live counters) has no value of its own to print.
        if (!v->isConst()) return "int, counted live";
        const int32_t n = v->toInt();
        if (n >= -largestDecimal && n <= largestDecimal) return code(std::to_string(n));
        // Wide ones as all eight digits: packed colours read by their bytes.
        char hex[16];
        std::snprintf(hex, sizeof hex, n > 0xFFFF || n < 0 ? "0x%08X" : "0x%X", static_cast<uint32_t>(n));
        return code(hex);
    }
    case krTypeString:
        return code(stringLiteral(v->toString()));
    case krTypeObject: {
        krScriptObject* object = static_cast<krVObject*>(v)->object();
        return object ? std::string("object of class ") + object->className() : "object";
    }
    case krTypeArray:
        return v->isConst() ? "array" : "array, writable by every script";
    default:
        return code(v->toString());
    }
}

std::string accessText(uint8_t access) {
    if (access & krCall) return "call";
    if ((access & krRead) && (access & krWrite)) return "read, write";
    return access & krRead ? "read" : "write";
}

void functionsSection(std::string& out, const std::set<std::string>& factories) {
    out += "## Functions\n\n| Function | What it does |\n|---|---|\n";
    for (const std::string& name : krSymbols::functionNames()) {
        if (factories.count(name)) continue;
        std::string arguments, note;
        splitUsage(krSymbols::findFunction(name)->usage, arguments, note);
        out += "| " + code(name + arguments) + " | " + cell(note) + " |\n";
    }
}

void factoriesSection(std::string& out, const std::set<std::string>& factories,
                      const std::map<std::string, std::string>& made) {
    out += "\n## Factories\n\nEach makes a module, attaches it below its owner (`MAIN` when none is given) "
           "and gives an object value of it.\n\n| Function | Makes | What it does |\n|---|---|---|\n";
    for (const std::string& name : factories) {
        const krFunctionEntry* entry = krSymbols::findFunction(name);
        if (!entry) continue;
        std::string arguments, note;
        splitUsage(entry->usage, arguments, note);
        auto it = made.find(name);
        out += "| " + code(name + arguments) + " | " + (it != made.end() ? anchor(it->second) : "") + " | " +
               cell(note) + " |\n";
    }
}

void constantsSection(std::string& out) {
    out += "\n## Constants\n\nBare words in scripts. Packed colours are 0xRRBBGGAA.\n\n| Name | Value |\n|---|---|\n";
    for (const std::string& name : krSymbols::constantNames())
        out += "| " + code(name) + " | " + cell(valueText(krSymbols::findConstant(name))) + " |\n";
}

void classSection(std::string& out, const krClassInfo& info) {
    out += "\n### " + std::string(info.name) + "\n\n";
    if (info.note) out += std::string(info.note) + ".\n\n";
    if (info.base) out += "Base: " + anchor(info.base) + ". ";
    if (info.factory) out += "Made by " + code(info.factory) + ".";
    else out += "Not made by scripts directly.";
    out += "\n";
    if (!info.members.empty()) {
        out += "\n| Member | Access | Type | Note |\n|---|---|---|---|\n";
        for (const krMemberInfo& m : info.members) {
            const bool method = m.access & krCall;
            out += "| " + code(method ? std::string(m.name) + m.type : m.name) + " | " + accessText(m.access) + " | " +
                   (method ? "" : cell(m.type)) + " | " + cell(m.note) + " |\n";
        }
    }
    if (!info.events.empty()) {
        out += "\n| Event | Arguments | Note |\n|---|---|---|\n";
        for (const krEventInfo& e : info.events)
            out += "| " + code(e.name) + " | " + code(e.arguments) + " | " + cell(e.note) + " |\n";
    }
}

}  // namespace

std::string krReference::markdown() {
    std::vector<const krClassInfo*> classes = krClasses::all();
    std::sort(classes.begin(), classes.end(),
              [](const krClassInfo* a, const krClassInfo* b) { return std::string(a->name) < b->name; });

    // A factory is a function that a class names as its maker, or any "new_" function.
    std::set<std::string> factories;
    std::map<std::string, std::string> made;
    for (const krClassInfo* info : classes) {
        if (!info->factory) continue;
        factories.insert(info->factory);
        made[info->factory] = info->name;
    }
    for (const std::string& name : krSymbols::functionNames())
        if (name.rfind("new_", 0) == 0) factories.insert(name);

    std::string out =
        "# Kerrin script reference\n\n"
        "Printed by the engine from its own tables (`kerrin --reference`); do not edit by hand. After adding or "
        "changing functions, constants or classes, regenerate it from the build folder with\n"
        "`cmake --build build --target reference`.\n\n"
        "An object answers its own members first, then those of its base class. A name that no class "
        "answers fires the event of that name on the object, so scripts can give objects methods of "
        "their own. Methods act only with the arguments shown; another count falls through like an "
        "unknown name. An event name ending in `_` is completed by a name at run time.\n\n";
    functionsSection(out, factories);
    factoriesSection(out, factories, made);
    constantsSection(out);

    out += "\n## Classes\n\n| Class | Base | Made by | What it is |\n|---|---|---|---|\n";
    for (const krClassInfo* info : classes)
        out += "| " + anchor(info->name) + " | " + (info->base ? anchor(info->base) : "") + " | " +
               (info->factory ? code(info->factory) : "") + " | " + cell(info->note ? info->note : "") + " |\n";
    for (const krClassInfo* info : classes) classSection(out, *info);
    return out;
}
