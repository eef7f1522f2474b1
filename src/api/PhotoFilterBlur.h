// The still background blur, type 0 of the blur entry points.
#ifndef PIXMORA_SRC_API_PHOTOFILTERBLUR_H
#define PIXMORA_SRC_API_PHOTOFILTERBLUR_H

#include <vector>

#include "GaussianBlur.h"
#include "pmDrawTexture.h"
#include "pmFilters.h"

namespace pmFilters {

// Blurs one still picture: Draw paints the blur into the bound framebuffer,
// SetOutputBuffer renders into blurBuffer and reads it back into the caller's
// memory. Planar 4:4:4 input is merged on the GPU before the blur.
class PhotoFilterBlur : public FilterCommon {
public:
    explicit PhotoFilterBlur(int kernelSizeWanted);
    ~PhotoFilterBlur() override = default;

    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;
    void SetInputBufferYUV444(unsigned char* y, unsigned char* u, unsigned char* v) override;
    void SetOutputBuffer(unsigned char* buf) override;

    // Blur degree, clamped to 1 to 50; takes effect at the next draw or read-back.
    void SetIntensity(float value);
    // 1 leaves the blur at full brightness, 0 makes it black.
    void SetDimming(float value);
    // Each component clamped to 0 to 1; mixed in by its own alpha.
    void SetMixColor(const glm::vec4& rgba);
    // PM_BLUR_QUALITY_DEFAULT or PM_BLUR_QUALITY_SMOOTH; any other value is
    // logged and leaves the quality as it was.
    void SetQuality(int value);
    void createEachYUVTexture(unsigned char* y, unsigned char* u, unsigned char* v);

    pmDraw::CustomGaussianBlur blur;
    float intensity = 40.0f;
    float dim = 1.0f;
    int kernelSize;
    std::vector<pmGL::Texture> inputTextures;
    pmDraw::TextureRenderer mergeRenderer;
    pmGL::FrameBuffer yuvBuffer;
    pmGL::FrameBuffer blurBuffer;

private:
    // Sets the blur's scale for the sizes it samples from and draws to.
    void applyScaleFactor(glm::ivec2 sourceSize);
    // The default quality samples inputBuffer's mipmaps: build them if stale.
    void prepareInput();
    void blurInto(pmGL::FrameBuffer& target, pmGL::FrameBuffer& source, glm::vec2 flipValue);
};

}  // namespace pmFilters

#endif
