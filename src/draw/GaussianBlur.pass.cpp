// GaussianBlur: a horizontal program into an internal buffer of the input's
// size, then a vertical program into the framebuffer the caller has bound.
#include "GaussianBlur.buffers.h"
#include "GaussianBlur.h"

namespace pmDraw {

namespace {

const char* const blurHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
)";

// The blur has no alpha output: each direction writes alpha 1.
const char* const horizontalMain = R"(
void main() {
    fragColor = GaussianBlur(uTexture, vTexCoord, vec2(uPixelStep.x, 0.0));
    fragColor.a = 1.0;
}
)";

const char* const verticalMain = R"(
void main() {
    fragColor = GaussianBlur(uTexture, vTexCoord, vec2(0.0, uPixelStep.y));
    fragColor.a = 1.0;
}
)";

void runPass(GaussianBlur& blur, int index) {
    pmGL::useUniformData(blur.ud, blur.programs[index]);
    pmGL::bindTexture(blur.ud);
    pmGL::drawVertexArray(blur.vertexArrays[index], 1);
}

}  // namespace

GaussianBlur::~GaussianBlur() = default;

bool createGaussianBlur(GaussianBlur& blur, int kernelSize) {
    PM_LOGE("createGaussianBlur()");
    const std::string kernel = GenerateGaussShaderKernelWeightsAndOffsets(kernelSize);
    if (!createFilterProgram(blur.programs[0], blurHead + kernel + horizontalMain)) {
        PM_LOGE("createFilterProgram() failed.");
        return false;
    }
    if (!createFilterProgram(blur.programs[1], blurHead + kernel + verticalMain)) {
        PM_LOGE("createFilterProgram() failed.");
        return false;
    }
    createBaseFilter(blur);
    PM_LOGE("createBaseFilter()");
    pmGL::createVertexArray(blur.vertexArrays[0], blur.quad, blur.programs[0]);
    pmGL::createVertexArray(blur.vertexArrays[1], blur.quad, blur.programs[1]);
    PM_LOGE("createVertexArray()");
    pmGL::disableBlend(blur.renderOpts.blend);
    PM_LOGE("createGaussianBlur() end.");
    return true;
}

void deleteGaussianBlur(GaussianBlur& blur) {
    PM_LOGE("deleteGaussianBlur()");
    pmGL::deleteFrameBuffer(blur.buffer);
    pmGL::deleteVertexArray(blur.vertexArrays[0]);
    pmGL::deleteVertexArray(blur.vertexArrays[1]);
    pmGL::deleteVertexBuffer(blur.quad);
    pmGL::deleteProgram(blur.programs[0]);
    pmGL::deleteProgram(blur.programs[1]);
    deleteBaseFilter(blur);
    PM_LOGE("deleteGaussianBlur() end.");
}

void setTexture(GaussianBlur& blur, pmGL::Texture& tex, glm::vec2 flip) {
    blur.inputTexture = &tex;
    blur.flip = flip;
    if (blur.buffer.width == tex.width && blur.buffer.height == tex.height) return;
    const pmUtil::ImageData<unsigned char> image(tex.width, tex.height, 4, nullptr);
    pmGL::createFrameBuffer(blur.buffer, image, blurBufferOptions(blur.wrap), 1, false, false, 1);
}

void setTexture(GaussianBlur& blur, pmGL::FrameBuffer& fb, glm::vec2 flip) {
    PM_ASSERT(!fb.colorTex.empty());
    if (fb.colorTex.empty()) return;
    setTexture(blur, fb.colorTex[0], flip);
}

void setTexture(GaussianBlur& blur, pmGL::Texture& tex, float flip) {
    setTexture(blur, tex, glm::vec2(0.0f, flip));
}

void setTexture(GaussianBlur& blur, pmGL::FrameBuffer& fb, float flip) {
    setTexture(blur, fb, glm::vec2(0.0f, flip));
}

void drawGaussianBlur(GaussianBlur& blur) {
    if (blur.programs[0].id == 0) {
        PM_LOGE("Call createGaussianBlur first.");
        return;
    }
    if (blur.inputTexture == nullptr) return;
    // The first pass never blends; the second obeys the owner's blend state.
    const bool ownerBlends = blur.renderOpts.blend.enabled;
    pmGL::disableBlend(blur.renderOpts.blend);
    pmGL::useRenderOptions(blur.renderOpts);
    const bool bound = pmGL::bindFrameBuffer(blur.buffer);
    pmGL::useProgram(blur.programs[0]);
    blur.setTexture(*blur.inputTexture, blur.flip);
    runPass(blur, 0);
    if (bound) pmGL::unbindFrameBuffer(blur.buffer);

    if (ownerBlends != blur.renderOpts.blend.enabled) {
        blur.renderOpts.blend.enabled = ownerBlends;
        pmGL::useBlendOptions(blur.renderOpts.blend);
    }
    pmGL::useProgram(blur.programs[1]);
    blur.setTexture(blur.buffer, glm::vec2(0.0f, 0.0f));
    runPass(blur, 1);
}

}  // namespace pmDraw
