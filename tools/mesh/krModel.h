// A model as the mesh compiler sees it, whatever format it came from: materials, and for each
// material its triangles as loose corners; for a skinned model also the bones of its skeleton,
// the weights of its skinned corners and its animations, sampled into evenly spaced keys. The
// readers fill it; the compiler welds the corners into vertex ranges of the mesh file and writes
// the skeleton and animation files.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "core/krColor.h"
#include "core/krVector3.h"
#include "render/krMesh.h"
#include "render/krMeshFile.h"
#include "render/krSkeletonFileWriter.h"

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
    // Skinned corners only: bones of the skeleton and weights summing to 1, heaviest first.
    krBoneWeight weights[krWeightsPerVertex];
};

struct krModelAnimation {
    std::string name;
    float duration = 0;  // seconds
    // One track per bone, in bone order, each with the same number of keys.
    std::vector<krAnimationFileTrack> tracks;
};

struct krModel {
    std::vector<krModelMaterial> materials;
    // For each material, three corners a triangle: placed where the model puts them...
    std::vector<std::vector<krModelCorner>> triangles;
    // ...and skinned, in the bind pose of the skeleton.
    std::vector<std::vector<krModelCorner>> skinned;
    // The skeleton, parents before their children, in its bind pose; empty without a skin.
    std::vector<krSkeletonFileBone> bones;
    std::vector<krModelAnimation> animations;

    // How the readers sample animations: keys a second, and the animations (by name) that are
    // played once, whose keys end on the last pose instead of wrapping round to the first.
    float keysPerSecond = 30;
    std::set<std::string> playedOnce;
    // What the reader noticed that the game would see in the mesh: a material file that is not
    // there, a material without an ambient colour. For the tool to say; none stops it.
    std::vector<std::string> warnings;

    // The material's index, made with defaults under that name if it is new.
    size_t material(const std::string& name);
};

// Readers: false with a message in error when the file cannot be used.
bool krReadObjModel(const std::string& path, krModel& model, std::string& error);
bool krReadGltfModel(const std::string& path, krModel& model, std::string& error);

// Channel values of model formats, 0 to 1, to bytes.
uint8_t krUnitToByte(double value);
