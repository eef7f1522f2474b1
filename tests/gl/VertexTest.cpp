// Vertex buffers and arrays: creation, update, deletion, attribute layout and
// drawing, checked on the pixels drawn.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;

namespace {

// Each instance adds a quarter of red; a single draw gives 64, three give 192.
const char* const INSTANCE_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = vec4(0.25, 0.0, 0.0, 0.0) + vec4(vTexCoord, 0.0, 0.0) * 0.0;
})";

std::vector<std::uint8_t> readBuffer(const VertexBuffer& vb, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    const void* mapped =
        glMapBufferRange(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), GL_MAP_READ_BIT);
    if (mapped != nullptr) std::memcpy(bytes.data(), mapped, size);
    glUnmapBuffer(GL_ARRAY_BUFFER);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return bytes;
}

std::vector<std::uint8_t> bytesOf(const std::vector<gltest::QuadVertex>& vertices) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(vertices.data());
    return {first, first + vertices.size() * sizeof(gltest::QuadVertex)};
}

class VertexTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        resetGLCallCounts();
    }

    // Draws the full quad additively with `instances` and returns the red
    // value of the bottom-left pixel of the test target.
    int drawQuarterRed(const VertexArray& va, const Program& prog, std::size_t instances) {
        gl->clearTarget(0, 0, 0, 0);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
        useProgram(prog);
        drawVertexArray(va, instances);
        glUseProgram(0);
        glDisable(GL_BLEND);
        return gl->readTarget()[0];
    }
};

TEST_F(VertexTest, CreateVertexBufferStoresTheDataAndTheLayout) {
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    VertexBuffer vb;
    LogCapture log;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(), GL_DYNAMIC_DRAW,
                       GL_TRIANGLE_STRIP, gltest::quadAttributes());
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(vb));
    EXPECT_TRUE(glIsBuffer(vb.id));
    EXPECT_EQ(vb.count, 4u);
    EXPECT_EQ(vb.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_EQ(vb.indexId, 0u);
    ASSERT_EQ(vb.attributes.size(), 2u);
    EXPECT_EQ(vb.attributes[1].name, "aTexCoord");
    EXPECT_EQ(getInteger(GL_ARRAY_BUFFER_BINDING), 0);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    GLint size = 0;
    GLint usage = 0;
    glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
    glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_USAGE, &usage);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    EXPECT_EQ(size, static_cast<GLint>(4 * sizeof(gltest::QuadVertex)));
    EXPECT_EQ(usage, GL_DYNAMIC_DRAW);
    EXPECT_EQ(readBuffer(vb, size), bytesOf(quad));
    deleteVertexBuffer(vb);
}

TEST_F(VertexTest, MeshFormUsesTriangleStripAndTheMeshLayout) {
    TriangleStripMesh<gltest::QuadVertex> mesh;
    mesh.vertices = gltest::fullQuad();
    mesh.attributes = gltest::quadAttributes();
    VertexBuffer vb;
    createVertexBuffer(vb, mesh);
    EXPECT_EQ(vb.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_EQ(vb.count, 4u);
    EXPECT_EQ(vb.attributes.size(), 2u);
    deleteVertexBuffer(vb);
}

TEST_F(VertexTest, RecreatingWithItsOwnAttributesKeepsThem) {
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    const unsigned first = vb.id;
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), 3, quad.data(), GL_STATIC_DRAW, GL_TRIANGLES,
                       vb.attributes);
    EXPECT_FALSE(glIsBuffer(first));
    EXPECT_EQ(vb.attributes.size(), 2u);
    EXPECT_EQ(vb.count, 3u);
    deleteVertexBuffer(vb);
}

TEST_F(VertexTest, EmptySizesLogTheAssertion) {
    VertexBuffer vb;
    LogCapture log;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), 0, nullptr, GL_STATIC_DRAW, GL_TRIANGLES,
                       {});
    EXPECT_EQ(log.countEndingWith("> vertexSize > 0 && vertexCount > 0"), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: createVertexBuffer("), 2);
    deleteVertexBuffer(vb);
}

TEST_F(VertexTest, UpdateRewritesFromTheStartAndKeepsTheCount) {
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    std::vector<gltest::QuadVertex> moved = {{{0.5f, 0.5f, 0.f}, {0.25f, 0.75f}}};
    updateVertexBuffer(vb, sizeof(gltest::QuadVertex), moved.size(), moved.data());
    quad[0] = moved[0];
    EXPECT_EQ(readBuffer(vb, 4 * sizeof(gltest::QuadVertex)), bytesOf(quad));
    EXPECT_EQ(vb.count, 4u);
    updateVertexBuffer(vb, sizeof(gltest::QuadVertex), 4, nullptr);  // nothing happens
    EXPECT_EQ(readBuffer(vb, 4 * sizeof(gltest::QuadVertex)), bytesOf(quad));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    deleteVertexBuffer(vb);
}

TEST_F(VertexTest, DeleteEmptiesTheRecordAndItsIndexBuffer) {
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    GLuint indexBuffer = 0;
    glGenBuffers(1, &indexBuffer);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    vb.indexId = indexBuffer;
    const unsigned id = vb.id;
    deleteVertexBuffer(vb);
    EXPECT_FALSE(glIsBuffer(id));
    EXPECT_FALSE(glIsBuffer(indexBuffer));
    EXPECT_EQ(vb.id, 0u);
    EXPECT_EQ(vb.indexId, 0u);
    EXPECT_EQ(vb.count, 0u);
    EXPECT_TRUE(vb.attributes.empty());
}

TEST_F(VertexTest, TexturedQuadDrawsTheImagePixelForPixel) {
    const int width = 5;
    const int height = 3;
    std::vector<std::uint8_t> pixels = makeTestPixels(width, height, 4, 7);
    TextureOpts nearest;
    nearest.minFilter = GL_NEAREST;
    nearest.magFilter = GL_NEAREST;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(width, height, 4, pixels.data()), nearest);
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::TEXTURE_FRAGMENT_SHADER));
    FrameBuffer fb;
    createFrameBuffer(fb, width, height, TextureOpts(), 1, false, false);
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    VertexArray va;
    createVertexArray(va, vb, prog);
    UniformData data;
    setUniformData(data, "uTexture", tex);

    LogCapture log;
    ASSERT_TRUE(bindFrameBuffer(fb));
    useProgram(prog);
    bindTexture(data);
    useUniformData(data, prog);
    drawVertexArray(va, 1);
    unbindFrameBuffer(fb);
    std::vector<std::uint8_t> read(pixels.size());
    readFrameBuffer(fb, read.data(), 0);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(read, pixels);
    EXPECT_EQ(getInteger(GL_VERTEX_ARRAY_BINDING), 0);

    glUseProgram(0);
    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteFrameBuffer(fb);
    deleteProgram(prog);
    deleteTexture(tex);
}

TEST_F(VertexTest, VertexArrayRecordsTheBufferAndEnablesOnlyTheProgramsAttributes) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::TEXTURE_FRAGMENT_SHADER));
    std::vector<VertexAttribute> attributes = gltest::quadAttributes();
    VertexAttribute missing = attributes[0];
    missing.name = "aMissing";
    attributes.insert(attributes.begin(), missing);
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    VertexBuffer vb;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(), GL_STATIC_DRAW,
                       GL_TRIANGLE_STRIP, attributes);
    VertexArray va;
    LogCapture log;
    createVertexArray(va, vb, prog);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    ASSERT_TRUE(isExist(va));
    EXPECT_EQ(va.count, 4u);
    EXPECT_EQ(va.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_FALSE(va.indexed);
    EXPECT_EQ(getInteger(GL_VERTEX_ARRAY_BINDING), 0);
    EXPECT_EQ(getInteger(GL_ARRAY_BUFFER_BINDING), static_cast<GLint>(vb.id));

    glBindVertexArray(va.id);
    const GLint position = getAttribLocation(prog, "aPosition");
    const GLint texCoord = getAttribLocation(prog, "aTexCoord");
    for (GLint index = 0; index < getInteger(GL_MAX_VERTEX_ATTRIBS); ++index) {
        GLint enabled = 0;
        glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        EXPECT_EQ(enabled != 0, index == position || index == texCoord) << index;
    }
    GLint size = 0;
    GLint stride = 0;
    void* offset = nullptr;
    glGetVertexAttribiv(texCoord, GL_VERTEX_ATTRIB_ARRAY_SIZE, &size);
    glGetVertexAttribiv(texCoord, GL_VERTEX_ATTRIB_ARRAY_STRIDE, &stride);
    glGetVertexAttribPointerv(texCoord, GL_VERTEX_ATTRIB_ARRAY_POINTER, &offset);
    EXPECT_EQ(size, 2);
    EXPECT_EQ(stride, static_cast<GLint>(sizeof(gltest::QuadVertex)));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(offset), offsetof(gltest::QuadVertex, texCoord));
    glBindVertexArray(0);

    deleteVertexArray(va);
    EXPECT_EQ(va.id, 0u);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexTest, ZeroOrOneInstanceTakesThePlainDrawCall) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, INSTANCE_FRAGMENT_SHADER));
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    VertexArray va;
    createVertexArray(va, vb, prog);

    EXPECT_NEAR(drawQuarterRed(va, prog, 0), 64, 1);
    EXPECT_EQ(glCallCounts().drawArrays, 1);
    EXPECT_NEAR(drawQuarterRed(va, prog, 1), 64, 1);
    EXPECT_EQ(glCallCounts().drawArrays, 2);
    EXPECT_EQ(glCallCounts().drawArraysInstanced, 0);
    EXPECT_NEAR(drawQuarterRed(va, prog, 3), 192, 1);
    EXPECT_EQ(glCallCounts().drawArraysInstanced, 1);
    EXPECT_EQ(glCallCounts().drawArrays, 2);

    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexTest, IndexedBufferDrawsElements) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, INSTANCE_FRAGMENT_SHADER));
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    const std::vector<unsigned short> indices = {0, 1, 2, 2, 1, 3};
    glGenBuffers(1, &vb.indexId);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, vb.indexId);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, indices.size() * sizeof(unsigned short), indices.data(),
                 GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    vb.count = 6;
    vb.mode = GL_TRIANGLES;
    vb.indexType = GL_UNSIGNED_SHORT;
    VertexArray va;
    createVertexArray(va, vb, prog);
    EXPECT_TRUE(va.indexed);
    EXPECT_EQ(va.count, 6u);
    glBindVertexArray(va.id);
    EXPECT_EQ(getInteger(GL_ELEMENT_ARRAY_BUFFER_BINDING), static_cast<GLint>(vb.indexId));
    glBindVertexArray(0);

    EXPECT_NEAR(drawQuarterRed(va, prog, 1), 64, 1);
    EXPECT_EQ(glCallCounts().drawElements, 1);
    EXPECT_NEAR(drawQuarterRed(va, prog, 2), 128, 1);
    EXPECT_EQ(glCallCounts().drawElementsInstanced, 1);
    EXPECT_EQ(glCallCounts().drawArrays + glCallCounts().drawArraysInstanced, 0);
    // The whole target is covered by the two triangles.
    const std::vector<std::uint8_t> target = gl->readTarget();
    for (std::size_t i = 0; i < target.size(); i += 4) ASSERT_NEAR(target[i], 128, 1) << i;

    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexTest, AssertionsOfEmptyRecordsAndInstancedBuffers) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, INSTANCE_FRAGMENT_SHADER));
    LogCapture log;
    drawVertexArray(VertexArray(), 1);
    EXPECT_EQ(log.countEndingWith("> isExist(va)"), 1) << log.dump();
    enableVertexBuffer(VertexBuffer(), prog);
    EXPECT_EQ(log.countEndingWith("> isExist(vb)"), 1) << log.dump();

    VertexBuffer vb;
    gltest::createFullQuad(vb);
    vb.mode = PM_INSTANCED_ARRAY;
    VertexArray va;
    createVertexArray(va, vb, prog);
    EXPECT_EQ(log.countEndingWith("> vb.mode != PM_INSTANCED_ARRAY"), 1) << log.dump();
    EXPECT_TRUE(isExist(va));  // the assertion does not stop it
    while (glGetError() != GL_NO_ERROR) {
    }
    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

}  // namespace
