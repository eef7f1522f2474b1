// The vertex formats: structure layout and attribute tables.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "pmMesh.h"

using namespace pmMesh;

namespace {

struct Expected {
    std::string name;
    int size;
    std::uintptr_t offset;
};

void expectTable(const std::vector<pmGL::VertexAttribute>& table, int stride,
                 const std::vector<Expected>& expected) {
    ASSERT_EQ(table.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(table[i].name, expected[i].name);
        EXPECT_EQ(table[i].size, expected[i].size);
        EXPECT_EQ(table[i].offset, expected[i].offset);
        EXPECT_EQ(table[i].stride, stride);
        EXPECT_EQ(table[i].type, static_cast<unsigned>(GL_FLOAT));
        EXPECT_FALSE(table[i].normalized);
    }
}

TEST(VertexFormats, ThreeDimensionalFormats) {
    EXPECT_EQ(sizeof(PositionVertex), 12u);
    expectTable(PositionVertex::defaultAttribs, 12, {{"aPosition", 3, 0}});
    EXPECT_EQ(sizeof(TexturingVertex), 20u);
    EXPECT_EQ(offsetof(TexturingVertex, texCoord), 12u);
    expectTable(TexturingVertex::defaultAttribs, 20, {{"aPosition", 3, 0}, {"aTexCoord", 2, 12}});
    EXPECT_EQ(sizeof(ColoringVertex), 28u);
    EXPECT_EQ(offsetof(ColoringVertex, color), 12u);
    expectTable(ColoringVertex::defaultAttribs, 28, {{"aPosition", 3, 0}, {"aColor", 4, 12}});
    EXPECT_EQ(sizeof(ShadingVertex), 24u);
    EXPECT_EQ(offsetof(ShadingVertex, normal), 12u);
    expectTable(ShadingVertex::defaultAttribs, 24, {{"aPosition", 3, 0}, {"aNormal", 3, 12}});
    EXPECT_EQ(sizeof(TextureShadingVertex), 32u);
    EXPECT_EQ(offsetof(TextureShadingVertex, texCoord), 24u);
    expectTable(TextureShadingVertex::defaultAttribs, 32,
                {{"aPosition", 3, 0}, {"aNormal", 3, 12}, {"aTexCoord", 2, 24}});
}

TEST(VertexFormats, EdgedFormats) {
    EXPECT_EQ(sizeof(EdgedPositionVertex), 12u);
    expectTable(EdgedPositionVertex::defaultAttribs, 12,
                {{"aPosition", 2, 0}, {"aEdgeAlpha", 1, 8}});
    EXPECT_EQ(sizeof(EdgedTexturingVertex), 20u);
    EXPECT_EQ(offsetof(EdgedTexturingVertex, edgeAlpha), 16u);
    expectTable(EdgedTexturingVertex::defaultAttribs, 20,
                {{"aPosition", 2, 0}, {"aTexCoord", 2, 8}, {"aEdgeAlpha", 1, 16}});
    EXPECT_EQ(sizeof(EdgedColorTexturingVertex), 36u);
    EXPECT_EQ(offsetof(EdgedColorTexturingVertex, color), 8u);
    EXPECT_EQ(offsetof(EdgedColorTexturingVertex, texCoord), 24u);
    EXPECT_EQ(offsetof(EdgedColorTexturingVertex, edgeAlpha), 32u);
    expectTable(
        EdgedColorTexturingVertex::defaultAttribs, 36,
        {{"aPosition", 2, 0}, {"aColor", 4, 8}, {"aTexCoord", 2, 24}, {"aEdgeAlpha", 1, 32}});
}

TEST(VertexFormats, SignedFormats) {
    EXPECT_EQ(sizeof(SignedPositionVertex), 12u);
    expectTable(SignedPositionVertex::defaultAttribs, 12,
                {{"aPosition", 2, 0}, {"aSignVal", 1, 8}});
    EXPECT_EQ(sizeof(SignedTexturingVertex), 20u);
    expectTable(SignedTexturingVertex::defaultAttribs, 20,
                {{"aPosition", 2, 0}, {"aTexCoord", 2, 8}, {"aSignVal", 1, 16}});
    EXPECT_EQ(sizeof(SignedColorTexturingVertex), 36u);
    EXPECT_EQ(offsetof(SignedColorTexturingVertex, signVal), 32u);
    expectTable(SignedColorTexturingVertex::defaultAttribs, 36,
                {{"aPosition", 2, 0}, {"aColor", 4, 8}, {"aTexCoord", 2, 24}, {"aSignVal", 1, 32}});
}

TEST(VertexFormats, TextVertex) {
    EXPECT_EQ(sizeof(TextVertex), 16u);
    expectTable(TextVertex::defaultAttribs, 16, {{"vertex", 4, 0}});
}

}  // namespace
