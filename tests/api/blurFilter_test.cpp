// The exported blur functions and the still blur behind them: read-back into
// the caller's memory, strength, dimming, mix colour, planar input, routes.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "PhotoFilterBlur.h"
#include "PhotoFilterVideoBlur.h"
#include "TestPictures.h"
#include "pixmora.h"
#include "pmGLContextManager.h"

namespace {

using pmFilters::PhotoFilterBlur;

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

double variance(const std::vector<uint8_t>& rgba, int channel) {
    double sum = 0.0, squares = 0.0;
    const size_t n = rgba.size() / 4;
    for (size_t i = 0; i < n; ++i) {
        sum += rgba[i * 4 + channel];
        squares += static_cast<double>(rgba[i * 4 + channel]) * rgba[i * 4 + channel];
    }
    const double mean = sum / n;
    return squares / n - mean * mean;
}

// The middle half of the picture in each direction, away from the edges
// where clamping holds the blur back.
std::vector<uint8_t> centre(const std::vector<uint8_t>& rgba, int w, int h) {
    std::vector<uint8_t> middle;
    for (int y = h / 4; y < h * 3 / 4; ++y) {
        const uint8_t* row = &rgba[(static_cast<size_t>(y) * w + w / 4) * 4];
        middle.insert(middle.end(), row, row + (w / 2) * 4);
    }
    return middle;
}

class BlurFilterTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
    }
    void TearDown() override {
        if (object.handler) pmBlurFilterDelete(&object);
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
    void create(unsigned type = PM_BLUR_PHOTO, int kernel = 35) {
        object = {static_cast<int>(type), pmBlurFilterCreateWithKernelSize(type, kernel)};
        ASSERT_NE(object.handler, nullptr);
    }
    PhotoFilterBlur* photo() { return static_cast<PhotoFilterBlur*>(object.handler); }
    std::vector<uint8_t> readBack(int w, int h, int colorType = COLOR_TYPE_RGBA) {
        std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4, 0);
        pmBlurFilterSetOutputBuffer(object, {colorType, out.data(), w, h});
        return out;
    }
    pmFilterObject object{0, nullptr};
};

TEST_F(BlurFilterTest, CreateWritesTheVersionLineAndBuildsAPhotoBlur) {
    LogCapture log;
    create();
    EXPECT_EQ(log.countEndingWith("> Blur Version 1.0.12 "), 1);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterCreate() - NEW PHOTO BLUR "), 1);
    EXPECT_NE(log.count("PixmoraWrapper: "), 0);
    EXPECT_TRUE(photo()->IsInit());
    EXPECT_EQ(photo()->kernelSize, 35);
    EXPECT_FLOAT_EQ(photo()->intensity, 40.0f);
    EXPECT_EQ(photo()->blur.dither.ud.vec4s["uColor"], glm::vec4(1.0f));
    EXPECT_EQ(photo()->blur.dither.ud.vec4s["uMixColor"], glm::vec4(0.0f));
}

TEST_F(BlurFilterTest, UnknownTypeGivesNull) {
    LogCapture log;
    EXPECT_EQ(pmBlurFilterCreate(2), nullptr);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterCreate()  - unknown type. returns nullptr."), 1);
}

TEST_F(BlurFilterTest, DeleteClearsTheHandlerAndTwiceSaysEmpty) {
    create();
    LogCapture log;
    pmBlurFilterDelete(&object);
    EXPECT_EQ(object.handler, nullptr);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterDelete() - delete object.handler"), 1);
    pmBlurFilterDelete(&object);
    EXPECT_EQ(log.countEndingWith("> This object is empty."), 1);
}

TEST_F(BlurFilterTest, ConstantPictureBlursToItself) {
    create();
    const int w = 64, h = 48;
    std::vector<uint8_t> pixels = solidPicture(w, h, {180, 90, 30});
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    for (float intensity : {1.0f, 10.0f, 40.0f}) {
        pmBlurFilterSetBlurIntensity(object, intensity);
        const std::vector<uint8_t> out = readBack(w, h);
        for (size_t i = 0; i < out.size(); i += 4) {
            ASSERT_NEAR(out[i], 180, 1) << intensity;
            ASSERT_NEAR(out[i + 1], 90, 1) << intensity;
            ASSERT_NEAR(out[i + 2], 30, 1) << intensity;
            ASSERT_EQ(out[i + 3], 255);
        }
    }
}

TEST_F(BlurFilterTest, OutputReceivesExactlyWidthTimesHeightTimesFourBytes) {
    create();
    const int w = 13, h = 7;
    std::vector<uint8_t> pixels = solidPicture(w, h, {10, 20, 30});
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    pmBlurFilterSetBlurIntensity(object, 1.0f);  // a small picture: no reduction
    for (int colorType : {COLOR_TYPE_RGBA, COLOR_TYPE_YUVA, COLOR_TYPE_YUV}) {
        const size_t size = static_cast<size_t>(w) * h * 4;
        const size_t guard = 256;
        std::vector<uint8_t> memory(guard + size + guard, 0xAB);
        pmBlurFilterSetOutputBuffer(object, {colorType, memory.data() + guard, w, h});
        for (size_t i = 0; i < guard; ++i) {
            ASSERT_EQ(memory[i], 0xAB) << "before, type " << colorType;
            ASSERT_EQ(memory[guard + size + i], 0xAB) << "after, type " << colorType;
        }
        if (colorType == COLOR_TYPE_RGBA) {
            EXPECT_NEAR(memory[guard], 10, 1);
            EXPECT_NEAR(memory[guard + size - 1], 255, 0);
        }
    }
}

TEST_F(BlurFilterTest, DimmingZeroGivesBlackAndRedMixGivesRed) {
    create();
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 5);
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    pmBlurFilterSetBlurDimming(object, 0.0f);
    std::vector<uint8_t> out = readBack(w, h);
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_LE(out[i], 1);
        ASSERT_LE(out[i + 1], 1);
        ASSERT_LE(out[i + 2], 1);
    }
    pmBlurFilterSetBlurDimming(object, 1.0f);
    pmBlurFilterSetBlurMixColor(object, 1.0f, 0.0f, 0.0f, 1.0f);
    out = readBack(w, h);
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_GE(out[i], 254);
        ASSERT_LE(out[i + 1], 1);
        ASSERT_LE(out[i + 2], 1);
        ASSERT_EQ(out[i + 3], 255);
    }
}

TEST_F(BlurFilterTest, StrongerIntensityGivesLowerVarianceOnACheckerboard) {
    create();
    const int w = 256, h = 192;
    std::vector<uint8_t> pixels = checkerboard(w, h, 32);
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    double previous = variance(centre(pixels, w, h), 0);
    for (float intensity : {1.0f, 1.25f, 1.5f, 2.0f, 2.5f}) {
        pmBlurFilterSetBlurIntensity(object, intensity);
        const double v = variance(centre(readBack(w, h), w, h), 0);
        EXPECT_LT(v, previous) << "intensity " << intensity;
        previous = v;
    }
}

TEST_F(BlurFilterTest, PlanarPlanesComeBackThroughOutputTypeTwo) {
    create();
    const int w = 12, h = 8;
    std::vector<uint8_t> y(w * h, 200), u(w * h, 100), v(w * h, 50);
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    pmBlurFilterSetBufferYUV444(object, {y.data(), u.data(), v.data(), w, h});
    EXPECT_EQ(photo()->GetInputColorType(), COLOR_TYPE_YUV444P);
    EXPECT_EQ(photo()->inputTextures.size(), 3u);
    LogCapture log;
    const std::vector<uint8_t> out = readBack(w, h, COLOR_TYPE_YUVA);
    EXPECT_EQ(log.countEndingWith(">  Binding yuvBuffer"), 1);
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], 200, 1);
        ASSERT_NEAR(out[i + 1], 100, 1);
        ASSERT_NEAR(out[i + 2], 50, 1);
        ASSERT_EQ(out[i + 3], 255);
    }
}

TEST_F(BlurFilterTest, PlanarInputIsNotSeenByTheRgbRoute) {
    create();
    const int w = 8, h = 8;
    std::vector<uint8_t> y(w * h, 200), u(w * h, 100), v(w * h, 50);
    pmBlurFilterSetBufferYUV444(object, {y.data(), u.data(), v.data(), w, h});
    LogCapture log;
    readBack(w, h, COLOR_TYPE_RGBA);
    EXPECT_EQ(log.countEndingWith("> RGB Blur"), 1);
    EXPECT_FALSE(pmGL::isExist(photo()->inputBuffer));
}

TEST_F(BlurFilterTest, OutputTypeTwoWithInterleavedInputMergesAnEmptyList) {
    create();
    const int w = 8, h = 8;
    std::vector<uint8_t> pixels = solidPicture(w, h, {10, 20, 30});
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    LogCapture log;
    std::vector<uint8_t> out = readBack(w, h, COLOR_TYPE_YUVA);
    EXPECT_EQ(log.countEndingWith(">  Binding yuvBuffer"), 1);
    EXPECT_TRUE(photo()->inputTextures.empty());
}

TEST_F(BlurFilterTest, SameOutputSizeReusesTheBlurBuffer) {
    create();
    std::vector<uint8_t> pixels = solidPicture(32, 32, {1, 2, 3});
    pmBlurFilterSetBuffer(object, pixels.data(), 32, 32, 4);
    pmBlurFilterSetBlurIntensity(object, 4.0f);
    readBack(8, 8);
    const unsigned buffer = photo()->blurBuffer.id;
    LogCapture log;
    EXPECT_TRUE(makesNoGLObject([&] { readBack(8, 8); }));  // steady size: nothing made
    EXPECT_EQ(photo()->blurBuffer.id, buffer);
    EXPECT_EQ(log.count("Delete blurBuffer"), 0);
}

TEST_F(BlurFilterTest, IntensityIsClampedAndGivesTheScaleFactor) {
    create();
    LogCapture log;
    pmBlurFilterSetBlurIntensity(object, 0.5f);
    EXPECT_FLOAT_EQ(photo()->intensity, 1.0f);
    EXPECT_EQ(log.count("> Intensity value is not valid. Blur intensity range : 1.000000 ~ "
                        "50.000000"),
              1);
    EXPECT_EQ(log.count("> PhotoFilterBlur::SetIntensity() - degree : 0.500000"), 1);
    pmBlurFilterSetBlurIntensity(object, 70.0f);
    EXPECT_FLOAT_EQ(photo()->intensity, 50.0f);
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    std::vector<uint8_t> pixels = solidPicture(8, 8, {1, 2, 3});
    pmBlurFilterSetBuffer(object, pixels.data(), 8, 8, 4);
    readBack(8, 8);
    EXPECT_FLOAT_EQ(photo()->blur.scaleFactor, 1.0f);
    pmBlurFilterSetBlurIntensity(object, 10.0f);
    readBack(8, 8);
    EXPECT_FLOAT_EQ(photo()->blur.scaleFactor, 0.1f);
}

TEST_F(BlurFilterTest, LargerKernelGivesALargerScaleFactor) {
    create(PM_BLUR_PHOTO, 39);
    EXPECT_EQ(photo()->kernelSize, 39);
    pmBlurFilterSetBlurIntensity(object, 10.0f);
    std::vector<uint8_t> pixels = solidPicture(8, 8, {1, 2, 3});
    pmBlurFilterSetBuffer(object, pixels.data(), 8, 8, 4);
    readBack(8, 8);
    EXPECT_FLOAT_EQ(photo()->blur.scaleFactor, 39.0f / 35.0f / 10.0f);
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    readBack(8, 8);
    EXPECT_FLOAT_EQ(photo()->blur.scaleFactor, 1.0f);  // 39/35 clamped by the pass
}

TEST_F(BlurFilterTest, KernelThirtySixBlursLikeThirtyFive) {
    const int w = 32, h = 32;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 9);
    create(PM_BLUR_PHOTO, 35);
    pmBlurFilterSetBlurIntensity(object, 4.0f);
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    const std::vector<uint8_t> first = readBack(w, h);
    pmBlurFilterDelete(&object);
    create(PM_BLUR_PHOTO, 36);
    EXPECT_EQ(photo()->kernelSize, 35);
    pmBlurFilterSetBlurIntensity(object, 4.0f);
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    const std::vector<uint8_t> second = readBack(w, h);
    int worst = 0;
    for (size_t i = 0; i < first.size(); ++i)
        worst = std::max(worst, std::abs(first[i] - second[i]));
    EXPECT_LE(worst, 1);  // the dither differs from draw to draw by up to one level
}

TEST_F(BlurFilterTest, DimmingAndMixColourAreClampedWithTheirWords) {
    create();
    LogCapture log;
    pmBlurFilterSetBlurDimming(object, 1.5f);
    EXPECT_FLOAT_EQ(photo()->dim, 1.0f);
    EXPECT_EQ(log.countEndingWith("> Intensity value is not valid. Dimming intensity range : "
                                  "0.0f ~ 1.0f"),
              1);
    pmBlurFilterSetBlurDimming(object, 0.25f);
    EXPECT_EQ(photo()->blur.dither.ud.vec4s["uColor"], glm::vec4(0.25f, 0.25f, 0.25f, 1.0f));
    pmBlurFilterSetBlurMixColor(object, -1.0f, 0.5f, 2.0f, 0.75f);
    EXPECT_EQ(log.count("> PhotoFilterBlur::SetMixColor() - each value should be from 0.0 to 1.0. "
                        "r: -1.000000, g: 0.500000, b: 2.000000, a: 0.750000"),
              1);
    EXPECT_EQ(photo()->blur.dither.ud.vec4s["uMixColor"], glm::vec4(0.0f, 0.5f, 1.0f, 0.75f));
}

TEST_F(BlurFilterTest, DrawShowsAFreshBlurOrTheStoredPicture) {
    create();
    const int w = 16, h = 16;
    gl->resizeTarget(w, h);
    std::vector<uint8_t> pixels = solidPicture(w, h, {200, 100, 50});
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    readBack(w, h, COLOR_TYPE_RGBA);
    pmBlurFilterDraw(object, w, h);
    std::vector<uint8_t> drawn = gl->readTarget();
    EXPECT_NEAR(drawn[0], 200, 1);

    // With output type 3 the stored picture is shown: make it differ from a
    // fresh blur by reading back with dimming 0, then restore the dimming.
    pmBlurFilterSetBlurDimming(object, 0.0f);
    readBack(w, h, COLOR_TYPE_YUV);
    pmBlurFilterSetBlurDimming(object, 1.0f);
    gl->clearTarget(0, 0, 0, 0);
    pmBlurFilterDraw(object, w, h);
    drawn = gl->readTarget();
    EXPECT_LE(drawn[0], 1);
}

TEST_F(BlurFilterTest, FlipIsIgnoredOnlyByTheLumaChromaRoute) {
    create();
    const int w = 8, h = 8;
    // Top half bright, bottom half dark, in the luma-chroma layout.
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 3);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c) pixels[(y * w + x) * 3 + c] = y < h / 2 ? 240 : 10;
        }
    }
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    pmBlurFilterSetFlipMode(object, PM_FLIP_V);
    pmBlurFilterSetInputBuffer(object, {COLOR_TYPE_RGBA, pixels.data(), w, h});
    EXPECT_EQ(photo()->GetInputColorType(), COLOR_TYPE_YUV);
    EXPECT_EQ(photo()->GetInputChannel(), 3);
    const std::vector<uint8_t> ignored = readBack(w, h, COLOR_TYPE_YUVA);
    const std::vector<uint8_t> obeyed = readBack(w, h, COLOR_TYPE_RGBA);
    // Read-back row 0 is the bottom of the buffer. Flip (0, 0) keeps the
    // first input row at the bottom; V flip mode is (0, 0) as well, so use
    // the default mode to see the difference.
    pmBlurFilterSetFlipMode(object, PM_FLIP_NONE);
    const std::vector<uint8_t> none = readBack(w, h, COLOR_TYPE_RGBA);
    const std::vector<uint8_t> noneIgnored = readBack(w, h, COLOR_TYPE_YUVA);
    EXPECT_GT(ignored[0], 128);
    EXPECT_GT(obeyed[0], 128);
    EXPECT_LT(none[0], 128);
    EXPECT_GT(noneIgnored[0], 128);
}

TEST_F(BlurFilterTest, RenderAreaOnAPhotoBlurHasNoEffect) {
    create();
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 3);
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    pmBlurFilterSetDithering(object, false);
    const std::vector<uint8_t> before = readBack(w, h);
    pmBlurFilterSetRenderArea(object, {0.25f, 0.25f}, {0.5f, 0.5f});
    const std::vector<uint8_t> after = readBack(w, h);
    int worst = 0;
    for (size_t i = 0; i < before.size(); ++i)
        worst = std::max(worst, std::abs(before[i] - after[i]));
    EXPECT_LE(worst, 1);
}

TEST_F(BlurFilterTest, TextureInputKeepsTheEarlierInputSize) {
    create();
    GLuint tex = 0;
    glGenTextures(1, &tex);
    glBindTexture(GL_TEXTURE_2D, tex);
    std::vector<uint8_t> pixels = solidPicture(8, 4, {50, 60, 70});
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 8, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    pmBlurFilterSetBufferWithTexture(object, tex, 8, 4, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_EQ(photo()->GetInputSize(), glm::ivec2(1920, 1080));
    EXPECT_EQ(photo()->inputBuffer.width, 8);
    glDeleteTextures(1, &tex);
}

TEST_F(BlurFilterTest, PhotoBlurRefusesDitheringAndInterpolationSwitchesEvenWithoutHandler) {
    LogCapture log;
    pmFilterObject empty{PM_BLUR_PHOTO, nullptr};
    pmBlurFilterSetDithering(empty, false);
    pmBlurFilterSetInterpolation(empty, false);
    EXPECT_EQ(log.countEndingWith("> Photo blur can not disable dithering."), 1);
    EXPECT_EQ(log.countEndingWith("> Frame interpolation not supported."), 1);
}

TEST_F(BlurFilterTest, UnknownTypeIsLoggedByEachClassNamingFunction) {
    LogCapture log;
    pmFilterObject odd{7, nullptr};
    pmBlurFilterSetBlurIntensity(odd, 1.0f);
    pmBlurFilterSetBlurDimming(odd, 1.0f);
    pmBlurFilterSetBlurMixColor(odd, 0, 0, 0, 0);
    pmBlurFilterSetDithering(odd, true);
    pmBlurFilterSetInterpolation(odd, true);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterSetBlurIntensity() - unknown type."), 1);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterSetBlurDimming() - unknown type."), 1);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterSetBlurMixColor() - unknown type."), 1);
    // The interpolation switch names the dithering function.
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterSetDithering() - unknown type."), 2);
}

TEST_F(BlurFilterTest, NullHandlerWordsAndSilences) {
    LogCapture log;
    pmFilterObject empty{PM_BLUR_PHOTO, nullptr};
    uint8_t byte = 0;
    pmBlurFilterSetBufferYUV444(empty, {&byte, &byte, &byte, 1, 1});
    pmBlurFilterSetInputBuffer(empty, {0, &byte, 1, 1});
    pmBlurFilterSetOutputBuffer(empty, {0, &byte, 1, 1});
    EXPECT_EQ(log.countEndingWith("> Object Handler is NULL"), 3);
    log.clear();
    pmBlurFilterSetBuffer(empty, &byte, 1, 1, 4);
    pmBlurFilterDraw(empty, 1, 1);
    pmBlurFilterSetFlipMode(empty, 1);
    pmBlurFilterSetBlurIntensity(empty, 3.0f);
    pmBlurFilterSetRenderArea(empty, {0, 0}, {1, 1});
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST_F(BlurFilterTest, OutputBufferOnAVideoBlurWritesItsWordsAndChangesNothing) {
    create(PM_BLUR_VIDEO);
    std::vector<uint8_t> out(4 * 4 * 4, 0x5A);
    LogCapture log;
    pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_YUVA, out.data(), 4, 4});
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterSetOutputBuffer_SetColorType[2]"), 1);
    EXPECT_EQ(log.countEndingWith("> pmBlurFilterSetOutputBuffer_SetColorType[2] - end"), 1);
    for (uint8_t byte : out) ASSERT_EQ(byte, 0x5A);
}

TEST_F(BlurFilterTest, BlurFlipModeLogsAtErrorPriority) {
    create();
    LogCapture log;
    pmBlurFilterSetFlipMode(object, PM_FLIP_HV);
    ASSERT_EQ(log.countEndingWith("> FlipMode [HV Flip]"), 1);
    EXPECT_EQ(log.lines().at(0).priority, 6);
    EXPECT_EQ(photo()->flip, glm::vec2(1.0f, 0.0f));
}

// The still blur on the library's own context, from a thread with none.
TEST(BlurPrivateContextTest, ReadBackWorksWithoutACallerContext) {
    pmGL::GLContextManager::ReleaseInstance();
    pmSetEGLDisplay(testDisplay());
    const int w = 20, h = 10;
    std::vector<uint8_t> pixels = solidPicture(w, h, {30, 60, 90});
    std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4, 0);
    std::thread worker([&] {
        pmFilterObject blur{PM_BLUR_PHOTO, pmBlurFilterCreate(PM_BLUR_PHOTO)};
        pmBlurFilterSetBuffer(blur, pixels.data(), w, h, 4);
        pmBlurFilterSetBlurIntensity(blur, 2.0f);
        pmBlurFilterSetOutputBuffer(blur, {COLOR_TYPE_RGBA, out.data(), w, h});
        pmBlurFilterDelete(&blur);
    });
    worker.join();
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], 30, 1);
        ASSERT_NEAR(out[i + 2], 90, 1);
    }
    pmGL::GLContextManager::ReleaseInstance();
}

}  // namespace
