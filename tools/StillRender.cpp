#include "StillRender.h"

#include "FilterObjects.h"
#include "Headless.h"

std::vector<unsigned char> renderEffect(unsigned type, int flipMode,
                                        std::vector<unsigned char>& rgba, int width, int height) {
    HeadlessContext context;
    RenderTarget target(width, height);
    PhotoFilter filter(type);
    pmPhotoFilterSetBuffer(filter.object, rgba.data(), width, height, 4);
    pmPhotoFilterSetFlipMode(filter.object, flipMode);
    pmPhotoFilterDraw(filter.object, width, height);
    return target.read();
}

std::vector<unsigned char> renderBlur(const BlurLook& look, int flipMode,
                                      std::vector<unsigned char>& rgba, int width, int height) {
    checkBlurLook(look);
    // The still blur reads its own result back, so it runs on the library's
    // private context and the tool needs a display only.
    HeadlessDisplay headless;
    pmSetEGLDisplay(headless.display);
    pmEnableInternalGLContext();
    std::vector<unsigned char> out(static_cast<size_t>(width) * height * 4);
    {
        BlurFilter blur(PM_BLUR_PHOTO, look.kernel);
        pmBlurFilterSetBuffer(blur.object, rgba.data(), width, height, 4);
        applyBlurLook(blur.object, look);
        pmBlurFilterSetFlipMode(blur.object, flipMode);
        pmBlurFilterSetOutputBuffer(blur.object, {COLOR_TYPE_RGBA, out.data(), width, height});
    }
    return out;
}
