// Textures and framebuffers to and from files.
#include "pmGLUtil.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "pmGLUtil.readBack.h"
#include "pmStb.h"
#include "util/pmStreamBytes.h"

namespace pmGL {
using pmUtil::MemoryBlock;

namespace {

std::ofstream openWriteStream(const std::string& path, bool binary) {
    std::ios::openmode mode = std::ios::out | std::ios::trunc;
    if (binary) mode |= std::ios::binary;
    return std::ofstream(path, mode);
}

std::ifstream openReadStream(const std::string& path, bool binary) {
    std::ios::openmode mode = std::ios::in;
    if (binary) mode |= std::ios::binary;
    return std::ifstream(path, mode);
}

constexpr float HEIGHT_SCALE = 0.0013071896f;  // 1 / 765: r + g + b to 0..1
constexpr float SHORT_SIDE_SCALE = 0.5625f;

int readBigEndian16(const unsigned char* bytes) {
    return (static_cast<int>(bytes[0]) << 8) | static_cast<int>(bytes[1]);
}

// Formats of 8 bits a pixel: RGBA8 ETC2 EAC (linear, sRGB) and RG11 EAC
// (unsigned, signed). All others take 4 bits a pixel.
bool isEightBitsPerPixel(int internalFormat) {
    return internalFormat == 0x9278 || internalFormat == 0x9279 || internalFormat == 0x9272 ||
           internalFormat == 0x9273;
}

// (d + 0.5) x 255, truncated. A difference steeper than half the height
// range lies outside a byte: it is held at the nearest end.
unsigned char gradientByte(float difference) {
    const float value = (difference + 0.5f) * 255.f;
    if (!(value > 0.f)) return 0;
    if (value >= 255.f) return 255;
    return static_cast<unsigned char>(value);
}

// Four bytes a pixel, and few enough pixels for three float planes.
bool isValidNoiseImage(const ImageData<unsigned char>& image) {
    return image.channel == 4 && image.width > 0 && image.height > 0 &&
           static_cast<std::int64_t>(image.width) * image.height * 4 <= INT_MAX;
}

// Set by the first valid image of the process: later images are laid out
// with its width, so all noise images must share it.
int noiseStride(int width) {
    static const int stride = width;
    return stride;
}

// Whether the extended size is the plain size rounded up to whole 4 x 4
// blocks, as the compressed data is laid out.
bool isBlockAligned(int size, int extendedSize) {
    return size > 0 && extendedSize == (size + 3) / 4 * 4;
}

}  // namespace

bool loadTexture(Texture& tex, const std::string& path, bool mipmap, unsigned wrap, unsigned filter,
                 bool flip) {
    TextureOpts opts;
    opts.minFilter = static_cast<int>(filter);
    opts.magFilter = static_cast<int>(filter);
    opts.wrapS = static_cast<int>(wrap);
    opts.wrapT = static_cast<int>(wrap);
    opts.wrapR = static_cast<int>(wrap);
    opts.mipmap = mipmap;
    opts.linear = true;
    if (pmUtil::stringExtension(path) == ".hdr") {
        ImageData<float> image = pmStb::loadHdrImage(path, flip);
        if (image.data == nullptr) return false;
        createTexture(tex, image, opts);
        pmUtil::deleteImageData(image);
        return true;
    }
    ImageData<unsigned char> image = pmStb::loadImage(path, flip);
    if (image.data == nullptr) return false;
    createTexture(tex, image, opts);
    pmUtil::deleteImageData(image);
    return true;
}

void createNoiseTexture(Texture& tex, const ImageData<unsigned char>& image, glm::ivec2 ratio) {
    // Pixels are read four bytes at a time: only RGBA images hold enough.
    if (image.data == nullptr || !isValidNoiseImage(image)) {
        PM_LOGE("Invalid noise image (%d x %d x %d).\n", image.width, image.height, image.channel);
        return;
    }
    const int width = image.width;
    const int height = image.height;
    const int stride = noiseStride(width);

    // The planes hold width times height values; a wider stride from an
    // earlier image would reach past that, so they grow to cover it.
    const std::size_t planeSize = std::max(static_cast<std::size_t>(width) * height,
                                           static_cast<std::size_t>(stride) * (height - 1) + width);
    std::vector<float> a(planeSize, 0.f);
    std::vector<float> b(planeSize, 0.f);
    std::vector<float> h(planeSize, 0.f);
    auto at = [stride](int x, int y) { return static_cast<std::size_t>(y) * stride + x; };

    // The image's first row becomes the last row of the plane, as GL's rows
    // run bottom-up.
    const unsigned char* pixel = image.data;
    for (int y = height - 1; y >= 0; --y) {
        for (int x = 0; x < width; ++x, pixel += 4) {
            h[at(x, y)] = static_cast<float>(pixel[0] + pixel[1] + pixel[2]) * HEIGHT_SCALE;
        }
    }

    for (int y = 1; y < height - 1; ++y) {
        for (int x = 1; x < width - 1; ++x) {
            a[at(x, y)] = h[at(x, y + 1)] - h[at(x, y - 1)];
            b[at(x, y)] = h[at(x - 1, y)] - h[at(x + 1, y)];
        }
    }

    // The difference across the shorter side shrinks by a fixed factor.
    if (ratio.y != ratio.x) {
        std::vector<float>& scaled = ratio.y > ratio.x ? b : a;
        for (int y = 1; y < height - 1; ++y) {
            for (int x = 1; x < width - 1; ++x) scaled[at(x, y)] *= SHORT_SIDE_SCALE;
        }
    }

    const std::size_t count = static_cast<std::size_t>(width) * height;
    ImageData<unsigned char> noise(width, height, 3, pmUtil::safeNewArray<unsigned char>(count * 3),
                                   false);
    if (noise.data == nullptr) return;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            unsigned char* out = noise.data + (static_cast<std::size_t>(y) * width + x) * 3;
            out[0] = gradientByte(a[at(x, y)]);
            out[1] = gradientByte(b[at(x, y)]);
            out[2] = 0;
        }
    }

    deleteTexture(tex);
    TextureOpts opts;
    opts.mipmap = true;
    createTexture(tex, noise, opts);
    pmUtil::deleteImageData(noise);
}

bool loadNoiseTexture(Texture& tex, const std::string& path, glm::ivec2 ratio) {
    ImageData<unsigned char> image = pmStb::loadImage(path, false);
    if (image.data == nullptr) return false;
    if (!isValidNoiseImage(image)) {
        PM_LOGE("Invalid noise image (%d x %d x %d).\n", image.width, image.height, image.channel);
        pmUtil::deleteImageData(image);
        return false;
    }
    createNoiseTexture(tex, image, ratio);
    pmUtil::deleteImageData(image);
    return true;
}

bool saveFrameBuffer(FrameBuffer& fb, const std::string& path) {
    if (fb.id == 0) return false;
    // Only colour textures carry a format and type to save by.
    const unsigned type = fb.colorTex.empty() ? 0u : fb.colorTex[0].opts.type;
    const int channel =
        fb.colorTex.empty() ? 0 : getTextureChannel(fb.colorTex[0].opts.format, type);
    const std::size_t count = static_cast<std::size_t>(fb.width) * fb.height * channel;
    if (fb.width < 1 || fb.height < 1 ||
        (count == 0 && (type == GL_UNSIGNED_BYTE || type == GL_FLOAT))) {
        PM_LOGE("Invalid framebuffer (%d x %d x %d).\n", fb.width, fb.height, channel);
        return false;
    }

    if (type == GL_UNSIGNED_BYTE) {
        ImageData<unsigned char> image(fb.width, fb.height, channel,
                                       pmUtil::safeNewArray<unsigned char>(count), false);
        if (image.data == nullptr) return false;
        // GL's rows run bottom-up, the file's top-down.
        const bool result = readColorTexture(fb, 0, image) && pmStb::saveImage(path, image, true);
        pmUtil::deleteImageData(image);
        return result;
    }
    if (type == GL_FLOAT) {
        ImageData<float> image(fb.width, fb.height, channel, pmUtil::safeNewArray<float>(count),
                               false);
        if (image.data == nullptr) return false;
        bool result = false;
        if (!readColorTexture(fb, 0, image)) {
            result = false;
        } else if (pmUtil::stringLower(pmUtil::stringExtension(path)) == ".hdr") {
            result = pmStb::saveHdrImage(path, image, true);
        } else {
            std::ofstream stream = openWriteStream(path, true);
            if (stream.is_open()) {
                stream.write(reinterpret_cast<const char*>(image.data),
                             static_cast<std::streamsize>(count * sizeof(float)));
                result = true;
            }
        }
        pmUtil::deleteImageData(image);
        return result;
    }
    PM_LOGE("Invalid texture type.");
    return false;
}

bool saveTexture(Texture& tex, const std::string& path) {
    if (tex.id == 0) return false;
    // The temporary record holds a copy of the texture's record, so that
    // saveFrameBuffer finds its format; it is never passed to
    // deleteFrameBuffer, which would delete the texture too.
    FrameBuffer fb;
    fb.width = tex.width;
    fb.height = tex.height;
    fb.colorTex.push_back(tex);
    glGenFramebuffers(1, &fb.id);
    bool result = false;
    if (bindFrameBuffer(fb)) {
        attachTexture(tex, 0, 0);
        specifyDrawBuffer(0);
        unbindFrameBuffer(fb);
        result = saveFrameBuffer(fb, path);
    }
    glDeleteFramebuffers(1, &fb.id);
    return result;
}

bool writeFrameBufferToStream(std::ofstream& stream, FrameBuffer& fb,
                              const std::string& extension) {
    bool result = true;
    for (std::size_t index = 0; index < fb.colorTex.size(); ++index) {
        const TextureOpts& opts = fb.colorTex[index].opts;
        const int channel = getTextureChannel(opts.format, opts.type);
        if (fb.width < 1 || fb.height < 1 || channel < 1) {
            PM_LOGE("Invalid framebuffer (%d x %d x %d).\n", fb.width, fb.height, channel);
            return false;
        }
        const std::size_t bytes = static_cast<std::size_t>(fb.width) * fb.height * channel;
        ImageData<unsigned char> image(fb.width, fb.height, channel,
                                       pmUtil::safeNewArray<unsigned char>(bytes), false);
        if (image.data == nullptr) return false;
        // A refused read still writes its record, of zeros, so that the
        // records keep their places in the stream.
        if (!readColorTexture(fb, static_cast<unsigned>(index), image)) result = false;
        if (!pmStb::writeImage(stream, image, extension)) result = false;
        pmUtil::deleteImageData(image);
    }
    return result;
}

bool readFrameBufferFromStream(std::ifstream& stream, FrameBuffer& fb) {
    if (fb.colorTex.empty()) return true;
    bool result = true;
    for (std::size_t index = 0; index < fb.colorTex.size(); ++index) {
        ImageData<unsigned char> image = pmStb::readImage(stream);
        // Every record is checked against the first texture's format.
        const bool accepted = image.data != nullptr && image.width == fb.width &&
                              image.height == fb.height && fb.id != 0 &&
                              isEqualFormat(fb.colorTex[0], image);
        if (accepted) {
            updateFrameBuffer(fb, image, static_cast<unsigned>(index));
        } else {
            result = false;
        }
        pmUtil::deleteImageData(image);
    }
    return result;
}

bool loadCompressedTexture(Texture& tex, const std::string& path, const TextureOpts& opts) {
    std::ifstream stream = openReadStream(path, true);
    if (!stream.is_open()) return false;
    unsigned char header[16] = {};
    stream.read(reinterpret_cast<char*>(header), sizeof(header));
    if (stream.gcount() != sizeof(header) || std::memcmp(header, "PKM ", 4) != 0) return false;
    const int extendedWidth = readBigEndian16(header + 8);
    const int extendedHeight = readBigEndian16(header + 10);
    const int width = readBigEndian16(header + 12);
    const int height = readBigEndian16(header + 14);
    if (!isBlockAligned(width, extendedWidth) || !isBlockAligned(height, extendedHeight)) {
        PM_LOGE("Invalid PKM size (%d x %d in %d x %d).\n", width, height, extendedWidth,
                extendedHeight);
        return false;
    }

    std::size_t size = static_cast<std::size_t>(extendedWidth) * extendedHeight;
    if (!isEightBitsPerPixel(opts.internalFormat)) size /= 2;
    // The header is never trusted further than the file's own bytes go.
    if (size > pmUtil::remainingBytes(stream)) {
        PM_LOGE("Truncated PKM data (%zu bytes expected).\n", size);
        return false;
    }
    MemoryBlock<unsigned char> block = pmUtil::createMemoryBlock<unsigned char>(size);
    if (block.data == nullptr) return false;
    stream.read(reinterpret_cast<char*>(block.data), static_cast<std::streamsize>(size));
    const bool complete = static_cast<std::size_t>(stream.gcount()) == size;
    if (complete) {
        createCompressedTexture(tex, width, height, static_cast<int>(size), block.data, opts);
    } else {
        PM_LOGE("Truncated PKM data (%zu bytes expected).\n", size);
    }
    pmUtil::deleteMemoryBlock(block);
    return complete;
}

bool loadCompressedTexture(Texture& tex, const std::string& path, unsigned internalFormat,
                           unsigned wrap, unsigned filter) {
    TextureOpts opts;
    opts.target = GL_TEXTURE_2D;
    opts.type = GL_UNSIGNED_BYTE;
    opts.internalFormat = static_cast<int>(internalFormat);
    opts.format = GL_RGBA;
    opts.minFilter = static_cast<int>(filter);
    opts.magFilter = static_cast<int>(filter);
    opts.wrapS = static_cast<int>(wrap);
    opts.wrapT = static_cast<int>(wrap);
    opts.wrapR = static_cast<int>(wrap);
    opts.mipmap = false;
    opts.linear = true;
    return loadCompressedTexture(tex, path, opts);
}

}  // namespace pmGL
