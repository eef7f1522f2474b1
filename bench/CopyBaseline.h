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

// Times `frame` per iteration and reports it also as a multiple of the copy pass.
template <typename Frame>
void runAgainstCopy(benchmark::State& state, Frame frame) {
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
    state.counters["copy_ms"] = copyMs;
    state.counters["x_copy"] = totalMs / static_cast<double>(state.iterations()) / copyMs;
}

#endif
