// The per-thread private contexts: registration with reference counts, Bind
// and Unbind around work, and the switch that turns it all off.
#include <future>
#include <thread>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmGLContextManager.h"

namespace {

using pmGL::GLContextManager;

// Each test starts from a fresh manager and leaves none behind.
class ContextManagerTest : public ::testing::Test {
protected:
    void SetUp() override {
        GLContextManager::ReleaseInstance();
        manager = GLContextManager::GetInstancePtr();
        ASSERT_NE(manager, nullptr);
    }
    void TearDown() override { GLContextManager::ReleaseInstance(); }

    // Runs `work` on a thread of its own and waits for it, failing rather
    // than hanging if it never ends.
    template <typename Work>
    void onOtherThread(Work work) {
        auto done = std::async(std::launch::async, work);
        ASSERT_EQ(done.wait_for(std::chrono::seconds(60)), std::future_status::ready);
        done.get();
    }

    GLContextManager* manager = nullptr;
};

TEST_F(ContextManagerTest, SingletonStartsEnabledWithNoDisplayAndNoContexts) {
    EXPECT_EQ(GLContextManager::GetInstancePtr(), manager);
    EXPECT_TRUE(manager->IsEnalbed());
    EXPECT_EQ(manager->Display(), nullptr);
    EXPECT_TRUE(manager->Contexts().empty());
}

TEST_F(ContextManagerTest, InitializeTakesTheCurrentDisplayAndMakesAPrivateContext) {
    GLTestContext caller;
    LogCapture log;
    manager->Initialize();
    ASSERT_EQ(manager->Contexts().size(), 1u);
    EXPECT_EQ(manager->Display(), caller.display);
    const pmGL::GLContext& entry = manager->Contexts().front();
    EXPECT_EQ(entry.refCount, 1);
    EXPECT_EQ(entry.threadId, std::this_thread::get_id());
    EXPECT_NE(entry.info.context, nullptr);
    EXPECT_NE(entry.info.context, caller.context);
    EXPECT_EQ(log.count("> current thread id = "), 1);
    EXPECT_EQ(log.countEndingWith("> A new GLContext was successfully initialized (1).\n"), 1);

    EXPECT_TRUE(manager->Bind());
    EXPECT_EQ(eglGetCurrentContext(), entry.info.context);
    EXPECT_TRUE(manager->Unbind());
    EXPECT_EQ(eglGetCurrentContext(), caller.context);

    log.clear();
    manager->Terminate();
    EXPECT_TRUE(manager->Contexts().empty());
    EXPECT_EQ(log.countEndingWith("> A GLContext was successfully terminated (0).\n"), 1);
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
}

TEST_F(ContextManagerTest, SecondInitializeCountsTwoAndTwoTerminatesRemoveIt) {
    GLTestContext caller;
    manager->Initialize();
    void* context = manager->Contexts().front().info.context;
    LogCapture log;
    manager->Initialize();
    EXPECT_EQ(log.countEndingWith("> reference counter = 2\n"), 1);
    ASSERT_EQ(manager->Contexts().size(), 1u);
    EXPECT_EQ(manager->Contexts().front().info.context, context);
    EXPECT_EQ(manager->Contexts().front().refCount, 2);
    manager->Terminate();
    EXPECT_EQ(log.countEndingWith("> reference counter = 1\n"), 1);
    ASSERT_EQ(manager->Contexts().size(), 1u);
    manager->Terminate();
    EXPECT_TRUE(manager->Contexts().empty());
}

TEST_F(ContextManagerTest, TerminateWithoutEntryLogsTheThreadListAndChangesNothing) {
    GLTestContext caller;
    manager->Initialize();
    onOtherThread([this] {
        LogCapture log;
        manager->Terminate();
        EXPECT_EQ(log.countEndingWith("> failed to find a valid context.\n"), 1);
        EXPECT_EQ(log.count("> current thread id = "), 1);
        EXPECT_EQ(log.count("> \tbuffer thread id = "), 1);
    });
    ASSERT_EQ(manager->Contexts().size(), 1u);
    EXPECT_EQ(manager->Contexts().front().refCount, 1);
    manager->Terminate();
}

TEST_F(ContextManagerTest, NoDisplayAnywhereMeansNoContextAndFailingBinds) {
    onOtherThread([this] {
        ASSERT_EQ(eglGetCurrentDisplay(), EGL_NO_DISPLAY);
        LogCapture log;
        manager->Initialize();
        EXPECT_EQ(log.countEndingWith("> Failed to get egl display.\n"), 1);
        EXPECT_TRUE(manager->Contexts().empty());
        EXPECT_FALSE(manager->Bind());
        EXPECT_EQ(log.countEndingWith("> failed to find a valid context.\n"), 1);
        EXPECT_FALSE(manager->Unbind());
        EXPECT_EQ(log.countEndingWith("> failed to find a valid context.\n"), 2);
    });
}

TEST_F(ContextManagerTest, SetDisplayLetsAThreadWithoutContextGetOne) {
    manager->SetEGLDisplay(testDisplay());
    onOtherThread([this] {
        manager->Initialize();
        ASSERT_EQ(manager->Contexts().size(), 1u);
        EXPECT_TRUE(manager->Bind());
        EXPECT_EQ(eglGetCurrentContext(), manager->Contexts().front().info.context);
        // The private context draws: a cleared framebuffer of its own reads back.
        GLuint tex = 0, fb = 0;
        glGenTextures(1, &tex);
        glBindTexture(GL_TEXTURE_2D, tex);
        glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 1, 1);
        glGenFramebuffers(1, &fb);
        glBindFramebuffer(GL_FRAMEBUFFER, fb);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, tex, 0);
        glClearColor(1.0f, 0.0f, 1.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        uint8_t pixel[4] = {};
        glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
        EXPECT_EQ(pixel[0], 255);
        EXPECT_EQ(pixel[1], 0);
        glDeleteFramebuffers(1, &fb);
        glDeleteTextures(1, &tex);
        EXPECT_TRUE(manager->Unbind());
        EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        manager->Terminate();
        EXPECT_TRUE(manager->Contexts().empty());
    });
}

TEST_F(ContextManagerTest, NestedBindIsRefusedAndTheFirstUnbindEndsTheBinding) {
    GLTestContext caller;
    manager->Initialize();
    EXPECT_TRUE(manager->Bind());
    LogCapture log;
    EXPECT_FALSE(manager->Bind());
    EXPECT_EQ(log.countEndingWith("> binded aleady."), 1);
    EXPECT_TRUE(manager->Unbind());
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    EXPECT_FALSE(manager->Unbind());
    EXPECT_EQ(log.countEndingWith("> bind first."), 1);
    manager->Terminate();
}

TEST_F(ContextManagerTest, DisabledManagerBindsNothingAndRegistersNoNewThread) {
    GLTestContext caller;
    manager->Disable();
    EXPECT_FALSE(manager->IsEnalbed());
    LogCapture log;
    EXPECT_FALSE(manager->Bind());
    EXPECT_FALSE(manager->Unbind());
    // Without looking at the list: no "failed to find" line.
    EXPECT_EQ(log.count("failed to find"), 0);
    manager->Initialize();
    EXPECT_TRUE(manager->Contexts().empty());
    manager->Enable();
    EXPECT_TRUE(manager->IsEnalbed());
}

TEST_F(ContextManagerTest, RegisteredThreadKeepsCountingWhileDisabled) {
    GLTestContext caller;
    manager->Initialize();
    manager->Disable();
    LogCapture log;
    manager->Initialize();
    EXPECT_EQ(log.countEndingWith("> reference counter = 2\n"), 1);
    EXPECT_FALSE(manager->Bind());
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    manager->Enable();
    manager->Terminate();
    manager->Terminate();
    EXPECT_TRUE(manager->Contexts().empty());
}

TEST_F(ContextManagerTest, AContextIsNeverUsedFromAnotherThread) {
    GLTestContext caller;
    manager->Initialize();
    onOtherThread([this] {
        LogCapture log;
        EXPECT_FALSE(manager->Bind());
        EXPECT_EQ(log.countEndingWith("> failed to find a valid context.\n"), 1);
        EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
    });
    manager->Terminate();
}

TEST_F(ContextManagerTest, EachThreadGetsItsOwnEntry) {
    manager->SetEGLDisplay(testDisplay());
    std::promise<void> registered;
    std::promise<void> release;
    std::thread other([&] {
        manager->Initialize();
        registered.set_value();
        release.get_future().wait();
        manager->Terminate();
    });
    registered.get_future().wait();
    onOtherThread([this] {
        manager->Initialize();
        EXPECT_EQ(manager->Contexts().size(), 2u);
        manager->Terminate();
    });
    EXPECT_EQ(manager->Contexts().size(), 1u);
    release.set_value();
    other.join();
    EXPECT_TRUE(manager->Contexts().empty());
}

TEST_F(ContextManagerTest, ExplicitDisplayIsKeptForLaterThreads) {
    manager->SetEGLDisplay(testDisplay());
    EXPECT_EQ(manager->Display(), testDisplay());
    onOtherThread([this] {
        manager->Initialize();
        ASSERT_EQ(manager->Contexts().size(), 1u);
        EXPECT_EQ(manager->Contexts().front().info.display, testDisplay());
        manager->Terminate();
    });
}

}  // namespace
