// Extension look-up with its inverted comparison, and the viewport helpers.
#include <gtest/gtest.h>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "VertexCallSpy.h"
#include "pmGL.h"

using namespace pmGL;

namespace {

class GLQueryTest : public GLTest {
protected:
    void TearDown() override {
        clearFakeExtensions();
        GLTest::TearDown();
    }
};

TEST_F(GLQueryTest, NullNameIsFalse) {
    EXPECT_FALSE(checkExtension(nullptr));
}

TEST_F(GLQueryTest, WithTheDriversManyExtensionsAnyNameIsTrue) {
    ASSERT_GE(gltest::getInteger(GL_NUM_EXTENSIONS), 2);
    const char* real = reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, 0));
    ASSERT_NE(real, nullptr);
    EXPECT_TRUE(checkExtension(real));
    EXPECT_TRUE(checkExtension("GL_no_such_extension"));
}

TEST_F(GLQueryTest, TrueAtTheFirstNameThatDiffers) {
    setFakeExtensions({"GL_A"});
    EXPECT_FALSE(checkExtension("GL_A"));
    EXPECT_TRUE(checkExtension("GL_B"));
    setFakeExtensions({"GL_A", "GL_A"});
    EXPECT_FALSE(checkExtension("GL_A"));
    setFakeExtensions({"GL_A", "GL_B"});
    EXPECT_TRUE(checkExtension("GL_A"));
    EXPECT_TRUE(checkExtension("GL_B"));
}

TEST_F(GLQueryTest, NullExtensionStringsAreSkipped) {
    setFakeExtensions({nullptr, "GL_A", nullptr});
    EXPECT_FALSE(checkExtension("GL_A"));
    EXPECT_TRUE(checkExtension("GL_B"));
    // Every name null: nothing differs.
    setFakeExtensions({});
    EXPECT_FALSE(checkExtension("GL_B"));
}

TEST_F(GLQueryTest, ViewportRoundTrips) {
    glViewport(1, 2, 3, 4);
    EXPECT_EQ(getViewport(), glm::ivec4(1, 2, 3, 4));
    setViewport(glm::ivec4(5, 6, 7, 8));
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 5);
    EXPECT_EQ(viewport[1], 6);
    EXPECT_EQ(viewport[2], 7);
    EXPECT_EQ(viewport[3], 8);
    EXPECT_EQ(getViewport(), glm::ivec4(5, 6, 7, 8));
}

TEST_F(GLQueryTest, CubemapSeamlessDoesNothing) {
    LogCapture log;
    useCubemapSeamless();
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

}  // namespace
