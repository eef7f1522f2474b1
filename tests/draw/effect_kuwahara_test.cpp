// KuwaharaFilter: the least-variance square of four, against the same sums on
// the CPU; radius 0; no defaults at creation.
#include <cmath>
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

// The four squares in the shader's order, for a step of one texel.
std::vector<Region> regionsOf(const Picture& in, int x, int y, int r) {
    const int ranges[4][4] = {{-r, 0, -r, 0}, {-r, 0, 0, r}, {0, r, 0, r}, {0, r, -r, 0}};
    const float n = static_cast<float>((r + 1) * (r + 1));
    std::vector<Region> regions;
    for (const auto& range : ranges) {
        float m[3] = {0, 0, 0}, s[3] = {0, 0, 0};
        for (int j = range[0]; j <= range[1]; ++j) {
            for (int i = range[2]; i <= range[3]; ++i) {
                for (int c = 0; c < 3; ++c) {
                    const float v = in.unit(x + i, y + j, c);
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

Expected meanOf(const Region& region) {
    return Expected{{toByte(region.mean[0]), toByte(region.mean[1]), toByte(region.mean[2]), 255}};
}

class KuwaharaFilterTest : public GLTest {
protected:
    std::vector<uint8_t> paint(Picture& in, int radius) {
        pmGL::Texture tex = upload(in, true);
        pmDraw::KuwaharaFilter kuwahara;
        EXPECT_TRUE(pmDraw::createKuwaharaFilter(kuwahara));
        pmDraw::setParameters(kuwahara, radius, static_cast<float>(in.width),
                              static_cast<float>(in.height));
        pmDraw::setTexture(kuwahara, tex, glm::vec2(0.0f, 0.0f));
        pmDraw::runKuwaharaFilter(kuwahara);
        std::vector<uint8_t> out = gl->readTarget();
        pmDraw::deleteKuwaharaFilter(kuwahara);
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

}  // namespace
