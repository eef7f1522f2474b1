// Image files through stb_image and stb_image_write. Both codecs are compiled
// into this file alone, with static linkage, so that none of their symbols
// leaves the library; every function that calls them lives here.
#include "pmStb.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

// The image formats the library reads: PNG, JPEG, BMP, TGA and Radiance HDR.
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_ONLY_HDR
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>

namespace {

constexpr std::size_t kPathBufferSize = 4096;

// The path check made before any file is opened for writing. Only a path that
// realpath cannot resolve for a reason other than a missing file (a loop of
// symbolic links, a denied directory) is refused; a file that does not exist
// yet may be created. Returns 0 to refuse, 1 to allow.
int stbi__symbolic_file_checker(const char* path) {
    char resolved[kPathBufferSize];
    if (realpath(path, resolved) == nullptr) return errno == ENOENT ? 1 : 0;
    if (strcmp(resolved, path) == 0) return 1;

    // The current directory joined with the path is built as the place for a
    // stricter comparison with the resolved path; for now it refuses nothing.
    char joined[kPathBufferSize];
    if (getcwd(joined, sizeof(joined)) == nullptr) return 1;
    strncat(joined, "/", sizeof(joined) - 1 - strlen(joined));
    strncat(joined, path, sizeof(joined) - 1 - strlen(joined));
    return 1;
}

// stb_image_write opens every file through fopen: at the start of a file write
// for BMP, TGA, JPEG and HDR, and after encoding for PNG. Routing that one call
// here puts the path check in front of each of them.
FILE* pmGuardedFopen(const char* path, const char* mode) {
    if (stbi__symbolic_file_checker(path) == 0) return nullptr;
    return fopen(path, mode);
}

}  // namespace

#define fopen pmGuardedFopen
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
#undef fopen

namespace pmStb {

namespace {

using Image = pmUtil::ImageData<unsigned char>;

// Sets the process-wide write flip and clears it again when the scope ends,
// whatever path the save takes.
class WriteFlipScope {
public:
    explicit WriteFlipScope(bool flip) { stbi_flip_vertically_on_write(flip ? 1 : 0); }
    ~WriteFlipScope() { stbi_flip_vertically_on_write(0); }
    WriteFlipScope(const WriteFlipScope&) = delete;
    WriteFlipScope& operator=(const WriteFlipScope&) = delete;
};

bool isSavableExtension(const std::string& extension) {
    return extension == ".png" || extension == ".jpg" || extension == ".bmp" || extension == ".tga";
}

// Encodes into the file with the writer of the extension; 0 on failure.
int writeByExtension(const std::string& path, const std::string& extension, const Image& image) {
    const char* file = path.c_str();
    const int w = image.width;
    const int h = image.height;
    const int c = image.channel;
    if (extension == ".png") return stbi_write_png(file, w, h, c, image.data, 0);
    if (extension == ".jpg") return stbi_write_jpg(file, w, h, c, image.data, 100);
    if (extension == ".bmp") return stbi_write_bmp(file, w, h, c, image.data);
    return stbi_write_tga(file, w, h, c, image.data);
}

// The encoders read width x height x channel bytes from data; anything less
// than a whole image cannot be written.
bool hasPixels(const Image& image) {
    return image.data != nullptr && image.width > 0 && image.height > 0 && image.channel > 0;
}

}  // namespace

bool loadImageInfo(const std::string& path, int* width, int* height, int* channel) {
    if (stbi_info(path.c_str(), width, height, channel) == 0) {
        PM_LOGE("Fail to load %s\n", path.c_str());
        return false;
    }
    return true;
}

Image loadImage(const std::string& path, bool flip) {
    int width = 0;
    int height = 0;
    int channel = 0;
    stbi_set_flip_vertically_on_load(flip ? 1 : 0);
    unsigned char* data = stbi_load(path.c_str(), &width, &height, &channel, 0);
    if (data == nullptr) {
        PM_LOGE("Fail to load %s.\n", path.c_str());
        width = height = channel = 0;
    }
    stbi_set_flip_vertically_on_load(0);
    return Image(width, height, channel, data, true);
}

bool saveImage(const std::string& path, const Image& image, bool flip) {
    WriteFlipScope flipScope(flip);
    const std::string extension = pmUtil::stringExtension(path);
    if (!isSavableExtension(extension)) {
        PM_LOGE("Unsupported file extension (%s).\n", extension.c_str());
        return false;
    }
    if (!hasPixels(image) || writeByExtension(path, extension, image) == 0) {
        PM_LOGE("Fail to save %s.\n", path.c_str());
        return false;
    }
    PM_LOGI("filename = %s, info = (%d x %d x %d), flip = %d\n", path.c_str(), image.width,
            image.height, image.channel, flip ? 1 : 0);
    return true;
}

}  // namespace pmStb
