// Bloom: the screen blend of the picture and its blur, the buffer that
// follows the source's size, the area and the flip.
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

class BloomTest : public GLTest {};

// The blur of a constant picture is the same constant, so the screen blend
// gives c + c - c * c; alpha is screen-blended with the blur's alpha of 1.
TEST_F(BloomTest, ConstantPictureGivesTwoCMinusCSquared) {
    const int w = 24, h = 16;
    gl->resizeTarget(w, h);
    pmDraw::Bloom bloom;
    ASSERT_TRUE(pmDraw::createBloom(bloom, 35));
    for (int level : {0, 30, 77, 128, 200, 255}) {
        Picture in = constantPicture(w, h, static_cast<uint8_t>(level), static_cast<uint8_t>(level),
                                     static_cast<uint8_t>(level / 2), 160);
        pmGL::Texture tex = upload(in, false);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::setTexture(bloom, tex, 0.0f);
        pmDraw::drawBloom(bloom);
        const float c = level / 255.0f, d = (level / 2) / 255.0f;
        const int expected = toByte(2.0f * c - c * c), half = toByte(2.0f * d - d * d);
        expectPicture(
            gl->readTarget(), w, h,
            [&](int, int) {
                return Expected{{expected, expected, half, 255}};
            },
            1, "level " + std::to_string(level));
        pmGL::deleteTexture(tex);
    }
    pmDraw::deleteBloom(bloom);
}

// The blend's shader screen-blends all four channels, alpha included.
TEST_F(BloomTest, ScreenBlendActsOnAlphaToo) {
    gl->resizeTarget(4, 4);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    Picture a = constantPicture(4, 4, 51, 102, 153, 102);
    Picture b = constantPicture(4, 4, 204, 51, 0, 128);
    pmGL::Texture ta = upload(a, true), tb = upload(b, true);
    pmDraw::Bloom bloom;
    ASSERT_TRUE(pmDraw::createBloom(bloom, 7));
    bloom.screen.renderOpts.blend.enabled = false;
    pmDraw::setTexture(bloom.screen, ta, tb, 0.0f);
    pmDraw::runDualTextureFilter(bloom.screen);
    auto screen = [](int x, int y) {
        const float s = x / 255.0f, d = y / 255.0f;
        return toByte(s + d - s * d);
    };
    expectPicture(
        gl->readTarget(), 4, 4,
        [&](int, int) {
            return Expected{{screen(51, 204), screen(102, 51), screen(153, 0), screen(102, 128)}};
        },
        1, "screen");
    pmDraw::deleteBloom(bloom);
    pmGL::deleteTexture(ta);
    pmGL::deleteTexture(tb);
}

TEST_F(BloomTest, BufferFollowsTheSourceSize) {
    Picture small = makePicture(8, 6, 90), other = makePicture(10, 4, 91);
    pmGL::Texture a = upload(small, false), b = upload(other, false), c = upload(small, false);
    pmDraw::Bloom bloom;
    ASSERT_TRUE(pmDraw::createBloom(bloom, 7));
    pmDraw::setTexture(bloom, a, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(bloom.buffer.width, 8);
    EXPECT_EQ(bloom.buffer.height, 6);
    const unsigned id = bloom.buffer.id;
    // Another texture of the same size keeps the buffer.
    EXPECT_TRUE(makesNoGLObject([&] { pmDraw::setTexture(bloom, c, glm::vec2(0.0f, 1.0f)); }));
    EXPECT_EQ(bloom.buffer.id, id);
    EXPECT_EQ(bloom.screen.ud.vec2s["uFlipTexCoord"], glm::vec2(0.0f, 1.0f));
    EXPECT_EQ(bloom.blur.flip, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(bloom.screen.ud.textures["uTexture1"].id, c.id);
    EXPECT_EQ(bloom.screen.ud.textures["uTexture2"].id, bloom.buffer.colorTex[0].id);
    pmDraw::setTexture(bloom, b, glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(bloom.buffer.width, 10);
    EXPECT_EQ(bloom.buffer.height, 4);
    EXPECT_EQ(bloom.buffer.colorTex.size(), 1u);
    EXPECT_EQ(bloom.buffer.colorTex[0].opts.minFilter, GL_LINEAR);
    EXPECT_EQ(bloom.buffer.colorTex[0].opts.wrapS, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(bloom.buffer.colorTex[0].opts.internalFormat, GL_RGBA8);
    pmDraw::deleteBloom(bloom);
    EXPECT_EQ(bloom.buffer.id, 0u);
    EXPECT_EQ(bloom.screen.program.id, 0u);
    EXPECT_EQ(bloom.blur.programs[0].id, 0u);
    pmGL::deleteTexture(a);
    pmGL::deleteTexture(b);
    pmGL::deleteTexture(c);
}

// The blur fills the buffer upright; the caller's flip acts on the blend.
TEST_F(BloomTest, FlipActsOnTheFinalBlend) {
    const int w = 16, h = 16;
    gl->resizeTarget(w, h);
    Picture in = constantPicture(w, h, 20, 20, 20, 255);
    for (int y = h / 2; y < h; ++y) {
        for (int x = 0; x < w; ++x) in.rgba[(static_cast<size_t>(y) * w + x) * 4] = 220;
    }
    pmGL::Texture tex = upload(in, false);
    pmDraw::Bloom bloom;
    ASSERT_TRUE(pmDraw::createBloom(bloom, 7));
    pmDraw::setTexture(bloom, tex, 0.0f);
    pmDraw::drawBloom(bloom);
    const std::vector<uint8_t> straight = gl->readTarget();
    pmDraw::setTexture(bloom, tex, 1.0f);
    pmDraw::drawBloom(bloom);
    const std::vector<uint8_t> flipped = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            EXPECT_NEAR(flipped[(static_cast<size_t>(y) * w + x) * 4],
                        straight[(static_cast<size_t>(h - 1 - y) * w + x) * 4], 1)
                << x << "," << y;
        }
    }
    pmDraw::deleteBloom(bloom);
    pmGL::deleteTexture(tex);
}

// Both passes draw only the area. The blur's first pass fills only the
// area of its own buffer, so the vertical taps next to the area's top and
// bottom read what lies outside it there, and the rim comes out darker.
TEST_F(BloomTest, AreaLimitsBothPasses) {
    const int w = 16, h = 16;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 1.0f, 1.0f);
    Picture in = constantPicture(w, h, 100, 100, 100, 255);
    pmGL::Texture tex = upload(in, false);
    pmDraw::Bloom bloom;
    ASSERT_TRUE(pmDraw::createBloom(bloom, 7));
    pmDraw::setArea(bloom, glm::vec2(0.25f), glm::vec2(0.75f), glm::vec2(0.25f), glm::vec2(0.75f));
    pmDraw::setTexture(bloom, tex, 0.0f);
    pmDraw::drawBloom(bloom);
    const float c = 100.0f / 255.0f;
    const int inside = toByte(2.0f * c - c * c);
    const std::vector<uint8_t> out = gl->readTarget();
    expectPicture(
        out, w, h,
        [&](int x, int y) {
            const bool area = x >= 4 && x < 12 && y >= 4 && y < 12;
            Expected e =
                area ? Expected{{inside, inside, inside, 255}} : Expected{{0, 0, 255, 255}};
            // Rows within the kernel's reach of the rim are checked below.
            e.check = !area || (y >= 6 && y < 10);
            return e;
        },
        1, "area");
    for (int y : {4, 11}) {
        for (int x = 4; x < 12; ++x) {
            const int v = out[(static_cast<size_t>(y) * w + x) * 4];
            EXPECT_LT(v, inside - 1) << x << "," << y;
            EXPECT_GE(v, 100 - 1) << x << "," << y;  // never below the sharp picture
        }
    }
    pmDraw::deleteBloom(bloom);
    pmGL::deleteTexture(tex);
}

TEST_F(BloomTest, DrawBeforeCreateLogsAndDrawsNothing) {
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmDraw::Bloom bloom;
    LogCapture log;
    pmDraw::drawBloom(bloom);
    EXPECT_EQ(log.countEndingWith("> Call createBloom() first."), 1) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(log.lines()[0].text.rfind("pmDrawFilterEffect: drawBloom(", 0), 0u);
    // No source check of its own: the blend reports its missing inputs.
    ASSERT_TRUE(pmDraw::createBloom(bloom, 7));
    log.clear();
    pmDraw::drawBloom(bloom);
    EXPECT_EQ(log.countEndingWith("> uTexture1 or uTexture2 has 0 count.\n"), 1) << log.dump();
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteBloom(bloom);
}

// The blend pass is made first and deleted first.
TEST_F(BloomTest, CreatesAndDeletesTheBlendBeforeTheBlur) {
    pmDraw::Bloom bloom;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createBloom(bloom, 7));
    EXPECT_GE(lineIndex(log, "> createDualTextureFilter()"), 0) << log.dump();
    EXPECT_LT(lineIndex(log, "> createDualTextureFilter()"),
              lineIndex(log, "> createGaussianBlur()"));
    log.clear();
    pmDraw::deleteBloom(bloom);
    EXPECT_GE(lineIndex(log, "> deleteDualTextureFilter()"), 0) << log.dump();
    EXPECT_LT(lineIndex(log, "> deleteDualTextureFilter()"),
              lineIndex(log, "> deleteGaussianBlur()"));
}

}  // namespace
