// krScripting: the script host. It fills the parser's function and constant tables, runs the
// first script, keeps the resident scripts, and unloads scripts at its next update when they ask
// for it from their own running code.
#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "core/krModule.h"

class krScript;

class krScripting : public krModule {
public:
    explicit krScripting(krModule* owner);
    ~krScripting() override;

    static const krClassInfo info;

    static krScripting* instance() { return host; }

    bool init() override;
    void deinit() override;
    bool update(float dt) override;
    const char* className() const override { return "krScripting"; }

    // Loads a resident script once; the value of its main code, or null if it was loaded before.
    krVariant* loadScript(const std::string& name);
    // Runs a script once and destroys it; the value of its main code.
    krVariant* runScript(const std::string& name);
    // Deferred to the next update unless `instant` (or closing). A running script is always
    // deferred: destroying it would pull the code out from under itself.
    void unloadScript(const std::string& name, bool instant);
    krScript* findScript(const std::string& name) const;
    // The name under which `script` is resident, or "".
    std::string nameOf(const krScript* script) const;

    // The name of the first script: "init.script", or the file after "-i".
    static std::string firstScriptName(int argc, char** argv);

private:
    void removeScript(const std::string& name);
    // Reads a file through the data layer and parses it into a new script.
    krScript* makeScript(const std::string& name);

    static krScripting* host;
    std::map<std::string, krScript*> scripts;
    std::list<krScript*> residents;
    std::vector<std::string> pendingUnload;
    bool closing = false;
};

// Registration of the script library's own part, in the order the host runs it. Each subsystem
// adds its factories, class tables and constants after it (krProgram).
namespace krLibrary {
    // The language's own functions and constants (print, eval, macro, file functions, ...).
    void registerLanguage();
    // The host's functions (load, run, include, delete, ...) and new_module.
    void registerHost();
    // The constants of the core: GLOBALS, MAIN, the axes and the named colours.
    void registerConstants();
    // All of the above, with script errors reported through the root's errorMsg.
    void registerAll();
    // Forgets open files; called when the library is released.
    void closeFiles();
}
