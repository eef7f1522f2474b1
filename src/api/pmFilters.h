// The filter objects behind the exported functions. FilterCommon keeps the
// object's own copy of the input image in `inputBuffer`; every effect samples
// that and draws into whatever framebuffer the caller has bound.
#ifndef PIXMORA_SRC_API_PMFILTERS_H
#define PIXMORA_SRC_API_PMFILTERS_H

#include <glm/glm.hpp>

#include "pixmora.h"
#include "pmDraw.h"
#include "pmGL.h"

namespace pmFilters {

// One side of a filter, input or output. The default pair of three channels
// with the RGBA code holds only until the first Set-info call.
class BufferInfo {
public:
    ~BufferInfo() = default;

    void SetBuffer(unsigned char* buf) { buffer = buf; }
    void SetBufferSize(glm::ivec2 bufferSize) { size = bufferSize; }
    // Stores the code and derives the channel count from it; unknown codes
    // become four-channel RGBA.
    void SetBufferColorType(__ColorType type);

    glm::ivec2 size = glm::ivec2(1920, 1080);
    int channel = 3;
    __ColorType colorType = COLOR_TYPE_RGBA;
    unsigned char* buffer = nullptr;
};

class FilterCommon {
public:
    FilterCommon() = default;
    virtual ~FilterCommon() = default;

    virtual void Initialize();
    virtual void Terminate();
    virtual void Draw(int width, int height);
    virtual void SetInputBuffer(unsigned char* buf);
    virtual void SetInputBufferYUV444(unsigned char* y, unsigned char* u, unsigned char* v);
    // False when the size is refused: the object keeps its old size, which
    // pixels handed over with the refused one need not have.
    virtual bool SetInputBufferInfo(__ColorType type, int width, int height);
    // False when a size of more pixels than a caller can hold is refused;
    // sizes of no pixels are reported and stored all the same.
    virtual bool SetOutputBufferInfo(__ColorType type, int width, int height);
    virtual void SetOutputBuffer(unsigned char* buf);
    virtual void SetArea(const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
                         const glm::vec2& tex1);
    virtual void SetFlip(glm::vec2 flipValue);
    // Copies a caller's GL texture into inputBuffer; the caller keeps it.
    virtual void SetInputBufferWithTexture(unsigned id, int width, int height, unsigned format,
                                           unsigned type);
    // Copies a native surface into inputBuffer through an external texture.
    virtual void SetNativeBuffer(_tbm_surface* surface);
    // Stores the EGL display native surfaces are imported on; needs no context.
    virtual void SetDisplayInfo(void* display);

    glm::ivec2 GetInputSize() const { return inputInfo.size; }
    glm::ivec2 GetOutputSize() const { return outputInfo.size; }
    __ColorType GetInputColorType() const { return inputInfo.colorType; }
    __ColorType GetOutputColorType() const { return outputInfo.colorType; }
    int GetInputChannel() const { return inputInfo.channel; }
    int GetOutputChannel() const { return outputInfo.channel; }
    bool IsInit() const { return isInit; }
    // The first colour texture of inputBuffer; before the first input, an
    // empty texture that the passes report when they try to draw it.
    pmGL::Texture& InputTexture();
    void SetInputBufferSize(glm::vec2 bufferSize);
    // While deferred, a new picture goes into inputBuffer's base level only
    // and its mipmaps are built by EnsureInputMipmaps, when a pass wants them.
    void DeferInputMipmaps(bool deferred) { inputMipmapsDeferred = deferred; }
    void EnsureInputMipmaps();

    pmGL::EGLInfo eglInfo;
    pmDraw::NoFilter nativeCompositing;
    pmGL::SurfaceTexture surfaceTexture;
    pmGL::FrameBuffer inputBuffer;
    pmDraw::NoFilter compositing;
    BufferInfo inputInfo;
    BufferInfo outputInfo;
    glm::vec2 flip = glm::vec2(0.0f, 1.0f);
    bool isInit = false;
    bool inputMipmapsDeferred = false;
    bool inputMipmapsStale = false;

protected:
    // Builds inputBuffer's mipmaps now, or marks them stale while deferred.
    void InputChanged();
};

class GrayFilter : public FilterCommon {
public:
    GrayFilter() = default;
    ~GrayFilter() override = default;

    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::Grey grey;
};

// The blur strength, 1 to 50, and the dimming, 0 to 1, of both blur objects:
// a value outside its range is logged with the range's words and clamped.
float clampBlurIntensity(float value, float current);
float clampBlurDimming(float value, float current);
// False, with a log line, when a component is not a number.
bool isValidMixColor(const glm::vec4& rgba);
// A positive size whose RGBA bytes would overflow int: no caller can hold
// such a picture, and the size would not even pass through float exactly.
bool isOversizedPicture(int width, int height);

// Snaps a blur kernel size to the nearest size of the form 4n + 7.
// Kernel sizes are 4n + 7 from 7 to 127; requests from 3 to 128 round to the
// nearest, farther ones are held at the ends with a log line.
constexpr int MIN_KERNEL_SIZE = 7;
constexpr int MAX_KERNEL_SIZE = 127;
constexpr int MIN_KERNEL_REQUEST = 3;
constexpr int MAX_KERNEL_REQUEST = 128;
int fixKernelSize(int size);

// The scale factor of the blur's working copy for an intensity: the intensity
// is first rescaled by the ratio of the larger sides of `a` and `b`.
float convertToInternalScaleFactor(float intensity, int kernelSize, glm::ivec2 a, glm::ivec2 b);

}  // namespace pmFilters

#endif
