// The temporal blur: captures into three rotating buffers, the weighted mix of
// the last two captures, the capture count, and the output pass's colour, mix
// colour, alpha and area.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <vector>

#include "CpuGaussianBlur.h"
#include "GLTestContext.h"
#include "GaussianBlur.h"
#include "LogCapture.h"
#include "TestPictures.h"

namespace {

using pmDraw::VideoGaussianBlur;

pmGL::Texture makeTexture(int w, int h, std::vector<uint8_t>& pixels) {
    pmGL::Texture tex;
    pmUtil::ImageData<unsigned char> image(w, h, 4, pixels.data());
    pmGL::createTexture(tex, image, pmGL::TextureOpts());
    return tex;
}

// Every pixel of the read-back target within `tolerance` of the colour, alpha
// checked separately.
void expectAll(const std::vector<uint8_t>& out, Rgb c, int alpha, int tolerance,
               int alphaTolerance = 0) {
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], c.r, tolerance) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 1], c.g, tolerance) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 2], c.b, tolerance) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 3], alpha, alphaTolerance) << "pixel " << i / 4;
    }
}

// The capture and a draw at weight 1 on the CPU: the input read at the centres
// of the half-size buffer, the rows reversed when flipped (the first blur pass
// reads them so), the two Gaussian passes of the independently searched
// kernel with 8-bit storage after each, then the blurred buffer read at the
// centres of the full-size target.
cpublur::Picture cpuCaptureAndDraw(const std::vector<uint8_t>& pixels, int w, int h, int kernel,
                                   bool flipped, int targetW, int targetH) {
    const cpublur::Picture input{w, h, std::vector<float>(pixels.begin(), pixels.end())};
    cpublur::Picture scaled = cpublur::resample(input, (w + 1) / 2, (h + 1) / 2);
    if (flipped) scaled = cpublur::flipRows(scaled);
    const cpublur::FoldedKernel taps = cpublur::independentKernel(kernel);
    const cpublur::Picture blurred =
        cpublur::blurDirection(cpublur::blurDirection(scaled, taps, true), taps, false);
    return cpublur::resample(blurred, targetW, targetH);
}

int mixed(int a, int b, float w) {
    return static_cast<int>(std::lround(a + (b - a) * w));
}

class VideoBlurTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(video.initialize(35));
        video.setScaleFactor(0.5f);
    }
    void TearDown() override {
        video.finalize();
        for (pmGL::Texture& tex : textures) pmGL::deleteTexture(tex);
        GLTest::TearDown();
    }
    // A uniform texture of the given colour, kept until the end of the test.
    pmGL::Texture& uniformTexture(Rgb c, int w = 32, int h = 24) {
        std::vector<uint8_t> pixels = solidPicture(w, h, c);
        textures.push_back(makeTexture(w, h, pixels));
        return textures.back();
    }
    std::vector<uint8_t> drawn(float weight) {
        gl->clearTarget(0, 0, 0, 0);
        video.draw(weight);
        return gl->readTarget();
    }

    VideoGaussianBlur video;
    // A deque keeps the references handed out valid as it grows.
    std::deque<pmGL::Texture> textures;
};

TEST(VideoBlurStateTest, StartsWithNoCaptureAndClampsTheScaleFactor) {
    VideoGaussianBlur video;
    EXPECT_EQ(video.pendingCaptures, 2);
    EXPECT_TRUE(video.dithering);
    EXPECT_FALSE(pmGL::isExist(video.previousBuffer));
    video.setScaleFactor(-1.0f);
    EXPECT_EQ(video.scaleFactor, 0.0f);
    video.setScaleFactor(2.0f);
    EXPECT_EQ(video.scaleFactor, 1.0f);
    video.setScaleFactor(0.3f);
    EXPECT_FLOAT_EQ(video.scaleFactor, 0.3f);
    video.reset();
    EXPECT_EQ(video.pendingCaptures, 2);
}

TEST_F(GLTest, VideoBlurInitializeLogsItsStepsAndSetsTheOutputPass) {
    VideoGaussianBlur video;
    LogCapture log;
    ASSERT_TRUE(video.initialize(36));
    EXPECT_EQ(log.countEndingWith("> VideoGaussianBlur::initialize(36)"), 1);
    EXPECT_EQ(log.countEndingWith("> kernelIndex: 7"), 1);
    EXPECT_EQ(log.countEndingWith("> call pmGL functions."), 1);
    EXPECT_EQ(log.countEndingWith("> VideoGaussianBlur::initialize is almost finished."), 1);
    EXPECT_EQ(log.count("GaussianBlur: initialize("), 4) << log.dump();
    EXPECT_NE(video.singleCompositing.program.id, 0u);
    EXPECT_NE(video.dualCompositing.program.id, 0u);
    EXPECT_NE(video.blur.programs[0].id, 0u);
    EXPECT_FALSE(video.singleCompositing.renderOpts.blend.enabled);
    EXPECT_TRUE(video.dualCompositing.renderOpts.blend.enabled);
    EXPECT_EQ(video.dualCompositing.renderOpts.blend.srcRGB, static_cast<unsigned>(GL_SRC_ALPHA));
    EXPECT_EQ(video.dualCompositing.ud.vec4s.at("uColor"), glm::vec4(1.0f));
    EXPECT_EQ(video.dualCompositing.ud.floats.at("uAlphaMultiplier"), 1.0f);
    EXPECT_EQ(video.dualCompositing.ud.vec4s.count("uMixColor"), 0u);
    video.finalize();
}

TEST_F(GLTest, VideoBlurKernelIndexIsNotClamped) {
    VideoGaussianBlur video;
    LogCapture log;
    // (1 - 7) / 4 + 0.5 truncates to -1: a kernel of 3 taps, still valid.
    ASSERT_TRUE(video.initialize(1));
    EXPECT_EQ(log.countEndingWith("> kernelIndex: -1"), 1);
    video.finalize();
    LogCapture log39;
    ASSERT_TRUE(video.initialize(37));
    EXPECT_EQ(log39.countEndingWith("> kernelIndex: 8"), 1);
    video.finalize();
}

TEST_F(GLTest, VideoBlurFinalizeReleasesEverythingAndKeepsTheCount) {
    VideoGaussianBlur video;
    ASSERT_TRUE(video.initialize(35));
    std::vector<uint8_t> pixels = solidPicture(8, 8, {10, 20, 30});
    pmUtil::ImageData<unsigned char> image(8, 8, 4, pixels.data());
    video.setVideoCapture(image, 0.0f);
    ASSERT_EQ(video.pendingCaptures, 1);
    LogCapture log;
    video.finalize();
    EXPECT_EQ(log.countEndingWith("> VideoGaussianBlur::finalize()"), 1);
    EXPECT_EQ(log.countEndingWith("> VideoGaussianBlur::finalize() is Finished."), 1);
    EXPECT_EQ(video.singleCompositing.program.id, 0u);
    EXPECT_EQ(video.dualCompositing.program.id, 0u);
    EXPECT_EQ(video.blur.programs[1].id, 0u);
    EXPECT_EQ(video.captureTexture.id, 0u);
    EXPECT_EQ(video.previousBuffer.id, 0u);
    EXPECT_EQ(video.latestBuffer.id, 0u);
    EXPECT_EQ(video.scaledBuffer.id, 0u);
    EXPECT_EQ(video.pendingCaptures, 1);
}

TEST_F(GLTest, VideoBlurCaptureBeforeInitializeIsRefusedWithEachFormsWords) {
    VideoGaussianBlur video;
    std::vector<uint8_t> pixels = solidPicture(4, 4, {1, 2, 3});
    pmGL::Texture tex = makeTexture(4, 4, pixels);
    pmUtil::ImageData<unsigned char> image(4, 4, 4, pixels.data());
    LogCapture log;
    video.setVideoCapture(tex, 0.0f);
    video.setVideoCapture(image, 0.0f);
    EXPECT_EQ(log.countEndingWith("> Call initialize() first."), 1);
    EXPECT_EQ(log.countEndingWith("> Call createVideoGaussianBlur() first."), 1);
    EXPECT_EQ(video.pendingCaptures, 2);
    EXPECT_FALSE(pmGL::isExist(video.captureTexture));
    pmGL::deleteTexture(tex);
}

TEST_F(VideoBlurTest, InvalidInputsAreRefusedAndLeaveTheCount) {
    pmGL::Texture empty;
    pmGL::FrameBuffer noFrameBuffer;
    pmUtil::ImageData<unsigned char> noPixels(4, 4, 4, nullptr);
    LogCapture log;
    video.setVideoCapture(empty, glm::vec2(0.0f));
    video.setVideoCapture(noFrameBuffer, glm::vec2(0.0f));
    video.setVideoCapture(noPixels, glm::vec2(0.0f));
    EXPECT_EQ(log.countEndingWith("> input texture is invalid."), 1);
    EXPECT_EQ(log.countEndingWith("> FrameBuffer fb is not exist."), 1);
    EXPECT_EQ(log.countEndingWith("> Check input data. ImageData<uint8_t> image is empty."), 1);
    EXPECT_EQ(video.pendingCaptures, 2);
    EXPECT_FALSE(pmGL::isExist(video.previousBuffer));
}

TEST_F(VideoBlurTest, DrawBeforeAnyCaptureLogsAndDrawsNothing) {
    gl->clearTarget(0.2f, 0.4f, 0.6f, 1.0f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    video.draw(1.0f);
    EXPECT_EQ(log.countEndingWith("> Call setVideoCapture() first."), 1);
    EXPECT_EQ(gl->readTarget(), before);
}

TEST_F(VideoBlurTest, AConstantPictureBlursToItselfWithinOneLevel) {
    const Rgb colour{200, 100, 50};
    video.setVideoCapture(uniformTexture(colour, 64, 48), 0.0f);
    gl->resizeTarget(40, 30);
    expectAll(drawn(1.0f), colour, 255, 1);
}

TEST_F(VideoBlurTest, FirstCaptureCreatesThreeBlackBuffersOfTheScaledSize) {
    LogCapture log;
    video.setVideoCapture(uniformTexture({90, 90, 90}, 33, 21), 0.0f);
    // 33 * 0.5 + 0.5 = 17, 21 * 0.5 + 0.5 = 11.
    EXPECT_EQ(log.countEndingWith("> create internal buffers: 17 x 11 x 4 x 3."), 1);
    for (pmGL::FrameBuffer* fb :
         {&video.previousBuffer, &video.latestBuffer, &video.scaledBuffer}) {
        EXPECT_EQ(fb->width, 17);
        EXPECT_EQ(fb->height, 11);
    }
    EXPECT_EQ(video.pendingCaptures, 1);
    // The capture went into one buffer; the other still holds the zeros it was made with.
    std::vector<uint8_t> previous(17 * 11 * 4, 7);
    pmUtil::ImageData<unsigned char> image(17, 11, 4, previous.data());
    pmGL::readFrameBuffer(video.previousBuffer, image, 0);
    EXPECT_TRUE(std::all_of(previous.begin(), previous.end(), [](uint8_t v) { return v == 0; }));
}

TEST_F(VideoBlurTest, SingleCaptureIsShownAtFullWeightWhateverTheWeight) {
    const Rgb colour{40, 160, 220};
    video.setVideoCapture(uniformTexture(colour), 0.0f);
    ASSERT_EQ(video.pendingCaptures, 1);
    expectAll(drawn(0.0f), colour, 255, 1);
    expectAll(drawn(0.5f), colour, 255, 1);
}

TEST_F(VideoBlurTest, TwoCapturesMixByWeight) {
    const Rgb first{200, 40, 0};
    const Rgb second{0, 120, 240};
    video.dithering = false;
    video.setVideoCapture(uniformTexture(first), 0.0f);
    video.setVideoCapture(uniformTexture(second), 0.0f);
    ASSERT_EQ(video.pendingCaptures, 0);
    const Rgb quarter{mixed(first.r, second.r, 0.25f), mixed(first.g, second.g, 0.25f),
                      mixed(first.b, second.b, 0.25f)};
    expectAll(drawn(0.25f), quarter, 255, 1);
    expectAll(drawn(0.0f), first, 255, 1);
    expectAll(drawn(1.0f), second, 255, 1);
    // Out-of-range weights are clamped.
    expectAll(drawn(-1.0f), first, 255, 1);
    expectAll(drawn(2.0f), second, 255, 1);
    // A third capture overwrites the oldest: previous is now the second.
    const Rgb third{255, 255, 255};
    video.setVideoCapture(uniformTexture(third), 0.0f);
    expectAll(drawn(0.0f), second, 255, 1);
    expectAll(drawn(1.0f), third, 255, 1);
}

TEST_F(VideoBlurTest, CaptureSwapsTheRecordsWithoutMakingGLObjects) {
    pmGL::Texture& a = uniformTexture({10, 10, 10});
    pmGL::Texture& b = uniformTexture({20, 20, 20});
    video.setVideoCapture(a, 0.0f);
    video.setVideoCapture(b, 0.0f);
    gl->clearTarget(0, 0, 0, 0);
    video.draw(0.5f);
    const unsigned previousId = video.previousBuffer.id;
    const unsigned latestId = video.latestBuffer.id;
    const unsigned scaledId = video.scaledBuffer.id;
    // GL hands out each new name one above the last, deleted ones included.
    std::vector<GLuint> expected = nextGLNames();
    for (GLuint& name : expected) ++name;
    video.setVideoCapture(a, 0.0f);
    video.draw(0.5f);
    video.setVideoCapture(b, 0.0f);
    video.draw(0.5f);
    video.setVideoCapture(a, 0.0f);
    video.draw(0.5f);
    EXPECT_EQ(nextGLNames(), expected);
    EXPECT_EQ(video.previousBuffer.id, latestId);
    EXPECT_EQ(video.latestBuffer.id, previousId);
    EXPECT_EQ(video.scaledBuffer.id, scaledId);
}

TEST_F(VideoBlurTest, ResetForgetsTheCapturesButKeepsTheBuffers) {
    video.setVideoCapture(uniformTexture({50, 60, 70}), 0.0f);
    video.setVideoCapture(uniformTexture({70, 60, 50}), 0.0f);
    video.reset();
    EXPECT_EQ(video.pendingCaptures, 2);
    EXPECT_TRUE(pmGL::isExist(video.previousBuffer));
    EXPECT_TRUE(pmGL::isExist(video.latestBuffer));
    gl->clearTarget(0.2f, 0.4f, 0.6f, 1.0f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    video.draw(0.5f);
    EXPECT_EQ(log.countEndingWith("> Call setVideoCapture() first."), 1);
    EXPECT_EQ(gl->readTarget(), before);
}

TEST_F(VideoBlurTest, AfterResetTheNextCaptureCountsAsTheFirst) {
    video.dithering = false;
    video.setVideoCapture(uniformTexture({50, 60, 70}), 0.0f);
    video.setVideoCapture(uniformTexture({70, 60, 50}), 0.0f);
    video.reset();
    const Rgb latest{180, 20, 90};
    video.setVideoCapture(uniformTexture(latest), 0.0f);
    EXPECT_EQ(video.pendingCaptures, 1);
    expectAll(drawn(0.0f), latest, 255, 1);
}

TEST_F(VideoBlurTest, ScaleChangeRecreatesAllBuffersAndClearsThePreviousCapture) {
    video.dithering = false;
    video.setVideoCapture(uniformTexture({100, 100, 100}), 0.0f);
    video.setVideoCapture(uniformTexture({150, 150, 150}), 0.0f);
    LogCapture log;
    video.setScaleFactor(0.25f);
    const Rgb latest{30, 200, 100};
    video.setVideoCapture(uniformTexture(latest), 0.0f);
    EXPECT_EQ(log.countEndingWith("> create internal buffers: 8 x 6 x 4 x 3."), 1);
    EXPECT_EQ(video.pendingCaptures, 0);
    EXPECT_EQ(video.previousBuffer.width, 8);
    EXPECT_EQ(video.scaledBuffer.width, 8);
    expectAll(drawn(0.0f), {0, 0, 0}, 255, 0);
    expectAll(drawn(1.0f), latest, 255, 1);
}

TEST_F(VideoBlurTest, LargerInputCreatesTheBuffersOnceMore) {
    video.setScaleFactor(1.0f);
    LogCapture log;
    pmGL::Texture& small = uniformTexture({1, 2, 3}, 16, 16);
    pmGL::Texture& large = uniformTexture({1, 2, 3}, 40, 40);
    video.setVideoCapture(small, 0.0f);
    video.setVideoCapture(small, 0.0f);
    EXPECT_EQ(log.count("create internal buffers"), 1);
    video.setVideoCapture(large, 0.0f);
    video.setVideoCapture(large, 0.0f);
    EXPECT_EQ(log.count("create internal buffers"), 2);
    EXPECT_EQ(log.countEndingWith("> create internal buffers: 40 x 40 x 4 x 3."), 1);
}

TEST_F(VideoBlurTest, ImageCaptureReusesItsUploadTexture) {
    std::vector<uint8_t> pixels = solidPicture(12, 10, {80, 90, 100});
    pmUtil::ImageData<unsigned char> image(12, 10, 4, pixels.data());
    video.setVideoCapture(image, 0.0f);
    const unsigned id = video.captureTexture.id;
    ASSERT_NE(id, 0u);
    EXPECT_EQ(video.captureTexture.width, 12);
    EXPECT_TRUE(video.captureTexture.opts.mipmap);
    video.setVideoCapture(image, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(video.captureTexture.id, id);
    EXPECT_EQ(video.pendingCaptures, 0);
    expectAll(drawn(0.5f), {80, 90, 100}, 255, 1);
}

TEST_F(VideoBlurTest, FlipIsAppliedOnceInTheBlur) {
    // First rows of memory red, the rest blue; a small kernel keeps them apart.
    VideoGaussianBlur sharp;
    ASSERT_TRUE(sharp.initialize(7));
    sharp.setScaleFactor(1.0f);
    sharp.dithering = false;
    const int w = 64, h = 64;
    std::vector<uint8_t> pixels = solidPicture(w, h, {0, 0, 255});
    for (int y = 0; y < h / 2; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = 255;
            p[2] = 0;
        }
    }
    pmUtil::ImageData<unsigned char> image(w, h, 4, pixels.data());
    gl->resizeTarget(16, 16);
    // Unflipped, memory row 0 lands at t = 0, the bottom row of the read-back.
    sharp.setVideoCapture(image, 0.0f);
    sharp.draw(1.0f);
    std::vector<uint8_t> out = gl->readTarget();
    EXPECT_GT(out[0], 240);
    EXPECT_LT(out[2], 15);
    EXPECT_LT(out[(15 * 16) * 4], 15);
    sharp.setVideoCapture(image, 1.0f);
    sharp.draw(1.0f);
    out = gl->readTarget();
    EXPECT_LT(out[0], 15);
    EXPECT_GT(out[2], 240);
    EXPECT_GT(out[(15 * 16) * 4], 240);
    sharp.finalize();
}

// Dithering off, so each stage is plain arithmetic. The halving and the
// final stretch are fixed-point bilinear reads that the CPU model repeats
// step for step. What it cannot repeat is the rounding of the two blur passes:
// each sums in float and stores 8 bits, and a sum within rounding error of a
// half level may round the other way on the GPU, one level per pass. Every
// later stage averages with weights summing to one, which does not widen a
// difference, so two levels bound the texture form. The uploaded form halves
// through its mipmap, whose 2 x 2 mean the renderer rounds by its own rule:
// one level more. Each wrong pass misses by far more: a weight moved by 0.02
// between the first two taps by 5 levels, taps shifted half a texel by 13,
// both passes along x by 60, a missed flip by over 170.
TEST_F(VideoBlurTest, StructuredPictureMatchesTheCpuPasses) {
    const int w = 64, h = 32;
    std::vector<uint8_t> pixels = stepCheckerRampPicture(w, h);
    pmGL::Texture tex = makeTexture(w, h, pixels);
    pmUtil::ImageData<unsigned char> image(w, h, 4, pixels.data());
    gl->resizeTarget(w, h);
    for (int kernel : {11, 35}) {
        VideoGaussianBlur pass;
        ASSERT_TRUE(pass.initialize(kernel));
        pass.setScaleFactor(0.5f);
        pass.dithering = false;
        for (bool flipped : {false, true}) {
            const cpublur::Picture expected =
                cpuCaptureAndDraw(pixels, w, h, kernel, flipped, w, h);
            pass.setVideoCapture(tex, flipped ? 1.0f : 0.0f);
            gl->clearTarget(0, 0, 0, 0);
            pass.draw(1.0f);
            EXPECT_LE(cpublur::worstDifference(gl->readTarget(), expected), 2)
                << "texture, kernel " << kernel << (flipped ? ", flipped" : "");
            // The uploaded form halves through its mipmap rather than by one
            // bilinear read between four texels: the same 2 x 2 means.
            pass.setVideoCapture(image, flipped ? 1.0f : 0.0f);
            gl->clearTarget(0, 0, 0, 0);
            pass.draw(1.0f);
            EXPECT_LE(cpublur::worstDifference(gl->readTarget(), expected), 3)
                << "image, kernel " << kernel << (flipped ? ", flipped" : "");
        }
        pass.finalize();
    }
    pmGL::deleteTexture(tex);
}

TEST_F(VideoBlurTest, ColourScalesThePicture) {
    video.dithering = false;
    video.setVideoCapture(uniformTexture({200, 100, 40}), 0.0f);
    video.setColor(glm::vec4(0.5f, 0.5f, 0.5f, 1.0f));
    expectAll(drawn(1.0f), {100, 50, 20}, 255, 1);
}

TEST_F(VideoBlurTest, OpaqueMixColourReplacesThePictureAndAlphaFollowsTheMultiplier) {
    video.dithering = false;
    video.setVideoCapture(uniformTexture({200, 100, 40}), 0.0f);
    video.setMixColor(glm::vec4(0.0f, 1.0f, 0.0f, 1.0f));
    expectAll(drawn(1.0f), {0, 255, 0}, 255, 0);
    // Without blending the output alpha shows as written: the multiplier alone.
    pmGL::disableBlend(video.dualCompositing.renderOpts.blend);
    video.setAlphaMultiplier(0.5f);
    expectAll(drawn(1.0f), {0, 255, 0}, 128, 0, 1);
}

TEST_F(VideoBlurTest, HalfMixColourMixesRgbAndKeepsAlphaOne) {
    video.dithering = false;
    video.setVideoCapture(uniformTexture({200, 100, 40}), 0.0f);
    video.setMixColor(glm::vec4(0.0f, 0.0f, 1.0f, 0.5f));
    pmGL::disableBlend(video.dualCompositing.renderOpts.blend);
    expectAll(drawn(1.0f), {100, 50, 148}, 255, 1);
}

TEST_F(VideoBlurTest, HalfAlphaComposesOverTheTargetUnpremultiplied) {
    video.dithering = false;
    video.setVideoCapture(uniformTexture({200, 100, 0}), 0.0f);
    video.setAlphaMultiplier(0.5f);
    gl->clearTarget(0.0f, 0.0f, 1.0f, 1.0f);
    video.draw(1.0f);
    // Source alpha blend of an unpremultiplied colour: half of each.
    expectAll(gl->readTarget(), {100, 50, 128}, 255, 1);
}

TEST_F(VideoBlurTest, DitheringShiftsByUnderOneLevel) {
    const Rgb colour{128, 64, 32};
    video.setVideoCapture(uniformTexture(colour), 0.0f);
    video.dithering = false;
    expectAll(drawn(1.0f), colour, 255, 0);
    video.dithering = true;
    const std::vector<uint8_t> dithered = drawn(1.0f);
    expectAll(dithered, colour, 255, 1);
}

TEST_F(VideoBlurTest, AreaLimitsTheDrawToItsPartOfTheTarget) {
    video.dithering = false;
    const Rgb colour{250, 10, 10};
    video.setVideoCapture(uniformTexture(colour), 0.0f);
    video.setArea(glm::vec2(0.0f), glm::vec2(0.5f), glm::vec2(0.0f), glm::vec2(0.5f));
    const std::vector<uint8_t> out = drawn(1.0f);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            const uint8_t* p = &out[(static_cast<size_t>(y) * 16 + x) * 4];
            if (x < 8 && y < 8) {
                ASSERT_NEAR(p[0], colour.r, 1) << x << "," << y;
                ASSERT_EQ(p[3], 255);
            } else {
                ASSERT_EQ(p[3], 0) << x << "," << y;
            }
        }
    }
}

}  // namespace
