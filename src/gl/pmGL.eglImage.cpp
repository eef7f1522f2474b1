// EGLImages from TBM surfaces, by the route the build's platform offers.
#include "pmGL.eglImage.h"

#include <cstdint>

namespace pmGL {

namespace {

#ifdef PIXMORA_DEVICE_PLATFORM

// The platform's EGL takes a TBM surface as client buffer of this target.
constexpr EGLenum NATIVE_SURFACE_TARGET = 0x32A1;

void* importSurface(SurfaceTexture&, const EGLInfo& info, tbm_surface_h surface) {
    const EGLint attributes[] = {EGL_IMAGE_PRESERVED_KHR, 1, EGL_NONE};
    return info.eglCreateImageKHRProc(info.display, EGL_NO_CONTEXT, NATIVE_SURFACE_TARGET, surface,
                                      attributes);
}

#else

// Packed 32-bit rows are all desktop can copy; other layouts (NV12) have no
// importer here and give a blank texture of the surface's size.
bool hasPackedRows(const tbm_surface_info_s& surfaceInfo) {
    return surfaceInfo.planes[0].stride == surfaceInfo.width * 4;
}

// An EGLImage needs storage behind it, so an empty surface gets one blank texel.
void createBlankSource(Texture& source, int width, int height, const TextureOpts& opts) {
    createTexture(source, width < 1 ? 1 : width, height < 1 ? 1 : height, nullptr, opts);
}

// The surface's bytes, in RGBA order with tightly packed rows, as an RGBA8
// texture whose first row is the surface's first row.
void copySurfaceToSource(Texture& source, tbm_surface_h surface) {
    TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    tbm_surface_info_s surfaceInfo{};
    tbm_surface_get_info(surface, &surfaceInfo);
    const int width = static_cast<int>(surfaceInfo.width);
    const int height = static_cast<int>(surfaceInfo.height);
    if (width < 1 || height < 1 || !hasPackedRows(surfaceInfo)) {
        createBlankSource(source, width, height, opts);
        return;
    }
    const ImageData<unsigned char> pixels = mapSurfaceTBM(surface, true, false);
    if (pixels.data == nullptr) {
        createBlankSource(source, width, height, opts);
        return;
    }
    createTexture(source, width, height, pixels.data, opts);
    unmapSurfaceTBM(surface);
}

EGLClientBuffer textureBuffer(const Texture& tex) {
    return reinterpret_cast<EGLClientBuffer>(static_cast<std::uintptr_t>(tex.id));
}

// Desktop EGL takes no native surface: the image is made from a copy of its
// pixels in `st.source`, of the current context. A failed image keeps no copy.
void* importSurface(SurfaceTexture& st, const EGLInfo& info, tbm_surface_h surface) {
    copySurfaceToSource(st.source, surface);
    const EGLint attributes[] = {EGL_IMAGE_PRESERVED_KHR, EGL_TRUE, EGL_NONE};
    void* image =
        info.eglCreateImageKHRProc(info.display, eglGetCurrentContext(), EGL_GL_TEXTURE_2D_KHR,
                                   textureBuffer(st.source), attributes);
    if (image == EGL_NO_IMAGE_KHR) deleteTexture(st.source);
    return image;
}

#endif

}  // namespace

// A record without the create proc fails like a refused image.
void* createEGLImage(SurfaceTexture& st, const EGLInfo& info, tbm_surface_h surface) {
    if (surface == nullptr) {
        PM_LOGE("tbm_surface_h is null.\n");
        return nullptr;
    }
    void* image = EGL_NO_IMAGE_KHR;
    if (info.eglCreateImageKHRProc != nullptr) image = importSurface(st, info, surface);
    if (image == EGL_NO_IMAGE_KHR) PM_LOGE("Create KHR Image is Failed.\n");
    return image;
}

}  // namespace pmGL
