/**
 * @file pmImg.h
 * @brief Packed pixels and channel tools on 8-bit images (pmImg).
 *
 * Packed pixels of one to four bytes that overlay the pixels of an image, and
 * tools on 8-bit images: moving channels between images, a lossless delta between
 * two images with its signs packed one bit per changed byte, and a deterministic
 * noise pattern for dithering. Nothing here calls GL.
 */
#ifndef PIXMORA_PMIMG_H
#define PIXMORA_PMIMG_H

#include <glm/glm.hpp>
#include <vector>

#include "pmExport.h"
#include "pmUtil.h"

namespace PM_VISIBLE pmImg {

// Float to byte: times 255, clamped to 0 to 255, truncated (0.999 gives 254).
// Not-a-number gives 0.
unsigned char floatToByte(float value);
// Byte to float: times 1/255.
float byteToFloat(unsigned char value);

// One byte. Assigning a float stores it by the float to byte rule.
struct vec1p {
    unsigned char v[1];

    vec1p() = default;
    vec1p(unsigned char _x) : v{_x} {}
    vec1p(float _value) : v{floatToByte(_value)} {}
    vec1p(double _value) : v{floatToByte(static_cast<float>(_value))} {}
    vec1p(const vec1p&) = default;
    vec1p& operator=(const vec1p&) = default;
    vec1p& operator=(unsigned char _x) {
        v[0] = _x;
        return *this;
    }

    float getData() const { return byteToFloat(v[0]); }
};

// Two bytes, in order.
struct vec2p {
    unsigned char v[2];

    vec2p() = default;
    vec2p(unsigned char _x, unsigned char _y) : v{_x, _y} {}
    vec2p(const glm::vec2& _value) : v{floatToByte(_value.x), floatToByte(_value.y)} {}
    vec2p(const vec2p&) = default;
    vec2p& operator=(const vec2p&) = default;

    // An index out of range is logged, and its address is still returned.
    unsigned char& operator[](int _i);
    const unsigned char& operator[](int _i) const;

    glm::vec2 getData() const { return glm::vec2(byteToFloat(v[0]), byteToFloat(v[1])); }
};

// Three bytes, in order.
struct vec3p {
    unsigned char v[3];

    vec3p() = default;
    vec3p(unsigned char _x, unsigned char _y, unsigned char _z) : v{_x, _y, _z} {}
    vec3p(const glm::vec3& _value)
        : v{floatToByte(_value.x), floatToByte(_value.y), floatToByte(_value.z)} {}
    vec3p(const vec3p&) = default;
    vec3p& operator=(const vec3p&) = default;

    unsigned char& operator[](int _i);
    const unsigned char& operator[](int _i) const;

    glm::vec3 getData() const {
        return glm::vec3(byteToFloat(v[0]), byteToFloat(v[1]), byteToFloat(v[2]));
    }
};

// Four bytes, in order.
struct vec4p {
    unsigned char v[4];

    vec4p() = default;
    vec4p(unsigned char _x, unsigned char _y, unsigned char _z, unsigned char _w)
        : v{_x, _y, _z, _w} {}
    vec4p(const glm::vec4& _value)
        : v{floatToByte(_value.x), floatToByte(_value.y), floatToByte(_value.z),
            floatToByte(_value.w)} {}
    vec4p(const vec4p&) = default;
    vec4p& operator=(const vec4p&) = default;

    unsigned char& operator[](int _i);
    const unsigned char& operator[](int _i) const;

    glm::vec4 getData() const {
        return glm::vec4(byteToFloat(v[0]), byteToFloat(v[1]), byteToFloat(v[2]),
                         byteToFloat(v[3]));
    }
};

static_assert(sizeof(vec1p) == 1 && sizeof(vec2p) == 2 && sizeof(vec3p) == 3 && sizeof(vec4p) == 4,
              "packed pixels carry no padding");

using ByteImage = pmUtil::ImageData<unsigned char>;

// Copies the two bytes of each pixel of a 2-channel src to the first two bytes
// of the same pixel of a 3-channel dst; the third byte is kept. Any other pair
// of channel counts, or a size mismatch, changes nothing.
void mapImageChannels(const ByteImage& src, ByteImage& dst);

// dst (4 channels) takes the first three bytes of each rgb pixel and the
// fourth byte of each alpha pixel. All three must have the same size.
void mergeImageChannels(const ByteImage& rgb, const ByteImage& alpha, ByteImage& dst);

// Byte k of each src pixel goes to the 1-channel plane dst[k]; there must be
// one plane of src's size per channel.
void splitImageChannels(const ByteImage& src, std::vector<ByteImage>& dst);

// For each byte, d = src2 - src1: dstAbs takes |d|, dstSign takes 1 where d is
// positive, 2 where negative, 0 where equal.
void extractDelta(const ByteImage& src1, const ByteImage& src2, ByteImage& dstAbs,
                  ByteImage& dstSign);

// Applies a delta in place, wrapping at 8 bits. Forwards (reverse false) it
// turns src1 into src2, backwards it turns src2 into src1.
void mergeDelta(ByteImage& inout, const ByteImage& deltaAbs, const ByteImage& deltaSign,
                bool reverse);

// One bit per non-zero sign, in byte order, least significant bit first: set
// for 2, clear for 1. length is the room for every byte, index the bytes used;
// the buffer comes from calloc (useFree true).
pmUtil::MemoryBlock<unsigned char> compressSign(const ByteImage& deltaSign);

// Rebuilds the sign image from the abs image, whose non-zero bytes tell which
// bytes took a bit. The result is allocated with new[] (useFree false).
ByteImage decompressSign(const ByteImage& deltaAbs,
                         const pmUtil::MemoryBlock<unsigned char>& block);

// Fills a 1-channel image with fract(sin(u * 13.6797 + v * 83.917) * 48732.363)
// over u, v in 0 to 1: the same pattern for the same size, no random source.
void generateRandomPattern(ByteImage& container);

}  // namespace pmImg

#endif
