// TextureRenderer and DFTexture: building and deleting, the uniform setters,
// and the drawn pixels of the copy, the three-plane merge and the distance
// field compared with the same formulas computed on the CPU.
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmDrawTexture.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

struct Rgba {
    float r, g, b, a;
};

// A texture of test pixels, first row at texture coordinate 0; NEAREST so that
// each fragment reads exactly one texel.
Texture makeTexture(std::vector<uint8_t>& pixels, int width, int height, int channels) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmUtil::ImageData<unsigned char> image(width, height, channels, pixels.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

// A texel in [0, 1]; a missing alpha reads as 1, missing colours as 0, as GL
// samples a one-channel texture.
Rgba texel(const std::vector<uint8_t>& pixels, int width, int channels, int x, int y) {
    const uint8_t* p = &pixels[(static_cast<size_t>(y) * width + x) * channels];
    Rgba c{p[0] / 255.0f, 0.0f, 0.0f, 1.0f};
    if (channels >= 3) {
        c.g = p[1] / 255.0f;
        c.b = p[2] / 255.0f;
    }
    if (channels == 4) c.a = p[3] / 255.0f;
    return c;
}

Rgba pixelAt(const std::vector<uint8_t>& target, int width, int x, int y) {
    const uint8_t* p = &target[(static_cast<size_t>(y) * width + x) * 4];
    return {p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f, p[3] / 255.0f};
}

// The default blend: premultiplied source over the destination.
Rgba blendOver(const Rgba& src, const Rgba& dst) {
    const float k = 1.0f - src.a;
    return {src.r + dst.r * k, src.g + dst.g * k, src.b + dst.b * k, src.a + dst.a * k};
}

void expectNear(const Rgba& actual, const Rgba& expected, int x, int y, float tolerance = 2.0f) {
    const float t = tolerance / 255.0f;
    EXPECT_NEAR(actual.r, expected.r, t) << "at " << x << "," << y;
    EXPECT_NEAR(actual.g, expected.g, t) << "at " << x << "," << y;
    EXPECT_NEAR(actual.b, expected.b, t) << "at " << x << "," << y;
    EXPECT_NEAR(actual.a, expected.a, t) << "at " << x << "," << y;
}

float smoothstep(float edge0, float edge1, float x) {
    const float t = std::min(std::max((x - edge0) / (edge1 - edge0), 0.0f), 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// The matrix that takes the unit square onto the whole of clip space.
glm::mat4 unitToClip() {
    return glm::mat4(glm::vec4(2.0f, 0.0f, 0.0f, 0.0f), glm::vec4(0.0f, 2.0f, 0.0f, 0.0f),
                     glm::vec4(0.0f, 0.0f, -1.0f, 0.0f), glm::vec4(-1.0f, -1.0f, 0.0f, 1.0f));
}

class TextureRendererTest : public GLTest {};

TEST_F(TextureRendererTest, CreateBuildsQuadAndSetsDefaultUniforms) {
    LogCapture log;
    pmDraw::TextureRenderer renderer;
    EXPECT_EQ(renderer.program.id, 0u);
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    EXPECT_NE(renderer.program.id, 0u);
    EXPECT_NE(renderer.vertexBuffer.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.indexId, 0u);
    EXPECT_EQ(renderer.vertexBuffer.count, 4u);
    EXPECT_EQ(renderer.vertexBuffer.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_NE(renderer.vertexArray.id, 0u);
    EXPECT_EQ(renderer.uniforms.vec2s.at("uSize"), glm::vec2(1.0f, 1.0f));
    EXPECT_EQ(renderer.uniforms.mat4s.at("uMVP"), unitToClip());
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 0.0f);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uAlphaMultiplier"), 1.0f);
    EXPECT_TRUE(renderer.uniforms.textures.empty());
    // Premultiplied output goes with the default blend.
    EXPECT_TRUE(renderer.renderOpts.blend.enabled);
    EXPECT_EQ(renderer.renderOpts.blend.srcRGB, static_cast<unsigned>(GL_ONE));
    EXPECT_EQ(renderer.renderOpts.blend.dstRGB, static_cast<unsigned>(GL_ONE_MINUS_SRC_ALPHA));
    EXPECT_EQ(log.count("Call createTextureRenderer() first."), 0);

    pmDraw::deleteTextureRenderer(renderer);
    EXPECT_EQ(renderer.program.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.id, 0u);
    EXPECT_EQ(renderer.vertexArray.id, 0u);
    // Deleting again is harmless.
    pmDraw::deleteTextureRenderer(renderer);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(TextureRendererTest, RunBeforeCreateLogsAndDrawsNothing) {
    pmDraw::TextureRenderer renderer;
    std::vector<uint8_t> pixels = makeTestPixels(16, 16, 4);
    Texture tex = makeTexture(pixels, 16, 16, 4);
    pmDraw::setSingleTexture(renderer, tex, 0.0f);
    gl->clearTarget(0.2f, 0.4f, 0.6f, 0.8f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    pmDraw::runTextureRenderer(renderer);
    EXPECT_EQ(log.countEndingWith("> Call createTextureRenderer() first."), 1);
    EXPECT_EQ(log.lines().at(0).priority, 6);
    EXPECT_EQ(log.lines().at(0).text.rfind("pmDrawTexture: runTextureRenderer(", 0), 0u);
    EXPECT_EQ(gl->readTarget(), before);
    pmGL::deleteTexture(tex);
}

TEST_F(TextureRendererTest, NullSourceLogsAssertionAndThrows) {
    pmDraw::TextureRenderer renderer;
    LogCapture log;
    EXPECT_THROW(pmDraw::createTextureRenderer(renderer, nullptr), std::logic_error);
    EXPECT_EQ(log.countEndingWith("> fragShaderSrc"), 1);
    EXPECT_EQ(log.countEndingWith("> \n"), 1);
    EXPECT_EQ(renderer.program.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.id, 0u);
}

TEST_F(TextureRendererTest, BrokenShaderFailsAndBuildsNothing) {
    pmDraw::TextureRenderer renderer;
    LogCapture log;
    EXPECT_FALSE(pmDraw::createTextureRenderer(renderer, "#version 300 es\nnot a shader\n"));
    EXPECT_EQ(renderer.program.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.id, 0u);
    EXPECT_EQ(renderer.vertexArray.id, 0u);
    EXPECT_TRUE(renderer.uniforms.mat4s.empty());
    LogCapture runLog;
    pmDraw::runTextureRenderer(renderer);
    EXPECT_EQ(runLog.countEndingWith("> Call createTextureRenderer() first."), 1);
}

TEST_F(TextureRendererTest, SetMultipleTextureWithEmptyVectorSetsOnlyTheFlip) {
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createTripleTextureMergeRenderer(renderer));
    const pmGL::UniformData before = renderer.uniforms;
    std::vector<Texture> none;
    pmDraw::setMultipleTexture(renderer, none, 1.0f);
    EXPECT_TRUE(renderer.uniforms.textures.empty());
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 1.0f);
    EXPECT_EQ(renderer.uniforms.floats.size(), before.floats.size());
    EXPECT_EQ(renderer.uniforms.vec2s, before.vec2s);
    EXPECT_EQ(renderer.uniforms.mat4s, before.mat4s);
    EXPECT_TRUE(renderer.uniforms.ints.empty());
    EXPECT_TRUE(renderer.uniforms.vec4s.empty());
    pmDraw::deleteTextureRenderer(renderer);
}

TEST_F(TextureRendererTest, SetMultipleTextureNamesTexturesFromOne) {
    pmDraw::TextureRenderer renderer;
    std::vector<Texture> textures(4);
    for (std::size_t i = 0; i < textures.size(); ++i) {
        textures[i].id = static_cast<unsigned>(100 + i);
        textures[i].width = static_cast<int>(i + 1);
    }
    pmDraw::setMultipleTexture(renderer, textures, 0.5f);
    ASSERT_EQ(renderer.uniforms.textures.size(), 4u);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture1").id, 100u);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture2").id, 101u);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture3").id, 102u);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture4").id, 103u);
    EXPECT_EQ(renderer.uniforms.textures.count("uTexture0"), 0u);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 0.5f);
}

TEST_F(TextureRendererTest, SettersWriteTheirUniforms) {
    pmDraw::TextureRenderer renderer;
    Texture tex;
    tex.id = 7;
    pmDraw::setSingleTexture(renderer, tex, 1.0f);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture").id, 7u);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 1.0f);

    pmGL::FrameBuffer fb;
    fb.colorTex.resize(2);
    fb.colorTex[0].id = 11;
    fb.colorTex[1].id = 12;
    pmDraw::setSingleTexture(renderer, fb, 0.25f);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture").id, 11u);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 0.25f);

    pmDraw::setAlphaMultiplier(renderer, 0.3f);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uAlphaMultiplier"), 0.3f);
    pmDraw::setFlipTexCoordY(renderer, 0.75f);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 0.75f);

    const glm::mat4 mvp = glm::translate(glm::mat4(1.0f), glm::vec3(1.0f, 2.0f, 3.0f));
    pmDraw::setTransform(renderer, glm::vec2(5.0f, 6.0f), mvp);
    EXPECT_EQ(renderer.uniforms.vec2s.at("uSize"), glm::vec2(5.0f, 6.0f));
    EXPECT_EQ(renderer.uniforms.mat4s.at("uMVP"), mvp);
    pmDraw::resetTransform(renderer);
    EXPECT_EQ(renderer.uniforms.vec2s.at("uSize"), glm::vec2(1.0f, 1.0f));
    EXPECT_EQ(renderer.uniforms.mat4s.at("uMVP"), unitToClip());
}

// Three one-channel planes become r, g and b of one picture, alpha 1.
TEST_F(TextureRendererTest, TripleMergeDrawsThePlanesAsRgb) {
    const int w = 16, h = 16;
    std::vector<uint8_t> planes[3] = {makeTestPixels(w, h, 1, 11), makeTestPixels(w, h, 1, 12),
                                      makeTestPixels(w, h, 1, 13)};
    std::vector<Texture> textures;
    for (auto& plane : planes) textures.push_back(makeTexture(plane, w, h, 1));
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createTripleTextureMergeRenderer(renderer));
    pmDraw::setMultipleTexture(renderer, textures, 0.0f);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::runTextureRenderer(renderer);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Rgba expected{texel(planes[0], w, 1, x, y).r, texel(planes[1], w, 1, x, y).r,
                                texel(planes[2], w, 1, x, y).r, 1.0f};
            expectNear(pixelAt(target, w, x, y), expected, x, y, 0.0f);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    for (auto& tex : textures) pmGL::deleteTexture(tex);
}

// The flip of 1 mirrors vertically, and the alpha factor premultiplies and
// blends over what the target holds.
TEST_F(TextureRendererTest, TripleMergeFlippedWithAlphaBlendsPremultiplied) {
    const int w = 16, h = 16;
    std::vector<uint8_t> planes[3] = {makeTestPixels(w, h, 1, 21), makeTestPixels(w, h, 1, 22),
                                      makeTestPixels(w, h, 1, 23)};
    std::vector<Texture> textures;
    for (auto& plane : planes) textures.push_back(makeTexture(plane, w, h, 1));
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createTripleTextureMergeRenderer(renderer));
    pmDraw::setMultipleTexture(renderer, textures, 1.0f);
    pmDraw::setAlphaMultiplier(renderer, 0.5f);
    gl->clearTarget(0.2f, 0.4f, 0.6f, 1.0f);
    const std::vector<uint8_t> background = gl->readTarget();
    pmDraw::runTextureRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const int ty = h - 1 - y;
            const Rgba src{texel(planes[0], w, 1, x, ty).r * 0.5f,
                           texel(planes[1], w, 1, x, ty).r * 0.5f,
                           texel(planes[2], w, 1, x, ty).r * 0.5f, 0.5f};
            expectNear(pixelAt(target, w, x, y), blendOver(src, pixelAt(background, w, x, y)), x,
                       y);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    for (auto& tex : textures) pmGL::deleteTexture(tex);
}

TEST_F(TextureRendererTest, CopyPremultipliesAlphaTimesFactor) {
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 5);
    Texture tex = makeTexture(pixels, w, h, 4);
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    pmDraw::setSingleTexture(renderer, tex, 0.0f);
    pmDraw::setAlphaMultiplier(renderer, 0.6f);
    gl->clearTarget(0.1f, 0.5f, 0.9f, 1.0f);
    const std::vector<uint8_t> background = gl->readTarget();
    pmDraw::runTextureRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            Rgba src = texel(pixels, w, 4, x, y);
            src.a *= 0.6f;
            src.r *= src.a;
            src.g *= src.a;
            src.b *= src.a;
            expectNear(pixelAt(target, w, x, y), blendOver(src, pixelAt(background, w, x, y)), x,
                       y);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    pmGL::deleteTexture(tex);
}

TEST_F(TextureRendererTest, CopyFromFrameBufferUsesItsFirstColourTexture) {
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 6);
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    pmGL::FrameBuffer fb;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmGL::createFrameBuffer(fb, pmUtil::ImageData<unsigned char>(w, h, 4, pixels.data()), opts, 1,
                            false, false, 0);
    ASSERT_FALSE(fb.colorTex.empty());
    glBindFramebuffer(GL_FRAMEBUFFER, gl->fbo);
    glViewport(0, 0, w, h);
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    pmDraw::setSingleTexture(renderer, fb, 0.0f);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture").id, fb.colorTex[0].id);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::runTextureRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            expectNear(pixelAt(target, w, x, y), texel(pixels, w, 4, x, y), x, y, 0.0f);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    pmGL::deleteFrameBuffer(fb);
}

// A quad of 8 x 4 pixels through a window projection, moved by (3, 5): the
// texture of the same size lands texel for pixel, the rest stays.
TEST_F(TextureRendererTest, CopyWithSizeAndMatrixPlacesTheQuadInPixels) {
    const int w = 16, h = 16, tw = 8, th = 4;
    std::vector<uint8_t> pixels = makeTestPixels(tw, th, 4, 7);
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, tw, th, 4);
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    pmDraw::setSingleTexture(renderer, tex, 0.0f);
    const glm::mat4 window = glm::ortho(0.0f, 16.0f, 0.0f, 16.0f, -1.0f, 1.0f);
    pmDraw::setTransform(renderer, glm::vec2(tw, th),
                         window * glm::translate(glm::mat4(1.0f), glm::vec3(3.0f, 5.0f, 0.0f)));
    gl->clearTarget(0.0f, 0.0f, 1.0f, 1.0f);
    pmDraw::runTextureRenderer(renderer);
    std::vector<uint8_t> target = gl->readTarget();
    const Rgba blue{0.0f, 0.0f, 1.0f, 1.0f};
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool inside = x >= 3 && x < 3 + tw && y >= 5 && y < 5 + th;
            const Rgba expected = inside ? texel(pixels, tw, 4, x - 3, y - 5) : blue;
            expectNear(pixelAt(target, w, x, y), expected, x, y, 0.0f);
        }
    }

    // Back to the whole target: the small texture is stretched over it.
    pmDraw::resetTransform(renderer);
    pmDraw::runTextureRenderer(renderer);
    target = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            expectNear(pixelAt(target, w, x, y), texel(pixels, tw, 4, x / 2, y / 4), x, y, 0.0f);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    pmGL::deleteTexture(tex);
}

// The middle quarter shows the same part of the texture, not the whole one.
TEST_F(TextureRendererTest, SetAreaDrawsThePartOfTheTextureItCovers) {
    const int w = 16, h = 16;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 8);
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, w, h, 4);
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    const unsigned buffer = renderer.vertexBuffer.id;
    pmDraw::setSingleTexture(renderer, tex, 0.0f);
    const glm::vec2 a(0.25f), b(0.75f);
    pmDraw::setArea(renderer, a, b, a, b);
    EXPECT_EQ(renderer.vertexBuffer.id, buffer);
    gl->clearTarget(1.0f, 0.0f, 0.0f, 1.0f);
    pmDraw::runTextureRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    const Rgba red{1.0f, 0.0f, 0.0f, 1.0f};
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool inside = x >= 4 && x < 12 && y >= 4 && y < 12;
            expectNear(pixelAt(target, w, x, y), inside ? texel(pixels, w, 4, x, y) : red, x, y,
                       0.0f);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    pmGL::deleteTexture(tex);
}

// Positions are clamped to the target; the texture range keeps its unclamped
// corners, so the picture shrinks to the middle half and its edge texels repeat.
TEST_F(TextureRendererTest, SetAreaClampsPositionsButNotTextureRange) {
    const int w = 16, h = 16, tw = 8, th = 8;
    std::vector<uint8_t> pixels = makeTestPixels(tw, th, 4, 9);
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    Texture tex = makeTexture(pixels, tw, th, 4);
    pmDraw::TextureRenderer renderer;
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    pmDraw::setSingleTexture(renderer, tex, 0.0f);
    const glm::vec2 a(-0.5f, 0.0f), b(1.5f, 1.0f);
    pmDraw::setArea(renderer, a, b, a, b);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::runTextureRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            // u = -0.5 + 2 (x + 0.5) / 16, so u * 8 = x - 3.5.
            const int tx = std::min(std::max(x - 4, 0), tw - 1);
            expectNear(pixelAt(target, w, x, y), texel(pixels, tw, 4, tx, y / 2), x, y, 0.0f);
        }
    }
    pmDraw::deleteTextureRenderer(renderer);
    pmGL::deleteTexture(tex);
}

TEST_F(TextureRendererTest, SetAreaBeforeCreateMakesTheBuffer) {
    pmDraw::TextureRenderer renderer;
    pmDraw::setArea(renderer, glm::vec2(0.0f), glm::vec2(1.0f), glm::vec2(0.0f), glm::vec2(1.0f));
    EXPECT_NE(renderer.vertexBuffer.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.count, 4u);
    EXPECT_EQ(renderer.vertexArray.id, 0u);
    ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
    EXPECT_NE(renderer.vertexArray.id, 0u);
    pmDraw::deleteTextureRenderer(renderer);
}

class DFTextureTest : public GLTest {
protected:
    static constexpr int w = 16;
    static constexpr int h = 16;

    void SetUp() override {
        GLTest::SetUp();
        front = makeTestPixels(w, h, 4, 31);
        // Distances rising across the picture, with a little noise per row.
        field.resize(static_cast<size_t>(w) * h);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) field[static_cast<size_t>(y) * w + x] = (x * 17 + y) & 255;
        }
        frontTex = makeTexture(front, w, h, 4);
        fieldTex = makeTexture(field, w, h, 1);
    }
    void TearDown() override {
        pmGL::deleteTexture(frontTex);
        pmGL::deleteTexture(fieldTex);
        GLTest::TearDown();
    }

    // The distance-field shader on the CPU.
    Rgba expected(int x, int y, float soft, float outline, const glm::vec4& outlineColor) const {
        Rgba c = texel(front, w, 4, x, y);
        const float m = texel(field, w, 1, x, y).r;
        if (outline > 0.0001f && m <= outline) {
            const float f = smoothstep(outline, outline - soft, m);
            c.r += (outlineColor.r - c.r) * f;
            c.g += (outlineColor.g - c.g) * f;
            c.b += (outlineColor.b - c.b) * f;
            c.a += (outlineColor.a - c.a) * f;
        }
        c.a *= smoothstep(0.0f, soft, m);
        c.r *= c.a;
        c.g *= c.a;
        c.b *= c.a;
        return c;
    }

    void expectDrawn(float soft, float outline, const glm::vec4& outlineColor) {
        const std::vector<uint8_t> target = gl->readTarget();
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                expectNear(pixelAt(target, w, x, y), expected(x, y, soft, outline, outlineColor), x,
                           y);
            }
        }
    }

    std::vector<uint8_t> front;
    std::vector<uint8_t> field;
    Texture frontTex;
    Texture fieldTex;
};

TEST_F(DFTextureTest, CreateSetsSoftEdgeAndNoOutline) {
    pmDraw::DFTexture renderer;
    ASSERT_TRUE(pmDraw::createDFTexture(renderer));
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uSoftEdgeWidth"), 0.0625f);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uOutlineWidth"), 0.0f);
    EXPECT_EQ(renderer.uniforms.vec4s.at("uOutlineColor"), glm::vec4(0.0f));
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uAlphaMultiplier"), 1.0f);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 0.0f);
    pmDraw::setFrontTexture(renderer, frontTex);
    pmDraw::setDistanceFieldTexture(renderer, fieldTex);
    EXPECT_EQ(renderer.uniforms.textures.at("uFrontTexture").id, frontTex.id);
    EXPECT_EQ(renderer.uniforms.textures.at("uVectorTexture").id, fieldTex.id);
    pmDraw::setSoftEdgeWidth(renderer, 0.2f);
    pmDraw::setOutlineWidth(renderer, 0.4f);
    pmDraw::setOutlineColor(renderer, glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uSoftEdgeWidth"), 0.2f);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uOutlineWidth"), 0.4f);
    EXPECT_EQ(renderer.uniforms.vec4s.at("uOutlineColor"), glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
    pmDraw::deleteDFTexture(renderer);
    EXPECT_EQ(renderer.program.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.id, 0u);
    EXPECT_EQ(renderer.vertexArray.id, 0u);
}

TEST_F(DFTextureTest, DrawBeforeCreateLogsTheRendererLine) {
    pmDraw::DFTexture renderer;
    LogCapture log;
    pmDraw::drawDFTexture(renderer);
    EXPECT_EQ(log.countEndingWith("> Call createTextureRenderer() first."), 1);
}

TEST_F(DFTextureTest, CoverageFollowsTheDistanceOverTheSoftEdge) {
    pmDraw::DFTexture renderer;
    ASSERT_TRUE(pmDraw::createDFTexture(renderer));
    pmDraw::setFrontTexture(renderer, frontTex);
    pmDraw::setDistanceFieldTexture(renderer, fieldTex);
    pmDraw::setSoftEdgeWidth(renderer, 0.5f);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::drawDFTexture(renderer);
    expectDrawn(0.5f, 0.0f, glm::vec4(0.0f));
    pmDraw::deleteDFTexture(renderer);
}

TEST_F(DFTextureTest, DefaultSoftEdgeIsNarrow) {
    pmDraw::DFTexture renderer;
    ASSERT_TRUE(pmDraw::createDFTexture(renderer));
    pmDraw::setFrontTexture(renderer, frontTex);
    pmDraw::setDistanceFieldTexture(renderer, fieldTex);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::drawDFTexture(renderer);
    expectDrawn(0.0625f, 0.0f, glm::vec4(0.0f));
    pmDraw::deleteDFTexture(renderer);
}

TEST_F(DFTextureTest, OutlineMixesTowardsItsColourInsideItsWidth) {
    pmDraw::DFTexture renderer;
    ASSERT_TRUE(pmDraw::createDFTexture(renderer));
    pmDraw::setFrontTexture(renderer, frontTex);
    pmDraw::setDistanceFieldTexture(renderer, fieldTex);
    const glm::vec4 outlineColor(1.0f, 0.0f, 0.5f, 1.0f);
    pmDraw::setSoftEdgeWidth(renderer, 0.25f);
    pmDraw::setOutlineWidth(renderer, 0.6f);
    pmDraw::setOutlineColor(renderer, outlineColor);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::drawDFTexture(renderer);
    expectDrawn(0.25f, 0.6f, outlineColor);
    // The outline changes something: some pixel is not the plain coverage.
    const std::vector<uint8_t> outlined = gl->readTarget();
    pmDraw::setOutlineWidth(renderer, 0.0f);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::drawDFTexture(renderer);
    EXPECT_NE(gl->readTarget(), outlined);
    pmDraw::deleteDFTexture(renderer);
}

// An outline width of 0.0001 or less switches the outline off. Only distances
// at or below such a width could show it, so the field is a float texture
// holding 0.00005 everywhere, with a soft edge that gives it coverage 0.5.
TEST_F(DFTextureTest, OutlineWidthAtThresholdIsOff) {
    std::vector<float> tiny(static_cast<size_t>(w) * h, 0.00005f);
    Texture tinyTex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmGL::createTexture(tinyTex, pmUtil::ImageData<float>(w, h, 1, tiny.data()), opts);
    pmDraw::DFTexture renderer;
    ASSERT_TRUE(pmDraw::createDFTexture(renderer));
    pmDraw::setFrontTexture(renderer, frontTex);
    pmDraw::setDistanceFieldTexture(renderer, tinyTex);
    pmDraw::setSoftEdgeWidth(renderer, 0.0001f);
    const glm::vec4 outlineColor(1.0f, 1.0f, 0.0f, 1.0f);
    pmDraw::setOutlineColor(renderer, outlineColor);
    const float coverage = smoothstep(0.0f, 0.0001f, 0.00005f);

    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::drawDFTexture(renderer);
    const std::vector<uint8_t> plain = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            Rgba c = texel(front, w, 4, x, y);
            c.a *= coverage;
            expectNear(pixelAt(plain, w, x, y), {c.r * c.a, c.g * c.a, c.b * c.a, c.a}, x, y);
        }
    }
    for (float width : {0.0001f, 0.00005f}) {
        pmDraw::setOutlineWidth(renderer, width);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::drawDFTexture(renderer);
        EXPECT_EQ(gl->readTarget(), plain) << "outline width " << width;
    }
    // Just above the threshold the outline colour takes over.
    pmDraw::setOutlineWidth(renderer, 0.0002f);
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::drawDFTexture(renderer);
    const std::vector<uint8_t> outlined = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            expectNear(pixelAt(outlined, w, x, y), {coverage, coverage, 0.0f, coverage}, x, y);
        }
    }
    pmDraw::deleteDFTexture(renderer);
    pmGL::deleteTexture(tinyTex);
}

}  // namespace
