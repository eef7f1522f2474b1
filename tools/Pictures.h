// Image files on the tool's side: reading any input, widening it to the one
// layout the library is fed, and writing results rendered bottom row first.
#ifndef PIXMORA_TOOL_PICTURES_H
#define PIXMORA_TOOL_PICTURES_H

#include <string>
#include <vector>

#include <pixmora/pmUtil.h>

using Image = pmUtil::ImageData<unsigned char>;

bool endsWith(const std::string& text, const std::string& tail);

// The output format follows the file's extension, written exactly in lower case.
void checkOutputExtension(const std::string& path);

// Reads PNG, JPEG, BMP or TGA; the pixels are the caller's (deleteImageData).
Image loadInput(const std::string& path);

// Widens grey, grey-alpha, RGB or RGBA pixels to RGBA, the one layout every
// input is uploaded in.
std::vector<unsigned char> toRgba(const Image& image);

// Keeps alpha only when the input had it.
std::vector<unsigned char> fromRgba(const std::vector<unsigned char>& rgba, int channel);

// Writes RGB or RGBA pixels given top row first.
void savePicture(const std::string& path, std::vector<unsigned char>& pixels, int width, int height,
                 int channel);

// Writes pixels read back from a framebuffer, bottom row first, upright.
void saveRendered(const std::string& path, std::vector<unsigned char>& pixels, int width,
                  int height, int channel);

#endif
