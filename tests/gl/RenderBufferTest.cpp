// Render buffers: plain and multisampled storage, resizing on the same name,
// and deletion that keeps the size and options.
#include <gtest/gtest.h>

#include "FrameBufferCallSpy.h"
#include "FrameBufferTestHelpers.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using fbtest::renderbufferParameter;
using gltest::getInteger;

namespace {

class RenderBufferTest : public GLTest {
protected:
    // The sample count asked of a multisampled buffer, within what the
    // driver offers; 0 when it offers no multisampling.
    static int multisampleCount() {
        const GLint maxSamples = getInteger(GL_MAX_SAMPLES);
        return maxSamples >= 4 ? 4 : (maxSamples >= 2 ? 2 : 0);
    }
};

TEST_F(RenderBufferTest, CreateStoresSizeAndOptionsAndMakesPlainStorage) {
    RenderBuffer rb;
    RenderBufferOpts opts;
    opts.internalFormat = GL_RGB565;
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    resetFrameBufferCalls();
    LogCapture log;
    createRenderBuffer(rb, 7, 3, opts);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(rb));
    EXPECT_TRUE(glIsRenderbuffer(rb.id));
    EXPECT_EQ(rb.width, 7);
    EXPECT_EQ(rb.height, 3);
    EXPECT_EQ(rb.opts.internalFormat, GL_RGB565);
    EXPECT_EQ(rb.opts.samples, 0);
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 1);
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 0);
    // Unbound afterwards.
    EXPECT_EQ(getInteger(GL_RENDERBUFFER_BINDING), 0);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_WIDTH), 7);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_HEIGHT), 3);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_INTERNAL_FORMAT), GL_RGB565);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_SAMPLES), 0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, OneSampleUsesThePlainStorageCall) {
    RenderBuffer rb;
    RenderBufferOpts opts;
    opts.samples = 1;
    resetFrameBufferCalls();
    createRenderBuffer(rb, 4, 4, opts);
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 1);
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 0);
    EXPECT_EQ(rb.opts.samples, 1);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_SAMPLES), 0);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_INTERNAL_FORMAT), GL_RGBA8);
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, TwoOrMoreSamplesMakeAMultisampledBuffer) {
    const int samples = multisampleCount();
    if (samples == 0) GTEST_SKIP() << "no multisampled render buffers";
    RenderBuffer rb;
    RenderBufferOpts opts;
    opts.internalFormat = GL_DEPTH24_STENCIL8;
    opts.samples = samples;
    resetFrameBufferCalls();
    createRenderBuffer(rb, 5, 6, opts);
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 0);
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 1);
    EXPECT_EQ(frameBufferCalls().lastSamples, samples);
    EXPECT_GE(renderbufferParameter(rb.id, GL_RENDERBUFFER_SAMPLES), samples);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_INTERNAL_FORMAT), GL_DEPTH24_STENCIL8);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_WIDTH), 5);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, CreatingAgainReplacesTheOldName) {
    RenderBuffer rb;
    createRenderBuffer(rb, 4, 4, RenderBufferOpts());
    const unsigned first = rb.id;
    // The record's own options may be passed back in.
    createRenderBuffer(rb, 2, 8, rb.opts);
    EXPECT_FALSE(glIsRenderbuffer(first));
    EXPECT_TRUE(glIsRenderbuffer(rb.id));
    EXPECT_EQ(rb.opts.internalFormat, GL_RGBA8);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_WIDTH), 2);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_HEIGHT), 8);
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, ResizeKeepsTheNameAndRepeatsThePlainStorageCall) {
    RenderBuffer rb;
    RenderBufferOpts opts;
    opts.internalFormat = GL_DEPTH_COMPONENT24;
    createRenderBuffer(rb, 4, 4, opts);
    const unsigned id = rb.id;
    resetFrameBufferCalls();
    resizeRenderBuffer(rb, 9, 2);
    EXPECT_EQ(rb.id, id);
    EXPECT_EQ(rb.width, 9);
    EXPECT_EQ(rb.height, 2);
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 1);
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 0);
    EXPECT_EQ(renderbufferParameter(id, GL_RENDERBUFFER_WIDTH), 9);
    EXPECT_EQ(renderbufferParameter(id, GL_RENDERBUFFER_HEIGHT), 2);
    EXPECT_EQ(renderbufferParameter(id, GL_RENDERBUFFER_INTERNAL_FORMAT), GL_DEPTH_COMPONENT24);
    EXPECT_EQ(getInteger(GL_RENDERBUFFER_BINDING), 0);
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, ResizeOfAMultisampledBufferKeepsItsSamples) {
    const int samples = multisampleCount();
    if (samples == 0) GTEST_SKIP() << "no multisampled render buffers";
    RenderBuffer rb;
    RenderBufferOpts opts;
    opts.samples = samples;
    createRenderBuffer(rb, 4, 4, opts);
    resetFrameBufferCalls();
    resizeRenderBuffer(rb, 3, 5);
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 1);
    EXPECT_EQ(frameBufferCalls().lastSamples, samples);
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 0);
    EXPECT_GE(renderbufferParameter(rb.id, GL_RENDERBUFFER_SAMPLES), samples);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_WIDTH), 3);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_HEIGHT), 5);
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, ResizeSeenThroughTheFramebufferItIsAttachedTo) {
    RenderBuffer rb;
    createRenderBuffer(rb, 2, 2, RenderBufferOpts());
    GLuint fbo = 0;
    glGenFramebuffers(1, &fbo);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, rb.id);
    resizeRenderBuffer(rb, 6, 4);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER),
              static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
    glViewport(0, 0, 6, 4);
    glClearColor(0.f, 1.f, 0.f, 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
    std::vector<std::uint8_t> read(6 * 4 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 6, 4, GL_RGBA, GL_UNSIGNED_BYTE, read.data());
    EXPECT_EQ(read, fbtest::solid(6 * 4, 0, 255, 0, 255));
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    glDeleteFramebuffers(1, &fbo);
    deleteRenderBuffer(rb);
}

TEST_F(RenderBufferTest, DeleteFreesTheNameAndKeepsSizeAndOptions) {
    RenderBuffer rb;
    RenderBufferOpts opts;
    opts.internalFormat = GL_DEPTH24_STENCIL8;
    opts.samples = 1;
    createRenderBuffer(rb, 3, 2, opts);
    const unsigned id = rb.id;
    deleteRenderBuffer(rb);
    EXPECT_FALSE(glIsRenderbuffer(id));
    EXPECT_EQ(rb.id, 0u);
    EXPECT_EQ(rb.width, 3);
    EXPECT_EQ(rb.height, 2);
    EXPECT_EQ(rb.opts.internalFormat, GL_DEPTH24_STENCIL8);
    EXPECT_EQ(rb.opts.samples, 1);
    // An empty record is left alone.
    LogCapture log;
    deleteRenderBuffer(rb);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

}  // namespace
