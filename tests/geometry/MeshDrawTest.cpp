// Meshes drawn through GL: the vertex layouts, windings and index orders are
// checked on the pixels they cover.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "pmGL.h"
#include "pmMesh.h"

using namespace pmMesh;

namespace {

const char* const SIGNED_VERTEX_SHADER = R"(#version 300 es
in vec2 aPosition;
in float aSignVal;
out float vValue;
void main() {
    vValue = aSignVal;
    gl_Position = vec4(aPosition, 0.0, 1.0);
})";

const char* const EDGED_VERTEX_SHADER = R"(#version 300 es
in vec2 aPosition;
in vec2 aTexCoord;
in float aEdgeAlpha;
out float vValue;
out vec2 vTexCoord;
void main() {
    vValue = aEdgeAlpha;
    vTexCoord = aTexCoord;
    gl_Position = vec4(aPosition, 0.0, 1.0);
})";

// Red is the interpolated value; drawn pixels are opaque.
const char* const VALUE_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
in float vValue;
out vec4 fragColor;
void main() { fragColor = vec4(vValue, 0.0, 0.0, 1.0); })";

const char* const TEXTURE_VERTEX_SHADER = R"(#version 300 es
in vec3 aPosition;
in vec2 aTexCoord;
out vec2 vTexCoord;
void main() {
    vTexCoord = aTexCoord;
    gl_Position = vec4(aPosition, 1.0);
})";

const char* const TEXTURE_FRAGMENT_SHADER = R"(#version 300 es
precision highp float;
uniform sampler2D uTexture;
in vec2 vTexCoord;
out vec4 fragColor;
void main() { fragColor = texture(uTexture, vTexCoord); })";

class MeshDrawTest : public GLTest {
protected:
    // RGBA of the pixel at (x, y), bottom row first.
    std::vector<int> pixel(const std::vector<std::uint8_t>& target, int x, int y) {
        const std::size_t i = (static_cast<std::size_t>(y) * gl->width + x) * 4;
        return {target[i], target[i + 1], target[i + 2], target[i + 3]};
    }

    template <typename Mesh>
    std::vector<std::uint8_t> draw(const Mesh& mesh, const char* vertexShader,
                                   const char* fragmentShader) {
        pmGL::Program prog;
        EXPECT_TRUE(pmGL::createProgram(prog, vertexShader, fragmentShader));
        pmGL::VertexBuffer vb;
        pmGL::createVertexBuffer(vb, mesh);
        pmGL::VertexArray va;
        pmGL::createVertexArray(va, vb, prog);
        gl->clearTarget(0, 0, 0, 0);
        pmGL::useProgram(prog);
        pmGL::drawVertexArray(va, 1);
        glUseProgram(0);
        std::vector<std::uint8_t> target = gl->readTarget();
        pmGL::deleteVertexArray(va);
        pmGL::deleteVertexBuffer(vb);
        pmGL::deleteProgram(prog);
        return target;
    }
};

TEST_F(MeshDrawTest, SignedCircleCoversTheDiscWithValuesRisingOutwards) {
    gl->resizeTarget(32, 32);
    pmGL::TriangleFanMesh<SignedPositionVertex> mesh;
    createCircle(mesh, 1.0f, 64);
    LogCapture log;
    const std::vector<std::uint8_t> target =
        draw(mesh, SIGNED_VERTEX_SHADER, VALUE_FRAGMENT_SHADER);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    // The corners lie outside the disc.
    EXPECT_EQ(pixel(target, 0, 0)[3], 0);
    EXPECT_EQ(pixel(target, 31, 31)[3], 0);
    // Every pixel centre inside the disc is drawn, its red near the distance.
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            const float px = (x + 0.5f) / 16.0f - 1.0f;
            const float py = (y + 0.5f) / 16.0f - 1.0f;
            const float r = std::sqrt(px * px + py * py);
            if (r > 0.97f) continue;
            const std::vector<int> p = pixel(target, x, y);
            ASSERT_EQ(p[3], 255) << x << "," << y;
            ASSERT_NEAR(p[0], r * 255.0f, 6.0f) << x << "," << y;
        }
    }
}

TEST_F(MeshDrawTest, EdgedQuadIsOpaqueInsideAndFadesAcrossTheBorder) {
    pmGL::IndexedTriangleMesh<EdgedTexturingVertex> mesh;
    createEdgedQuad(mesh, glm::vec2(-1.0f), glm::vec2(1.0f), 0.5f, 0.0f, 0.0f, glm::vec2(0.5f),
                    glm::vec2(1.0f));
    const std::vector<std::uint8_t> target = draw(mesh, EDGED_VERTEX_SHADER, VALUE_FRAGMENT_SHADER);
    // The ten triangles cover the whole target.
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) ASSERT_EQ(pixel(target, x, y)[3], 255) << x << "," << y;
    }
    // Inside the inner quad (-0.5 to 0.5, pixels 4 to 11) the alpha value is 1.
    for (int y = 4; y < 12; ++y) {
        for (int x = 4; x < 12; ++x) ASSERT_EQ(pixel(target, x, y)[0], 255) << x << "," << y;
    }
    // Across the bottom band it rises with y, from 0 at y = -1 to 1 at -0.5:
    // pixel row 2 has its centre at y = -0.6875, row 0 at -0.9375.
    EXPECT_NEAR(pixel(target, 8, 2)[0], 0.625f * 255.0f, 3.0f);
    EXPECT_NEAR(pixel(target, 8, 0)[0], 0.125f * 255.0f, 3.0f);
    EXPECT_NEAR(pixel(target, 0, 8)[0], 0.125f * 255.0f, 3.0f);
}

TEST_F(MeshDrawTest, TexturedPlaneDrawsTheImagePixelForPixel) {
    const int width = 16;
    const int height = 16;
    std::vector<std::uint8_t> pixels = makeTestPixels(width, height, 4, 3);
    pmGL::TextureOpts nearest;
    nearest.minFilter = GL_NEAREST;
    nearest.magFilter = GL_NEAREST;
    pmGL::Texture tex;
    pmGL::createTexture(tex, pmUtil::ImageData<unsigned char>(width, height, 4, pixels.data()),
                        nearest);
    pmGL::IndexedTriangleStripMesh<TexturingVertex> mesh;
    // Three by three cells, joined between rows by degenerate triangles.
    createPlane(mesh, glm::vec2(-1.0f), glm::vec2(1.0f), glm::ivec2(3, 3), 0.0f, glm::vec2(0.5f),
                glm::vec2(1.0f));
    pmGL::bindTexture(tex, 0);
    glDisable(GL_BLEND);
    const std::vector<std::uint8_t> target =
        draw(mesh, TEXTURE_VERTEX_SHADER, TEXTURE_FRAGMENT_SHADER);
    EXPECT_EQ(target, pixels);
    glBindTexture(GL_TEXTURE_2D, 0);
    pmGL::deleteTexture(tex);
}

TEST_F(MeshDrawTest, TexturedQuadTurnedAQuarterRotatesTheImage) {
    // A 2 by 2 texture, turned by a quarter about the quad's centre.
    std::vector<std::uint8_t> pixels = {255, 0, 0,   255, 0,   255, 0,   255,
                                        0,   0, 255, 255, 255, 255, 255, 255};
    pmGL::TextureOpts nearest;
    nearest.minFilter = GL_NEAREST;
    nearest.magFilter = GL_NEAREST;
    pmGL::Texture tex;
    pmGL::createTexture(tex, pmUtil::ImageData<unsigned char>(2, 2, 4, pixels.data()), nearest);
    pmGL::TriangleStripMesh<TexturingVertex> mesh;
    createQuad(mesh, glm::vec2(-1.0f), glm::vec2(1.0f), 1.5707964f, glm::vec2(0.5f),
               glm::vec2(1.0f));
    pmGL::bindTexture(tex, 0);
    const std::vector<std::uint8_t> target =
        draw(mesh, TEXTURE_VERTEX_SHADER, TEXTURE_FRAGMENT_SHADER);
    // uv = R(90) (p / 2) + 0.5, worked out per quadrant at its middle:
    // bottom left (u, v) = (0.75, 0.25) -> texel (1, 0), bottom right (0.75,
    // 0.75) -> texel (1, 1), top left (0.25, 0.25) -> texel (0, 0), top right
    // (0.25, 0.75) -> texel (0, 1).
    EXPECT_EQ(pixel(target, 3, 3), (std::vector<int>{0, 255, 0, 255}));
    EXPECT_EQ(pixel(target, 12, 3), (std::vector<int>{255, 255, 255, 255}));
    EXPECT_EQ(pixel(target, 3, 12), (std::vector<int>{255, 0, 0, 255}));
    EXPECT_EQ(pixel(target, 12, 12), (std::vector<int>{0, 0, 255, 255}));
    glBindTexture(GL_TEXTURE_2D, 0);
    pmGL::deleteTexture(tex);
}

}  // namespace
