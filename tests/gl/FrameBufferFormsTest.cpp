// Framebuffer creation in all its forms: colour textures from sizes, 8-bit and
// float images, colour render buffers, depth and stencil buffers, the sample
// counts each form passes on; the draw buffer lists and texture attachment.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "FrameBufferCallSpy.h"
#include "FrameBufferTestHelpers.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using fbtest::attachedName;
using fbtest::attachedType;
using fbtest::attachmentParameter;
using fbtest::drawBuffer;
using fbtest::renderbufferParameter;
using gltest::getInteger;

namespace {

const GLenum COMPLETE = GL_FRAMEBUFFER_COMPLETE;

class FrameBufferFormsTest : public GLTest {
protected:
    static int multisampleCount() {
        const GLint maxSamples = getInteger(GL_MAX_SAMPLES);
        return maxSamples >= 4 ? 4 : (maxSamples >= 2 ? 2 : 0);
    }

    // The caller's framebuffer and viewport are back after a create.
    void expectCallerStateRestored(const std::vector<GLint>& callerViewport) {
        EXPECT_EQ(getInteger(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
        EXPECT_EQ(getInteger(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
        EXPECT_EQ(fbtest::viewport(), callerViewport);
    }

    // The framebuffer status word, then the assertion word 0 and its empty line.
    static void expectStatusWords(const LogCapture& log, const std::string& word) {
        const std::vector<LogLine> lines = log.lines();
        ASSERT_EQ(lines.size(), 3u) << log.dump();
        EXPECT_EQ(lines[0].text.substr(lines[0].text.rfind('>')), "> " + word);
        EXPECT_EQ(lines[1].text.substr(lines[1].text.rfind('>')), "> 0");
        EXPECT_EQ(lines[2].text.substr(lines[2].text.rfind('>')), "> \n");
    }
};

// ---- depth and stencil flags

TEST_F(FrameBufferFormsTest, StencilWithoutDepthMakesNoDepthBuffer) {
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, true);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(fb.depthRenderBuffer.id, 0u);
    EXPECT_EQ(fb.depthTex.id, 0u);
    EXPECT_FALSE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));
    EXPECT_EQ(attachedType(fb.id, GL_DEPTH_ATTACHMENT), GL_NONE);
    EXPECT_EQ(attachedType(fb.id, GL_STENCIL_ATTACHMENT), GL_NONE);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, DepthAloneIsADepthComponent24RenderBuffer) {
    glViewport(1, 2, 3, 4);
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 6, 5, TextureOpts(), 1, true, false);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    expectCallerStateRestored({1, 2, 3, 4});
    ASSERT_TRUE(isExist(fb.depthRenderBuffer));
    EXPECT_EQ(fb.depthRenderBuffer.opts.internalFormat, 33190);
    EXPECT_EQ(fb.depthRenderBuffer.opts.samples, 1);
    EXPECT_EQ(fb.depthRenderBuffer.width, 6);
    EXPECT_EQ(fb.depthRenderBuffer.height, 5);
    EXPECT_TRUE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));

    EXPECT_EQ(attachedType(fb.id, GL_DEPTH_ATTACHMENT), GL_RENDERBUFFER);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_ATTACHMENT),
              static_cast<GLint>(fb.depthRenderBuffer.id));
    EXPECT_EQ(attachmentParameter(fb.id, GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_DEPTH_SIZE),
              24);
    EXPECT_EQ(attachedType(fb.id, GL_STENCIL_ATTACHMENT), GL_NONE);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_INTERNAL_FORMAT),
              GL_DEPTH_COMPONENT24);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_SAMPLES), 0);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_WIDTH), 6);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    EXPECT_EQ(attachedName(fb.id, GL_COLOR_ATTACHMENT0), static_cast<GLint>(fb.colorTex[0].id));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, DepthWithStencilIsOneDepth24Stencil8Attachment) {
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 4, 3, TextureOpts(), 1, true, true);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(fb.depthRenderBuffer.opts.internalFormat, 35056);
    EXPECT_TRUE(isDepthExist(fb));
    EXPECT_TRUE(isStencilExist(fb));
    const GLint id = static_cast<GLint>(fb.depthRenderBuffer.id);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_ATTACHMENT), id);
    EXPECT_EQ(attachedName(fb.id, GL_STENCIL_ATTACHMENT), id);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_STENCIL_ATTACHMENT), id);
    EXPECT_EQ(
        attachmentParameter(fb.id, GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_STENCIL_SIZE),
        8);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_INTERNAL_FORMAT),
              GL_DEPTH24_STENCIL8);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
    EXPECT_FALSE(glIsRenderbuffer(static_cast<GLuint>(id)));
    EXPECT_EQ(fb.depthRenderBuffer.id, 0u);
}

TEST_F(FrameBufferFormsTest, CreatingWithoutDepthAgainDropsTheDepthBuffer) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, true, true);
    const unsigned depth = fb.depthRenderBuffer.id;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, false);
    EXPECT_FALSE(glIsRenderbuffer(depth));
    EXPECT_FALSE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));
    EXPECT_EQ(attachedType(fb.id, GL_DEPTH_ATTACHMENT), GL_NONE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, DepthOnlyWithoutColourIsComplete) {
    FrameBuffer fb;
    resetFrameBufferCalls();
    LogCapture log;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 0, true, false);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_TRUE(fb.colorTex.empty());
    EXPECT_TRUE(isDepthExist(fb));
    EXPECT_EQ(frameBufferCalls().drawBuffers, 1);
    EXPECT_EQ(frameBufferCalls().lastDrawBufferCount, 0);
    EXPECT_TRUE(frameBufferCalls().lastDrawBuffersNull);
    EXPECT_EQ(drawBuffer(fb.id, 0), GL_NONE);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

// ---- colour count 0 and below

TEST_F(FrameBufferFormsTest, NoColourWithTextureOptionsCallsDrawBuffersWithZeroAndNull) {
    FrameBuffer fb;
    resetFrameBufferCalls();
    LogCapture log;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 0, false, false);
    expectStatusWords(log, "Framebuffer incomplete: missing attachment\n");
    EXPECT_EQ(frameBufferCalls().drawBuffers, 1);
    EXPECT_EQ(frameBufferCalls().lastDrawBufferCount, 0);
    EXPECT_TRUE(frameBufferCalls().lastDrawBuffersNull);
    EXPECT_TRUE(fb.colorTex.empty());
    EXPECT_TRUE(fb.colorRenderBuffer.empty());
    EXPECT_EQ(attachedType(fb.id, GL_COLOR_ATTACHMENT0), GL_NONE);
    EXPECT_EQ(drawBuffer(fb.id, 0), GL_NONE);
    EXPECT_TRUE(isExist(fb));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, NegativeColourCountThrowsInEveryForm) {
    FrameBuffer fb;
    const std::string message = "cannot create std::vector larger than max_size()";
    try {
        createFrameBuffer(fb, 2, 2, RenderBufferOpts(), -1, true, true);
        ADD_FAILURE() << "no exception";
    } catch (const std::length_error& error) {
        EXPECT_EQ(error.what(), message);
    }
    std::vector<float> floats(4, 0.f);
    EXPECT_THROW(createFrameBuffer(fb, ImageData<float>(1, 1, 4, floats.data()), TextureOpts(), -2,
                                   false, false),
                 std::length_error);
    std::vector<std::uint8_t> bytes(4, 0);
    EXPECT_THROW(createFrameBuffer(fb, ImageData<unsigned char>(1, 1, 4, bytes.data()),
                                   TextureOpts(), -1, false, false, 1),
                 std::length_error);
    // Nothing was made.
    EXPECT_FALSE(isExist(fb));
}

// ---- colour render buffers

TEST_F(FrameBufferFormsTest, RenderBufferFormAttachesColourRenderBuffers) {
    glViewport(3, 3, 2, 2);
    FrameBuffer fb;
    RenderBufferOpts opts;
    resetFrameBufferCalls();
    LogCapture log;
    createFrameBuffer(fb, 5, 4, opts, 2, false, false);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    expectCallerStateRestored({3, 3, 2, 2});
    EXPECT_TRUE(fb.colorTex.empty());
    ASSERT_EQ(fb.colorRenderBuffer.size(), 2u);
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 2);
    EXPECT_EQ(frameBufferCalls().lastDrawBufferList,
              (std::vector<GLenum>{GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1}));
    for (int i = 0; i < 2; ++i) {
        const RenderBuffer& rb = fb.colorRenderBuffer[i];
        EXPECT_TRUE(glIsRenderbuffer(rb.id));
        EXPECT_EQ(rb.width, 5);
        EXPECT_EQ(rb.height, 4);
        EXPECT_EQ(rb.opts.internalFormat, GL_RGBA8);
        EXPECT_EQ(attachedType(fb.id, GL_COLOR_ATTACHMENT0 + i), GL_RENDERBUFFER);
        EXPECT_EQ(attachedName(fb.id, GL_COLOR_ATTACHMENT0 + i), static_cast<GLint>(rb.id));
        EXPECT_EQ(drawBuffer(fb.id, i), GL_COLOR_ATTACHMENT0 + i);
        EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_WIDTH), 5);
        EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_HEIGHT), 4);
    }
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    EXPECT_FALSE(isDepthExist(fb));

    // Both render buffers are drawn to.
    clearFrameBuffer(fb, glm::vec4(0.f, 0.f, 1.f, 1.f));
    for (unsigned i = 0; i < 2; ++i) {
        std::vector<std::uint8_t> read(5 * 4 * 4);
        ImageData<unsigned char> image(5, 4, 4, read.data());
        readFrameBuffer(fb, image, i);
        EXPECT_EQ(read, fbtest::solid(5 * 4, 0, 0, 255, 255)) << "attachment " << i;
    }
    EXPECT_TRUE(log.lines().empty()) << log.dump();

    const unsigned first = fb.colorRenderBuffer[0].id;
    deleteFrameBuffer(fb);
    EXPECT_FALSE(glIsRenderbuffer(first));
    ASSERT_EQ(fb.colorRenderBuffer.size(), 2u);
    EXPECT_EQ(fb.colorRenderBuffer[0].id, 0u);
    EXPECT_EQ(fb.colorRenderBuffer[0].width, 5);  // render buffer records keep their size
}

TEST_F(FrameBufferFormsTest, RenderBufferFormWithDepthAndStencil) {
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 4, 4, RenderBufferOpts(), 1, true, true);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_TRUE(isStencilExist(fb));
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_STENCIL_ATTACHMENT),
              static_cast<GLint>(fb.depthRenderBuffer.id));
    EXPECT_EQ(attachedName(fb.id, GL_COLOR_ATTACHMENT0),
              static_cast<GLint>(fb.colorRenderBuffer[0].id));
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, MultisampledColourRenderBuffersWithoutDepthAreComplete) {
    const int samples = multisampleCount();
    if (samples == 0) GTEST_SKIP() << "no multisampled render buffers";
    FrameBuffer fb;
    RenderBufferOpts opts;
    opts.samples = samples;
    resetFrameBufferCalls();
    LogCapture log;
    createFrameBuffer(fb, 4, 4, opts, 1, false, false);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 1);
    EXPECT_EQ(fb.colorRenderBuffer[0].opts.samples, samples);
    EXPECT_GE(renderbufferParameter(fb.colorRenderBuffer[0].id, GL_RENDERBUFFER_SAMPLES), samples);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);

    // Cleared, then resolved into the test's own framebuffer.
    clearFrameBuffer(fb, glm::vec4(1.f, 0.f, 1.f, 1.f));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, fb.id);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, gl->fbo);
    glBlitFramebuffer(0, 0, 4, 4, 0, 0, 4, 4, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    const std::vector<std::uint8_t> target = gl->readTarget();
    EXPECT_EQ(std::vector<std::uint8_t>(target.begin(), target.begin() + 4),
              (std::vector<std::uint8_t>{255, 0, 255, 255}));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, MultisampledColourWithTheSingleSampledDepthIsIncomplete) {
    const int samples = multisampleCount();
    if (samples == 0) GTEST_SKIP() << "no multisampled render buffers";
    FrameBuffer fb;
    RenderBufferOpts opts;
    opts.samples = samples;
    LogCapture log;
    createFrameBuffer(fb, 4, 4, opts, 1, true, false);
    // GL_FRAMEBUFFER_INCOMPLETE_MULTISAMPLE has no word of its own.
    expectStatusWords(log, "Framebuffer invalid: unknown reason\n");
    EXPECT_EQ(fb.depthRenderBuffer.opts.samples, 1);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_SAMPLES), 0);
    EXPECT_EQ(fbtest::status(fb.id), static_cast<GLenum>(GL_FRAMEBUFFER_INCOMPLETE_MULTISAMPLE));
    EXPECT_TRUE(isExist(fb));
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    deleteFrameBuffer(fb);
}

// ---- image forms

TEST_F(FrameBufferFormsTest, ByteImageFormPassesItsSamplesToTheDepthBufferOnly) {
    const int samples = multisampleCount();
    if (samples == 0) GTEST_SKIP() << "no multisampled render buffers";
    std::vector<std::uint8_t> pixels = makeTestPixels(4, 4, 4);
    FrameBuffer fb;
    resetFrameBufferCalls();
    LogCapture log;
    createFrameBuffer(fb, ImageData<unsigned char>(4, 4, 4, pixels.data()), TextureOpts(), 1, true,
                      true, samples);
    // Single-sampled colour textures against a multisampled depth buffer.
    expectStatusWords(log, "Framebuffer invalid: unknown reason\n");
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 1);
    EXPECT_EQ(frameBufferCalls().lastSamples, samples);
    EXPECT_EQ(fb.depthRenderBuffer.opts.samples, samples);
    EXPECT_EQ(fb.depthRenderBuffer.opts.internalFormat, GL_DEPTH24_STENCIL8);
    EXPECT_GE(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_SAMPLES), samples);
    EXPECT_EQ(gltest::readTextureRGBA(fb.colorTex[0].id, 4, 4), pixels);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, ByteImageFormWithDepthAndOneSampleIsComplete) {
    std::vector<std::uint8_t> pixels = makeTestPixels(3, 2, 4);
    FrameBuffer fb;
    resetFrameBufferCalls();
    LogCapture log;
    createFrameBuffer(fb, ImageData<unsigned char>(3, 2, 4, pixels.data()), TextureOpts(), 2, true,
                      false, 1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(frameBufferCalls().renderbufferStorage, 1);
    EXPECT_EQ(frameBufferCalls().renderbufferStorageMultisample, 0);
    EXPECT_EQ(fb.depthRenderBuffer.opts.internalFormat, GL_DEPTH_COMPONENT24);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    for (const Texture& tex : fb.colorTex) {
        EXPECT_EQ(gltest::readTextureRGBA(tex.id, 3, 2), pixels);
    }
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, FloatImageFormFillsHalfFloatTextures) {
    const std::vector<float> pixels = {0.25f,  0.5f, 0.75f, 1.0f,  1.5f, -2.0f,
                                       0.125f, 0.0f, 3.0f,  -0.5f, 8.0f, 0.0625f};
    std::vector<float> data = pixels;
    FrameBuffer fb;
    TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    LogCapture log;
    createFrameBuffer(fb, ImageData<float>(3, 1, 4, data.data()), opts, 2, true, true);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_EQ(fb.colorTex.size(), 2u);
    EXPECT_EQ(fb.width, 3);
    EXPECT_EQ(fb.height, 1);
    for (unsigned i = 0; i < 2; ++i) {
        const Texture& tex = fb.colorTex[i];
        EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_FLOAT));
        EXPECT_EQ(tex.opts.internalFormat, GL_RGBA16F);
        EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGBA));
        EXPECT_EQ(tex.opts.minFilter, GL_NEAREST);  // the given options are kept
        std::vector<float> read(pixels.size(), -1.f);
        ImageData<float> image(3, 1, 4, read.data());
        readFrameBuffer(fb, image, i);
        EXPECT_EQ(read, pixels) << "attachment " << i;
    }
    // The float form has no sample count: its depth buffer has one sample.
    EXPECT_EQ(fb.depthRenderBuffer.opts.samples, 1);
    EXPECT_TRUE(isStencilExist(fb));
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    deleteFrameBuffer(fb);
}

// ---- the common form

TEST_F(FrameBufferFormsTest, ChangingTheKindOfColourAttachmentDropsTheOtherKind) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 2, false, false);
    const unsigned texture = fb.colorTex[0].id;
    createFrameBuffer(fb, 4, 4, RenderBufferOpts(), 1, false, false);
    EXPECT_FALSE(glIsTexture(texture));
    EXPECT_TRUE(fb.colorTex.empty());
    ASSERT_EQ(fb.colorRenderBuffer.size(), 1u);
    const unsigned buffer = fb.colorRenderBuffer[0].id;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, false);
    EXPECT_FALSE(glIsRenderbuffer(buffer));
    EXPECT_TRUE(fb.colorRenderBuffer.empty());
    EXPECT_EQ(attachedType(fb.id, GL_COLOR_ATTACHMENT0), GL_TEXTURE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, CommonFormTakesTheSampleArgumentForTheDepthBuffer) {
    const int samples = multisampleCount();
    if (samples == 0) GTEST_SKIP() << "no multisampled render buffers";
    FrameBuffer fb;
    RenderBufferOpts colour;
    colour.samples = samples;
    RenderBufferOpts depth;
    depth.internalFormat = GL_DEPTH32F_STENCIL8;
    depth.samples = 0;  // not used: the argument is
    LogCapture log;
    createFrameBuffer(fb, 4, 4, {nullptr}, nullptr, &colour, nullptr, nullptr, &depth, samples);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(fb.depthRenderBuffer.opts.samples, samples);
    EXPECT_EQ(fb.depthRenderBuffer.opts.internalFormat, GL_DEPTH32F_STENCIL8);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_STENCIL_ATTACHMENT),
              static_cast<GLint>(fb.depthRenderBuffer.id));
    EXPECT_TRUE(isStencilExist(fb));
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, CommonFormWithADepthComponent32FBuffer) {
    FrameBuffer fb;
    RenderBufferOpts depth;
    depth.internalFormat = GL_DEPTH_COMPONENT32F;
    TextureOpts colour;
    createFrameBuffer(fb, 2, 2, {nullptr}, &colour, nullptr, nullptr, nullptr, &depth, 0);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_ATTACHMENT),
              static_cast<GLint>(fb.depthRenderBuffer.id));
    EXPECT_EQ(attachedType(fb.id, GL_STENCIL_ATTACHMENT), GL_NONE);
    EXPECT_TRUE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, CommonFormWithADepthTexture) {
    FrameBuffer fb;
    TextureOpts colour;
    TextureOpts depth;
    depth.type = GL_UNSIGNED_SHORT;
    depth.internalFormat = GL_DEPTH_COMPONENT16;
    depth.format = GL_DEPTH_COMPONENT;
    depth.minFilter = GL_NEAREST;
    depth.magFilter = GL_NEAREST;
    LogCapture log;
    createFrameBuffer(fb, 4, 2, {nullptr}, &colour, nullptr, nullptr, &depth, nullptr, 1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(fb.depthTex));
    EXPECT_EQ(fb.depthTex.width, 4);
    EXPECT_EQ(attachedType(fb.id, GL_DEPTH_ATTACHMENT), GL_TEXTURE);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_ATTACHMENT), static_cast<GLint>(fb.depthTex.id));
    EXPECT_EQ(attachedType(fb.id, GL_STENCIL_ATTACHMENT), GL_NONE);
    EXPECT_TRUE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);

    // Resized with the rest.
    resizeFrameBuffer(fb, 8, 8);
    EXPECT_EQ(fb.depthTex.width, 8);
    EXPECT_EQ(fb.depthTex.height, 8);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    EXPECT_TRUE(log.lines().empty()) << log.dump();

    const unsigned texture = fb.depthTex.id;
    deleteFrameBuffer(fb);
    EXPECT_FALSE(glIsTexture(texture));
    EXPECT_EQ(fb.depthTex.id, 0u);
}

TEST_F(FrameBufferFormsTest, CommonFormWithADepthStencilTexture) {
    FrameBuffer fb;
    TextureOpts colour;
    TextureOpts depth;
    depth.type = GL_UNSIGNED_INT_24_8;
    depth.internalFormat = GL_DEPTH24_STENCIL8;
    depth.format = GL_DEPTH_STENCIL;
    depth.minFilter = GL_NEAREST;
    depth.magFilter = GL_NEAREST;
    createFrameBuffer(fb, 4, 4, {nullptr}, &colour, nullptr, nullptr, &depth, nullptr, 1);
    EXPECT_EQ(attachedName(fb.id, GL_DEPTH_ATTACHMENT), static_cast<GLint>(fb.depthTex.id));
    EXPECT_EQ(attachedName(fb.id, GL_STENCIL_ATTACHMENT), static_cast<GLint>(fb.depthTex.id));
    EXPECT_TRUE(isStencilExist(fb));
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

// ---- existence of depth and stencil, by the record alone

TEST(FrameBufferDepthRecordTest, DepthAndStencilExistenceFollowsTheRecords) {
    FrameBuffer fb;
    EXPECT_FALSE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));

    // A format alone makes nothing exist.
    fb.depthRenderBuffer.opts.internalFormat = GL_DEPTH24_STENCIL8;
    fb.depthTex.opts.format = GL_DEPTH_STENCIL;
    EXPECT_FALSE(isDepthExist(fb));
    EXPECT_FALSE(isStencilExist(fb));

    fb.depthTex.id = 7;
    EXPECT_TRUE(isDepthExist(fb));
    EXPECT_TRUE(isStencilExist(fb));
    fb.depthTex.opts.format = GL_DEPTH_COMPONENT;
    EXPECT_FALSE(isStencilExist(fb));

    // A depth texture without stencil lets the render buffer decide.
    fb.depthRenderBuffer.id = 9;
    EXPECT_TRUE(isStencilExist(fb));
    fb.depthRenderBuffer.opts.internalFormat = GL_DEPTH32F_STENCIL8;
    EXPECT_TRUE(isStencilExist(fb));
    fb.depthRenderBuffer.opts.internalFormat = GL_DEPTH_COMPONENT24;
    EXPECT_FALSE(isStencilExist(fb));
    fb.depthTex.id = 0;
    EXPECT_TRUE(isDepthExist(fb));
    fb.depthRenderBuffer.id = 0;
    EXPECT_FALSE(isDepthExist(fb));
}

// ---- draw buffers and attachment

TEST_F(FrameBufferFormsTest, SpecifyDrawBuffersListsTheFirstAttachments) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 3, false, false);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    resetFrameBufferCalls();
    specifyDrawBuffers(3);
    EXPECT_EQ(
        frameBufferCalls().lastDrawBufferList,
        (std::vector<GLenum>{GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2}));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(getInteger(GL_DRAW_BUFFER0 + i), GL_COLOR_ATTACHMENT0 + i);
    specifyDrawBuffers(2);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER1), GL_COLOR_ATTACHMENT1);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER2), GL_NONE);
    specifyDrawBuffers(0);
    EXPECT_EQ(frameBufferCalls().lastDrawBufferCount, 0);
    EXPECT_TRUE(frameBufferCalls().lastDrawBuffersNull);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_NONE);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, MoreDrawBuffersThanGLAllowsIsAGLError) {
    const GLint maxDrawBuffers = getInteger(GL_MAX_DRAW_BUFFERS);
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 1, false, false);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    fbtest::clearGLErrors();
    specifyDrawBuffers(static_cast<unsigned>(maxDrawBuffers) + 1);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_VALUE));
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_COLOR_ATTACHMENT0);  // unchanged
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, SpecifyDrawBufferNamesOneAttachment) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 2, false, false);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    fbtest::clearGLErrors();
    resetFrameBufferCalls();
    specifyDrawBuffer(0);
    EXPECT_EQ(frameBufferCalls().lastDrawBufferList, (std::vector<GLenum>{GL_COLOR_ATTACHMENT0}));
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_COLOR_ATTACHMENT0);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER1), GL_NONE);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    // GL ES takes attachment i at position i only: a lone attachment 1 is refused.
    specifyDrawBuffer(1);
    EXPECT_EQ(frameBufferCalls().lastDrawBufferList, (std::vector<GLenum>{GL_COLOR_ATTACHMENT1}));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_COLOR_ATTACHMENT0);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferFormsTest, AttachTextureUsesTheTexturesTargetAndTheLevel) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, false);
    std::vector<std::uint8_t> pixels = makeTestPixels(8, 8, 4);
    TextureOpts opts;
    opts.mipmap = true;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(8, 8, 4, pixels.data()), opts);
    ASSERT_TRUE(isExist(tex));

    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    attachTexture(tex, 1, 1);  // level 1 is 4 by 4, like the buffer
    EXPECT_EQ(attachedName(fb.id, GL_COLOR_ATTACHMENT1), static_cast<GLint>(tex.id));
    EXPECT_EQ(
        attachmentParameter(fb.id, GL_COLOR_ATTACHMENT1, GL_FRAMEBUFFER_ATTACHMENT_TEXTURE_LEVEL),
        1);
    specifyDrawBuffers(2);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), COMPLETE);
    glClearColor(1.f, 1.f, 0.f, 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
    glReadBuffer(GL_COLOR_ATTACHMENT1);
    std::vector<std::uint8_t> read(4 * 4 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, read.data());
    EXPECT_EQ(read, fbtest::solid(16, 255, 255, 0, 255));
    // Level 0 of the texture was not drawn to.
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 8, 8), pixels);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
    EXPECT_TRUE(glIsTexture(tex.id));  // not the framebuffer's own
    deleteTexture(tex);
}

TEST_F(FrameBufferFormsTest, AttachCubemapTextureUsesTheFaceTarget) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, false);
    Texture cube;
    createCubemapTexture(cube, 4, 4, TextureOpts());
    ASSERT_TRUE(isExist(cube));
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    attachCubemapTexture(cube, 0, 3, 0);
    EXPECT_EQ(attachedName(fb.id, GL_COLOR_ATTACHMENT0), static_cast<GLint>(cube.id));
    EXPECT_EQ(attachmentParameter(fb.id, GL_COLOR_ATTACHMENT0,
                                  GL_FRAMEBUFFER_ATTACHMENT_TEXTURE_CUBE_MAP_FACE),
              GL_TEXTURE_CUBE_MAP_NEGATIVE_Y);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), COMPLETE);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
    deleteTexture(cube);
}

}  // namespace
