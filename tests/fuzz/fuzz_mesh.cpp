// Arbitrary bytes as a mesh or split-tree file, loaded into an object tree the way a level is.
// Every mesh that reaches addMesh is walked through its indices, material ranges and weights,
// so that the address sanitizer sees any number the loader failed to check.
#include <cstdint>
#include <cstdlib>

#include "render/krMesh.h"
#include "render/krObject.h"

namespace {

void check(bool holds) {
    if (!holds) std::abort();
}

// Objects that run no companion scripts (the script fuzzers cover those) and read every mesh
// as an item or a collision shape would.
class FuzzObject : public krObject {
public:
    explicit FuzzObject(krModule* owner) : krObject(owner) {}
    void loadScript(const std::string&) override {}
    krObject* createChild(int32_t, krModule* owner) override {
        auto* child = new FuzzObject(owner);
        child->attach();
        return child;
    }
    void addMesh(krMesh& mesh) override {
        check(mesh.inconsistency() == nullptr);
        float sum = 0;
        for (int32_t i = 0; i < mesh.indexCount; ++i) sum += mesh.vertices[mesh.indices[i]].position.x;
        for (const krMaterial& m : mesh.materials) {
            for (int32_t v = m.firstVertex; v < m.firstVertex + m.vertexCount; ++v) sum += mesh.vertices[v].u;
            for (int32_t i = m.firstIndex; i < m.firstIndex + m.indexCount; ++i)
                check(mesh.indices[i] - uint32_t(m.firstVertex) < uint32_t(m.vertexCount));
        }
        for (const krBoneWeight& w : mesh.weights) sum += w.weight;
        total += sum;
    }
    static float total;
};

float FuzzObject::total = 0;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    auto* object = new FuzzObject(nullptr);
    object->loadFromMemory("fuzz.mesh", data, static_cast<uint32_t>(size));
    object->deinit();
    object->release();
    return 0;
}
