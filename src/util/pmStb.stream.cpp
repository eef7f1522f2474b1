// Image records in a binary stream. A record comes from outside: every length
// and size in it is checked against what the stream still holds before
// anything is allocated, and a record that does not hold is refused whole.
#include <cstdint>
#include <string>
#include <vector>

#include "pmStb.h"
#include "pmStb.limits.h"
#include "util/pmStreamBytes.h"

namespace pmStb {

namespace {

using Image = pmUtil::ImageData<unsigned char>;
using Block = pmUtil::MemoryBlock<unsigned char>;

// Extensions are a dot and a few letters; a longer one is a broken length.
constexpr std::uint64_t kMaxExtensionLength = 255;

template <typename T>
void writeValue(std::ofstream& stream, const T& value) {
    stream.write(reinterpret_cast<const char*>(&value), sizeof(value));
}

bool readBytes(std::ifstream& stream, void* target, std::uint64_t count) {
    stream.read(static_cast<char*>(target), static_cast<std::streamsize>(count));
    return static_cast<std::uint64_t>(stream.gcount()) == count;
}

template <typename T>
bool readValue(std::ifstream& stream, T& value) {
    return readBytes(stream, &value, sizeof(value));
}

// A broken record leaves the stream at no record boundary: it is failed, so
// that the records after it are refused too rather than read from the middle.
Image refuseRecord(std::ifstream& stream, const char* reason) {
    PM_LOGE("Broken image record: %s.\n", reason);
    stream.setstate(std::ios::failbit);
    return Image();
}

Image readRawRecord(std::ifstream& stream) {
    std::int32_t size[3] = {};
    if (!readValue(stream, size[0]) || !readValue(stream, size[1]) || !readValue(stream, size[2])) {
        return refuseRecord(stream, "truncated size");
    }
    if (!isValidImageShape(size[0], size[1], size[2])) {
        return refuseRecord(stream, "invalid size or channel count");
    }
    Image image(size[0], size[1], size[2], nullptr, false);
    if (image.getCount() > pmUtil::remainingBytes(stream)) {
        return refuseRecord(stream, "truncated pixels");
    }
    image.data = pmUtil::safeNewArray<unsigned char>(image.getCount());
    if (image.data == nullptr) return Image();
    if (!readBytes(stream, image.data, image.getCount())) {
        pmUtil::deleteImageData(image);
        return refuseRecord(stream, "truncated pixels");
    }
    return image;
}

Image readPackedRecord(std::ifstream& stream) {
    std::uint64_t blockLength = 0;
    if (!readValue(stream, blockLength)) return refuseRecord(stream, "truncated block length");
    // A block that failed to pack has length 0: a whole record that decodes
    // to nothing.
    if (blockLength == 0) return createUnpackedImage(Block(), false);
    if (blockLength > pmUtil::remainingBytes(stream) || blockLength > INT_MAX) {
        return refuseRecord(stream, "block longer than the stream");
    }
    Block block = pmUtil::createMemoryBlock<unsigned char>(static_cast<std::size_t>(blockLength));
    if (block.data == nullptr) return Image();
    if (!readBytes(stream, block.data, blockLength)) {
        pmUtil::deleteMemoryBlock(block);
        return refuseRecord(stream, "truncated block");
    }
    block.index = blockLength;
    Image image = createUnpackedImage(block, false);
    pmUtil::deleteMemoryBlock(block);
    return image;
}

}  // namespace

bool writeImage(std::ofstream& stream, const Image& image, const std::string& extension) {
    if (!stream.is_open()) return false;
    if (image.data == nullptr) return false;
    // A record is read back only with a shape the reader accepts.
    if (!isValidImageShape(image.width, image.height, image.channel)) {
        PM_LOGE("Invalid image (%d x %d x %d).\n", image.width, image.height, image.channel);
        return false;
    }

    writeValue(stream, static_cast<std::uint64_t>(extension.size()));
    stream.write(extension.data(), static_cast<std::streamsize>(extension.size()));

    if (extension == ".raw") {
        writeValue(stream, static_cast<std::int32_t>(image.width));
        writeValue(stream, static_cast<std::int32_t>(image.height));
        writeValue(stream, static_cast<std::int32_t>(image.channel));
        stream.write(reinterpret_cast<const char*>(image.data),
                     static_cast<std::streamsize>(image.getCount()));
        return true;
    }

    // A format that fails to pack still leaves a whole record: length 0.
    Block block = createPackedImage(extension, image, false);
    writeValue(stream, static_cast<std::uint64_t>(block.index));
    if (block.index != 0) {
        stream.write(reinterpret_cast<const char*>(block.data),
                     static_cast<std::streamsize>(block.index));
    }
    pmUtil::deleteMemoryBlock(block);
    return true;
}

Image readImage(std::ifstream& stream) {
    if (!stream.is_open()) return Image();

    std::uint64_t extensionLength = 0;
    if (!readValue(stream, extensionLength)) {
        return refuseRecord(stream, "truncated extension length");
    }
    if (extensionLength > kMaxExtensionLength || extensionLength > pmUtil::remainingBytes(stream)) {
        return refuseRecord(stream, "extension longer than the stream");
    }
    std::string extension(static_cast<std::size_t>(extensionLength), '\0');
    if (!readBytes(stream, extension.data(), extensionLength)) {
        return refuseRecord(stream, "truncated extension");
    }
    if (extension == ".raw") return readRawRecord(stream);
    return readPackedRecord(stream);
}

}  // namespace pmStb
