// Using a framebuffer: reading it into images with their format checks,
// resizing it bound and unbound, and clearing colour, depth and stencil.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "FrameBufferCallSpy.h"
#include "FrameBufferTestHelpers.h"
#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using fbtest::attachedName;
using fbtest::renderbufferParameter;
using fbtest::viewport;
using gltest::getInteger;

namespace {

const GLenum COMPLETE = GL_FRAMEBUFFER_COMPLETE;

const std::string SIZE_WORD = "> fb.width == image.getWidth() && fb.height == image.getHeight()";
const std::string TEXTURE_FORMAT_WORD =
    "> getTextureFormat(image.getChannel(), fb.colorTex[targetIndex].opts.type) == "
    "fb.colorTex[targetIndex].opts.format";
const std::string BUFFER_FORMAT_WORD =
    "> getTextureInternalFormat(image.getChannel(), GL_UNSIGNED_BYTE) == "
    "fb.colorRenderBuffer[targetIndex].opts.internalFormat";

class FrameBufferUseTest : public GLTest {
protected:
    // Fills the whole of `fb`'s colour with one colour through GL alone.
    void fill(FrameBuffer& fb, float r, float g, float b, float a) {
        glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
        glViewport(0, 0, fb.width, fb.height);
        glClearColor(r, g, b, a);
        glClear(GL_COLOR_BUFFER_BIT);
        glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
        glViewport(0, 0, gl->width, gl->height);
    }

    // Draws a green quad at depth 0.5 into `fb` under `setup`'s depth and
    // stencil state, and reads the first pixel.
    template <typename Setup>
    std::vector<std::uint8_t> drawGreenWith(FrameBuffer& fb, Setup setup) {
        EXPECT_TRUE(bindFrameBuffer(fb));
        setup();
        EXPECT_TRUE(fbtest::drawColor(0.f, 1.f, 0.f, 1.f));
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_STENCIL_TEST);
        unbindFrameBuffer(fb);
        std::vector<std::uint8_t> read(static_cast<std::size_t>(fb.width) * fb.height * 4);
        ImageData<unsigned char> image(fb.width, fb.height, 4, read.data());
        readFrameBuffer(fb, image, 0);
        return std::vector<std::uint8_t>(read.begin(), read.begin() + 4);
    }
};

// ---- reading into 8-bit images

TEST_F(FrameBufferUseTest, ByteImageReadOfATexture) {
    std::vector<std::uint8_t> pixels = makeTestPixels(5, 3, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(5, 3, 4, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    glViewport(1, 1, 2, 2);
    std::vector<std::uint8_t> read(pixels.size());
    ImageData<unsigned char> image(5, 3, 4, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(read, pixels);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 1, 2, 2}));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ByteImageReadOfARenderBuffer) {
    FrameBuffer fb;
    createFrameBuffer(fb, 3, 3, RenderBufferOpts(), 2, false, false);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    glViewport(0, 0, 3, 3);
    // Attachment 1 red, attachment 0 left as cleared to blue first.
    glClearColor(0.f, 0.f, 1.f, 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
    const GLenum second[] = {GL_NONE, GL_COLOR_ATTACHMENT1};
    glDrawBuffers(2, second);
    glClearColor(1.f, 0.f, 0.f, 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);

    std::vector<std::uint8_t> read(3 * 3 * 4);
    ImageData<unsigned char> image(3, 3, 4, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 1);
    EXPECT_EQ(read, fbtest::solid(9, 255, 0, 0, 255));
    readFrameBuffer(fb, image, 0);
    EXPECT_EQ(read, fbtest::solid(9, 0, 0, 255, 255));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, AWronglySizedImageIsLoggedAndReadAtTheBuffersSize) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    std::vector<std::uint8_t> read(4 * 4 * 4, 7);
    ImageData<unsigned char> image(4, 4, 4, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u) << log.dump();
    EXPECT_EQ(lines[0].text.substr(lines[0].text.rfind("> fb.width")), SIZE_WORD);
    EXPECT_EQ(lines[1].text.substr(lines[1].text.rfind('>')), "> \n");
    EXPECT_EQ(lines[0].text.rfind("pmGL: readFrameBuffer(", 0), 0u) << lines[0].text;
    // Two by two pixels, then what was there before.
    EXPECT_EQ(std::vector<std::uint8_t>(read.begin(), read.begin() + 16), pixels);
    EXPECT_EQ(std::vector<std::uint8_t>(read.begin() + 16, read.end()),
              std::vector<std::uint8_t>(48, 7));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ByteImageReadOfAFloatTextureLogsTheTypeAndStillReads) {
    std::vector<float> pixels(2 * 2 * 4, 0.5f);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<float>(2, 2, 4, pixels.data()), TextureOpts(), 1, false, false);
    // The read is made in the texture's own type, so the buffer holds floats.
    std::vector<float> storage(pixels.size(), 0.f);
    ImageData<unsigned char> image(2, 2, 4, reinterpret_cast<unsigned char*>(storage.data()));
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    EXPECT_EQ(log.countEndingWith("> fb.colorTex[targetIndex].opts.type == GL_UNSIGNED_BYTE"), 1)
        << log.dump();
    EXPECT_EQ(log.lines().size(), 2u) << log.dump();
    EXPECT_EQ(storage, pixels);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ImageWithOtherChannelsThanTheTextureLogsTheFormat) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    std::vector<std::uint8_t> read(2 * 2 * 4);
    ImageData<unsigned char> image(2, 2, 3, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u) << log.dump();
    EXPECT_EQ(lines[0].text.substr(lines[0].text.find("> ")), TEXTURE_FORMAT_WORD);
    EXPECT_EQ(read, pixels);  // read as the texture's RGBA all the same
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, AThreeChannelReadLogsTheRgbaAssertionAndStillReads) {
    std::vector<std::uint8_t> pixels = makeTestPixels(4, 2, 3);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(4, 2, 3, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    ASSERT_EQ(fb.colorTex[0].opts.format, static_cast<unsigned>(GL_RGB));
    const GLint readFormat = [&] {
        glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
        const GLint format = getInteger(GL_IMPLEMENTATION_COLOR_READ_FORMAT);
        glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
        return format;
    }();
    std::vector<std::uint8_t> read(4 * 2 * 4, 0);
    ImageData<unsigned char> image(4, 2, 3, read.data());
    LogCapture log;
    resetFrameBufferCalls();
    readFrameBuffer(fb, image, 0);
    EXPECT_EQ(log.countEndingWith("> fb.colorTex[targetIndex].opts.format == GL_RGBA"), 1)
        << log.dump();
    EXPECT_EQ(log.count(TEXTURE_FORMAT_WORD), 0);
    if (readFormat == GL_RGB) {
        // The driver reads RGB bytes: the image comes back as it went in.
        EXPECT_EQ(log.lines().size(), 2u) << log.dump();
        EXPECT_EQ(std::vector<std::uint8_t>(read.begin(), read.begin() + 24), pixels);
    } else {
        // GL refuses the format; its error is what checkError reports.
        EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_OPERATION\n"), 1)
            << log.dump();
    }
    fbtest::clearGLErrors();
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ARenderBufferReadIntoAThreeChannelImageLogsTheFormat) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, RenderBufferOpts(), 1, false, false);
    fill(fb, 1.f, 1.f, 1.f, 1.f);
    std::vector<std::uint8_t> read(2 * 2 * 4);
    ImageData<unsigned char> image(2, 2, 3, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u) << log.dump();
    EXPECT_EQ(lines[0].text.substr(lines[0].text.find("> ")), BUFFER_FORMAT_WORD);
    EXPECT_EQ(read, fbtest::solid(4, 255, 255, 255, 255));  // still read as RGBA
    deleteFrameBuffer(fb);
}

// ---- reading into float images

TEST_F(FrameBufferUseTest, FloatImageReadOfARenderBufferIsRefused) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, RenderBufferOpts(), 1, false, false);
    std::vector<float> read(2 * 2 * 4, -1.f);
    ImageData<float> image(2, 2, 4, read.data());
    resetFrameBufferCalls();
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << log.dump();
    EXPECT_EQ(lines[0].format, "%s: %s(%d) > A render buffer does not support GL_FLOAT.\n");
    EXPECT_EQ(lines[0].text.rfind("pmGL: readFrameBuffer(", 0), 0u) << lines[0].text;
    EXPECT_EQ(frameBufferCalls().any, 0);  // nothing bound, nothing read
    EXPECT_EQ(read, std::vector<float>(16, -1.f));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, FloatReadChecksTheSizeBeforeRefusingARenderBuffer) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, RenderBufferOpts(), 1, false, false);
    std::vector<float> read(3 * 3 * 4);
    ImageData<float> image(3, 3, 4, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 3u) << log.dump();
    EXPECT_EQ(lines[0].text.substr(lines[0].text.rfind("> fb.width")), SIZE_WORD);
    EXPECT_EQ(lines[2].text.substr(lines[2].text.rfind('>')),
              "> A render buffer does not support GL_FLOAT.\n");
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, FloatImageReadOfAByteTextureLogsTheType) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    std::vector<float> read(2 * 2 * 4);
    ImageData<float> image(2, 2, 4, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    EXPECT_EQ(log.countEndingWith("> fb.colorTex[targetIndex].opts.type == GL_FLOAT"), 1)
        << log.dump();
    EXPECT_EQ(log.lines().size(), 2u) << log.dump();
    // Read in the texture's own bytes.
    std::vector<std::uint8_t> bytes(pixels.size());
    std::memcpy(bytes.data(), read.data(), bytes.size());
    EXPECT_EQ(bytes, pixels);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, FloatImageWithOtherChannelsLogsTheFormat) {
    std::vector<float> pixels(2 * 4, 0.25f);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<float>(2, 1, 4, pixels.data()), TextureOpts(), 1, false, false);
    std::vector<float> read(2 * 4);
    ImageData<float> image(2, 1, 2, read.data());
    LogCapture log;
    readFrameBuffer(fb, image, 0);
    ASSERT_EQ(log.lines().size(), 2u) << log.dump();
    EXPECT_EQ(log.count(TEXTURE_FORMAT_WORD), 1) << log.dump();
    EXPECT_EQ(read, pixels);
    deleteFrameBuffer(fb);
}

// ---- resizing

TEST_F(FrameBufferUseTest, ResizeToTheSameSizeMakesNoGLCall) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 3, TextureOpts(), 2, true, true);
    const FrameBuffer before = fb;
    resetFrameBufferCalls();
    resetGLCallCounts();
    LogCapture log;
    resizeFrameBuffer(fb, 4, 3);
    EXPECT_EQ(frameBufferCalls().any, 0);
    EXPECT_EQ(glCallCounts().generateMipmap + glCallCounts().deleteTextures, 0);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(fb.colorTex[0].id, before.colorTex[0].id);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ResizeGivesEveryAttachmentTheNewSizeAndKeepsTheNames) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 2, true, true);
    const FrameBuffer before = fb;
    glViewport(2, 2, 5, 5);
    LogCapture log;
    resizeFrameBuffer(fb, 6, 3);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(fb.width, 6);
    EXPECT_EQ(fb.height, 3);
    EXPECT_EQ(fb.id, before.id);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{2, 2, 5, 5}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(fb.colorTex[i].id, before.colorTex[i].id);
        EXPECT_EQ(fb.colorTex[i].width, 6);
        EXPECT_EQ(fb.colorTex[i].height, 3);
        EXPECT_EQ(attachedName(fb.id, GL_COLOR_ATTACHMENT0 + i),
                  static_cast<GLint>(fb.colorTex[i].id));
    }
    EXPECT_EQ(fb.depthRenderBuffer.id, before.depthRenderBuffer.id);
    EXPECT_EQ(fb.depthRenderBuffer.width, 6);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_WIDTH), 6);
    EXPECT_EQ(renderbufferParameter(fb.depthRenderBuffer.id, GL_RENDERBUFFER_HEIGHT), 3);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);

    // Usable at the new size: cleared whole and read whole.
    clearFrameBuffer(fb, glm::vec4(1.f, 0.f, 0.f, 1.f));
    std::vector<std::uint8_t> read(6 * 3 * 4);
    ImageData<unsigned char> image(6, 3, 4, read.data());
    readFrameBuffer(fb, image, 1);
    EXPECT_EQ(read, fbtest::solid(18, 255, 0, 0, 255));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ResizeOfRenderBuffers) {
    const GLint maxSamples = getInteger(GL_MAX_SAMPLES);
    FrameBuffer fb;
    RenderBufferOpts opts;
    opts.samples = maxSamples >= 4 ? 4 : 0;
    createFrameBuffer(fb, 2, 2, opts, 1, false, false);
    resizeFrameBuffer(fb, 7, 5);
    const RenderBuffer& rb = fb.colorRenderBuffer[0];
    EXPECT_EQ(rb.width, 7);
    EXPECT_EQ(rb.height, 5);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_WIDTH), 7);
    EXPECT_EQ(renderbufferParameter(rb.id, GL_RENDERBUFFER_HEIGHT), 5);
    EXPECT_GE(renderbufferParameter(rb.id, GL_RENDERBUFFER_SAMPLES), opts.samples);
    EXPECT_EQ(fbtest::status(fb.id), COMPLETE);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ResizeOfABoundBufferKeepsItBoundWithTheNewViewport) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, false);
    glViewport(1, 2, 3, 4);
    ASSERT_TRUE(bindFrameBuffer(fb));
    LogCapture log;
    resizeFrameBuffer(fb, 8, 6);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_TRUE(isBound(fb));
    EXPECT_EQ(viewport(), (std::vector<GLint>{0, 0, 8, 6}));
    EXPECT_EQ(std::vector<GLint>(fb.prevViewport, fb.prevViewport + 4),
              (std::vector<GLint>{1, 2, 3, 4}));
    EXPECT_EQ(fb.prevDrawFrameBuffer, gl->fbo);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), COMPLETE);
    // The outer unbind still gives back the caller's state.
    EXPECT_TRUE(unbindFrameBuffer(fb));
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 2, 3, 4}));
    deleteFrameBuffer(fb);
}

// ---- clearing

TEST_F(FrameBufferUseTest, ClearingADepthOnlyBufferClearsColourAndDepthNotStencil) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, true, false);
    ASSERT_EQ(fb.depthRenderBuffer.opts.internalFormat, GL_DEPTH_COMPONENT24);
    // Depth 0 everywhere first, so that only a cleared depth lets a quad pass.
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    glClearDepthf(0.f);
    glClear(GL_DEPTH_BUFFER_BIT);
    glClearDepthf(1.f);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);

    glViewport(1, 1, 2, 2);
    resetFrameBufferCalls();
    LogCapture log;
    clearFrameBuffer(fb, glm::vec4(1.f, 0.f, 0.f, 1.f));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(frameBufferCalls().clear, 1);
    EXPECT_EQ(frameBufferCalls().lastClearMask,
              static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT));
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 1, 2, 2}));
    GLfloat clearColor[4] = {};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clearColor);
    EXPECT_EQ(std::vector<GLfloat>(clearColor, clearColor + 4),
              (std::vector<GLfloat>{1.f, 0.f, 0.f, 1.f}));
    std::vector<std::uint8_t> read(4 * 4 * 4);
    ImageData<unsigned char> image(4, 4, 4, read.data());
    readFrameBuffer(fb, image, 0);
    EXPECT_EQ(read, fbtest::solid(16, 255, 0, 0, 255));

    const std::vector<std::uint8_t> pixel = drawGreenWith(fb, [] {
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LESS);
    });
    EXPECT_EQ(pixel, (std::vector<std::uint8_t>{0, 255, 0, 255}));  // depth was back at 1
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ClearingADepthStencilBufferClearsAllThree) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, true, true);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    glClearStencil(7);
    glClear(GL_STENCIL_BUFFER_BIT);
    glClearStencil(0);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);

    resetFrameBufferCalls();
    clearFrameBuffer(fb, glm::vec4(0.f, 0.f, 1.f, 1.f));
    EXPECT_EQ(
        frameBufferCalls().lastClearMask,
        static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT));
    const std::vector<std::uint8_t> pixel = drawGreenWith(fb, [] {
        glEnable(GL_STENCIL_TEST);
        glStencilFunc(GL_EQUAL, 0, 0xFF);
    });
    EXPECT_EQ(pixel, (std::vector<std::uint8_t>{0, 255, 0, 255}));  // stencil was back at 0
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ClearingABufferWithoutDepthClearsColourOnly) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 1, false, true);
    resetFrameBufferCalls();
    clearFrameBuffer(fb, glm::vec4(0.f, 1.f, 1.f, 0.f));
    EXPECT_EQ(frameBufferCalls().lastClearMask, static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT));
    EXPECT_EQ(gltest::readTextureRGBA(fb.colorTex[0].id, 2, 2), fbtest::solid(4, 0, 255, 255, 0));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ClearingABoundBufferLeavesItBoundAndChecksNoError) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 1, false, false);
    ASSERT_TRUE(bindFrameBuffer(fb));
    forceNextGLError(GL_INVALID_ENUM);
    LogCapture log;
    clearFrameBuffer(fb, glm::vec4(1.f, 1.f, 1.f, 1.f));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    // The pending flag was not taken by the clear.
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_ENUM));
    EXPECT_TRUE(isBound(fb));
    EXPECT_EQ(viewport(), (std::vector<GLint>{0, 0, 2, 2}));
    unbindFrameBuffer(fb);
    EXPECT_EQ(gltest::readTextureRGBA(fb.colorTex[0].id, 2, 2),
              fbtest::solid(4, 255, 255, 255, 255));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferUseTest, ClearingAnEmptyBufferLogsAndClearsWhatIsBound) {
    FrameBuffer fb;
    gl->clearTarget(0.f, 0.f, 0.f, 0.f);
    LogCapture log;
    clearFrameBuffer(fb, glm::vec4(1.f, 0.f, 1.f, 1.f));
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u) << log.dump();
    EXPECT_EQ(lines[0].text.substr(lines[0].text.rfind('>')), "> isExist(fb)");
    // The assertion does not stop it: the caller's framebuffer gets the clear.
    EXPECT_EQ(gl->readTarget(), fbtest::solid(16 * 16, 255, 0, 255, 255));
}

TEST_F(FrameBufferUseTest, ClearBufferClearsTheBoundFramebuffer) {
    resetFrameBufferCalls();
    clearBuffer(glm::vec4(0.f, 0.f, 0.f, 1.f), false, false);
    EXPECT_EQ(frameBufferCalls().lastClearMask, static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT));
    EXPECT_EQ(gl->readTarget(), fbtest::solid(16 * 16, 0, 0, 0, 255));
    clearBuffer(glm::vec4(1.f, 1.f, 1.f, 1.f), true, true);
    EXPECT_EQ(
        frameBufferCalls().lastClearMask,
        static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT));
    EXPECT_EQ(gl->readTarget(), fbtest::solid(16 * 16, 255, 255, 255, 255));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

}  // namespace
