// Cartoon: the contrast curve into a buffer at least 1920 wide, then a disc
// of golden-angle samples around each pixel, weighted by their own colour,
// whose radius grows with the pixel's brightness: bright areas flatten into
// soft blobs while dark lines stay sharp.
#include <algorithm>

#include "draw/pmDrawFilterEffect.frameBuffer.h"
#include "pmDrawComposite.h"

namespace pmDraw {

namespace {

// acc / div is the colour-weighted mean. A black centre takes no sample and
// divides zero by zero; the result is what the GPU makes of it.
const char* const cartoonShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
uniform float uRadius;
out vec4 fragColor;
const float goldenAngle = 2.39996;
const float PI = 3.141592;
void main() {
    vec3 center = texture(uTexture, vTexCoord).rgb;
    float R = uRadius * dot(center, center);
    float sampleCount = R * R;
    vec2 pixelStep = uPixelStep / PI;
    vec3 acc = vec3(0.0);
    vec3 div = vec3(0.0);
    float theta = 0.0;
    for (float i = 0.0; i < sampleCount; i += 1.0) {
        theta += goldenAngle;
        vec2 offset = sqrt(i) * vec2(cos(theta), sin(theta)) * pixelStep;
        vec3 color = texture(uTexture, vTexCoord + offset).rgb;
        acc += color * color;
        div += color;
    }
    fragColor = vec4(acc / div, 1.0);
}
)";

}  // namespace

bool createCartoon(Cartoon& cartoon) {
    if (!createTextureFilter(cartoon.cartoon, cartoonShader)) return false;
    pmGL::setUniformData(cartoon.cartoon.ud, "uRadius", 16.0f);
    pmGL::setBlendAlpha(cartoon.cartoon.renderOpts.blend);
    return createContrastFilter(cartoon.contrast, false);
}

void deleteCartoon(Cartoon& cartoon) {
    pmGL::deleteFrameBuffer(cartoon.buffer);
    deleteContrastFilter(cartoon.contrast);
    deleteTextureFilter(cartoon.cartoon);
}

// The buffer is compared with the source's own size, not with the scaled
// one, so a source narrower than 1920 rebuilds it on every call.
void setTexture(Cartoon& cartoon, pmGL::Texture& tex, glm::vec2 flip) {
    cartoon.source = &tex;
    cartoon.flip = flip;
    if (cartoon.buffer.width == tex.width && cartoon.buffer.height == tex.height) return;
    const float scale = std::max(1.0f, 1920.0f / static_cast<float>(tex.width));
    rebuildEffectBuffer(cartoon.buffer, static_cast<int>(static_cast<float>(tex.width) * scale),
                        static_cast<int>(static_cast<float>(tex.height) * scale));
}

void setTexture(Cartoon& cartoon, pmGL::Texture& tex, float flip) {
    setTexture(cartoon, tex, glm::vec2(0.0f, flip));
}

void drawCartoon(Cartoon& cartoon) {
    // A pass counts as created once its vertex array exists, the last thing
    // its create makes (a failed create may leave a program behind); the
    // contrast pass is created last, after the cartoon pass.
    if (cartoon.cartoon.vertexArray.id == 0 || cartoon.contrast.vertexArray.id == 0) {
        PM_LOGE("Call createCartoon() first.");
        return;
    }
    if (cartoon.source == nullptr) {
        PM_LOGE("Call setTexture() first.");
        return;
    }
    const bool bound = pmGL::bindFrameBuffer(cartoon.buffer);
    setTexture(cartoon.contrast, *cartoon.source, cartoon.flip);
    runContrastFilter(cartoon.contrast);
    if (bound) pmGL::unbindFrameBuffer(cartoon.buffer);
    setTexture(cartoon.cartoon, cartoon.buffer, glm::vec2(0.0f, 0.0f));
    runTextureFilter(cartoon.cartoon);
}

}  // namespace pmDraw
