// Adoption of a texture name GL already knows: what the record learns, the
// sized-format table and its words, and a name that cannot be bound.
#include <gtest/gtest.h>

#include <string>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;

namespace {

class AssignTextureTest : public GLTest {
protected:
    void TearDown() override {
        for (GLuint name : names) glDeleteTextures(1, &name);
        GLTest::TearDown();
    }

    GLuint newName() {
        GLuint name = 0;
        glGenTextures(1, &name);
        names.push_back(name);
        return name;
    }

    // The sized format assignTexture gives the pair, on a fresh name.
    int sizedFormat(unsigned format, unsigned type) {
        Texture tex;
        EXPECT_TRUE(assignTexture(tex, newName(), 1, 1, format, type));
        return tex.opts.internalFormat;
    }

    std::vector<GLuint> names;
};

TEST_F(AssignTextureTest, AdoptsTheNameAndReadsTheSamplingParametersBack) {
    const GLuint name = newName();
    glBindTexture(GL_TEXTURE_2D, name);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 3, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_MIRRORED_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);

    Texture tex;
    tex.opts.target = GL_TEXTURE_CUBE_MAP;
    tex.opts.wrapR = GL_REPEAT;
    tex.opts.linear = false;
    LogCapture log;
    EXPECT_TRUE(assignTexture(tex, name, 3, 2, GL_RGBA, GL_UNSIGNED_BYTE));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(tex.id, name);
    EXPECT_EQ(tex.width, 3);
    EXPECT_EQ(tex.height, 2);
    EXPECT_EQ(tex.opts.target, static_cast<unsigned>(GL_TEXTURE_2D));
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGBA));
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    EXPECT_EQ(tex.opts.minFilter, GL_NEAREST_MIPMAP_LINEAR);
    EXPECT_EQ(tex.opts.magFilter, GL_NEAREST);
    EXPECT_EQ(tex.opts.wrapS, GL_REPEAT);
    EXPECT_EQ(tex.opts.wrapT, GL_MIRRORED_REPEAT);
    EXPECT_EQ(tex.opts.wrapR, GL_CLAMP_TO_EDGE);
    EXPECT_FALSE(tex.opts.linear);  // not GL's to say
    EXPECT_EQ(getInteger(GL_TEXTURE_BINDING_2D), 0);
}

TEST_F(AssignTextureTest, AFreshNameReadsBackGLDefaults) {
    Texture tex;
    EXPECT_TRUE(assignTexture(tex, newName(), 8, 8, GL_RGB, GL_UNSIGNED_BYTE));
    EXPECT_EQ(tex.opts.minFilter, GL_NEAREST_MIPMAP_LINEAR);
    EXPECT_EQ(tex.opts.magFilter, GL_LINEAR);
    EXPECT_EQ(tex.opts.wrapS, GL_REPEAT);
    EXPECT_EQ(tex.opts.wrapT, GL_REPEAT);
    EXPECT_EQ(tex.opts.wrapR, GL_REPEAT);
}

TEST_F(AssignTextureTest, TheOldTextureOfTheRecordIsNotDeleted) {
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    const unsigned old = tex.id;
    const GLuint name = newName();
    EXPECT_TRUE(assignTexture(tex, name, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE));
    EXPECT_EQ(tex.id, name);
    EXPECT_TRUE(glIsTexture(old));
    glDeleteTextures(1, &old);
}

TEST_F(AssignTextureTest, ANameOfAnotherTargetFailsAndTouchesNothing) {
    Texture cube;
    createCubemapTexture(cube, 1, 1, TextureOpts());
    Texture tex;
    createTexture(tex, 4, 2, nullptr, TextureOpts());
    const Texture before = tex;
    LogCapture log;
    EXPECT_FALSE(assignTexture(tex, cube.id, 1, 1, GL_RED, GL_FLOAT));
    EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_OPERATION\n"), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(tex.id, before.id);
    EXPECT_EQ(tex.width, 4);
    EXPECT_EQ(tex.height, 2);
    EXPECT_EQ(tex.opts.format, before.opts.format);
    EXPECT_EQ(tex.opts.type, before.opts.type);
    EXPECT_EQ(tex.opts.internalFormat, before.opts.internalFormat);
    EXPECT_EQ(tex.opts.minFilter, before.opts.minFilter);
    deleteTexture(tex);
    deleteTexture(cube);
}

TEST_F(AssignTextureTest, SizedFormatTable) {
    LogCapture log;
    EXPECT_EQ(sizedFormat(GL_RED, GL_UNSIGNED_BYTE), GL_R8);
    EXPECT_EQ(sizedFormat(GL_RG, GL_UNSIGNED_BYTE), GL_RG8);
    EXPECT_EQ(sizedFormat(GL_RGB, GL_UNSIGNED_BYTE), GL_RGB8);
    EXPECT_EQ(sizedFormat(GL_RGBA, GL_UNSIGNED_BYTE), GL_RGBA8);
    EXPECT_EQ(sizedFormat(GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT), GL_DEPTH_COMPONENT16);
    for (unsigned type : {GL_FLOAT, GL_HALF_FLOAT}) {
        EXPECT_EQ(sizedFormat(GL_RED, type), GL_R16F);
        EXPECT_EQ(sizedFormat(GL_RG, type), GL_RG16F);
        EXPECT_EQ(sizedFormat(GL_RGB, type), GL_RGB16F);
        EXPECT_EQ(sizedFormat(GL_RGBA, type), GL_RGBA16F);
    }
    EXPECT_EQ(sizedFormat(GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8), GL_DEPTH24_STENCIL8);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

// Each unknown pair is logged by the look-up of its type and gives 0, and the
// adoption still succeeds.
TEST_F(AssignTextureTest, UnknownFormatsAreLoggedUnderTheirTypesLookUp) {
    struct Case {
        unsigned format;
        unsigned type;
        const char* function;
    };
    const Case cases[] = {
        {GL_DEPTH_COMPONENT, GL_UNSIGNED_BYTE, "getSizedInternalFormat_UNSIGNED_BYTE"},
        {GL_RGBA, GL_UNSIGNED_SHORT, "getSizedInternalFormat_UNSIGNED_SHORT"},
        {GL_DEPTH_STENCIL, GL_FLOAT, "getSizedInternalFormat_FLOAT"},
        {GL_DEPTH_COMPONENT, GL_HALF_FLOAT, "getSizedInternalFormat_FLOAT"},
        {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT_24_8, "getSizedInternalFormat_UNSIGNED_INT_24_8"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        EXPECT_EQ(sizedFormat(c.format, c.type), 0);
        ASSERT_EQ(log.lines().size(), 1u) << log.dump();
        const LogLine line = log.lines()[0];
        EXPECT_EQ(line.priority, 6);
        EXPECT_EQ(line.text.rfind(std::string("pmGL: ") + c.function + "(", 0), 0u) << line.text;
        EXPECT_EQ(log.countEndingWith("> Unsupported format: " + std::to_string(c.format) + "\n"),
                  1);
    }
}

TEST_F(AssignTextureTest, UnknownTypeIsLoggedUnderTheDispatch) {
    LogCapture log;
    EXPECT_EQ(sizedFormat(GL_RGBA, GL_INT), 0);
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].text.rfind("pmGL: getSizedInternalFormat(", 0), 0u);
    EXPECT_EQ(log.countEndingWith("> Unsupported type: 5124\n"), 1);
}

}  // namespace
