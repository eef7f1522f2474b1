// KuwaharaFilter: the least-variance square of four, against the same sums on
// the CPU; radius 0; no defaults at creation; float pictures where no square
// passes the variance threshold.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

struct Region {
    float mean[3];
    float sigma2;
};

// The four squares in the shader's order, for a step of one texel, of the
// values `sample(x, y, channel)` gives.
template <typename Sample>
std::vector<Region> squaresOf(Sample&& sample, int x, int y, int r) {
    const int ranges[4][4] = {{-r, 0, -r, 0}, {-r, 0, 0, r}, {0, r, 0, r}, {0, r, -r, 0}};
    const float n = static_cast<float>((r + 1) * (r + 1));
    std::vector<Region> regions;
    for (const auto& range : ranges) {
        float m[3] = {0, 0, 0}, s[3] = {0, 0, 0};
        for (int j = range[0]; j <= range[1]; ++j) {
            for (int i = range[2]; i <= range[3]; ++i) {
                for (int c = 0; c < 3; ++c) {
                    const float v = sample(x + i, y + j, c);
                    m[c] += v;
                    s[c] += v * v;
                }
            }
        }
        Region region;
        region.sigma2 = 0.0f;
        for (int c = 0; c < 3; ++c) {
            region.mean[c] = m[c] / n;
            region.sigma2 += std::fabs(s[c] / n - region.mean[c] * region.mean[c]);
        }
        regions.push_back(region);
    }
    return regions;
}

// The squares of an 8-bit picture, in units of 0 to 1.
std::vector<Region> regionsOf(const Picture& in, int x, int y, int r) {
    return squaresOf([&](int px, int py, int c) { return in.unit(px, py, c); }, x, y, r);
}

Expected meanOf(const Region& region) {
    return Expected{{toByte(region.mean[0]), toByte(region.mean[1]), toByte(region.mean[2]), 255}};
}

// A float picture, RGBA, bottom row first, read clamped to the edge.
struct FloatPicture {
    int width = 0;
    int height = 0;
    std::vector<float> rgba;
    float at(int x, int y, int c) const {
        x = std::min(std::max(x, 0), width - 1);
        y = std::min(std::max(y, 0), height - 1);
        return rgba[(static_cast<size_t>(y) * width + x) * 4 + c];
    }
};

// The squares of a float picture, on its values as they are.
std::vector<Region> regionsOf(const FloatPicture& in, int x, int y, int r) {
    return squaresOf([&](int px, int py, int c) { return in.at(px, py, c); }, x, y, r);
}

bool hasExtension(const char* name) {
    GLint count = 0;
    glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i) {
        const char* each = reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, i));
        if (each != nullptr && std::strcmp(each, name) == 0) return true;
    }
    return false;
}

// An RGBA32F texture of the picture. Nearest filters: 32-bit float textures
// are not filterable in ES 3.0, and the shader reads texel centres anyway.
pmGL::Texture uploadFloat(const FloatPicture& p) {
    pmGL::Texture tex;
    glGenTextures(1, &tex.id);
    glBindTexture(GL_TEXTURE_2D, tex.id);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, p.width, p.height, 0, GL_RGBA, GL_FLOAT,
                 p.rgba.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
    tex.width = p.width;
    tex.height = p.height;
    tex.opts.type = GL_FLOAT;
    tex.opts.internalFormat = GL_RGBA32F;
    tex.opts.minFilter = GL_NEAREST;
    tex.opts.magFilter = GL_NEAREST;
    tex.opts.linear = false;
    return tex;
}

// A float framebuffer of its own, bound with its viewport, so that values
// outside 0..1 and the clear value survive to the read-back.
class FloatTarget {
public:
    FloatTarget(int width, int height) : width(width), height(height) {
        glGenTextures(1, &tex);
        glBindTexture(GL_TEXTURE_2D, tex);
        glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA32F, width, height);
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &fbo);
        glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, tex, 0);
        glViewport(0, 0, width, height);
    }
    ~FloatTarget() {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &fbo);
        glDeleteTextures(1, &tex);
    }
    FloatTarget(const FloatTarget&) = delete;
    FloatTarget& operator=(const FloatTarget&) = delete;
    bool complete() const {
        return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    }
    void clear(const float (&rgba)[4]) { glClearBufferfv(GL_COLOR, 0, rgba); }
    std::vector<float> read() const {
        std::vector<float> out(static_cast<size_t>(width) * height * 4);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_FLOAT, out.data());
        return out;
    }
    const int width;
    const int height;

private:
    GLuint fbo = 0;
    GLuint tex = 0;
};

// One run of a new filter with the radius and the picture's size as its
// step, into the bound framebuffer.
void runKuwahara(const pmGL::Texture& tex, int radius, int width, int height) {
    pmDraw::KuwaharaFilter kuwahara;
    EXPECT_TRUE(pmDraw::createKuwaharaFilter(kuwahara));
    pmDraw::setParameters(kuwahara, radius, static_cast<float>(width), static_cast<float>(height));
    pmDraw::setTexture(kuwahara, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runKuwaharaFilter(kuwahara);
    pmDraw::deleteKuwaharaFilter(kuwahara);
}

class KuwaharaFilterTest : public GLTest {
protected:
    std::vector<uint8_t> paint(Picture& in, int radius) {
        pmGL::Texture tex = upload(in, true);
        runKuwahara(tex, radius, in.width, in.height);
        std::vector<uint8_t> out = gl->readTarget();
        pmGL::deleteTexture(tex);
        return out;
    }
};

TEST_F(KuwaharaFilterTest, CreateSetsNoParameterAndTheShaderSeesZeros) {
    Picture in = makePicture(8, 8, 60);
    pmGL::Texture tex = upload(in, true);
    pmDraw::KuwaharaFilter kuwahara;
    ASSERT_TRUE(pmDraw::createKuwaharaFilter(kuwahara));
    EXPECT_FALSE(kuwahara.renderOpts.blend.enabled);
    EXPECT_EQ(kuwahara.ud.ints.count("uRadius"), 0u);
    EXPECT_EQ(kuwahara.ud.floats.count("uWidth"), 0u);
    EXPECT_EQ(kuwahara.ud.floats.count("uHeight"), 0u);
    pmDraw::setTexture(kuwahara, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runKuwaharaFilter(kuwahara);
    GLint radius = -1;
    GLfloat width = -1.0f, height = -1.0f;
    const GLuint program = kuwahara.program.id;
    glGetUniformiv(program, glGetUniformLocation(program, "uRadius"), &radius);
    glGetUniformfv(program, glGetUniformLocation(program, "uWidth"), &width);
    glGetUniformfv(program, glGetUniformLocation(program, "uHeight"), &height);
    EXPECT_EQ(radius, 0);
    EXPECT_EQ(width, 0.0f);
    EXPECT_EQ(height, 0.0f);

    pmDraw::setParameters(kuwahara, 5, 1920.0f, 1080.0f);
    EXPECT_EQ(kuwahara.ud.ints["uRadius"], 5);
    EXPECT_FLOAT_EQ(kuwahara.ud.floats["uWidth"], 1920.0f);
    EXPECT_FLOAT_EQ(kuwahara.ud.floats["uHeight"], 1080.0f);
    pmDraw::deleteKuwaharaFilter(kuwahara);
    pmGL::deleteTexture(tex);
}

// Every square is the centre sample alone, with variance 0: the first wins
// and the picture comes back with alpha 1.
TEST_F(KuwaharaFilterTest, RadiusZeroGivesThePictureWithAlphaOne) {
    const int w = 16, h = 12;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 61);
    const std::vector<uint8_t> out = paint(in, 0);
    expectPicture(
        out, w, h,
        [&](int x, int y) {
            return Expected{{in.at(x, y, 0), in.at(x, y, 1), in.at(x, y, 2), 255}};
        },
        0, "radius 0");
}

// Where two squares' variances are too close to order them in float, either
// mean is accepted.
TEST_F(KuwaharaFilterTest, ShaderMatchesCpuSquares) {
    const int w = 28, h = 20;
    gl->resizeTarget(w, h);
    for (int radius : {1, 2, 5}) {
        Picture in = makePicture(w, h, 62 + radius);
        const std::vector<uint8_t> out = paint(in, radius);
        int failures = 0;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const std::vector<Region> regions = regionsOf(in, x, y, radius);
                float best = 1e+2f;
                for (const Region& r : regions) best = std::min(best, r.sigma2);
                bool matched = false;
                for (const Region& r : regions) {
                    if (r.sigma2 > best + 1e-5f) continue;
                    const Expected e = meanOf(r);
                    bool same = true;
                    for (int c = 0; c < 4; ++c) {
                        same = same && std::abs(out[(static_cast<size_t>(y) * w + x) * 4 + c] -
                                                e.rgba[c]) <= 2;
                    }
                    matched = matched || same;
                }
                if (!matched && ++failures <= 8) {
                    ADD_FAILURE() << "radius " << radius << " at " << x << "," << y;
                }
            }
        }
        EXPECT_EQ(failures, 0) << "radius " << radius;
    }
}

// Texels of `makeTestPixels`, each channel scaled by `scale`, alpha 1. The
// sampler's default precision in a fragment shader is lowp, and the software
// renderer reads through it at half precision: whole numbers up to 255 and
// their quotients by 256 come through unchanged, other values would not.
FloatPicture floatPicture(int w, int h, unsigned seed, float scale) {
    FloatPicture p{w, h, std::vector<float>(static_cast<size_t>(w) * h * 4)};
    const std::vector<uint8_t> bytes = makeTestPixels(w, h, 4, seed);
    for (size_t i = 0; i < bytes.size(); ++i) {
        p.rgba[i] = i % 4 == 3 ? 1.0f : bytes[i] * scale;
    }
    return p;
}

// The filter at the given radius over a float picture into a float target
// cleared to a sentinel, which it reads back.
std::vector<float> paintFloat(const FloatPicture& in, int radius) {
    pmGL::Texture tex = uploadFloat(in);
    FloatTarget target(in.width, in.height);
    EXPECT_TRUE(target.complete());
    const float sentinel[4] = {-3.0f, 5.5f, 77.0f, 0.25f};
    target.clear(sentinel);
    runKuwahara(tex, radius, in.width, in.height);
    std::vector<float> out = target.read();
    pmGL::deleteTexture(tex);
    return out;
}

// A pixel equal to the mean of a region, every channel within `tolerance`.
bool isMeanOf(const float* pixel, const Region& region, float tolerance) {
    for (int c = 0; c < 3; ++c) {
        if (std::fabs(pixel[c] - region.mean[c]) > tolerance) return false;
    }
    return true;
}

// Float values reach past 0..1, so a square's variance can exceed the
// shader's starting 100.0: at radius 1 over whole numbers from 0 to 255 every
// square of four differing texels has a variance far above 100, and no
// square is chosen. The output is then never written, which GL leaves
// undefined. On this renderer the pixel shows the first square's mean (its
// compiler turns the first conditional store into a plain one), which is the
// renderer's business and not asserted. What is asserted: the pixel is not
// the mean of the least-variance square, which is what the shader would
// write if it chose one; pixels whose least-variance square is the first
// cannot tell the two apart and are left out. The corner pixels read clamped
// texels, some squares four times the same one with variance 0: there a
// square passes and its mean must show, which keeps both branches side by
// side in one picture.
TEST_F(KuwaharaFilterTest, NoSquareUnderTheThresholdWritesNoChosenMean) {
    ASSERT_TRUE(hasExtension("GL_EXT_color_buffer_float"));
    const int w = 8, h = 6, radius = 1;
    const FloatPicture in = floatPicture(w, h, 93, 1.0f);
    const std::vector<float> out = paintFloat(in, radius);
    int unchosen = 0, chosen = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float* p = &out[(static_cast<size_t>(y) * w + x) * 4];
            const std::vector<Region> regions = regionsOf(in, x, y, radius);
            int least = 0;
            for (int k = 1; k < 4; ++k) {
                if (regions[k].sigma2 < regions[least].sigma2) least = k;
            }
            if (regions[least].sigma2 < 100.0f) {
                ++chosen;
                EXPECT_TRUE(isMeanOf(p, regions[least], 1e-4f)) << "at " << x << "," << y;
                EXPECT_EQ(p[3], 1.0f);
            } else if (least != 0 && !isMeanOf(regions[0].mean, regions[least], 0.5f)) {
                ++unchosen;
                EXPECT_FALSE(isMeanOf(p, regions[least], 0.5f))
                    << "at " << x << "," << y << ": " << p[0] << " " << p[1] << " " << p[2];
            }
        }
    }
    EXPECT_GT(unchosen, 20);
    EXPECT_GT(chosen, 0);
}

// The same filter, target and sentinel on float values within 0..1: every
// square passes the threshold, and each pixel is the least-variance mean
// computed on the CPU, no longer the sentinel.
TEST_F(KuwaharaFilterTest, FloatValuesInRangeGiveTheLeastVarianceMean) {
    ASSERT_TRUE(hasExtension("GL_EXT_color_buffer_float"));
    const int w = 8, h = 6, radius = 1;
    const FloatPicture in = floatPicture(w, h, 91, 1.0f / 256.0f);
    const std::vector<float> out = paintFloat(in, radius);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float* p = &out[(static_cast<size_t>(y) * w + x) * 4];
            const std::vector<Region> regions = regionsOf(in, x, y, radius);
            float best = 100.0f;
            for (const Region& r : regions) best = std::min(best, r.sigma2);
            ASSERT_LT(best, 100.0f);
            // Squares whose variances are too close to order in float are
            // both accepted.
            bool matched = false;
            for (const Region& r : regions) {
                matched = matched || (r.sigma2 <= best + 1e-5f && isMeanOf(p, r, 1e-5f));
            }
            EXPECT_TRUE(matched) << "at " << x << "," << y << ": " << p[0] << " " << p[1] << " "
                                 << p[2];
            EXPECT_EQ(p[3], 1.0f);
        }
    }
}

}  // namespace
