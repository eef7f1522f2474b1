// GL state queries and a plain coloured draw for the framebuffer suites.
#ifndef PIXMORA_TESTS_GL_FRAMEBUFFERTESTHELPERS_H
#define PIXMORA_TESTS_GL_FRAMEBUFFERTESTHELPERS_H

#include <cstdint>
#include <vector>

#include "GLTestHelpers.h"
#include "pmGL.h"

namespace fbtest {

inline std::vector<GLint> viewport() {
    std::vector<GLint> values(4);
    glGetIntegerv(GL_VIEWPORT, values.data());
    return values;
}

// A parameter of an attachment of framebuffer `fbo`; the binding is restored.
inline GLint attachmentParameter(GLuint fbo, GLenum attachment, GLenum name) {
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    GLint value = 0;
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, attachment, name, &value);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
    return value;
}

inline GLint attachedName(GLuint fbo, GLenum attachment) {
    return attachmentParameter(fbo, attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME);
}

inline GLint attachedType(GLuint fbo, GLenum attachment) {
    return attachmentParameter(fbo, attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE);
}

// A parameter of render buffer `id`; leaves GL_RENDERBUFFER unbound.
inline GLint renderbufferParameter(GLuint id, GLenum name) {
    glBindRenderbuffer(GL_RENDERBUFFER, id);
    GLint value = 0;
    glGetRenderbufferParameteriv(GL_RENDERBUFFER, name, &value);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    return value;
}

inline GLenum status(GLuint fbo) {
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    const GLenum result = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
    return result;
}

inline GLint drawBuffer(GLuint fbo, int index) {
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    GLint value = 0;
    glGetIntegerv(GL_DRAW_BUFFER0 + index, &value);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
    return value;
}

inline void clearGLErrors() {
    while (glGetError() != GL_NO_ERROR) {
    }
}

// Draws a full-viewport quad of one colour at depth 0.5 (z 0) into the bound
// framebuffer, under whatever depth and stencil state is set.
inline bool drawColor(float r, float g, float b, float a) {
    pmGL::Program prog;
    if (!pmGL::createProgram(prog, gltest::QUAD_VERTEX_SHADER, gltest::COLOR_FRAGMENT_SHADER))
        return false;
    pmGL::VertexBuffer vb;
    gltest::createFullQuad(vb);
    pmGL::VertexArray va;
    pmGL::createVertexArray(va, vb, prog);
    pmGL::useProgram(prog);
    glUniform4f(pmGL::getUniformLocation(prog, "uColor"), r, g, b, a);
    pmGL::drawVertexArray(va, 1);
    glUseProgram(0);
    pmGL::deleteVertexArray(va);
    pmGL::deleteVertexBuffer(vb);
    pmGL::deleteProgram(prog);
    return true;
}

// `count` pixels of one RGBA byte colour.
inline std::vector<std::uint8_t> solid(std::size_t count, std::uint8_t r, std::uint8_t g,
                                       std::uint8_t b, std::uint8_t a) {
    std::vector<std::uint8_t> pixels;
    for (std::size_t i = 0; i < count; ++i) pixels.insert(pixels.end(), {r, g, b, a});
    return pixels;
}

}  // namespace fbtest

#endif
