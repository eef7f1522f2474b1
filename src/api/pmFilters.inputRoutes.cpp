// The texture and native-surface input routes. Like the pixel route, both end
// with the picture in inputBuffer, unflipped relative to its source.
#include "pmFilters.h"

namespace pmFilters {

namespace {

// The options of the input copy: RGBA8, linear filtering, clamped edges.
pmGL::TextureOpts inputCopyOptions() {
    pmGL::TextureOpts opts;
    opts.mipmap = false;
    return opts;
}

// Copies `source` into inputBuffer's base level with `pass`.
void copyIntoInput(pmGL::FrameBuffer& inputBuffer, pmDraw::NoFilter& pass,
                   const pmGL::Texture& source) {
    const bool bound = pmGL::bindFrameBuffer(inputBuffer);
    pmDraw::setTexture(pass, source, glm::vec2(0.0f, 0.0f));
    pmDraw::runNoFilter(pass);
    if (bound) pmGL::unbindFrameBuffer(inputBuffer);
}

}  // namespace

void FilterCommon::SetInputBufferWithTexture(unsigned id, int width, int height, unsigned format,
                                             unsigned type) {
    if (!isInit) {
        PM_LOGE("It is not initialized.");
        return;
    }
    pmGL::Texture texture;
    texture.opts = inputCopyOptions();
    if (!pmGL::assignTexture(texture, id, width, height, format, type)) return;
    if (inputBuffer.width != texture.width || inputBuffer.height != texture.height) {
        pmGL::createFrameBuffer(inputBuffer, width, height, texture.opts, 1, false, false);
        PM_LOGI("create frame buffer (size = %d x %d, channel = %d)", width, height,
                pmGL::getTextureChannel(format, type));
    }
    copyIntoInput(inputBuffer, compositing, texture);
    // The mipmaps the effects sample.
    InputChanged();
}

void FilterCommon::SetNativeBuffer(_tbm_surface* surface) {
    if (!isInit) {
        PM_LOGE("It is not initialized.");
        return;
    }
    if (!pmGL::createSurfaceTexture(surfaceTexture, eglInfo, surface, inputCopyOptions())) {
        PM_LOGI("Fail createSurfaceTexture ");
        return;
    }
    const pmGL::Texture& imported = surfaceTexture.tex;
    if (inputBuffer.width != imported.width || inputBuffer.height != imported.height) {
        const pmUtil::ImageData<unsigned char> image(imported.width, imported.height, 4, nullptr);
        pmGL::createFrameBuffer(inputBuffer, image, inputCopyOptions(), 1, false, false, 1);
        PM_LOGI("create input buffer: %d x %d x %d", imported.width, imported.height, 4);
    }
    copyIntoInput(inputBuffer, nativeCompositing, imported);
    InputChanged();
}

void FilterCommon::SetDisplayInfo(void* display) {
    pmGL::setEGLInfo(eglInfo, display, nullptr, nullptr, nullptr);
}

}  // namespace pmFilters
