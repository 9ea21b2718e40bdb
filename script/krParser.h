// The script parser: one pass over a NUL-terminated text with a cursor and a line counter, no
// token stream. Statements by recursive descent, expressions as a flat list of slots that a tree
// builder turns into operator nodes by level. Errors are reported and the parse goes on.
#pragma once

#include "script/krBlock.h"

namespace krParser {
    // Parses statements at file level into `block` until the text ends or a stray ";" stands at
    // file level. `line` is the line number of the first line; a null text is empty.
    void parseFile(krMultiBlock* block, const char* text, int32_t line);
    // Parses one expression ended by ";" under `parent`; the caller owns the result.
    krBlock* parseOne(krBlock* parent, const char* text, int32_t line);
    // The values `$0` to `$9` read while a macro is parsed; null restores the empty list.
    void setParseArgs(const krArgs* args);

    // Operands and operators of one expression, together; entries beyond it are dropped with a
    // report. Words and literals are held in strings of their own length and have no limit.
    constexpr size_t maxExpressionSlots = 256;
    // Member and index links after one operand; far more than scripts write, few enough that
    // the walks of the tree, which recurse once per link, stay within the stack.
    constexpr size_t maxChainLinks = 10000;
}

namespace krParser {
    // Releases the values that literals share; the host calls it at teardown.
    void releaseShared();
}
