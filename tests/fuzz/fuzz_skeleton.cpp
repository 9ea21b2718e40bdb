// Arbitrary bytes as a skeleton file, loaded by an object that has a weighted mesh and a
// sub-object a bone may name, then posed for a few frames with an animation on every bone, so
// that the address sanitizer sees any parent, count or name the reader failed to check.
#include <cstdint>
#include <cstdlib>

#include "render/krObject.h"
#include "render/krSkeleton.h"

namespace {

void check(bool holds) {
    if (!holds) std::abort();
}

// Keeps the sums the targets compute from being optimised away.
volatile float sink;

// Objects that run no companion scripts.
class FuzzObject : public krObject {
public:
    explicit FuzzObject(krModule* owner) : krObject(owner) {}
    void loadScript(const std::string&) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > UINT32_MAX) return 0;
    auto* object = new FuzzObject(nullptr);
    auto* hat = new FuzzObject(object);
    hat->attach();
    hat->name = "hat";
    auto* skeleton = new krSkeleton(object, 3, 2);
    skeleton->attach();
    object->setSkeleton(skeleton);
    skeleton->loadFromMemory("fuzz.skeleton", data, static_cast<uint32_t>(size));
    skeleton->setVisible(true);
    for (int32_t i = 0; i < skeleton->getBoneCount(); ++i) {
        const krBone& b = skeleton->bone(i);
        check(b.parent < i);
        check(b.useCount >= 1);
    }
    for (int frame = 0; frame < 3; ++frame) object->update(0.01f);
    float sum = 0;
    for (int32_t i = -1; i <= skeleton->getBoneCount(); ++i) sum += skeleton->skinMatrix(i).m[12];
    skeleton->addGroup("all", {"hat", skeleton->getBoneCount() ? skeleton->bone(0).name : ""});
    skeleton->setVisible(false);
    object->deinit();
    object->release();
    sink = sum;
    return 0;
}
