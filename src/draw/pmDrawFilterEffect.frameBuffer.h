// The private frame buffer of the composite stylising effects.
#ifndef PIXMORA_PMDRAWFILTEREFFECT_FRAMEBUFFER_H
#define PIXMORA_PMDRAWFILTEREFFECT_FRAMEBUFFER_H

#include "pmGL.h"

namespace pmDraw {

// One RGBA8 colour texture, linear filters, clamped to edge, no initial
// pixels, no depth or stencil, one sample. What the record held goes first.
inline void rebuildEffectBuffer(pmGL::FrameBuffer& fb, int width, int height) {
    pmGL::deleteFrameBuffer(fb);
    const pmUtil::ImageData<unsigned char> image(width, height, 4, nullptr);
    pmGL::createFrameBuffer(fb, image, pmGL::TextureOpts(), 1, false, false, 1);
}

// A frame buffer's first colour texture; an empty texture for a buffer that
// was never built.
inline const pmGL::Texture& effectBufferTexture(const pmGL::FrameBuffer& fb) {
    static const pmGL::Texture none;
    return fb.colorTex.empty() ? none : fb.colorTex[0];
}

}  // namespace pmDraw

#endif
