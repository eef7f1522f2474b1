// Framebuffers with colour textures: creation, binding with the caller's state
// saved, update, read-back and deletion.
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

// Keeps width, height and options, as a render buffer record is reused alike.
void releaseRenderBuffer(RenderBuffer& buffer) {
    if (buffer.id == 0) return;
    glDeleteRenderbuffers(1, &buffer.id);
    buffer.id = 0;
}

void attachColorTextures(FrameBuffer& fb, const std::vector<void*>& colorData,
                         const TextureOpts& opts) {
    fb.colorTex.resize(colorData.size());
    for (std::size_t i = 0; i < colorData.size(); ++i) {
        Texture& tex = fb.colorTex[i];
        createTexture(tex, fb.width, fb.height, colorData[i], opts);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(i),
                               tex.opts.target, tex.id, 0);
    }
}

// The common form: one colour texture per data pointer, all with `opts`, which
// is taken by value since it may come from the record being rebuilt.
void createFrameBuffer(FrameBuffer& fb, int width, int height, const std::vector<void*>& colorData,
                       TextureOpts opts) {
    deleteFrameBuffer(fb);
    fb.width = width;
    fb.height = height;
    glGenFramebuffers(1, &fb.id);
    const bool ret = bindFrameBuffer(fb);
    PM_ASSERT(ret);
    attachColorTextures(fb, colorData, opts);
    specifyDrawBuffers(static_cast<int>(colorData.size()));
    checkFrameBufferStatus();
    unbindFrameBuffer(fb);
    checkError();
}

}  // namespace

// Depth and stencil attachments are made by render buffers; the filters of this
// layer ask for neither, so both flags are accepted and not acted on here.
void createFrameBuffer(FrameBuffer& fb, int width, int height, const TextureOpts& opts,
                       int colorCount, bool /*depth*/, bool /*stencil*/) {
    const std::vector<void*> colorData(static_cast<std::size_t>(colorCount), nullptr);
    createFrameBuffer(fb, width, height, colorData, opts);
}

// Every colour texture starts with the image's pixels. `samples` matters only
// to multisampled buffers, which are not made here.
void createFrameBuffer(FrameBuffer& fb, const ImageData<unsigned char>& image,
                       const TextureOpts& opts, int colorCount, bool /*depth*/, bool /*stencil*/,
                       int /*samples*/) {
    TextureOpts imageOpts = opts;
    updateTextureOpts(imageOpts, image);
    const std::vector<void*> colorData(static_cast<std::size_t>(colorCount), image.data);
    createFrameBuffer(fb, image.getWidth(), image.getHeight(), colorData, imageOpts);
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
    for (RenderBuffer& buffer : fb.colorRenderBuffer) releaseRenderBuffer(buffer);
    releaseRenderBuffer(fb.depthRenderBuffer);
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

void specifyDrawBuffers(int count) {
    if (count <= 0) {
        glDrawBuffers(0, nullptr);
        return;
    }
    std::vector<GLenum> buffers(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) buffers[i] = GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(i);
    glDrawBuffers(count, buffers.data());
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

}  // namespace pmGL
