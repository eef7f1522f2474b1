// The default quality of both blur objects must not change by a single byte
// when other qualities are added beside it. The checksums below were taken
// from the read-back of the blur objects before the smooth quality existed,
// on this build's renderer (Mesa llvmpipe): a change of any output byte of
// the default passes changes them.
#include <cstdint>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "pixmora.h"

namespace {

// A picture with gradients, hard edges and noise, the same on every run.
std::vector<uint8_t> detailedPicture(int w, int h, int channels) {
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * channels);
    uint32_t state = 12345u;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            state = state * 1664525u + 1013904223u;
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * channels];
            const bool cell = ((x / 7) + (y / 5)) % 2 != 0;
            p[0] = static_cast<uint8_t>(x * 255 / (w - 1));
            p[1] = static_cast<uint8_t>(cell ? 220 : 30);
            p[2] = static_cast<uint8_t>((y * 255 / (h - 1) + (state >> 24) / 8) & 0xff);
            if (channels == 4) p[3] = static_cast<uint8_t>(255 - (state >> 28));
        }
    }
    return pixels;
}

uint64_t fnv1a(const std::vector<uint8_t>& bytes) {
    uint64_t hash = 14695981039346656037ull;
    for (uint8_t b : bytes) {
        hash ^= b;
        hash *= 1099511628211ull;
    }
    return hash;
}

struct StillCase {
    int width, height, channels;
    float intensity, dimming;
    float mix[4];
    int flipMode;
    uint64_t checksum;
};

class DefaultQualityTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
    }
    void TearDown() override {
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
};

std::vector<uint8_t> stillReadBack(const StillCase& c) {
    pmFilterObject blur{PM_BLUR_PHOTO, pmBlurFilterCreate(PM_BLUR_PHOTO)};
    std::vector<uint8_t> pixels = detailedPicture(c.width, c.height, c.channels);
    std::vector<uint8_t> out(static_cast<size_t>(c.width) * c.height * 4);
    pmBlurFilterSetBlurIntensity(blur, c.intensity);
    pmBlurFilterSetBlurDimming(blur, c.dimming);
    pmBlurFilterSetBlurMixColor(blur, c.mix[0], c.mix[1], c.mix[2], c.mix[3]);
    pmBlurFilterSetFlipMode(blur, c.flipMode);
    pmBlurFilterSetBuffer(blur, pixels.data(), c.width, c.height, c.channels);
    pmBlurFilterSetOutputBuffer(blur, {COLOR_TYPE_RGBA, out.data(), c.width, c.height});
    pmBlurFilterDelete(&blur);
    return out;
}

TEST_F(DefaultQualityTest, StillReadBackIsUnchanged) {
    const StillCase cases[] = {
        {96, 54, 4, 1.0f, 1.0f, {0, 0, 0, 0}, PM_FLIP_NONE, 0x1de93aaf24ef86baull},
        {96, 54, 4, 4.0f, 1.0f, {0, 0, 0, 0}, PM_FLIP_NONE, 0x362d782bfbcb3af5ull},
        {192, 108, 4, 10.0f, 0.7f, {0.2f, 0.4f, 0.9f, 0.3f}, PM_FLIP_NONE, 0xc136aae9911a4149ull},
        {192, 108, 3, 40.0f, 1.0f, {0, 0, 0, 0}, PM_FLIP_V, 0x3db41579dffc8baaull},
        {160, 120, 3, 2.5f, 0.5f, {1.0f, 0.0f, 0.0f, 0.5f}, PM_FLIP_H, 0x88019dbce56f86bcull},
    };
    for (const StillCase& c : cases) {
        const uint64_t actual = fnv1a(stillReadBack(c));
        EXPECT_EQ(actual, c.checksum) << "intensity " << c.intensity << " size " << c.width << "x"
                                      << c.height << ": 0x" << std::hex << actual;
    }
}

// Video: two frames, each captured by the Draw after it (interpolation off),
// then one Draw with the cross-fade at rest, read from the test framebuffer.
std::vector<uint8_t> videoDraw(GLTestContext& gl, float intensity, bool dithering) {
    const int w = 192, h = 108;
    gl.resizeTarget(w, h);
    gl.clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmFilterObject blur{PM_BLUR_VIDEO, pmBlurFilterCreate(PM_BLUR_VIDEO)};
    pmBlurFilterSetBlurIntensity(blur, intensity);
    pmBlurFilterSetBlurDimming(blur, 0.8f);
    pmBlurFilterSetDithering(blur, dithering);
    pmBlurFilterSetInterpolation(blur, false);
    std::vector<uint8_t> first = detailedPicture(w, h, 4);
    std::vector<uint8_t> second(first.rbegin(), first.rend());
    pmBlurFilterSetBuffer(blur, first.data(), w, h, 4);
    pmBlurFilterDraw(blur, w, h);
    pmBlurFilterSetBuffer(blur, second.data(), w, h, 4);
    pmBlurFilterDraw(blur, w, h);
    gl.clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmBlurFilterDraw(blur, w, h);
    std::vector<uint8_t> out = gl.readTarget();
    pmBlurFilterDelete(&blur);
    return out;
}

TEST_F(DefaultQualityTest, VideoDrawIsUnchanged) {
    const struct {
        float intensity;
        bool dithering;
        uint64_t checksum;
    } cases[] = {
        {1.0f, true, 0xdca22deb4a78e31eull},
        {10.0f, true, 0xa6356c3c97892aebull},
        {3.0f, false, 0xd8527d95970491dcull},
    };
    for (const auto& c : cases) {
        const uint64_t actual = fnv1a(videoDraw(*gl, c.intensity, c.dithering));
        EXPECT_EQ(actual, c.checksum)
            << "intensity " << c.intensity << ": 0x" << std::hex << actual;
    }
}

}  // namespace
