// The script host module: start-up, resident scripts, deferred unloading, teardown checks.
#include "script/krScripting.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "core/krFile.h"
#include "core/krMain.h"
#include "script/krClassInfo.h"
#include "script/krParser.h"
#include "script/krScript.h"
#include "script/krSymbols.h"

krScripting* krScripting::host = nullptr;

// Its members are a module's: scripts reach it as MAIN's first child, and the functions it
// registered are its real interface.
const krClassInfo krScripting::info = {"krScripting", "krModule", nullptr, {}, {},
                                       "the script host: keeps the resident scripts, the functions and the constants"};

namespace {
void forwardToRoot(const std::string& text) {
    if (krMain* root = krMain::instance()) root->errorMsg(text);
}
}

void krLibrary::registerAll() {
    registerLanguage();
    krScriptErrors::setErrorHandler(forwardToRoot);
    registerHost();
    registerConstants();
}

krScripting::krScripting(krModule* o) : krModule(o) { host = this; }

krScripting::~krScripting() {
    for (krScript* s : residents) delete s;
    residents.clear();
    scripts.clear();
    krLibrary::closeFiles();
    krSymbols::clear();
    krParser::releaseShared();
    // No script can hear the root's errorMsg any more; the leak check reports the plain way.
    krScriptErrors::setErrorHandler(nullptr);
    if (krVariant::instanceCount > 0)
        reportError(nullptr, "Possible memoryleak detected.\nVariant count " +
                                 std::to_string(krVariant::instanceCount) + " after destroy");
    if (krBlock::instanceCount > 0)
        reportError(nullptr, "Possible memoryleak detected.\nBlock count " +
                                 std::to_string(krBlock::instanceCount) + " after destroy");
    if (host == this) host = nullptr;
}

std::string krScripting::firstScriptName(int argc, char** argv) {
    // The scan stops one short of the end: "-i" as the last argument has no name after it.
    for (int i = 0; i + 1 < argc; ++i)
        if (std::string(argv[i]) == "-i") return argv[i + 1];
    return "init.script";
}

krScript* krScripting::makeScript(const std::string& name) {
    krFile file(name, true);
    auto* s = new krScript();
    s->setFile(name);
    s->setHost(this);
    s->load(file.data);
    return s;
}

bool krScripting::init() {
    std::srand(static_cast<unsigned>(std::time(nullptr)));

    krMain* root = krMain::instance();
    const std::string first = root ? firstScriptName(root->getArgc(), root->getArgv()) : "init.script";
    krScript* script = makeScript(first);
    if (krVariant* result = script->eval()) result->release();

    const bool ok = krModule::init();
    // The first script has done its work: what must live on was loaded as a resident script.
    delete script;
    return ok;
}

void krScripting::deinit() {
    closing = true;
    // Oldest first; each leaves the containers before it is destroyed, so that an unload from a
    // destructor function cannot reach it twice.
    while (!residents.empty()) {
        krScript* s = residents.front();
        residents.pop_front();
        for (auto it = scripts.begin(); it != scripts.end(); ++it) {
            if (it->second == s) {
                scripts.erase(it);
                break;
            }
        }
        delete s;
    }
    scripts.clear();
    pendingUnload.clear();
    krModule::deinit();
}

bool krScripting::update(float dt) {
    auto pending = std::move(pendingUnload);
    pendingUnload.clear();
    for (const std::string& name : pending) {
        krScript* s = findScript(name);
        // Still running (a frame driven from inside it, by MAIN.move): try again next time.
        if (s && s->isRunning()) pendingUnload.push_back(name);
        else removeScript(name);
    }
    return krModule::update(dt);
}

krScript* krScripting::findScript(const std::string& name) const {
    auto it = scripts.find(name);
    return it == scripts.end() ? nullptr : it->second;
}

std::string krScripting::nameOf(const krScript* script) const {
    for (auto& entry : scripts)
        if (entry.second == script) return entry.first;
    return std::string();
}

krVariant* krScripting::loadScript(const std::string& name) {
    if (scripts.count(name)) return nullptr;
    krScript* s = makeScript(name);
    scripts[name] = s;
    residents.push_back(s);
    return s->eval();
}

krVariant* krScripting::runScript(const std::string& name) {
    krScript* s = makeScript(name);
    krVariant* result = s->eval();
    delete s;
    return result;
}

void krScripting::unloadScript(const std::string& name, bool instant) {
    krScript* s = findScript(name);
    if ((!closing && !instant) || (s && s->isRunning())) {
        pendingUnload.push_back(name);
        return;
    }
    removeScript(name);
}

void krScripting::removeScript(const std::string& name) {
    auto it = scripts.find(name);
    if (it == scripts.end()) return;
    krScript* s = it->second;
    scripts.erase(it);
    residents.remove(s);
    delete s;
}
