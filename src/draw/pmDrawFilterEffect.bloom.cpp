// Bloom: the screen blend of the picture and its Gaussian blur, so that
// bright areas glow over their surroundings.
#include "draw/pmDrawFilterEffect.frameBuffer.h"
#include "pmDrawComposite.h"

namespace pmDraw {

namespace {

// Screen blend on all four channels: alpha is blended the same way.
const char* const screenShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture1;
uniform sampler2D uTexture2;
out vec4 fragColor;
void main() {
    vec4 src = texture(uTexture1, vTexCoord);
    vec4 dst = texture(uTexture2, vTexCoord);
    fragColor = (src + dst) - (src * dst);
}
)";

}  // namespace

bool createBloom(Bloom& bloom, int kernelSize) {
    if (!createDualTextureFilter(bloom.screen, screenShader)) return false;
    return createGaussianBlur(bloom.blur, kernelSize);
}

void deleteBloom(Bloom& bloom) {
    deleteDualTextureFilter(bloom.screen);
    deleteGaussianBlur(bloom.blur);
    pmGL::deleteFrameBuffer(bloom.buffer);
}

void setTexture(Bloom& bloom, pmGL::Texture& tex, glm::vec2 flip) {
    if (bloom.buffer.width != tex.width || bloom.buffer.height != tex.height) {
        rebuildEffectBuffer(bloom.buffer, tex.width, tex.height);
    }
    // The blur fills the buffer upright; the flip is applied once, on the way out.
    setTexture(bloom.blur, tex, glm::vec2(0.0f, 0.0f));
    setTexture(bloom.screen, tex, effectBufferTexture(bloom.buffer), flip);
}

void setTexture(Bloom& bloom, pmGL::Texture& tex, float flip) {
    setTexture(bloom, tex, glm::vec2(0.0f, flip));
}

void setArea(Bloom& bloom, const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
             const glm::vec2& tex1) {
    setArea(bloom.screen, pos0, pos1, tex0, tex1);
    setArea(bloom.blur, pos0, pos1, tex0, tex1);
}

void drawBloom(Bloom& bloom) {
    // A pass counts as created once its vertex array exists, the last thing
    // its create makes; the blur is created last, after the blend.
    if (bloom.screen.vertexArray.id == 0 || bloom.blur.vertexArrays[1].id == 0) {
        PM_LOGE("Call createBloom() first.");
        return;
    }
    const bool bound = pmGL::bindFrameBuffer(bloom.buffer);
    drawGaussianBlur(bloom.blur);
    if (bound) pmGL::unbindFrameBuffer(bloom.buffer);
    runDualTextureFilter(bloom.screen);
}

}  // namespace pmDraw
