// Content for the drawing tests: a scratch working folder with the engine's stock data in it, DDS
// files of solid colours, and meshes made in memory square by square.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "render/krMesh.h"

namespace glContent {

// A fresh working folder for one test, holding a copy of data.kr; files written into it are found
// by the file index, which is built anew. The old folder is back when it goes.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // Writes a file below the folder, making its folders; the index is built again at next use.
    void write(const std::string& path, const std::string& bytes);

private:
    std::filesystem::path previous, folder;
};

// A DDS file of one colour (0xAARRGGBB), 32-bit with alpha.
std::string solidTexture(uint32_t argb, int32_t width = 4, int32_t height = 4);
// The header alone with a FourCC code and the rest zero, padded with pixels bytes of 0xFF.
std::string blockTexture(const char* fourCC, int32_t width, int32_t height, uint32_t pixelBytes);
// A 16-bit texture with 5-6-5 masks, which the engine does not take.
std::string texture565(int32_t width, int32_t height);
// A texture whose left half is one colour and right half another (0xAARRGGBB).
std::string halvesTexture(uint32_t left, uint32_t right, int32_t width = 8, int32_t height = 8);

// Colours that come out exactly through fixed-function lighting: a material whose emission is
// this colour at eight times its byte value, and with nothing else lit, shows the colour itself.
// Channels must be multiples of 8, or 255.
krColor emissionFor(uint32_t rgb);

// Builds a mesh from squares, each material covering the squares added after it.
class MeshMaker {
public:
    // Starts a material that shows rgb with alpha through its emission, and nothing else.
    krMaterial& material(uint32_t rgb = 0xFFFFFF, uint8_t alpha = 255, int32_t flags = 0);
    // A square facing +Z with its centre at c; texture coordinates run from (u0, 0) at the top
    // left to (u1, 1) at the bottom right.
    void square(const krVector3& c, float size, float u0 = 0, float u1 = 1);
    // Vertices that no triangle uses, so that ranges grow large.
    void padding(int32_t count);
    void make(krMesh& mesh);

private:
    void close();

    std::vector<krVertex> vertices;
    std::vector<uint32_t> indices;
    std::vector<krMaterial> materials;
};

}  // namespace glContent
