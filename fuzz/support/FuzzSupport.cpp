#include "FuzzSupport.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace fuzz {

std::string writeScratchFile(const std::uint8_t* data, std::size_t size,
                             const std::string& extension) {
    const std::string path =
        "/tmp/pixmora-fuzz-" + std::to_string(static_cast<long>(getpid())) + extension;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return path;
}

void ensureGLContext() {
    static const bool ready = [] {
        EGLDisplay display = eglGetPlatformDisplay(
            EGL_PLATFORM_SURFACELESS_MESA, reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
        if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) return false;
        eglBindAPI(EGL_OPENGL_ES_API);
        const EGLint configAttribs[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE,
                                        EGL_OPENGL_ES3_BIT, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (!eglChooseConfig(display, configAttribs, &config, 1, &count) || count < 1) {
            return false;
        }
        const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
        EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttribs);
        return context != EGL_NO_CONTEXT &&
               eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context);
    }();
    if (!ready) {
        std::fprintf(stderr, "no headless GL ES 3 context\n");
        std::abort();
    }
}

}  // namespace fuzz
