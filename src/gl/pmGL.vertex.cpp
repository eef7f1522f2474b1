// Vertex buffers and the vertex arrays that record their attribute layout for a
// program.
#include "pmGL.h"

namespace pmGL {

void createVertexBuffer(VertexBuffer& vb, std::size_t vertexSize, std::size_t vertexCount,
                        const void* data, unsigned usage, unsigned mode,
                        const std::vector<VertexAttribute>& attributes) {
    PM_ASSERT(vertexSize > 0 && vertexCount > 0);
    // Copied first: `attributes` may be the list that the delete below empties.
    std::vector<VertexAttribute> layout = attributes;
    deleteVertexBuffer(vb);
    glGenBuffers(1, &vb.id);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertexSize * vertexCount), data, usage);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    checkError();
    vb.mode = mode;
    vb.count = static_cast<std::uint32_t>(vertexCount);
    vb.attributes = std::move(layout);
}

// Rewrites the vertices from the start; the count and the index buffer stay.
void updateVertexBuffer(VertexBuffer& vb, std::size_t vertexSize, std::size_t vertexCount,
                        const void* data) {
    if (data == nullptr) return;
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(vertexSize * vertexCount), data);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    checkError();
}

void deleteVertexBuffer(VertexBuffer& vb) {
    if (vb.id != 0) {
        glDeleteBuffers(1, &vb.id);
        vb.id = 0;
        vb.count = 0;
        vb.attributes.clear();
    }
    if (vb.indexId != 0) {
        glDeleteBuffers(1, &vb.indexId);
        vb.indexId = 0;
    }
    checkError();
}

// Attributes the program does not use are skipped without a word: a shared
// vertex format may carry more than a shader reads.
void enableVertexBuffer(const VertexBuffer& vb, const Program& program) {
    PM_ASSERT(isExist(vb));
    if (vb.indexId != 0) glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, vb.indexId);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    for (const VertexAttribute& attribute : vb.attributes) {
        const int location = getAttribLocation(program, attribute.name);
        if (location < 0) continue;
        const GLuint index = static_cast<GLuint>(location);
        glVertexAttribPointer(index, attribute.size, attribute.type,
                              attribute.normalized ? GL_TRUE : GL_FALSE, attribute.stride,
                              reinterpret_cast<const void*>(attribute.offset));
        glEnableVertexAttribArray(index);
    }
    checkError();
}

void createVertexArray(VertexArray& va, const VertexBuffer& vb, const Program& program) {
    PM_ASSERT(vb.mode != PM_INSTANCED_ARRAY);
    deleteVertexArray(va);
    glGenVertexArrays(1, &va.id);
    glBindVertexArray(va.id);
    enableVertexBuffer(vb, program);
    glBindVertexArray(0);
    va.indexed = vb.indexId != 0;
    va.mode = vb.mode;
    va.indexType = vb.indexType;
    va.count = vb.count;
}

void deleteVertexArray(VertexArray& va) {
    if (va.id == 0) return;
    glDeleteVertexArrays(1, &va.id);
    va.id = 0;
    checkError();
}

// Fewer than two instances, 0 included, take the plain draw call once.
void drawVertexArray(const VertexArray& va, std::size_t instanceCount) {
    PM_ASSERT(isExist(va));
    glBindVertexArray(va.id);
    const GLsizei count = static_cast<GLsizei>(va.count);
    if (instanceCount >= 2) {
        const GLsizei instances = static_cast<GLsizei>(instanceCount);
        if (va.indexed) {
            glDrawElementsInstanced(va.mode, count, va.indexType, nullptr, instances);
        } else {
            glDrawArraysInstanced(va.mode, 0, count, instances);
        }
    } else if (va.indexed) {
        glDrawElements(va.mode, count, va.indexType, nullptr);
    } else {
        glDrawArrays(va.mode, 0, count);
    }
    glBindVertexArray(0);
    checkError();
}

}  // namespace pmGL
