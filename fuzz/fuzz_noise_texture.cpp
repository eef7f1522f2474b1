// loadNoiseTexture of a file holding any bytes, and createNoiseTexture of the
// bytes themselves as pixels of a size and channel count from the first two
// bytes; the pixels given always cover the size claimed, as a caller's must.
#include <vector>

#include "FuzzSupport.h"
#include "pmGLUtil.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    fuzz::ensureGLContext();
    const glm::ivec2 ratio((data[0] & 0x0F) + 1, (data[0] >> 4) + 1);
    pmGL::Texture tex;
    const std::string path = fuzz::writeScratchFile(data + 2, size - 2, ".png");
    pmGL::loadNoiseTexture(tex, path, ratio);

    const int channel = data[1] % 5;
    std::vector<unsigned char> pixels(data + 2, data + size);
    const int width = 1 + data[1] / 5 % 16;
    const int rowBytes = width * (channel == 0 ? 1 : channel);
    const int height = static_cast<int>(pixels.size()) / rowBytes;
    pmGL::createNoiseTexture(
        tex, pmUtil::ImageData<unsigned char>(width, height, channel, pixels.data()), ratio);
    pmGL::deleteTexture(tex);
    while (glGetError() != GL_NO_ERROR) {
    }
    return 0;
}
