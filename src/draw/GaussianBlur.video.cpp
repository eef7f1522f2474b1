// VideoGaussianBlur: capture and draw are two steps. A capture scales one
// frame down, blurs it and keeps it; a draw mixes the previous capture with
// the latest one into the caller's framebuffer, a single cheap pass.
#include <algorithm>
#include <utility>
#include <vector>

#include "GaussianBlur.buffers.h"
#include "GaussianBlur.h"
#include "pmGLSL.h"

namespace pmDraw {

namespace {

const char* const outputHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture1;
uniform sampler2D uTexture2;
uniform float uWeight;
uniform bool uDithering;
uniform vec4 uColor;
uniform float uAlphaMultiplier;
uniform vec4 uMixColor;
)";

// The mix colour's alpha only steers the mix: alpha is rebuilt as 1 before
// the multiplier. The colour is not premultiplied.
const char* const outputMain = R"(
void main() {
    vec4 srcColor = texture(uTexture1, vTexCoord);
    vec4 dstColor = texture(uTexture2, vTexCoord);
    fragColor = uColor * mix(srcColor, dstColor, uWeight);
    fragColor = vec4(mix(fragColor.rgb, uMixColor.rgb, uMixColor.a), 1.0);
    fragColor.a *= uAlphaMultiplier;
    if (uDithering) {
        fragColor.rgb = applyDithering(fragColor.rgb);
    }
}
)";

bool hasColorTexture(const pmGL::FrameBuffer& fb) {
    return !fb.colorTex.empty() && pmGL::isExist(fb.colorTex[0]);
}

}  // namespace

bool VideoGaussianBlur::initialize(int kernelSize) {
    PM_LOGE("VideoGaussianBlur::initialize(%d)", kernelSize);
    if (!singleCompositing.initialize(false)) {
        PM_LOGE("Failed to singleCompositing.initialize()");
        return false;
    }
    const std::string source =
        std::string(outputHead) + pmGLSL::nrand + pmGLSL::ditheringV1 + outputMain;
    if (!createDualTextureFilter(dualCompositing, source.c_str())) {
        PM_LOGE("Failed to createDualTextureFilter");
        return false;
    }
    // Snapped like fixKernelSize, but not clamped: the size is the caller's.
    const int kernelIndex = static_cast<int>(static_cast<float>(kernelSize - 7) * 0.25f + 0.5f);
    PM_LOGE("kernelIndex: %d", kernelIndex);
    this->kernelSize = 4 * kernelIndex + 7;
    if (!createGaussianBlur(blur, this->kernelSize)) {
        PM_LOGE("Failed to createGaussianBlur");
        return false;
    }
    PM_LOGE("call pmGL functions.");
    // Scaling overwrites its buffer; the final picture composes over the target.
    pmGL::disableBlend(singleCompositing.renderOpts.blend);
    pmGL::setBlendAlpha(dualCompositing.renderOpts.blend);
    setColor(glm::vec4(1.0f, 1.0f, 1.0f, 1.0f));
    setAlphaMultiplier(1.0f);
    PM_LOGE("VideoGaussianBlur::initialize is almost finished.");
    return true;
}

void VideoGaussianBlur::finalize() {
    PM_LOGE("VideoGaussianBlur::finalize()");
    singleCompositing.TextureFilter::finalize();
    deleteDualTextureFilter(dualCompositing);
    deleteGaussianBlur(blur);
    pmGL::deleteTexture(captureTexture);
    pmGL::deleteFrameBuffer(previousBuffer);
    pmGL::deleteFrameBuffer(latestBuffer);
    pmGL::deleteFrameBuffer(scaledBuffer);
    deleteSmooth();
    PM_LOGE("VideoGaussianBlur::finalize() is Finished.");
}

void VideoGaussianBlur::setVideoCapture(pmGL::Texture& tex, glm::vec2 flip) {
    if (singleCompositing.program.id == 0) {
        PM_LOGE("Call initialize() first.");
        return;
    }
    if (tex.id == 0) {
        PM_LOGE("input texture is invalid.");
        return;
    }
    if (quality == BLUR_QUALITY_SMOOTH) {
        captureSmooth(tex, flip);
        return;
    }
    const glm::ivec2 scaled(glm::vec2(tex.width, tex.height) * scaleFactor + 0.5f);

    // The three buffers always change together, so one of them tells the size.
    const bool fits = previousBuffer.width == scaled.x && previousBuffer.height == scaled.y &&
                      hasColorTexture(previousBuffer);
    if (!fits) {
        // Zero bytes, so that the buffers start black rather than undefined:
        // a draw right after a size change shows black for the old capture.
        const std::size_t byteCount = static_cast<std::size_t>(std::max(scaled.x, 0)) *
                                      static_cast<std::size_t>(std::max(scaled.y, 0)) * 4;
        std::vector<unsigned char> zeros(byteCount, 0);
        const pmUtil::ImageData<unsigned char> image(scaled.x, scaled.y, 4,
                                                     zeros.empty() ? nullptr : zeros.data());
        pmGL::createFrameBuffer(previousBuffer, image, blurBufferOptions(GL_CLAMP_TO_EDGE), 1,
                                false, false, 1);
        pmGL::createFrameBuffer(latestBuffer, image, blurBufferOptions(GL_CLAMP_TO_EDGE), 1, false,
                                false, 1);
        pmGL::createFrameBuffer(scaledBuffer, image, blurBufferOptions(blur.wrap), 1, false, false,
                                1);
        PM_LOGE("create internal buffers: %d x %d x %d x 3.", scaled.x, scaled.y, 4);
    }

    // Scale down without the flip, which the blur applies once.
    const bool scaledBound = pmGL::bindFrameBuffer(scaledBuffer);
    singleCompositing.BaseFilter::setTexture(tex, glm::vec2(0.0f, 0.0f));
    singleCompositing.TextureFilter::draw();
    if (scaledBound) pmGL::unbindFrameBuffer(scaledBuffer);

    // The latest capture becomes the previous one; the buffer of the older
    // capture is overwritten. Only the records move, never GL objects or pixels.
    std::swap(previousBuffer, latestBuffer);

    const bool latestBound = pmGL::bindFrameBuffer(latestBuffer);
    pmDraw::setTexture(blur, scaledBuffer, flip);
    drawGaussianBlur(blur);
    if (latestBound) pmGL::unbindFrameBuffer(latestBuffer);

    pendingCaptures = std::max(pendingCaptures - 1, 0);
}

void VideoGaussianBlur::setVideoCapture(pmGL::FrameBuffer& fb, glm::vec2 flip) {
    if (fb.id == 0 || fb.colorTex.empty()) {
        PM_LOGE("FrameBuffer fb is not exist.");
        return;
    }
    setVideoCapture(fb.colorTex[0], flip);
}

void VideoGaussianBlur::setVideoCapture(const pmUtil::ImageData<unsigned char>& image,
                                        glm::vec2 flip) {
    if (singleCompositing.program.id == 0) {
        PM_LOGE("Call createVideoGaussianBlur() first.");
        return;
    }
    if (image.data == nullptr) {
        PM_LOGE("Check input data. ImageData<uint8_t> image is empty.");
        return;
    }
    // The upload texture is reused while the picture keeps its shape.
    if (pmGL::isExist(captureTexture) && pmGL::isEqualFormat(captureTexture, image) &&
        captureTexture.width == image.width && captureTexture.height == image.height) {
        pmGL::updateTexture(captureTexture, image);
    } else {
        pmGL::TextureOpts opts = blurBufferOptions(GL_CLAMP_TO_EDGE);
        opts.mipmap = true;
        pmGL::createTexture(captureTexture, image, opts);
    }
    setVideoCapture(captureTexture, flip);
}

void VideoGaussianBlur::setVideoCapture(pmGL::Texture& tex, float flip) {
    setVideoCapture(tex, glm::vec2(0.0f, flip));
}

void VideoGaussianBlur::setVideoCapture(pmGL::FrameBuffer& fb, float flip) {
    setVideoCapture(fb, glm::vec2(0.0f, flip));
}

void VideoGaussianBlur::setVideoCapture(const pmUtil::ImageData<unsigned char>& image, float flip) {
    setVideoCapture(image, glm::vec2(0.0f, flip));
}

void VideoGaussianBlur::draw(float weight) {
    if (pendingCaptures == 2) {
        PM_LOGE("Call setVideoCapture() first.");
        return;
    }
    // With a single capture the previous buffer holds nothing worth showing.
    const float w = pendingCaptures > 0 ? 1.0f : std::min(std::max(weight, 0.0f), 1.0f);
    if (quality == BLUR_QUALITY_SMOOTH) {
        drawSmooth(w);
        return;
    }
    pmGL::setUniformData(dualCompositing.ud, "uWeight", w);
    pmGL::setUniformData(dualCompositing.ud, "uDithering", dithering ? 1 : 0);
    pmDraw::setTexture(dualCompositing, previousBuffer, latestBuffer, glm::vec2(0.0f, 0.0f));
    runDualTextureFilter(dualCompositing);
}

void VideoGaussianBlur::reset() {
    pendingCaptures = 2;
}

void VideoGaussianBlur::setScaleFactor(float value) {
    scaleFactor = std::min(std::max(value, 0.0f), 1.0f);
}

void VideoGaussianBlur::setArea(const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
                                const glm::vec2& tex1) {
    dualCompositing.setArea(pos0, pos1, tex0, tex1);
    area[0] = pos0;
    area[1] = pos1;
    area[2] = tex0;
    area[3] = tex1;
    if (smoothOutput.program.id != 0) smoothOutput.setArea(pos0, pos1, tex0, tex1);
}

void VideoGaussianBlur::setColor(const glm::vec4& color) {
    pmGL::setUniformData(dualCompositing.ud, "uColor", color);
    if (smoothOutput.program.id != 0) pmGL::setUniformData(smoothOutput.ud, "uColor", color);
}

void VideoGaussianBlur::setMixColor(const glm::vec4& color) {
    pmGL::setUniformData(dualCompositing.ud, "uMixColor", color);
    if (smoothOutput.program.id != 0) pmGL::setUniformData(smoothOutput.ud, "uMixColor", color);
}

void VideoGaussianBlur::setAlphaMultiplier(float alpha) {
    dualCompositing.setAlphaMultiplier(alpha);
    if (smoothOutput.program.id != 0) smoothOutput.setAlphaMultiplier(alpha);
}

}  // namespace pmDraw
