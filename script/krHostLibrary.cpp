// The engine's side of the script library: scripts loading scripts, object deletion, colours,
// clocks, the factories of the core, and the constant tables that every script sees.
#include <cstdio>
#include <ctime>

#include "core/krColor.h"
#include "core/krFile.h"
#include "core/krMain.h"
#include "interface/krCameraClasses.h"
#include "interface/krClock.h"
#include "platform/krSystem.h"
#include "render/krVideoClasses.h"
#include "render/krObjectClasses.h"
#include "script/krFactory.h"
#include "script/krParser.h"
#include "script/krScript.h"
#include "script/krScripting.h"
#include "script/krSymbols.h"
#include "script/krVArray.h"
#include "script/krVObject.h"

namespace {

krScript* callingScript(krBlock* caller) { return caller ? caller->getScript() : nullptr; }

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
        if (name.empty()) continue;
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

krVariant* krfile(krBlock*, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    krFile file(args[0]->toString(), true);
    // The text ends at the first NUL of the content.
    return new krVString(file.data ? std::string(file.data) : std::string());
}

krVariant* quit(krBlock*, const krArgs&) {
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

krVariant* timer(krBlock*, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    return krFactory::attachAndReturn(new krTimerClock(krMain::instance(), args[0]->toFloat()));
}

krVariant* clock(krBlock*, const krArgs& args) {
    int32_t start;
    if (args.empty()) {
        start = 0;
    } else if (args.size() == 1) {
        start = args[0]->toInt();
    } else if (args.size() == 6) {
        std::tm date{};
        date.tm_hour = args[0]->toInt();
        date.tm_min = args[1]->toInt();
        date.tm_sec = args[2]->toInt();
        date.tm_mday = args[3]->toInt();
        date.tm_mon = args[4]->toInt();
        date.tm_year = args[5]->toInt() - 1900;
        date.tm_isdst = -1;
        start = static_cast<int32_t>(std::mktime(&date));
    } else {
        return nullptr;
    }
    return krFactory::attachAndReturn(new krClock(krMain::instance(), start));
}

krVariant* currentTime(krBlock*, const krArgs&) { return new krVInt(static_cast<int32_t>(std::time(nullptr))); }

void add(const char* name, int32_t value) { krSymbols::addConstant(name, new krVInt(value)); }

} // namespace

void krLibrary::registerHost() {
    krSymbols::addFunction("delete", deleteObject, 0);
    krSymbols::addFunction("color", color, krFuncFoldable);
    krSymbols::addFunction("strcolor", strcolor, krFuncFoldable);
    krSymbols::addFunction("include", include, 0);
    krSymbols::addFunction("load", load, 0);
    krSymbols::addFunction("unload", unload, 0);
    krSymbols::addFunction("instant_unload", instantUnload, 0);
    krSymbols::addFunction("run", run, 0);
    krSymbols::addFunction("krfile", krfile, 0);
    krSymbols::addFunction("quit", quit, 0);
    krSymbols::addFunction("script", script, 0);
    krSymbols::addFunction("sleep", sleep, 0);
    krSymbols::addFunction("timer", timer, 0);
    krSymbols::addFunction("clock", clock, 0);
    krSymbols::addFunction("current_time", currentTime, 0);
    krSymbols::addFunction("new_module", krMakeModule<krModule>, 0);
    krRegisterVideoClasses();
    krRegisterCameraClasses();
    krRegisterSceneClasses();
}

void krLibrary::registerConstants() {
    krSymbols::addConstant("GLOBALS", new krVMutableArray());
    krSymbols::addConstant("MAIN", new krVObject(krMain::instance()));
    add("OPENGL", 1);
    add("X", 1);
    add("Y", 2);
    add("Z", 4);
    add("NONE", 0);
    add("BOX", 1);
    add("SPHERE", 2);
    add("MESH", 3);
    add("GLSL", 1);
    add("CG", 2);

    for (int i = 0; i < krNamedColorCount; ++i) {
        const krNamedColor& c = krNamedColors[i];
        add(c.name, static_cast<int32_t>(toPacked(krColor(c.r, c.g, c.b, 255))));
    }

    // Vertex attributes and shader inputs, combined with "|".
    add("POSITION", 0x1000000);
    add("NORMAL", 0x2000000);
    for (int i = 0; i < 8; ++i) add(("TEXCOORD" + std::to_string(i)).c_str(), 0x100 << i);
    add("TANGENT", 0x10000);
    add("POINTSIZE", 0x20000);
    for (int i = 0; i <= 8; ++i) add(("WEIGHTx" + std::to_string(i)).c_str(), i);
    for (int i = 0; i <= 4; ++i) add(("INDEXx" + std::to_string(i)).c_str(), 16 * i);
    for (int i = 0; i < 8; ++i) add(("TEXTURE" + std::to_string(i)).c_str(), 1 << i);
    for (int bones : {0, 2, 4, 8, 12, 16, 20, 24, 28, 32, 40, 48, 56, 64, 80, 96, 128, 160, 192, 255})
        add(("BONEx" + std::to_string(bones)).c_str(), bones);
    add("MATRIX", 256);
    add("EYEPOS", 512);
    add("SHADER_TIMER", 1024);

    // Animation flags.
    add("SELECT_RANDOM0", 0x10000);
    add("SELECT_RANDOM1", 0x20000);
    add("START_BEGINNING", 0x40000);
    add("ADDITIVE_BLEND", 0x10000);
    add("DONT_LOOP", 0x20000);

    // Human animation tracks and states, numbered from 1.
    const char* humanTracks[] = {
        "HUMAN_STAND", "HUMAN_ACCELERATE", "HUMAN_WALK", "HUMAN_RUN", "HUMAN_BEGIN_STANDING_JUMP",
        "HUMAN_BEGIN_FORWARD_JUMP", "HUMAN_BEGIN_MOVING_JUMP", "HUMAN_STANDING_JUMP", "HUMAN_FORWARD_JUMP",
        "HUMAN_MOVING_JUMP", "HUMAN_END_STANDING_JUMP", "HUMAN_END_FORWARD_JUMP", "HUMAN_END_MOVING_JUMP",
        "HUMAN_EYES_OPEN", "HUMAN_EYES_CLOSED", "HUMAN_WALK_LEFT", "HUMAN_WALK_RIGHT", "HUMAN_FALLDOWN",
        "HUMAN_RAISEUP"};
    int32_t track = 1;
    for (const char* name : humanTracks) add(name, track++);
    add("TRACK_WALKSPEED", 1);
    add("STATUS_NORMAL", 2);
    add("STATUS_HAPPY", 4);
    add("STATUS_ANGRY", 8);

    struct Flag {
        const char* name;
        int32_t value;
    };
    const Flag flags[] = {
        {"CAR_STEER", 1}, {"CAR_BRAKE", 2}, {"CAR_ACCELERATE", 4}, {"CAR_HANDBRAKE", 8},
        {"AIRPLANE_STEER", 1}, {"AIRPLANE_BRAKE", 2},
        {"BLEND_ALPHA", 1}, {"BLEND_ADDITIVE", 2}, {"BLEND_ADDITIVE_ALPHA", 4},
        {"DAMAGE_BULLET", 1}, {"DAMAGE_COLLISION", 2},
        {"BORDER_TOP", 1}, {"BORDER_BOTTOM", 2}, {"BORDER_LEFT", 4}, {"BORDER_RIGHT", 8},
        {"ALIGN_TOP", 1}, {"ALIGN_MIDDLE", 2}, {"ALIGN_BOTTOM", 4}, {"ALIGN_LEFT", 8}, {"ALIGN_CENTER", 16},
        {"ALIGN_RIGHT", 32},
        {"PHYSIC_NONE", 0}, {"PHYSIC_DEFAULT", 1}, {"PHYSIC_WATER", 2},
    };
    for (const Flag& f : flags) add(f.name, f.value);
}
