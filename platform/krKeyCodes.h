// Key codes: the engine's own numbering of keys, mouse buttons and wheel steps, which the window
// system translates its keys into. Their names, which scripts and key sets use, are the input
// layer's (interface/krInputKeys.h).
#pragma once

#include <cstdint>

// Codes run from 0 to krKeyCount - 1; 0 stands for every key without a name.
constexpr int32_t krKeyCount = 95;

enum krKey : int32_t {
    krKeyUndefined = 0,
    krKeyLeft = 1,
    krKeyRight = 2,
    krKeyUp = 3,
    krKeyDown = 4,
    krKeyBackspace = 5,
    krKeyEnter = 6,
    krKeySpace = 7,
    krKeyTab = 8,
    krKeyControl = 9,
    krKeyAlt = 10,
    krKeyShift = 11,
    krKeyEsc = 12,
    krKeyPause = 13,
    krKeyInsert = 14,
    krKeyDelete = 15,
    krKeyHome = 16,
    krKeyEnd = 17,
    krKeyPageUp = 18,
    krKeyPageDown = 19,
    krKeyA = 20,  // "A" to "Z" follow in order
    krKey0 = 46,  // "0" to "9"
    krKeyNumpad0 = 56,  // "Numpad0" to "Numpad9"
    krKeyF1 = 66,  // "F1" to "F24"
    krKeyMouseLeft = 90,
    krKeyMouseMiddle = 91,
    krKeyMouseRight = 92,
    krKeyMouseWheelUp = 93,
    krKeyMouseWheelDown = 94,
};

constexpr int32_t krLetterKey(char capital) { return krKeyA + (capital - 'A'); }
constexpr int32_t krDigitKey(int digit) { return krKey0 + digit; }
constexpr int32_t krNumpadKey(int digit) { return krKeyNumpad0 + digit; }
constexpr int32_t krFunctionKey(int number) { return krKeyF1 + number - 1; }
