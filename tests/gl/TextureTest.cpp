// Textures: creation from pixels and images, mipmap rules, unpack alignment,
// updates, format look-ups and deletion.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;
using gltest::getTexParameter;

namespace {

class TextureTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        resetGLCallCounts();
    }

    // Draws `tex` over the whole of a viewport of the given size at the
    // origin of the test target and reads back its bottom-left pixel.
    std::vector<std::uint8_t> drawAndReadCorner(const Texture& tex, int width, int height) {
        Program prog;
        EXPECT_TRUE(
            createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::TEXTURE_FRAGMENT_SHADER));
        VertexBuffer vb;
        gltest::createFullQuad(vb);
        VertexArray va;
        createVertexArray(va, vb, prog);
        useProgram(prog);
        UniformData data;
        setUniformData(data, "uTexture", tex);
        bindTexture(data);
        useUniformData(data, prog);
        glViewport(0, 0, width, height);
        drawVertexArray(va, 1);
        glUseProgram(0);
        deleteVertexArray(va);
        deleteVertexBuffer(vb);
        deleteProgram(prog);
        const std::vector<std::uint8_t> all = gl->readTarget();
        return {all.begin(), all.begin() + 4};
    }
};

TEST_F(TextureTest, CreateFromImageUploadsPixelsAndAppliesOptions) {
    std::vector<std::uint8_t> pixels = makeTestPixels(4, 3, 4);
    const ImageData<unsigned char> image(4, 3, 4, pixels.data());
    TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    opts.wrapS = GL_REPEAT;
    opts.wrapT = GL_MIRRORED_REPEAT;
    opts.target = GL_TEXTURE_CUBE_MAP;  // an image always makes a 2D texture
    Texture tex;
    LogCapture log;
    createTexture(tex, image, opts);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(tex));
    EXPECT_TRUE(glIsTexture(tex.id));
    EXPECT_EQ(tex.width, 4);
    EXPECT_EQ(tex.height, 3);
    EXPECT_EQ(tex.opts.target, static_cast<unsigned>(GL_TEXTURE_2D));
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGBA));
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_S), GL_REPEAT);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_T), GL_MIRRORED_REPEAT);
    EXPECT_EQ(getInteger(GL_TEXTURE_BINDING_2D), 0);  // unbound afterwards
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 4, 3), pixels);
    EXPECT_EQ(glCallCounts().generateMipmap, 0);
    deleteTexture(tex);
}

TEST_F(TextureTest, SizeBelowOneLogsAndLeavesTheRecordUntouched) {
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    const unsigned id = tex.id;
    LogCapture log;
    TextureOpts other;
    other.minFilter = GL_NEAREST;
    createTexture(tex, 0, 5, nullptr, other);
    createTexture(tex, 3, -1, nullptr, other);
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (0, 5)."), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (3, -1)."), 1);
    EXPECT_EQ(log.count("pmGL: createTexture("), 2);
    EXPECT_EQ(tex.id, id);
    EXPECT_TRUE(glIsTexture(id));
    EXPECT_EQ(tex.width, 2);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR);
    deleteTexture(tex);
}

TEST_F(TextureTest, NullPixelsWithMipmapsAskedForSwitchMipmapsOff) {
    TextureOpts opts;
    opts.mipmap = true;
    opts.minFilter = GL_LINEAR_MIPMAP_LINEAR;
    Texture tex;
    LogCapture log;
    createTexture(tex, 4, 4, nullptr, opts);
    EXPECT_FALSE(tex.opts.mipmap);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(log.countEndingWith("> Disable mipmap because data is nullptr.\n"), 1) << log.dump();
    EXPECT_EQ(glCallCounts().generateMipmap, 0);

    // Without a chain the texture is incomplete under a mipmap filter, and
    // samples as opaque black although level 0 now holds red.
    const std::vector<std::uint8_t> red = {255, 0, 0, 255};
    std::vector<std::uint8_t> level0;
    for (int i = 0; i < 16; ++i) level0.insert(level0.end(), red.begin(), red.end());
    glBindTexture(GL_TEXTURE_2D, tex.id);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, level0.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(drawAndReadCorner(tex, 4, 4), (std::vector<std::uint8_t>{0, 0, 0, 255}));
    deleteTexture(tex);
}

TEST_F(TextureTest, NullPixelsMapNearestMipmapFiltersToNearest) {
    for (GLint filter : {GL_NEAREST_MIPMAP_NEAREST, GL_NEAREST_MIPMAP_LINEAR}) {
        TextureOpts opts;
        opts.mipmap = true;
        opts.minFilter = filter;
        Texture tex;
        createTexture(tex, 2, 2, nullptr, opts);
        EXPECT_EQ(tex.opts.minFilter, GL_NEAREST);
        EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
        deleteTexture(tex);
    }
    TextureOpts opts;
    opts.mipmap = true;
    opts.minFilter = GL_LINEAR_MIPMAP_NEAREST;
    Texture tex;
    createTexture(tex, 2, 2, nullptr, opts);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR);
    deleteTexture(tex);
}

TEST_F(TextureTest, MipmapFilterWithoutMipmapFlagStillBuildsTheChain) {
    // Red, green, blue, white: the 1x1 level averages them.
    std::vector<std::uint8_t> pixels = {255, 0, 0,   255, 0,   255, 0,   255,
                                        0,   0, 255, 255, 255, 255, 255, 255};
    TextureOpts opts;
    opts.mipmap = false;
    opts.minFilter = GL_LINEAR_MIPMAP_LINEAR;
    Texture tex;
    createTexture(tex, 2, 2, pixels.data(), opts);
    EXPECT_EQ(glCallCounts().generateMipmap, 1);
    EXPECT_FALSE(tex.opts.mipmap);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
    // Drawn into one pixel, the texture is minified to its last level.
    const std::vector<std::uint8_t> corner = drawAndReadCorner(tex, 1, 1);
    EXPECT_NEAR(corner[0], 128, 2);
    EXPECT_NEAR(corner[1], 128, 2);
    EXPECT_NEAR(corner[2], 128, 2);
    EXPECT_EQ(corner[3], 255);
    deleteTexture(tex);
}

TEST_F(TextureTest, MipmapFlagWithPixelsTurnsPlainFiltersIntoMipmapFilters) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    TextureOpts opts;
    opts.mipmap = true;
    Texture tex;
    createTexture(tex, 2, 2, pixels.data(), opts);
    EXPECT_TRUE(tex.opts.mipmap);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(glCallCounts().generateMipmap, 1);
    opts.minFilter = GL_NEAREST;
    createTexture(tex, 2, 2, pixels.data(), opts);
    EXPECT_EQ(tex.opts.minFilter, GL_NEAREST_MIPMAP_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST_MIPMAP_NEAREST);
    deleteTexture(tex);
}

TEST_F(TextureTest, ThreeChannelImageOfWidthFiveUsesUnpackAlignmentOne) {
    std::vector<std::uint8_t> pixels = makeTestPixels(5, 3, 3);
    const ImageData<unsigned char> image(5, 3, 3, pixels.data());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    Texture tex;
    createTexture(tex, image, TextureOpts());
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 1);
    EXPECT_EQ(tex.opts.internalFormat, GL_RGB8);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGB));
    // Tightly packed 15-byte rows arrive intact.
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 5, 3), gltest::expandToRGBA(pixels, 3));
    deleteTexture(tex);
}

TEST_F(TextureTest, ThreeChannelImageOfWidthFourUsesUnpackAlignmentFour) {
    std::vector<std::uint8_t> pixels = makeTestPixels(4, 2, 3);
    const ImageData<unsigned char> image(4, 2, 3, pixels.data());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    Texture tex;
    createTexture(tex, image, TextureOpts());
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 4, 2), gltest::expandToRGBA(pixels, 3));
    deleteTexture(tex);
}

TEST_F(TextureTest, OneAndTwoChannelImagesUploadWithTheirFormats) {
    std::vector<std::uint8_t> grey = makeTestPixels(3, 2, 1);
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(3, 2, 1, grey.data()), TextureOpts());
    EXPECT_EQ(tex.opts.internalFormat, GL_R8);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 1);
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 3, 2), gltest::expandToRGBA(grey, 1));
    std::vector<std::uint8_t> pairs = makeTestPixels(2, 2, 2);
    createTexture(tex, ImageData<unsigned char>(2, 2, 2, pairs.data()), TextureOpts());
    EXPECT_EQ(tex.opts.internalFormat, GL_RG8);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 2, 2), gltest::expandToRGBA(pairs, 2));
    deleteTexture(tex);
}

TEST_F(TextureTest, DeleteOfAnEmptyTextureCallsNoGLFunction) {
    Texture tex;
    tex.width = 3;
    LogCapture log;
    deleteTexture(tex);
    EXPECT_EQ(glCallCounts().deleteTextures, 0);
    EXPECT_EQ(tex.width, 3);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TextureTest, DeleteClearsNameAndSizeAndKeepsOptions) {
    TextureOpts opts;
    opts.magFilter = GL_NEAREST;
    Texture tex;
    createTexture(tex, 3, 2, nullptr, opts);
    const unsigned id = tex.id;
    deleteTexture(tex);
    EXPECT_EQ(glCallCounts().deleteTextures, 1);
    EXPECT_FALSE(glIsTexture(id));
    EXPECT_EQ(tex.id, 0u);
    EXPECT_EQ(tex.width, 0);
    EXPECT_EQ(tex.height, 0);
    EXPECT_EQ(tex.opts.magFilter, GL_NEAREST);
}

TEST_F(TextureTest, CreateDeletesWhatTheRecordHeld) {
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    const unsigned first = tex.id;
    createTexture(tex, 4, 4, nullptr, TextureOpts());
    EXPECT_FALSE(glIsTexture(first));
    EXPECT_TRUE(glIsTexture(tex.id));
    EXPECT_EQ(tex.width, 4);
    deleteTexture(tex);
}

TEST_F(TextureTest, BindTextureActivatesTheUnitAndBinds) {
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    bindTexture(tex, 3);
    EXPECT_EQ(getInteger(GL_ACTIVE_TEXTURE), GL_TEXTURE3);
    EXPECT_EQ(getInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(tex.id));
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0);
    deleteTexture(tex);
}

TEST_F(TextureTest, BindingAnEmptyTextureLogsTheAssertionAndGoesOn) {
    LogCapture log;
    bindTexture(Texture(), 2);
    EXPECT_EQ(log.countEndingWith("> isExist(tex)"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> \n"), 1);
    EXPECT_EQ(log.count("pmGL: bindTexture("), 2);
    EXPECT_EQ(getInteger(GL_ACTIVE_TEXTURE), GL_TEXTURE2);
    glActiveTexture(GL_TEXTURE0);
}

TEST_F(TextureTest, FormatLookUps) {
    const GLenum dataFormats[] = {0, GL_RED, GL_RG, GL_RGB, GL_RGBA};
    const GLenum bytes[] = {0, GL_R8, GL_RG8, GL_RGB8, GL_RGBA8};
    const GLenum halves[] = {0, GL_R16F, GL_RG16F, GL_RGB16F, GL_RGBA16F};
    for (int channel = 1; channel < TEX_FORMAT_SIZE; ++channel) {
        EXPECT_EQ(getTextureFormat(channel, GL_UNSIGNED_BYTE), dataFormats[channel]);
        EXPECT_EQ(getTextureFormat(channel, GL_FLOAT), dataFormats[channel]);
        EXPECT_EQ(getTextureInternalFormat(channel, GL_UNSIGNED_BYTE), bytes[channel]);
        EXPECT_EQ(getTextureInternalFormat(channel, GL_FLOAT), halves[channel]);
        EXPECT_EQ(getTextureChannel(dataFormats[channel], GL_UNSIGNED_BYTE), channel);
        EXPECT_EQ(getTextureChannel(dataFormats[channel], GL_FLOAT), channel);
    }
    EXPECT_EQ(getTextureInternalFormat(1, GL_UNSIGNED_SHORT),
              static_cast<unsigned>(GL_DEPTH_COMPONENT));
    EXPECT_EQ(getTextureInternalFormat(1, GL_UNSIGNED_INT_24_8),
              static_cast<unsigned>(GL_DEPTH24_STENCIL8));
    EXPECT_EQ(getTextureFormat(1, GL_UNSIGNED_SHORT), static_cast<unsigned>(GL_DEPTH_COMPONENT));
    EXPECT_EQ(getTextureFormat(1, GL_UNSIGNED_INT_24_8), static_cast<unsigned>(GL_DEPTH_STENCIL));
    EXPECT_EQ(getTextureChannel(GL_RGBA, GL_UNSIGNED_SHORT), 1);
    EXPECT_EQ(getTextureChannel(GL_RGB, GL_UNSIGNED_INT_24_8), 1);
    EXPECT_EQ(getTextureChannel(GL_DEPTH_COMPONENT, GL_UNSIGNED_BYTE), 0);
}

TEST_F(TextureTest, TexelSizes) {
    TextureOpts opts;
    EXPECT_EQ(getTexelSize(opts), 4);
    opts.format = GL_RGB;
    EXPECT_EQ(getTexelSize(opts), 3);
    opts.format = GL_RGBA;
    opts.type = GL_FLOAT;
    EXPECT_EQ(getTexelSize(opts), 16);
    opts.format = GL_DEPTH_COMPONENT;
    opts.type = GL_UNSIGNED_SHORT;
    EXPECT_EQ(getTexelSize(opts), 2);
    opts.type = GL_UNSIGNED_INT_24_8;
    EXPECT_EQ(getTexelSize(opts), 4);
}

TEST_F(TextureTest, UnsupportedTypesLogAndGiveZero) {
    LogCapture log;
    EXPECT_EQ(getTextureInternalFormat(4, GL_INT), 0u);
    EXPECT_EQ(getTextureFormat(4, GL_INT), 0u);
    EXPECT_EQ(getTextureChannel(GL_RGBA, GL_INT), 0);
    TextureOpts opts;
    opts.type = GL_INT;
    EXPECT_EQ(getTexelSize(opts), 0);
    EXPECT_EQ(log.countEndingWith("> Unsupported type: 5124\n"), 4) << log.dump();
}

TEST_F(TextureTest, ChannelOutOfTableLogsTheAssertion) {
    LogCapture log;
    EXPECT_EQ(getTextureFormat(5, GL_UNSIGNED_BYTE), 0u);
    EXPECT_EQ(log.countEndingWith("> channel < TEX_FORMAT_SIZE"), 1) << log.dump();
}

TEST_F(TextureTest, UpdateTextureOptsFollowsTheImage) {
    TextureOpts opts;
    opts.type = GL_FLOAT;
    updateTextureOpts(opts, ImageData<unsigned char>(1, 1, 3, nullptr));
    EXPECT_EQ(opts.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(opts.internalFormat, GL_RGB8);
    EXPECT_EQ(opts.format, static_cast<unsigned>(GL_RGB));

    opts.linear = false;
    updateTextureOpts(opts, ImageData<unsigned char>(1, 1, 3, nullptr));
    EXPECT_EQ(opts.internalFormat, GL_SRGB8);
    EXPECT_EQ(opts.format, static_cast<unsigned>(GL_RGB));
    updateTextureOpts(opts, ImageData<unsigned char>(1, 1, 4, nullptr));
    EXPECT_EQ(opts.internalFormat, GL_SRGB8_ALPHA8);
    updateTextureOpts(opts, ImageData<unsigned char>(1, 1, 1, nullptr));
    EXPECT_EQ(opts.internalFormat, GL_R8);
    updateTextureOpts(opts, ImageData<unsigned char>(1, 1, 2, nullptr));
    EXPECT_EQ(opts.internalFormat, GL_RG8);

    // The float form has no sRGB step.
    updateTextureOpts(opts, ImageData<float>(1, 1, 4, nullptr));
    EXPECT_EQ(opts.type, static_cast<unsigned>(GL_FLOAT));
    EXPECT_EQ(opts.internalFormat, GL_RGBA16F);
    EXPECT_EQ(opts.format, static_cast<unsigned>(GL_RGBA));
}

TEST_F(TextureTest, SmallerImageUpdatesOnlyTheLowerLeftPart) {
    std::vector<std::uint8_t> base(4 * 4 * 4, 10);
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(4, 4, 4, base.data()), TextureOpts());
    std::vector<std::uint8_t> patch = makeTestPixels(2, 2, 4);
    LogCapture log;
    updateTexture(tex, ImageData<unsigned char>(2, 2, 4, patch.data()));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    std::vector<std::uint8_t> expected = base;
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 2; ++x) {
            for (int c = 0; c < 4; ++c) expected[(y * 4 + x) * 4 + c] = patch[(y * 2 + x) * 4 + c];
        }
    }
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 4, 4), expected);
    EXPECT_EQ(tex.width, 4);
    deleteTexture(tex);
}

TEST_F(TextureTest, UpdateUsesTheTextureWidthForUnpackAlignment) {
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(4, 1, 3, nullptr), TextureOpts());
    std::vector<std::uint8_t> row = makeTestPixels(3, 1, 3);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    updateTexture(tex, ImageData<unsigned char>(3, 1, 3, row.data()));
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);  // 4 texels of 3 bytes
    deleteTexture(tex);
}

TEST_F(TextureTest, UpdateRegeneratesMipmapsUnderAMipmapFilter) {
    std::vector<std::uint8_t> pixels = makeTestPixels(2, 2, 4);
    TextureOpts opts;
    opts.mipmap = true;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(2, 2, 4, pixels.data()), opts);
    resetGLCallCounts();
    updateTexture(tex, ImageData<unsigned char>(2, 2, 4, pixels.data()));
    EXPECT_EQ(glCallCounts().generateMipmap, 1);
    deleteTexture(tex);
}

TEST_F(TextureTest, UpdateAssertionsAreLoggedAndTheUploadGoesOn) {
    std::vector<std::uint8_t> pixels = makeTestPixels(3, 3, 4);
    TextureOpts opts;
    opts.linear = false;  // sRGB never matches the default options
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(2, 2, 4, nullptr), opts);
    EXPECT_EQ(tex.opts.internalFormat, GL_SRGB8_ALPHA8);
    LogCapture log;
    updateTexture(tex, ImageData<unsigned char>(2, 2, 4, pixels.data()));
    EXPECT_EQ(
        log.countEndingWith("> tex.opts.type == customOpts.type && tex.opts.internalFormat == "
                            "customOpts.internalFormat && tex.opts.format == customOpts.format"),
        1)
        << log.dump();
    EXPECT_EQ(log.count("pmGL: updateTexture("), 2);
    log.clear();
    updateTexture(tex, ImageData<unsigned char>(3, 3, 4, pixels.data()));
    EXPECT_EQ(
        log.countEndingWith("> tex.width >= image.getWidth() && tex.height >= image.getHeight()"),
        1)
        << log.dump();
    log.clear();
    Texture empty;
    updateTexture(empty, 0, 0, 1, 1, nullptr);
    EXPECT_EQ(log.countEndingWith("> isExist(tex)"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> data != nullptr"), 1);
    while (glGetError() != GL_NO_ERROR) {
    }
    deleteTexture(tex);
}

TEST_F(TextureTest, GenerateMipmapTurnsMipmapsOn) {
    std::vector<std::uint8_t> pixels = makeTestPixels(4, 4, 4);
    TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(4, 4, 4, pixels.data()), opts);
    resetGLCallCounts();
    generateMipmap(tex);
    EXPECT_TRUE(tex.opts.mipmap);
    EXPECT_EQ(tex.opts.minFilter, GL_NEAREST_MIPMAP_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST_MIPMAP_NEAREST);
    EXPECT_EQ(glCallCounts().generateMipmap, 1);
    deleteTexture(tex);
}

TEST_F(TextureTest, IsEqualFormatComparesTypeAndFormatsOnly) {
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(4, 4, 3, nullptr), TextureOpts());
    EXPECT_TRUE(isEqualFormat(tex, ImageData<unsigned char>(9, 9, 3, nullptr)));
    EXPECT_FALSE(isEqualFormat(tex, ImageData<unsigned char>(4, 4, 4, nullptr)));
    EXPECT_FALSE(isEqualFormat(tex, ImageData<float>(4, 4, 3, nullptr)));

    TextureOpts srgb;
    srgb.linear = false;
    Texture srgbTex;
    createTexture(srgbTex, ImageData<unsigned char>(4, 4, 3, nullptr), srgb);
    EXPECT_FALSE(isEqualFormat(srgbTex, ImageData<unsigned char>(4, 4, 3, nullptr)));
    EXPECT_FALSE(isEqualFormat(tex, srgbTex));

    Texture other;
    createTexture(other, ImageData<unsigned char>(2, 1, 3, nullptr), TextureOpts());
    EXPECT_TRUE(isEqualFormat(tex, other));

    Texture halfTex;
    halfTex.opts.type = GL_FLOAT;
    halfTex.opts.internalFormat = GL_RGBA16F;
    halfTex.opts.format = GL_RGBA;
    EXPECT_TRUE(isEqualFormat(halfTex, ImageData<float>(1, 1, 4, nullptr)));
    EXPECT_FALSE(isEqualFormat(halfTex, ImageData<unsigned char>(1, 1, 4, nullptr)));
    deleteTexture(tex);
    deleteTexture(srgbTex);
    deleteTexture(other);
}

TEST_F(TextureTest, UnpackAlignmentRule) {
    setUnpackAlignment(5, 3);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 1);
    setUnpackAlignment(4, 3);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);
    setUnpackAlignment(3, 2);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 1);
    setUnpackAlignment(7, 4);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);
}

}  // namespace
