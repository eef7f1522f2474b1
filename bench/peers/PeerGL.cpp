// Plain GLES plumbing of the peer blurs.
#include "PeerGL.h"

#include <cstdio>

namespace peer {

namespace {

const char* const vertexSource = R"(#version 300 es
const vec2 corners[4] = vec2[](vec2(0.0, 0.0), vec2(1.0, 0.0), vec2(0.0, 1.0), vec2(1.0, 1.0));
out vec2 vTexCoord;
void main() {
    vTexCoord = corners[gl_VertexID];
    gl_Position = vec4(corners[gl_VertexID] * 2.0 - 1.0, 0.0, 1.0);
}
)";

GLuint compile(GLenum stage, const char* source) {
    const GLuint shader = glCreateShader(stage);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint ok = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (!ok) {
        char log[2048];
        glGetShaderInfoLog(shader, sizeof(log), nullptr, log);
        std::fprintf(stderr, "peer shader: %s\n", log);
    }
    return shader;
}

GLuint emptyVertexArray() {
    static GLuint array = 0;
    if (array == 0) glGenVertexArrays(1, &array);
    return array;
}

}  // namespace

GLuint buildProgram(const std::string& fragment) {
    const GLuint program = glCreateProgram();
    const GLuint vs = compile(GL_VERTEX_SHADER, vertexSource);
    const GLuint fs = compile(GL_FRAGMENT_SHADER, fragment.c_str());
    glAttachShader(program, vs);
    glAttachShader(program, fs);
    glLinkProgram(program);
    glDeleteShader(vs);
    glDeleteShader(fs);
    GLint ok = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (!ok) {
        std::fprintf(stderr, "peer program did not link\n");
        glDeleteProgram(program);
        return 0;
    }
    return program;
}

void drawQuad() {
    glBindVertexArray(emptyVertexArray());
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glBindVertexArray(0);
}

Target makeTarget(int width, int height, GLenum internalFormat) {
    Target target;
    target.width = width;
    target.height = height;
    glGenTextures(1, &target.texture);
    glBindTexture(GL_TEXTURE_2D, target.texture);
    glTexStorage2D(GL_TEXTURE_2D, 1, internalFormat, width, height);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glGenFramebuffers(1, &target.framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target.texture, 0);
    return target;
}

void deleteTarget(Target& target) {
    glDeleteFramebuffers(1, &target.framebuffer);
    glDeleteTextures(1, &target.texture);
    target = Target();
}

void bindTarget(const Target& target) {
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glViewport(0, 0, target.width, target.height);
}

void bindSampler(GLuint program, const char* name, int unit, GLuint texture) {
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, texture);
    glUniform1i(glGetUniformLocation(program, name), unit);
}

}  // namespace peer
