// Loading images and making their smaller levels.
#include "krImage.h"

#include <stb/stb_image.h>

#include <cstring>

bool krLoadPng(const std::string& path, krImage& image, std::string& error) {
    int w, h, channels;
    stbi_uc* pixels = stbi_load(path.c_str(), &w, &h, &channels, 4);
    if (!pixels) {
        const char* reason = stbi_failure_reason();
        error = reason ? reason : "cannot read the image";
        return false;
    }
    image.width = w;
    image.height = h;
    image.rgba.assign(pixels, pixels + size_t(w) * size_t(h) * 4);
    stbi_image_free(pixels);
    return true;
}

krImage krHalve(const krImage& in) {
    krImage out;
    out.width = in.width > 1 ? in.width / 2 : 1;
    out.height = in.height > 1 ? in.height / 2 : 1;
    out.rgba.resize(size_t(out.width) * size_t(out.height) * 4);
    // A side that stays at 1 takes one source pixel, a halved side two.
    const int sx = in.width > 1 ? 2 : 1, sy = in.height > 1 ? 2 : 1;
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x)
            for (int c = 0; c < 4; ++c) {
                int sum = 0;
                for (int dy = 0; dy < sy; ++dy)
                    for (int dx = 0; dx < sx; ++dx) sum += in.at(x * sx + dx, y * sy + dy)[c];
                const int n = sx * sy;
                out.rgba[(size_t(y) * size_t(out.width) + size_t(x)) * 4 + size_t(c)] = uint8_t((sum + n / 2) / n);
            }
    return out;
}
