// Draws 10,000 glyphs a frame through the engine's text items and the same quads in a bare OpenGL
// loop, and prints the frame times of both and their ratio. The engine's text takes the whole way:
// the window's frame, the walk of a 2D viewport, each item reading its record, following its font
// and laying out its bytes. The bare loop is what a hand-written renderer would do with the same
// font: per string a transform and one run of quads, looking each byte's rectangle up in the
// glyph table. Both draw the stock font's atlas with the overlay's state.
//
// The glyphs are split into strings three ways (long strings to single glyphs), since the engine's
// cost per string is the item and the walk, and its cost per glyph the layout. All of them lie
// inside the window, so that both sides fill the same pixels.
//
// Usage: kerrin_bench_text [frames]   (under a display, e.g. xvfb-run -a kerrin_bench_text; run it
// where data.kr lies, as the build places it beside the program)
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench_overlay.h"
#include "render/krViewPort.h"

namespace {
constexpr int glyphsPerFrame = 10000;
// Strings a frame: glyphsPerFrame / strings bytes each.
constexpr int stringCounts[] = {100, 1000, 10000};
constexpr int defaultFrames = 60;
constexpr int32_t windowWidth = 640, windowHeight = 480;
// Text 0.008 of the overlay's width high (5 pixels), strings in rows down the window and in as
// many columns as they need across it.
constexpr float textHeight = 0.008f;
constexpr int rowsPerColumn = 50;

// Printable bytes only, so that every byte is a glyph on both sides.
std::string sampleText(int index, int length) {
    std::string s;
    for (int i = 0; i < length; ++i) s += static_cast<char>('!' + (index * 7 + i * 13) % 94);
    return s;
}

krVector3 placeOf(int index, int strings) {
    const float columnWidth = 1.0f / static_cast<float>((strings + rowsPerColumn - 1) / rowsPerColumn);
    return {static_cast<float>(index / rowsPerColumn) * columnWidth,
            static_cast<float>(index % rowsPerColumn) * textHeight * 1.5f, 0};
}

// The bare loop's drawing: each string as one run of quads at its place.
void rawText(const benchOverlay::Bench& bench, const std::vector<std::string>& texts,
             const std::vector<krVector3>& places) {
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, bench.atlas);
    glColor4ub(255, 255, 255, 255);
    for (size_t s = 0; s < texts.size(); ++s) {
        glPushMatrix();
        glTranslatef(places[s].x, places[s].y, 0);
        glScalef(textHeight, textHeight, 1);
        bench.glyphRun(texts[s]);
        glPopMatrix();
    }
}
}  // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : defaultFrames;
    benchOverlay::Bench bench;
    if (!bench.open("kerrin_bench_text", argc, argv, windowWidth, windowHeight)) return 1;
    krVideo_OGL* video = bench.video;

    std::printf("%-8s %-7s %12s %12s %12s %12s %8s\n", "strings", "length", "engine med", "engine p95", "raw med",
                "raw p95", "ratio");
    for (int strings : stringCounts) {
        const int length = glyphsPerFrame / strings;
        auto* overlay = new krModule(bench.window);
        overlay->attach();
        overlay->setVisible(true);
        std::vector<std::string> texts;
        std::vector<krVector3> places;
        std::vector<krTextData> records(static_cast<size_t>(strings));
        for (int i = 0; i < strings; ++i) {
            texts.push_back(sampleText(i, length));
            places.push_back(placeOf(i, strings));
        }
        for (int i = 0; i < strings; ++i) {
            krTextData& d = records[static_cast<size_t>(i)];
            d.text = texts[static_cast<size_t>(i)].c_str();
            d.font = krDefaultFont;
            d.position = places[static_cast<size_t>(i)];
            d.size = {textHeight, textHeight, 1};
            video->createTextItem(overlay, &d, krDynamicKind::interfaceText);
        }
        auto* viewport = new krViewPort(video);
        viewport->attach();
        viewport->setVisible(true);
        viewport->setSize(0, 0, windowWidth, windowHeight);
        viewport->setModule(overlay);
        viewport->set2D(true);

        benchTiming::Stats e{}, r{};
        bench.measure(frames, [&] { rawText(bench, texts, places); }, e, r);
        if (video->getPolyCount() != glyphsPerFrame)
            std::fprintf(stderr, "kerrin_bench_text: the engine drew %d glyphs, not %d\n", video->getPolyCount(),
                         glyphsPerFrame);
        std::printf("%-8d %-7d %9.3f ms %9.3f ms %9.3f ms %9.3f ms %8.3f\n", strings, length, e.median, e.p95,
                    r.median, r.p95, e.median / r.median);
        std::fflush(stdout);
        viewport->deinit();
        viewport->release();
        overlay->deinit();
        overlay->release();
    }
    bench.close();
    return 0;
}
