// Cube map textures: six square faces from raw pointers or from lists of images.
#include "pmGL.h"
#include "pmGL.sampling.h"

namespace pmGL {

namespace {

constexpr int CUBEMAP_FACE_COUNT = 6;

// Faces are taken in GL's order: +X, -X, +Y, -Y, +Z, -Z.
void uploadCubemapFaces(const TextureOpts& opts, int width, int height, void** faces) {
    for (int face = 0; face < CUBEMAP_FACE_COUNT; ++face) {
        glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, opts.internalFormat, width, height,
                     0, opts.format, opts.type, faces[face]);
    }
}

// Wrap R matters for cube maps only, so it is set here and nowhere else.
void applyCubemapSampling(const TextureOpts& opts) {
    sampling::applySamplingParameters(opts);
    glTexParameteri(opts.target, GL_TEXTURE_WRAP_R, opts.wrapR);
}

template <typename T>
bool isValidFaceList(const std::vector<ImageData<T>>& images) {
    if (images.size() != CUBEMAP_FACE_COUNT) {
        PM_LOGE("cubemap requires 6 faces.");
        return false;
    }
    for (const ImageData<T>& image : images) {
        if (!image.isCompatible(images.front())) {
            PM_LOGE("cubemap images require same size.");
            return false;
        }
    }
    return true;
}

template <typename T>
void createCubemapFromImages(Texture& tex, const std::vector<ImageData<T>>& images,
                             const TextureOpts& opts) {
    if (!isValidFaceList(images)) return;
    TextureOpts imageOpts = opts;
    updateTextureOpts(imageOpts, images.front());
    void* faces[CUBEMAP_FACE_COUNT];
    for (int face = 0; face < CUBEMAP_FACE_COUNT; ++face) faces[face] = images[face].data;
    const ImageData<T>& first = images.front();
    createCubemapTexture(tex, first.getWidth(), first.getHeight(), faces, imageOpts);
}

}  // namespace

// Unlike the 2D form, empty faces do not switch mipmaps off.
void createCubemapTexture(Texture& tex, int width, int height, void** faces,
                          const TextureOpts& opts) {
    if (width < 1 || height < 1) {
        PM_LOGE("Invalid texture size = (%d, %d).", width, height);
        return;
    }
    deleteTexture(tex);
    tex.width = width;
    tex.height = height;
    tex.opts = opts;
    TextureOpts& own = tex.opts;
    own.target = GL_TEXTURE_CUBE_MAP;
    glGenTextures(1, &tex.id);
    glBindTexture(own.target, tex.id);
    setUnpackAlignment(width, getTexelSize(own));
    uploadCubemapFaces(own, width, height, faces);
    if (own.mipmap) own.minFilter = sampling::withMipmap(own.minFilter);
    applyCubemapSampling(own);
    sampling::generateMipmapIfSampled(own);
    glBindTexture(own.target, 0);
    checkError();
}

void createCubemapTexture(Texture& tex, const std::vector<ImageData<unsigned char>>& images,
                          const TextureOpts& opts) {
    createCubemapFromImages(tex, images, opts);
}

void createCubemapTexture(Texture& tex, const std::vector<ImageData<float>>& images,
                          const TextureOpts& opts) {
    createCubemapFromImages(tex, images, opts);
}

void createCubemapTexture(Texture& tex, int width, int height, const TextureOpts& opts) {
    void* faces[CUBEMAP_FACE_COUNT] = {};
    createCubemapTexture(tex, width, height, faces, opts);
}

}  // namespace pmGL
