// glTF 2.0 models, text or binary. The node tree of the scene is flattened: every primitive is
// placed by its node's world transform. Materials map their metal-roughness terms onto the
// engine's specular ones; texture images are named, never decoded.
//
// A skin becomes the skeleton: its joints are the bones, parents first, with the bind pose of
// the inverse bind matrices; the skinned primitives keep their bind-pose positions and take the
// four heaviest joint weights of each vertex. Each animation is sampled at evenly spaced times
// into a full pose of every bone.
#include <tiny_gltf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "core/krMatrix.h"
#include "krModel.h"

namespace {

// glTF transforms: column vectors, column-major storage, p' = M p.
using Mat4 = std::array<double, 16>;

constexpr Mat4 identity4{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Mat4 product(const Mat4& a, const Mat4& b) {
    Mat4 r{};
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row)
            for (int k = 0; k < 4; ++k) r[c * 4 + row] += a[k * 4 + row] * b[c * 4 + k];
    return r;
}

Mat4 localTransform(const tinygltf::Node& node) {
    if (node.matrix.size() == 16) {
        Mat4 m;
        for (int i = 0; i < 16; ++i) m[i] = node.matrix[i];
        return m;
    }
    Mat4 t = identity4, r = identity4, s = identity4;
    if (node.translation.size() == 3)
        for (int i = 0; i < 3; ++i) t[12 + i] = node.translation[i];
    if (node.rotation.size() == 4) {
        const double x = node.rotation[0], y = node.rotation[1], z = node.rotation[2], w = node.rotation[3];
        r = {1 - 2 * (y * y + z * z), 2 * (x * y + z * w),     2 * (x * z - y * w),     0,
             2 * (x * y - z * w),     1 - 2 * (x * x + z * z), 2 * (y * z + x * w),     0,
             2 * (x * z + y * w),     2 * (y * z - x * w),     1 - 2 * (x * x + y * y), 0,
             0,                       0,                       0,                       1};
    }
    if (node.scale.size() == 3)
        for (int i = 0; i < 3; ++i) s[i * 5] = node.scale[i];
    return product(t, product(r, s));
}

krVector3 place(const Mat4& m, const float* p) {
    return {float(m[0] * p[0] + m[4] * p[1] + m[8] * p[2] + m[12]),
            float(m[1] * p[0] + m[5] * p[1] + m[9] * p[2] + m[13]),
            float(m[2] * p[0] + m[6] * p[1] + m[10] * p[2] + m[14])};
}

// Normals go through the cofactors of the upper 3x3, which is the inverse transpose times the
// determinant; the length is made good later.
krVector3 turnNormal(const Mat4& m, const float* n) {
    const krVector3 c0{float(m[0]), float(m[1]), float(m[2])};
    const krVector3 c1{float(m[4]), float(m[5]), float(m[6])};
    const krVector3 c2{float(m[8]), float(m[9]), float(m[10])};
    const krVector3 a = cross(c1, c2), b = cross(c2, c0), c = cross(c0, c1);
    const krVector3 v{n[0], n[1], n[2]};
    const float sign = dot(c0, a) < 0 ? -1.0f : 1.0f;
    return krVector3(a.x * v.x + b.x * v.y + c.x * v.z, a.y * v.x + b.y * v.y + c.y * v.z,
                     a.z * v.x + b.z * v.y + c.z * v.z) * sign;
}

bool mirrors(const Mat4& m) {
    const double det = m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
                       m[8] * (m[1] * m[6] - m[5] * m[2]);
    return det < 0;
}

class GltfReader {
public:
    GltfReader(const tinygltf::Model& model, krModel& out, std::string& error) : in(model), out(out), error(error) {}

    bool read() {
        for (size_t i = 0; i < in.materials.size(); ++i) addMaterial(in.materials[i]);
        if (!findParents() || !readSkin()) return false;
        std::vector<int> roots;
        if (!in.scenes.empty()) {
            const size_t scene = in.defaultScene >= 0 && size_t(in.defaultScene) < in.scenes.size() ? size_t(in.defaultScene) : 0;
            roots = in.scenes[scene].nodes;
        } else {
            for (size_t i = 0; i < in.nodes.size(); ++i) roots.push_back(int(i));
        }
        for (int n : roots)
            if (!node(n, identity4, 0)) return false;
        for (size_t i = 0; i < in.animations.size() && !jointNodes.empty(); ++i)
            if (!readAnimation(in.animations[i], i)) return false;
        return true;
    }

private:
    // Deeper than any modelled hierarchy; a node tree that loops back on itself stops here.
    static constexpr int maxDepth = 64;

    bool fail(const std::string& text) {
        error = text;
        return false;
    }

    std::string textureName(int texture) const {
        if (texture < 0 || size_t(texture) >= in.textures.size()) return {};
        const int image = in.textures[size_t(texture)].source;
        if (image < 0 || size_t(image) >= in.images.size()) return {};
        const tinygltf::Image& i = in.images[size_t(image)];
        // An image embedded in the file has no name to give; the material goes without it.
        return i.uri.rfind("data:", 0) == 0 ? std::string() : i.uri;
    }

    void addMaterial(const tinygltf::Material& m) {
        krModelMaterial& mat = out.materials[out.material(m.name)];
        const std::vector<double>& base = m.pbrMetallicRoughness.baseColorFactor;
        if (base.size() == 4) {
            mat.diffuse = {krUnitToByte(base[0]), krUnitToByte(base[1]), krUnitToByte(base[2]), krUnitToByte(base[3])};
            mat.ambient = mat.diffuse;
        }
        if (m.emissiveFactor.size() == 3)
            mat.emission = {krUnitToByte(m.emissiveFactor[0]), krUnitToByte(m.emissiveFactor[1]),
                            krUnitToByte(m.emissiveFactor[2]), 255};
        // Smooth surfaces shine brightly and narrowly.
        const double gloss = 1 - m.pbrMetallicRoughness.roughnessFactor;
        mat.specular = {255, 255, 255, 255};
        mat.specularStrength = krUnitToByte(gloss);
        mat.shininess = krUnitToByte(gloss / 2);
        mat.alphaMode = m.alphaMode == "BLEND" ? krMeshFile::alphaBlend
                        : m.alphaMode == "MASK" ? krMeshFile::alphaTest
                                                : krMeshFile::alphaNone;
        mat.diffuseTexture = textureName(m.pbrMetallicRoughness.baseColorTexture.index);
        mat.normalTexture = textureName(m.normalTexture.index);
    }

    bool node(int index, const Mat4& parent, int depth) {
        if (index < 0 || size_t(index) >= in.nodes.size()) return fail("a node refers to a node that is not there");
        if (depth >= maxDepth) return fail("nodes nested deeper than " + std::to_string(maxDepth));
        const tinygltf::Node& n = in.nodes[size_t(index)];
        const Mat4 world = product(parent, localTransform(n));
        if (n.mesh >= 0) {
            if (size_t(n.mesh) >= in.meshes.size()) return fail("node '" + n.name + "' refers to a mesh that is not there");
            const tinygltf::Mesh& mesh = in.meshes[size_t(n.mesh)];
            for (const tinygltf::Primitive& p : mesh.primitives)
                if (!primitive(p, world, n.skin >= 0 ? &mesh : nullptr)) return false;
        }
        for (int child : n.children)
            if (!node(child, world, depth + 1)) return false;
        return true;
    }

    // The accessor's elements as floats, `width` of them each; normalised integers become 0 to 1.
    bool floats(int index, int width, std::vector<float>& values) {
        values.clear();
        if (index < 0) return true;
        const tinygltf::Accessor* a = accessor(index);
        if (!a) return false;
        if (tinygltf::GetNumComponentsInType(uint32_t(a->type)) != width) return fail("an accessor of the wrong type");
        const int size = tinygltf::GetComponentSizeInBytes(uint32_t(a->componentType));
        const uint8_t* data;
        size_t stride;
        if (!locate(*a, size * width, data, stride)) return false;
        values.resize(a->count * size_t(width));
        for (size_t i = 0; i < a->count; ++i)
            for (int k = 0; k < width; ++k) values[i * width + k] = component(data + i * stride + size_t(k * size), a->componentType, a->normalized);
        return true;
    }

    bool indices(int index, size_t vertexCount, std::vector<uint32_t>& out) {
        out.clear();
        if (index < 0) {
            for (size_t i = 0; i < vertexCount; ++i) out.push_back(uint32_t(i));
            return true;
        }
        const tinygltf::Accessor* a = accessor(index);
        if (!a) return false;
        const int size = tinygltf::GetComponentSizeInBytes(uint32_t(a->componentType));
        if (a->type != TINYGLTF_TYPE_SCALAR || size < 1 || size > 4 || a->componentType == TINYGLTF_COMPONENT_TYPE_FLOAT)
            return fail("indices that are not integers");
        const uint8_t* data;
        size_t stride;
        if (!locate(*a, size, data, stride)) return false;
        for (size_t i = 0; i < a->count; ++i) {
            uint32_t v = 0;
            std::memcpy(&v, data + i * stride, size_t(size));
            if (v >= vertexCount) return fail("an index beyond the vertices");
            out.push_back(v);
        }
        return true;
    }

    const tinygltf::Accessor* accessor(int index) {
        if (size_t(index) >= in.accessors.size()) {
            fail("a primitive refers to an accessor that is not there");
            return nullptr;
        }
        const tinygltf::Accessor& a = in.accessors[size_t(index)];
        if (a.sparse.isSparse) {
            fail("sparse accessors are not supported");
            return nullptr;
        }
        return &a;
    }

    // Where the accessor's elements lie, checked against the buffer's real length.
    bool locate(const tinygltf::Accessor& a, int elementSize, const uint8_t*& data, size_t& stride) {
        if (elementSize <= 0) return fail("an accessor of an unknown component type");
        if (a.bufferView < 0 || size_t(a.bufferView) >= in.bufferViews.size()) return fail("an accessor without data");
        const tinygltf::BufferView& view = in.bufferViews[size_t(a.bufferView)];
        if (view.buffer < 0 || size_t(view.buffer) >= in.buffers.size()) return fail("a buffer view without a buffer");
        const std::vector<unsigned char>& buffer = in.buffers[size_t(view.buffer)].data;
        stride = view.byteStride ? view.byteStride : size_t(elementSize);
        const uint64_t start = uint64_t(view.byteOffset) + a.byteOffset;
        const uint64_t span = a.count ? uint64_t(a.count - 1) * stride + size_t(elementSize) : 0;
        if (view.byteOffset + view.byteLength > buffer.size() || start + span > view.byteOffset + view.byteLength)
            return fail("an accessor runs past its buffer");
        data = buffer.data() + start;
        return true;
    }

    static float component(const uint8_t* at, int type, bool normalized) {
        switch (type) {
        case TINYGLTF_COMPONENT_TYPE_FLOAT: {
            float f;
            std::memcpy(&f, at, 4);
            return f;
        }
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE: return normalized ? *at / 255.0f : *at;
        case TINYGLTF_COMPONENT_TYPE_BYTE: {
            const auto v = static_cast<int8_t>(*at);
            return normalized ? std::max(v / 127.0f, -1.0f) : v;
        }
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT: {
            uint16_t v;
            std::memcpy(&v, at, 2);
            return normalized ? v / 65535.0f : v;
        }
        case TINYGLTF_COMPONENT_TYPE_SHORT: {
            int16_t v;
            std::memcpy(&v, at, 2);
            return normalized ? std::max(v / 32767.0f, -1.0f) : v;
        }
        default: return 0;
        }
    }

    // skinnedMesh: the mesh of a skinned node, whose primitives keep their bind pose and weights.
    bool primitive(const tinygltf::Primitive& p, const Mat4& placedBy, const tinygltf::Mesh* skinnedMesh) {
        // The transform of a skinned node does not move its skin: the joints do.
        const Mat4& world = skinnedMesh ? identity4 : placedBy;
        const int mode = p.mode < 0 ? TINYGLTF_MODE_TRIANGLES : p.mode;
        // Points and lines have no surface to draw or to collide with.
        if (mode != TINYGLTF_MODE_TRIANGLES && mode != TINYGLTF_MODE_TRIANGLE_STRIP && mode != TINYGLTF_MODE_TRIANGLE_FAN)
            return true;
        auto attribute = [&](const char* name) {
            auto it = p.attributes.find(name);
            return it == p.attributes.end() ? -1 : it->second;
        };
        std::vector<float> positions, normals, uvs, colors;
        if (attribute("POSITION") < 0) return fail("a primitive without positions");
        if (!floats(attribute("POSITION"), 3, positions) || !floats(attribute("NORMAL"), 3, normals) ||
            !floats(attribute("TEXCOORD_0"), 2, uvs))
            return false;
        const int colorIndex = attribute("COLOR_0");
        int colorWidth = 4;
        if (colorIndex >= 0 && size_t(colorIndex) < in.accessors.size() && in.accessors[size_t(colorIndex)].type == TINYGLTF_TYPE_VEC3)
            colorWidth = 3;
        if (!floats(colorIndex, colorWidth, colors)) return false;
        const size_t count = positions.size() / 3;
        if ((!normals.empty() && normals.size() != count * 3) || (!uvs.empty() && uvs.size() != count * 2) ||
            (!colors.empty() && colors.size() != count * size_t(colorWidth)))
            return fail("a primitive whose attributes differ in length");
        std::vector<uint32_t> order;
        if (!indices(p.indices, count, order)) return false;
        std::vector<std::array<krBoneWeight, krWeightsPerVertex>> weights;
        if (skinnedMesh && !vertexWeights(p, count, skinnedMesh->name, weights)) return false;

        std::vector<krModelCorner> corners;
        for (uint32_t v : order) {
            krModelCorner c;
            c.position = place(world, &positions[v * 3]);
            if (!normals.empty()) c.normal = normalized(turnNormal(world, &normals[v * 3]));
            if (!uvs.empty()) {
                c.u = uvs[v * 2];
                c.v = uvs[v * 2 + 1];
            }
            if (!colors.empty()) {
                const float* k = &colors[v * size_t(colorWidth)];
                c.color = {krUnitToByte(k[0]), krUnitToByte(k[1]), krUnitToByte(k[2]), colorWidth == 4 ? krUnitToByte(k[3]) : uint8_t(255)};
            }
            if (skinnedMesh) std::copy(weights[v].begin(), weights[v].end(), c.weights);
            corners.push_back(c);
        }

        const std::string materialName = p.material >= 0 && size_t(p.material) < in.materials.size()
                                             ? in.materials[size_t(p.material)].name
                                             : std::string("default");
        const size_t material = out.material(materialName);
        std::vector<krModelCorner>& target = skinnedMesh ? out.skinned[material] : out.triangles[material];
        // A mirroring transform turns the winding over; swapping two corners turns it back.
        const bool mirrored = mirrors(world);
        auto triangle = [&](size_t a, size_t b, size_t c) {
            if (mirrored) std::swap(b, c);
            target.insert(target.end(), {corners[a], corners[b], corners[c]});
        };
        if (mode == TINYGLTF_MODE_TRIANGLES) {
            for (size_t i = 0; i + 2 < corners.size(); i += 3) triangle(i, i + 1, i + 2);
        } else if (mode == TINYGLTF_MODE_TRIANGLE_STRIP) {
            for (size_t i = 0; i + 2 < corners.size(); ++i) {
                if (i % 2) triangle(i + 1, i, i + 2);
                else triangle(i, i + 1, i + 2);
            }
        } else {
            for (size_t i = 1; i + 1 < corners.size(); ++i) triangle(0, i, i + 1);
        }
        return true;
    }

    // The parent of each node, -1 for roots; a node listed as a child twice keeps its first parent.
    bool findParents() {
        parentOf.assign(in.nodes.size(), -1);
        for (size_t i = 0; i < in.nodes.size(); ++i)
            for (int child : in.nodes[i].children) {
                if (child < 0 || size_t(child) >= in.nodes.size()) return fail("a node refers to a node that is not there");
                if (parentOf[size_t(child)] < 0 && size_t(child) != i) parentOf[size_t(child)] = int(i);
            }
        return true;
    }

    // The nearest ancestor of a node that is one of the skin's joints, -1 for none.
    int parentJoint(int node) const {
        int at = parentOf[size_t(node)];
        for (int depth = 0; at >= 0 && depth < maxDepth; ++depth, at = parentOf[size_t(at)])
            if (boneOfNode.count(at)) return at;
        return -1;
    }

    bool readSkin() {
        int skin = -1;
        for (const tinygltf::Node& n : in.nodes) {
            if (n.skin < 0 || n.mesh < 0) continue;
            if (skin >= 0 && n.skin != skin) return fail("the model has more than one skin; the engine's objects have one skeleton");
            skin = n.skin;
        }
        if (skin < 0) return true;
        if (size_t(skin) >= in.skins.size()) return fail("a node refers to a skin that is not there");
        const tinygltf::Skin& s = in.skins[size_t(skin)];
        if (s.joints.empty()) return fail("the skin has no joints");
        if (s.joints.size() > size_t(krSkeletonFile::maxBones))
            return fail("the skin has " + std::to_string(s.joints.size()) + " joints, more than the " +
                        std::to_string(krSkeletonFile::maxBones) + " bones a skeleton file holds");
        for (int j : s.joints) {
            if (j < 0 || size_t(j) >= in.nodes.size()) return fail("the skin names a joint that is not there");
            if (!boneOfNode.emplace(j, 0).second) return fail("the skin names a joint twice");
        }
        // Parents before their children: by the number of joints above each.
        std::vector<std::pair<int, size_t>> byDepth;
        for (size_t i = 0; i < s.joints.size(); ++i) {
            int depth = 0;
            for (int p = parentJoint(s.joints[i]); p >= 0 && depth < maxDepth; p = parentJoint(p)) ++depth;
            byDepth.emplace_back(depth, i);
        }
        std::stable_sort(byDepth.begin(), byDepth.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        boneOfJoint.assign(s.joints.size(), 0);
        for (size_t b = 0; b < byDepth.size(); ++b) {
            boneOfJoint[byDepth[b].second] = int(b);
            boneOfNode[s.joints[byDepth[b].second]] = int(b);
            jointNodes.push_back(s.joints[byDepth[b].second]);
        }

        std::vector<float> inverseBinds;
        if (!floats(s.inverseBindMatrices, 16, inverseBinds)) return false;
        if (!inverseBinds.empty() && inverseBinds.size() < s.joints.size() * 16)
            return fail("the skin has fewer inverse bind matrices than joints");
        std::vector<krMatrix> bind(jointNodes.size(), krMatrix(true));
        for (size_t i = 0; i < s.joints.size(); ++i) {
            krMatrix m(true);
            if (!inverseBinds.empty()) std::copy_n(&inverseBinds[i * 16], 16, m.m);
            bind[size_t(boneOfJoint[i])] = inverse(m);
        }
        std::set<std::string> names;
        for (size_t b = 0; b < jointNodes.size(); ++b) {
            krSkeletonFileBone bone;
            const tinygltf::Node& n = in.nodes[size_t(jointNodes[b])];
            bone.name = n.name.empty() ? "bone" + std::to_string(b) : n.name;
            if (!names.insert(bone.name).second) return fail("two joints are named '" + bone.name + "'");
            const int parent = parentJoint(jointNodes[b]);
            bone.parent = parent >= 0 ? boneOfNode.at(parent) : -1;
            if (bone.parent >= int(b)) return fail("the joints of the skin are their own ancestors");
            pose(bind[b], bone.parent >= 0 ? &bind[size_t(bone.parent)] : nullptr, bone.position, bone.rotation);
            out.bones.push_back(bone);
        }
        return true;
    }

    // A bone's place relative to its parent from the two world transforms, without scale.
    static void pose(const krMatrix& world, const krMatrix* parent, krVector3& position, krQuat& rotation) {
        krMatrix local = parent ? multiply(world, inverse(*parent)) : world;
        position = translation(local);
        for (int row = 0; row < 3; ++row) {
            const krVector3 axis = normalized(krVector3(local.m[4 * row], local.m[4 * row + 1], local.m[4 * row + 2]));
            local.m[4 * row] = axis.x;
            local.m[4 * row + 1] = axis.y;
            local.m[4 * row + 2] = axis.z;
        }
        rotation = normalized(krQuat::fromMatrix(local));
    }

    // The four heaviest joints of each vertex as bones, their weights summing to 1.
    bool vertexWeights(const tinygltf::Primitive& p, size_t count, const std::string& meshName,
                       std::vector<std::array<krBoneWeight, krWeightsPerVertex>>& result) {
        if (jointNodes.empty()) return fail("mesh '" + meshName + "' is skinned by a skin that is not there");
        std::vector<std::pair<std::vector<float>, std::vector<float>>> sets;
        for (int set = 0;; ++set) {
            auto j = p.attributes.find("JOINTS_" + std::to_string(set));
            auto w = p.attributes.find("WEIGHTS_" + std::to_string(set));
            if (j == p.attributes.end() || w == p.attributes.end()) break;
            sets.emplace_back();
            if (!floats(j->second, 4, sets.back().first) || !floats(w->second, 4, sets.back().second)) return false;
            if (sets.back().first.size() != count * 4 || sets.back().second.size() != count * 4)
                return fail("mesh '" + meshName + "' has joints or weights for another number of vertices");
        }
        if (sets.empty()) return fail("mesh '" + meshName + "' is skinned but has no joints and weights");
        result.assign(count, {});
        for (size_t v = 0; v < count; ++v) {
            std::map<int, float> byBone;
            for (const auto& [joints, weights] : sets)
                for (size_t k = 0; k < 4; ++k) {
                    const float w = weights[v * 4 + k];
                    if (!(w > 0)) continue;
                    const float joint = joints[v * 4 + k];
                    if (!(joint >= 0) || joint >= float(boneOfJoint.size()))
                        return fail("mesh '" + meshName + "' names a joint that its skin does not have");
                    byBone[boneOfJoint[size_t(joint)]] += w;
                }
            std::vector<std::pair<int, float>> heaviest(byBone.begin(), byBone.end());
            std::stable_sort(heaviest.begin(), heaviest.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
            if (heaviest.size() > size_t(krWeightsPerVertex)) heaviest.resize(krWeightsPerVertex);
            float sum = 0;
            for (const auto& h : heaviest) sum += h.second;
            if (!(sum > 0)) return fail("vertex " + std::to_string(v) + " of mesh '" + meshName + "' has weights that sum to 0");
            for (size_t k = 0; k < heaviest.size(); ++k) result[v][k] = {heaviest[k].first, heaviest[k].second / sum};
        }
        return true;
    }

    // A channel's values at a time, by its sampler's interpolation.
    struct Sampler {
        std::vector<float> times, values;
        int width = 0;
        std::string interpolation;
    };

    static std::vector<float> valueAt(const Sampler& s, float t) {
        const size_t n = s.times.size();
        const size_t w = size_t(s.width);
        const bool cubic = s.interpolation == "CUBICSPLINE";
        // A cubic spline keeps in-tangent, value and out-tangent for each key.
        auto value = [&](size_t k, size_t part) { return &s.values[(cubic ? 3 * k + part : k) * w]; };
        if (t <= s.times[0] || n == 1) return {value(0, 1), value(0, 1) + w};
        if (t >= s.times[n - 1]) return {value(n - 1, 1), value(n - 1, 1) + w};
        const size_t k = size_t(std::upper_bound(s.times.begin(), s.times.end(), t) - s.times.begin()) - 1;
        const float span = s.times[k + 1] - s.times[k];
        const float u = span > 0 ? (t - s.times[k]) / span : 0;
        std::vector<float> r(w);
        if (s.interpolation == "STEP") {
            std::copy_n(value(k, 1), w, r.begin());
        } else if (cubic) {
            const float u2 = u * u, u3 = u2 * u;
            for (size_t i = 0; i < w; ++i)
                r[i] = (2 * u3 - 3 * u2 + 1) * value(k, 1)[i] + (u3 - 2 * u2 + u) * span * value(k, 2)[i] +
                       (-2 * u3 + 3 * u2) * value(k + 1, 1)[i] + (u3 - u2) * span * value(k + 1, 0)[i];
        } else if (w == 4) {
            const krQuat q = slerp(krQuat(value(k, 1)[0], value(k, 1)[1], value(k, 1)[2], value(k, 1)[3]),
                                   krQuat(value(k + 1, 1)[0], value(k + 1, 1)[1], value(k + 1, 1)[2], value(k + 1, 1)[3]), u);
            r = {q.x, q.y, q.z, q.w};
        } else {
            for (size_t i = 0; i < w; ++i) r[i] = value(k, 1)[i] * (1 - u) + value(k + 1, 1)[i] * u;
        }
        return r;
    }

    bool readAnimation(const tinygltf::Animation& a, size_t number) {
        krModelAnimation animation;
        animation.name = a.name.empty() ? "animation" + std::to_string(number) : a.name;
        std::vector<Sampler> samplers(a.samplers.size());
        for (size_t i = 0; i < a.samplers.size(); ++i) {
            const tinygltf::AnimationSampler& s = a.samplers[i];
            if (!floats(s.input, 1, samplers[i].times)) return false;
            samplers[i].interpolation = s.interpolation;
            if (s.output < 0 || size_t(s.output) >= in.accessors.size())
                return fail("animation '" + animation.name + "' refers to an accessor that is not there");
            samplers[i].width = tinygltf::GetNumComponentsInType(uint32_t(in.accessors[size_t(s.output)].type));
            if (samplers[i].width != 3 && samplers[i].width != 4) samplers[i].width = 0;
            else if (!floats(s.output, samplers[i].width, samplers[i].values)) return false;
            const size_t keys = samplers[i].times.size() * (s.interpolation == "CUBICSPLINE" ? 3 : 1);
            if (samplers[i].width && samplers[i].values.size() < keys * size_t(samplers[i].width))
                return fail("animation '" + animation.name + "' has fewer values than times");
            if (!samplers[i].times.empty()) animation.duration = std::max(animation.duration, samplers[i].times.back());
        }
        struct Channel {
            const Sampler* sampler;
            int node;
            std::string path;
        };
        std::vector<Channel> channels;
        for (const tinygltf::AnimationChannel& c : a.channels) {
            if (c.sampler < 0 || size_t(c.sampler) >= samplers.size() || c.target_node < 0 ||
                size_t(c.target_node) >= in.nodes.size())
                return fail("animation '" + animation.name + "' has a channel without a sampler or node");
            const Sampler& s = samplers[size_t(c.sampler)];
            const int width = c.target_path == "rotation" ? 4 : c.target_path == "translation" || c.target_path == "scale" ? 3 : 0;
            // Morph weights move no bone.
            if (width == 0 || s.times.empty()) continue;
            if (s.width != width) return fail("animation '" + animation.name + "' has a channel of the wrong type");
            channels.push_back({&s, c.target_node, c.target_path});
        }

        const bool once = out.playedOnce.count(animation.name) != 0;
        const int intervals = std::max(1, int(std::lround(animation.duration * out.keysPerSecond)));
        const int keys = once ? intervals + 1 : intervals;
        animation.tracks.resize(jointNodes.size());
        for (size_t b = 0; b < jointNodes.size(); ++b) animation.tracks[b].bone = out.bones[b].name;
        for (int k = 0; k < keys; ++k) {
            const float t = animation.duration * float(k) / float(intervals);
            std::map<int, std::array<std::vector<float>, 3>> moved;
            for (const Channel& c : channels) {
                auto& trs = moved[c.node];
                trs[c.path == "translation" ? 0 : c.path == "rotation" ? 1 : 2] = valueAt(*c.sampler, t);
            }
            std::map<int, krMatrix> worlds;
            for (size_t b = 0; b < jointNodes.size(); ++b) {
                const krMatrix world = worldAt(jointNodes[b], moved, worlds);
                const int parent = out.bones[b].parent;
                krAnimationFileKey key;
                const krMatrix parentWorld = parent >= 0 ? worldAt(jointNodes[size_t(parent)], moved, worlds) : krMatrix(true);
                pose(world, parent >= 0 ? &parentWorld : nullptr, key.position, key.rotation);
                animation.tracks[b].keys.push_back(key);
            }
        }
        out.animations.push_back(std::move(animation));
        return true;
    }

    // A node's world transform at a key, with the animated parts of it and its ancestors.
    krMatrix worldAt(int node, const std::map<int, std::array<std::vector<float>, 3>>& moved,
                     std::map<int, krMatrix>& done) const {
        std::vector<int> chain;
        for (int at = node, depth = 0; at >= 0 && depth < maxDepth && !done.count(at); at = parentOf[size_t(at)], ++depth)
            chain.push_back(at);
        krMatrix world(true);
        if (!chain.empty() && parentOf[size_t(chain.back())] >= 0 && done.count(parentOf[size_t(chain.back())]))
            world = done.at(parentOf[size_t(chain.back())]);
        else if (chain.empty())
            return done.at(node);
        for (size_t i = chain.size(); i-- > 0;) {
            tinygltf::Node n = in.nodes[size_t(chain[i])];
            auto it = moved.find(chain[i]);
            if (it != moved.end()) {
                if (!it->second[0].empty()) n.translation.assign(it->second[0].begin(), it->second[0].end());
                if (!it->second[1].empty()) n.rotation.assign(it->second[1].begin(), it->second[1].end());
                if (!it->second[2].empty()) n.scale.assign(it->second[2].begin(), it->second[2].end());
                n.matrix.clear();
            }
            const Mat4 local = localTransform(n);
            krMatrix m(false);
            for (int e = 0; e < 16; ++e) m.m[e] = float(local[size_t(e)]);
            // Column-major with column vectors is the engine's row-major with row vectors.
            world = multiply(m, world);
            done.emplace(chain[i], world);
        }
        return world;
    }

    std::vector<int> parentOf;
    // Joint nodes in bone order, and the bone of each joint node and of each place in the skin.
    std::vector<int> jointNodes;
    std::map<int, int> boneOfNode;
    std::vector<int> boneOfJoint;

    const tinygltf::Model& in;
    krModel& out;
    std::string& error;
};

// Images are only named in the mesh file; the texture tool converts them on its own.
bool skipImage(tinygltf::Image*, const int, std::string*, std::string*, int, int, const unsigned char*, int, void*) {
    return true;
}

}  // namespace

bool krReadGltfModel(const std::string& path, krModel& model, std::string& error) {
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(skipImage, nullptr);
    tinygltf::Model gltf;
    std::string warning;
    const bool binary = path.size() >= 4 && path.compare(path.size() - 4, 4, ".glb") == 0;
    const bool ok = binary ? loader.LoadBinaryFromFile(&gltf, &error, &warning, path)
                           : loader.LoadASCIIFromFile(&gltf, &error, &warning, path);
    if (!ok) {
        if (error.empty()) error = "cannot read " + path;
        return false;
    }
    return GltfReader(gltf, model, error).read();
}
