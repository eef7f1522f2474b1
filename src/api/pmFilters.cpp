// FilterCommon, BufferInfo and the helpers shared by the filter objects.
#include "pmFilters.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace pmFilters {

void BufferInfo::SetBufferColorType(__ColorType type) {
    switch (type) {
        case COLOR_TYPE_RGB:
        case COLOR_TYPE_YUV:
        case COLOR_TYPE_YUV444P:
            colorType = type;
            channel = 3;
            break;
        case COLOR_TYPE_RGBA:
        case COLOR_TYPE_YUVA:
        case COLOR_TYPE_YUVA_PLANAR:
            colorType = type;
            channel = 4;
            break;
        default:
            colorType = COLOR_TYPE_RGBA;
            channel = 4;
            break;
    }
}

void FilterCommon::Initialize() {
    PM_LOGI("FilterCommon::Initialize()");
    const bool plainBuilt = pmDraw::createNoFilter(compositing, false);
    const bool nativeBuilt = pmDraw::createNoFilter(nativeCompositing, true);
    isInit = plainBuilt && nativeBuilt;
    if (isInit) {
        PM_LOGE("Compositing and NativeCompositing is created");
    } else {
        PM_LOGE("Fail to Create Compositing Filter!");
    }
    PM_LOGI("FilterCommon::Initialize(void) FINISHED.");
}

namespace {

bool isBuilt(const pmDraw::TextureFilter& filter) {
    return filter.program.id != 0 || filter.quad.id != 0 || filter.vertexArray.id != 0;
}

}  // namespace

void FilterCommon::Terminate() {
    pmGL::deleteFrameBuffer(inputBuffer);
    if (isBuilt(compositing)) pmDraw::deleteNoFilter(compositing);
    pmGL::deleteSurfaceTexture(surfaceTexture, eglInfo);
    if (isBuilt(nativeCompositing)) pmDraw::deleteNoFilter(nativeCompositing);
}

void FilterCommon::Draw(int, int) {}

void FilterCommon::SetInputBuffer(unsigned char* buf) {
    if (!isInit) {
        PM_LOGE("It is not initialized.");
        return;
    }
    const int width = inputInfo.size.x;
    const int height = inputInfo.size.y;
    const int channel = inputInfo.channel;
    if (buf == nullptr) {
        PM_LOGE("FilterCommon::SetInputBuffer() - buf is null.");
        return;
    }
    if (width < 1 || height < 1 || channel < 1) {
        PM_LOGE("FilterCommon::SetInputBuffer() - check values: width, height, channel");
        return;
    }
    const pmUtil::ImageData<unsigned char> image(width, height, channel, buf);
    const bool sameShape = pmGL::isExist(inputBuffer) && inputBuffer.width == width &&
                           inputBuffer.height == height && !inputBuffer.colorTex.empty() &&
                           pmGL::isEqualFormat(inputBuffer.colorTex[0], image);
    if (sameShape && inputMipmapsDeferred) {
        pmGL::updateTextureBaseLevel(inputBuffer.colorTex[0], image);
        inputMipmapsStale = true;
        return;
    }
    inputMipmapsStale = false;
    if (sameShape) {
        pmGL::updateFrameBuffer(inputBuffer, image, 0);
        return;
    }
    pmGL::TextureOpts opts;
    opts.mipmap = true;
    pmGL::createFrameBuffer(inputBuffer, image, opts, 1, false, false, 1);
}

void FilterCommon::InputChanged() {
    inputMipmapsStale = true;
    if (!inputMipmapsDeferred) EnsureInputMipmaps();
}

void FilterCommon::EnsureInputMipmaps() {
    if (!inputMipmapsStale) return;
    pmGL::generateMipmap(inputBuffer);
    inputMipmapsStale = false;
}

void FilterCommon::SetInputBufferYUV444(unsigned char*, unsigned char*, unsigned char*) {}

bool isOversizedPicture(int width, int height) {
    return width > 0 && height > 0 && static_cast<long long>(width) * height > INT_MAX / 4;
}

bool FilterCommon::SetInputBufferInfo(__ColorType type, int width, int height) {
    if (!isInit) {
        // Not a refused size: the input call that follows says the same.
        PM_LOGE("It is not initialized.");
        return true;
    }
    PM_LOGE("SetInputBufferInfo width[%d], height[%d]", width, height);
    if (width > 0 && height > 0 && !isOversizedPicture(width, height)) {
        inputInfo.SetBufferColorType(type);
        inputInfo.SetBufferSize(glm::ivec2(glm::vec2(width, height)));
        return true;
    }
    PM_LOGE("Buffer's input size is wrong !");
    return false;
}

bool FilterCommon::SetOutputBufferInfo(__ColorType type, int width, int height) {
    if (!isInit) {
        PM_LOGE("It is not initialized.");
        return true;
    }
    PM_LOGE("SetOutputBufferInfo width[%d], height[%d]", width, height);
    if (width <= 0 || height <= 0) {
        // Reported and stored all the same: nothing can be drawn or read
        // into a picture of no pixels.
        PM_LOGE("Buffer's output size is wrong !");
    } else if (isOversizedPicture(width, height)) {
        // Refused: the stored size would be read back into a caller's buffer
        // that cannot be as large as it claims.
        PM_LOGE("Buffer's output size is wrong !");
        return false;
    }
    outputInfo.SetBufferColorType(type);
    outputInfo.SetBufferSize(glm::ivec2(glm::vec2(width, height)));
    return true;
}

void FilterCommon::SetOutputBuffer(unsigned char*) {}

void FilterCommon::SetArea(const glm::vec2&, const glm::vec2&, const glm::vec2&, const glm::vec2&) {
}

void FilterCommon::SetFlip(glm::vec2 flipValue) {
    if (!isInit) {
        PM_LOGE("It is not initialized.");
        return;
    }
    PM_LOGE("Set flip [%f %f]", flipValue.x, flipValue.y);
    flip = flipValue;
}

void FilterCommon::SetInputBufferSize(glm::vec2 bufferSize) {
    if (!isInit) {
        PM_LOGE("It is not initialized.");
        return;
    }
    inputInfo.SetBufferSize(glm::ivec2(bufferSize));
}

pmGL::Texture& FilterCommon::InputTexture() {
    static pmGL::Texture none;
    if (inputBuffer.colorTex.empty()) {
        none = pmGL::Texture();
        return none;
    }
    return inputBuffer.colorTex[0];
}

// A value that is not a number has no place in the range: it is refused with
// the range's log line and the current value stays.
float clampBlurIntensity(float value, float current) {
    const float minimum = 1.0f;
    const float maximum = 50.0f;
    if (!(value >= minimum && value <= maximum)) {
        PM_LOGI("Intensity value is not valid. Blur intensity range : %f ~ %f", minimum, maximum);
    }
    if (std::isnan(value)) return current;
    return std::min(std::max(value, minimum), maximum);
}

float clampBlurDimming(float value, float current) {
    if (!(value >= 0.0f && value <= 1.0f)) {
        PM_LOGE("Intensity value is not valid. Dimming intensity range : 0.0f ~ 1.0f");
    }
    if (std::isnan(value)) return current;
    return std::min(std::max(value, 0.0f), 1.0f);
}

bool isValidMixColor(const glm::vec4& rgba) {
    if (glm::any(glm::isnan(rgba))) {
        PM_LOGE("Mix color is not valid: it stays as it was.");
        return false;
    }
    return true;
}

int fixKernelSize(int size) {
    int fixed = 0;
    if (size < MIN_KERNEL_REQUEST || size > MAX_KERNEL_REQUEST) {
        // Far sizes would overflow the rounding below, or make a kernel that
        // is black (below 7) or a shader beyond what GL can compile.
        fixed = size < MIN_KERNEL_REQUEST ? MIN_KERNEL_SIZE : MAX_KERNEL_SIZE;
        PM_LOGE("blur kernel size %d is out of range %d ~ %d.", size, MIN_KERNEL_SIZE,
                MAX_KERNEL_SIZE);
    } else {
        const int steps = static_cast<int>(static_cast<float>(size - 7) * 0.25f + 0.5f);
        fixed = 4 * steps + 7;
    }
    PM_LOGE("blur kernel size = %d", fixed);
    return fixed;
}

float convertToInternalScaleFactor(float intensity, int kernelSize, glm::ivec2 a, glm::ivec2 b) {
    const int largestB = std::max(b.x, b.y);
    if (largestB > 0) {
        intensity *= static_cast<float>(std::max(a.x, a.y)) / static_cast<float>(largestB);
    }
    return static_cast<float>(kernelSize) / 35.0f / intensity;
}

}  // namespace pmFilters
