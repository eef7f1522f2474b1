// stb_image reads a DHT segment wherever the bytes FF C4 follow a marker
// boundary, and a progressive stream defines tables between its scans.
// Entropy-coded data never holds FF C4 (an FF there is followed by 00 or a
// marker), so every place the decoder could read a table from is one of the
// places where FF C4 occurs: each of them is read here as stb would read it.
#include "pmStb.jpegTables.h"

namespace pmStb {

namespace {

constexpr unsigned char kMarker = 0xFF;
constexpr unsigned char kStartOfImage = 0xD8;
constexpr unsigned char kHuffmanTable = 0xC4;
constexpr std::size_t kCodeLengths = 16;
constexpr unsigned kMaxCodes = 256;

// A byte as stb's reader gives it: 0 past the end.
unsigned byteAt(const unsigned char* data, std::size_t size, std::size_t pos) {
    return pos < size ? data[pos] : 0u;
}

bool startsAsJpeg(const unsigned char* data, std::size_t size) {
    std::size_t pos = 0;
    if (size < 2 || data[0] != kMarker) return false;
    while (pos < size && data[pos] == kMarker) ++pos;
    return pos < size && data[pos] == kStartOfImage;
}

// The segment whose length field is at `pos`, read table by table as the
// decoder does, past the segment's end if the tables run on.
bool isSegmentSafe(const unsigned char* data, std::size_t size, std::size_t pos) {
    long remaining =
        static_cast<long>((byteAt(data, size, pos) << 8) | byteAt(data, size, pos + 1));
    remaining -= 2;
    pos += 2;
    while (remaining > 0 && pos < size) {
        const unsigned kind = byteAt(data, size, pos);
        if ((kind >> 4) > 1 || (kind & 15) > 3) return true;  // the decoder stops here
        unsigned codes = 0;
        for (std::size_t i = 0; i < kCodeLengths; ++i) codes += byteAt(data, size, pos + 1 + i);
        if (codes > kMaxCodes) return false;
        pos += 1 + kCodeLengths + codes;
        remaining -= static_cast<long>(1 + kCodeLengths + codes);
    }
    return true;
}

}  // namespace

bool hasSafeHuffmanTables(const unsigned char* data, std::size_t size) {
    if (data == nullptr || !startsAsJpeg(data, size)) return true;
    for (std::size_t pos = 0; pos + 1 < size; ++pos) {
        if (data[pos] == kMarker && data[pos + 1] == kHuffmanTable &&
            !isSegmentSafe(data, size, pos + 2)) {
            return false;
        }
    }
    return true;
}

}  // namespace pmStb
