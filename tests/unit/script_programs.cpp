// Random script programs: a grammar walked with a fixed pseudo-random sequence.
#include "script_programs.h"

#include <initializer_list>

namespace scriptPrograms {

namespace {
const char* const binaryOperators[] = {"+", "-", "*", "/", "%", "<<", ">>", "<", "<=", ">", ">=", "==", "!=",
                                       "&", "^", "|", "&&", "^^", "||", "?"};
const char* const assignOperators[] = {"=", "=", "=", "+=", "-=", "*=", "/=", "%=", "&&=", "||=", "^^=",
                                       "&=", "|=", "^=", "<<=", ">>=", "?="};
const char* const names[] = {"a", "b", "c", "s", "v", "w"};
const char* const members[] = {"count", "length", "empty"};
const char* const conversions[] = {"int", "float", "string", "bool"};
const char* const ints[] = {"0", "1", "2", "3", "7", "10", "100", "2147483647", "65536"};
const char* const floats[] = {"0.0", "1.0", "0.5", "2.5", "0.05", "1234.5", "3.75"};
const char* const texts[] = {"", "a", "x", "12", "2.5", "true", "false", "0", "abc", " 7z"};

// Joins pieces drawn in the order written: the elements of a braced list are evaluated left to
// right, where the operands of a chain of + may be evaluated in any order, which would make
// the programs differ between compilers.
std::string cat(std::initializer_list<std::string> parts) {
    std::string text;
    for (const std::string& part : parts) text += part;
    return text;
}
}

const std::vector<std::string>& Generator::fieldNames() {
    static const std::vector<std::string> all = {"a", "b", "c", "s", "v", "w", "o", "r", "m"};
    return all;
}

uint64_t Generator::next() {
    // splitmix64
    uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

std::string Generator::quote(const std::string& text) const {
    const char q = inner ? '\'' : '"';
    return std::string(1, q) + text + std::string(1, q);
}

std::string Generator::literal() {
    if (tame) {
        const int k = below(20);
        if (k < 12) return pick(ints);
        if (k < 17) return pick(floats);
        if (k < 19) return quote(pick(texts));
        return chance(50) ? "true" : "false";
    }
    switch (below(7)) {
    case 0:
    case 1: return pick(ints);
    case 2: return pick(floats);
    case 3: return quote(pick(texts));
    case 4: return chance(50) ? "true" : "false";
    case 5: return pick({"null", "NULL", "nil", "endl", "tab"});
    default: {
        std::string text = "[";
        text += pick(ints);
        text += ", ";
        text += quote(pick(texts));
        return text + "]";
    }
    }
}

std::string Generator::variable() {
    if (function >= 0 && paramCounts[static_cast<size_t>(function)] > 0 && chance(40))
        return chance(50) || paramCounts[static_cast<size_t>(function)] < 2 ? "$p" : "$q";
    if (!tame && chance(4)) return "$undefinedName";
    return std::string("$") + pick(names);
}

std::string Generator::atom() {
    const int k = below(10);
    if (k < 4) return literal();
    if (k < 9) return variable();
    return inCurrent ? "$_" : variable();
}

std::string Generator::call(int depth) {
    const int first = function + 1;
    if (first < functionCount && chance(60)) {
        const int f = first + below(functionCount - first);
        std::string text = cat({"f", std::to_string(f), "("});
        const int n = below(4);
        for (int i = 0; i < n; ++i) text += (i ? ", " : "") + expression(depth - 1);
        return text + ")";
    }
    switch (below(4)) {
    case 0: return cat({pick(conversions), "(", expression(depth - 1), ")"});
    case 1: return cat({"trimFirstLines(", expression(depth - 1), ", ", pick(ints), ")"});
    case 2: return "strcolor(" + expression(depth - 1) + ")";
    default: return inner ? "int(" + expression(depth - 1) + ")" : "eval(" + evalText() + ")";
    }
}

std::string Generator::evalText() {
    // Text run by eval: a statement or two with the other quote for its strings.
    inner = true;
    std::string text = statement(1);
    if (chance(50)) {
        text += ' ';
        text += statement(1);
    }
    inner = false;
    std::string quoted = "\"";
    quoted += text;
    quoted += '"';
    return quoted;
}

std::string Generator::target(int depth) {
    switch (below(8)) {
    case 0: return cat({variable(), "[", expression(depth - 1), "]"});
    case 1: return variable() + "[]";
    case 2: return inCurrent ? "$_" : variable();
    case 3: return chance(50) ? "global " + variable() : "local " + variable();
    default: return variable();
    }
}

std::string Generator::expression(int depth) {
    if (depth <= 0 || chance(25)) return atom();
    switch (below(18)) {
    case 0:
    case 1:
    case 2:
        return cat({"(", expression(depth - 1), " ", pick(binaryOperators), " ", expression(depth - 1), ")"});
    case 3:
        // Without parentheses, so that levels and grouping decide.
        return cat({expression(depth - 1), " ", pick(binaryOperators), " ", expression(depth - 1), " ",
                    pick(binaryOperators), " ", expression(depth - 1)});
    case 4: return cat({"(", pick({"-", "!", "~", "+", "- -"}), expression(depth - 1), ")"});
    case 5:
    case 6: return cat({"(", target(depth), " ", pick(assignOperators), " ", expression(depth - 1), ")"});
    case 7: {
        const std::string v = chance(80) ? variable() : expression(depth - 1);
        return chance(50) ? "(" + std::string(pick({"++", "--", "!!", "~~"})) + v + ")"
                          : "(" + v + pick({"++", "--", "!!", "~~"}) + ")";
    }
    case 8:
    case 9: return call(depth);
    case 10: return cat({expression(depth - 1), "[", expression(depth - 1), "]"});
    case 11: return cat({variable(), ".", pick(members)});
    case 12:
        return cat({variable(), ".", pick({"contains", "remove"}), "(", expression(depth - 1), ")"});
    case 13: return cat({"[", expression(depth - 1), ", ", expression(depth - 1), "]"});
    case 14: return "[" + expression(depth - 1) + "]";
    case 15:
        if (inner || function >= 0) return atom();
        switch (below(3)) {
        case 0: return "$o.tag";
        case 1: return "$o.class";
        default: return "$o.ping(" + expression(depth - 1) + ")";
        }
    case 16: return "$m";
    default: return literal();
    }
}

std::string Generator::body(int depth) {
    std::string text = "{ ";
    const int n = below(4);
    for (int i = 0; i < n; ++i) text += statement(depth - 1) + " ";
    return text + "}";
}

std::string Generator::statement(int depth) {
    if (depth <= 0) return "print(" + expression(2) + " ? 'null');";
    const bool inLoop = loops > 0;
    const std::string counter =
        (function < 0 ? "$k" : "$c" + std::to_string(function) + "_") + std::to_string(counters++);
    switch (below(20)) {
    case 0:
    case 1: return "print(" + expression(3) + " ? " + quote("null") + ");";
    case 2:
        if (function + 1 < functionCount) return "print(" + call(3) + " ? " + quote("null") + ");";
        return "print(" + expression(3) + " ? " + quote("null") + ");";
    case 3:
    case 4:
    case 5: return expression(3) + ";";
    case 6: {
        std::string text = cat({"if (", expression(2), ") ", body(depth)});
        if (chance(50)) text += " else " + (chance(30) ? statement(depth - 1) : body(depth));
        return text;
    }
    case 7: {
        ++loops;
        const std::string text = cat({"while (", counter, " < ", std::to_string(1 + below(3)), ") { ", counter,
                                      "++; ", statement(depth - 1), " ", statement(depth - 1), " }"});
        --loops;
        return counter + " = 0; " + text;
    }
    case 8: {
        ++loops;
        const std::string text = cat({"for (", counter, " = 0; ", counter, " < ", std::to_string(below(4)), "; ",
                                      counter, "++) ", body(depth)});
        --loops;
        return text;
    }
    case 9: {
        ++loops;
        const bool was = inCurrent;
        inCurrent = true;
        const std::string text = cat({"foreach (", chance(50) ? variable() : expression(2), ") ", body(depth)});
        inCurrent = was;
        --loops;
        return text;
    }
    case 10: {
        const bool was = inCurrent;
        inCurrent = true;
        const std::string text = cat({"with (", expression(2), ") ", body(depth)});
        inCurrent = was;
        return text;
    }
    case 11:
        if (inLoop) return chance(50) ? "break;" : "continue;";
        return "print(" + expression(2) + ");";
    case 12:
        if (function >= 0 || inner) return chance(80) ? "return " + expression(2) + ";" : "return;";
        return expression(2) + ";";
    case 13:
        if (chance(10)) return "exit " + expression(1) + ";";
        // A statement as the value of an assignment; it ends in its block and needs no ";".
        return cat({"$", pick(names), " = if (", expression(2), ") { ", expression(2), "; } else { ", expression(2),
                    "; }"});
    case 14: return cat({"$", pick(names), " = ", expression(3), ";"});
    case 15:
        if (function >= 0 || inner) return expression(2) + ";";
        return "$o.tag = " + expression(2) + "; print($o.tag ? 'no tag');";
    case 16:
        if (function >= 0 || inner) return expression(2) + ";";
        return "print($o.ping(" + expression(2) + ") ? 'no result');";
    case 17: return cat({"$m = macro(", quote("$1 + $2"), ", ", variable(), ", ", expression(1), ");"});
    default: return cat({variable(), " ", pick(assignOperators), " ", expression(3), ";"});
    }
}

std::string Generator::program() {
    // Half the programs keep mostly to numbers, so that arithmetic runs on values of its types
    // instead of stopping at null.
    tame = chance(50);
    std::string text = "event MAIN: errorMsg($t) { print(\"E: \" + $t); }\n";
    text += "$o = new_module();\n";
    text += "event $o: ping($x) { print(\"ping \" + ($x ? \"null\")); return $x; }\n";
    functionCount = 1 + below(4);
    for (int f = 0; f < functionCount; ++f) paramCounts.push_back(below(3));
    for (int f = 0; f < functionCount; ++f) {
        function = f;
        text += "function f" + std::to_string(f) + "(";
        for (int i = 0; i < paramCounts[static_cast<size_t>(f)]; ++i) text += i ? ", $q" : "$p";
        text += ") {\n";
        if (chance(50)) text += cat({"    $", pick(names), " = ", literal(), ";\n"});
        const int n = 1 + below(5);
        for (int i = 0; i < n; ++i) text += "    " + statement(3) + "\n";
        text += "}\n";
    }
    function = -1;
    for (const char* name : names)
        if (chance(85)) text += cat({"$", name, " = ", literal(), ";\n"});
    const int n = 4 + below(10);
    for (int i = 0; i < n; ++i) text += statement(3) + "\n";
    text += "print(\"end\");\n";
    return text;
}

}  // namespace scriptPrograms
