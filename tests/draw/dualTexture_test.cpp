// DualTextureFilter: creation and release, the two inputs and their failures,
// and a two-input draw compared with the same formula on the CPU.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
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

// Screen blend of the two inputs on all four channels.
const char* const screenShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture1;
uniform sampler2D uTexture2;
out vec4 fragColor;
void main() {
    vec4 src = texture(uTexture1, vTexCoord);
    vec4 dst = texture(uTexture2, vTexCoord);
    fragColor = (src + dst) - (src * dst);
}
)";

const char* const brokenShader = R"(#version 300 es
precision highp float;
out vec4 fragColor;
void main() { fragColor = undefinedName; }
)";

Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmUtil::ImageData<unsigned char> image(width, height, 4, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

float channel(const std::vector<uint8_t>& pixels, int width, int x, int y, int c) {
    return pixels[(static_cast<size_t>(y) * width + x) * 4 + c] / 255.0f;
}

int toByte(float v) {
    return static_cast<int>(std::lround(std::min(std::max(v, 0.0f), 1.0f) * 255.0f));
}

class DualTextureFilterTest : public GLTest {};

TEST_F(DualTextureFilterTest, CreateBuildsProgramQuadAndVertexArrayAndDeleteReleasesThem) {
    pmDraw::DualTextureFilter filter;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createDualTextureFilter(filter, screenShader));
    EXPECT_NE(filter.program.id, 0u);
    EXPECT_NE(filter.quad.id, 0u);
    EXPECT_NE(filter.vertexArray.id, 0u);
    EXPECT_EQ(log.countEndingWith("> createDualTextureFilter()"), 1);
    EXPECT_EQ(log.countEndingWith("> BaseFilter::initialize() end."), 1);
    EXPECT_EQ(log.countEndingWith("> createDualTextureFilter() will return true"), 1);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front().text.rfind("pmDrawFilter: createDualTextureFilter(", 0), 0u)
        << lines.front().text;
    EXPECT_EQ(lines.front().priority, 6);

    log.clear();
    const unsigned program = filter.program.id;
    pmDraw::deleteDualTextureFilter(filter);
    EXPECT_EQ(log.countEndingWith("> deleteDualTextureFilter()"), 1);
    EXPECT_EQ(log.countEndingWith("> BaseFilter::finalize()"), 1);
    EXPECT_EQ(log.countEndingWith("> deleteDualTextureFilter() end."), 1);
    EXPECT_EQ(filter.program.id, 0u);
    EXPECT_EQ(filter.quad.id, 0u);
    EXPECT_EQ(filter.vertexArray.id, 0u);
    EXPECT_FALSE(glIsProgram(program));
}

TEST_F(DualTextureFilterTest, NullSourceLogsTheWordAndThrows) {
    pmDraw::DualTextureFilter filter;
    LogCapture log;
    EXPECT_THROW(pmDraw::createDualTextureFilter(filter, nullptr), std::logic_error);
    EXPECT_EQ(log.countEndingWith("> fragShaderSrc"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("will return true"), 0);
    EXPECT_EQ(filter.program.id, 0u);
    EXPECT_EQ(filter.quad.id, 0u);
}

TEST_F(DualTextureFilterTest, ShaderFailureReturnsFalseAndMakesNoQuad) {
    pmDraw::DualTextureFilter filter;
    LogCapture log;
    EXPECT_FALSE(pmDraw::createDualTextureFilter(filter, brokenShader));
    EXPECT_EQ(log.countEndingWith("> createDualTextureFilter() will return false"), 1);
    EXPECT_EQ(log.count("BaseFilter::initialize()"), 0);
    EXPECT_EQ(filter.program.id, 0u);
    EXPECT_EQ(filter.quad.id, 0u);
    EXPECT_EQ(filter.vertexArray.id, 0u);
}

TEST_F(DualTextureFilterTest, RunBeforeCreateLogsAndDrawsNothing) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    Texture tex = makeTexture(pixels, 4, 4);
    pmDraw::DualTextureFilter filter;
    pmDraw::setTexture(filter, tex, tex, 0.0f);
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    pmDraw::runDualTextureFilter(filter);
    EXPECT_EQ(log.countEndingWith("> Call createDualTextureFilter() first.\n"), 1);
    EXPECT_EQ(gl->readTarget(), before);
    pmGL::deleteTexture(tex);
}

TEST_F(DualTextureFilterTest, OneInputMissingLogsAndDrawsNothing) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    Texture tex = makeTexture(pixels, 4, 4);
    pmDraw::DualTextureFilter filter;
    ASSERT_TRUE(pmDraw::createDualTextureFilter(filter, screenShader));
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;

    pmDraw::runDualTextureFilter(filter);
    pmGL::setUniformData(filter.ud, "uTexture1", tex);
    pmDraw::runDualTextureFilter(filter);
    pmGL::unsetUniformData(filter.ud, "uTexture1");
    pmGL::setUniformData(filter.ud, "uTexture2", tex);
    pmDraw::runDualTextureFilter(filter);
    EXPECT_EQ(log.countEndingWith("> uTexture1 or uTexture2 has 0 count.\n"), 3);
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteDualTextureFilter(filter);
    pmGL::deleteTexture(tex);
}

TEST_F(DualTextureFilterTest, SetTextureFormsStoreBothInputsAndFlipOnly) {
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    Texture a = makeTexture(pixels, 4, 4);
    Texture b = makeTexture(pixels, 4, 4);
    pmDraw::DualTextureFilter filter;
    LogCapture log;

    pmDraw::setTexture(filter, a, b, glm::vec2(1.0f, 0.0f));
    EXPECT_EQ(filter.ud.textures["uTexture1"].id, a.id);
    EXPECT_EQ(filter.ud.textures["uTexture2"].id, b.id);
    EXPECT_EQ(filter.ud.vec2s["uFlipTexCoord"], glm::vec2(1.0f, 0.0f));
    pmDraw::setTexture(filter, b, a, 1.0f);
    EXPECT_EQ(filter.ud.textures["uTexture1"].id, b.id);
    EXPECT_EQ(filter.ud.textures["uTexture2"].id, a.id);
    EXPECT_EQ(filter.ud.vec2s["uFlipTexCoord"], glm::vec2(0.0f, 1.0f));

    pmGL::FrameBuffer fb1, fb2;
    pmGL::createFrameBuffer(fb1, 8, 4, pmGL::TextureOpts(), 1, false, false);
    pmGL::createFrameBuffer(fb2, 2, 6, pmGL::TextureOpts(), 1, false, false);
    pmDraw::setTexture(filter, fb1, fb2, glm::vec2(0.5f, 0.25f));
    EXPECT_EQ(filter.ud.textures["uTexture1"].id, fb1.colorTex[0].id);
    EXPECT_EQ(filter.ud.textures["uTexture2"].id, fb2.colorTex[0].id);
    EXPECT_EQ(filter.ud.vec2s["uFlipTexCoord"], glm::vec2(0.5f, 0.25f));
    pmDraw::setTexture(filter, fb2, fb1, 0.75f);
    EXPECT_EQ(filter.ud.textures["uTexture1"].id, fb2.colorTex[0].id);
    EXPECT_EQ(filter.ud.textures["uTexture2"].id, fb1.colorTex[0].id);
    EXPECT_EQ(filter.ud.vec2s["uFlipTexCoord"], glm::vec2(0.0f, 0.75f));

    // Only the two inputs and the flip: no pixel step, no "uTexture".
    EXPECT_EQ(filter.ud.vec2s.count("uPixelStep"), 0u);
    EXPECT_EQ(filter.ud.textures.count("uTexture"), 0u);
    EXPECT_EQ(filter.ud.textures.size(), 2u);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    pmGL::deleteFrameBuffer(fb1);
    pmGL::deleteFrameBuffer(fb2);
    pmGL::deleteTexture(a);
    pmGL::deleteTexture(b);
}

TEST_F(DualTextureFilterTest, TwoInputsOfDifferentSizesMatchCpuFormula) {
    const int w = 16, h = 16, w2 = 8, h2 = 8;
    std::vector<uint8_t> first = makeTestPixels(w, h, 4, 21);
    std::vector<uint8_t> second = makeTestPixels(w2, h2, 4, 22);
    Texture t1 = makeTexture(first, w, h);
    Texture t2 = makeTexture(second, w2, h2);
    pmDraw::DualTextureFilter filter;
    ASSERT_TRUE(pmDraw::createDualTextureFilter(filter, screenShader));
    pmGL::disableBlend(filter.renderOpts.blend);

    for (const float flip : {0.0f, 1.0f}) {
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::setTexture(filter, t1, t2, flip);
        pmDraw::runDualTextureFilter(filter);
        const std::vector<uint8_t> out = gl->readTarget();
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                // The vertical flip reads row h - 1 - y; the second input is
                // half the size, so two pixels share one of its texels.
                const int sy = flip > 0.5f ? h - 1 - y : y;
                for (int c = 0; c < 4; ++c) {
                    const float s = channel(first, w, x, sy, c);
                    const float d = channel(second, w2, x / 2, sy / 2, c);
                    const int expected = toByte((s + d) - s * d);
                    const int actual = out[(static_cast<size_t>(y) * w + x) * 4 + c];
                    EXPECT_NEAR(actual, expected, 1)
                        << "at " << x << "," << y << " channel " << c << " flip " << flip;
                }
            }
        }
    }
    pmDraw::deleteDualTextureFilter(filter);
    pmGL::deleteTexture(t1);
    pmGL::deleteTexture(t2);
}

TEST_F(DualTextureFilterTest, DestructionReleasesProgramVertexArrayAndQuad) {
    unsigned program = 0, vertexArray = 0, quad = 0;
    {
        pmDraw::DualTextureFilter filter;
        ASSERT_TRUE(pmDraw::createDualTextureFilter(filter, screenShader));
        program = filter.program.id;
        vertexArray = filter.vertexArray.id;
        quad = filter.quad.id;
    }
    EXPECT_FALSE(glIsProgram(program));
    EXPECT_FALSE(glIsVertexArray(vertexArray));
    EXPECT_FALSE(glIsBuffer(quad));
}

}  // namespace
