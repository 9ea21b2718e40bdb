// Viewports: their script members and their place in the video's list.
#include "render/krViewPort.h"

#include "interface/krCamera.h"
#include "render/krVideo.h"
#include "script/krClassInfo.h"
#include "script/krVObject.h"

namespace {
const krMemberInfo viewportMembers[] = {
    {"camera", krRead | krWrite, "object", "what it looks through; none looks down -Z from the origin"},
    {"is2D", krRead | krWrite, "bool", "an overlay: items draw flat, in pixels"},
    {"module", krRead | krWrite, "object", "the root of what it shows; nothing is drawn without one"},
    {"setSize", krCall, "(x, y, width, height)", "the rectangle in pixels of the window"},
    {"sendToBack", krCall, "()", "drawn first, below the others"},
    {"bringToFront", krCall, "()", "drawn last, on top of the others"},
};
}

const krClassInfo krViewPort::info = {"krViewPort", "krModule", "new_viewport", viewportMembers, {},
                                      "a rectangle of a window showing one module subtree through one camera"};

krViewPort::~krViewPort() {
    if (listedIn) listedIn->removeViewPort(this);
}

void krViewPort::setSize(float nx, float ny, float w, float h) {
    x = nx;
    y = ny;
    width = w;
    height = h;
}

krCamera* krViewPort::getCamera() const {
    return dynamic_cast<krCamera*>(krScriptObject::fromHandle(cameraHandle));
}

void krViewPort::setCamera(krCamera* camera) {
    cameraHandle = camera ? camera->handle() : 0;
}

krModule* krViewPort::getModule() const {
    return dynamic_cast<krModule*>(krScriptObject::fromHandle(moduleHandle));
}

void krViewPort::setModule(krModule* module) {
    moduleHandle = module ? module->handle() : 0;
}

krVariant* krViewPort::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "camera") return new krVObject(getCamera());
    if (name == "is2D") return new krVBool(flat);
    if (name == "module") return new krVObject(getModule());
    if (name == "setSize" && args.size() == 4) {
        setSize(args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat(), args[3]->toFloat());
        return nullptr;
    }
    if (name == "sendToBack" && args.empty()) {
        if (listedIn) listedIn->sendToBack(this);
        return nullptr;
    }
    if (name == "bringToFront" && args.empty()) {
        if (listedIn) listedIn->bringToFront(this);
        return nullptr;
    }
    return krModule::getMember(name, caller, args);
}

void krViewPort::setMember(const std::string& name, krVariant* value) {
    if (name == "camera") {
        // Anything but a camera clears it; the assignment marks the viewport for good either way.
        setCamera(dynamic_cast<krCamera*>(krScriptObject::fromHandle(value->toInt())));
        cameraAssigned = true;
    } else if (name == "is2D") {
        flat = value->toBool();
    } else if (name == "module") {
        setModule(dynamic_cast<krModule*>(krScriptObject::fromHandle(value->toInt())));
    } else {
        krModule::setMember(name, value);
    }
}
