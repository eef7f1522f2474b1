// Uniform buffers: storage for a program's uniform blocks, tied to the blocks
// through binding points.
#include "pmGL.h"

namespace pmGL {

void createUniformBuffer(UniformBuffer& ub, int size, unsigned usage) {
    deleteUniformBuffer(ub);
    ub.size = size;
    ub.usage = usage;
    glGenBuffers(1, &ub.id);
    glBindBuffer(GL_UNIFORM_BUFFER, ub.id);
    glBufferData(GL_UNIFORM_BUFFER, size, nullptr, usage);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    checkError();
}

void createUniformBuffer(UniformBuffer& ub, const Program& program, const char* blockName,
                         int bindingPoint, unsigned usage) {
    createUniformBuffer(ub, getUniformBlockSize(program, blockName), usage);
    bindUniformBlock(program, blockName, static_cast<unsigned>(bindingPoint));
    bindUniformBuffer(ub, static_cast<unsigned>(bindingPoint));
}

void createUniformBuffer(UniformBuffer& ub, const Program& program, const std::string& blockName,
                         int bindingPoint, unsigned usage) {
    createUniformBuffer(ub, program, blockName.c_str(), bindingPoint, usage);
}

// The record remembers its point, so binding it again there costs no GL call.
// A new buffer counts as bound at point 0 without ever having been bound.
void bindUniformBuffer(UniformBuffer& ub, unsigned bindingPoint) {
    if (ub.bindingPoint == bindingPoint) return;
    ub.bindingPoint = bindingPoint;
    glBindBufferBase(GL_UNIFORM_BUFFER, bindingPoint, ub.id);
    checkError();
}

void updateUniformBuffer(UniformBuffer& ub, int offset, int size, const void* data) {
    PM_ASSERT(isExist(ub));
    glBindBuffer(GL_UNIFORM_BUFFER, ub.id);
    glBufferSubData(GL_UNIFORM_BUFFER, offset, size, data);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    checkError();
}

void updateUniformBuffer(UniformBuffer& ub, const void* data) {
    updateUniformBuffer(ub, 0, ub.size, data);
}

void deleteUniformBuffer(UniformBuffer& ub) {
    if (ub.id == 0) return;
    glDeleteBuffers(1, &ub.id);
    ub.id = 0;
    ub.bindingPoint = 0;
    ub.size = 0;
    checkError();
}

}  // namespace pmGL
