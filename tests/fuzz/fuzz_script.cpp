// Fuzz target: arbitrary bytes as script text, parsed and run with the side-effect-free part of
// the library (no files, no processes, no sleeping, no windows or sockets), within a budget of
// loop passes and calls and of live values, so that every input ends.
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include "core/krMain.h"
#include "platform/krSystem.h"
#include "script/krParser.h"
#include "script/krScript.h"
#include "script/krScripting.h"
#include "script/krSymbols.h"

namespace {
// Loop passes and calls one input may spend.
constexpr int64_t stepBudget = 5000;
// Live values one input may hold; past it array copies stop and the script unwinds.
constexpr int32_t valueBudget = 200000;

// Functions that only compute or build modules in memory.
const std::set<std::string> allowed = {
    "eval", "random", "bool", "int", "float", "string", "macro", "trimFirstLines", "delete", "color",
    "strcolor", "script", "timer", "clock", "current_time", "new_module", "new_viewport", "new_object",
    "new_flyingCamera", "new_floatingCamera", "new_fixedCamera",
};

void ignoreReport(const std::string&) {}

krMain* root() {
    static krMain* main = [] {
        krSystem::markStackBase();
        auto* m = new krMain(0, nullptr);
        m->attach();
        return m;
    }();
    return main;
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    krMain* main = root();
    krLibrary::registerLanguage();
    krLibrary::registerHost();
    krLibrary::registerConstants();
    for (const std::string& name : krSymbols::functionNames())
        if (!allowed.count(name)) krSymbols::removeFunction(name);
    krScriptErrors::setErrorHandler(ignoreReport);
    krScript::setStepLimit(stepBudget);
    krVariant::instanceLimit = krVariant::instanceCount + valueBudget;

    const std::string text(reinterpret_cast<const char*>(data), size);
    auto* script = new krScript();
    script->setFile("fuzz.script");
    script->load(text.c_str());
    if (krVariant* result = script->eval()) result->release();
    delete script;

    main->clear();
    krModule::releaseOrphans();
    krSymbols::clear();
    krParser::releaseShared();
    krLibrary::closeFiles();
    krSystem::clearQuit();
    krScript::setStepLimit(-1);
    krVariant::instanceLimit = INT32_MAX;
    return 0;
}
