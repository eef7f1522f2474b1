// Render state of a pass: blending, face culling, depth and stencil tests and
// the colour mask, kept in records and applied before a draw.
#include "pmGL.h"

namespace pmGL {

void setBlendFunction(BlendOpts& opts, unsigned srcRGB, unsigned dstRGB, unsigned srcAlpha,
                      unsigned dstAlpha) {
    opts.srcRGB = srcRGB;
    opts.dstRGB = dstRGB;
    opts.srcAlpha = srcAlpha;
    opts.dstAlpha = dstAlpha;
}

void setBlendEquation(BlendOpts& opts, unsigned rgb, unsigned alpha) {
    opts.equationRGB = rgb;
    opts.equationAlpha = alpha;
}

void enableBlend(BlendOpts& opts) {
    opts.enabled = true;
}

void disableBlend(BlendOpts& opts) {
    opts.enabled = false;
}

// The presets set equations and factors only; `enabled` stays as it is.

// Premultiplied alpha over.
void setBlendNormal(BlendOpts& opts) {
    setBlendEquation(opts, GL_FUNC_ADD, GL_FUNC_ADD);
    setBlendFunction(opts, GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

// Straight alpha over.
void setBlendAlpha(BlendOpts& opts) {
    setBlendEquation(opts, GL_FUNC_ADD, GL_FUNC_ADD);
    setBlendFunction(opts, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

// These factors are settled as they are, without a GL_ONE destination.
void setBlendAdditive(BlendOpts& opts) {
    setBlendEquation(opts, GL_FUNC_ADD, GL_FUNC_ADD);
    setBlendFunction(opts, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_SRC_ALPHA,
                     GL_ONE_MINUS_SRC_ALPHA);
}

void setBlendScreen(BlendOpts& opts) {
    setBlendEquation(opts, GL_FUNC_ADD, GL_FUNC_ADD);
    setBlendFunction(opts, GL_ONE, GL_ONE_MINUS_SRC_COLOR, GL_ONE, GL_ONE_MINUS_SRC_COLOR);
}

// Colour replaces, alpha keeps the larger value.
void setBlendMax(BlendOpts& opts) {
    setBlendEquation(opts, GL_FUNC_ADD, GL_MAX);
    setBlendFunction(opts, GL_ONE, GL_ZERO, GL_ONE, GL_ONE);
}

void useBlendOptions(const BlendOpts& opts) {
    if (!opts.enabled) {
        glDisable(GL_BLEND);
        return;
    }
    glEnable(GL_BLEND);
    glBlendEquationSeparate(opts.equationRGB, opts.equationAlpha);
    glBlendFuncSeparate(opts.srcRGB, opts.dstRGB, opts.srcAlpha, opts.dstAlpha);
}

void useCullFaceOptions(const CullFaceOpts& opts) {
    if (!opts.enabled) {
        glDisable(GL_CULL_FACE);
        return;
    }
    glEnable(GL_CULL_FACE);
    glCullFace(opts.cullFace);
    glFrontFace(opts.frontFace);
}

void useDepthTestOptions(const DepthTestOpts& opts) {
    if (!opts.enabled) {
        glDisable(GL_DEPTH_TEST);
        return;
    }
    glEnable(GL_DEPTH_TEST);
    glDepthMask(opts.mask ? GL_TRUE : GL_FALSE);
    glDepthFunc(opts.func);
}

// Only the write mask: stencil function and operations stay the caller's.
void useStencilTestOptions(const StencilTestOpts& opts) {
    if (!opts.enabled) {
        glDisable(GL_STENCIL_TEST);
        return;
    }
    glEnable(GL_STENCIL_TEST);
    glStencilMask(opts.mask);
}

void useRenderOptions(const RenderOpts& opts) {
    useBlendOptions(opts.blend);
    useCullFaceOptions(opts.cullFace);
    useDepthTestOptions(opts.depthTest);
    useStencilTestOptions(opts.stencilTest);
    setColorMask(opts.colorMask);
}

void setColorMask(const glm::bvec4& mask) {
    glColorMask(mask.r ? GL_TRUE : GL_FALSE, mask.g ? GL_TRUE : GL_FALSE,
                mask.b ? GL_TRUE : GL_FALSE, mask.a ? GL_TRUE : GL_FALSE);
}

}  // namespace pmGL
