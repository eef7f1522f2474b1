// The library's private EGL context: creation on the record's display, binding
// with what was current saved, unbinding back to it, and destruction.
#include <gtest/gtest.h>

#include <EGL/egl.h>

#include <cstdio>
#include <string>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;

namespace {

int marker = 0;
void* const BOGUS = &marker;

// A record on the test display with no surfaces and no context yet.
EGLInfo surfacelessInfo() {
    EGLInfo info;
    EXPECT_TRUE(setEGLInfo(info, testDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE, nullptr));
    return info;
}

std::string pointerText(const void* pointer) {
    char text[64];
    std::snprintf(text, sizeof(text), "%p", pointer);
    return text;
}

class EglContextTest : public ::testing::Test {
protected:
    void SetUp() override { info = surfacelessInfo(); }

    void TearDown() override {
        if (info.bound) unbindEGLContext(info);
        if (info.context != nullptr && info.context != BOGUS) deleteEGLContext(info);
        eglGetError();
    }

    EGLInfo info;
};

// The application's context is current while the library binds its own.
class EglContextOverAppTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        info = surfacelessInfo();
        ASSERT_TRUE(createEGLContext(info));
    }

    void TearDown() override {
        if (info.bound) unbindEGLContext(info);
        if (info.context != nullptr) deleteEGLContext(info);
        GLTest::TearDown();
    }

    EGLInfo info;
};

TEST_F(EglContextTest, CreateMakesAContextAndNamesTheOutcome) {
    LogCapture log;
    EXPECT_TRUE(createEGLContext(info));
    EXPECT_NE(info.context, nullptr);
    EXPECT_FALSE(info.bound);
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 4);
    EXPECT_EQ(log.lines()[0].text.rfind("pmGL: createEGLContext(", 0), 0u);
    EXPECT_EQ(log.countEndingWith("> CreateContext : EGL_SUCCESS."), 1);
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);  // created, not bound
}

TEST_F(EglContextTest, CreateWithoutADisplayIsRefused) {
    EGLInfo empty;
    LogCapture log;
    EXPECT_FALSE(createEGLContext(empty));
    EXPECT_EQ(log.countEndingWith("> no egl display."), 1) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(empty.context, nullptr);
}

TEST_F(EglContextTest, CreateOnARecordWithAContextKeepsTheOldOne) {
    ASSERT_TRUE(createEGLContext(info));
    void* const first = info.context;
    LogCapture log;
    EXPECT_FALSE(createEGLContext(info));
    EXPECT_EQ(log.countEndingWith("> egl context is not empty."), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(info.context, first);
}

TEST_F(EglContextTest, BoundContextIsCurrentAndUsable) {
    ASSERT_TRUE(createEGLContext(info));
    LogCapture log;
    ASSERT_TRUE(bindEGLContext(info));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_TRUE(info.bound);
    EXPECT_EQ(eglGetCurrentContext(), info.context);
    EXPECT_EQ(info.prevContext, EGL_NO_CONTEXT);
    EXPECT_EQ(info.prevDrawSurface, EGL_NO_SURFACE);
    EXPECT_EQ(info.prevReadSurface, EGL_NO_SURFACE);
    // Client version 2 is asked for; the shaders rely on getting ES 3.
    const std::string version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    EXPECT_EQ(version.rfind("OpenGL ES 3", 0), 0u) << version;
    EXPECT_TRUE(unbindEGLContext(info));
    EXPECT_FALSE(info.bound);
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

TEST_F(EglContextTest, BindRefusalsAreNamed) {
    EGLInfo empty;
    LogCapture log;
    EXPECT_FALSE(bindEGLContext(empty));
    EXPECT_EQ(log.countEndingWith("> no egl display."), 1) << log.dump();
    EXPECT_FALSE(bindEGLContext(info));
    EXPECT_EQ(log.countEndingWith("> no egl context."), 1) << log.dump();
    EXPECT_FALSE(info.bound);
    EXPECT_EQ(log.count("pmGL: bindEGLContext("), 2);
}

TEST_F(EglContextTest, FailedMakeCurrentReportsTheEglErrorAndStaysUnbound) {
    ASSERT_TRUE(createEGLContext(info));
    info.drawSurface = BOGUS;
    info.readSurface = BOGUS;
    LogCapture log;
    EXPECT_FALSE(bindEGLContext(info));
    EXPECT_FALSE(info.bound);
    EXPECT_EQ(log.countEndingWith("> EGL error flag set: EGL_BAD_SURFACE"), 1) << log.dump();
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
    info.drawSurface = EGL_NO_SURFACE;
    info.readSurface = EGL_NO_SURFACE;
}

TEST_F(EglContextTest, UnbindRefusalsAreNamed) {
    EGLInfo empty;
    LogCapture log;
    EXPECT_FALSE(unbindEGLContext(empty));
    EXPECT_EQ(log.countEndingWith("> no egl display."), 1) << log.dump();
    EXPECT_FALSE(unbindEGLContext(info));
    EXPECT_EQ(log.countEndingWith("> bind first."), 1) << log.dump();
    ASSERT_TRUE(createEGLContext(info));
    log.clear();
    EXPECT_FALSE(unbindEGLContext(info));
    EXPECT_EQ(log.countEndingWith("> bind first."), 1) << log.dump();
}

TEST_F(EglContextTest, FailedUnbindKeepsTheBindingAndTheSavedState) {
    ASSERT_TRUE(createEGLContext(info));
    ASSERT_TRUE(bindEGLContext(info));
    info.prevContext = BOGUS;
    LogCapture log;
    EXPECT_FALSE(unbindEGLContext(info));
    EXPECT_TRUE(info.bound);
    EXPECT_EQ(info.prevContext, BOGUS);
    EXPECT_EQ(log.countEndingWith("> EGL error flag set: EGL_BAD_CONTEXT"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> fail to unbind egl context."), 1);
    EXPECT_EQ(eglGetCurrentContext(), info.context);
    info.prevContext = EGL_NO_CONTEXT;
    EXPECT_TRUE(unbindEGLContext(info));
}

TEST_F(EglContextTest, DeleteRefusalsAreNamed) {
    EGLInfo empty;
    LogCapture log;
    EXPECT_FALSE(deleteEGLContext(empty));
    EXPECT_EQ(log.countEndingWith("> no egl display."), 1) << log.dump();
    EXPECT_FALSE(deleteEGLContext(info));
    EXPECT_EQ(log.countEndingWith("> no egl context."), 1) << log.dump();
    EXPECT_EQ(log.count("pmGL: deleteEGLContext("), 2);
}

TEST_F(EglContextTest, DeleteDestroysAndEmptiesTheRecord) {
    ASSERT_TRUE(createEGLContext(info));
    void* const context = info.context;
    LogCapture log;
    EXPECT_TRUE(deleteEGLContext(info));
    EXPECT_EQ(info.context, nullptr);
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 4);
    EXPECT_EQ(log.countEndingWith("> DestroyContext Success...[" + pointerText(context) + "]\n"),
              1);
    // Back to the set state: a new context can be made on the same record.
    EXPECT_TRUE(createEGLContext(info));
}

TEST_F(EglContextTest, FailedDestroyKeepsTheContext) {
    info.context = BOGUS;
    LogCapture log;
    EXPECT_FALSE(deleteEGLContext(info));
    EXPECT_EQ(info.context, BOGUS);
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 4);
    EXPECT_EQ(log.countEndingWith("> DestroyContext Fail...[" + pointerText(BOGUS) + "]\n"), 1);
}

TEST_F(EglContextOverAppTest, BindSavesTheApplicationsContextAndUnbindRestoresIt) {
    ASSERT_TRUE(bindEGLContext(info));
    EXPECT_EQ(info.prevContext, gl->context);
    EXPECT_EQ(eglGetCurrentContext(), info.context);
    EXPECT_TRUE(unbindEGLContext(info));
    EXPECT_EQ(eglGetCurrentContext(), gl->context);
    EXPECT_EQ(info.prevContext, nullptr);
    EXPECT_EQ(info.prevDrawSurface, nullptr);
    EXPECT_EQ(info.prevReadSurface, nullptr);
}

TEST_F(EglContextOverAppTest, SecondBindIsRefusedAndUnbindStillRestoresTheFirstSave) {
    ASSERT_TRUE(bindEGLContext(info));
    LogCapture log;
    EXPECT_FALSE(bindEGLContext(info));
    EXPECT_EQ(log.countEndingWith("> binded aleady."), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_TRUE(info.bound);
    EXPECT_EQ(info.prevContext, gl->context);  // not overwritten by its own context
    EXPECT_TRUE(unbindEGLContext(info));
    EXPECT_EQ(eglGetCurrentContext(), gl->context);
}

TEST_F(EglContextOverAppTest, DeleteWhileBoundUnbindsFirst) {
    ASSERT_TRUE(bindEGLContext(info));
    void* const context = info.context;
    LogCapture log;
    EXPECT_TRUE(deleteEGLContext(info));
    EXPECT_FALSE(info.bound);
    EXPECT_EQ(info.context, nullptr);
    EXPECT_EQ(eglGetCurrentContext(), gl->context);
    EXPECT_EQ(log.countEndingWith("> DestroyContext Success...[" + pointerText(context) + "]\n"), 1)
        << log.dump();
}

// Work done between bind and unbind lands in the private context, and the
// application's own state is untouched by it.
TEST_F(EglContextOverAppTest, ApplicationStateSurvivesABoundPeriod) {
    glClearColor(0.25f, 0.f, 0.f, 1.f);
    ASSERT_TRUE(bindEGLContext(info));
    glClearColor(1.f, 1.f, 1.f, 1.f);
    ASSERT_TRUE(unbindEGLContext(info));
    GLfloat clear[4] = {};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clear);
    EXPECT_FLOAT_EQ(clear[0], 0.25f);
    EXPECT_FLOAT_EQ(clear[1], 0.f);
}

}  // namespace
