// Peer: the dual-filter pyramid blur (5 reads down, 8 reads up) in plain
// GLES with RGBA8 levels, tuned to a Gaussian sigma by its level count and
// sample offset.
#ifndef PIXMORA_BENCH_PEERS_DUALFILTERBLUR_H
#define PIXMORA_BENCH_PEERS_DUALFILTERBLUR_H

#include <cstdint>
#include <vector>

#include "PeerGL.h"

namespace peer {

// The spread, in full-size pixels squared along one axis, of `levels`
// down and up passes with sample offset `offset`, from the bilinear
// footprint of every read.
double dualFilterVariance(int levels, double offset);

class DualFilterBlur {
public:
    DualFilterBlur(int width, int height, double sigma);
    ~DualFilterBlur();
    // Upload, blur, read-back into `out` (RGBA, bottom row first).
    void run(const std::vector<uint8_t>& pixels, std::vector<uint8_t>& out);
    int levels = 1;
    double offset = 1.0;

private:
    int width, height;
    GLuint input = 0, down = 0, up = 0;
    std::vector<Target> pyramid;
    Target output;
};

}  // namespace peer

#endif
