// Native surfaces: TBM surfaces made, mapped and destroyed, and imported as
// external textures through an EGLImage so that filters sample them directly.
#include "pmGL.eglImage.h"
#include "pmGL.sampling.h"

namespace pmGL {

namespace {

// The formats the platform documents; any other is imported all the same.
bool isKnownSurfaceFormat(tbm_format format) {
    return format == TBM_FORMAT_RGBA8888 || format == TBM_FORMAT_ARGB8888 ||
           format == TBM_FORMAT_NV12;
}

// An external texture always reads as RGBA bytes, whatever `opts` says of the
// formats; filters, wraps and the mipmap flag are taken from `opts`.
TextureOpts externalTextureOpts(const TextureOpts& opts) {
    TextureOpts external = opts;
    external.target = GL_TEXTURE_EXTERNAL_OES;
    external.type = GL_UNSIGNED_BYTE;
    external.internalFormat = GL_RGBA8;
    external.format = GL_RGBA;
    if (external.mipmap) external.minFilter = sampling::withMipmap(external.minFilter);
    return external;
}

// An empty size keeps the image and leaves the texture empty, and still counts
// as success.
bool createTextureEGLImageKHR(Texture& tex, const EGLInfo& info, void* image, int width, int height,
                              const TextureOpts& opts) {
    if (width < 1 || height < 1) {
        PM_LOGE("Invalid texture size = (%d, %d).", width, height);
        return true;
    }
    PM_ASSERT(info.display != EGL_NO_DISPLAY);
    PM_ASSERT(image != nullptr);
    deleteTexture(tex);
    tex.width = width;
    tex.height = height;
    tex.opts = externalTextureOpts(opts);
    glGenTextures(1, &tex.id);
    glBindTexture(tex.opts.target, tex.id);
    setUnpackAlignment(width, getTexelSize(tex.opts));
    info.glEGLImageTargetTexture2DOESProc(tex.opts.target, image);
    sampling::applySamplingParameters(tex.opts);
    sampling::generateMipmapIfSampled(tex.opts);
    glBindTexture(tex.opts.target, 0);
    checkError();
    return true;
}

}  // namespace

bool createSurfaceTexture(SurfaceTexture& st, EGLInfo& info, tbm_surface_h surface,
                          const TextureOpts& opts) {
    deleteSurfaceTexture(st, info);
    tbm_surface_info_s surfaceInfo{};
    if (tbm_surface_get_info(surface, &surfaceInfo) != TBM_SURFACE_ERROR_NONE) {
        PM_LOGE(" tbm_surface_get_info is not TBM_SURFACE_ERROR_NONE .\n");
        return false;
    }
    if (!isKnownSurfaceFormat(surfaceInfo.format)) {
        PM_LOGE("current tbm format[%u] set as default.\n", surfaceInfo.format);
    }
    st.image = createEGLImage(st, info, surface);
    if (st.image == nullptr) {
        PM_LOGE(" data.image is null.\n");
        return false;
    }
    return createTextureEGLImageKHR(st.tex, info, st.image, static_cast<int>(surfaceInfo.width),
                                    static_cast<int>(surfaceInfo.height), opts);
}

// ABGR8888 keeps its bytes in R, G, B, A order, as GL_RGBA data expects.
bool createSurfaceTBM(tbm_surface_h& surface, int width, int height) {
    surface = tbm_surface_create(width, height, TBM_FORMAT_ABGR8888);
    return surface != nullptr;
}

void deleteSurfaceTBM(tbm_surface_h& surface) {
    if (surface == nullptr) return;
    tbm_surface_destroy(surface);
    surface = nullptr;
}

// A view of the mapped memory, which it neither owns nor frees. Rows must be
// tightly packed: a padded surface is only reported, not mended.
ImageData<unsigned char> mapSurfaceTBM(tbm_surface_h& surface, bool read, bool write) {
    if (surface == nullptr) return ImageData<unsigned char>();
    const int option = (read ? TBM_SURF_OPTION_READ : 0) | (write ? TBM_SURF_OPTION_WRITE : 0);
    tbm_surface_info_s surfaceInfo{};
    if (tbm_surface_map(surface, option, &surfaceInfo) != TBM_SURFACE_ERROR_NONE) {
        return ImageData<unsigned char>();
    }
    const std::uint32_t surfaceStride = surfaceInfo.width * 4;
    PM_ASSERT(surfaceStride == surfaceInfo.planes[0].stride);
    return ImageData<unsigned char>(static_cast<int>(surfaceInfo.width),
                                    static_cast<int>(surfaceInfo.height), 4,
                                    surfaceInfo.planes[0].ptr, false);
}

void unmapSurfaceTBM(tbm_surface_h& surface) {
    if (surface != nullptr) tbm_surface_unmap(surface);
}

}  // namespace pmGL
