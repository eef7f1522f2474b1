// Framebuffers: creation with colour textures or colour render buffers and an
// optional depth (and stencil) buffer, binding with the caller's state saved,
// update, read-back, resizing, clearing and deletion.
#include "pmGL.h"

namespace pmGL {

namespace {

// Names the reason of an incomplete framebuffer; a complete one logs nothing.
void checkFrameBufferStatus() {
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (status == GL_FRAMEBUFFER_COMPLETE) return;
    if (status == GL_FRAMEBUFFER_UNSUPPORTED) {
        PM_LOGE("Unsupported framebuffer format\n");
    } else if (status == GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT) {
        PM_LOGE("Framebuffer incomplete: missing attachment\n");
    } else if (status == GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT) {
        PM_LOGE("Framebuffer incomplete: incomplete attachment\n");
    } else {
        PM_LOGE("Framebuffer invalid: unknown reason\n");
    }
    PM_ASSERT(0);
}

// Depth options of the public forms: a combined depth and stencil format when
// stencil is asked for, depth alone otherwise.
RenderBufferOpts depthBufferOptions(bool stencil, int samples) {
    RenderBufferOpts opts;
    opts.internalFormat = stencil ? GL_DEPTH24_STENCIL8 : GL_DEPTH_COMPONENT24;
    opts.samples = samples;
    return opts;
}

// A negative count makes the vector itself throw std::length_error.
std::vector<void*> colorDataList(int colorCount, void* data) {
    return std::vector<void*>(static_cast<std::size_t>(colorCount), data);
}

bool isDepthStencilFormat(int internalFormat) {
    return internalFormat == GL_DEPTH24_STENCIL8 || internalFormat == GL_DEPTH32F_STENCIL8;
}

}  // namespace

void createFrameBuffer(FrameBuffer& fb, int width, int height, std::vector<void*> colorData,
                       const TextureOpts* colorTexOpts, const RenderBufferOpts* colorBufferOpts,
                       void* depthData, const TextureOpts* depthTexOpts,
                       const RenderBufferOpts* depthBufferOpts, int samples) {
    // The options may belong to the record rebuilt here (a caller passing
    // fb.colorTex[0].opts), so they are copied before it is emptied.
    const TextureOpts texOpts = colorTexOpts ? *colorTexOpts : TextureOpts();
    const RenderBufferOpts bufferOpts = colorBufferOpts ? *colorBufferOpts : RenderBufferOpts();
    const TextureOpts depthOpts = depthTexOpts ? *depthTexOpts : TextureOpts();
    const int depthFormat = depthBufferOpts ? depthBufferOpts->internalFormat : 0;
    const std::size_t count = colorData.size();

    deleteFrameBuffer(fb);
    glGenFramebuffers(1, &fb.id);
    if (fb.id == 0) {
        // No context is current: the record stays empty, so that the next
        // call on the owner's thread makes the buffer instead of trusting it.
        PM_LOGE("No framebuffer was made: no GL context is current.");
        return;
    }
    fb.width = width;
    fb.height = height;
    const bool ret = bindFrameBuffer(fb);
    PM_ASSERT(ret);

    // A kind of colour attachment that is not asked for keeps no records, so
    // that reads and resizes see only what is attached.
    if (colorTexOpts) {
        fb.colorTex.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            createTexture(fb.colorTex[i], width, height, colorData[i], texOpts);
            attachTexture(fb.colorTex[i], static_cast<unsigned>(i), 0);
        }
        specifyDrawBuffers(static_cast<unsigned>(count));
    } else {
        fb.colorTex.clear();
    }

    if (colorBufferOpts) {
        fb.colorRenderBuffer.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            RenderBuffer& rb = fb.colorRenderBuffer[i];
            createRenderBuffer(rb, width, height, bufferOpts);
            glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(i),
                                      GL_RENDERBUFFER, rb.id);
        }
        specifyDrawBuffers(static_cast<unsigned>(count));
    } else {
        fb.colorRenderBuffer.clear();
    }

    if (depthTexOpts) {
        createTexture(fb.depthTex, width, height, depthData, depthOpts);
        const GLenum attachment = fb.depthTex.opts.format == GL_DEPTH_STENCIL
                                      ? GL_DEPTH_STENCIL_ATTACHMENT
                                      : GL_DEPTH_ATTACHMENT;
        glFramebufferTexture2D(GL_FRAMEBUFFER, attachment, fb.depthTex.opts.target, fb.depthTex.id,
                               0);
    }

    if (depthBufferOpts) {
        // The sample count is the one passed in, whatever the options hold.
        RenderBufferOpts opts;
        opts.internalFormat = depthFormat;
        opts.samples = samples;
        createRenderBuffer(fb.depthRenderBuffer, width, height, opts);
        const GLenum attachment =
            isDepthStencilFormat(depthFormat) ? GL_DEPTH_STENCIL_ATTACHMENT : GL_DEPTH_ATTACHMENT;
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER,
                                  fb.depthRenderBuffer.id);
    }

    checkFrameBufferStatus();
    unbindFrameBuffer(fb);
    checkError();
}

// The depth buffer of this form and the two below is never multisampled.
void createFrameBuffer(FrameBuffer& fb, int width, int height, const TextureOpts& opts,
                       int colorCount, bool depth, bool stencil) {
    const RenderBufferOpts depthOpts = depthBufferOptions(stencil, 1);
    createFrameBuffer(fb, width, height, colorDataList(colorCount, nullptr), &opts, nullptr,
                      nullptr, nullptr, depth ? &depthOpts : nullptr, 1);
}

// Colour render buffers with `opts`, multisampled when they ask for it; the
// depth buffer has one sample all the same, so such a buffer is incomplete.
void createFrameBuffer(FrameBuffer& fb, int width, int height, const RenderBufferOpts& opts,
                       int colorCount, bool depth, bool stencil) {
    const RenderBufferOpts depthOpts = depthBufferOptions(stencil, 1);
    createFrameBuffer(fb, width, height, colorDataList(colorCount, nullptr), nullptr, &opts,
                      nullptr, nullptr, depth ? &depthOpts : nullptr, 1);
}

void createFrameBuffer(FrameBuffer& fb, const ImageData<float>& image, const TextureOpts& opts,
                       int colorCount, bool depth, bool stencil) {
    TextureOpts imageOpts = opts;
    updateTextureOpts(imageOpts, image);
    const RenderBufferOpts depthOpts = depthBufferOptions(stencil, 1);
    createFrameBuffer(fb, image.getWidth(), image.getHeight(),
                      colorDataList(colorCount, image.data), &imageOpts, nullptr, nullptr, nullptr,
                      depth ? &depthOpts : nullptr, 1);
}

// Every colour texture starts with the image's pixels. `samples` reaches the
// depth buffer only: with 2 or more it is multisampled while the colour
// textures are not.
void createFrameBuffer(FrameBuffer& fb, const ImageData<unsigned char>& image,
                       const TextureOpts& opts, int colorCount, bool depth, bool stencil,
                       int samples) {
    TextureOpts imageOpts = opts;
    updateTextureOpts(imageOpts, image);
    const RenderBufferOpts depthOpts = depthBufferOptions(stencil, samples);
    createFrameBuffer(fb, image.getWidth(), image.getHeight(),
                      colorDataList(colorCount, image.data), &imageOpts, nullptr, nullptr, nullptr,
                      depth ? &depthOpts : nullptr, samples);
}

void updateFrameBuffer(FrameBuffer& fb, const ImageData<unsigned char>& image,
                       unsigned targetIndex) {
    PM_ASSERT(fb.colorTex.size() > targetIndex);
    if (targetIndex >= fb.colorTex.size()) return;  // no texture to write to
    updateTexture(fb.colorTex[targetIndex], image);
}

void updateFrameBuffer(FrameBuffer& fb, const ImageData<float>& image, unsigned targetIndex) {
    PM_ASSERT(fb.colorTex.size() > targetIndex);
    if (targetIndex >= fb.colorTex.size()) return;  // no texture to write to
    updateTexture(fb.colorTex[targetIndex], image);
}

void generateMipmap(FrameBuffer& fb) {
    for (Texture& tex : fb.colorTex) generateMipmap(tex);
}

// A buffer that is bound already saves nothing and returns false, so a nested
// bind keeps the state saved by the outer one and only the outer one unbinds.
bool bindFrameBuffer(FrameBuffer& fb) {
    if (fb.id == 0) return false;
    GLint drawBinding = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &drawBinding);
    if (static_cast<unsigned>(drawBinding) == fb.id) return false;
    GLint readBinding = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readBinding);
    fb.prevDrawFrameBuffer = static_cast<unsigned>(drawBinding);
    fb.prevReadFrameBuffer = static_cast<unsigned>(readBinding);
    glGetIntegerv(GL_VIEWPORT, fb.prevViewport);
    glBindFramebuffer(GL_FRAMEBUFFER, fb.id);
    glViewport(0, 0, fb.width, fb.height);
    checkError();
    return true;
}

// Restores what the last successful bind saved, bound or not.
bool unbindFrameBuffer(FrameBuffer& fb) {
    if (fb.id == 0) return false;
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, fb.prevDrawFrameBuffer);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, fb.prevReadFrameBuffer);
    glViewport(fb.prevViewport[0], fb.prevViewport[1], fb.prevViewport[2], fb.prevViewport[3]);
    checkError();
    return true;
}

// The attachment records stay in their sequences, emptied, for the next create.
void deleteFrameBuffer(FrameBuffer& fb) {
    if (fb.id == 0) return;
    if (isBound(fb)) unbindFrameBuffer(fb);
    for (Texture& tex : fb.colorTex) deleteTexture(tex);
    deleteTexture(fb.depthTex);
    for (RenderBuffer& rb : fb.colorRenderBuffer) deleteRenderBuffer(rb);
    deleteRenderBuffer(fb.depthRenderBuffer);
    glDeleteFramebuffers(1, &fb.id);
    fb.id = 0;
    fb.width = 0;
    fb.height = 0;
    checkError();
}

bool isBound(FrameBuffer& fb) {
    GLint binding = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &binding);
    return static_cast<unsigned>(binding) == fb.id;
}

// Sets the unpack alignment, not the pack alignment: reads rely on the pack
// alignment that the context already has.
void readFrameBuffer(FrameBuffer& fb, void* pixels, unsigned targetIndex) {
    PM_ASSERT(isExist(fb));
    const bool bound = bindFrameBuffer(fb);
    const GLenum readBuffer = GL_COLOR_ATTACHMENT0 + targetIndex;
    if (targetIndex < fb.colorTex.size()) {
        PM_ASSERT(fb.colorTex[targetIndex].opts.format == GL_RGBA);
        const TextureOpts& opts = fb.colorTex[targetIndex].opts;
        setUnpackAlignment(fb.width, getTexelSize(opts));
        glReadBuffer(readBuffer);
        glReadPixels(0, 0, fb.width, fb.height, opts.format, opts.type, pixels);
    }
    if (targetIndex < fb.colorRenderBuffer.size()) {
        PM_ASSERT(fb.colorRenderBuffer[targetIndex].opts.internalFormat == GL_RGBA8);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        glReadBuffer(readBuffer);
        glReadPixels(0, 0, fb.width, fb.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    }
    if (bound) unbindFrameBuffer(fb);
    checkError();
}

// The checks below only log: a wrongly sized image is still read at the
// framebuffer's size, so its pixel buffer must be big enough for that.
void readFrameBuffer(FrameBuffer& fb, ImageData<unsigned char>& image, unsigned targetIndex) {
    PM_ASSERT(fb.width == image.getWidth() && fb.height == image.getHeight());
    if (targetIndex < fb.colorTex.size()) {
        PM_ASSERT(fb.colorTex[targetIndex].opts.type == GL_UNSIGNED_BYTE);
        // clang-format off
        PM_ASSERT(getTextureFormat(image.getChannel(), fb.colorTex[targetIndex].opts.type) == fb.colorTex[targetIndex].opts.format);
        // clang-format on
    }
    if (targetIndex < fb.colorRenderBuffer.size()) {
        // The table gives an unsigned format, the options hold a signed one.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-compare"
        // clang-format off
        PM_ASSERT(getTextureInternalFormat(image.getChannel(), GL_UNSIGNED_BYTE) == fb.colorRenderBuffer[targetIndex].opts.internalFormat);
        // clang-format on
#pragma GCC diagnostic pop
    }
    readFrameBuffer(fb, static_cast<void*>(image.data), targetIndex);
}

// Colour render buffers are read as 8-bit RGBA only, so a float read of one is
// refused before any GL call.
void readFrameBuffer(FrameBuffer& fb, ImageData<float>& image, unsigned targetIndex) {
    PM_ASSERT(fb.width == image.getWidth() && fb.height == image.getHeight());
    if (targetIndex < fb.colorTex.size()) {
        PM_ASSERT(fb.colorTex[targetIndex].opts.type == GL_FLOAT);
        // clang-format off
        PM_ASSERT(getTextureFormat(image.getChannel(), fb.colorTex[targetIndex].opts.type) == fb.colorTex[targetIndex].opts.format);
        // clang-format on
    }
    if (targetIndex < fb.colorRenderBuffer.size()) {
        PM_LOGE("A render buffer does not support GL_FLOAT.\n");
        return;
    }
    readFrameBuffer(fb, static_cast<void*>(image.data), targetIndex);
}

// The new size is stored before binding so that the bind sets the new
// viewport. A buffer that was bound already stays bound and gets the viewport
// here; its saved caller state is left as it was.
void resizeFrameBuffer(FrameBuffer& fb, int width, int height) {
    if (fb.width == width && fb.height == height) return;
    fb.width = width;
    fb.height = height;
    const bool bound = bindFrameBuffer(fb);
    for (Texture& tex : fb.colorTex) resizeTexture(tex, width, height);
    for (RenderBuffer& rb : fb.colorRenderBuffer) resizeRenderBuffer(rb, width, height);
    if (fb.depthTex.id != 0) resizeTexture(fb.depthTex, width, height);
    if (fb.depthRenderBuffer.id != 0) resizeRenderBuffer(fb.depthRenderBuffer, width, height);
    if (bound) {
        unbindFrameBuffer(fb);
    } else {
        glViewport(0, 0, width, height);
    }
    checkError();
}

// With no colour attachment GL draws to none: glDrawBuffers(0, null).
void specifyDrawBuffers(unsigned count) {
    if (count == 0) {
        glDrawBuffers(0, nullptr);
        return;
    }
    std::vector<GLenum> buffers(count);
    for (unsigned i = 0; i < count; ++i) buffers[i] = GL_COLOR_ATTACHMENT0 + i;
    glDrawBuffers(static_cast<GLsizei>(count), buffers.data());
}

// GL ES accepts attachment i only at position i of the list, so on a
// framebuffer object any index but 0 is refused with GL_INVALID_OPERATION.
void specifyDrawBuffer(unsigned index) {
    const GLenum buffer = GL_COLOR_ATTACHMENT0 + index;
    glDrawBuffers(1, &buffer);
}

void attachTexture(Texture& tex, unsigned colorIndex, int level) {
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + colorIndex, tex.opts.target,
                           tex.id, level);
}

void attachCubemapTexture(Texture& tex, unsigned colorIndex, unsigned face, int level) {
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + colorIndex,
                           GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, tex.id, level);
}

bool isDepthExist(const FrameBuffer& fb) {
    return fb.depthTex.id != 0 || fb.depthRenderBuffer.id != 0;
}

bool isStencilExist(const FrameBuffer& fb) {
    if (isExist(fb.depthTex) && fb.depthTex.opts.format == GL_DEPTH_STENCIL) return true;
    return isExist(fb.depthRenderBuffer) &&
           isDepthStencilFormat(fb.depthRenderBuffer.opts.internalFormat);
}

// Clears whatever the buffer has: colour, and depth and stencil when present.
// The bound buffer stays bound; another binding is restored afterwards.
void clearFrameBuffer(FrameBuffer& fb, const glm::vec4& colour) {
    PM_ASSERT(isExist(fb));
    const bool bound = bindFrameBuffer(fb);
    clearBuffer(colour, isDepthExist(fb), isStencilExist(fb));
    if (bound) unbindFrameBuffer(fb);
}

void clearBuffer(const glm::vec4& colour, bool depth, bool stencil) {
    glClearColor(colour.r, colour.g, colour.b, colour.a);
    GLbitfield mask = GL_COLOR_BUFFER_BIT;
    if (depth) mask |= GL_DEPTH_BUFFER_BIT;
    if (stencil) mask |= GL_STENCIL_BUFFER_BIT;
    glClear(mask);
}

}  // namespace pmGL
