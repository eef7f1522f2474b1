// Error flags and the format tables shared by the texture and framebuffer code.
#include "pmGL.h"

namespace pmGL {

const unsigned TEX_DATA_FORMAT_8U[TEX_FORMAT_SIZE] = {0, GL_RED, GL_RG, GL_RGB, GL_RGBA};
const unsigned TEX_DATA_FORMAT_16F[TEX_FORMAT_SIZE] = {0, GL_RED, GL_RG, GL_RGB, GL_RGBA};
const int TEX_INTERNAL_FORMAT_8U[TEX_FORMAT_SIZE] = {0, GL_R8, GL_RG8, GL_RGB8, GL_RGBA8};
const int TEX_INTERNAL_FORMAT_16F[TEX_FORMAT_SIZE] = {0, GL_R16F, GL_RG16F, GL_RGB16F, GL_RGBA16F};

namespace {

const char* glErrorFlagName(GLenum flag) {
    switch (flag) {
        case GL_INVALID_ENUM:
            return "GL_INVALID_ENUM";
        case GL_INVALID_VALUE:
            return "GL_INVALID_VALUE";
        case GL_INVALID_OPERATION:
            return "GL_INVALID_OPERATION";
        case GL_OUT_OF_MEMORY:
            return "GL_OUT_OF_MEMORY";
        case GL_INVALID_FRAMEBUFFER_OPERATION:
            return "GL_INVALID_FRAMEBUFFER_OPERATION";
        default:
            return "UNKNOWN";
    }
}

}  // namespace

// Takes at most one pending flag per call, so a caller sees the first failure
// of its own sequence and the rest stay for the next check.
bool checkError() {
    const GLenum flag = glGetError();
    if (flag == GL_NO_ERROR) return true;
    PM_LOGE("GL error flag set: %s\n", glErrorFlagName(flag));
    return false;
}

}  // namespace pmGL
