// The packed image stream reader: any bytes as a stream of records, read
// until the stream refuses.
#include <fstream>

#include "FuzzSupport.h"
#include "pmStb.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::ifstream stream(fuzz::writeScratchFile(data, size, ".bin"), std::ios::binary);
    for (int record = 0; record < 8 && stream.good(); ++record) {
        pmUtil::ImageData<unsigned char> image = pmStb::readImage(stream);
        pmUtil::deleteImageData(image);
    }
    return 0;
}
