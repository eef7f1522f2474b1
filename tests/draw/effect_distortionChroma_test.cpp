// DistortionChroma: green and blue read along the barrel-distorted position,
// against the same formula with a CPU bilinear sampler.
#include <algorithm>
#include <cmath>
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

// The shader's result before blending, for the pixel (x, y) of a target of
// the picture's size.
Expected distortionOf(const Picture& in, int x, int y, float maxDistort) {
    const float w = static_cast<float>(in.width), h = static_cast<float>(in.height);
    const float s = (x + 0.5f) / w, t = (y + 0.5f) / h;
    // barrelDistort(uv, max(w, h) * maxDistort)
    const float dist = std::max(w, h) * maxDistort;
    float px = s * 2.0f - 1.0f, py = t * 2.0f - 1.0f;
    const float r2 = px * px + py * py;
    const float k = 1.0f + (1.0f + -0.25f * r2) * dist * r2;
    px *= k;
    py *= k;
    const float dirX = px * 0.5f + 0.5f, dirY = py * 0.5f + 0.5f;
    const float offX = 1.3333333333333333f * dirX / w, offY = 1.3333333333333333f * dirY / h;
    Expected e;
    e.rgba[0] = in.at(x, y, 0);
    e.rgba[1] = static_cast<int>(bilinear(in, s - offX, t - offY, 1));
    e.rgba[2] = static_cast<int>(bilinear(in, s - 2.0f * offX, t - 2.0f * offY, 2));
    e.rgba[3] = in.at(x, y, 3);
    return e;
}

class DistortionChromaTest : public GLTest {};

TEST_F(DistortionChromaTest, CreateSetsMaxDistortAndAlphaBlend) {
    pmDraw::DistortionChroma distortion;
    ASSERT_TRUE(pmDraw::createDistortionChroma(distortion));
    EXPECT_FLOAT_EQ(distortion.ud.floats["uMaxDistort"], 0.01f);
    EXPECT_TRUE(isAlphaBlend(distortion.renderOpts.blend));
    pmDraw::setParameters(distortion, 0.05f);
    EXPECT_FLOAT_EQ(distortion.ud.floats["uMaxDistort"], 0.05f);
    pmDraw::deleteDistortionChroma(distortion);
}

TEST_F(DistortionChromaTest, ShaderMatchesCpuFormula) {
    const int w = 40, h = 30;
    gl->resizeTarget(w, h);
    for (float maxDistort : {0.01f, 0.05f}) {
        Picture in = makePicture(w, h, 31);
        pmGL::Texture tex = upload(in, false);
        pmDraw::DistortionChroma distortion;
        ASSERT_TRUE(pmDraw::createDistortionChroma(distortion));
        pmDraw::setParameters(distortion, maxDistort);
        // The shader's own output, without the blend over the target.
        distortion.renderOpts.blend.enabled = false;
        pmDraw::setTexture(distortion, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runDistortionChroma(distortion);
        expectPicture(
            gl->readTarget(), w, h,
            [&](int x, int y) { return distortionOf(in, x, y, maxDistort); }, 2,
            "distortion " + std::to_string(maxDistort));
        pmDraw::deleteDistortionChroma(distortion);
        pmGL::deleteTexture(tex);
    }
}

TEST_F(DistortionChromaTest, BlendsWithStraightAlphaOverTheTarget) {
    const int w = 20, h = 16;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    Picture in = makePicture(w, h, 32);
    pmGL::Texture tex = upload(in, false);
    pmDraw::DistortionChroma distortion;
    ASSERT_TRUE(pmDraw::createDistortionChroma(distortion));
    pmDraw::setTexture(distortion, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runDistortionChroma(distortion);
    expectPicture(
        gl->readTarget(), w, h,
        [&](int x, int y) {
            Expected e = distortionOf(in, x, y, 0.01f);
            const float a = e.rgba[3] / 255.0f;
            for (int c = 0; c < 3; ++c) e.rgba[c] = toByte(e.rgba[c] / 255.0f * a);
            return e;
        },
        2, "blended");
    pmDraw::deleteDistortionChroma(distortion);
    pmGL::deleteTexture(tex);
}

}  // namespace
