// The root module: report channels, frame limit, and the guard around the frame's update.
#include "core/krMain.h"

#include <exception>

#include "script/krVBound.h"

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
    auto* message = new krVString(text);
    krArgs args{message};
    krVariant* result = fireEvent(event, args);
    if (result) result->release();
    message->release();
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
