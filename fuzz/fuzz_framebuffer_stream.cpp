// readFrameBufferFromStream of any bytes into a framebuffer of two RGBA
// textures, the shape that writeFrameBufferToStream's seeds were written from.
#include <fstream>

#include "FuzzSupport.h"
#include "pmGL.h"
#include "pmGLUtil.h"

namespace {

pmGL::FrameBuffer& frameBuffer() {
    static pmGL::FrameBuffer fb = [] {
        pmGL::FrameBuffer made;
        pmGL::TextureOpts opts;
        opts.mipmap = false;
        pmGL::createFrameBuffer(made, 8, 6, opts, 2, false, false);
        return made;
    }();
    return fb;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ensureGLContext();
    std::ifstream stream(fuzz::writeScratchFile(data, size, ".fbs"), std::ios::binary);
    pmGL::readFrameBufferFromStream(stream, frameBuffer());
    while (glGetError() != GL_NO_ERROR) {
    }
    return 0;
}
