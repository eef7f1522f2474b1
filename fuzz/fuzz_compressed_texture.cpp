// loadCompressedTexture of a file holding any bytes, with a compressed format
// picked by the first byte: four and eight bits a pixel alike.
#include "FuzzSupport.h"
#include "pmGL.h"
#include "pmGLUtil.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    fuzz::ensureGLContext();
    static const unsigned formats[] = {GL_COMPRESSED_RGB8_ETC2, GL_COMPRESSED_RGBA8_ETC2_EAC,
                                       GL_COMPRESSED_RG11_EAC, GL_COMPRESSED_R11_EAC,
                                       GL_COMPRESSED_SRGB8_ALPHA8_ETC2_EAC};
    const std::string path = fuzz::writeScratchFile(data + 1, size - 1, ".pkm");
    pmGL::Texture tex;
    pmGL::loadCompressedTexture(tex, path, formats[data[0] % 5], GL_CLAMP_TO_EDGE, GL_NEAREST);
    pmGL::deleteTexture(tex);
    while (glGetError() != GL_NO_ERROR) {
    }
    return 0;
}
