// Textures and framebuffers to and from files: image loading and saving,
// framebuffer streams, gradient (noise) textures and PKM compressed textures.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
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
using gltest::getInteger;
using gltest::getTexParameter;

namespace {

// Every noise image of the test program has this width: the gradient's row
// stride is fixed by the first noise image of the process.
constexpr int NOISE_WIDTH = 6;
constexpr int NOISE_HEIGHT = 5;

std::vector<std::uint8_t> makePixels(int width, int height, int channel, int seed) {
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < width * height * channel; ++i) {
        pixels.push_back(static_cast<std::uint8_t>((i * 37 + seed * 11) % 256));
    }
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

std::vector<std::uint8_t> readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::uint8_t> readColor(FrameBuffer& fb, unsigned index) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(fb.width) * fb.height * 4);
    ImageData<unsigned char> image(fb.width, fb.height, 4, pixels.data());
    readFrameBuffer(fb, image, index);
    return pixels;
}

class GLFileTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(scratch.created());
    }
    std::string path(const std::string& name) const { return scratch.file(name); }

    // A framebuffer of `count` RGBA8 colour textures holding `pixels`.
    void createRGBA(FrameBuffer& fb, int width, int height, int count,
                    std::vector<std::uint8_t>& pixels) {
        const ImageData<unsigned char> image(width, height, 4, pixels.data());
        createFrameBuffer(fb, image, TextureOpts(), count, false, false, 0);
        ASSERT_TRUE(isExist(fb));
    }

    // The texture drawn 1:1 over a target of its size, bottom row first.
    std::vector<std::uint8_t> drawn(const Texture& tex) {
        gl->resizeTarget(tex.width, tex.height);
        EXPECT_TRUE(gltest::drawTexture(tex, gltest::TEXTURE_FRAGMENT_SHADER));
        return gl->readTarget();
    }

    ScratchDirectory scratch{"pixmora-glfile"};
};

// ---- loadTexture

TEST_F(GLFileTest, LoadTextureOfAMissingFileLogsAndLeavesTheTexture) {
    std::vector<std::uint8_t> pixels = makePixels(2, 2, 4, 1);
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts());
    const Texture before = tex;
    LogCapture log;
    EXPECT_FALSE(loadTexture(tex, path("missing.png"), false, GL_REPEAT, GL_NEAREST, false));
    EXPECT_EQ(log.count("Fail to load " + path("missing.png") + "."), 1) << log.dump();
    EXPECT_EQ(tex.id, before.id);
    EXPECT_EQ(tex.width, 2);
    EXPECT_EQ(tex.height, 2);
    EXPECT_EQ(tex.opts.minFilter, before.opts.minFilter);
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 2, 2), pixels);
    deleteTexture(tex);
}

TEST_F(GLFileTest, LoadTextureMakesAnEightBitTextureWithTheGivenOptions) {
    std::vector<std::uint8_t> pixels = makePixels(3, 2, 4, 2);
    ASSERT_TRUE(
        pmStb::saveImage(path("in.png"), ImageData<unsigned char>(3, 2, 4, pixels.data()), false));
    Texture tex;
    ASSERT_TRUE(loadTexture(tex, path("in.png"), false, GL_MIRRORED_REPEAT, GL_NEAREST, false));
    ASSERT_TRUE(isExist(tex));
    EXPECT_EQ(tex.width, 3);
    EXPECT_EQ(tex.height, 2);
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_S), GL_MIRRORED_REPEAT);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_T), GL_MIRRORED_REPEAT);
    EXPECT_EQ(tex.opts.wrapR, GL_MIRRORED_REPEAT);
    // Unflipped, the file's first row is the texture's row 0.
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 3, 2), pixels);

    ASSERT_TRUE(loadTexture(tex, path("in.png"), true, GL_REPEAT, GL_LINEAR, true));
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 3, 2), flipRows(pixels, 3, 2, 4));
    EXPECT_TRUE(tex.opts.mipmap);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_S), GL_REPEAT);
    deleteTexture(tex);
}

TEST_F(GLFileTest, LoadTextureOfAnHdrFileMakesAFloatTexture) {
    std::vector<float> pixels = {0.25f, 0.5f, 1.0f, 0.125f, 0.75f, 0.5f};
    ASSERT_TRUE(
        pmStb::saveHdrImage(path("in.hdr"), ImageData<float>(2, 1, 3, pixels.data()), false));
    Texture tex;
    ASSERT_TRUE(loadTexture(tex, path("in.hdr"), false, GL_CLAMP_TO_EDGE, GL_NEAREST, false));
    EXPECT_EQ(tex.width, 2);
    EXPECT_EQ(tex.height, 1);
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_FLOAT));
    deleteTexture(tex);
    // Only a lower-case ".hdr" is decoded as floats.
    std::filesystem::copy_file(path("in.hdr"), path("in.HDR"));
    ASSERT_TRUE(loadTexture(tex, path("in.HDR"), false, GL_CLAMP_TO_EDGE, GL_NEAREST, false));
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    deleteTexture(tex);
}

// ---- saveFrameBuffer and saveTexture

TEST_F(GLFileTest, SaveFrameBufferOfAnEmptyFrameBufferReturnsFalse) {
    FrameBuffer fb;
    LogCapture log;
    EXPECT_FALSE(saveFrameBuffer(fb, path("empty.png")));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_FALSE(std::filesystem::exists(path("empty.png")));
}

TEST_F(GLFileTest, SaveFrameBufferWritesAnImageFileTopRowFirst) {
    std::vector<std::uint8_t> pixels = makePixels(4, 3, 4, 3);
    FrameBuffer fb;
    createRGBA(fb, 4, 3, 1, pixels);
    ASSERT_TRUE(saveFrameBuffer(fb, path("out.png")));
    ImageData<unsigned char> saved = pmStb::loadImage(path("out.png"), false);
    ASSERT_NE(saved.data, nullptr);
    EXPECT_EQ(saved.width, 4);
    EXPECT_EQ(saved.height, 3);
    EXPECT_EQ(saved.channel, 4);
    EXPECT_EQ(std::vector<std::uint8_t>(saved.data, saved.data + saved.getCount()),
              flipRows(pixels, 4, 3, 4));
    pmUtil::deleteImageData(saved);
    // The test's own framebuffer is bound again afterwards.
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    deleteFrameBuffer(fb);
}

TEST_F(GLFileTest, SaveFrameBufferOfFloatsWritesRawDataOrAnHdrFile) {
    std::vector<float> pixels;
    for (int i = 0; i < 3 * 2 * 4; ++i) pixels.push_back(static_cast<float>(i) / 8.f);
    FrameBuffer fb;
    TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    createFrameBuffer(fb, ImageData<float>(3, 2, 4, pixels.data()), opts, 1, false, false);
    ASSERT_TRUE(isExist(fb));
    ASSERT_EQ(fb.colorTex[0].opts.type, static_cast<unsigned>(GL_FLOAT));

    // Any extension but ".hdr": the floats as they stand, bottom row first.
    ASSERT_TRUE(saveFrameBuffer(fb, path("out.bin")));
    const std::vector<std::uint8_t> raw = readFile(path("out.bin"));
    ASSERT_EQ(raw.size(), pixels.size() * sizeof(float));
    EXPECT_EQ(std::memcmp(raw.data(), pixels.data(), raw.size()), 0);

    ASSERT_TRUE(saveFrameBuffer(fb, path("out.hdr")));
    ImageData<float> hdr = pmStb::loadHdrImage(path("out.hdr"), true);
    ASSERT_NE(hdr.data, nullptr);
    EXPECT_EQ(hdr.width, 3);
    EXPECT_EQ(hdr.height, 2);
    pmUtil::deleteImageData(hdr);

    // The extension is compared in lower case, so ".HDR" takes the HDR path,
    // whose writer accepts the lower-case extension only.
    LogCapture log;
    EXPECT_FALSE(saveFrameBuffer(fb, path("out.HDR")));
    EXPECT_EQ(log.count("Unsupported file extension (.HDR)."), 1) << log.dump();
    EXPECT_FALSE(std::filesystem::exists(path("out.HDR")));

    // A raw stream that does not open.
    EXPECT_FALSE(saveFrameBuffer(fb, path("no/such/dir/out.bin")));
    deleteFrameBuffer(fb);
}

TEST_F(GLFileTest, SaveFrameBufferOfAnotherTypeLogsAndReturnsFalse) {
    Texture tex;
    TextureOpts opts;
    opts.type = GL_HALF_FLOAT;
    opts.internalFormat = GL_RGBA16F;
    createTexture(tex, 2, 2, nullptr, opts);
    FrameBuffer fb;
    fb.width = 2;
    fb.height = 2;
    fb.colorTex.push_back(tex);
    glGenFramebuffers(1, &fb.id);
    LogCapture log;
    EXPECT_FALSE(saveFrameBuffer(fb, path("half.png")));
    EXPECT_EQ(log.countEndingWith("Invalid texture type."), 1) << log.dump();
    EXPECT_FALSE(std::filesystem::exists(path("half.png")));
    glDeleteFramebuffers(1, &fb.id);
    deleteTexture(tex);
}

TEST_F(GLFileTest, SaveTextureWritesTheTextureAndKeepsIt) {
    std::vector<std::uint8_t> pixels = makePixels(5, 2, 4, 4);
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(5, 2, 4, pixels.data()), TextureOpts());
    Texture none;
    EXPECT_FALSE(saveTexture(none, path("none.png")));
    EXPECT_FALSE(std::filesystem::exists(path("none.png")));

    ASSERT_TRUE(saveTexture(tex, path("tex.png")));
    ImageData<unsigned char> saved = pmStb::loadImage(path("tex.png"), true);
    ASSERT_NE(saved.data, nullptr);
    EXPECT_EQ(std::vector<std::uint8_t>(saved.data, saved.data + saved.getCount()), pixels);
    pmUtil::deleteImageData(saved);
    // The texture lives on, and the temporary framebuffer is gone.
    EXPECT_TRUE(glIsTexture(tex.id));
    EXPECT_EQ(gltest::readTextureRGBA(tex.id, 5, 2), pixels);
    EXPECT_EQ(getInteger(GL_FRAMEBUFFER_BINDING), static_cast<GLint>(gl->fbo));
    deleteTexture(tex);
}

// ---- framebuffer streams

TEST_F(GLFileTest, FrameBufferStreamHoldsOneRecordPerColourTexture) {
    std::vector<std::uint8_t> first = makePixels(4, 3, 4, 5);
    std::vector<std::uint8_t> second = makePixels(4, 3, 4, 6);
    FrameBuffer source;
    createRGBA(source, 4, 3, 2, first);
    updateFrameBuffer(source, ImageData<unsigned char>(4, 3, 4, second.data()), 1);
    {
        std::ofstream out(path("fb.bin"), std::ios::binary);
        EXPECT_TRUE(writeFrameBufferToStream(out, source, ".raw"));
    }
    // Two ".raw" records and nothing else.
    const std::size_t record = 8 + 4 + 3 * 4 + 4 * 3 * 4;
    EXPECT_EQ(readFile(path("fb.bin")).size(), 2 * record);

    std::vector<std::uint8_t> zeros(4 * 3 * 4, 0);
    FrameBuffer target;
    createRGBA(target, 4, 3, 2, zeros);
    {
        std::ifstream in(path("fb.bin"), std::ios::binary);
        EXPECT_TRUE(readFrameBufferFromStream(in, target));
    }
    EXPECT_EQ(readColor(target, 0), first);
    EXPECT_EQ(readColor(target, 1), second);

    // A packed format round-trips too when it is lossless.
    {
        std::ofstream out(path("fb.png.bin"), std::ios::binary);
        EXPECT_TRUE(writeFrameBufferToStream(out, source, ".png"));
    }
    FrameBuffer packed;
    createRGBA(packed, 4, 3, 2, zeros);
    {
        std::ifstream in(path("fb.png.bin"), std::ios::binary);
        EXPECT_TRUE(readFrameBufferFromStream(in, packed));
    }
    EXPECT_EQ(readColor(packed, 0), first);
    EXPECT_EQ(readColor(packed, 1), second);
    deleteFrameBuffer(packed);
    deleteFrameBuffer(target);
    deleteFrameBuffer(source);
}

TEST_F(GLFileTest, WriteFrameBufferToAClosedStreamReturnsFalse) {
    std::vector<std::uint8_t> pixels = makePixels(2, 2, 4, 7);
    FrameBuffer fb;
    createRGBA(fb, 2, 2, 1, pixels);
    std::ofstream closed;
    EXPECT_FALSE(writeFrameBufferToStream(closed, fb, ".raw"));
    deleteFrameBuffer(fb);
}

TEST_F(GLFileTest, ReadFrameBufferWithAnImageOfAnotherSizeKeepsThatAttachment) {
    std::vector<std::uint8_t> first = makePixels(4, 3, 4, 8);
    std::vector<std::uint8_t> second = makePixels(4, 3, 4, 9);
    FrameBuffer fb;
    createRGBA(fb, 4, 3, 2, first);
    updateFrameBuffer(fb, ImageData<unsigned char>(4, 3, 4, second.data()), 1);

    std::vector<std::uint8_t> small = makePixels(2, 2, 4, 10);
    std::vector<std::uint8_t> fitting = makePixels(4, 3, 4, 11);
    {
        std::ofstream out(path("mixed.bin"), std::ios::binary);
        ASSERT_TRUE(
            pmStb::writeImage(out, ImageData<unsigned char>(2, 2, 4, small.data()), ".raw"));
        ASSERT_TRUE(
            pmStb::writeImage(out, ImageData<unsigned char>(4, 3, 4, fitting.data()), ".raw"));
    }
    std::ifstream in(path("mixed.bin"), std::ios::binary);
    EXPECT_FALSE(readFrameBufferFromStream(in, fb));
    // The wrong record is skipped; the next one still lands in its attachment.
    EXPECT_EQ(readColor(fb, 0), first);
    EXPECT_EQ(readColor(fb, 1), fitting);
    deleteFrameBuffer(fb);
}

TEST_F(GLFileTest, ReadFrameBufferChecksEveryRecordAgainstTheFirstTexture) {
    std::vector<std::uint8_t> pixels = makePixels(2, 2, 4, 12);
    FrameBuffer fb;
    createRGBA(fb, 2, 2, 1, pixels);
    std::vector<std::uint8_t> rgb = makePixels(2, 2, 3, 13);
    {
        std::ofstream out(path("rgb.bin"), std::ios::binary);
        ASSERT_TRUE(pmStb::writeImage(out, ImageData<unsigned char>(2, 2, 3, rgb.data()), ".raw"));
    }
    std::ifstream in(path("rgb.bin"), std::ios::binary);
    EXPECT_FALSE(readFrameBufferFromStream(in, fb));
    EXPECT_EQ(readColor(fb, 0), pixels);
    deleteFrameBuffer(fb);
}

TEST_F(GLFileTest, ReadFrameBufferWithoutColourTexturesReadsNothing) {
    writeFile(path("any.bin"), {1, 2, 3, 4});
    std::ifstream in(path("any.bin"), std::ios::binary);
    FrameBuffer fb;
    EXPECT_TRUE(readFrameBufferFromStream(in, fb));
    EXPECT_EQ(in.tellg(), 0);
}

// ---- gradient (noise) textures

// A 4-channel height image of NOISE_WIDTH by NOISE_HEIGHT whose grey level is
// `grey(x, y)` with y counted from the image's first row.
template <typename Grey>
std::vector<std::uint8_t> heightImage(Grey grey) {
    std::vector<std::uint8_t> pixels;
    for (int y = 0; y < NOISE_HEIGHT; ++y) {
        for (int x = 0; x < NOISE_WIDTH; ++x) {
            const auto value = static_cast<std::uint8_t>(grey(x, y));
            pixels.insert(pixels.end(), {value, value, value, 255});
        }
    }
    return pixels;
}

TEST_F(GLFileTest, NoiseOfAFlatImageIsMidGreyEverywhere) {
    std::vector<std::uint8_t> pixels = heightImage([](int, int) { return 90; });
    Texture tex;
    createNoiseTexture(tex, ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, 4, pixels.data()),
                       glm::ivec2(16, 9));
    ASSERT_TRUE(isExist(tex));
    EXPECT_EQ(tex.width, NOISE_WIDTH);
    EXPECT_EQ(tex.height, NOISE_HEIGHT);
    EXPECT_EQ(tex.opts.internalFormat, GL_RGB8);
    EXPECT_TRUE(tex.opts.mipmap);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    const std::vector<std::uint8_t> rgba = gltest::readTextureRGBA(tex.id, tex.width, tex.height);
    for (std::size_t i = 0; i < rgba.size(); i += 4) {
        EXPECT_EQ(rgba[i], 127) << "texel " << i / 4;
        EXPECT_EQ(rgba[i + 1], 127) << "texel " << i / 4;
        EXPECT_EQ(rgba[i + 2], 0) << "texel " << i / 4;
    }
    deleteTexture(tex);
}

// The red and green bytes of the texture, bottom row first.
std::vector<std::array<int, 2>> noiseOf(const std::vector<std::uint8_t>& pixels, glm::ivec2 ratio) {
    Texture tex;
    std::vector<std::uint8_t> copy = pixels;
    createNoiseTexture(tex, ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, 4, copy.data()),
                       ratio);
    const std::vector<std::uint8_t> rgba = gltest::readTextureRGBA(tex.id, tex.width, tex.height);
    deleteTexture(tex);
    std::vector<std::array<int, 2>> rg;
    for (std::size_t i = 0; i < rgba.size(); i += 4) rg.push_back({rgba[i], rgba[i + 1]});
    return rg;
}

TEST_F(GLFileTest, NoiseScalesTheDifferenceAcrossTheShorterSide) {
    // Height rises by 30 grey levels a column and falls by 15 a row of the
    // image, so in GL's bottom-up rows it rises by 15 a row.
    std::vector<std::uint8_t> pixels =
        heightImage([](int x, int y) { return 30 + 30 * x + 15 * (NOISE_HEIGHT - 1 - y); });
    const float k = 0.0013071896f;
    const float a = 3.f * 30.f * k;   // H(x, y + 1) - H(x, y - 1)
    const float b = -3.f * 60.f * k;  // H(x - 1, y) - H(x + 1, y)
    const auto byteOf = [](float value) { return static_cast<int>((value + 0.5f) * 255.f); };

    const auto square = noiseOf(pixels, glm::ivec2(4, 4));
    const auto wide = noiseOf(pixels, glm::ivec2(16, 9));
    const auto tall = noiseOf(pixels, glm::ivec2(9, 16));
    for (int y = 0; y < NOISE_HEIGHT; ++y) {
        for (int x = 0; x < NOISE_WIDTH; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * NOISE_WIDTH + x;
            const bool interior = x > 0 && y > 0 && x < NOISE_WIDTH - 1 && y < NOISE_HEIGHT - 1;
            if (!interior) {
                EXPECT_EQ(square[i], (std::array<int, 2>{127, 127}));
                EXPECT_EQ(wide[i], (std::array<int, 2>{127, 127}));
                EXPECT_EQ(tall[i], (std::array<int, 2>{127, 127}));
                continue;
            }
            EXPECT_NEAR(square[i][0], byteOf(a), 1) << x << "," << y;
            EXPECT_NEAR(square[i][1], byteOf(b), 1) << x << "," << y;
            // (16, 9): plane A is scaled, plane B is not.
            EXPECT_NEAR(wide[i][0], byteOf(a * 0.5625f), 1) << x << "," << y;
            EXPECT_EQ(wide[i][1], square[i][1]) << x << "," << y;
            // (9, 16): plane B is scaled, plane A is not.
            EXPECT_EQ(tall[i][0], square[i][0]) << x << "," << y;
            EXPECT_NEAR(tall[i][1], byteOf(b * 0.5625f), 1) << x << "," << y;
        }
    }
    EXPECT_NE(wide[NOISE_WIDTH + 1][0], square[NOISE_WIDTH + 1][0]);
    EXPECT_NE(tall[NOISE_WIDTH + 1][1], square[NOISE_WIDTH + 1][1]);
}

TEST_F(GLFileTest, LoadNoiseTextureReadsTheImageFile) {
    Texture tex;
    EXPECT_FALSE(loadNoiseTexture(tex, path("missing.png"), glm::ivec2(1, 1)));
    EXPECT_FALSE(isExist(tex));

    std::vector<std::uint8_t> pixels = heightImage([](int, int) { return 200; });
    ASSERT_TRUE(pmStb::saveImage(
        path("height.png"), ImageData<unsigned char>(NOISE_WIDTH, NOISE_HEIGHT, 4, pixels.data()),
        false));
    ASSERT_TRUE(loadNoiseTexture(tex, path("height.png"), glm::ivec2(1, 1)));
    EXPECT_EQ(tex.width, NOISE_WIDTH);
    const std::vector<std::uint8_t> rgba = gltest::readTextureRGBA(tex.id, tex.width, tex.height);
    EXPECT_EQ((std::vector<std::uint8_t>(rgba.begin(), rgba.begin() + 3)),
              (std::vector<std::uint8_t>{127, 127, 0}));
    deleteTexture(tex);
}

// ---- PKM compressed textures

// An ETC2 RGB block in individual mode with both halves of base colour
// (12, 3, 7) in 4 bits, modifier table 0 and every texel index 0 (+2): it
// decodes to (12 * 17 + 2, 3 * 17 + 2, 7 * 17 + 2) everywhere.
const std::array<std::uint8_t, 8> ETC_BLOCK = {0xCC, 0x33, 0x77, 0x00, 0, 0, 0, 0};
const std::array<std::uint8_t, 4> ETC_COLOUR = {206, 53, 121, 255};

// An EAC alpha block of base 128 with multiplier 0: alpha 128 everywhere.
const std::array<std::uint8_t, 8> EAC_ALPHA_BLOCK = {0x80, 0x00, 0, 0, 0, 0, 0, 0};

std::vector<std::uint8_t> pkmHeader(int extendedWidth, int extendedHeight, int width, int height) {
    const auto hi = [](int v) { return static_cast<std::uint8_t>(v >> 8); };
    const auto lo = [](int v) { return static_cast<std::uint8_t>(v & 0xFF); };
    return {'P',
            'K',
            'M',
            ' ',
            '2',
            '0',
            0,
            1,
            hi(extendedWidth),
            lo(extendedWidth),
            hi(extendedHeight),
            lo(extendedHeight),
            hi(width),
            lo(width),
            hi(height),
            lo(height)};
}

TEST_F(GLFileTest, PkmFileLoadsIntoACompressedTexture) {
    // 3 by 3 texels stored in one 4 by 4 block.
    std::vector<std::uint8_t> file = pkmHeader(4, 4, 3, 3);
    file.insert(file.end(), ETC_BLOCK.begin(), ETC_BLOCK.end());
    writeFile(path("block.pkm"), file);

    Texture tex;
    LogCapture log;
    ASSERT_TRUE(loadCompressedTexture(tex, path("block.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                      GL_NEAREST));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(tex));
    EXPECT_EQ(tex.width, 3);
    EXPECT_EQ(tex.height, 3);
    EXPECT_EQ(tex.opts.target, static_cast<unsigned>(GL_TEXTURE_2D));
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(tex.opts.internalFormat, GL_COMPRESSED_RGB8_ETC2);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGBA));
    EXPECT_FALSE(tex.opts.mipmap);
    EXPECT_TRUE(tex.opts.linear);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_S), GL_REPEAT);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_T), GL_REPEAT);
    EXPECT_EQ(tex.opts.wrapR, GL_REPEAT);
    const std::vector<std::uint8_t> rgba = drawn(tex);
    ASSERT_EQ(rgba.size(), 3u * 3u * 4u);
    for (std::size_t i = 0; i < rgba.size(); i += 4) {
        EXPECT_EQ((std::array<std::uint8_t, 4>{rgba[i], rgba[i + 1], rgba[i + 2], rgba[i + 3]}),
                  ETC_COLOUR)
            << "texel " << i / 4;
    }
    deleteTexture(tex);
}

TEST_F(GLFileTest, PkmEightBitFormatsReadAByteAPixel) {
    // RGBA8 ETC2 EAC: an alpha block, then a colour block, 16 bytes for 4x4.
    std::vector<std::uint8_t> file = pkmHeader(4, 4, 4, 4);
    file.insert(file.end(), EAC_ALPHA_BLOCK.begin(), EAC_ALPHA_BLOCK.end());
    file.insert(file.end(), ETC_BLOCK.begin(), ETC_BLOCK.end());
    writeFile(path("alpha.pkm"), file);

    TextureOpts opts;
    opts.internalFormat = GL_COMPRESSED_RGBA8_ETC2_EAC;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    Texture tex;
    LogCapture log;
    ASSERT_TRUE(loadCompressedTexture(tex, path("alpha.pkm"), opts));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(tex));
    glDisable(GL_BLEND);
    const std::vector<std::uint8_t> rgba = drawn(tex);
    for (std::size_t i = 0; i < rgba.size(); i += 4) {
        EXPECT_EQ((std::array<std::uint8_t, 4>{rgba[i], rgba[i + 1], rgba[i + 2], rgba[i + 3]}),
                  (std::array<std::uint8_t, 4>{206, 53, 121, 128}))
            << "texel " << i / 4;
    }
    deleteTexture(tex);
}

TEST_F(GLFileTest, PkmFileThatIsMissingOrNotPkmLeavesTheTexture) {
    std::vector<std::uint8_t> pixels = makePixels(2, 2, 4, 14);
    Texture tex;
    createTexture(tex, ImageData<unsigned char>(2, 2, 4, pixels.data()), TextureOpts());
    const unsigned id = tex.id;
    EXPECT_FALSE(loadCompressedTexture(tex, path("missing.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                       GL_NEAREST));
    std::vector<std::uint8_t> file = pkmHeader(4, 4, 4, 4);
    file[3] = '1';
    file.insert(file.end(), ETC_BLOCK.begin(), ETC_BLOCK.end());
    writeFile(path("bad.pkm"), file);
    EXPECT_FALSE(loadCompressedTexture(tex, path("bad.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                       GL_NEAREST));
    EXPECT_EQ(tex.id, id);
    EXPECT_EQ(tex.width, 2);
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    deleteTexture(tex);
}

TEST_F(GLFileTest, PkmFileThatIsShortIsRefused) {
    // The header promises a 4x4 block; half of it is there.
    std::vector<std::uint8_t> file = pkmHeader(4, 4, 4, 4);
    file.insert(file.end(), ETC_BLOCK.begin(), ETC_BLOCK.begin() + 4);
    writeFile(path("short.pkm"), file);
    Texture tex;
    LogCapture log;
    EXPECT_FALSE(loadCompressedTexture(tex, path("short.pkm"), GL_COMPRESSED_RGB8_ETC2, GL_REPEAT,
                                       GL_NEAREST));
    EXPECT_FALSE(isExist(tex));
    EXPECT_EQ(log.countEndingWith("> Truncated PKM data (8 bytes expected).\n"), 1) << log.dump();
}

}  // namespace
