// Peer: the blur on the CPU with OpenCV, a strong choice where there is no
// GPU: area resize down, Gaussian at the small size, linear resize back.
#ifndef PIXMORA_BENCH_PEERS_CPUBLUR_H
#define PIXMORA_BENCH_PEERS_CPUBLUR_H

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

namespace peer {

class CpuBlur {
public:
    CpuBlur(int width, int height, double sigma);
    void run(const std::vector<uint8_t>& pixels, std::vector<uint8_t>& out);
    int factor = 1;
    double smallSigma = 1.0;

private:
    int width, height;
    cv::Mat small, blurred;
};

}  // namespace peer

#endif
