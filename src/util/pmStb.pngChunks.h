// A check of PNG chunk lengths made before stb_image sees the bytes: its
// decoder grows its buffer to the length an IDAT chunk claims before it finds
// out whether the bytes are there.
#ifndef PIXMORA_PMSTB_PNGCHUNKS_H
#define PIXMORA_PMSTB_PNGCHUNKS_H

#include <cstddef>

namespace pmStb {

// False when the bytes are a PNG stream with a chunk, up to IEND, that claims
// more bytes than follow it; true for anything else.
bool hasHonestChunkLengths(const unsigned char* data, std::size_t size);

}  // namespace pmStb

#endif
