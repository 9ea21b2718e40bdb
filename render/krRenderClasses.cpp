// What scripts can make and name of the rendering subsystem: factories, class tables, constants.
#include "render/krRenderClasses.h"

#include <string>

#include "render/krLight.h"
#include "render/krObject.h"
#include "render/krSkeleton.h"
#include "render/krSplit.h"
#include "render/krViewPort.h"
#include "render/opengl/krShaders_OGL.h"
#include "render/opengl/krTextures_OGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"
#include "script/krClassInfo.h"
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

void addConstants() {
    using krSymbols::addInt;
    addInt("OPENGL", videoOpenGL);
    // Shader languages.
    addInt("NONE", 0);
    addInt("GLSL", 1);
    addInt("CG", 2);

    // Vertex attributes and shader inputs, combined with "|".
    addInt("POSITION", 0x1000000);
    addInt("NORMAL", 0x2000000);
    for (int i = 0; i < 8; ++i) addInt("TEXCOORD" + std::to_string(i), 0x100 << i);
    addInt("TANGENT", 0x10000);
    addInt("POINTSIZE", 0x20000);
    for (int i = 0; i <= 8; ++i) addInt("WEIGHTx" + std::to_string(i), i);
    for (int i = 0; i <= 4; ++i) addInt("INDEXx" + std::to_string(i), 16 * i);
    for (int i = 0; i < 8; ++i) addInt("TEXTURE" + std::to_string(i), 1 << i);
    for (int bones : {0, 2, 4, 8, 12, 16, 20, 24, 28, 32, 40, 48, 56, 64, 80, 96, 128, 160, 192, 255})
        addInt("BONEx" + std::to_string(bones), bones);
    addInt("MATRIX", 256);
    addInt("EYEPOS", 512);
    addInt("SHADER_TIMER", 1024);

    // Animation flags.
    addInt("SELECT_RANDOM0", 0x10000);
    addInt("SELECT_RANDOM1", 0x20000);
    addInt("START_BEGINNING", 0x40000);
    addInt("ADDITIVE_BLEND", 0x10000);
    addInt("DONT_LOOP", 0x20000);

    // Blending of particles and controls.
    addInt("BLEND_ALPHA", 1);
    addInt("BLEND_ADDITIVE", 2);
    addInt("BLEND_ADDITIVE_ALPHA", 4);
}
}

void krRegisterRenderClasses() {
    krSymbols::addFunction("new_window", newWindow, 0, "(OPENGL, owner?): a window; null for any other video type");
    krSymbols::addFunction("new_viewport", krMakeModule<krViewPort>, 0, "(owner?): a viewport, usually of a window");
    krSymbols::addFunction("new_object", krMakeModule<krObject>, 0, "(owner?): a scene object");
    for (const krClassInfo* info : {&krWindow::info, &krWindow_OGL::info, &krVideo::info, &krVideo_OGL::info,
                                    &krTextures_OGL::info, &krShaders_OGL::info, &krViewPort::info, &krLight::info,
                                    &krObjectContainer::info, &krObject::info, &krSplit::info, &krSkeleton::info})
        krClasses::add(*info);
    addConstants();
}
