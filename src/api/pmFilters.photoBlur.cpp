// PhotoFilterBlur: the still background blur, drawn or read back.
#include <algorithm>

#include "PhotoFilterBlur.h"

namespace pmFilters {

namespace {

// Plane textures, buffers: 2D, 8-bit, linear, clamped, no mipmaps; the
// channel count of the image decides the format.
pmGL::TextureOpts planeOptions() {
    pmGL::TextureOpts opts;
    opts.mipmap = false;
    return opts;
}

unsigned long long millisecondsSince(unsigned long long start) {
    return pmUtil::now() - start;
}

}  // namespace

PhotoFilterBlur::PhotoFilterBlur(int kernelSizeWanted)
    : kernelSize(fixKernelSize(kernelSizeWanted)) {}

void PhotoFilterBlur::Initialize() {
    FilterCommon::Initialize();
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("Create Renderer for YUV : mergeRenderer, blurRenderer, ColorConverter : << start >>");
    pmDraw::createTripleTextureMergeRenderer(mergeRenderer);
    PM_LOGE("createMergeRenderer");
    pmDraw::createCustomGaussianBlur(blur, kernelSize);
    PM_LOGE("create gaussian Renderer");
    SetDimming(dim);
    SetIntensity(intensity);
    SetMixColor(glm::vec4(0.0f));
}

void PhotoFilterBlur::Terminate() {
    FilterCommon::Terminate();
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    pmDraw::deleteCustomGaussianBlur(blur);
    pmDraw::deleteTextureRenderer(mergeRenderer);
    for (pmGL::Texture& tex : inputTextures) pmGL::deleteTexture(tex);
    pmGL::deleteFrameBuffer(yuvBuffer);
    pmGL::deleteFrameBuffer(blurBuffer);
}

void PhotoFilterBlur::SetIntensity(float value) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("PhotoFilterBlur::SetIntensity() - degree : %f", value);
    intensity = clampBlurIntensity(value, intensity);
}

void PhotoFilterBlur::SetDimming(float value) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("PhotoFilterBlur::SetDimming() - dim : %f", value);
    dim = clampBlurDimming(value, dim);
    pmDraw::setColor(blur, glm::vec4(dim, dim, dim, 1.0f));
}

void PhotoFilterBlur::SetMixColor(const glm::vec4& rgba) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE(
        "PhotoFilterBlur::SetMixColor() - each value should be from 0.0 to 1.0. r: %f, g: %f, "
        "b: %f, a: %f",
        rgba.r, rgba.g, rgba.b, rgba.a);
    if (!isValidMixColor(rgba)) return;
    pmDraw::setMixColor(blur, glm::clamp(rgba, 0.0f, 1.0f));
}

void PhotoFilterBlur::SetQuality(int value) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("PhotoFilterBlur::SetQuality() - quality : %d", value);
    if (value != pmDraw::BLUR_QUALITY_DEFAULT && value != pmDraw::BLUR_QUALITY_SMOOTH) {
        PM_LOGE("Quality value is not valid. Blur quality : 0 or 1");
        return;
    }
    if (!pmDraw::setQuality(blur, value)) {
        PM_LOGE("Smooth quality is not available; the quality stays.");
    }
    // The smooth quality reduces the base level itself in half floats.
    DeferInputMipmaps(blur.quality == pmDraw::BLUR_QUALITY_SMOOTH);
}

void PhotoFilterBlur::applyScaleFactor(glm::ivec2 sourceSize) {
    const float s =
        convertToInternalScaleFactor(intensity, kernelSize, sourceSize, GetOutputSize());
    pmDraw::setScaleFactor(blur, s);
}

void PhotoFilterBlur::blurInto(pmGL::FrameBuffer& target, pmGL::FrameBuffer& source,
                               glm::vec2 flipValue) {
    const bool bound = pmGL::bindFrameBuffer(target);
    applyScaleFactor(GetInputSize());
    pmDraw::setTexture(blur, source, flipValue);
    pmDraw::drawCustomGaussianBlur(blur);
    if (bound) pmGL::unbindFrameBuffer(target);
}

void PhotoFilterBlur::SetInputBufferYUV444(unsigned char* y, unsigned char* u, unsigned char* v) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    if (y == nullptr || u == nullptr || v == nullptr) {
        PM_LOGE("FilterCommon::SetBufferYUV() - buffer is NULL.");
        return;
    }
    createEachYUVTexture(y, u, v);
}

void PhotoFilterBlur::createEachYUVTexture(unsigned char* y, unsigned char* u, unsigned char* v) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    const glm::ivec2 size = GetInputSize();
    PM_LOGE("createEachYUVTexture input Size[%d %d]", size.x, size.y);
    unsigned long long start = pmUtil::now();
    if (!inputTextures.empty()) {
        PM_LOGE("Delete InputTexture List");
        for (pmGL::Texture& tex : inputTextures) pmGL::deleteTexture(tex);
        inputTextures.clear();
        PM_LOGE("Delete InputTexture List Time : %llu", millisecondsSince(start));
    }
    start = pmUtil::now();
    inputTextures.resize(3);
    unsigned char* planes[3] = {y, u, v};
    for (int i = 0; i < 3; ++i) {
        const pmUtil::ImageData<unsigned char> plane(size.x, size.y, 1, planes[i]);
        pmGL::createTexture(inputTextures[i], plane, planeOptions());
    }
    PM_LOGE("Create InputTexture List Time : %llu", millisecondsSince(start));
    start = pmUtil::now();
    if (yuvBuffer.width != size.x || yuvBuffer.height != size.y) {
        PM_LOGE("Delete yuvBuffer");
        pmGL::deleteFrameBuffer(yuvBuffer);
        PM_LOGE("create YUV Frame Buffer[width : %d, height %d] ", size.x, size.y);
        const pmUtil::ImageData<unsigned char> empty(size.x, size.y, 3, nullptr);
        pmGL::createFrameBuffer(yuvBuffer, empty, planeOptions(), 1, false, false, 1);
    }
    PM_LOGE("createFrameBuffer for YUV Buffer : %llu", millisecondsSince(start));
}

void PhotoFilterBlur::SetOutputBuffer(unsigned char* buf) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    const glm::ivec2 outputSize = GetOutputSize();
    prepareInput();
    unsigned long long start = pmUtil::now();
    if (blurBuffer.width != outputSize.x || blurBuffer.height != outputSize.y) {
        PM_LOGE("Delete blurBuffer");
        const pmUtil::ImageData<unsigned char> empty(outputSize.x, outputSize.y, GetOutputChannel(),
                                                     nullptr);
        pmGL::createFrameBuffer(blurBuffer, empty, planeOptions(), 1, false, false, 1);
        PM_LOGE("Delete Blur FrameBuffer Time : %llu", millisecondsSince(start));
    }
    // A buffer of no pixels has no texture: nothing to blur into, and the
    // caller's memory can receive nothing.
    if (outputSize.x < 1 || outputSize.y < 1) {
        PM_LOGE("PhotoFilterBlur::SetOutputBuffer() - no output buffer.");
        return;
    }
    if (GetOutputColorType() != COLOR_TYPE_YUVA) {
        PM_LOGE("RGB Blur");
        blurInto(blurBuffer, inputBuffer, flip);
    } else if (GetInputColorType() == COLOR_TYPE_YUV) {
        PM_LOGE("Set Input Buffer YUV 444P  Start");
        start = pmUtil::now();
        blurInto(blurBuffer, inputBuffer, glm::vec2(0.0f, 0.0f));
        PM_LOGE("Blur Time : %llu", millisecondsSince(start));
    } else {
        PM_LOGE(" Binding yuvBuffer");
        start = pmUtil::now();
        const bool bound = pmGL::bindFrameBuffer(yuvBuffer);
        pmDraw::setMultipleTexture(mergeRenderer, inputTextures, 0.0f);
        pmDraw::runTextureRenderer(mergeRenderer);
        if (bound) pmGL::unbindFrameBuffer(yuvBuffer);
        PM_LOGE("Merge Time : %llu", millisecondsSince(start));
        start = pmUtil::now();
        blurInto(blurBuffer, yuvBuffer, flip);
        PM_LOGE("blur Time : %llu", millisecondsSince(start));
    }
    PM_LOGE("create fboData");
    // Nothing to read into: the blur stays in blurBuffer for Draw to show.
    if (buf == nullptr) {
        PM_LOGE("PhotoFilterBlur::SetOutputBuffer() - buf is null.");
        return;
    }
    start = pmUtil::now();
    pmUtil::ImageData<unsigned char> image(blurBuffer.width, blurBuffer.height, 4, buf);
    pmGL::readFrameBuffer(blurBuffer, image, 0);
    PM_LOGE("read frame buffer Time : %llu", millisecondsSince(start));
}

void PhotoFilterBlur::Draw(int, int) {
    if (!IsInit()) return;
    const __ColorType outputType = GetOutputColorType();
    if (outputType == COLOR_TYPE_YUVA || outputType == COLOR_TYPE_YUV) {
        pmDraw::setTexture(compositing, blurBuffer, glm::vec2(0.0f, 0.0f));
        pmDraw::runNoFilter(compositing);
        return;
    }
    prepareInput();
    applyScaleFactor(glm::ivec2(inputBuffer.width, inputBuffer.height));
    pmDraw::setTexture(blur, inputBuffer, flip);
    pmDraw::drawCustomGaussianBlur(blur);
}

void PhotoFilterBlur::prepareInput() {
    if (blur.quality == pmDraw::BLUR_QUALITY_DEFAULT) EnsureInputMipmaps();
}

}  // namespace pmFilters
