// Cartoonify: the buffer 480 wide, the darken blend with the blur and the
// banded lightness against a CPU L*a*b* round trip.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "effect_test_support.h"
#include "pmDrawComposite.h"

namespace {

using namespace effecttest;

// Index of the first logged line ending with `tail`, or -1.
int lineIndex(const LogCapture& log, const std::string& tail) {
    const std::vector<LogLine> lines = log.lines();
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string& text = lines[i].text;
        if (text.size() >= tail.size() &&
            text.compare(text.size() - tail.size(), tail.size(), tail) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

struct Vec3 {
    double x, y, z;
};

double toLinear(double c) {
    return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92;
}
double fromLinear(double c) {
    return c > 0.0031308 ? 1.055 * std::pow(c, 1.0 / 2.4) - 0.055 : 12.92 * c;
}
double labF(double n) {
    return n > 0.008856 ? std::cbrt(n) : 7.787 * n + 16.0 / 116.0;
}
double labFInverse(double f) {
    return f > 0.206897 ? f * f * f : (f - 16.0 / 116.0) / 7.787;
}

// The shader chunk's conversions, with L*a*b* squeezed into about [0, 1].
Vec3 rgb2lab(Vec3 c) {
    const double r = toLinear(c.x), g = toLinear(c.y), b = toLinear(c.z);
    const double X = (0.4124 * r + 0.3576 * g + 0.1805 * b) * 100.0;
    const double Y = (0.2126 * r + 0.7152 * g + 0.0722 * b) * 100.0;
    const double Z = (0.0193 * r + 0.1192 * g + 0.9505 * b) * 100.0;
    const double fx = labF(X / 95.047), fy = labF(Y / 100.0), fz = labF(Z / 108.883);
    const double L = 116.0 * fy - 16.0, A = 500.0 * (fx - fy), B = 200.0 * (fy - fz);
    return {L / 100.0, 0.5 + 0.5 * (A / 127.0), 0.5 + 0.5 * (B / 127.0)};
}

Vec3 lab2rgb(Vec3 c) {
    const double L = 100.0 * c.x, A = 2.0 * 127.0 * (c.y - 0.5), B = 2.0 * 127.0 * (c.z - 0.5);
    const double fy = (L + 16.0) / 116.0, fx = A / 500.0 + fy, fz = fy - B / 200.0;
    const double X = labFInverse(fx) * 95.047 / 100.0, Y = labFInverse(fy),
                 Z = labFInverse(fz) * 108.883 / 100.0;
    const double r = 3.2406 * X - 1.5372 * Y - 0.4986 * Z;
    const double g = -0.9689 * X + 1.8758 * Y + 0.0415 * Z;
    const double b = 0.0557 * X - 0.2040 * Y + 1.0570 * Z;
    return {fromLinear(r), fromLinear(g), fromLinear(b)};
}

// Lightness rounded to twelfths with a tanh step between the bands.
Vec3 quantise(Vec3 rgb) {
    Vec3 lab = rgb2lab(rgb);
    const double qBin = 12.0, qStep = 1.0 / qBin;
    const double lum = std::round(lab.x * qBin) / qBin;
    lab.x = lum + (qStep * 0.5) * std::tanh(qBin * 6.0 * (lab.x - lum));
    return lab2rgb(lab);
}

class CartoonifyTest : public GLTest {};

// A constant picture is its own blur, so the darken blend keeps it and only
// the banding acts. Alpha is the minimum of the source's and the blur's 1.
TEST_F(CartoonifyTest, ConstantPictureGetsBandedLightness) {
    const int w = 24, h = 12;
    gl->resizeTarget(w, h);
    pmDraw::Cartoonify cartoonify;
    ASSERT_TRUE(pmDraw::createCartoonify(cartoonify));
    const int levels[][3] = {{200, 120, 60}, {90, 90, 90}, {30, 160, 220}, {250, 250, 240}};
    for (const auto& level : levels) {
        Picture in =
            constantPicture(w, h, static_cast<uint8_t>(level[0]), static_cast<uint8_t>(level[1]),
                            static_cast<uint8_t>(level[2]), 255);
        pmGL::Texture tex = upload(in, false);
        pmDraw::setTexture(cartoonify, tex, 0.0f);
        pmDraw::drawCartoonify(cartoonify);
        const Vec3 q = quantise({level[0] / 255.0, level[1] / 255.0, level[2] / 255.0});
        const Expected e{{toByte(static_cast<float>(q.x)), toByte(static_cast<float>(q.y)),
                          toByte(static_cast<float>(q.z)), 255}};
        expectPicture(
            gl->readTarget(), w, h, [&](int, int) { return e; }, 2,
            "level " + std::to_string(level[0]));
        pmGL::deleteTexture(tex);
    }
    pmDraw::deleteCartoonify(cartoonify);
    pmGL::deleteFrameBuffer(cartoonify.buffer);
}

TEST_F(CartoonifyTest, AlphaIsTheDarkerOfSourceAndBlur) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::Cartoonify cartoonify;
    ASSERT_TRUE(pmDraw::createCartoonify(cartoonify));
    cartoonify.blend.renderOpts.blend.enabled = false;
    Picture in = constantPicture(w, h, 128, 128, 128, 90);
    pmGL::Texture tex = upload(in, false);
    pmDraw::setTexture(cartoonify, tex, 0.0f);
    pmDraw::drawCartoonify(cartoonify);
    const std::vector<uint8_t> out = gl->readTarget();
    for (size_t i = 3; i < out.size(); i += 4) EXPECT_EQ(out[i], 90) << i;
    pmDraw::deleteCartoonify(cartoonify);
    pmGL::deleteFrameBuffer(cartoonify.buffer);
    pmGL::deleteTexture(tex);
}

// The blur spreads a dark line into its neighbours and the darken blend
// keeps that: the neighbours of the line come out darker than the white.
TEST_F(CartoonifyTest, DarkLinesThickenIntoTheirSurroundings) {
    const int w = 480, h = 16;
    gl->resizeTarget(w, h);
    Picture in = constantPicture(w, h, 255, 255, 255, 255);
    for (int y = 0; y < h; ++y) {
        for (int c = 0; c < 3; ++c) in.rgba[(static_cast<size_t>(y) * w + 240) * 4 + c] = 0;
    }
    pmGL::Texture tex = upload(in, false);
    pmDraw::Cartoonify cartoonify;
    ASSERT_TRUE(pmDraw::createCartoonify(cartoonify));
    pmDraw::setTexture(cartoonify, tex, 0.0f);
    pmDraw::drawCartoonify(cartoonify);
    const std::vector<uint8_t> out = gl->readTarget();
    const size_t row = static_cast<size_t>(h / 2) * w;
    const int far = out[(row + 100) * 4], near = out[(row + 242) * 4];
    EXPECT_LT(near, far - 10);
    pmDraw::deleteCartoonify(cartoonify);
    pmGL::deleteFrameBuffer(cartoonify.buffer);
    pmGL::deleteTexture(tex);
}

TEST_F(CartoonifyTest, BufferIs480WideAndSurvivesOnlyFor480) {
    Picture exact = makePicture(480, 6, 110), wide = makePicture(960, 540, 111);
    Picture narrow = makePicture(240, 100, 112);
    pmGL::Texture tExact = upload(exact, false), tWide = upload(wide, false),
                  tNarrow = upload(narrow, false);
    pmDraw::Cartoonify cartoonify;
    ASSERT_TRUE(pmDraw::createCartoonify(cartoonify));

    pmDraw::setTexture(cartoonify, tExact, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoonify.buffer.width, 480);
    EXPECT_EQ(cartoonify.buffer.height, 6);
    const unsigned id = cartoonify.buffer.id;
    EXPECT_TRUE(makesNoGLObject([&] { pmDraw::setTexture(cartoonify, tExact, 1.0f); }));
    EXPECT_EQ(cartoonify.buffer.id, id);
    EXPECT_EQ(cartoonify.flip, glm::vec2(0.0f, 1.0f));
    EXPECT_EQ(cartoonify.source, &tExact);

    pmDraw::setTexture(cartoonify, tWide, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoonify.buffer.width, 480);
    EXPECT_EQ(cartoonify.buffer.height, 270);
    EXPECT_FALSE(makesNoGLObject([&] { pmDraw::setTexture(cartoonify, tWide, 0.0f); }));

    pmDraw::setTexture(cartoonify, tNarrow, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoonify.buffer.width, 480);
    EXPECT_EQ(cartoonify.buffer.height, 200);
    EXPECT_FALSE(makesNoGLObject([&] { pmDraw::setTexture(cartoonify, tNarrow, 0.0f); }));

    // Deleting leaves the buffer to the next setTexture or the context's end.
    pmDraw::deleteCartoonify(cartoonify);
    EXPECT_EQ(cartoonify.blend.program.id, 0u);
    EXPECT_EQ(cartoonify.blur.programs[0].id, 0u);
    EXPECT_NE(cartoonify.buffer.id, 0u);
    EXPECT_TRUE(glIsFramebuffer(cartoonify.buffer.id));
    pmGL::deleteFrameBuffer(cartoonify.buffer);
    for (pmGL::Texture* t : {&tExact, &tWide, &tNarrow}) pmGL::deleteTexture(*t);
}

TEST_F(CartoonifyTest, DrawChecksCreationThenSource) {
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmDraw::Cartoonify cartoonify;
    LogCapture log;
    pmDraw::drawCartoonify(cartoonify);
    EXPECT_EQ(log.countEndingWith("> Call createCartoonify() first."), 1) << log.dump();
    ASSERT_TRUE(pmDraw::createCartoonify(cartoonify));
    log.clear();
    pmDraw::drawCartoonify(cartoonify);
    EXPECT_EQ(log.countEndingWith("> Call setTexture() first."), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteCartoonify(cartoonify);
}

// The blur is made first, with the kernel of 31, and deleted first.
TEST_F(CartoonifyTest, CreatesAndDeletesTheBlurBeforeTheBlend) {
    pmDraw::Cartoonify cartoonify;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createCartoonify(cartoonify));
    EXPECT_GE(lineIndex(log, "> createGaussianBlur()"), 0) << log.dump();
    EXPECT_LT(lineIndex(log, "> createGaussianBlur()"),
              lineIndex(log, "> createDualTextureFilter()"));
    log.clear();
    pmDraw::deleteCartoonify(cartoonify);
    EXPECT_GE(lineIndex(log, "> deleteGaussianBlur()"), 0) << log.dump();
    EXPECT_LT(lineIndex(log, "> deleteGaussianBlur()"),
              lineIndex(log, "> deleteDualTextureFilter()"));
}

}  // namespace
