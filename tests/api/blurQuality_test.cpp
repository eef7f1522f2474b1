// pmBlurFilterSetQuality on both blur objects: the two codes, the refusal of
// others, null handlers and unknown types, steady frames without new GL
// objects, and the default output untouched by a trip through smooth.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "AllocationCounter.h"
#include "GLTestContext.h"
#include "LogCapture.h"
#include "PhotoFilterBlur.h"
#include "PhotoFilterVideoBlur.h"
#include "pixmora.h"

namespace {

std::vector<uint8_t> stripes(int w, int h) {
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4, 255);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = p[1] = p[2] = ((x / 3 + y / 5) % 2) ? 230 : 20;
        }
    }
    return pixels;
}

class BlurQualityTest : public GLTest {
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
    void create(unsigned type) {
        object = {static_cast<int>(type), pmBlurFilterCreate(type)};
        ASSERT_NE(object.handler, nullptr);
    }
    std::vector<uint8_t> readBack(const std::vector<uint8_t>& pixels, int w, int h) {
        std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4);
        pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(pixels.data()), w, h, 4);
        pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_RGBA, out.data(), w, h});
        return out;
    }
    pmFilterObject object{0, nullptr};
};

TEST_F(BlurQualityTest, UnknownValuesAreLoggedAndKeepTheQuality) {
    create(PM_BLUR_PHOTO);
    pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_SMOOTH);
    LogCapture log;
    pmBlurFilterSetQuality(object, 2);
    pmBlurFilterSetQuality(object, -1);
    EXPECT_EQ(log.count("Quality value is not valid. Blur quality : 0 or 1"), 2);
    EXPECT_EQ(static_cast<pmFilters::PhotoFilterBlur*>(object.handler)->blur.quality,
              PM_BLUR_QUALITY_SMOOTH);
}

TEST_F(BlurQualityTest, NullHandlersAreIgnoredAndUnknownTypesLogged) {
    LogCapture log;
    pmBlurFilterSetQuality({PM_BLUR_PHOTO, nullptr}, PM_BLUR_QUALITY_SMOOTH);
    pmBlurFilterSetQuality({PM_BLUR_VIDEO, nullptr}, PM_BLUR_QUALITY_SMOOTH);
    EXPECT_EQ(log.count("SetQuality"), 0);
    pmBlurFilterSetQuality({7, nullptr}, PM_BLUR_QUALITY_SMOOTH);
    EXPECT_EQ(log.countEndingWith("pmBlurFilterSetQuality() - unknown type."), 1);
}

TEST_F(BlurQualityTest, DefaultAfterSmoothIsTheDefaultToTheByte) {
    const int w = 120, h = 80;
    const std::vector<uint8_t> pixels = stripes(w, h);
    create(PM_BLUR_PHOTO);
    pmBlurFilterSetBlurIntensity(object, 5.0f);
    const std::vector<uint8_t> before = readBack(pixels, w, h);
    pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_SMOOTH);
    const std::vector<uint8_t> smooth = readBack(pixels, w, h);
    pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_DEFAULT);
    EXPECT_EQ(readBack(pixels, w, h), before);
    EXPECT_NE(smooth, before);
}

// In smooth quality a new picture of the same size goes into the input's base
// level only; a switch back to the default must still sample the mipmaps of
// that picture, not of the one before it.
TEST_F(BlurQualityTest, DefaultAfterSmoothSamplesTheMipmapsOfTheLatestPicture) {
    const int w = 120, h = 80;
    const std::vector<uint8_t> first = stripes(w, h);
    std::vector<uint8_t> second = first;
    for (size_t i = 0; i < second.size(); i += 4) second[i] = 255 - second[i];
    create(PM_BLUR_PHOTO);
    pmBlurFilterSetBlurIntensity(object, 5.0f);
    const std::vector<uint8_t> expected = readBack(second, w, h);
    gl->resizeTarget(w, h);
    pmBlurFilterDraw(object, w, h);
    const std::vector<uint8_t> expectedDrawn = gl->readTarget();
    pmBlurFilterDelete(&object);

    for (bool drawn : {false, true}) {
        create(PM_BLUR_PHOTO);
        pmBlurFilterSetBlurIntensity(object, 5.0f);
        pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_SMOOTH);
        readBack(first, w, h);
        pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(second.data()), w, h, 4);
        pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_DEFAULT);
        if (drawn) {
            gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
            pmBlurFilterDraw(object, w, h);
            EXPECT_EQ(gl->readTarget(), expectedDrawn);
        } else {
            std::vector<uint8_t> out(expected.size());
            pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_RGBA, out.data(), w, h});
            EXPECT_EQ(out, expected);
        }
        pmBlurFilterDelete(&object);
    }
}

// The same for the video blur: a frame handed over in smooth quality and
// captured after the switch to default.
TEST_F(BlurQualityTest, VideoDefaultAfterSmoothSamplesTheMipmapsOfTheLatestFrame) {
    const int w = 192, h = 108;
    const std::vector<uint8_t> first = stripes(w, h);
    std::vector<uint8_t> second = first;
    for (size_t i = 0; i < second.size(); i += 4) second[i + 1] = 255 - second[i + 1];
    gl->resizeTarget(w, h);
    auto drawOf = [&](bool viaSmooth) {
        create(PM_BLUR_VIDEO);
        pmBlurFilterSetInterpolation(object, false);
        pmBlurFilterSetDithering(object, false);
        if (viaSmooth) {
            pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_SMOOTH);
            pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(first.data()), w, h, 4);
            pmBlurFilterDraw(object, w, h);
        }
        pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(second.data()), w, h, 4);
        pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_DEFAULT);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmBlurFilterDraw(object, w, h);
        std::vector<uint8_t> out = gl->readTarget();
        pmBlurFilterDelete(&object);
        return out;
    };
    EXPECT_EQ(drawOf(true), drawOf(false));
}

TEST_F(BlurQualityTest, SteadyStillFramesMakeNoGLObjectAndTakeNoHeapMemory) {
    const int w = 160, h = 90;
    const std::vector<uint8_t> pixels = stripes(w, h);
    std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4);
    auto frame = [&] {
        pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(pixels.data()), w, h, 4);
        pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_RGBA, out.data(), w, h});
        pmBlurFilterDraw(object, w, h);
    };
    for (int quality : {PM_BLUR_QUALITY_DEFAULT, PM_BLUR_QUALITY_SMOOTH}) {
        create(PM_BLUR_PHOTO);
        pmBlurFilterSetQuality(object, quality);
        for (float intensity : {1.0f, 10.0f, 40.0f}) {
            pmBlurFilterSetBlurIntensity(object, intensity);
            frame();
            EXPECT_TRUE(makesNoGLObject(frame)) << quality << " at " << intensity;
            if (!PIXMORA_TEST_ASAN) {
                EXPECT_EQ(allocationsDuring(frame), 0u) << quality << " at " << intensity;
            }
        }
        pmBlurFilterDelete(&object);
    }
}

// A video blur in smooth quality shows a blur of the frame: the mean stays,
// the stripes are gone, and steady frames make no GL objects.
TEST_F(BlurQualityTest, VideoBlurDrawsTheSmoothBlurOfItsFrame) {
    const int w = 192, h = 108;
    gl->resizeTarget(w, h);
    const std::vector<uint8_t> pixels = stripes(w, h);
    create(PM_BLUR_VIDEO);
    pmBlurFilterSetInterpolation(object, false);
    pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_SMOOTH);
    auto frame = [&] {
        pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(pixels.data()), w, h, 4);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmBlurFilterDraw(object, w, h);
    };
    frame();
    EXPECT_TRUE(makesNoGLObject(frame));
    const std::vector<uint8_t> out = gl->readTarget();
    double sum = 0.0;
    int lowest = 255, highest = 0;
    for (int y = h / 4; y < h * 3 / 4; ++y) {
        for (int x = w / 4; x < w * 3 / 4; ++x) {
            const int v = out[(static_cast<size_t>(y) * w + x) * 4];
            sum += v;
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
        }
    }
    EXPECT_NEAR(sum / (w / 2 * h / 2), 125.0, 3.0);
    EXPECT_LE(highest - lowest, 8);
}

// Switching quality on a video blur captures the waiting frame again at
// the next Draw instead of showing nothing.
TEST_F(BlurQualityTest, VideoSwitchRecapturesAtTheNextDraw) {
    const int w = 64, h = 48;
    gl->resizeTarget(w, h);
    const std::vector<uint8_t> pixels = stripes(w, h);
    create(PM_BLUR_VIDEO);
    pmBlurFilterSetBuffer(object, const_cast<uint8_t*>(pixels.data()), w, h, 4);
    pmBlurFilterDraw(object, w, h);
    pmBlurFilterSetQuality(object, PM_BLUR_QUALITY_SMOOTH);
    LogCapture log;
    pmBlurFilterDraw(object, w, h);
    EXPECT_EQ(log.count("Call setVideoCapture() first."), 0);
    EXPECT_EQ(static_cast<pmFilters::PhotoFilterVideoBlur*>(object.handler)->blur.pendingCaptures,
              1);
}

}  // namespace
