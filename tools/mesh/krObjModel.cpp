// Wavefront OBJ models with their MTL materials. Faces are triangulated by the parser; texture
// coordinates are flipped, since OBJ counts v from the bottom of the image and the engine's
// textures start at the top.
#include <tiny_obj_loader.h>

#include <cctype>

#include "krModel.h"

namespace {

krColor colorOf(const tinyobj::real_t (&c)[3]) {
    return {krUnitToByte(c[0]), krUnitToByte(c[1]), krUnitToByte(c[2]), 255};
}

bool isBlack(const krColor& c) { return c.r == 0 && c.g == 0 && c.b == 0; }

void addMaterial(krModel& model, const tinyobj::material_t& m) {
    krModelMaterial& out = model.materials[model.material(m.name)];
    out.ambient = colorOf(m.ambient);
    out.diffuse = colorOf(m.diffuse);
    out.specular = colorOf(m.specular);
    out.emission = colorOf(m.emission);
    // Phong exponents run past the byte; the engine's highlights do not need more.
    out.shininess = m.shininess >= 255 ? 255 : krUnitToByte(m.shininess / 255);
    out.diffuseTexture = m.diffuse_texname;
    out.normalTexture = !m.normal_texname.empty() ? m.normal_texname : m.bump_texname;
    out.specularTexture = m.specular_texname;
    if (m.dissolve < 1) out.alphaMode = krMeshFile::alphaBlend;
    else if (!m.alpha_texname.empty()) out.alphaMode = krMeshFile::alphaTest;
    // A material file without Ka gives black, and the engine lights ambient light by it.
    if (isBlack(out.ambient) && !isBlack(out.diffuse))
        model.warnings.push_back("material '" + m.name + "' has no ambient colour (Ka): it will draw black where " +
                                 "no lamp shines on it");
}

}  // namespace

bool krReadObjModel(const std::string& path, krModel& model, std::string& error) {
    tinyobj::ObjReader reader;
    tinyobj::ObjReaderConfig config;
    config.triangulate = true;
    config.vertex_color = true;
    if (!reader.ParseFromFile(path, config)) {
        error = reader.Error().empty() ? "cannot read " + path : reader.Error();
        while (!error.empty() && std::isspace(static_cast<unsigned char>(error.back()))) error.pop_back();
        return false;
    }
    // The parser's own notes: a material file or a material that is not there, and the like.
    std::string note;
    for (char c : reader.Warning() + "\n") {
        if (c != '\n') {
            note += c;
        } else if (!note.empty()) {
            model.warnings.push_back(note);
            note.clear();
        }
    }
    const tinyobj::attrib_t& a = reader.GetAttrib();
    const std::vector<tinyobj::material_t>& materials = reader.GetMaterials();
    std::vector<size_t> slots;
    for (const tinyobj::material_t& m : materials) {
        addMaterial(model, m);
        slots.push_back(model.material(m.name));
    }

    for (const tinyobj::shape_t& shape : reader.GetShapes()) {
        const tinyobj::mesh_t& mesh = shape.mesh;
        size_t at = 0;
        for (size_t face = 0; face < mesh.num_face_vertices.size(); ++face) {
            const size_t corners = mesh.num_face_vertices[face];
            const int id = face < mesh.material_ids.size() ? mesh.material_ids[face] : -1;
            const size_t target = id >= 0 && size_t(id) < slots.size() ? slots[size_t(id)] : model.material("default");
            // The parser triangulates; lines and points have no place in a mesh.
            for (size_t k = 0; k < corners && corners == 3; ++k) {
                const tinyobj::index_t& i = mesh.indices[at + k];
                krModelCorner c;
                const auto p = size_t(i.vertex_index) * 3;
                const auto n = size_t(i.normal_index) * 3;
                const auto t = size_t(i.texcoord_index) * 2;
                if (i.vertex_index < 0 || p + 2 >= a.vertices.size() ||
                    (i.normal_index >= 0 && n + 2 >= a.normals.size()) ||
                    (i.texcoord_index >= 0 && t + 1 >= a.texcoords.size())) {
                    error = "a face of '" + shape.name + "' refers to a vertex that is not there";
                    return false;
                }
                c.position = {a.vertices[p], a.vertices[p + 1], a.vertices[p + 2]};
                if (p + 2 < a.colors.size())
                    c.color = {krUnitToByte(a.colors[p]), krUnitToByte(a.colors[p + 1]), krUnitToByte(a.colors[p + 2]), 255};
                if (i.normal_index >= 0) {
                    c.normal = {a.normals[n], a.normals[n + 1], a.normals[n + 2]};
                }
                if (i.texcoord_index >= 0) {
                    c.u = a.texcoords[t];
                    c.v = 1 - a.texcoords[t + 1];
                }
                model.triangles[target].push_back(c);
            }
            at += corners;
        }
    }
    return true;
}
