// Counts calls of a few GL entry points made by the library, and can make the
// next glGetError or eglGetError report a chosen code. The test program defines
// these entry points itself; each forwards to the driver's own.
#ifndef PIXMORA_TESTS_GL_GLCALLSPY_H
#define PIXMORA_TESTS_GL_GLCALLSPY_H

#include <EGL/egl.h>
#include <GLES3/gl3.h>

struct GLCallCounts {
    int generateMipmap = 0;
    int deleteTextures = 0;
    int drawArrays = 0;
    int drawArraysInstanced = 0;
    int drawElements = 0;
    int drawElementsInstanced = 0;
};

// Counts since the last reset.
GLCallCounts& glCallCounts();
void resetGLCallCounts();

// The next glGetError returns `flag` instead of asking the driver.
void forceNextGLError(GLenum flag);
// The next eglGetError returns `error` instead of asking the driver.
void forceNextEGLError(EGLint error);

#endif
