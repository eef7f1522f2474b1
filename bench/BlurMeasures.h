// What the blur comparison measures besides time: the likeness to a float64
// Gaussian (SSIM on luma), the sigma that fits an output best, and a grid
// measure, the spectral line of the row second derivative at a period.
#ifndef PIXMORA_BENCH_BLURMEASURES_H
#define PIXMORA_BENCH_BLURMEASURES_H

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

// Luma of an RGBA picture, 0 to 255, as doubles.
cv::Mat lumaOf(const std::vector<uint8_t>& rgba, int width, int height);

// The float64 Gaussian of one picture for any sigma: edges replicated out to
// three sigma of the largest one, blurred by multiplying the spectrum.
class GaussianReference {
public:
    GaussianReference(const cv::Mat& luma, double maxSigma);
    cv::Mat blurred(double sigma) const;

private:
    cv::Mat spectrum;
    int pad;
    cv::Size size;
};

// Mean SSIM with an 11 x 11 Gaussian window of sigma 1.5, for 8-bit range.
double ssim(const cv::Mat& a, const cv::Mat& b);

// The sigma whose Gaussian has the highest SSIM with `output`, searched
// around `guess`; `bestSsim` receives that SSIM.
double fitSigma(const GaussianReference& reference, const cv::Mat& output, double guess,
                double* bestSsim);

// Whether a sigma from fitSigma lies at an end of its search range: the
// output then fits no Gaussian near the guess, or the reference does not
// model what the blurs do (an edge, say), and its SSIM says little.
bool fitAtRangeEnd(double sigma, double guess);

// The window of `size` whose input is smoothest (least second difference):
// a sky or a wall, where a grid would show.
cv::Rect smoothestRegion(const cv::Mat& luma, cv::Size size);

// Power of the row second derivative at `period` pixels, over the median
// power of the neighbouring frequencies; 1 means no line.
double gridLine(const cv::Mat& luma, cv::Rect region, double period);

#endif
