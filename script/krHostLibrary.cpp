// The engine's side of the script library: scripts loading scripts, object deletion, colours,
// clocks, the factory of plain modules, and the constants of the core that every script sees.
#include <cstdio>
#include <ctime>

#include "core/krColor.h"
#include "core/krFile.h"
#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "platform/krSystem.h"
#include "script/krClassInfo.h"
#include "script/krFactory.h"
#include "script/krParser.h"
#include "script/krScript.h"
#include "script/krScripting.h"
#include "script/krSymbols.h"
#include "script/krVArray.h"
#include "script/krVObject.h"

namespace {

krScript* callingScript(krBlock* caller) { return caller ? caller->getScript() : nullptr; }

// A data file that is not there is reported at the call, with its file and line: names are
// relative to the working directory, not to the calling script's folder.
bool found(krBlock* caller, const std::string& name) {
    if (krFileIndex::find(name)) return true;
    reportError(caller, "File \"" + name + "\" not found!");
    return false;
}

krVariant* deleteObject(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    krScriptObject* object = krScriptObject::fromHandle(args[0]->toInt());
    if (auto* module = dynamic_cast<krModule*>(object)) {
        // The root and the host carry the whole engine; they go only at teardown.
        if (module == krMain::instance() || module == krScripting::instance())
            return reportError(caller, "The engine's own modules cannot be deleted");
        module->dispose();
    }
    args[0]->reset();
    return nullptr;
}

krVariant* color(krBlock*, const krArgs& args) {
    auto byte = [&](size_t i) { return static_cast<uint32_t>(args[i]->toInt()) & 0xFF; };
    uint32_t packed;
    switch (args.size()) {
    case 1: packed = byte(0) << 24 | byte(0) << 16 | byte(0) << 8 | 0xFF; break;
    case 2: packed = (static_cast<uint32_t>(args[0]->toInt()) & 0xFFFFFF00u) | byte(1); break;
    case 3: packed = byte(0) << 24 | byte(2) << 16 | byte(1) << 8 | 0xFF; break;
    case 4: packed = byte(0) << 24 | byte(2) << 16 | byte(1) << 8 | byte(3); break;
    default: return nullptr;
    }
    return new krVInt(static_cast<int32_t>(packed));
}

krVariant* strcolor(krBlock*, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    char text[9];
    std::snprintf(text, sizeof text, "%08X", static_cast<uint32_t>(args[0]->toInt()));
    return new krVString(text);
}

krVariant* include(krBlock* caller, const krArgs& args) {
    krScript* s = callingScript(caller);
    if (args.size() != 1 || !s) return nullptr;
    if (krSystem::stackLow()) return reportError(caller, "Recursion too deep");
    const std::string name = args[0]->toString();
    if (!found(caller, name)) return nullptr;
    krFile file(name, true);
    const std::string including = s->getFile();
    // Reports of the included text name the included file while it is parsed and run.
    s->setFile(name);
    krMultiBlock block(caller);
    block.setLine(krIncludedLine);
    krParser::parseFile(&block, file.data, krIncludedLine);
    krVariant* result = block.eval();
    if (s->getStatus() >= krStatusContinue && s->getStatus() <= krStatusExit) s->setStatus(krStatusRun);
    s->setFile(including);
    return result;
}

// Loads or runs each non-empty name in turn. The value is that of the last script started; a
// load of a script that was loaded before starts nothing and leaves the value as it was.
krVariant* eachScript(krBlock* caller, const krArgs& args, krVariant* (krScripting::*start)(const std::string&),
                      bool everyStartCounts) {
    krScripting* host = krScripting::instance();
    if (!host) return nullptr;
    if (krSystem::stackLow()) return reportError(caller, "Recursion too deep");
    krVariant* result = nullptr;
    for (krVariant* a : args) {
        const std::string name = a->toString();
        if (name.empty() || !found(caller, name)) continue;
        krVariant* r = (host->*start)(name);
        if (!r && !everyStartCounts) continue;
        if (result) result->release();
        result = r;
    }
    return result;
}

krVariant* load(krBlock* caller, const krArgs& args) { return eachScript(caller, args, &krScripting::loadScript, false); }

krVariant* unload(krBlock* caller, const krArgs& args) {
    krScripting* host = krScripting::instance();
    if (!host) return nullptr;
    if (args.empty()) {
        const std::string name = host->nameOf(callingScript(caller));
        if (!name.empty()) host->unloadScript(name, false);
        return nullptr;
    }
    for (krVariant* a : args) host->unloadScript(a->toString(), false);
    return nullptr;
}

krVariant* instantUnload(krBlock*, const krArgs& args) {
    if (krScripting* host = krScripting::instance())
        for (krVariant* a : args) host->unloadScript(a->toString(), true);
    return nullptr;
}

krVariant* run(krBlock* caller, const krArgs& args) { return eachScript(caller, args, &krScripting::runScript, true); }

krVariant* krfile(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    const std::string name = args[0]->toString();
    if (!found(caller, name)) return new krVString(std::string());
    krFile file(name, true);
    // The text ends at the first NUL of the content.
    return new krVString(file.data ? std::string(file.data) : std::string());
}

krVariant* quit(krBlock*, const krArgs& args) {
    if (!args.empty()) return nullptr;
    krSystem::postQuit();
    return nullptr;
}

krVariant* script(krBlock* caller, const krArgs& args) {
    if (args.empty()) return new krVScript(callingScript(caller));
    if (args.size() != 1) return nullptr;
    krScripting* host = krScripting::instance();
    return new krVScript(host ? host->findScript(args[0]->toString()) : nullptr);
}

krVariant* sleep(krBlock*, const krArgs& args) {
    if (args.size() == 1) krSystem::sleepMs(args[0]->toInt());
    return nullptr;
}

krVariant* currentTime(krBlock*, const krArgs& args) {
    if (!args.empty()) return nullptr;
    return new krVInt(static_cast<int32_t>(std::time(nullptr)));
}

} // namespace

void krLibrary::registerHost() {
    using krSymbols::addFunction;
    addFunction("delete", deleteObject, 0, "(object): tears the module down and sets the variable to null");
    addFunction("color", color, krFuncFoldable,
                "(gray), (color, alpha), (red, green, blue) or (red, green, blue, alpha): a packed colour");
    addFunction("strcolor", strcolor, krFuncFoldable, "(color): the packed colour as eight hex digits");
    addFunction("include", include, 0, "(name): runs a data file's code inside the calling script");
    addFunction("load", load, 0, "(names...): loads each as a resident script, once; the value of the last one run");
    addFunction("unload", unload, 0, "(names...): unloads resident scripts at the next frame; none: the calling one");
    addFunction("instant_unload", instantUnload, 0, "(names...): unloads resident scripts at once");
    addFunction("run", run, 0, "(names...): runs each script once and destroys it; the value of the last");
    addFunction("krfile", krfile, 0, "(name): the text of a data file, from the folder or a pack");
    addFunction("quit", quit, 0, "(): ends the program after this frame");
    addFunction("script", script, 0, "(name?): the calling script, or the resident script of that name");
    addFunction("sleep", sleep, 0, "(milliseconds): stops the whole engine that long");
    addFunction("current_time", currentTime, 0, "(): seconds since 1970, as an int");
    addFunction("new_module", krMakeModule<krModule>, 0, "(owner?): an empty module, to group others");

    krClasses::add(krScriptObject::info);
    krClasses::add(krModule::info);
    krClasses::add(krMain::info);
    krClasses::add(krScripting::info);
    krClasses::add(krVString::info);
    krClasses::add(krVArray::info);
    krClasses::add(krVScript::info);
}

void krLibrary::registerConstants() {
    krSymbols::addConstant("GLOBALS", new krVMutableArray());
    krSymbols::addConstant("MAIN", new krVObject(krMain::instance()));
    krSymbols::addInt("X", 1);
    krSymbols::addInt("Y", 2);
    krSymbols::addInt("Z", 4);
    for (int i = 0; i < krNamedColorCount; ++i) {
        const krNamedColor& c = krNamedColors[i];
        krSymbols::addInt(c.name, static_cast<int32_t>(toPacked(krColor(c.r, c.g, c.b, 255))));
    }
}
