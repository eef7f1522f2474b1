// pmMesh: vertex formats and the CPU-side shape builders that fill meshes.
#ifndef PIXMORA_PMMESH_H
#define PIXMORA_PMMESH_H

#include <glm/glm.hpp>

#include <vector>

#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmMesh {

struct PositionVertex {
    glm::vec3 position;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct TexturingVertex {
    glm::vec3 position;
    glm::vec2 texCoord;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

// Four corners in triangle-strip order: (min.x, min.y), (max.x, min.y),
// (min.x, max.y), (max.x, max.y).
void createQuad(std::vector<glm::vec2>& positions, const glm::vec2& min, const glm::vec2& max);

// out = M x (p, 1), M being translation x rotation x scale.
void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle);
// The same around a pivot: out = M x (p - pivot, 1) + pivot.
void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle,
                 const glm::vec2& pivot);

void createQuad(pmGL::TriangleStripMesh<PositionVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max);
// Texture coordinates: uv = rotation x (scale / (max - min)) x (p - centre) + translation,
// so a translation of (0.5, 0.5) and a scale of (1, 1) span the texture from 0 to 1.
void createQuad(pmGL::TriangleStripMesh<TexturingVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max, float angle, const glm::vec2& translation,
                const glm::vec2& scale);

}  // namespace pmMesh

#endif
