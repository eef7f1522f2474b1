// SSIM, fitted sigma and grid measure of the blur comparison.
#include "BlurMeasures.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

cv::Mat lumaOf(const std::vector<uint8_t>& rgba, int width, int height) {
    cv::Mat luma(height, width, CV_64F);
    for (int y = 0; y < height; ++y) {
        double* row = luma.ptr<double>(y);
        const uint8_t* p = &rgba[static_cast<size_t>(y) * width * 4];
        for (int x = 0; x < width; ++x, p += 4) row[x] = 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
    }
    return luma;
}

GaussianReference::GaussianReference(const cv::Mat& luma, double maxSigma) : size(luma.size()) {
    pad = static_cast<int>(std::ceil(3.0 * maxSigma));
    cv::Mat padded;
    cv::copyMakeBorder(luma, padded, pad, pad, pad, pad, cv::BORDER_REPLICATE);
    const int rows = cv::getOptimalDFTSize(padded.rows);
    const int cols = cv::getOptimalDFTSize(padded.cols);
    cv::copyMakeBorder(padded, padded, 0, rows - padded.rows, 0, cols - padded.cols,
                       cv::BORDER_REPLICATE);
    cv::dft(padded, spectrum, cv::DFT_COMPLEX_OUTPUT);
}

cv::Mat GaussianReference::blurred(double sigma) const {
    const int rows = spectrum.rows, cols = spectrum.cols;
    cv::Mat product = spectrum.clone();
    const double k = -2.0 * M_PI * M_PI * sigma * sigma;
    for (int v = 0; v < rows; ++v) {
        const double fy = (v <= rows / 2 ? v : v - rows) / static_cast<double>(rows);
        cv::Vec2d* row = product.ptr<cv::Vec2d>(v);
        for (int u = 0; u < cols; ++u) {
            const double fx = (u <= cols / 2 ? u : u - cols) / static_cast<double>(cols);
            row[u] *= std::exp(k * (fx * fx + fy * fy));
        }
    }
    cv::Mat result;
    cv::idft(product, result, cv::DFT_REAL_OUTPUT | cv::DFT_SCALE);
    return result(cv::Rect(pad, pad, size.width, size.height)).clone();
}

double ssim(const cv::Mat& a, const cv::Mat& b) {
    const double c1 = std::pow(0.01 * 255, 2), c2 = std::pow(0.03 * 255, 2);
    auto window = [](const cv::Mat& m) {
        cv::Mat out;
        cv::GaussianBlur(m, out, cv::Size(11, 11), 1.5, 1.5, cv::BORDER_REPLICATE);
        return out;
    };
    const cv::Mat ma = window(a), mb = window(b);
    const cv::Mat va = window(a.mul(a)) - ma.mul(ma);
    const cv::Mat vb = window(b.mul(b)) - mb.mul(mb);
    const cv::Mat cov = window(a.mul(b)) - ma.mul(mb);
    cv::Mat num = (2 * ma.mul(mb) + c1).mul(2 * cov + c2);
    cv::Mat den = (ma.mul(ma) + mb.mul(mb) + c1).mul(va + vb + c2);
    cv::Mat map;
    cv::divide(num, den, map);
    return cv::mean(map)[0];
}

namespace {
// fitSigma searches over a factor of two each way of its guess.
constexpr double kFitRange = 2.0;
}  // namespace

double fitSigma(const GaussianReference& reference, const cv::Mat& output, double guess,
                double* bestSsim) {
    // Golden-section search on log sigma, over a factor of two each way.
    const double phi = 0.5 * (std::sqrt(5.0) - 1.0);
    double low = std::log(guess / kFitRange), high = std::log(guess * kFitRange);
    auto score = [&](double logSigma) {
        return ssim(reference.blurred(std::exp(logSigma)), output);
    };
    double x1 = high - phi * (high - low), x2 = low + phi * (high - low);
    double s1 = score(x1), s2 = score(x2);
    for (int i = 0; i < 9; ++i) {
        if (s1 > s2) {
            high = x2;
            x2 = x1;
            s2 = s1;
            x1 = high - phi * (high - low);
            s1 = score(x1);
        } else {
            low = x1;
            x1 = x2;
            s1 = s2;
            x2 = low + phi * (high - low);
            s2 = score(x2);
        }
    }
    *bestSsim = std::max(s1, s2);
    return std::exp(s1 > s2 ? x1 : x2);
}

bool fitAtRangeEnd(double sigma, double guess) {
    // Nine golden-section steps leave the search within 2% of an end.
    return std::abs(std::log(sigma / guess)) > std::log(kFitRange) - 0.03;
}

cv::Rect smoothestRegion(const cv::Mat& luma, cv::Size size) {
    cv::Mat second;
    cv::Laplacian(luma, second, CV_64F);
    second = cv::abs(second);
    cv::Mat integral;
    cv::integral(second, integral, CV_64F);
    double best = 1e300;
    cv::Rect chosen(0, 0, size.width, size.height);
    // A margin keeps the picture's edges, where clamping rules, out of it.
    for (int y = 64; y + size.height <= luma.rows - 64; y += 16) {
        for (int x = 64; x + size.width <= luma.cols - 64; x += 16) {
            const double sum = integral.at<double>(y + size.height, x + size.width) -
                               integral.at<double>(y, x + size.width) -
                               integral.at<double>(y + size.height, x) + integral.at<double>(y, x);
            if (sum < best) {
                best = sum;
                chosen = cv::Rect(x, y, size.width, size.height);
            }
        }
    }
    return chosen;
}

double gridLine(const cv::Mat& luma, cv::Rect region, double period) {
    const int n = region.width - 2;
    std::vector<double> power(n / 2 + 1, 0.0);
    cv::Mat row(1, n, CV_64F), spectrum;
    for (int y = region.y; y < region.y + region.height; ++y) {
        const double* line = luma.ptr<double>(y) + region.x;
        for (int x = 0; x < n; ++x) row.at<double>(x) = line[x] - 2.0 * line[x + 1] + line[x + 2];
        cv::dft(row, spectrum, cv::DFT_COMPLEX_OUTPUT);
        for (int k = 0; k <= n / 2; ++k) {
            const cv::Vec2d c = spectrum.at<cv::Vec2d>(k);
            power[k] += c[0] * c[0] + c[1] * c[1];
        }
    }
    const int bin = static_cast<int>(std::lround(n / period));
    if (bin < 2 || bin + 1 > n / 2) return 1.0;
    const double line = std::max({power[bin - 1], power[bin], power[bin + 1]});
    std::vector<double> around;
    for (int k = std::max(1, bin - 12); k <= std::min(n / 2, bin + 12); ++k) {
        if (std::abs(k - bin) > 2) around.push_back(power[k]);
    }
    std::nth_element(around.begin(), around.begin() + around.size() / 2, around.end());
    return line / std::max(around[around.size() / 2], 1e-12);
}
