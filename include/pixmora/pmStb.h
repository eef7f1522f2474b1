// Image files by extension through stb_image and stb_image_write. Writing a
// file first checks its path, so that a path that cannot be resolved (a loop
// of symbolic links, a denied directory) is refused.
#ifndef PIXMORA_PMSTB_H
#define PIXMORA_PMSTB_H

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

}  // namespace pmStb

#endif
