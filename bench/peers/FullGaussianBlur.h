// Peer: a separable Gaussian at full size in plain GLES, with neighbouring
// taps folded into one bilinear read, out to three sigma; RGBA8 between the
// two passes.
#ifndef PIXMORA_BENCH_PEERS_FULLGAUSSIANBLUR_H
#define PIXMORA_BENCH_PEERS_FULLGAUSSIANBLUR_H

#include <cstdint>
#include <vector>

#include "PeerGL.h"

namespace peer {

class FullGaussianBlur {
public:
    FullGaussianBlur(int width, int height, double sigma);
    ~FullGaussianBlur();
    void run(const std::vector<uint8_t>& pixels, std::vector<uint8_t>& out);
    int readsPerPass = 0;

private:
    int width, height;
    GLuint input = 0, program = 0;
    Target across, output;
};

}  // namespace peer

#endif
