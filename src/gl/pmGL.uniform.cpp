// Uniform data: named values of a pass, pushed to the current program before a
// draw. A texture's unit is its position in the name-ordered texture map.
#include "pmGL.h"

#include <glm/gtc/type_ptr.hpp>

namespace pmGL {

namespace {

void sendValue(GLint location, int value) {
    glUniform1i(location, value);
}
void sendValue(GLint location, float value) {
    glUniform1f(location, value);
}
void sendValue(GLint location, const glm::vec2& value) {
    glUniform2fv(location, 1, glm::value_ptr(value));
}
void sendValue(GLint location, const glm::vec3& value) {
    glUniform3fv(location, 1, glm::value_ptr(value));
}
void sendValue(GLint location, const glm::vec4& value) {
    glUniform4fv(location, 1, glm::value_ptr(value));
}
void sendValue(GLint location, const glm::mat2& value) {
    glUniformMatrix2fv(location, 1, GL_FALSE, glm::value_ptr(value));
}
void sendValue(GLint location, const glm::mat3& value) {
    glUniformMatrix3fv(location, 1, GL_FALSE, glm::value_ptr(value));
}
void sendValue(GLint location, const glm::mat4& value) {
    glUniformMatrix4fv(location, 1, GL_FALSE, glm::value_ptr(value));
}

template <typename Value, typename Locate>
void sendMap(const std::map<std::string, Value>& values, Locate locate) {
    for (const auto& entry : values) sendValue(locate(entry.first), entry.second);
}

// Sends every value in the maps' declared order; `locate` turns a name into a
// location of the program that receives them.
template <typename Locate>
void sendAll(const UniformData& data, Locate locate) {
    int unit = 0;
    for (const auto& entry : data.textures) sendValue(locate(entry.first), unit++);
    sendMap(data.ints, locate);
    sendMap(data.floats, locate);
    sendMap(data.vec2s, locate);
    sendMap(data.vec3s, locate);
    sendMap(data.vec4s, locate);
    sendMap(data.mat2s, locate);
    sendMap(data.mat3s, locate);
    sendMap(data.mat4s, locate);
}

template <typename Value>
bool sendNamed(const std::map<std::string, Value>& values, const Program& prog,
               const std::string& name) {
    const auto found = values.find(name);
    if (found == values.end()) return false;
    sendValue(getUniformLocation(prog, name), found->second);
    return true;
}

// Finds the unit of `name`, or -1 when it is no texture of `data`.
int textureUnit(const UniformData& data, const std::string& name) {
    int unit = 0;
    for (const auto& entry : data.textures) {
        if (entry.first == name) return unit;
        ++unit;
    }
    return -1;
}

}  // namespace

void setUniformData(UniformData& data, const std::string& name, const Texture& value) {
    data.textures[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, int value) {
    data.ints[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, float value) {
    data.floats[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, const glm::vec2& value) {
    data.vec2s[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, const glm::vec3& value) {
    data.vec3s[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, const glm::vec4& value) {
    data.vec4s[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, const glm::mat2& value) {
    data.mat2s[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, const glm::mat3& value) {
    data.mat3s[name] = value;
}
void setUniformData(UniformData& data, const std::string& name, const glm::mat4& value) {
    data.mat4s[name] = value;
}

// Removes `name` from the first map holding it, in a fixed order; a name set as
// two kinds needs two calls.
void unsetUniformData(UniformData& data, const std::string& name) {
    if (data.textures.erase(name) > 0) return;
    if (data.mat4s.erase(name) > 0) return;
    if (data.floats.erase(name) > 0) return;
    if (data.ints.erase(name) > 0) return;
    if (data.vec2s.erase(name) > 0) return;
    if (data.vec3s.erase(name) > 0) return;
    if (data.vec4s.erase(name) > 0) return;
    if (data.mat2s.erase(name) > 0) return;
    data.mat3s.erase(name);
}

void clearUniformData(UniformData& data) {
    data.textures.clear();
    data.ints.clear();
    data.floats.clear();
    data.vec2s.clear();
    data.vec3s.clear();
    data.vec4s.clear();
    data.mat2s.clear();
    data.mat3s.clear();
    data.mat4s.clear();
}

// Asks GL for every location: one query per value per call.
void useUniformData(const UniformData& data) {
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    if (current == 0) return;
    const unsigned program = static_cast<unsigned>(current);
    sendAll(data, [program](const std::string& name) { return getUniformLocation(program, name); });
    checkError();
}

// Locations come from the cache of `prog`; they reach whatever program is
// current, which the assertion expects to be `prog`.
void useUniformData(const UniformData& data, const Program& prog) {
    PM_ASSERT(isCurrentProgram(prog));
    sendAll(data, [&prog](const std::string& name) { return getUniformLocation(prog, name); });
    checkError();
}

void useUniformData(const UniformData& data, const Program& prog, const std::string& name) {
    PM_ASSERT(isCurrentProgram(prog));
    const int unit = textureUnit(data, name);
    if (unit >= 0) {
        uniform<int>(prog, name, unit);
    } else if (!sendNamed(data.mat4s, prog, name) && !sendNamed(data.floats, prog, name) &&
               !sendNamed(data.ints, prog, name) && !sendNamed(data.vec2s, prog, name) &&
               !sendNamed(data.vec3s, prog, name) && !sendNamed(data.vec4s, prog, name) &&
               !sendNamed(data.mat2s, prog, name)) {
        sendNamed(data.mat3s, prog, name);
    }
    checkError();
}

bool isUniformData(const UniformData& data, const std::string& name) {
    return data.textures.count(name) > 0 || data.ints.count(name) > 0 ||
           data.floats.count(name) > 0 || data.vec2s.count(name) > 0 ||
           data.vec3s.count(name) > 0 || data.vec4s.count(name) > 0 || data.mat2s.count(name) > 0 ||
           data.mat3s.count(name) > 0 || data.mat4s.count(name) > 0;
}

void bindTexture(const UniformData& data) {
    int unit = 0;
    for (const auto& entry : data.textures) bindTexture(entry.second, unit++);
}

}  // namespace pmGL
