/**
 * @file pmStb.h
 * @brief Image files by extension through stb_image and stb_image_write (pmStb).
 *
 * Loads and saves PNG, JPEG, BMP, TGA and Radiance HDR files, packs an image into
 * a compressed memory block, and writes and reads an image as one record of a
 * binary stream. Writing a file first checks its path, so that a path that
 * cannot be resolved (a loop of symbolic links, a denied directory) is refused.
 */
#ifndef PIXMORA_PMSTB_H
#define PIXMORA_PMSTB_H

#include <cstdint>
#include <fstream>
#include <string>

#include "pmExport.h"
#include "pmUtil.h"

namespace PM_VISIBLE pmStb {

// Reads the size and channel count of an image file without decoding it.
bool loadImageInfo(const std::string& path, int* width, int* height, int* channel);

// Decodes an image file with its own channel count, top row first, or bottom
// row first when flip is set. The data comes from malloc (useFree is true);
// on failure it is null and the size is 0.
pmUtil::ImageData<unsigned char> loadImage(const std::string& path, bool flip);

// Writes the image in the format named by the path's extension: exactly
// ".png", ".jpg" (quality 100), ".bmp" or ".tga". With flip set, the rows are
// written in reverse order.
bool saveImage(const std::string& path, const pmUtil::ImageData<unsigned char>& image, bool flip);

// Decodes an image file to floats with its own channel count; ".hdr" files
// keep their linear values, 8-bit files come out in 0 to 1. Flip and failure
// as in loadImage.
pmUtil::ImageData<float> loadHdrImage(const std::string& path, bool flip);

// Writes a Radiance ".hdr" file; no other extension is accepted.
bool saveHdrImage(const std::string& path, const pmUtil::ImageData<float>& image, bool flip);

// Encodes the image in memory in the format of a four-byte extension: ".png",
// ".jpg" (quality 100), ".bmp" or ".tga". The block's index is the encoded
// size. Any other extension, or a failed encoding, gives an empty block.
pmUtil::MemoryBlock<unsigned char> createPackedImage(const std::string& extension,
                                                     const pmUtil::ImageData<unsigned char>& image,
                                                     bool flip);

// Decodes the first index bytes of a block made by createPackedImage. The data
// comes from malloc (useFree is true); on failure it is null.
pmUtil::ImageData<unsigned char> createUnpackedImage(
    const pmUtil::MemoryBlock<unsigned char>& block, bool flip);

// Appends one image record to the stream: the extension's length (8 bytes)
// and bytes, then for ".raw" the width, height and channel (4 bytes each) and
// the pixels, or for another extension the packed block's length (8 bytes, 0
// when packing failed) and bytes. False only when the stream is not open or
// the image has no data.
bool writeImage(std::ofstream& stream, const pmUtil::ImageData<unsigned char>& image,
                const std::string& extension);

// Reads one record written by writeImage. A ".raw" image is allocated with
// new[] (useFree false), a packed one by the decoder (useFree true). The
// record is not validated: a truncated stream is not detected.
pmUtil::ImageData<unsigned char> readImage(std::ifstream& stream);

// The write callback that createPackedImage hands to the encoders: appends
// size bytes to the MemoryBlock<unsigned char> that context points to.
void writeMemoryBlock(void* context, void* data, int size);

}  // namespace pmStb

#endif
