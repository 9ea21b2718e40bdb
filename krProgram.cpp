// The list of subsystems, and the engine's start, frame loop and stop.
#include "krProgram.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "audio/krAudioClasses.h"
#include "core/krMain.h"
#include "core/krTimer.h"
#include "interface/krInterfaceClasses.h"
#include "physics/krPhysicsClasses.h"
#include "platform/krSystem.h"
#include "render/krRenderClasses.h"
#include "script/krScripting.h"
#include "vehicles/krVehicleClasses.h"

namespace {

// A subsystem as the host sees it: a folder whose classes file registers what scripts can make
// and name of it, and optionally lets go of tables it shares across its objects at the end.
struct krSubsystem {
    const char* name;
    void (*registerClasses)();
    void (*close)();
};

// Registered in this order, after the language's own library; a later constant of the same name
// replaces an earlier one.
const krSubsystem subsystems[] = {
    {"render", krRegisterRenderClasses, nullptr},
    {"interface", krRegisterInterfaceClasses, nullptr},
    {"physics", krRegisterPhysicsClasses, nullptr},
    {"vehicles", krRegisterVehicleClasses, nullptr},
    {"audio", krRegisterAudioClasses, krCloseAudio},
};

// The frame step handed to the tree is clamped: a hitch slows the simulation down instead of
// making it jump, and a step is never zero.
constexpr float maxStep = 0.05f;
constexpr float minStep = 0.0001f;

krMain* rootModule = nullptr;
krScripting* hostModule = nullptr;

}  // namespace

void krProgram::start(int argc, char** argv) {
    krSystem::markStackBase();
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    rootModule = new krMain(argc, argv);
    rootModule->attach();
    hostModule = new krScripting(rootModule);
    hostModule->attach();
    krLibrary::registerAll();
    for (const krSubsystem& s : subsystems) s.registerClasses();
}

int krProgram::run() {
    if (!rootModule->init()) return 1;
    krTimer* frameTimer = timerStart();
    for (;;) {
        float dt = static_cast<float>(timerLap(frameTimer));
        if (dt > maxStep) dt = maxStep;
        if (dt < minStep) dt = minStep;
        if (!rootModule->update(dt)) break;
        // Without a window nothing else looks at the quit request.
        if (krSystem::quitPosted()) break;
        if (const int ms = frameSleepMs(rootModule->getFramePeriod(), timerElapsed(frameTimer))) sleepMs(ms);
    }
    timerStop(frameTimer);
    return 0;
}

void krProgram::stop() {
    hostModule->deinit();
    rootModule->deinit();
    krModule::releaseOrphans();
    for (const krSubsystem& s : subsystems)
        if (s.close) s.close();
    hostModule->release();
    rootModule->release();
    hostModule = nullptr;
    rootModule = nullptr;
}

int krProgram::frameSleepMs(float period, double spent) {
    const double wanted = period > 0 ? period : 1.0 / defaultFrameRate;
    if (!(wanted > spent)) return 0;
    // In double and bounded before the cast: a tiny limit makes a period beyond any int.
    const double ms = std::min((wanted - spent) * 1000, static_cast<double>(maxSleepMs));
    return static_cast<int>(ms);
}

krMain* krProgram::root() { return rootModule; }

krScripting* krProgram::host() { return hostModule; }
