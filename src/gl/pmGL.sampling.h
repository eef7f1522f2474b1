// Sampling rules shared by every kind of texture the layer creates: which min
// filters need mipmaps, how the mipmap flag turns plain filters into mipmap
// ones and back, and the parameters every creation sets.
#ifndef PIXMORA_SRC_GL_PMGL_SAMPLING_H
#define PIXMORA_SRC_GL_PMGL_SAMPLING_H

#include "pmGL.h"

namespace pmGL {
namespace sampling {

inline bool isMipmapFilter(int filter) {
    return filter == GL_NEAREST_MIPMAP_NEAREST || filter == GL_LINEAR_MIPMAP_NEAREST ||
           filter == GL_NEAREST_MIPMAP_LINEAR || filter == GL_LINEAR_MIPMAP_LINEAR;
}

// The filter that turns mipmaps on. Not the inverse of withoutMipmap: the two
// directions pick different mipmap filters.
inline int withMipmap(int filter) {
    if (filter == GL_LINEAR) return GL_LINEAR_MIPMAP_LINEAR;
    if (filter == GL_NEAREST) return GL_NEAREST_MIPMAP_NEAREST;
    return filter;
}

inline int withoutMipmap(int filter) {
    if (filter == GL_LINEAR_MIPMAP_NEAREST || filter == GL_LINEAR_MIPMAP_LINEAR) return GL_LINEAR;
    if (filter == GL_NEAREST_MIPMAP_NEAREST || filter == GL_NEAREST_MIPMAP_LINEAR) {
        return GL_NEAREST;
    }
    return filter;
}

// Min and mag filter, wraps S and T, on the texture bound to `opts.target`.
inline void applySamplingParameters(const TextureOpts& opts) {
    glTexParameteri(opts.target, GL_TEXTURE_MIN_FILTER, opts.minFilter);
    glTexParameteri(opts.target, GL_TEXTURE_MAG_FILTER, opts.magFilter);
    glTexParameteri(opts.target, GL_TEXTURE_WRAP_S, opts.wrapS);
    glTexParameteri(opts.target, GL_TEXTURE_WRAP_T, opts.wrapT);
}

// A mipmap filter samples nothing without the chain, whatever `mipmap` says.
inline void generateMipmapIfSampled(const TextureOpts& opts) {
    if (isMipmapFilter(opts.minFilter)) glGenerateMipmap(opts.target);
}

}  // namespace sampling
}  // namespace pmGL

#endif
