// NinePatchRenderer: the 4 x 4 grid, its texture and pixel grid lines, and the
// drawn layout compared with the piecewise-linear mapping computed on the CPU.
#include <glm/gtc/matrix_transform.hpp>

#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmDrawTexture.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

Texture makeNearestTexture(std::vector<uint8_t>& pixels, int width, int height) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmGL::createTexture(tex, pmUtil::ImageData<unsigned char>(width, height, 4, pixels.data()),
                        opts);
    return tex;
}

// Opaque test pixels, so that the premultiplied copy writes them unchanged.
std::vector<uint8_t> opaquePixels(int width, int height, unsigned seed) {
    std::vector<uint8_t> pixels = makeTestPixels(width, height, 4, seed);
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    return pixels;
}

// The texture coordinate at `q` along one axis of the grid: linear within the
// cell of the position lines that holds q.
float gridMap(float q, const float (&positions)[4], const float (&texCoords)[4]) {
    int cell = 0;
    while (cell < 2 && q >= positions[cell + 1]) ++cell;
    const float t = (q - positions[cell]) / (positions[cell + 1] - positions[cell]);
    return texCoords[cell] + t * (texCoords[cell + 1] - texCoords[cell]);
}

void expectPixel(const std::vector<uint8_t>& target, int width, int x, int y,
                 const std::vector<uint8_t>& pixels, int texWidth, int tx, int ty) {
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(target[(static_cast<size_t>(y) * width + x) * 4 + c],
                  pixels[(static_cast<size_t>(ty) * texWidth + tx) * 4 + c])
            << "at " << x << "," << y << " channel " << c << " from texel " << tx << "," << ty;
    }
}

class NinePatchRendererTest : public GLTest {};

TEST_F(NinePatchRendererTest, CreateBuildsTheIndexedGridInThirds) {
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer));
    EXPECT_NE(renderer.program.id, 0u);
    EXPECT_NE(renderer.vertexArray.id, 0u);
    ASSERT_EQ(renderer.mesh.vertices.size(), 16u);
    // Three rows of eight, and two linking indices between rows.
    EXPECT_EQ(renderer.mesh.indices.size(), 28u);
    EXPECT_NE(renderer.vertexBuffer.id, 0u);
    EXPECT_NE(renderer.vertexBuffer.indexId, 0u);
    EXPECT_EQ(renderer.vertexBuffer.count, 28u);
    EXPECT_EQ(renderer.vertexBuffer.indexType, static_cast<unsigned>(GL_UNSIGNED_SHORT));
    EXPECT_EQ(renderer.vertexBuffer.mode, static_cast<unsigned>(GL_TRIANGLE_STRIP));
    EXPECT_TRUE(renderer.vertexArray.indexed);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            const pmMesh::TexturingVertex& v = renderer.mesh.vertices[y * 4 + x];
            EXPECT_NEAR(v.position.x, x / 3.0f, 1e-6f);
            EXPECT_NEAR(v.position.y, y / 3.0f, 1e-6f);
            EXPECT_NEAR(v.texCoord.x, x / 3.0f, 1e-6f);
            EXPECT_NEAR(v.texCoord.y, y / 3.0f, 1e-6f);
        }
    }
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uAlphaMultiplier"), 1.0f);
    EXPECT_EQ(renderer.uniforms.vec2s.at("uSize"), glm::vec2(1.0f));
    EXPECT_EQ(renderer.uniforms.mat4s.count("uMVP"), 1u);
    // Unlike the plain renderer, the flip waits for the first texture.
    EXPECT_EQ(renderer.uniforms.floats.count("uFlipTexCoordY"), 0u);
    pmDraw::deleteNinePatchRenderer(renderer);
    EXPECT_EQ(renderer.program.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.id, 0u);
    EXPECT_EQ(renderer.vertexBuffer.indexId, 0u);
    EXPECT_EQ(renderer.vertexArray.id, 0u);
}

TEST_F(NinePatchRendererTest, NullSourceLogsAssertionAndCarriesOnToFail) {
    pmDraw::NinePatchRenderer renderer;
    LogCapture log;
    EXPECT_FALSE(pmDraw::createNinePatchRenderer(renderer, nullptr));
    EXPECT_EQ(log.countEndingWith("> fragShaderSrc"), 1);
    EXPECT_EQ(renderer.program.id, 0u);
    EXPECT_TRUE(renderer.mesh.vertices.empty());
}

TEST_F(NinePatchRendererTest, RunBeforeCreateLogsTheRendererLine) {
    pmDraw::NinePatchRenderer renderer;
    gl->clearTarget(0.5f, 0.5f, 0.5f, 1.0f);
    const std::vector<uint8_t> before = gl->readTarget();
    LogCapture log;
    pmDraw::runNinePatchRenderer(renderer);
    EXPECT_EQ(log.countEndingWith("> Call createTextureRenderer() first."), 1);
    EXPECT_EQ(gl->readTarget(), before);
}

TEST_F(NinePatchRendererTest, SetSingleTextureWritesTextureGridAndBorders) {
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer));
    Texture tex;
    tex.id = 9;
    tex.width = 20;
    tex.height = 10;
    pmDraw::setSingleTexture(renderer, tex, glm::vec2(4.0f, 2.0f), glm::vec2(15.0f, 7.0f), 1.0f);
    EXPECT_EQ(renderer.uniforms.textures.at("uTexture").id, 9u);
    EXPECT_FLOAT_EQ(renderer.uniforms.floats.at("uFlipTexCoordY"), 1.0f);
    EXPECT_EQ(renderer.startBorder, glm::vec2(4.0f, 2.0f));
    EXPECT_EQ(renderer.endBorder, glm::vec2(5.0f, 3.0f));
    const float us[4] = {0.0f, 0.2f, 0.75f, 1.0f};
    const float vs[4] = {0.0f, 0.2f, 0.7f, 1.0f};
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_FLOAT_EQ(renderer.mesh.vertices[y * 4 + x].texCoord.x, us[x]);
            EXPECT_FLOAT_EQ(renderer.mesh.vertices[y * 4 + x].texCoord.y, vs[y]);
        }
    }
    pmDraw::setTransform(renderer, glm::vec2(30.0f, 40.0f), glm::mat4(1.0f));
    const float xs[4] = {0.0f, 4.0f, 25.0f, 30.0f};
    const float ys[4] = {0.0f, 2.0f, 37.0f, 40.0f};
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(renderer.mesh.vertices[y * 4 + x].position, glm::vec3(xs[x], ys[y], 0.0f));
        }
    }
    EXPECT_EQ(renderer.uniforms.mat4s.at("uMVP"), glm::mat4(1.0f));
    pmDraw::deleteNinePatchRenderer(renderer);
}

TEST_F(NinePatchRendererTest, GridOfAnotherSizeIsReportedAndLeftAlone) {
    pmDraw::NinePatchRenderer renderer;
    Texture tex;
    tex.width = 8;
    tex.height = 8;
    LogCapture log;
    pmDraw::setSingleTexture(renderer, tex, glm::vec2(2.0f), glm::vec2(6.0f), 0.0f);
    EXPECT_EQ(log.countEndingWith("> context.mesh.vertices.size() == 16"), 1);
    EXPECT_TRUE(renderer.mesh.vertices.empty());
    EXPECT_EQ(renderer.startBorder, glm::vec2(2.0f));
    EXPECT_EQ(renderer.endBorder, glm::vec2(2.0f));
    log.clear();
    pmDraw::setTransform(renderer, glm::vec2(16.0f), glm::mat4(1.0f));
    EXPECT_EQ(log.countEndingWith("> context.mesh.vertices.size() == 16"), 1);
    EXPECT_TRUE(renderer.mesh.vertices.empty());
    EXPECT_EQ(renderer.uniforms.mat4s.at("uMVP"), glm::mat4(1.0f));
}

TEST_F(NinePatchRendererTest, SetAreaIsNotSupported) {
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer));
    const auto vertices = renderer.mesh.vertices;
    const unsigned buffer = renderer.vertexBuffer.id;
    LogCapture log;
    pmDraw::setArea(renderer, glm::vec2(0.25f), glm::vec2(0.75f), glm::vec2(0.25f),
                    glm::vec2(0.75f));
    EXPECT_EQ(log.countEndingWith("> Not supported."), 1);
    EXPECT_EQ(log.lines().at(0).priority, 6);
    EXPECT_EQ(log.lines().at(0).text.rfind("pmDrawTexture: setArea(", 0), 0u);
    EXPECT_EQ(renderer.vertexBuffer.id, buffer);
    EXPECT_EQ(renderer.vertexBuffer.count, 28u);
    ASSERT_EQ(renderer.mesh.vertices.size(), vertices.size());
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        EXPECT_EQ(renderer.mesh.vertices[i].position, vertices[i].position);
    }
    pmDraw::deleteNinePatchRenderer(renderer);
}

// An 8 x 8 texture with borders of 2 stretched over 16 x 16 pixels: the
// borders keep two pixels each, the middle four texels spread over twelve.
TEST_F(NinePatchRendererTest, BordersKeepTheirPixelSizeAndTheMiddleStretches) {
    const int w = 16, h = 16, tw = 8, th = 8;
    std::vector<uint8_t> pixels = opaquePixels(tw, th, 41);
    Texture tex = makeNearestTexture(pixels, tw, th);
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer));
    pmDraw::setSingleTexture(renderer, tex, glm::vec2(2.0f), glm::vec2(6.0f), 0.0f);
    pmDraw::setTransform(renderer, glm::vec2(w, h),
                         glm::ortho(0.0f, float(w), 0.0f, float(h), -1.0f, 1.0f));
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::runNinePatchRenderer(renderer);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const std::vector<uint8_t> target = gl->readTarget();
    const float positions[4] = {0.0f, 2.0f, 14.0f, 16.0f};
    const float texCoords[4] = {0.0f, 0.25f, 0.75f, 1.0f};
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const int tx = static_cast<int>(gridMap(x + 0.5f, positions, texCoords) * tw);
            const int ty = static_cast<int>(gridMap(y + 0.5f, positions, texCoords) * th);
            expectPixel(target, w, x, y, pixels, tw, tx, ty);
        }
    }
    // The corners are the texture's corners, texel for pixel.
    expectPixel(target, w, 0, 0, pixels, tw, 0, 0);
    expectPixel(target, w, 1, 1, pixels, tw, 1, 1);
    expectPixel(target, w, 15, 15, pixels, tw, 7, 7);
    expectPixel(target, w, 14, 0, pixels, tw, 6, 0);
    pmDraw::deleteNinePatchRenderer(renderer);
    pmGL::deleteTexture(tex);
}

// Unequal borders on a 24 x 12 patch placed at (4, 2) by the pixel form of
// setTransform, flipped vertically.
TEST_F(NinePatchRendererTest, PlacedAndFlippedPatchMatchesTheGrid) {
    const int w = 32, h = 16, tw = 8, th = 8;
    gl->resizeTarget(w, h);
    std::vector<uint8_t> pixels = opaquePixels(tw, th, 42);
    Texture tex = makeNearestTexture(pixels, tw, th);
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer));
    pmDraw::setSingleTexture(renderer, tex, glm::vec2(1.0f, 2.0f), glm::vec2(5.0f, 7.0f), 1.0f);
    pmDraw::setTransform(renderer, glm::vec2(4.0f, 2.0f), glm::vec2(24.0f, 12.0f), 0.0f,
                         glm::vec2(0.0f));
    gl->clearTarget(0.0f, 0.0f, 1.0f, 1.0f);
    pmDraw::runNinePatchRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    // Borders in pixels: left 1, right 3, bottom 2, top 1.
    const float xs[4] = {0.0f, 1.0f, 21.0f, 24.0f};
    const float ys[4] = {0.0f, 2.0f, 11.0f, 12.0f};
    const float us[4] = {0.0f, 1.0f / 8.0f, 5.0f / 8.0f, 1.0f};
    const float vs[4] = {0.0f, 2.0f / 8.0f, 7.0f / 8.0f, 1.0f};
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float px = x + 0.5f - 4.0f, py = y + 0.5f - 2.0f;
            if (px < 0.0f || px >= 24.0f || py < 0.0f || py >= 12.0f) {
                const uint8_t* p = &target[(static_cast<size_t>(y) * w + x) * 4];
                EXPECT_EQ(p[0], 0);
                EXPECT_EQ(p[2], 255) << "at " << x << "," << y;
                continue;
            }
            const int tx = static_cast<int>(gridMap(px, xs, us) * tw);
            // The flip mirrors the texture coordinate: v becomes 1 - v.
            const int ty = static_cast<int>((1.0f - gridMap(py, ys, vs)) * th);
            expectPixel(target, w, x, y, pixels, tw, tx, ty);
        }
    }
    pmDraw::deleteNinePatchRenderer(renderer);
    pmGL::deleteTexture(tex);
}

// A size below the sum of the borders is not clamped: the middle line of the
// grid comes before the start line and the patch folds over.
TEST_F(NinePatchRendererTest, SizeBelowTheBordersFoldsOver) {
    std::vector<uint8_t> pixels = opaquePixels(8, 8, 43);
    Texture tex = makeNearestTexture(pixels, 8, 8);
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer));
    pmDraw::setSingleTexture(renderer, tex, glm::vec2(3.0f), glm::vec2(5.0f), 0.0f);
    LogCapture log;
    pmDraw::setTransform(renderer, glm::vec2(4.0f), glm::ortho(0.0f, 16.0f, 0.0f, 16.0f));
    EXPECT_EQ(log.lines().size(), 0u) << log.dump();
    const float lines[4] = {0.0f, 3.0f, 1.0f, 4.0f};
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(renderer.mesh.vertices[y * 4 + x].position,
                      glm::vec3(lines[x], lines[y], 0.0f));
        }
    }
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::runNinePatchRenderer(renderer);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    // Nothing reaches beyond the size of 4 pixels.
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            if (x < 4 && y < 4) continue;
            EXPECT_EQ(target[(static_cast<size_t>(y) * 16 + x) * 4 + 3], 0)
                << "at " << x << "," << y;
        }
    }
    pmDraw::deleteNinePatchRenderer(renderer);
    pmGL::deleteTexture(tex);
}

TEST_F(NinePatchRendererTest, OwnFragmentShaderIsUsed) {
    pmDraw::NinePatchRenderer renderer;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(renderer, R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
out vec4 fragColor;
void main() { fragColor = vec4(0.0, 1.0, 0.0, 1.0); }
)"));
    std::vector<uint8_t> pixels = opaquePixels(4, 4, 44);
    Texture tex = makeNearestTexture(pixels, 4, 4);
    pmDraw::setSingleTexture(renderer, tex, glm::vec2(1.0f), glm::vec2(3.0f), 0.0f);
    pmDraw::setTransform(renderer, glm::vec2(8.0f), glm::ortho(0.0f, 16.0f, 0.0f, 16.0f));
    gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
    pmDraw::runNinePatchRenderer(renderer);
    const std::vector<uint8_t> target = gl->readTarget();
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            const uint8_t* p = &target[(static_cast<size_t>(y) * 16 + x) * 4];
            const bool inside = x < 8 && y < 8;
            EXPECT_EQ(p[1], inside ? 255 : 0) << "at " << x << "," << y;
        }
    }
    pmDraw::deleteNinePatchRenderer(renderer);
    pmGL::deleteTexture(tex);
}

}  // namespace
