// kerrin_screen_grab: the picture on the X display as a PNG file, and how many colours it holds.
// The demo's screenshot test takes its pictures from outside the program, as a player sees them.
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace {

void putBig32(std::string& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((v >> shift) & 0xFF);
}

void chunk(std::string& out, const char* type, const std::string& data) {
    putBig32(out, static_cast<uint32_t>(data.size()));
    const std::string body = std::string(type, 4) + data;
    out += body;
    putBig32(out, static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()), body.size())));
}

// Eight-bit RGB rows, each behind the filter byte 0.
bool writePng(const char* path, int width, int height, const std::vector<uint8_t>& rows) {
    uLongf packedSize = compressBound(rows.size());
    std::vector<uint8_t> packed(packedSize);
    if (compress2(packed.data(), &packedSize, rows.data(), rows.size(), 6) != Z_OK) return false;
    std::string header;
    putBig32(header, static_cast<uint32_t>(width));
    putBig32(header, static_cast<uint32_t>(height));
    header += std::string("\x08\x02\x00\x00\x00", 5);
    std::string file = "\x89PNG\r\n\x1a\n";
    chunk(file, "IHDR", header);
    chunk(file, "IDAT", std::string(packed.begin(), packed.begin() + static_cast<long>(packedSize)));
    chunk(file, "IEND", "");
    std::ofstream out(path, std::ios::binary);
    out.write(file.data(), static_cast<std::streamsize>(file.size()));
    return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: kerrin_screen_grab out.png\n");
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "kerrin_screen_grab: no X display to grab\n");
        return 1;
    }
    const Window root = DefaultRootWindow(display);
    XWindowAttributes attributes;
    XGetWindowAttributes(display, root, &attributes);
    XImage* image = XGetImage(display, root, 0, 0, static_cast<unsigned>(attributes.width),
                              static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
    if (!image) {
        std::fprintf(stderr, "kerrin_screen_grab: the display gave no picture\n");
        XCloseDisplay(display);
        return 1;
    }
    if (!image->red_mask || !image->green_mask || !image->blue_mask) {
        std::fprintf(stderr, "kerrin_screen_grab: the display is not true colour\n");
        XDestroyImage(image);
        XCloseDisplay(display);
        return 1;
    }
    const int width = attributes.width;
    const int height = attributes.height;
    std::vector<uint8_t> rows;
    rows.reserve(static_cast<size_t>(height) * (3 * static_cast<size_t>(width) + 1));
    std::set<uint32_t> colours;
    for (int y = 0; y < height; ++y) {
        rows.push_back(0);
        for (int x = 0; x < width; ++x) {
            const unsigned long pixel = XGetPixel(image, x, y);
            const uint8_t r = static_cast<uint8_t>((pixel & image->red_mask) >> __builtin_ctzl(image->red_mask));
            const uint8_t g = static_cast<uint8_t>((pixel & image->green_mask) >> __builtin_ctzl(image->green_mask));
            const uint8_t b = static_cast<uint8_t>((pixel & image->blue_mask) >> __builtin_ctzl(image->blue_mask));
            rows.insert(rows.end(), {r, g, b});
            colours.insert(static_cast<uint32_t>(r) << 16 | static_cast<uint32_t>(g) << 8 | b);
        }
    }
    XDestroyImage(image);
    XCloseDisplay(display);
    if (!writePng(argv[1], width, height, rows)) {
        std::fprintf(stderr, "kerrin_screen_grab: cannot write %s\n", argv[1]);
        return 1;
    }
    std::printf("%dx%d, %zu colours\n", width, height, colours.size());
    return 0;
}
