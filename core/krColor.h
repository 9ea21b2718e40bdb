// Colours: bytes for vertices and materials, floats for lighting, a range for fades, the packed
// integer in which scripts hold a colour, and the table of named colours scripts see as constants.
//
// The packed integer is 0xRRBBGGAA: red on top, then blue above green, alpha lowest. Hex colour
// strings use the same digit order. Every conversion in either direction follows it.
#pragma once

#include <cstdint>
#include <string_view>

struct krColorF;

struct krColor {
    uint8_t r = 255, g = 255, b = 255, a = 255;

    constexpr krColor() = default;
    constexpr krColor(uint8_t r_, uint8_t g_, uint8_t b_, uint8_t a_) : r(r_), g(g_), b(b_), a(a_) {}
    constexpr krColor(const krColor& c, uint8_t alpha) : r(c.r), g(c.g), b(c.b), a(alpha) {}
    constexpr explicit krColor(uint32_t packed)
        : r(uint8_t(packed >> 24)), g(uint8_t(packed >> 8)), b(uint8_t(packed >> 16)), a(uint8_t(packed)) {}
    // Each channel x 255, rounded to nearest, keeps its low eight bits as a byte store would;
    // use clamped first for saturation.
    explicit krColor(const krColorF& c);
    // White, then setHex.
    explicit krColor(std::string_view hex);

    static const krColor none;

    // Reads the first eight characters as RRBBGGAA in either case; any other character counts
    // as digit 0. A shorter string leaves the colour as it was.
    void setHex(std::string_view hex);

    bool operator==(const krColor&) const = default;
};

inline constexpr krColor krColor::none{0, 0, 0, 0};

constexpr uint32_t toPacked(const krColor& c) {
    return uint32_t(c.r) << 24 | uint32_t(c.b) << 16 | uint32_t(c.g) << 8 | c.a;
}

// Per channel, wrapping modulo 256.
krColor add(const krColor& x, const krColor& y);
// Per channel (x * y) >> 8 on all four channels. It is a shift, not a division by 255: white
// takes each channel down by up to one (255 x 255 gives 254).
krColor modulate(const krColor& x, const krColor& y);
// r, g, b each (channel * s) >> 8; alpha stays.
krColor scaleByte(const krColor& c, uint8_t s);
constexpr krColor withAlpha(const krColor& c, uint8_t alpha) { return krColor(c, alpha); }
// Alpha x f rounded to nearest; r, g, b stay.
krColor fadeAlpha(const krColor& c, float f);
constexpr krColor inverted(const krColor& c) {
    return {uint8_t(~c.r), uint8_t(~c.g), uint8_t(~c.b), uint8_t(~c.a)};
}
// Mean of r, g and b, rounded down.
constexpr int brightness(const krColor& c) { return (c.r + c.g + c.b) / 3; }

struct krColorF {
    float r = 1, g = 1, b = 1, a = 1;

    constexpr krColorF() = default;
    constexpr krColorF(float r_, float g_, float b_, float a_) : r(r_), g(g_), b(b_), a(a_) {}
    // Each channel / 255.
    explicit krColorF(const krColor& c);

    bool operator==(const krColorF&) const = default;
};

krColorF multiply(const krColorF& x, const krColorF& y);
// c's r, g, b scaled by s / 255, alpha / 255: a byte colour lit by an intensity of 0 to 255.
krColorF lit(const krColor& c, float s);
inline float brightness(const krColorF& c) { return (c.r + c.g + c.b) / 3; }
// Each channel to [0, 1].
krColorF clamped(const krColorF& c);

// A colour that fades from start (t = 0) to end (t = 1).
struct krColorRange {
    krColor start, end;

    constexpr krColorRange() = default;
    constexpr krColorRange(const krColor& start_, const krColor& end_) : start(start_), end(end_) {}

    // Per channel start x (1 - t) + end x t, rounded to nearest, all four channels.
    krColor at(float t) const;
    // Both ends modulated by c.
    krColorRange modulated(const krColor& c) const;
};

// The colours scripts know by name, alpha 255, in the order they are registered as constants.
struct krNamedColor {
    const char* name;
    uint8_t r, g, b;
};

extern const krNamedColor krNamedColors[];
extern const int krNamedColorCount;
