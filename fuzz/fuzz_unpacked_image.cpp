// createUnpackedImage over any bytes: the decoders of PNG, JPEG, BMP, TGA and
// Radiance HDR all sit behind it. The first byte picks the flip.
#include <vector>

#include "FuzzSupport.h"
#include "pmStb.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const bool flip = (data[0] & 1) != 0;
    // A copy of exactly the input, so that a read past it is seen.
    std::vector<unsigned char> bytes(data + 1, data + size);
    pmUtil::MemoryBlock<unsigned char> block(bytes.empty() ? nullptr : bytes.data(), bytes.size(),
                                             bytes.size(), false);
    pmUtil::ImageData<unsigned char> image = pmStb::createUnpackedImage(block, flip);
    pmUtil::deleteImageData(image);
    return 0;
}
