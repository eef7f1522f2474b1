#include "FrameBufferCallSpy.h"

#include <dlfcn.h>

#include <stdexcept>

namespace {

FrameBufferCalls calls;

// The driver's entry point of the same name, found past this program.
template <typename Function>
Function driverEntry(const char* name) {
    void* entry = dlsym(RTLD_NEXT, name);
    if (entry == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function>(entry);
}

}  // namespace

FrameBufferCalls& frameBufferCalls() {
    return calls;
}

void resetFrameBufferCalls() {
    calls = FrameBufferCalls();
}

extern "C" {

GL_APICALL void GL_APIENTRY glRenderbufferStorage(GLenum target, GLenum internalformat,
                                                  GLsizei width, GLsizei height) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLenum, GLsizei, GLsizei)>("glRenderbufferStorage");
    ++calls.any;
    ++calls.renderbufferStorage;
    driver(target, internalformat, width, height);
}

GL_APICALL void GL_APIENTRY glRenderbufferStorageMultisample(GLenum target, GLsizei samples,
                                                             GLenum internalformat, GLsizei width,
                                                             GLsizei height) {
    static const auto driver = driverEntry<void (*)(GLenum, GLsizei, GLenum, GLsizei, GLsizei)>(
        "glRenderbufferStorageMultisample");
    ++calls.any;
    ++calls.renderbufferStorageMultisample;
    calls.lastSamples = samples;
    driver(target, samples, internalformat, width, height);
}

GL_APICALL void GL_APIENTRY glDrawBuffers(GLsizei n, const GLenum* bufs) {
    static const auto driver = driverEntry<void (*)(GLsizei, const GLenum*)>("glDrawBuffers");
    ++calls.any;
    ++calls.drawBuffers;
    calls.lastDrawBufferCount = n;
    calls.lastDrawBuffersNull = bufs == nullptr;
    calls.lastDrawBufferList.assign(bufs, bufs == nullptr ? bufs : bufs + (n > 0 ? n : 0));
    driver(n, bufs);
}

GL_APICALL void GL_APIENTRY glClear(GLbitfield mask) {
    static const auto driver = driverEntry<void (*)(GLbitfield)>("glClear");
    ++calls.any;
    ++calls.clear;
    calls.lastClearMask = mask;
    driver(mask);
}

GL_APICALL void GL_APIENTRY glBindFramebuffer(GLenum target, GLuint framebuffer) {
    static const auto driver = driverEntry<void (*)(GLenum, GLuint)>("glBindFramebuffer");
    ++calls.any;
    ++calls.bindFramebuffer;
    driver(target, framebuffer);
}

GL_APICALL void GL_APIENTRY glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    static const auto driver = driverEntry<void (*)(GLint, GLint, GLsizei, GLsizei)>("glViewport");
    ++calls.any;
    ++calls.viewport;
    driver(x, y, width, height);
}

GL_APICALL void GL_APIENTRY glGetIntegerv(GLenum pname, GLint* data) {
    static const auto driver = driverEntry<void (*)(GLenum, GLint*)>("glGetIntegerv");
    ++calls.any;
    driver(pname, data);
}

GL_APICALL void GL_APIENTRY glBindTexture(GLenum target, GLuint texture) {
    static const auto driver = driverEntry<void (*)(GLenum, GLuint)>("glBindTexture");
    ++calls.any;
    driver(target, texture);
}

GL_APICALL void GL_APIENTRY glTexImage2D(GLenum target, GLint level, GLint internalformat,
                                         GLsizei width, GLsizei height, GLint border, GLenum format,
                                         GLenum type, const void* pixels) {
    static const auto driver = driverEntry<void (*)(GLenum, GLint, GLint, GLsizei, GLsizei, GLint,
                                                    GLenum, GLenum, const void*)>("glTexImage2D");
    ++calls.any;
    driver(target, level, internalformat, width, height, border, format, type, pixels);
}

GL_APICALL void GL_APIENTRY glBindRenderbuffer(GLenum target, GLuint renderbuffer) {
    static const auto driver = driverEntry<void (*)(GLenum, GLuint)>("glBindRenderbuffer");
    ++calls.any;
    driver(target, renderbuffer);
}

GL_APICALL void GL_APIENTRY glFramebufferRenderbuffer(GLenum target, GLenum attachment,
                                                      GLenum renderbuffertarget,
                                                      GLuint renderbuffer) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLenum, GLenum, GLuint)>("glFramebufferRenderbuffer");
    ++calls.any;
    driver(target, attachment, renderbuffertarget, renderbuffer);
}

GL_APICALL void GL_APIENTRY glFramebufferTexture2D(GLenum target, GLenum attachment,
                                                   GLenum textarget, GLuint texture, GLint level) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLenum, GLenum, GLuint, GLint)>("glFramebufferTexture2D");
    ++calls.any;
    driver(target, attachment, textarget, texture, level);
}

GL_APICALL void GL_APIENTRY glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height,
                                         GLenum format, GLenum type, void* pixels) {
    static const auto driver =
        driverEntry<void (*)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*)>(
            "glReadPixels");
    ++calls.any;
    driver(x, y, width, height, format, type, pixels);
}

}  // extern "C"
