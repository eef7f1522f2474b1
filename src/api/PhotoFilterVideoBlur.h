// The blur of a stream of frames. Frames arrive at the input rate, Draw is
// called at the display rate; the object captures a new blurred frame only
// when one is due and, between two captures, cross-fades from the previous
// blurred frame to the latest over as many Draws as there are per input
// frame. That number is measured once a second from the actual rates.
#ifndef PIXMORA_SRC_API_PHOTOFILTERVIDEOBLUR_H
#define PIXMORA_SRC_API_PHOTOFILTERVIDEOBLUR_H

#include <glm/glm.hpp>

#include <cstdint>

#include "GaussianBlur.h"
#include "pmFilters.h"

namespace pmFilters {

class PhotoFilterVideoBlur : public FilterCommon {
public:
    // The kernel size is snapped with fixKernelSize.
    explicit PhotoFilterVideoBlur(int kernelSizeWanted);
    ~PhotoFilterVideoBlur() override = default;

    void Initialize() override;
    void Terminate() override;
    // Captures the waiting frame when the cross-fade allows it, then draws the
    // mix of the last two captures into the bound framebuffer. The size
    // arguments are not used.
    void Draw(int width, int height) override;
    // Each input call counts as a new frame, even one the copy refused.
    void SetInputBuffer(unsigned char* buf) override;
    void SetInputBufferWithTexture(unsigned id, int width, int height, unsigned format,
                                   unsigned type) override;
    void SetNativeBuffer(_tbm_surface* surface) override;
    // The part of the target drawn and of the picture sampled.
    void SetArea(const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
                 const glm::vec2& tex1) override;
    // No planar input and no read-back for video.
    void SetInputBufferYUV444(unsigned char* y, unsigned char* u, unsigned char* v) override;
    bool SetOutputBufferInfo(__ColorType type, int width, int height) override;
    void SetOutputBuffer(unsigned char* buf) override;

    // Blur degree 1 to 50, effective at the next capture.
    void SetIntensity(float value);
    // 0 is black, 1 full brightness; effective at the next Draw.
    void SetDimming(float value);
    void SetMixColor(const glm::vec4& rgba);
    void SetDithering(bool enabled);
    void SetInterpolation(bool enabled);
    // PM_BLUR_QUALITY_DEFAULT or PM_BLUR_QUALITY_SMOOTH; any other value is
    // logged and leaves the quality as it was. The frame in inputBuffer is
    // captured again in the new quality at the next Draw.
    void SetQuality(int value);
    // Forgets the captures and restarts the cross-fade and the measurement.
    void Reset();
    // Blurs inputBuffer into the pass's next buffer, at the scale that the
    // intensity gives against the 720 x 576 reference picture.
    void updateVideoCapture();
    // Once a measuring period is over, sets interpolationCount to the Draws
    // per input frame of that period, 1 to 60.
    void updateInterpolationCount();

    pmDraw::VideoGaussianBlur blur;
    bool newFrame = false;
    float intensity = 10.0f;
    float dim = 1.0f;
    int kernelSize;
    int interpolationStep = 0;
    int interpolationCount = 4;
    bool interpolation = true;
    std::uint64_t lastUpdateTime = 0;
    std::uint32_t renderCount = 0;
    std::uint32_t inputCount = 0;
    std::uint64_t updateInterval = 1000;
    std::uint32_t defaultInterpolationCount = 4;
};

}  // namespace pmFilters

#endif
