#include "GLTestContext.h"

#include <EGL/eglext.h>

#include <random>
#include <stdexcept>

EGLDisplay testDisplay() {
    static EGLDisplay display = [] {
        EGLDisplay d = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA,
                                             reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
        if (d == EGL_NO_DISPLAY || !eglInitialize(d, nullptr, nullptr)) {
            throw std::runtime_error("cannot open the surfaceless EGL display");
        }
        return d;
    }();
    return display;
}

GLTestContext::GLTestContext(int w, int h) {
    display = testDisplay();
    eglBindAPI(EGL_OPENGL_ES_API);
    // The surfaceless platform offers pbuffer configs only.
    const EGLint configAttribs[] = {EGL_RED_SIZE,
                                    8,
                                    EGL_GREEN_SIZE,
                                    8,
                                    EGL_BLUE_SIZE,
                                    8,
                                    EGL_ALPHA_SIZE,
                                    8,
                                    EGL_SURFACE_TYPE,
                                    EGL_PBUFFER_BIT,
                                    EGL_RENDERABLE_TYPE,
                                    EGL_OPENGL_ES3_BIT,
                                    EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(display, configAttribs, &config, 1, &count) || count < 1) {
        throw std::runtime_error("no EGL config");
    }
    const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttribs);
    if (context == EGL_NO_CONTEXT ||
        !eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
        throw std::runtime_error("cannot make the test context current");
    }
    resizeTarget(w, h);
}

GLTestContext::~GLTestContext() {
    deleteTarget();
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, context);
}

void GLTestContext::deleteTarget() {
    if (fbo) glDeleteFramebuffers(1, &fbo);
    if (colorTex) glDeleteTextures(1, &colorTex);
    fbo = 0;
    colorTex = 0;
}

void GLTestContext::resizeTarget(int w, int h) {
    deleteTarget();
    width = w;
    height = h;
    glGenTextures(1, &colorTex);
    glBindTexture(GL_TEXTURE_2D, colorTex);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenFramebuffers(1, &fbo);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorTex, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        throw std::runtime_error("test framebuffer incomplete");
    }
    glViewport(0, 0, w, h);
    clearTarget(0, 0, 0, 0);
}

void GLTestContext::clearTarget(float r, float g, float b, float a) {
    glClearColor(r, g, b, a);
    glClear(GL_COLOR_BUFFER_BIT);
}

std::vector<uint8_t> GLTestContext::readTarget() const {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    GLint previous = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &previous);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, fbo);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glBindFramebuffer(GL_READ_FRAMEBUFFER, previous);
    return pixels;
}

std::vector<uint8_t> makeTestPixels(int w, int h, int channels, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> dist(0, 255);
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * channels);
    for (auto& p : pixels) p = static_cast<uint8_t>(dist(rng));
    return pixels;
}

SurfaceTestContext::SurfaceTestContext(int w, int h) : width(w), height(h) {
    display = testDisplay();
    eglBindAPI(EGL_OPENGL_ES_API);
    const EGLint configAttribs[] = {EGL_RED_SIZE,
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
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(display, configAttribs, &config, 1, &count) || count < 1) {
        throw std::runtime_error("no EGL config of the library's kind");
    }
    const EGLint surfaceAttribs[] = {EGL_WIDTH, w, EGL_HEIGHT, h, EGL_NONE};
    surface = eglCreatePbufferSurface(display, config, surfaceAttribs);
    const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttribs);
    if (surface == EGL_NO_SURFACE || context == EGL_NO_CONTEXT) {
        throw std::runtime_error("cannot make the pbuffer test context");
    }
    makeCurrent();
    glViewport(0, 0, w, h);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
}

SurfaceTestContext::~SurfaceTestContext() {
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, context);
    eglDestroySurface(display, surface);
}

void SurfaceTestContext::makeCurrent() {
    if (!eglMakeCurrent(display, surface, surface, context)) {
        throw std::runtime_error("cannot make the pbuffer test context current");
    }
}

std::vector<uint8_t> SurfaceTestContext::readSurface() const {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

std::vector<GLuint> nextGLNames() {
    GLuint tex = 0, fb = 0, buf = 0, va = 0;
    glGenTextures(1, &tex);
    glGenFramebuffers(1, &fb);
    glGenBuffers(1, &buf);
    glGenVertexArrays(1, &va);
    const GLuint program = glCreateProgram();
    std::vector<GLuint> names{tex, fb, buf, va, program};
    glDeleteTextures(1, &tex);
    glDeleteFramebuffers(1, &fb);
    glDeleteBuffers(1, &buf);
    glDeleteVertexArrays(1, &va);
    glDeleteProgram(program);
    return names;
}
