// Draws N boxes through the engine and the same boxes in a bare OpenGL loop, and prints the frame
// times of both and their ratio. The engine's boxes are scene objects made by genMeshBox, so they
// take the whole way: object updates, the walk with its view test, mesh items entering the opaque
// queue, the shader sort, each mesh shader's display list with its material state. The bare loop
// gives each box a display list of the same geometry and state, as the engine does, and draws
// them at the same matrices.
//
// Usage: kerrin_bench_draw [frames]   (under a display, e.g. xvfb-run -a kerrin_bench_draw; run it
// where data.kr lies, as the build places it beside the program, for the boxes' textures)
#include "bench_timing.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/krMain.h"
#include "interface/krCameraFlying.h"
#include "platform/krSystem.h"
#include "platform/krWindowSystem.h"
#include "render/krMeshShapes.h"
#include "render/krObject.h"
#include "render/krViewPort.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krTextures_OGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"

namespace {
using benchTiming::seconds;
using benchTiming::stats;
using benchTiming::Stats;
constexpr int boxCounts[] = {100, 500, 1000, 2000, 4000, 8000};
constexpr int warmUpFrames = 5;
constexpr int defaultFrames = 40;
constexpr int32_t windowWidth = 640, windowHeight = 480;
// Boxes stand on a grid of layers, this many to a row and rows to a layer, all inside the view
// so that both sides draw every one of them (the engine's view test passes them all).
constexpr int gridRow = 40;
constexpr int gridRows = 20;
constexpr float gridStep = 0.75f;
constexpr float firstLayer = -20;
const krVector3 boxSize(0.5f, 0.5f, 0.5f);

krVector3 boxPosition(int i) {
    const float x = static_cast<float>(i % gridRow - gridRow / 2) * gridStep;
    const float y = static_cast<float>(i / gridRow % gridRows - gridRows / 2) * gridStep;
    const float z = firstLayer - static_cast<float>(i / (gridRow * gridRows)) * 2 * gridStep;
    return {x, y, z};
}

void setMaterialColor(GLenum which, const krColorF& c) { glMaterialfv(GL_FRONT_AND_BACK, which, &c.r); }

// The box of genMeshBox as a hand-written renderer would hold it: one display list with its
// material, its colour map (fixed-function drawing samples no other), and its geometry from
// vertex arrays.
GLuint makeBoxList(GLuint colorMap) {
    krMesh mesh;
    krMakeBoxMesh(mesh, boxSize);
    const krMaterial& m = mesh.materials[0];
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    setMaterialColor(GL_AMBIENT, krColorF(m.ambient));
    setMaterialColor(GL_DIFFUSE, krColorF(m.diffuse));
    setMaterialColor(GL_EMISSION, lit(m.emission, 8));
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 0);
    setMaterialColor(GL_SPECULAR, krColorF(0, 0, 0, 1));
    glColor4f(1, 1, 1, 1);
    if (colorMap) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, colorMap);
    }
    const krVertex* v = mesh.vertices;
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(krVertex), &v->position);
    glEnableClientState(GL_NORMAL_ARRAY);
    glNormalPointer(GL_FLOAT, sizeof(krVertex), &v->normal);
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_UNSIGNED_BYTE, sizeof(krVertex), &v->color);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glTexCoordPointer(2, GL_FLOAT, sizeof(krVertex), &v->u);
    std::vector<uint16_t> indices(mesh.indices, mesh.indices + mesh.indexCount);
    glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_SHORT, indices.data());
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisable(GL_TEXTURE_2D);
    glEndList();
    return list;
}

// The bare loop: the state the engine's scene sets for opaque items, the same view and matrices.
struct RawBox {
    krMatrix matrix;
    GLuint list;
};

void rawFrame(krNativeWindow* native, const std::vector<RawBox>& boxes) {
    krGL::clearFrame(krColor(0, 0, 0, 255));
    glViewport(0, 0, windowWidth, windowHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(60, static_cast<double>(windowWidth) / windowHeight, 0.1, 100);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(0, 0, 0, 0, 0, -1, 0, 1, 0);
    glEnable(GL_LIGHTING);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    for (const RawBox& box : boxes) {
        glPushMatrix();
        glMultMatrixf(box.matrix.m);
        glCallList(box.list);
        glPopMatrix();
    }
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
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
        std::fprintf(stderr, "kerrin_bench_draw: no window (is there a display?)\n");
        return 1;
    }
    krVideo_OGL* video = window->getVideo_OGL();
    krNativeWindow* native = window->getNative();
    // The same texture as the engine's boxes, or none where the engine has none either.
    krTextures_OGL* textures = video->getTextures();
    const GLuint colorMap = textures->load("textures/colormap.dds");
    if (!colorMap) std::fprintf(stderr, "kerrin_bench_draw: no data.kr here, the boxes go untextured\n");
    // Looks down -Z from the origin, as the bare loop does.
    auto* camera = new krFlyingCamera(root);
    camera->attach();

    std::printf("%-6s %12s %12s %12s %12s %8s\n", "boxes", "engine med", "engine p95", "raw med", "raw p95", "ratio");
    for (int count : boxCounts) {
        auto* scene = new krModule(window);
        scene->attach();
        scene->setVisible(true);
        std::vector<RawBox> raws;
        for (int i = 0; i < count; ++i) {
            auto* box = new krObject(scene);
            box->attach();
            box->setVisible(true);
            box->setPosition(boxPosition(i));
            box->genMeshBox(boxSize);
            raws.push_back({box->getMatrix(), makeBoxList(colorMap)});
        }
        auto* viewport = new krViewPort(video);
        viewport->attach();
        viewport->setVisible(true);
        viewport->setSize(0, 0, windowWidth, windowHeight);
        viewport->setModule(scene);
        viewport->setCamera(camera);

        std::vector<double> engine, raw;
        for (int f = 0; f < warmUpFrames + frames; ++f) {
            // Alternate, so that both sides see the same machine state.
            uint64_t t0 = krSystem::counter();
            window->update(0.01f);
            glFinish();
            uint64_t t1 = krSystem::counter();
            rawFrame(native, raws);
            glFinish();
            uint64_t t2 = krSystem::counter();
            if (f < warmUpFrames) continue;
            engine.push_back(seconds(t0, t1) * 1000);
            raw.push_back(seconds(t1, t2) * 1000);
        }
        if (video->getPolyCount() != count * 12)
            std::fprintf(stderr, "kerrin_bench_draw: the engine drew %d triangles, not %d\n", video->getPolyCount(),
                         count * 12);
        const Stats e = stats(engine), r = stats(raw);
        std::printf("%-6d %9.3f ms %9.3f ms %9.3f ms %9.3f ms %8.3f\n", count, e.median, e.p95, r.median, r.p95,
                    e.median / r.median);
        std::fflush(stdout);
        viewport->deinit();
        viewport->release();
        scene->deinit();
        scene->release();
        for (const RawBox& box : raws) glDeleteLists(box.list, 1);
    }
    textures->release("textures/colormap.dds");
    root->deinit();
    root->release();
    return 0;
}
