// Peer: the full-size linear-sampled separable Gaussian.
#include "FullGaussianBlur.h"

#include <cmath>
#include <sstream>

namespace peer {

namespace {

// The kernel as constant arrays in the shader text, like the library's own.
std::string shaderFor(double sigma, int* reads) {
    const int radius = std::max(1, static_cast<int>(std::ceil(3.0 * sigma)));
    std::vector<double> taps(radius + 2, 0.0);
    double sum = 0.0;
    for (int k = 0; k <= radius; ++k) {
        taps[k] = std::exp(-0.5 * k * k / (sigma * sigma));
        sum += k == 0 ? taps[k] : 2.0 * taps[k];
    }
    const int pairs = (radius + 1) / 2;
    std::ostringstream text;
    text.precision(9);
    text << std::showpoint;
    text << "#version 300 es\nprecision highp float;\nin vec2 vTexCoord;\nout vec4 fragColor;\n"
         << "uniform sampler2D uTexture;\nuniform vec2 uStep;\n"
         << "const int pairCount = " << pairs << ";\n"
         << "const float weights[" << pairs << "] = float[](";
    for (int i = 0; i < pairs; ++i) {
        const double w = (taps[2 * i + 1] + taps[2 * i + 2]) / sum;
        text << (i ? ", " : "") << w;
    }
    text << ");\nconst float offsets[" << pairs << "] = float[](";
    for (int i = 0; i < pairs; ++i) {
        const double a = taps[2 * i + 1], b = taps[2 * i + 2];
        text << (i ? ", " : "") << (2 * i + 1 + b / (a + b));
    }
    text << ");\nvoid main() {\n    vec4 c = " << taps[0] / sum
         << " * texture(uTexture, vTexCoord);\n"
         << "    for (int i = 0; i < pairCount; ++i) {\n"
         << "        vec2 d = offsets[i] * uStep;\n"
         << "        c += weights[i] * (texture(uTexture, vTexCoord + d) + "
            "texture(uTexture, vTexCoord - d));\n"
         << "    }\n    fragColor = c;\n}\n";
    *reads = 2 * pairs + 1;
    return text.str();
}

}  // namespace

FullGaussianBlur::FullGaussianBlur(int w, int h, double sigma) : width(w), height(h) {
    program = buildProgram(shaderFor(sigma, &readsPerPass));
    Target full = makeTarget(w, h, GL_RGBA8);
    input = full.texture;
    glDeleteFramebuffers(1, &full.framebuffer);
    across = makeTarget(w, h, GL_RGBA8);
    output = makeTarget(w, h, GL_RGBA8);
}

FullGaussianBlur::~FullGaussianBlur() {
    deleteTarget(across);
    deleteTarget(output);
    glDeleteTextures(1, &input);
    glDeleteProgram(program);
}

void FullGaussianBlur::run(const std::vector<uint8_t>& pixels, std::vector<uint8_t>& out) {
    glBindTexture(GL_TEXTURE_2D, input);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.data());
    glDisable(GL_BLEND);
    glUseProgram(program);
    bindTarget(across);
    bindSampler(program, "uTexture", 0, input);
    glUniform2f(glGetUniformLocation(program, "uStep"), 1.0f / width, 0.0f);
    drawQuad();
    bindTarget(output);
    bindSampler(program, "uTexture", 0, across.texture);
    glUniform2f(glGetUniformLocation(program, "uStep"), 0.0f, 1.0f / height);
    drawQuad();
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
}

}  // namespace peer
