// Render buffers: colour and depth storage that is drawn to but never sampled,
// optionally multisampled.
#include "pmGL.h"

namespace pmGL {

namespace {

// Allocates storage for the render buffer bound to GL_RENDERBUFFER. Only 2
// samples and more make a multisampled buffer, so 0 and 1 both give plain
// storage.
void allocateStorage(const RenderBuffer& rb) {
    if (rb.opts.samples >= 2) {
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, rb.opts.samples,
                                         static_cast<GLenum>(rb.opts.internalFormat), rb.width,
                                         rb.height);
    } else {
        glRenderbufferStorage(GL_RENDERBUFFER, static_cast<GLenum>(rb.opts.internalFormat),
                              rb.width, rb.height);
    }
}

}  // namespace

void createRenderBuffer(RenderBuffer& rb, int width, int height, const RenderBufferOpts& opts) {
    const RenderBufferOpts given = opts;  // `opts` may be the record's own
    deleteRenderBuffer(rb);
    rb.width = width;
    rb.height = height;
    rb.opts = given;
    glGenRenderbuffers(1, &rb.id);
    glBindRenderbuffer(GL_RENDERBUFFER, rb.id);
    allocateStorage(rb);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
}

// The name stays, so whatever it is attached to sees the new storage.
void resizeRenderBuffer(RenderBuffer& rb, int width, int height) {
    rb.width = width;
    rb.height = height;
    glBindRenderbuffer(GL_RENDERBUFFER, rb.id);
    allocateStorage(rb);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
}

void deleteRenderBuffer(RenderBuffer& rb) {
    if (rb.id == 0) return;
    glDeleteRenderbuffers(1, &rb.id);
    rb.id = 0;
}

}  // namespace pmGL
