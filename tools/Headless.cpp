#include "Headless.h"

#include <EGL/eglext.h>

#include <algorithm>
#include <string>

#include "ToolError.h"

HeadlessDisplay::HeadlessDisplay() {
    display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA,
                                    reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) {
        throw ToolError("cannot open a headless EGL display");
    }
}

HeadlessDisplay::~HeadlessDisplay() {
    eglTerminate(display);
}

HeadlessContext::HeadlessContext() {
    const EGLint configAttribs[] = {EGL_RED_SIZE,     8, EGL_GREEN_SIZE,      8,
                                    EGL_BLUE_SIZE,    8, EGL_ALPHA_SIZE,      8,
                                    EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT,
                                    EGL_NONE};
    const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglBindAPI(EGL_OPENGL_ES_API);
    if (!eglChooseConfig(headless.display, configAttribs, &config, 1, &count) || count < 1) {
        throw ToolError("no EGL configuration for OpenGL ES 3");
    }
    context = eglCreateContext(headless.display, config, EGL_NO_CONTEXT, contextAttribs);
    if (context == EGL_NO_CONTEXT ||
        !eglMakeCurrent(headless.display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
        if (context != EGL_NO_CONTEXT) eglDestroyContext(headless.display, context);
        throw ToolError("cannot make an OpenGL ES 3 context current");
    }
}

HeadlessContext::~HeadlessContext() {
    eglMakeCurrent(headless.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(headless.display, context);
}

RenderTarget::RenderTarget(int targetWidth, int targetHeight)
    : width(targetWidth), height(targetHeight) {
    checkSize();
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, width, height);
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &texture);
        throw ToolError("cannot create a framebuffer of the image's size");
    }
    glViewport(0, 0, width, height);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

RenderTarget::~RenderTarget() {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &texture);
}

void RenderTarget::bind() const {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glViewport(0, 0, width, height);
}

std::vector<unsigned char> RenderTarget::read() const {
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * 4);
    readInto(pixels);
    return pixels;
}

void RenderTarget::readInto(std::vector<unsigned char>& pixels) const {
    if (pixels.size() != static_cast<size_t>(width) * height * 4) {
        throw ToolError("read-back buffer does not fit the framebuffer");
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    if (glGetError() != GL_NO_ERROR) throw ToolError("cannot read the rendered image back");
}

void RenderTarget::checkSize() const {
    GLint maxTexture = 0;
    GLint maxRenderbuffer = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxTexture);
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &maxRenderbuffer);
    const int limit = std::min(maxTexture, maxRenderbuffer);
    if (width < 1 || height < 1 || width > limit || height > limit) {
        throw ToolError("image of " + std::to_string(width) + " x " + std::to_string(height) +
                        " is outside the GL limit of 1 to " + std::to_string(limit));
    }
}
