#include "pmStb.pngChunks.h"

#include <cstdint>
#include <cstring>

namespace pmStb {

namespace {

constexpr unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
// Length, type and CRC around each chunk's data.
constexpr std::size_t kChunkFrame = 12;

std::uint32_t readBigEndian32(const unsigned char* bytes) {
    return (static_cast<std::uint32_t>(bytes[0]) << 24) |
           (static_cast<std::uint32_t>(bytes[1]) << 16) |
           (static_cast<std::uint32_t>(bytes[2]) << 8) | static_cast<std::uint32_t>(bytes[3]);
}

}  // namespace

bool hasHonestChunkLengths(const unsigned char* data, std::size_t size) {
    if (data == nullptr || size < sizeof(kSignature) ||
        std::memcmp(data, kSignature, sizeof(kSignature)) != 0) {
        return true;
    }
    std::size_t pos = sizeof(kSignature);
    // A chunk cut short in its frame is refused by the decoder itself.
    while (size - pos >= 8) {
        const std::uint64_t length = readBigEndian32(data + pos);
        if (length > size - pos - 8) return false;
        if (std::memcmp(data + pos + 4, "IEND", 4) == 0) return true;
        if (size - pos < kChunkFrame + length) return true;
        pos += kChunkFrame + static_cast<std::size_t>(length);
    }
    return true;
}

}  // namespace pmStb
