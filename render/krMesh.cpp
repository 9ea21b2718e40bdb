// Mesh records: geometry they hold themselves, and the consistency check that stands between a
// file's numbers and everything that indexes with them.
#include "render/krMesh.h"

#include <utility>

void krMesh::ownVertices(std::vector<krVertex> v) {
    vertexStore = std::move(v);
    vertices = vertexStore.data();
    vertexCount = static_cast<int32_t>(vertexStore.size());
}

void krMesh::ownIndices(std::vector<uint32_t> i) {
    indexStore = std::move(i);
    indices = indexStore.data();
    indexCount = static_cast<int32_t>(indexStore.size());
}

bool krMesh::isDrawn() const { return (kind & krMeshFile::kindDrawn) != 0; }

const char* krMesh::inconsistency() const {
    if (vertexCount < 0 || indexCount < 0) return "negative counts";
    if ((vertexCount && !vertices) || (indexCount && !indices)) return "missing geometry";
    for (int32_t i = 0; i < indexCount; ++i)
        if (indices[i] >= static_cast<uint32_t>(vertexCount)) return "a vertex index beyond the vertices";
    if (!weights.empty() && weights.size() != static_cast<size_t>(vertexCount) * krWeightsPerVertex)
        return "weights for another number of vertices";
    // 64-bit sums: the ranges come from the file and may be anything.
    for (const krMaterial& m : materials) {
        if (m.firstVertex < 0 || m.vertexCount < 0 || m.firstIndex < 0 || m.indexCount < 0)
            return "a material range below zero";
        if (int64_t(m.firstVertex) + m.vertexCount > vertexCount) return "a material's vertices beyond the mesh";
        if (int64_t(m.firstIndex) + m.indexCount > indexCount) return "a material's indices beyond the mesh";
        const uint32_t low = static_cast<uint32_t>(m.firstVertex);
        const uint32_t high = low + static_cast<uint32_t>(m.vertexCount);
        for (int32_t i = m.firstIndex; i < m.firstIndex + m.indexCount; ++i)
            if (indices[i] < low || indices[i] >= high) return "a material's index outside its vertex range";
    }
    return nullptr;
}
