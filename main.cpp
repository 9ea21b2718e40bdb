// The kerrin executable: creates the root and the script host, runs the first script, then runs
// frames over the module tree until an update returns false.
#include <cstdlib>
#include <ctime>

#include "core/krMain.h"
#include "core/krTimer.h"
#include "platform/krSystem.h"
#include "script/krScripting.h"

namespace {
// The frame step handed to the tree is clamped: a hitch slows the simulation down instead of
// making it jump, and a step is never zero.
constexpr float maxStep = 0.05f;
constexpr float minStep = 0.0001f;
}

int main(int argc, char** argv) {
    krSystem::markStackBase();
    std::srand(static_cast<unsigned>(std::time(nullptr)));

    auto* root = new krMain(argc, argv);
    root->attach();
    auto* host = new krScripting(root);
    host->attach();

    int exitCode = 1;
    if (root->init()) {
        exitCode = 0;
        krTimer* frameTimer = timerStart();
        for (;;) {
            float dt = static_cast<float>(timerLap(frameTimer));
            if (dt > maxStep) dt = maxStep;
            if (dt < minStep) dt = minStep;
            if (!root->update(dt)) break;
            // Without a window nothing else looks at the quit request.
            if (krSystem::quitPosted()) break;
            const float period = root->getFramePeriod();
            if (period > 0) {
                const auto spent = static_cast<float>(timerElapsed(frameTimer));
                if (period > spent) sleepMs(static_cast<int>((period - spent) * 1000));
            }
        }
        timerStop(frameTimer);
    }

    host->deinit();
    root->deinit();
    krModule::releaseOrphans();
    host->release();
    root->release();
    return exitCode;
}
