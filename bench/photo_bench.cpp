// The grey photo effect at 1920 x 1080 against the least work it can be: one
// full-size textured copy pass written directly in GLES, in the same run.
// Compare the two by their ratio; absolute times depend on the renderer.
#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

#include "GLTestContext.h"
#include "pixmora.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

const char* const copyVertex = R"(#version 300 es
in vec2 aPosition;
out vec2 vTexCoord;
void main() {
    vTexCoord = aPosition * 0.5 + 0.5;
    gl_Position = vec4(aPosition, 0.0, 1.0);
})";

const char* const copyFragment = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
out vec4 fragColor;
void main() { fragColor = texture(uTexture, vTexCoord); })";

GLuint compile(GLenum type, const char* source) {
    GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    return shader;
}

// A plain copy of a full-size texture into the bound framebuffer.
class CopyPass {
public:
    explicit CopyPass(const std::vector<uint8_t>& pixels) {
        program = glCreateProgram();
        GLuint vs = compile(GL_VERTEX_SHADER, copyVertex);
        GLuint fs = compile(GL_FRAGMENT_SHADER, copyFragment);
        glAttachShader(program, vs);
        glAttachShader(program, fs);
        glBindAttribLocation(program, 0, "aPosition");
        glLinkProgram(program);
        glDeleteShader(vs);
        glDeleteShader(fs);
        const float quad[] = {-1, -1, 1, -1, -1, 1, 1, 1};
        glGenVertexArrays(1, &vao);
        glBindVertexArray(vao);
        glGenBuffers(1, &vbo);
        glBindBuffer(GL_ARRAY_BUFFER, vbo);
        glBufferData(GL_ARRAY_BUFFER, sizeof(quad), quad, GL_STATIC_DRAW);
        glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
        glEnableVertexAttribArray(0);
        glBindVertexArray(0);
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     pixels.data());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    }
    ~CopyPass() {
        glDeleteTextures(1, &texture);
        glDeleteBuffers(1, &vbo);
        glDeleteVertexArrays(1, &vao);
        glDeleteProgram(program);
    }
    void draw() {
        glUseProgram(program);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, texture);
        glBindVertexArray(vao);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        glBindVertexArray(0);
    }

private:
    GLuint program = 0, vao = 0, vbo = 0, texture = 0;
};

// Waits for the frame so that each iteration times the GPU work itself.
void finish() {
    uint8_t pixel[4];
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
}

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The baseline of this run: mean time of one full-size copy pass.
double copyPassMilliseconds() {
    CopyPass copy(makeTestPixels(kWidth, kHeight, 4));
    copy.draw();
    finish();
    const int rounds = 20;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < rounds; ++i) {
        copy.draw();
        finish();
    }
    return millisecondsSince(start) / rounds;
}

// Times `frame` per iteration and reports it also as a multiple of the copy pass.
template <typename Frame>
void runAgainstCopy(benchmark::State& state, Frame frame) {
    const double copyMs = copyPassMilliseconds();
    double totalMs = 0.0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        frame();
        finish();
        totalMs += millisecondsSince(start);
    }
    state.counters["copy_ms"] = copyMs;
    state.counters["x_copy"] = totalMs / static_cast<double>(state.iterations()) / copyMs;
}

void BM_CopyPassBaseline(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    CopyPass copy(makeTestPixels(kWidth, kHeight, 4));
    for (auto _ : state) {
        copy.draw();
        finish();
    }
}

void BM_GreyDraw(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmFilterObject grey{PM_PHOTO_GREY, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    pmPhotoFilterSetBuffer(grey, pixels.data(), kWidth, kHeight, 4);
    runAgainstCopy(state, [&] { pmPhotoFilterDraw(grey, kWidth, kHeight); });
    pmPhotoFilterDelete(&grey);
}

void BM_GreyUploadAndDraw(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmFilterObject grey{PM_PHOTO_GREY, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    runAgainstCopy(state, [&] {
        pmPhotoFilterSetBuffer(grey, pixels.data(), kWidth, kHeight, 4);
        pmPhotoFilterDraw(grey, kWidth, kHeight);
    });
    pmPhotoFilterDelete(&grey);
}

BENCHMARK(BM_CopyPassBaseline)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GreyDraw)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GreyUploadAndDraw)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
