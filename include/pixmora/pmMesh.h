/**
 * @file pmMesh.h
 * @brief Vertex formats and the CPU-side shape builders that fill meshes (pmMesh).
 *
 * Each shape has a low-level form that fills plain vectors of positions,
 * per-vertex values and triangles, and mesh forms that add texture coordinates
 * (and a colour where the format has one) and the format's attribute table.
 * Every function clears its outputs first and makes no GL call. Angles are
 * radians.
 *
 * Soft edges: the edged forms carry an alpha per vertex, 1 inside and the outer
 * alpha on the rim; the signed forms carry a value from 0 at the centre to 1 on
 * the rim.
 */
#ifndef PIXMORA_PMMESH_H
#define PIXMORA_PMMESH_H

#include <glm/glm.hpp>

#include <vector>

#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmMesh {

// ---- vertex formats: all attributes are GL_FLOAT, not normalised. Each
// `defaultAttribs` table is built when the library is loaded.
struct PositionVertex {
    glm::vec3 position;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct TexturingVertex {
    glm::vec3 position;
    glm::vec2 texCoord;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct ColoringVertex {
    glm::vec3 position;
    glm::vec4 color;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct ShadingVertex {
    glm::vec3 position;
    glm::vec3 normal;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct TextureShadingVertex {
    glm::vec3 position;
    glm::vec3 normal;
    glm::vec2 texCoord;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct EdgedPositionVertex {
    glm::vec2 position;
    float edgeAlpha;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct EdgedTexturingVertex {
    glm::vec2 position;
    glm::vec2 texCoord;
    float edgeAlpha;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct EdgedColorTexturingVertex {
    glm::vec2 position;
    glm::vec4 color;
    glm::vec2 texCoord;
    float edgeAlpha;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct SignedPositionVertex {
    glm::vec2 position;
    float signVal;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct SignedTexturingVertex {
    glm::vec2 position;
    glm::vec2 texCoord;
    float signVal;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

struct SignedColorTexturingVertex {
    glm::vec2 position;
    glm::vec4 color;
    glm::vec2 texCoord;
    float signVal;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

// A glyph vertex: position in xy, texture coordinate in zw.
struct TextVertex {
    glm::vec4 vertex;
    static const std::vector<pmGL::VertexAttribute> defaultAttribs;
};

// ---- low level

// Four corners in triangle-strip order: (min.x, min.y), (max.x, min.y),
// (min.x, max.y), (max.x, max.y).
void createQuad(std::vector<glm::vec2>& positions, const glm::vec2& min, const glm::vec2& max);

// Eight points, the inner quad (inset by `edgeWidth`) then the outer, each in
// strip order; alpha 1 inside and `outerAlpha` outside; ten triangles.
void createEdgedQuad(std::vector<glm::vec2>& positions, std::vector<float>& alphas,
                     std::vector<pmGL::IndexedTriangle>& triangles, const glm::vec2& min,
                     const glm::vec2& max, float edgeWidth, float outerAlpha);

// The points of the unit circle from `start` towards `end` (counter-clockwise)
// in steps of a `segmentCount`-th of a turn, the end itself left out. Equal
// start and end give the whole circle.
void createUnitSector(std::vector<glm::vec2>& positions, float start, float end, int segmentCount);

// A triangle fan: the centre, the rim points, and last the exact end point.
void createSector(std::vector<glm::vec2>& positions, float start, float end, float radius,
                  int segmentCount);

// A fan out to `innerLayer` rings of alpha 1 inside radius - edgeWidth, and an
// outer ring of `outerAlpha` at `radius`.
void createEdgedSector(std::vector<glm::vec2>& positions, std::vector<float>& alphas,
                       std::vector<pmGL::IndexedTriangle>& triangles, float start, float end,
                       float radius, int innerLayer, float edgeWidth, float outerAlpha,
                       int segmentCount);

// A fan out to `layerSize` rings; ring k of n has the value k / n.
void createSignedSector(std::vector<glm::vec2>& positions, std::vector<float>& values,
                        std::vector<pmGL::IndexedTriangle>& triangles, float start, float end,
                        float radius, int layerSize, int segmentCount);

// A grid of (divisions.x + 1) x (divisions.y + 1) points, row by row from min,
// as one triangle strip joined between rows by degenerate triangles.
void createPlane(std::vector<glm::vec2>& positions, std::vector<unsigned short>& indices,
                 const glm::vec2& min, const glm::vec2& max, const glm::ivec2& divisions);

// out = M x (p, 1), M being translation x rotation x scale.
void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle);
// The same around a pivot: out = M x (p - pivot, 1) + pivot.
void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle,
                 const glm::vec2& pivot);

// ---- meshes. Texture arguments come after the shape's: angle, translation,
// scale. Quads and planes map around their centre, so that
// uv = rotation x (scale / size) x (p - centre) + translation: a translation of
// (0.5, 0.5) and a scale of (1, 1) span the texture from 0 to 1. Sectors,
// circles and polygons map p itself with the scale divided by the diameter.

void createQuad(pmGL::TriangleStripMesh<PositionVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max);
void createQuad(pmGL::TriangleStripMesh<TexturingVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max, float angle, const glm::vec2& translation,
                const glm::vec2& scale);
// The texture spans the outer quad.
void createEdgedQuad(pmGL::IndexedTriangleMesh<EdgedTexturingVertex>& mesh, const glm::vec2& min,
                     const glm::vec2& max, float edgeWidth, float outerAlpha, float angle,
                     const glm::vec2& translation, const glm::vec2& scale);

void createSector(pmGL::TriangleFanMesh<TexturingVertex>& mesh, float start, float end,
                  float radius, int segmentCount, float angle, const glm::vec2& translation,
                  const glm::vec2& scale);
void createSector(pmGL::TriangleFanMesh<SignedPositionVertex>& mesh, float start, float end,
                  float radius, int segmentCount);
void createSector(pmGL::TriangleFanMesh<SignedTexturingVertex>& mesh, float start, float end,
                  float radius, int segmentCount, float angle, const glm::vec2& translation,
                  const glm::vec2& scale);
void createCircle(pmGL::TriangleFanMesh<TexturingVertex>& mesh, float radius, int segmentCount,
                  float angle, const glm::vec2& translation, const glm::vec2& scale);
void createCircle(pmGL::TriangleFanMesh<SignedPositionVertex>& mesh, float radius,
                  int segmentCount);
void createCircle(pmGL::TriangleFanMesh<SignedTexturingVertex>& mesh, float radius,
                  int segmentCount, float angle, const glm::vec2& translation,
                  const glm::vec2& scale);

void createEdgedSector(pmGL::IndexedTriangleMesh<EdgedTexturingVertex>& mesh, float start,
                       float end, float radius, int innerLayer, float edgeWidth, float outerAlpha,
                       int segmentCount, float angle, const glm::vec2& translation,
                       const glm::vec2& scale);
void createEdgedSector(pmGL::IndexedTriangleMesh<EdgedColorTexturingVertex>& mesh, float start,
                       float end, float radius, int innerLayer, float edgeWidth, float outerAlpha,
                       int segmentCount, float angle, const glm::vec2& translation,
                       const glm::vec2& scale, const glm::vec4& color);
void createEdgedCircle(pmGL::IndexedTriangleMesh<EdgedTexturingVertex>& mesh, float radius,
                       int innerLayer, float edgeWidth, float outerAlpha, int segmentCount,
                       float angle, const glm::vec2& translation, const glm::vec2& scale);
void createEdgedCircle(pmGL::IndexedTriangleMesh<EdgedColorTexturingVertex>& mesh, float radius,
                       int innerLayer, float edgeWidth, float outerAlpha, int segmentCount,
                       float angle, const glm::vec2& translation, const glm::vec2& scale,
                       const glm::vec4& color);

void createSignedSector(pmGL::IndexedTriangleMesh<SignedTexturingVertex>& mesh, float start,
                        float end, float radius, int layerSize, int segmentCount, float angle,
                        const glm::vec2& translation, const glm::vec2& scale);
void createSignedSector(pmGL::IndexedTriangleMesh<SignedColorTexturingVertex>& mesh, float start,
                        float end, float radius, int layerSize, int segmentCount, float angle,
                        const glm::vec2& translation, const glm::vec2& scale,
                        const glm::vec4& color);
void createSignedCircle(pmGL::IndexedTriangleMesh<SignedTexturingVertex>& mesh, float radius,
                        int layerSize, int segmentCount, float angle, const glm::vec2& translation,
                        const glm::vec2& scale);
void createSignedCircle(pmGL::IndexedTriangleMesh<SignedColorTexturingVertex>& mesh, float radius,
                        int layerSize, int segmentCount, float angle, const glm::vec2& translation,
                        const glm::vec2& scale, const glm::vec4& color);

void createPlane(pmGL::IndexedTriangleStripMesh<TexturingVertex>& mesh, const glm::vec2& min,
                 const glm::vec2& max, const glm::ivec2& divisions, float angle,
                 const glm::vec2& translation, const glm::vec2& scale);

// A fan from the mean of the positions (value 0) over the positions (value 1),
// closed by the first position again.
void createConvexPolygon(pmGL::TriangleFanMesh<SignedPositionVertex>& mesh,
                         const std::vector<glm::vec2>& outerPositions);
// The positions are mapped without a pivot, with the scale divided by twice the
// greatest distance from the centre; the centre vertex takes `translation`.
void createConvexPolygon(pmGL::TriangleFanMesh<SignedTexturingVertex>& mesh,
                         const std::vector<glm::vec2>& outerPositions, float angle,
                         const glm::vec2& translation, const glm::vec2& scale);

}  // namespace pmMesh

#endif
