// Block compression by endpoint boxes.
#include "krBlockCompress.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

namespace {

using Block = std::array<std::array<uint8_t, 4>, 16>;

// Edge blocks of images that are not a multiple of 4 repeat the last row and column.
Block gather(const krImage& image, int bx, int by) {
    Block b;
    for (int i = 0; i < 16; ++i) {
        const int x = std::min(bx * 4 + i % 4, image.width - 1);
        const int y = std::min(by * 4 + i / 4, image.height - 1);
        const uint8_t* p = image.at(x, y);
        b[size_t(i)] = {p[0], p[1], p[2], p[3]};
    }
    return b;
}

uint16_t to565(const std::array<int, 3>& c) {
    return uint16_t(((c[0] * 31 + 127) / 255) << 11 | ((c[1] * 63 + 127) / 255) << 5 | ((c[2] * 31 + 127) / 255));
}

std::array<int, 3> from565(uint16_t c) {
    const int r = c >> 11, g = (c >> 5) & 63, b = c & 31;
    return {r << 3 | r >> 2, g << 2 | g >> 4, b << 3 | b >> 2};
}

int distance(const std::array<int, 3>& a, const std::array<uint8_t, 4>& p) {
    int d = 0;
    for (int i = 0; i < 3; ++i) d += (a[size_t(i)] - p[size_t(i)]) * (a[size_t(i)] - p[size_t(i)]);
    return d;
}

void put16(std::string& out, uint16_t v) {
    out += char(v & 0xFF);
    out += char(v >> 8);
}

// The colour half of a block. The endpoints are the two pixels furthest apart, which holds a
// two-colour block exactly and spans a gradient from end to end. With transparency (DXT1 only)
// they go in the order that selects the three-colour palette, whose fourth entry is transparent.
void colourBlock(const Block& b, bool transparency, std::string& out) {
    auto counts = [&](const std::array<uint8_t, 4>& p) { return !transparency || p[3] >= 128; };
    std::array<int, 3> first{0, 0, 0}, second{0, 0, 0};
    int widest = -1;
    for (size_t i = 0; i < 16; ++i)
        for (size_t j = i; j < 16; ++j) {
            if (!counts(b[i]) || !counts(b[j])) continue;
            const std::array<int, 3> p{b[i][0], b[i][1], b[i][2]};
            const int d = distance(p, b[j]);
            if (d > widest) {
                widest = d;
                first = p;
                second = {b[j][0], b[j][1], b[j][2]};
            }
        }
    uint16_t c0 = to565(first), c1 = to565(second);
    const bool threeColours = transparency && std::any_of(b.begin(), b.end(), [&](const auto& p) { return !counts(p); });
    if ((c0 < c1) != threeColours) std::swap(c0, c1);
    const std::array<int, 3> e0 = from565(c0), e1 = from565(c1);
    std::array<std::array<int, 3>, 4> palette;
    palette[0] = e0;
    palette[1] = e1;
    for (size_t i = 0; i < 3; ++i) {
        if (threeColours || c0 == c1) {
            palette[2][i] = (e0[i] + e1[i]) / 2;
            palette[3][i] = 0;
        } else {
            palette[2][i] = (2 * e0[i] + e1[i]) / 3;
            palette[3][i] = (e0[i] + 2 * e1[i]) / 3;
        }
    }
    // Equal endpoints read as the three-colour palette: entry 3 would be transparent.
    const int usable = threeColours || c0 == c1 ? 3 : 4;
    uint32_t indices = 0;
    for (int i = 0; i < 16; ++i) {
        const auto& p = b[size_t(i)];
        int best = 0;
        if (threeColours && p[3] < 128) {
            best = 3;
        } else {
            for (int k = 1; k < usable; ++k)
                if (distance(palette[size_t(k)], p) < distance(palette[size_t(best)], p)) best = k;
        }
        indices |= uint32_t(best) << (2 * i);
    }
    put16(out, c0);
    put16(out, c1);
    for (int i = 0; i < 4; ++i) out += char((indices >> (8 * i)) & 0xFF);
}

// The alpha half of a DXT5 block: the extremes and six steps between them.
void alphaBlock(const Block& b, std::string& out) {
    int lo = 255, hi = 0;
    for (const auto& p : b) {
        lo = std::min(lo, int(p[3]));
        hi = std::max(hi, int(p[3]));
    }
    std::array<int, 8> palette{hi, lo};
    for (int k = 1; k <= 6; ++k) palette[size_t(k + 1)] = ((7 - k) * hi + k * lo) / 7;
    uint64_t indices = 0;
    for (int i = 0; i < 16; ++i) {
        int best = 0;
        if (hi != lo)
            for (int k = 1; k < 8; ++k)
                if (std::abs(palette[size_t(k)] - b[size_t(i)][3]) < std::abs(palette[size_t(best)] - b[size_t(i)][3])) best = k;
        indices |= uint64_t(best) << (3 * i);
    }
    out += char(hi);
    out += char(lo);
    for (int i = 0; i < 6; ++i) out += char((indices >> (8 * i)) & 0xFF);
}

template <typename Encode>
void eachBlock(const krImage& image, Encode encode) {
    for (int by = 0; by < (image.height + 3) / 4; ++by)
        for (int bx = 0; bx < (image.width + 3) / 4; ++bx) encode(gather(image, bx, by));
}

}  // namespace

void krCompressDXT1(const krImage& image, std::string& out) {
    eachBlock(image, [&](const Block& b) { colourBlock(b, true, out); });
}

void krCompressDXT5(const krImage& image, std::string& out) {
    eachBlock(image, [&](const Block& b) {
        alphaBlock(b, out);
        colourBlock(b, false, out);
    });
}
