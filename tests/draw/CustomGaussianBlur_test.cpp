// The scaled blur: kernel snapping, lazy working buffers that follow the
// scaled size, the dithered and undithered paths, and the mean colour kept.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "CpuGaussianBlur.h"
#include "GLTestContext.h"
#include "GaussianBlur.h"
#include "LogCapture.h"
#include "TestPictures.h"

namespace {

using pmDraw::CustomGaussianBlur;

pmGL::Texture makeTexture(int w, int h, const uint8_t* pixels) {
    pmGL::Texture tex;
    pmUtil::ImageData<unsigned char> image(w, h, 4, const_cast<uint8_t*>(pixels));
    pmGL::createTexture(tex, image, pmGL::TextureOpts());
    return tex;
}

// The down stage and the horizontal pass on the CPU: the input read at the
// centres of the scaled buffer, the rows reversed when flipped (the first
// blur pass reads them so), then the horizontal Gaussian of the independently
// searched kernel, stored in 8 bits.
cpublur::Picture cpuDownAndAcross(const std::vector<uint8_t>& pixels, int w, int h,
                                  const cpublur::FoldedKernel& taps, bool flipped) {
    const cpublur::Picture input{w, h, std::vector<float>(pixels.begin(), pixels.end())};
    cpublur::Picture scaled = cpublur::resample(input, (w + 1) / 2, (h + 1) / 2);
    if (flipped) scaled = cpublur::flipRows(scaled);
    return cpublur::blurDirection(scaled, taps, true);
}

// The vertical pass drawn straight into a target of another size: each target
// pixel reads the scaled buffer at its own centre, the taps a whole texel of
// that buffer apart, so the stretch happens inside the pass.
cpublur::Picture cpuVerticalInto(const cpublur::Picture& across, const cpublur::FoldedKernel& taps,
                                 int targetW, int targetH) {
    cpublur::Picture out{targetW, targetH,
                         std::vector<float>(static_cast<size_t>(targetW) * targetH * 4)};
    const float sx = static_cast<float>(across.width) / targetW;
    const float sy = static_cast<float>(across.height) / targetH;
    for (int y = 0; y < targetH; ++y) {
        for (int x = 0; x < targetW; ++x) {
            const float u = (x + 0.5f) * sx, v = (y + 0.5f) * sy;
            float* p = &out.rgba[(static_cast<size_t>(y) * targetW + x) * 4];
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (size_t i = 0; i < taps.weights.size(); ++i) {
                    const float o = taps.offsets[i];
                    sum += taps.weights[i] * (cpublur::bilinear(across, u, v + o, c) +
                                              cpublur::bilinear(across, u, v - o, c));
                }
                p[c] = std::round(sum);
            }
            p[3] = 255.0f;
        }
    }
    return out;
}

TEST(CustomKernelSizeTest, SnapsToTheSizesTheBlurAccepts) {
    for (int size = -5; size <= 8; ++size) EXPECT_EQ(pmDraw::snapCustomKernelSize(size), 7) << size;
    EXPECT_EQ(pmDraw::snapCustomKernelSize(9), 11);
    EXPECT_EQ(pmDraw::snapCustomKernelSize(35), 35);
    EXPECT_EQ(pmDraw::snapCustomKernelSize(36), 35);
    EXPECT_EQ(pmDraw::snapCustomKernelSize(37), 39);
    EXPECT_EQ(pmDraw::snapCustomKernelSize(407), 407);
    EXPECT_EQ(pmDraw::snapCustomKernelSize(100000), 407);
}

TEST(CustomBlurStateTest, ScaleFactorAndFlipAreClamped) {
    CustomGaussianBlur context;
    pmDraw::setScaleFactor(context, -1.0f);
    EXPECT_EQ(context.scaleFactor, 0.0f);
    pmDraw::setScaleFactor(context, 2.0f);
    EXPECT_EQ(context.scaleFactor, 1.0f);
    pmDraw::setScaleFactor(context, 0.3f);
    EXPECT_FLOAT_EQ(context.scaleFactor, 0.3f);
    pmGL::Texture tex;
    pmDraw::setTexture(context, tex, glm::vec2(-1.0f, 2.0f));
    EXPECT_EQ(context.flip, glm::vec2(0.0f, 1.0f));
    EXPECT_EQ(context.inputTexture, &tex);
    pmDraw::setTexture(context, tex, 0.5f);
    EXPECT_EQ(context.flip, glm::vec2(0.0f, 0.5f));
}

class CustomBlurTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(pmDraw::createCustomGaussianBlur(context, 35));
    }
    void TearDown() override {
        pmDraw::deleteCustomGaussianBlur(context);
        GLTest::TearDown();
    }
    CustomGaussianBlur context;
};

TEST_F(CustomBlurTest, CreateBuildsThreePassesAndDeleteReleasesThem) {
    CustomGaussianBlur other;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createCustomGaussianBlur(other, 36));
    EXPECT_EQ(log.countEndingWith("> createCustomGaussianBlur()"), 1);
    EXPECT_EQ(log.countEndingWith("> createCustomGaussianBlur() end."), 1);
    EXPECT_NE(other.composite.program.id, 0u);
    EXPECT_NE(other.blur.programs[1].id, 0u);
    EXPECT_NE(other.dither.program.id, 0u);
    const unsigned programs[3] = {other.composite.program.id, other.blur.programs[0].id,
                                  other.dither.program.id};
    log.clear();
    pmDraw::deleteCustomGaussianBlur(other);
    EXPECT_EQ(log.countEndingWith("> deleteCustomGaussianBlur()"), 1);
    EXPECT_EQ(log.countEndingWith("> createCustomGaussianBlur() end"), 1);
    for (unsigned id : programs) EXPECT_FALSE(glIsProgram(id));
}

TEST_F(CustomBlurTest, DrawBeforeCreateOrInputSaysSo) {
    CustomGaussianBlur bare;
    LogCapture log;
    pmDraw::drawCustomGaussianBlur(bare);
    EXPECT_EQ(log.countEndingWith("> Call createCustomGaussianBlur() first."), 1);
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_EQ(log.countEndingWith("> Call setTexture() first."), 1);
}

TEST_F(CustomBlurTest, BuffersFollowTheScaledSizeOfAFullHdInput) {
    pmGL::Texture tex = makeTexture(1920, 1080, nullptr);
    pmDraw::setTexture(context, tex, 0.0f);
    pmDraw::setScaleFactor(context, 0.25f);
    LogCapture log;
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_EQ(log.countEndingWith("> create down buffer: 480 x 270 x 4.\n"), 1);
    EXPECT_EQ(log.countEndingWith("> create blur buffer: 480 x 270 x 4.\n"), 1);
    EXPECT_EQ(context.downBuffer.width, 480);
    EXPECT_EQ(context.downBuffer.height, 270);
    EXPECT_EQ(context.blurBuffer.width, 480);
    EXPECT_EQ(context.blur.buffer.height, 270);

    pmDraw::setScaleFactor(context, 0.001f);
    log.clear();
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_EQ(log.countEndingWith("> create down buffer: 2 x 1 x 4.\n"), 1);
    EXPECT_EQ(log.countEndingWith("> create blur buffer: 2 x 1 x 4.\n"), 1);
    EXPECT_EQ(context.downBuffer.width, 2);
    EXPECT_EQ(context.downBuffer.height, 1);

    // The same values in the next frame reallocate nothing.
    log.clear();
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_EQ(log.count("create "), 0);
    pmGL::deleteTexture(tex);
}

TEST_F(CustomBlurTest, ScaleZeroReportsTheSizeAndBlursAtOnePixel) {
    std::vector<uint8_t> pixels = solidPicture(8, 8, {10, 20, 30});
    pmGL::Texture tex = makeTexture(8, 8, pixels.data());
    pmDraw::setTexture(context, tex, 0.0f);
    pmDraw::setScaleFactor(context, 0.0f);
    LogCapture log;
    pmDraw::drawCustomGaussianBlur(context);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_NE(lines[0].text.find("> scaledSize.x > 0 && scaledSize.y > 0"), std::string::npos);
    EXPECT_EQ(lines[1].text.substr(lines[1].text.size() - 3), "> \n");
    // Held at one pixel rather than made of nothing.
    EXPECT_EQ(log.count("Invalid texture size"), 0) << log.dump();
    EXPECT_EQ(log.countEndingWith("> create down buffer: 1 x 1 x 4.\n"), 1) << log.dump();
    pmGL::deleteTexture(tex);
}

TEST_F(CustomBlurTest, ScaleOneWithDitherBlursTheInputDirectly) {
    std::vector<uint8_t> pixels = solidPicture(16, 16, {90, 120, 200});
    pmGL::Texture tex = makeTexture(16, 16, pixels.data());
    pmDraw::setTexture(context, tex, 0.0f);
    LogCapture log;
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_FALSE(pmGL::isExist(context.downBuffer));
    EXPECT_EQ(log.count("create down buffer"), 0);
    EXPECT_EQ(context.blur.inputTexture, &tex);
    const std::vector<uint8_t> out = gl->readTarget();
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], 90, 1);
        ASSERT_NEAR(out[i + 1], 120, 1);
        ASSERT_NEAR(out[i + 2], 200, 1);
    }
    pmGL::deleteTexture(tex);
}

TEST_F(CustomBlurTest, WithoutDitherTheBlurBufferGoesAndTheMixColourHasNoEffect) {
    std::vector<uint8_t> pixels = solidPicture(16, 16, {100, 100, 100});
    pmGL::Texture tex = makeTexture(16, 16, pixels.data());
    pmDraw::setTexture(context, tex, 0.0f);
    pmDraw::setScaleFactor(context, 0.5f);
    pmDraw::setMixColor(context, glm::vec4(1.0f, 0.0f, 0.0f, 1.0f));
    pmDraw::drawCustomGaussianBlur(context);
    ASSERT_TRUE(pmGL::isExist(context.blurBuffer));
    std::vector<uint8_t> out = gl->readTarget();
    EXPECT_NEAR(out[0], 255, 1);  // the mix colour shows with dither on
    EXPECT_NEAR(out[1], 0, 1);

    context.dithering = false;
    gl->clearTarget(0, 0, 0, 0);
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_FALSE(pmGL::isExist(context.blurBuffer));
    out = gl->readTarget();
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], 100, 1);
        ASSERT_NEAR(out[i + 1], 100, 1);
        ASSERT_EQ(out[i + 3], 255);
    }
    pmGL::deleteTexture(tex);
}

TEST_F(CustomBlurTest, QuarterScaleKeepsTheMeanColour) {
    const int w = 128, h = 64;
    gl->resizeTarget(w, h);
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = static_cast<uint8_t>(x * 2);
            p[1] = static_cast<uint8_t>(y * 4);
            p[2] = static_cast<uint8_t>(128 + (x % 16) * 4 - 32);
            p[3] = 255;
        }
    }
    pmGL::Texture tex = makeTexture(w, h, pixels.data());
    pmDraw::setTexture(context, tex, 0.0f);
    pmDraw::setScaleFactor(context, 0.25f);
    pmDraw::drawCustomGaussianBlur(context);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int c = 0; c < 3; ++c) {
        double inMean = 0.0, outMean = 0.0;
        for (size_t i = c; i < pixels.size(); i += 4) {
            inMean += pixels[i];
            outMean += out[i];
        }
        inMean /= w * h;
        outMean /= w * h;
        EXPECT_NEAR(outMean, inMean, 1.0) << "channel " << c;
    }
    pmGL::deleteTexture(tex);
}

// Blurs the structured picture at half scale with kernels 11 and 35, both
// ways up, and compares each read-back with the CPU model of those passes.
template <typename Model>
void expectStructuredBlur(GLTestContext& gl, bool dithering, int tolerance, Model&& model) {
    const int w = 64, h = 32;
    std::vector<uint8_t> pixels = stepCheckerRampPicture(w, h);
    pmGL::Texture tex = makeTexture(w, h, pixels.data());
    gl.resizeTarget(w, h);
    for (int kernel : {11, 35}) {
        CustomGaussianBlur blur;
        ASSERT_TRUE(pmDraw::createCustomGaussianBlur(blur, kernel));
        pmDraw::setScaleFactor(blur, 0.5f);
        blur.dithering = dithering;
        const cpublur::FoldedKernel taps = cpublur::independentKernel(kernel);
        for (bool flipped : {false, true}) {
            const cpublur::Picture expected =
                model(cpuDownAndAcross(pixels, w, h, taps, flipped), taps, w, h);
            pmDraw::setTexture(blur, tex, flipped ? 1.0f : 0.0f);
            gl.clearTarget(0, 0, 0, 0);
            pmDraw::drawCustomGaussianBlur(blur);
            EXPECT_LE(cpublur::worstDifference(gl.readTarget(), expected), tolerance)
                << "kernel " << kernel << (flipped ? ", flipped" : "");
        }
        pmDraw::deleteCustomGaussianBlur(blur);
    }
    pmGL::deleteTexture(tex);
}

// With dither: down, horizontal, vertical at half size, then the dither pass
// stretches the result over the target. The halving and the stretch are
// fixed-point bilinear reads that the CPU model repeats step for step. What
// it cannot repeat is the rounding of the two blur passes: each sums in float
// and stores 8 bits, and a sum within rounding error of a half level may
// round the other way on the GPU, one level per pass. Every later stage
// averages with weights summing to one, which does not widen a difference:
// two levels. The dither adds under half a level either way before the final
// rounding, which moves that rounding by one level at most: three in all.
// Each wrong pass misses by far more: a weight moved by 0.02 between the
// first two taps by 6 levels, taps shifted half a texel by 13, both passes
// along x by 60, a missed flip by over 170.
TEST_F(CustomBlurTest, StructuredPictureMatchesTheCpuPassesWithDither) {
    expectStructuredBlur(
        *gl, true, 3,
        [](const cpublur::Picture& across, const cpublur::FoldedKernel& taps, int w, int h) {
            return cpublur::resample(cpublur::blurDirection(across, taps, false), w, h);
        });
}

// Without dither the vertical pass itself writes the full-size target,
// reading the half-size horizontal result between its texels. The two blur
// passes are again the only roundings the model cannot repeat: two levels.
TEST_F(CustomBlurTest, StructuredPictureMatchesTheCpuPassesWithoutDither) {
    expectStructuredBlur(*gl, false, 2,
                         [](const cpublur::Picture& across, const cpublur::FoldedKernel& taps,
                            int w, int h) { return cpuVerticalInto(across, taps, w, h); });
}

TEST_F(CustomBlurTest, FinalPassHoldsAreaColourAndAlpha) {
    pmDraw::setColor(context, glm::vec4(0.5f, 1.0f, 1.0f, 1.0f));
    pmDraw::setAlphaMultiplier(context, 0.25f);
    pmDraw::setArea(context, glm::vec2(0.0f), glm::vec2(0.5f), glm::vec2(0.0f), glm::vec2(1.0f));
    EXPECT_EQ(context.dither.ud.vec4s["uColor"], glm::vec4(0.5f, 1.0f, 1.0f, 1.0f));
    EXPECT_FLOAT_EQ(context.dither.ud.floats["uAlphaMultiplier"], 0.25f);
    EXPECT_FALSE(context.composite.ud.floats["uAlphaMultiplier"] == 0.25f);

    std::vector<uint8_t> pixels = solidPicture(16, 16, {200, 200, 200});
    pmGL::Texture tex = makeTexture(16, 16, pixels.data());
    pmDraw::setTexture(context, tex, 0.0f);
    pmDraw::drawCustomGaussianBlur(context);
    const std::vector<uint8_t> out = gl->readTarget();
    // Lower-left quarter only: colour times 0.5 in red, alpha 0.25, premultiplied.
    const uint8_t* inside = &out[(2 * 16 + 2) * 4];
    EXPECT_NEAR(inside[0], std::lround(200 * 0.5 * 0.25), 1);
    EXPECT_NEAR(inside[1], std::lround(200 * 0.25), 1);
    EXPECT_NEAR(inside[3], std::lround(255 * 0.25), 1);
    const uint8_t* outside = &out[(12 * 16 + 12) * 4];
    EXPECT_EQ(outside[3], 0);
    pmGL::deleteTexture(tex);
}

TEST_F(CustomBlurTest, SecondDrawAtTheSameSizeCreatesNoGlObject) {
    std::vector<uint8_t> pixels = makeTestPixels(64, 32, 4);
    pmGL::Texture tex = makeTexture(64, 32, pixels.data());
    pmDraw::setTexture(context, tex, 0.0f);
    pmDraw::setScaleFactor(context, 0.5f);
    pmDraw::drawCustomGaussianBlur(context);
    EXPECT_TRUE(makesNoGLObject([&] {
        for (int i = 0; i < 3; ++i) pmDraw::drawCustomGaussianBlur(context);
    }));
    pmGL::deleteTexture(tex);
}

}  // namespace
