// Uniform buffers: creation, binding points, updates and deletion, checked
// on GL state and on a colour read from a uniform block.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "VertexCallSpy.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;

namespace {

const char* const BLOCK_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
layout(std140) uniform uColors {
    vec4 uFirst;
    vec4 uSecond;
};
in vec2 vTexCoord;
out vec4 fragColor;
void main() { fragColor = uFirst + uSecond + vec4(vTexCoord, 0.0, 0.0) * 0.0; })";

GLint indexedBinding(GLuint index) {
    GLint value = -1;
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, index, &value);
    return value;
}

GLint blockBinding(const Program& prog, const char* block) {
    GLint value = -1;
    glGetActiveUniformBlockiv(prog.id, glGetUniformBlockIndex(prog.id, block),
                              GL_UNIFORM_BLOCK_BINDING, &value);
    return value;
}

GLint uniformBufferParameter(GLuint buffer, GLenum name) {
    GLint value = 0;
    glBindBuffer(GL_UNIFORM_BUFFER, buffer);
    glGetBufferParameteriv(GL_UNIFORM_BUFFER, name, &value);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    return value;
}

std::vector<float> readFloats(GLuint buffer, int count) {
    std::vector<float> values(static_cast<std::size_t>(count));
    glBindBuffer(GL_UNIFORM_BUFFER, buffer);
    const void* mapped = glMapBufferRange(GL_UNIFORM_BUFFER, 0, count * 4, GL_MAP_READ_BIT);
    if (mapped != nullptr) std::memcpy(values.data(), mapped, values.size() * 4);
    glUnmapBuffer(GL_UNIFORM_BUFFER);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    return values;
}

class UniformBufferTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        resetVertexCallCounts();
    }
};

TEST_F(UniformBufferTest, CreateMakesAnEmptyBufferOfTheSizeAndUsage) {
    UniformBuffer ub;
    LogCapture log;
    createUniformBuffer(ub, 64, GL_STREAM_DRAW);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(ub));
    EXPECT_TRUE(glIsBuffer(ub.id));
    EXPECT_EQ(ub.size, 64);
    EXPECT_EQ(ub.usage, static_cast<unsigned>(GL_STREAM_DRAW));
    EXPECT_EQ(ub.bindingPoint, 0u);
    EXPECT_EQ(uniformBufferParameter(ub.id, GL_BUFFER_SIZE), 64);
    EXPECT_EQ(uniformBufferParameter(ub.id, GL_BUFFER_USAGE), GL_STREAM_DRAW);
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 0);

    const unsigned first = ub.id;
    createUniformBuffer(ub, 32, GL_DYNAMIC_DRAW);
    EXPECT_FALSE(glIsBuffer(first));
    EXPECT_EQ(ub.size, 32);
    deleteUniformBuffer(ub);
}

TEST_F(UniformBufferTest, ProgramFormSizesBindsAndFeedsTheBlock) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, BLOCK_FRAGMENT_SHADER));
    UniformBuffer ub;
    LogCapture log;
    createUniformBuffer(ub, prog, "uColors", 3, GL_DYNAMIC_DRAW);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(ub.size, 32);  // two std140 vec4
    EXPECT_EQ(ub.bindingPoint, 3u);
    EXPECT_EQ(blockBinding(prog, "uColors"), 3);
    EXPECT_EQ(indexedBinding(3), static_cast<GLint>(ub.id));
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 1);

    const float colors[8] = {0.5f, 0.0f, 0.0f, 0.5f, 0.0f, 0.25f, 0.0f, 0.5f};
    updateUniformBuffer(ub, colors);
    // Only the second colour is rewritten through the offset form.
    const float blue[4] = {0.0f, 0.0f, 1.0f, 0.0f};
    updateUniformBuffer(ub, 16, 16, blue);
    const std::vector<float> stored = readFloats(ub.id, 8);
    EXPECT_EQ(stored, std::vector<float>({0.5f, 0.0f, 0.0f, 0.5f, 0.0f, 0.0f, 1.0f, 0.0f}));

    VertexBuffer vb;
    gltest::createFullQuad(vb);
    VertexArray va;
    createVertexArray(va, vb, prog);
    gl->clearTarget(0, 0, 0, 0);
    useProgram(prog);
    drawVertexArray(va, 1);
    const std::vector<std::uint8_t> target = gl->readTarget();
    EXPECT_NEAR(target[0], 128, 1);
    EXPECT_EQ(target[1], 0);
    EXPECT_EQ(target[2], 255);
    EXPECT_NEAR(target[3], 128, 1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();

    glUseProgram(0);
    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteUniformBuffer(ub);
    deleteProgram(prog);
}

TEST_F(UniformBufferTest, BindingAgainAtTheHeldPointMakesNoGLCall) {
    UniformBuffer ub;
    createUniformBuffer(ub, 16, GL_DYNAMIC_DRAW);
    resetVertexCallCounts();
    bindUniformBuffer(ub, 0);  // a new buffer already counts as bound at 0
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 0);
    EXPECT_EQ(indexedBinding(0), 0);
    bindUniformBuffer(ub, 2);
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 1);
    EXPECT_EQ(ub.bindingPoint, 2u);
    EXPECT_EQ(indexedBinding(2), static_cast<GLint>(ub.id));
    bindUniformBuffer(ub, 2);
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 1);
    bindUniformBuffer(ub, 0);
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 2);
    EXPECT_EQ(indexedBinding(0), static_cast<GLint>(ub.id));
    deleteUniformBuffer(ub);
}

TEST_F(UniformBufferTest, ProgramFormAtPointZeroMakesNoBindingCall) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, BLOCK_FRAGMENT_SHADER));
    UniformBuffer ub;
    createUniformBuffer(ub, prog, std::string("uColors"), 0, GL_DYNAMIC_DRAW);
    EXPECT_EQ(ub.size, 32);
    EXPECT_EQ(ub.bindingPoint, 0u);
    EXPECT_EQ(vertexCallCounts().bindBufferBase, 0);
    EXPECT_EQ(indexedBinding(0), 0);
    EXPECT_EQ(blockBinding(prog, "uColors"), 0);
    deleteUniformBuffer(ub);
    deleteProgram(prog);
}

TEST_F(UniformBufferTest, MissingBlockGivesAnEmptySize) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, BLOCK_FRAGMENT_SHADER));
    UniformBuffer ub;
    createUniformBuffer(ub, prog, "uNothing", 1, GL_DYNAMIC_DRAW);
    EXPECT_EQ(ub.size, 0);
    EXPECT_TRUE(isExist(ub));
    while (glGetError() != GL_NO_ERROR) {
    }
    deleteUniformBuffer(ub);
    deleteProgram(prog);
}

TEST_F(UniformBufferTest, UpdatingAnEmptyRecordIsAsserted) {
    UniformBuffer ub;
    const float value[4] = {};
    LogCapture log;
    updateUniformBuffer(ub, value);
    EXPECT_EQ(log.countEndingWith("> isExist(ub)"), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: updateUniformBuffer("), 2) << log.dump();
    while (glGetError() != GL_NO_ERROR) {
    }
}

TEST_F(UniformBufferTest, DeleteClearsIdPointAndSizeAndIgnoresEmptyRecords) {
    UniformBuffer ub;
    createUniformBuffer(ub, 16, GL_STATIC_DRAW);
    bindUniformBuffer(ub, 4);
    const unsigned id = ub.id;
    deleteUniformBuffer(ub);
    EXPECT_FALSE(glIsBuffer(id));
    EXPECT_EQ(ub.id, 0u);
    EXPECT_EQ(ub.bindingPoint, 0u);
    EXPECT_EQ(ub.size, 0);
    EXPECT_EQ(ub.usage, static_cast<unsigned>(GL_STATIC_DRAW));
    LogCapture log;
    deleteUniformBuffer(ub);
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
