// VideoGaussianBlur in the smooth quality: each capture is a smooth blur kept
// at the working size in half floats; a draw cross-fades the two captures at
// that size and stretches the mix with a B-spline into a picture a quarter of
// the full size or finer, which the one full-size pass reads once.
#include <algorithm>
#include <string>
#include <utility>

#include "GaussianBlur.h"

namespace pmDraw {

namespace {

const char* const crossFadeSource = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform sampler2D uTexture2;
uniform float uWeight;
void main() {
    fragColor = mix(texture(uTexture, vTexCoord), texture(uTexture2, vTexCoord), uWeight);
}
)";

const char* const outputHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
uniform bool uDithering;
uniform vec4 uColor;
uniform float uAlphaMultiplier;
uniform vec4 uMixColor;
)";

// Colour, mix colour and alpha as in the default's output pass: alpha is
// rebuilt as 1 before the multiplier and the colour is not premultiplied.
const char* const outputMain = R"(
void main() {
    fragColor = uColor * texture(uTexture, vTexCoord);
    fragColor = vec4(mix(fragColor.rgb, uMixColor.rgb, uMixColor.a), 1.0);
    fragColor.a *= uAlphaMultiplier;
    if (uDithering) {
        fragColor.rgb = applySmoothDithering(fragColor.rgb);
    }
}
)";

bool fitsSize(const pmGL::FrameBuffer& fb, glm::ivec2 size) {
    return fb.width == size.x && fb.height == size.y && !fb.colorTex.empty() &&
           pmGL::isExist(fb.colorTex[0]);
}

}  // namespace

bool VideoGaussianBlur::setQuality(int value) {
    if (value != BLUR_QUALITY_DEFAULT && value != BLUR_QUALITY_SMOOTH) return false;
    if (value == BLUR_QUALITY_SMOOTH && smoothOutput.program.id == 0) {
        const std::string source = std::string(outputHead) + smoothDithering + outputMain;
        if (!createSmoothGaussianBlur(smooth) || !smoothCrossFade.initialize(crossFadeSource) ||
            !smoothOutput.initialize(source)) {
            deleteSmooth();
            return false;
        }
        smooth.kernelSigma = defaultKernelSigma(kernelSize);
        pmGL::disableBlend(smoothCrossFade.renderOpts.blend);
        smoothOutput.renderOpts = dualCompositing.renderOpts;
        // Colour, mix colour and alpha as the default's output pass has them.
        smoothOutput.ud = dualCompositing.ud;
        smoothOutput.setArea(area[0], area[1], area[2], area[3]);
    }
    // Captures of the other quality are not shown by this one.
    if (value != quality) pendingCaptures = 2;
    quality = value;
    return true;
}

void VideoGaussianBlur::deleteSmooth() {
    if (smoothOutput.program.id == 0 && smooth.reduce.program.id == 0 &&
        smoothCrossFade.program.id == 0) {
        return;
    }
    deleteSmoothGaussianBlur(smooth);
    smoothCrossFade.TextureFilter::finalize();
    smoothOutput.TextureFilter::finalize();
    pmGL::deleteFrameBuffer(smoothCaptures[0]);
    pmGL::deleteFrameBuffer(smoothCaptures[1]);
    pmGL::deleteFrameBuffer(smoothMixed);
    quality = BLUR_QUALITY_DEFAULT;
}

void VideoGaussianBlur::captureSmooth(const pmGL::Texture& tex, glm::vec2 flip) {
    const glm::ivec2 inputSize(tex.width, tex.height);
    if (inputSize.x <= 0 || inputSize.y <= 0) {
        PM_LOGE("input texture is invalid.");
        return;
    }
    const float sigma = defaultQualitySigma(scaleFactor, smooth.kernelSigma);
    fitSmoothBuffers(smooth, inputSize, planSmoothBlur(sigma, inputSize));
    const glm::ivec2 working = smoothWorkingSize(inputSize, smooth.plan.levels);
    if (!fitsSize(smoothCaptures[0], working)) {
        for (pmGL::FrameBuffer& capture : smoothCaptures) fitWorkingBuffer(smooth, capture);
        fitWorkingBuffer(smooth, smoothMixed);
        PM_LOGE("create smooth capture buffers: %d x %d x 3.", working.x, working.y);
        // The previous capture had another size: show the next one alone.
        pendingCaptures = 2;
    }
    std::swap(smoothCaptures[0], smoothCaptures[1]);
    runSmoothGaussianBlur(smooth, tex, flip, smoothCaptures[1]);
    pendingCaptures = std::max(pendingCaptures - 1, 0);
}

void VideoGaussianBlur::drawSmooth(float weight) {
    pmGL::FrameBuffer* shown = &smoothCaptures[1];
    if (weight < 1.0f) {
        smoothCrossFade.BaseFilter::setTexture(smoothCaptures[0], glm::vec2(0.0f, 0.0f));
        pmGL::setUniformData(smoothCrossFade.ud, "uTexture2", smoothCaptures[1].colorTex[0]);
        pmGL::setUniformData(smoothCrossFade.ud, "uWeight", weight);
        const bool bound = pmGL::bindFrameBuffer(smoothMixed);
        smoothCrossFade.TextureFilter::draw();
        if (bound) pmGL::unbindFrameBuffer(smoothMixed);
        shown = &smoothMixed;
    }
    pmGL::setUniformData(smoothOutput.ud, "uDithering", dithering ? 1 : 0);
    const pmGL::FrameBuffer& stretched = stretchSmooth(smooth, *shown);
    smoothOutput.BaseFilter::setTexture(stretched, glm::vec2(0.0f, 0.0f));
    smoothOutput.TextureFilter::draw();
}

}  // namespace pmDraw
