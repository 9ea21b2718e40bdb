// The kerrin executable: starts the engine, runs the first script and the frames, and stops.
#include "krProgram.h"

int main(int argc, char** argv) {
    krProgram::start(argc, argv);
    const int exitCode = krProgram::run();
    krProgram::stop();
    return exitCode;
}
