// The language's own library: output, evaluation, conversions, macros, plain file access.
// File names here go straight to the file system, not through the data layer.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "core/krVersion.h"
#include "platform/krSystem.h"
#include "script/krBAccess.h"
#include "script/krParser.h"
#include "script/krScript.h"
#include "script/krScripting.h"
#include "script/krSymbols.h"
#include "script/krVArray.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

// Open files live in a table; scripts hold the position plus one, so 0 is never a handle and a
// wrong int is reported instead of being taken for a stream.
std::vector<FILE*> openFiles;

FILE* fileOf(krBlock* caller, krVariant* handle) {
    const int32_t h = handle->toInt();
    if (h > 0 && static_cast<size_t>(h) <= openFiles.size() && openFiles[static_cast<size_t>(h) - 1])
        return openFiles[static_cast<size_t>(h) - 1];
    reportError(caller, "Invalid file handle: " + std::to_string(h));
    return nullptr;
}

// Reads a plain file whole; on failure the reason, for the report. Regular files only: a device
// such as /dev/zero never ends and a FIFO would hold the engine until someone writes to it. What a
// script string cannot hold is refused.
std::string readWhole(const std::string& name, std::string& text) {
    std::error_code error;
    if (!std::filesystem::exists(name, error)) return "no such file";
    if (!std::filesystem::is_regular_file(name, error)) return "not a regular file";
    FILE* f = std::fopen(name.c_str(), "r");
    if (!f) return std::strerror(errno);
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) {
        if (text.size() + n > krConvert::maxStringBytes) {
            std::fclose(f);
            text.clear();
            return "larger than a string can be (" + std::to_string(krConvert::maxStringBytes) + " bytes)";
        }
        text.append(buffer, n);
    }
    std::fclose(f);
    return {};
}

krVariant* print(krBlock*, const krArgs& args) {
    if (args.size() == 1) krSystem::writeLine(args[0]->toString());
    return nullptr;
}

krVariant* evalText(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    if (krSystem::stackLow()) return reportError(caller, "Recursion too deep");
    const std::string text = args[0]->toString();
    krMultiBlock block(caller);
    block.setLine(caller ? caller->getLine() : 0);
    krParser::parseFile(&block, text.c_str(), block.getLine());
    return block.eval();
}

krVariant* randomNumber(krBlock*, const krArgs& args) {
    if (args.size() == 1) {
        const int32_t n = args[0]->toInt();
        if (n > 0) return new krVInt(std::rand() % n);
    }
    return new krVInt(std::rand());
}

krVariant* openFile(krBlock* caller, const krArgs& args) {
    if (args.size() != 2) return nullptr;
    const std::string name = args[0]->toString(), mode = args[1]->toString();
    FILE* f = std::fopen(name.c_str(), mode.c_str());
    if (!f) return reportError(caller, "Cannot open file \"" + name + "\" (" + mode + ")");
    for (size_t i = 0; i < openFiles.size(); ++i) {
        if (!openFiles[i]) {
            openFiles[i] = f;
            return new krVInt(static_cast<int32_t>(i + 1));
        }
    }
    openFiles.push_back(f);
    return new krVInt(static_cast<int32_t>(openFiles.size()));
}

krVariant* closeFile(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    if (FILE* f = fileOf(caller, args[0])) {
        std::fclose(f);
        openFiles[static_cast<size_t>(args[0]->toInt()) - 1] = nullptr;
    }
    return nullptr;
}

krVariant* writeText(krBlock* caller, const krArgs& args, bool newline) {
    if (args.size() != 2) return nullptr;
    if (FILE* f = fileOf(caller, args[0])) {
        const std::string text = args[1]->toString();
        std::fwrite(text.data(), 1, text.size(), f);
        if (newline) std::fputc('\n', f);
    }
    return nullptr;
}

krVariant* write(krBlock* caller, const krArgs& args) { return writeText(caller, args, false); }
krVariant* writeLine(krBlock* caller, const krArgs& args) { return writeText(caller, args, true); }

krVariant* appendLine(krBlock* caller, const krArgs& args) {
    if (args.size() != 2) return nullptr;
    const std::string name = args[0]->toString();
    FILE* f = std::fopen(name.c_str(), "a");
    if (!f) return reportError(caller, "Cannot open file \"" + name + "\"");
    const std::string text = args[1]->toString();
    std::fwrite(text.data(), 1, text.size(), f);
    std::fputc('\n', f);
    std::fclose(f);
    return nullptr;
}

krVariant* fileText(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    const std::string name = args[0]->toString();
    std::string text;
    const std::string failure = readWhole(name, text);
    if (!failure.empty()) return reportError(caller, "Cannot open file \"" + name + "\" (" + failure + ")");
    return new krVString(std::move(text));
}

krVariant* resetFile(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    const std::string name = args[0]->toString();
    FILE* f = std::fopen(name.c_str(), "w");
    if (!f) return reportError(caller, "Cannot open file \"" + name + "\"");
    std::fclose(f);
    return nullptr;
}

krVariant* removeFile(krBlock*, const krArgs& args) {
    if (args.size() == 1) std::remove(args[0]->toString().c_str());
    return nullptr;
}

krVariant* readDirectory(krBlock*, const krArgs& args) {
    if (args.size() > 2) return nullptr;
    std::string dir = args.size() > 0 ? args[0]->toString() : std::string();
    const std::string suffix = args.size() > 1 ? args[1]->toString() : std::string(".*");
    if (!dir.empty() && dir.back() != '/') dir += '/';
    auto* list = new krVArray();
    for (const std::string& name : krSystem::listDirectory(dir, "*" + suffix)) list->append(new krVString(name));
    return list;
}

// bool, int, float and string: a value of the type itself comes back as it is.
template <krType T>
krVariant* convert(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    krVariant* v = args[0];
    if (v->type() == T) return v->addRef();
    if constexpr (T == krTypeBool) return new krVBool(v->toBool());
    else if constexpr (T == krTypeInt) return new krVInt(v->toInt());
    else if constexpr (T == krTypeFloat) return new krVFloat(v->toFloat());
    else {
        std::string text = v->toString();
        if (text.size() > krConvert::maxStringBytes) return reportError(caller, "String too long");
        return new krVString(std::move(text));
    }
}

krVariant* makeMacro(krBlock* caller, const krArgs& args) {
    if (args.empty()) return nullptr;
    const std::string text = args[0]->toString();
    // $0 is the text itself, $1 the first value after it.
    krParser::setParseArgs(&args);
    krBlock* expr = krParser::parseOne(caller, text.c_str(), caller ? caller->getLine() : 0);
    krParser::setParseArgs(nullptr);
    return new krVMacro(expr);
}

krVariant* trimFirstLines(krBlock*, const krArgs& args) {
    if (args.size() != 2) return nullptr;
    const std::string text = args[0]->toString();
    const int32_t n = args[1]->toInt();
    // Newlines are counted from the end, leaving out the last character; at the n-th one the
    // text before it goes.
    int32_t seen = 0;
    if (n > 0 && text.size() > 1) {
        for (size_t i = text.size() - 1; i-- > 0;) {
            if (text[i] == '\n' && ++seen == n) return new krVString(text.substr(i + 1));
        }
    }
    return new krVString(text);
}

} // namespace

void krLibrary::registerLanguage() {
    using krSymbols::addFunction;
    addFunction("print", print, 0, "(text): writes the text and a newline to standard output");
    addFunction("echo", print, 0, "(text): the same as print");
    addFunction("eval", evalText, 0, "(text): runs the text as script code here; the value of its last statement");
    addFunction("random", randomNumber, 0, "(n?): a random int from 0 to n - 1, or up to the generator's largest");
    addFunction("open", openFile, 0, "(name, mode): opens a plain file as fopen does; a handle, or null");
    addFunction("close", closeFile, 0, "(handle): closes a file opened with open");
    addFunction("write", write, 0, "(handle, text): writes the text");
    addFunction("writeLine", writeLine, 0, "(handle, text): writes the text and a newline");
    addFunction("appendLine", appendLine, 0, "(name, text): appends the text and a newline to a plain file");
    addFunction("file", fileText, 0, "(name): the whole text of a plain file, or null");
    addFunction("reset", resetFile, 0, "(name): empties a plain file, making it if need be");
    addFunction("remove", removeFile, 0, "(name): deletes a plain file");
    addFunction("readdir", readDirectory, 0, "(folder?, suffix?): the names in a folder that end in the suffix");
    addFunction("bool", convert<krTypeBool>, krFuncFoldable, "(value): the value as a bool");
    addFunction("int", convert<krTypeInt>, krFuncFoldable, "(value): the value as an int");
    addFunction("float", convert<krTypeFloat>, krFuncFoldable, "(value): the value as a float");
    addFunction("string", convert<krTypeString>, krFuncFoldable, "(value): the value as a string");
    addFunction("macro", makeMacro, 0, "(text, values...): an expression evaluated at each read; $1 is the first value");
    addFunction("trimFirstLines", trimFirstLines, 0, "(text, n): the last n lines of the text");

    krSymbols::addConstant("false", new krVBool(false));
    krSymbols::addConstant("true", new krVBool(true));
    // NULL, null and nil share one value.
    krVariant* zero = new krVInt(0);
    krSymbols::addConstant("NULL", zero->addRef());
    krSymbols::addConstant("null", zero->addRef());
    krSymbols::addConstant("nil", zero);
    krSymbols::addConstant("endl", new krVString("\n"));
    krSymbols::addConstant("tab", new krVString("\t"));
    krSymbols::addConstant("KRSCRIPT_VERSION", new krVString(krVersion));
    krSymbols::addConstant("KRSCRIPT_VARIANTCOUNT", new krVIntPtr(&krVariant::instanceCount));
    krSymbols::addConstant("KRSCRIPT_BLOCKCOUNT", new krVIntPtr(&krBlock::instanceCount));
}

void krLibrary::closeFiles() {
    for (FILE*& f : openFiles) {
        if (f) std::fclose(f);
        f = nullptr;
    }
    openFiles.clear();
}
