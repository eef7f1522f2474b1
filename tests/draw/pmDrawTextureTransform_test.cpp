// The pixel form of setTransform: window projection of the bound viewport,
// corner position and rotation about a pivot, for the copy renderer, checked
// against the inverse mapping computed on the CPU.
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "pmDrawTexture.h"
#include "pmGL.h"

namespace {

using pmGL::Texture;

constexpr float kHalfPi = 1.5707964f;

Texture makeNearestTexture(std::vector<uint8_t>& pixels, int width, int height) {
    Texture tex;
    pmGL::TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    pmGL::createTexture(tex, pmUtil::ImageData<unsigned char>(width, height, 4, pixels.data()),
                        opts);
    return tex;
}

std::vector<uint8_t> opaquePixels(int width, int height, unsigned seed) {
    std::vector<uint8_t> pixels = makeTestPixels(width, height, 4, seed);
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    return pixels;
}

class TextureTransformTest : public GLTest {
protected:
    // Draws the texture, of the quad's own size, placed by the pixel form and
    // compares every pixel with the texel found by undoing the placement:
    // p = R^-1 (q - pivot) + pivot - position.
    void drawAndCompare(const glm::vec2& position, float rotation, const glm::vec2& pivot) {
        const int w = gl->width, h = gl->height, tw = 8, th = 4;
        std::vector<uint8_t> pixels = opaquePixels(tw, th, 51);
        Texture tex = makeNearestTexture(pixels, tw, th);
        pmDraw::TextureRenderer renderer;
        ASSERT_TRUE(pmDraw::createSingleTextureCopyRenderer(renderer));
        pmDraw::setSingleTexture(renderer, tex, 0.0f);
        pmDraw::setTransform(renderer, position, glm::vec2(tw, th), rotation, pivot);
        gl->clearTarget(0.0f, 0.0f, 0.0f, 0.0f);
        pmDraw::runTextureRenderer(renderer);
        const std::vector<uint8_t> target = gl->readTarget();
        const float c = std::cos(rotation), s = std::sin(rotation);
        int covered = 0;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const glm::vec2 d = glm::vec2(x + 0.5f, y + 0.5f) - pivot;
                const glm::vec2 p =
                    glm::vec2(c * d.x + s * d.y, -s * d.x + c * d.y) + pivot - position;
                const uint8_t* out = &target[(static_cast<size_t>(y) * w + x) * 4];
                if (p.x < 0.0f || p.x >= tw || p.y < 0.0f || p.y >= th) {
                    EXPECT_EQ(out[3], 0) << "at " << x << "," << y;
                    continue;
                }
                ++covered;
                const int tx = static_cast<int>(p.x), ty = static_cast<int>(p.y);
                const uint8_t* in = &pixels[(static_cast<size_t>(ty) * tw + tx) * 4];
                for (int k = 0; k < 4; ++k) {
                    EXPECT_EQ(out[k], in[k]) << "at " << x << "," << y << " channel " << k;
                }
            }
        }
        EXPECT_EQ(covered, tw * th);
        pmDraw::deleteTextureRenderer(renderer);
        pmGL::deleteTexture(tex);
    }
};

TEST_F(TextureTransformTest, PositionIsTheQuadCornerInPixels) {
    drawAndCompare(glm::vec2(3.0f, 5.0f), 0.0f, glm::vec2(0.0f));
}

TEST_F(TextureTransformTest, PivotWithoutRotationChangesNothing) {
    drawAndCompare(glm::vec2(6.0f, 1.0f), 0.0f, glm::vec2(11.0f, -7.0f));
}

// A quarter turn about the quad's centre (7, 7): 8 x 4 becomes 4 x 8.
TEST_F(TextureTransformTest, RotationTurnsAboutThePivot) {
    drawAndCompare(glm::vec2(3.0f, 5.0f), kHalfPi, glm::vec2(7.0f, 7.0f));
}

TEST_F(TextureTransformTest, RotationAboutTheCornerOnAWideTarget) {
    gl->resizeTarget(32, 16);
    drawAndCompare(glm::vec2(20.0f, 2.0f), -kHalfPi, glm::vec2(20.0f, 10.0f));
}

// The projection follows the viewport bound at the time of the call.
TEST_F(TextureTransformTest, MatrixIsWindowProjectionOfTheViewport) {
    glViewport(0, 0, 40, 20);
    pmDraw::TextureRenderer renderer;
    const glm::vec2 position(5.0f, 6.0f), pivot(2.0f, 3.0f);
    const float rotation = 0.3f;
    pmDraw::setTransform(renderer, position, glm::vec2(9.0f, 7.0f), rotation, pivot);
    const glm::mat4 expected = glm::ortho(0.0f, 40.0f, 0.0f, 20.0f, -1.0f, 1.0f) *
                               glm::translate(glm::mat4(1.0f), glm::vec3(pivot, 0.0f)) *
                               glm::rotate(glm::mat4(1.0f), rotation, glm::vec3(0.0f, 0.0f, 1.0f)) *
                               glm::translate(glm::mat4(1.0f), glm::vec3(position - pivot, 0.0f));
    const glm::mat4& actual = renderer.uniforms.mat4s.at("uMVP");
    for (int col = 0; col < 4; ++col) {
        for (int row = 0; row < 4; ++row) {
            EXPECT_NEAR(actual[col][row], expected[col][row], 1e-6f) << col << "," << row;
        }
    }
    EXPECT_EQ(renderer.uniforms.vec2s.at("uSize"), glm::vec2(9.0f, 7.0f));

    // The nine patch takes the same matrix, and its size lays out the grid.
    pmDraw::NinePatchRenderer patch;
    ASSERT_TRUE(pmDraw::createNinePatchRenderer(patch));
    pmDraw::setTransform(patch, position, glm::vec2(9.0f, 7.0f), rotation, pivot);
    const glm::mat4& patchMatrix = patch.uniforms.mat4s.at("uMVP");
    for (int col = 0; col < 4; ++col) {
        for (int row = 0; row < 4; ++row) {
            EXPECT_NEAR(patchMatrix[col][row], expected[col][row], 1e-6f) << col << "," << row;
        }
    }
    EXPECT_EQ(patch.mesh.vertices[15].position, glm::vec3(9.0f, 7.0f, 0.0f));
    pmDraw::deleteNinePatchRenderer(patch);
}

}  // namespace
