// The searched-sigma kernel, its shader text, and the two-pass blur compared
// with a CPU convolution made of the same folded taps and bilinear reads.
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "CpuGaussianBlur.h"
#include "GLTestContext.h"
#include "GaussianBlur.h"
#include "LogCapture.h"

namespace {

using pmDraw::GaussianBlur;

struct KernelRow {
    int size;
    double sigma;
    std::vector<float> weights;
    std::vector<float> offsets;
};

const KernelRow kernelTable[] = {
    {3, 0.23, {0.5f}, {0.01742f}},
    {7, 0.68, {0.44908f, 0.05092f}, {0.53805f, 2.06278f}},
    {11, 1.13, {0.33023f, 0.15701f, 0.01276f}, {0.62184f, 2.2731f, 4.14653f}},
    {15, 1.59, {0.24961f, 0.19246f, 0.05148f, 0.00645f}, {0.64434f, 2.37885f, 4.29111f, 6.21661f}},
};

TEST(GaussKernelTest, MatchesTheTableToFivePlaces) {
    for (const KernelRow& row : kernelTable) {
        const pmDraw::GaussKernel kernel = pmDraw::describeGaussKernel(row.size);
        EXPECT_NEAR(kernel.sigma, row.sigma, 1e-9) << row.size;
        ASSERT_EQ(kernel.weights.size(), row.weights.size()) << row.size;
        for (size_t i = 0; i < row.weights.size(); ++i) {
            EXPECT_NEAR(kernel.weights[i], row.weights[i], 0.5e-5) << row.size << " weight " << i;
            EXPECT_NEAR(kernel.offsets[i], row.offsets[i], 0.5e-5) << row.size << " offset " << i;
        }
    }
}

TEST(GaussKernelTest, LargerSizesFindTheirSigmaAndStepCount) {
    const pmDraw::GaussKernel k31 = pmDraw::describeGaussKernel(31);
    EXPECT_NEAR(k31.sigma, 3.41, 1e-9);
    EXPECT_EQ(k31.weights.size(), 8u);
    const pmDraw::GaussKernel k63 = pmDraw::describeGaussKernel(63);
    EXPECT_NEAR(k63.sigma, 7.05, 1e-9);
    EXPECT_EQ(k63.weights.size(), 16u);
}

TEST(GaussKernelTest, WeightsOfEveryValidSizeAddUpToHalf) {
    for (int size = 3; size <= 407; size += 4) {
        const pmDraw::GaussKernel kernel = pmDraw::describeGaussKernel(size);
        const double sum = std::accumulate(kernel.weights.begin(), kernel.weights.end(), 0.0);
        EXPECT_NEAR(sum, 0.5, 1e-5) << size;
        EXPECT_EQ(kernel.weights.size(), static_cast<size_t>((size + 1) / 4)) << size;
    }
}

TEST(GaussKernelTest, KernelIsNormalisedAndSymmetric) {
    const std::vector<float> kernel = GetAppropriateSeparableGauss(9);
    ASSERT_EQ(kernel.size(), 9u);
    EXPECT_NEAR(std::accumulate(kernel.begin(), kernel.end(), 0.0), 1.0, 1e-6);
    for (int i = 0; i < 4; ++i) EXPECT_FLOAT_EQ(kernel[i], kernel[8 - i]);
    // The edge tap is just above the visibility threshold of the search.
    EXPECT_GT(kernel[0], 0.02f / 9.0f);
}

TEST(GaussKernelTest, ShaderTextListsTheFoldedKernel) {
    const std::string text = GenerateGaussShaderKernelWeightsAndOffsets(7);
    const pmDraw::GaussKernel kernel = pmDraw::describeGaussKernel(7);
    const std::string expectedHead =
        "\t\t\tconst int stepCount = 2;\n"
        "\t\t\tconst float gWeights[stepCount] = float[](\n"
        "\t\t\t" +
        pmUtil::valueToString(kernel.weights[0]) +
        ",\n"
        "\t\t\t" +
        pmUtil::valueToString(kernel.weights[1]) +
        "\n"
        "\t\t\t);\n"
        "\t\t\tconst float gOffsets[stepCount] = float[](\n"
        "\t\t\t" +
        pmUtil::valueToString(kernel.offsets[0]) +
        ",\n"
        "\t\t\t" +
        pmUtil::valueToString(kernel.offsets[1]) +
        "\n"
        "\t\t\t);\n";
    EXPECT_EQ(text.substr(0, expectedHead.size()), expectedHead);
    EXPECT_NE(text.find("vec4 GaussianBlur(sampler2D tex0, vec2 centreUV, vec2 pixelOffset)"),
              std::string::npos);
}

using GaussKernelDeathTest = ::testing::Test;

TEST_F(GaussKernelDeathTest, EvenOrNegativeSizesEndTheProcess) {
    EXPECT_DEATH(GetAppropriateSeparableGauss(8),
                 "GetAppropriateSeparableGauss\\(int\\).*Assertion `false' failed");
    EXPECT_DEATH(GetAppropriateSeparableGauss(-3), "Assertion `false' failed");
    EXPECT_DEATH(GetAppropriateSeparableGauss(0), "Assertion `false' failed");
}

TEST_F(GaussKernelDeathTest, SizesWithEvenHalfEndTheProcess) {
    for (int size : {5, 9, 13}) {
        EXPECT_DEATH(GenerateGaussShaderKernelWeightsAndOffsets(size),
                     "GenerateGaussShaderKernelWeightsAndOffsets\\(int\\).*"
                     "Assertion `\\(\\(\\(kernelSize/2\\)\\+1\\) % 2\\) == 0' failed")
            << size;
    }
}

class GaussianBlurDeathTest : public GLTest {};

TEST_F(GaussianBlurDeathTest, CreateWithSizeFiveOrNineDoesNotReturn) {
    for (int size : {5, 9}) {
        EXPECT_DEATH(
            {
                GaussianBlur blur;
                pmDraw::createGaussianBlur(blur, size);
            },
            "Assertion")
            << size;
    }
}

TEST(GaussKernelTest, LibraryKernelAgreesWithAnIndependentComputation) {
    for (int size = 3; size <= 103; size += 4) {
        const cpublur::FoldedKernel expected = cpublur::independentKernel(size);
        const pmDraw::GaussKernel kernel = pmDraw::describeGaussKernel(size);
        ASSERT_EQ(kernel.weights.size(), expected.weights.size()) << size;
        // Both are float sums of the same float taps in the same order; the
        // only freedom is the search's double arithmetic, far below 1e-6.
        for (size_t i = 0; i < expected.weights.size(); ++i) {
            EXPECT_NEAR(kernel.weights[i], expected.weights[i], 1e-6) << size << " weight " << i;
            EXPECT_NEAR(kernel.offsets[i], expected.offsets[i], 1e-5) << size << " offset " << i;
        }
    }
}

// ---- GPU against CPU

pmGL::Texture uploadPicture(const std::vector<uint8_t>& pixels, int w, int h) {
    pmGL::Texture tex;
    pmUtil::ImageData<unsigned char> image(w, h, 4, const_cast<uint8_t*>(pixels.data()));
    pmGL::createTexture(tex, image, pmGL::TextureOpts());
    return tex;
}

class GaussianBlurTest : public GLTest {};

TEST_F(GaussianBlurTest, BlurEqualsCpuConvolutionWithTheSameTaps) {
    const int w = 40, h = 24;
    gl->resizeTarget(w, h);
    for (unsigned seed : {77u, 78u, 79u}) {
        std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, seed);
        pmGL::Texture tex = uploadPicture(pixels, w, h);
        // Size 3 is left out: its single weight of exactly 0.5 puts every output
        // on a rounding tie, which the renderer breaks by its own arithmetic.
        for (int size : {7, 15, 31}) {
            GaussianBlur blur;
            ASSERT_TRUE(pmDraw::createGaussianBlur(blur, size));
            pmDraw::setTexture(blur, tex, glm::vec2(0.0f, 0.0f));
            gl->clearTarget(0, 0, 0, 0);
            pmDraw::drawGaussianBlur(blur);
            const std::vector<uint8_t> out = gl->readTarget();

            cpublur::Picture input{w, h, std::vector<float>(pixels.begin(), pixels.end())};
            const cpublur::FoldedKernel kernel = cpublur::independentKernel(size);
            const cpublur::Picture expected =
                cpublur::blurDirection(cpublur::blurDirection(input, kernel, true), kernel, false);
            int worst = 0;
            for (size_t i = 0; i < out.size(); ++i) {
                worst = std::max(worst, std::abs(out[i] - static_cast<int>(expected.rgba[i])));
            }
            EXPECT_LE(worst, 1) << "kernel " << size << " seed " << seed;
            pmDraw::deleteGaussianBlur(blur);
        }
        pmGL::deleteTexture(tex);
    }
}

TEST_F(GaussianBlurTest, CreateAndDeleteLogTheirSteps) {
    GaussianBlur blur;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 7));
    EXPECT_EQ(log.countEndingWith("> createGaussianBlur()"), 1);
    EXPECT_EQ(log.countEndingWith("> createBaseFilter()"), 1);
    EXPECT_EQ(log.countEndingWith("> createVertexArray()"), 1);
    EXPECT_EQ(log.countEndingWith("> createGaussianBlur() end."), 1);
    EXPECT_FALSE(blur.renderOpts.blend.enabled);
    EXPECT_NE(blur.programs[0].id, 0u);
    EXPECT_NE(blur.programs[1].id, 0u);
    EXPECT_NE(blur.vertexArrays[1].id, 0u);
    const unsigned programs[2] = {blur.programs[0].id, blur.programs[1].id};
    log.clear();
    pmDraw::deleteGaussianBlur(blur);
    EXPECT_EQ(log.countEndingWith("> deleteGaussianBlur()"), 1);
    EXPECT_EQ(log.countEndingWith("> deleteGaussianBlur() end."), 1);
    EXPECT_FALSE(glIsProgram(programs[0]));
    EXPECT_FALSE(glIsProgram(programs[1]));
    EXPECT_EQ(blur.quad.id, 0u);
}

TEST_F(GaussianBlurTest, DrawBeforeCreateOrInputSaysOrDoesNothing) {
    GaussianBlur blur;
    LogCapture log;
    pmDraw::drawGaussianBlur(blur);
    EXPECT_EQ(log.countEndingWith("> Call createGaussianBlur first."), 1);
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 7));
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    log.clear();
    pmDraw::drawGaussianBlur(blur);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteGaussianBlur(blur);
}

TEST_F(GaussianBlurTest, BufferFollowsTheInputSizeOnlyAtSetTexture) {
    std::vector<uint8_t> pixels = makeTestPixels(8, 8, 4);
    pmGL::Texture a = uploadPicture(pixels, 8, 8);
    pmGL::Texture b = uploadPicture(pixels, 8, 8);
    GaussianBlur blur;
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 7));
    pmDraw::setTexture(blur, a, 0.0f);
    const unsigned buffer = blur.buffer.id;
    EXPECT_EQ(blur.buffer.width, 8);
    EXPECT_EQ(blur.buffer.colorTex.at(0).opts.minFilter, GL_LINEAR);
    pmDraw::setTexture(blur, b, 0.0f);
    EXPECT_EQ(blur.buffer.id, buffer);
    EXPECT_EQ(blur.inputTexture, &b);

    // Resizing the input itself leaves the buffer at the old size.
    std::vector<uint8_t> big = makeTestPixels(12, 6, 4);
    pmUtil::ImageData<unsigned char> image(12, 6, 4, big.data());
    pmGL::createTexture(b, image, pmGL::TextureOpts());
    EXPECT_EQ(blur.buffer.width, 8);
    EXPECT_EQ(blur.buffer.height, 8);

    pmDraw::setTexture(blur, b, 0.0f);
    EXPECT_EQ(blur.buffer.width, 12);
    EXPECT_EQ(blur.buffer.height, 6);
    // The following draw writes the new size: every texel of the 12 x 6
    // buffer holds the horizontal pass of the new picture, which a pass drawn
    // at the old 8 x 8 would leave short of on the right.
    gl->resizeTarget(12, 6);
    pmDraw::drawGaussianBlur(blur);
    std::vector<uint8_t> horizontal(12 * 6 * 4);
    glBindFramebuffer(GL_FRAMEBUFFER, blur.buffer.id);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 12, 6, GL_RGBA, GL_UNSIGNED_BYTE, horizontal.data());
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    const cpublur::Picture expected =
        cpublur::blurDirection(cpublur::Picture{12, 6, std::vector<float>(big.begin(), big.end())},
                               cpublur::independentKernel(7), true);
    int worst = 0;
    for (size_t i = 0; i < horizontal.size(); ++i) {
        worst = std::max(worst, std::abs(horizontal[i] - static_cast<int>(expected.rgba[i])));
    }
    EXPECT_LE(worst, 1) << "the horizontal pass did not cover the new size";
    pmDraw::deleteGaussianBlur(blur);
    pmGL::deleteTexture(a);
    pmGL::deleteTexture(b);
}

TEST_F(GaussianBlurTest, ScalarFlipTurnsTheOutputUpsideDownOnce) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    // Rows of one grey level each, so the vertical blur of a flipped picture
    // equals the flipped blur.
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 4; ++c) pixels[(y * w + x) * 4 + c] = static_cast<uint8_t>(y * 30);
        }
    }
    pmGL::Texture tex = uploadPicture(pixels, w, h);
    GaussianBlur blur;
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 3));
    pmDraw::setTexture(blur, tex, 0.0f);
    pmDraw::drawGaussianBlur(blur);
    const std::vector<uint8_t> straight = gl->readTarget();
    pmDraw::setTexture(blur, tex, 1.0f);
    EXPECT_EQ(blur.flip, glm::vec2(0.0f, 1.0f));
    pmDraw::drawGaussianBlur(blur);
    const std::vector<uint8_t> flipped = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        EXPECT_NEAR(flipped[(y * w) * 4], straight[((h - 1 - y) * w) * 4], 1) << y;
    }
    pmDraw::deleteGaussianBlur(blur);
    pmGL::deleteTexture(tex);
}

TEST_F(GaussianBlurTest, SecondPassBlendsWhenTheOwnerEnabledBlending) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4, 200);
    pmGL::Texture tex = uploadPicture(pixels, w, h);
    GaussianBlur blur;
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 7));
    pmGL::enableBlend(blur.renderOpts.blend);
    pmGL::setBlendFunction(blur.renderOpts.blend, GL_ONE, GL_ONE, GL_ONE, GL_ONE);
    pmDraw::setTexture(blur, tex, 0.0f);
    gl->clearTarget(40 / 255.0f, 0, 0, 0);
    pmDraw::drawGaussianBlur(blur);
    const std::vector<uint8_t> out = gl->readTarget();
    // Additive blend over the cleared target: 200 + 40 in red, 200 in green,
    // and alpha saturates since the shader writes 1.
    EXPECT_NEAR(out[0], 240, 1);
    EXPECT_NEAR(out[1], 200, 1);
    EXPECT_EQ(out[3], 255);
    EXPECT_TRUE(blur.renderOpts.blend.enabled);
    pmDraw::deleteGaussianBlur(blur);
    pmGL::deleteTexture(tex);
}

TEST_F(GaussianBlurTest, DrawingAgainAtTheSameSizeCreatesNoGlObject) {
    std::vector<uint8_t> pixels = makeTestPixels(16, 16, 4);
    pmGL::Texture tex = uploadPicture(pixels, 16, 16);
    GaussianBlur blur;
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 11));
    pmDraw::setTexture(blur, tex, 0.0f);
    pmDraw::drawGaussianBlur(blur);
    EXPECT_TRUE(makesNoGLObject([&] {
        for (int i = 0; i < 3; ++i) {
            pmDraw::setTexture(blur, tex, 0.0f);
            pmDraw::drawGaussianBlur(blur);
        }
    }));
    pmDraw::deleteGaussianBlur(blur);
    pmGL::deleteTexture(tex);
}

}  // namespace
