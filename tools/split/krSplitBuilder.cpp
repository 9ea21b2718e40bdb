// Measuring placed meshes with the engine's loader and building the tree of splits over them.
#include "krSplitBuilder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/krBox.h"
#include "render/krMeshFileWriter.h"
#include "render/krObject.h"

namespace {

// An object loaded only for its bounds: a content tool runs no companion scripts.
class BoundsProbe : public krObject {
public:
    BoundsProbe() : krObject(nullptr) {}
    void loadScript(const std::string&) override {}
};

struct Leaf {
    krMeshFile::LeafRecord record{};
    krBox box;
};

struct Node {
    krBox box;
    std::vector<size_t> leaves;
    std::vector<Node> children;
};

void copy(float (&out)[3], const krVector3& v) {
    out[0] = v.x;
    out[1] = v.y;
    out[2] = v.z;
}

bool measure(const krPlacement& p, const std::filesystem::path& listDir, const std::filesystem::path& outputDir,
             Leaf& leaf, std::string& error) {
    const std::filesystem::path source = listDir / p.file;
    std::ifstream in(source, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string where = "line " + std::to_string(p.line) + ": ";
    if (!in.good() && !in.eof()) {
        error = where + "cannot read '" + source.string() + "'";
        return false;
    }
    if (bytes.empty() || bytes.size() > UINT32_MAX) {
        error = where + "'" + source.string() + "' is empty, missing or too large";
        return false;
    }
    auto* probe = new BoundsProbe();
    probe->position = p.position;
    probe->rotation = p.rotation;
    probe->loadFromMemory(p.file, bytes.data(), static_cast<uint32_t>(bytes.size()));
    leaf.box = probe->box;
    const float radius = probe->radius;
    probe->deinit();
    probe->release();
    if (!(leaf.box.min.x <= leaf.box.max.x)) {
        error = where + "'" + source.string() + "' holds no geometry";
        return false;
    }

    krMeshFile::LeafRecord& r = leaf.record;
    copy(r.boxMin, leaf.box.min);
    copy(r.boxMax, leaf.box.max);
    r.radius = radius;
    r.type = p.type;
    copy(r.position, p.position);
    r.rotation[0] = p.rotation.x;
    r.rotation[1] = p.rotation.y;
    r.rotation[2] = p.rotation.z;
    r.rotation[3] = p.rotation.w;
    const std::string file =
        std::filesystem::absolute(source).lexically_normal().lexically_relative(std::filesystem::absolute(outputDir).lexically_normal()).generic_string();
    // The engine looks files up by exact path, so a leaf can only name files below its tree.
    if (file.rfind("../", 0) == 0) {
        error = where + "'" + source.string() + "' lies outside the split file's folder";
        return false;
    }
    if (!krMeshFile::setName(r.file, file)) {
        error = where + "the path '" + file + "' is longer than the 63 characters a leaf holds";
        return false;
    }
    if (!krMeshFile::setName(r.name, p.name)) {
        error = where + "the name '" + p.name + "' is longer than the 31 characters a leaf holds";
        return false;
    }
    return true;
}

// Halves the leaves at the median of their centres along the longest side of the centres'
// spread until a split holds no more than the options allow.
Node build(const std::vector<Leaf>& leaves, std::vector<size_t> members, size_t limit) {
    Node node;
    node.box.makeEmpty();
    for (size_t i : members) node.box.extend(leaves[i].box);
    if (members.size() <= limit) {
        node.leaves = std::move(members);
        return node;
    }
    krBox spread;
    spread.makeEmpty();
    for (size_t i : members) spread.extend(leaves[i].box.centre());
    const krVector3 s = spread.size();
    const int axis = s.x >= s.y && s.x >= s.z ? 0 : s.y >= s.z ? 1 : 2;
    auto along = [&](size_t i) {
        const krVector3 c = leaves[i].box.centre();
        return axis == 0 ? c.x : axis == 1 ? c.y : c.z;
    };
    std::stable_sort(members.begin(), members.end(), [&](size_t a, size_t b) { return along(a) < along(b); });
    const auto half = members.begin() + static_cast<std::ptrdiff_t>(members.size() / 2);
    node.children.push_back(build(leaves, std::vector<size_t>(members.begin(), half), limit));
    node.children.push_back(build(leaves, std::vector<size_t>(half, members.end()), limit));
    return node;
}

void write(krChunkWriter& w, const Node& node, const std::vector<Leaf>& leaves) {
    w.begin(krMeshFile::splitId);
    krMeshFile::SplitRecord r{};
    copy(r.boxMin, node.box.min);
    copy(r.boxMax, node.box.max);
    // The split's sphere sits at its box's centre and holds the whole box.
    r.radius = length(node.box.size()) / 2;
    w.put(r);
    for (const Node& child : node.children) write(w, child, leaves);
    for (size_t i : node.leaves) {
        w.begin(krMeshFile::leafId);
        w.put(leaves[i].record);
        w.end();
    }
    w.end();
}

}  // namespace

bool krBuildSplitTree(const std::vector<krPlacement>& placements, const std::string& listDir,
                      const std::string& outputDir, const krSplitOptions& options, std::string& file,
                      std::string& error) {
    std::vector<Leaf> leaves(placements.size());
    std::vector<size_t> all;
    for (size_t i = 0; i < placements.size(); ++i) {
        if (!measure(placements[i], listDir, outputDir, leaves[i], error)) return false;
        all.push_back(i);
    }
    krChunkWriter w;
    w.begin(krMeshFile::splitTreeId);
    write(w, build(leaves, all, std::max<size_t>(options.leavesPerSplit, 1)), leaves);
    w.end();
    if (w.data().size() > UINT32_MAX) {
        error = "the split file would be larger than its chunk sizes can say";
        return false;
    }
    file = w.data();
    return true;
}
