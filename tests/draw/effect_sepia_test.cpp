// Sepia: the colour matrix against the same matrix on the CPU.
#include <vector>

#include "GLTestContext.h"
#include "effect_test_support.h"
#include "pmDraw.h"

namespace {

using namespace effecttest;

class SepiaTest : public GLTest {};

TEST_F(SepiaTest, MatchesCpuMatrixWithAlphaOne) {
    const int w = 24, h = 20;
    gl->resizeTarget(w, h);
    gl->clearTarget(0.3f, 0.6f, 0.9f, 0.5f);
    Picture in = makePicture(w, h, 11);
    pmGL::Texture tex = upload(in, true);
    pmDraw::Sepia sepia;
    ASSERT_TRUE(pmDraw::createSepia(sepia));
    // Overwrites: whatever the target held does not show through.
    EXPECT_FALSE(sepia.renderOpts.blend.enabled);
    pmDraw::setTexture(sepia, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runSepia(sepia);
    expectPicture(
        gl->readTarget(), w, h,
        [&](int x, int y) {
            const float r = in.unit(x, y, 0), g = in.unit(x, y, 1), b = in.unit(x, y, 2);
            return Expected{{toByte(0.393f * r + 0.769f * g + 0.189f * b),
                             toByte(0.349f * r + 0.686f * g + 0.168f * b),
                             toByte(0.272f * r + 0.534f * g + 0.131f * b), 255}};
        },
        1, "sepia");
    pmDraw::deleteSepia(sepia);
    EXPECT_EQ(sepia.program.id, 0u);
    EXPECT_EQ(sepia.quad.id, 0u);
    pmGL::deleteTexture(tex);
}

TEST_F(SepiaTest, RunBeforeCreateOrSetTextureDrawsNothing) {
    gl->clearTarget(0.2f, 0.4f, 0.6f, 0.8f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmDraw::Sepia sepia;
    pmDraw::runSepia(sepia);
    ASSERT_TRUE(pmDraw::createSepia(sepia));
    pmDraw::runSepia(sepia);
    EXPECT_EQ(gl->readTarget(), before);
    pmDraw::deleteSepia(sepia);
}

}  // namespace
