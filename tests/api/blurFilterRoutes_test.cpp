// The still blur's routes asserted on what comes out: the stored input size
// of a texture input sets the read-back's scale, output type 2 reads what the
// planar buffer holds, planar input never reaches the RGB routes, a Draw
// after output type 0 blurs the picture now in the object, and the planar
// merge obeys the flip.
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "PhotoFilterBlur.h"
#include "TestPictures.h"
#include "pixmora.h"

namespace {

using pmFilters::PhotoFilterBlur;

// Structure that a light blur keeps: a ramp across and a step down.
std::vector<uint8_t> ramps(int w, int h, bool mirrored) {
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            const int across = (mirrored ? w - 1 - x : x) * 255 / (w - 1);
            p[0] = static_cast<uint8_t>(across);
            p[1] = static_cast<uint8_t>(y < h / 2 ? 230 : 20);
            p[2] = static_cast<uint8_t>(255 - across);
            p[3] = 255;
        }
    }
    return pixels;
}

int worstDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    int worst = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
        worst = std::max(worst, std::abs(a[i] - b[i]));
    }
    return worst;
}

// Each pixel of a read-back within one level of (r, g, b): a blur of a flat
// picture is the picture, and the random dither moves it by at most half a
// level before the rounding to bytes.
void expectFlat(const std::vector<uint8_t>& out, int r, int g, int b) {
    for (size_t i = 0; i < out.size(); i += 4) {
        ASSERT_NEAR(out[i], r, 1) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 1], g, 1) << "pixel " << i / 4;
        ASSERT_NEAR(out[i + 2], b, 1) << "pixel " << i / 4;
    }
}

class BlurRouteTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
        object = {PM_BLUR_PHOTO, pmBlurFilterCreate(PM_BLUR_PHOTO)};
        ASSERT_NE(object.handler, nullptr);
    }
    void TearDown() override {
        pmBlurFilterDelete(&object);
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
    PhotoFilterBlur* photo() { return static_cast<PhotoFilterBlur*>(object.handler); }
    std::vector<uint8_t> readBack(int w, int h, int colorType) {
        std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4, 0xAB);
        pmBlurFilterSetOutputBuffer(object, {colorType, out.data(), w, h});
        return out;
    }
    void setPlanes(int w, int h, uint8_t y, uint8_t u, uint8_t v) {
        planes[0].assign(static_cast<size_t>(w) * h, y);
        planes[1].assign(static_cast<size_t>(w) * h, u);
        planes[2].assign(static_cast<size_t>(w) * h, v);
        pmBlurFilterSetBufferYUV444(object,
                                    {planes[0].data(), planes[1].data(), planes[2].data(), w, h});
    }
    pmFilterObject object{0, nullptr};
    std::vector<uint8_t> planes[3];
};

TEST_F(BlurRouteTest, TextureInputLeavesTheStoredSizeForTheReadBacksScale) {
    const int w = 64, h = 32;
    GLuint tex = 0;
    glGenTextures(1, &tex);
    glBindTexture(GL_TEXTURE_2D, tex);
    std::vector<uint8_t> pixels = solidPicture(w, h, {50, 60, 70});
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    pmBlurFilterSetBufferWithTexture(object, tex, w, h, GL_RGBA, GL_UNSIGNED_BYTE);
    readBack(w, h, COLOR_TYPE_RGBA);
    // The stored input is 1920 x 1080 and the output 64 x 32: intensity 1
    // grows by 1920 / 64 to 30, and s = (35 / 35) / 30, in single precision.
    const float grown = 1.0f * (1920.0f / 64.0f);
    EXPECT_FLOAT_EQ(photo()->blur.scaleFactor, (35.0f / 35.0f) / grown);
    // The working copy is the texture's own size times s, rounded: 2 x 1.
    EXPECT_EQ(photo()->blur.downBuffer.width, 2);
    EXPECT_EQ(photo()->blur.downBuffer.height, 1);
    glDeleteTextures(1, &tex);
}

TEST_F(BlurRouteTest, OutputTypeTwoWithInterleavedInputReadsWhatThePlanarBufferHolds) {
    const int w = 8, h = 8;
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    setPlanes(w, h, 200, 100, 50);
    expectFlat(readBack(w, h, COLOR_TYPE_YUVA), 200, 100, 50);
    // Interleaved input goes to inputBuffer, which this route never reads:
    // the bytes are the planar picture's again, not the new input's.
    std::vector<uint8_t> pixels = solidPicture(w, h, {10, 20, 30});
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    const std::vector<uint8_t> out = readBack(w, h, COLOR_TYPE_YUVA);
    expectFlat(out, 200, 100, 50);
    for (size_t i = 3; i < out.size(); i += 4) ASSERT_EQ(out[i], 255);
}

TEST_F(BlurRouteTest, PlanarInputNeverReachesTheRgbRoutesOrTheirDraw) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    std::vector<uint8_t> pixels = solidPicture(w, h, {10, 20, 30});
    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
    setPlanes(w, h, 200, 100, 50);
    for (int type : {COLOR_TYPE_RGBA, COLOR_TYPE_RGB}) {
        expectFlat(readBack(w, h, type), 10, 20, 30);
        gl->clearTarget(0, 0, 0, 0);
        pmBlurFilterDraw(object, w, h);
        expectFlat(gl->readTarget(), 10, 20, 30);
    }
}

TEST_F(BlurRouteTest, DrawAfterOutputTypeZeroBlursThePictureNowInTheObject) {
    const int w = 24, h = 16;
    gl->resizeTarget(w, h);
    pmBlurFilterSetBlurIntensity(object, 2.0f);
    std::vector<uint8_t> first = ramps(w, h, false);
    std::vector<uint8_t> second = ramps(w, h, true);
    pmBlurFilterSetBuffer(object, first.data(), w, h, 4);
    const std::vector<uint8_t> firstBlur = readBack(w, h, COLOR_TYPE_RGBA);
    pmBlurFilterSetBuffer(object, second.data(), w, h, 4);
    gl->clearTarget(0, 0, 0, 0);
    pmBlurFilterDraw(object, w, h);
    const std::vector<uint8_t> drawn = gl->readTarget();
    const std::vector<uint8_t> secondBlur = readBack(w, h, COLOR_TYPE_RGBA);
    // The Draw and the read-back run the same passes at the same size; each
    // dithers by up to half a level on its own, so they agree within one.
    EXPECT_LE(worstDifference(drawn, secondBlur), 1);
    EXPECT_GT(worstDifference(drawn, firstBlur), 100) << "the Draw showed the stored picture";
}

TEST_F(BlurRouteTest, PlanarMergeRouteObeysTheFlip) {
    const int w = 8, h = 8;
    pmBlurFilterSetBlurIntensity(object, 1.0f);
    // Luma bright in the first four rows given, dark in the rest.
    planes[0].assign(static_cast<size_t>(w) * h, 10);
    for (size_t i = 0; i < static_cast<size_t>(w) * h / 2; ++i) planes[0][i] = 240;
    planes[1].assign(static_cast<size_t>(w) * h, 128);
    planes[2].assign(static_cast<size_t>(w) * h, 128);
    const pmBlurBufferYUV444 yuv{planes[0].data(), planes[1].data(), planes[2].data(), w, h};
    pmBlurFilterSetBufferYUV444(object, yuv);
    // Read-back row 0 is the bottom of the buffer. Flip mode V is the flip
    // (0, 0), which keeps the first row given at the bottom; none is (0, 1).
    pmBlurFilterSetFlipMode(object, PM_FLIP_V);
    const std::vector<uint8_t> kept = readBack(w, h, COLOR_TYPE_YUVA);
    pmBlurFilterSetFlipMode(object, PM_FLIP_NONE);
    const std::vector<uint8_t> turned = readBack(w, h, COLOR_TYPE_YUVA);
    // The kernel of 35 at full size spreads over the eight rows, so the edge
    // rows keep only most of their half's level: well above and below 125.
    const size_t top = static_cast<size_t>(h - 1) * w * 4;
    EXPECT_GT(kept[0], 150);
    EXPECT_LT(kept[top], 100);
    EXPECT_LT(turned[0], 100);
    EXPECT_GT(turned[top], 150);
    EXPECT_NEAR(kept[0], turned[top], 1) << "one is the other upside down";
}

}  // namespace
