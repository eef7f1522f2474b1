// loadImageInfo, loadImage and loadHdrImage of a file holding any bytes. The
// first byte picks the file's extension and the flip.
#include "FuzzSupport.h"
#include "pmStb.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    static const char* const extensions[] = {".png", ".jpg", ".bmp", ".tga", ".hdr", ".img"};
    const std::string path =
        fuzz::writeScratchFile(data + 1, size - 1, extensions[(data[0] >> 1) % 6]);
    const bool flip = (data[0] & 1) != 0;
    int width = 0;
    int height = 0;
    int channel = 0;
    pmStb::loadImageInfo(path, &width, &height, &channel);
    pmUtil::ImageData<unsigned char> image = pmStb::loadImage(path, flip);
    pmUtil::deleteImageData(image);
    pmUtil::ImageData<float> hdr = pmStb::loadHdrImage(path, flip);
    pmUtil::deleteImageData(hdr);
    return 0;
}
