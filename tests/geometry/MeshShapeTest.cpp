// Quads, edged quads, planes, convex polygons and the texture coordinate
// mapping, against vertex and index orders worked out here.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "GeometryTestHelpers.h"
#include "LogCapture.h"
#include "pmMesh.h"

using geotest::flatten;
using geotest::vecNear;
using namespace pmMesh;

namespace {

// uv of a box mapped about its centre:
// rotation(angle) x (scale / size) x (p - centre) + translation.
glm::vec2 boxUV(glm::vec2 p, glm::vec2 min, glm::vec2 max, float angle, glm::vec2 translation,
                glm::vec2 scale) {
    const glm::vec2 q = (scale / (max - min)) * (p - (min + max) * 0.5f);
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return glm::vec2(c * q.x - s * q.y, s * q.x + c * q.y) + translation;
}

// uv = rotation(angle) x (scale x p) + translation.
glm::vec2 plainUV(glm::vec2 p, float angle, glm::vec2 translation, glm::vec2 scale) {
    const glm::vec2 q = scale * p;
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return glm::vec2(c * q.x - s * q.y, s * q.x + c * q.y) + translation;
}

TEST(Quad, CornersInStripOrderAndTheOutputIsCleared) {
    std::vector<glm::vec2> positions(9, glm::vec2(5.0f));
    createQuad(positions, glm::vec2(-1.0f, -2.0f), glm::vec2(3.0f, 4.0f));
    EXPECT_EQ(positions,
              (std::vector<glm::vec2>{{-1.0f, -2.0f}, {3.0f, -2.0f}, {-1.0f, 4.0f}, {3.0f, 4.0f}}));
}

TEST(Quad, PositionMeshHasZOfZero) {
    pmGL::TriangleStripMesh<PositionVertex> mesh;
    mesh.vertices.resize(7);
    createQuad(mesh, glm::vec2(0.0f), glm::vec2(2.0f, 1.0f));
    ASSERT_EQ(mesh.vertices.size(), 4u);
    EXPECT_EQ(mesh.vertices[0].position, glm::vec3(0.0f, 0.0f, 0.0f));
    EXPECT_EQ(mesh.vertices[1].position, glm::vec3(2.0f, 0.0f, 0.0f));
    EXPECT_EQ(mesh.vertices[2].position, glm::vec3(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(mesh.vertices[3].position, glm::vec3(2.0f, 1.0f, 0.0f));
    ASSERT_EQ(mesh.attributes.size(), 1u);
    EXPECT_EQ(mesh.attributes[0].name, "aPosition");
}

TEST(Quad, CentredTranslationAndUnitScaleSpanTheTexture) {
    pmGL::TriangleStripMesh<TexturingVertex> mesh;
    createQuad(mesh, glm::vec2(-1.0f), glm::vec2(1.0f), 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    ASSERT_EQ(mesh.vertices.size(), 4u);
    const std::vector<glm::vec2> uv = {{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}, {1.0f, 1.0f}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(vecNear(mesh.vertices[i].texCoord, uv[i])) << i;
        EXPECT_EQ(mesh.vertices[i].position.z, 0.0f);
    }
    EXPECT_EQ(mesh.attributes.size(), 2u);
    EXPECT_EQ(mesh.attributes[1].name, "aTexCoord");
}

TEST(Quad, TextureMappingTurnsAndScalesAboutTheCentre) {
    const glm::vec2 min(2.0f, 3.0f);
    const glm::vec2 max(6.0f, 5.0f);
    const float angle = 0.7f;
    const glm::vec2 translation(0.3f, 0.4f);
    const glm::vec2 scale(2.0f, 0.5f);
    pmGL::TriangleStripMesh<TexturingVertex> mesh;
    createQuad(mesh, min, max, angle, translation, scale);
    std::vector<glm::vec2> corners;
    createQuad(corners, min, max);
    ASSERT_EQ(mesh.vertices.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(mesh.vertices[i].position, glm::vec3(corners[i], 0.0f));
        EXPECT_TRUE(vecNear(mesh.vertices[i].texCoord,
                            boxUV(corners[i], min, max, angle, translation, scale)))
            << i;
    }
}

TEST(MapTexCoord, WithoutAndWithPivot) {
    const std::vector<glm::vec2> points = {{1.0f, 0.0f}, {0.0f, 2.0f}, {-3.0f, 1.0f}};
    const float angle = 1.2f;
    const glm::vec2 translation(0.5f, -0.5f);
    const glm::vec2 scale(2.0f, 3.0f);
    std::vector<glm::vec2> out(1, glm::vec2(9.0f));
    mapTexCoord(out, points, translation, scale, angle);
    ASSERT_EQ(out.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_TRUE(vecNear(out[i], plainUV(points[i], angle, translation, scale))) << i;
    }
    const glm::vec2 pivot(1.0f, 1.0f);
    mapTexCoord(out, points, translation, scale, angle, pivot);
    ASSERT_EQ(out.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_TRUE(vecNear(out[i], plainUV(points[i] - pivot, angle, translation, scale) + pivot))
            << i;
    }
}

TEST(EdgedQuad, InnerThenOuterCornersAndTheTenTriangles) {
    std::vector<glm::vec2> positions(3);
    std::vector<float> alphas(3);
    std::vector<pmGL::IndexedTriangle> triangles(2);
    createEdgedQuad(positions, alphas, triangles, glm::vec2(0.0f), glm::vec2(10.0f, 6.0f), 1.0f,
                    0.25f);
    EXPECT_EQ(positions, (std::vector<glm::vec2>{{1.0f, 1.0f},
                                                 {9.0f, 1.0f},
                                                 {1.0f, 5.0f},
                                                 {9.0f, 5.0f},
                                                 {0.0f, 0.0f},
                                                 {10.0f, 0.0f},
                                                 {0.0f, 6.0f},
                                                 {10.0f, 6.0f}}));
    EXPECT_EQ(alphas, (std::vector<float>{1.0f, 1.0f, 1.0f, 1.0f, 0.25f, 0.25f, 0.25f, 0.25f}));
    EXPECT_EQ(flatten(triangles),
              (std::vector<unsigned short>{0, 1, 2, 2, 1, 3, 0, 4, 5, 5, 1, 0, 1, 5, 7,
                                           7, 3, 1, 3, 7, 6, 6, 2, 3, 2, 6, 4, 4, 0, 2}));
}

TEST(EdgedQuad, MeshMapsOverTheOuterQuad) {
    const glm::vec2 min(-2.0f, -1.0f);
    const glm::vec2 max(2.0f, 1.0f);
    pmGL::IndexedTriangleMesh<EdgedTexturingVertex> mesh;
    createEdgedQuad(mesh, min, max, 0.5f, 0.0f, 0.3f, glm::vec2(0.5f), glm::vec2(1.0f, 2.0f));
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles;
    createEdgedQuad(positions, alphas, triangles, min, max, 0.5f, 0.0f);
    ASSERT_EQ(mesh.vertices.size(), 8u);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(mesh.vertices[i].position, positions[i]);
        EXPECT_EQ(mesh.vertices[i].edgeAlpha, alphas[i]);
        EXPECT_TRUE(
            vecNear(mesh.vertices[i].texCoord,
                    boxUV(positions[i], min, max, 0.3f, glm::vec2(0.5f), glm::vec2(1.0f, 2.0f))))
            << i;
    }
    EXPECT_EQ(flatten(mesh.triangles), flatten(triangles));
    ASSERT_EQ(mesh.attributes.size(), 3u);
    EXPECT_EQ(mesh.attributes[2].name, "aEdgeAlpha");
}

TEST(Plane, OneByOneIsAQuadStrip) {
    std::vector<glm::vec2> positions;
    std::vector<unsigned short> indices(5, 9);
    createPlane(positions, indices, glm::vec2(0.0f), glm::vec2(2.0f), glm::ivec2(1, 1));
    EXPECT_EQ(positions,
              (std::vector<glm::vec2>{{0.0f, 0.0f}, {2.0f, 0.0f}, {0.0f, 2.0f}, {2.0f, 2.0f}}));
    EXPECT_EQ(indices, (std::vector<unsigned short>{0, 2, 1, 3}));
}

TEST(Plane, RowsJoinedByTwoLinkingIndices) {
    std::vector<glm::vec2> positions;
    std::vector<unsigned short> indices;
    createPlane(positions, indices, glm::vec2(1.0f, -2.0f), glm::vec2(4.0f, 2.0f),
                glm::ivec2(3, 2));
    ASSERT_EQ(positions.size(), 12u);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(positions[y * 4 + x], glm::vec2(1.0f + x, -2.0f + 2.0f * y)) << x << "," << y;
        }
    }
    EXPECT_EQ(indices, (std::vector<unsigned short>{0, 4, 1, 5, 2, 6, 3, 7, 7, 4, 4, 8, 5, 9, 6, 10,
                                                    7, 11}));
}

TEST(Plane, MeshMapsAboutItsCentre) {
    pmGL::IndexedTriangleStripMesh<TexturingVertex> mesh;
    createPlane(mesh, glm::vec2(0.0f), glm::vec2(1.0f), glm::ivec2(3, 3), 0.0f, glm::vec2(0.5f),
                glm::vec2(1.0f));
    ASSERT_EQ(mesh.vertices.size(), 16u);
    for (const TexturingVertex& v : mesh.vertices) {
        EXPECT_TRUE(vecNear(v.texCoord, glm::vec2(v.position)));
        EXPECT_EQ(v.position.z, 0.0f);
    }
    EXPECT_EQ(mesh.indices.size(), 3u * 8u + 2u * 2u);
    EXPECT_EQ(mesh.attributes.size(), 2u);

    createPlane(mesh, glm::vec2(-2.0f, 0.0f), glm::vec2(2.0f, 1.0f), glm::ivec2(2, 1), 0.4f,
                glm::vec2(0.1f, 0.2f), glm::vec2(3.0f, 1.0f));
    ASSERT_EQ(mesh.vertices.size(), 6u);
    for (const TexturingVertex& v : mesh.vertices) {
        EXPECT_TRUE(vecNear(
            v.texCoord, boxUV(glm::vec2(v.position), glm::vec2(-2.0f, 0.0f), glm::vec2(2.0f, 1.0f),
                              0.4f, glm::vec2(0.1f, 0.2f), glm::vec2(3.0f, 1.0f))));
    }
    EXPECT_EQ(mesh.indices, (std::vector<unsigned short>{0, 3, 1, 4, 2, 5}));
}

const std::vector<glm::vec2> SQUARE = {{1.0f, 1.0f}, {3.0f, 1.0f}, {3.0f, 3.0f}, {1.0f, 3.0f}};

TEST(ConvexPolygon, FanFromTheMeanClosedByTheFirstPosition) {
    pmGL::TriangleFanMesh<SignedPositionVertex> mesh;
    LogCapture log;
    createConvexPolygon(mesh, SQUARE);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_EQ(mesh.vertices.size(), 6u);
    EXPECT_EQ(mesh.vertices[0].position, glm::vec2(2.0f, 2.0f));
    EXPECT_EQ(mesh.vertices[0].signVal, 0.0f);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(mesh.vertices[i + 1].position, SQUARE[i]);
        EXPECT_EQ(mesh.vertices[i + 1].signVal, 1.0f);
    }
    EXPECT_EQ(mesh.vertices[5].position, SQUARE[0]);
    EXPECT_EQ(mesh.vertices[5].signVal, 1.0f);
    EXPECT_EQ(mesh.attributes.size(), 2u);
    EXPECT_EQ(mesh.attributes[1].name, "aSignVal");
}

TEST(ConvexPolygon, TexturingMapsAboutTheOriginAndGivesTheCentreTheTranslation) {
    pmGL::TriangleFanMesh<SignedTexturingVertex> mesh;
    const float angle = 0.5f;
    const glm::vec2 translation(0.5f, 0.5f);
    const glm::vec2 scale(1.0f, 2.0f);
    createConvexPolygon(mesh, SQUARE, angle, translation, scale);
    ASSERT_EQ(mesh.vertices.size(), 6u);
    // Every corner is sqrt(2) from the centre: size 2 sqrt(2).
    const glm::vec2 perSize = scale / (2.0f * std::sqrt(2.0f));
    EXPECT_EQ(mesh.vertices[0].position, glm::vec2(2.0f, 2.0f));
    EXPECT_EQ(mesh.vertices[0].texCoord, translation);
    EXPECT_EQ(mesh.vertices[0].signVal, 0.0f);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(
            vecNear(mesh.vertices[i + 1].texCoord, plainUV(SQUARE[i], angle, translation, perSize)))
            << i;
        EXPECT_EQ(mesh.vertices[i + 1].signVal, 1.0f);
    }
    EXPECT_EQ(mesh.vertices[5].texCoord, mesh.vertices[1].texCoord);
    EXPECT_EQ(mesh.vertices[5].position, SQUARE[0]);
    EXPECT_EQ(mesh.attributes.size(), 3u);
}

TEST(ConvexPolygon, FewerThanThreePositionsAreLoggedAndUsed) {
    pmGL::TriangleFanMesh<SignedPositionVertex> mesh;
    LogCapture log;
    createConvexPolygon(mesh, {{0.0f, 0.0f}, {2.0f, 0.0f}});
    EXPECT_EQ(log.countEndingWith("> outerPositions.size() >= 3"), 1) << log.dump();
    EXPECT_EQ(log.count("pmMesh: createConvexPolygon("), 2) << log.dump();
    ASSERT_EQ(mesh.vertices.size(), 4u);
    EXPECT_EQ(mesh.vertices[0].position, glm::vec2(1.0f, 0.0f));
    EXPECT_EQ(mesh.vertices[3].position, glm::vec2(0.0f, 0.0f));

    log.clear();
    pmGL::TriangleFanMesh<SignedTexturingVertex> textured;
    createConvexPolygon(textured, {}, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    EXPECT_EQ(log.countEndingWith("> outerPositions.size() >= 3"), 1) << log.dump();
    // Only the centre: there is no position to close the fan with.
    ASSERT_EQ(textured.vertices.size(), 1u);
    EXPECT_EQ(textured.vertices[0].texCoord, glm::vec2(0.5f));
}

}  // namespace
