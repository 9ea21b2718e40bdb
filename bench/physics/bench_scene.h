// The scene and the measure that both worlds of the physics benchmark share. The two worlds live
// in separate files, since the peer's headers and the engine's math cannot meet in one.
#pragma once

#include <chrono>
#include <cmath>

namespace bench {

constexpr float step = 0.002f;
constexpr int substeps = 3000;
constexpr float spacing = 1.5f;
constexpr float dropHeight = 1.5f;

struct Window {
    const char* name;
    int first, last;
};
inline constexpr Window windows[] = {{"falling", 1, 250}, {"settling", 300, 1300}, {"resting", 2500, 3000}};

struct Result {
    double ms[3] = {};
    int awake = 0;
};

// Position of box i of n on the grid, centred on the origin.
inline void place(int i, int n, float& x, float& z) {
    const int side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(n))));
    x = (static_cast<float>(i % side) - side / 2.0f) * spacing;
    z = (static_cast<float>(i / side) - side / 2.0f) * spacing;
}

inline float floorSize(int n) { return std::ceil(std::sqrt(static_cast<float>(n))) * spacing + 20; }

// Steps the world `substeps` times, averaging the time of a substep over each window.
template <class Step>
Result measure(Step stepOnce) {
    Result r;
    int counted[3] = {};
    for (int s = 1; s <= substeps; ++s) {
        const auto t0 = std::chrono::steady_clock::now();
        stepOnce();
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
        for (int w = 0; w < 3; ++w)
            if (s >= windows[w].first && s <= windows[w].last) {
                r.ms[w] += ms;
                ++counted[w];
            }
    }
    for (int w = 0; w < 3; ++w) r.ms[w] /= counted[w];
    return r;
}

// The scene in libbullet.
Result runBullet(int n);

}  // namespace bench
