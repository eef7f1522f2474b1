// The working buffers of the blur passes: RGBA8, linear filtering (the blur's
// offsets rely on bilinear reads), no mipmaps, one wrap mode on all axes.
#ifndef PIXMORA_SRC_DRAW_GAUSSIANBLUR_BUFFERS_H
#define PIXMORA_SRC_DRAW_GAUSSIANBLUR_BUFFERS_H

#include "pmGL.h"

namespace pmDraw {

inline pmGL::TextureOpts blurBufferOptions(int wrap) {
    pmGL::TextureOpts opts;
    opts.wrapS = wrap;
    opts.wrapT = wrap;
    opts.wrapR = wrap;
    return opts;
}

}  // namespace pmDraw

#endif
