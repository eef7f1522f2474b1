// The blur objects through the exported functions at 1920 x 1080, each beside
// its floor: the least GPU work the design prescribes for it, written here in
// plain GLES with the same shaders (taken from the library's own passes) and
// every buffer made once outside the timed loop. "x_floor" is the library's
// time over the floor's, "x_copy" its time over one full-size copy pass.
#include <vector>

#include "CopyBaseline.h"
#include "GLTestContext.h"
#include "GaussianBlur.h"
#include "pixmora.h"

namespace {

constexpr int kKernel = 35;

// A colour texture and its framebuffer of one size.
struct Target {
    GLuint texture = 0;
    GLuint framebuffer = 0;
    int width = 0;
    int height = 0;

    Target(int w, int h, bool mipmapped = false) : width(w), height(h) {
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        const int levels = mipmapped ? 11 : 1;
        glTexStorage2D(GL_TEXTURE_2D, levels, GL_RGBA8, w, h);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                        mipmapped ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    }
    ~Target() {
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &texture);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void bind() const {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glViewport(0, 0, width, height);
    }
};

// One full-target quad in the library's vertex layout (position, texture
// coordinate), with a vertex array for each program that draws it.
class Quad {
public:
    Quad() {
        const float vertices[] = {-1, -1, 0, 0, 0, 1, -1, 0, 1, 0, -1, 1, 0, 0, 1, 1, 1, 0, 1, 1};
        glGenBuffers(1, &buffer);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glBufferData(GL_ARRAY_BUFFER, sizeof(vertices), vertices, GL_STATIC_DRAW);
    }
    ~Quad() {
        glDeleteVertexArrays(static_cast<GLsizei>(arrays.size()), arrays.data());
        glDeleteBuffers(1, &buffer);
    }
    GLuint arrayFor(GLuint program) {
        GLuint array = 0;
        glGenVertexArrays(1, &array);
        glBindVertexArray(array);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        const GLint position = glGetAttribLocation(program, "aPosition");
        const GLint texCoord = glGetAttribLocation(program, "aTexCoord");
        glVertexAttribPointer(position, 3, GL_FLOAT, GL_FALSE, 20, nullptr);
        glEnableVertexAttribArray(position);
        glVertexAttribPointer(texCoord, 2, GL_FLOAT, GL_FALSE, 20,
                              reinterpret_cast<const void*>(12));
        glEnableVertexAttribArray(texCoord);
        glBindVertexArray(0);
        arrays.push_back(array);
        return array;
    }

private:
    GLuint buffer = 0;
    std::vector<GLuint> arrays;
};

// A program of the library's passes, with its vertex array and the uniform
// locations looked up once.
struct Pass {
    GLuint program;
    GLuint array;
    GLint texture, texture2, flip, pixelStep, color, mixColor, alpha, weight, dithering;

    Pass(GLuint id, Quad& quad) : program(id), array(quad.arrayFor(id)) {
        texture = glGetUniformLocation(id, "uTexture");
        texture2 = glGetUniformLocation(id, "uTexture2");
        flip = glGetUniformLocation(id, "uFlipTexCoord");
        pixelStep = glGetUniformLocation(id, "uPixelStep");
        color = glGetUniformLocation(id, "uColor");
        mixColor = glGetUniformLocation(id, "uMixColor");
        alpha = glGetUniformLocation(id, "uAlphaMultiplier");
        weight = glGetUniformLocation(id, "uWeight");
        dithering = glGetUniformLocation(id, "uDithering");
    }

    // One quad sampling `source` (unit 0), into the bound target.
    void draw(GLuint source, float flipY, float stepX, float stepY) const {
        glUseProgram(program);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, source);
        glUniform1i(texture, 0);
        glUniform2f(flip, 0.0f, flipY);
        glUniform2f(pixelStep, stepX, stepY);
        glUniform4f(color, 1.0f, 1.0f, 1.0f, 1.0f);
        glUniform4f(mixColor, 0.0f, 0.0f, 0.0f, 0.0f);
        glUniform1f(alpha, 1.0f);
        glBindVertexArray(array);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        glBindVertexArray(0);
    }
};

glm::ivec2 scaledSize(float scale) {
    return glm::ivec2(glm::vec2(kWidth, kHeight) * scale + 0.5f);
}

// The library's passes, built once only for their compiled programs.
struct LibraryPrograms {
    pmDraw::CustomGaussianBlur still;
    pmDraw::VideoGaussianBlur video;
    LibraryPrograms() {
        pmDraw::createCustomGaussianBlur(still, kKernel);
        video.initialize(kKernel);
    }
    ~LibraryPrograms() {
        pmDraw::deleteCustomGaussianBlur(still);
        video.finalize();
    }
};

// Upload with mipmaps, down pass, the two Gaussian passes at the scaled size.
class BlurFloor {
public:
    BlurFloor(LibraryPrograms& library, Quad& quad, float scale)
        : scaled(scaledSize(scale)),
          input(kWidth, kHeight, true),
          down(scaled.x, scaled.y),
          horizontal(scaled.x, scaled.y),
          vertical(scaled.x, scaled.y),
          copy(library.still.composite.program.id, quad),
          blurX(library.still.blur.programs[0].id, quad),
          blurY(library.still.blur.programs[1].id, quad) {}

    // Leaves the blurred picture in `vertical`.
    void run(const std::vector<uint8_t>& pixels) {
        glBindTexture(GL_TEXTURE_2D, input.texture);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE,
                        pixels.data());
        glGenerateMipmap(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        GLuint source = input.texture;
        glm::vec2 sourceSize(kWidth, kHeight);
        if (scaled != glm::ivec2(kWidth, kHeight)) {
            down.bind();
            copy.draw(input.texture, 0.0f, 1.0f / kWidth, 1.0f / kHeight);
            source = down.texture;
            sourceSize = glm::vec2(scaled);
        }
        horizontal.bind();
        blurX.draw(source, 1.0f, 1.0f / sourceSize.x, 1.0f / sourceSize.y);
        vertical.bind();
        blurY.draw(horizontal.texture, 0.0f, 1.0f / scaled.x, 1.0f / scaled.y);
    }

    glm::ivec2 scaled;
    Target input, down, horizontal, vertical;
    Pass copy, blurX, blurY;
};

void normalBlend() {
    glEnable(GL_BLEND);
    glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
    glBlendFuncSeparate(GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

// ---- Still blur: SetBuffer + SetOutputBuffer.

double stillFloorMilliseconds(float intensity) {
    LibraryPrograms library;
    Quad quad;
    BlurFloor blur(library, quad, 1.0f / intensity);
    Target output(kWidth, kHeight);
    Pass dither(library.still.dither.program.id, quad);
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    std::vector<uint8_t> out(static_cast<size_t>(kWidth) * kHeight * 4);
    return meanMilliseconds(
        [&] {
            blur.run(pixels);
            output.bind();
            normalBlend();
            dither.draw(blur.vertical.texture, 0.0f, 1.0f / blur.scaled.x, 1.0f / blur.scaled.y);
            glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
        },
        10);
}

void BM_StillBlur(benchmark::State& state) {
    GLTestContext gl(16, 16);
    const float intensity = static_cast<float>(state.range(0));
    const double floorMs = stillFloorMilliseconds(intensity);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    std::vector<uint8_t> out(static_cast<size_t>(kWidth) * kHeight * 4);
    pmFilterObject blur{PM_BLUR_PHOTO, pmBlurFilterCreate(PM_BLUR_PHOTO)};
    pmBlurFilterSetBlurIntensity(blur, intensity);
    runAgainstFloor(state, floorMs, [&] {
        pmBlurFilterSetBuffer(blur, pixels.data(), kWidth, kHeight, 4);
        pmBlurFilterSetOutputBuffer(blur, {COLOR_TYPE_RGBA, out.data(), kWidth, kHeight});
    });
    pmBlurFilterDelete(&blur);
}

// ---- Video blur at its default intensity of 10, against the 720 x 576 reference.

constexpr float kVideoScale = 35.0f / 35.0f / (10.0f * 1920.0f / 720.0f);

// The one mixing pass of a resting Draw, into the bound full-size target.
void mixPass(Pass& mix, const Target& previous, const Target& latest) {
    glViewport(0, 0, kWidth, kHeight);
    normalBlend();
    glUseProgram(mix.program);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, previous.texture);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, latest.texture);
    glUniform1i(glGetUniformLocation(mix.program, "uTexture1"), 0);
    glUniform1i(mix.texture2, 1);
    glUniform2f(mix.flip, 0.0f, 0.0f);
    glUniform1f(mix.weight, 1.0f);
    glUniform1i(mix.dithering, 1);
    glUniform4f(mix.color, 1.0f, 1.0f, 1.0f, 1.0f);
    glUniform4f(mix.mixColor, 0.0f, 0.0f, 0.0f, 0.0f);
    glUniform1f(mix.alpha, 1.0f);
    glBindVertexArray(mix.array);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glBindVertexArray(0);
}

double videoDrawFloorMilliseconds(GLuint target) {
    LibraryPrograms library;
    Quad quad;
    const glm::ivec2 scaled = scaledSize(kVideoScale);
    Target previous(scaled.x, scaled.y), latest(scaled.x, scaled.y);
    Pass mix(library.video.dualCompositing.program.id, quad);
    return meanMilliseconds(
        [&] {
            glBindFramebuffer(GL_FRAMEBUFFER, target);
            mixPass(mix, previous, latest);
        },
        20);
}

void BM_VideoRestingDraw(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    const double floorMs = videoDrawFloorMilliseconds(gl.fbo);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmFilterObject blur{PM_BLUR_VIDEO, pmBlurFilterCreate(PM_BLUR_VIDEO)};
    glBindFramebuffer(GL_FRAMEBUFFER, gl.fbo);
    pmBlurFilterSetBuffer(blur, pixels.data(), kWidth, kHeight, 4);
    // Settle the cross-fade so that every timed Draw is a resting one.
    for (int i = 0; i < 70; ++i) pmBlurFilterDraw(blur, kWidth, kHeight);
    runAgainstFloor(state, floorMs, [&] { pmBlurFilterDraw(blur, kWidth, kHeight); });
    pmBlurFilterDelete(&blur);
}

// ---- Video capture: a new frame and the Draw that captures it.

double videoCaptureFloorMilliseconds(GLuint target) {
    LibraryPrograms library;
    Quad quad;
    BlurFloor blur(library, quad, kVideoScale);
    Target previous(blur.scaled.x, blur.scaled.y);
    Pass mix(library.video.dualCompositing.program.id, quad);
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    return meanMilliseconds(
        [&] {
            blur.run(pixels);
            glBindFramebuffer(GL_FRAMEBUFFER, target);
            mixPass(mix, previous, blur.vertical);
        },
        10);
}

void BM_VideoCapture(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    const double floorMs = videoCaptureFloorMilliseconds(gl.fbo);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmFilterObject blur{PM_BLUR_VIDEO, pmBlurFilterCreate(PM_BLUR_VIDEO)};
    glBindFramebuffer(GL_FRAMEBUFFER, gl.fbo);
    glViewport(0, 0, kWidth, kHeight);
    runAgainstFloor(state, floorMs, [&] {
        pmBlurFilterSetBuffer(blur, pixels.data(), kWidth, kHeight, 4);
        pmBlurFilterDraw(blur, kWidth, kHeight);
    });
    pmBlurFilterDelete(&blur);
}

BENCHMARK(BM_StillBlur)->Arg(1)->Arg(10)->Arg(40)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoRestingDraw)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoCapture)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
