// Buffered input: the held-key table.
#include "interface/krInputObject.h"

#include <cstring>

void krBufferedInput::keyDown(int32_t code) {
    if (code >= 0 && code < krKeyCount) keys[code] = 1;
}

void krBufferedInput::keyUp(int32_t code) {
    if (code >= 0 && code < krKeyCount) keys[code] = 0;
}

void krBufferedInput::setActive(bool) {
    std::memset(keys, 0, sizeof keys);
}
