// Draws 100 animated characters of about 5,000 vertices and 50 bones each: skinned on the
// processor, skinned in the vertex shader, and the same vertices unskinned in a bare OpenGL loop,
// and prints the frame times side by side. Each engine frame takes the whole way: the skeletons
// sample and mix their animation and compute their bones, the walk queues the mesh shaders, and
// these blend every vertex into their stream buffers (processor) or upload each group's palette
// and call its list (vertex shader). The bare loop calls one display list per character with the
// same vertices in their bind pose, at the same matrices, with nothing animated.
//
// Usage: kerrin_bench_skin [frames]   (under a display, e.g. xvfb-run -a kerrin_bench_skin; run it
// where data.kr lies, as the build places it beside the program, for the stock skin shaders)
#include "bench_timing.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "core/krMain.h"
#include "interface/krCameraFlying.h"
#include "krProgram.h"
#include "platform/krSystem.h"
#include "platform/krWindowSystem.h"
#include "render/krMesh.h"
#include "render/krObject.h"
#include "render/krSkeleton.h"
#include "render/krSkeletonFileWriter.h"
#include "render/krViewPort.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"

namespace {
using benchTiming::seconds;
using benchTiming::stats;
using benchTiming::Stats;
constexpr int characters = 100;
constexpr int boneCount = 50;
// Each bone carries a tube of rings around it: rings x sides vertices, 100 a bone.
constexpr int rings = 5, sides = 20;
constexpr float segment = 0.1f, tubeRadius = 0.04f;
constexpr int warmUpFrames = 5;
constexpr int defaultFrames = 60;
constexpr int32_t windowWidth = 640, windowHeight = 480;
// Characters stand on a grid in front of the eye.
constexpr int gridRow = 10;
constexpr float gridStep = 1.2f;
constexpr float gridDepth = -14;
// Keys of the animation, over one second.
constexpr int keys = 10;

// Five chains of ten bones from a root at the origin, fanned out like fingers of a hand.
std::vector<krSkeletonFileBone> bones() {
    std::vector<krSkeletonFileBone> list;
    for (int b = 0; b < boneCount; ++b) {
        krSkeletonFileBone bone;
        bone.name = "bone" + std::to_string(b);
        const bool chainStart = b % 10 == 0;
        bone.parent = chainStart ? -1 : b - 1;
        const float fan = (static_cast<float>(b / 10) - 2) * 0.25f;
        bone.position = chainStart ? krVector3(fan, 0, 0) : krVector3(0, segment, 0);
        list.push_back(bone);
    }
    return list;
}

// Every bone bends back and forth about z.
std::vector<krAnimationFileTrack> sway() {
    std::vector<krAnimationFileTrack> tracks;
    for (const krSkeletonFileBone& b : bones()) {
        krAnimationFileTrack t{b.name, {}};
        for (int k = 0; k < keys; ++k) {
            const float angle = 0.12f * std::sin(krTwoPi * static_cast<float>(k) / keys);
            t.keys.push_back({b.position, krQuat::fromAxisAngle(angle, krVector3::axisZ)});
        }
        tracks.push_back(t);
    }
    return tracks;
}

// The tubes in the bind pose of the skeleton, each ring weighted between its bone and the one
// below, one material.
void makeMesh(krMesh& mesh) {
    std::vector<krVertex> vertices;
    std::vector<uint32_t> indices;
    std::vector<krBoneWeight> weights;
    const std::vector<krSkeletonFileBone> list = bones();
    for (int b = 0; b < boneCount; ++b) {
        const float fan = (static_cast<float>(b / 10) - 2) * 0.25f;
        const float base = static_cast<float>(b % 10) * segment;
        const auto first = static_cast<uint32_t>(vertices.size());
        for (int r = 0; r < rings; ++r) {
            const float along = static_cast<float>(r) / (rings - 1);
            // The lowest ring leans on the bone below, where there is one.
            const float share = list[static_cast<size_t>(b)].parent >= 0 ? 0.5f * (1 - along) : 0;
            for (int s = 0; s < sides; ++s) {
                const float a = krTwoPi * static_cast<float>(s) / sides;
                const krVector3 normal(std::cos(a), 0, std::sin(a));
                vertices.push_back({krVector3(fan, base + along * segment, 0) + normal * tubeRadius, normal,
                                    krColor(200, 180, 150, 255), static_cast<float>(s) / sides, along});
                weights.push_back({b, 1 - share});
                weights.push_back({share > 0 ? b - 1 : 0, share});
                weights.push_back({});
                weights.push_back({});
            }
        }
        for (int r = 0; r + 1 < rings; ++r)
            for (int s = 0; s < sides; ++s) {
                const uint32_t a = first + static_cast<uint32_t>(r * sides + s);
                const uint32_t c = first + static_cast<uint32_t>(r * sides + (s + 1) % sides);
                indices.insert(indices.end(), {a, a + sides, c, c, a + sides, c + sides});
            }
    }
    mesh.ownVertices(std::move(vertices));
    mesh.ownIndices(std::move(indices));
    mesh.weights = std::move(weights);
    krMaterial m;
    m.vertexCount = mesh.vertexCount;
    m.indexCount = mesh.indexCount;
    m.ambient = m.diffuse = krColor(200, 200, 200, 255);
    m.specular = m.emission = krColor(0, 0, 0, 255);
    mesh.materials = {m};
    mesh.kind = krMeshFile::kindDrawn;
}

krVector3 place(int i) {
    return {(static_cast<float>(i % gridRow) - gridRow / 2) * gridStep,
            (static_cast<float>(i / gridRow) - 5) * gridStep * 0.6f, gridDepth};
}

void writeFile(const char* path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

double median(std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    return ms[ms.size() / 2];
}

// The bind pose of one character as a hand-written renderer would keep it: one display list.
GLuint makeList(const krMesh& mesh) {
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    const krVertex* v = mesh.vertices;
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(krVertex), &v->position);
    glEnableClientState(GL_NORMAL_ARRAY);
    glNormalPointer(GL_FLOAT, sizeof(krVertex), &v->normal);
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_UNSIGNED_BYTE, sizeof(krVertex), &v->color);
    std::vector<uint16_t> shorts(mesh.indices, mesh.indices + mesh.indexCount);
    glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_SHORT, shorts.data());
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glEndList();
    return list;
}

void rawFrame(krNativeWindow* native, GLuint list) {
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
    for (int i = 0; i < characters; ++i) {
        glPushMatrix();
        glMultMatrixf(krMatrix::fromTranslation(place(i)).m);
        glCallList(list);
        glPopMatrix();
    }
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    krWindowSystem::swap(native);
}

// A scene of the characters, made with the video's skinning setting as it stands.
krModule* makeScene(krModule* window, const krMesh& proto) {
    auto* scene = new krModule(window);
    scene->attach();
    scene->setVisible(true);
    for (int i = 0; i < characters; ++i) {
        auto* o = new krObject(scene);
        o->attach();
        o->setVisible(true);
        o->setPosition(place(i));
        o->radius = 2;
        krSkeleton* s = o->loadSkeleton("bench.skeleton");
        for (int b = 0; b < boneCount; ++b) s->useBone(b, 1);
        krAnimationInstance* a = s->loadAnimation("sway", "bench.anim", 0, 0);
        a->time = static_cast<float>(i) / characters;
        krMesh mesh;
        mesh.ownVertices(std::vector<krVertex>(proto.vertices, proto.vertices + proto.vertexCount));
        mesh.ownIndices(std::vector<uint32_t>(proto.indices, proto.indices + proto.indexCount));
        mesh.weights = proto.weights;
        mesh.materials = proto.materials;
        mesh.kind = proto.kind;
        o->addMesh(mesh);
    }
    return scene;
}

}  // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : defaultFrames;
    {
        krChunkWriter s, a;
        krWriteSkeleton(s, "bench", bones());
        krWriteAnimation(a, "sway", 1, sway());
        writeFile("bench.skeleton", s.data());
        writeFile("bench.anim", a.data());
    }
    // The script host too: the stock shaders are scripts that name the engine's constants.
    krProgram::start(argc, argv);
    krMain* root = krProgram::root();
    auto* window = new krWindow_OGL(root);
    window->attach();
    window->setFullscreen(false);
    window->setSize(windowWidth, windowHeight);
    krVideo_OGL* video = window->getVideo_OGL();
    video->glsl = true;
    video->hardwareSkinning = true;
    if (!window->init()) {
        std::fprintf(stderr, "kerrin_bench_skin: no window (is there a display?)\n");
        return 1;
    }
    if (!video->hardwareSkinning) std::fprintf(stderr, "kerrin_bench_skin: no shaders here, both engine runs skin on the processor\n");
    auto* camera = new krFlyingCamera(root);
    camera->attach();

    krMesh proto;
    makeMesh(proto);
    std::printf("%d characters of %d vertices, %d triangles and %d bones, in a %dx%d window\n", characters,
                proto.vertexCount, proto.indexCount / 3, boneCount, windowWidth, windowHeight);

    const bool hardware = video->hardwareSkinning;
    video->hardwareSkinning = false;
    krModule* software = makeScene(window, proto);
    video->hardwareSkinning = hardware;
    krModule* shaded = makeScene(window, proto);
    auto* viewport = new krViewPort(video);
    viewport->attach();
    viewport->setVisible(true);
    viewport->setSize(0, 0, windowWidth, windowHeight);
    viewport->setCamera(camera);

    // The three sides take turns frame by frame, so that all see the same machine.
    const GLuint list = makeList(proto);
    std::vector<double> swMs, hwMs, rawMs;
    for (int f = 0; f < warmUpFrames + frames; ++f) {
        for (krModule* scene : {software, shaded}) {
            // The other scene neither draws nor animates.
            for (krModule* s : {software, shaded}) {
                s->setVisible(s == scene);
                s->setEnabled(s == scene);
            }
            viewport->setModule(scene);
            const uint64_t t0 = krSystem::counter();
            window->update(0.01f);
            glFinish();
            if (f >= warmUpFrames) (scene == software ? swMs : hwMs).push_back(seconds(t0, krSystem::counter()) * 1000);
        }
        const uint64_t t0 = krSystem::counter();
        rawFrame(window->getNative(), list);
        glFinish();
        if (f >= warmUpFrames) rawMs.push_back(seconds(t0, krSystem::counter()) * 1000);
    }
    const double sw = median(swMs), hw = median(hwMs);
    // The animation alone: the skeletons of one scene sampling, mixing and computing their bones.
    std::vector<double> animateMs;
    software->setEnabled(true);
    for (int f = 0; f < frames; ++f) {
        const uint64_t t0 = krSystem::counter();
        software->update(0.01f);
        animateMs.push_back(seconds(t0, krSystem::counter()) * 1000);
    }
    const double raw = median(rawMs);
    std::printf("%-34s %10s %8s\n", "path", "frame med", "ratio");
    std::printf("%-34s %7.2f ms %8.2f\n", "engine, skinned on the processor", sw, sw / raw);
    std::printf("%-34s %7.2f ms %8.2f\n", "engine, skinned in the shader", hw, hw / raw);
    std::printf("%-34s %7.2f ms %8.2f\n", "bare OpenGL, bind pose", raw, 1.0);
    std::printf("%-34s %7.2f ms\n", "animating 100 skeletons, alone", median(animateMs));
    glDeleteLists(list, 1);
    krProgram::stop();
    return 0;
}
