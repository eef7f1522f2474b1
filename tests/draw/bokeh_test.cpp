// Bokeh filters: the generated sample line as text, creation and its failures,
// the frame-buffer rebuild rules, the refusals, and the blurs' shapes.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "draw/pmDrawFilterEffect.bokeh.h"
#include "pmDrawBokeh.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line)) lines.push_back(line);
    return lines;
}

Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmUtil::ImageData<unsigned char> image(width, height, 4, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

// A texture of the given size with no pixels: enough for the rebuild rules.
Texture makeEmptyTexture(int width, int height) {
    Texture tex;
    pmGL::createTexture(tex, width, height, nullptr, pmGL::TextureOpts());
    return tex;
}

std::vector<uint8_t> solid(int width, int height, uint8_t value) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4, value);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    return pixels;
}

int red(const std::vector<uint8_t>& pixels, int width, int x, int y) {
    return pixels[(static_cast<size_t>(y) * width + x) * 4];
}

// pow(c, 2.2) x 1.8 of an 8-bit value, as the linearising stage stores it.
int contrastByte(int value) {
    const float linear = std::pow(value / 255.0f, 2.2f) * 1.8f;
    return static_cast<int>(std::lround(std::min(linear, 1.0f) * 255.0f));
}

// ---- the generated sample line

TEST(BokehOffsets, UnitRadiusGivesThreePointsAsExactText) {
    const std::string expected =
        "\t\t\tconst int stepCount = 3;\n"
        "\t\t\tconst float gXOffsets[stepCount] = float[](\n"
        "\t\t\t   -1.00000,\n"
        "\t\t\t   0.00000,\n"
        "\t\t\t   1.00000\n"
        "\t\t\t);\n"
        "\t\t\tconst float gYOffsets[stepCount] = float[](\n"
        "\t\t\t   0.00000,\n"
        "\t\t\t   0.00000,\n"
        "\t\t\t   0.00000\n"
        "\t\t\t);\n";
    EXPECT_EQ(pmDraw::GenerateBokehOffsets(0.0f, 1.0f), expected);
}

TEST(BokehOffsets, RotationTurnsTheLine) {
    const std::vector<std::string> up = splitLines(pmDraw::GenerateBokehOffsets(0.7853982f, 1.0f));
    ASSERT_EQ(up.size(), 11u);
    EXPECT_EQ(up[2], "\t\t\t   -0.70711,");
    EXPECT_EQ(up[3], "\t\t\t   0.00000,");
    EXPECT_EQ(up[4], "\t\t\t   0.70711");
    EXPECT_EQ(up[7], "\t\t\t   -0.70711,");
    EXPECT_EQ(up[9], "\t\t\t   0.70711");
    const std::vector<std::string> down =
        splitLines(pmDraw::GenerateBokehOffsets(-0.7853982f, 1.0f));
    ASSERT_EQ(down.size(), 11u);
    EXPECT_EQ(down[2], "\t\t\t   -0.70711,");
    EXPECT_EQ(down[4], "\t\t\t   0.70711");
    EXPECT_EQ(down[7], "\t\t\t   0.70711,");
    EXPECT_EQ(down[9], "\t\t\t   -0.70711");
}

TEST(BokehOffsets, RadiusTenGivesThirtyStepsFromMinusTenToTen) {
    const std::vector<std::string> lines = splitLines(pmDraw::GenerateBokehOffsets(0.0f, 10.0f));
    ASSERT_EQ(lines.size(), 1u + 2u * (1u + 30u + 1u));
    for (const std::string& line : lines) EXPECT_EQ(line.rfind("\t\t\t", 0), 0u) << line;
    EXPECT_EQ(lines[0], "\t\t\tconst int stepCount = 30;");
    EXPECT_EQ(lines[1], "\t\t\tconst float gXOffsets[stepCount] = float[](");
    EXPECT_EQ(lines[2], "\t\t\t   -10.00000,");
    EXPECT_EQ(lines[31], "\t\t\t   10.00000");
    EXPECT_EQ(lines[32], "\t\t\t);");
    EXPECT_EQ(lines[33], "\t\t\tconst float gYOffsets[stepCount] = float[](");
    EXPECT_EQ(lines[64], "\t\t\t);");
    for (int i = 0; i < 30; ++i) {
        const std::string& x = lines[2 + i];
        const std::string& y = lines[34 + i];
        // Equal steps of 20 / 29, five decimals, a comma on all but the last.
        EXPECT_NEAR(std::stod(x.substr(3)), -10.0 + 20.0 * i / 29.0, 2e-5) << x;
        EXPECT_EQ(y.substr(0, 3 + 3 + 7), "\t\t\t   0.00000") << y;
        EXPECT_EQ(x.back() == ',', i != 29) << x;
        EXPECT_EQ(y.back() == ',', i != 29) << y;
        const size_t dot = x.find('.');
        ASSERT_NE(dot, std::string::npos);
        EXPECT_EQ(x.size() - dot - 1 - (i != 29 ? 1 : 0), 5u) << x;
    }
    // Truncation: 3 x 3.9 is 11.7 and gives 11 points.
    EXPECT_NE(pmDraw::GenerateBokehOffsets(0.0f, 3.9f).find("stepCount = 11;"), std::string::npos);
}

TEST(BokehOffsets, RadiusBelowOneThirdGivesEmptyArrays) {
    const std::vector<std::string> lines = splitLines(pmDraw::GenerateBokehOffsets(0.0f, 0.3f));
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "\t\t\tconst int stepCount = 0;");
    EXPECT_EQ(lines[2], "\t\t\t);");
    EXPECT_EQ(lines[4], "\t\t\t);");
}

TEST(BokehOffsets, RadiusBelowTwoThirdsGivesNoNumber) {
    const std::string text = pmDraw::GenerateBokehOffsets(0.0f, 0.5f);
    EXPECT_NE(text.find("stepCount = 1;"), std::string::npos);
    EXPECT_NE(text.find("nan"), std::string::npos) << text;
}

TEST(BokehOffsets, CodeIsHeadOffsetsAndTail) {
    const std::string offsets = pmDraw::GenerateBokehOffsets(0.0f, 2.0f);
    const std::string code = pmDraw::GenerateBokehCode(0.0f, 2.0f);
    EXPECT_EQ(code.rfind("#version 300 es", 0), 0u);
    const size_t at = code.find(offsets);
    ASSERT_NE(at, std::string::npos);
    const std::string head = code.substr(0, at);
    for (const char* name : {"uTexture", "uPixelStep", "vTexCoord", "fragColor"}) {
        EXPECT_NE(head.find(name), std::string::npos) << name;
    }
    const std::string tail = code.substr(at + offsets.size());
    EXPECT_NE(tail.find("Bokeh(sampler2D tex0, vec2 centreUV, vec2 pixelOffset)"),
              std::string::npos);
    EXPECT_NE(tail.find("void main()"), std::string::npos);
    EXPECT_EQ(code, pmDraw::GenerateBokehCode(0.0f, 2.0f));
}

// ---- PentagonBokeh

class PentagonBokehTest : public GLTest {};

TEST_F(PentagonBokehTest, CreateBuildsEveryStage) {
    pmDraw::PentagonBokeh bokeh;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createPentagonBokeh(bokeh, 10.0f));
    for (int k = 0; k < 4; ++k) {
        EXPECT_NE(bokeh.programs[k].id, 0u) << k;
        EXPECT_NE(bokeh.vertexArrays[k].id, 0u) << k;
        EXPECT_EQ(bokeh.buffers[k].id, 0u) << k;
    }
    EXPECT_NE(bokeh.quad.id, 0u);
    EXPECT_NE(bokeh.contrast.program.id, 0u);
    EXPECT_NE(bokeh.merge.program.id, 0u);
    EXPECT_FALSE(bokeh.merge.renderOpts.blend.enabled);
    EXPECT_FALSE(bokeh.contrast.useExternalTexture);
    EXPECT_FLOAT_EQ(bokeh.contrast.ud.floats["uConstFactor"], 1.8f);
    EXPECT_FLOAT_EQ(bokeh.contrast.ud.floats["uPowerFactor"], 2.2f);
    EXPECT_EQ(bokeh.source, nullptr);
    EXPECT_EQ(log.count("failed"), 0) << log.dump();
    pmDraw::deletePentagonBokeh(bokeh);
}

TEST_F(PentagonBokehTest, RadiusBelowOneThirdFailsToCompile) {
    pmDraw::PentagonBokeh bokeh;
    EXPECT_FALSE(pmDraw::createPentagonBokeh(bokeh, 0.3f));
    EXPECT_EQ(bokeh.programs[0].id, 0u);
    // Nothing after the first program was attempted.
    EXPECT_EQ(bokeh.programs[1].id, 0u);
    EXPECT_EQ(bokeh.merge.program.id, 0u);
    EXPECT_EQ(bokeh.quad.id, 0u);
    pmDraw::deletePentagonBokeh(bokeh);
}

TEST_F(PentagonBokehTest, RadiusBelowTwoThirdsFailsToCompile) {
    pmDraw::PentagonBokeh bokeh;
    EXPECT_FALSE(pmDraw::createPentagonBokeh(bokeh, 0.5f));
    EXPECT_EQ(bokeh.programs[0].id, 0u);
    EXPECT_EQ(bokeh.merge.program.id, 0u);
    // Drawing then reports the missing creation.
    LogCapture log;
    pmDraw::drawPentagonBokeh(bokeh);
    EXPECT_EQ(log.countEndingWith("> Call createPentagonBokeh() first."), 1);
}

TEST_F(PentagonBokehTest, DrawRefusesBeforeCreateAndBeforeSetTexture) {
    std::vector<uint8_t> pixels = solid(8, 8, 200);
    Texture tex = makeTexture(pixels, 8, 8);
    pmDraw::PentagonBokeh bokeh;
    pmDraw::setTexture(bokeh, tex, 0.0f);
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    pmDraw::drawPentagonBokeh(bokeh);
    EXPECT_EQ(log.countEndingWith("> Call createPentagonBokeh() first."), 1) << log.dump();
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(log.lines()[0].text.rfind("pmDrawFilterEffect: drawPentagonBokeh(", 0), 0u);
    EXPECT_EQ(gl->readTarget(), before);

    pmDraw::PentagonBokeh fresh;
    ASSERT_TRUE(pmDraw::createPentagonBokeh(fresh, 2.0f));
    log.clear();
    pmDraw::drawPentagonBokeh(fresh);
    EXPECT_EQ(log.countEndingWith("> no input texture."), 1) << log.dump();
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deletePentagonBokeh(fresh);
    pmDraw::deletePentagonBokeh(bokeh);
    pmGL::deleteTexture(tex);
}

TEST_F(PentagonBokehTest, SetTextureStoresSourceAndFlip) {
    Texture tex = makeEmptyTexture(960, 540);
    pmDraw::PentagonBokeh bokeh;
    pmDraw::setTexture(bokeh, tex, 1.0f);
    EXPECT_EQ(bokeh.source, &tex);
    EXPECT_EQ(bokeh.flip, glm::vec2(0.0f, 1.0f));
    pmDraw::setTexture(bokeh, tex, glm::vec2(1.0f, 0.0f));
    EXPECT_EQ(bokeh.flip, glm::vec2(1.0f, 0.0f));
    pmDraw::deletePentagonBokeh(bokeh);
    pmGL::deleteTexture(tex);
}

// A rebuild deletes and makes the colour textures again, under new names.
TEST_F(PentagonBokehTest, OnlyASource960WideKeepsItsFrameBuffers) {
    struct Case {
        int width, height;
        int fbWidth, fbHeight;
        bool kept;
    };
    const Case cases[] = {
        {960, 540, 960, 540, true},
        {480, 270, 960, 540, false},
        {1920, 1080, 960, 540, false},
        {2000, 100, 960, 48, false},
        {1000, 300, static_cast<int>(1000.0f * (960.0f / 1000.0f)),
         static_cast<int>(300.0f * (960.0f / 1000.0f)), false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        Texture tex = makeEmptyTexture(c.width, c.height);
        pmDraw::PentagonBokeh bokeh;
        pmDraw::setTexture(bokeh, tex, 0.0f);
        unsigned ids[4];
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(bokeh.buffers[k].width, c.fbWidth);
            EXPECT_EQ(bokeh.buffers[k].height, c.fbHeight);
            ASSERT_EQ(bokeh.buffers[k].colorTex.size(), 1u);
            EXPECT_EQ(bokeh.buffers[k].colorTex[0].opts.internalFormat, GL_RGBA8);
            EXPECT_EQ(bokeh.buffers[k].colorTex[0].opts.minFilter, GL_LINEAR);
            EXPECT_EQ(bokeh.buffers[k].colorTex[0].opts.wrapS, GL_CLAMP_TO_EDGE);
            ids[k] = bokeh.buffers[k].colorTex[0].id;
        }
        pmDraw::setTexture(bokeh, tex, 0.0f);
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(bokeh.buffers[k].width, c.fbWidth);
            EXPECT_EQ(bokeh.buffers[k].colorTex[0].id == ids[k], c.kept) << k;
        }
        pmDraw::deletePentagonBokeh(bokeh);
        for (int k = 0; k < 4; ++k) EXPECT_EQ(bokeh.buffers[k].id, 0u);
        pmGL::deleteTexture(tex);
    }
}

TEST_F(PentagonBokehTest, UniformPictureComesOutLinearised) {
    // A flat picture stays flat through the line blurs and the minimum; what
    // remains is pow 2.2 times 1.8, with no gamma put back.
    const int value = 128;
    std::vector<uint8_t> pixels = solid(240, 135, static_cast<uint8_t>(value));
    Texture tex = makeTexture(pixels, 240, 135);
    gl->resizeTarget(64, 32);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::PentagonBokeh bokeh;
    ASSERT_TRUE(pmDraw::createPentagonBokeh(bokeh, 3.0f));
    pmDraw::setTexture(bokeh, tex, 0.0f);
    const GLint viewportBefore[4] = {0, 0, 64, 32};
    pmDraw::drawPentagonBokeh(bokeh);
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(viewport[i], viewportBefore[i]);
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(static_cast<GLuint>(bound), gl->fbo);
    // The blend flag of the base is noted and put back.
    EXPECT_TRUE(bokeh.renderOpts.blend.enabled);
    const std::vector<uint8_t> out = gl->readTarget();
    const int expected = contrastByte(value);
    for (size_t i = 0; i < out.size(); i += 4) {
        EXPECT_NEAR(out[i + 0], expected, 2) << i / 4;
        EXPECT_NEAR(out[i + 1], expected, 2) << i / 4;
        EXPECT_NEAR(out[i + 2], expected, 2) << i / 4;
        EXPECT_EQ(out[i + 3], 255) << i / 4;
    }
    pmDraw::deletePentagonBokeh(bokeh);
    pmGL::deleteTexture(tex);
}

TEST_F(PentagonBokehTest, BrightPointSpreadsIntoTheIntersectionOfTwoParallelograms) {
    // A white 3 x 3 block on dark grey, at the working size of 960 x 540 so
    // that one source pixel is one pixel of the frame buffers.
    const int w = 960, h = 540, cx = 480, cy = 270;
    std::vector<uint8_t> pixels = solid(w, h, 51);
    for (int y = cy - 1; y <= cy + 1; ++y) {
        for (int x = cx - 1; x <= cx + 1; ++x) {
            for (int c = 0; c < 3; ++c) pixels[(static_cast<size_t>(y) * w + x) * 4 + c] = 255;
        }
    }
    Texture tex = makeTexture(pixels, w, h);
    gl->resizeTarget(w, h);
    pmDraw::PentagonBokeh bokeh;
    ASSERT_TRUE(pmDraw::createPentagonBokeh(bokeh, 10.0f));
    pmDraw::setTexture(bokeh, tex, 0.0f);
    pmDraw::drawPentagonBokeh(bokeh);
    const std::vector<uint8_t> out = gl->readTarget();
    const int background = contrastByte(51);
    EXPECT_NEAR(red(out, w, 100, 100), background, 2);
    // Inside both: along the horizontal, up and down to about 0.7 radius, and
    // along either diagonal near the centre.
    for (const glm::ivec2 d : {glm::ivec2(0, 0), glm::ivec2(8, 0), glm::ivec2(-8, 0),
                               glm::ivec2(0, 5), glm::ivec2(0, -5), glm::ivec2(3, 3),
                               glm::ivec2(-3, -3), glm::ivec2(3, -3), glm::ivec2(-3, 3)}) {
        EXPECT_GT(red(out, w, cx + d.x, cy + d.y), 150) << d.x << "," << d.y;
    }
    // Outside at least one: farther along the diagonals, too far up, down or
    // sideways.
    for (const glm::ivec2 d :
         {glm::ivec2(7, 7), glm::ivec2(-7, -7), glm::ivec2(7, -7), glm::ivec2(-7, 7),
          glm::ivec2(0, 13), glm::ivec2(0, -13), glm::ivec2(16, 0), glm::ivec2(-16, 0)}) {
        EXPECT_NEAR(red(out, w, cx + d.x, cy + d.y), background, 4) << d.x << "," << d.y;
    }
    pmDraw::deletePentagonBokeh(bokeh);
    pmGL::deleteTexture(tex);
}

TEST_F(PentagonBokehTest, DeleteReleasesEverything) {
    Texture tex = makeEmptyTexture(480, 270);
    pmDraw::PentagonBokeh bokeh;
    ASSERT_TRUE(pmDraw::createPentagonBokeh(bokeh, 2.0f));
    pmDraw::setTexture(bokeh, tex, 0.0f);
    const unsigned program = bokeh.programs[3].id;
    LogCapture log;
    pmDraw::deletePentagonBokeh(bokeh);
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(bokeh.programs[k].id, 0u);
        EXPECT_EQ(bokeh.vertexArrays[k].id, 0u);
        EXPECT_EQ(bokeh.buffers[k].id, 0u);
    }
    EXPECT_EQ(bokeh.contrast.program.id, 0u);
    EXPECT_EQ(bokeh.merge.program.id, 0u);
    EXPECT_EQ(bokeh.quad.id, 0u);
    EXPECT_FALSE(glIsProgram(program));
    EXPECT_EQ(log.countEndingWith("> deleteContrastFilter()"), 1);
    EXPECT_EQ(log.countEndingWith("> deleteDualTextureFilter() end."), 1);
    pmGL::deleteTexture(tex);
}

// ---- CircleBokeh

class CircleBokehTest : public GLTest {};

TEST_F(CircleBokehTest, CreateLinearisesPurelyAndBlendsWithAlpha) {
    pmDraw::CircleBokeh bokeh;
    ASSERT_TRUE(pmDraw::createCircleBokeh(bokeh, 5.0f));
    EXPECT_NE(bokeh.contrast.program.id, 0u);
    EXPECT_NE(bokeh.filter.program.id, 0u);
    EXPECT_FLOAT_EQ(bokeh.contrast.ud.floats["uConstFactor"], 1.0f);
    EXPECT_FLOAT_EQ(bokeh.contrast.ud.floats["uPowerFactor"], 2.2f);
    EXPECT_FLOAT_EQ(bokeh.filter.ud.floats["uRadius"], 5.0f);
    pmGL::BlendOpts alpha;
    pmGL::setBlendAlpha(alpha);
    EXPECT_TRUE(bokeh.filter.renderOpts.blend.enabled);
    EXPECT_EQ(bokeh.filter.renderOpts.blend.srcRGB, alpha.srcRGB);
    EXPECT_EQ(bokeh.filter.renderOpts.blend.dstRGB, alpha.dstRGB);
    EXPECT_EQ(bokeh.buffer.id, 0u);
    pmDraw::deleteCircleBokeh(bokeh);
    EXPECT_EQ(bokeh.contrast.program.id, 0u);
    EXPECT_EQ(bokeh.filter.program.id, 0u);
}

TEST_F(CircleBokehTest, DrawRefusesBeforeCreateAndBeforeSetTexture) {
    pmDraw::CircleBokeh bokeh;
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    pmDraw::drawCircleBokeh(bokeh);
    EXPECT_EQ(log.countEndingWith("> Call createCircleBokeh() first."), 1) << log.dump();
    ASSERT_TRUE(pmDraw::createCircleBokeh(bokeh, 5.0f));
    log.clear();
    pmDraw::drawCircleBokeh(bokeh);
    EXPECT_EQ(log.countEndingWith("> Call setTexture() first."), 1) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteCircleBokeh(bokeh);
}

TEST_F(CircleBokehTest, AnySource960WideOrWiderKeepsItsBuffer) {
    struct Case {
        int width, height;
        int fbWidth, fbHeight;
        bool kept;
    };
    const Case cases[] = {
        {960, 540, 960, 540, true},  {1920, 1080, 1920, 1080, true}, {2000, 100, 2000, 100, true},
        {480, 270, 960, 540, false}, {640, 100, 960, 150, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        Texture tex = makeEmptyTexture(c.width, c.height);
        pmDraw::CircleBokeh bokeh;
        pmDraw::setTexture(bokeh, tex, 1.0f);
        EXPECT_EQ(bokeh.source, &tex);
        EXPECT_EQ(bokeh.flip, glm::vec2(0.0f, 1.0f));
        EXPECT_EQ(bokeh.buffer.width, c.fbWidth);
        EXPECT_EQ(bokeh.buffer.height, c.fbHeight);
        ASSERT_EQ(bokeh.buffer.colorTex.size(), 1u);
        const unsigned id = bokeh.buffer.colorTex[0].id;
        pmDraw::setTexture(bokeh, tex, glm::vec2(0.0f, 0.0f));
        EXPECT_EQ(bokeh.buffer.colorTex[0].id == id, c.kept);
        EXPECT_EQ(bokeh.buffer.width, c.fbWidth);
        pmDraw::deleteCircleBokeh(bokeh);
        EXPECT_EQ(bokeh.buffer.id, 0u);
        pmGL::deleteTexture(tex);
    }
}

TEST_F(CircleBokehTest, CentreStaysSharpAndCornersBlur) {
    // A one-pixel checker of 0.3 and 0.9: one sample at the centre gives the
    // pixel back through pow 2.2 and its inverse; the corners average it.
    const int w = 960, h = 540;
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const uint8_t v = (x + y) % 2 == 0 ? 77 : 230;
            uint8_t* p = &pixels[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = p[1] = p[2] = v;
            p[3] = 255;
        }
    }
    Texture tex = makeTexture(pixels, w, h);
    gl->resizeTarget(w, h);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::CircleBokeh bokeh;
    ASSERT_TRUE(pmDraw::createCircleBokeh(bokeh, 5.0f));
    pmDraw::setTexture(bokeh, tex, 0.0f);
    pmDraw::drawCircleBokeh(bokeh);
    const std::vector<uint8_t> out = gl->readTarget();
    for (const glm::ivec2 p :
         {glm::ivec2(480, 270), glm::ivec2(481, 270), glm::ivec2(470, 260), glm::ivec2(500, 280)}) {
        EXPECT_NEAR(red(out, w, p.x, p.y), red(pixels, w, p.x, p.y), 2) << p.x << "," << p.y;
        EXPECT_EQ(out[(static_cast<size_t>(p.y) * w + p.x) * 4 + 3], 255);
    }
    // The darker pixels of the corners are pulled far up by their bright
    // neighbours, which weigh more.
    for (const glm::ivec2 p :
         {glm::ivec2(0, 0), glm::ivec2(w - 2, 0), glm::ivec2(0, h - 2), glm::ivec2(w - 2, h - 2)}) {
        ASSERT_EQ(red(pixels, w, p.x, p.y), 77);
        EXPECT_GT(red(out, w, p.x, p.y), 150) << p.x << "," << p.y;
    }
    pmDraw::deleteCircleBokeh(bokeh);
    pmGL::deleteTexture(tex);
}

TEST_F(CircleBokehTest, NarrowSourceIsScaledUpAndDrawnWhole) {
    // A flat picture stays flat: only the linearisation and its inverse.
    std::vector<uint8_t> pixels = solid(240, 135, 180);
    Texture tex = makeTexture(pixels, 240, 135);
    gl->resizeTarget(48, 27);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::CircleBokeh bokeh;
    ASSERT_TRUE(pmDraw::createCircleBokeh(bokeh, 2.0f));
    pmDraw::setTexture(bokeh, tex, 0.0f);
    EXPECT_EQ(bokeh.buffer.width, 960);
    EXPECT_EQ(bokeh.buffer.height, 540);
    pmDraw::drawCircleBokeh(bokeh);
    const std::vector<uint8_t> out = gl->readTarget();
    for (size_t i = 0; i < out.size(); i += 4) {
        EXPECT_NEAR(out[i], 180, 2) << i / 4;
        EXPECT_EQ(out[i + 3], 255) << i / 4;
    }
    pmDraw::deleteCircleBokeh(bokeh);
    pmGL::deleteTexture(tex);
}

}  // namespace
