// The photo effects behind the type codes of pmPhotoFilterCreate. Each owns
// one or a few passes, fixes their parameters, and in Draw feeds them the
// first colour texture of inputBuffer with the flip.
#ifndef PIXMORA_SRC_API_PHOTOEFFECTS_H
#define PIXMORA_SRC_API_PHOTOEFFECTS_H

#include "GaussianBlur.h"
#include "pmDraw.h"
#include "pmDrawComposite.h"
#include "pmFilters.h"

namespace pmFilters {

class Sepia : public FilterCommon {
public:
    ~Sepia() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::Sepia sepia;
};

class BloomPhoto : public FilterCommon {
public:
    ~BloomPhoto() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::Bloom bloom;
    int kernelSize = 35;
};

// A grey picture resampled to 1920 x 1080, blurred at half that size.
class MonotonousBlur : public FilterCommon {
public:
    ~MonotonousBlur() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::Grey grey;
    pmDraw::CustomGaussianBlur blur;
    pmGL::FrameBuffer greyBuffer;
    int kernelSize = 35;
    float blurDivisor = 2.0f;
    float dim = 1.0f;
};

class CartoonPhoto : public FilterCommon {
public:
    ~CartoonPhoto() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::Cartoon cartoon;
};

class DistortionChroma : public FilterCommon {
public:
    ~DistortionChroma() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::DistortionChroma distortion;
    float maxDistort = 0.05f;
};

// The flicker follows one frame counter shared by every object of the class.
class NightVisionPhoto : public FilterCommon {
public:
    ~NightVisionPhoto() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::NightVision nightVision;
    static int frameCount;
};

class CrossStitchingPhoto : public FilterCommon {
public:
    ~CrossStitchingPhoto() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::CrossStitching crossStitching;
    float size = 6.0f;
};

// Draw's width and height set the painting's step: pass the picture's size
// on the output.
class PaintingPhoto : public FilterCommon {
public:
    ~PaintingPhoto() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::KuwaharaFilter kuwahara;
    int radius = 5;
    int width = 1920;
    int height = 1080;
};

class CrossHatchingFilter : public FilterCommon {
public:
    ~CrossHatchingFilter() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::DualTextureFilter hatching;
};

// Bloom, then a scaled blur of it. No type code creates it; whoever creates
// it sets the kernel size, blur divisor and dimming first.
class BloomBlurPhoto : public FilterCommon {
public:
    ~BloomBlurPhoto() override = default;
    void Initialize() override;
    void Terminate() override;
    void Draw(int width, int height) override;

    pmDraw::Bloom bloom;
    pmDraw::CustomGaussianBlur blur;
    pmGL::FrameBuffer bloomBuffer;
    int kernelSize = 35;
    float blurDivisor = 2.0f;
    float dim = 1.0f;
};

}  // namespace pmFilters

#endif
