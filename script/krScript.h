// krScript: one loaded script file. Its main code runs once and is gone; what lives on are its
// fields (script-wide variables), functions, event handlers and the bindings its `event`
// statements made. Objects and scripts each clear their side of a binding when either dies.
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "script/krBlock.h"
#include "script/krFunction.h"

class krScripting;

class krScript : public krMultiBlock {
public:
    krScript();
    ~krScript() override;

    // Evaluates the main code once, then deletes it.
    krVariant* eval() override;

    void forgetEvent(krScriptObject* object, const std::string& name, krFunction* handler);
    // Deletes all functions and top-level blocks, then parses `text` into this script.
    void load(const char* text);
    // Deletes the top-level blocks only, then parses.
    void reload(const char* text);
    void setFile(const std::string& name) { fileName = name; }
    const std::string& getFile() const { return fileName; }
    void setHost(krScripting* h) { host = h; }
    krScripting* getHost() const { return host; }

    // Variable access by name; results carry a reference for the caller.
    krVariant* getVariable(const std::string& name);
    krVariant* getField(const std::string& name);
    krVariant* getLocal(const std::string& name);
    // Stores by the store rule, taking over the reference of `value`.
    void setVariable(const std::string& name, krVariant* value);
    void setField(const std::string& name, krVariant* value);
    void setLocal(const std::string& name, krVariant* value);

    krFunction* getFunction(const std::string& name);
    void setFunction(const std::string& name, krFunction* function);
    // Changes whenever the function table does, so callers may cache look-ups.
    uint32_t functionsVersion() const { return functionTableVersion; }
    // The handler of an event statement, kept by that statement.
    void addEventFunction(krFunction* function) {
        function->keep();
        eventFunctions.push_back(function);
    }
    void forgetEventFunction(krFunction* function);
    void setDestructor(krFunction* function);

    void bindEvent(krScriptObject* object, const std::string& name, krFunction* handler);
    void clearEvent(krScriptObject* object, const std::string& name);
    bool updateFileVars(const krArgs& names);

    // Frames: a window of the slot stack per running call, laid out by the function's layout.
    void pushFrame(krFrameLayout* layout);
    void popFrame();
    bool hasFrame() const { return top.layout != nullptr; }
    // The layout of the top frame, null with no frame.
    krFrameLayout* topLayout() const { return top.layout; }
    // The value in a slot of the top frame, or null.
    krVariant* frameValue(int32_t slot) const {
        return slot >= 0 && slot < top.size ? slots[static_cast<size_t>(top.base + slot)] : nullptr;
    }
    // Stores into a slot of the top frame, taking over the reference; grows the frame if needed.
    void storeFrameValue(int32_t slot, krVariant* value);
    // Fields by slot: the slot of a name is made on first request and never changes.
    int32_t fieldSlot(const std::string& name);
    krVariant* fieldValue(int32_t slot) const { return fieldValues[slot]; }
    void storeFieldValue(int32_t slot, krVariant* value);

    std::vector<krVariant*>& getCurrentValues() { return currentValues; }
    void setStatus(int32_t s) { status = s; }
    int32_t getStatus() const { return status; }

    // Running code of this script (main code, functions, handlers) on the stack; a running
    // script is not destroyed by the host until it has returned.
    void enter() { ++running; }
    void leave() { --running; }
    bool isRunning() const { return running > 0; }

    int32_t handle();
    static krScript* fromHandle(int32_t h);

    // An optional budget of calls and loop passes for all scripts together, so that untrusted
    // text (the fuzzer's) cannot run forever. Negative means no limit. When it runs out, the
    // running code unwinds as by `exit`.
    static void setStepLimit(int64_t steps) { stepsLeft = steps; }
    static bool spendStep() {
        if (stepsLeft < 0) return true;
        if (stepsLeft == 0) return false;
        --stepsLeft;
        return true;
    }

private:
    struct Frame {
        krFrameLayout* layout;
        int32_t base;
        int32_t size;
    };
    struct Binding {
        krScriptObject* object;
        std::string name;
        krFunction* handler;
    };
    // The store rule: same type and not frozen assigns into the old value; otherwise replaces.
    static void store(krVariant*& slot, krVariant* value);
    void deleteFunctions();

    std::unordered_map<std::string, int32_t> fieldIndex;
    std::vector<krVariant*> fieldValues;
    std::vector<krVariant*> slots;
    // Frames below the top one; the top frame itself is kept apart, since every variable access
    // reads it.
    std::vector<Frame> frames;
    Frame top{nullptr, 0, 0};
    std::map<std::string, krFunction*> functions;
    std::vector<krVariant*> currentValues;
    int32_t status = krStatusRun;
    krFunction* destructor = nullptr;
    krScripting* host = nullptr;
    std::vector<Binding> bindings;
    std::vector<krFunction*> eventFunctions;
    std::string fileName;
    uint32_t functionTableVersion = 1;
    int32_t running = 0;
    int32_t handleId = 0;
    static int64_t stepsLeft;
};
