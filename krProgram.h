// krProgram: the engine as a whole. It holds the list of subsystems whose classes the script host
// offers, and the start, frame loop and stop that the executable and the test harnesses share.
#pragma once

class krMain;
class krScripting;

namespace krProgram {
    // Creates the root and the script host as its first child and fills the host's tables: the
    // language's library, then each subsystem's factories, class tables and constants. No script
    // has run yet.
    void start(int argc, char** argv);
    // Runs the first script (the root's init), then frames until an update returns false or quit
    // is posted. The process's exit code.
    int run();
    // Tears down the host, then the root with the whole tree and every module without an owner,
    // closes the subsystems, and destroys both.
    void stop();

    krMain* root();
    krScripting* host();

    // Where a script sets no fpsLimit the loop still sleeps down to this rate: a run without a
    // window (a test, a dedicated server) must not spin a core, and the physics takes one substep
    // of 0.002 s a frame at this rate.
    constexpr float defaultFrameRate = 500;
    // The longest one frame sleeps, however small a limit a script sets.
    constexpr int maxSleepMs = 60000;
    // Milliseconds to sleep after a frame that took `spent` seconds, for a frame period of
    // `period` seconds (0: the default rate); 0 when the frame took its time already.
    int frameSleepMs(float period, double spent);
}
