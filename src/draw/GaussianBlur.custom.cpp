// CustomGaussianBlur: scale down, blur at the small size, and stretch back
// through the dithering pass into the caller's framebuffer.
#include <algorithm>
#include <cmath>

#include "GaussianBlur.buffers.h"
#include "GaussianBlur.h"
#include "GaussianBlur.smooth.h"

namespace pmDraw {

namespace {

void createWorkingBuffer(pmGL::FrameBuffer& fb, glm::ivec2 size, int wrap) {
    const pmUtil::ImageData<unsigned char> image(size.x, size.y, 4, nullptr);
    pmGL::createFrameBuffer(fb, image, blurBufferOptions(wrap), 1, false, false, 1);
}

// Draws the input into downBuffer at the scaled size, without blending and
// without the flip, which the blur stage applies once.
pmGL::Texture& scaleDown(CustomGaussianBlur& context, glm::ivec2 scaledSize) {
    pmGL::FrameBuffer& down = context.downBuffer;
    const bool fits = down.width == scaledSize.x && down.height == scaledSize.y &&
                      !down.colorTex.empty() && pmGL::isExist(down.colorTex[0]);
    if (!fits) {
        createWorkingBuffer(down, scaledSize, context.blur.wrap);
        PM_LOGE("create down buffer: %d x %d x %d.\n", scaledSize.x, scaledSize.y, 4);
    }
    const bool bound = pmGL::bindFrameBuffer(down);
    pmDraw::setTexture(context.composite, *context.inputTexture, glm::vec2(0.0f, 0.0f));
    pmGL::disableBlend(context.composite.renderOpts.blend);
    context.composite.TextureFilter::draw();
    pmGL::enableBlend(context.composite.renderOpts.blend);
    if (bound) pmGL::unbindFrameBuffer(down);
    return down.colorTex[0];
}

void blurThroughDither(CustomGaussianBlur& context, pmGL::Texture& source, glm::ivec2 scaledSize) {
    pmGL::FrameBuffer& target = context.blurBuffer;
    if (target.width != scaledSize.x || target.height != scaledSize.y) {
        createWorkingBuffer(target, scaledSize, GL_CLAMP_TO_EDGE);
        PM_LOGE("create blur buffer: %d x %d x %d.\n", scaledSize.x, scaledSize.y, 4);
    }
    const bool bound = pmGL::bindFrameBuffer(target);
    setTexture(context.blur, source, context.flip);
    drawGaussianBlur(context.blur);
    if (bound) pmGL::unbindFrameBuffer(target);
    context.dither.BaseFilter::setTexture(target, glm::vec2(0.0f, 0.0f));
    context.dither.TextureFilter::draw();
}

}  // namespace

int snapCustomKernelSize(int kernelSize) {
    const float k = std::min(std::max(static_cast<float>(kernelSize - 7) * 0.25f, 0.0f), 100.0f);
    return 4 * static_cast<int>(k + 0.5f) + 7;
}

bool createCustomGaussianBlur(CustomGaussianBlur& context, int kernelSize) {
    PM_LOGE("createCustomGaussianBlur()");
    if (!context.composite.initialize(false)) {
        PM_LOGE("context.composite.initialize() failed.");
        return false;
    }
    context.kernelSize = snapCustomKernelSize(kernelSize);
    if (!createGaussianBlur(context.blur, context.kernelSize)) {
        PM_LOGE("createGaussianBlur() failed.");
        return false;
    }
    if (!context.dither.initialize()) {
        PM_LOGE("context.dither.initialize() or createDithering() failed.");
        return false;
    }
    PM_LOGE("createCustomGaussianBlur() end.");
    return true;
}

void deleteCustomGaussianBlur(CustomGaussianBlur& context) {
    PM_LOGE("deleteCustomGaussianBlur()");
    context.composite.TextureFilter::finalize();
    deleteGaussianBlur(context.blur);
    context.dither.RandomDithering::finalize();
    pmGL::deleteFrameBuffer(context.blurBuffer);
    pmGL::deleteFrameBuffer(context.downBuffer);
    deleteSmoothStill(context);
    PM_LOGE("createCustomGaussianBlur() end");
}

void setTexture(CustomGaussianBlur& context, pmGL::Texture& tex, glm::vec2 flip) {
    context.inputTexture = &tex;
    context.flip = glm::clamp(flip, 0.0f, 1.0f);
}

void setTexture(CustomGaussianBlur& context, pmGL::FrameBuffer& fb, glm::vec2 flip) {
    PM_ASSERT(!fb.colorTex.empty());
    if (fb.colorTex.empty()) return;
    setTexture(context, fb.colorTex[0], flip);
}

void setTexture(CustomGaussianBlur& context, pmGL::Texture& tex, float flip) {
    setTexture(context, tex, glm::vec2(0.0f, flip));
}

void setTexture(CustomGaussianBlur& context, pmGL::FrameBuffer& fb, float flip) {
    setTexture(context, fb, glm::vec2(0.0f, flip));
}

void setScaleFactor(CustomGaussianBlur& context, float scaleFactor) {
    if (std::isnan(scaleFactor)) {
        PM_LOGE("Scale factor is not a number: it stays %f.", context.scaleFactor);
        return;
    }
    context.scaleFactor = std::min(std::max(scaleFactor, 0.0f), 1.0f);
}

void setAlphaMultiplier(CustomGaussianBlur& context, float alpha) {
    context.dither.setAlphaMultiplier(alpha);
    if (hasSmoothStill(context)) context.smoothOutput.setAlphaMultiplier(alpha);
}

void setArea(CustomGaussianBlur& context, const glm::vec2& pos0, const glm::vec2& pos1,
             const glm::vec2& tex0, const glm::vec2& tex1) {
    context.dither.setArea(pos0, pos1, tex0, tex1);
    context.area[0] = pos0;
    context.area[1] = pos1;
    context.area[2] = tex0;
    context.area[3] = tex1;
    if (hasSmoothStill(context)) context.smoothOutput.setArea(pos0, pos1, tex0, tex1);
}

void setColor(CustomGaussianBlur& context, const glm::vec4& color) {
    context.dither.setColor(color);
    if (hasSmoothStill(context)) pmGL::setUniformData(context.smoothOutput.ud, "uColor", color);
}

void setMixColor(CustomGaussianBlur& context, const glm::vec4& color) {
    context.dither.setMixColor(color);
    if (hasSmoothStill(context)) pmGL::setUniformData(context.smoothOutput.ud, "uMixColor", color);
}

void drawCustomGaussianBlur(CustomGaussianBlur& context) {
    if (context.composite.program.id == 0) {
        PM_LOGE("Call createCustomGaussianBlur() first.");
        return;
    }
    if (context.inputTexture == nullptr) {
        PM_LOGE("Call setTexture() first.");
        return;
    }
    pmGL::Texture& input = *context.inputTexture;
    if (context.quality == BLUR_QUALITY_SMOOTH) {
        drawSmoothStill(context, input);
        return;
    }
    const glm::ivec2 inputSize(input.width, input.height);
    glm::ivec2 scaledSize(glm::vec2(inputSize) * context.scaleFactor + 0.5f);
    PM_ASSERT(scaledSize.x > 0 && scaledSize.y > 0);
    // A picture smaller than the factor's step would shrink to nothing and
    // draw black: it is blurred at one pixel instead.
    scaledSize = glm::max(scaledSize, glm::ivec2(1));
    pmGL::Texture& source = scaledSize == inputSize ? input : scaleDown(context, scaledSize);
    if (context.dithering) {
        blurThroughDither(context, source, scaledSize);
        return;
    }
    pmGL::deleteFrameBuffer(context.blurBuffer);
    setTexture(context.blur, source, context.flip);
    drawGaussianBlur(context.blur);
}

}  // namespace pmDraw
