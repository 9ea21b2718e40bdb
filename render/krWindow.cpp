// Windows: script members, input target selection, key events.
#include "render/krWindow.h"

#include "interface/krInputObject.h"
#include "render/krVideo.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo windowMembers[] = {
    {"fps", krRead, "float", "frames a second over the last tenth of a second or more"},
    {"avgFps", krRead, "float", "frames a second since the start"},
    {"frameTime", krRead, "float", "milliseconds of the last frame"},
    {"width", krRead | krWrite, "int", "client width in pixels; a new size counts from the next init"},
    {"height", krRead | krWrite, "int", "client height in pixels; a new size counts from the next init"},
    {"title", krRead | krWrite, "string", "the text of the title bar"},
    {"mode", krRead, "string", "lines on the display mode and the driver, after init"},
    {"version", krRead, "string", "the program's name and version, after init"},
    {"video", krRead, "object", "the window's video module"},
    {"inputTarget", krRead | krWrite, "object", "the target of keys and mouse; writing null picks from the list"},
    {"addInputTarget", krCall, "(target, priority?)", "lists a target; the highest priority, the later of equals, is in force"},
    {"removeInputTarget", krCall, "(target)", "takes the target's last entry off the list"},
    {"waitMessages", krRead | krWrite, "bool", "wait for input instead of running frames"},
    {"mouseCapture", krRead | krWrite, "bool", "hide the cursor and report mouse moves to the input target"},
    {"update", krCall, "()", "redraws the video alone, during long script work"},
    {"background", krRead | krWrite, "int", "the clear colour, packed"},
    {"key", krWrite, "int", "the code of the last key event; not readable: key handlers know their key by the event"},
};

const krEventInfo windowEvents[] = {
    {"activate", "()", "the program got the focus"},
    {"deactivate", "()", "the program lost the focus"},
    {"keyDown_", "()", "completed by a key name: the key went down (not repeated)"},
    {"keyUp_", "()", "completed by a key name: the key went up"},
};

}

const krClassInfo krWindow::info = {"krWindow", "krModule", nullptr, windowMembers, windowEvents,
                                    "a window with its frame statistics and input targets"};

krWindow::krWindow(krModule* o) : krModule(o) {}

krInputObject* krWindow::inputOf(int32_t handle) {
    return dynamic_cast<krInputObject*>(krScriptObject::fromHandle(handle));
}

int32_t krWindow::handleOf(krInputObject* target) {
    auto* object = dynamic_cast<krScriptObject*>(target);
    return object ? object->handle() : 0;
}

krInputObject* krWindow::getInputTarget() const {
    return inputOf(inputTarget);
}

krVideo* krWindow::getVideoModule() const {
    return dynamic_cast<krVideo*>(krScriptObject::fromHandle(videoHandle));
}

void krWindow::setInputTarget(krInputObject* target) {
    int32_t chosen = handleOf(target);
    if (!target) {
        // Entries whose objects are gone leave the list on the way.
        int32_t best = 0;
        for (size_t i = 0; i < inputTargets.size();) {
            const InputEntry& e = inputTargets[i];
            if (!inputOf(e.handle)) {
                inputTargets.erase(inputTargets.begin() + static_cast<std::ptrdiff_t>(i));
                continue;
            }
            if (!chosen || e.priority >= best) {
                chosen = e.handle;
                best = e.priority;
            }
            ++i;
        }
    }
    if (chosen == inputTarget) return;
    krInputObject* old = inputOf(inputTarget);
    inputTarget = chosen;
    // The old target hears first, so that it has let go of its keys before the new one starts.
    if (old) old->setActive(false);
    if (krInputObject* now = inputOf(chosen)) now->setActive(true);
}

void krWindow::addInputTarget(krInputObject* target, int32_t priority) {
    if (const int32_t h = handleOf(target)) inputTargets.push_back({priority, h});
    setInputTarget(nullptr);
}

void krWindow::removeInputTarget(krInputObject* target) {
    const int32_t h = handleOf(target);
    for (size_t i = inputTargets.size(); i-- > 0;) {
        if (inputTargets[i].handle == h) {
            inputTargets.erase(inputTargets.begin() + static_cast<std::ptrdiff_t>(i));
            break;
        }
    }
    setInputTarget(nullptr);
}

void krWindow::fireKeyEvent(bool down, int32_t code) {
    key = code;
    krVariant* result = fireEvent((down ? "keyDown_" : "keyUp_") + keyName(code), noArgs);
    if (result) result->release();
}

namespace {
// The input object named by a script value, or null with a report when it names something else.
bool scriptTarget(krBlock* caller, krVariant* value, krInputObject*& out) {
    krScriptObject* object = krScriptObject::fromHandle(value->toInt());
    out = dynamic_cast<krInputObject*>(object);
    if (out || !object) return true;
    reportError(caller, "Object is not an input target");
    return false;
}
}

krVariant* krWindow::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "fps") return new krVFloat(fps);
    if (name == "avgFps") return new krVFloat(avgFps);
    if (name == "frameTime") return new krVFloat(frameTime);
    if (name == "width") return new krVInt(width);
    if (name == "height") return new krVInt(height);
    if (name == "title") return new krVString(title);
    if (name == "mode") return new krVString(mode);
    if (name == "version") return new krVString(version);
    if (name == "video") return new krVObject(getVideoModule());
    if (name == "inputTarget") return new krVObject(dynamic_cast<krScriptObject*>(getInputTarget()));
    if (name == "addInputTarget" && (args.size() == 1 || args.size() == 2)) {
        krInputObject* target;
        if (scriptTarget(caller, args[0], target) && target)
            addInputTarget(target, args.size() == 2 ? args[1]->toInt() : 0);
        return nullptr;
    }
    if (name == "removeInputTarget" && args.size() == 1) {
        krInputObject* target;
        if (scriptTarget(caller, args[0], target) && target) removeInputTarget(target);
        return nullptr;
    }
    if (name == "waitMessages") return new krVBool(waitMessages);
    if (name == "mouseCapture") return new krVBool(mouseCapture);
    if (name == "update" && args.empty()) {
        refresh();
        return nullptr;
    }
    if (name == "background") return new krVInt(static_cast<int32_t>(toPacked(background)));
    return krModule::getMember(name, caller, args);
}

void krWindow::setMember(const std::string& name, krVariant* value) {
    if (name == "width") {
        setWidth(value->toInt());
    } else if (name == "height") {
        setHeight(value->toInt());
    } else if (name == "title") {
        setTitle(value->toString());
    } else if (name == "inputTarget") {
        // Anything that is no input target counts as null: the list chooses again.
        setInputTarget(dynamic_cast<krInputObject*>(krScriptObject::fromHandle(value->toInt())));
    } else if (name == "waitMessages") {
        setWaitMessages(value->toBool());
    } else if (name == "mouseCapture") {
        setMouseCapture(value->toBool());
    } else if (name == "background") {
        background = krColor(static_cast<uint32_t>(value->toInt()));
    } else if (name == "key") {
        key = value->toInt();
    } else {
        krModule::setMember(name, value);
    }
}
