// The root module: report channels, frame limit, and the guard around the frame's update.
#include "core/krMain.h"

#include <cstring>
#include <exception>

#include "platform/krSystem.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"

namespace {

const krMemberInfo mainMembers[] = {
    {"test", krRead | krWrite, "string", "a free string for scripts; nothing in the engine reads it"},
    {"move", krCall, "()", "runs one update of the whole tree with the fixed step 0.001 s; its result"},
    {"fpsLimit", krRead | krWrite, "float", "frames a second at most; 0 is no limit"},
};

const krEventInfo mainEvents[] = {
    {"errorMsg", "(text)", "an error of the engine or of a script, with file and line where there is one"},
    {"infoMsg", "(text)", "a note of the engine"},
};

}

const krClassInfo krMain::info = {"krMain", "krModule", nullptr, mainMembers, mainEvents,
                                  "the root of the object tree, reached from scripts as MAIN"};

namespace {
// A handler of a report may cause further reports (one that errs, or that loads a missing file);
// a few nested ones reach the handlers, deeper ones only standard error, so that reporting
// cannot recurse without end.
constexpr int maxNestedReports = 4;
int reportDepth = 0;
}

krMain* krMain::root = nullptr;
krMain::ReportObserver krMain::reportObserver = nullptr;

krMain::krMain(int c, char** v) : krModule(nullptr), argc(c), argv(v) {
    root = this;
}

krMain::~krMain() {
    if (root == this) root = nullptr;
}

void krMain::report(const char* event, const std::string& text) {
    if (reportObserver) reportObserver(event, text);
    // An error that no handler hears still reaches the user; standard output stays the scripts'.
    if (reportDepth >= maxNestedReports || !hasEvent(event)) {
        if (std::strcmp(event, "errorMsg") == 0) krSystem::writeError(text);
        return;
    }
    ++reportDepth;
    auto* message = new krVString(text);
    krArgs args{message};
    krVariant* result = fireEvent(event, args);
    if (result) result->release();
    message->release();
    --reportDepth;
}

void krMain::errorMsg(const std::string& text) { report("errorMsg", text); }
void krMain::infoMsg(const std::string& text) { report("infoMsg", text); }

bool krMain::update(float dt) {
    try {
        return krModule::update(dt);
    } catch (const std::exception& e) {
        // Whatever escaped the tree reaches the scripts' handlers first, then stops the process.
        errorMsg(e.what());
        throw std::exception();
    }
}

krVariant* krMain::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "test") return new krVStringPtr(&test, this);
    if (name == "move" && args.empty()) return new krVBool(update(moveStep));
    if (name == "fpsLimit") return new krVFloat(getFpsLimit());
    return krModule::getMember(name, caller, args);
}

void krMain::setMember(const std::string& name, krVariant* value) {
    if (name == "test") {
        test = value->toString();
    } else if (name == "fpsLimit") {
        setFpsLimit(value->toFloat());
    } else {
        krModule::setMember(name, value);
    }
}
