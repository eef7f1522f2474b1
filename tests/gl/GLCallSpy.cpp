#include "GLCallSpy.h"

#include <dlfcn.h>

#include <stdexcept>

namespace {

GLCallCounts counts;
GLenum forcedGLError = GL_NO_ERROR;
EGLint forcedEGLError = EGL_SUCCESS;

// The driver's entry point of the same name, found past this program.
template <typename Function>
Function driverEntry(const char* name) {
    void* entry = dlsym(RTLD_NEXT, name);
    if (entry == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function>(entry);
}

}  // namespace

GLCallCounts& glCallCounts() {
    return counts;
}

void resetGLCallCounts() {
    counts = GLCallCounts();
}

void forceNextGLError(GLenum flag) {
    forcedGLError = flag;
}

void forceNextEGLError(EGLint error) {
    forcedEGLError = error;
}

extern "C" {

GL_APICALL GLenum GL_APIENTRY glGetError(void) {
    static const auto driver = driverEntry<GLenum (*)()>("glGetError");
    if (forcedGLError != GL_NO_ERROR) {
        const GLenum flag = forcedGLError;
        forcedGLError = GL_NO_ERROR;
        return flag;
    }
    return driver();
}

EGLAPI EGLint EGLAPIENTRY eglGetError(void) {
    static const auto driver = driverEntry<EGLint (*)()>("eglGetError");
    if (forcedEGLError != EGL_SUCCESS) {
        const EGLint error = forcedEGLError;
        forcedEGLError = EGL_SUCCESS;
        return error;
    }
    return driver();
}

GL_APICALL void GL_APIENTRY glGenerateMipmap(GLenum target) {
    static const auto driver = driverEntry<void (*)(GLenum)>("glGenerateMipmap");
    ++counts.generateMipmap;
    driver(target);
}

GL_APICALL void GL_APIENTRY glDeleteTextures(GLsizei n, const GLuint* textures) {
    static const auto driver = driverEntry<void (*)(GLsizei, const GLuint*)>("glDeleteTextures");
    ++counts.deleteTextures;
    driver(n, textures);
}

GL_APICALL void GL_APIENTRY glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    static const auto driver = driverEntry<void (*)(GLenum, GLint, GLsizei)>("glDrawArrays");
    ++counts.drawArrays;
    driver(mode, first, count);
}

GL_APICALL void GL_APIENTRY glDrawArraysInstanced(GLenum mode, GLint first, GLsizei count,
                                                  GLsizei instancecount) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLint, GLsizei, GLsizei)>("glDrawArraysInstanced");
    ++counts.drawArraysInstanced;
    driver(mode, first, count, instancecount);
}

GL_APICALL void GL_APIENTRY glDrawElements(GLenum mode, GLsizei count, GLenum type,
                                           const void* indices) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLsizei, GLenum, const void*)>("glDrawElements");
    ++counts.drawElements;
    driver(mode, count, type, indices);
}

GL_APICALL void GL_APIENTRY glDrawElementsInstanced(GLenum mode, GLsizei count, GLenum type,
                                                    const void* indices, GLsizei instancecount) {
    static const auto driver = driverEntry<void (*)(GLenum, GLsizei, GLenum, const void*, GLsizei)>(
        "glDrawElementsInstanced");
    ++counts.drawElementsInstanced;
    driver(mode, count, type, indices, instancecount);
}

}  // extern "C"
