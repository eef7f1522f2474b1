// Framebuffers: creation and its status words, bind and unbind with the saved
// caller state, read-back, update and deletion.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;

namespace {

std::vector<GLint> viewport() {
    std::vector<GLint> values(4);
    glGetIntegerv(GL_VIEWPORT, values.data());
    return values;
}

class FrameBufferTest : public GLTest {
protected:
    // A second caller framebuffer, to tell draw and read bindings apart.
    GLuint makeOtherFramebuffer() {
        glGenTextures(1, &otherTex);
        glBindTexture(GL_TEXTURE_2D, otherTex);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &otherFbo);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, otherFbo);
        glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, otherTex,
                               0);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, gl->fbo);
        return otherFbo;
    }

    void TearDown() override {
        if (otherFbo) glDeleteFramebuffers(1, &otherFbo);
        if (otherTex) glDeleteTextures(1, &otherTex);
        GLTest::TearDown();
    }

    GLuint otherFbo = 0;
    GLuint otherTex = 0;
};

TEST_F(FrameBufferTest, CreateMakesACompleteBufferAndRestoresTheCallerState) {
    glViewport(1, 2, 3, 4);
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 6, 5, TextureOpts(), 1, false, false);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(fb));
    EXPECT_TRUE(glIsFramebuffer(fb.id));
    EXPECT_EQ(fb.width, 6);
    EXPECT_EQ(fb.height, 5);
    ASSERT_EQ(fb.colorTex.size(), 1u);
    EXPECT_EQ(fb.colorTex[0].width, 6);
    EXPECT_EQ(fb.colorTex[0].height, 5);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 2, 3, 4}));

    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER),
              static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
    GLint attached = 0;
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &attached);
    EXPECT_EQ(attached, static_cast<GLint>(fb.colorTex[0].id));
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_COLOR_ATTACHMENT0);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, SeveralColourTexturesGetTheirAttachmentsAndDrawBuffers) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 3, false, false);
    ASSERT_EQ(fb.colorTex.size(), 3u);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    for (int i = 0; i < 3; ++i) {
        GLint attached = 0;
        glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + i,
                                              GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &attached);
        EXPECT_EQ(attached, static_cast<GLint>(fb.colorTex[i].id));
        EXPECT_EQ(getInteger(GL_DRAW_BUFFER0 + i), GL_COLOR_ATTACHMENT0 + i);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, CreateFromImageFillsEveryColourTextureWithItsPixels) {
    std::vector<std::uint8_t> pixels = makeTestPixels(3, 2, 4);
    FrameBuffer fb;
    TextureOpts opts;
    opts.format = GL_RGB;  // replaced by what the image calls for
    createFrameBuffer(fb, ImageData<unsigned char>(3, 2, 4, pixels.data()), opts, 2, false, false,
                      1);
    ASSERT_EQ(fb.colorTex.size(), 2u);
    EXPECT_EQ(fb.width, 3);
    EXPECT_EQ(fb.height, 2);
    for (const Texture& tex : fb.colorTex) {
        EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGBA));
        EXPECT_EQ(gltest::readTextureRGBA(tex.id, 3, 2), pixels);
    }
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, MissingAttachmentLogsItsWordThenTheAssertionAndUnbinds) {
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 0, false, false);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 3u) << log.dump();
    EXPECT_EQ(lines[0].text.rfind("pmGL: ", 0), 0u);
    EXPECT_EQ(lines[0].text.substr(lines[0].text.rfind('>')),
              "> Framebuffer incomplete: missing attachment\n");
    EXPECT_EQ(lines[1].text.substr(lines[1].text.rfind('>')), "> 0");
    EXPECT_EQ(lines[2].text.substr(lines[2].text.rfind('>')), "> \n");
    // The failed buffer stays in the record; the caller's binding is back.
    EXPECT_TRUE(isExist(fb));
    EXPECT_TRUE(fb.colorTex.empty());
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    // No colour: glDrawBuffers(0, null) leaves no draw buffer.
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_NONE);
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, NonRenderableTextureLogsIncompleteAttachment) {
    TextureOpts opts;
    opts.internalFormat = GL_LUMINANCE;  // not colour-renderable
    opts.format = GL_LUMINANCE;
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 4, 4, opts, 1, false, false);
    EXPECT_EQ(log.countEndingWith("> Framebuffer incomplete: incomplete attachment\n"), 1)
        << log.dump();
    EXPECT_EQ(log.countEndingWith("> 0"), 1);
    EXPECT_EQ(log.lines().size(), 3u);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, ZeroSizeMakesNoTextureAndAnIncompleteBuffer) {
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 0, 4, TextureOpts(), 1, false, false);
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (0, 4)."), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Framebuffer incomplete: missing attachment\n"), 1);
    ASSERT_EQ(fb.colorTex.size(), 1u);
    EXPECT_EQ(fb.colorTex[0].id, 0u);
    EXPECT_TRUE(isExist(fb));
    while (glGetError() != GL_NO_ERROR) {
    }
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, NegativeColourCountThrowsLengthError) {
    FrameBuffer fb;
    EXPECT_THROW(createFrameBuffer(fb, 2, 2, TextureOpts(), -1, false, false), std::length_error);
}

TEST_F(FrameBufferTest, BindSavesTheCallerStateAndUnbindRestoresIt) {
    const GLuint other = makeOtherFramebuffer();
    FrameBuffer fb;
    createFrameBuffer(fb, 5, 3, TextureOpts(), 1, false, false);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, gl->fbo);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, other);
    glViewport(1, 2, 3, 4);

    EXPECT_TRUE(bindFrameBuffer(fb));
    EXPECT_EQ(fb.prevDrawFrameBuffer, gl->fbo);
    EXPECT_EQ(fb.prevReadFrameBuffer, other);
    EXPECT_EQ(std::vector<GLint>(fb.prevViewport, fb.prevViewport + 4),
              (std::vector<GLint>{1, 2, 3, 4}));
    EXPECT_EQ(getInteger(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(fb.id));
    EXPECT_EQ(getInteger(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(fb.id));
    EXPECT_EQ(viewport(), (std::vector<GLint>{0, 0, 5, 3}));
    EXPECT_TRUE(isBound(fb));

    EXPECT_TRUE(unbindFrameBuffer(fb));
    EXPECT_EQ(getInteger(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(getInteger(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(other));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 2, 3, 4}));
    EXPECT_FALSE(isBound(fb));
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, BindOfAnAlreadyBoundBufferReturnsFalseAndKeepsTheFirstSavedState) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 1, false, false);
    glViewport(2, 3, 7, 8);
    ASSERT_TRUE(bindFrameBuffer(fb));
    glViewport(0, 0, 1, 1);
    EXPECT_FALSE(bindFrameBuffer(fb));
    EXPECT_EQ(fb.prevDrawFrameBuffer, gl->fbo);
    EXPECT_EQ(std::vector<GLint>(fb.prevViewport, fb.prevViewport + 4),
              (std::vector<GLint>{2, 3, 7, 8}));
    EXPECT_EQ(viewport(), (std::vector<GLint>{0, 0, 1, 1}));  // nothing changed
    // Only the holder of the true result unbinds, back to the first state.
    EXPECT_TRUE(unbindFrameBuffer(fb));
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{2, 3, 7, 8}));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, EmptyBufferNeitherBindsNorUnbinds) {
    FrameBuffer fb;
    EXPECT_FALSE(bindFrameBuffer(fb));
    EXPECT_FALSE(unbindFrameBuffer(fb));
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    deleteFrameBuffer(fb);  // nothing to delete
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(FrameBufferTest, DeleteWhileBoundUnbindsFirstAndKeepsEmptiedAttachments) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 2, false, false);
    const unsigned id = fb.id;
    const unsigned texture = fb.colorTex[0].id;
    glViewport(1, 1, 2, 2);
    ASSERT_TRUE(bindFrameBuffer(fb));
    deleteFrameBuffer(fb);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 1, 2, 2}));
    EXPECT_FALSE(glIsFramebuffer(id));
    EXPECT_FALSE(glIsTexture(texture));
    EXPECT_EQ(fb.id, 0u);
    EXPECT_EQ(fb.width, 0);
    EXPECT_EQ(fb.height, 0);
    ASSERT_EQ(fb.colorTex.size(), 2u);
    EXPECT_EQ(fb.colorTex[0].id, 0u);
    EXPECT_EQ(fb.colorTex[1].id, 0u);
}

TEST_F(FrameBufferTest, CreatingAgainReplacesTheOldBuffer) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 2, false, false);
    const unsigned firstTexture = fb.colorTex[1].id;
    createFrameBuffer(fb, 2, 2, fb.colorTex[0].opts, 1, false, false);
    EXPECT_FALSE(glIsTexture(firstTexture));
    EXPECT_EQ(fb.colorTex.size(), 1u);
    EXPECT_EQ(fb.colorTex[0].width, 2);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, ReadFrameBufferReadsPixelsAndSetsTheUnpackAlignmentOnly) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 3, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(2, 3, 4, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glViewport(1, 2, 3, 4);
    std::vector<std::uint8_t> read(pixels.size());
    LogCapture log;
    readFrameBuffer(fb, read.data(), 0);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(read, pixels);
    EXPECT_EQ(getInteger(GL_PACK_ALIGNMENT), 8);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    EXPECT_EQ(viewport(), (std::vector<GLint>{1, 2, 3, 4}));
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, ReadingABufferBoundByTheCallerLeavesItBound) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts(), 1, false,
                      false, 1);
    ASSERT_TRUE(bindFrameBuffer(fb));
    std::vector<std::uint8_t> read(pixels.size());
    readFrameBuffer(fb, read.data(), 0);
    EXPECT_EQ(read, pixels);
    EXPECT_TRUE(isBound(fb));
    unbindFrameBuffer(fb);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, ReadsTheAskedColourAttachment) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 2, false, false);
    updateFrameBuffer(fb, ImageData<unsigned char>(2, 2, 4, pixels.data()), 1);
    std::vector<std::uint8_t> read(pixels.size());
    readFrameBuffer(fb, read.data(), 1);
    EXPECT_EQ(read, pixels);
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, ReadOfANonRgbaTextureLogsTheAssertion) {
    FrameBuffer fb;
    createFrameBuffer(fb, ImageData<unsigned char>(4, 2, 3, nullptr), TextureOpts(), 1, false,
                      false, 1);
    std::vector<std::uint8_t> read(4 * 2 * 4);
    LogCapture log;
    readFrameBuffer(fb, read.data(), 0);
    EXPECT_EQ(log.countEndingWith("> fb.colorTex[targetIndex].opts.format == GL_RGBA"), 1)
        << log.dump();
    while (glGetError() != GL_NO_ERROR) {
    }
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, ReadOfAnEmptyBufferLogsTheAssertion) {
    FrameBuffer fb;
    LogCapture log;
    readFrameBuffer(fb, nullptr, 0);
    EXPECT_EQ(log.countEndingWith("> isExist(fb)"), 1) << log.dump();
}

TEST_F(FrameBufferTest, UpdateFrameBufferWritesTheTargetTexture) {
    std::vector<std::uint8_t> pixels = makeTestPixels(3, 3, 4);
    FrameBuffer fb;
    createFrameBuffer(fb, 3, 3, TextureOpts(), 1, false, false);
    updateFrameBuffer(fb, ImageData<unsigned char>(3, 3, 4, pixels.data()), 0);
    EXPECT_EQ(gltest::readTextureRGBA(fb.colorTex[0].id, 3, 3), pixels);
    LogCapture log;
    updateFrameBuffer(fb, ImageData<unsigned char>(3, 3, 4, pixels.data()), 1);
    EXPECT_EQ(log.countEndingWith("> fb.colorTex.size() > targetIndex"), 1) << log.dump();
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, FloatImagesGoThroughHalfFloatTextures) {
    std::vector<float> pixels = {0.25f, 0.5f, 0.75f, 1.0f, 1.5f, -2.0f, 0.125f, 0.0f};
    TextureOpts opts;
    updateTextureOpts(opts, ImageData<float>(2, 1, 4, nullptr));
    FrameBuffer fb;
    LogCapture log;
    createFrameBuffer(fb, 2, 1, opts, 1, false, false);
    ASSERT_TRUE(log.lines().empty()) << log.dump();  // needs float colour buffers
    EXPECT_TRUE(isEqualFormat(fb.colorTex[0], ImageData<float>(2, 1, 4, nullptr)));
    updateFrameBuffer(fb, ImageData<float>(2, 1, 4, pixels.data()), 0);
    std::vector<float> read(pixels.size());
    readFrameBuffer(fb, read.data(), 0);
    EXPECT_EQ(read, pixels);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, GenerateMipmapCoversEveryColourTexture) {
    FrameBuffer fb;
    createFrameBuffer(fb, 4, 4, TextureOpts(), 2, false, false);
    generateMipmap(fb);
    for (const Texture& tex : fb.colorTex) {
        EXPECT_TRUE(tex.opts.mipmap);
        EXPECT_EQ(tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
        EXPECT_EQ(gltest::getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    }
    deleteFrameBuffer(fb);
}

TEST_F(FrameBufferTest, SpecifyDrawBuffers) {
    FrameBuffer fb;
    createFrameBuffer(fb, 2, 2, TextureOpts(), 2, false, false);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    specifyDrawBuffers(1);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_COLOR_ATTACHMENT0);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER1), GL_NONE);
    specifyDrawBuffers(0);
    EXPECT_EQ(getInteger(GL_DRAW_BUFFER0), GL_NONE);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    deleteFrameBuffer(fb);
}

}  // namespace
