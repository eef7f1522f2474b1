// The video blur object: the cross-fade between captures over the Draws per
// input frame, the once-a-second measurement of that number, the switches,
// the settings and their words, and a steady Draw that makes no GL object and
// takes no heap memory. The object runs on the test's own context.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "AllocationCounter.h"
#include "CpuGaussianBlur.h"
#include "GLTestContext.h"
#include "HeldClock.h"
#include "LogCapture.h"
#include "SanitizerBuild.h"
#include "PhotoFilterVideoBlur.h"
#include "TestPictures.h"
#include "pmUtil.h"

namespace {

using pmFilters::PhotoFilterVideoBlur;

// Smooth pictures that a wide blur keeps apart: a red ramp across, a green
// ramp down.
std::vector<uint8_t> rampAcross(int w, int h) {
    std::vector<uint8_t> pixels = solidPicture(w, h, {0, 40, 200});
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x)
            pixels[(static_cast<size_t>(y) * w + x) * 4] = x * 255 / (w - 1);
    }
    return pixels;
}

std::vector<uint8_t> rampDown(int w, int h) {
    std::vector<uint8_t> pixels = solidPicture(w, h, {30, 0, 60});
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            pixels[(static_cast<size_t>(y) * w + x) * 4 + 1] = y * 255 / (h - 1);
        }
    }
    return pixels;
}

std::vector<uint8_t> checkerboard(int w, int h, int cell) {
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const uint8_t v = ((x / cell + y / cell) % 2) ? 255 : 0;
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = p[1] = p[2] = v;
            p[3] = 255;
        }
    }
    return pixels;
}

void expectAll(const std::vector<uint8_t>& out, Rgb c, int tolerance) {
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], c.r, tolerance) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 1], c.g, tolerance) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 2], c.b, tolerance) << "pixel " << i / 4;
        ASSERT_EQ(out[i + 3], 255) << "pixel " << i / 4;
    }
}

int mixed(int a, int b, float w) {
    return static_cast<int>(std::lround(a + (b - a) * w));
}

Rgb mixed(Rgb a, Rgb b, float w) {
    return {mixed(a.r, b.r, w), mixed(a.g, b.g, w), mixed(a.b, b.b, w)};
}

// Each colour channel of `out` within one level of the CPU mix of `from` and
// `to` by w; alpha stays opaque.
void expectMix(const std::vector<uint8_t>& out, const std::vector<uint8_t>& from,
               const std::vector<uint8_t>& to, float w) {
    ASSERT_EQ(out.size(), from.size());
    for (size_t i = 0; i < out.size(); ++i) {
        if (i % 4 == 3) {
            ASSERT_EQ(out[i], 255);
            continue;
        }
        ASSERT_NEAR(out[i], mixed(from[i], to[i], w), 1) << "byte " << i << " at weight " << w;
    }
}

// The rows of a top-row-first picture in the order GL shows them with the
// default flip (0, 1): the top row given lands at the top of the target.
std::vector<uint8_t> upright(const std::vector<uint8_t>& rgba, int w, int h) {
    std::vector<uint8_t> rows(rgba.size());
    const size_t stride = static_cast<size_t>(w) * 4;
    for (int y = 0; y < h; ++y) {
        std::copy_n(&rgba[static_cast<size_t>(h - 1 - y) * stride], stride, &rows[y * stride]);
    }
    return rows;
}

// The largest difference between a drawn picture and the CPU's blur of the
// frame: at these sizes the scale factor clamps to 1, so the video pass is
// the two Gaussian passes of kernel 35 at the frame's own size.
int worstAgainstCpuBlur(const std::vector<uint8_t>& drawnPixels, const std::vector<uint8_t>& frame,
                        int w, int h) {
    const cpublur::Picture expected = cpublur::blurBoth(upright(frame, w, h), w, h, 35);
    if (drawnPixels.size() != expected.rgba.size()) return 256;
    int worst = 0;
    for (size_t i = 0; i < drawnPixels.size(); ++i) {
        if (i % 4 == 3) continue;
        worst = std::max(worst, std::abs(drawnPixels[i] - static_cast<int>(expected.rgba[i])));
    }
    return worst;
}

class VideoBlurFilterTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        filter = std::make_unique<PhotoFilterVideoBlur>(35);
        filter->Initialize();
        ASSERT_TRUE(filter->IsInit());
        // Tests that do not measure rates keep the cross-fade at its start value.
        filter->updateInterval = 1000000;
    }
    void TearDown() override {
        filter->Terminate();
        filter.reset();
        GLTest::TearDown();
    }
    void feed(const std::vector<uint8_t>& rgba, int w, int h) {
        filter->SetInputBufferInfo(COLOR_TYPE_RGBA, w, h);
        filter->SetInputBuffer(const_cast<uint8_t*>(rgba.data()));
    }
    std::vector<uint8_t> drawn() {
        gl->clearTarget(0, 0, 0, 0);
        filter->Draw(0, 0);
        return gl->readTarget();
    }
    // A frame, then Draws until the cross-fade rests on it.
    void settleOn(const std::vector<uint8_t>& rgba, int w, int h) {
        feed(rgba, w, h);
        for (int i = 0; i < 61 && (filter->newFrame || filter->interpolationStep != 0); ++i) {
            filter->Draw(0, 0);
        }
        ASSERT_FALSE(filter->newFrame);
        ASSERT_EQ(filter->interpolationStep, 0);
    }
    // Starts a measuring period now, with nothing counted yet.
    void startMeasuring() {
        clock = std::make_unique<HeldClock>();
        filter->updateInterval = 1000;
        filter->renderCount = 0;
        filter->inputCount = 0;
        filter->lastUpdateTime = pmUtil::now();
    }

    std::unique_ptr<PhotoFilterVideoBlur> filter;
    std::unique_ptr<HeldClock> clock;
};

TEST(VideoBlurObjectTest, ConstructorSnapsTheKernelAndTouchesNoContext) {
    LogCapture log;
    PhotoFilterVideoBlur filter(36);
    EXPECT_EQ(filter.kernelSize, 35);
    EXPECT_EQ(log.countEndingWith("> blur kernel size = 35"), 1);
    EXPECT_FALSE(filter.IsInit());
    EXPECT_FALSE(filter.newFrame);
    EXPECT_EQ(filter.intensity, 10.0f);
    EXPECT_EQ(filter.dim, 1.0f);
    EXPECT_TRUE(filter.interpolation);
    EXPECT_EQ(filter.updateInterval, 1000u);
    EXPECT_EQ(filter.defaultInterpolationCount, 4u);
    EXPECT_TRUE(filter.blur.dithering);
}

TEST(VideoBlurObjectTest, UninitialisedObjectRefusesSettingsWithItsWords) {
    PhotoFilterVideoBlur filter(35);
    LogCapture log;
    filter.SetIntensity(20.0f);
    filter.SetDimming(0.5f);
    filter.SetMixColor(glm::vec4(1.0f));
    filter.SetDithering(false);
    filter.SetInterpolation(false);
    filter.SetArea(glm::vec2(0.0f), glm::vec2(1.0f), glm::vec2(0.0f), glm::vec2(1.0f));
    filter.Reset();
    EXPECT_EQ(log.countEndingWith("> It is not initialized."), 7);
    filter.Draw(10, 10);
    EXPECT_EQ(log.lines().size(), 7u);
    EXPECT_EQ(filter.intensity, 10.0f);
    EXPECT_TRUE(filter.blur.dithering);
    EXPECT_TRUE(filter.interpolation);
    EXPECT_EQ(filter.renderCount, 0u);
}

TEST(VideoBlurObjectTest, NativeFrameOnAnUninitialisedObjectStillChangesTheCounters) {
    PhotoFilterVideoBlur filter(35);
    filter.updateInterval = 1000000;
    filter.lastUpdateTime = pmUtil::now();
    LogCapture log;
    filter.SetNativeBuffer(nullptr);
    EXPECT_EQ(log.countEndingWith("> It is not initialized."), 1);
    EXPECT_TRUE(filter.newFrame);
    EXPECT_EQ(filter.inputCount, 1u);
    // The other routes stop at the state test.
    filter.SetInputBuffer(nullptr);
    EXPECT_EQ(filter.inputCount, 1u);
}

TEST(VideoBlurObjectTest, RatesGiveTheDrawsPerFrameRounded) {
    HeldClock clock(5000000);
    PhotoFilterVideoBlur filter(35);
    LogCapture log;
    filter.lastUpdateTime = pmUtil::now();
    filter.renderCount = 60;
    filter.inputCount = 25;
    clock.advance(999);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.renderCount, 60u) << "within the period nothing is measured";
    clock.advance(1);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.interpolationCount, 2);
    EXPECT_EQ(filter.renderCount, 0u);
    EXPECT_EQ(filter.inputCount, 0u);
    EXPECT_EQ(filter.lastUpdateTime, 5001000u) << "the next period starts at the measurement";
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].priority, 4);
    EXPECT_NE(lines[0].text.find(
                  "> interpolationCount : [2], renderCountPerSec [60] / inputCountPerSec [25]"),
              std::string::npos);
    // 90 / 25 + 0.5 = 4.1 truncates to 4; no Draws at all clamp to 1.
    filter.renderCount = 90;
    filter.inputCount = 25;
    clock.advance(1000);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.interpolationCount, 4);
    filter.inputCount = 5;
    clock.advance(1000);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.interpolationCount, 1);
    // A measurement that comes late starts the next period at its own time,
    // not one interval after the last, so the period after it is a whole
    // second again.
    clock.advance(1500);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.lastUpdateTime, 5004500u);
    filter.renderCount = 30;
    filter.inputCount = 10;
    clock.advance(999);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.renderCount, 30u) << "within the period nothing is measured";
    clock.advance(1);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.interpolationCount, 3);
}

TEST(VideoBlurObjectTest, PausedStreamCountsAsOneFrameAndCapsAtSixty) {
    HeldClock clock;
    PhotoFilterVideoBlur filter(35);
    LogCapture log;
    filter.renderCount = 500;
    filter.lastUpdateTime = pmUtil::now();
    clock.advance(1000);
    filter.updateInterpolationCount();
    EXPECT_EQ(filter.interpolationCount, 60);
    EXPECT_EQ(log.countEndingWith("> calculateInterpolation() - bufferSets == 0."), 1);
    EXPECT_EQ(log.countEndingWith(
                  "> interpolationCount : [60], renderCountPerSec [500] / inputCountPerSec [1]"),
              1);
}

TEST_F(GLTest, VideoBlurInitializeSetsTheDefaultsAndResets) {
    PhotoFilterVideoBlur filter(35);
    LogCapture log;
    const uint64_t before = pmUtil::now();
    filter.Initialize();
    ASSERT_TRUE(filter.IsInit());
    EXPECT_EQ(log.countEndingWith("> PhotoFilterVideoBlur::Initialize() - SUCCESS."), 1);
    EXPECT_EQ(log.countEndingWith("> VideoGaussianBlur::initialize(35)"), 1);
    EXPECT_EQ(log.countEndingWith("> PhotoFilterVideoBlur::SetIntensity() - degree : 10.000000"),
              1);
    EXPECT_EQ(log.countEndingWith("> PhotoFilterVideoBlur::SetDimming() - dim : 1.000000"), 1);
    EXPECT_EQ(log.count("pmFilters: Initialize("), 4) << log.dump();
    for (const LogLine& line : log.lines()) {
        if (line.text.find("- SUCCESS.") != std::string::npos) {
            EXPECT_EQ(line.priority, 4);
        }
    }
    EXPECT_EQ(filter.interpolationCount, 4);
    EXPECT_EQ(filter.interpolationStep, 0);
    EXPECT_GE(filter.lastUpdateTime, before);
    EXPECT_EQ(filter.blur.pendingCaptures, 2);
    EXPECT_EQ(filter.blur.dualCompositing.ud.vec4s.at("uColor"), glm::vec4(1.0f));
    EXPECT_EQ(filter.blur.dualCompositing.ud.vec4s.at("uMixColor"), glm::vec4(0.0f));
    LogCapture end;
    filter.Terminate();
    EXPECT_EQ(end.countEndingWith("> VideoGaussianBlur::finalize() is Finished."), 1);
    EXPECT_EQ(filter.blur.dualCompositing.program.id, 0u);
}

TEST_F(VideoBlurFilterTest, DrawBeforeAnyFrameLogsFromThePass) {
    LogCapture log;
    filter->Draw(0, 0);
    EXPECT_EQ(log.countEndingWith("> Call setVideoCapture() first."), 1);
    EXPECT_EQ(log.count("GaussianBlur: draw("), 1);
    EXPECT_EQ(filter->renderCount, 1u);
}

TEST_F(VideoBlurFilterTest, FirstFrameShowsAtFullWeightWhateverTheWeight) {
    const Rgb colour{180, 90, 30};
    feed(solidPicture(32, 24, colour), 32, 24);
    EXPECT_TRUE(filter->newFrame);
    EXPECT_EQ(filter->inputCount, 1u);
    // Captured at this Draw with a weight of 1/4, but there is nothing to fade from.
    const std::vector<uint8_t> first = drawn();
    EXPECT_EQ(filter->interpolationStep, 3);
    EXPECT_EQ(filter->blur.pendingCaptures, 1);
    expectAll(first, colour, 1);
}

TEST_F(VideoBlurFilterTest, AConstantPictureBlursToItselfWithinOneLevel) {
    const Rgb colour{201, 102, 53};
    settleOn(solidPicture(64, 48, colour), 64, 48);
    gl->resizeTarget(40, 30);
    expectAll(drawn(), colour, 1);
}

TEST_F(VideoBlurFilterTest, CrossFadeGivesQuarterStepsAgainstTheCpuMix) {
    const int w = 48, h = 40;
    gl->resizeTarget(w, h);
    filter->SetDithering(false);
    settleOn(rampAcross(w, h), w, h);
    const std::vector<uint8_t> oldBlur = drawn();
    feed(rampDown(w, h), w, h);
    std::vector<std::vector<uint8_t>> steps;
    std::vector<int> stepsLeft;
    for (int i = 0; i < 4; ++i) {
        steps.push_back(drawn());
        stepsLeft.push_back(filter->interpolationStep);
    }
    EXPECT_EQ(stepsLeft, (std::vector<int>{3, 2, 1, 0}));
    const std::vector<uint8_t>& newBlur = steps[3];
    // The two blurred frames differ enough for the weights to show.
    int largest = 0;
    for (size_t i = 0; i < oldBlur.size(); ++i) {
        largest = std::max(largest, std::abs(oldBlur[i] - newBlur[i]));
    }
    ASSERT_GT(largest, 100);
    // The end pictures are the blurs of the two frames, computed apart from
    // the library; the CPU model matches the renderer's 8-bit filtering, so
    // one level is left for the rounding of the passes.
    EXPECT_LE(worstAgainstCpuBlur(oldBlur, rampAcross(w, h), w, h), 1);
    EXPECT_LE(worstAgainstCpuBlur(newBlur, rampDown(w, h), w, h), 1);
    expectMix(steps[0], oldBlur, newBlur, 0.25f);
    expectMix(steps[1], oldBlur, newBlur, 0.5f);
    expectMix(steps[2], oldBlur, newBlur, 0.75f);
    // Resting: further Draws stay at the new frame.
    EXPECT_EQ(drawn(), newBlur);
    EXPECT_EQ(filter->interpolationStep, 0);
}

TEST_F(VideoBlurFilterTest, CrossFadeWeightsOnConstantFramesWithDithering) {
    const Rgb a{20, 200, 100};
    const Rgb b{220, 0, 180};
    settleOn(solidPicture(32, 24, a), 32, 24);
    feed(solidPicture(32, 24, b), 32, 24);
    expectAll(drawn(), mixed(a, b, 0.25f), 1);
    expectAll(drawn(), mixed(a, b, 0.5f), 1);
    expectAll(drawn(), mixed(a, b, 0.75f), 1);
    expectAll(drawn(), b, 1);
}

TEST_F(VideoBlurFilterTest, WithoutInterpolationANewFrameShowsAtFullWeightAtTheNextDraw) {
    LogCapture log;
    filter->SetInterpolation(false);
    EXPECT_EQ(log.countEndingWith("> Disable frame interpolation."), 1);
    filter->SetDithering(false);
    const Rgb a{20, 200, 100};
    const Rgb b{220, 0, 180};
    feed(solidPicture(32, 24, a), 32, 24);
    expectAll(drawn(), a, 1);
    feed(solidPicture(32, 24, b), 32, 24);
    const std::vector<uint8_t> out = drawn();
    EXPECT_EQ(filter->blur.pendingCaptures, 0);
    EXPECT_FALSE(filter->newFrame);
    EXPECT_EQ(filter->interpolationStep, 0);
    expectAll(out, b, 1);
}

TEST_F(VideoBlurFilterTest, SwitchingInterpolationOffMidFadeFreezesTheMixUntilTheNextCapture) {
    filter->SetDithering(false);
    const Rgb a{0, 100, 200};
    const Rgb b{200, 100, 0};
    const Rgb c{50, 250, 50};
    settleOn(solidPicture(32, 24, a), 32, 24);
    feed(solidPicture(32, 24, b), 32, 24);
    expectAll(drawn(), mixed(a, b, 0.25f), 1);
    expectAll(drawn(), mixed(a, b, 0.5f), 1);
    filter->SetInterpolation(false);
    EXPECT_EQ(filter->interpolationStep, 2) << "the switch neither resets nor captures";
    expectAll(drawn(), mixed(a, b, 0.5f), 1);
    expectAll(drawn(), mixed(a, b, 0.5f), 1);
    feed(solidPicture(32, 24, c), 32, 24);
    expectAll(drawn(), c, 1);
    LogCapture log;
    filter->SetInterpolation(true);
    EXPECT_EQ(log.countEndingWith("> Enable frame interpolation."), 1);
}

TEST_F(VideoBlurFilterTest, FrameDuringAFadeWaitsAndOnlyTheLatestIsCaptured) {
    filter->SetDithering(false);
    const Rgb a{0, 0, 0};
    const Rgb b{200, 200, 200};
    const Rgb c{0, 250, 0};
    const Rgb d{240, 0, 240};
    settleOn(solidPicture(32, 24, a), 32, 24);
    feed(solidPicture(32, 24, b), 32, 24);
    expectAll(drawn(), mixed(a, b, 0.25f), 1);
    EXPECT_EQ(filter->interpolationStep, 3);
    // Two frames arrive during the fade; inputBuffer keeps the latest only.
    feed(solidPicture(32, 24, c), 32, 24);
    feed(solidPicture(32, 24, d), 32, 24);
    const unsigned latest = filter->blur.latestBuffer.id;
    // Each Draw now takes two steps off the fade.
    expectAll(drawn(), mixed(a, b, 0.75f), 1);
    EXPECT_EQ(filter->interpolationStep, 1);
    expectAll(drawn(), b, 1);
    EXPECT_EQ(filter->interpolationStep, 0);
    EXPECT_TRUE(filter->newFrame);
    EXPECT_EQ(filter->blur.latestBuffer.id, latest);
    // The step goes below zero: the waiting frame is captured and fades in.
    expectAll(drawn(), mixed(b, d, 0.25f), 1);
    EXPECT_FALSE(filter->newFrame);
    EXPECT_EQ(filter->interpolationStep, 3);
    EXPECT_NE(filter->blur.latestBuffer.id, latest);
}

TEST_F(VideoBlurFilterTest, ASecondWithoutFramesGrowsTheCountToTheDrawsPerSecond) {
    settleOn(solidPicture(16, 16, {10, 20, 30}), 16, 16);
    startMeasuring();
    LogCapture log;
    // Forty Draws 25 ms apart: the fortieth is the first a full second after
    // the period began, and it is counted before the measurement.
    int draws = 0;
    while (filter->interpolationCount == 4 && draws < 100) {
        clock->advance(25);
        filter->Draw(0, 0);
        ++draws;
    }
    EXPECT_EQ(draws, 40);
    EXPECT_EQ(filter->interpolationCount, 40);
    EXPECT_EQ(log.countEndingWith("> calculateInterpolation() - bufferSets == 0."), 1);
    EXPECT_EQ(
        log.count("> interpolationCount : [" + std::to_string(draws) + "], renderCountPerSec [" +
                  std::to_string(draws) + "] / inputCountPerSec [1]"),
        1)
        << log.dump();
    EXPECT_EQ(filter->renderCount, 0u);
}

TEST_F(VideoBlurFilterTest, ManyDrawsWithoutFramesStopAtSixty) {
    settleOn(solidPicture(16, 16, {10, 20, 30}), 16, 16);
    startMeasuring();
    // 250 Draws 4 ms apart make a second; 250 a second clamp to sixty.
    int draws = 0;
    while (filter->interpolationCount == 4 && draws < 1000) {
        clock->advance(4);
        filter->Draw(0, 0);
        ++draws;
    }
    EXPECT_EQ(draws, 250);
    EXPECT_EQ(filter->interpolationCount, 60);
}

TEST_F(VideoBlurFilterTest, FramesFasterThanDrawsSettleTheCountAtOne) {
    const std::vector<uint8_t> frame = checkerboard(32, 24, 4);
    filter->SetInputBufferInfo(COLOR_TYPE_RGBA, 32, 24);
    startMeasuring();
    // Three frames and one Draw every 10 ms: 100 Draws to 300 frames, which
    // rounds to 0.83 and clamps to one Draw per frame.
    int draws = 0;
    while (filter->interpolationCount == 4 && draws < 200) {
        clock->advance(10);
        for (int i = 0; i < 3; ++i) filter->SetInputBuffer(const_cast<uint8_t*>(frame.data()));
        filter->Draw(0, 0);
        ++draws;
    }
    ASSERT_EQ(filter->interpolationCount, 1);
    EXPECT_EQ(draws, 100);
    // A fade begun at the old count runs out within three Draws; from then on
    // every Draw captures the waiting frame, once, and rests on it.
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) filter->SetInputBuffer(const_cast<uint8_t*>(frame.data()));
        filter->Draw(0, 0);
    }
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 3; ++j) filter->SetInputBuffer(const_cast<uint8_t*>(frame.data()));
        const unsigned latest = filter->blur.latestBuffer.id;
        const unsigned previous = filter->blur.previousBuffer.id;
        filter->Draw(0, 0);
        EXPECT_FALSE(filter->newFrame);
        EXPECT_EQ(filter->interpolationStep, 0);
        EXPECT_EQ(filter->blur.latestBuffer.id, previous);
        EXPECT_EQ(filter->blur.previousBuffer.id, latest);
    }
}

TEST_F(VideoBlurFilterTest, ScaleFactorIsMeasuredAgainstTheReferencePicture) {
    const int w = 1920, h = 1080;
    LogCapture log;
    feed(solidPicture(w, h, {60, 60, 60}), w, h);
    filter->Draw(0, 0);
    // 1 / (10 * 1920 / 720) = 0.0375. In single precision it falls just
    // below, so 1080 * s + 0.5 truncates to 40 rather than 41.
    EXPECT_NEAR(filter->blur.scaleFactor, 0.0375f, 1e-6f);
    EXPECT_EQ(log.countEndingWith("> create internal buffers: 72 x 40 x 4 x 3."), 1) << log.dump();
}

TEST_F(VideoBlurFilterTest, IntensityActsOnlyAtTheNextCapture) {
    const int w = 96, h = 80;
    const std::vector<uint8_t> frame = checkerboard(w, h, 6);
    filter->SetDithering(false);
    settleOn(frame, w, h);
    const std::vector<uint8_t> still = drawn();
    const float scaleBefore = filter->blur.scaleFactor;
    filter->SetIntensity(50.0f);
    EXPECT_EQ(drawn(), still);
    EXPECT_EQ(filter->blur.scaleFactor, scaleBefore);
    settleOn(frame, w, h);
    EXPECT_LT(filter->blur.scaleFactor, scaleBefore);
    EXPECT_NE(drawn(), still);
}

TEST_F(VideoBlurFilterTest, RefusedFrameIsCountedAndItsCaptureRefusedByThePass) {
    LogCapture log;
    filter->SetInputBuffer(nullptr);
    EXPECT_EQ(log.countEndingWith("> FilterCommon::SetInputBuffer() - buf is null."), 1);
    EXPECT_TRUE(filter->newFrame);
    EXPECT_EQ(filter->inputCount, 1u);
    filter->Draw(0, 0);
    EXPECT_EQ(log.countEndingWith("> FrameBuffer fb is not exist."), 1);
    EXPECT_EQ(log.countEndingWith("> Call setVideoCapture() first."), 1);
    EXPECT_FALSE(filter->newFrame);
}

TEST_F(VideoBlurFilterTest, TextureInputCountsAsAFrame) {
    const Rgb colour{70, 140, 210};
    std::vector<uint8_t> pixels = solidPicture(20, 10, colour);
    pmGL::Texture tex;
    pmUtil::ImageData<unsigned char> image(20, 10, 4, pixels.data());
    pmGL::createTexture(tex, image, pmGL::TextureOpts());
    filter->SetInputBufferWithTexture(tex.id, 20, 10, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_TRUE(filter->newFrame);
    EXPECT_EQ(filter->inputCount, 1u);
    expectAll(drawn(), colour, 1);
    pmGL::deleteTexture(tex);
}

TEST_F(VideoBlurFilterTest, IntensityIsClampedWithItsWords) {
    LogCapture log;
    filter->SetIntensity(0.5f);
    EXPECT_EQ(filter->intensity, 1.0f);
    filter->SetIntensity(60.0f);
    EXPECT_EQ(filter->intensity, 50.0f);
    filter->SetIntensity(20.0f);
    EXPECT_EQ(filter->intensity, 20.0f);
    EXPECT_EQ(log.countEndingWith("> PhotoFilterVideoBlur::SetIntensity() - degree : 0.500000"), 1);
    const std::string warning =
        "> Intensity value is not valid. Blur intensity range : 1.000000 ~ 50.000000";
    EXPECT_EQ(log.countEndingWith(warning), 2);
    for (const LogLine& line : log.lines()) {
        const bool isWarning = line.text.find("not valid") != std::string::npos;
        EXPECT_EQ(line.priority, isWarning ? 4 : 6) << line.text;
    }
}

TEST_F(VideoBlurFilterTest, DimmingIsClampedAndActsAtTheNextDraw) {
    filter->SetDithering(false);
    const Rgb colour{200, 100, 50};
    settleOn(solidPicture(32, 24, colour), 32, 24);
    LogCapture log;
    filter->SetDimming(-1.0f);
    EXPECT_EQ(filter->dim, 0.0f);
    EXPECT_EQ(log.countEndingWith("> PhotoFilterVideoBlur::SetDimming() - dim : -1.000000"), 1);
    EXPECT_EQ(log.countEndingWith(
                  "> Intensity value is not valid. Dimming intensity range : 0.0f ~ 1.0f"),
              1);
    expectAll(drawn(), {0, 0, 0}, 0);
    filter->SetDimming(0.5f);
    EXPECT_EQ(filter->blur.dualCompositing.ud.vec4s.at("uColor"),
              glm::vec4(0.5f, 0.5f, 0.5f, 1.0f));
    expectAll(drawn(), {100, 50, 25}, 1);
    filter->SetDimming(3.0f);
    EXPECT_EQ(filter->dim, 1.0f);
}

TEST_F(VideoBlurFilterTest, MixColourIsLoggedAsGivenAndClamped) {
    LogCapture log;
    filter->SetMixColor(glm::vec4(2.0f, -1.0f, 0.5f, 3.0f));
    EXPECT_EQ(log.countEndingWith("> PhotoFilterVideoBlur::SetMixColor() - each value should be "
                                  "from 0.0 to 1.0. r : 2.000000, g : -1.000000, b : 0.500000, a "
                                  ": 3.000000"),
              1);
    EXPECT_EQ(filter->blur.dualCompositing.ud.vec4s.at("uMixColor"),
              glm::vec4(1.0f, 0.0f, 0.5f, 1.0f));
    filter->SetDithering(false);
    settleOn(solidPicture(32, 24, {10, 20, 30}), 32, 24);
    expectAll(drawn(), {255, 0, 128}, 1);
}

TEST_F(VideoBlurFilterTest, DitheringSwitchSetsThePassFlagWithItsWords) {
    LogCapture log;
    filter->SetDithering(false);
    EXPECT_FALSE(filter->blur.dithering);
    filter->SetDithering(true);
    EXPECT_TRUE(filter->blur.dithering);
    EXPECT_EQ(log.countEndingWith("> Disable dithering, dimming, and partial rendering."), 1);
    EXPECT_EQ(log.countEndingWith("> Enable dithering, dimming, and partial rendering."), 1);
    // Dimming works whatever the flag says.
    filter->SetDithering(false);
    filter->SetDimming(0.0f);
    settleOn(solidPicture(32, 24, {200, 200, 200}), 32, 24);
    expectAll(drawn(), {0, 0, 0}, 0);
}

TEST_F(VideoBlurFilterTest, AreaLimitsTheDrawToItsPart) {
    filter->SetDithering(false);
    const Rgb colour{240, 30, 30};
    filter->SetArea(glm::vec2(0.5f), glm::vec2(1.0f), glm::vec2(0.5f), glm::vec2(1.0f));
    settleOn(solidPicture(32, 32, colour), 32, 32);
    const std::vector<uint8_t> out = drawn();
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            const uint8_t* p = &out[(static_cast<size_t>(y) * 16 + x) * 4];
            if (x >= 8 && y >= 8) {
                ASSERT_NEAR(p[0], colour.r, 1) << x << "," << y;
                ASSERT_EQ(p[3], 255);
            } else {
                ASSERT_EQ(p[3], 0) << x << "," << y;
            }
        }
    }
}

TEST_F(VideoBlurFilterTest, PlanarInputAndReadBackAreEmptyOperations) {
    LogCapture log;
    std::vector<uint8_t> plane(16, 9);
    filter->SetInputBufferYUV444(plane.data(), plane.data(), plane.data());
    filter->SetOutputBufferInfo(COLOR_TYPE_YUV, 4, 4);
    std::vector<uint8_t> out(64, 7);
    filter->SetOutputBuffer(out.data());
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(filter->GetOutputSize(), glm::ivec2(1920, 1080));
    EXPECT_EQ(filter->GetOutputColorType(), COLOR_TYPE_RGBA);
    EXPECT_EQ(out, std::vector<uint8_t>(64, 7));
    EXPECT_FALSE(filter->newFrame);
}

TEST_F(VideoBlurFilterTest, ResetForgetsCapturesAndRestartsTheMeasurement) {
    settleOn(solidPicture(16, 16, {1, 2, 3}), 16, 16);
    feed(solidPicture(16, 16, {4, 5, 6}), 16, 16);
    filter->Draw(0, 0);
    filter->interpolationCount = 9;
    feed(solidPicture(16, 16, {7, 8, 9}), 16, 16);
    filter->Reset();
    EXPECT_FALSE(filter->newFrame);
    EXPECT_EQ(filter->interpolationStep, 0);
    EXPECT_EQ(filter->renderCount, 0u);
    EXPECT_EQ(filter->inputCount, 0u);
    EXPECT_EQ(filter->interpolationCount, 4);
    EXPECT_EQ(filter->blur.pendingCaptures, 2);
    LogCapture log;
    filter->Draw(0, 0);
    EXPECT_EQ(log.countEndingWith("> Call setVideoCapture() first."), 1);
}

// Steady Draws in either quality: warm every path, then count the heap
// allocations and the GL names of resting Draws, a capture and its fade.
class VideoBlurSteadyTest : public VideoBlurFilterTest,
                            public ::testing::WithParamInterface<int> {};

TEST_P(VideoBlurSteadyTest, SteadyDrawsMakeNoGLObjectAndTakeNoHeapMemory) {
    if (PIXMORA_TEST_ASAN) GTEST_SKIP() << "allocations are the sanitizer's to count";
    filter->SetQuality(GetParam());
    ASSERT_EQ(filter->blur.quality, GetParam());
    const int w = 64, h = 48;
    const std::vector<uint8_t> a = rampAcross(w, h);
    const std::vector<uint8_t> b = rampDown(w, h);
    // Warm every path: first and second capture, fading and resting.
    settleOn(a, w, h);
    settleOn(b, w, h);
    settleOn(a, w, h);
    filter->Draw(0, 0);

    std::vector<GLuint> expected = nextGLNames();
    for (GLuint& name : expected) ++name;
    // Resting Draws.
    EXPECT_EQ(allocationsDuring([&] {
                  for (int i = 0; i < 5; ++i) filter->Draw(0, 0);
              }),
              0u);
    // A Draw that captures, then the Draws of the cross-fade.
    feed(b, w, h);
    EXPECT_EQ(allocationsDuring([&] {
                  for (int i = 0; i < 5; ++i) filter->Draw(0, 0);
              }),
              0u);
    EXPECT_EQ(filter->blur.pendingCaptures, 0);
    EXPECT_EQ(filter->interpolationStep, 0);
    EXPECT_EQ(nextGLNames(), expected);
    // The counter works: the library's kinds of heap allocation are seen.
    EXPECT_EQ(allocationsDuring([] { allocationSink = std::malloc(16); }), 1u);
    std::free(allocationSink);
    EXPECT_EQ(allocationsDuring([] { allocationSink = new int(1); }), 1u);
    delete static_cast<int*>(allocationSink);
    std::string text;
    EXPECT_EQ(allocationsDuring([&] { text.assign(100, 'x'); }), 1u);
    std::vector<int> values;
    EXPECT_EQ(allocationsDuring([&] { values.resize(100); }), 1u);
}

INSTANTIATE_TEST_SUITE_P(BothQualities, VideoBlurSteadyTest,
                         ::testing::Values(pmDraw::BLUR_QUALITY_DEFAULT,
                                           pmDraw::BLUR_QUALITY_SMOOTH));

}  // namespace
