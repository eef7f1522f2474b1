// Image files through stb_image and stb_image_write. Both codecs are compiled
// into this file alone, with static linkage, so that none of their symbols
// leaves the library; every function that calls them lives here.
#include "pmStb.h"
#include "pmStb.jpegTables.h"
#include "pmStb.limits.h"
#include "pmStb.pngChunks.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <fstream>
#include <vector>

// The image formats the library reads: PNG, JPEG, BMP, TGA and Radiance HDR.
#define STB_IMAGE_STATIC
// Every allocation of the decoders starts zeroed: the JPEG decoder takes its
// state from malloc without clearing it, and a scan that names a Huffman table
// no DHT defined would read uninitialised tables and index past their end.
// Zeroed tables decode such a scan as zeros.
#define STBI_MALLOC(size) calloc(1, size)
#define STBI_REALLOC(pointer, size) realloc(pointer, size)
#define STBI_FREE(pointer) free(pointer)
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

using Block = pmUtil::MemoryBlock<unsigned char>;

// Sets the process-wide load flip and clears it again when the scope ends.
class LoadFlipScope {
public:
    explicit LoadFlipScope(bool flip) { stbi_set_flip_vertically_on_load(flip ? 1 : 0); }
    ~LoadFlipScope() { stbi_set_flip_vertically_on_load(0); }
    LoadFlipScope(const LoadFlipScope&) = delete;
    LoadFlipScope& operator=(const LoadFlipScope&) = delete;
};

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
template <typename T>
bool hasPixels(const pmUtil::ImageData<T>& image) {
    return image.data != nullptr && isValidImageShape(image.width, image.height, image.channel);
}

// The whole file, which the checks below and the decoder then read from
// memory; false when it cannot be read or is beyond what stb counts in an int.
bool readFileBytes(const std::string& path, std::vector<unsigned char>& bytes) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in.is_open()) return false;
    const std::streamoff size = in.tellg();
    if (size <= 0 || size > INT_MAX) return false;
    bytes.resize(static_cast<std::size_t>(size));
    in.seekg(0);
    in.read(reinterpret_cast<char*>(bytes.data()), size);
    return in.gcount() == size;
}

// Encoded bytes are never trusted: the decoder's own weak spots are checked
// first, then the pixels the header claims must fit in an int and come from
// the bytes there are, or nothing is allocated for them. Bytes whose header
// stb cannot read are left to the decoder to refuse.
bool isSafeToDecode(const unsigned char* data, std::size_t size) {
    if (data == nullptr || size == 0 || size > INT_MAX) return false;
    if (!hasSafeHuffmanTables(data, size) || !hasHonestChunkLengths(data, size)) return false;
    int width = 0;
    int height = 0;
    int channel = 0;
    if (stbi_info_from_memory(data, static_cast<int>(size), &width, &height, &channel) == 0) {
        return true;
    }
    return isPlausibleEncoding(width, height, channel, size);
}

bool isSafeToDecode(const std::vector<unsigned char>& bytes) {
    return isSafeToDecode(bytes.data(), bytes.size());
}

// Encodes through one of the callback writers into a block the size of the
// raw image, which writeMemoryBlock enlarges should the encoding not fit.
// The block is empty when the encoder fails.
Block packThroughCallback(const std::string& extension, const Image& image) {
    Block block = pmUtil::createMemoryBlock<unsigned char>(image.getCount());
    if (block.data == nullptr) return Block();
    const int w = image.width;
    const int h = image.height;
    const int c = image.channel;
    int written = 0;
    if (extension == ".jpg") {
        written = stbi_write_jpg_to_func(writeMemoryBlock, &block, w, h, c, image.data, 100);
    } else if (extension == ".bmp") {
        written = stbi_write_bmp_to_func(writeMemoryBlock, &block, w, h, c, image.data);
    } else {
        written = stbi_write_tga_to_func(writeMemoryBlock, &block, w, h, c, image.data);
    }
    if (written == 0) pmUtil::deleteMemoryBlock(block);
    return block;
}

}  // namespace

bool loadImageInfo(const std::string& path, int* width, int* height, int* channel) {
    std::vector<unsigned char> bytes;
    if (!readFileBytes(path, bytes) || !hasSafeHuffmanTables(bytes.data(), bytes.size()) ||
        stbi_info_from_memory(bytes.data(), static_cast<int>(bytes.size()), width, height,
                              channel) == 0) {
        PM_LOGE("Fail to load %s\n", path.c_str());
        return false;
    }
    return true;
}

Image loadImage(const std::string& path, bool flip) {
    int width = 0;
    int height = 0;
    int channel = 0;
    unsigned char* data = nullptr;
    std::vector<unsigned char> bytes;
    if (readFileBytes(path, bytes) && isSafeToDecode(bytes)) {
        LoadFlipScope flipScope(flip);
        data = stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height,
                                     &channel, 0);
    }
    if (data == nullptr) {
        PM_LOGE("Fail to load %s.\n", path.c_str());
        width = height = channel = 0;
    }
    return Image(width, height, channel, data, true);
}

pmUtil::ImageData<float> loadHdrImage(const std::string& path, bool flip) {
    int width = 0;
    int height = 0;
    int channel = 0;
    float* data = nullptr;
    std::vector<unsigned char> bytes;
    if (readFileBytes(path, bytes) && isSafeToDecode(bytes)) {
        LoadFlipScope flipScope(flip);
        data = stbi_loadf_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height,
                                      &channel, 0);
    }
    if (data == nullptr) {
        PM_LOGE("Fail to load %s.\n", path.c_str());
        width = height = channel = 0;
    }
    return pmUtil::ImageData<float>(width, height, channel, data, true);
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

bool saveHdrImage(const std::string& path, const pmUtil::ImageData<float>& image, bool flip) {
    WriteFlipScope flipScope(flip);
    const std::string extension = pmUtil::stringExtension(path);
    if (extension != ".hdr") {
        PM_LOGE("Unsupported file extension (%s).\n", extension.c_str());
        return false;
    }
    if (!hasPixels(image) ||
        stbi_write_hdr(path.c_str(), image.width, image.height, image.channel, image.data) == 0) {
        PM_LOGE("Fail to save %s.\n", path.c_str());
        return false;
    }
    PM_LOGI("filename = %s, info = (%d x %d x %d), flip = %d\n", path.c_str(), image.width,
            image.height, image.channel, flip ? 1 : 0);
    return true;
}

void writeMemoryBlock(void* context, void* data, int size) {
    Block* block = static_cast<Block*>(context);
    if (block == nullptr || data == nullptr || size <= 0) return;
    const std::uint64_t needed = block->index + static_cast<std::uint64_t>(size);
    if (needed > block->length) {
        // The encoded file is larger than the raw pixels (small images carry
        // headers bigger than themselves): move to a buffer that fits.
        std::uint64_t grown = block->length * 2;
        if (grown < needed) grown = needed;
        unsigned char* larger =
            pmUtil::safeNewArray<unsigned char>(static_cast<std::size_t>(grown));
        if (larger == nullptr) return;
        if (block->data != nullptr) {
            memcpy(larger, block->data, static_cast<std::size_t>(block->index));
        }
        pmUtil::releaseData(block->data, block->useFree);
        block->data = larger;
        block->length = grown;
        block->useFree = false;
    }
    block->write(data, static_cast<std::size_t>(size));
}

Block createPackedImage(const std::string& extension, const Image& image, bool flip) {
    const bool known = extension.size() == 4 && (extension == ".png" || extension == ".jpg" ||
                                                 extension == ".bmp" || extension == ".tga");
    Block block;
    if (known && hasPixels(image)) {
        const int rawSize = static_cast<int>(image.getCount());
        if (extension == ".png") {
            int length = 0;
            unsigned char* encoded = nullptr;
            {
                WriteFlipScope flipScope(flip);
                encoded = stbi_write_png_to_mem(image.data, 0, image.width, image.height,
                                                image.channel, &length);
            }
            if (encoded != nullptr) {
                block = Block(encoded, static_cast<std::uint64_t>(length),
                              static_cast<std::uint64_t>(length), true);
                PM_LOGI("Compress(png) - %d -> %d (%.1f%%)\n", rawSize, length,
                        100.0f * static_cast<float>(length) / static_cast<float>(rawSize));
                return block;
            }
        } else {
            {
                WriteFlipScope flipScope(flip);
                block = packThroughCallback(extension, image);
            }
            if (block.data != nullptr) {
                const ssize_t packed = static_cast<ssize_t>(block.index);
                if (extension == ".jpg") {
                    // JPEG keeps no alpha, so only three of four channels count.
                    const int jpgRaw =
                        image.channel == 4 ? image.width * image.height * 3 : rawSize;
                    PM_LOGI("Compress(jpg) - %d -> %zd (%.1f%%)\n", jpgRaw, packed,
                            100.0f * static_cast<float>(packed) / static_cast<float>(jpgRaw));
                } else if (extension == ".bmp") {
                    PM_LOGI("Compress(bmp) - %d -> %zd (%.1f%%)\n", rawSize, packed,
                            100.0f * static_cast<float>(packed) / static_cast<float>(rawSize));
                } else {
                    PM_LOGI("Compress(tga) - %d -> %zd (%.1f%%)\n", rawSize, packed,
                            100.0f * static_cast<float>(packed) / static_cast<float>(rawSize));
                }
                return block;
            }
        }
    }
    PM_LOGE("Fail to pack image format %s.\n", extension.c_str());
    return Block();
}

Image createUnpackedImage(const Block& block, bool flip) {
    int width = 0;
    int height = 0;
    int channel = 0;
    unsigned char* data = nullptr;
    if (block.data != nullptr && block.index > 0 && block.index <= block.length &&
        isSafeToDecode(block.data, static_cast<std::size_t>(block.index))) {
        LoadFlipScope flipScope(flip);
        data = stbi_load_from_memory(block.data, static_cast<int>(block.index), &width, &height,
                                     &channel, 0);
    }
    if (data == nullptr) {
        PM_LOGE("Fail to unpack an image block.\n");
        width = height = channel = 0;
    }
    return Image(width, height, channel, data, true);
}

}  // namespace pmStb
