// The exported functions with the library's private per-thread context, and
// the texture and native-surface input routes.
#include <cmath>
#include <cstdint>
#include <future>
#include <thread>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "PixmoraWrapper.h"
#include "pixmora.h"
#include "pmFilters.h"
#include "pmGLContextManager.h"

namespace {

using pmGL::GLContextManager;

int greyOf(const uint8_t* p) {
    const float mono = p[0] / 255.0f * 0.2125f + p[1] / 255.0f * 0.7154f + p[2] / 255.0f * 0.0721f;
    return static_cast<int>(std::lround(mono * 255.0f));
}

// Counts the read-back pixels (bottom row first) that are not the grey of the
// top-row-first input drawn with flip mode none, which shows it upright.
int greyMismatches(const std::vector<uint8_t>& out, const std::vector<uint8_t>& in, int w, int h,
                   int channels) {
    int mismatches = 0;
    for (int row = 0; row < h; ++row) {
        for (int x = 0; x < w; ++x) {
            const uint8_t* p = &out[(static_cast<size_t>(row) * w + x) * 4];
            const int expected = greyOf(&in[(static_cast<size_t>(h - 1 - row) * w + x) * channels]);
            if (std::abs(p[0] - expected) > 1 || std::abs(p[1] - expected) > 1 ||
                std::abs(p[2] - expected) > 1 || p[3] != 255) {
                ++mismatches;
            }
        }
    }
    return mismatches;
}

// A framebuffer made in the calling thread's private context through the
// manager, for a thread that has no context of its own: its binding stays in
// the private context, so the library's Draw renders into it.
class PrivateTarget {
public:
    PrivateTarget(int w, int h) : width(w), height(h) {
        inPrivateContext([&] {
            glGenTextures(1, &texture);
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, w, h);
            glGenFramebuffers(1, &framebuffer);
            glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
            glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
            glViewport(0, 0, w, h);
            glClearColor(0, 0, 0, 0);
            glClear(GL_COLOR_BUFFER_BIT);
        });
    }
    ~PrivateTarget() {
        inPrivateContext([&] {
            glDeleteFramebuffers(1, &framebuffer);
            glDeleteTextures(1, &texture);
        });
    }
    std::vector<uint8_t> read() {
        std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
        inPrivateContext([&] {
            glPixelStorei(GL_PACK_ALIGNMENT, 1);
            glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        });
        return pixels;
    }

private:
    template <typename Work>
    void inPrivateContext(Work work) {
        GLContextManager* manager = GLContextManager::GetInstancePtr();
        EXPECT_TRUE(manager->Bind());
        work();
        EXPECT_TRUE(manager->Unbind());
    }

    int width;
    int height;
    GLuint texture = 0;
    GLuint framebuffer = 0;
};

// Runs `work` on a new thread and fails instead of hanging if it never ends.
template <typename Work>
void onThread(Work work) {
    auto done = std::async(std::launch::async, work);
    ASSERT_EQ(done.wait_for(std::chrono::seconds(90)), std::future_status::ready);
    done.get();
}

class PrivateContextTest : public ::testing::Test {
protected:
    void SetUp() override {
        GLContextManager::ReleaseInstance();
        pmEnableInternalGLContext();
    }
    void TearDown() override { GLContextManager::ReleaseInstance(); }

    const std::list<pmGL::GLContext>& contexts() {
        return GLContextManager::GetInstancePtr()->Contexts();
    }
};

TEST_F(PrivateContextTest, CallerGetsItsOwnContextBackAfterEveryCall) {
    const int w = 12, h = 9;
    SurfaceTestContext caller(w, h);
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 31);
    pmFilterObject object{PM_PHOTO_GREY, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    ASSERT_NE(object.handler, nullptr);
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    ASSERT_EQ(contexts().size(), 1u);
    EXPECT_NE(contexts().front().info.context, caller.context);
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    pmPhotoFilterSetFlipMode(object, PM_FLIP_NONE);
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    pmPhotoFilterDraw(object, w, h);
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    EXPECT_EQ(eglGetCurrentSurface(EGL_DRAW), caller.surface);
    // The private context drew on the caller's surface.
    EXPECT_EQ(greyMismatches(caller.readSurface(), pixels, w, h, 4), 0);
    pmPhotoFilterDelete(&object);
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    EXPECT_TRUE(contexts().empty());
}

TEST_F(PrivateContextTest, SecondCreateOnOneThreadRaisesTheReferenceCount) {
    SurfaceTestContext caller(4, 4);
    pmFilterObject first{0, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    LogCapture log;
    pmFilterObject second{0, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    EXPECT_EQ(log.countEndingWith("> reference counter = 2\n"), 1);
    ASSERT_EQ(contexts().size(), 1u);
    pmPhotoFilterDelete(&first);
    ASSERT_EQ(contexts().size(), 1u);
    pmPhotoFilterDelete(&second);
    EXPECT_TRUE(contexts().empty());
}

TEST_F(PrivateContextTest, WrongTypeStillKeepsTheThreadsReference) {
    SurfaceTestContext caller(4, 4);
    EXPECT_EQ(pmPhotoFilterCreate(12), nullptr);
    ASSERT_EQ(contexts().size(), 1u);
    EXPECT_EQ(contexts().front().refCount, 1);
}

TEST_F(PrivateContextTest, ThreadWithoutContextUsesTheDisplayItWasGiven) {
    pmSetEGLDisplay(testDisplay());
    onThread([this] {
        ASSERT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        const int w = 10, h = 7;
        std::vector<uint8_t> pixels = makeTestPixels(w, h, 3, 41);
        pmFilterObject object{0, pmPhotoFilterCreate(PM_PHOTO_GREY)};
        ASSERT_NE(object.handler, nullptr);
        EXPECT_TRUE(static_cast<pmFilters::FilterCommon*>(object.handler)->IsInit());
        EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        {
            PrivateTarget target(w, h);
            pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 3);
            pmPhotoFilterDraw(object, w, h);
            EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
            EXPECT_EQ(greyMismatches(target.read(), pixels, w, h, 3), 0);
        }
        pmPhotoFilterDelete(&object);
        EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        EXPECT_TRUE(contexts().empty());
    });
}

TEST_F(PrivateContextTest, DeleteDestroysTheThreadsPrivateContext) {
    SurfaceTestContext caller(4, 4);
    pmFilterObject object{0, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    ASSERT_EQ(contexts().size(), 1u);
    void* privateContext = contexts().front().info.context;
    LogCapture log;
    pmPhotoFilterDelete(&object);
    EXPECT_TRUE(contexts().empty());
    EXPECT_EQ(eglGetCurrentContext(), caller.context);
    EXPECT_EQ(log.countEndingWith("> A GLContext was successfully terminated (0).\n"), 1);
    // The name is gone: querying it fails with EGL_BAD_CONTEXT.
    EGLint value = 0;
    EXPECT_FALSE(eglQueryContext(caller.display, privateContext, EGL_CONFIG_ID, &value));
    EXPECT_EQ(eglGetError(), EGL_BAD_CONTEXT);
}

TEST_F(PrivateContextTest, FourThreadsCreateUseAndDeleteTwentyTimes) {
    pmSetEGLDisplay(testDisplay());
    auto worker = [](unsigned seed) {
        int failures = 0;
        for (int i = 0; i < 20; ++i) {
            const int w = 6 + static_cast<int>(seed), h = 5 + i % 3;
            std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, seed * 100 + i);
            pmFilterObject object{0, pmPhotoFilterCreate(PM_PHOTO_GREY)};
            if (object.handler == nullptr) return -1;
            {
                PrivateTarget target(w, h);
                pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
                pmPhotoFilterDraw(object, w, h);
                failures += greyMismatches(target.read(), pixels, w, h, 4);
            }
            pmPhotoFilterDelete(&object);
            if (eglGetCurrentContext() != EGL_NO_CONTEXT) ++failures;
        }
        return failures;
    };
    std::vector<std::future<int>> results;
    for (unsigned t = 0; t < 4; ++t) results.push_back(std::async(std::launch::async, worker, t));
    for (auto& result : results) {
        ASSERT_EQ(result.wait_for(std::chrono::seconds(100)), std::future_status::ready);
        EXPECT_EQ(result.get(), 0);
    }
    EXPECT_TRUE(contexts().empty());
}

TEST_F(PrivateContextTest, EnableAndDisableLogTheirWords) {
    LogCapture log;
    pmDisableInternalGLContext();
    EXPECT_FALSE(GLContextManager::GetInstancePtr()->IsEnalbed());
    pmEnableInternalGLContext();
    EXPECT_TRUE(GLContextManager::GetInstancePtr()->IsEnalbed());
    EXPECT_EQ(log.countEndingWith("> Disable internal GLContext."), 1);
    EXPECT_EQ(log.countEndingWith("> Enable internal GLContext."), 1);
}

TEST_F(PrivateContextTest, SetEGLDisplayStoresTheDisplay) {
    pmSetEGLDisplay(testDisplay());
    EXPECT_EQ(GLContextManager::GetInstancePtr()->Display(), testDisplay());
}

TEST_F(PrivateContextTest, NativeCallsOnNullHandlerSayIt) {
    pmFilterObject empty{0, nullptr};
    LogCapture log;
    pmPhotoFilterSetNativeBuffer(empty, nullptr);
    pmPhotoFilterSetNativeDisplayInfo(empty, testDisplay());
    EXPECT_EQ(log.countEndingWith("> Object Handler is NULL"), 2);
}

TEST_F(PrivateContextTest, NativeDisplayInfoNeedsNoContext) {
    // An object that was never initialised: the call touches only its record.
    pmFilters::GrayFilter filter;
    // Made here rather than by Create: the exported functions must know it.
    pmWrapper::registerObject(&filter);
    pmFilterObject object{0, &filter};
    onThread([&] {
        ASSERT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        LogCapture log;
        pmPhotoFilterSetNativeDisplayInfo(object, testDisplay());
        EXPECT_EQ(log.count("failed to find"), 0);
        EXPECT_EQ(log.countEndingWith("> set egl info success.\n"), 1);
    });
    EXPECT_EQ(filter.eglInfo.display, testDisplay());
    EXPECT_NE(filter.eglInfo.eglCreateImageKHRProc, nullptr);
    EXPECT_TRUE(contexts().empty());
    pmWrapper::unregisterObject(&filter);
}

// Input routes, run on the test's own context with the private one off.
class InputRouteTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
        object = {0, pmPhotoFilterCreate(PM_PHOTO_GREY)};
        ASSERT_NE(object.handler, nullptr);
    }
    void TearDown() override {
        pmPhotoFilterDelete(&object);
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
    pmFilters::FilterCommon* filter() {
        return static_cast<pmFilters::FilterCommon*>(object.handler);
    }
    std::vector<uint8_t> draw(int w, int h) {
        gl->resizeTarget(w, h);
        pmPhotoFilterDraw(object, w, h);
        return gl->readTarget();
    }
    pmFilterObject object{};
};

GLuint makeCallerTexture(const std::vector<uint8_t>& pixels, int w, int h, GLenum format) {
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const GLenum internal = format == GL_RGB ? GL_RGB8 : GL_RGBA8;
    glTexImage2D(GL_TEXTURE_2D, 0, internal, w, h, 0, format, GL_UNSIGNED_BYTE, pixels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    return id;
}

TEST_F(InputRouteTest, CallersTextureIsCopiedAndMayBeDeletedRightAfter) {
    const int w = 11, h = 6;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 51);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    GLuint id = makeCallerTexture(pixels, w, h, GL_RGBA);
    LogCapture log;
    filter()->SetInputBufferWithTexture(id, w, h, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_EQ(log.countEndingWith("> create frame buffer (size = 11 x 6, channel = 4)"), 1);
    EXPECT_TRUE(glIsTexture(id));  // never deleted by the library
    glDeleteTextures(1, &id);
    EXPECT_EQ(greyMismatches(draw(w, h), pixels, w, h, 4), 0);
}

TEST_F(InputRouteTest, TextureOfTheSameSizeDoesNotRebuildWhateverItsFormat) {
    const int w = 8, h = 8;
    std::vector<uint8_t> rgba = makeTestPixels(w, h, 4, 52);
    for (size_t i = 3; i < rgba.size(); i += 4) rgba[i] = 255;
    GLuint first = makeCallerTexture(rgba, w, h, GL_RGBA);
    filter()->SetInputBufferWithTexture(first, w, h, GL_RGBA, GL_UNSIGNED_BYTE);
    const unsigned framebuffer = filter()->inputBuffer.id;
    const unsigned texture = filter()->inputBuffer.colorTex.at(0).id;
    std::vector<uint8_t> rgb = makeTestPixels(w, h, 3, 53);
    GLuint second = makeCallerTexture(rgb, w, h, GL_RGB);
    LogCapture log;
    filter()->SetInputBufferWithTexture(second, w, h, GL_RGB, GL_UNSIGNED_BYTE);
    EXPECT_EQ(log.count("create frame buffer"), 0);
    EXPECT_EQ(filter()->inputBuffer.id, framebuffer);
    EXPECT_EQ(filter()->inputBuffer.colorTex.at(0).id, texture);
    EXPECT_EQ(greyMismatches(draw(w, h), rgb, w, h, 3), 0);
    glDeleteTextures(1, &first);
    glDeleteTextures(1, &second);
}

TEST_F(InputRouteTest, TextureThatCannotBeAdoptedIsIgnoredInSilence) {
    // A cubemap name cannot be bound as a 2D texture, so it is not adopted.
    GLuint cube = 0;
    glGenTextures(1, &cube);
    glBindTexture(GL_TEXTURE_CUBE_MAP, cube);
    glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    LogCapture log;
    filter()->SetInputBufferWithTexture(cube, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_FALSE(pmGL::isExist(filter()->inputBuffer));
    EXPECT_EQ(log.count("create frame buffer"), 0);
    glDeleteTextures(1, &cube);
}

TEST_F(InputRouteTest, UninitialisedObjectRefusesEveryRoute) {
    pmFilters::GrayFilter inert;
    LogCapture log;
    inert.SetInputBufferWithTexture(1, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE);
    inert.SetNativeBuffer(nullptr);
    EXPECT_EQ(log.countEndingWith("> It is not initialized."), 2);
}

// A native surface holding `pixels` (RGBA, top row first).
tbm_surface_h makeSurface(const std::vector<uint8_t>& pixels, int w, int h) {
    tbm_surface_h surface = nullptr;
    EXPECT_TRUE(pmGL::createSurfaceTBM(surface, w, h));
    pmUtil::ImageData<unsigned char> mapped = pmGL::mapSurfaceTBM(surface, true, true);
    EXPECT_NE(mapped.data, nullptr);
    std::copy(pixels.begin(), pixels.end(), mapped.data);
    pmGL::unmapSurfaceTBM(surface);
    return surface;
}

TEST_F(InputRouteTest, NativeSurfaceComesOutAsTheGreyOfItsPixels) {
    const int w = 9, h = 5;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 61);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    tbm_surface_h surface = makeSurface(pixels, w, h);
    pmPhotoFilterSetNativeDisplayInfo(object, gl->display);
    LogCapture log;
    pmPhotoFilterSetNativeBuffer(object, surface);
    EXPECT_EQ(log.countEndingWith("> create input buffer: 9 x 5 x 4"), 1) << log.dump();
    EXPECT_EQ(greyMismatches(draw(w, h), pixels, w, h, 4), 0);
    pmGL::deleteSurfaceTBM(surface);
}

TEST_F(InputRouteTest, NativeSurfaceOfANewSizeRebuildsWithFourChannels) {
    pmPhotoFilterSetNativeDisplayInfo(object, gl->display);
    std::vector<uint8_t> rgb = makeTestPixels(4, 4, 3, 62);
    pmPhotoFilterSetBuffer(object, rgb.data(), 4, 4, 3);
    EXPECT_EQ(filter()->inputBuffer.colorTex.at(0).opts.format, static_cast<unsigned>(GL_RGB));
    const int w = 6, h = 3;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 63);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    tbm_surface_h surface = makeSurface(pixels, w, h);
    pmPhotoFilterSetNativeBuffer(object, surface);
    EXPECT_EQ(filter()->inputBuffer.width, w);
    EXPECT_EQ(filter()->inputBuffer.height, h);
    EXPECT_EQ(filter()->inputBuffer.colorTex.at(0).opts.format, static_cast<unsigned>(GL_RGBA));
    EXPECT_EQ(greyMismatches(draw(w, h), pixels, w, h, 4), 0);
    pmGL::deleteSurfaceTBM(surface);
}

TEST_F(InputRouteTest, NativeSurfaceThatCannotBeImportedLeavesTheInput) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4, 64);
    pmPhotoFilterSetBuffer(object, pixels.data(), 4, 4, 4);
    const unsigned framebuffer = filter()->inputBuffer.id;
    pmPhotoFilterSetNativeDisplayInfo(object, gl->display);
    LogCapture log;
    pmPhotoFilterSetNativeBuffer(object, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail createSurfaceTexture "), 1);
    EXPECT_EQ(filter()->inputBuffer.id, framebuffer);
}

}  // namespace
