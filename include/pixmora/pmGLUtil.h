/**
 * @file pmGLUtil.h
 * @brief The file helpers of pmGL: textures and framebuffers joined to files.
 *
 * Images are loaded into textures, framebuffers saved as image files, colour
 * attachments stored as a run of image records in a binary stream, PKM files
 * loaded as compressed textures, and height images turned into two-channel
 * gradient textures. Every call needs a current GL context.
 */
#ifndef PIXMORA_PMGLUTIL_H
#define PIXMORA_PMGLUTIL_H

#include <glm/glm.hpp>

#include <fstream>
#include <string>

#include "pmExport.h"
#include "pmGL.h"
#include "pmUtil.h"

namespace PM_VISIBLE pmGL {
using pmUtil::ImageData;

// Replaces `tex` with an RGB8 gradient texture of a 4-channel height image:
// red holds the vertical and green the horizontal difference of the height
// (r + g + b) / 765, both offset by 0.5; blue is 0, the border is (127, 127).
// The difference across the shorter side of `ratio` is scaled by 0.5625.
// The row stride is fixed by the width of the first image ever given: every
// noise image of a process must have that width.
void createNoiseTexture(Texture& tex, const ImageData<unsigned char>& image, glm::ivec2 ratio);
// createNoiseTexture of an image file, unflipped; false when it can't load.
bool loadNoiseTexture(Texture& tex, const std::string& path, glm::ivec2 ratio);

// Loads an image file into `tex`: a ".hdr" file as a float texture, any other
// as an 8-bit one. Both filters take `filter`, all wraps `wrap`. False, with
// the texture untouched, when the file can't be loaded.
bool loadTexture(Texture& tex, const std::string& path, bool mipmap, unsigned wrap, unsigned filter,
                 bool flip);

// Saves colour attachment 0, bottom row last as in the picture. 8-bit
// attachments go to an image file by extension; float ones to a ".hdr" file
// (any case) or else as raw floats with no header.
bool saveFrameBuffer(FrameBuffer& fb, const std::string& path);
// saveFrameBuffer through a temporary framebuffer; the texture is kept.
bool saveTexture(Texture& tex, const std::string& path);

// One image record per colour texture, in index order, nothing else. True when
// every record was written.
bool writeFrameBufferToStream(std::ofstream& stream, FrameBuffer& fb, const std::string& extension);
// Reads one record per colour texture into a framebuffer of the same shape.
// A record of another size or format is skipped and makes the result false.
bool readFrameBufferFromStream(std::ifstream& stream, FrameBuffer& fb);

// Loads a PKM file (16-byte big-endian header, then the data) as a compressed
// texture of `opts.internalFormat`.
bool loadCompressedTexture(Texture& tex, const std::string& path, const TextureOpts& opts);
bool loadCompressedTexture(Texture& tex, const std::string& path, unsigned internalFormat,
                           unsigned wrap, unsigned filter);

}  // namespace pmGL

#endif
