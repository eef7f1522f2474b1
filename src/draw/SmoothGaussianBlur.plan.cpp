// The arithmetic of the smooth quality: how many halvings, which working
// Gaussian, and how it folds into bilinear read pairs. Variances add: the
// box pyramid, the working Gaussian and the B-spline stretch together make
// the wanted sigma.
#include <algorithm>
#include <cmath>

#include "GaussianBlur.h"
#include "SmoothGaussianBlur.h"

namespace pmDraw {

namespace {

// Below this width in working texels a sampled Gaussian stops looking like
// one, and the pyramid's boxes and the stretch would dominate the shape.
constexpr float kMinWorkingSigma = 1.5f;
// Down to the second level the working passes cost a quarter of the full
// size or more: there a slightly shorter Gaussian buys a level.
constexpr float kMinLowLevelSigma = 1.25f;
constexpr int kLowLevels = 2;
// The working picture keeps at least this many texels on its shorter side.
constexpr int kMinWorkingTexels = 4;
// The cubic B-spline has a variance of 1/3 texel squared.
constexpr double kBsplineVariance = 1.0 / 3.0;

// Variance, in full-size pixels squared, of a cascade of 2x box filters
// reducing by `factor`: that of one box `factor` pixels wide.
double pyramidVariance(double factor) {
    return (factor * factor - 1.0) / 12.0;
}

// The stretched picture is at most this many halvings below full size.
constexpr int kMaxStretchLevels = 2;

int stretchLevelsFor(int levels) {
    return std::min(levels, kMaxStretchLevels);
}

// Variance, in full-size pixels squared, of a bilinear magnification by
// `factor`, averaged over the phases of the output pixels.
double magnificationVariance(double factor) {
    return (factor * factor - 1.0) / 6.0;
}

double workingVariance(double sigma, int levels) {
    const double factor = std::ldexp(1.0, levels);
    const double stretch = magnificationVariance(std::ldexp(1.0, stretchLevelsFor(levels)));
    // Stretched at the working size, the B-spline would be a fixed 3-tap
    // filter: the working Gaussian does its share instead, and the pass goes.
    const double bspline = stretchLevelsFor(levels) == levels ? 0.0 : kBsplineVariance;
    return (sigma * sigma - pyramidVariance(factor) - stretch) / (factor * factor) - bspline;
}

// A sampled Gaussian of `sigma` texels out to three sigma, normalised,
// folded into pairs of neighbouring texels that share one bilinear read.
void foldKernel(SmoothBlurPlan& plan) {
    const double sigma = plan.workingSigma;
    const int radius = std::min(static_cast<int>(std::ceil(3.0 * sigma)), 2 * kSmoothMaxPairs);
    double taps[2 * kSmoothMaxPairs + 2] = {};
    double sum = 0.0;
    for (int k = 0; k <= radius; ++k) {
        taps[k] = std::exp(-0.5 * k * k / (sigma * sigma));
        sum += k == 0 ? taps[k] : 2.0 * taps[k];
    }
    plan.centreWeight = static_cast<float>(taps[0] / sum);
    plan.pairCount = (radius + 1) / 2;
    for (int i = 0; i < plan.pairCount; ++i) {
        const int near = 2 * i + 1;
        const double a = taps[near] / sum;
        const double b = taps[near + 1] / sum;
        plan.weights[i] = static_cast<float>(a + b);
        plan.offsets[i] = static_cast<float>(near + b / (a + b));
    }
}

double minWorkingVariance(int levels) {
    const double sigma = levels <= kLowLevels ? kMinLowLevelSigma : kMinWorkingSigma;
    return sigma * sigma;
}

}  // namespace

glm::ivec2 smoothWorkingSize(glm::ivec2 inputSize, int levels) {
    glm::ivec2 size = inputSize;
    for (int i = 0; i < levels; ++i) size = glm::max((size + 1) / 2, glm::ivec2(1));
    return size;
}

SmoothBlurPlan planSmoothBlur(float sigma, glm::ivec2 inputSize) {
    SmoothBlurPlan plan;
    const int shorter = std::min(inputSize.x, inputSize.y);
    int levels = 0;
    while (levels < kSmoothMaxLevels && (shorter >> (levels + 1)) >= kMinWorkingTexels &&
           workingVariance(sigma, levels + 1) >= minWorkingVariance(levels + 1)) {
        ++levels;
    }
    plan.levels = levels;
    plan.stretchLevels = stretchLevelsFor(levels);
    // A sigma below what the stretch alone gives keeps a token width.
    plan.workingSigma =
        static_cast<float>(std::sqrt(std::max(workingVariance(sigma, levels), 0.0625)));
    foldKernel(plan);
    return plan;
}

float defaultKernelSigma(int kernelSize) {
    // The default's kernel is the square root of a 2D Gaussian: sqrt(2) wider.
    return static_cast<float>(std::sqrt(2.0) * describeGaussKernel(kernelSize).sigma);
}

float defaultQualitySigma(float scaleFactor, float kernelSigmaTexels) {
    const double kernelSigma = kernelSigmaTexels;
    const double scale = std::min(std::max(static_cast<double>(scaleFactor), 1e-4), 1.0);
    if (scale >= 1.0) return static_cast<float>(kernelSigma);
    // The trilinear reduction and the bilinear stretch widen it further, by
    // about a box and a tent of one working texel; and the smaller the
    // working picture, the more its clamped edges widen the look: a factor
    // fitted to the sigma whose float Gaussian matches the default's output
    // best (SSIM) on photographs at 1920 x 1080.
    const double resampling = 1.0 / 12.0 + 1.0 / 6.0;
    const double widening = 1.0 + 0.0058 * (1.0 / scale - 1.0);
    return static_cast<float>(widening * std::sqrt(kernelSigma * kernelSigma + resampling) / scale);
}

}  // namespace pmDraw
