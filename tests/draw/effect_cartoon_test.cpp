// Cartoon: the contrast curve then the brightness-sized disc; the buffer at
// least 1920 wide and its rebuilds; the zero division of black.
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

// The contrast pass stores min(1, 1.8 c^2.2) in the 8-bit buffer; a constant
// buffer makes the colour-weighted mean of the disc that stored value again.
int contrastByte(int level) {
    return toByte(1.8f * std::pow(level / 255.0f, 2.2f));
}

class CartoonTest : public GLTest {
protected:
    std::vector<uint8_t> drawConstant(pmDraw::Cartoon& cartoon, int w, int h, int r, int g, int b,
                                      int a) {
        Picture in = constantPicture(w, h, static_cast<uint8_t>(r), static_cast<uint8_t>(g),
                                     static_cast<uint8_t>(b), static_cast<uint8_t>(a));
        pmGL::Texture tex = upload(in, false);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::setTexture(cartoon, tex, 0.0f);
        pmDraw::drawCartoon(cartoon);
        pmGL::deleteTexture(tex);
        return gl->readTarget();
    }
};

TEST_F(CartoonTest, CreateSetsRadiusBlendAndContrastDefaults) {
    pmDraw::Cartoon cartoon;
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));
    EXPECT_FLOAT_EQ(cartoon.cartoon.ud.floats["uRadius"], 16.0f);
    EXPECT_TRUE(isAlphaBlend(cartoon.cartoon.renderOpts.blend));
    EXPECT_FALSE(cartoon.contrast.renderOpts.blend.enabled);
    EXPECT_FALSE(cartoon.contrast.useExternalTexture);
    EXPECT_FLOAT_EQ(cartoon.contrast.ud.floats["uConstFactor"], 1.8f);
    EXPECT_FLOAT_EQ(cartoon.contrast.ud.floats["uPowerFactor"], 2.2f);
    EXPECT_EQ(cartoon.source, nullptr);
    EXPECT_EQ(cartoon.buffer.id, 0u);
    pmDraw::deleteCartoon(cartoon);
    EXPECT_EQ(cartoon.cartoon.program.id, 0u);
    EXPECT_EQ(cartoon.contrast.program.id, 0u);
}

// A constant c > 0 whose curve value survives the 8-bit buffer comes out as
// min(1, 1.8 c^2.2), per channel, with alpha 1.
TEST_F(CartoonTest, ConstantPictureGivesTheContrastCurve) {
    const int w = 16, h = 8;
    gl->resizeTarget(w, h);
    pmDraw::Cartoon cartoon;
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));
    const int levels[][3] = {{255, 255, 255}, {230, 200, 180}, {128, 160, 96}, {60, 90, 120}};
    for (const auto& level : levels) {
        const std::vector<uint8_t> out =
            drawConstant(cartoon, w, h, level[0], level[1], level[2], 120);
        const Expected e{
            {contrastByte(level[0]), contrastByte(level[1]), contrastByte(level[2]), 255}};
        expectPicture(
            out, w, h, [&](int, int) { return e; }, 1, "level " + std::to_string(level[0]));
    }
    pmDraw::deleteCartoon(cartoon);
}

// A black centre takes no sample and divides zero by zero; the result is
// what this GPU makes of 0 / 0, and so it is for a level the curve rounds to
// black in the buffer.
TEST_F(CartoonTest, BlackIsTheGpusZeroDivision) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    // What the GPU makes of 0 / 0 at run time.
    pmDraw::TextureFilter probe;
    ASSERT_TRUE(pmDraw::createTextureFilter(probe, R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform float uZero;
out vec4 fragColor;
void main() {
    vec3 zero = texture(uTexture, vTexCoord).rgb * uZero;
    fragColor = vec4(zero / zero, 1.0);
}
)"));
    Picture grey = constantPicture(w, h, 128, 128, 128, 255);
    pmGL::Texture tex = upload(grey, false);
    pmGL::setUniformData(probe.ud, "uZero", 0.0f);
    pmDraw::setTexture(probe, tex, 0.0f);
    pmDraw::runTextureFilter(probe);
    const std::vector<uint8_t> gpuZeroDivision = gl->readTarget();
    pmDraw::deleteTextureFilter(probe);
    pmGL::deleteTexture(tex);

    pmDraw::Cartoon cartoon;
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));
    ASSERT_EQ(contrastByte(10), 0);
    for (int level : {0, 10}) {
        const std::vector<uint8_t> out = drawConstant(cartoon, w, h, level, level, level, 255);
        EXPECT_EQ(out, gpuZeroDivision)
            << "level " << level << ", first pixel " << int(out[0]) << "," << int(out[3]);
    }
    pmDraw::deleteCartoon(cartoon);
}

TEST_F(CartoonTest, BufferIsAtLeast1920WideAndRebuiltBelowThat) {
    Picture wide = makePicture(1920, 4, 100), wider = makePicture(2000, 3, 101);
    Picture half = makePicture(960, 4, 102), odd = makePicture(1000, 3, 103);
    pmGL::Texture tWide = upload(wide, false), tWider = upload(wider, false);
    pmGL::Texture tHalf = upload(half, false), tOdd = upload(odd, false);
    pmDraw::Cartoon cartoon;
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));

    pmDraw::setTexture(cartoon, tWide, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoon.buffer.width, 1920);
    EXPECT_EQ(cartoon.buffer.height, 4);
    unsigned id = cartoon.buffer.id;
    EXPECT_TRUE(makesNoGLObject([&] { pmDraw::setTexture(cartoon, tWide, 1.0f); }));
    EXPECT_EQ(cartoon.buffer.id, id);
    EXPECT_EQ(cartoon.source, &tWide);
    EXPECT_EQ(cartoon.flip, glm::vec2(0.0f, 1.0f));

    pmDraw::setTexture(cartoon, tWider, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoon.buffer.width, 2000);
    EXPECT_EQ(cartoon.buffer.height, 3);

    // 960 wide: a buffer of 1920 by 8, which never equals the source's size.
    pmDraw::setTexture(cartoon, tHalf, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoon.buffer.width, 1920);
    EXPECT_EQ(cartoon.buffer.height, 8);
    EXPECT_FALSE(makesNoGLObject([&] { pmDraw::setTexture(cartoon, tHalf, 0.0f); }));
    EXPECT_EQ(cartoon.buffer.width, 1920);
    EXPECT_EQ(cartoon.buffer.height, 8);

    // 1000 by 3 scaled by 1.92: the height 5.76 is cut to 5.
    pmDraw::setTexture(cartoon, tOdd, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(cartoon.buffer.width, 1920);
    EXPECT_EQ(cartoon.buffer.height, 5);

    pmDraw::deleteCartoon(cartoon);
    EXPECT_EQ(cartoon.buffer.id, 0u);
    for (pmGL::Texture* t : {&tWide, &tWider, &tHalf, &tOdd}) pmGL::deleteTexture(*t);
}

// The stored flip acts on the contrast pass, the first one.
TEST_F(CartoonTest, FlipTurnsThePictureOver) {
    const int w = 16, h = 16;
    gl->resizeTarget(w, h);
    Picture in = constantPicture(w, h, 90, 90, 90, 255);
    for (int y = h / 2; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c) in.rgba[(static_cast<size_t>(y) * w + x) * 4 + c] = 230;
        }
    }
    pmGL::Texture tex = upload(in, false);
    pmDraw::Cartoon cartoon;
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));
    pmDraw::setTexture(cartoon, tex, 1.0f);
    pmDraw::drawCartoon(cartoon);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        if (y == h / 2 - 1 || y == h / 2) continue;  // the seam is a mix of both
        const int expected = contrastByte(y < h / 2 ? 230 : 90);
        EXPECT_NEAR(out[(static_cast<size_t>(y) * w + 3) * 4], expected, 1) << y;
    }
    pmDraw::deleteCartoon(cartoon);
    pmGL::deleteTexture(tex);
}

TEST_F(CartoonTest, DrawChecksCreationThenSource) {
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmDraw::Cartoon cartoon;
    LogCapture log;
    pmDraw::drawCartoon(cartoon);
    EXPECT_EQ(log.countEndingWith("> Call createCartoon() first."), 1) << log.dump();
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));
    log.clear();
    pmDraw::drawCartoon(cartoon);
    EXPECT_EQ(log.countEndingWith("> Call setTexture() first."), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteCartoon(cartoon);
}

// Deleted in the order buffer, contrast pass, cartoon pass.
TEST_F(CartoonTest, DeletesBufferThenContrastThenCartoonPass) {
    Picture in = makePicture(8, 4, 104);
    pmGL::Texture tex = upload(in, false);
    pmDraw::Cartoon cartoon;
    ASSERT_TRUE(pmDraw::createCartoon(cartoon));
    pmDraw::setTexture(cartoon, tex, 0.0f);
    ASSERT_NE(cartoon.buffer.id, 0u);
    LogCapture log;
    pmDraw::deleteCartoon(cartoon);
    EXPECT_EQ(cartoon.buffer.id, 0u);
    const int contrastEnd = lineIndex(log, "> deleteContrastFilter() end");
    ASSERT_GE(contrastEnd, 0) << log.dump();
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GT(lines.size(), static_cast<size_t>(contrastEnd + 1));
    EXPECT_NE(lines[contrastEnd + 1].text.find("TextureFilter::finalize()"), std::string::npos)
        << log.dump();
    pmGL::deleteTexture(tex);
}

// A create that fails half way keeps what it made: the caller still deletes.
// Until both passes exist the draw refuses.
TEST_F(CartoonTest, HalfCreatedCartoonKeepsItsFirstPassAndDoesNotDraw) {
    Picture in = makePicture(8, 4, 105);
    pmGL::Texture tex = upload(in, false);
    pmDraw::Cartoon cartoon;
    // A quad made beforehand makes the contrast pass's create fail.
    pmDraw::setArea(cartoon.contrast, glm::vec2(0.0f), glm::vec2(1.0f));
    EXPECT_FALSE(pmDraw::createCartoon(cartoon));
    EXPECT_NE(cartoon.cartoon.program.id, 0u);
    pmDraw::setTexture(cartoon, tex, 0.0f);
    LogCapture log;
    pmDraw::drawCartoon(cartoon);
    EXPECT_EQ(log.countEndingWith("> Call createCartoon() first."), 1) << log.dump();
    pmDraw::deleteCartoon(cartoon);
    EXPECT_EQ(cartoon.cartoon.program.id, 0u);
    EXPECT_EQ(cartoon.contrast.program.id, 0u);
    pmGL::deleteTexture(tex);
}

}  // namespace
