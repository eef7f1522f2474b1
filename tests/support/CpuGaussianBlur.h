// A CPU model of the separable blur, written from the definition of the
// kernel rather than taken from the library: the searched-sigma Gaussian,
// its folding into bilinear taps, and the two passes over an 8-bit picture.
#ifndef PIXMORA_TESTS_CPUGAUSSIANBLUR_H
#define PIXMORA_TESTS_CPUGAUSSIANBLUR_H

#include <cstdint>
#include <vector>

namespace cpublur {

// The folded kernel: one weight and one offset per pair of texels.
struct FoldedKernel {
    std::vector<float> weights;
    std::vector<float> offsets;
};

// The square root of the two-dimensional Gaussian at row 0, its sigma raised
// in steps of 1, 0.1 and 0.01 from 1.0 until the edge tap is above
// 0.02 / size, then folded as centre-halved pairs.
FoldedKernel independentKernel(int size);

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<float> rgba;  // 0..255, bottom row first as GL stores it
    float at(int x, int y, int c) const;
};

// GL's bilinear read with clamp to edge, at texel-space coordinates, as the
// software renderer filters 8-bit textures: the blend weight rounded to 1/256
// and each blend done in 8-bit fixed point.
float bilinear(const Picture& p, float u, float v, int c);

// One direction of the folded kernel, quantised to 8 bits as the RGBA8
// buffers are, alpha forced to 1.
Picture blurDirection(const Picture& in, const FoldedKernel& kernel, bool horizontal);

// The picture read at each pixel centre of a picture of another size, as a
// pass drawing one quad over its whole target reads a linearly filtered input:
// halving averages 2 x 2 blocks, doubling blends neighbours by 1/4 and 3/4.
Picture resample(const Picture& in, int width, int height);

// The rows in reverse order: what a pass with the vertical flip reads.
Picture flipRows(const Picture& in);

// The largest difference of read-back RGBA bytes from the model over the
// colour channels; 256 when the sizes differ or an alpha is not 255.
int worstDifference(const std::vector<uint8_t>& out, const Picture& expected);

// Both passes, horizontal first, of RGBA bytes given bottom row first.
Picture blurBoth(const std::vector<uint8_t>& rgba, int width, int height, int kernelSize);

}  // namespace cpublur

#endif
