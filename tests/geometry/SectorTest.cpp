// Unit sectors, sectors, circles, and the edged and signed ring forms.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "GeometryTestHelpers.h"
#include "LogCapture.h"
#include "pmMesh.h"

using geotest::flatten;
using geotest::vecNear;
using namespace pmMesh;

namespace {

const float PI = 3.1415927f;
const float TWO_PI = 6.2831855f;
const float EPSILON = std::numeric_limits<float>::epsilon();

glm::vec2 unit(float angle) {
    return glm::vec2(std::cos(angle), std::sin(angle));
}

// uv = rotation(angle) x (scale x p) + translation.
glm::vec2 plainUV(glm::vec2 p, float angle, glm::vec2 translation, glm::vec2 scale) {
    const glm::vec2 q = scale * p;
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return glm::vec2(c * q.x - s * q.y, s * q.x + c * q.y) + translation;
}

void expectPoints(const std::vector<glm::vec2>& actual, const std::vector<glm::vec2>& expected,
                  float tolerance = 1e-6f) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(vecNear(actual[i], expected[i], tolerance)) << "point " << i;
    }
}

TEST(UnitSector, StepsFromTheStartAndLeavesTheEndOut) {
    std::vector<glm::vec2> points(5);
    createUnitSector(points, 0.0f, 0.5f * PI, 8);
    expectPoints(points, {unit(0.0f), unit(0.25f * PI)});
    // Steps keep their size: the last one may fall short of the end.
    createUnitSector(points, 0.25f, 1.0f, 12);  // 0.75 / 0.5236 rounds to 1
    expectPoints(points, {unit(0.25f)});
    createUnitSector(points, 0.0f, 1.0f, 8);  // 1 / 0.785 rounds to 1
    expectPoints(points, {unit(0.0f)});
    createUnitSector(points, 0.0f, 1.2f, 8);  // 1.2 / 0.785 rounds to 2
    expectPoints(points, {unit(0.0f), unit(TWO_PI / 8.0f)});
}

TEST(UnitSector, EqualStartAndEndGiveTheWholeCircle) {
    std::vector<glm::vec2> points;
    createUnitSector(points, 1.0f, 1.0f, 6);
    ASSERT_EQ(points.size(), 6u);
    const float step = TWO_PI / 6.0f;
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(vecNear(points[i], unit(static_cast<float>(i) * step + 1.0f))) << i;
    }
}

TEST(UnitSector, SlightlyNegativeStartIsLeftAsItIs) {
    std::vector<glm::vec2> points;
    // Within epsilon below zero: the first point is just below the x axis.
    createUnitSector(points, -0.5f * EPSILON, 6.0f, 64);
    ASSERT_EQ(points.size(), 61u);  // 6 / (2 pi / 64) = 61.1
    EXPECT_LT(points[0].y, 0.0f);
    EXPECT_EQ(points[0].y, std::sin(-0.5f * EPSILON));
    // Exactly -epsilon is not below -epsilon either.
    createUnitSector(points, -EPSILON, 6.0f, 64);
    EXPECT_LT(points[0].y, 0.0f);
}

TEST(UnitSector, NegativeStartBelowEpsilonMovesUpATurnBeforeTheSpan) {
    std::vector<glm::vec2> points;
    // Moved to 5.783, the span to 6 is 0.217: two steps of 2 pi / 64. Left at
    // -0.5 it would have been 66.
    createUnitSector(points, -0.5f, 6.0f, 64);
    ASSERT_EQ(points.size(), 2u);
    const float start = -0.5f + TWO_PI;
    expectPoints(points, {unit(start), unit(TWO_PI / 64.0f + start)});
    // The end is moved the same way.
    createUnitSector(points, 0.5f, -5.5f, 64);  // -5.5 + 2 pi = 0.783, span 0.283
    ASSERT_EQ(points.size(), 3u);
}

TEST(UnitSector, EndBeforeStartWrapsToAPositiveSpan) {
    std::vector<glm::vec2> points;
    createUnitSector(points, 1.0f, 0.5f, 12);  // span 2 pi - 0.5 = 11.05 steps
    ASSERT_EQ(points.size(), 11u);
    const float step = TWO_PI / 12.0f;
    EXPECT_TRUE(vecNear(points[0], unit(1.0f)));
    EXPECT_TRUE(vecNear(points[10], unit(10.0f * step + 1.0f)));
}

TEST(UnitSector, StepLargerThanTheSpanGivesNoPoint) {
    std::vector<glm::vec2> points(3);
    createUnitSector(points, 0.0f, 0.1f, 4);
    EXPECT_TRUE(points.empty());
}

TEST(Sector, CentreRimAndTheExactEndPoint) {
    std::vector<glm::vec2> positions;
    createSector(positions, 0.0f, 1.2f, 3.0f, 8);
    expectPoints(positions,
                 {{0.0f, 0.0f}, unit(0.0f) * 3.0f, unit(TWO_PI / 8.0f) * 3.0f, unit(1.2f) * 3.0f});
}

TEST(Sector, FullCircleHasSegmentsPlusTwoVerticesAndClosesOnTheFirstRimVertex) {
    std::vector<glm::vec2> positions;
    createSector(positions, 0.0f, 0.0f, 2.0f, 16);
    ASSERT_EQ(positions.size(), 18u);
    EXPECT_EQ(positions[0], glm::vec2(0.0f));
    EXPECT_EQ(positions[17], positions[1]);
    EXPECT_EQ(positions[1], glm::vec2(2.0f, 0.0f));
}

TEST(Sector, EndFromTheRawArgument) {
    std::vector<glm::vec2> positions;
    // The end -1 counts as 2 pi - 1 for the span, and is appended as -1.
    createSector(positions, 0.0f, -1.0f, 1.0f, 4);
    ASSERT_EQ(positions.size(), 2u + 3u);  // 5.28 / 1.57 = 3.4 steps
    EXPECT_TRUE(vecNear(positions.back(), unit(-1.0f)));
}

TEST(Sector, StepLargerThanTheSpanLeavesCentreAndEndOnly) {
    std::vector<glm::vec2> positions;
    createSector(positions, 0.0f, 0.1f, 1.0f, 4);
    expectPoints(positions, {{0.0f, 0.0f}, unit(0.1f)});
    // A fan of two vertices has no triangle; the ring forms none either.
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles(4);
    createEdgedSector(positions, alphas, triangles, 0.0f, 0.1f, 1.0f, 2, 0.1f, 0.0f, 4);
    EXPECT_EQ(positions.size(), 4u);  // (2 + 1) x 1 + 1
    EXPECT_TRUE(triangles.empty());
}

TEST(Sector, TexturingMeshMapsWithTheScaleOverTheDiameter) {
    pmGL::TriangleFanMesh<TexturingVertex> mesh;
    const float angle = 0.3f;
    const glm::vec2 translation(0.5f, 0.5f);
    const glm::vec2 scale(1.0f, 2.0f);
    createSector(mesh, 0.2f, 2.0f, 4.0f, 10, angle, translation, scale);
    std::vector<glm::vec2> positions;
    createSector(positions, 0.2f, 2.0f, 4.0f, 10);
    ASSERT_EQ(mesh.vertices.size(), positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        EXPECT_EQ(mesh.vertices[i].position, glm::vec3(positions[i], 0.0f));
        EXPECT_TRUE(vecNear(mesh.vertices[i].texCoord,
                            plainUV(positions[i], angle, translation, scale / 8.0f)))
            << i;
    }
    EXPECT_EQ(mesh.vertices[0].texCoord, translation);
    EXPECT_EQ(mesh.attributes.size(), 2u);
}

TEST(Sector, SignedFormsGiveTheCentreZeroAndTheRimOne) {
    std::vector<glm::vec2> positions;
    createSector(positions, 0.0f, PI, 2.0f, 6);
    pmGL::TriangleFanMesh<SignedPositionVertex> plain;
    createSector(plain, 0.0f, PI, 2.0f, 6);
    pmGL::TriangleFanMesh<SignedTexturingVertex> textured;
    createSector(textured, 0.0f, PI, 2.0f, 6, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    ASSERT_EQ(plain.vertices.size(), positions.size());
    ASSERT_EQ(textured.vertices.size(), positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const float value = i == 0 ? 0.0f : 1.0f;
        EXPECT_EQ(plain.vertices[i].position, positions[i]);
        EXPECT_EQ(plain.vertices[i].signVal, value);
        EXPECT_EQ(textured.vertices[i].position, positions[i]);
        EXPECT_EQ(textured.vertices[i].signVal, value);
        // Radius 2 and unit scale: the circle spans the texture.
        EXPECT_TRUE(vecNear(textured.vertices[i].texCoord, positions[i] / 4.0f + 0.5f));
    }
    EXPECT_EQ(plain.attributes.size(), 2u);
    EXPECT_EQ(textured.attributes.size(), 3u);
}

TEST(Circle, IsTheSectorFromZeroToZero) {
    pmGL::TriangleFanMesh<TexturingVertex> circle;
    pmGL::TriangleFanMesh<TexturingVertex> sector;
    createCircle(circle, 1.5f, 12, 0.2f, glm::vec2(0.5f), glm::vec2(1.0f));
    createSector(sector, 0.0f, 0.0f, 1.5f, 12, 0.2f, glm::vec2(0.5f), glm::vec2(1.0f));
    ASSERT_EQ(circle.vertices.size(), 14u);
    for (std::size_t i = 0; i < 14; ++i) {
        EXPECT_EQ(circle.vertices[i].position, sector.vertices[i].position);
        EXPECT_EQ(circle.vertices[i].texCoord, sector.vertices[i].texCoord);
    }
    pmGL::TriangleFanMesh<SignedPositionVertex> signedCircle;
    createCircle(signedCircle, 1.0f, 5);
    EXPECT_EQ(signedCircle.vertices.size(), 7u);
    pmGL::TriangleFanMesh<SignedTexturingVertex> signedTextured;
    createCircle(signedTextured, 1.0f, 5, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    EXPECT_EQ(signedTextured.vertices.size(), 7u);
    EXPECT_EQ(signedTextured.vertices[6].position, signedTextured.vertices[1].position);
}

TEST(EdgedSector, RingsOutwardAndTheTrianglesInOrder) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles;
    // One step of a quarter turn: the ring is the start and the end, n = 2.
    createEdgedSector(positions, alphas, triangles, 0.0f, 0.5f * PI, 2.0f, 2, 0.5f, 0.25f, 4);
    const glm::vec2 a = unit(0.0f);
    const glm::vec2 b = unit(0.5f * PI);
    // Inner radius 1.5 over two layers: 0.75 and 1.5; then the rim at 2.
    expectPoints(positions,
                 {{0.0f, 0.0f}, a * 0.75f, b * 0.75f, a * 1.5f, b * 1.5f, a * 2.0f, b * 2.0f});
    EXPECT_EQ(alphas, (std::vector<float>{1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 0.25f, 0.25f}));
    EXPECT_EQ(flatten(triangles),
              (std::vector<unsigned short>{0, 1, 2, 1, 2, 3, 3, 2, 4, 3, 4, 5, 5, 4, 6}));
}

TEST(EdgedSector, CountsFollowLayersAndSegments) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles;
    createEdgedSector(positions, alphas, triangles, 0.0f, 0.0f, 1.0f, 3, 0.1f, 0.0f, 20);
    const int n = 21;
    ASSERT_EQ(positions.size(), static_cast<std::size_t>((3 + 1) * n + 1));
    ASSERT_EQ(alphas.size(), positions.size());
    ASSERT_EQ(triangles.size(), static_cast<std::size_t>((n - 1) * (3 * 2 + 1)));
    // The fan first, then each band of two triangles per step.
    for (int i = 1; i <= n - 1; ++i) {
        const pmGL::IndexedTriangle& t = triangles[i - 1];
        EXPECT_EQ(t.a, 0);
        EXPECT_EQ(t.b, i);
        EXPECT_EQ(t.c, i + 1);
    }
    std::size_t k = n - 1;
    for (int layer = 0; layer < 3; ++layer) {
        const int ringStart = 1 + layer * n;
        const int next = ringStart + n;
        for (int j = 1; j <= n - 1; ++j) {
            EXPECT_EQ(triangles[k].a, ringStart + j - 1);
            EXPECT_EQ(triangles[k].b, ringStart + j);
            EXPECT_EQ(triangles[k].c, next + j - 1);
            EXPECT_EQ(triangles[k + 1].a, next + j - 1);
            EXPECT_EQ(triangles[k + 1].b, ringStart + j);
            EXPECT_EQ(triangles[k + 1].c, next + j);
            k += 2;
        }
    }
    // Inner rings at layer x 0.9 / 3, the rim at 1.
    for (int layer = 1; layer <= 3; ++layer) {
        EXPECT_NEAR(glm::length(positions[1 + (layer - 1) * n]),
                    static_cast<float>(layer) * 0.9f / 3.0f, 1e-6f);
    }
    EXPECT_NEAR(glm::length(positions[1 + 3 * n]), 1.0f, 1e-6f);
}

TEST(EdgedSector, ZeroEdgeWidthPutsTheRimOnTheLastInnerRing) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles;
    createEdgedSector(positions, alphas, triangles, 0.0f, 1.0f, 3.0f, 2, 0.0f, 0.5f, 12);
    const std::size_t n = (positions.size() - 1) / 3;
    for (std::size_t i = 0; i < n; ++i) {
        EXPECT_EQ(positions[1 + n + i], positions[1 + 2 * n + i]) << i;
        EXPECT_EQ(alphas[1 + n + i], 1.0f);
        EXPECT_EQ(alphas[1 + 2 * n + i], 0.5f);
    }
}

TEST(EdgedSector, NoInnerLayerIsLoggedAndFansToTheRim) {
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles;
    LogCapture log;
    createEdgedSector(positions, alphas, triangles, 0.0f, 0.5f * PI, 1.0f, 0, 0.2f, 0.0f, 4);
    EXPECT_EQ(log.countEndingWith("> innerLayer >= 1"), 1) << log.dump();
    EXPECT_EQ(log.count("pmMesh: createEdgedSector("), 2) << log.dump();
    expectPoints(positions, {{0.0f, 0.0f}, unit(0.0f), unit(0.5f * PI)});
    EXPECT_EQ(alphas, (std::vector<float>{1.0f, 0.0f, 0.0f}));
    EXPECT_EQ(flatten(triangles), (std::vector<unsigned short>{0, 1, 2}));
}

TEST(EdgedSector, MeshFormsMapColourAndAlpha) {
    const glm::vec4 colour(0.1f, 0.2f, 0.3f, 0.4f);
    std::vector<glm::vec2> positions;
    std::vector<float> alphas;
    std::vector<pmGL::IndexedTriangle> triangles;
    createEdgedSector(positions, alphas, triangles, 0.5f, 2.5f, 2.0f, 2, 0.25f, 0.1f, 16);
    pmGL::IndexedTriangleMesh<EdgedTexturingVertex> mesh;
    createEdgedSector(mesh, 0.5f, 2.5f, 2.0f, 2, 0.25f, 0.1f, 16, 0.4f, glm::vec2(0.5f),
                      glm::vec2(1.0f, 3.0f));
    pmGL::IndexedTriangleMesh<EdgedColorTexturingVertex> coloured;
    createEdgedSector(coloured, 0.5f, 2.5f, 2.0f, 2, 0.25f, 0.1f, 16, 0.4f, glm::vec2(0.5f),
                      glm::vec2(1.0f, 3.0f), colour);
    ASSERT_EQ(mesh.vertices.size(), positions.size());
    ASSERT_EQ(coloured.vertices.size(), positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const glm::vec2 uv = plainUV(positions[i], 0.4f, glm::vec2(0.5f), glm::vec2(0.25f, 0.75f));
        EXPECT_EQ(mesh.vertices[i].position, positions[i]);
        EXPECT_EQ(mesh.vertices[i].edgeAlpha, alphas[i]);
        EXPECT_TRUE(vecNear(mesh.vertices[i].texCoord, uv)) << i;
        EXPECT_EQ(coloured.vertices[i].position, positions[i]);
        EXPECT_EQ(coloured.vertices[i].color, colour);
        EXPECT_EQ(coloured.vertices[i].edgeAlpha, alphas[i]);
        EXPECT_TRUE(vecNear(coloured.vertices[i].texCoord, uv)) << i;
    }
    EXPECT_EQ(flatten(mesh.triangles), flatten(triangles));
    EXPECT_EQ(flatten(coloured.triangles), flatten(triangles));
    EXPECT_EQ(mesh.attributes.size(), 3u);
    EXPECT_EQ(coloured.attributes.size(), 4u);
}

TEST(EdgedSector, CirclesAreSectorsFromZeroToZero) {
    pmGL::IndexedTriangleMesh<EdgedTexturingVertex> circle;
    pmGL::IndexedTriangleMesh<EdgedTexturingVertex> sector;
    createEdgedCircle(circle, 1.0f, 2, 0.1f, 0.0f, 8, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    createEdgedSector(sector, 0.0f, 0.0f, 1.0f, 2, 0.1f, 0.0f, 8, 0.0f, glm::vec2(0.5f),
                      glm::vec2(1.0f));
    ASSERT_EQ(circle.vertices.size(), static_cast<std::size_t>(3 * 9 + 1));
    ASSERT_EQ(circle.vertices.size(), sector.vertices.size());
    for (std::size_t i = 0; i < circle.vertices.size(); ++i) {
        EXPECT_EQ(circle.vertices[i].position, sector.vertices[i].position);
    }
    EXPECT_EQ(flatten(circle.triangles), flatten(sector.triangles));
    pmGL::IndexedTriangleMesh<EdgedColorTexturingVertex> coloured;
    createEdgedCircle(coloured, 1.0f, 2, 0.1f, 0.0f, 8, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f),
                      glm::vec4(1.0f));
    EXPECT_EQ(coloured.vertices.size(), circle.vertices.size());
}

TEST(SignedSector, LayersFromZeroToOneAndTheTrianglesInOrder) {
    std::vector<glm::vec2> positions;
    std::vector<float> values;
    std::vector<pmGL::IndexedTriangle> triangles;
    // Two steps of a quarter turn and the end: n = 3.
    createSignedSector(positions, values, triangles, 0.0f, PI, 3.0f, 3, 4);
    const glm::vec2 a = unit(0.0f);
    const glm::vec2 b = unit(0.5f * PI);
    const glm::vec2 c = unit(PI);
    expectPoints(
        positions,
        {{0.0f, 0.0f}, a, b, c, a * 2.0f, b * 2.0f, c * 2.0f, a * 3.0f, b * 3.0f, c * 3.0f}, 1e-5f);
    const float third = 1.0f / 3.0f;
    const float twoThirds = 2.0f / 3.0f;
    EXPECT_EQ(values, (std::vector<float>{0.0f, third, third, third, twoThirds, twoThirds,
                                          twoThirds, 1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(flatten(triangles),
              (std::vector<unsigned short>{0, 1, 2, 0, 2, 3, 1, 2, 4, 4, 2, 5, 2, 3, 5,
                                           5, 3, 6, 4, 5, 7, 7, 5, 8, 5, 6, 8, 8, 6, 9}));
}

TEST(SignedSector, OneLayerIsAFanAndNoLayerIsLogged) {
    std::vector<glm::vec2> positions;
    std::vector<float> values;
    std::vector<pmGL::IndexedTriangle> triangles;
    createSignedSector(positions, values, triangles, 0.0f, 0.0f, 1.0f, 1, 6);
    EXPECT_EQ(positions.size(), 8u);
    EXPECT_EQ(triangles.size(), 6u);
    EXPECT_EQ(values.back(), 1.0f);

    LogCapture log;
    createSignedSector(positions, values, triangles, 0.0f, 0.0f, 1.0f, 0, 6);
    EXPECT_EQ(log.countEndingWith("> layerSize >= 1"), 1) << log.dump();
    EXPECT_EQ(log.count("pmMesh: createSignedSector("), 2) << log.dump();
    EXPECT_EQ(positions.size(), 1u);
    EXPECT_EQ(values, std::vector<float>{0.0f});
}

TEST(SignedSector, MeshFormsAndCircles) {
    const glm::vec4 colour(1.0f, 0.5f, 0.25f, 1.0f);
    std::vector<glm::vec2> positions;
    std::vector<float> values;
    std::vector<pmGL::IndexedTriangle> triangles;
    createSignedSector(positions, values, triangles, 1.0f, 3.0f, 2.0f, 4, 24);
    pmGL::IndexedTriangleMesh<SignedTexturingVertex> mesh;
    createSignedSector(mesh, 1.0f, 3.0f, 2.0f, 4, 24, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    pmGL::IndexedTriangleMesh<SignedColorTexturingVertex> coloured;
    createSignedSector(coloured, 1.0f, 3.0f, 2.0f, 4, 24, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f),
                       colour);
    ASSERT_EQ(mesh.vertices.size(), positions.size());
    ASSERT_EQ(coloured.vertices.size(), positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        EXPECT_EQ(mesh.vertices[i].position, positions[i]);
        EXPECT_EQ(mesh.vertices[i].signVal, values[i]);
        EXPECT_TRUE(vecNear(mesh.vertices[i].texCoord, positions[i] / 4.0f + 0.5f));
        EXPECT_EQ(coloured.vertices[i].color, colour);
        EXPECT_EQ(coloured.vertices[i].signVal, values[i]);
        EXPECT_EQ(coloured.vertices[i].texCoord, mesh.vertices[i].texCoord);
    }
    EXPECT_EQ(flatten(mesh.triangles), flatten(triangles));
    EXPECT_EQ(flatten(coloured.triangles), flatten(triangles));
    EXPECT_EQ(mesh.attributes.back().name, "aSignVal");

    pmGL::IndexedTriangleMesh<SignedTexturingVertex> circle;
    createSignedCircle(circle, 1.0f, 2, 10, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f));
    EXPECT_EQ(circle.vertices.size(), static_cast<std::size_t>(11 * 2 + 1));
    EXPECT_EQ(circle.triangles.size(), static_cast<std::size_t>(10 * 3));
    pmGL::IndexedTriangleMesh<SignedColorTexturingVertex> colouredCircle;
    createSignedCircle(colouredCircle, 1.0f, 2, 10, 0.0f, glm::vec2(0.5f), glm::vec2(1.0f), colour);
    EXPECT_EQ(colouredCircle.vertices.size(), circle.vertices.size());
}

}  // namespace
