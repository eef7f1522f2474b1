// The library's private EGL context: create, bind around work, restore what
// the caller had current, destroy.
#include "pmGL.h"

namespace pmGL {

namespace {

// The configuration every private context is made with: RGBA8, 16-bit depth,
// no stencil, pbuffer-capable, ES 2 renderable, 4x multisampled.
const EGLint contextConfigAttribs[] = {EGL_RED_SIZE,
                                       8,
                                       EGL_GREEN_SIZE,
                                       8,
                                       EGL_BLUE_SIZE,
                                       8,
                                       EGL_ALPHA_SIZE,
                                       8,
                                       EGL_DEPTH_SIZE,
                                       16,
                                       EGL_STENCIL_SIZE,
                                       0,
                                       EGL_SURFACE_TYPE,
                                       EGL_PBUFFER_BIT,
                                       EGL_RENDERABLE_TYPE,
                                       EGL_OPENGL_ES2_BIT,
                                       EGL_SAMPLE_BUFFERS,
                                       1,
                                       EGL_SAMPLES,
                                       4,
                                       EGL_NONE};

// Client version 2 is asked for on purpose: implementations hand out their
// highest compatible ES version, which the ES 3 shaders rely on.
const EGLint contextAttribs[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};

}  // namespace

bool createEGLContext(EGLInfo& info) {
    if (info.display == nullptr) {
        PM_LOGE("no egl display.");
        return false;
    }
    if (info.context != nullptr) {
        PM_LOGE("egl context is not empty.");
        return false;
    }
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(info.display, contextConfigAttribs, &config, 1, &count) != EGL_TRUE) {
        PM_LOGI("eglChooseConfig : %s.", eglGetErrorString(eglGetError()));
        return false;
    }
    info.context = eglCreateContext(info.display, config, EGL_NO_CONTEXT, contextAttribs);
    PM_LOGI("CreateContext : %s.", eglGetErrorString(eglGetError()));
    return info.context != nullptr;
}

bool bindEGLContext(EGLInfo& info) {
    if (info.display == nullptr) {
        PM_LOGE("no egl display.");
        return false;
    }
    if (info.context == nullptr) {
        PM_LOGE("no egl context.");
        return false;
    }
    if (info.bound) {
        PM_LOGE("binded aleady.");
        return false;
    }
    info.prevContext = eglGetCurrentContext();
    info.prevReadSurface = eglGetCurrentSurface(EGL_READ);
    info.prevDrawSurface = eglGetCurrentSurface(EGL_DRAW);
    if (eglMakeCurrent(info.display, info.drawSurface, info.readSurface, info.context) ==
        EGL_TRUE) {
        info.bound = true;
        return true;
    }
    checkEglError();
    return false;
}

bool unbindEGLContext(EGLInfo& info) {
    if (info.display == nullptr) {
        PM_LOGE("no egl display.");
        return false;
    }
    if (!info.bound) {
        PM_LOGE("bind first.");
        return false;
    }
    if (eglMakeCurrent(info.display, info.prevDrawSurface, info.prevReadSurface,
                       info.prevContext) != EGL_TRUE) {
        checkEglError();
        PM_LOGE("fail to unbind egl context.");
        return false;
    }
    info.prevDrawSurface = nullptr;
    info.prevReadSurface = nullptr;
    info.prevContext = nullptr;
    info.bound = false;
    return true;
}

bool deleteEGLContext(EGLInfo& info) {
    if (info.display == nullptr) {
        PM_LOGE("no egl display.");
        return false;
    }
    if (info.context == nullptr) {
        PM_LOGE("no egl context.");
        return false;
    }
    if (info.bound) unbindEGLContext(info);
    if (eglDestroyContext(info.display, info.context) == EGL_TRUE) {
        PM_LOGI("DestroyContext Success...[%p]\n", info.context);
        info.context = nullptr;
        return true;
    }
    PM_LOGI("DestroyContext Fail...[%p]\n", info.context);
    return false;
}

}  // namespace pmGL
