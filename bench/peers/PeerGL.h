// Plain GLES plumbing of the peer blurs: programs from fragment text, one
// full-target quad, colour targets of any format. Every object is made once,
// outside the timed frames.
#ifndef PIXMORA_BENCH_PEERS_PEERGL_H
#define PIXMORA_BENCH_PEERS_PEERGL_H

#include <GLES3/gl3.h>

#include <string>

namespace peer {

// Links the shared vertex stage (vTexCoord over the unit square) with
// `fragment`; 0 on failure, with the log on stderr.
GLuint buildProgram(const std::string& fragment);

// Draws the unit quad with whatever program is in use.
void drawQuad();

struct Target {
    GLuint texture = 0;
    GLuint framebuffer = 0;
    int width = 0;
    int height = 0;
};

Target makeTarget(int width, int height, GLenum internalFormat);
void deleteTarget(Target& target);
void bindTarget(const Target& target);
void bindSampler(GLuint program, const char* name, int unit, GLuint texture);

}  // namespace peer

#endif
