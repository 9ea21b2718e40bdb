// Physics benchmark. N unit boxes (1 kg) stand on a square grid 1.5 m apart, their undersides
// 1.5 m above a large floor, and are let go at once; each world steps 3000 substeps of 0.002 s.
// Milliseconds per substep are averaged over three windows: falling (substeps 1 to 250, before
// the first box lands at about 275), settling (300 to 1300, while the boxes come to rest) and
// resting (2500 to 3000, when all of them sleep in both worlds). The same scene runs through the
// engine's world and through a discrete dynamics world of libbullet (box shapes, fixed step
// 0.002 s, its default sleeping) in this one process, one after the other.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench_scene.h"
#include "core/krMain.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "platform/krSystem.h"

using namespace bench;

namespace {

Result runKerrin(krMain* root, int n) {
    auto* world = new krPhysics(root);
    world->attach();
    auto* floor = new krStaticObj(world);
    floor->attach();
    floor->setPosition({0, -0.5f, 0});
    const float size = floorSize(n);
    floor->genMeshBox({size, 1, size});
    for (int i = 0; i < n; ++i) {
        auto* box = new krPhysObj(world);
        box->attach();
        box->genMeshBox({1, 1, 1});
        box->setMass(1);
        float x, z;
        place(i, n, x, z);
        box->setPosition({x, dropHeight + 0.5f, z});
        box->activate();
    }
    Result r = measure([world] { world->update(step); });
    r.awake = static_cast<int>(world->getActiveBodies().size());
    world->dispose();
    return r;
}

}  // namespace

int main(int argc, char** argv) {
    krSystem::markStackBase();
    auto* root = new krMain(0, nullptr);
    root->attach();
    std::vector<int> counts;
    for (int i = 1; i < argc; ++i) counts.push_back(std::atoi(argv[i]));
    if (counts.empty()) counts = {100, 1000, 4000};

    std::printf("%6s  %-9s %12s %12s %8s\n", "boxes", "phase", "kerrin ms", "bullet ms", "ratio");
    for (int n : counts) {
        const Result k = runKerrin(root, n);
        const Result b = runBullet(n);
        for (int w = 0; w < 3; ++w)
            std::printf("%6d  %-9s %12.4f %12.4f %8.2f\n", n, windows[w].name, k.ms[w], b.ms[w], k.ms[w] / b.ms[w]);
        std::printf("%6d  awake at the end: kerrin %d, bullet %d\n", n, k.awake, b.awake);
        std::fflush(stdout);
    }
    root->dispose();
    return 0;
}
