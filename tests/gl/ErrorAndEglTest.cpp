// GL error flags by name, and the EGL helpers: error names, the EGL record and
// the deletion of a surface texture.
#include <gtest/gtest.h>

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <string>

#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;

namespace {

class ErrorTest : public GLTest {};

void expectFlagName(LogCapture& log, const std::string& name) {
    log.clear();
    EXPECT_FALSE(checkError());
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    const LogLine line = log.lines()[0];
    EXPECT_EQ(line.priority, 6);
    EXPECT_EQ(line.tag, "Pixmora");
    EXPECT_EQ(line.text.rfind("pmGL: checkError(", 0), 0u) << line.text;
    EXPECT_EQ(line.text.substr(line.text.rfind('>')), "> GL error flag set: " + name + "\n");
}

TEST_F(ErrorTest, NoPendingFlagIsTrueAndSilent) {
    LogCapture log;
    EXPECT_TRUE(checkError());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ErrorTest, PendingFlagsAreNamed) {
    LogCapture log;
    glEnable(0x1234);
    expectFlagName(log, "GL_INVALID_ENUM");
    glViewport(0, 0, -1, -1);
    expectFlagName(log, "GL_INVALID_VALUE");
    glUseProgram(0);
    glUniform1f(0, 1.f);
    expectFlagName(log, "GL_INVALID_OPERATION");

    GLuint incomplete = 0;
    glGenFramebuffers(1, &incomplete);
    glBindFramebuffer(GL_FRAMEBUFFER, incomplete);
    glClear(GL_COLOR_BUFFER_BIT);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    glDeleteFramebuffers(1, &incomplete);
    expectFlagName(log, "GL_INVALID_FRAMEBUFFER_OPERATION");

    forceNextGLError(GL_OUT_OF_MEMORY);
    expectFlagName(log, "GL_OUT_OF_MEMORY");
    forceNextGLError(1283);  // stack overflow, unknown to ES
    expectFlagName(log, "UNKNOWN");
    forceNextGLError(1284);
    expectFlagName(log, "UNKNOWN");
}

TEST_F(ErrorTest, OneFlagIsTakenPerCall) {
    LogCapture log;
    forceNextGLError(GL_INVALID_VALUE);
    glEnable(0x1234);  // a driver flag waits behind the forced one
    EXPECT_FALSE(checkError());
    EXPECT_FALSE(checkError());
    EXPECT_TRUE(checkError());
    EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_VALUE\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_ENUM\n"), 1);
}

TEST(EglErrorNames, StandardNamesAndUnknown) {
    const char* names[] = {"EGL_SUCCESS",       "EGL_NOT_INITIALIZED",     "EGL_BAD_ACCESS",
                           "EGL_BAD_ALLOC",     "EGL_BAD_ATTRIBUTE",       "EGL_BAD_CONFIG",
                           "EGL_BAD_CONTEXT",   "EGL_BAD_CURRENT_SURFACE", "EGL_BAD_DISPLAY",
                           "EGL_BAD_MATCH",     "EGL_BAD_NATIVE_PIXMAP",   "EGL_BAD_NATIVE_WINDOW",
                           "EGL_BAD_PARAMETER", "EGL_BAD_SURFACE",         "EGL_CONTEXT_LOST"};
    for (EGLint code = EGL_SUCCESS; code <= EGL_CONTEXT_LOST; ++code) {
        EXPECT_STREQ(eglGetErrorString(code), names[code - EGL_SUCCESS]);
    }
    EXPECT_STREQ(eglGetErrorString(0x2FFF), "Unknown");
    EXPECT_STREQ(eglGetErrorString(0x300F), "Unknown");
    EXPECT_STREQ(eglGetErrorString(0), "Unknown");
}

TEST(CheckEglError, SuccessIsTrueAndAnErrorIsNamed) {
    const EGLDisplay display = testDisplay();
    eglGetError();
    LogCapture log;
    EXPECT_TRUE(checkEglError());
    EXPECT_TRUE(log.lines().empty());

    EXPECT_EQ(eglQueryString(display, 0x1234), nullptr);
    EXPECT_FALSE(checkEglError());
    EXPECT_EQ(log.countEndingWith("> EGL error flag set: EGL_BAD_PARAMETER"), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: checkEglError("), 1);
    EXPECT_TRUE(checkEglError());  // read once, so it is gone

    forceNextEGLError(EGL_CONTEXT_LOST);
    EXPECT_FALSE(checkEglError());
    EXPECT_EQ(log.countEndingWith("> EGL error flag set: EGL_CONTEXT_LOST"), 1);
    forceNextEGLError(0x3100);
    EXPECT_FALSE(checkEglError());
    EXPECT_EQ(log.countEndingWith("> EGL error flag set: UNKNOWN"), 1) << log.dump();
}

int marker = 0;
void* const SENTINEL = &marker;

TEST(SetEGLInfo, NullDisplayIsRefusedAndTheRecordUntouched) {
    EGLInfo info;
    info.drawSurface = SENTINEL;
    info.prevContext = SENTINEL;
    LogCapture log;
    EXPECT_FALSE(setEGLInfo(info, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(log.countEndingWith("> not a valid egl display."), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: setEGLInfo("), 1);
    EXPECT_EQ(info.display, nullptr);
    EXPECT_EQ(info.drawSurface, SENTINEL);
    EXPECT_EQ(info.prevContext, SENTINEL);
    EXPECT_EQ(info.eglCreateImageKHRProc, nullptr);
}

TEST(SetEGLInfo, RealDisplayStoresTheRecordAndLoadsTheProcs) {
    const EGLDisplay display = testDisplay();
    EGLInfo info;
    info.prevDrawSurface = SENTINEL;
    info.prevReadSurface = SENTINEL;
    info.prevContext = SENTINEL;
    info.bound = true;
    int draw = 0;
    int read = 0;
    int context = 0;
    LogCapture log;
    EXPECT_TRUE(setEGLInfo(info, display, &draw, &read, &context));
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(log.countEndingWith("> set egl info success.\n"), 1);
    EXPECT_EQ(info.display, display);
    EXPECT_EQ(info.drawSurface, &draw);
    EXPECT_EQ(info.readSurface, &read);
    EXPECT_EQ(info.context, &context);
    EXPECT_EQ(info.prevDrawSurface, nullptr);
    EXPECT_EQ(info.prevReadSurface, nullptr);
    EXPECT_EQ(info.prevContext, nullptr);
    EXPECT_TRUE(info.bound);  // not its business
    EXPECT_EQ(reinterpret_cast<void*>(info.eglCreateImageKHRProc),
              reinterpret_cast<void*>(eglGetProcAddress("eglCreateImageKHR")));
    EXPECT_EQ(reinterpret_cast<void*>(info.eglDestroyImageKHRProc),
              reinterpret_cast<void*>(eglGetProcAddress("eglDestroyImageKHR")));
    EXPECT_EQ(reinterpret_cast<void*>(info.glEGLImageTargetTexture2DOESProc),
              reinterpret_cast<void*>(eglGetProcAddress("glEGLImageTargetTexture2DOES")));
    EXPECT_NE(info.eglCreateImageKHRProc, nullptr);
    EXPECT_NE(info.eglDestroyImageKHRProc, nullptr);
    EXPECT_NE(info.glEGLImageTargetTexture2DOESProc, nullptr);
}

class SurfaceTextureTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(setEGLInfo(info, gl->display, nullptr, nullptr, gl->context));
    }

    // An EGLImage made from a GL texture of the test context.
    void* makeImage(GLuint texture) {
        const EGLint attributes[] = {EGL_IMAGE_PRESERVED_KHR, EGL_TRUE, EGL_NONE};
        return info.eglCreateImageKHRProc(
            gl->display, gl->context, EGL_GL_TEXTURE_2D_KHR,
            reinterpret_cast<EGLClientBuffer>(static_cast<std::uintptr_t>(texture)), attributes);
    }

    EGLInfo info;
};

TEST_F(SurfaceTextureTest, DeletesTheTextureAndTheImage) {
    Texture source;
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    createTexture(source, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts());
    SurfaceTexture st;
    st.image = makeImage(source.id);
    ASSERT_NE(st.image, nullptr);
    createTexture(st.tex, 2, 2, nullptr, TextureOpts());
    const unsigned texture = st.tex.id;
    LogCapture log;
    deleteSurfaceTexture(st, info);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(st.image, nullptr);
    EXPECT_EQ(st.tex.id, 0u);
    EXPECT_FALSE(glIsTexture(texture));
    deleteTexture(source);
}

TEST_F(SurfaceTextureTest, FailedDestroyLogsUnderDeleteEGLImageAndKeepsTheImage) {
    int notAnImage = 0;
    SurfaceTexture st;
    st.image = &notAnImage;
    createTexture(st.tex, 1, 1, nullptr, TextureOpts());
    LogCapture log;
    deleteSurfaceTexture(st, info);
    EXPECT_EQ(st.tex.id, 0u);  // the texture goes first in any case
    EXPECT_EQ(st.image, &notAnImage);
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].text.rfind("pmGL: deleteEGLImage(", 0), 0u);
    EXPECT_EQ(log.countEndingWith("> eglDestroyImageKHRProc is Failed.\n"), 1);
    eglGetError();
}

TEST_F(SurfaceTextureTest, MissingDestroyProcCountsAsAFailure) {
    int notAnImage = 0;
    SurfaceTexture st;
    st.image = &notAnImage;
    EGLInfo empty;
    LogCapture log;
    deleteSurfaceTexture(st, empty);
    EXPECT_EQ(st.image, &notAnImage);
    EXPECT_EQ(log.countEndingWith("> eglDestroyImageKHRProc is Failed.\n"), 1) << log.dump();
}

TEST_F(SurfaceTextureTest, EmptySurfaceTextureDoesNothing) {
    SurfaceTexture st;
    resetGLCallCounts();
    LogCapture log;
    deleteSurfaceTexture(st, info);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(glCallCounts().deleteTextures, 0);
    EXPECT_EQ(st.image, nullptr);
}

}  // namespace
