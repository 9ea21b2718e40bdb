// Images of the texture converter: 8-bit RGBA pixels row by row from the top, the chain of
// smaller levels below them, and the PNG files they come from.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct krImage {
    int width = 0, height = 0;
    std::vector<uint8_t> rgba;

    const uint8_t* at(int x, int y) const { return &rgba[(size_t(y) * size_t(width) + size_t(x)) * 4]; }
};

// False with a message when the file is missing or no image.
bool krLoadPng(const std::string& path, krImage& image, std::string& error);
// The next level: half the size on each side, never below 1, each pixel the mean of the pixels
// it covers.
krImage krHalve(const krImage& image);
