// Shared by the mesh builders: filling a mesh's vertices in its format.
#ifndef PIXMORA_SRC_GEOMETRY_PMMESH_FILL_H
#define PIXMORA_SRC_GEOMETRY_PMMESH_FILL_H

#include <cstddef>

namespace pmMesh {

// Fills a mesh with one vertex per position, made by `make(i)`, and gives it
// its vertex format's attribute table.
template <typename Mesh, typename Make>
void fillVertices(Mesh& mesh, std::size_t count, Make make) {
    using Vertex = typename decltype(mesh.vertices)::value_type;
    mesh.vertices.clear();
    mesh.vertices.reserve(count);
    for (std::size_t i = 0; i < count; ++i) mesh.vertices.push_back(make(i));
    mesh.attributes = Vertex::defaultAttribs;
}

}  // namespace pmMesh

#endif
