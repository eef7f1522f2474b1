// The smooth quality: its plan adds up to the wanted Gaussian, its output
// matches a float64 Gaussian computed here on the CPU, and a gentle ramp
// comes out as a ramp, not as a staircase of the working grid.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "GaussianBlur.h"
#include "LogCapture.h"

namespace {

using pmDraw::CustomGaussianBlur;

// Blocks of random levels with a little noise: edges at every scale.
std::vector<uint8_t> blockPicture(int w, int h) {
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
    uint32_t state = 99u;
    auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return state >> 24;
    };
    std::vector<uint8_t> blocks(64 * 3);
    for (uint8_t& b : blocks) b = static_cast<uint8_t>(next());
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const int block = ((y * 8 / h) * 8 + (x * 8 / w)) * 3;
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            for (int c = 0; c < 3; ++c) {
                p[c] = static_cast<uint8_t>(std::min(255u, blocks[block + c] + next() / 16));
            }
            p[3] = 255;
        }
    }
    return pixels;
}

// A float64 Gaussian of `sigma` pixels, edges clamped, one channel.
std::vector<double> cpuGaussian(const std::vector<uint8_t>& rgba, int w, int h, int channel,
                                double sigma) {
    const int radius = static_cast<int>(std::ceil(4.0 * sigma));
    std::vector<double> kernel(2 * radius + 1);
    double sum = 0.0;
    for (int k = -radius; k <= radius; ++k)
        sum += kernel[k + radius] = std::exp(-0.5 * k * k / (sigma * sigma));
    for (double& k : kernel) k /= sum;
    std::vector<double> across(static_cast<size_t>(w) * h), out(across.size());
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            double v = 0.0;
            for (int k = -radius; k <= radius; ++k) {
                const int xs = std::min(std::max(x + k, 0), w - 1);
                v += kernel[k + radius] * rgba[(static_cast<size_t>(y) * w + xs) * 4 + channel];
            }
            across[static_cast<size_t>(y) * w + x] = v;
        }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            double v = 0.0;
            for (int k = -radius; k <= radius; ++k) {
                const int ys = std::min(std::max(y + k, 0), h - 1);
                v += kernel[k + radius] * across[static_cast<size_t>(ys) * w + x];
            }
            out[static_cast<size_t>(y) * w + x] = v;
        }
    return out;
}

TEST(SmoothBlurPlanTest, VariancesAddUpToTheWantedSigma) {
    for (float sigma : {3.0f, 5.4f, 20.0f, 56.0f, 120.0f, 270.0f, 400.0f}) {
        const pmDraw::SmoothBlurPlan plan = pmDraw::planSmoothBlur(sigma, glm::ivec2(1920, 1080));
        const double factor = std::pow(2.0, plan.levels);
        const double stretch = std::pow(4.0, plan.stretchLevels);
        EXPECT_EQ(plan.stretchLevels, std::min(plan.levels, 2)) << sigma;
        const double total = (factor * factor - 1.0) / 12.0 + (stretch - 1.0) / 6.0 +
                             factor * factor *
                                 (plan.workingSigma * plan.workingSigma +
                                  (plan.stretchLevels < plan.levels ? 1.0 / 3.0 : 0.0));
        EXPECT_NEAR(std::sqrt(total), sigma, 1e-3 * sigma) << sigma;
        EXPECT_GE(plan.workingSigma, plan.levels <= 2 ? 1.25f : 1.5f) << sigma;
        EXPECT_LT(plan.workingSigma, 3.2f) << sigma;
        double weightSum = plan.centreWeight;
        for (int i = 0; i < plan.pairCount; ++i) {
            weightSum += 2.0 * plan.weights[i];
            EXPECT_GE(plan.offsets[i], 2 * i + 1.0f);
            EXPECT_LE(plan.offsets[i], 2 * i + 2.0f);
        }
        EXPECT_NEAR(weightSum, 1.0, 1e-6) << sigma;
    }
}

TEST(SmoothBlurPlanTest, KeepsTheWorkingPictureAtLeastFourTexels) {
    const pmDraw::SmoothBlurPlan plan = pmDraw::planSmoothBlur(5000.0f, glm::ivec2(1920, 1080));
    EXPECT_GE(pmDraw::smoothWorkingSize(glm::ivec2(1920, 1080), plan.levels).y, 4);
    EXPECT_EQ(pmDraw::smoothWorkingSize(glm::ivec2(1920, 1080), 3), glm::ivec2(240, 135));
}

class SmoothBlurTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(pmDraw::createCustomGaussianBlur(context, 35));
        ASSERT_TRUE(pmDraw::setQuality(context, pmDraw::BLUR_QUALITY_SMOOTH));
    }
    void TearDown() override {
        pmGL::deleteTexture(input);
        pmDraw::deleteCustomGaussianBlur(context);
        GLTest::TearDown();
    }
    std::vector<uint8_t> blur(const std::vector<uint8_t>& pixels, int w, int h, float scale,
                              bool mipmapped = false) {
        pmUtil::ImageData<unsigned char> image(w, h, 4, const_cast<uint8_t*>(pixels.data()));
        pmGL::TextureOpts opts;
        opts.mipmap = mipmapped;
        if (mipmapped) opts.minFilter = GL_LINEAR_MIPMAP_LINEAR;
        pmGL::createTexture(input, image, opts);
        gl->resizeTarget(w, h);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::setScaleFactor(context, scale);
        pmDraw::setTexture(context, input, glm::vec2(0.0f, 0.0f));
        pmDraw::drawCustomGaussianBlur(context);
        return gl->readTarget();
    }
    CustomGaussianBlur context;
    pmGL::Texture input;
};

TEST_F(SmoothBlurTest, MatchesAFloatGaussianOfTheDefaultsSigma) {
    const int w = 256, h = 128;
    const std::vector<uint8_t> pixels = blockPicture(w, h);
    // Larger sigmas meet the picture's edges, where clamping in the working
    // grid and clamping of single pixels part ways.
    // A mipmapped input is reduced from its base level like a plain one: its
    // 8-bit levels would round the pyramid at every step.
    std::vector<uint8_t> plainOutputs[2];
    for (int run = 0; run < 4; ++run) {
        const float scale = run % 2 ? 0.25f : 1.0f;
        const std::vector<uint8_t> out = blur(pixels, w, h, scale, run >= 2);
        if (run < 2) {
            plainOutputs[run] = out;
        } else {
            EXPECT_EQ(out, plainOutputs[run - 2]) << "scale " << scale;
        }
        const double sigma = pmDraw::defaultQualitySigma(scale, pmDraw::defaultKernelSigma(35));
        double worst = 0.0, total = 0.0;
        for (int c = 0; c < 3; ++c) {
            const std::vector<double> expected = cpuGaussian(pixels, w, h, c, sigma);
            for (size_t i = 0; i < expected.size(); ++i) {
                const double error = std::abs(out[i * 4 + c] - expected[i]);
                total += error;
                const int x = static_cast<int>(i) % w, y = static_cast<int>(i) / w;
                if (x >= 8 && y >= 8 && x < w - 8 && y < h - 8) worst = std::max(worst, error);
            }
        }
        const double mean = total / (3.0 * w * h);
        EXPECT_LT(mean, 1.0) << "scale " << scale << " sigma " << sigma;
        // The shortest working Gaussians (1.25 texels, at scale 1 here) are
        // the least Gaussian in shape; SSIM in the benchmark stays above 0.997.
        EXPECT_LT(worst, scale == 1.0f ? 8.0 : 3.5) << "scale " << scale << " sigma " << sigma;
    }
}

// A ramp of four levels across 1024 pixels: blurred, it is the same ramp.
// Averaged down the columns (the dither averages out), the output must follow
// it without steps: the error may drift slowly (rounding into half floats),
// but no column may part from the mean error of its 33 neighbours by more
// than 0.15 of a level, where a staircase of the working grid jumps by 0.5.
TEST_F(SmoothBlurTest, AGentleRampStaysARamp) {
    const int w = 1024, h = 256;
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4, 255);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = p[1] = p[2] = static_cast<uint8_t>(std::lround(100.0 + 4.0 * x / (w - 1)));
        }
    }
    const float scale = 0.125f;
    const std::vector<uint8_t> out = blur(pixels, w, h, scale);
    const double sigma = pmDraw::defaultQualitySigma(scale, pmDraw::defaultKernelSigma(35));
    const std::vector<double> expected = cpuGaussian(pixels, w, h, 1, sigma);
    std::vector<double> error(w, 0.0);
    for (int x = 0; x < w; ++x) {
        double column = 0.0;
        for (int y = 0; y < h; ++y) column += out[(static_cast<size_t>(y) * w + x) * 4 + 1];
        error[x] = column / h - expected[static_cast<size_t>(h / 2) * w + x];
    }
    const int margin = static_cast<int>(3.0 * sigma);
    double worstDrift = 0.0, worstJump = 0.0;
    for (int x = margin; x < w - margin; ++x) {
        double local = 0.0;
        for (int k = -16; k <= 16; ++k) local += error[x + k];
        worstJump = std::max(worstJump, std::abs(error[x] - local / 33.0));
        worstDrift = std::max(worstDrift, std::abs(error[x]));
    }
    EXPECT_LT(worstJump, 0.15);
    EXPECT_LT(worstDrift, 0.4);
}

}  // namespace
