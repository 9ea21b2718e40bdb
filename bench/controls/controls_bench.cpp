// A desktop of 1,000 controls, each with a fill, a border and a line of text, drawn through the
// engine's controls and the same quads and glyphs in a bare OpenGL loop; prints the frame times of
// both and their ratio. The engine takes the whole way: the window's frame, the walk of the 2D
// viewport over the desktop's tree, and each control's three items reading their records. The bare
// loop is what a hand-written interface would do: per control a coloured quad, the four sides of
// its border, and the glyphs of its text from the stock font's atlas, with the overlay's state.
//
// Usage: kerrin_bench_controls [frames]   (under a display, e.g. xvfb-run -a kerrin_bench_controls;
// run it where data.kr lies, as the build places it beside the program)
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench_overlay.h"
#include "interface/krControl.h"
#include "render/krViewPort.h"

namespace {

constexpr int columns = 40, rows = 25, controlCount = columns * rows;
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

// The bare loop's drawing: per control its fill, the four sides of its border and its text.
void rawControls(const benchOverlay::Bench& bench, const std::vector<Cell>& cells) {
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
        glBindTexture(GL_TEXTURE_2D, bench.atlas);
        glPushMatrix();
        glTranslatef(c.x + margin, c.y + margin, 0);
        glScalef(textHeight, textHeight, 1);
        bench.glyphRun(c.text);
        glPopMatrix();
    }
}
}  // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : defaultFrames;
    benchOverlay::Bench bench;
    if (!bench.open("kerrin_bench_controls", argc, argv, windowWidth, windowHeight)) return 1;

    std::vector<Cell> cells;
    auto* desktop = new krDesktop(bench.window);
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
    auto* viewport = new krViewPort(bench.video);
    viewport->attach();
    viewport->setVisible(true);
    viewport->setSize(0, 0, windowWidth, windowHeight);
    viewport->setModule(desktop);
    viewport->set2D(true);

    benchTiming::Stats e{}, r{};
    bench.measure(frames, [&] { rawControls(bench, cells); }, e, r);
    std::printf("%-9s %12s %12s %12s %12s %8s\n", "controls", "engine med", "engine p95", "raw med", "raw p95", "ratio");
    std::printf("%-9d %9.3f ms %9.3f ms %9.3f ms %9.3f ms %8.3f\n", controlCount, e.median, e.p95, r.median, r.p95,
                e.median / r.median);
    bench.close();
    return 0;
}
