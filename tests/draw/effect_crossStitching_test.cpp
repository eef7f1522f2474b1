// CrossStitching: the X of each cell in its corner colour, against the same
// rules on the CPU with a bilinear read of the corner.
#include <algorithm>
#include <cmath>
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

// The shader's output for pixel (x, y) of a target of the picture's size.
Expected stitchOf(const Picture& in, int x, int y, float size) {
    const float cx = x + 0.5f, cy = y + 0.5f;
    float tlX = std::floor(cx / size) * size, tlY = std::floor(cy / size) * size;
    const int remX = static_cast<int>(cx - size * std::floor(cx / size));
    const int remY = static_cast<int>(cy - size * std::floor(cy / size));
    if (remX == 0 && remY == 0) {
        tlX = cx;
        tlY = cy;
    }
    const float blX = tlX, blY = tlY + (size - 1.0f);
    const bool stitch = remX == remY || (static_cast<int>(cx) - static_cast<int>(blX)) ==
                                            (static_cast<int>(blY) - static_cast<int>(cy));
    if (!stitch) return Expected{{0, 0, 0, 255}};
    Expected e;
    for (int c = 0; c < 4; ++c) {
        e.rgba[c] = toByte(bilinear(in, tlX / in.width, tlY / in.height, c) / 255.0f * 1.4f);
    }
    return e;
}

class CrossStitchingTest : public GLTest {};

TEST_F(CrossStitchingTest, CreateSetsSizeSixAndAlphaBlend) {
    pmDraw::CrossStitching stitching;
    ASSERT_TRUE(pmDraw::createCrossStitching(stitching));
    EXPECT_FLOAT_EQ(stitching.ud.floats["uSize"], 6.0f);
    EXPECT_TRUE(isAlphaBlend(stitching.renderOpts.blend));
    pmDraw::setParameters(stitching, 4.0f);
    EXPECT_FLOAT_EQ(stitching.ud.floats["uSize"], 4.0f);
    pmDraw::deleteCrossStitching(stitching);
}

TEST_F(CrossStitchingTest, ShaderMatchesCpuRules) {
    const int w = 40, h = 28;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 51);
    pmGL::Texture tex = upload(in, false);
    for (float size : {6.0f, 5.0f}) {
        pmDraw::CrossStitching stitching;
        ASSERT_TRUE(pmDraw::createCrossStitching(stitching));
        pmDraw::setParameters(stitching, size);
        stitching.renderOpts.blend.enabled = false;
        pmDraw::setTexture(stitching, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runCrossStitching(stitching);
        expectPicture(
            gl->readTarget(), w, h, [&](int x, int y) { return stitchOf(in, x, y, size); }, 2,
            "size " + std::to_string(size));
        pmDraw::deleteCrossStitching(stitching);
    }
    pmGL::deleteTexture(tex);
}

// The first pixel of a cell samples its own centre, not the cell's corner,
// and alpha is brightened with the colour.
TEST_F(CrossStitchingTest, FirstPixelOfACellShowsItsOwnColourTimesOnePointFour) {
    const int w = 12, h = 12;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 52);
    for (int i = 0; i < w * h; ++i) {
        for (int c = 0; c < 4; ++c)
            in.rgba[i * 4 + c] = static_cast<uint8_t>(in.rgba[i * 4 + c] / 2);
    }
    pmGL::Texture tex = upload(in, false);
    pmDraw::CrossStitching stitching;
    ASSERT_TRUE(pmDraw::createCrossStitching(stitching));
    stitching.renderOpts.blend.enabled = false;
    pmDraw::setTexture(stitching, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runCrossStitching(stitching);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; y += 6) {
        for (int x = 0; x < w; x += 6) {
            for (int c = 0; c < 4; ++c) {
                EXPECT_NEAR(out[(static_cast<size_t>(y) * w + x) * 4 + c],
                            toByte(in.unit(x, y, c) * 1.4f), 1)
                    << x << "," << y << " channel " << c;
            }
        }
    }
    pmDraw::deleteCrossStitching(stitching);
    pmGL::deleteTexture(tex);
}

// With the alpha blend as created, a translucent stitch lets the target show
// through and black between the stitches is opaque.
TEST_F(CrossStitchingTest, BlendsStitchesOverTheTarget) {
    const int w = 12, h = 12;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 1.0f, 1.0f);
    Picture in = constantPicture(w, h, 100, 150, 50, 100);
    pmGL::Texture tex = upload(in, false);
    pmDraw::CrossStitching stitching;
    ASSERT_TRUE(pmDraw::createCrossStitching(stitching));
    pmDraw::setTexture(stitching, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runCrossStitching(stitching);
    const std::vector<uint8_t> out = gl->readTarget();
    const float a = 100.0f / 255.0f * 1.4f;
    // (1, 1) lies on the diagonal of the first cell; (1, 0) lies on neither.
    const uint8_t* stitch = &out[(1 * w + 1) * 4];
    EXPECT_NEAR(stitch[0], toByte(100.0f / 255.0f * 1.4f * a), 2);
    EXPECT_NEAR(stitch[1], toByte(150.0f / 255.0f * 1.4f * a), 2);
    EXPECT_NEAR(stitch[2], toByte(50.0f / 255.0f * 1.4f * a + (1.0f - a)), 2);
    EXPECT_NEAR(stitch[3], 255, 1);
    const uint8_t* gap = &out[(0 * w + 1) * 4];
    EXPECT_EQ(gap[0], 0);
    EXPECT_EQ(gap[1], 0);
    EXPECT_EQ(gap[2], 0);
    EXPECT_EQ(gap[3], 255);
    pmDraw::deleteCrossStitching(stitching);
    pmGL::deleteTexture(tex);
}

}  // namespace
