// Box and ellipsoid geometry. Triangles wind counter-clockwise seen from outside, the front face
// of the culled draw.
#include "render/krMeshShapes.h"

#include <cmath>
#include <vector>

namespace {

constexpr krColor gray{128, 128, 128, 255};
constexpr krColor black{0, 0, 0, 255};
constexpr krColor white{255, 255, 255, 255};
constexpr float shapeShininess = 4;

krMaterial shapeMaterial(const krMesh& mesh, const krColor& specular) {
    krMaterial m;
    m.vertexCount = mesh.vertexCount;
    m.indexCount = mesh.indexCount;
    m.flags = krMaterialNormalMapped;
    m.ambient = gray;
    m.diffuse = gray;
    m.specular = specular;
    m.emission = black;
    m.shininess = shapeShininess;
    m.textures[krTextureDiffuse] = "textures/colormap.dds";
    m.textures[krTextureNormal] = "textures/normalmap.dds";
    return m;
}

// A face of the box: its normal and the two axes along which u and v grow, with v x u = normal.
struct BoxFace {
    krVector3 normal, u, v;
};

const BoxFace boxFaces[] = {
    {krVector3::axisY, krVector3::axisX, krVector3::axisZ},
    {krVector3::negAxisY, krVector3::axisX, krVector3::negAxisZ},
    {krVector3::axisZ, krVector3::axisX, krVector3::negAxisY},
    {krVector3::negAxisZ, krVector3::negAxisX, krVector3::negAxisY},
    {krVector3::axisX, krVector3::negAxisZ, krVector3::negAxisY},
    {krVector3::negAxisX, krVector3::axisZ, krVector3::negAxisY},
};

}  // namespace

void krMakeBoxMesh(krMesh& mesh, const krVector3& size) {
    const krVector3 half = size * 0.5f;
    std::vector<krVertex> vertices;
    std::vector<uint32_t> indices;
    // Corners in texture order (0, 0), (0, 1), (1, 0), (1, 1); corners 0 and 3 are opposite.
    const float corners[4][2] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};
    for (const BoxFace& f : boxFaces) {
        const auto base = static_cast<uint32_t>(vertices.size());
        for (const auto& c : corners) {
            const krVector3 p = f.normal + f.u * (c[0] * 2 - 1) + f.v * (c[1] * 2 - 1);
            vertices.push_back({multiply(p, half), f.normal, white, c[0], c[1]});
        }
        for (uint32_t i : {0u, 1u, 2u, 3u, 2u, 1u}) indices.push_back(base + i);
    }
    mesh.ownVertices(std::move(vertices));
    mesh.ownIndices(std::move(indices));
    mesh.kind = krMeshFile::kindDrawn;
    mesh.materials.assign(1, shapeMaterial(mesh, black));
}

void krMakeEllipsoidMesh(krMesh& mesh, const krVector3& size, int32_t segments) {
    const krVector3 half = size * 0.5f;
    const int32_t s = segments;
    const int32_t quarter = s / 4;
    const int32_t rings = 2 * quarter - 1;
    std::vector<krVertex> vertices;
    std::vector<uint32_t> indices;
    vertices.reserve(static_cast<size_t>(rings) * s + 2);
    for (int32_t j = -quarter + 1; j <= quarter - 1; ++j) {
        const float b = krTwoPi * j / s;
        for (int32_t i = 0; i < s; ++i) {
            const float a = krTwoPi * i / s;
            const krVector3 p{std::cos(b) * std::cos(a) * half.x, std::sin(b) * half.y,
                              std::cos(b) * std::sin(a) * half.z};
            vertices.push_back({p, normalized(p), white, 8.0f * i / s, 8.0f * (quarter + j) / s});
        }
    }
    const auto top = static_cast<uint32_t>(vertices.size());
    const krVector3 up{0, half.y, 0};
    vertices.push_back({up, normalized(up), white, 0, 0});
    vertices.push_back({-up, normalized(-up), white, 0, 0});
    const uint32_t bottom = top + 1;

    auto at = [s](int32_t ring, int32_t i) { return static_cast<uint32_t>(ring * s + (i % s)); };
    for (int32_t r = 0; r + 1 < rings; ++r) {
        for (int32_t i = 0; i < s; ++i) {
            const uint32_t q[4] = {at(r, i), at(r, i + 1), at(r + 1, i), at(r + 1, i + 1)};
            indices.insert(indices.end(), {q[0], q[2], q[1], q[1], q[2], q[3]});
        }
    }
    for (int32_t i = 0; i < s; ++i) {
        indices.insert(indices.end(), {at(rings - 1, i), top, at(rings - 1, i + 1)});
        indices.insert(indices.end(), {at(0, i), at(0, i + 1), bottom});
    }
    mesh.ownVertices(std::move(vertices));
    mesh.ownIndices(std::move(indices));
    mesh.kind = krMeshFile::kindDrawn;
    mesh.materials.assign(1, shapeMaterial(mesh, gray));
}
