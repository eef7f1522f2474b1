// Counts the buffer and attribute calls that the vertex, uniform buffer and
// extension functions make, and can stand in for the driver's extension list.
// The test program defines these entry points itself; each forwards to the
// driver's own unless a fake list is set.
#ifndef PIXMORA_TESTS_GL_VERTEXCALLSPY_H
#define PIXMORA_TESTS_GL_VERTEXCALLSPY_H

#include <GLES3/gl3.h>

#include <string>
#include <vector>

struct VertexCallCounts {
    int bindBuffer = 0;
    int bufferData = 0;
    int bufferSubData = 0;
    int bindBufferBase = 0;
    int vertexAttribDivisor = 0;
    int vertexAttribPointer = 0;
    int enableVertexAttribArray = 0;
    int disableVertexAttribArray = 0;
    // The `usage` of the last glBufferData per target.
    GLenum lastArrayUsage = 0;
    GLenum lastElementUsage = 0;
    // The `normalized` flag of the last glVertexAttribPointer.
    GLboolean lastNormalized = GL_FALSE;
};

VertexCallCounts& vertexCallCounts();
void resetVertexCallCounts();

// While set, glGetStringi(GL_EXTENSIONS, i) answers from this list; an entry of
// nullptr, and every index past the list, reads as a null string. The count
// stays the driver's.
void setFakeExtensions(const std::vector<const char*>& names);
void clearFakeExtensions();

#endif
