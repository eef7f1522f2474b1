// 2D textures: creation, upload, mipmaps and the format tables' look-ups.
#include "pmGL.h"
#include "pmGL.sampling.h"

namespace pmGL {

using sampling::generateMipmapIfSampled;
using sampling::isMipmapFilter;
using sampling::withMipmap;
using sampling::withoutMipmap;

namespace {

template <typename T>
T tableEntry(const T (&table)[TEX_FORMAT_SIZE], int channel) {
    if (channel < 0 || channel >= TEX_FORMAT_SIZE) return 0;
    return table[channel];
}

int componentSize(unsigned type) {
    switch (type) {
        case GL_UNSIGNED_BYTE:
            return 1;
        case GL_UNSIGNED_SHORT:
            return 2;
        case GL_FLOAT:
        case GL_UNSIGNED_INT_24_8:
            return 4;
        default:
            return 0;
    }
}

template <typename T>
bool isEqualImageFormat(const Texture& tex, const ImageData<T>& image, unsigned type) {
    const int channel = image.getChannel();
    return tex.opts.type == type &&
           static_cast<unsigned>(tex.opts.internalFormat) ==
               getTextureInternalFormat(channel, type) &&
           tex.opts.format == getTextureFormat(channel, type);
}

}  // namespace

void setUnpackAlignment(int width, int texelSize) {
    // Wide enough for any stored width: a refused size may still be recorded.
    const long long rowBytes = static_cast<long long>(width) * texelSize;
    glPixelStorei(GL_UNPACK_ALIGNMENT, rowBytes % 4 == 0 ? 4 : 1);
}

void createTexture(Texture& tex, int width, int height, void* pixels, const TextureOpts& opts) {
    if (width < 1 || height < 1) {
        PM_LOGE("Invalid texture size = (%d, %d).", width, height);
        return;
    }
    deleteTexture(tex);
    glGenTextures(1, &tex.id);
    if (tex.id == 0) {
        PM_LOGE("No texture was made: no GL context is current.");
        return;
    }
    tex.width = width;
    tex.height = height;
    tex.opts = opts;
    TextureOpts& own = tex.opts;
    glBindTexture(own.target, tex.id);
    setUnpackAlignment(width, getTexelSize(own));
    glTexImage2D(own.target, 0, own.internalFormat, width, height, 0, own.format, own.type, pixels);
    if (own.mipmap && pixels == nullptr) {
        // Mipmaps of undefined contents would be useless: sample level 0 only.
        own.mipmap = false;
        own.minFilter = withoutMipmap(own.minFilter);
        PM_LOGE("Disable mipmap because data is nullptr.\n");
    }
    if (own.mipmap) own.minFilter = withMipmap(own.minFilter);
    sampling::applySamplingParameters(own);
    generateMipmapIfSampled(own);
    glBindTexture(own.target, 0);
    checkError();
}

void createTexture(Texture& tex, const ImageData<unsigned char>& image, const TextureOpts& opts) {
    TextureOpts imageOpts = opts;
    updateTextureOpts(imageOpts, image);
    imageOpts.target = GL_TEXTURE_2D;
    createTexture(tex, image.getWidth(), image.getHeight(), image.data, imageOpts);
}

void createTexture(Texture& tex, const ImageData<float>& image, const TextureOpts& opts) {
    TextureOpts imageOpts = opts;
    updateTextureOpts(imageOpts, image);
    imageOpts.target = GL_TEXTURE_2D;
    createTexture(tex, image.getWidth(), image.getHeight(), image.data, imageOpts);
}

// New storage of level 0 in the stored formats: the contents are undefined
// afterwards and the mipmap chain is left as it was.
void resizeTexture(Texture& tex, int width, int height) {
    if (width < 1 || height < 1) {
        PM_LOGE("Invalid texture size = (%d, %d).", width, height);
        return;
    }
    tex.width = width;
    tex.height = height;
    const TextureOpts& opts = tex.opts;
    glBindTexture(opts.target, tex.id);
    setUnpackAlignment(width, getTexelSize(opts));
    glTexImage2D(opts.target, 0, opts.internalFormat, width, height, 0, opts.format, opts.type,
                 nullptr);
    glBindTexture(opts.target, 0);
    checkError();
}

// `opts.internalFormat` names the compressed format; no mipmaps are made.
void createCompressedTexture(Texture& tex, int width, int height, int imageSize, void* data,
                             const TextureOpts& opts) {
    if (width < 1 || height < 1) {
        PM_LOGE("Invalid texture size = (%d, %d).", width, height);
        return;
    }
    deleteTexture(tex);
    tex.width = width;
    tex.height = height;
    tex.opts = opts;
    glGenTextures(1, &tex.id);
    glBindTexture(opts.target, tex.id);
    glCompressedTexImage2D(opts.target, 0, static_cast<GLenum>(opts.internalFormat), width, height,
                           0, imageSize, data);
    sampling::applySamplingParameters(opts);
    glBindTexture(opts.target, 0);
    checkError();
}

// Leaves `opts` as they were, so the record can be created again alike.
void deleteTexture(Texture& tex) {
    if (tex.id == 0) return;
    glDeleteTextures(1, &tex.id);
    checkError();
    tex.id = 0;
    tex.width = 0;
    tex.height = 0;
}

void bindTexture(const Texture& tex, int unit) {
    PM_ASSERT(isExist(tex));
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(tex.opts.target, tex.id);
    checkError();
}

unsigned getTextureInternalFormat(int channel, unsigned type) {
    PM_ASSERT(channel < TEX_FORMAT_SIZE);
    switch (type) {
        case GL_FLOAT:
            return static_cast<unsigned>(tableEntry(TEX_INTERNAL_FORMAT_16F, channel));
        case GL_UNSIGNED_BYTE:
            return static_cast<unsigned>(tableEntry(TEX_INTERNAL_FORMAT_8U, channel));
        case GL_UNSIGNED_SHORT:
            return GL_DEPTH_COMPONENT;
        case GL_UNSIGNED_INT_24_8:
            return GL_DEPTH24_STENCIL8;
        default:
            PM_LOGE("Unsupported type: %d\n", type);
            return 0;
    }
}

unsigned getTextureFormat(int channel, unsigned type) {
    PM_ASSERT(channel < TEX_FORMAT_SIZE);
    switch (type) {
        case GL_UNSIGNED_BYTE:
            return tableEntry(TEX_DATA_FORMAT_8U, channel);
        case GL_FLOAT:
            return tableEntry(TEX_DATA_FORMAT_16F, channel);
        case GL_UNSIGNED_SHORT:
            return GL_DEPTH_COMPONENT;
        case GL_UNSIGNED_INT_24_8:
            return GL_DEPTH_STENCIL;
        default:
            PM_LOGE("Unsupported type: %d\n", type);
            return 0;
    }
}

int getTextureChannel(unsigned format, unsigned type) {
    if (type == GL_UNSIGNED_SHORT || type == GL_UNSIGNED_INT_24_8) return 1;
    if (type != GL_UNSIGNED_BYTE && type != GL_FLOAT) {
        PM_LOGE("Unsupported type: %d\n", type);
        return 0;
    }
    switch (format) {
        case GL_RED:
            return 1;
        case GL_RG:
            return 2;
        case GL_RGB:
            return 3;
        case GL_RGBA:
            return 4;
        default:
            return 0;
    }
}

int getTexelSize(const TextureOpts& opts) {
    const int size = componentSize(opts.type);
    if (size == 0) {
        PM_LOGE("Unsupported type: %d\n", opts.type);
        return 0;
    }
    return getTextureChannel(opts.format, opts.type) * size;
}

void updateTextureOpts(TextureOpts& opts, const ImageData<unsigned char>& image) {
    opts.type = GL_UNSIGNED_BYTE;
    opts.internalFormat = static_cast<int>(getTextureInternalFormat(image.getChannel(), opts.type));
    opts.format = getTextureFormat(image.getChannel(), opts.type);
    if (opts.linear) return;
    if (opts.internalFormat == GL_RGB8) opts.internalFormat = GL_SRGB8;
    if (opts.internalFormat == GL_RGBA8) opts.internalFormat = GL_SRGB8_ALPHA8;
}

void updateTextureOpts(TextureOpts& opts, const ImageData<float>& image) {
    opts.type = GL_FLOAT;
    opts.internalFormat = static_cast<int>(getTextureInternalFormat(image.getChannel(), opts.type));
    opts.format = getTextureFormat(image.getChannel(), opts.type);
}

// An sRGB texture never matches the default (linear) options and trips the
// format assertion; it is only logged and the upload goes on.
void updateTexture(Texture& tex, const ImageData<unsigned char>& image) {
    PM_ASSERT(tex.width >= image.getWidth() && tex.height >= image.getHeight());
    TextureOpts customOpts;
    updateTextureOpts(customOpts, image);
    PM_ASSERT(tex.opts.type == customOpts.type &&
              tex.opts.internalFormat == customOpts.internalFormat &&
              tex.opts.format == customOpts.format);
    updateTexture(tex, 0, 0, image.getWidth(), image.getHeight(), image.data);
}

void updateTexture(Texture& tex, const ImageData<float>& image) {
    PM_ASSERT(tex.width >= image.getWidth() && tex.height >= image.getHeight());
    TextureOpts customOpts;
    updateTextureOpts(customOpts, image);
    PM_ASSERT(tex.opts.type == customOpts.type &&
              tex.opts.internalFormat == customOpts.internalFormat &&
              tex.opts.format == customOpts.format);
    updateTexture(tex, 0, 0, image.getWidth(), image.getHeight(), image.data);
}

namespace {

// The unpack alignment follows the texture's width, not the width uploaded.
void uploadBaseLevel(Texture& tex, int x, int y, int width, int height, const void* data,
                     bool withMipmaps) {
    PM_ASSERT(isExist(tex));
    PM_ASSERT(data != nullptr);
    PM_ASSERT(tex.opts.target == GL_TEXTURE_2D);
    glBindTexture(tex.opts.target, tex.id);
    setUnpackAlignment(tex.width, getTexelSize(tex.opts));
    glTexSubImage2D(tex.opts.target, 0, x, y, width, height, tex.opts.format, tex.opts.type, data);
    if (withMipmaps && isMipmapFilter(tex.opts.minFilter)) glGenerateMipmap(tex.opts.target);
    glBindTexture(tex.opts.target, 0);
    checkError();
}

}  // namespace

void updateTexture(Texture& tex, int x, int y, int width, int height, const void* data) {
    uploadBaseLevel(tex, x, y, width, height, data, true);
}

void updateTextureBaseLevel(Texture& tex, const ImageData<unsigned char>& image) {
    PM_ASSERT(tex.width >= image.getWidth() && tex.height >= image.getHeight());
    uploadBaseLevel(tex, 0, 0, image.getWidth(), image.getHeight(), image.data, false);
}

void generateMipmap(Texture& tex) {
    glBindTexture(tex.opts.target, tex.id);
    if (!tex.opts.mipmap) {
        tex.opts.mipmap = true;
        tex.opts.minFilter = withMipmap(tex.opts.minFilter);
        glTexParameteri(tex.opts.target, GL_TEXTURE_MIN_FILTER, tex.opts.minFilter);
    }
    glGenerateMipmap(tex.opts.target);
    glBindTexture(tex.opts.target, 0);
    checkError();
}

bool isEqualFormat(const Texture& tex, const ImageData<unsigned char>& image) {
    return isEqualImageFormat(tex, image, GL_UNSIGNED_BYTE);
}

bool isEqualFormat(const Texture& tex, const ImageData<float>& image) {
    return isEqualImageFormat(tex, image, GL_FLOAT);
}

bool isEqualFormat(const Texture& tex, const Texture& other) {
    return tex.opts.type == other.opts.type &&
           tex.opts.internalFormat == other.opts.internalFormat &&
           tex.opts.format == other.opts.format;
}

}  // namespace pmGL
