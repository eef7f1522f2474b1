// Packed pixels and the channel and delta tools on 8-bit images. A failed
// check is logged and the operation then does nothing, so that images of the
// wrong shape are never read or written past their end.
#include "pmImg.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace pmImg {

namespace {

constexpr float kByteToFloat = 0.003921569f;

bool sameSize(const ByteImage& a, const ByteImage& b) {
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight();
}

// The compressed sign block seen through the name its checks use.
struct CompressedSignView {
    const pmUtil::MemoryBlock<unsigned char>& block;
    std::uint64_t getIndex() const { return block.index; }
};

}  // namespace

unsigned char floatToByte(float value) {
    float scaled = value * 255.0f;
    if (!(scaled > 0.0f)) scaled = 0.0f;
    if (scaled > 255.0f) scaled = 255.0f;
    return static_cast<unsigned char>(scaled);
}

float byteToFloat(unsigned char value) {
    return static_cast<float>(value) * kByteToFloat;
}

unsigned char& vec2p::operator[](int _i) {
    PM_ASSERT(_i >= 0 && _i < 2);
    return *(v + _i);
}

const unsigned char& vec2p::operator[](int _i) const {
    PM_ASSERT(_i >= 0 && _i < 2);
    return *(v + _i);
}

unsigned char& vec3p::operator[](int _i) {
    PM_ASSERT(_i >= 0 && _i < 3);
    return *(v + _i);
}

const unsigned char& vec3p::operator[](int _i) const {
    PM_ASSERT(_i >= 0 && _i < 3);
    return *(v + _i);
}

unsigned char& vec4p::operator[](int _i) {
    PM_ASSERT(_i >= 0 && _i < 4);
    return *(v + _i);
}

const unsigned char& vec4p::operator[](int _i) const {
    PM_ASSERT(_i >= 0 && _i < 4);
    return *(v + _i);
}

void mapImageChannels(const ByteImage& src, ByteImage& dst) {
    PM_ASSERT(src.getWidth() == dst.getWidth() && src.getHeight() == dst.getHeight());
    if (!sameSize(src, dst)) return;
    if (src.getChannel() != 2 || dst.getChannel() != 3) return;
    if (src.data == nullptr || dst.data == nullptr) return;

    const std::size_t pixels = static_cast<std::size_t>(src.getWidth()) * src.getHeight();
    const vec2p* from = reinterpret_cast<const vec2p*>(src.data);
    vec3p* to = reinterpret_cast<vec3p*>(dst.data);
    for (std::size_t i = 0; i < pixels; ++i) {
        to[i][0] = from[i][0];
        to[i][1] = from[i][1];
    }
}

void mergeImageChannels(const ByteImage& rgb, const ByteImage& alpha, ByteImage& dst) {
    // The colour source needs three bytes a pixel and the alpha source four.
    if (!sameSize(rgb, alpha) || !sameSize(rgb, dst) || dst.getChannel() != 4 ||
        rgb.getChannel() < 3 || alpha.getChannel() < 4) {
        PM_LOGE("Size is different each other.\n");
        return;
    }
    if (rgb.data == nullptr || alpha.data == nullptr || dst.data == nullptr) return;

    const std::size_t pixels = static_cast<std::size_t>(dst.getWidth()) * dst.getHeight();
    const std::size_t rgbStride = static_cast<std::size_t>(rgb.getChannel());
    const std::size_t alphaStride = static_cast<std::size_t>(alpha.getChannel());
    for (std::size_t i = 0; i < pixels; ++i) {
        const unsigned char* colour = rgb.data + i * rgbStride;
        unsigned char* out = dst.data + i * 4;
        out[0] = colour[0];
        out[1] = colour[1];
        out[2] = colour[2];
        out[3] = alpha.data[i * alphaStride + 3];
    }
}

void splitImageChannels(const ByteImage& src, std::vector<ByteImage>& dst) {
    PM_ASSERT(src.getChannel() == (int)dst.size());
    bool valid = src.getChannel() == static_cast<int>(dst.size()) && src.data != nullptr;
    for (const ByteImage& it : dst) {
        PM_ASSERT(src.getWidth() == it.getWidth());
        PM_ASSERT(src.getHeight() == it.getHeight());
        PM_ASSERT(it.getChannel() == 1);
        valid = valid && sameSize(src, it) && it.getChannel() == 1 && it.data != nullptr;
    }
    if (!valid) return;

    const std::size_t pixels = static_cast<std::size_t>(src.getWidth()) * src.getHeight();
    const std::size_t channel = dst.size();
    for (std::size_t i = 0; i < pixels; ++i) {
        for (std::size_t k = 0; k < channel; ++k) {
            dst[k].data[i] = src.data[i * channel + k];
        }
    }
}

void extractDelta(const ByteImage& src1, const ByteImage& src2, ByteImage& dstAbs,
                  ByteImage& dstSign) {
    PM_ASSERT(src1.isCompatible(src2));
    PM_ASSERT(src1.isCompatible(dstAbs));
    PM_ASSERT(src1.isCompatible(dstSign));
    if (!src1.isCompatible(src2) || !src1.isCompatible(dstAbs) || !src1.isCompatible(dstSign)) {
        return;
    }

    const std::size_t count = src1.getCount();
    if (dstAbs.data != nullptr) std::memset(dstAbs.data, 0, count);
    if (dstSign.data != nullptr) std::memset(dstSign.data, 0, count);
    if (src1.data == nullptr || src2.data == nullptr || dstAbs.data == nullptr ||
        dstSign.data == nullptr) {
        return;
    }

    for (std::size_t i = 0; i < count; ++i) {
        const int d = static_cast<int>(src2.data[i]) - static_cast<int>(src1.data[i]);
        if (d > 0) {
            dstSign.data[i] = 1;
            dstAbs.data[i] = static_cast<unsigned char>(d);
        } else if (d < 0) {
            dstSign.data[i] = 2;
            dstAbs.data[i] = static_cast<unsigned char>(-d);
        }
    }
}

void mergeDelta(ByteImage& inout, const ByteImage& deltaAbs, const ByteImage& deltaSign,
                bool reverse) {
    PM_ASSERT(inout.isCompatible(deltaAbs));
    PM_ASSERT(inout.isCompatible(deltaSign));
    if (!inout.isCompatible(deltaAbs) || !inout.isCompatible(deltaSign)) return;
    if (inout.data == nullptr || deltaAbs.data == nullptr || deltaSign.data == nullptr) return;

    // Forwards sign 1 adds; backwards sign 2 adds. Everything else subtracts.
    const unsigned char addingSign = reverse ? 2 : 1;
    const std::size_t count = inout.getCount();
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char amount = deltaAbs.data[i];
        if (amount == 0) continue;
        if (deltaSign.data[i] == addingSign) {
            inout.data[i] = static_cast<unsigned char>(inout.data[i] + amount);
        } else {
            inout.data[i] = static_cast<unsigned char>(inout.data[i] - amount);
        }
    }
}

pmUtil::MemoryBlock<unsigned char> compressSign(const ByteImage& deltaSign) {
    const std::size_t size = deltaSign.getCount();
    const std::size_t length = (size + 7) / 8;
    unsigned char* bits = nullptr;
    if (length > 0) bits = static_cast<unsigned char*>(std::calloc(length, 1));

    std::size_t k = 0;
    if (bits != nullptr && deltaSign.data != nullptr) {
        for (std::size_t i = 0; i < size; ++i) {
            const unsigned char sign = deltaSign.data[i];
            if (sign == 0) continue;
            if (sign == 2) bits[k / 8] |= static_cast<unsigned char>(1u << (k % 8));
            ++k;
        }
    }
    return pmUtil::MemoryBlock<unsigned char>(bits, bits != nullptr ? length : 0,
                                              bits != nullptr ? (k + 7) / 8 : 0, true);
}

ByteImage decompressSign(const ByteImage& deltaAbs,
                         const pmUtil::MemoryBlock<unsigned char>& block) {
    const std::size_t size = deltaAbs.getCount();
    ByteImage sign(deltaAbs.getWidth(), deltaAbs.getHeight(), deltaAbs.getChannel(),
                   pmUtil::safeNewArray<unsigned char>(size), false);
    if (sign.data == nullptr) return ByteImage();
    if (deltaAbs.data == nullptr) {
        std::memset(sign.data, 0, size);
        return sign;
    }
    pmUtil::copyImageData(deltaAbs, sign);

    // A block shorter than the changed bytes reads as clear bits past its end.
    const CompressedSignView signCompressed{block};
    std::size_t validCount = 0;
    for (std::size_t i = 0; i < size; ++i) {
        if (sign.data[i] == 0) continue;
        const std::size_t byte = validCount / 8;
        const bool set = block.data != nullptr && byte < block.length &&
                         ((block.data[byte] >> (validCount % 8)) & 1u) != 0;
        sign.data[i] = set ? 2 : 1;
        ++validCount;
    }
    PM_ASSERT((size_t)((validCount + 7) / 8) == signCompressed.getIndex());
    return sign;
}

void generateRandomPattern(ByteImage& container) {
    PM_ASSERT(container.getChannel() == 1);
    if (container.getChannel() != 1 || container.data == nullptr) return;

    const int width = container.getWidth();
    const int height = container.getHeight();
    // A width or height of 1 makes the reciprocal infinite; such a line comes
    // out as 0.
    const float invWidth = 1.0f / static_cast<float>(width - 1);
    const float invHeight = 1.0f / static_cast<float>(height - 1);
    vec1p* pixels = reinterpret_cast<vec1p*>(container.data);
    for (int x = 0; x < width; ++x) {
        for (int y = 0; y < height; ++y) {
            const float u = static_cast<float>(x) * invWidth;
            const float v = static_cast<float>(y) * invHeight;
            const float t = sinf(u * 13.6797f + v * 83.917f) * 48732.363f;
            pixels[static_cast<std::size_t>(y) * width + x] = vec1p(t - floorf(t));
        }
    }
}

}  // namespace pmImg
