// The dithering passes drawn into the test's own framebuffer: RandomDithering
// against its formula and the statistics of its random shift, PatternDithering
// against the Bayer table, its tiling in window pixels and its alpha variant.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmDraw.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

const int bayer[8][8] = {
    {0, 32, 8, 40, 2, 34, 10, 42},  {48, 16, 56, 24, 50, 18, 58, 26},
    {12, 44, 4, 36, 14, 46, 6, 38}, {60, 28, 52, 20, 62, 30, 54, 22},
    {3, 35, 11, 43, 1, 33, 9, 41},  {51, 19, 59, 27, 49, 17, 57, 25},
    {15, 47, 7, 39, 13, 45, 5, 37}, {63, 31, 55, 23, 61, 29, 53, 21},
};

Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height, int channels = 4) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmUtil::ImageData<unsigned char> image(width, height, channels, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

Texture makeSolidTexture(int width, int height, uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        pixels[i] = r;
        pixels[i + 1] = g;
        pixels[i + 2] = b;
        pixels[i + 3] = a;
    }
    return makeTexture(pixels, width, height);
}

glm::vec4 texel(const std::vector<uint8_t>& pixels, int width, int x, int y) {
    const uint8_t* p = &pixels[(static_cast<size_t>(y) * width + x) * 4];
    return glm::vec4(p[0], p[1], p[2], p[3]) / 255.0f;
}

int toByte(float v) {
    return static_cast<int>(std::lround(std::min(std::max(v, 0.0f), 1.0f) * 255.0f));
}

int outAt(const std::vector<uint8_t>& out, int width, int x, int y, int c) {
    return out[(static_cast<size_t>(y) * width + x) * 4 + c];
}

// The shader's random value for a fragment coordinate, in single precision:
// fract(sin(mod(dot(uv, (12.9898, 78.233)), pi)) * 43758.5453).
float nrand(float x, float y) {
    const float dt = x * 12.9898f + y * 78.233f;
    const float pi = 3.141592653589793f;
    const float sn = dt - pi * std::floor(dt / pi);
    const float v = std::sin(sn) * 43758.5453f;
    return v - std::floor(v);
}

// RandomDithering's main on the CPU, before quantisation to bytes.
glm::vec4 randomDithering(glm::vec4 texColor, glm::vec4 color, glm::vec4 mixColor,
                          float alphaMultiplier, int x, int y) {
    glm::vec4 c = color * texColor;
    c = c * (1.0f - mixColor.a) + mixColor * mixColor.a;
    c.a *= alphaMultiplier;
    c.r *= c.a;
    c.g *= c.a;
    c.b *= c.a;
    const float shift = (nrand(x + 0.5f, y + 0.5f) - 0.5f) / 255.0f;
    return glm::vec4(c.r + shift, c.g + shift, c.b + shift, c.a);
}

// The plain pattern dither on the CPU at window pixel (x, y).
glm::vec4 patternDithering(glm::vec4 texColor, glm::vec4 color, float alpha, int x, int y) {
    glm::vec4 c = color * texColor;
    c.a = alpha;
    const float shift = bayer[y % 8][x % 8] / 255.0f / 32.0f - 1.0f / 128.0f;
    return glm::vec4(c.r * c.a + shift, c.g * c.a + shift, c.b * c.a + shift, c.a);
}

void expectNear(const std::vector<uint8_t>& out, int width, int x, int y, const glm::vec4& v,
                int tolerance) {
    for (int c = 0; c < 4; ++c) {
        EXPECT_NEAR(outAt(out, width, x, y, c), toByte(v[c]), tolerance)
            << "at " << x << "," << y << " channel " << c;
    }
}

// ---- RandomDithering

class RandomDitheringTest : public GLTest {};

TEST_F(RandomDitheringTest, InitializeLogsAndSetsColourAndAlphaButNoMixColour) {
    pmDraw::RandomDithering filter;
    LogCapture log;
    ASSERT_TRUE(filter.initialize());
    EXPECT_EQ(log.countEndingWith("> RandomDithering::initialize()"), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::initialize() end."), 1);
    EXPECT_EQ(log.countEndingWith("> ___super::initialize(fragmentShader) success."), 1);
    EXPECT_EQ(log.countEndingWith("> RandomDithering::initialize() will return true."), 1);
    EXPECT_EQ(log.lines().front().text.rfind("pmDrawFilter: initialize(", 0), 0u)
        << log.lines().front().text;
    EXPECT_NE(filter.program.id, 0u);
    EXPECT_NE(filter.vertexArray.id, 0u);
    EXPECT_EQ(filter.ud.vec4s["uColor"], glm::vec4(1.0f));
    EXPECT_FLOAT_EQ(filter.ud.floats["uAlphaMultiplier"], 1.0f);
    EXPECT_EQ(filter.ud.vec4s.count("uMixColor"), 0u);
    // The blend is left as the base sets it up: premultiplied source over.
    EXPECT_TRUE(filter.renderOpts.blend.enabled);

    filter.setColor(glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
    filter.setMixColor(glm::vec4(0.5f, 0.6f, 0.7f, 0.8f));
    EXPECT_EQ(filter.ud.vec4s["uColor"], glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(filter.ud.vec4s["uMixColor"], glm::vec4(0.5f, 0.6f, 0.7f, 0.8f));

    log.clear();
    pmDraw::deleteTextureFilter(filter);  // the virtual finalize
    EXPECT_EQ(log.countEndingWith("> RandomDithering::finalize()"), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::finalize()"), 1);
    EXPECT_EQ(log.countEndingWith("> RandomDithering::finalize() end."), 1);
    EXPECT_EQ(filter.program.id, 0u);
    EXPECT_EQ(filter.quad.id, 0u);
}

TEST_F(RandomDitheringTest, CreateThroughTheBaseShimRunsTheOverride) {
    pmDraw::RandomDithering filter;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createBaseFilter(filter));
    EXPECT_EQ(log.countEndingWith("> RandomDithering::initialize() will return true."), 1);
    pmDraw::deleteBaseFilter(filter);
    EXPECT_EQ(log.countEndingWith("> RandomDithering::finalize() end."), 1);
}

TEST_F(RandomDitheringTest, InitializeFailsWhenTheQuadAlreadyExists) {
    pmDraw::RandomDithering filter;
    pmDraw::setArea(filter, glm::vec2(0.0f), glm::vec2(1.0f));
    LogCapture log;
    EXPECT_FALSE(filter.initialize());
    EXPECT_EQ(log.countEndingWith("> ___super::initialize() failed."), 1);
    EXPECT_EQ(log.countEndingWith("> ___super::initialize(fragmentShader) failed."), 1);
    EXPECT_EQ(log.count("will return true"), 0);
    EXPECT_EQ(filter.ud.vec4s.count("uColor"), 0u);
    filter.finalize();
}

TEST_F(RandomDitheringTest, WhiteNoMixAlphaOneGivesTheInputWithinOneLevel) {
    const int w = 32, h = 32;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 31);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, w, h);
    pmDraw::RandomDithering filter;
    ASSERT_TRUE(filter.initialize());
    pmDraw::setTexture(filter, tex, 0.0f);
    pmDraw::runTextureFilter(filter);
    const std::vector<uint8_t> out = gl->readTarget();
    int largestShift = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c) {
                const int in = pixels[(static_cast<size_t>(y) * w + x) * 4 + c];
                largestShift = std::max(largestShift, std::abs(outAt(out, w, x, y, c) - in));
            }
            EXPECT_EQ(outAt(out, w, x, y, 3), 255) << "at " << x << "," << y;
        }
    }
    EXPECT_LE(largestShift, 1);
    pmGL::deleteTexture(tex);
}

TEST_F(RandomDitheringTest, MatchesCpuFormulaWithColourMixAndAlpha) {
    const int w = 32, h = 24;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 32);
    Texture tex = makeTexture(pixels, w, h);
    const glm::vec4 color(0.8f, 0.9f, 0.7f, 0.95f);
    const glm::vec4 mixColor(0.2f, 0.4f, 0.6f, 0.25f);
    const float alpha = 0.8f;
    pmDraw::RandomDithering filter;
    ASSERT_TRUE(filter.initialize());
    // Overwrite the target so the pass's own output is read back.
    pmGL::disableBlend(filter.renderOpts.blend);
    filter.setColor(color);
    filter.setMixColor(mixColor);
    pmDraw::setAlphaMultiplier(filter, alpha);
    pmDraw::setTexture(filter, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runTextureFilter(filter);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const glm::vec4 expected =
                randomDithering(texel(pixels, w, x, y), color, mixColor, alpha, x, y);
            expectNear(out, w, x, y, expected, 1);
        }
    }
    pmGL::deleteTexture(tex);
}

TEST_F(RandomDitheringTest, HalfRedMixColourGivesHalfInputHalfMixAlphaIncluded) {
    const int w = 16, h = 16;
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 33);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, w, h);
    pmDraw::RandomDithering filter;
    ASSERT_TRUE(filter.initialize());
    filter.setMixColor(glm::vec4(1.0f, 0.0f, 0.0f, 0.5f));
    pmDraw::setTexture(filter, tex, 0.0f);
    pmDraw::runTextureFilter(filter);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const glm::vec4 in = texel(pixels, w, x, y);
            // An opaque input ends at alpha (1 + 0.5) / 2 = 0.75, premultiplied.
            EXPECT_EQ(outAt(out, w, x, y, 3), toByte(0.75f)) << "at " << x << "," << y;
            EXPECT_NEAR(outAt(out, w, x, y, 0), toByte((in.r + 1.0f) * 0.5f * 0.75f), 1);
            EXPECT_NEAR(outAt(out, w, x, y, 1), toByte(in.g * 0.5f * 0.75f), 1);
            EXPECT_NEAR(outAt(out, w, x, y, 2), toByte(in.b * 0.5f * 0.75f), 1);
        }
    }
    pmGL::deleteTexture(tex);
}

// A float target shows what eight bits round away: the shift of a transparent
// pixel, which follows the premultiplication.
TEST_F(RandomDitheringTest, ZeroAlphaMultiplierGivesBlackAlphaZeroPlusTheShift) {
    const int w = 32, h = 32;
    GLuint target = 0, fbo = 0;
    glGenTextures(1, &target);
    glBindTexture(GL_TEXTURE_2D, target);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16F, w, h, 0, GL_RGBA, GL_HALF_FLOAT, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenFramebuffers(1, &fbo);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        glDeleteFramebuffers(1, &fbo);
        glDeleteTextures(1, &target);
        GTEST_SKIP() << "half-float targets are not renderable here";
    }
    glViewport(0, 0, w, h);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);

    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 34);
    Texture tex = makeTexture(pixels, w, h);
    pmDraw::RandomDithering filter;
    ASSERT_TRUE(filter.initialize());
    pmGL::disableBlend(filter.renderOpts.blend);
    pmDraw::setAlphaMultiplier(filter, 0.0f);
    pmDraw::setTexture(filter, tex, 0.0f);
    pmDraw::runTextureFilter(filter);
    std::vector<float> out(static_cast<size_t>(w) * h * 4);
    glReadPixels(0, 0, w, h, GL_RGBA, GL_FLOAT, out.data());
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    int positive = 0, negative = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float* p = &out[(static_cast<size_t>(y) * w + x) * 4];
            EXPECT_EQ(p[3], 0.0f) << "at " << x << "," << y;
            // One shift for the three channels, under half a level either way.
            EXPECT_EQ(p[0], p[1]);
            EXPECT_EQ(p[1], p[2]);
            EXPECT_LE(std::fabs(p[0]), 0.5f / 255.0f + 1e-5f) << "at " << x << "," << y;
            if (p[0] > 0.0f) ++positive;
            if (p[0] < 0.0f) ++negative;
        }
    }
    EXPECT_GT(positive, w * h / 4);
    EXPECT_GT(negative, w * h / 4);

    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    glViewport(0, 0, gl->width, gl->height);
    glDeleteFramebuffers(1, &fbo);
    glDeleteTextures(1, &target);
    pmGL::deleteTexture(tex);
}

// A value between two levels comes out as the lower or the upper level, in
// proportion to where it lies between them, so the mean is kept.
TEST_F(RandomDitheringTest, ValueBetweenTwoLevelsGivesBothLevelsInProportion) {
    const int w = 64, h = 64;
    gl->resizeTarget(w, h);
    Texture white = makeSolidTexture(8, 8, 255, 255, 255, 255);
    pmDraw::RandomDithering filter;
    ASSERT_TRUE(filter.initialize());
    pmDraw::setTexture(filter, white, 0.0f);
    for (const float fraction : {0.5f, 0.25f}) {
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        const float level = (100.0f + fraction) / 255.0f;
        filter.setColor(glm::vec4(level, level, level, 1.0f));
        pmDraw::runTextureFilter(filter);
        const std::vector<uint8_t> out = gl->readTarget();
        int upper = 0, other = 0;
        for (size_t i = 0; i < out.size(); i += 4) {
            if (out[i] == 101) {
                ++upper;
            } else if (out[i] != 100) {
                ++other;
            }
            EXPECT_EQ(out[i], out[i + 1]);
            EXPECT_EQ(out[i], out[i + 2]);
        }
        EXPECT_EQ(other, 0);
        // 4096 samples: the standard deviation of the share is below 0.008.
        const double share = static_cast<double>(upper) / (w * h);
        EXPECT_NEAR(share, fraction, 0.1) << "fraction " << fraction;
    }
    pmGL::deleteTexture(white);
}

// ---- PatternDithering

class PatternDitheringTest : public GLTest {};

TEST_F(PatternDitheringTest, CreateBuildsBothProgramsAndTheBayerPattern) {
    pmDraw::PatternDithering filter;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createDithering(filter));
    EXPECT_EQ(log.countEndingWith("> createDithering()"), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::initialize() end."), 1);
    EXPECT_EQ(log.countEndingWith("> createDithering() end."), 1);
    EXPECT_NE(filter.program.id, 0u);
    EXPECT_NE(filter.vertexArray.id, 0u);
    EXPECT_NE(filter.alphaProgram.id, 0u);
    EXPECT_NE(filter.alphaVertexArray.id, 0u);
    EXPECT_NE(filter.alphaProgram.id, filter.program.id);
    EXPECT_EQ(filter.activeProgram, nullptr);
    EXPECT_EQ(filter.activeVertexArray, nullptr);

    EXPECT_EQ(filter.pattern.width, 8);
    EXPECT_EQ(filter.pattern.height, 8);
    EXPECT_EQ(filter.pattern.opts.target, static_cast<unsigned>(GL_TEXTURE_2D));
    EXPECT_EQ(filter.pattern.opts.minFilter, GL_NEAREST);
    EXPECT_EQ(filter.pattern.opts.magFilter, GL_NEAREST);
    EXPECT_EQ(filter.pattern.opts.wrapS, GL_REPEAT);
    EXPECT_EQ(filter.pattern.opts.wrapT, GL_REPEAT);
    EXPECT_EQ(filter.pattern.opts.wrapR, GL_REPEAT);
    EXPECT_FALSE(filter.pattern.opts.mipmap);
    EXPECT_EQ(filter.ud.textures["uSampler"].id, filter.pattern.id);
    EXPECT_EQ(filter.ud.vec4s["uColor"], glm::vec4(1.0f));
    EXPECT_FLOAT_EQ(filter.ud.floats["uAlphaMultiplier"], 1.0f);

    // The pattern's texels, read back through a framebuffer, are the table.
    GLuint fbo = 0;
    glGenFramebuffers(1, &fbo);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, filter.pattern.id,
                           0);
    ASSERT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER),
              static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
    std::vector<uint8_t> texels(8 * 8 * 4);
    glReadPixels(0, 0, 8, 8, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(texels[(y * 8 + x) * 4], bayer[y][x]) << "at " << x << "," << y;
        }
    }
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    glDeleteFramebuffers(1, &fbo);

    log.clear();
    const unsigned pattern = filter.pattern.id;
    pmDraw::deleteDithering(filter);
    EXPECT_EQ(log.countEndingWith("> deleteDithering()"), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::finalize()"), 1);
    EXPECT_EQ(log.countEndingWith("> deleteDithering() end."), 1);
    EXPECT_EQ(filter.program.id, 0u);
    EXPECT_EQ(filter.alphaProgram.id, 0u);
    EXPECT_EQ(filter.alphaVertexArray.id, 0u);
    EXPECT_EQ(filter.vertexArray.id, 0u);
    EXPECT_EQ(filter.quad.id, 0u);
    EXPECT_EQ(filter.pattern.id, 0u);
    EXPECT_FALSE(glIsTexture(pattern));
}

TEST_F(PatternDitheringTest, SecondCreateFailsAtThePlainProgram) {
    pmDraw::PatternDithering filter;
    ASSERT_TRUE(pmDraw::createDithering(filter));
    LogCapture log;
    EXPECT_FALSE(pmDraw::createDithering(filter));
    EXPECT_EQ(log.countEndingWith("> ___super::initialize() failed."), 1);
    EXPECT_EQ(log.countEndingWith("> createTextureFilter() failed."), 1);
    EXPECT_EQ(log.count("createDithering() end."), 0);
    pmDraw::deleteDithering(filter);
}

TEST_F(PatternDitheringTest, DrawBeforeSetTextureAndAfterDeleteLogsAndDrawsNothing) {
    Texture tex = makeSolidTexture(4, 4, 200, 100, 50, 255);
    pmDraw::PatternDithering filter;
    LogCapture log;
    pmDraw::drawDithering(filter);
    ASSERT_TRUE(pmDraw::createDithering(filter));
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmDraw::drawDithering(filter);
    EXPECT_EQ(log.countEndingWith("> Please set texture first.\n"), 2);
    EXPECT_EQ(gl->readTarget(), before);

    pmDraw::setTexture(filter, tex, nullptr, glm::vec2(0.0f));
    pmDraw::deleteDithering(filter);
    EXPECT_EQ(filter.activeProgram, nullptr);
    EXPECT_EQ(filter.activeVertexArray, nullptr);
    log.clear();
    pmDraw::drawDithering(filter);
    EXPECT_EQ(log.countEndingWith("> Please set texture first.\n"), 1);
    EXPECT_EQ(gl->readTarget(), before);
    pmGL::deleteTexture(tex);
}

TEST_F(PatternDitheringTest, PlainVariantMatchesCpuFormula) {
    const int w = 24, h = 16;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 41);
    Texture tex = makeTexture(pixels, w, h);
    const glm::vec4 color(0.9f, 0.8f, 1.0f, 0.9f);
    pmDraw::PatternDithering filter;
    ASSERT_TRUE(pmDraw::createDithering(filter));
    pmGL::disableBlend(filter.renderOpts.blend);
    pmDraw::setColor(filter, color);
    EXPECT_EQ(filter.ud.vec4s["uColor"], color);
    pmDraw::setAlphaMultiplier(filter, 0.75f);
    pmDraw::setTexture(filter, tex, nullptr, glm::vec2(0.0f));
    EXPECT_EQ(filter.activeProgram, &filter.program);
    EXPECT_EQ(filter.activeVertexArray, &filter.vertexArray);
    pmDraw::drawDithering(filter);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const glm::vec4 in = texel(pixels, w, x, y);
            const glm::vec4 expected = patternDithering(in, color, color.a * in.a * 0.75f, x, y);
            expectNear(out, w, x, y, expected, 1);
        }
    }
    pmDraw::deleteDithering(filter);
    pmGL::deleteTexture(tex);
}

// With the input a 1/128 level above 100, 150 and 200 the output lies 1/64
// level away from any rounding tie: the shift is -2, -1 or 0 levels, by the
// table entry at the window pixel.
TEST_F(PatternDitheringTest, PatternTilesAtEightWindowPixels) {
    const int w = 24, h = 20;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    Texture white = makeSolidTexture(5, 3, 255, 255, 255, 255);
    const float offset = 1.0f / 128.0f;
    const glm::vec4 color(100.0f + offset, 150.0f + offset, 200.0f + offset, 255.0f);
    pmDraw::PatternDithering filter;
    ASSERT_TRUE(pmDraw::createDithering(filter));
    pmGL::disableBlend(filter.renderOpts.blend);
    pmDraw::setColor(filter, color / 255.0f);
    pmDraw::setTexture(filter, white, nullptr, glm::vec2(0.0f));
    pmDraw::drawDithering(filter);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 4; ++c) {
                if (x + 8 < w) {
                    EXPECT_EQ(outAt(out, w, x, y, c), outAt(out, w, x + 8, y, c))
                        << "at " << x << "," << y;
                }
                if (y + 8 < h) {
                    EXPECT_EQ(outAt(out, w, x, y, c), outAt(out, w, x, y + 8, c))
                        << "at " << x << "," << y;
                }
            }
            const int p = bayer[y % 8][x % 8];
            const int drop = p < 16 ? 2 : (p < 48 ? 1 : 0);
            EXPECT_EQ(outAt(out, w, x, y, 0), 100 - drop) << "at " << x << "," << y;
            EXPECT_EQ(outAt(out, w, x, y, 1), 150 - drop) << "at " << x << "," << y;
            EXPECT_EQ(outAt(out, w, x, y, 2), 200 - drop) << "at " << x << "," << y;
            EXPECT_EQ(outAt(out, w, x, y, 3), 255);
        }
    }
    pmDraw::deleteDithering(filter);
    pmGL::deleteTexture(white);
}

// Sweeping the input across one level in steps of 1/32 level makes the sum of
// the outputs at a pixel grow by one for each step of its table entry, which
// recovers every entry of the table from the drawn pixels. The extra 1/128
// level keeps every output 1/64 level away from a rounding tie.
TEST_F(PatternDitheringTest, SweepRecoversTheBayerTable) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    Texture white = makeSolidTexture(8, 8, 255, 255, 255, 255);
    pmDraw::PatternDithering filter;
    ASSERT_TRUE(pmDraw::createDithering(filter));
    pmGL::disableBlend(filter.renderOpts.blend);
    pmDraw::setTexture(filter, white, nullptr, glm::vec2(0.0f));
    std::vector<int> sums(w * h, 0);
    for (int k = 0; k < 32; ++k) {
        const float level = (100.0f + k / 32.0f + 1.0f / 128.0f) / 255.0f;
        pmDraw::setColor(filter, glm::vec4(level, level, level, 1.0f));
        pmDraw::drawDithering(filter);
        const std::vector<uint8_t> out = gl->readTarget();
        for (int i = 0; i < w * h; ++i) sums[i] += out[i * 4] - 98;
    }
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            EXPECT_EQ(sums[y * w + x] - 16, bayer[y][x]) << "at " << x << "," << y;
        }
    }
    pmDraw::deleteDithering(filter);
    pmGL::deleteTexture(white);
}

TEST_F(PatternDitheringTest, TwoFiltersInDifferentAreasShowTheSamePhase) {
    const int w = 26, h = 18;
    gl->resizeTarget(w, h);
    Texture tex = makeSolidTexture(4, 4, 120, 60, 30, 255);

    // The reference: one filter over the whole target.
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::PatternDithering whole;
    ASSERT_TRUE(pmDraw::createDithering(whole));
    pmDraw::setTexture(whole, tex, nullptr, glm::vec2(0.0f));
    pmDraw::drawDithering(whole);
    const std::vector<uint8_t> reference = gl->readTarget();

    // Two filters whose areas start at pixel offsets that are not multiples of 8.
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::PatternDithering left, right;
    ASSERT_TRUE(pmDraw::createDithering(left));
    ASSERT_TRUE(pmDraw::createDithering(right));
    pmDraw::setArea(left, glm::vec2(0.0f, 0.0f), glm::vec2(13.0f / w, 1.0f));
    pmDraw::setArea(right, glm::vec2(13.0f / w, 3.0f / h), glm::vec2(1.0f, 1.0f));
    pmDraw::setTexture(left, tex, nullptr, glm::vec2(0.0f));
    pmDraw::setTexture(right, tex, nullptr, glm::vec2(0.0f));
    pmDraw::drawDithering(left);
    pmDraw::drawDithering(right);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool covered = x < 13 || y >= 3;
            for (int c = 0; c < 4; ++c) {
                const int expected = covered ? outAt(reference, w, x, y, c) : 0;
                EXPECT_EQ(outAt(out, w, x, y, c), expected) << "at " << x << "," << y;
            }
        }
    }
    pmDraw::deleteDithering(whole);
    pmDraw::deleteDithering(left);
    pmDraw::deleteDithering(right);
    pmGL::deleteTexture(tex);
}

TEST_F(PatternDitheringTest, AlphaVariantTakesAlphaFromTheSecondTextureAndPlainReturns) {
    const int w = 16, h = 16;
    gl->resizeTarget(w, h);
    std::vector<uint8_t> colour = makeTestPixels(w, h, 4, 51);
    std::vector<uint8_t> alphas = makeTestPixels(w, h, 4, 52);
    Texture colourTex = makeTexture(colour, w, h);
    Texture alphaTex = makeTexture(alphas, w, h);
    pmDraw::PatternDithering filter;
    ASSERT_TRUE(pmDraw::createDithering(filter));
    pmGL::disableBlend(filter.renderOpts.blend);
    pmDraw::setAlphaMultiplier(filter, 0.9f);

    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::setTexture(filter, colourTex, &alphaTex, glm::vec2(0.0f));
    EXPECT_EQ(filter.activeProgram, &filter.alphaProgram);
    EXPECT_EQ(filter.activeVertexArray, &filter.alphaVertexArray);
    EXPECT_EQ(filter.ud.textures["uAlphaTexture"].id, alphaTex.id);
    pmDraw::drawDithering(filter);
    std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float a = texel(alphas, w, x, y).a * 0.9f;
            expectNear(out, w, x, y,
                       patternDithering(texel(colour, w, x, y), glm::vec4(1.0f), a, x, y), 1);
        }
    }

    // Back to the plain program: the alpha texture stays in the data, unused.
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::setTexture(filter, colourTex, nullptr, glm::vec2(0.0f));
    EXPECT_EQ(filter.activeProgram, &filter.program);
    EXPECT_EQ(filter.activeVertexArray, &filter.vertexArray);
    EXPECT_EQ(filter.ud.textures["uAlphaTexture"].id, alphaTex.id);
    pmDraw::drawDithering(filter);
    out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const glm::vec4 in = texel(colour, w, x, y);
            expectNear(out, w, x, y, patternDithering(in, glm::vec4(1.0f), in.a * 0.9f, x, y), 1);
        }
    }
    pmDraw::deleteDithering(filter);
    pmGL::deleteTexture(colourTex);
    pmGL::deleteTexture(alphaTex);
}

TEST_F(PatternDitheringTest, FrameBufferInputStandsForItsFirstColourTexture) {
    pmGL::FrameBuffer fb;
    pmGL::createFrameBuffer(fb, 8, 4, pmGL::TextureOpts(), 1, false, false);
    pmDraw::PatternDithering filter;
    Texture alpha = makeSolidTexture(2, 2, 0, 0, 0, 128);
    pmDraw::setTexture(filter, fb, &alpha, glm::vec2(1.0f, 0.0f));
    EXPECT_EQ(filter.ud.textures["uTexture"].id, fb.colorTex[0].id);
    EXPECT_EQ(filter.ud.vec2s["uFlipTexCoord"], glm::vec2(1.0f, 0.0f));
    EXPECT_EQ(filter.ud.vec2s["uPixelStep"], glm::vec2(0.125f, 0.25f));
    EXPECT_EQ(filter.activeProgram, &filter.alphaProgram);
    pmGL::deleteFrameBuffer(fb);
    pmGL::deleteTexture(alpha);
}

TEST_F(PatternDitheringTest, DestructionReleasesEveryObject) {
    unsigned program = 0, alphaProgram = 0, pattern = 0, alphaVertexArray = 0;
    {
        pmDraw::PatternDithering filter;
        ASSERT_TRUE(pmDraw::createDithering(filter));
        program = filter.program.id;
        alphaProgram = filter.alphaProgram.id;
        pattern = filter.pattern.id;
        alphaVertexArray = filter.alphaVertexArray.id;
    }
    EXPECT_FALSE(glIsProgram(program));
    EXPECT_FALSE(glIsProgram(alphaProgram));
    EXPECT_FALSE(glIsTexture(pattern));
    EXPECT_FALSE(glIsVertexArray(alphaVertexArray));
}

}  // namespace
