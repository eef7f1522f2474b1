// Circle sectors and circles: plain fans, and the edged and signed forms made
// of rings for soft edges.
#include <cmath>
#include <limits>

#include "pmMesh.fill.h"
#include "pmMesh.h"
#include "pmUtil.h"

namespace pmMesh {

namespace {

constexpr float TWO_PI = 6.2831855f;

std::size_t reserveCount(long long count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

// The unit points of the sector followed by its exact end point: the ring that
// every sector is built from.
std::vector<glm::vec2> unitRing(float start, float end, int segmentCount) {
    std::vector<glm::vec2> ring;
    createUnitSector(ring, start, end, segmentCount);
    ring.push_back(glm::vec2(std::cos(end), std::sin(end)));
    return ring;
}

// The fan from the centre (index 0) to the ring starting at index 1, then the
// `bandCount` bands between consecutive rings of n points each.
void fillRingTriangles(std::vector<pmGL::IndexedTriangle>& triangles, int n, int bandCount) {
    triangles.clear();
    triangles.reserve(reserveCount(static_cast<long long>(n - 1) * (bandCount * 2 + 1)));
    for (int i = 1; i <= n - 1; ++i) {
        triangles.push_back(
            {0, static_cast<unsigned short>(i), static_cast<unsigned short>(i + 1)});
    }
    for (int band = 0; band < bandCount; ++band) {
        const int a = 1 + band * n;
        const int b = a + n;
        for (int j = 1; j <= n - 1; ++j) {
            triangles.push_back({static_cast<unsigned short>(a + j - 1),
                                 static_cast<unsigned short>(a + j),
                                 static_cast<unsigned short>(b + j - 1)});
            triangles.push_back({static_cast<unsigned short>(b + j - 1),
                                 static_cast<unsigned short>(a + j),
                                 static_cast<unsigned short>(b + j)});
        }
    }
}

// Sectors are mapped about the origin with the scale spread over the diameter.
void mapSector(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions, float radius,
               float angle, const glm::vec2& translation, const glm::vec2& scale) {
    mapTexCoord(out, positions, translation, scale / (2.0f * radius), angle);
}

}  // namespace

// Negative angles from just below zero upwards are taken as they are; lower
// ones are moved up a turn. A span of (almost) nothing becomes a whole turn.
void createUnitSector(std::vector<glm::vec2>& positions, float start, float end, int segmentCount) {
    const float epsilon = std::numeric_limits<float>::epsilon();
    if (start < -epsilon) start += TWO_PI;
    if (end < -epsilon) end += TWO_PI;
    float delta = end - start;
    if (delta < epsilon) delta += TWO_PI;
    const float step = TWO_PI / static_cast<float>(segmentCount);
    const int count = static_cast<int>(std::roundf(delta / step));
    positions.clear();
    positions.reserve(reserveCount(count));
    for (int i = 0; i < count; ++i) {
        const float angle = static_cast<float>(i) * step + start;
        positions.push_back(glm::vec2(std::cos(angle), std::sin(angle)));
    }
}

void createSector(std::vector<glm::vec2>& positions, float start, float end, float radius,
                  int segmentCount) {
    const std::vector<glm::vec2> ring = unitRing(start, end, segmentCount);
    positions.clear();
    positions.reserve(ring.size() + 1);
    positions.push_back(glm::vec2(0.0f, 0.0f));
    for (const glm::vec2& p : ring) positions.push_back(p * radius);
}

void createEdgedSector(std::vector<glm::vec2>& positions, std::vector<float>& alphas,
                       std::vector<pmGL::IndexedTriangle>& triangles, float start, float end,
                       float radius, int innerLayer, float edgeWidth, float outerAlpha,
                       int segmentCount) {
    PM_ASSERT(innerLayer >= 1);
    const std::vector<glm::vec2> ring = unitRing(start, end, segmentCount);
    const int n = static_cast<int>(ring.size());
    const float innerRadius = radius - edgeWidth;
    const std::size_t vertexCount = reserveCount((static_cast<long long>(innerLayer) + 1) * n + 1);
    positions.clear();
    alphas.clear();
    positions.reserve(vertexCount);
    alphas.reserve(vertexCount);
    positions.push_back(glm::vec2(0.0f, 0.0f));
    alphas.push_back(1.0f);
    for (int layer = 1; layer <= innerLayer; ++layer) {
        const float layerRadius =
            static_cast<float>(layer) * innerRadius / static_cast<float>(innerLayer);
        for (const glm::vec2& p : ring) {
            positions.push_back(p * layerRadius);
            alphas.push_back(1.0f);
        }
    }
    for (const glm::vec2& p : ring) {
        positions.push_back(p * radius);
        alphas.push_back(outerAlpha);
    }
    fillRingTriangles(triangles, n, innerLayer > 0 ? innerLayer : 0);
}

void createSignedSector(std::vector<glm::vec2>& positions, std::vector<float>& values,
                        std::vector<pmGL::IndexedTriangle>& triangles, float start, float end,
                        float radius, int layerSize, int segmentCount) {
    PM_ASSERT(layerSize >= 1);
    const std::vector<glm::vec2> ring = unitRing(start, end, segmentCount);
    const int n = static_cast<int>(ring.size());
    const std::size_t vertexCount = reserveCount(static_cast<long long>(n) * layerSize + 1);
    positions.clear();
    values.clear();
    positions.reserve(vertexCount);
    values.reserve(vertexCount);
    positions.push_back(glm::vec2(0.0f, 0.0f));
    values.push_back(0.0f);
    for (int layer = 1; layer <= layerSize; ++layer) {
        const float t = static_cast<float>(layer) / static_cast<float>(layerSize);
        for (const glm::vec2& p : ring) {
            positions.push_back(p * (t * radius));
            values.push_back(t);
        }
    }
    fillRingTriangles(triangles, n, layerSize > 1 ? layerSize - 1 : 0);
}

void createSector(pmGL::TriangleFanMesh<TexturingVertex>& mesh, float start, float end,
                  float radius, int segmentCount, float angle, const glm::vec2& translation,
                  const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<glm::vec2> texCoords;
    createSector(positions, start, end, radius, segmentCount);
    mapSector(texCoords, positions, radius, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return TexturingVertex{glm::vec3(positions[i], 0.0f), texCoords[i]};
    });
}

void createSector(pmGL::TriangleFanMesh<SignedPositionVertex>& mesh, float start, float end,
                  float radius, int segmentCount) {
    std::vector<glm::vec2> positions;
    createSector(positions, start, end, radius, segmentCount);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return SignedPositionVertex{positions[i], i == 0 ? 0.0f : 1.0f};
    });
}

void createSector(pmGL::TriangleFanMesh<SignedTexturingVertex>& mesh, float start, float end,
                  float radius, int segmentCount, float angle, const glm::vec2& translation,
                  const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<glm::vec2> texCoords;
    createSector(positions, start, end, radius, segmentCount);
    mapSector(texCoords, positions, radius, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return SignedTexturingVertex{positions[i], texCoords[i], i == 0 ? 0.0f : 1.0f};
    });
}

void createCircle(pmGL::TriangleFanMesh<TexturingVertex>& mesh, float radius, int segmentCount,
                  float angle, const glm::vec2& translation, const glm::vec2& scale) {
    createSector(mesh, 0.0f, 0.0f, radius, segmentCount, angle, translation, scale);
}

void createCircle(pmGL::TriangleFanMesh<SignedPositionVertex>& mesh, float radius,
                  int segmentCount) {
    createSector(mesh, 0.0f, 0.0f, radius, segmentCount);
}

void createCircle(pmGL::TriangleFanMesh<SignedTexturingVertex>& mesh, float radius,
                  int segmentCount, float angle, const glm::vec2& translation,
                  const glm::vec2& scale) {
    createSector(mesh, 0.0f, 0.0f, radius, segmentCount, angle, translation, scale);
}

void createEdgedSector(pmGL::IndexedTriangleMesh<EdgedTexturingVertex>& mesh, float start,
                       float end, float radius, int innerLayer, float edgeWidth, float outerAlpha,
                       int segmentCount, float angle, const glm::vec2& translation,
                       const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<glm::vec2> texCoords;
    createEdgedSector(positions, alphas, mesh.triangles, start, end, radius, innerLayer, edgeWidth,
                      outerAlpha, segmentCount);
    mapSector(texCoords, positions, radius, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return EdgedTexturingVertex{positions[i], texCoords[i], alphas[i]};
    });
}

void createEdgedSector(pmGL::IndexedTriangleMesh<EdgedColorTexturingVertex>& mesh, float start,
                       float end, float radius, int innerLayer, float edgeWidth, float outerAlpha,
                       int segmentCount, float angle, const glm::vec2& translation,
                       const glm::vec2& scale, const glm::vec4& color) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<glm::vec2> texCoords;
    createEdgedSector(positions, alphas, mesh.triangles, start, end, radius, innerLayer, edgeWidth,
                      outerAlpha, segmentCount);
    mapSector(texCoords, positions, radius, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return EdgedColorTexturingVertex{positions[i], color, texCoords[i], alphas[i]};
    });
}

void createEdgedCircle(pmGL::IndexedTriangleMesh<EdgedTexturingVertex>& mesh, float radius,
                       int innerLayer, float edgeWidth, float outerAlpha, int segmentCount,
                       float angle, const glm::vec2& translation, const glm::vec2& scale) {
    createEdgedSector(mesh, 0.0f, 0.0f, radius, innerLayer, edgeWidth, outerAlpha, segmentCount,
                      angle, translation, scale);
}

void createEdgedCircle(pmGL::IndexedTriangleMesh<EdgedColorTexturingVertex>& mesh, float radius,
                       int innerLayer, float edgeWidth, float outerAlpha, int segmentCount,
                       float angle, const glm::vec2& translation, const glm::vec2& scale,
                       const glm::vec4& color) {
    createEdgedSector(mesh, 0.0f, 0.0f, radius, innerLayer, edgeWidth, outerAlpha, segmentCount,
                      angle, translation, scale, color);
}

void createSignedSector(pmGL::IndexedTriangleMesh<SignedTexturingVertex>& mesh, float start,
                        float end, float radius, int layerSize, int segmentCount, float angle,
                        const glm::vec2& translation, const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<float> values;
    std::vector<glm::vec2> texCoords;
    createSignedSector(positions, values, mesh.triangles, start, end, radius, layerSize,
                       segmentCount);
    mapSector(texCoords, positions, radius, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return SignedTexturingVertex{positions[i], texCoords[i], values[i]};
    });
}

void createSignedSector(pmGL::IndexedTriangleMesh<SignedColorTexturingVertex>& mesh, float start,
                        float end, float radius, int layerSize, int segmentCount, float angle,
                        const glm::vec2& translation, const glm::vec2& scale,
                        const glm::vec4& color) {
    std::vector<glm::vec2> positions;
    std::vector<float> values;
    std::vector<glm::vec2> texCoords;
    createSignedSector(positions, values, mesh.triangles, start, end, radius, layerSize,
                       segmentCount);
    mapSector(texCoords, positions, radius, angle, translation, scale);
    fillVertices(mesh, positions.size(), [&](std::size_t i) {
        return SignedColorTexturingVertex{positions[i], color, texCoords[i], values[i]};
    });
}

void createSignedCircle(pmGL::IndexedTriangleMesh<SignedTexturingVertex>& mesh, float radius,
                        int layerSize, int segmentCount, float angle, const glm::vec2& translation,
                        const glm::vec2& scale) {
    createSignedSector(mesh, 0.0f, 0.0f, radius, layerSize, segmentCount, angle, translation,
                       scale);
}

void createSignedCircle(pmGL::IndexedTriangleMesh<SignedColorTexturingVertex>& mesh, float radius,
                        int layerSize, int segmentCount, float angle, const glm::vec2& translation,
                        const glm::vec2& scale, const glm::vec4& color) {
    createSignedSector(mesh, 0.0f, 0.0f, radius, layerSize, segmentCount, angle, translation, scale,
                       color);
}

}  // namespace pmMesh
