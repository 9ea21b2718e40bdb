// Test content: scratch folders, hand-made DDS files, meshes of squares.
#include "gl_content.h"

#include <unistd.h>

#include <fstream>

#include "core/krChunk.h"
#include "core/krFileIndex.h"
#include "render/krTextureInfo.h"

namespace glContent {

namespace {
std::string header(int32_t width, int32_t height, uint32_t fourCC, const uint32_t (&masks)[4], uint32_t bits) {
    std::string out(krDDS::headerSize, '\0');
    auto put = [&](uint32_t at, uint32_t value) { krPutU32(out.data() + at, value); };
    put(0, krDDS::magic);
    put(krDDS::structSizeAt, krDDS::structSize);
    put(krDDS::heightAt, static_cast<uint32_t>(height));
    put(krDDS::widthAt, static_cast<uint32_t>(width));
    put(krDDS::pixelFormatAt, krDDS::pixelFormatSize);
    put(krDDS::fourCCAt, fourCC);
    put(krDDS::bitCountAt, bits);
    const uint32_t maskAt[] = {krDDS::redMaskAt, krDDS::greenMaskAt, krDDS::blueMaskAt, krDDS::alphaMaskAt};
    for (int i = 0; i < 4; ++i) put(maskAt[i], masks[i]);
    return out;
}

constexpr uint32_t bgraMasks[4] = {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000};

std::string pixels(const std::vector<uint32_t>& argb) {
    std::string out(argb.size() * 4, '\0');
    for (size_t i = 0; i < argb.size(); ++i) krPutU32(out.data() + 4 * i, argb[i]);
    return out;
}
}  // namespace

Scratch::Scratch() : previous(std::filesystem::current_path()) {
    folder = std::filesystem::temp_directory_path() / ("kerrin-gl-" + std::to_string(::getpid()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(KERRIN_DATA_PACK, folder / "data.kr");
    std::filesystem::current_path(folder);
    krFileIndex::forget();
}

Scratch::~Scratch() {
    std::filesystem::current_path(previous);
    std::filesystem::remove_all(folder);
    krFileIndex::forget();
}

void Scratch::write(const std::string& path, const std::string& bytes) {
    const std::filesystem::path target = folder / path;
    std::filesystem::create_directories(target.parent_path());
    std::ofstream(target, std::ios::binary) << bytes;
    krFileIndex::forget();
}

std::string solidTexture(uint32_t argb, int32_t width, int32_t height) {
    return header(width, height, 0, bgraMasks, 32) +
           pixels(std::vector<uint32_t>(static_cast<size_t>(width * height), argb));
}

std::string blockTexture(const char* code, int32_t width, int32_t height, uint32_t pixelBytes) {
    const uint32_t none[4] = {0, 0, 0, 0};
    return header(width, height, krDDS::fourCC(code[0], code[1], code[2], code[3]), none, 0) +
           std::string(pixelBytes, '\xFF');
}

std::string texture565(int32_t width, int32_t height) {
    const uint32_t masks[4] = {0xF800, 0x07E0, 0x001F, 0};
    return header(width, height, 0, masks, 16) + std::string(static_cast<size_t>(width * height * 2), '\x55');
}

std::string halvesTexture(uint32_t left, uint32_t right, int32_t width, int32_t height) {
    std::vector<uint32_t> argb;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) argb.push_back(x < width / 2 ? left : right);
    return header(width, height, 0, bgraMasks, 32) + pixels(argb);
}

krColor emissionFor(uint32_t rgb) {
    // Emission is lit eight times over: a byte of 32 is full light, and 255 rounds up to it.
    constexpr uint32_t scale = 8;
    auto channel = [](uint32_t c) { return static_cast<uint8_t>((c + scale - 1) / scale); };
    return krColor(channel(rgb >> 16 & 0xFF), channel(rgb >> 8 & 0xFF), channel(rgb & 0xFF), 255);
}

krMaterial& MeshMaker::material(uint32_t rgb, uint8_t alpha, int32_t flags) {
    close();
    krMaterial m;
    m.firstVertex = static_cast<int32_t>(vertices.size());
    m.firstIndex = static_cast<int32_t>(indices.size());
    m.flags = flags;
    m.ambient = krColor(0, 0, 0, 255);
    m.diffuse = krColor(0, 0, 0, alpha);
    m.specular = krColor(0, 0, 0, 255);
    m.emission = emissionFor(rgb);
    materials.push_back(m);
    return materials.back();
}

void MeshMaker::square(const krVector3& c, float size, float u0, float u1) {
    const float h = size / 2;
    const auto base = static_cast<uint32_t>(vertices.size());
    const krColor white(255, 255, 255, 255);
    const krVector3 normal(0, 0, 1);
    vertices.push_back({c + krVector3(-h, h, 0), normal, white, u0, 0});
    vertices.push_back({c + krVector3(-h, -h, 0), normal, white, u0, 1});
    vertices.push_back({c + krVector3(h, h, 0), normal, white, u1, 0});
    vertices.push_back({c + krVector3(h, -h, 0), normal, white, u1, 1});
    for (uint32_t i : {0u, 1u, 2u, 3u, 2u, 1u}) indices.push_back(base + i);
}

void MeshMaker::padding(int32_t count) {
    // All on one point far behind the view: a triangle that wrongly reaches them is invisible.
    const krVertex far{krVector3(0, 0, 1000), krVector3(0, 0, 1), krColor(255, 255, 255, 255), 0, 0};
    vertices.insert(vertices.end(), static_cast<size_t>(count), far);
}

void MeshMaker::close() {
    if (materials.empty()) return;
    krMaterial& m = materials.back();
    m.vertexCount = static_cast<int32_t>(vertices.size()) - m.firstVertex;
    m.indexCount = static_cast<int32_t>(indices.size()) - m.firstIndex;
}

void MeshMaker::make(krMesh& mesh) {
    close();
    mesh.ownVertices(vertices);
    mesh.ownIndices(indices);
    mesh.materials = materials;
    mesh.kind = krMeshFile::kindDrawn;
}

}  // namespace glContent
