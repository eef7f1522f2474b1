// Peer: the dual-filter pyramid blur.
#include "DualFilterBlur.h"

#include <cmath>

namespace peer {

namespace {

const char* const downSource = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uHalfPixel;
void main() {
    vec2 h = uHalfPixel;
    vec4 sum = texture(uTexture, vTexCoord) * 4.0;
    sum += texture(uTexture, vTexCoord - h);
    sum += texture(uTexture, vTexCoord + h);
    sum += texture(uTexture, vTexCoord + vec2(h.x, -h.y));
    sum += texture(uTexture, vTexCoord - vec2(h.x, -h.y));
    fragColor = sum / 8.0;
}
)";

const char* const upSource = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uHalfPixel;
void main() {
    vec2 h = uHalfPixel;
    vec4 sum = texture(uTexture, vTexCoord + vec2(-h.x * 2.0, 0.0));
    sum += texture(uTexture, vTexCoord + vec2(-h.x, h.y)) * 2.0;
    sum += texture(uTexture, vTexCoord + vec2(0.0, h.y * 2.0));
    sum += texture(uTexture, vTexCoord + vec2(h.x, h.y)) * 2.0;
    sum += texture(uTexture, vTexCoord + vec2(h.x * 2.0, 0.0));
    sum += texture(uTexture, vTexCoord + vec2(h.x, -h.y)) * 2.0;
    sum += texture(uTexture, vTexCoord + vec2(0.0, -h.y * 2.0));
    sum += texture(uTexture, vTexCoord + vec2(-h.x, -h.y)) * 2.0;
    fragColor = sum / 12.0;
}
)";

// Second moment about `point` of a bilinear read at `point + offset`, in
// texels, texel centres at the integers.
double bilinearMoment(double point, double offset) {
    const double p = point + offset;
    const double i = std::floor(p);
    const double f = p - i;
    return (1.0 - f) * (i - point) * (i - point) + f * (i + 1.0 - point) * (i + 1.0 - point);
}

// A down pass's output lies on a corner of four source texels.
double downMoment(double offset) {
    return 0.5 * bilinearMoment(0.5, 0.0) +
           0.25 * (bilinearMoment(0.5, offset / 2) + bilinearMoment(0.5, -offset / 2));
}

// An up pass's outputs lie a quarter texel from a source texel centre.
double upMoment(double offset) {
    const double p = 0.25;
    return (bilinearMoment(p, offset) + bilinearMoment(p, -offset) + 2.0 * bilinearMoment(p, 0.0) +
            4.0 * bilinearMoment(p, offset / 2) + 4.0 * bilinearMoment(p, -offset / 2)) /
           12.0;
}

void setHalfPixel(GLuint program, const Target& source, double offset) {
    glUniform2f(glGetUniformLocation(program, "uHalfPixel"),
                static_cast<float>(0.5 * offset / source.width),
                static_cast<float>(0.5 * offset / source.height));
}

}  // namespace

double dualFilterVariance(int levels, double offset) {
    double variance = 0.0;
    for (int k = 1; k <= levels; ++k) {
        const double source = std::ldexp(1.0, k - 1);
        variance += source * source * downMoment(offset);
        variance += 4.0 * source * source * upMoment(offset);
    }
    return variance;
}

DualFilterBlur::DualFilterBlur(int w, int h, double sigma) : width(w), height(h) {
    // The level count whose offset comes nearest the usual 1.
    double best = 1e9;
    for (int n = 1; (std::min(w, h) >> n) >= 2 && n <= 10; ++n) {
        double low = 0.25, high = 4.0;
        for (int i = 0; i < 40; ++i) {
            const double mid = 0.5 * (low + high);
            (dualFilterVariance(n, mid) < sigma * sigma ? low : high) = mid;
        }
        const double o = 0.5 * (low + high);
        if (o > 0.26 && o < 3.99 && std::abs(std::log(o)) < best) {
            best = std::abs(std::log(o));
            levels = n;
            offset = o;
        }
    }
    down = buildProgram(downSource);
    up = buildProgram(upSource);
    Target full = makeTarget(w, h, GL_RGBA8);
    input = full.texture;
    glDeleteFramebuffers(1, &full.framebuffer);
    for (int k = 1; k <= levels; ++k) {
        pyramid.push_back(makeTarget(std::max(w >> k, 1), std::max(h >> k, 1), GL_RGBA8));
    }
    // The up passes draw back through the same levels; level 0 is the output.
    output = makeTarget(w, h, GL_RGBA8);
}

DualFilterBlur::~DualFilterBlur() {
    for (Target& t : pyramid) deleteTarget(t);
    deleteTarget(output);
    glDeleteTextures(1, &input);
    glDeleteProgram(down);
    glDeleteProgram(up);
}

void DualFilterBlur::run(const std::vector<uint8_t>& pixels, std::vector<uint8_t>& out) {
    glBindTexture(GL_TEXTURE_2D, input);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.data());
    glDisable(GL_BLEND);
    Target source{input, 0, width, height};
    glUseProgram(down);
    for (Target& level : pyramid) {
        bindTarget(level);
        bindSampler(down, "uTexture", 0, source.texture);
        setHalfPixel(down, source, offset);
        drawQuad();
        source = level;
    }
    glUseProgram(up);
    for (int k = levels - 1; k >= 0; --k) {
        const Target& target = k == 0 ? output : pyramid[k - 1];
        bindTarget(target);
        bindSampler(up, "uTexture", 0, source.texture);
        setHalfPixel(up, source, offset);
        drawQuad();
        source = target;
    }
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
}

}  // namespace peer
