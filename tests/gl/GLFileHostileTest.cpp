// Files and framebuffers that lie: PKM headers that claim more than the file
// holds, noise images with too few channels, and framebuffers whose rows GL
// pads or whose format GL will not read back as it stands.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "ScratchDirectory.h"
#include "pmGL.h"
#include "pmGLUtil.h"
#include "pmStb.h"

using namespace pmGL;

namespace {

// The width every noise image of this test program has: the gradient's row
// stride is fixed by the first noise image the process accepts.
constexpr int NOISE_WIDTH = 6;
constexpr int NOISE_HEIGHT = 5;

void writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::uint8_t> pkmHeader(int extendedWidth, int extendedHeight, int width, int height) {
    std::vector<std::uint8_t> header = {'P', 'K', 'M', ' ', '2', '0', 0, 1};
    for (int value : {extendedWidth, extendedHeight, width, height}) {
        header.push_back(static_cast<std::uint8_t>(value >> 8));
        header.push_back(static_cast<std::uint8_t>(value & 0xFF));
    }
    return header;
}

std::vector<std::uint8_t> pattern(std::size_t count, int seed) {
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>((i * 29 + seed * 13 + 7) % 251);
    }
    return bytes;
}

class GLFileHostileTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(scratch.created());
    }
    std::string path(const std::string& name) const { return scratch.file(name); }

    // A framebuffer of one 8-bit colour texture of `channel` channels.
    void createFrameBufferOf(FrameBuffer& fb, int width, int height, int channel,
                             std::vector<std::uint8_t>& pixels) {
        TextureOpts opts;
        opts.linear = true;
        opts.mipmap = false;
        const ImageData<unsigned char> image(width, height, channel, pixels.data());
        createFrameBuffer(fb, image, opts, 1, false, false, 0);
        ASSERT_TRUE(isExist(fb));
    }

    ScratchDirectory scratch{"pixmora-hostile"};
};

// ---- PKM

TEST_F(GLFileHostileTest, PkmHeaderClaimingTheLargestSizeAllocatesNothing) {
    std::vector<std::uint8_t> file = pkmHeader(65535, 65535, 65535, 65535);
    file.resize(80, 0x55);
    writeFile(path("huge.pkm"), file);
    Texture tex;
    LogCapture log;
    EXPECT_FALSE(loadCompressedTexture(tex, path("huge.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                       GL_NEAREST));
    EXPECT_FALSE(isExist(tex));
    EXPECT_EQ(log.count("Invalid PKM size (65535 x 65535 in 65535 x 65535)."), 1) << log.dump();
}

TEST_F(GLFileHostileTest, PkmDataShorterThanItsHeaderLeavesTheTextureAsItWas) {
    // A 64 x 64 RGBA8 ETC2 texture needs 4096 bytes; ten are there.
    std::vector<std::uint8_t> file = pkmHeader(64, 64, 64, 64);
    file.resize(file.size() + 10, 0x11);
    writeFile(path("short.pkm"), file);
    Texture tex;
    std::vector<std::uint8_t> rgba(4 * 4 * 4, 200);
    createTexture(tex, ImageData<unsigned char>(4, 4, 4, rgba.data()), TextureOpts());
    const unsigned id = tex.id;
    LogCapture log;
    EXPECT_FALSE(loadCompressedTexture(tex, path("short.pkm"), GL_COMPRESSED_RGBA8_ETC2_EAC,
                                       GL_REPEAT, GL_NEAREST));
    EXPECT_EQ(tex.id, id);
    EXPECT_EQ(tex.width, 4);
    EXPECT_EQ(log.countEndingWith("> Truncated PKM data (4096 bytes expected).\n"), 1)
        << log.dump();
    deleteTexture(tex);
}

TEST_F(GLFileHostileTest, PkmFileShorterThanItsHeaderIsRefused) {
    writeFile(path("ten.pkm"), {'P', 'K', 'M', ' ', '2', '0', 0, 1, 0, 4});
    Texture tex;
    EXPECT_FALSE(loadCompressedTexture(tex, path("ten.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                       GL_NEAREST));
    EXPECT_FALSE(isExist(tex));
}

TEST_F(GLFileHostileTest, PkmSizesThatAreNotWholeBlocksAreRefused) {
    const std::array<std::array<int, 4>, 4> sizes = {{
        {4, 4, 0, 4},  // no width
        {4, 4, 5, 4},  // wider than its blocks
        {8, 4, 3, 4},  // a block more than the width needs
        {6, 4, 6, 4},  // not a whole number of blocks
    }};
    for (const auto& size : sizes) {
        std::vector<std::uint8_t> file = pkmHeader(size[0], size[1], size[2], size[3]);
        file.resize(file.size() + 64, 0);
        writeFile(path("odd.pkm"), file);
        Texture tex;
        LogCapture log;
        EXPECT_FALSE(loadCompressedTexture(tex, path("odd.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                           GL_NEAREST))
            << size[0] << " " << size[2];
        EXPECT_FALSE(isExist(tex));
        EXPECT_EQ(log.count("Invalid PKM size"), 1) << log.dump();
    }
}

// ---- Noise textures

TEST_F(GLFileHostileTest, NoiseFileOfFewerThanFourChannelsIsRefused) {
    for (int channel = 1; channel <= 3; ++channel) {
        std::vector<std::uint8_t> pixels = pattern(NOISE_WIDTH * NOISE_HEIGHT * channel, channel);
        const std::string file = path("height" + std::to_string(channel) + ".png");
        ASSERT_TRUE(pmStb::saveImage(
            file, ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, channel, pixels.data()),
            false));
        Texture tex;
        LogCapture log;
        EXPECT_FALSE(loadNoiseTexture(tex, file, glm::ivec2(16, 9))) << channel;
        EXPECT_FALSE(isExist(tex));
        EXPECT_EQ(log.count("Invalid noise image (6 x 5 x " + std::to_string(channel) + ")."), 1)
            << log.dump();
    }
}

TEST_F(GLFileHostileTest, RefusedNoiseImageDoesNotFixTheRowStride) {
    // Refused first: wider, and three channels.
    std::vector<std::uint8_t> rgb = pattern(9 * NOISE_HEIGHT * 3, 1);
    Texture tex;
    createNoiseTexture(tex, ImageData<unsigned char>(9, NOISE_HEIGHT, 3, rgb.data()),
                       glm::ivec2(1, 1));
    EXPECT_FALSE(isExist(tex));
    createNoiseTexture(tex, ImageData<unsigned char>(NOISE_WIDTH, -2, 4, rgb.data()),
                       glm::ivec2(1, 1));
    createNoiseTexture(tex, ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, 4, nullptr),
                       glm::ivec2(1, 1));
    EXPECT_FALSE(isExist(tex));

    // Height rises by 60 grey levels a column: with the image's own stride
    // every interior texel has the same horizontal difference.
    std::vector<std::uint8_t> rgba;
    for (int y = 0; y < NOISE_HEIGHT; ++y) {
        for (int x = 0; x < NOISE_WIDTH; ++x) {
            const auto value = static_cast<std::uint8_t>(10 + 40 * x);
            rgba.insert(rgba.end(), {value, value, value, 255});
        }
    }
    createNoiseTexture(tex, ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, 4, rgba.data()),
                       glm::ivec2(1, 1));
    ASSERT_TRUE(isExist(tex));
    const float b = -3.f * 80.f / 765.f;  // H(x - 1, y) - H(x + 1, y)
    const int expected = static_cast<int>((b + 0.5f) * 255.f);
    const std::vector<std::uint8_t> out = gltest::readTextureRGBA(tex.id, tex.width, tex.height);
    for (int y = 1; y < NOISE_HEIGHT - 1; ++y) {
        for (int x = 1; x < NOISE_WIDTH - 1; ++x) {
            const std::size_t i = (static_cast<std::size_t>(y) * NOISE_WIDTH + x) * 4;
            EXPECT_NEAR(out[i + 1], expected, 1) << x << "," << y;
            EXPECT_NEAR(out[i], 127, 1) << x << "," << y;
        }
    }
    deleteTexture(tex);
}

// ---- Read-back of framebuffers

// The image file's pixels, top row first.
std::vector<std::uint8_t> loadPixels(const std::string& file, int channel) {
    ImageData<unsigned char> image = pmStb::loadImage(file, false);
    EXPECT_EQ(image.channel, channel);
    std::vector<std::uint8_t> pixels(image.data, image.data + image.getCount());
    pmUtil::deleteImageData(image);
    return pixels;
}

// The rows of a tightly packed image in reverse order.
std::vector<std::uint8_t> flipRows(const std::vector<std::uint8_t>& pixels, int width, int height,
                                   int channel) {
    std::vector<std::uint8_t> flipped;
    const std::size_t row = static_cast<std::size_t>(width) * channel;
    for (int y = height - 1; y >= 0; --y) {
        flipped.insert(flipped.end(), pixels.begin() + y * row, pixels.begin() + (y + 1) * row);
    }
    return flipped;
}

TEST_F(GLFileHostileTest, SaveFrameBufferOfRowsGLPadsKeepsEveryPixel) {
    // One channel, five wide: GL pads each row it reads to eight bytes.
    for (int channel : {1, 2, 3}) {
        std::vector<std::uint8_t> pixels = pattern(5 * 4 * channel, channel);
        FrameBuffer fb;
        createFrameBufferOf(fb, 5, 4, channel, pixels);
        const std::string file = path("fb" + std::to_string(channel) + ".png");
        ASSERT_TRUE(saveFrameBuffer(fb, file)) << channel;
        // The texture's first row is GL's bottom row, saved last.
        EXPECT_EQ(loadPixels(file, channel), flipRows(pixels, 5, 4, channel)) << channel;
        deleteFrameBuffer(fb);
    }
}

TEST_F(GLFileHostileTest, FrameBufferStreamOfRowsGLPadsKeepsEveryPixel) {
    std::vector<std::uint8_t> grey = pattern(5 * 4, 3);
    std::vector<std::uint8_t> rgb = pattern(5 * 4 * 3, 4);
    FrameBuffer greyFb;
    FrameBuffer rgbFb;
    createFrameBufferOf(greyFb, 5, 4, 1, grey);
    createFrameBufferOf(rgbFb, 5, 4, 3, rgb);
    {
        std::ofstream out(path("fb.bin"), std::ios::binary);
        EXPECT_TRUE(writeFrameBufferToStream(out, greyFb, ".raw"));
        EXPECT_TRUE(writeFrameBufferToStream(out, rgbFb, ".png"));
    }
    std::ifstream in(path("fb.bin"), std::ios::binary);
    ImageData<unsigned char> first = pmStb::readImage(in);
    ImageData<unsigned char> second = pmStb::readImage(in);
    ASSERT_NE(first.data, nullptr);
    ASSERT_NE(second.data, nullptr);
    EXPECT_EQ(std::vector<std::uint8_t>(first.data, first.data + first.getCount()), grey);
    EXPECT_EQ(std::vector<std::uint8_t>(second.data, second.data + second.getCount()), rgb);
    pmUtil::deleteImageData(first);
    pmUtil::deleteImageData(second);
    deleteFrameBuffer(greyFb);
    deleteFrameBuffer(rgbFb);
}

}  // namespace

namespace {

// Columns of `left` up to x = 2 and of `right` from x = 3: the horizontal
// difference at x = 2 and 3 is the whole height range.
std::vector<std::uint8_t> stepImage(std::uint8_t left, std::uint8_t right) {
    std::vector<std::uint8_t> rgba;
    for (int y = 0; y < NOISE_HEIGHT; ++y) {
        for (int x = 0; x < NOISE_WIDTH; ++x) {
            const std::uint8_t value = x <= 2 ? left : right;
            rgba.insert(rgba.end(), {value, value, value, 255});
        }
    }
    return rgba;
}

TEST_F(GLFileHostileTest, NoiseOfASteepStepIsHeldAtTheEndsOfAByte) {
    // (1 + 0.5) x 255 and (-1 + 0.5) x 255 lie outside a byte.
    const std::pair<std::vector<std::uint8_t>, int> cases[] = {{stepImage(255, 0), 255},
                                                               {stepImage(0, 255), 0}};
    for (const auto& [pixels, expected] : cases) {
        std::vector<std::uint8_t> copy = pixels;
        Texture tex;
        createNoiseTexture(tex, ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, 4, copy.data()),
                           glm::ivec2(1, 1));
        ASSERT_TRUE(isExist(tex));
        const std::vector<std::uint8_t> out =
            gltest::readTextureRGBA(tex.id, tex.width, tex.height);
        for (int y = 1; y < NOISE_HEIGHT - 1; ++y) {
            for (int x : {2, 3}) {
                const std::size_t i = (static_cast<std::size_t>(y) * NOISE_WIDTH + x) * 4;
                EXPECT_EQ(out[i + 1], expected) << x << "," << y;
            }
        }
        deleteTexture(tex);
    }
}

}  // namespace
