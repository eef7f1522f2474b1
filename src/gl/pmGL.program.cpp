// Shaders, programs and the reflection cache of a linked program.
#include "pmGL.h"

namespace pmGL {

namespace {

// GL cuts longer active names to fit this buffer.
constexpr GLsizei MAX_ACTIVE_NAME_LENGTH = 511;

enum class InfoLogOwner { Shader, Program };

GLint readInfoLogLength(GLuint object, InfoLogOwner owner) {
    GLint length = 0;
    if (owner == InfoLogOwner::Shader) {
        glGetShaderiv(object, GL_INFO_LOG_LENGTH, &length);
    } else {
        glGetProgramiv(object, GL_INFO_LOG_LENGTH, &length);
    }
    return length;
}

// Logs the compile or link log of `object`; a log of one byte or none holds no
// text and prints nothing. A failed allocation prints the message with no text.
void printError(GLuint object, InfoLogOwner owner) {
    const GLint length = readInfoLogLength(object, owner);
    if (length <= 1) return;
    char* text = pmUtil::safeNewArray<char>(static_cast<std::size_t>(length));
    if (text != nullptr) {
        if (owner == InfoLogOwner::Shader) {
            glGetShaderInfoLog(object, length, nullptr, text);
        } else {
            glGetProgramInfoLog(object, length, nullptr, text);
        }
    }
    const char* shown = text != nullptr ? text : "";
    if (owner == InfoLogOwner::Shader) {
        PM_LOGE("Compile Error for a shader Object:\n%s\n", shown);
    } else {
        PM_LOGE("Link Error for a Program Object:\n%s\n", shown);
    }
    delete[] text;
}

}  // namespace

unsigned createShader(const char* source, unsigned type) {
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint status = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
    if (status == GL_TRUE) {
        checkError();
        return shader;
    }
    printError(shader, InfoLogOwner::Shader);
    PM_LOGE("Print a shader source:\n%s\n", source);
    glDeleteShader(shader);
    return 0;
}

// Both shaders are always compiled so that both report their errors. When only
// one compiles it is not deleted; callers go by the result alone.
bool createProgram(unsigned& id, const char* vertexSource, const char* fragmentSource) {
    const unsigned vertexShader = createShader(vertexSource, GL_VERTEX_SHADER);
    const unsigned fragmentShader = createShader(fragmentSource, GL_FRAGMENT_SHADER);
    if (vertexShader == 0 || fragmentShader == 0) {
        id = 0;
        return false;
    }
    id = glCreateProgram();
    glAttachShader(id, vertexShader);
    glAttachShader(id, fragmentShader);
    glLinkProgram(id);
    glDeleteShader(vertexShader);
    glDeleteShader(fragmentShader);
    GLint status = GL_FALSE;
    glGetProgramiv(id, GL_LINK_STATUS, &status);
    if (status == GL_TRUE) {
        checkError();
        return true;
    }
    printError(id, InfoLogOwner::Program);
    glDeleteProgram(id);
    return false;
}

bool createProgram(unsigned& id, const std::string& vertexSource,
                   const std::string& fragmentSource) {
    return createProgram(id, vertexSource.c_str(), fragmentSource.c_str());
}

bool createProgram(Program& program, const char* vertexSource, const char* fragmentSource) {
    deleteProgram(program);
    if (!createProgram(program.id, vertexSource, fragmentSource)) return false;
    cacheActiveUniforms(program);
    cacheActiveAttribs(program);
    return true;
}

bool createProgram(Program& program, const std::string& vertexSource,
                   const std::string& fragmentSource) {
    return createProgram(program, vertexSource.c_str(), fragmentSource.c_str());
}

void deleteProgram(unsigned& id) {
    if (id == 0) return;
    glDeleteProgram(id);
    id = 0;
}

void deleteProgram(Program& program) {
    if (program.id == 0) return;
    deleteProgram(program.id);
    program.uniforms.clear();
    program.attribs.clear();
}

// There is no unbinding through here: 0 leaves the current program in place.
void useProgram(unsigned id) {
    if (id != 0) glUseProgram(id);
}

void useProgram(const Program& program) {
    useProgram(program.id);
}

bool isCurrentProgram(unsigned id) {
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    return static_cast<unsigned>(current) == id;
}

bool isCurrentProgram(const Program& program) {
    return isCurrentProgram(program.id);
}

// ---- reflection

int getUniformLocation(unsigned program, const char* name) {
    return glGetUniformLocation(program, name);
}

int getUniformLocation(unsigned program, const std::string& name) {
    return getUniformLocation(program, name.c_str());
}

int getUniformLocation(const Program& program, const char* name) {
    for (const Uniform& entry : program.uniforms) {
        if (entry.name == name) return entry.location;
    }
    return -1;
}

int getUniformLocation(const Program& program, const std::string& name) {
    return getUniformLocation(program, name.c_str());
}

int getAttribLocation(unsigned program, const char* name) {
    return glGetAttribLocation(program, name);
}

int getAttribLocation(unsigned program, const std::string& name) {
    return getAttribLocation(program, name.c_str());
}

int getAttribLocation(const Program& program, const char* name) {
    for (const Attribute& entry : program.attribs) {
        if (entry.name == name) return entry.location;
    }
    return -1;
}

int getAttribLocation(const Program& program, const std::string& name) {
    return getAttribLocation(program, name.c_str());
}

void bindUniformBlock(unsigned program, const char* blockName, unsigned bindingPoint) {
    glUniformBlockBinding(program, glGetUniformBlockIndex(program, blockName), bindingPoint);
}

void bindUniformBlock(unsigned program, const std::string& blockName, unsigned bindingPoint) {
    bindUniformBlock(program, blockName.c_str(), bindingPoint);
}

void bindUniformBlock(const Program& program, const char* blockName, unsigned bindingPoint) {
    bindUniformBlock(program.id, blockName, bindingPoint);
}

void bindUniformBlock(const Program& program, const std::string& blockName, unsigned bindingPoint) {
    bindUniformBlock(program.id, blockName.c_str(), bindingPoint);
}

int getUniformBlockSize(unsigned program, const char* blockName) {
    GLint size = 0;
    glGetActiveUniformBlockiv(program, glGetUniformBlockIndex(program, blockName),
                              GL_UNIFORM_BLOCK_DATA_SIZE, &size);
    return size;
}

int getUniformBlockSize(unsigned program, const std::string& blockName) {
    return getUniformBlockSize(program, blockName.c_str());
}

int getUniformBlockSize(const Program& program, const char* blockName) {
    return getUniformBlockSize(program.id, blockName);
}

int getUniformBlockSize(const Program& program, const std::string& blockName) {
    return getUniformBlockSize(program.id, blockName.c_str());
}

// Appends in GL's index order. Uniforms of blocks have no location and are
// left out.
void cacheActiveUniforms(Program& program) {
    GLint count = 0;
    glGetProgramiv(program.id, GL_ACTIVE_UNIFORMS, &count);
    for (GLint index = 0; index < count; ++index) {
        char name[MAX_ACTIVE_NAME_LENGTH + 1] = {};
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(program.id, static_cast<GLuint>(index), MAX_ACTIVE_NAME_LENGTH, nullptr,
                           &size, &type, name);
        const GLint location = glGetUniformLocation(program.id, name);
        if (location >= 0) program.uniforms.push_back({location, size, type, name});
    }
    checkError();
}

void cacheActiveAttribs(Program& program) {
    GLint count = 0;
    glGetProgramiv(program.id, GL_ACTIVE_ATTRIBUTES, &count);
    for (GLint index = 0; index < count; ++index) {
        char name[MAX_ACTIVE_NAME_LENGTH + 1] = {};
        GLint size = 0;
        GLenum type = 0;
        glGetActiveAttrib(program.id, static_cast<GLuint>(index), MAX_ACTIVE_NAME_LENGTH, nullptr,
                          &size, &type, name);
        const GLint location = glGetAttribLocation(program.id, name);
        if (location >= 0) program.attribs.push_back({location, size, type, name});
    }
    checkError();
}

template <>
void uniform<int>(const Program& program, const std::string& name, const int& value) {
    glUniform1i(getUniformLocation(program, name), value);
}

}  // namespace pmGL
