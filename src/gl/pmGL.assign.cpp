// Adoption of a 2D texture name that GL already knows: the record learns its
// size and formats from the caller and its sampling parameters from GL.
#include "pmGL.h"

namespace pmGL {

namespace {

// The sized internal format of each (format, type) pair the layer adopts; a
// pair outside the table is logged and gives 0.
int getSizedInternalFormat_UNSIGNED_BYTE(unsigned format) {
    switch (format) {
        case GL_RED:
            return GL_R8;
        case GL_RG:
            return GL_RG8;
        case GL_RGB:
            return GL_RGB8;
        case GL_RGBA:
            return GL_RGBA8;
        default:
            PM_LOGE("Unsupported format: %d\n", format);
            return 0;
    }
}

int getSizedInternalFormat_UNSIGNED_SHORT(unsigned format) {
    if (format == GL_DEPTH_COMPONENT) return GL_DEPTH_COMPONENT16;
    PM_LOGE("Unsupported format: %d\n", format);
    return 0;
}

// Float data of either precision is kept as half floats.
int getSizedInternalFormat_FLOAT(unsigned format) {
    switch (format) {
        case GL_RED:
            return GL_R16F;
        case GL_RG:
            return GL_RG16F;
        case GL_RGB:
            return GL_RGB16F;
        case GL_RGBA:
            return GL_RGBA16F;
        default:
            PM_LOGE("Unsupported format: %d\n", format);
            return 0;
    }
}

int getSizedInternalFormat_UNSIGNED_INT_24_8(unsigned format) {
    if (format == GL_DEPTH_STENCIL) return GL_DEPTH24_STENCIL8;
    PM_LOGE("Unsupported format: %d\n", format);
    return 0;
}

int getSizedInternalFormat(unsigned format, unsigned type) {
    switch (type) {
        case GL_UNSIGNED_BYTE:
            return getSizedInternalFormat_UNSIGNED_BYTE(format);
        case GL_UNSIGNED_SHORT:
            return getSizedInternalFormat_UNSIGNED_SHORT(format);
        case GL_FLOAT:
        case GL_HALF_FLOAT:
            return getSizedInternalFormat_FLOAT(format);
        case GL_UNSIGNED_INT_24_8:
            return getSizedInternalFormat_UNSIGNED_INT_24_8(format);
        default:
            PM_LOGE("Unsupported type: %d\n", type);
            return 0;
    }
}

int getTextureParameter(GLenum name) {
    GLint value = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    return value;
}

}  // namespace

// Whatever the record held before is not deleted: the caller owns both names.
bool assignTexture(Texture& tex, unsigned id, int width, int height, unsigned format,
                   unsigned type) {
    glBindTexture(GL_TEXTURE_2D, id);
    const bool bound = checkError();
    if (!bound) return false;
    tex.id = id;
    tex.width = width;
    tex.height = height;
    TextureOpts& opts = tex.opts;
    opts.target = GL_TEXTURE_2D;
    opts.format = format;
    opts.type = type;
    opts.internalFormat = getSizedInternalFormat(format, type);
    opts.minFilter = getTextureParameter(GL_TEXTURE_MIN_FILTER);
    opts.magFilter = getTextureParameter(GL_TEXTURE_MAG_FILTER);
    opts.wrapS = getTextureParameter(GL_TEXTURE_WRAP_S);
    opts.wrapT = getTextureParameter(GL_TEXTURE_WRAP_T);
    opts.wrapR = getTextureParameter(GL_TEXTURE_WRAP_R);
    glBindTexture(GL_TEXTURE_2D, 0);
    return bound;
}

}  // namespace pmGL
