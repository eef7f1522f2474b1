#include "CpuGaussianBlur.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace cpublur {

namespace {

std::vector<double> gaussianAt(int size, double sigma) {
    const double mean = static_cast<double>(size / 2);
    std::vector<double> values(static_cast<size_t>(size));
    double sum = 0.0;
    for (int x = 0; x < size; ++x) {
        const double a = (x - mean) / sigma, b = mean / sigma;
        const double value =
            std::sqrt(std::exp(-0.5 * (a * a + b * b)) / (2.0 * M_PI * sigma * sigma));
        values[static_cast<size_t>(x)] = static_cast<double>(static_cast<float>(value));
        sum += values[static_cast<size_t>(x)];
    }
    sum = static_cast<double>(static_cast<float>(sum));
    for (double& value : values) value /= sum;
    return values;
}

}  // namespace

FoldedKernel independentKernel(int size) {
    const double threshold = static_cast<double>(0.02f / static_cast<float>(size));
    double sigma = 1.0;
    double step = 1.0;
    std::vector<double> taps;
    for (;;) {
        taps = gaussianAt(size, sigma);
        if (taps[0] > threshold) {  // false for not-a-number as well
            if (step <= 0.02) break;
            sigma = sigma - step + step * 0.1;
            step *= 0.1;
        } else {
            sigma += step;
        }
    }
    std::vector<float> oneSide;
    for (int i = size / 2; i >= 0; --i) {
        const float tap = static_cast<float>(taps[static_cast<size_t>(i)]);
        oneSide.push_back(i == size / 2 ? tap * 0.5f : tap);
    }
    FoldedKernel kernel;
    for (size_t i = 0; i + 1 < oneSide.size(); i += 2) {
        const float weight = oneSide[i + 1] + oneSide[i];
        kernel.weights.push_back(weight);
        kernel.offsets.push_back(oneSide[i + 1] / weight + static_cast<float>(i));
    }
    return kernel;
}

float Picture::at(int x, int y, int c) const {
    x = std::min(std::max(x, 0), width - 1);
    y = std::min(std::max(y, 0), height - 1);
    return rgba[(static_cast<size_t>(y) * width + x) * 4 + c];
}

// GL's bilinear read with clamp to edge, at texel-space coordinates, as the
// software renderer filters 8-bit textures: the blend weight rounded to 1/256
// and each blend done in 8-bit fixed point.
float bilinear(const Picture& p, float u, float v, int c) {
    const float xf = u - 0.5f, yf = v - 0.5f;
    const int x0 = static_cast<int>(std::floor(xf)), y0 = static_cast<int>(std::floor(yf));
    auto lerp = [](float a, float b, float t) {
        const int weight = static_cast<int>(std::round(t * 256.0f));
        const int ia = static_cast<int>(a), ib = static_cast<int>(b);
        return static_cast<float>(ia + (((ib - ia) * weight + 128) >> 8));
    };
    const float top = lerp(p.at(x0, y0, c), p.at(x0 + 1, y0, c), xf - x0);
    const float bottom = lerp(p.at(x0, y0 + 1, c), p.at(x0 + 1, y0 + 1, c), xf - x0);
    return lerp(top, bottom, yf - y0);
}

// One direction of the folded kernel, quantised to 8 bits as the RGBA8
// buffers are, alpha forced to 1.
Picture blurDirection(const Picture& in, const FoldedKernel& kernel, bool horizontal) {
    Picture out = in;
    for (int y = 0; y < in.height; ++y) {
        for (int x = 0; x < in.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (size_t i = 0; i < kernel.weights.size(); ++i) {
                    const float o = kernel.offsets[i];
                    const float u = x + 0.5f, v = y + 0.5f;
                    const float a =
                        horizontal ? bilinear(in, u + o, v, c) : bilinear(in, u, v + o, c);
                    const float b =
                        horizontal ? bilinear(in, u - o, v, c) : bilinear(in, u, v - o, c);
                    sum += kernel.weights[i] * (a + b);
                }
                out.rgba[(static_cast<size_t>(y) * in.width + x) * 4 + c] = std::round(sum);
            }
            out.rgba[(static_cast<size_t>(y) * in.width + x) * 4 + 3] = 255.0f;
        }
    }
    return out;
}

Picture resample(const Picture& in, int width, int height) {
    Picture out{width, height, std::vector<float>(static_cast<size_t>(width) * height * 4)};
    const float sx = static_cast<float>(in.width) / width;
    const float sy = static_cast<float>(in.height) / height;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < 4; ++c) {
                out.rgba[(static_cast<size_t>(y) * width + x) * 4 + c] =
                    bilinear(in, (x + 0.5f) * sx, (y + 0.5f) * sy, c);
            }
        }
    }
    return out;
}

Picture flipRows(const Picture& in) {
    Picture out = in;
    const size_t stride = static_cast<size_t>(in.width) * 4;
    for (int y = 0; y < in.height; ++y) {
        std::copy_n(&in.rgba[static_cast<size_t>(in.height - 1 - y) * stride], stride,
                    &out.rgba[static_cast<size_t>(y) * stride]);
    }
    return out;
}

Picture blurBoth(const std::vector<uint8_t>& rgba, int width, int height, int kernelSize) {
    const Picture input{width, height, std::vector<float>(rgba.begin(), rgba.end())};
    const FoldedKernel kernel = independentKernel(kernelSize);
    return blurDirection(blurDirection(input, kernel, true), kernel, false);
}

int worstDifference(const std::vector<uint8_t>& out, const Picture& expected) {
    if (out.size() != expected.rgba.size()) return 256;
    int worst = 0;
    for (size_t i = 0; i < out.size(); ++i) {
        if (i % 4 == 3) {
            if (out[i] != 255) return 256;
            continue;
        }
        worst = std::max(worst, std::abs(out[i] - static_cast<int>(expected.rgba[i])));
    }
    return worst;
}

}  // namespace cpublur
