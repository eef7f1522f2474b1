// What every benchmark here measures against: one full-size textured copy
// pass written directly in GLES, the least work a full-frame effect can be.
// Benchmarks report their time also as a multiple of it ("x_copy"), measured
// in the same run, so the ratio holds on any renderer.
#ifndef PIXMORA_BENCH_COPYBASELINE_H
#define PIXMORA_BENCH_COPYBASELINE_H

#include <GLES3/gl3.h>
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <vector>

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

// A plain copy of a full-size texture into the bound framebuffer.
class CopyPass {
public:
    explicit CopyPass(const std::vector<uint8_t>& pixels);
    ~CopyPass();
    CopyPass(const CopyPass&) = delete;
    CopyPass& operator=(const CopyPass&) = delete;
    void draw();

private:
    GLuint program = 0, vao = 0, vbo = 0, texture = 0;
};

// Waits for the frame so that each iteration times the GPU work itself.
void finishFrame();

// The baseline of this run: mean time of one full-size copy pass.
double copyPassMilliseconds();

// Mean time of `frame` over `rounds` runs, after one untimed run that lets
// the renderer build its shader variants.
template <typename Frame>
double meanMilliseconds(Frame&& frame, int rounds) {
    using Clock = std::chrono::steady_clock;
    frame();
    finishFrame();
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < rounds; ++i) {
        frame();
        finishFrame();
    }
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count() / rounds;
}

// Times `frame` per iteration, reports it also as a multiple of the copy pass,
// and gives back its mean time in milliseconds.
template <typename Frame>
double runAgainstCopy(benchmark::State& state, Frame frame) {
    using Clock = std::chrono::steady_clock;
    const double copyMs = copyPassMilliseconds();
    // The first frame builds the renderer's shader variants: not timed.
    frame();
    finishFrame();
    double totalMs = 0.0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        frame();
        finishFrame();
        totalMs += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }
    const double meanMs = totalMs / static_cast<double>(state.iterations());
    state.counters["copy_ms"] = copyMs;
    state.counters["x_copy"] = meanMs / copyMs;
    return meanMs;
}

// The same, and also as a multiple of a floor measured just before.
template <typename Frame>
void runAgainstFloor(benchmark::State& state, double floorMs, Frame frame) {
    const double meanMs = runAgainstCopy(state, frame);
    state.counters["floor_ms"] = floorMs;
    state.counters["x_floor"] = meanMs / floorMs;
}

#endif
