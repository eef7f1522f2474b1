// The ten photo effects through the exported functions: every type code
// draws, repeat Draws agree but for night vision, and the composite effects
// keep what their formulas say of constant pictures.
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "PhotoEffects.h"
#include "pixmora.h"

namespace {

std::vector<uint8_t> constantPicture(int w, int h, uint8_t v) {
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4, v);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    return pixels;
}

class PhotoEffectsTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
    }
    void TearDown() override {
        if (object.handler) pmPhotoFilterDelete(&object);
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
    void create(unsigned type) {
        object = {static_cast<int>(type), pmPhotoFilterCreate(type)};
        ASSERT_NE(object.handler, nullptr) << type;
    }
    std::vector<uint8_t> draw(int w, int h) {
        gl->resizeTarget(w, h);
        pmPhotoFilterDraw(object, w, h);
        return gl->readTarget();
    }
    pmFilterObject object{0, nullptr};
};

TEST_F(PhotoEffectsTest, EveryTypeCodeBuildsItsClass) {
    for (unsigned type = 0; type <= 9; ++type) {
        create(type);
        EXPECT_TRUE(static_cast<pmFilters::FilterCommon*>(object.handler)->IsInit()) << type;
        pmPhotoFilterDelete(&object);
    }
    LogCapture log;
    EXPECT_EQ(pmPhotoFilterCreate(10), nullptr);
    EXPECT_EQ(log.countEndingWith("> pmPhotoFilterCreate() - Wrong Type. return nullptr."), 1);
}

TEST_F(PhotoEffectsTest, RepeatDrawsAgreeExceptForNightVision) {
    const int w = 32, h = 24;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 17);
    for (unsigned type = 0; type <= 9; ++type) {
        create(type);
        pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
        const std::vector<uint8_t> first = draw(w, h);
        const std::vector<uint8_t> second = draw(w, h);
        int worst = 0;
        for (size_t i = 0; i < first.size(); ++i) {
            worst = std::max(worst, std::abs(first[i] - second[i]));
        }
        if (type == PM_PHOTO_NIGHT_VISION) {
            EXPECT_GT(worst, 0) << "night vision flickers from Draw to Draw";
        } else {
            EXPECT_EQ(worst, 0) << "type " << type;
        }
        pmPhotoFilterDelete(&object);
    }
}

TEST_F(PhotoEffectsTest, MonotonousBlurOfAConstantGreyIsThatGrey) {
    create(PM_PHOTO_MONOTONOUS_BLUR);
    const int w = 64, h = 36;  // smaller than its 1920 x 1080 grey buffer
    std::vector<uint8_t> pixels = constantPicture(w, h, 120);
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
    const std::vector<uint8_t> out = draw(w, h);
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], 120, 1);
        ASSERT_NEAR(out[i + 1], 120, 1);
        ASSERT_NEAR(out[i + 2], 120, 1);
    }
    auto* blur = static_cast<pmFilters::MonotonousBlur*>(object.handler);
    EXPECT_EQ(blur->greyBuffer.width, 1920);
    EXPECT_EQ(blur->greyBuffer.height, 1080);
    EXPECT_FLOAT_EQ(blur->blur.scaleFactor, 0.5f);
}

TEST_F(PhotoEffectsTest, MonotonousBlurScalesASmallPictureUpBeforeBlurring) {
    create(PM_PHOTO_MONOTONOUS_BLUR);
    // Four grey columns. Scaled up to the 1920 x 1080 grey buffer, the linear
    // filter turns them into ramps some 480 buffer pixels long, against which
    // the blur (a kernel of 35 at half that size) only rounds the corners.
    // Left at its own size, the blur would run over all four and flatten them.
    const int columns[4] = {0, 60, 200, 255};
    std::vector<uint8_t> pixels(4 * 2 * 4);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * 4 + x) * 4];
            p[0] = p[1] = p[2] = static_cast<uint8_t>(columns[x]);
            p[3] = 255;
        }
    }
    pmPhotoFilterSetBuffer(object, pixels.data(), 4, 2, 4);
    const int w = 64, h = 8;
    const std::vector<uint8_t> out = draw(w, h);
    for (int x = 0; x < w; ++x) {
        // The four columns read linearly at this pixel's centre, clamped at
        // the ends; grey is the same weights as the luma, which sum to 1.
        const float u = std::min(std::max((x + 0.5f) / w * 4.0f - 0.5f, 0.0f), 3.0f);
        const int left = std::min(static_cast<int>(u), 2);
        const float expected = columns[left] + (columns[left + 1] - columns[left]) * (u - left);
        // The rounded corners of the ramps (a blur of about 8 buffer pixels
        // over a slope of at most 0.3 levels a pixel) and the dither: 4.
        for (int y = 0; y < h; ++y) {
            EXPECT_NEAR(out[(static_cast<size_t>(y) * w + x) * 4], expected, 4) << x << "," << y;
        }
    }
}

TEST_F(PhotoEffectsTest, BloomOfAConstantIsItsScreenBlendWithItself) {
    create(PM_PHOTO_BLOOM);
    const int w = 32, h = 32;
    for (int v : {0, 64, 128, 200, 255}) {
        std::vector<uint8_t> pixels = constantPicture(w, h, static_cast<uint8_t>(v));
        pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
        const std::vector<uint8_t> out = draw(w, h);
        const float c = v / 255.0f;
        const int expected = static_cast<int>(std::lround((2 * c - c * c) * 255.0f));
        EXPECT_NEAR(out[(16 * w + 16) * 4], expected, 2) << v;
    }
}

// The painting's least-variance square of four on the CPU, its samples
// `step` texels apart around (x, y) in a picture stored bottom row first, read
// at texel centres with clamping at the edges. Returns whether `out` holds,
// within two levels, the mean of one of the squares of least variance.
// Squares within 1e-4 of the least count as tied: the shader sums 36 squared
// samples in single precision in its own order, so two squares that close
// may be ranked either way.
bool paintingMatches(const std::vector<uint8_t>& in, int w, int h, int x, int y, int step,
                     const uint8_t* out) {
    const int r = 5;
    const int ranges[4][4] = {{-r, 0, -r, 0}, {-r, 0, 0, r}, {0, r, 0, r}, {0, r, -r, 0}};
    const float n = static_cast<float>((r + 1) * (r + 1));
    float means[4][3];
    float sigma2[4];
    float best = 100.0f;
    for (int k = 0; k < 4; ++k) {
        float m[3] = {0, 0, 0}, s[3] = {0, 0, 0};
        for (int j = ranges[k][0]; j <= ranges[k][1]; ++j) {
            for (int i = ranges[k][2]; i <= ranges[k][3]; ++i) {
                const int sx = std::min(std::max(x + i * step, 0), w - 1);
                const int sy = std::min(std::max(y + j * step, 0), h - 1);
                for (int c = 0; c < 3; ++c) {
                    const float v = in[(static_cast<size_t>(sy) * w + sx) * 4 + c] / 255.0f;
                    m[c] += v;
                    s[c] += v * v;
                }
            }
        }
        sigma2[k] = 0.0f;
        for (int c = 0; c < 3; ++c) {
            means[k][c] = m[c] / n;
            sigma2[k] += std::fabs(s[c] / n - means[k][c] * means[k][c]);
        }
        best = std::min(best, sigma2[k]);
    }
    for (int k = 0; k < 4; ++k) {
        if (sigma2[k] > best + 1e-4f) continue;
        bool same = true;
        for (int c = 0; c < 3; ++c) {
            same = same && std::abs(out[c] - std::lround(means[k][c] * 255.0f)) <= 2;
        }
        if (same) return true;
    }
    return false;
}

TEST_F(PhotoEffectsTest, PaintingFollowsTheDrawSize) {
    create(PM_PHOTO_PAINTING);
    const int w = 48, h = 32;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 23);
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
    // Flip mode V is the flip (0, 0): the target's rows are the input's.
    pmPhotoFilterSetFlipMode(object, PM_FLIP_V);
    gl->resizeTarget(w, h);
    // The Draw size sets the step between samples: the picture's own size a
    // texel, a quarter of it four texels, so the squares span 6 and 21.
    for (int step : {1, 4}) {
        gl->clearTarget(0, 0, 0, 0);
        pmPhotoFilterDraw(object, w / step, h / step);
        const std::vector<uint8_t> out = gl->readTarget();
        int mismatches = 0, unlikeOtherStep = 0;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const uint8_t* p = &out[(static_cast<size_t>(y) * w + x) * 4];
                if (!paintingMatches(pixels, w, h, x, y, step, p)) ++mismatches;
                if (!paintingMatches(pixels, w, h, x, y, 5 - step, p)) ++unlikeOtherStep;
            }
        }
        EXPECT_EQ(mismatches, 0) << "step " << step;
        EXPECT_GT(unlikeOtherStep, w * h / 2) << "step " << step;
    }
}

TEST_F(PhotoEffectsTest, FlipActsOnMonotonousBlurAndCrossHatching) {
    const int w = 40, h = 40;
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4, 0);
    for (int y = 0; y < h / 2; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c) pixels[(y * w + x) * 4 + c] = 250;  // bright top half
        }
    }
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    for (unsigned type : {PM_PHOTO_MONOTONOUS_BLUR, PM_PHOTO_CROSS_HATCHING}) {
        create(type);
        pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
        const std::vector<uint8_t> upright = draw(w, h);
        pmPhotoFilterSetFlipMode(object, PM_FLIP_V);
        const std::vector<uint8_t> flipped = draw(w, h);
        // Read-back row 0 is the bottom: dark when upright, bright when flipped.
        EXPECT_LT(upright[(2 * w + 20) * 4 + 1], 128) << type;
        EXPECT_GT(flipped[(2 * w + 20) * 4 + 1], 128) << type;
        pmPhotoFilterDelete(&object);
    }
}

TEST_F(PhotoEffectsTest, SepiaDrawOnAnInertObjectSaysSo) {
    pmFilters::Sepia inert;
    LogCapture log;
    inert.Draw(4, 4);
    EXPECT_EQ(log.countEndingWith("> It is not initialized."), 1);
}

TEST_F(PhotoEffectsTest, NightVisionCounterIsSharedByAllObjects) {
    create(PM_PHOTO_NIGHT_VISION);
    std::vector<uint8_t> pixels = makeTestPixels(8, 8, 4);
    pmPhotoFilterSetBuffer(object, pixels.data(), 8, 8, 4);
    pmFilterObject other{0, pmPhotoFilterCreate(PM_PHOTO_NIGHT_VISION)};
    pmPhotoFilterSetBuffer(other, pixels.data(), 8, 8, 4);
    const int before = pmFilters::NightVisionPhoto::frameCount;
    pmPhotoFilterDraw(object, 8, 8);
    pmPhotoFilterDraw(other, 8, 8);
    pmPhotoFilterDraw(object, 8, 8);
    EXPECT_EQ(pmFilters::NightVisionPhoto::frameCount, before + 3);
    pmPhotoFilterDelete(&other);
}

TEST_F(PhotoEffectsTest, CrossHatchingMatchesItsLatticesOnTheCpu) {
    create(PM_PHOTO_CROSS_HATCHING);
    const int w = 40, h = 30;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 31);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
    const std::vector<uint8_t> out = draw(w, h);
    auto latticeMod = [](int v) { return ((v % 10) + 10) % 10; };
    int hatched = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const uint8_t* src = &pixels[(static_cast<size_t>(h - 1 - y) * w + x) * 4];
            const float r = src[0] / 255.0f, g = src[1] / 255.0f, b = src[2] / 255.0f;
            const float lum = std::sqrt(r * r + g * g + b * b);
            // gl_FragCoord is (x + 0.5, y + 0.5): x + y and x - y are whole.
            const int sum = x + y + 1, difference = x - y;
            const bool ink = (lum < 1.0f && latticeMod(sum) == 0) ||
                             (lum < 0.75f && latticeMod(difference) == 0) ||
                             (lum < 0.5f && latticeMod(sum - 5) == 0) ||
                             (lum < 0.3f && latticeMod(difference - 5) == 0);
            hatched += ink;
            const uint8_t* p = &out[(static_cast<size_t>(y) * w + x) * 4];
            for (int c = 0; c < 3; ++c) {
                const int expected = ink ? 26 : src[c];
                ASSERT_NEAR(p[c], expected, 2) << x << "," << y << " channel " << c;
            }
        }
    }
    EXPECT_GT(hatched, 0);
}

}  // namespace
