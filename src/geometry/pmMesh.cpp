// Vertex formats with their attribute tables; quads, planes and convex
// polygons; the texture coordinate mapping shared by every textured shape.
#include "pmMesh.fill.h"
#include "pmMesh.h"

#include <algorithm>
#include <cstddef>

#include "pmMath.h"
#include "pmUtil.h"

namespace pmMesh {

namespace {

pmGL::VertexAttribute floatAttribute(int size, int stride, std::uintptr_t offset,
                                     const char* name) {
    pmGL::VertexAttribute attribute;
    attribute.type = GL_FLOAT;
    attribute.size = size;
    attribute.normalized = false;
    attribute.stride = stride;
    attribute.offset = offset;
    attribute.name = name;
    return attribute;
}

// The attribute tables are the buffer layout, so the structures must be packed
// exactly as the tables say.
static_assert(sizeof(PositionVertex) == 12, "PositionVertex layout");
static_assert(sizeof(TexturingVertex) == 20 && offsetof(TexturingVertex, texCoord) == 12,
              "TexturingVertex layout");
static_assert(sizeof(ColoringVertex) == 28 && offsetof(ColoringVertex, color) == 12,
              "ColoringVertex layout");
static_assert(sizeof(ShadingVertex) == 24 && offsetof(ShadingVertex, normal) == 12,
              "ShadingVertex layout");
static_assert(sizeof(TextureShadingVertex) == 32 && offsetof(TextureShadingVertex, normal) == 12 &&
                  offsetof(TextureShadingVertex, texCoord) == 24,
              "TextureShadingVertex layout");
static_assert(sizeof(EdgedPositionVertex) == 12 && offsetof(EdgedPositionVertex, edgeAlpha) == 8,
              "EdgedPositionVertex layout");
static_assert(sizeof(EdgedTexturingVertex) == 20 && offsetof(EdgedTexturingVertex, texCoord) == 8 &&
                  offsetof(EdgedTexturingVertex, edgeAlpha) == 16,
              "EdgedTexturingVertex layout");
static_assert(sizeof(EdgedColorTexturingVertex) == 36 &&
                  offsetof(EdgedColorTexturingVertex, color) == 8 &&
                  offsetof(EdgedColorTexturingVertex, texCoord) == 24 &&
                  offsetof(EdgedColorTexturingVertex, edgeAlpha) == 32,
              "EdgedColorTexturingVertex layout");
static_assert(sizeof(SignedPositionVertex) == 12 && offsetof(SignedPositionVertex, signVal) == 8,
              "SignedPositionVertex layout");
static_assert(sizeof(SignedTexturingVertex) == 20 &&
                  offsetof(SignedTexturingVertex, texCoord) == 8 &&
                  offsetof(SignedTexturingVertex, signVal) == 16,
              "SignedTexturingVertex layout");
static_assert(sizeof(SignedColorTexturingVertex) == 36 &&
                  offsetof(SignedColorTexturingVertex, color) == 8 &&
                  offsetof(SignedColorTexturingVertex, texCoord) == 24 &&
                  offsetof(SignedColorTexturingVertex, signVal) == 32,
              "SignedColorTexturingVertex layout");
static_assert(sizeof(TextVertex) == 16, "TextVertex layout");

// Size of an output about to be filled; negative counts from bad arguments
// reserve nothing.
std::size_t reserveCount(long long count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace

const std::vector<pmGL::VertexAttribute> PositionVertex::defaultAttribs = {
    floatAttribute(3, 12, 0, "aPosition")};

const std::vector<pmGL::VertexAttribute> TexturingVertex::defaultAttribs = {
    floatAttribute(3, 20, 0, "aPosition"), floatAttribute(2, 20, 12, "aTexCoord")};

const std::vector<pmGL::VertexAttribute> ColoringVertex::defaultAttribs = {
    floatAttribute(3, 28, 0, "aPosition"), floatAttribute(4, 28, 12, "aColor")};

const std::vector<pmGL::VertexAttribute> ShadingVertex::defaultAttribs = {
    floatAttribute(3, 24, 0, "aPosition"), floatAttribute(3, 24, 12, "aNormal")};

const std::vector<pmGL::VertexAttribute> TextureShadingVertex::defaultAttribs = {
    floatAttribute(3, 32, 0, "aPosition"), floatAttribute(3, 32, 12, "aNormal"),
    floatAttribute(2, 32, 24, "aTexCoord")};

const std::vector<pmGL::VertexAttribute> EdgedPositionVertex::defaultAttribs = {
    floatAttribute(2, 12, 0, "aPosition"), floatAttribute(1, 12, 8, "aEdgeAlpha")};

const std::vector<pmGL::VertexAttribute> EdgedTexturingVertex::defaultAttribs = {
    floatAttribute(2, 20, 0, "aPosition"), floatAttribute(2, 20, 8, "aTexCoord"),
    floatAttribute(1, 20, 16, "aEdgeAlpha")};

const std::vector<pmGL::VertexAttribute> EdgedColorTexturingVertex::defaultAttribs = {
    floatAttribute(2, 36, 0, "aPosition"), floatAttribute(4, 36, 8, "aColor"),
    floatAttribute(2, 36, 24, "aTexCoord"), floatAttribute(1, 36, 32, "aEdgeAlpha")};

const std::vector<pmGL::VertexAttribute> SignedPositionVertex::defaultAttribs = {
    floatAttribute(2, 12, 0, "aPosition"), floatAttribute(1, 12, 8, "aSignVal")};

const std::vector<pmGL::VertexAttribute> SignedTexturingVertex::defaultAttribs = {
    floatAttribute(2, 20, 0, "aPosition"), floatAttribute(2, 20, 8, "aTexCoord"),
    floatAttribute(1, 20, 16, "aSignVal")};

const std::vector<pmGL::VertexAttribute> SignedColorTexturingVertex::defaultAttribs = {
    floatAttribute(2, 36, 0, "aPosition"), floatAttribute(4, 36, 8, "aColor"),
    floatAttribute(2, 36, 24, "aTexCoord"), floatAttribute(1, 36, 32, "aSignVal")};

const std::vector<pmGL::VertexAttribute> TextVertex::defaultAttribs = {
    floatAttribute(4, 16, 0, "vertex")};

void createQuad(std::vector<glm::vec2>& positions, const glm::vec2& min, const glm::vec2& max) {
    positions.clear();
    positions.reserve(4);
    positions.push_back({min.x, min.y});
    positions.push_back({max.x, min.y});
    positions.push_back({min.x, max.y});
    positions.push_back({max.x, max.y});
}

void createEdgedQuad(std::vector<glm::vec2>& positions, std::vector<float>& alphas,
                     std::vector<pmGL::IndexedTriangle>& triangles, const glm::vec2& min,
                     const glm::vec2& max, float edgeWidth, float outerAlpha) {
    std::vector<glm::vec2> inner;
    std::vector<glm::vec2> outer;
    createQuad(inner, min + edgeWidth, max - edgeWidth);
    createQuad(outer, min, max);
    positions.clear();
    positions.reserve(8);
    positions.insert(positions.end(), inner.begin(), inner.end());
    positions.insert(positions.end(), outer.begin(), outer.end());
    alphas.assign(4, 1.0f);
    alphas.insert(alphas.end(), 4, outerAlpha);
    // The inner quad, then the border band side by side: bottom, right, top,
    // left.
    triangles = {{0, 1, 2}, {2, 1, 3}, {0, 4, 5}, {5, 1, 0}, {1, 5, 7},
                 {7, 3, 1}, {3, 7, 6}, {6, 2, 3}, {2, 6, 4}, {4, 0, 2}};
}

void createPlane(std::vector<glm::vec2>& positions, std::vector<unsigned short>& indices,
                 const glm::vec2& min, const glm::vec2& max, const glm::ivec2& divisions) {
    const int nx = divisions.x + 1;
    const int ny = divisions.y + 1;
    const float stepX = (max.x - min.x) / static_cast<float>(divisions.x);
    const float stepY = (max.y - min.y) / static_cast<float>(divisions.y);
    positions.clear();
    positions.reserve(reserveCount(static_cast<long long>(nx) * ny));
    for (int y = 0; y <= divisions.y; ++y) {
        for (int x = 0; x <= divisions.x; ++x) {
            positions.push_back(
                min + glm::vec2(static_cast<float>(x) * stepX, static_cast<float>(y) * stepY));
        }
    }
    indices.clear();
    indices.reserve(reserveCount(static_cast<long long>(divisions.y) * nx * 2 +
                                 (static_cast<long long>(divisions.y) - 1) * 2));
    for (int r = 0; r < divisions.y; ++r) {
        for (int i = 0; i < nx; ++i) {
            indices.push_back(static_cast<unsigned short>(r * nx + i));
            indices.push_back(static_cast<unsigned short>((r + 1) * nx + i));
        }
        // Two repeated indices make the degenerate triangles that carry the
        // strip on to the next row.
        if (r < divisions.y - 1) {
            indices.push_back(static_cast<unsigned short>(divisions.x + (r + 1) * nx));
            indices.push_back(static_cast<unsigned short>((r + 1) * nx));
        }
    }
}

void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle) {
    const glm::mat3 m = pmMath::getTrasformMatrix(translation, scale, angle);
    out.clear();
    out.reserve(positions.size());
    for (const glm::vec2& p : positions) out.push_back(glm::vec2(m * glm::vec3(p, 1.0f)));
}

void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle,
                 const glm::vec2& pivot) {
    const glm::mat3 m = pmMath::getTrasformMatrix(translation, scale, angle);
    out.clear();
    out.reserve(positions.size());
    for (const glm::vec2& p : positions) {
        out.push_back(glm::vec2(m * glm::vec3(p - pivot, 1.0f)) + pivot);
    }
}

namespace {

// Texture coordinates of a box from min to max, turned about its centre.
void mapBox(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
            const glm::vec2& min, const glm::vec2& max, float angle, const glm::vec2& translation,
            const glm::vec2& scale) {
    const glm::vec2 centre = (min + max) * 0.5f;
    mapTexCoord(out, positions, translation - centre, scale / (max - min), angle, centre);
}

}  // namespace

void createQuad(pmGL::TriangleStripMesh<PositionVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max) {
    std::vector<glm::vec2> positions;
    createQuad(positions, min, max);
    fillVertices(mesh, positions.size(),
                 [&](std::size_t i) { return PositionVertex{glm::vec3(positions[i], 0.0f)}; });
}

void createQuad(pmGL::TriangleStripMesh<TexturingVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max, float angle, const glm::vec2& translation,
                const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<glm::vec2> texCoords;
    createQuad(positions, min, max);
    mapBox(texCoords, positions, min, max, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return TexturingVertex{glm::vec3(positions[i], 0.0f), texCoords[i]};
    });
}

void createEdgedQuad(pmGL::IndexedTriangleMesh<EdgedTexturingVertex>& mesh, const glm::vec2& min,
                     const glm::vec2& max, float edgeWidth, float outerAlpha, float angle,
                     const glm::vec2& translation, const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<glm::vec2> texCoords;
    createEdgedQuad(positions, alphas, mesh.triangles, min, max, edgeWidth, outerAlpha);
    mapBox(texCoords, positions, min, max, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return EdgedTexturingVertex{positions[i], texCoords[i], alphas[i]};
    });
}

void createPlane(pmGL::IndexedTriangleStripMesh<TexturingVertex>& mesh, const glm::vec2& min,
                 const glm::vec2& max, const glm::ivec2& divisions, float angle,
                 const glm::vec2& translation, const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<glm::vec2> texCoords;
    createPlane(positions, mesh.indices, min, max, divisions);
    mapBox(texCoords, positions, min, max, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return TexturingVertex{glm::vec3(positions[i], 0.0f), texCoords[i]};
    });
}

namespace {

glm::vec2 meanOf(const std::vector<glm::vec2>& positions) {
    glm::vec2 sum(0.0f);
    for (const glm::vec2& p : positions) sum += p;
    return positions.empty() ? sum : sum / static_cast<float>(positions.size());
}

}  // namespace

void createConvexPolygon(pmGL::TriangleFanMesh<SignedPositionVertex>& mesh,
                         const std::vector<glm::vec2>& outerPositions) {
    PM_ASSERT(outerPositions.size() >= 3);
    mesh.vertices.clear();
    mesh.vertices.reserve(outerPositions.size() + 2);
    mesh.vertices.push_back({meanOf(outerPositions), 0.0f});
    for (const glm::vec2& p : outerPositions) mesh.vertices.push_back({p, 1.0f});
    // With no position there is nothing to close the fan with.
    if (!outerPositions.empty()) mesh.vertices.push_back({outerPositions.front(), 1.0f});
    mesh.attributes = SignedPositionVertex::defaultAttribs;
}

// The mapping has no pivot: a polygon away from the origin is mapped about the
// origin, while its centre vertex still takes `translation`.
void createConvexPolygon(pmGL::TriangleFanMesh<SignedTexturingVertex>& mesh,
                         const std::vector<glm::vec2>& outerPositions, float angle,
                         const glm::vec2& translation, const glm::vec2& scale) {
    PM_ASSERT(outerPositions.size() >= 3);
    const glm::vec2 centre = meanOf(outerPositions);
    float farthest = 0.0f;
    for (const glm::vec2& p : outerPositions)
        farthest = std::max(farthest, glm::length(p - centre));
    const float size = 2.0f * farthest;
    std::vector<glm::vec2> texCoords;
    mapTexCoord(texCoords, outerPositions, translation, scale / size, angle);
    mesh.vertices.clear();
    mesh.vertices.reserve(outerPositions.size() + 2);
    mesh.vertices.push_back({centre, translation, 0.0f});
    for (std::size_t i = 0; i < outerPositions.size(); ++i) {
        mesh.vertices.push_back({outerPositions[i], texCoords[i], 1.0f});
    }
    if (!outerPositions.empty()) {
        mesh.vertices.push_back({outerPositions.front(), texCoords.front(), 1.0f});
    }
    mesh.attributes = SignedTexturingVertex::defaultAttribs;
}

}  // namespace pmMesh
