// Further 2D texture forms: float images, resizing, compressed data, and the
// formats an image's channel count and `linear` flag give.
#include <gtest/gtest.h>

#include <GLES3/gl31.h>

#include <algorithm>
#include <array>
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

GLint levelParameter(const Texture& tex, GLenum name) {
    GLint value = 0;
    glBindTexture(tex.opts.target, tex.id);
    glGetTexLevelParameteriv(tex.opts.target, 0, name, &value);
    glBindTexture(tex.opts.target, 0);
    return value;
}

class TextureStorageTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        resetGLCallCounts();
    }

    // The texture drawn 1:1 over a target of its size, bottom row first.
    std::vector<std::uint8_t> drawn(const Texture& tex) {
        gl->resizeTarget(tex.width, tex.height);
        EXPECT_TRUE(gltest::drawTexture(tex, gltest::TEXTURE_FRAGMENT_SHADER));
        return gl->readTarget();
    }
};

TEST_F(TextureStorageTest, FloatImageMakesAHalfFloatTexture) {
    std::vector<float> pixels;
    for (int i = 0; i < 2 * 2 * 4; ++i) pixels.push_back(static_cast<float>(i) / 15.f);
    TextureOpts opts;
    opts.target = GL_TEXTURE_CUBE_MAP;  // an image always makes a 2D texture
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    opts.linear = false;  // no sRGB step for float data
    Texture tex;
    LogCapture log;
    createTexture(tex, ImageData<float>(2, 2, 4, pixels.data()), opts);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(tex));
    EXPECT_EQ(tex.opts.target, static_cast<unsigned>(GL_TEXTURE_2D));
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_FLOAT));
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA16F);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGBA));
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA16F);
    const std::vector<std::uint8_t> sampled = drawn(tex);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        EXPECT_NEAR(sampled[i], pixels[i] * 255.f, 1.0) << "byte " << i;
    }
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, FloatImagesOfFewerChannels) {
    std::vector<float> pixels(3 * 1 * 3, 0.5f);
    Texture tex;
    createTexture(tex, ImageData<float>(3, 1, 3, pixels.data()), TextureOpts());
    EXPECT_EQ(tex.opts.internalFormat, GL_RGB16F);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGB));
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 4);  // 3 texels of 12 bytes
    createTexture(tex, ImageData<float>(3, 1, 1, pixels.data()), TextureOpts());
    EXPECT_EQ(tex.opts.internalFormat, GL_R16F);
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_INTERNAL_FORMAT), GL_R16F);
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, ByteImageFormatsFollowChannelsAndLinear) {
    TextureOpts srgb;
    srgb.linear = false;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(2, 2, 3, nullptr), srgb);
    EXPECT_EQ(tex.opts.internalFormat, GL_SRGB8);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGB));
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_INTERNAL_FORMAT), GL_SRGB8);
    createTexture(tex, ImageData<unsigned char>(2, 2, 3, nullptr), TextureOpts());
    EXPECT_EQ(tex.opts.internalFormat, GL_RGB8);
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_INTERNAL_FORMAT), GL_RGB8);
    createTexture(tex, ImageData<unsigned char>(2, 2, 1, nullptr), srgb);
    EXPECT_EQ(tex.opts.internalFormat, GL_R8);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RED));
    EXPECT_EQ(getTextureFormat(4, GL_FLOAT), static_cast<unsigned>(GL_RGBA));
    EXPECT_EQ(getTextureInternalFormat(4, GL_FLOAT), static_cast<unsigned>(GL_RGBA16F));
    TextureOpts floatOpts;
    floatOpts.format = GL_RGBA;
    floatOpts.type = GL_FLOAT;
    EXPECT_EQ(getTexelSize(floatOpts), 16);
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, ResizeKeepsNameAndFormatsAndDropsTheContents) {
    std::vector<std::uint8_t> pixels(4 * 4 * 3, 200);
    TextureOpts opts;
    opts.linear = false;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(4, 4, 3, pixels.data()), opts);
    const Texture before = tex;
    const std::uint8_t oldRed = drawn(tex)[0];
    LogCapture log;
    resizeTexture(tex, 5, 3);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(tex.id, before.id);
    EXPECT_EQ(tex.width, 5);
    EXPECT_EQ(tex.height, 3);
    EXPECT_EQ(tex.opts.internalFormat, GL_SRGB8);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGB));
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_WIDTH), 5);
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_HEIGHT), 3);
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_INTERNAL_FORMAT), GL_SRGB8);
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 1);  // 5 texels of 3 bytes
    EXPECT_EQ(getInteger(GL_TEXTURE_BINDING_2D), 0);
    EXPECT_NE(drawn(tex)[0], oldRed) << "the old contents survived";
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, ResizeDoesNotRebuildMipmaps) {
    std::vector<std::uint8_t> pixels = makeTestPixels(4, 4, 4);
    TextureOpts opts;
    opts.mipmap = true;
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(4, 4, 4, pixels.data()), opts);
    resetGLCallCounts();
    resizeTexture(tex, 8, 8);
    EXPECT_EQ(glCallCounts().generateMipmap, 0);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 8, 8).size(), 8u * 8u * 4u);
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, ResizeBelowOneLogsAndLeavesAll) {
    Texture tex;
    createTexture(tex, 2, 3, nullptr, TextureOpts());
    LogCapture log;
    resizeTexture(tex, 0, 3);
    resizeTexture(tex, 2, -4);
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (0, 3)."), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (2, -4)."), 1);
    EXPECT_EQ(tex.width, 2);
    EXPECT_EQ(tex.height, 3);
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_WIDTH), 2);
    deleteTexture(tex);
}

// ETC2 RGB8 in individual mode: a 4x4 block as two 2x4 halves side by side
// (flip bit 0), each with a 4-bit base colour and a modifier table; every
// texel picks one of the table's four modifiers by a 2-bit index.
struct Etc2Half {
    std::array<int, 3> base4;  // 0..15 per channel
    int table;                 // 0..7
};

constexpr int MODIFIERS[8][2] = {{2, 8},   {5, 17},  {9, 29},   {13, 42},
                                 {18, 60}, {24, 80}, {33, 106}, {47, 183}};

// Index values 0..3 stand for +small, +large, -small, -large.
int modifierOf(int table, int index) {
    const int magnitude = MODIFIERS[table][index & 1];
    return (index & 2) ? -magnitude : magnitude;
}

int texelIndex(int x, int y) {
    return (x + 2 * y) % 4;
}

std::array<std::uint8_t, 8> encodeIndividualBlock(const Etc2Half& left, const Etc2Half& right) {
    std::array<std::uint8_t, 8> block{};
    for (int c = 0; c < 3; ++c) {
        block[c] = static_cast<std::uint8_t>(left.base4[c] << 4 | right.base4[c]);
    }
    block[3] = static_cast<std::uint8_t>(left.table << 5 | right.table << 2);  // diff 0, flip 0
    std::uint32_t indices = 0;
    for (int x = 0; x < 4; ++x) {
        for (int y = 0; y < 4; ++y) {
            const int bit = x * 4 + y;
            const std::uint32_t index = static_cast<std::uint32_t>(texelIndex(x, y));
            indices |= (index >> 1) << (bit + 16) | (index & 1) << bit;
        }
    }
    for (int i = 0; i < 4; ++i) block[4 + i] = static_cast<std::uint8_t>(indices >> (24 - 8 * i));
    return block;
}

// What the block should decode to, as RGBA rows with the block's first row
// first, which is also the first row GL stores.
std::vector<std::uint8_t> expectedDecoding(const Etc2Half& left, const Etc2Half& right) {
    std::vector<std::uint8_t> rgba;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            const Etc2Half& half = x < 2 ? left : right;
            const int modifier = modifierOf(half.table, texelIndex(x, y));
            for (int c = 0; c < 3; ++c) {
                const int base8 = half.base4[c] * 17;
                rgba.push_back(static_cast<std::uint8_t>(std::clamp(base8 + modifier, 0, 255)));
            }
            rgba.push_back(255);
        }
    }
    return rgba;
}

TextureOpts etc2Opts() {
    TextureOpts opts;
    opts.internalFormat = GL_COMPRESSED_RGB8_ETC2;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    opts.wrapS = GL_REPEAT;
    opts.wrapT = GL_MIRRORED_REPEAT;
    return opts;
}

TEST_F(TextureStorageTest, CompressedEtc2BlockDecodesToItsColours) {
    const Etc2Half left{{12, 3, 7}, 1};
    const Etc2Half right{{1, 15, 9}, 4};
    std::array<std::uint8_t, 8> block = encodeIndividualBlock(left, right);
    Texture tex;
    LogCapture log;
    createCompressedTexture(tex, 4, 4, static_cast<int>(block.size()), block.data(), etc2Opts());
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(tex));
    EXPECT_EQ(tex.width, 4);
    EXPECT_EQ(tex.height, 4);
    EXPECT_EQ(tex.opts.internalFormat, GL_COMPRESSED_RGB8_ETC2);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_S), GL_REPEAT);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_T), GL_MIRRORED_REPEAT);
    EXPECT_EQ(levelParameter(tex, GL_TEXTURE_COMPRESSED), GL_TRUE);
    EXPECT_EQ(getInteger(GL_TEXTURE_BINDING_2D), 0);
    EXPECT_EQ(glCallCounts().generateMipmap, 0);
    EXPECT_EQ(drawn(tex), expectedDecoding(left, right));
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, CompressedCreationDeletesTheOldTextureAndMakesNoMipmaps) {
    std::array<std::uint8_t, 8> block = encodeIndividualBlock({{0, 0, 0}, 0}, {{15, 15, 15}, 0});
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    const unsigned old = tex.id;
    TextureOpts opts = etc2Opts();
    opts.mipmap = true;  // not acted on
    createCompressedTexture(tex, 4, 4, 8, block.data(), opts);
    EXPECT_FALSE(glIsTexture(old));
    EXPECT_TRUE(glIsTexture(tex.id));
    EXPECT_EQ(tex.opts.minFilter, GL_NEAREST);
    EXPECT_EQ(glCallCounts().generateMipmap, 0);
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, CompressedSizeBelowOneLogsAndReturns) {
    std::array<std::uint8_t, 8> block{};
    Texture tex;
    createTexture(tex, 2, 2, nullptr, TextureOpts());
    const unsigned id = tex.id;
    LogCapture log;
    createCompressedTexture(tex, 4, 0, 8, block.data(), etc2Opts());
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (4, 0)."), 1) << log.dump();
    EXPECT_EQ(tex.id, id);
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    deleteTexture(tex);
}

TEST_F(TextureStorageTest, CompressedDataOfTheWrongSizeIsReportedByGL) {
    std::array<std::uint8_t, 8> block{};
    Texture tex;
    LogCapture log;
    createCompressedTexture(tex, 4, 4, 7, block.data(), etc2Opts());
    EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_VALUE\n"), 1) << log.dump();
    deleteTexture(tex);
}

}  // namespace
