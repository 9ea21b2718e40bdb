// The OpenGL window: making it, the frame, and its messages.
#include "render/opengl/krWindow_OGL.h"

#include <algorithm>

#include "core/krMain.h"
#include "core/krVersion.h"
#include "interface/krInputObject.h"
#include "platform/krSystem.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "script/krClassInfo.h"
#include "script/krVariant.h"

namespace {

const krMemberInfo windowMembers[] = {
    {"antialiasing", krRead | krWrite, "int", "samples asked for before init; after init those obtained"},
    {"frequency", krRead | krWrite, "int", "refresh rate of the fullscreen mode; 0 is any"},
    {"fullscreen", krRead | krWrite, "bool", "fullscreen at the window's size"},
};

// Frames per second are counted over at least this many seconds.
constexpr double fpsPeriod = 0.1;
// Wheel travel of one step.
constexpr float wheelStep = 120;
// Characters are bytes.
constexpr int32_t characterMask = 0xFF;

void error(const std::string& text) {
    if (krMain* root = krMain::instance()) root->errorMsg(text);
}

void inform(const std::string& text) {
    if (krMain* root = krMain::instance()) root->infoMsg(text);
}

}

const krClassInfo krWindow_OGL::info = {"krWindow_OGL", "krWindow", "new_window", windowMembers, {},
                                        "the OpenGL window: set its size and format, then init it"};

krWindow_OGL::krWindow_OGL(krModule* o) : krWindow(o), counterFrequency(krSystem::counterFrequency()) {
    visible = true;
    auto* v = new krVideo_OGL(this);
    v->attach();
    videoHandle = v->handle();
}

krWindow_OGL::~krWindow_OGL() {
    destroyNative();
}

krVideo_OGL* krWindow_OGL::getVideo_OGL() const {
    return dynamic_cast<krVideo_OGL*>(getVideoModule());
}

krDisplayMode krWindow_OGL::displayMode() const {
    // Sixteen-bit colour gets a sixteen-bit mode; anything deeper the full one.
    constexpr int32_t deepColour = 17;
    return {width, height, colorBits >= deepColour ? 32 : 16, frequency};
}

void krWindow_OGL::destroyNative() {
    ready = false;
    if (native) {
        if (krVideo_OGL* v = getVideo_OGL()) v->contextLost();
        if (fullscreen) krWindowSystem::leaveFullscreen(native);
        krWindowSystem::destroy(native);
        native = nullptr;
    }
    if (started) {
        krWindowSystem::stop();
        started = false;
    }
}

bool krWindow_OGL::createNative(std::string& reason) {
    krPixelFormat format;
    format.colorBits = colorBits;
    format.depthBits = depthBits;
    const krDisplayMode mode = displayMode();
    native = krWindowSystem::create(title, width, height, fullscreen ? &mode : nullptr, format, this, reason);
    return native != nullptr;
}

bool krWindow_OGL::init() {
    inform("initializing OpenGL-window...");
    // A second init makes the window anew, with the size and format asked for now.
    destroyNative();
    if (width < 1 || height < 1 || width > maxSize || height > maxSize) {
        error(std::string("Invalid window size: ").append(std::to_string(width)).append("x").append(std::to_string(height)));
        return false;
    }
    std::string reason;
    if (!krWindowSystem::start(reason)) {
        error("Creating the OpenGL window failed: " + reason);
        return false;
    }
    started = true;
    if (fullscreen) setFullscreen(true);
    if (!createNative(reason)) {
        error("Creating the OpenGL window failed: " + reason);
        destroyNative();
        return false;
    }
    holdCursor();
    krVideo_OGL* v = getVideo_OGL();
    betterFormat(v);

    const krPixelFormat format = krWindowSystem::describe(native);
    krWindowSystem::clientSize(native, width, height);
    antialiasing = format.samples;
    inform("[done]");

    if (v) {
        testCapabilities(v);
        v->contextReady = true;
    }
    if (!krModule::init()) return false;
    buildMode(v, format);
    buildVersion();
    krWindowSystem::show(native);
    lastCounter = krSystem::counter();
    ready = true;
    return true;
}

void krWindow_OGL::betterFormat(krVideo_OGL* v) {
    const int32_t accumulation = v && v->getMotionBlur() > 0 ? accumulationBits : 0;
    int32_t samples = std::max(antialiasing, 0);
    // A format is fixed when a window is made: each better one asked for is a new window, and
    // the plain one stays when none is found.
    while (samples > 0 || accumulation > 0) {
        krPixelFormat format;
        format.colorBits = colorBits;
        format.depthBits = depthBits;
        format.samples = samples;
        format.accumBits = accumulation;
        const krDisplayMode mode = displayMode();
        std::string reason;
        if (krNativeWindow* better =
                krWindowSystem::create(title, width, height, fullscreen ? &mode : nullptr, format, this, reason)) {
            krWindowSystem::destroy(native);
            native = better;
            krWindowSystem::makeCurrent(native);
            return;
        }
        if (samples == 0) return;
        samples = std::max(samples - 2, 0);
    }
}

void krWindow_OGL::testCapabilities(krVideo_OGL* v) {
    if (!krGL::loadGroup(krGLGroup::minimum)) error("Minimun OpenGL requirements not supported");
    const struct {
        krGLGroup group;
        bool* flag;
        bool wished;
        const char* missing;
    } tests[] = {
        {krGLGroup::occlusion, &v->occlusionQuery, true, "Occlusion Query not supported"},
        {krGLGroup::pointSprites, &v->pointSprites, true, "Point Sprites not supported"},
        {krGLGroup::vertexAttributes, &v->vertexAttributes, false, "Vertex attributes not supported"},
        {krGLGroup::vertexBuffers, &v->vertexBuffers, false, "Vertex buffers not supported"},
        {krGLGroup::pixelBuffers, &v->pixelBuffers, false, "PBuffers not supported"},
        {krGLGroup::glsl, &v->glsl, true, "GLSL not supported"},
    };
    for (const auto& t : tests) {
        if (t.wished && !*t.flag) continue;
        *t.flag = krGL::loadGroup(t.group);
        if (!*t.flag) error(t.missing);
        else if (t.group == krGLGroup::glsl) inform("GLSL initialized");
    }
    // No driver of this platform compiles the other shader language.
    if (v->cg) {
        v->cg = false;
        error("CG not supported");
    }
    if (v->hardwareSkinning && !v->glsl && !v->cg) {
        v->hardwareSkinning = false;
        error("Shaders needed for hardware skinning");
    }
}

void krWindow_OGL::buildMode(krVideo_OGL* v, const krPixelFormat& format) {
    const krDisplayMode screen = krWindowSystem::screenMode(native);
    const int32_t anisotropy = v ? static_cast<int32_t>(v->getAnisotropy()) : 0;
    auto number = [](int32_t n) { return std::to_string(n); };
    auto bits = [&](int32_t n) { return number(n).append("bit"); };
    auto yesNo = [](bool flag) { return std::string(flag ? "yes" : "no"); };
    mode.clear();
    auto line = [&](const char* label, const std::string& value) { mode.append(label).append(value).append("\n"); };
    line("Video: OpenGL ", krGL::string(GL_VERSION));
    line("Device: ", krGL::string(GL_RENDERER));
    line("Screen: ", number(screen.width).append("x").append(number(screen.height)).append(" @ ")
                         .append(number(screen.frequency)).append("Hz"));
    line("Display: ", number(width).append("x").append(number(height)).append(" ").append(bits(format.colorBits)));
    line("Antialias: ", format.samples ? number(format.samples).append("x") : std::string("off"));
    line("Filter: ", anisotropy > 0 ? number(anisotropy).append("x anisotropic") : std::string("trilinear"));
    line("Depth: ", bits(format.depthBits));
    line("Stencil: ", bits(format.stencilBits));
    line("Accumulation: ", bits(format.accumBits));
    line("GLSL: ", yesNo(v && v->glsl));
    line("CG: ", yesNo(v && v->cg));
    line("Motionblur: ", yesNo(v && v->getMotionBlur() > 0));
}

void krWindow_OGL::buildVersion() {
    // The program describes itself by its own file name.
    std::string program = "kerrin";
    if (krMain* root = krMain::instance(); root && root->getArgc() > 0 && root->getArgv()[0]) {
        program = root->getArgv()[0];
        program = program.substr(program.find_last_of('/') + 1);
    }
    version = program + " v. ";
    for (int i = 0; i < 4; ++i) version.append(i ? "." : "").append(std::to_string(krVersionNumbers[i]));
}

void krWindow_OGL::holdCursor() {
    krWindowSystem::clientCentre(native, centreX, centreY);
    krWindowSystem::warpCursor(centreX, centreY);
}

bool krWindow_OGL::update(float dt) {
    // A window that has no context (its init failed or never ran) only listens for the end.
    if (!ready) return !krSystem::quitPosted();

    const uint64_t now = krSystem::counter();
    const double seconds = static_cast<double>(now - lastCounter) / static_cast<double>(counterFrequency);
    lastCounter = now;
    ++shortFrames;
    shortSeconds += seconds;
    ++allFrames;
    allSeconds += seconds;
    if (shortSeconds >= fpsPeriod) {
        fps = static_cast<float>(shortFrames / shortSeconds);
        shortFrames = 0;
        shortSeconds = 0;
    }
    avgFps = allSeconds > 0 ? static_cast<float>(static_cast<double>(allFrames) / allSeconds) : 0;
    frameTime = static_cast<float>(seconds * 1000);

    messageTargetHandle = inputTarget;
    pumpMessages();
    if (krSystem::quitPosted()) return false;
    // A handler may have deleted the window, or made it anew without success.
    if (!isEnabled() || !ready) return true;
    captureMouse();

    krWindowSystem::makeCurrent(native);
    krGL::clearFrame(background);
    if (krVideo_OGL* v = getVideo_OGL()) v->resetPolygonCounter();
    if (!krModule::update(dt)) return false;
    if (!ready) return true;
    if (krVideo_OGL* v = getVideo_OGL()) v->closePolygonCount();
    krWindowSystem::swap(native);
    return true;
}

void krWindow_OGL::pumpMessages() {
    if (!waitMessages) {
        while (krWindowSystem::dispatch(false))
            if (krSystem::quitPosted()) return;
        return;
    }
    // Blocks until a handler clears waitMessages: no frame is drawn meanwhile.
    while (waitMessages && !krSystem::quitPosted())
        if (!krWindowSystem::dispatch(true)) return;
}

void krWindow_OGL::captureMouse() {
    if (!active || !mouseCapture) return;
    int32_t x, y;
    krWindowSystem::clientCentre(native, x, y);
    krWindowSystem::showCursor(false);
    if (x == centreX && y == centreY) {
        int32_t cursorX, cursorY;
        krWindowSystem::cursorPosition(cursorX, cursorY);
        // Both axes in widths, so that a move turns a camera alike either way.
        if (krInputObject* target = getInputTarget())
            target->mouseMove(static_cast<float>(cursorX - x) / static_cast<float>(width),
                              static_cast<float>(cursorY - y) / static_cast<float>(width));
    } else {
        // The window moved: the cursor's offset from the old centre is no mouse move.
        centreX = x;
        centreY = y;
    }
    krWindowSystem::warpCursor(centreX, centreY);
}

void krWindow_OGL::refresh() {
    if (!ready) return;
    // The cursor is only taken while captured; a free cursor stays where the user left it.
    if (mouseCapture) {
        krWindowSystem::showCursor(false);
        holdCursor();
    }
    krWindowSystem::makeCurrent(native);
    krGL::clearFrame(background);
    // The video alone runs, with a step too small to move anything.
    constexpr float stillStep = 0.0000001f;
    if (krVideo_OGL* v = getVideo_OGL()) v->update(stillStep);
    krWindowSystem::swap(native);
}

void krWindow_OGL::setTitle(const std::string& t) {
    krWindow::setTitle(t);
    if (native) krWindowSystem::setTitle(native, t);
}

void krWindow_OGL::setMouseCapture(bool capture) {
    krWindow::setMouseCapture(capture);
    if (!capture && native) krWindowSystem::showCursor(true);
}

void krWindow_OGL::setFullscreen(bool flag) {
    fullscreen = flag;
    if (!flag) {
        if (ready) krWindowSystem::leaveFullscreen(native);
        return;
    }
    // Before init the flag is only noted: the window is made fullscreen when it is made.
    if (!started) return;
    if (!krWindowSystem::enterFullscreen(native, displayMode())) {
        error("Switching to fullscreen-mode failed!");
        fullscreen = false;
    }
}

void krWindow_OGL::handleMessage(const krWindowMessage& m) {
    // Handlers may delete this window; it stays whole until the message is done.
    addRef();
    switch (m.kind) {
    case krWindowMessage::close:
        krSystem::postQuit();
        break;
    case krWindowMessage::deactivate: {
        active = false;
        if (krVariant* r = fireEvent("deactivate", noArgs)) r->release();
        break;
    }
    case krWindowMessage::activate: {
        active = true;
        holdCursor();
        if (krVariant* r = fireEvent("activate", noArgs)) r->release();
        break;
    }
    case krWindowMessage::keyDown:
        // A repeat reaches the target, but scripts hear the key once.
        if (m.repeat) key = m.key;
        else fireKeyEvent(true, m.key);
        if (krInputObject* target = messageTarget()) target->keyDown(m.key);
        break;
    case krWindowMessage::keyUp:
        fireKeyEvent(false, m.key);
        if (krInputObject* target = messageTarget()) target->keyUp(m.key);
        break;
    case krWindowMessage::keyChar:
        if (krInputObject* target = messageTarget()) target->keyChar(m.character & characterMask);
        break;
    case krWindowMessage::wheel:
        // Fractions of a step add up; each whole step is one key-down, never a key-up.
        wheel += static_cast<float>(m.wheelUnits) / wheelStep;
        for (; wheel >= 1; wheel -= 1) {
            fireKeyEvent(true, krKeyMouseWheelUp);
            if (krInputObject* target = messageTarget()) target->keyDown(krKeyMouseWheelUp);
        }
        for (; wheel <= -1; wheel += 1) {
            fireKeyEvent(true, krKeyMouseWheelDown);
            if (krInputObject* target = messageTarget()) target->keyDown(krKeyMouseWheelDown);
        }
        break;
    }
    release();
}

krVariant* krWindow_OGL::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "antialiasing") return new krVInt(antialiasing);
    if (name == "frequency") return new krVInt(frequency);
    if (name == "fullscreen") return new krVBool(fullscreen);
    return krWindow::getMember(name, caller, args);
}

void krWindow_OGL::setMember(const std::string& name, krVariant* value) {
    if (name == "antialiasing") antialiasing = value->toInt();
    else if (name == "frequency") frequency = value->toInt();
    else if (name == "fullscreen") setFullscreen(value->toBool());
    else krWindow::setMember(name, value);
}
