// A check of JPEG Huffman tables made before stb_image sees the bytes: its
// decoder fills a table of 257 code sizes from the counts of a DHT segment
// without checking that they add up to no more than 256.
#ifndef PIXMORA_PMSTB_JPEGTABLES_H
#define PIXMORA_PMSTB_JPEGTABLES_H

#include <cstddef>

namespace pmStb {

// False when the bytes are a JPEG stream with a Huffman table of more than 256
// codes; true for anything else, which is left to the decoders to judge.
bool hasSafeHuffmanTables(const unsigned char* data, std::size_t size);

}  // namespace pmStb

#endif
