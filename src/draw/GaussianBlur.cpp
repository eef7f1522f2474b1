// The searched-sigma Gaussian kernel, its shader text, and the two-pass
// separable blur built from it.
#include "GaussianBlur.h"

#include <errno.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// Kernel rules are hard assertions: an invalid size is a programming error of
// the caller and ends the process in every build, release builds included,
// with the C library's assertion message.
[[noreturn]] void failKernelAssertion(const char* expression, unsigned line, const char* function) {
    std::fprintf(stderr, "%s: GaussianBlur.h:%u: %s: Assertion `%s' failed.\n",
                 program_invocation_short_name, line, function, expression);
    std::fflush(stderr);
    std::abort();
}

// The square root of the two-dimensional Gaussian at row 0, each value
// narrowed to float, normalised by their float-narrowed sum.
std::vector<double> kernelForSigma(int kernelSize, double sigma) {
    const double mean = static_cast<double>(kernelSize / 2);
    std::vector<double> kernel(static_cast<size_t>(kernelSize));
    double sum = 0.0;
    for (int x = 0; x < kernelSize; ++x) {
        const double a = (x - mean) / sigma;
        const double b = mean / sigma;
        const double value =
            std::sqrt(std::exp(-0.5 * (a * a + b * b)) / (6.283185307179586 * sigma * sigma));
        kernel[x] = static_cast<double>(static_cast<float>(value));
        sum += kernel[x];
    }
    sum = static_cast<double>(static_cast<float>(sum));
    for (double& value : kernel) value /= sum;
    return kernel;
}

// Walks sigma up in steps of 1, 0.1 and 0.01, each level stepping back once
// its edge tap rises above epsilon. A sigma so small that the exponential
// underflows gives NaN, which counts as not above epsilon, so the walk goes on.
std::vector<float> searchKernel(int kernelSize, double* sigmaFound, const char* function) {
    if (kernelSize % 2 != 1) failKernelAssertion("false", __LINE__, function);
    const double epsilon = static_cast<double>(0.02f / static_cast<float>(kernelSize));
    double sigma = 1.0;
    double searchStep = 1.0;
    for (;;) {
        const std::vector<double> kernel = kernelForSigma(kernelSize, sigma);
        if (kernel[0] > epsilon) {
            if (searchStep > 0.02) {
                sigma -= searchStep;
                searchStep *= 0.1;
                sigma += searchStep;
                continue;
            }
            if (sigmaFound) *sigmaFound = sigma;
            return std::vector<float>(kernel.begin(), kernel.end());
        }
        sigma += searchStep;
        if (sigma > 1000.0) failKernelAssertion("false", __LINE__, function);
    }
}

// One side from the centre outward, the centre halved since both sides of
// each step read it; then pairs of neighbours folded into one bilinear read.
void foldKernel(const std::vector<float>& kernel, int kernelSize, std::vector<float>& weights,
                std::vector<float>& offsets, const char* function) {
    const int half = kernelSize / 2;
    std::vector<float> oneSideInputs;
    for (int i = half; i >= 0; --i) {
        oneSideInputs.push_back(i == half ? kernel[i] * 0.5f : kernel[i]);
    }
    if ((oneSideInputs.size() % 2) != 0) {
        failKernelAssertion("(oneSideInputs.size() % 2) == 0", __LINE__, function);
    }
    const size_t numSamples = oneSideInputs.size() / 2;
    weights.resize(numSamples);
    offsets.resize(numSamples);
    for (size_t i = 0; i < numSamples; ++i) {
        weights[i] = oneSideInputs[2 * i + 1] + oneSideInputs[2 * i];
        offsets[i] = oneSideInputs[2 * i + 1] / weights[i] + static_cast<float>(2 * i);
    }
}

void requireOddHalf(int kernelSize, const char* function) {
    if ((((kernelSize / 2) + 1) % 2) != 0) {
        failKernelAssertion("(((kernelSize/2)+1) % 2) == 0", __LINE__, function);
    }
}

const char* const indent = "\t\t\t";

void appendArray(std::string& text, const char* head, const std::vector<float>& values) {
    text += std::string(indent) + head + "\n";
    for (size_t i = 0; i < values.size(); ++i) {
        text += std::string(indent) + pmUtil::valueToString(values[i]);
        text += i + 1 < values.size() ? ",\n" : "\n";
    }
    text += std::string(indent) + ");\n";
}

const char* const blurFunction =
    R"(vec4 GaussianBlur(sampler2D tex0, vec2 centreUV, vec2 pixelOffset) {
    vec4 colOut = vec4(0.0, 0.0, 0.0, 0.0);
    for (int i = 0; i < stepCount; ++i) {
        vec2 texCoordOffset = gOffsets[i] * pixelOffset;
        vec4 col = texture(tex0, centreUV + texCoordOffset) + texture(tex0, centreUV - texCoordOffset);
        colOut += gWeights[i] * col;
    }
    return colOut;
}
)";

}  // namespace

std::vector<float> GetAppropriateSeparableGauss(int kernelSize) {
    return searchKernel(kernelSize, nullptr, __PRETTY_FUNCTION__);
}

std::string GenerateGaussShaderKernelWeightsAndOffsets(int kernelSize) {
    const std::vector<float> kernel = GetAppropriateSeparableGauss(kernelSize);
    requireOddHalf(kernelSize, __PRETTY_FUNCTION__);
    std::vector<float> weights;
    std::vector<float> offsets;
    foldKernel(kernel, kernelSize, weights, offsets, __PRETTY_FUNCTION__);
    std::string text = std::string(indent) + "const int stepCount = " +
                       pmUtil::valueToString(static_cast<int>(weights.size())) + ";\n";
    appendArray(text, "const float gWeights[stepCount] = float[](", weights);
    appendArray(text, "const float gOffsets[stepCount] = float[](", offsets);
    return text + blurFunction;
}

namespace pmDraw {

GaussKernel describeGaussKernel(int kernelSize) {
    GaussKernel result;
    result.taps = searchKernel(kernelSize, &result.sigma, __PRETTY_FUNCTION__);
    requireOddHalf(kernelSize, __PRETTY_FUNCTION__);
    foldKernel(result.taps, kernelSize, result.weights, result.offsets, __PRETTY_FUNCTION__);
    return result;
}

}  // namespace pmDraw
