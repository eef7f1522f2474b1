// The pass bases, NoFilter and Grey, drawn into the test's own framebuffer
// and compared with the same formulas computed on the CPU.
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmDraw.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

struct Rgba {
    int r, g, b, a;
};

// A texture made from top-row-first test pixels; NEAREST so that each
// fragment reads exactly one texel.
Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height, int channels) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmUtil::ImageData<unsigned char> image(width, height, channels, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

Rgba texel(const std::vector<uint8_t>& pixels, int width, int channels, int x, int y) {
    const uint8_t* p = &pixels[(static_cast<size_t>(y) * width + x) * channels];
    return {p[0], p[1], p[2], channels == 4 ? p[3] : 255};
}

Rgba pixelAt(const std::vector<uint8_t>& target, int width, int x, int y) {
    const uint8_t* p = &target[(static_cast<size_t>(y) * width + x) * 4];
    return {p[0], p[1], p[2], p[3]};
}

void expectNear(const Rgba& actual, const Rgba& expected, int x, int y, int tolerance = 1) {
    EXPECT_NEAR(actual.r, expected.r, tolerance) << "at " << x << "," << y;
    EXPECT_NEAR(actual.g, expected.g, tolerance) << "at " << x << "," << y;
    EXPECT_NEAR(actual.b, expected.b, tolerance) << "at " << x << "," << y;
    EXPECT_NEAR(actual.a, expected.a, tolerance) << "at " << x << "," << y;
}

int toByte(float v) {
    return static_cast<int>(std::lround(std::min(std::max(v, 0.0f), 1.0f) * 255.0f));
}

class DrawFilterTest : public GLTest {};

TEST_F(DrawFilterTest, CreateBuildsProgramQuadAndVertexArrayAndLogsSteps) {
    LogCapture log;
    pmDraw::NoFilter filter;
    EXPECT_EQ(filter.quad.id, 0u);
    EXPECT_EQ(filter.program.id, 0u);
    ASSERT_TRUE(pmDraw::createNoFilter(filter, false));
    EXPECT_NE(filter.program.id, 0u);
    EXPECT_NE(filter.quad.id, 0u);
    EXPECT_NE(filter.vertexArray.id, 0u);
    EXPECT_EQ(filter.quad.count, 4u);
    EXPECT_EQ(filter.quad.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_EQ(log.countEndingWith("> NoFilter::initialize(false)"), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::initialize()"), 1);
    EXPECT_EQ(log.countEndingWith("> BaseFilter::initialize()"), 1);
    EXPECT_EQ(log.countEndingWith("> BaseFilter::initialize() end."), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::initialize() end."), 1);
    EXPECT_EQ(log.countEndingWith("> NoFilter::initialize() will return(true)"), 1);
    EXPECT_TRUE(filter.ud.floats.count("uAlphaMultiplier"));
    EXPECT_FLOAT_EQ(filter.ud.floats["uAlphaMultiplier"], 1.0f);
    EXPECT_EQ(filter.renderOpts.blend.srcRGB, static_cast<unsigned>(GL_SRC_ALPHA));
    EXPECT_TRUE(filter.renderOpts.blend.enabled);
    pmDraw::deleteNoFilter(filter);
    EXPECT_EQ(filter.program.id, 0u);
    EXPECT_EQ(filter.quad.id, 0u);
    EXPECT_EQ(filter.vertexArray.id, 0u);
}

TEST_F(DrawFilterTest, SecondCreateFailsWithSuperLineAndKeepsQuadAndVertexArray) {
    pmDraw::Grey grey;
    ASSERT_TRUE(pmDraw::createGrey(grey));
    const unsigned quad = grey.quad.id;
    const unsigned vertexArray = grey.vertexArray.id;
    const unsigned firstProgram = grey.program.id;
    LogCapture log;
    EXPECT_FALSE(pmDraw::createGrey(grey));
    EXPECT_EQ(log.countEndingWith("> ___super::initialize() failed."), 1);
    EXPECT_EQ(grey.quad.id, quad);
    EXPECT_EQ(grey.vertexArray.id, vertexArray);
    // The program is rebuilt: a new name, and the first one given back.
    EXPECT_NE(grey.program.id, 0u);
    EXPECT_NE(grey.program.id, firstProgram);
    EXPECT_TRUE(glIsProgram(grey.program.id));
    EXPECT_FALSE(glIsProgram(firstProgram));
    // The blend was disabled by the first create and the failed one left it so.
    EXPECT_FALSE(grey.renderOpts.blend.enabled);
    pmDraw::deleteGrey(grey);
}

TEST_F(DrawFilterTest, SetAreaBeforeCreateMakesQuadAndCreateThenFails) {
    pmDraw::NoFilter filter;
    pmDraw::setArea(filter, glm::vec2(0.0f), glm::vec2(1.0f));
    EXPECT_NE(filter.quad.id, 0u);
    LogCapture log;
    EXPECT_FALSE(pmDraw::createNoFilter(filter, false));
    EXPECT_EQ(log.countEndingWith("> ___super::initialize() failed."), 1);
    EXPECT_EQ(log.countEndingWith("> NoFilter::initialize() will return(false)"), 1);
    EXPECT_EQ(filter.vertexArray.id, 0u);
    pmDraw::deleteNoFilter(filter);
}

TEST_F(DrawFilterTest, DrawBeforeCreateAndBeforeSetTextureLogAndDrawNothing) {
    pmDraw::Grey grey;
    LogCapture log;
    pmDraw::runGrey(grey);
    EXPECT_EQ(log.countEndingWith("> Call createTextureFilter() first.\n"), 1);
    ASSERT_TRUE(pmDraw::createGrey(grey));
    gl->clearTarget(0.2f, 0.4f, 0.6f, 0.8f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmDraw::runGrey(grey);
    EXPECT_EQ(log.countEndingWith("> context.ud.texData.count() = 0.\n"), 1);
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteGrey(grey);
}

TEST_F(DrawFilterTest, GreyMatchesCpuFormulaAndForcesAlphaOne) {
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 7);
    Texture tex = makeTexture(pixels, w, h, 4);
    pmDraw::Grey grey;
    ASSERT_TRUE(pmDraw::createGrey(grey));
    pmDraw::setAlphaMultiplier(grey, 0.5f);  // Grey has no such uniform: ignored
    pmDraw::setTexture(grey, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runGrey(grey);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Rgba in = texel(pixels, w, 4, x, y);
            const float mono =
                in.r / 255.0f * 0.2125f + in.g / 255.0f * 0.7154f + in.b / 255.0f * 0.0721f;
            const int m = toByte(mono);
            expectNear(pixelAt(out, w, x, y), {m, m, m, 255}, x, y);
        }
    }
    pmDraw::deleteGrey(grey);
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, ScalarFlipIsVerticalOnlyAndVectorFlipMirrorsHorizontally) {
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 3);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, w, h, 4);
    pmDraw::NoFilter copy;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, false));

    pmDraw::setTexture(copy, tex, 1.0f);
    EXPECT_EQ(copy.ud.vec2s["uFlipTexCoord"], glm::vec2(0.0f, 1.0f));
    pmDraw::runNoFilter(copy);
    std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            expectNear(pixelAt(out, w, x, y), texel(pixels, w, 4, x, h - 1 - y), x, y, 0);
        }
    }

    pmDraw::setTexture(copy, tex, glm::vec2(1.0f, 0.0f));
    pmDraw::runNoFilter(copy);
    out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            expectNear(pixelAt(out, w, x, y), texel(pixels, w, 4, w - 1 - x, y), x, y, 0);
        }
    }
    pmDraw::deleteNoFilter(copy);
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, SetTextureStoresTextureFlipAndPixelStep) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 8, 4);
    Texture tex = makeTexture(pixels, 4, 8, 4);
    pmDraw::NoFilter copy;
    pmDraw::setTexture(copy, tex, glm::vec2(0.25f, 0.75f));
    EXPECT_EQ(copy.ud.textures["uTexture"].id, tex.id);
    EXPECT_EQ(copy.ud.vec2s["uFlipTexCoord"], glm::vec2(0.25f, 0.75f));
    EXPECT_EQ(copy.ud.vec2s["uPixelStep"], glm::vec2(0.25f, 0.125f));
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, FrameBufferStandsForItsFirstColourTexture) {
    pmGL::FrameBuffer fb;
    pmGL::createFrameBuffer(fb, 8, 4, pmGL::TextureOpts(), 1, false, false);
    pmDraw::NoFilter copy;
    pmDraw::setTexture(copy, fb, 0.0f);
    EXPECT_EQ(copy.ud.textures["uTexture"].id, fb.colorTex[0].id);
    EXPECT_EQ(copy.ud.vec2s["uFlipTexCoord"], glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(copy.ud.vec2s["uPixelStep"], glm::vec2(0.125f, 0.25f));
    pmGL::deleteFrameBuffer(fb);
}

TEST_F(DrawFilterTest, ZeroSizedTextureGivesInfinitePixelStepWithoutReport) {
    pmDraw::NoFilter copy;
    Texture empty;
    LogCapture log;
    pmDraw::setTexture(copy, empty, 0.0f);
    EXPECT_TRUE(std::isinf(copy.ud.vec2s["uPixelStep"].x));
    EXPECT_TRUE(std::isinf(copy.ud.vec2s["uPixelStep"].y));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST_F(DrawFilterTest, ClampedAreaCoversWholeWidthWithUnclampedTextureRange) {
    gl->resizeTarget(8, 8);
    const int tw = 4, th = 4;
    std::vector<uint8_t> pixels = makeTestPixels(tw, th, 4, 11);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, tw, th, 4);
    pmDraw::NoFilter copy;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, false));
    pmDraw::setArea(copy, glm::vec2(-0.5f, 0.0f), glm::vec2(1.5f, 1.0f));
    pmDraw::setTexture(copy, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runNoFilter(copy);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            // The quad spans the target while its texture runs from -0.5 to 1.5.
            const float u = -0.5f + 2.0f * (x + 0.5f) / 8.0f;
            const float v = (y + 0.5f) / 8.0f;
            const int tx = std::min(std::max(static_cast<int>(std::floor(u * tw)), 0), tw - 1);
            const int ty = static_cast<int>(std::floor(v * th));
            expectNear(pixelAt(out, 8, x, y), texel(pixels, tw, 4, tx, ty), x, y, 0);
        }
    }
    pmDraw::deleteNoFilter(copy);
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, CentredAreaShowsTheSamePartOfTheTexture) {
    gl->resizeTarget(8, 8);
    std::vector<uint8_t> pixels = makeTestPixels(8, 8, 4, 5);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, 8, 8, 4);
    pmDraw::NoFilter copy;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, false));
    pmDraw::setArea(copy, glm::vec2(0.25f, 0.25f), glm::vec2(0.75f, 0.75f));
    pmDraw::setTexture(copy, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runNoFilter(copy);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool inside = x >= 2 && x < 6 && y >= 2 && y < 6;
            const Rgba expected = inside ? texel(pixels, 8, 4, x, y) : Rgba{0, 0, 0, 0};
            expectNear(pixelAt(out, 8, x, y), expected, x, y, 0);
        }
    }
    pmDraw::deleteNoFilter(copy);
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, SetAreaUpdatesTheExistingQuad) {
    pmDraw::NoFilter copy;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, false));
    const unsigned quad = copy.quad.id;
    pmDraw::setArea(copy, glm::vec2(0.1f), glm::vec2(0.9f));
    EXPECT_EQ(copy.quad.id, quad);
    EXPECT_EQ(copy.quad.count, 4u);
    pmDraw::deleteNoFilter(copy);
}

TEST_F(DrawFilterTest, NoFilterAlphaMultiplierHalvesAlphaAndBlendsOverTarget) {
    const int w = 8, h = 8;
    gl->resizeTarget(w, h);
    const Rgba dst{40, 80, 160, 200};
    gl->clearTarget(dst.r / 255.0f, dst.g / 255.0f, dst.b / 255.0f, dst.a / 255.0f);
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 9);
    Texture tex = makeTexture(pixels, w, h, 4);
    pmDraw::NoFilter copy;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, false));
    pmDraw::setAlphaMultiplier(copy, 0.5f);
    pmDraw::setTexture(copy, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runNoFilter(copy);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Rgba s = texel(pixels, w, 4, x, y);
            const float a = s.a / 255.0f * 0.5f;
            auto mix = [&](int src, int d) {
                return toByte(src / 255.0f * a + d / 255.0f * (1 - a));
            };
            const Rgba expected{mix(s.r, dst.r), mix(s.g, dst.g), mix(s.b, dst.b),
                                toByte(a + dst.a / 255.0f * (1 - a))};
            expectNear(pixelAt(out, w, x, y), expected, x, y, 1);
        }
    }
    pmDraw::deleteNoFilter(copy);
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, PlainTextureOnExternalNoFilterLogsTargetAndStillDraws) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    Texture tex = makeTexture(pixels, 4, 4, 4);
    pmDraw::NoFilter external;
    ASSERT_TRUE(pmDraw::createNoFilter(external, true));
    EXPECT_TRUE(external.useExternalTexture);
    LogCapture log;
    pmDraw::setTexture(external, tex, 0.0f);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u) << log.dump();
    EXPECT_NE(lines[0].text.find("> tex.opts.target == GL_TEXTURE_EXTERNAL_OES"),
              std::string::npos);
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_EQ(lines[1].text.substr(lines[1].text.size() - 3), "> \n");
    EXPECT_EQ(external.ud.textures["uTexture"].id, tex.id);
    log.clear();
    pmDraw::runNoFilter(external);
    EXPECT_EQ(log.count("first"), 0);
    EXPECT_EQ(log.count("texData"), 0);
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    EXPECT_EQ(static_cast<unsigned>(current), external.program.id);
    pmDraw::deleteNoFilter(external);
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, PlainNoFilterAcceptsPlainTextureSilently) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    Texture tex = makeTexture(pixels, 4, 4, 4);
    pmDraw::NoFilter copy;
    LogCapture log;
    pmDraw::setTexture(copy, tex, 0.0f);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, FinalizeKeepsUniformValuesForTheNextCreate) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    Texture tex = makeTexture(pixels, 4, 4, 4);
    pmDraw::Grey grey;
    ASSERT_TRUE(pmDraw::createGrey(grey));
    pmDraw::setTexture(grey, tex, 1.0f);
    pmDraw::deleteGrey(grey);
    EXPECT_TRUE(grey.ud.textures.count("uTexture"));
    EXPECT_EQ(grey.ud.vec2s["uFlipTexCoord"], glm::vec2(0.0f, 1.0f));
    pmGL::deleteTexture(tex);
}

TEST_F(DrawFilterTest, DestructionFinalizesAndRepeatsTheLogLines) {
    LogCapture log;
    unsigned program = 0, quad = 0, vertexArray = 0;
    {
        pmDraw::Grey grey;
        ASSERT_TRUE(pmDraw::createGrey(grey));
        program = grey.program.id;
        quad = grey.quad.id;
        vertexArray = grey.vertexArray.id;
        log.clear();
    }
    EXPECT_FALSE(glIsProgram(program));
    EXPECT_FALSE(glIsBuffer(quad));
    EXPECT_FALSE(glIsVertexArray(vertexArray));
    EXPECT_EQ(log.countEndingWith("> TextureFilter::finalize()"), 1);
    // TextureFilter's destructor finalizes the base, then BaseFilter's does again.
    EXPECT_EQ(log.countEndingWith("> BaseFilter::finalize()"), 2);
}

TEST_F(DrawFilterTest, ShimsForwardVirtually) {
    struct CountingFilter : public pmDraw::TextureFilter {
        int draws = 0;
        void draw() override { ++draws; }
    } filter;
    pmDraw::runTextureFilter(filter);
    EXPECT_EQ(filter.draws, 1);
}

}  // namespace
