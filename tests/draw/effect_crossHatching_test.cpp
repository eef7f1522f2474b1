// CrossHatching: the four line sets by the length of rgb, against the same
// thresholds and window-coordinate lattices on the CPU.
#include <cmath>
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

bool onLine(int value) {
    return ((value % 10) + 10) % 10 == 0;
}

// gl_FragCoord of pixel (x, y) is (x + 0.5, y + 0.5): x + y is x + y + 1 and
// x - y is x - y in whole pixels.
Expected hatchOf(const Picture& in, int x, int y) {
    const float r = in.unit(x, y, 0), g = in.unit(x, y, 1), b = in.unit(x, y, 2);
    const float lum = std::sqrt(r * r + g * g + b * b);
    const int sum = x + y + 1, difference = x - y;
    bool line = false;
    line = line || (lum < 1.0f && onLine(sum));
    line = line || (lum < 0.75f && onLine(difference));
    line = line || (lum < 0.5f && onLine(sum - 5));
    line = line || (lum < 0.3f && onLine(difference - 5));
    Expected e = line ? Expected{{26, 26, 26, 255}}
                      : Expected{{in.at(x, y, 0), in.at(x, y, 1), in.at(x, y, 2), in.at(x, y, 3)}};
    for (float threshold : {1.0f, 0.75f, 0.5f, 0.3f}) {
        if (std::fabs(lum - threshold) < 1e-5f) e.check = false;
    }
    return e;
}

class CrossHatchingTest : public GLTest {
protected:
    std::vector<uint8_t> hatch(Picture& in) {
        pmGL::Texture tex = upload(in, true);
        pmDraw::CrossHatching hatching;
        EXPECT_TRUE(pmDraw::createCrossHatching(hatching));
        EXPECT_FALSE(hatching.renderOpts.blend.enabled);
        pmDraw::setTexture(hatching, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runCrossHatching(hatching);
        std::vector<uint8_t> out = gl->readTarget();
        pmDraw::deleteCrossHatching(hatching);
        pmGL::deleteTexture(tex);
        return out;
    }
};

TEST_F(CrossHatchingTest, ShaderMatchesCpuLattices) {
    const int w = 40, h = 30;
    gl->resizeTarget(w, h);
    // Darkened so that every threshold is crossed somewhere.
    Picture in = makePicture(w, h, 81);
    for (size_t i = 0; i < in.rgba.size(); ++i) {
        if (i % 4 != 3) in.rgba[i] = static_cast<uint8_t>(in.rgba[i] * 2 / 3);
    }
    const std::vector<uint8_t> out = hatch(in);
    expectPicture(
        out, w, h, [&](int x, int y) { return hatchOf(in, x, y); }, 1, "hatching");
}

TEST_F(CrossHatchingTest, WhiteGetsNoLinesAndMidGreyOnlyTheFirstSet) {
    const int w = 20, h = 20;
    gl->resizeTarget(w, h);
    Picture white = constantPicture(w, h, 255, 255, 255, 255);
    EXPECT_EQ(hatch(white), white.rgba);

    Picture grey = constantPicture(w, h, 128, 128, 128, 255);
    const std::vector<uint8_t> out = hatch(grey);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const uint8_t v = out[(static_cast<size_t>(y) * w + x) * 4];
            if (onLine(x + y + 1)) {
                EXPECT_NEAR(v, 26, 1) << x << "," << y;
            } else {
                EXPECT_EQ(v, 128) << x << "," << y;
            }
        }
    }
}

TEST_F(CrossHatchingTest, DarkGreyGetsAllFourSets) {
    const int w = 20, h = 20;
    gl->resizeTarget(w, h);
    Picture dark = constantPicture(w, h, 40, 40, 40, 255);
    const std::vector<uint8_t> out = hatch(dark);
    int onlyLastSet = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool line =
                onLine(x + y + 1) || onLine(x - y) || onLine(x + y + 1 - 5) || onLine(x - y - 5);
            const uint8_t v = out[(static_cast<size_t>(y) * w + x) * 4];
            EXPECT_NEAR(v, line ? 26 : 40, 1) << x << "," << y;
            const bool earlierSets = onLine(x + y + 1) || onLine(x - y) || onLine(x + y + 1 - 5);
            onlyLastSet += (onLine(x - y - 5) && !earlierSets) ? 1 : 0;
        }
    }
    EXPECT_GT(onlyLastSet, 0);
}

}  // namespace
