// SmoothGaussianBlur: box reductions into a pyramid, then the working
// Gaussian across and down at the pyramid's top. The stretch back to full
// size belongs to the owner's output pass, which also colours and dithers.
#include <cstring>
#include <string>

#include "SmoothGaussianBlur.h"

namespace pmDraw {

namespace {

// Four reads at +-uReach source texels around the output texel: at a reach
// of 0.5 they hit four texel centres (a 2x2 box), at 1.0 each read averages
// a 2x2 block (a 4x4 box). Always the base level: an input's 8-bit mipmaps
// would round every level of the pyramid.
const char* const reduceSource = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
uniform float uReach;
void main() {
    vec2 d = uPixelStep * uReach;
    fragColor = 0.25 * (textureLod(uTexture, vTexCoord + vec2(-d.x, -d.y), 0.0) +
                        textureLod(uTexture, vTexCoord + vec2(d.x, -d.y), 0.0) +
                        textureLod(uTexture, vTexCoord + vec2(-d.x, d.y), 0.0) +
                        textureLod(uTexture, vTexCoord + vec2(d.x, d.y), 0.0));
}
)";

// One direction of the working Gaussian: a centre read and symmetric
// bilinear pairs, the weights and offsets in uniforms since they follow the
// sigma. The number of pairs is fixed in each program, so that the loop
// unrolls: a loop bound by a uniform costs a software renderer several times
// the reads themselves. Alpha is 1, as in the default quality's blur.
const char* const blurHead = R"(#version 300 es
precision highp float;
)";

const char* const blurBody = R"(
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uDirection;
uniform float uCentreWeight;
uniform vec4 uWeights0;
uniform vec4 uWeights1;
uniform vec4 uOffsets0;
uniform vec4 uOffsets1;
void main() {
    vec4 sum = uCentreWeight * textureLod(uTexture, vTexCoord, 0.0);
    for (int i = 0; i < PAIRS; ++i) {
        float w = i < 4 ? uWeights0[i] : uWeights1[i - 4];
        vec2 d = (i < 4 ? uOffsets0[i] : uOffsets1[i - 4]) * uDirection;
        sum += w * (textureLod(uTexture, vTexCoord + d, 0.0) +
                    textureLod(uTexture, vTexCoord - d, 0.0));
    }
    fragColor = vec4(sum.rgb, 1.0);
}
)";

// The B-spline of the working picture at the centres of the stretched one.
const char* const stretchHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
)";

const char* const stretchMain = R"(
void main() {
    fragColor = bsplineTexture(uTexture, vTexCoord, uPixelStep);
}
)";

bool hasColorTexture(const pmGL::FrameBuffer& fb) {
    return !fb.colorTex.empty() && pmGL::isExist(fb.colorTex[0]);
}

bool fits(const pmGL::FrameBuffer& fb, glm::ivec2 size) {
    return fb.width == size.x && fb.height == size.y && hasColorTexture(fb);
}

// The halvings of each reduction pass: by 4 while two remain (four bilinear
// reads, each the mean of a 2x2 block), a last odd halving by 2. Reducing by
// 4 from the full size writes a sixteenth of it, so the first pass, the
// dearest, stays cheap.
int reductionSteps(int levels, int steps[kSmoothMaxLevels]) {
    int count = 0;
    int remaining = levels;
    while (remaining > 0) {
        const int halvings = remaining >= 2 ? 2 : 1;
        steps[count++] = halvings;
        remaining -= halvings;
    }
    return count;
}

pmGL::TextureOpts workingOptions(bool halfFloat) {
    pmGL::TextureOpts opts;
    if (halfFloat) {
        opts.type = GL_HALF_FLOAT;
        opts.internalFormat = GL_RGBA16F;
    }
    opts.format = GL_RGBA;
    return opts;
}

void drawInto(pmGL::FrameBuffer& target, TextureFilter& pass) {
    const bool bound = pmGL::bindFrameBuffer(target);
    pass.TextureFilter::draw();
    if (bound) pmGL::unbindFrameBuffer(target);
}

void setKernel(TextureFilter& pass, const SmoothBlurPlan& plan) {
    float weights[8] = {};
    float offsets[8] = {};
    std::memcpy(weights, plan.weights, sizeof(weights));
    std::memcpy(offsets, plan.offsets, sizeof(offsets));
    pmGL::setUniformData(pass.ud, "uCentreWeight", plan.centreWeight);
    pmGL::setUniformData(pass.ud, "uWeights0",
                         glm::vec4(weights[0], weights[1], weights[2], weights[3]));
    pmGL::setUniformData(pass.ud, "uWeights1",
                         glm::vec4(weights[4], weights[5], weights[6], weights[7]));
    pmGL::setUniformData(pass.ud, "uOffsets0",
                         glm::vec4(offsets[0], offsets[1], offsets[2], offsets[3]));
    pmGL::setUniformData(pass.ud, "uOffsets1",
                         glm::vec4(offsets[4], offsets[5], offsets[6], offsets[7]));
}

// The blur program of `pairs` read pairs, built the first time that count is
// wanted; a sigma seen before makes no GL object.
TextureFilter* blurPassFor(SmoothGaussianBlur& smooth, int pairs) {
    if (pairs < 0 || pairs > kSmoothMaxPairs) return nullptr;
    TextureFilter& pass = smooth.blurPasses[pairs];
    if (pass.program.id != 0) return &pass;
    const std::string source =
        std::string(blurHead) + "#define PAIRS " + std::to_string(pairs) + "\n" + blurBody;
    if (!pass.initialize(source)) {
        PM_LOGE("The smooth blur pass of %d pairs failed.", pairs);
        pass.TextureFilter::finalize();
        return nullptr;
    }
    pmGL::disableBlend(pass.renderOpts.blend);
    return &pass;
}

}  // namespace

bool canRenderHalfFloat() {
    GLint count = 0;
    glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i) {
        const char* name =
            reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i)));
        if (name == nullptr) continue;
        if (std::strcmp(name, "GL_EXT_color_buffer_half_float") == 0 ||
            std::strcmp(name, "GL_EXT_color_buffer_float") == 0) {
            return true;
        }
    }
    return false;
}

bool createSmoothGaussianBlur(SmoothGaussianBlur& smooth) {
    PM_LOGE("createSmoothGaussianBlur()");
    const std::string stretchSource = std::string(stretchHead) + bsplineSampling + stretchMain;
    if (!smooth.reduce.initialize(reduceSource) || !smooth.stretch.initialize(stretchSource)) {
        PM_LOGE("createSmoothGaussianBlur() failed.");
        return false;
    }
    pmGL::disableBlend(smooth.reduce.renderOpts.blend);
    pmGL::disableBlend(smooth.stretch.renderOpts.blend);
    const bool halfFloat = canRenderHalfFloat();
    smooth.workingOpts = workingOptions(halfFloat);
    PM_LOGE("smooth working buffers: %s", halfFloat ? "RGBA16F" : "RGBA8");
    return true;
}

void deleteSmoothGaussianBlur(SmoothGaussianBlur& smooth) {
    smooth.reduce.TextureFilter::finalize();
    for (TextureFilter& pass : smooth.blurPasses) pass.TextureFilter::finalize();
    smooth.stretch.TextureFilter::finalize();
    pmGL::deleteFrameBuffer(smooth.stretched);
    for (pmGL::FrameBuffer& level : smooth.pyramid) pmGL::deleteFrameBuffer(level);
    pmGL::deleteFrameBuffer(smooth.across);
    smooth.inputSize = glm::ivec2(0, 0);
}

void fitWorkingBuffer(const SmoothGaussianBlur& smooth, pmGL::FrameBuffer& result) {
    const glm::ivec2 size = smoothWorkingSize(smooth.inputSize, smooth.plan.levels);
    if (fits(result, size)) return;
    pmGL::createFrameBuffer(result, size.x, size.y, smooth.workingOpts, 1, false, false);
}

void fitSmoothBuffers(SmoothGaussianBlur& smooth, glm::ivec2 inputSize,
                      const SmoothBlurPlan& plan) {
    int steps[kSmoothMaxLevels] = {};
    const int count = reductionSteps(plan.levels, steps);
    int levels = 0;
    for (int i = 0; i < kSmoothMaxLevels; ++i) {
        if (i >= count) {
            pmGL::deleteFrameBuffer(smooth.pyramid[i]);
            continue;
        }
        levels += steps[i];
        const glm::ivec2 size = smoothWorkingSize(inputSize, levels);
        if (!fits(smooth.pyramid[i], size)) {
            pmGL::createFrameBuffer(smooth.pyramid[i], size.x, size.y, smooth.workingOpts, 1, false,
                                    false);
        }
    }
    smooth.inputSize = inputSize;
    smooth.plan = plan;
    fitWorkingBuffer(smooth, smooth.across);
    const glm::ivec2 stretchedSize = smoothWorkingSize(inputSize, plan.stretchLevels);
    if (plan.stretchLevels == plan.levels) {
        pmGL::deleteFrameBuffer(smooth.stretched);
    } else if (!fits(smooth.stretched, stretchedSize)) {
        pmGL::createFrameBuffer(smooth.stretched, stretchedSize.x, stretchedSize.y,
                                smooth.workingOpts, 1, false, false);
    }
}

const pmGL::FrameBuffer& stretchSmooth(SmoothGaussianBlur& smooth,
                                       const pmGL::FrameBuffer& working) {
    if (smooth.plan.stretchLevels == smooth.plan.levels) return working;
    smooth.stretch.BaseFilter::setTexture(working, glm::vec2(0.0f, 0.0f));
    drawInto(smooth.stretched, smooth.stretch);
    return smooth.stretched;
}

void runSmoothGaussianBlur(SmoothGaussianBlur& smooth, const pmGL::Texture& input, glm::vec2 flip,
                           pmGL::FrameBuffer& result) {
    int steps[kSmoothMaxLevels] = {};
    const int count = reductionSteps(smooth.plan.levels, steps);
    const pmGL::Texture* source = &input;
    glm::vec2 sourceFlip = flip;
    for (int i = 0; i < count; ++i) {
        smooth.reduce.BaseFilter::setTexture(*source, sourceFlip);
        pmGL::setUniformData(smooth.reduce.ud, "uReach", steps[i] == 1 ? 0.5f : 1.0f);
        drawInto(smooth.pyramid[i], smooth.reduce);
        source = &smooth.pyramid[i].colorTex[0];
        sourceFlip = glm::vec2(0.0f, 0.0f);
    }
    TextureFilter* blurPass = blurPassFor(smooth, smooth.plan.pairCount);
    if (blurPass == nullptr) return;
    setKernel(*blurPass, smooth.plan);
    blurPass->BaseFilter::setTexture(*source, sourceFlip);
    pmGL::setUniformData(blurPass->ud, "uDirection",
                         glm::vec2(1.0f / static_cast<float>(source->width), 0.0f));
    drawInto(smooth.across, *blurPass);
    blurPass->BaseFilter::setTexture(smooth.across, glm::vec2(0.0f, 0.0f));
    pmGL::setUniformData(blurPass->ud, "uDirection",
                         glm::vec2(0.0f, 1.0f / static_cast<float>(smooth.across.height)));
    drawInto(result, *blurPass);
}

}  // namespace pmDraw
