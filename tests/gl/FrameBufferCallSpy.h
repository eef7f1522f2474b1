// Records the calls of the GL entry points that framebuffers and render
// buffers are made with, with the arguments that matter to the tests. Like
// GLCallSpy, the test program defines these entry points itself and each
// forwards to the driver's own.
#ifndef PIXMORA_TESTS_GL_FRAMEBUFFERCALLSPY_H
#define PIXMORA_TESTS_GL_FRAMEBUFFERCALLSPY_H

#include <GLES3/gl3.h>

#include <vector>

struct FrameBufferCalls {
    // Every call of an entry point spied here.
    int any = 0;
    int renderbufferStorage = 0;
    int renderbufferStorageMultisample = 0;
    GLsizei lastSamples = -1;
    int drawBuffers = 0;
    GLsizei lastDrawBufferCount = -1;
    bool lastDrawBuffersNull = false;
    std::vector<GLenum> lastDrawBufferList;
    int clear = 0;
    GLbitfield lastClearMask = 0;
    int bindFramebuffer = 0;
    int viewport = 0;
};

// Calls since the last reset.
FrameBufferCalls& frameBufferCalls();
void resetFrameBufferCalls();

#endif
