// Uniform data: the maps, removal order, texture units and the three ways of
// sending values to a program, checked with glGetUniform*.
#include <gtest/gtest.h>

#include <glm/gtc/type_ptr.hpp>

#include <string>
#include <vector>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;

namespace {

const char* const SAMPLERS_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform sampler2D a;
uniform sampler2D b;
uniform sampler2D c;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = texture(a, vTexCoord) + texture(b, vTexCoord) + texture(c, vTexCoord);
})";

const char* const ALL_KINDS_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform sampler2D uTexture;
uniform int uInt;
uniform float uFloat;
uniform vec2 uVec2;
uniform vec3 uVec3;
uniform vec4 uVec4;
uniform mat2 uMat2;
uniform mat3 uMat3;
uniform mat4 uMat4;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    vec4 sum = texture(uTexture, vTexCoord) + float(uInt) + uFloat;
    sum.xy += uVec2 + uMat2 * vTexCoord;
    sum.xyz += uVec3 + uMat3 * vec3(vTexCoord, 1.0);
    fragColor = sum + uVec4 + uMat4 * vec4(vTexCoord, 0.0, 1.0);
})";

// Two float uniforms declared in opposite orders, so that the same name may
// have different locations in the two programs.
const char* const XY_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform float uX;
uniform float uY;
out vec4 fragColor;
void main() { fragColor = vec4(uX, uY, 0.0, 1.0); })";

const char* const YX_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform float uY;
uniform float uX;
out vec4 fragColor;
void main() { fragColor = vec4(uY, uX, 1.0, 1.0); })";

GLint uniformInt(const Program& prog, const char* name) {
    GLint value = -1;
    glGetUniformiv(prog.id, glGetUniformLocation(prog.id, name), &value);
    return value;
}

float uniformFloat(unsigned program, GLint location) {
    float value = -1.f;
    glGetUniformfv(program, location, &value);
    return value;
}

template <int N>
std::vector<float> uniformFloats(const Program& prog, const char* name) {
    std::vector<float> values(N);
    glGetUniformfv(prog.id, glGetUniformLocation(prog.id, name), values.data());
    return values;
}

template <typename T>
std::vector<float> floatsOf(const T& value) {
    const float* first = glm::value_ptr(value);
    return {first, first + sizeof(T) / sizeof(float)};
}

class UniformDataTest : public GLTest {
protected:
    void TearDown() override {
        glUseProgram(0);
        GLTest::TearDown();
    }
};

TEST_F(UniformDataTest, EachKindGoesToItsMap) {
    UniformData data;
    Texture tex;
    tex.id = 42;
    setUniformData(data, "t", tex);
    setUniformData(data, "i", 3);
    setUniformData(data, "f", 1.5f);
    setUniformData(data, "v2", glm::vec2(1, 2));
    setUniformData(data, "v3", glm::vec3(1, 2, 3));
    setUniformData(data, "v4", glm::vec4(1, 2, 3, 4));
    setUniformData(data, "m2", glm::mat2(2.f));
    setUniformData(data, "m3", glm::mat3(3.f));
    setUniformData(data, "m4", glm::mat4(4.f));
    EXPECT_EQ(data.textures.at("t").id, 42u);
    EXPECT_EQ(data.ints.at("i"), 3);
    EXPECT_EQ(data.floats.at("f"), 1.5f);
    EXPECT_EQ(data.vec2s.at("v2"), glm::vec2(1, 2));
    EXPECT_EQ(data.vec3s.at("v3"), glm::vec3(1, 2, 3));
    EXPECT_EQ(data.vec4s.at("v4"), glm::vec4(1, 2, 3, 4));
    EXPECT_EQ(data.mat2s.at("m2"), glm::mat2(2.f));
    EXPECT_EQ(data.mat3s.at("m3"), glm::mat3(3.f));
    EXPECT_EQ(data.mat4s.at("m4"), glm::mat4(4.f));
    for (const char* name : {"t", "i", "f", "v2", "v3", "v4", "m2", "m3", "m4"}) {
        EXPECT_TRUE(isUniformData(data, name)) << name;
    }
    EXPECT_FALSE(isUniformData(data, "x"));
    setUniformData(data, "i", 5);  // overwritten in place
    EXPECT_EQ(data.ints.size(), 1u);
    EXPECT_EQ(data.ints.at("i"), 5);
    clearUniformData(data);
    for (const char* name : {"t", "i", "f", "v2", "v3", "v4", "m2", "m3", "m4"}) {
        EXPECT_FALSE(isUniformData(data, name)) << name;
    }
}

TEST_F(UniformDataTest, TextureEntryIsACopyOfTheRecord) {
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    UniformData data;
    setUniformData(data, "uTexture", tex);
    const unsigned first = tex.id;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    EXPECT_EQ(data.textures.at("uTexture").id, first);
    EXPECT_NE(data.textures.at("uTexture").id, tex.id);
    deleteTexture(tex);
}

TEST_F(UniformDataTest, NameOfSeveralKindsIsRemovedOneKindPerCallInTheFixedOrder) {
    UniformData data;
    setUniformData(data, "v", 1);
    setUniformData(data, "v", 2.f);
    setUniformData(data, "v", glm::mat3(1.f));
    setUniformData(data, "v", glm::vec2(1.f));
    setUniformData(data, "v", glm::mat4(1.f));
    setUniformData(data, "v", Texture());

    unsetUniformData(data, "v");
    EXPECT_TRUE(data.textures.empty());
    EXPECT_EQ(data.mat4s.size(), 1u);
    unsetUniformData(data, "v");
    EXPECT_TRUE(data.mat4s.empty());
    EXPECT_EQ(data.floats.size(), 1u);
    unsetUniformData(data, "v");
    EXPECT_TRUE(data.floats.empty());
    EXPECT_EQ(data.ints.size(), 1u);
    unsetUniformData(data, "v");
    EXPECT_TRUE(data.ints.empty());
    EXPECT_EQ(data.vec2s.size(), 1u);
    unsetUniformData(data, "v");
    EXPECT_TRUE(data.vec2s.empty());
    EXPECT_EQ(data.mat3s.size(), 1u);
    unsetUniformData(data, "v");
    EXPECT_FALSE(isUniformData(data, "v"));
    unsetUniformData(data, "v");  // missing: nothing happens
}

TEST_F(UniformDataTest, TexturesGetUnitsByNameOrderAndMoveDownAfterUnset) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, SAMPLERS_FRAGMENT_SHADER));
    Texture textures[3];
    for (Texture& tex : textures) createTexture(tex, 1, 1, nullptr, TextureOpts());
    UniformData data;
    setUniformData(data, "c", textures[2]);
    setUniformData(data, "a", textures[0]);
    setUniformData(data, "b", textures[1]);
    useProgram(prog);
    glUniform1i(glGetUniformLocation(prog.id, "a"), 9);
    glUniform1i(glGetUniformLocation(prog.id, "b"), 9);
    glUniform1i(glGetUniformLocation(prog.id, "c"), 9);

    useUniformData(data, prog);
    EXPECT_EQ(uniformInt(prog, "a"), 0);
    EXPECT_EQ(uniformInt(prog, "b"), 1);
    EXPECT_EQ(uniformInt(prog, "c"), 2);
    bindTexture(data);
    for (int unit = 0; unit < 3; ++unit) {
        glActiveTexture(GL_TEXTURE0 + unit);
        EXPECT_EQ(gltest::getInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(textures[unit].id));
    }

    unsetUniformData(data, "a");
    useUniformData(data);
    EXPECT_EQ(uniformInt(prog, "b"), 0);
    EXPECT_EQ(uniformInt(prog, "c"), 1);
    bindTexture(data);
    glActiveTexture(GL_TEXTURE0);
    EXPECT_EQ(gltest::getInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(textures[1].id));

    for (Texture& tex : textures) deleteTexture(tex);
    deleteProgram(prog);
}

TEST_F(UniformDataTest, EveryKindReachesTheCurrentProgramByBothLookUps) {
    const float f = 0.75f;
    const glm::vec2 v2(0.5f, -1.f);
    const glm::vec3 v3(1.f, 2.f, 3.f);
    const glm::vec4 v4(4.f, 5.f, 6.f, 7.f);
    const glm::mat2 m2(1.f, 2.f, 3.f, 4.f);
    glm::mat3 m3(1.f);
    m3[2][0] = 8.f;  // not symmetric, so a transposed upload would show
    glm::mat4 m4(1.f);
    m4[3] = glm::vec4(9.f, 10.f, 11.f, 1.f);
    UniformData data;
    setUniformData(data, "uTexture", Texture());
    setUniformData(data, "uInt", 6);
    setUniformData(data, "uFloat", f);
    setUniformData(data, "uVec2", v2);
    setUniformData(data, "uVec3", v3);
    setUniformData(data, "uVec4", v4);
    setUniformData(data, "uMat2", m2);
    setUniformData(data, "uMat3", m3);
    setUniformData(data, "uMat4", m4);
    // The raw look-up, then the cache, each on a fresh program whose
    // uniforms all start at 0.
    Program prog;
    for (const bool cached : {false, true}) {
        ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, ALL_KINDS_FRAGMENT_SHADER));
        ASSERT_EQ(prog.uniforms.size(), 9u);
        useProgram(prog);
        glUniform1i(glGetUniformLocation(prog.id, "uTexture"), 5);
        LogCapture log;
        if (cached) {
            useUniformData(data, prog);
        } else {
            useUniformData(data);
        }
        EXPECT_TRUE(log.lines().empty()) << log.dump();
        EXPECT_EQ(uniformInt(prog, "uTexture"), 0);
        EXPECT_EQ(uniformInt(prog, "uInt"), 6);
        EXPECT_EQ(uniformFloats<1>(prog, "uFloat")[0], f);
        EXPECT_EQ(uniformFloats<2>(prog, "uVec2"), floatsOf(v2));
        EXPECT_EQ(uniformFloats<3>(prog, "uVec3"), floatsOf(v3));
        EXPECT_EQ(uniformFloats<4>(prog, "uVec4"), floatsOf(v4));
        EXPECT_EQ(uniformFloats<4>(prog, "uMat2"), floatsOf(m2));
        EXPECT_EQ(uniformFloats<9>(prog, "uMat3"), floatsOf(m3));
        EXPECT_EQ(uniformFloats<16>(prog, "uMat4"), floatsOf(m4));
    }
    deleteProgram(prog);
}

TEST_F(UniformDataTest, NoCurrentProgramSendsNothingAndLogsNothing) {
    UniformData data;
    setUniformData(data, "uColor", glm::vec4(1.f));
    setUniformData(data, "uTexture", Texture());
    glUseProgram(0);
    LogCapture log;
    useUniformData(data);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    // Any glUniform call without a program would have raised an error.
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(UniformDataTest, AnotherCurrentProgramLogsTheAssertionAndStillReceivesTheValues) {
    Program prog;
    Program current;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, XY_FRAGMENT_SHADER));
    ASSERT_TRUE(createProgram(current, gltest::QUAD_VERTEX_SHADER, YX_FRAGMENT_SHADER));
    const GLint location = getUniformLocation(prog, "uX");
    ASSERT_GE(location, 0);
    UniformData data;
    setUniformData(data, "uX", 0.5f);
    useProgram(current);
    LogCapture log;
    useUniformData(data, prog);
    EXPECT_EQ(log.countEndingWith("> isCurrentProgram(prog)"), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: useUniformData("), 2);
    EXPECT_EQ(log.lines().size(), 2u);
    // The value landed in the current program, at the location `prog` gave.
    EXPECT_EQ(uniformFloat(current.id, location), 0.5f);
    EXPECT_EQ(uniformFloat(prog.id, location), 0.f);
    deleteProgram(prog);
    deleteProgram(current);
}

TEST_F(UniformDataTest, SingleNameFormSendsOneValue) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, ALL_KINDS_FRAGMENT_SHADER));
    UniformData data;
    setUniformData(data, "uA", Texture());
    setUniformData(data, "uTexture", Texture());  // second texture: unit 1
    setUniformData(data, "uFloat", 0.5f);
    setUniformData(data, "uFloat", 9);  // also an int; floats are searched first
    setUniformData(data, "uVec3", glm::vec3(1.f, 2.f, 3.f));
    useProgram(prog);
    LogCapture log;
    useUniformData(data, prog, "uTexture");
    EXPECT_EQ(uniformInt(prog, "uTexture"), 1);
    useUniformData(data, prog, "uFloat");
    EXPECT_EQ(uniformFloats<1>(prog, "uFloat")[0], 0.5f);
    useUniformData(data, prog, "uVec3");
    EXPECT_EQ(uniformFloats<3>(prog, "uVec3"), (std::vector<float>{1.f, 2.f, 3.f}));
    EXPECT_EQ(uniformFloats<2>(prog, "uVec2"), (std::vector<float>{0.f, 0.f}));  // untouched
    useUniformData(data, prog, "uNowhere");
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    deleteProgram(prog);
}

TEST_F(UniformDataTest, NameOfTwoKindsIsSentAsBothByTheFullWalk) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, ALL_KINDS_FRAGMENT_SHADER));
    UniformData data;
    setUniformData(data, "uFloat", 0.5f);
    setUniformData(data, "uFloat", 9);
    useProgram(prog);
    LogCapture log;
    useUniformData(data, prog);
    // The int goes first and fails on a float uniform; the float still lands.
    EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_OPERATION\n"), 1) << log.dump();
    EXPECT_EQ(uniformFloats<1>(prog, "uFloat")[0], 0.5f);
    deleteProgram(prog);
}

}  // namespace
