// The blur objects' two qualities against what a user could pick instead, at
// 1920 x 1080, all in one process and one interleaved run: a dual-filter
// pyramid blur and a full-size linear-sampled Gaussian in plain GLES, and
// OpenCV on the CPU. Every contender does the whole still job (upload, blur,
// read-back) and is tuned to the sigma that fits the default quality best.
// Reported per contender: time (median of the rounds), SSIM of luma against
// a float64 Gaussian of that sigma, and the grid line of its working period.
//
//   build/bench/pixmora_bench_blur_peers --benchmark_out=peers.json
//       --benchmark_out_format=json
//
// PIXMORA_BENCH_CROPS=<dir> also writes the sky crops of both qualities.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "BlurMeasures.h"
#include "CopyBaseline.h"
#include "GLTestContext.h"
#include "SmoothGaussianBlur.h"
#include "peers/CpuBlur.h"
#include "peers/DualFilterBlur.h"
#include "peers/FullGaussianBlur.h"
#include "pixmora.h"

namespace {

const char* const kPhotograph = "/usr/share/backgrounds/mate/nature/Storm.jpg";
constexpr int kRounds = 5;
// Above this sigma the full-size Gaussian takes seconds a run: one round only.
constexpr double kExpensiveSigma = 30.0;

std::vector<uint8_t> rgbaOf(const cv::Mat& bgr) {
    cv::Mat sized, rgba;
    cv::resize(bgr, sized, cv::Size(kWidth, kHeight), 0, 0, cv::INTER_AREA);
    cv::cvtColor(sized, rgba, cv::COLOR_BGR2RGBA);
    return std::vector<uint8_t>(rgba.data, rgba.data + rgba.total() * 4);
}

// Gradients like a sky in the top quarter, and below it blocks, thin lines
// and noise: detail at every scale. No line lies on an edge: the reference
// replicates edge pixels out to three sigma, which would make a one-pixel
// line there a dark band hundreds of pixels wide that no blur makes.
std::vector<uint8_t> detailedPicture() {
    std::vector<uint8_t> pixels(static_cast<size_t>(kWidth) * kHeight * 4, 255);
    cv::RNG rng(7);
    std::vector<cv::Vec3b> blocks(48 * 27);
    for (cv::Vec3b& b : blocks)
        b = cv::Vec3b(rng.uniform(0, 256), rng.uniform(0, 256), rng.uniform(0, 256));
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * kWidth + x) * 4];
            if (y < kHeight / 4) {
                const double t = static_cast<double>(y) / kHeight + 0.1 * x / kWidth;
                p[0] = static_cast<uint8_t>(70 + 60 * t);
                p[1] = static_cast<uint8_t>(110 + 50 * t);
                p[2] = static_cast<uint8_t>(170 + 40 * t);
                continue;
            }
            const cv::Vec3b& b = blocks[(y / 40) * 48 + x / 40];
            const int line = (x % 23 == 11 || y % 31 == 0) ? 90 : 0;
            for (int c = 0; c < 3; ++c) {
                p[c] = cv::saturate_cast<uint8_t>(b[c] - line + rng.uniform(-20, 21));
            }
        }
    }
    return pixels;
}

const std::vector<uint8_t>& picture(int index) {
    static std::vector<uint8_t> photo, detailed;
    if (index == 0) {
        if (photo.empty()) photo = rgbaOf(cv::imread(kPhotograph, cv::IMREAD_COLOR));
        return photo;
    }
    if (detailed.empty()) detailed = detailedPicture();
    return detailed;
}

// One contender: its frame, its output and its time of each round.
struct Contender {
    const char* name;
    std::vector<uint8_t> out;
    std::vector<double> times;
    double gridPeriod = 0.0;
    double median() const {
        std::vector<double> t = times;
        std::sort(t.begin(), t.end());
        return t[t.size() / 2];
    }
};

template <typename Frame>
void timeFrame(Contender& c, Frame&& frame) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    frame(c.out);
    finishFrame();
    c.times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
}

// The library's read-back comes out upside down against the peers' when it
// does: take whichever way round matches the input better.
void alignRows(std::vector<uint8_t>& rgba, const cv::Mat& reference) {
    const cv::Mat asIs = lumaOf(rgba, kWidth, kHeight);
    cv::Mat flipped;
    cv::flip(asIs, flipped, 0);
    if (cv::norm(flipped, reference, cv::NORM_L1) >= cv::norm(asIs, reference, cv::NORM_L1)) return;
    std::vector<uint8_t> rows(rgba.size());
    const size_t stride = static_cast<size_t>(kWidth) * 4;
    for (int y = 0; y < kHeight; ++y) {
        std::copy_n(&rgba[y * stride], stride, &rows[(kHeight - 1 - y) * stride]);
    }
    rgba.swap(rows);
}

void writeCrops(const cv::Mat& defaultLuma, const cv::Mat& smoothLuma, cv::Rect region) {
    const char* dir = std::getenv("PIXMORA_BENCH_CROPS");
    if (dir == nullptr) return;
    // Contrast stretched 24 times around the mean, so one level is visible.
    auto stretch = [&](const cv::Mat& luma) {
        const cv::Mat crop = luma(region);
        cv::Mat out;
        crop.convertTo(out, CV_8U, 24.0, 128.0 - 24.0 * cv::mean(crop)[0]);
        cv::flip(out, out, 0);
        return out;
    };
    cv::Mat both;
    cv::Mat gap(region.height, 8, CV_8U, cv::Scalar(0));
    cv::hconcat(std::vector<cv::Mat>{stretch(defaultLuma), gap, stretch(smoothLuma)}, both);
    cv::imwrite(std::string(dir) + "/blur-sky-default-vs-smooth.png", both);
}

void BM_BlurAgainstPeers(benchmark::State& state) {
    const int pictureIndex = static_cast<int>(state.range(0));
    const float intensity = static_cast<float>(state.range(1));
    GLTestContext gl(16, 16);
    const double copyMs = copyPassMilliseconds();
    pmDisableInternalGLContext();
    const std::vector<uint8_t>& pixels = picture(pictureIndex);
    const cv::Mat inputLuma = lumaOf(pixels, kWidth, kHeight);

    pmFilterObject objects[2];
    for (int q = 0; q < 2; ++q) {
        objects[q] = {PM_BLUR_PHOTO, pmBlurFilterCreate(PM_BLUR_PHOTO)};
        pmBlurFilterSetBlurIntensity(objects[q], intensity);
        pmBlurFilterSetQuality(objects[q], q);
    }
    auto library = [&](int q) {
        return [&, q](std::vector<uint8_t>& out) {
            pmBlurFilterSetBuffer(objects[q], const_cast<uint8_t*>(pixels.data()), kWidth, kHeight,
                                  4);
            pmBlurFilterSetOutputBuffer(objects[q], {COLOR_TYPE_RGBA, out.data(), kWidth, kHeight});
        };
    };
    std::vector<Contender> all = {{"default", {}, {}},
                                  {"smooth", {}, {}},
                                  {"pyramid", {}, {}},
                                  {"gauss", {}, {}},
                                  {"cpu", {}, {}}};
    for (Contender& c : all) c.out.resize(static_cast<size_t>(kWidth) * kHeight * 4);

    // The sigma of the default quality, fitted on its first output.
    const double guess =
        pmDraw::defaultQualitySigma(1.0f / intensity, pmDraw::defaultKernelSigma(35));
    const GaussianReference reference(inputLuma, guess * 1.4);
    library(0)(all[0].out);
    alignRows(all[0].out, inputLuma);
    double defaultSsim = 0.0;
    const double sigma =
        fitSigma(reference, lumaOf(all[0].out, kWidth, kHeight), guess, &defaultSsim);

    peer::DualFilterBlur pyramid(kWidth, kHeight, sigma);
    peer::FullGaussianBlur gauss(kWidth, kHeight, sigma);
    peer::CpuBlur cpu(kWidth, kHeight, sigma);
    const pmDraw::SmoothBlurPlan plan =
        pmDraw::planSmoothBlur(static_cast<float>(guess), glm::ivec2(kWidth, kHeight));
    all[0].gridPeriod = intensity;
    all[1].gridPeriod = std::ldexp(1.0, plan.levels);
    all[2].gridPeriod = std::ldexp(1.0, pyramid.levels);
    all[3].gridPeriod = intensity;
    all[4].gridPeriod = cpu.factor;

    // Untimed first frames build the renderer's shader variants.
    library(1)(all[1].out);
    pyramid.run(pixels, all[2].out);
    int round = 0;
    for (auto _ : state) {
        timeFrame(all[0], library(0));
        timeFrame(all[1], library(1));
        timeFrame(all[2], [&](std::vector<uint8_t>& out) { pyramid.run(pixels, out); });
        if (round == 0 || sigma <= kExpensiveSigma) {
            timeFrame(all[3], [&](std::vector<uint8_t>& out) { gauss.run(pixels, out); });
        }
        timeFrame(all[4], [&](std::vector<uint8_t>& out) { cpu.run(pixels, out); });
        ++round;
    }

    const cv::Mat target = reference.blurred(sigma);
    const cv::Rect sky = smoothestRegion(inputLuma, cv::Size(512, 128));
    cv::Mat lumas[5];
    for (size_t i = 0; i < all.size(); ++i) {
        if (i < 2) alignRows(all[i].out, inputLuma);
        lumas[i] = lumaOf(all[i].out, kWidth, kHeight);
        const std::string name = all[i].name;
        state.counters[name + "_ms"] = all[i].median();
        state.counters[name + "_ssim"] = ssim(lumas[i], target);
        state.counters[name + "_grid"] = gridLine(lumas[i], sky, all[i].gridPeriod);
        state.counters[name + "_period"] = all[i].gridPeriod;
    }
    state.counters["sigma"] = sigma;
    state.counters["planned_sigma"] = guess;
    double smoothFitSsim = 0.0;
    const double smoothSigma = fitSigma(reference, lumas[1], guess, &smoothFitSsim);
    state.counters["smooth_fit_sigma"] = smoothSigma;
    state.counters["fit_at_range_end"] =
        fitAtRangeEnd(sigma, guess) || fitAtRangeEnd(smoothSigma, guess);
    state.counters["copy_ms"] = copyMs;
    state.counters["smooth_levels"] = plan.levels;
    state.counters["pyramid_levels"] = pyramid.levels;
    state.counters["pyramid_offset"] = pyramid.offset;
    state.counters["cpu_factor"] = cpu.factor;
    state.counters["gauss_reads"] = gauss.readsPerPass;
    state.counters["pyramid_x_smooth"] = all[2].median() / all[1].median();
    state.counters["default_x_smooth"] = all[0].median() / all[1].median();
    if (pictureIndex == 0 && intensity == 20.0f) writeCrops(lumas[0], lumas[1], sky);
    for (pmFilterObject& object : objects) pmBlurFilterDelete(&object);
}

}  // namespace

int main(int argc, char** argv) {
    for (int pictureIndex : {0, 1}) {
        for (int intensity : {1, 5, 10, 20, 40}) {
            const std::string name = std::string("BM_BlurAgainstPeers/") +
                                     (pictureIndex == 0 ? "photo" : "detailed") + "/" +
                                     std::to_string(intensity);
            benchmark::RegisterBenchmark(name.c_str(), BM_BlurAgainstPeers)
                ->Args({pictureIndex, intensity})
                ->Iterations(kRounds)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
