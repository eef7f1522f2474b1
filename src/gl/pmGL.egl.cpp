// EGL helpers: the record of the library's display and context, the extension
// entries for EGLImages, and EGL error names.
#include "pmGL.h"

namespace pmGL {

namespace {

// Names of the EGL codes from EGL_SUCCESS (0x3000) to EGL_CONTEXT_LOST (0x300E).
const char* const EGL_ERROR_NAMES[] = {
    "EGL_SUCCESS",       "EGL_NOT_INITIALIZED", "EGL_BAD_ACCESS",        "EGL_BAD_ALLOC",
    "EGL_BAD_ATTRIBUTE", "EGL_BAD_CONFIG",      "EGL_BAD_CONTEXT",       "EGL_BAD_CURRENT_SURFACE",
    "EGL_BAD_DISPLAY",   "EGL_BAD_MATCH",       "EGL_BAD_NATIVE_PIXMAP", "EGL_BAD_NATIVE_WINDOW",
    "EGL_BAD_PARAMETER", "EGL_BAD_SURFACE",     "EGL_CONTEXT_LOST"};

const char* eglErrorName(EGLint error, const char* unknown) {
    if (error < EGL_SUCCESS || error > EGL_CONTEXT_LOST) return unknown;
    return EGL_ERROR_NAMES[error - EGL_SUCCESS];
}

template <typename Proc>
Proc loadProc(const char* name) {
    return reinterpret_cast<Proc>(eglGetProcAddress(name));
}

// Keeps `image` when it could not be destroyed, so that the failure stays
// visible in the record.
void deleteEGLImage(void*& image, const EGLInfo& info) {
    const bool destroyed = info.eglDestroyImageKHRProc != nullptr &&
                           info.eglDestroyImageKHRProc(info.display, image) == EGL_TRUE;
    if (destroyed) {
        image = nullptr;
        return;
    }
    PM_LOGE("eglDestroyImageKHRProc is Failed.\n");
}

}  // namespace

bool setEGLInfo(EGLInfo& info, void* display, void* drawSurface, void* readSurface, void* context) {
    if (display == nullptr) {
        PM_LOGE("not a valid egl display.");
        return false;
    }
    info.display = display;
    info.drawSurface = drawSurface;
    info.readSurface = readSurface;
    info.context = context;
    info.prevDrawSurface = nullptr;
    info.prevReadSurface = nullptr;
    info.prevContext = nullptr;
    info.eglCreateImageKHRProc = loadProc<PFNEGLCREATEIMAGEKHRPROC>("eglCreateImageKHR");
    if (info.eglCreateImageKHRProc == nullptr) {
        PM_LOGE("%d ERROR: eglCreateImageKHRProc == null.\n", __LINE__);
        return false;
    }
    info.eglDestroyImageKHRProc = loadProc<PFNEGLDESTROYIMAGEKHRPROC>("eglDestroyImageKHR");
    if (info.eglDestroyImageKHRProc == nullptr) {
        PM_LOGE("%d ERROR: eglDestroyImageKHRProc == null.\n", __LINE__);
        return false;
    }
    info.glEGLImageTargetTexture2DOESProc =
        loadProc<PFNGLEGLIMAGETARGETTEXTURE2DOESPROC>("glEGLImageTargetTexture2DOES");
    if (info.glEGLImageTargetTexture2DOESProc == nullptr) {
        PM_LOGE("%d ERROR: glEGLImageTargetTexture2DOESProc == null.\n", __LINE__);
        return false;
    }
    PM_LOGE("set egl info success.\n");
    return true;
}

// Unlike eglGetErrorString, an unknown code is named in capitals here.
bool checkEglError() {
    const EGLint error = eglGetError();
    if (error == EGL_SUCCESS) return true;
    PM_LOGE("EGL error flag set: %s", eglErrorName(error, "UNKNOWN"));
    return false;
}

const char* eglGetErrorString(EGLint error) {
    return eglErrorName(error, "Unknown");
}

// On desktop the image's copy of the surface goes too, even when the image
// itself could not be destroyed.
void deleteSurfaceTexture(SurfaceTexture& st, EGLInfo& info) {
    deleteTexture(st.tex);
    if (st.image != nullptr) deleteEGLImage(st.image, info);
#ifndef PIXMORA_DEVICE_PLATFORM
    deleteTexture(st.source);
#endif
}

}  // namespace pmGL
