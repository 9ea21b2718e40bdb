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
#include "bench_timing.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/krMain.h"
#include "platform/krSystem.h"
#include "platform/krWindowSystem.h"
#include "render/krDynamicData.h"
#include "render/krFont.h"
#include "render/krViewPort.h"
#include "render/opengl/krFonts_OGL.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"

namespace {
using benchTiming::seconds;
using benchTiming::stats;
using benchTiming::Stats;
constexpr int glyphsPerFrame = 10000;
// Strings a frame: glyphsPerFrame / strings bytes each.
constexpr int stringCounts[] = {100, 1000, 10000};
constexpr int warmUpFrames = 5;
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

// The bare loop: the overlay's projection and state, then each string as one run of quads.
void rawFrame(krNativeWindow* native, const krFont& font, GLuint atlas, const std::vector<std::string>& texts,
              const std::vector<krVector3>& places) {
    krGL::clearFrame(krColor(0, 0, 0, 255));
    glViewport(0, 0, windowWidth, windowHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 1, static_cast<double>(windowHeight) / windowWidth, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, atlas);
    glColor4ub(255, 255, 255, 255);
    for (size_t s = 0; s < texts.size(); ++s) {
        glPushMatrix();
        glTranslatef(places[s].x, places[s].y, 0);
        glScalef(textHeight, textHeight, 1);
        float x = 0;
        glBegin(GL_QUADS);
        for (const char c : texts[s]) {
            const krGlyph& g = font.glyphs[static_cast<uint8_t>(c)];
            const float a = g.width / g.height;
            glTexCoord2f(g.u, g.v);
            glVertex2f(x, 0);
            glTexCoord2f(g.u, g.v + g.height);
            glVertex2f(x, 1);
            glTexCoord2f(g.u + g.width, g.v + g.height);
            glVertex2f(x + a, 1);
            glTexCoord2f(g.u + g.width, g.v);
            glVertex2f(x + a, 0);
            x += a;
        }
        glEnd();
        glPopMatrix();
    }
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    krWindowSystem::swap(native);
}
}  // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : defaultFrames;
    auto* root = new krMain(argc, argv);
    root->attach();
    auto* window = new krWindow_OGL(root);
    window->attach();
    window->setFullscreen(false);
    window->setSize(windowWidth, windowHeight);
    if (!window->init()) {
        std::fprintf(stderr, "kerrin_bench_text: no window (is there a display?)\n");
        return 1;
    }
    krVideo_OGL* video = window->getVideo_OGL();
    krNativeWindow* native = window->getNative();
    krFonts_OGL* fonts = video->getFonts();
    krFont* font = fonts->get(krDefaultFont, 0);
    const GLuint atlas = fonts->texture(font);
    if (font->advance('A') == 0) {
        std::fprintf(stderr, "kerrin_bench_text: no stock font (is data.kr here?)\n");
        return 1;
    }

    std::printf("%-8s %-7s %12s %12s %12s %12s %8s\n", "strings", "length", "engine med", "engine p95", "raw med",
                "raw p95", "ratio");
    for (int strings : stringCounts) {
        const int length = glyphsPerFrame / strings;
        auto* overlay = new krModule(window);
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

        std::vector<double> engine, raw;
        for (int f = 0; f < warmUpFrames + frames; ++f) {
            // Alternate, so that both sides see the same machine state.
            uint64_t t0 = krSystem::counter();
            window->update(0.01f);
            glFinish();
            uint64_t t1 = krSystem::counter();
            rawFrame(native, *font, atlas, texts, places);
            glFinish();
            uint64_t t2 = krSystem::counter();
            if (f < warmUpFrames) continue;
            engine.push_back(seconds(t0, t1) * 1000);
            raw.push_back(seconds(t1, t2) * 1000);
        }
        if (video->getPolyCount() != glyphsPerFrame)
            std::fprintf(stderr, "kerrin_bench_text: the engine drew %d glyphs, not %d\n", video->getPolyCount(),
                         glyphsPerFrame);
        const Stats e = stats(engine), r = stats(raw);
        std::printf("%-8d %-7d %9.3f ms %9.3f ms %9.3f ms %9.3f ms %8.3f\n", strings, length, e.median, e.p95,
                    r.median, r.p95, e.median / r.median);
        std::fflush(stdout);
        viewport->deinit();
        viewport->release();
        overlay->deinit();
        overlay->release();
    }
    fonts->release(font);
    root->deinit();
    root->release();
    return 0;
}
