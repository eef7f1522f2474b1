// What an 8-bit image from outside may claim before anything is allocated for
// it: a size and channel count that the library can hold and hand to GL and
// the encoders, and no more pixels than its encoded bytes can produce.
#ifndef PIXMORA_PMSTB_LIMITS_H
#define PIXMORA_PMSTB_LIMITS_H

#include <climits>
#include <cstdint>

namespace pmStb {

// The encoders keep four channels a pixel at most, on the stack among others.
constexpr int kMaxImageChannel = 4;

// Deflate cannot expand one byte into more than 1032; no format read here
// does better, so a file that claims more pixels than this lies.
constexpr std::uint64_t kMaxDecodedBytesPerEncodedByte = 1032;

// Width, height and channel make a byte count that fits an int, which is what
// the codecs and GL count in.
inline bool isValidImageShape(std::int64_t width, std::int64_t height, std::int64_t channel) {
    if (width < 1 || height < 1 || channel < 1 || channel > kMaxImageChannel) return false;
    // Each side first, so that the product cannot overflow even 64 bits.
    if (width > INT_MAX || height > INT_MAX) return false;
    return width * height <= INT_MAX / channel;
}

// Whether `encodedBytes` of a compressed file can hold the pixels its header
// claims; a small allowance covers the headers of tiny images.
inline bool isPlausibleEncoding(std::int64_t width, std::int64_t height, std::int64_t channel,
                                std::uint64_t encodedBytes) {
    if (!isValidImageShape(width, height, channel)) return false;
    const std::uint64_t decoded = static_cast<std::uint64_t>(width * height * channel);
    return decoded <= (encodedBytes + 1024) * kMaxDecodedBytesPerEncodedByte;
}

}  // namespace pmStb

#endif
