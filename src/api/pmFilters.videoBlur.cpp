// PhotoFilterVideoBlur: decouples the input rate of a stream from the rate of
// Draw by capturing at most one blurred frame per Draw and cross-fading
// between the last two captures over the measured Draws per frame.
#include <algorithm>

#include "PhotoFilterVideoBlur.h"

namespace pmFilters {

namespace {

// The blur radius of video is defined against this picture, whatever the
// size of the target.
const glm::ivec2 referenceVideoSize(720, 576);

// The longest cross-fade: a paused stream, counted as one input a second,
// fades in over at most this many Draws.
const float maxInterpolationCount = 60.0f;

}  // namespace

PhotoFilterVideoBlur::PhotoFilterVideoBlur(int kernelSizeWanted)
    : kernelSize(fixKernelSize(kernelSizeWanted)) {}

void PhotoFilterVideoBlur::Initialize() {
    FilterCommon::Initialize();
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    blur.initialize(kernelSize);
    SetDimming(dim);
    SetIntensity(intensity);
    SetMixColor(glm::vec4(0.0f, 0.0f, 0.0f, 0.0f));
    Reset();
    PM_LOGI("PhotoFilterVideoBlur::Initialize() - SUCCESS.");
}

void PhotoFilterVideoBlur::Terminate() {
    FilterCommon::Terminate();
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    blur.finalize();
}

void PhotoFilterVideoBlur::Reset() {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    blur.reset();
    newFrame = false;
    interpolationStep = 0;
    renderCount = 0;
    inputCount = 0;
    interpolationCount = static_cast<int>(defaultInterpolationCount);
    lastUpdateTime = pmUtil::now();
}

void PhotoFilterVideoBlur::SetInputBuffer(unsigned char* buf) {
    FilterCommon::SetInputBuffer(buf);
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    ++inputCount;
    newFrame = true;
    updateInterpolationCount();
}

void PhotoFilterVideoBlur::SetInputBufferWithTexture(unsigned id, int width, int height,
                                                     unsigned format, unsigned type) {
    FilterCommon::SetInputBufferWithTexture(id, width, height, format, type);
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    ++inputCount;
    newFrame = true;
    updateInterpolationCount();
}

// Unlike the other two input routes, this one counts the frame whatever the
// state of the object.
void PhotoFilterVideoBlur::SetNativeBuffer(_tbm_surface* surface) {
    FilterCommon::SetNativeBuffer(surface);
    ++inputCount;
    newFrame = true;
    updateInterpolationCount();
}

void PhotoFilterVideoBlur::SetArea(const glm::vec2& pos0, const glm::vec2& pos1,
                                   const glm::vec2& tex0, const glm::vec2& tex1) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    blur.setArea(pos0, pos1, tex0, tex1);
}

void PhotoFilterVideoBlur::SetInputBufferYUV444(unsigned char*, unsigned char*, unsigned char*) {}

bool PhotoFilterVideoBlur::SetOutputBufferInfo(__ColorType, int, int) {
    return true;
}

void PhotoFilterVideoBlur::SetOutputBuffer(unsigned char*) {}

void PhotoFilterVideoBlur::updateVideoCapture() {
    const glm::ivec2 inputSize(inputBuffer.width, inputBuffer.height);
    const float s =
        convertToInternalScaleFactor(intensity, kernelSize, inputSize, referenceVideoSize);
    blur.setScaleFactor(s);
    // The default quality samples inputBuffer's mipmaps.
    if (blur.quality == pmDraw::BLUR_QUALITY_DEFAULT) EnsureInputMipmaps();
    blur.setVideoCapture(inputBuffer, flip);
}

void PhotoFilterVideoBlur::Draw(int, int) {
    if (!IsInit()) return;
    ++renderCount;
    int k = 0;
    if (interpolation) {
        // A frame waiting during a cross-fade speeds the fade up: one extra
        // step per Draw until the fade is over and the frame can be captured.
        if (newFrame) {
            --interpolationStep;
            if (interpolationStep < 0) {
                updateVideoCapture();
                newFrame = false;
                interpolationStep = interpolationCount;
            }
        }
        if (interpolationStep != 0) {
            --interpolationStep;
            k = interpolationStep;
        }
    } else {
        if (newFrame) {
            updateVideoCapture();
            newFrame = false;
            interpolationStep = 0;
        }
        // Switched off during a cross-fade, the mix stays where it was until
        // the next capture.
        k = interpolationStep;
    }
    const float weight = 1.0f - static_cast<float>(k) / static_cast<float>(interpolationCount);
    blur.draw(weight);
    updateInterpolationCount();
}

void PhotoFilterVideoBlur::updateInterpolationCount() {
    if (pmUtil::now() - lastUpdateTime < updateInterval) return;
    if (inputCount == 0) {
        // A paused stream counts as one frame in the period.
        PM_LOGI("calculateInterpolation() - bufferSets == 0.");
        inputCount = 1;
    }
    float drawsPerFrame = static_cast<float>(renderCount) / static_cast<float>(inputCount) + 0.5f;
    drawsPerFrame = std::min(std::max(drawsPerFrame, 1.0f), maxInterpolationCount);
    interpolationCount = static_cast<int>(drawsPerFrame);
    PM_LOGI("interpolationCount : [%d], renderCountPerSec [%d] / inputCountPerSec [%d]",
            interpolationCount, static_cast<int>(renderCount), static_cast<int>(inputCount));
    renderCount = 0;
    inputCount = 0;
    lastUpdateTime = pmUtil::now();
}

void PhotoFilterVideoBlur::SetIntensity(float value) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("PhotoFilterVideoBlur::SetIntensity() - degree : %f", value);
    intensity = clampBlurIntensity(value, intensity);
}

void PhotoFilterVideoBlur::SetDimming(float value) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("PhotoFilterVideoBlur::SetDimming() - dim : %f", value);
    dim = clampBlurDimming(value, dim);
    blur.setColor(glm::vec4(dim, dim, dim, 1.0f));
}

void PhotoFilterVideoBlur::SetMixColor(const glm::vec4& rgba) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE(
        "PhotoFilterVideoBlur::SetMixColor() - each value should be from 0.0 to 1.0. r : %f, g : "
        "%f, b : %f, a : %f",
        rgba.r, rgba.g, rgba.b, rgba.a);
    if (!isValidMixColor(rgba)) return;
    blur.setMixColor(glm::clamp(rgba, 0.0f, 1.0f));
}

void PhotoFilterVideoBlur::SetDithering(bool enabled) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    blur.dithering = enabled;
    if (enabled) {
        PM_LOGE("Enable dithering, dimming, and partial rendering.");
    } else {
        PM_LOGE("Disable dithering, dimming, and partial rendering.");
    }
}

void PhotoFilterVideoBlur::SetInterpolation(bool enabled) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    interpolation = enabled;
    if (enabled) {
        PM_LOGE("Enable frame interpolation.");
    } else {
        PM_LOGE("Disable frame interpolation.");
    }
}

void PhotoFilterVideoBlur::SetQuality(int value) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("PhotoFilterVideoBlur::SetQuality() - quality : %d", value);
    if (value != pmDraw::BLUR_QUALITY_DEFAULT && value != pmDraw::BLUR_QUALITY_SMOOTH) {
        PM_LOGE("Quality value is not valid. Blur quality : 0 or 1");
        return;
    }
    const int before = blur.quality;
    if (!blur.setQuality(value)) {
        PM_LOGE("Smooth quality is not available; the quality stays.");
        return;
    }
    // The smooth quality reduces the base level itself in half floats.
    DeferInputMipmaps(value == pmDraw::BLUR_QUALITY_SMOOTH);
    // The captures of the old quality are gone: capture the frame at hand
    // again at the next Draw, without waiting for a cross-fade.
    if (value != before && pmGL::isExist(inputBuffer)) {
        newFrame = true;
        interpolationStep = 0;
    }
}

}  // namespace pmFilters
