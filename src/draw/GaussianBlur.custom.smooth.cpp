// CustomGaussianBlur in the smooth quality: the same sigma as the default
// passes at the same scale factor, from a pyramid in half floats and a
// B-spline stretch, so smooth areas show no steps of the working grid.
#include <string>

#include "GaussianBlur.smooth.h"

namespace pmDraw {

namespace {

const char* const outputHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
uniform vec4 uColor;
uniform vec4 uMixColor;
uniform float uAlphaMultiplier;
)";

// The same colour, mix, alpha and premultiplication as the default's final
// pass; the dither acts on the value before it is rounded to the target.
const char* const outputMain = R"(
void main() {
    fragColor = uColor * texture(uTexture, vTexCoord);
    fragColor = mix(fragColor, uMixColor, uMixColor.a);
    fragColor.a *= uAlphaMultiplier;
    fragColor.rgb *= fragColor.a;
    fragColor.rgb = applySmoothDithering(fragColor.rgb);
}
)";

bool buildSmoothStill(CustomGaussianBlur& context) {
    const std::string source = std::string(outputHead) + smoothDithering + outputMain;
    if (!createSmoothGaussianBlur(context.smooth) || !context.smoothOutput.initialize(source)) {
        deleteSmoothStill(context);
        return false;
    }
    context.smooth.kernelSigma = defaultKernelSigma(context.kernelSize);
    // Colour, mix colour and alpha as the default's final pass has them.
    context.smoothOutput.ud = context.dither.ud;
    context.smoothOutput.setArea(context.area[0], context.area[1], context.area[2],
                                 context.area[3]);
    return true;
}

}  // namespace

bool hasSmoothStill(const CustomGaussianBlur& context) {
    return context.smoothOutput.program.id != 0;
}

void deleteSmoothStill(CustomGaussianBlur& context) {
    if (context.smoothOutput.program.id == 0 && context.smooth.reduce.program.id == 0) return;
    deleteSmoothGaussianBlur(context.smooth);
    context.smoothOutput.TextureFilter::finalize();
    pmGL::deleteFrameBuffer(context.smoothResult);
    context.quality = BLUR_QUALITY_DEFAULT;
}

bool setQuality(CustomGaussianBlur& context, int quality) {
    if (quality == BLUR_QUALITY_DEFAULT) {
        context.quality = quality;
        return true;
    }
    if (quality != BLUR_QUALITY_SMOOTH) return false;
    if (!hasSmoothStill(context) && !buildSmoothStill(context)) return false;
    context.quality = quality;
    return true;
}

void drawSmoothStill(CustomGaussianBlur& context, pmGL::Texture& input) {
    const glm::ivec2 inputSize(input.width, input.height);
    if (inputSize.x <= 0 || inputSize.y <= 0) {
        PM_LOGE("input texture is invalid.");
        return;
    }
    const float sigma = defaultQualitySigma(context.scaleFactor, context.smooth.kernelSigma);
    fitSmoothBuffers(context.smooth, inputSize, planSmoothBlur(sigma, inputSize));
    fitWorkingBuffer(context.smooth, context.smoothResult);
    runSmoothGaussianBlur(context.smooth, input, context.flip, context.smoothResult);
    context.smoothOutput.renderOpts = context.dither.renderOpts;
    const pmGL::FrameBuffer& stretched = stretchSmooth(context.smooth, context.smoothResult);
    context.smoothOutput.BaseFilter::setTexture(stretched, glm::vec2(0.0f, 0.0f));
    context.smoothOutput.TextureFilter::draw();
}

}  // namespace pmDraw
