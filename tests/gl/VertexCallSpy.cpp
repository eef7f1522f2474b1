#include "VertexCallSpy.h"

#include <dlfcn.h>

#include <stdexcept>

namespace {

VertexCallCounts counts;
bool fakeExtensions = false;
std::vector<const char*> extensionNames;

template <typename Function>
Function driverEntry(const char* name) {
    void* entry = dlsym(RTLD_NEXT, name);
    if (entry == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function>(entry);
}

}  // namespace

VertexCallCounts& vertexCallCounts() {
    return counts;
}

void resetVertexCallCounts() {
    counts = VertexCallCounts();
}

void setFakeExtensions(const std::vector<const char*>& names) {
    extensionNames = names;
    fakeExtensions = true;
}

void clearFakeExtensions() {
    fakeExtensions = false;
    extensionNames.clear();
}

extern "C" {

GL_APICALL void GL_APIENTRY glBindBuffer(GLenum target, GLuint buffer) {
    static const auto driver = driverEntry<void (*)(GLenum, GLuint)>("glBindBuffer");
    ++counts.bindBuffer;
    driver(target, buffer);
}

GL_APICALL void GL_APIENTRY glBufferData(GLenum target, GLsizeiptr size, const void* data,
                                         GLenum usage) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLsizeiptr, const void*, GLenum)>("glBufferData");
    ++counts.bufferData;
    if (target == GL_ARRAY_BUFFER) counts.lastArrayUsage = usage;
    if (target == GL_ELEMENT_ARRAY_BUFFER) counts.lastElementUsage = usage;
    driver(target, size, data, usage);
}

GL_APICALL void GL_APIENTRY glBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size,
                                            const void* data) {
    static const auto driver =
        driverEntry<void (*)(GLenum, GLintptr, GLsizeiptr, const void*)>("glBufferSubData");
    ++counts.bufferSubData;
    driver(target, offset, size, data);
}

GL_APICALL void GL_APIENTRY glBindBufferBase(GLenum target, GLuint index, GLuint buffer) {
    static const auto driver = driverEntry<void (*)(GLenum, GLuint, GLuint)>("glBindBufferBase");
    ++counts.bindBufferBase;
    driver(target, index, buffer);
}

GL_APICALL void GL_APIENTRY glVertexAttribDivisor(GLuint index, GLuint divisor) {
    static const auto driver = driverEntry<void (*)(GLuint, GLuint)>("glVertexAttribDivisor");
    ++counts.vertexAttribDivisor;
    driver(index, divisor);
}

GL_APICALL void GL_APIENTRY glVertexAttribPointer(GLuint index, GLint size, GLenum type,
                                                  GLboolean normalized, GLsizei stride,
                                                  const void* pointer) {
    static const auto driver =
        driverEntry<void (*)(GLuint, GLint, GLenum, GLboolean, GLsizei, const void*)>(
            "glVertexAttribPointer");
    ++counts.vertexAttribPointer;
    counts.lastNormalized = normalized;
    driver(index, size, type, normalized, stride, pointer);
}

GL_APICALL void GL_APIENTRY glEnableVertexAttribArray(GLuint index) {
    static const auto driver = driverEntry<void (*)(GLuint)>("glEnableVertexAttribArray");
    ++counts.enableVertexAttribArray;
    driver(index);
}

GL_APICALL void GL_APIENTRY glDisableVertexAttribArray(GLuint index) {
    static const auto driver = driverEntry<void (*)(GLuint)>("glDisableVertexAttribArray");
    ++counts.disableVertexAttribArray;
    driver(index);
}

GL_APICALL const GLubyte* GL_APIENTRY glGetStringi(GLenum name, GLuint index) {
    static const auto driver = driverEntry<const GLubyte* (*)(GLenum, GLuint)>("glGetStringi");
    // Past the fake list, up to the driver's own count, names read as null.
    if (fakeExtensions && name == GL_EXTENSIONS) {
        if (index >= extensionNames.size()) return nullptr;
        return reinterpret_cast<const GLubyte*>(extensionNames[index]);
    }
    return driver(name, index);
}

}  // extern "C"
