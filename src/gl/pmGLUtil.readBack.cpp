// GL packs each row it reads to GL_PACK_ALIGNMENT, and in ES reads only RGBA
// for certain; the library's images have tight rows of 1 to 4 channels. The
// read goes through an RGBA scratch buffer sized for GL's own layout.
#include "pmGLUtil.readBack.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace pmGL {

namespace {

constexpr int kReadChannel = 4;

std::size_t packedRowBytes(int width, std::size_t texelBytes) {
    GLint alignment = 4;
    glGetIntegerv(GL_PACK_ALIGNMENT, &alignment);
    if (alignment < 1) alignment = 1;
    const std::size_t row = static_cast<std::size_t>(width) * texelBytes;
    const std::size_t step = static_cast<std::size_t>(alignment);
    return (row + step - 1) / step * step;
}

template <typename T>
bool readAsRGBA(FrameBuffer& fb, unsigned index, GLenum type, ImageData<T>& image) {
    if (fb.id == 0 || index >= fb.colorTex.size() || image.data == nullptr ||
        image.width != fb.width || image.height != fb.height || image.channel < 1 ||
        image.channel > kReadChannel) {
        PM_LOGE("Invalid read of colour attachment %u.\n", index);
        return false;
    }
    const std::size_t texelBytes = sizeof(T) * kReadChannel;
    const std::size_t rowBytes = packedRowBytes(fb.width, texelBytes);
    // Zeroed, so that a read GL refuses leaves nothing of the heap behind.
    std::vector<unsigned char> scratch(rowBytes * static_cast<std::size_t>(fb.height), 0);

    while (glGetError() != GL_NO_ERROR) {
    }
    const bool bound = bindFrameBuffer(fb);
    glReadBuffer(GL_COLOR_ATTACHMENT0 + index);
    glReadPixels(0, 0, fb.width, fb.height, GL_RGBA, type, scratch.data());
    const GLenum error = glGetError();
    if (bound) unbindFrameBuffer(fb);

    const std::size_t count = static_cast<std::size_t>(fb.width) * fb.height;
    std::memset(image.data, 0, count * image.channel * sizeof(T));
    if (error != GL_NO_ERROR) {
        PM_LOGE("Fail to read colour attachment %u (0x%x).\n", index, error);
        return false;
    }
    for (int y = 0; y < fb.height; ++y) {
        const T* in = reinterpret_cast<const T*>(scratch.data() + rowBytes * y);
        T* out = image.data + static_cast<std::size_t>(y) * fb.width * image.channel;
        for (int x = 0; x < fb.width; ++x) {
            std::memcpy(out + x * image.channel, in + x * kReadChannel, sizeof(T) * image.channel);
        }
    }
    return true;
}

}  // namespace

bool readColorTexture(FrameBuffer& fb, unsigned index, ImageData<unsigned char>& image) {
    return readAsRGBA(fb, index, GL_UNSIGNED_BYTE, image);
}

bool readColorTexture(FrameBuffer& fb, unsigned index, ImageData<float>& image) {
    return readAsRGBA(fb, index, GL_FLOAT, image);
}

}  // namespace pmGL
