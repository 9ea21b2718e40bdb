// Factories of windows and viewports.
#include "render/krVideoClasses.h"

#include "render/krViewPort.h"
#include "render/opengl/krWindow_OGL.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"

namespace {
// The video types a window can be made with; OpenGL is the only one there is.
constexpr int32_t videoOpenGL = 1;

// new_window(type, owner): null without a type or with one that does not exist.
krVariant* newWindow(krBlock* caller, const krArgs& args) {
    if (args.empty() || args[0]->toInt() != videoOpenGL) return nullptr;
    krModule* owner;
    if (!krFactory::owner(caller, args, 1, owner)) return nullptr;
    return krFactory::attachAndReturn(new krWindow_OGL(owner));
}
}

void krRegisterVideoClasses() {
    krSymbols::addFunction("new_window", newWindow, 0);
    krSymbols::addFunction("new_viewport", krMakeModule<krViewPort>, 0);
}
