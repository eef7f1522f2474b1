// Render state records: defaults, blend presets and how each is applied to GL.
#include <gtest/gtest.h>

#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;

namespace {

struct BlendFactors {
    unsigned equationRGB, equationAlpha, srcRGB, dstRGB, srcAlpha, dstAlpha;
};

BlendFactors factorsOf(const BlendOpts& opts) {
    return {opts.equationRGB, opts.equationAlpha, opts.srcRGB,
            opts.dstRGB,      opts.srcAlpha,      opts.dstAlpha};
}

void expectFactors(const BlendOpts& opts, const BlendFactors& expected) {
    const BlendFactors actual = factorsOf(opts);
    EXPECT_EQ(actual.equationRGB, expected.equationRGB);
    EXPECT_EQ(actual.equationAlpha, expected.equationAlpha);
    EXPECT_EQ(actual.srcRGB, expected.srcRGB);
    EXPECT_EQ(actual.dstRGB, expected.dstRGB);
    EXPECT_EQ(actual.srcAlpha, expected.srcAlpha);
    EXPECT_EQ(actual.dstAlpha, expected.dstAlpha);
}

bool isEnabled(GLenum capability) {
    return glIsEnabled(capability) == GL_TRUE;
}

class RenderStateTest : public GLTest {};

TEST_F(RenderStateTest, RenderOptsDefaults) {
    const RenderOpts opts;
    EXPECT_TRUE(opts.blend.enabled);
    expectFactors(opts.blend, {GL_FUNC_ADD, GL_FUNC_ADD, GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                               GL_ONE_MINUS_SRC_ALPHA});
    EXPECT_FALSE(opts.cullFace.enabled);
    EXPECT_EQ(opts.cullFace.cullFace, static_cast<unsigned>(GL_BACK));
    EXPECT_EQ(opts.cullFace.frontFace, static_cast<unsigned>(GL_CCW));
    EXPECT_FALSE(opts.depthTest.enabled);
    EXPECT_FALSE(opts.depthTest.mask);
    EXPECT_EQ(opts.depthTest.func, 0x206u);
    EXPECT_FALSE(opts.stencilTest.enabled);
    EXPECT_EQ(opts.stencilTest.mask, 0xFFu);
    EXPECT_EQ(opts.colorMask, glm::bvec4(true));
}

TEST_F(RenderStateTest, BlendPresetsSetExactlyTheirFactors) {
    BlendOpts opts;
    setBlendAlpha(opts);
    expectFactors(opts, {GL_FUNC_ADD, GL_FUNC_ADD, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                         GL_ONE_MINUS_SRC_ALPHA});
    setBlendAdditive(opts);  // no GL_ONE destination, as settled
    expectFactors(opts, {GL_FUNC_ADD, GL_FUNC_ADD, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA,
                         GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA});
    setBlendScreen(opts);
    expectFactors(opts, {GL_FUNC_ADD, GL_FUNC_ADD, GL_ONE, GL_ONE_MINUS_SRC_COLOR, GL_ONE,
                         GL_ONE_MINUS_SRC_COLOR});
    setBlendMax(opts);
    expectFactors(opts, {GL_FUNC_ADD, GL_MAX, GL_ONE, GL_ZERO, GL_ONE, GL_ONE});
    setBlendNormal(opts);
    expectFactors(opts, {GL_FUNC_ADD, GL_FUNC_ADD, GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                         GL_ONE_MINUS_SRC_ALPHA});
    EXPECT_TRUE(opts.enabled);
}

TEST_F(RenderStateTest, SettersAndSwitches) {
    BlendOpts opts;
    setBlendFunction(opts, GL_ZERO, GL_ONE, GL_DST_COLOR, GL_SRC_COLOR);
    setBlendEquation(opts, GL_FUNC_SUBTRACT, GL_MIN);
    expectFactors(opts, {GL_FUNC_SUBTRACT, GL_MIN, GL_ZERO, GL_ONE, GL_DST_COLOR, GL_SRC_COLOR});
    disableBlend(opts);
    EXPECT_FALSE(opts.enabled);
    enableBlend(opts);
    EXPECT_TRUE(opts.enabled);
}

TEST_F(RenderStateTest, MaxPresetOnADisabledBlendOnlyDisablesGLBlend) {
    BlendOpts opts;
    disableBlend(opts);
    setBlendMax(opts);
    EXPECT_FALSE(opts.enabled);
    glEnable(GL_BLEND);
    glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
    glBlendFuncSeparate(GL_DST_COLOR, GL_SRC_COLOR, GL_DST_ALPHA, GL_SRC_ALPHA);
    useBlendOptions(opts);
    EXPECT_FALSE(isEnabled(GL_BLEND));
    EXPECT_EQ(getInteger(GL_BLEND_EQUATION_RGB), GL_FUNC_SUBTRACT);
    EXPECT_EQ(getInteger(GL_BLEND_EQUATION_ALPHA), GL_FUNC_REVERSE_SUBTRACT);
    EXPECT_EQ(getInteger(GL_BLEND_SRC_RGB), GL_DST_COLOR);
    EXPECT_EQ(getInteger(GL_BLEND_DST_RGB), GL_SRC_COLOR);
    EXPECT_EQ(getInteger(GL_BLEND_SRC_ALPHA), GL_DST_ALPHA);
    EXPECT_EQ(getInteger(GL_BLEND_DST_ALPHA), GL_SRC_ALPHA);
}

TEST_F(RenderStateTest, EnabledBlendAppliesEquationsAndFactors) {
    BlendOpts opts;
    setBlendMax(opts);
    useBlendOptions(opts);
    EXPECT_TRUE(isEnabled(GL_BLEND));
    EXPECT_EQ(getInteger(GL_BLEND_EQUATION_RGB), GL_FUNC_ADD);
    EXPECT_EQ(getInteger(GL_BLEND_EQUATION_ALPHA), GL_MAX);
    EXPECT_EQ(getInteger(GL_BLEND_SRC_RGB), GL_ONE);
    EXPECT_EQ(getInteger(GL_BLEND_DST_RGB), GL_ZERO);
    EXPECT_EQ(getInteger(GL_BLEND_SRC_ALPHA), GL_ONE);
    EXPECT_EQ(getInteger(GL_BLEND_DST_ALPHA), GL_ONE);
    glDisable(GL_BLEND);
}

TEST_F(RenderStateTest, AdditivePresetBlendsAsItsFactorsSay) {
    // Source (1, 0, 0, 0.5) over destination (0, 0, 1, 1): colour
    // 0.5 * src + 0.5 * dst, alpha 0.5 * 0.5 + 0.5 * 1.
    gl->clearTarget(0.f, 0.f, 1.f, 1.f);
    BlendOpts opts;
    setBlendAdditive(opts);
    useBlendOptions(opts);
    Program prog;
    ASSERT_TRUE(createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::COLOR_FRAGMENT_SHADER));
    VertexBuffer vb;
    gltest::createFullQuad(vb);
    VertexArray va;
    createVertexArray(va, vb, prog);
    useProgram(prog);
    UniformData data;
    setUniformData(data, "uColor", glm::vec4(1.f, 0.f, 0.f, 0.5f));
    useUniformData(data, prog);
    drawVertexArray(va, 1);
    glDisable(GL_BLEND);
    glUseProgram(0);
    const std::vector<std::uint8_t> pixels = gl->readTarget();
    EXPECT_NEAR(pixels[0], 128, 1);
    EXPECT_EQ(pixels[1], 0);
    EXPECT_NEAR(pixels[2], 128, 1);
    EXPECT_NEAR(pixels[3], 191, 1);
    deleteVertexArray(va);
    deleteVertexBuffer(vb);
    deleteProgram(prog);
}

TEST_F(RenderStateTest, CullFaceOptions) {
    CullFaceOpts opts;
    opts.enabled = true;
    opts.cullFace = GL_FRONT;
    opts.frontFace = GL_CW;
    useCullFaceOptions(opts);
    EXPECT_TRUE(isEnabled(GL_CULL_FACE));
    EXPECT_EQ(getInteger(GL_CULL_FACE_MODE), GL_FRONT);
    EXPECT_EQ(getInteger(GL_FRONT_FACE), GL_CW);
    opts.enabled = false;
    opts.cullFace = GL_BACK;
    useCullFaceOptions(opts);
    EXPECT_FALSE(isEnabled(GL_CULL_FACE));
    EXPECT_EQ(getInteger(GL_CULL_FACE_MODE), GL_FRONT);
    glFrontFace(GL_CCW);
    glCullFace(GL_BACK);
}

TEST_F(RenderStateTest, DepthTestOptions) {
    DepthTestOpts opts;
    opts.enabled = true;
    opts.mask = true;
    useDepthTestOptions(opts);
    EXPECT_TRUE(isEnabled(GL_DEPTH_TEST));
    GLboolean mask = GL_FALSE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
    EXPECT_EQ(mask, GL_TRUE);
    EXPECT_EQ(getInteger(GL_DEPTH_FUNC), GL_GEQUAL);
    opts.enabled = false;
    opts.mask = false;
    opts.func = GL_NEVER;
    useDepthTestOptions(opts);
    EXPECT_FALSE(isEnabled(GL_DEPTH_TEST));
    glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
    EXPECT_EQ(mask, GL_TRUE);  // disabling touches nothing else
    EXPECT_EQ(getInteger(GL_DEPTH_FUNC), GL_GEQUAL);
    glDepthFunc(GL_LESS);
}

TEST_F(RenderStateTest, StencilOptionsNeverTouchFunctionOrOperations) {
    glStencilFuncSeparate(GL_FRONT, GL_EQUAL, 3, 0x0F);
    glStencilFuncSeparate(GL_BACK, GL_GREATER, 5, 0xF0);
    glStencilOpSeparate(GL_FRONT, GL_INCR, GL_DECR, GL_INVERT);
    glStencilOpSeparate(GL_BACK, GL_REPLACE, GL_INCR_WRAP, GL_DECR_WRAP);
    const GLenum queries[] = {GL_STENCIL_FUNC,
                              GL_STENCIL_REF,
                              GL_STENCIL_VALUE_MASK,
                              GL_STENCIL_FAIL,
                              GL_STENCIL_PASS_DEPTH_FAIL,
                              GL_STENCIL_PASS_DEPTH_PASS,
                              GL_STENCIL_BACK_FUNC,
                              GL_STENCIL_BACK_REF,
                              GL_STENCIL_BACK_VALUE_MASK,
                              GL_STENCIL_BACK_FAIL,
                              GL_STENCIL_BACK_PASS_DEPTH_FAIL,
                              GL_STENCIL_BACK_PASS_DEPTH_PASS};
    std::vector<GLint> before;
    for (GLenum query : queries) before.push_back(getInteger(query));

    StencilTestOpts opts;
    opts.enabled = true;
    opts.mask = 0x3C;
    useStencilTestOptions(opts);
    EXPECT_TRUE(isEnabled(GL_STENCIL_TEST));
    EXPECT_EQ(getInteger(GL_STENCIL_WRITEMASK), 0x3C);
    EXPECT_EQ(getInteger(GL_STENCIL_BACK_WRITEMASK), 0x3C);
    opts.enabled = false;
    opts.mask = 0x01;
    useStencilTestOptions(opts);
    EXPECT_FALSE(isEnabled(GL_STENCIL_TEST));
    EXPECT_EQ(getInteger(GL_STENCIL_WRITEMASK), 0x3C);

    std::vector<GLint> after;
    for (GLenum query : queries) after.push_back(getInteger(query));
    EXPECT_EQ(after, before);
}

TEST_F(RenderStateTest, RenderOptionsApplyAllFourAndTheColourMask) {
    RenderOpts opts;
    opts.cullFace.enabled = true;
    opts.depthTest.enabled = true;
    opts.stencilTest.enabled = true;
    opts.stencilTest.mask = 0x7;
    opts.colorMask = glm::bvec4(true, false, true, false);
    useRenderOptions(opts);
    EXPECT_TRUE(isEnabled(GL_BLEND));
    EXPECT_EQ(getInteger(GL_BLEND_DST_RGB), GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_TRUE(isEnabled(GL_CULL_FACE));
    EXPECT_TRUE(isEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(getInteger(GL_DEPTH_FUNC), GL_GEQUAL);
    EXPECT_TRUE(isEnabled(GL_STENCIL_TEST));
    EXPECT_EQ(getInteger(GL_STENCIL_WRITEMASK), 0x7);
    GLboolean mask[4] = {};
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    EXPECT_EQ(mask[0], GL_TRUE);
    EXPECT_EQ(mask[1], GL_FALSE);
    EXPECT_EQ(mask[2], GL_TRUE);
    EXPECT_EQ(mask[3], GL_FALSE);

    useRenderOptions(RenderOpts());
    EXPECT_TRUE(isEnabled(GL_BLEND));
    EXPECT_FALSE(isEnabled(GL_CULL_FACE));
    EXPECT_FALSE(isEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(isEnabled(GL_STENCIL_TEST));
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    EXPECT_EQ(mask[1], GL_TRUE);
    glDisable(GL_BLEND);
}

}  // namespace
