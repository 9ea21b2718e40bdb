// glTF 2.0 models, text or binary. The node tree of the scene is flattened: every primitive is
// placed by its node's world transform. Materials map their metal-roughness terms onto the
// engine's specular ones; texture images are named, never decoded.
#include <tiny_gltf.h>

#include <array>
#include <cmath>

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
        std::vector<int> roots;
        if (!in.scenes.empty()) {
            const size_t scene = in.defaultScene >= 0 && size_t(in.defaultScene) < in.scenes.size() ? size_t(in.defaultScene) : 0;
            roots = in.scenes[scene].nodes;
        } else {
            for (size_t i = 0; i < in.nodes.size(); ++i) roots.push_back(int(i));
        }
        for (int n : roots)
            if (!node(n, identity4, 0)) return false;
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
            for (const tinygltf::Primitive& p : in.meshes[size_t(n.mesh)].primitives)
                if (!primitive(p, world)) return false;
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

    bool primitive(const tinygltf::Primitive& p, const Mat4& world) {
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
            corners.push_back(c);
        }

        const std::string materialName = p.material >= 0 && size_t(p.material) < in.materials.size()
                                             ? in.materials[size_t(p.material)].name
                                             : std::string("default");
        std::vector<krModelCorner>& target = out.triangles[out.material(materialName)];
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
