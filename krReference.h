// krReference: the engine describes itself. Every global function with its usage line, every
// factory, constant and class with its members and events, printed as Markdown from the tables
// that the host and the subsystems registered, so the reference cannot drift from the code.
#pragma once

#include <string>

namespace krReference {
    // The whole reference; the engine must have been started (krProgram::start).
    std::string markdown();
}
