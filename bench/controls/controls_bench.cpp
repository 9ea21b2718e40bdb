// A desktop of 1,000 controls, each with a fill, a border and a line of text, drawn through the
// engine's controls and the same quads and glyphs in a bare OpenGL loop; prints the frame times of
// both and their ratio. The engine takes the whole way: the window's frame, the walk of the 2D
// viewport over the desktop's tree, and each control's three items reading their records. The bare
// loop is what a hand-written interface would do: per control a coloured quad, the four sides of
// its border, and the glyphs of its text from the stock font's atlas, with the overlay's state.
//
// Usage: kerrin_bench_controls [frames]   (under a display, e.g. xvfb-run -a kerrin_bench_controls;
// run it where data.kr lies, as the build places it beside the program)
#include "bench_timing.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/krMain.h"
#include "interface/krControl.h"
#include "platform/krWindowSystem.h"
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

constexpr int columns = 40, rows = 25, controlCount = columns * rows;
constexpr int warmUpFrames = 5;
constexpr int defaultFrames = 60;
constexpr int32_t windowWidth = 800, windowHeight = 600;
// Each control fills a cell of the grid, less a gap; its border and text scale with it.
constexpr float cellWidth = 1.0f / columns, cellHeight = 0.75f / rows;
constexpr float gap = 0.002f, borderWidth = 0.001f, textHeight = 0.012f, margin = 0.002f;

struct Cell {
    float x, y, w, h;
    krColor fill;
    std::string text;
};

// The bare loop: the overlay's projection and state, then per control its quads and glyphs.
void rawFrame(krNativeWindow* native, const krFont& font, GLuint atlas, const std::vector<Cell>& cells) {
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
    for (const Cell& c : cells) {
        const float b = borderWidth;
        glDisable(GL_TEXTURE_2D);
        glBegin(GL_QUADS);
        glColor4ub(c.fill.r, c.fill.g, c.fill.b, c.fill.a);
        glVertex2f(c.x + b, c.y + b);
        glVertex2f(c.x + c.w - b, c.y + b);
        glVertex2f(c.x + c.w - b, c.y + c.h - b);
        glVertex2f(c.x + b, c.y + c.h - b);
        glColor4ub(255, 255, 255, 255);
        const float sides[4][8] = {
            {c.x + b, c.y + b, c.x, c.y, c.x + c.w, c.y, c.x + c.w - b, c.y + b},
            {c.x + c.w - b, c.y + c.h - b, c.x + c.w, c.y + c.h, c.x, c.y + c.h, c.x + b, c.y + c.h - b},
            {c.x + b, c.y + b, c.x, c.y, c.x, c.y + c.h, c.x + b, c.y + c.h - b},
            {c.x + c.w, c.y, c.x + c.w - b, c.y + b, c.x + c.w - b, c.y + c.h - b, c.x + c.w, c.y + c.h}};
        for (const auto& side : sides)
            for (int i = 0; i < 4; ++i) glVertex2f(side[2 * i], side[2 * i + 1]);
        glEnd();
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, atlas);
        glPushMatrix();
        glTranslatef(c.x + margin, c.y + margin, 0);
        glScalef(textHeight, textHeight, 1);
        float x = 0;
        glBegin(GL_QUADS);
        for (const char ch : c.text) {
            const krGlyph& g = font.glyphs[static_cast<uint8_t>(ch)];
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
        std::fprintf(stderr, "kerrin_bench_controls: no window (is there a display?)\n");
        return 1;
    }
    krVideo_OGL* video = window->getVideo_OGL();
    krNativeWindow* native = window->getNative();
    krFonts_OGL* fonts = video->getFonts();
    krFont* font = fonts->get(krDefaultFont, 0);
    const GLuint atlas = fonts->texture(font);
    if (font->advance('A') == 0) {
        std::fprintf(stderr, "kerrin_bench_controls: no stock font (is data.kr here?)\n");
        return 1;
    }

    std::vector<Cell> cells;
    auto* desktop = new krDesktop(window);
    desktop->attach();
    desktop->setVisible(true);
    desktop->setRect(0, 0, 1, 0.75f);
    for (int i = 0; i < controlCount; ++i) {
        std::string label(1, 'n');
        label += std::to_string(i);
        const Cell cell{static_cast<float>(i % columns) * cellWidth, static_cast<float>(i / columns) * cellHeight,
                        cellWidth - gap, cellHeight - gap,
                        krColor(static_cast<uint8_t>(40 + i % 200), 60, static_cast<uint8_t>(90 + i % 150), 255),
                        label};
        cells.push_back(cell);
        auto* c = new krControl(desktop);
        c->attach();
        c->setVisible(true);
        c->setRect(cell.x, cell.y, cell.w, cell.h);
        c->setBackground(cell.fill, true);
        c->setBorder(krColor(255, 255, 255, 255), borderWidth, krBorderTop | krBorderBottom | krBorderLeft | krBorderRight);
        c->setFont(krDefaultFont, krColor(255, 255, 255, 255), textHeight, textHeight);
        c->setText(cell.text);
    }
    auto* viewport = new krViewPort(video);
    viewport->attach();
    viewport->setVisible(true);
    viewport->setSize(0, 0, windowWidth, windowHeight);
    viewport->setModule(desktop);
    viewport->set2D(true);

    std::vector<double> engine, raw;
    for (int f = 0; f < warmUpFrames + frames; ++f) {
        // Alternate, so that both sides see the same machine state.
        const uint64_t t0 = krSystem::counter();
        window->update(0.01f);
        glFinish();
        const uint64_t t1 = krSystem::counter();
        rawFrame(native, *font, atlas, cells);
        glFinish();
        const uint64_t t2 = krSystem::counter();
        if (f < warmUpFrames) continue;
        engine.push_back(seconds(t0, t1) * 1000);
        raw.push_back(seconds(t1, t2) * 1000);
    }
    const Stats e = stats(engine), r = stats(raw);
    std::printf("%-9s %12s %12s %12s %12s %8s\n", "controls", "engine med", "engine p95", "raw med", "raw p95", "ratio");
    std::printf("%-9d %9.3f ms %9.3f ms %9.3f ms %9.3f ms %8.3f\n", controlCount, e.median, e.p95, r.median, r.p95,
                e.median / r.median);
    fonts->release(font);
    root->deinit();
    root->release();
    return 0;
}
