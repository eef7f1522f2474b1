// Peer: area resize, Gaussian, linear resize with OpenCV.
#include "CpuBlur.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace peer {

CpuBlur::CpuBlur(int w, int h, double sigma) : width(w), height(h) {
    // About three small pixels of sigma; the area box and the linear stretch
    // take their share of the variance.
    factor = std::max(1, static_cast<int>(sigma / 3.0));
    const double d = factor;
    const double rest = sigma * sigma - (d * d - 1.0) / 12.0 - (factor > 1 ? d * d / 6.0 : 0.0);
    smallSigma = std::sqrt(std::max(rest, 0.0625)) / d;
}

void CpuBlur::run(const std::vector<uint8_t>& pixels, std::vector<uint8_t>& out) {
    const cv::Mat input(height, width, CV_8UC4, const_cast<uint8_t*>(pixels.data()));
    cv::Mat output(height, width, CV_8UC4, out.data());
    if (factor == 1) {
        cv::GaussianBlur(input, output, cv::Size(0, 0), smallSigma, smallSigma,
                         cv::BORDER_REPLICATE);
        return;
    }
    cv::resize(input, small, cv::Size(width / factor, height / factor), 0, 0, cv::INTER_AREA);
    cv::GaussianBlur(small, blurred, cv::Size(0, 0), smallSigma, smallSigma, cv::BORDER_REPLICATE);
    cv::resize(blurred, output, cv::Size(width, height), 0, 0, cv::INTER_LINEAR);
}

}  // namespace peer
