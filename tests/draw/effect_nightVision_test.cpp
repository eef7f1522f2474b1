// NightVision: the vignette, the green tint and the grain against the same
// formula on the CPU at fixed times.
#include <algorithm>
#include <cmath>
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

float fract(float v) {
    return v - std::floor(v);
}

float hash(float n) {
    return fract(std::sin(n) * 43758.5453123f);
}

// GLSL's smoothstep formula, taken as it is for edges in either order.
float smoothstepFormula(float edge0, float edge1, float x) {
    const float t = std::min(std::max((x - edge0) / (edge1 - edge0), 0.0f), 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

float vignetteEdge(const Picture& in, int x, int y) {
    const float nx = (((x + 0.5f) / in.width) * 2.0f - 1.0f) * (float(in.width) / in.height);
    const float ny = ((y + 0.5f) / in.height) * 2.0f - 1.0f;
    const float vx = nx * nx * nx * 0.075f, vy = ny * ny * ny * 0.4f;
    return std::sqrt(vx * vx + vy * vy);
}

// The shader's output for pixel (x, y). `grainArgument` receives the value
// whose fractional part is the grain, so that a caller can leave out pixels
// where a rounding difference would wrap it around.
Expected nightVisionOf(const Picture& in, int x, int y, float time, float* grainArgument) {
    const float nx = (((x + 0.5f) / in.width) * 2.0f - 1.0f) * (float(in.width) / in.height);
    const float ny = ((y + 0.5f) / in.height) * 2.0f - 1.0f;
    const float grainInput = (hash(nx) + ny) * time;
    if (grainArgument) *grainArgument = std::sin(grainInput) * 43758.5453123f;
    const float grain = hash(grainInput);
    float c[3];
    for (int k = 0; k < 3; ++k) {
        c[k] = in.unit(x, y, k);
        c[k] += std::sin(hash(time)) * 0.01f;
        c[k] += grain * 0.5f;
        c[k] *= smoothstepFormula(vignetteEdge(in, x, y), 1.0f, 0.4f);
        c[k] *= 1.5f;
    }
    const float luma = c[0] * 0.2126f + c[1] * 0.7152f + c[2] * 0.0722f;
    return Expected{{toByte(luma * 0.2f), toByte(luma * (1.5f - hash(time) * 0.1f)),
                     toByte(luma * 0.4f), in.at(x, y, 3)}};
}

class NightVisionTest : public GLTest {
protected:
    std::vector<uint8_t> drawAt(pmDraw::NightVision& night, pmGL::Texture& tex, float time) {
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::setParameters(night, time);
        pmDraw::setTexture(night, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runNightVision(night);
        return gl->readTarget();
    }
};

TEST_F(NightVisionTest, CreateSetsTimeAndAlphaBlend) {
    pmDraw::NightVision night;
    ASSERT_TRUE(pmDraw::createNightVision(night));
    EXPECT_FLOAT_EQ(night.ud.floats["uTime"], 1000.0f);
    EXPECT_TRUE(isAlphaBlend(night.renderOpts.blend));
    pmDraw::deleteNightVision(night);
}

// At time 0 every hash is 0: the grain vanishes and the rest is exact. The
// picture is four times as wide as high, so its far corners reverse the
// edges of the vignette.
TEST_F(NightVisionTest, MatchesCpuFormulaAtTimeZeroOnAWidePicture) {
    const int w = 64, h = 16;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 41);
    pmGL::Texture tex = upload(in, true);
    pmDraw::NightVision night;
    ASSERT_TRUE(pmDraw::createNightVision(night));
    night.renderOpts.blend.enabled = false;
    const std::vector<uint8_t> out = drawAt(night, tex, 0.0f);
    expectPicture(
        out, w, h, [&](int x, int y) { return nightVisionOf(in, x, y, 0.0f, nullptr); }, 2,
        "time 0");
    pmDraw::deleteNightVision(night);
    pmGL::deleteTexture(tex);
}

// Past 1.0 the first edge lies above the second: smoothstep's formula then
// gives 1 for x = 0.4, so the far corners come out at full strength while a
// ring inside them is black. No guard turns that into a plain vignette.
TEST_F(NightVisionTest, ReversedVignetteEdgesInTheFarCornersAreLeftAsComputed) {
    const int w = 64, h = 16;
    gl->resizeTarget(w, h);
    Picture in = constantPicture(w, h, 200, 200, 200, 255);
    pmGL::Texture tex = upload(in, true);
    pmDraw::NightVision night;
    ASSERT_TRUE(pmDraw::createNightVision(night));
    const std::vector<uint8_t> out = drawAt(night, tex, 0.0f);
    ASSERT_GT(vignetteEdge(in, 0, 0), 1.0f);
    ASSERT_GT(vignetteEdge(in, w - 1, h - 1), 1.0f);
    const float luma = 200.0f / 255.0f * 1.5f;
    for (int corner : {0, (h - 1) * w + (w - 1), w - 1, (h - 1) * w}) {
        EXPECT_NEAR(out[corner * 4 + 1], toByte(luma * 1.5f), 1) << corner;
        EXPECT_NEAR(out[corner * 4 + 0], toByte(luma * 0.2f), 1) << corner;
    }
    // Along the middle row, between the centre and the corners, a black band.
    int dark = 0;
    for (int x = 0; x < w; ++x) {
        const float edge = vignetteEdge(in, x, h / 2);
        if (edge > 0.45f && edge < 0.95f) {
            ++dark;
            EXPECT_EQ(out[(static_cast<size_t>(h / 2) * w + x) * 4 + 1], 0) << x;
        }
    }
    EXPECT_GT(dark, 0);
    pmDraw::deleteNightVision(night);
    pmGL::deleteTexture(tex);
}

// A small fixed time keeps the grain's sine near zero, where the GPU and the
// CPU agree; pixels whose grain wraps around an integer are left out.
TEST_F(NightVisionTest, MatchesCpuFormulaWithGrainAtAFixedTime) {
    const int w = 48, h = 32;
    const float time = 1e-5f;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 42);
    pmGL::Texture tex = upload(in, true);
    pmDraw::NightVision night;
    ASSERT_TRUE(pmDraw::createNightVision(night));
    night.renderOpts.blend.enabled = false;
    const std::vector<uint8_t> out = drawAt(night, tex, time);
    const int compared = expectPicture(
        out, w, h,
        [&](int x, int y) {
            float argument = 0.0f;
            Expected e = nightVisionOf(in, x, y, time, &argument);
            e.check = std::fabs(argument - std::round(argument)) > 0.003f;
            return e;
        },
        2, "time 1e-5");
    EXPECT_GT(compared, w * h * 95 / 100);
    pmDraw::deleteNightVision(night);
    pmGL::deleteTexture(tex);
}

TEST_F(NightVisionTest, GrainMovesWithTimeOnly) {
    const int w = 32, h = 24;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 43);
    pmGL::Texture tex = upload(in, true);
    pmDraw::NightVision night;
    ASSERT_TRUE(pmDraw::createNightVision(night));
    const std::vector<uint8_t> first = drawAt(night, tex, 0.5f);
    const std::vector<uint8_t> again = drawAt(night, tex, 0.5f);
    const std::vector<uint8_t> later = drawAt(night, tex, 1.0f);
    EXPECT_EQ(first, again);
    EXPECT_NE(first, later);
    pmDraw::deleteNightVision(night);
    pmGL::deleteTexture(tex);
}

}  // namespace
