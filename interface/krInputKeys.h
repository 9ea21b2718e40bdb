// Key names: the engine's key codes (platform/krKeyCodes.h) by the names they have for scripts.
// Scripts and key sets speak in names ("keyDown_" + name events, bindings); engine code in codes.
#pragma once

#include <cstdint>
#include <string>

#include "platform/krKeyCodes.h"

// The name of a code; a code outside the table gives "Undefined".
const std::string& keyName(int32_t code);
// The code of an exact, case-sensitive name; unknown names give 0.
int32_t keyCode(const std::string& name);
