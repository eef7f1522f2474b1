// Programs: compiling and linking with their error words, the reflection cache
// and the current program.
#include <gtest/gtest.h>

#include <string>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;

namespace {

const char* const REFLECTED_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform vec4 uColor;
uniform float uScale;
uniform Block { vec4 uBlockColor; };
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = uColor * uScale + uBlockColor + vec4(vTexCoord, 0.0, 0.0);
})";

const char* const BROKEN_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
out vec4 fragColor;
void main() {
    fragColor = undefinedValue;
})";

const char* const BROKEN_VERTEX_SHADER = R"(#version 300 es
void main() {
    gl_Position = undefinedPosition;
})";

// Reads a varying that the vertex shader never writes: compiles, fails to link.
const char* const UNLINKABLE_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
in vec4 vNeverWritten;
out vec4 fragColor;
void main() {
    fragColor = vNeverWritten;
})";

const Uniform* findUniform(const Program& prog, const std::string& name) {
    for (const Uniform& entry : prog.uniforms) {
        if (entry.name == name) return &entry;
    }
    return nullptr;
}

class ProgramTest : public GLTest {};

TEST_F(ProgramTest, CreateProgramCachesActiveUniformsAndAttribsAsGLReportsThem) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, REFLECTED_FRAGMENT_SHADER));
    ASSERT_NE(prog.id, 0u);
    EXPECT_TRUE(glIsProgram(prog.id));

    ASSERT_EQ(prog.uniforms.size(), 2u);  // the block member has no location
    const Uniform* color = findUniform(prog, "uColor");
    const Uniform* scale = findUniform(prog, "uScale");
    ASSERT_NE(color, nullptr);
    ASSERT_NE(scale, nullptr);
    EXPECT_EQ(color->location, glGetUniformLocation(prog.id, "uColor"));
    EXPECT_EQ(color->type, static_cast<unsigned>(GL_FLOAT_VEC4));
    EXPECT_EQ(color->size, 1);
    EXPECT_EQ(scale->location, glGetUniformLocation(prog.id, "uScale"));
    EXPECT_EQ(scale->type, static_cast<unsigned>(GL_FLOAT));
    EXPECT_EQ(findUniform(prog, "uBlockColor"), nullptr);

    ASSERT_EQ(prog.attribs.size(), 2u);
    EXPECT_EQ(getAttribLocation(prog, "aPosition"), glGetAttribLocation(prog.id, "aPosition"));
    EXPECT_EQ(getAttribLocation(prog, std::string("aTexCoord")),
              glGetAttribLocation(prog.id, "aTexCoord"));
    for (const Attribute& attrib : prog.attribs) {
        const GLenum expected = attrib.name == "aPosition" ? GL_FLOAT_VEC3 : GL_FLOAT_VEC2;
        EXPECT_EQ(attrib.type, static_cast<unsigned>(expected)) << attrib.name;
    }
    deleteProgram(prog);
}

TEST_F(ProgramTest, CacheKeepsGLIndexOrder) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, REFLECTED_FRAGMENT_SHADER));
    GLint count = 0;
    glGetProgramiv(prog.id, GL_ACTIVE_UNIFORMS, &count);
    std::vector<std::string> expected;
    for (GLint i = 0; i < count; ++i) {
        char name[256] = {};
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(prog.id, i, sizeof(name), nullptr, &size, &type, name);
        if (glGetUniformLocation(prog.id, name) >= 0) expected.push_back(name);
    }
    std::vector<std::string> cached;
    for (const Uniform& entry : prog.uniforms) cached.push_back(entry.name);
    EXPECT_EQ(cached, expected);
    deleteProgram(prog);
}

TEST_F(ProgramTest, StringFormsMatchPointerForms) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, std::string(gltest::QUAD_VERTEX_SHADER),
                              std::string(gltest::COLOR_FRAGMENT_SHADER)));
    unsigned raw = 0;
    ASSERT_TRUE(createProgram(raw, std::string(gltest::QUAD_VERTEX_SHADER),
                              std::string(gltest::COLOR_FRAGMENT_SHADER)));
    EXPECT_TRUE(glIsProgram(raw));
    EXPECT_EQ(getUniformLocation(prog, std::string("uColor")), getUniformLocation(prog, "uColor"));
    EXPECT_EQ(getUniformLocation(raw, std::string("uColor")), glGetUniformLocation(raw, "uColor"));
    EXPECT_EQ(getAttribLocation(raw, std::string("aPosition")),
              glGetAttribLocation(raw, "aPosition"));
    deleteProgram(raw);
    EXPECT_EQ(raw, 0u);
    deleteProgram(prog);
}

TEST_F(ProgramTest, UnknownNameHasLocationMinusOneWithoutLogging) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::COLOR_FRAGMENT_SHADER));
    LogCapture log;
    EXPECT_EQ(getUniformLocation(prog, "uNotThere"), -1);
    EXPECT_EQ(getUniformLocation(prog, "ucolor"), -1);  // exact names only
    EXPECT_EQ(getAttribLocation(prog, "aNotThere"), -1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    deleteProgram(prog);
}

TEST_F(ProgramTest, CompileErrorLogsCompileWordUnderPrintErrorAndTheSource) {
    LogCapture log;
    unsigned id = 1234;
    EXPECT_FALSE(createProgram(id, gltest::QUAD_VERTEX_SHADER, BROKEN_FRAGMENT_SHADER));
    EXPECT_EQ(id, 0u);
    EXPECT_EQ(log.count("pmGL: printError("), 1) << log.dump();
    EXPECT_EQ(log.count("> Compile Error for a shader Object:\n"), 1);
    EXPECT_EQ(log.count(std::string("> Print a shader source:\n") + BROKEN_FRAGMENT_SHADER + "\n"),
              1);
    for (const LogLine& line : log.lines()) EXPECT_EQ(line.priority, 6);
}

TEST_F(ProgramTest, BothShadersAreCompiledWhenTheFirstFails) {
    LogCapture log;
    unsigned id = 0;
    EXPECT_FALSE(createProgram(id, BROKEN_VERTEX_SHADER, BROKEN_FRAGMENT_SHADER));
    EXPECT_EQ(log.count("Compile Error for a shader Object:\n"), 2) << log.dump();
    EXPECT_EQ(log.count("Print a shader source:\n"), 2);
}

TEST_F(ProgramTest, CreateShaderReturnsNameOrZero) {
    LogCapture log;
    const unsigned good = createShader(gltest::QUAD_VERTEX_SHADER, GL_VERTEX_SHADER);
    EXPECT_NE(good, 0u);
    EXPECT_TRUE(glIsShader(good));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(createShader(BROKEN_VERTEX_SHADER, GL_VERTEX_SHADER), 0u);
    glDeleteShader(good);
}

TEST_F(ProgramTest, LinkErrorLogsLinkWordAndDeletesTheProgram) {
    LogCapture log;
    Program prog;
    EXPECT_FALSE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, UNLINKABLE_FRAGMENT_SHADER));
    EXPECT_EQ(log.count("pmGL: printError("), 1) << log.dump();
    EXPECT_EQ(log.count("> Link Error for a Program Object:\n"), 1);
    EXPECT_EQ(log.count("Compile Error"), 0);
    // The record keeps the deleted name; the caches stay empty.
    EXPECT_NE(prog.id, 0u);
    EXPECT_FALSE(glIsProgram(prog.id));
    EXPECT_TRUE(prog.uniforms.empty());
    EXPECT_TRUE(prog.attribs.empty());
}

TEST_F(ProgramTest, CreatingAgainDeletesTheOldProgramAndDoesNotDuplicateTheCache) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, REFLECTED_FRAGMENT_SHADER));
    const unsigned first = prog.id;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, REFLECTED_FRAGMENT_SHADER));
    EXPECT_FALSE(glIsProgram(first));
    EXPECT_EQ(prog.uniforms.size(), 2u);
    EXPECT_EQ(prog.attribs.size(), 2u);
    deleteProgram(prog);
    EXPECT_EQ(prog.id, 0u);
    EXPECT_TRUE(prog.uniforms.empty());
    EXPECT_TRUE(prog.attribs.empty());
    deleteProgram(prog);  // empty: nothing to do
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(ProgramTest, UseProgramWithZeroLeavesTheCurrentProgram) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::COLOR_FRAGMENT_SHADER));
    useProgram(prog);
    EXPECT_EQ(gltest::getInteger(GL_CURRENT_PROGRAM), static_cast<GLint>(prog.id));
    useProgram(0u);
    EXPECT_EQ(gltest::getInteger(GL_CURRENT_PROGRAM), static_cast<GLint>(prog.id));
    useProgram(Program());
    EXPECT_EQ(gltest::getInteger(GL_CURRENT_PROGRAM), static_cast<GLint>(prog.id));
    glUseProgram(0);
    deleteProgram(prog);
}

TEST_F(ProgramTest, IsCurrentProgramComparesWithGL) {
    Program first;
    Program second;
    ASSERT_TRUE(createProgram(first, gltest::QUAD_VERTEX_SHADER, gltest::COLOR_FRAGMENT_SHADER));
    ASSERT_TRUE(createProgram(second, gltest::QUAD_VERTEX_SHADER, gltest::COLOR_FRAGMENT_SHADER));
    EXPECT_TRUE(isCurrentProgram(0u));
    useProgram(first);
    EXPECT_TRUE(isCurrentProgram(first));
    EXPECT_TRUE(isCurrentProgram(first.id));
    EXPECT_FALSE(isCurrentProgram(second));
    glUseProgram(0);
    deleteProgram(first);
    deleteProgram(second);
}

TEST_F(ProgramTest, UniformIntWritesAtTheCachedLocation) {
    const char* fragment = R"(#version 300 es
precision highp float;
uniform sampler2D uTexture;
uniform int uMode;
out vec4 fragColor;
void main() { fragColor = texture(uTexture, vec2(0.5)) * float(uMode); })";
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, fragment));
    useProgram(prog);
    uniform<int>(prog, "uMode", 7);
    uniform<int>(prog, "uTexture", 3);
    GLint value = 0;
    glGetUniformiv(prog.id, glGetUniformLocation(prog.id, "uMode"), &value);
    EXPECT_EQ(value, 7);
    glGetUniformiv(prog.id, glGetUniformLocation(prog.id, "uTexture"), &value);
    EXPECT_EQ(value, 3);
    glUseProgram(0);
    deleteProgram(prog);
}

TEST_F(ProgramTest, UniformBlockSizeAndBinding) {
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, REFLECTED_FRAGMENT_SHADER));
    const GLuint index = glGetUniformBlockIndex(prog.id, "Block");
    GLint expectedSize = 0;
    glGetActiveUniformBlockiv(prog.id, index, GL_UNIFORM_BLOCK_DATA_SIZE, &expectedSize);
    EXPECT_GE(expectedSize, 16);
    EXPECT_EQ(getUniformBlockSize(prog, "Block"), expectedSize);
    EXPECT_EQ(getUniformBlockSize(prog.id, std::string("Block")), expectedSize);

    bindUniformBlock(prog, "Block", 3);
    GLint binding = -1;
    glGetActiveUniformBlockiv(prog.id, index, GL_UNIFORM_BLOCK_BINDING, &binding);
    EXPECT_EQ(binding, 3);
    bindUniformBlock(prog.id, std::string("Block"), 1);
    glGetActiveUniformBlockiv(prog.id, index, GL_UNIFORM_BLOCK_BINDING, &binding);
    EXPECT_EQ(binding, 1);

    // A block that does not exist has size 0; GL's own error is all there is.
    LogCapture log;
    EXPECT_EQ(getUniformBlockSize(prog, "NoBlock"), 0);
    bindUniformBlock(prog, "NoBlock", 2);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    while (glGetError() != GL_NO_ERROR) {
    }
    deleteProgram(prog);
}

}  // namespace
