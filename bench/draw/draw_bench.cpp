// Draws N boxes through the engine (module tree, walk, opaque queue with its shader sort, the
// window's frame) and the same boxes in a bare OpenGL loop, and prints the frame times of both
// and their ratio. The engine's boxes are a box item of this benchmark's own until mesh items
// exist; it takes the path a mesh item takes: the walk enqueues a part, the queue draws it.
//
// Usage: kerrin_bench_draw [frames]   (under a display, e.g. xvfb-run -a kerrin_bench_draw)
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/krMain.h"
#include "platform/krSystem.h"
#include "platform/krWindowSystem.h"
#include "render/krVideoItem.h"
#include "render/krViewPort.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"

namespace {
constexpr int boxCounts[] = {100, 500, 1000, 2000, 4000, 8000};
constexpr int warmUpFrames = 5;
constexpr int defaultFrames = 40;
constexpr int32_t windowWidth = 640, windowHeight = 480;
// Boxes stand on a grid this many to a row, this far apart, in front of the default view.
constexpr int gridRow = 100;
constexpr float gridStep = 1.5f;
// Some boxes share a program, some not: the queue has sorting to do.
constexpr uintptr_t programKinds = 4;

// One display list of a unit box with normals, shared by both sides.
GLuint makeBoxList() {
    static const float faces[6][3] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glBegin(GL_QUADS);
    for (const auto& n : faces) {
        glNormal3fv(n);
        // Two axes across the face, ordered so that the face winds counter-clockwise outward.
        const int a = n[0] != 0 ? 1 : 0, b = n[2] != 0 ? 1 : 2;
        const int normalAxis = n[0] != 0 ? 0 : n[1] != 0 ? 1 : 2;
        const float s = n[0] + n[1] + n[2];
        const float corners[4][2] = {{-0.5f, -0.5f}, {0.5f, -0.5f}, {0.5f, 0.5f}, {-0.5f, 0.5f}};
        for (int i = 0; i < 4; ++i) {
            const int k = s > 0 ? i : 3 - i;
            float v[3];
            v[normalAxis] = 0.5f * s;
            v[a] = corners[k][0];
            v[b] = corners[k][1];
            glVertex3fv(v);
        }
    }
    glEnd();
    glEndList();
    return list;
}

krMatrix boxMatrix(int i) {
    const float x = static_cast<float>(i % gridRow - gridRow / 2) * gridStep;
    const float y = static_cast<float>(i / gridRow % 10 - 5) * gridStep;
    const float z = -20 - static_cast<float>(i / (gridRow * 10)) * gridStep;
    return krMatrix::fromTranslation({x, y, z});
}

class BoxItem : public krVideoItem_OGL {
public:
    BoxItem(krModule* m, krVideo_OGL* v, GLuint boxList, uintptr_t program)
        : krVideoItem_OGL(m, true, v), part(this, boxList) {
        part.sortAs(reinterpret_cast<krShader_OGL*>(program));
    }
    void draw() override {
        video->queueOpaque(&part);
        video->addPolygons(12);
    }

private:
    struct Part : krVideoItem_OGL {
        Part(BoxItem* owner, GLuint l) : krVideoItem_OGL(owner->module, false, owner->video), list(l) {}
        void sortAs(krShader_OGL* key) { shader = key; }
        void draw() override {
            glPushMatrix();
            glMultMatrixf(module->getMatrix().m);
            glCallList(list);
            glPopMatrix();
        }
        GLuint list;
    };
    Part part;
};

double seconds(uint64_t from, uint64_t to) {
    return static_cast<double>(to - from) / static_cast<double>(krSystem::counterFrequency());
}

struct Stats {
    double median, p95;
};

Stats stats(std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    const size_t n = ms.size();
    return {ms[n / 2], ms[std::min(n - 1, static_cast<size_t>(0.95 * static_cast<double>(n)))]};
}

// The bare loop: the state the engine's scene sets for opaque items, the same matrices, grouped by
// program as any renderer with programs draws them.
void rawFrame(krNativeWindow* native, GLuint boxList, const std::vector<krMatrix>& matrices) {
    krGL::clearFrame(krColor(0, 0, 0, 255));
    glViewport(0, 0, windowWidth, windowHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(60, static_cast<double>(windowWidth) / windowHeight, 0.1, 100);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_LIGHTING);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    for (size_t kind = 0; kind < programKinds; ++kind) {
        for (size_t i = kind; i < matrices.size(); i += programKinds) {
            glPushMatrix();
            glMultMatrixf(matrices[i].m);
            glCallList(boxList);
            glPopMatrix();
        }
    }
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    krWindowSystem::swap(native);
}
}

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : defaultFrames;
    auto* root = new krMain(argc, argv);
    root->attach();
    auto* window = new krWindow_OGL(root);
    window->attach();
    window->setFullscreen(false);
    window->setSize(windowWidth, windowHeight);
    if (!window->init()) {
        std::fprintf(stderr, "kerrin_bench_draw: no window (is there a display?)\n");
        return 1;
    }
    krVideo_OGL* video = window->getVideo_OGL();
    krNativeWindow* native = window->getNative();
    const GLuint boxList = makeBoxList();
    std::printf("%-6s %12s %12s %12s %12s %8s\n", "boxes", "engine med", "engine p95", "raw med", "raw p95", "ratio");
    for (int count : boxCounts) {
        auto* scene = new krModule(root);
        scene->attach();
        scene->setVisible(true);
        std::vector<krMatrix> matrices;
        for (int i = 0; i < count; ++i) {
            auto* box = new krModule(scene);
            box->attach();
            box->setVisible(true);
            box->setMatrix(boxMatrix(i));
            matrices.push_back(box->getMatrix());
            new BoxItem(box, video, boxList, 64 * (1 + static_cast<uintptr_t>(i) % programKinds));
        }
        auto* viewport = new krViewPort(video);
        viewport->attach();
        viewport->setVisible(true);
        viewport->setSize(0, 0, windowWidth, windowHeight);
        viewport->setModule(scene);

        std::vector<double> engine, raw;
        for (int f = 0; f < warmUpFrames + frames; ++f) {
            // Alternate, so that both sides see the same machine state.
            uint64_t t0 = krSystem::counter();
            window->update(0.01f);
            glFinish();
            uint64_t t1 = krSystem::counter();
            rawFrame(native, boxList, matrices);
            glFinish();
            uint64_t t2 = krSystem::counter();
            if (f < warmUpFrames) continue;
            engine.push_back(seconds(t0, t1) * 1000);
            raw.push_back(seconds(t1, t2) * 1000);
        }
        const Stats e = stats(engine), r = stats(raw);
        std::printf("%-6d %9.3f ms %9.3f ms %9.3f ms %9.3f ms %8.3f\n", count, e.median, e.p95, r.median, r.p95,
                    e.median / r.median);
        std::fflush(stdout);
        viewport->deinit();
        viewport->release();
        scene->deinit();
        scene->release();
    }
    glDeleteLists(boxList, 1);
    root->deinit();
    root->release();
    return 0;
}
