// Indexed and per-instance vertex buffers, drawing from buffers without a
// vertex array and from client memory, checked on GL state and drawn pixels.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "VertexCallSpy.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;

namespace {

// Each draw adds a quarter of red where it covers.
const char* const QUARTER_RED_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = vec4(0.25, 0.0, 0.0, 0.0) + vec4(vTexCoord, 0.0, 0.0) * 0.0;
})";

// A quad moved right by a per-instance offset, red taken from a per-instance
// shade.
const char* const INSTANCE_VERTEX_SHADER = R"(#version 300 es
in vec3 aPosition;
in float aOffset;
in float aShade;
out float vShade;
void main() {
    vShade = aShade;
    gl_Position = vec4(aPosition.x + aOffset, aPosition.yz, 1.0);
})";

const char* const SHADE_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
in float vShade;
out vec4 fragColor;
void main() { fragColor = vec4(vShade, 0.0, 0.0, 1.0); })";

// Position and a colour attribute, for client-memory drawing.
const char* const COLOR_VERTEX_SHADER = R"(#version 300 es
in vec2 aPosition;
in vec4 aColor;
out vec4 vColor;
void main() {
    vColor = aColor;
    gl_Position = vec4(aPosition, 0.0, 1.0);
})";

const char* const VARYING_COLOR_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
in vec4 vColor;
out vec4 fragColor;
void main() { fragColor = vColor; })";

const std::vector<unsigned short> QUAD_INDICES = {0, 1, 2, 2, 1, 3};

void createIndexedQuad(VertexBuffer& vb, unsigned usage = GL_STATIC_DRAW) {
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(),
                       sizeof(unsigned short), QUAD_INDICES.size(), QUAD_INDICES.data(), usage,
                       GL_TRIANGLES, gltest::quadAttributes());
}

std::vector<std::uint8_t> readBuffer(GLenum target, GLuint buffer, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    glBindBuffer(target, buffer);
    const void* mapped =
        glMapBufferRange(target, 0, static_cast<GLsizeiptr>(size), GL_MAP_READ_BIT);
    if (mapped != nullptr) std::memcpy(bytes.data(), mapped, size);
    glUnmapBuffer(target);
    glBindBuffer(target, 0);
    return bytes;
}

GLint bufferParameter(GLenum target, GLuint buffer, GLenum name) {
    GLint value = 0;
    glBindBuffer(target, buffer);
    glGetBufferParameteriv(target, name, &value);
    glBindBuffer(target, 0);
    return value;
}

bool attribEnabled(GLint location) {
    GLint enabled = 0;
    glGetVertexAttribiv(static_cast<GLuint>(location), GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
    return enabled != 0;
}

GLint attribDivisor(GLint location) {
    GLint divisor = -1;
    glGetVertexAttribiv(static_cast<GLuint>(location), GL_VERTEX_ATTRIB_ARRAY_DIVISOR, &divisor);
    return divisor;
}

void drainErrors() {
    while (glGetError() != GL_NO_ERROR) {
    }
}

class VertexDataTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        resetGLCallCounts();
        resetVertexCallCounts();
    }

    // Additive blending, so that instance counts show as multiples of a quarter.
    void beginAdditive() {
        gl->clearTarget(0, 0, 0, 0);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
    }

    void endAdditive() { glDisable(GL_BLEND); }

    // Red of every pixel of the test target, bottom row first.
    std::vector<int> reds() {
        const std::vector<std::uint8_t> target = gl->readTarget();
        std::vector<int> values;
        for (std::size_t i = 0; i < target.size(); i += 4) values.push_back(target[i]);
        return values;
    }

    void expectAllRed(int expected) {
        const std::vector<int> values = reds();
        for (std::size_t i = 0; i < values.size(); ++i) {
            ASSERT_NEAR(values[i], expected, 1) << "pixel " << i;
        }
    }
};

TEST_F(VertexDataTest, IndexedCreateMakesBothBuffersAndCountsIndices) {
    VertexBuffer vb;
    LogCapture log;
    createIndexedQuad(vb, GL_DYNAMIC_DRAW);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(vb));
    ASSERT_NE(vb.indexId, 0u);
    EXPECT_TRUE(glIsBuffer(vb.id));
    EXPECT_TRUE(glIsBuffer(vb.indexId));
    EXPECT_EQ(vb.count, 6u);
    EXPECT_EQ(vb.mode, static_cast<unsigned>(GL_TRIANGLES));
    EXPECT_EQ(vb.indexType, static_cast<unsigned>(GL_UNSIGNED_SHORT));
    ASSERT_EQ(vb.attributes.size(), 2u);
    EXPECT_EQ(vb.attributes[0].name, "aPosition");
    EXPECT_EQ(getInteger(GL_ARRAY_BUFFER_BINDING), 0);
    EXPECT_EQ(getInteger(GL_ELEMENT_ARRAY_BUFFER_BINDING), 0);

    // Vertices with the asked usage, indices always static.
    EXPECT_EQ(bufferParameter(GL_ARRAY_BUFFER, vb.id, GL_BUFFER_SIZE),
              static_cast<GLint>(4 * sizeof(gltest::QuadVertex)));
    EXPECT_EQ(bufferParameter(GL_ARRAY_BUFFER, vb.id, GL_BUFFER_USAGE), GL_DYNAMIC_DRAW);
    EXPECT_EQ(bufferParameter(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, GL_BUFFER_SIZE), 12);
    EXPECT_EQ(bufferParameter(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, GL_BUFFER_USAGE),
              GL_STATIC_DRAW);
    const std::vector<std::uint8_t> indexBytes =
        readBuffer(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, 12);
    std::vector<unsigned short> stored(6);
    std::memcpy(stored.data(), indexBytes.data(), 12);
    EXPECT_EQ(stored, QUAD_INDICES);
    EXPECT_TRUE(checkVertexBuffer(vb, 6));
    EXPECT_FALSE(checkVertexBuffer(vb, 4));
    deleteVertexBuffer(vb);
    EXPECT_EQ(vb.indexId, 0u);
}

TEST_F(VertexDataTest, IndexSizeChoosesTheIndexType) {
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    const std::vector<std::uint8_t> bytes = {0, 1, 2, 3};
    const std::vector<std::uint32_t> ints = {0, 1, 2, 3};
    VertexBuffer vb;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(), 1, bytes.size(),
                       bytes.data(), GL_STATIC_DRAW, GL_TRIANGLE_STRIP, gltest::quadAttributes());
    EXPECT_EQ(vb.indexType, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(bufferParameter(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, GL_BUFFER_SIZE), 4);
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(), 4, ints.size(),
                       ints.data(), GL_STATIC_DRAW, GL_TRIANGLE_STRIP, gltest::quadAttributes());
    EXPECT_EQ(vb.indexType, static_cast<unsigned>(GL_UNSIGNED_INT));
    EXPECT_EQ(bufferParameter(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, GL_BUFFER_SIZE), 16);
    deleteVertexBuffer(vb);
}

TEST_F(VertexDataTest, UnknownIndexSizeIsLoggedAndKeepsTheIndexType) {
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    const std::vector<std::uint8_t> indices(9, 0);
    VertexBuffer vb;
    vb.indexType = GL_UNSIGNED_INT;
    LogCapture log;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(), 3, 3,
                       indices.data(), GL_STATIC_DRAW, GL_TRIANGLES, gltest::quadAttributes());
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(log.countEndingWith("> unknown index size : 3"), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: createVertexBuffer("), 1);
    EXPECT_EQ(vb.indexType, static_cast<unsigned>(GL_UNSIGNED_INT));
    // The buffers are made all the same.
    EXPECT_TRUE(glIsBuffer(vb.id));
    EXPECT_TRUE(glIsBuffer(vb.indexId));
    EXPECT_EQ(bufferParameter(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, GL_BUFFER_SIZE), 9);
    EXPECT_EQ(vb.count, 3u);
    deleteVertexBuffer(vb);
}

TEST_F(VertexDataTest, IndexedCreateAssertsItsSizesAndGoesOn) {
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    VertexBuffer vb;
    LogCapture log;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(), 2, 0, nullptr,
                       GL_STATIC_DRAW, GL_TRIANGLES, gltest::quadAttributes());
    EXPECT_EQ(log.countEndingWith("> vertexSize > 0 && vertexCount > 0 && indexCount > 0"), 1)
        << log.dump();
    // The assertion's two lines and nothing else.
    EXPECT_EQ(log.lines().size(), 2u) << log.dump();
    EXPECT_TRUE(isExist(vb));
    EXPECT_EQ(vb.count, 0u);
    deleteVertexBuffer(vb);
}

TEST_F(VertexDataTest, IndexedCreateDeletesWhatTheRecordHeld) {
    VertexBuffer vb;
    createIndexedQuad(vb);
    const unsigned oldVertices = vb.id;
    const unsigned oldIndices = vb.indexId;
    createIndexedQuad(vb);
    EXPECT_FALSE(glIsBuffer(oldVertices));
    EXPECT_FALSE(glIsBuffer(oldIndices));
    EXPECT_EQ(vb.attributes.size(), 2u);
    // Recreating with the record's own attribute list keeps the list.
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(),
                       sizeof(unsigned short), 3, QUAD_INDICES.data(), GL_STATIC_DRAW, GL_TRIANGLES,
                       vb.attributes);
    EXPECT_EQ(vb.attributes.size(), 2u);
    EXPECT_EQ(vb.count, 3u);
    deleteVertexBuffer(vb);
}

TEST_F(VertexDataTest, CheckVertexBufferComparesTheLow32BitsOfTheCount) {
    VertexBuffer vb;
    EXPECT_FALSE(checkVertexBuffer(vb, 0));
    gltest::createFullQuad(vb);
    EXPECT_TRUE(checkVertexBuffer(vb, 4));
    EXPECT_FALSE(checkVertexBuffer(vb, 5));
    if (sizeof(std::size_t) > 4) {
        const std::size_t wide = (static_cast<std::size_t>(1) << 32) + 4;
        EXPECT_TRUE(checkVertexBuffer(vb, wide));
    }
    deleteVertexBuffer(vb);
    EXPECT_FALSE(checkVertexBuffer(vb, 0));
}

TEST_F(VertexDataTest, UpdateWithNullDataMakesNoGLCall) {
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    resetVertexCallCounts();
    updateVertexBuffer(vb, sizeof(gltest::QuadVertex), 4, nullptr);
    EXPECT_EQ(vertexCallCounts().bindBuffer, 0);
    EXPECT_EQ(vertexCallCounts().bufferSubData, 0);
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    updateVertexBuffer(vb, sizeof(gltest::QuadVertex), 4, quad.data());
    EXPECT_EQ(vertexCallCounts().bufferSubData, 1);
    deleteVertexBuffer(vb);
}

TEST_F(VertexDataTest, IndexedVertexArrayDrawsElements) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, QUARTER_RED_FRAGMENT_SHADER));
    VertexBuffer vb;
    createIndexedQuad(vb);
    VertexArray va;
    createVertexArray(va, vb, prog);
    EXPECT_TRUE(va.indexed);
    EXPECT_EQ(va.count, 6u);
    EXPECT_EQ(va.indexType, static_cast<unsigned>(GL_UNSIGNED_SHORT));
    beginAdditive();
    useProgram(prog);
    drawVertexArray(va, 1);
    endAdditive();
    EXPECT_EQ(glCallCounts().drawElements, 1);
    expectAllRed(64);
    glUseProgram(0);
    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, DrawVertexBufferUsesTheCurrentProgramAndCleansUp) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, QUARTER_RED_FRAGMENT_SHADER));
    VertexBuffer vb;
    createIndexedQuad(vb);
    LogCapture log;
    beginAdditive();
    useProgram(prog);
    drawVertexBuffer(vb, 1);
    EXPECT_EQ(glCallCounts().drawElements, 1);
    expectAllRed(64);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    // Attributes are disabled again and both buffers unbound.
    EXPECT_FALSE(attribEnabled(getAttribLocation(prog, "aPosition")));
    EXPECT_FALSE(attribEnabled(getAttribLocation(prog, "aTexCoord")));
    EXPECT_EQ(getInteger(GL_ARRAY_BUFFER_BINDING), 0);
    EXPECT_EQ(getInteger(GL_ELEMENT_ARRAY_BUFFER_BINDING), 0);

    beginAdditive();
    drawVertexBuffer(vb, 3);
    EXPECT_EQ(glCallCounts().drawElementsInstanced, 1);
    expectAllRed(191);
    endAdditive();
    glUseProgram(0);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, DrawVertexBufferOfPlainVerticesDrawsArrays) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, QUARTER_RED_FRAGMENT_SHADER));
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    beginAdditive();
    useProgram(prog);
    drawVertexBuffer(vb, 0);
    EXPECT_EQ(glCallCounts().drawArrays, 1);
    expectAllRed(64);
    beginAdditive();
    drawVertexBuffer(vb, 2);
    EXPECT_EQ(glCallCounts().drawArraysInstanced, 1);
    expectAllRed(128);
    endAdditive();
    glUseProgram(0);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, DrawVertexBufferWithNoCurrentProgramDrawsNothing) {
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    glUseProgram(0);
    gl->clearTarget(0, 0, 0, 0);
    resetVertexCallCounts();
    LogCapture log;
    drawVertexBuffer(vb, 1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(glCallCounts().drawArrays, 0);
    EXPECT_EQ(vertexCallCounts().bindBuffer, 0);
    EXPECT_EQ(vertexCallCounts().vertexAttribPointer, 0);
    expectAllRed(0);
    deleteVertexBuffer(vb);
}

TEST_F(VertexDataTest, DrawVertexBufferWithAProgramUsesItsCacheAndSkipsMissingAttributes) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, QUARTER_RED_FRAGMENT_SHADER));
    std::vector<VertexAttribute> attributes = gltest::quadAttributes();
    VertexAttribute missing = attributes[1];
    missing.name = "aMissing";
    attributes.push_back(missing);
    const std::vector<gltest::QuadVertex> quad = gltest::fullQuad();
    VertexBuffer vb;
    createVertexBuffer(vb, sizeof(gltest::QuadVertex), quad.size(), quad.data(),
                       sizeof(unsigned short), QUAD_INDICES.size(), QUAD_INDICES.data(),
                       GL_STATIC_DRAW, GL_TRIANGLES, attributes);
    LogCapture log;
    beginAdditive();
    useProgram(prog);
    resetVertexCallCounts();
    drawVertexBuffer(vb, prog, 2);
    endAdditive();
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    // Only the attributes GL reports as active are pointed (the shader may
    // drop the unused texture coordinate); "aMissing" never is.
    int active = 0;
    for (const VertexAttribute& attribute : attributes) {
        if (glGetAttribLocation(prog.id, attribute.name.c_str()) >= 0) ++active;
    }
    ASSERT_GE(active, 1);
    EXPECT_EQ(vertexCallCounts().vertexAttribPointer, active);
    EXPECT_EQ(vertexCallCounts().enableVertexAttribArray, active);
    EXPECT_EQ(vertexCallCounts().disableVertexAttribArray, active);
    EXPECT_EQ(vertexCallCounts().vertexAttribDivisor, 0);
    EXPECT_EQ(glCallCounts().drawElementsInstanced, 1);
    expectAllRed(128);
    EXPECT_EQ(getInteger(GL_ARRAY_BUFFER_BINDING), 0);
    EXPECT_EQ(getInteger(GL_ELEMENT_ARRAY_BUFFER_BINDING), 0);
    glUseProgram(0);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, DrawingAnInstancedArrayBufferIsAssertedAndRefusedByGL) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, QUARTER_RED_FRAGMENT_SHADER));
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    vb.mode = PM_INSTANCED_ARRAY;
    useProgram(prog);
    {
        LogCapture log;
        drawVertexBuffer(vb, 1);
        EXPECT_EQ(log.countEndingWith("> vb.mode != PM_INSTANCED_ARRAY"), 1) << log.dump();
        EXPECT_EQ(log.count("pmGL: drawVertexBuffer("), 2) << log.dump();
        EXPECT_EQ(log.countEndingWith("GL error flag set: GL_INVALID_ENUM\n"), 1) << log.dump();
    }
    drainErrors();
    {
        LogCapture log;
        drawVertexBuffer(vb, prog, 1);
        EXPECT_EQ(log.countEndingWith("> vb.mode != PM_INSTANCED_ARRAY"), 1) << log.dump();
        EXPECT_EQ(log.countEndingWith("GL error flag set: GL_INVALID_ENUM\n"), 1) << log.dump();
    }
    drainErrors();
    {
        LogCapture log;
        drawVertexBuffer(VertexBuffer(), prog, 1);
        EXPECT_EQ(log.countEndingWith("> isExist(vb)"), 1) << log.dump();
    }
    drainErrors();
    glUseProgram(0);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, InstancedBufferAdvancesPerInstanceInAVertexArray) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, INSTANCE_VERTEX_SHADER, SHADE_FRAGMENT_SHADER));
    // The left half of the target.
    const std::vector<gltest::QuadVertex> half = {{{-1.f, -1.f, 0.f}, {0.f, 0.f}},
                                                  {{0.f, -1.f, 0.f}, {1.f, 0.f}},
                                                  {{-1.f, 1.f, 0.f}, {0.f, 1.f}},
                                                  {{0.f, 1.f, 0.f}, {1.f, 1.f}}};
    VertexBuffer quad;
    createVertexBuffer(quad, sizeof(gltest::QuadVertex), half.size(), half.data(), GL_STATIC_DRAW,
                       GL_TRIANGLE_STRIP, gltest::quadAttributes());
    // Per instance: x offset and red shade.
    const std::vector<float> instances = {0.0f, 0.25f, 1.0f, 0.75f};
    VertexAttribute offset;
    offset.type = GL_FLOAT;
    offset.size = 1;
    offset.stride = 8;
    offset.offset = 0;
    offset.name = "aOffset";
    VertexAttribute shade = offset;
    shade.offset = 4;
    shade.name = "aShade";
    VertexBuffer perInstance;
    createVertexBuffer(perInstance, 8, 2, instances.data(), GL_STATIC_DRAW, PM_INSTANCED_ARRAY,
                       {offset, shade});
    EXPECT_EQ(perInstance.mode, PM_INSTANCED_ARRAY);

    VertexArray va;
    LogCapture log;
    createVertexArray(va, quad, prog);
    enableVertexBuffer(va, perInstance, prog);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(getInteger(GL_VERTEX_ARRAY_BINDING), 0);
    EXPECT_EQ(va.count, 4u);
    EXPECT_EQ(va.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));

    glBindVertexArray(va.id);
    EXPECT_EQ(attribDivisor(getAttribLocation(prog, "aPosition")), 0);
    EXPECT_EQ(attribDivisor(getAttribLocation(prog, "aOffset")), 1);
    EXPECT_EQ(attribDivisor(getAttribLocation(prog, "aShade")), 1);
    EXPECT_TRUE(attribEnabled(getAttribLocation(prog, "aShade")));
    glBindVertexArray(0);

    gl->clearTarget(0, 0, 0, 0);
    useProgram(prog);
    drawVertexArray(va, 2);
    EXPECT_EQ(glCallCounts().drawArraysInstanced, 1);
    const std::vector<int> values = reds();
    const int width = gl->width;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool left = static_cast<int>(i) % width < width / 2;
        ASSERT_NEAR(values[i], left ? 64 : 191, 1) << "pixel " << i;
    }
    glUseProgram(0);
    deleteVertexArray(va);
    deleteVertexBuffer(perInstance);
    deleteVertexBuffer(quad);
    deleteProgram(prog);
}

// Two triangles of client memory covering the target: position and a colour
// of unsigned bytes.
struct ClientVertex {
    float position[2];
    std::uint8_t color[4];
};

std::vector<VertexAttribute> clientAttributes(bool normalized) {
    VertexAttribute position;
    position.type = GL_FLOAT;
    position.size = 2;
    position.stride = sizeof(ClientVertex);
    position.offset = offsetof(ClientVertex, position);
    position.name = "aPosition";
    VertexAttribute color = position;
    color.type = GL_UNSIGNED_BYTE;
    color.size = 4;
    color.normalized = normalized;
    color.offset = offsetof(ClientVertex, color);
    color.name = "aColor";
    return {position, color};
}

// Colour bytes of 1: read as 1.0 unless normalised, which would make 1/255.
std::vector<ClientVertex> clientQuad() {
    return {{{-1.f, -1.f}, {1, 0, 0, 1}},
            {{1.f, -1.f}, {1, 0, 0, 1}},
            {{-1.f, 1.f}, {1, 0, 0, 1}},
            {{1.f, 1.f}, {1, 0, 0, 1}}};
}

TEST_F(VertexDataTest, DrawImmediateWithoutIndicesDrawsArraysFromClientMemory) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, COLOR_VERTEX_SHADER, VARYING_COLOR_FRAGMENT_SHADER));
    const std::vector<ClientVertex> vertices = clientQuad();
    gl->clearTarget(0, 0, 0, 0);
    useProgram(prog);
    LogCapture log;
    drawImmediate(GL_TRIANGLE_STRIP, clientAttributes(true), vertices.size(), vertices.data(), 0,
                  nullptr, GL_UNSIGNED_SHORT);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(glCallCounts().drawArrays, 1);
    EXPECT_EQ(glCallCounts().drawElements, 0);
    // `normalized` is not passed on: bytes of 1 give full red.
    EXPECT_EQ(vertexCallCounts().lastNormalized, GL_FALSE);
    expectAllRed(255);
    EXPECT_FALSE(attribEnabled(getAttribLocation(prog, "aPosition")));
    EXPECT_FALSE(attribEnabled(getAttribLocation(prog, "aColor")));
    glUseProgram(0);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, DrawImmediateWithIndicesDrawsElements) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, COLOR_VERTEX_SHADER, VARYING_COLOR_FRAGMENT_SHADER));
    const std::vector<ClientVertex> vertices = clientQuad();
    // Only the lower right triangle.
    const std::vector<std::uint8_t> indices = {0, 1, 3};
    gl->clearTarget(0, 0, 0, 0);
    useProgram(prog);
    drawImmediate(prog, GL_TRIANGLES, clientAttributes(false), vertices.size(), vertices.data(),
                  indices.size(), indices.data(), GL_UNSIGNED_BYTE);
    EXPECT_EQ(glCallCounts().drawElements, 1);
    EXPECT_EQ(glCallCounts().drawArrays, 0);
    const std::vector<int> values = reds();
    const int width = gl->width;
    const int lowerRight = 1 * width + (width - 2);  // row 1, second to last column
    const int upperLeft = (width - 2) * width + 1;
    EXPECT_EQ(values[lowerRight], 255);
    EXPECT_EQ(values[upperLeft], 0);
    glUseProgram(0);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, DrawImmediateWithNoCurrentProgramDoesNothing) {
    const std::vector<ClientVertex> vertices = clientQuad();
    glUseProgram(0);
    gl->clearTarget(0, 0, 0, 0);
    resetVertexCallCounts();
    LogCapture log;
    drawImmediate(GL_TRIANGLE_STRIP, clientAttributes(false), vertices.size(), vertices.data(), 0,
                  nullptr, GL_UNSIGNED_SHORT);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(glCallCounts().drawArrays, 0);
    EXPECT_EQ(vertexCallCounts().vertexAttribPointer, 0);
    expectAllRed(0);
}

TEST_F(VertexDataTest, DrawImmediateReadsClientMemoryEvenAfterBuffersWereLeftBound) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, COLOR_VERTEX_SHADER, VARYING_COLOR_FRAGMENT_SHADER));
    VertexBuffer vb;
    createIndexedQuad(vb);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, vb.indexId);
    const std::vector<ClientVertex> vertices = clientQuad();
    const std::vector<unsigned short> indices = {0, 1, 2, 2, 1, 3};
    gl->clearTarget(0, 0, 0, 0);
    useProgram(prog);
    LogCapture log;
    drawImmediate(prog, GL_TRIANGLE_STRIP, clientAttributes(false), vertices.size(),
                  vertices.data(), 0, nullptr, GL_UNSIGNED_SHORT);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    expectAllRed(255);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    gl->clearTarget(0, 0, 0, 0);
    drawImmediate(prog, GL_TRIANGLES, clientAttributes(false), vertices.size(), vertices.data(),
                  indices.size(), indices.data(), GL_UNSIGNED_SHORT);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    expectAllRed(255);
    glUseProgram(0);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(VertexDataTest, MeshFormsChooseModeAndIndices) {
    IndexedTriangleMesh<gltest::QuadVertex> triangles;
    triangles.vertices = gltest::fullQuad();
    triangles.triangles = {{0, 1, 2}, {2, 1, 3}};
    triangles.attributes = gltest::quadAttributes();
    VertexBuffer vb;
    createVertexBuffer(vb, triangles);
    EXPECT_EQ(vb.mode, static_cast<unsigned>(GL_TRIANGLES));
    EXPECT_EQ(vb.count, 6u);
    EXPECT_EQ(vb.indexType, static_cast<unsigned>(GL_UNSIGNED_SHORT));
    EXPECT_EQ(bufferParameter(GL_ELEMENT_ARRAY_BUFFER, vb.indexId, GL_BUFFER_SIZE), 12);

    IndexedTriangleStripMesh<gltest::QuadVertex> strip;
    strip.vertices = gltest::fullQuad();
    strip.indices = {0, 1, 2, 3};
    strip.attributes = gltest::quadAttributes();
    createVertexBuffer(vb, strip, GL_DYNAMIC_DRAW);
    EXPECT_EQ(vb.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_EQ(vb.count, 4u);
    EXPECT_EQ(bufferParameter(GL_ARRAY_BUFFER, vb.id, GL_BUFFER_USAGE), GL_DYNAMIC_DRAW);

    TriangleFanMesh<gltest::QuadVertex> fan;
    fan.vertices = gltest::fullQuad();
    fan.attributes = gltest::quadAttributes();
    createVertexBuffer(vb, fan);
    EXPECT_EQ(vb.mode, static_cast<unsigned>(GL_TRIANGLE_FAN));
    EXPECT_EQ(vb.count, 4u);
    EXPECT_EQ(vb.indexId, 0u);
    deleteVertexBuffer(vb);
}

}  // namespace
