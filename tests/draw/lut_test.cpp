// LUTFilter: the strip layout read through an identity table and a table that
// is not the identity, against the same interpolation on the CPU; the table
// size, its log line, and the refusals.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmDraw.h"
#include "pmDrawLUT.h"
#include "pmGL.h"
#include "pmGLSL.h"

namespace {

using pmGL::Texture;

// A strip of n slices of n x n: slice b at x = b * n, red along x, green
// along y. `f` gives the entry's colour from the three unit coordinates.
template <typename F>
std::vector<uint8_t> makeStrip(int n, F f) {
    std::vector<uint8_t> strip(static_cast<size_t>(n) * n * n * 4);
    for (int g = 0; g < n; ++g) {
        for (int b = 0; b < n; ++b) {
            for (int r = 0; r < n; ++r) {
                const float d = static_cast<float>(n - 1);
                const glm::vec3 c = f(r / d, g / d, b / d);
                const size_t i = (static_cast<size_t>(g) * n * n + b * n + r) * 4;
                for (int k = 0; k < 3; ++k) {
                    strip[i + k] = static_cast<uint8_t>(
                        std::lround(std::min(std::max(c[k], 0.0f), 1.0f) * 255.0f));
                }
                strip[i + 3] = 255;
            }
        }
    }
    return strip;
}

Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height, int filter) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = filter;
    opts.magFilter = filter;
    pmUtil::ImageData<unsigned char> image(width, height, 4, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

// The table read as the interpolating shader reads it: linear on all three
// axes between the entries, in units of the 8-bit table values.
glm::vec3 lookUp(const std::vector<uint8_t>& strip, int n, glm::vec3 c) {
    auto entry = [&](int r, int g, int b) {
        const size_t i = (static_cast<size_t>(g) * n * n + b * n + r) * 4;
        return glm::vec3(strip[i], strip[i + 1], strip[i + 2]);
    };
    const float m = static_cast<float>(n - 1);
    const glm::vec3 p = c * m;
    const int r0 = std::min(static_cast<int>(std::floor(p.x)), n - 1);
    const int g0 = std::min(static_cast<int>(std::floor(p.y)), n - 1);
    const int b0 = std::min(static_cast<int>(std::floor(p.z)), n - 1);
    const int r1 = std::min(r0 + 1, n - 1), g1 = std::min(g0 + 1, n - 1),
              b1 = std::min(b0 + 1, n - 1);
    const float fr = p.x - r0, fg = p.y - g0, fb = p.z - b0;
    auto slice = [&](int b) {
        const glm::vec3 low = glm::mix(entry(r0, g0, b), entry(r1, g0, b), fr);
        const glm::vec3 high = glm::mix(entry(r0, g1, b), entry(r1, g1, b), fr);
        return glm::mix(low, high, fg);
    };
    return glm::mix(slice(b0), slice(b1), fb);
}

glm::vec3 pixelColor(const std::vector<uint8_t>& pixels, size_t index) {
    return glm::vec3(pixels[index], pixels[index + 1], pixels[index + 2]) / 255.0f;
}

class LUTFilterTest : public GLTest {
protected:
    // Runs `filter` on `input` (the size of the target) into a cleared target.
    std::vector<uint8_t> run(pmDraw::LUTFilter& filter, const Texture& input) {
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::setTexture(filter, input, 0.0f);
        filter.draw();
        return gl->readTarget();
    }
};

TEST_F(LUTFilterTest, InitializeBuildsTheInterpolatingProgram) {
    pmDraw::LUTFilter filter;
    LogCapture log;
    ASSERT_TRUE(filter.initialize());
    EXPECT_NE(filter.program.id, 0u);
    EXPECT_NE(filter.quad.id, 0u);
    EXPECT_NE(filter.vertexArray.id, 0u);
    EXPECT_GE(pmGL::getUniformLocation(filter.program, "uTexLUT"), 0);
    EXPECT_GE(pmGL::getUniformLocation(filter.program, "uMapSize"), 0);
    EXPECT_EQ(log.countEndingWith("> LUTFilter::initialize()"), 1);
    EXPECT_EQ(log.countEndingWith("> LUTFilter::initialize() end."), 1);
    EXPECT_EQ(log.countEndingWith("> TextureFilter::initialize() end."), 1);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front().text.rfind("pmDrawFilterEffect: initialize(", 0), 0u)
        << lines.front().text;
    // The end line comes before the program is built.
    EXPECT_NE(lines[1].text.find("LUTFilter::initialize() end."), std::string::npos);
    // Blend and area are the base class's.
    EXPECT_TRUE(filter.renderOpts.blend.enabled);
    filter.finalize();
}

TEST_F(LUTFilterTest, TheShimsReachTheOverrides) {
    pmDraw::LUTFilter filter;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createBaseFilter(filter));
    EXPECT_EQ(log.countEndingWith("> LUTFilter::initialize()"), 1);
    EXPECT_NE(filter.program.id, 0u);
    log.clear();
    pmDraw::runTextureFilter(filter);
    EXPECT_EQ(log.countEndingWith("> please set texture first."), 1);
    pmDraw::deleteTextureFilter(filter);
    EXPECT_EQ(filter.program.id, 0u);
}

TEST_F(LUTFilterTest, IdentityTableReturnsTheInputWithinOneLevel) {
    for (const int n : {16, 64}) {
        SCOPED_TRACE(n);
        std::vector<uint8_t> strip =
            makeStrip(n, [](float r, float g, float b) { return glm::vec3(r, g, b); });
        Texture lut = makeTexture(strip, n * n, n, GL_LINEAR);
        std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 41);
        Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
        pmDraw::LUTFilter filter;
        ASSERT_TRUE(filter.initialize());
        filter.setLUT(lut);
        const std::vector<uint8_t> out = run(filter, input);
        for (size_t i = 0; i < out.size(); i += 4) {
            EXPECT_NEAR(out[i + 0], pixels[i + 0], 1) << i / 4;
            EXPECT_NEAR(out[i + 1], pixels[i + 1], 1) << i / 4;
            EXPECT_NEAR(out[i + 2], pixels[i + 2], 1) << i / 4;
            // Alpha passes through; over a cleared target the blend keeps it.
            EXPECT_EQ(out[i + 3], pixels[i + 3]) << i / 4;
        }
        filter.finalize();
        pmGL::deleteTexture(lut);
        pmGL::deleteTexture(input);
    }
}

TEST_F(LUTFilterTest, OtherTableMatchesTrilinearLookUpOnCpu) {
    const int n = 16;
    std::vector<uint8_t> strip = makeStrip(n, [](float r, float g, float b) {
        return glm::vec3(1.0f - r, g * g, 0.25f + 0.5f * b * r);
    });
    Texture lut = makeTexture(strip, n * n, n, GL_LINEAR);
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 42);
    // Opaque input: the blend then changes nothing.
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(filter.initialize());
    filter.setLUT(lut);
    const std::vector<uint8_t> out = run(filter, input);
    int changed = 0;
    for (size_t i = 0; i < out.size(); i += 4) {
        const glm::vec3 expected = lookUp(strip, n, pixelColor(pixels, i));
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(out[i + c], expected[c], 2) << i / 4 << " channel " << c;
            if (std::abs(out[i + c] - pixels[i + c]) > 8) ++changed;
        }
        EXPECT_EQ(out[i + 3], 255);
    }
    EXPECT_GT(changed, static_cast<int>(out.size() / 4));
    filter.finalize();
    pmGL::deleteTexture(lut);
    pmGL::deleteTexture(input);
}

TEST_F(LUTFilterTest, BlueAtOneReadsTheLastSliceAlone) {
    // Every slice black but the last, which is one colour.
    const int n = 16;
    std::vector<uint8_t> strip = makeStrip(n, [](float, float, float b) {
        return b >= 1.0f ? glm::vec3(10.0f, 200.0f, 30.0f) / 255.0f : glm::vec3(0.0f);
    });
    Texture lut = makeTexture(strip, n * n, n, GL_LINEAR);
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 43);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        pixels[i + 2] = 255;
        pixels[i + 3] = 255;
    }
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(filter.initialize());
    filter.setLUT(lut);
    const std::vector<uint8_t> out = run(filter, input);
    for (size_t i = 0; i < out.size(); i += 4) {
        EXPECT_NEAR(out[i + 0], 10, 1) << i / 4;
        EXPECT_NEAR(out[i + 1], 200, 1) << i / 4;
        EXPECT_NEAR(out[i + 2], 30, 1) << i / 4;
    }
    filter.finalize();
    pmGL::deleteTexture(lut);
    pmGL::deleteTexture(input);
}

TEST_F(LUTFilterTest, MapSizeIsTheCubeRootJustAboveTheInteger) {
    pmDraw::LUTFilter filter;
    Texture lut;
    lut.width = 4096;
    lut.height = 64;
    LogCapture log;
    filter.setLUT(lut);
    const float size = filter.ud.floats["uMapSize"];
    EXPECT_GT(size, 64.0f);
    EXPECT_LT(size, 64.0001f);
    EXPECT_FLOAT_EQ(size, 64.00001f);
    EXPECT_EQ(filter.ud.textures.count("uTexLUT"), 1u);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << log.dump();
    EXPECT_EQ(lines[0].priority, 4);
    EXPECT_EQ(log.countEndingWith("> LUT_3D_SIZE = 64"), 1);
    EXPECT_EQ(lines[0].text.rfind("pmDrawFilterEffect: setLUT(", 0), 0u) << lines[0].text;
}

TEST_F(LUTFilterTest, LoggedSizeOfEveryProperTableIsExact) {
    pmDraw::LUTFilter filter;
    LogCapture log;
    for (int n = 2; n <= 64; ++n) {
        Texture lut;
        lut.width = n * n;
        lut.height = n;
        filter.setLUT(lut);
        const float size = filter.ud.floats["uMapSize"];
        EXPECT_GE(size, static_cast<float>(n));
        EXPECT_EQ(static_cast<int>(size), n);
        EXPECT_EQ(log.countEndingWith("> LUT_3D_SIZE = " + std::to_string(n)), 1) << n;
    }
}

TEST_F(LUTFilterTest, TableThatIsNotACubeGivesAFractionalSizeWithoutReport) {
    const int w = 256, h = 10;
    std::vector<uint8_t> strip(static_cast<size_t>(w) * h * 4, 100);
    Texture lut = makeTexture(strip, w, h, GL_LINEAR);
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 44);
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(filter.initialize());
    LogCapture log;
    filter.setLUT(lut);
    const float size = filter.ud.floats["uMapSize"];
    EXPECT_NEAR(size, std::cbrt(2560.0f), 1e-4f);
    EXPECT_NE(size, std::floor(size));
    EXPECT_EQ(log.countEndingWith("> LUT_3D_SIZE = 13"), 1);
    log.clear();
    run(filter, input);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    filter.finalize();
    pmGL::deleteTexture(lut);
    pmGL::deleteTexture(input);
}

// Red of the table that the non-cube test uses: a triangle wave along x, 17
// levels a texel, so that a read a few texels off shows.
int triangleWave(int x) {
    const int phase = x % 32;
    return (phase < 16 ? phase : 31 - phase) * 17;
}

// The interpolating read of the shader with map size m, over a table of
// w x h whose red is the triangleWave of its column and green 25 times its row.
// The bilinear filter: linear between the two texels around the sampling
// point, clamped at the ends. In 8-bit units.
glm::vec3 triangleWaveTableRead(glm::vec3 c, float m, int w, int h) {
    const float innerWidth = m - 1.0f;
    const float sliceSize = 1.0f / m;
    const float slicePixelSize = sliceSize / m;
    const float sliceInnerSize = slicePixelSize * innerWidth;
    const float zSlice0 = std::min(std::floor(c.z * innerWidth), innerWidth);
    const float zSlice1 = std::min(zSlice0 + 1.0f, innerWidth);
    const float xOffset = slicePixelSize * 0.5f + c.x * sliceInnerSize;
    const float s0 = xOffset + zSlice0 * sliceSize;
    const float s1 = xOffset + zSlice1 * sliceSize;
    const float yOffset = sliceSize * 0.5f + c.y * (1.0f - sliceSize);
    auto red = [&](float s) {
        const float u = std::min(std::max(s * w - 0.5f, 0.0f), w - 1.0f);
        const int i0 = static_cast<int>(std::floor(u));
        const int i1 = std::min(i0 + 1, w - 1);
        return triangleWave(i0) + (triangleWave(i1) - triangleWave(i0)) * (u - i0);
    };
    const float green = 25.0f * std::min(std::max(yOffset * h - 0.5f, 0.0f), h - 1.0f);
    const float zOffset = c.z * innerWidth - std::floor(c.z * innerWidth);
    return glm::vec3(red(s0) + (red(s1) - red(s0)) * zOffset, green, 0.0f);
}

TEST_F(LUTFilterTest, TableThatIsNotACubeIsReadAtTheFractionalSize) {
    const int w = 256, h = 10;
    std::vector<uint8_t> strip(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &strip[(static_cast<size_t>(y) * w + x) * 4];
            p[0] = static_cast<uint8_t>(triangleWave(x));
            p[1] = static_cast<uint8_t>(25 * y);
            p[2] = 0;
            p[3] = 255;
        }
    }
    Texture lut = makeTexture(strip, w, h, GL_LINEAR);
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 45);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(filter.initialize());
    filter.setLUT(lut);
    const std::vector<uint8_t> out = run(filter, input);
    // The cube root of 2560 entries, as the table size is computed: in double
    // with the single-precision third, kept as a float.
    const float m = static_cast<float>(std::pow(2560.0, static_cast<double>(1.0f / 3.0f)));
    int unlikeWholeSize = 0;
    for (size_t i = 0; i < out.size(); i += 4) {
        const glm::vec3 colour = pixelColor(pixels, i);
        const glm::vec3 expected = triangleWaveTableRead(colour, m, w, h);
        const glm::vec3 asIfThirteen = triangleWaveTableRead(colour, 13.0f, w, h);
        // The renderer places a bilinear read to 1/256 of a texel (a tenth
        // of a level at 17 levels a texel) and rounds it to 8 bits (half a
        // level); two such reads are mixed and the mix rounded: under 2.
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(out[i + c], expected[c], 2) << i / 4 << " channel " << c;
        }
        if (std::abs(out[i] - asIfThirteen.x) > 8) ++unlikeWholeSize;
    }
    EXPECT_GT(unlikeWholeSize, static_cast<int>(out.size() / 8))
        << "the fractional size reads elsewhere than the truncated size would";
    filter.finalize();
    pmGL::deleteTexture(lut);
    pmGL::deleteTexture(input);
}

TEST_F(LUTFilterTest, TableMayBeReplacedByOneOfAnotherSize) {
    std::vector<uint8_t> small =
        makeStrip(16, [](float r, float g, float b) { return glm::vec3(r, g, b); });
    std::vector<uint8_t> inverse = makeStrip(
        32, [](float r, float g, float b) { return glm::vec3(1.0f - r, 1.0f - g, 1.0f - b); });
    Texture a = makeTexture(small, 256, 16, GL_LINEAR);
    Texture b = makeTexture(inverse, 1024, 32, GL_LINEAR);
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 45);
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(filter.initialize());
    filter.setLUT(a);
    run(filter, input);
    filter.setLUT(b);
    EXPECT_EQ(static_cast<int>(filter.ud.floats["uMapSize"]), 32);
    const std::vector<uint8_t> out = run(filter, input);
    for (size_t i = 0; i < out.size(); i += 4) {
        const glm::vec3 expected = lookUp(inverse, 32, pixelColor(pixels, i));
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(out[i + c], expected[c], 2) << i / 4;
    }
    filter.finalize();
    pmGL::deleteTexture(a);
    pmGL::deleteTexture(b);
    pmGL::deleteTexture(input);
}

TEST_F(LUTFilterTest, DrawWithoutTableDrawsNothingAndLogs) {
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 46);
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(filter.initialize());
    pmDraw::setTexture(filter, input, 0.0f);
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    filter.draw();
    EXPECT_EQ(log.countEndingWith("> please set texture first."), 1) << log.dump();
    EXPECT_EQ(log.lines().front().priority, 6);
    EXPECT_EQ(gl->readTarget(), before);
    filter.finalize();
    pmGL::deleteTexture(input);
}

TEST_F(LUTFilterTest, TableWithoutInputFallsToTheBaseChecks) {
    std::vector<uint8_t> strip =
        makeStrip(4, [](float r, float g, float b) { return glm::vec3(r, g, b); });
    Texture lut = makeTexture(strip, 16, 4, GL_LINEAR);
    pmDraw::LUTFilter filter;
    LogCapture log;
    filter.setLUT(lut);
    filter.draw();
    EXPECT_EQ(log.countEndingWith("> Call createTextureFilter() first.\n"), 1) << log.dump();
    ASSERT_TRUE(filter.initialize());
    log.clear();
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    filter.draw();
    EXPECT_EQ(log.countEndingWith("> context.ud.texData.count() = 0.\n"), 1) << log.dump();
    EXPECT_EQ(gl->readTarget(), before);
    filter.finalize();
    pmGL::deleteTexture(lut);
}

// The chunk's other form, without HIGH_QUALITY_COLOR_GRADING: one read of the
// nearest lower slice, no blending along blue.
TEST_F(LUTFilterTest, FastFormOfTheChunkReadsOneSlice) {
    const std::string source = pmGLSL::defaultHeader + R"(
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform sampler2D uTexLUT;
uniform float uMapSize;
out vec4 fragColor;
)" + pmGLSL::colorGrading + R"(
void main() {
    vec4 srcColor = texture(uTexture, vTexCoord);
    fragColor = vec4(colorGrading(srcColor.rgb, uTexLUT, uMapSize), srcColor.a);
}
)";
    const int n = 16;
    std::vector<uint8_t> strip =
        makeStrip(n, [](float r, float g, float b) { return glm::vec3(r, g, b); });
    Texture lut = makeTexture(strip, n * n, n, GL_LINEAR);
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 47);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        // Keep blue off the slice boundaries, where float rounding may pick
        // either slice.
        if (pixels[i + 2] % 17 == 0) pixels[i + 2] = pixels[i + 2] == 0 ? 1 : pixels[i + 2] - 1;
        pixels[i + 3] = 255;
    }
    Texture input = makeTexture(pixels, gl->width, gl->height, GL_NEAREST);
    pmDraw::LUTFilter filter;
    ASSERT_TRUE(pmDraw::createTextureFilter(filter, source));
    filter.setLUT(lut);
    const std::vector<uint8_t> out = run(filter, input);
    for (size_t i = 0; i < out.size(); i += 4) {
        EXPECT_NEAR(out[i + 0], pixels[i + 0], 1) << i / 4;
        EXPECT_NEAR(out[i + 1], pixels[i + 1], 1) << i / 4;
        EXPECT_NEAR(out[i + 2], (pixels[i + 2] * 15 / 255) * 17, 1) << i / 4;
    }
    filter.finalize();
    pmGL::deleteTexture(lut);
    pmGL::deleteTexture(input);
}

}  // namespace
