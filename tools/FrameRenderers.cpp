#include "FrameRenderers.h"

namespace {

class VideoBlurRenderer : public FrameRenderer {
public:
    explicit VideoBlurRenderer(const VideoBlurOptions& options)
        : blur(PM_BLUR_VIDEO, options.look.kernel) {
        applyBlurLook(blur.object, options.look);
        pmBlurFilterSetInterpolation(blur.object, options.interpolation);
        pmBlurFilterSetDithering(blur.object, options.dithering);
        pmBlurFilterSetFlipMode(blur.object, PM_FLIP_V);
    }
    void submit(Image& frame) override {
        pmBlurFilterSetBuffer(blur.object, frame.data, frame.width, frame.height, 3);
    }
    void draw(int width, int height) override { pmBlurFilterDraw(blur.object, width, height); }

private:
    BlurFilter blur;
};

class EffectRenderer : public FrameRenderer {
public:
    explicit EffectRenderer(unsigned type) : effect(type) {
        pmPhotoFilterSetFlipMode(effect.object, PM_FLIP_V);
    }
    void submit(Image& frame) override {
        pmPhotoFilterSetBuffer(effect.object, frame.data, frame.width, frame.height, 3);
    }
    void draw(int width, int height) override { pmPhotoFilterDraw(effect.object, width, height); }

private:
    PhotoFilter effect;
};

}  // namespace

std::unique_ptr<FrameRenderer> makeVideoBlurRenderer(const VideoBlurOptions& options) {
    // The tool reads the picture back from its own framebuffer, so the blur
    // draws on the tool's context rather than on the library's private one.
    pmDisableInternalGLContext();
    return std::make_unique<VideoBlurRenderer>(options);
}

std::unique_ptr<FrameRenderer> makeEffectRenderer(unsigned effectType) {
    return std::make_unique<EffectRenderer>(effectType);
}
