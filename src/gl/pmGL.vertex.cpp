// Vertex buffers, plain, indexed and per-instance; the vertex arrays that record
// their attribute layout for a program; drawing from buffers without a vertex
// array and straight from client memory.
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

namespace {

// Points one attribute of the bound array buffer and enables it; the
// attributes of a per-instance buffer advance once per instance.
void pointAttribute(GLuint index, const VertexAttribute& attribute, unsigned mode) {
    glVertexAttribPointer(index, attribute.size, attribute.type,
                          attribute.normalized ? GL_TRUE : GL_FALSE, attribute.stride,
                          reinterpret_cast<const void*>(attribute.offset));
    glEnableVertexAttribArray(index);
    if (mode == PM_INSTANCED_ARRAY) glVertexAttribDivisor(index, 1);
}

// The draw call shared by vertex arrays and buffers: instanced from two
// instances on, by elements when there is an index buffer.
void drawPrimitives(unsigned mode, GLsizei count, bool indexed, unsigned indexType,
                    std::size_t instanceCount) {
    if (instanceCount >= 2) {
        const GLsizei instances = static_cast<GLsizei>(instanceCount);
        if (indexed) {
            glDrawElementsInstanced(mode, count, indexType, nullptr, instances);
        } else {
            glDrawArraysInstanced(mode, 0, count, instances);
        }
    } else if (indexed) {
        glDrawElements(mode, count, indexType, nullptr);
    } else {
        glDrawArrays(mode, 0, count);
    }
}

GLuint currentProgram() {
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    return static_cast<GLuint>(program);
}

// Draws `vb` with the attribute locations given by `locate`, then disables
// those attributes and unbinds the buffers.
template <typename Locate>
void drawBuffer(const VertexBuffer& vb, std::size_t instanceCount, Locate locate) {
    std::vector<GLuint> enabled;
    enabled.reserve(vb.attributes.size());
    PM_ASSERT(isExist(vb));
    if (vb.indexId != 0) glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, vb.indexId);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    for (const VertexAttribute& attribute : vb.attributes) {
        const int location = locate(attribute.name);
        if (location < 0) continue;
        pointAttribute(static_cast<GLuint>(location), attribute, vb.mode);
        enabled.push_back(static_cast<GLuint>(location));
    }
    checkError();
    drawPrimitives(vb.mode, static_cast<GLsizei>(vb.count), vb.indexId != 0, vb.indexType,
                   instanceCount);
    checkError();
    for (GLuint index : enabled) glDisableVertexAttribArray(index);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    checkError();
}

// Attributes point straight into `vertices`; `normalized` is not passed on.
template <typename Locate>
void drawClientMemory(unsigned mode, const std::vector<VertexAttribute>& attributes,
                      std::size_t vertexCount, const void* vertices, std::size_t indexCount,
                      const void* indices, unsigned indexType, bool checkAfterDraw, Locate locate) {
    std::vector<GLuint> enabled;
    enabled.reserve(attributes.size());
    // A bound buffer would turn the client pointers into buffer offsets.
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    if (indexCount != 0) glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    const char* base = static_cast<const char*>(vertices);
    for (const VertexAttribute& attribute : attributes) {
        const int location = locate(attribute.name);
        if (location < 0) continue;
        const GLuint index = static_cast<GLuint>(location);
        glVertexAttribPointer(index, attribute.size, attribute.type, GL_FALSE, attribute.stride,
                              base + attribute.offset);
        glEnableVertexAttribArray(index);
        enabled.push_back(index);
    }
    checkError();
    if (indexCount != 0) {
        glDrawElements(mode, static_cast<GLsizei>(indexCount), indexType, indices);
    } else {
        glDrawArrays(mode, 0, static_cast<GLsizei>(vertexCount));
    }
    if (checkAfterDraw) checkError();
    for (GLuint index : enabled) glDisableVertexAttribArray(index);
    checkError();
}

}  // namespace

void createVertexBuffer(VertexBuffer& vb, std::size_t vertexSize, std::size_t vertexCount,
                        const void* vertices, std::size_t indexSize, std::size_t indexCount,
                        const void* indices, unsigned usage, unsigned mode,
                        const std::vector<VertexAttribute>& attributes) {
    PM_ASSERT(vertexSize > 0 && vertexCount > 0 && indexCount > 0);
    std::vector<VertexAttribute> layout = attributes;
    deleteVertexBuffer(vb);
    glGenBuffers(1, &vb.id);
    glBindBuffer(GL_ARRAY_BUFFER, vb.id);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertexSize * vertexCount), vertices,
                 usage);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    // Indices never change after creation, whatever the vertices do.
    glGenBuffers(1, &vb.indexId);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, vb.indexId);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indexSize * indexCount), indices,
                 GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    checkError();
    vb.count = static_cast<std::uint32_t>(indexCount);
    vb.mode = mode;
    vb.attributes = std::move(layout);
    switch (indexSize) {
        case 1:
            vb.indexType = GL_UNSIGNED_BYTE;
            break;
        case 2:
            vb.indexType = GL_UNSIGNED_SHORT;
            break;
        case 4:
            vb.indexType = GL_UNSIGNED_INT;
            break;
        default:
            PM_LOGE("unknown index size : %zu", indexSize);
            break;
    }
}

bool checkVertexBuffer(const VertexBuffer& vb, std::size_t count) {
    return isExist(vb) && static_cast<std::uint32_t>(count) == vb.count;
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
        pointAttribute(static_cast<GLuint>(location), attribute, vb.mode);
    }
    checkError();
}

void enableVertexBuffer(VertexArray& va, const VertexBuffer& vb, const Program& program) {
    glBindVertexArray(va.id);
    enableVertexBuffer(vb, program);
    glBindVertexArray(0);
}

void drawVertexBuffer(const VertexBuffer& vb, std::size_t instanceCount) {
    PM_ASSERT(vb.mode != PM_INSTANCED_ARRAY);
    const GLuint program = currentProgram();
    if (program == 0) return;
    drawBuffer(vb, instanceCount,
               [program](const std::string& name) { return getAttribLocation(program, name); });
}

void drawVertexBuffer(const VertexBuffer& vb, const Program& program, std::size_t instanceCount) {
    PM_ASSERT(vb.mode != PM_INSTANCED_ARRAY);
    drawBuffer(vb, instanceCount,
               [&program](const std::string& name) { return getAttribLocation(program, name); });
}

void drawImmediate(unsigned mode, const std::vector<VertexAttribute>& attributes,
                   std::size_t vertexCount, const void* vertices, std::size_t indexCount,
                   const void* indices, unsigned indexType) {
    const GLuint program = currentProgram();
    if (program == 0) return;
    drawClientMemory(
        mode, attributes, vertexCount, vertices, indexCount, indices, indexType, false,
        [program](const std::string& name) { return getAttribLocation(program, name); });
}

void drawImmediate(const Program& program, unsigned mode,
                   const std::vector<VertexAttribute>& attributes, std::size_t vertexCount,
                   const void* vertices, std::size_t indexCount, const void* indices,
                   unsigned indexType) {
    drawClientMemory(
        mode, attributes, vertexCount, vertices, indexCount, indices, indexType, true,
        [&program](const std::string& name) { return getAttribLocation(program, name); });
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
    drawPrimitives(va.mode, static_cast<GLsizei>(va.count), va.indexed, va.indexType,
                   instanceCount);
    glBindVertexArray(0);
    checkError();
}

}  // namespace pmGL
