// A model as the mesh compiler sees it, whatever format it came from: materials, and for each
// material its triangles as loose corners. The readers fill it; the compiler welds the corners
// into vertex ranges of the mesh file.
#pragma once

#include <string>
#include <vector>

#include "core/krColor.h"
#include "core/krVector3.h"
#include "render/krMeshFile.h"

struct krModelMaterial {
    std::string name;
    krColor ambient{128, 128, 128, 255}, diffuse{204, 204, 204, 255};
    krColor specular{0, 0, 0, 255}, emission{0, 0, 0, 255};
    uint8_t specularStrength = 255;
    uint8_t shininess = 0;
    uint8_t alphaMode = krMeshFile::alphaNone;
    // As the model names them, relative to the model's folder; empty for none.
    std::string diffuseTexture, normalTexture, specularTexture;
};

struct krModelCorner {
    krVector3 position;
    krVector3 normal;  // zero when the model has none; the compiler makes one
    krColor color;
    float u = 0, v = 0;
};

struct krModel {
    std::vector<krModelMaterial> materials;
    // For each material, three corners a triangle.
    std::vector<std::vector<krModelCorner>> triangles;

    // The material's index, made with defaults under that name if it is new.
    size_t material(const std::string& name);
};

// Readers: false with a message in error when the file cannot be used.
bool krReadObjModel(const std::string& path, krModel& model, std::string& error);
bool krReadGltfModel(const std::string& path, krModel& model, std::string& error);

// Channel values of model formats, 0 to 1, to bytes.
uint8_t krUnitToByte(double value);
