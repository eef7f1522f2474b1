// How much a stream from outside can still give, for checking a length field
// before anything is allocated for it.
#ifndef PIXMORA_PMSTREAMBYTES_H
#define PIXMORA_PMSTREAMBYTES_H

#include <cstdint>
#include <fstream>

namespace pmUtil {

// Bytes between the read position and the end of the stream; 0 when the
// stream cannot tell, so that nothing is trusted then.
inline std::uint64_t remainingBytes(std::ifstream& stream) {
    const std::streampos here = stream.tellg();
    if (here < 0) return 0;
    stream.seekg(0, std::ios::end);
    const std::streampos end = stream.tellg();
    stream.seekg(here);
    if (end < here) return 0;
    return static_cast<std::uint64_t>(end - here);
}

}  // namespace pmUtil

#endif
