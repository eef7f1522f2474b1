// Colour converters: both conversions pixel by pixel against the same formula
// on the CPU, their silent refusals, the window-position sampling, and that
// the two are not inverse to each other.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmColor.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmUtil::ImageData<unsigned char> image(width, height, 4, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

int toByte(float v) {
    return static_cast<int>(std::lround(std::min(std::max(v, 0.0f), 1.0f) * 255.0f));
}

float at(const std::vector<uint8_t>& pixels, int width, int x, int y, int c) {
    return pixels[(static_cast<size_t>(y) * width + x) * 4 + c] / 255.0f;
}

struct Rgb {
    float r, g, b;
};

Rgb rgbToYuv(float r, float g, float b) {
    const float y = 0.299f * r + 0.587f * g + 0.114f * b;
    return {y, (b - y) * 0.565f, (r - y) * 0.713f};
}

Rgb yuvToRgb(float y, float u, float v) {
    u -= 0.5f;
    v -= 0.5f;
    return {y + 1.402f * v, y - 0.344f * u - 0.714f * v, y + 1.772f * u};
}

class ColorConverterTest : public GLTest {};

TEST_F(ColorConverterTest, InitializeBuildsProgramQuadAndVertexArrayWithBlendOff) {
    pmColor::RGB888ToYUV444Converter converter;
    LogCapture log;
    converter.Initialize();
    EXPECT_NE(converter.program.id, 0u);
    EXPECT_NE(converter.vertexBuffer.id, 0u);
    EXPECT_EQ(converter.vertexBuffer.count, 4u);
    EXPECT_EQ(converter.vertexBuffer.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    ASSERT_EQ(converter.vertexBuffer.attributes.size(), 1u);
    EXPECT_EQ(converter.vertexBuffer.attributes[0].name, "aPosition");
    EXPECT_EQ(converter.vertexBuffer.attributes[0].size, 3);
    EXPECT_EQ(converter.vertexBuffer.attributes[0].stride, 12);
    EXPECT_NE(converter.vertexArray.id, 0u);
    EXPECT_FALSE(converter.renderOpts.blend.enabled);
    EXPECT_EQ(pmGL::getAttribLocation(converter.program, "aTexCoord"), -1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    converter.Terminate();
}

TEST_F(ColorConverterTest, RgbToYuvMatchesCpuFormulaAndDropsAlpha) {
    const int w = gl->width, h = gl->height;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 31);
    Texture tex = makeTexture(pixels, w, h);
    pmColor::RGB888ToYUV444Converter converter;
    converter.Initialize();
    converter.SetInputTexture(tex);
    converter.SetOutputResolution(w, h);
    gl->clearTarget(0.5f, 0.5f, 0.5f, 0.5f);
    converter.Render();
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Rgb yuv =
                rgbToYuv(at(pixels, w, x, y, 0), at(pixels, w, x, y, 1), at(pixels, w, x, y, 2));
            const size_t i = (static_cast<size_t>(y) * w + x) * 4;
            // Negative chroma clips to 0 in the unsigned target.
            EXPECT_NEAR(out[i + 0], toByte(yuv.r), 2) << x << "," << y;
            EXPECT_NEAR(out[i + 1], toByte(yuv.g), 2) << x << "," << y;
            EXPECT_NEAR(out[i + 2], toByte(yuv.b), 2) << x << "," << y;
            EXPECT_EQ(out[i + 3], 255) << x << "," << y;
        }
    }
    converter.Terminate();
    pmGL::deleteTexture(tex);
}

TEST_F(ColorConverterTest, YuvToRgbMatchesCpuFormulaAndDropsAlpha) {
    const int w = gl->width, h = gl->height;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 32);
    Texture tex = makeTexture(pixels, w, h);
    pmColor::YUV444ToRGB888Converter converter;
    converter.Initialize();
    converter.SetInputTexture(tex);
    converter.SetOutputResolution(w, h);
    gl->clearTarget(0.5f, 0.5f, 0.5f, 0.5f);
    converter.Render();
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Rgb rgb =
                yuvToRgb(at(pixels, w, x, y, 0), at(pixels, w, x, y, 1), at(pixels, w, x, y, 2));
            const size_t i = (static_cast<size_t>(y) * w + x) * 4;
            EXPECT_NEAR(out[i + 0], toByte(rgb.r), 2) << x << "," << y;
            EXPECT_NEAR(out[i + 1], toByte(rgb.g), 2) << x << "," << y;
            EXPECT_NEAR(out[i + 2], toByte(rgb.b), 2) << x << "," << y;
            EXPECT_EQ(out[i + 3], 255) << x << "," << y;
        }
    }
    converter.Terminate();
    pmGL::deleteTexture(tex);
}

TEST_F(ColorConverterTest, KnownColoursGiveTheStatedConstants) {
    // Pure red, green, blue and a mid grey, one pixel each.
    std::vector<uint8_t> pixels = {255, 0, 0,   255, 0,   255, 0,   255,
                                   0,   0, 255, 255, 128, 128, 128, 0};
    gl->resizeTarget(4, 1);
    Texture tex = makeTexture(pixels, 4, 1);
    pmColor::RGB888ToYUV444Converter converter;
    converter.Initialize();
    converter.SetInputTexture(tex);
    converter.SetOutputResolution(4, 1);
    converter.Render();
    const std::vector<uint8_t> out = gl->readTarget();
    // Red: y 0.299, u clipped, v = 0.701 x 0.713.
    EXPECT_NEAR(out[0], 76, 1);
    EXPECT_EQ(out[1], 0);
    EXPECT_NEAR(out[2], toByte(0.701f * 0.713f), 1);
    // Blue: y 0.114, u = 0.886 x 0.565, v clipped.
    EXPECT_NEAR(out[8], 29, 1);
    EXPECT_NEAR(out[9], toByte(0.886f * 0.565f), 1);
    EXPECT_EQ(out[10], 0);
    // Grey keeps its luma and has chroma 0, not 0.5.
    EXPECT_NEAR(out[12], 128, 1);
    EXPECT_EQ(out[13], 0);
    EXPECT_EQ(out[14], 0);
    EXPECT_EQ(out[15], 255);
    converter.Terminate();
    pmGL::deleteTexture(tex);
}

TEST_F(ColorConverterTest, ForwardThenReverseIsNotTheIdentity) {
    // Grey (128, 128, 128) goes to (128, 0, 0); read back with chroma centred
    // at 0.5 that is strong negative chroma: red and blue clip, green rises.
    const int w = 4, h = 4;
    gl->resizeTarget(w, h);
    std::vector<uint8_t> grey(static_cast<size_t>(w) * h * 4, 128);
    Texture input = makeTexture(grey, w, h);
    pmGL::FrameBuffer middle;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmGL::createFrameBuffer(middle, w, h, opts, 1, false, false);

    pmColor::RGB888ToYUV444Converter forward;
    pmColor::YUV444ToRGB888Converter reverse;
    forward.Initialize();
    reverse.Initialize();
    forward.SetInputTexture(input);
    forward.SetOutputResolution(w, h);
    pmGL::bindFrameBuffer(middle);
    forward.Render();
    pmGL::unbindFrameBuffer(middle);
    reverse.SetInputTexture(middle.colorTex[0]);
    reverse.SetOutputResolution(w, h);
    reverse.Render();
    const std::vector<uint8_t> out = gl->readTarget();
    const Rgb yuv = rgbToYuv(128 / 255.0f, 128 / 255.0f, 128 / 255.0f);
    const Rgb back = yuvToRgb(toByte(yuv.r) / 255.0f, 0.0f, 0.0f);
    EXPECT_EQ(out[0], 0);
    EXPECT_NEAR(out[1], toByte(back.g), 2);
    EXPECT_GT(out[1], 200);
    EXPECT_EQ(out[2], 0);
    forward.Terminate();
    reverse.Terminate();
    pmGL::deleteFrameBuffer(middle);
    pmGL::deleteTexture(input);
}

TEST_F(ColorConverterTest, SamplingFollowsTheWindowPositionInNormalisedUnits) {
    // An input of 8 x 8 drawn into a target of 16 x 16: each input texel
    // covers 2 x 2 pixels of the output.
    const int w = 8, h = 8;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 33);
    Texture tex = makeTexture(pixels, w, h);
    pmColor::RGB888ToYUV444Converter converter;
    converter.Initialize();
    converter.SetInputTexture(tex);
    converter.SetOutputResolution(16, 16);
    converter.Render();
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            const Rgb yuv = rgbToYuv(at(pixels, w, x / 2, y / 2, 0), at(pixels, w, x / 2, y / 2, 1),
                                     at(pixels, w, x / 2, y / 2, 2));
            EXPECT_NEAR(out[(static_cast<size_t>(y) * 16 + x) * 4], toByte(yuv.r), 2)
                << x << "," << y;
        }
    }
    converter.Terminate();
    pmGL::deleteTexture(tex);
}

TEST_F(ColorConverterTest, RenderBeforeInputDrawsNothingAndLogsNothing) {
    pmColor::YUV444ToRGB888Converter converter;
    converter.Initialize();
    converter.SetOutputResolution(gl->width, gl->height);
    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    converter.Render();
    EXPECT_EQ(gl->readTarget(), before);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    converter.Terminate();
}

TEST_F(ColorConverterTest, RenderAfterTerminateDrawsNothing) {
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 34);
    Texture tex = makeTexture(pixels, gl->width, gl->height);
    pmColor::RGB888ToYUV444Converter converter;
    converter.Initialize();
    const unsigned program = converter.program.id;
    converter.SetInputTexture(tex);
    converter.SetOutputResolution(gl->width, gl->height);
    converter.Terminate();
    EXPECT_EQ(converter.program.id, 0u);
    EXPECT_EQ(converter.vertexBuffer.id, 0u);
    EXPECT_EQ(converter.vertexArray.id, 0u);
    EXPECT_FALSE(glIsProgram(program));

    gl->clearTarget(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    converter.Render();
    EXPECT_EQ(gl->readTarget(), before);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    pmGL::deleteTexture(tex);
}

TEST_F(ColorConverterTest, ZeroResolutionStoresInfinities) {
    pmColor::ColorConverter converter;
    LogCapture log;
    converter.SetOutputResolution(0, 0);
    const glm::vec2 inv = converter.uniforms.vec2s["uInvResolution"];
    EXPECT_TRUE(std::isinf(inv.x));
    EXPECT_TRUE(std::isinf(inv.y));
    converter.SetOutputResolution(4, 8);
    EXPECT_EQ(converter.uniforms.vec2s["uInvResolution"], glm::vec2(0.25f, 0.125f));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ColorConverterTest, BaseTakesAnyFragmentShaderWithTheSameInterface) {
    // The base initialiser is still reachable: swap red and blue.
    const char* const swapShader = R"(#version 300 es
precision highp float;
uniform sampler2D uInputTex;
uniform vec2 uInvResolution;
out vec4 fragColor;
void main() {
    fragColor = vec4(texture(uInputTex, gl_FragCoord.xy * uInvResolution).bgr, 1.0);
}
)";
    std::vector<uint8_t> pixels = makeTestPixels(gl->width, gl->height, 4, 35);
    Texture tex = makeTexture(pixels, gl->width, gl->height);
    pmColor::YUV444ToRGB888Converter converter;
    converter.ColorConverter::Initialize(swapShader);
    converter.SetInputTexture(tex);
    converter.SetOutputResolution(gl->width, gl->height);
    converter.Render();
    const std::vector<uint8_t> out = gl->readTarget();
    for (size_t i = 0; i < out.size(); i += 4) {
        EXPECT_EQ(out[i + 0], pixels[i + 2]);
        EXPECT_EQ(out[i + 2], pixels[i + 0]);
    }
    converter.Terminate();
    pmGL::deleteTexture(tex);
}

TEST_F(ColorConverterTest, TerminateOnAnEmptyConverterIsHarmless) {
    pmColor::ColorConverter converter;
    converter.Terminate();
    converter.Render();
    EXPECT_EQ(converter.program.id, 0u);
}

}  // namespace
