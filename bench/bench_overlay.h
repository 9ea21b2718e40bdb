// What the benchmarks of the overlay share: a window with the stock font, the bare loop's overlay
// state and its run of glyph quads, and the measure that alternates the engine's frame with the
// bare one.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "bench_timing.h"
#include "core/krMain.h"
#include "platform/krWindowSystem.h"
#include "render/krDynamicData.h"
#include "render/krFont.h"
#include "render/opengl/krFonts_OGL.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"

namespace benchOverlay {

constexpr int warmUpFrames = 5;

struct Bench {
    krMain* root = nullptr;
    krWindow_OGL* window = nullptr;
    krVideo_OGL* video = nullptr;
    krNativeWindow* native = nullptr;
    krFonts_OGL* fonts = nullptr;
    krFont* font = nullptr;
    GLuint atlas = 0;
    int width = 0, height = 0;

    // A window of the size with the stock font loaded; false, after a message, without a display
    // or without the stock data beside the program.
    bool open(const char* name, int argc, char** argv, int w, int h) {
        width = w;
        height = h;
        root = new krMain(argc, argv);
        root->attach();
        window = new krWindow_OGL(root);
        window->attach();
        window->setFullscreen(false);
        window->setSize(w, h);
        if (!window->init()) {
            std::fprintf(stderr, "%s: no window (is there a display?)\n", name);
            return false;
        }
        video = window->getVideo_OGL();
        native = window->getNative();
        fonts = video->getFonts();
        font = fonts->get(krDefaultFont, 0);
        atlas = fonts->texture(font);
        if (font->advance('A') == 0) {
            std::fprintf(stderr, "%s: no stock font (is data.kr here?)\n", name);
            return false;
        }
        return true;
    }

    void close() {
        fonts->release(font);
        root->deinit();
        root->release();
    }

    // The bare loop's frame: clear, the overlay's projection and blending, then draw, then swap.
    template <class Draw>
    void rawFrame(Draw draw) const {
        krGL::clearFrame(krColor(0, 0, 0, 255));
        glViewport(0, 0, width, height);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, 1, static_cast<double>(height) / width, 0, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        draw();
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        krWindowSystem::swap(native);
    }

    // A string's glyphs as one run of quads, a font height high, from the current origin; the
    // atlas must be bound.
    void glyphRun(const std::string& text) const {
        float x = 0;
        glBegin(GL_QUADS);
        for (const char c : text) {
            const krGlyph& g = font->glyphs[static_cast<uint8_t>(c)];
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
    }

    // The engine's frame and the bare one in turn, so that both see the same machine state; the
    // medians and 95th percentiles in milliseconds, after the warm-up frames.
    template <class Raw>
    void measure(int frames, Raw raw, benchTiming::Stats& engineStats, benchTiming::Stats& rawStats) const {
        std::vector<double> engine, bare;
        for (int f = 0; f < warmUpFrames + frames; ++f) {
            const uint64_t t0 = krSystem::counter();
            window->update(0.01f);
            glFinish();
            const uint64_t t1 = krSystem::counter();
            rawFrame(raw);
            glFinish();
            const uint64_t t2 = krSystem::counter();
            if (f < warmUpFrames) continue;
            engine.push_back(benchTiming::seconds(t0, t1) * 1000);
            bare.push_back(benchTiming::seconds(t1, t2) * 1000);
        }
        engineStats = benchTiming::stats(engine);
        rawStats = benchTiming::stats(bare);
    }
};

}  // namespace benchOverlay
