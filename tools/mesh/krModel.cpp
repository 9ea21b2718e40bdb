// The shared parts of model reading.
#include "krModel.h"

#include <algorithm>
#include <cmath>

size_t krModel::material(const std::string& name) {
    for (size_t i = 0; i < materials.size(); ++i)
        if (materials[i].name == name) return i;
    materials.push_back({});
    materials.back().name = name;
    triangles.emplace_back();
    skinned.emplace_back();
    return materials.size() - 1;
}

uint8_t krUnitToByte(double value) {
    if (!(value > 0)) return 0;
    return static_cast<uint8_t>(std::lround(std::min(value, 1.0) * 255));
}
