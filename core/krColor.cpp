// Colour conversions and channel arithmetic, and the named colour table.
#include "core/krColor.h"

#include <algorithm>
#include <cmath>
#include <iterator>

// Rounds to nearest and keeps the low eight bits, the way a byte store truncates. Done in float
// arithmetic first because converting an out-of-range float to an integer is undefined; NaN and
// infinities give 0.
static uint8_t roundToByte(float v) {
    float wrapped = std::fmod(std::round(v), 256.0f);
    if (std::isnan(wrapped)) return 0;
    return uint8_t(int(wrapped));
}

static int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 0;
}

// The digits of a hex colour: eight, in packed order RRBBGGAA.
static constexpr size_t kHexColorDigits = 8;

krColor::krColor(const krColorF& c)
    : r(roundToByte(c.r * 255)), g(roundToByte(c.g * 255)), b(roundToByte(c.b * 255)),
      a(roundToByte(c.a * 255)) {}

krColor::krColor(std::string_view hex) { setHex(hex); }

void krColor::setHex(std::string_view hex) {
    if (hex.size() < kHexColorDigits) return;
    uint32_t packed = 0;
    for (size_t i = 0; i < kHexColorDigits; ++i) packed = packed << 4 | uint32_t(hexDigit(hex[i]));
    *this = krColor(packed);
}

krColor add(const krColor& x, const krColor& y) {
    return {uint8_t(x.r + y.r), uint8_t(x.g + y.g), uint8_t(x.b + y.b), uint8_t(x.a + y.a)};
}

krColor modulate(const krColor& x, const krColor& y) {
    return {uint8_t(x.r * y.r >> 8), uint8_t(x.g * y.g >> 8), uint8_t(x.b * y.b >> 8),
            uint8_t(x.a * y.a >> 8)};
}

krColor scaleByte(const krColor& c, uint8_t s) {
    return {uint8_t(c.r * s >> 8), uint8_t(c.g * s >> 8), uint8_t(c.b * s >> 8), c.a};
}

krColor fadeAlpha(const krColor& c, float f) { return krColor(c, roundToByte(c.a * f)); }

krColorF::krColorF(const krColor& c) : r(c.r / 255.0f), g(c.g / 255.0f), b(c.b / 255.0f), a(c.a / 255.0f) {}

krColorF multiply(const krColorF& x, const krColorF& y) { return {x.r * y.r, x.g * y.g, x.b * y.b, x.a * y.a}; }

krColorF lit(const krColor& c, float s) {
    float k = s / 255;
    return {c.r * k, c.g * k, c.b * k, c.a / 255.0f};
}

krColorF clamped(const krColorF& c) {
    return {std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f), std::clamp(c.b, 0.0f, 1.0f),
            std::clamp(c.a, 0.0f, 1.0f)};
}

krColor krColorRange::at(float t) const {
    auto channel = [t](uint8_t s, uint8_t e) { return roundToByte(s * (1 - t) + e * t); };
    return {channel(start.r, end.r), channel(start.g, end.g), channel(start.b, end.b), channel(start.a, end.a)};
}

krColorRange krColorRange::modulated(const krColor& c) const { return {modulate(start, c), modulate(end, c)}; }

const krNamedColor krNamedColors[] = {
    {"BLACK", 0, 0, 0},       {"WHITE", 255, 255, 255}, {"MAROON", 128, 0, 0},    {"GREEN", 0, 128, 0},
    {"NAVY", 0, 0, 128},      {"OLIVE", 128, 128, 0},   {"PURPLE", 128, 0, 128},  {"TEAL", 0, 128, 128},
    {"RED", 255, 0, 0},       {"LIME", 0, 255, 0},      {"BLUE", 0, 0, 255},      {"YELLOW", 255, 255, 0},
    {"FUCHSIA", 255, 0, 255}, {"AQUA", 0, 255, 255},    {"GRAY", 128, 128, 128},  {"SILVER", 192, 192, 192},
    {"BROWN", 128, 64, 0},    {"ORANGE", 255, 128, 0},
};

const int krNamedColorCount = int(std::size(krNamedColors));
