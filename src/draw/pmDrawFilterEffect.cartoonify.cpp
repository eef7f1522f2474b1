// Cartoonify: the picture darkened by its own blur, which thickens dark
// edges, then its lightness quantised into soft-edged bands.
#include "draw/pmDrawFilterEffect.frameBuffer.h"
#include "pmDrawComposite.h"
#include "pmGLSL.h"

namespace pmDraw {

namespace {

const char* const cartoonifyHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture1;
uniform sampler2D uTexture2;
out vec4 fragColor;
)";

// Darken blend (alpha included), then L* rounded to twelfths with a tanh
// step between bands instead of a hard edge.
const char* const cartoonifyMain = R"(
const float qBin = 12.0;
const float qStep = 1.0 / qBin;
void main() {
    vec4 srcColor = texture(uTexture1, vTexCoord);
    vec4 dstColor = texture(uTexture2, vTexCoord);
    fragColor = min(srcColor, dstColor);
    vec3 lab = rgb2lab(fragColor.rgb);
    float lum = round(lab.x * qBin) / qBin;
    lab.x = lum + (qStep * 0.5) * tanh(qBin * 6.0 * (lab.x - lum));
    fragColor.rgb = lab2rgb(lab);
}
)";

}  // namespace

bool createCartoonify(Cartoonify& cartoonify) {
    if (!createGaussianBlur(cartoonify.blur, 31)) return false;
    const std::string source = cartoonifyHead + pmGLSL::colorLab + cartoonifyMain;
    return createDualTextureFilter(cartoonify.blend, source.c_str());
}

// The buffer stays: the next setTexture rebuilds it, or the context's end
// takes it.
void deleteCartoonify(Cartoonify& cartoonify) {
    deleteGaussianBlur(cartoonify.blur);
    deleteDualTextureFilter(cartoonify.blend);
}

// The blur runs at a width of 480 whatever the source, with the source's
// aspect ratio; only a source 480 wide keeps the buffer from one call to the
// next.
void setTexture(Cartoonify& cartoonify, pmGL::Texture& tex, glm::vec2 flip) {
    cartoonify.source = &tex;
    cartoonify.flip = flip;
    if (cartoonify.buffer.width == tex.width && cartoonify.buffer.height == tex.height) return;
    const float scale = 480.0f / static_cast<float>(tex.width);
    rebuildEffectBuffer(cartoonify.buffer, static_cast<int>(static_cast<float>(tex.width) * scale),
                        static_cast<int>(static_cast<float>(tex.height) * scale));
}

void setTexture(Cartoonify& cartoonify, pmGL::Texture& tex, float flip) {
    setTexture(cartoonify, tex, glm::vec2(0.0f, flip));
}

void drawCartoonify(Cartoonify& cartoonify) {
    // A pass counts as created once its vertex array exists, the last thing
    // its create makes; the blend is created last, after the blur.
    if (cartoonify.blur.vertexArrays[1].id == 0 || cartoonify.blend.vertexArray.id == 0) {
        PM_LOGE("Call createCartoonify() first.");
        return;
    }
    if (cartoonify.source == nullptr) {
        PM_LOGE("Call setTexture() first.");
        return;
    }
    const bool bound = pmGL::bindFrameBuffer(cartoonify.buffer);
    setTexture(cartoonify.blur, *cartoonify.source, glm::vec2(0.0f, 0.0f));
    drawGaussianBlur(cartoonify.blur);
    if (bound) pmGL::unbindFrameBuffer(cartoonify.buffer);
    setTexture(cartoonify.blend, *cartoonify.source, effectBufferTexture(cartoonify.buffer),
               cartoonify.flip);
    runDualTextureFilter(cartoonify.blend);
}

}  // namespace pmDraw
