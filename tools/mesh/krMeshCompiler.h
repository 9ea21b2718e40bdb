// The mesh compiler: a model's triangles welded into the vertex and index ranges of one mesh in
// a mesh file, each material's range contiguous and small enough for 16-bit indices; a skinned
// model's skin as a second mesh with its weights, in a sub-object; its skeleton and animations as
// files of their own.
#pragma once

#include <string>

#include "krModel.h"
#include "render/krMeshFileWriter.h"

// Every item class of the engine can draw a range this large with 16-bit indices.
constexpr size_t krMaxRangeVertices = 65535;

struct krMeshCompileOptions {
    float scale = 1;
    int32_t kind = krMeshFile::kindDrawn;
    std::string name;  // of the object
};

// The mesh as it will be written; false with a message when the model cannot become one.
bool krBuildMesh(const krModel& model, const krMeshCompileOptions& options, krMeshFileMesh& mesh, std::string& error);
// The skinned mesh, with four weights a vertex; empty for a model without a skin.
bool krBuildSkinnedMesh(const krModel& model, const krMeshCompileOptions& options, krMeshFileMesh& mesh,
                        std::string& error);
// The whole file: one object holding the placed mesh, and the skin in a sub-object of its own.
bool krCompileMesh(const krModel& model, const krMeshCompileOptions& options, std::string& file, std::string& error);
// The name of the sub-object that holds an object's skin.
std::string krSkinObjectName(const std::string& objectName);
// The skeleton file of a skinned model, named as the object.
bool krCompileSkeleton(const krModel& model, const krMeshCompileOptions& options, std::string& file, std::string& error);
bool krCompileAnimation(const krModelAnimation& animation, const krMeshCompileOptions& options, std::string& file,
                        std::string& error);
// A model's texture name as the mesh file gives it: "/" as separator and the ".dds" the engine
// reads, since the texture tool converts each image beside itself.
std::string krTextureFileName(const std::string& modelName);
// What the game would miss of the model's textures, each said once: an image that is not in
// `imageFolder` (the model's own, unless told otherwise), and one that the mesh names by another
// name (x.png becomes x.dds) while no such file lies in `meshFolder`, beside the mesh file.
std::vector<std::string> krTextureWarnings(const krModel& model, const std::string& imageFolder,
                                           const std::string& meshFolder);
