// Shaders, a full-target quad and read-back helpers shared by the pmGL suites.
#ifndef PIXMORA_TESTS_GL_GLTESTHELPERS_H
#define PIXMORA_TESTS_GL_GLTESTHELPERS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "pmGL.h"

namespace gltest {

constexpr const char* QUAD_VERTEX_SHADER = R"(#version 300 es
in vec3 aPosition;
in vec2 aTexCoord;
out vec2 vTexCoord;
void main() {
    vTexCoord = aTexCoord;
    gl_Position = vec4(aPosition, 1.0);
})";

constexpr const char* TEXTURE_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform sampler2D uTexture;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = texture(uTexture, vTexCoord);
})";

constexpr const char* COLOR_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform vec4 uColor;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = uColor + vec4(vTexCoord, 0.0, 0.0) * 0.0;
})";

// Samples an external (EGLImage) texture.
constexpr const char* EXTERNAL_TEXTURE_FRAGMENT_SHADER = R"(#version 300 es
#extension GL_OES_EGL_image_external_essl3 : require
precision highp float;
uniform samplerExternalOES uTexture;
in vec2 vTexCoord;
out vec4 fragColor;
void main() {
    fragColor = texture(uTexture, vTexCoord);
})";

// Six columns across the target, one per cube face in GL's order (+X, -X, +Y,
// -Y, +Z, -Z), each sampling its face straight at the centre.
constexpr const char* CUBEMAP_FACES_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform samplerCube uTexture;
in vec2 vTexCoord;
out vec4 fragColor;
const vec3 directions[6] = vec3[6](vec3(1.0, 0.0, 0.0), vec3(-1.0, 0.0, 0.0),
                                   vec3(0.0, 1.0, 0.0), vec3(0.0, -1.0, 0.0),
                                   vec3(0.0, 0.0, 1.0), vec3(0.0, 0.0, -1.0));
void main() {
    fragColor = texture(uTexture, directions[int(vTexCoord.x * 6.0)]);
})";

struct QuadVertex {
    float position[3];
    float texCoord[2];
};

inline std::vector<pmGL::VertexAttribute> quadAttributes() {
    pmGL::VertexAttribute position;
    position.type = GL_FLOAT;
    position.size = 3;
    position.stride = sizeof(QuadVertex);
    position.offset = offsetof(QuadVertex, position);
    position.name = "aPosition";
    pmGL::VertexAttribute texCoord = position;
    texCoord.size = 2;
    texCoord.offset = offsetof(QuadVertex, texCoord);
    texCoord.name = "aTexCoord";
    return {position, texCoord};
}

// The whole target as a triangle strip, texture coordinate (0, 0) at the
// bottom left, so a texture drawn 1:1 reads back row for row.
inline std::vector<QuadVertex> fullQuad() {
    return {{{-1.f, -1.f, 0.f}, {0.f, 0.f}},
            {{1.f, -1.f, 0.f}, {1.f, 0.f}},
            {{-1.f, 1.f, 0.f}, {0.f, 1.f}},
            {{1.f, 1.f, 0.f}, {1.f, 1.f}}};
}

inline void createFullQuad(pmGL::VertexBuffer& vb) {
    const std::vector<QuadVertex> quad = fullQuad();
    pmGL::createVertexBuffer(vb, sizeof(QuadVertex), quad.size(), quad.data(), GL_STATIC_DRAW,
                             GL_TRIANGLE_STRIP, quadAttributes());
}

// Draws `tex`, bound to unit 0 as `uTexture` of `fragmentShader`, over the
// whole viewport of the bound framebuffer. False when the program fails.
inline bool drawTexture(const pmGL::Texture& tex, const char* fragmentShader) {
    pmGL::Program prog;
    if (!pmGL::createProgram(prog, QUAD_VERTEX_SHADER, fragmentShader)) return false;
    pmGL::VertexBuffer vb;
    createFullQuad(vb);
    pmGL::VertexArray va;
    pmGL::createVertexArray(va, vb, prog);
    pmGL::useProgram(prog);
    pmGL::bindTexture(tex, 0);
    glUniform1i(pmGL::getUniformLocation(prog, "uTexture"), 0);
    pmGL::drawVertexArray(va, 1);
    glBindTexture(tex.opts.target, 0);
    glUseProgram(0);
    pmGL::deleteVertexArray(va);
    pmGL::deleteVertexBuffer(vb);
    pmGL::deleteProgram(prog);
    return true;
}

// Reads level 0 of a colour-renderable 2D texture as RGBA bytes, bottom row
// first, through a framebuffer of its own; the bindings are restored.
inline std::vector<std::uint8_t> readTextureRGBA(GLuint texture, int width, int height) {
    GLint previousRead = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &previousRead);
    GLuint fbo = 0;
    glGenFramebuffers(1, &fbo);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, fbo);
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * height * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(previousRead));
    glDeleteFramebuffers(1, &fbo);
    return pixels;
}

// Widens tightly packed pixels of `channels` to RGBA as GL reads them back:
// missing colour channels 0, missing alpha 255.
inline std::vector<std::uint8_t> expandToRGBA(const std::vector<std::uint8_t>& pixels,
                                              int channels) {
    std::vector<std::uint8_t> rgba;
    for (std::size_t i = 0; i < pixels.size(); i += channels) {
        for (int c = 0; c < 4; ++c) {
            const bool present = c < channels;
            rgba.push_back(present ? pixels[i + c] : (c == 3 ? 255 : 0));
        }
    }
    return rgba;
}

inline GLint getInteger(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

inline GLint getTexParameter(const pmGL::Texture& tex, GLenum name) {
    GLint value = 0;
    glBindTexture(tex.opts.target, tex.id);
    glGetTexParameteriv(tex.opts.target, name, &value);
    glBindTexture(tex.opts.target, 0);
    return value;
}

}  // namespace gltest

#endif
