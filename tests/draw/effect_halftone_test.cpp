// Halftone: dots whose radius follows the darkness of the cell's centre,
// against the same geometry on the CPU; no defaults at creation.
#include <cmath>
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

double glslMod(double x, double y) {
    return x - y * std::floor(x / y);
}

// The shader's output for pixel (x, y); pixels within a hair of a dot's rim
// are not checked. The cells of these tests are centred on texel centres, so
// the sample is one texel.
Expected halftoneOf(const Picture& in, int x, int y, double f, double a) {
    const double s = (x + 0.5) / in.width, t = (y + 0.5) / in.height;
    const double dx = f, dy = f / a;
    const double sx = s - glslMod(s, dx) + 0.5 * dx, sy = t - glslMod(t, dy) + 0.5 * dy;
    const double ux = s, uy = t * a + 0.5 - 0.5 * a;
    const double px = sx, py = sy * a + 0.5 - 0.5 * a;
    const double distance = std::hypot(px - ux, py - uy);
    const int tx = static_cast<int>(std::floor(sx * in.width));
    const int ty = static_cast<int>(std::floor(sy * in.height));
    const double dotScaling = 1.0 - (in.unit(tx, ty, 0) * 0.2125 + in.unit(tx, ty, 1) * 0.7154 +
                                     in.unit(tx, ty, 2) * 0.0721);
    const double radius = f * 0.5 * dotScaling;
    const int v = distance <= radius ? 0 : 255;
    Expected e{{v, v, v, 255}};
    e.check = std::fabs(distance - radius) > 1e-4;
    return e;
}

class HalftoneTest : public GLTest {};

TEST_F(HalftoneTest, CreateSetsNoParameterAndTheShaderSeesZeros) {
    Picture in = makePicture(8, 8, 70);
    pmGL::Texture tex = upload(in, true);
    pmDraw::Halftone halftone;
    ASSERT_TRUE(pmDraw::createHalftone(halftone));
    EXPECT_FALSE(halftone.renderOpts.blend.enabled);
    EXPECT_EQ(halftone.ud.floats.count("uFractionWidthOfPixel"), 0u);
    EXPECT_EQ(halftone.ud.floats.count("uAspectRatio"), 0u);
    pmDraw::setTexture(halftone, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runHalftone(halftone);
    GLfloat fraction = -1.0f, aspect = -1.0f;
    const GLuint program = halftone.program.id;
    glGetUniformfv(program, glGetUniformLocation(program, "uFractionWidthOfPixel"), &fraction);
    glGetUniformfv(program, glGetUniformLocation(program, "uAspectRatio"), &aspect);
    EXPECT_EQ(fraction, 0.0f);
    EXPECT_EQ(aspect, 0.0f);
    pmDraw::setParameters(halftone, 0.125f, 1.5f);
    EXPECT_FLOAT_EQ(halftone.ud.floats["uFractionWidthOfPixel"], 0.125f);
    EXPECT_FLOAT_EQ(halftone.ud.floats["uAspectRatio"], 1.5f);
    pmDraw::deleteHalftone(halftone);
    pmGL::deleteTexture(tex);
}

// Cells 3 texels wide; with aspect 0.6 they are 5 texels high.
TEST_F(HalftoneTest, ShaderMatchesCpuDots) {
    const int w = 48, h = 48;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 71);
    pmGL::Texture tex = upload(in, true);
    for (float aspect : {1.0f, 0.6f}) {
        pmDraw::Halftone halftone;
        ASSERT_TRUE(pmDraw::createHalftone(halftone));
        pmDraw::setParameters(halftone, 1.0f / 16.0f, aspect);
        pmDraw::setTexture(halftone, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runHalftone(halftone);
        const int compared = expectPicture(
            gl->readTarget(), w, h,
            [&](int x, int y) { return halftoneOf(in, x, y, 1.0 / 16.0, aspect); }, 0,
            "aspect " + std::to_string(aspect));
        EXPECT_GT(compared, w * h * 9 / 10);
        pmDraw::deleteHalftone(halftone);
    }
    pmGL::deleteTexture(tex);
}

TEST_F(HalftoneTest, DarkerCellsGetLargerDots) {
    const int w = 48, h = 48;
    gl->resizeTarget(w, h);
    auto blackCount = [&](uint8_t level) {
        Picture in = constantPicture(w, h, level, level, level, 255);
        pmGL::Texture tex = upload(in, true);
        pmDraw::Halftone halftone;
        EXPECT_TRUE(pmDraw::createHalftone(halftone));
        pmDraw::setParameters(halftone, 0.125f, 1.0f);
        pmDraw::setTexture(halftone, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runHalftone(halftone);
        const std::vector<uint8_t> out = gl->readTarget();
        int black = 0;
        for (size_t i = 0; i < out.size(); i += 4) black += out[i] == 0 ? 1 : 0;
        pmDraw::deleteHalftone(halftone);
        pmGL::deleteTexture(tex);
        return black;
    };
    const int white = blackCount(255), grey = blackCount(128), dark = blackCount(0);
    EXPECT_EQ(white, 0);
    EXPECT_GT(grey, 0);
    EXPECT_GT(dark, grey);
}

}  // namespace
