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
}
