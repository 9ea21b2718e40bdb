// Plain values and the conversion rules between text and numbers.
#include "script/krVariant.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "script/krClassInfo.h"
#include "script/krVArray.h"

namespace {
const krMemberInfo stringMembers[] = {
    {"length", krRead, "int", "the number of bytes"},
    {"empty", krRead, "bool", "no text"},
    {"clear", krCall, "()", "empties the string in place"},
};
}

const krClassInfo krVString::info = {"krVString", nullptr, nullptr, stringMembers, {},
                                     "a string value; bound string properties answer the same members"};

int32_t krVariant::instanceCount = 0;
int32_t krVariant::instanceLimit = INT32_MAX;

krVariant* krVariant::iterNext(krIterState*& state) {
    iterFree(state);
    return nullptr;
}

void krVariant::iterFree(krIterState*& state) {
    if (!state) return;
    if (state->array) state->array->detach(state);
    delete state;
    state = nullptr;
}

krVariant* krVariant::getMember(const std::string&, krBlock*, const krArgs&) {
    return nullptr;
}

int32_t krVFloat::toInt() { return krConvert::floatToInt(value); }
std::string krVFloat::toString() { return krConvert::floatToString(value); }

bool krVString::toBool() { return krConvert::stringToBool(value); }
int32_t krVString::toInt() { return krConvert::stringToInt(value); }
float krVString::toFloat() { return krConvert::stringToFloat(value); }

void krVString::assign(krVariant* v) {
    if (v != this) setString(v->toString());
}

krVariant* krVString::getMember(const std::string& name, krBlock*, const krArgs& args) {
    return krConvert::stringMember(this, value, name, args);
}

krVariant* krConvert::stringMember(krVariant* self, const std::string& text, const std::string& name,
                                   const krArgs& args) {
    if (name == "length") return new krVInt(static_cast<int32_t>(text.size()));
    if (name == "empty") return new krVBool(text.empty());
    if (name == "clear" && args.empty()) self->setString(std::string());
    return nullptr;
}

std::string krConvert::quoted(const std::string& text) {
    std::string result;
    result.reserve(text.size() + 2);
    result += '"';
    result += text;
    result += '"';
    return result;
}

bool krConvert::stringToBool(const std::string& s) {
    if (s == "true" || s == "1") return true;
    if (s == "false" || s == "0") return false;
    return !s.empty();
}

int32_t krConvert::stringToInt(const std::string& s) {
    if (s == "true") return 1;
    if (s == "false") return 0;
    // A decimal stream read: white space, an optional sign, digits; stops at the first character
    // that cannot continue the number. No digits gives 0; out of range saturates.
    size_t i = 0;
    while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) negative = s[i++] == '-';
    int64_t magnitude = 0;
    bool any = false;
    while (i < s.size() && s[i] >= '0' && s[i] <= '9') {
        any = true;
        if (magnitude <= int64_t(1) << 32) magnitude = magnitude * 10 + (s[i] - '0');
        ++i;
    }
    if (!any) return 0;
    int64_t v = negative ? -magnitude : magnitude;
    if (v > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    if (v < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(v);
}

float krConvert::stringToFloat(const std::string& s) {
    if (s == "true") return 1;
    if (s == "false") return 0;
    // The longest prefix of the form [space][sign]digits[.digits][(e|E)[sign]digits] is read;
    // anything else (no digits at all) gives 0.
    size_t i = 0;
    while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    const size_t start = i;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    size_t digits = 0;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i, ++digits;
    if (i < s.size() && s[i] == '.') {
        ++i;
        while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i, ++digits;
    }
    if (digits == 0) return 0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        size_t j = i + 1;
        if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
        if (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) {
            while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) ++j;
            i = j;
        }
    }
    return std::strtof(s.substr(start, i - start).c_str(), nullptr);
}

int32_t krConvert::floatToInt(float f) {
    if (std::isnan(f)) return 0;
    if (f >= 2147483648.0f) return std::numeric_limits<int32_t>::max();
    if (f <= -2147483648.0f) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(f);
}

namespace {
// Decimals up to which |x| * 10^d is exact in a long double (64-bit mantissa), so that a tie can
// be recognised and rounded away from zero.
constexpr int exactDecimals = 17;
// From here on every float is a whole number and no rounding happens.
constexpr double wholeFloats = 16777216.0;

std::string printFixed(double x, int decimals) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, x);
    return buffer;
}
}

std::string krConvert::floatToString(float f) {
    const double x = f;
    // Zero has no finite logarithm; the stream's default of six decimals applies.
    if (x == 0 || !std::isfinite(x)) return printFixed(x, 6);
    const double magnitude = std::fabs(x);
    const int n = static_cast<int>(std::floor(std::log10(magnitude)));
    const int decimals = 2 - std::min(2, n);
    if (magnitude >= wholeFloats || decimals > exactDecimals) return printFixed(x, decimals);

    long double scaled = static_cast<long double>(magnitude) * std::pow(10.0L, decimals);
    auto digits = static_cast<unsigned long long>(std::floor(scaled + 0.5L));
    std::string text = std::to_string(digits);
    if (decimals > 0) {
        if (text.size() <= static_cast<size_t>(decimals))
            text.insert(0, static_cast<size_t>(decimals) + 1 - text.size(), '0');
        text.insert(text.size() - static_cast<size_t>(decimals), 1, '.');
    }
    if (x < 0) text.insert(0, 1, '-');
    return text;
}
