// The photo effects of type codes 1 to 9.
#include "PhotoEffects.h"

namespace pmFilters {

namespace {

// The common first step of Initialize and Terminate: the base's work, then
// a stop when the object is inert.
bool initializeBase(FilterCommon& filter) {
    filter.FilterCommon::Initialize();
    if (!filter.IsInit()) {
        PM_LOGE("It is not initialized.");
        return false;
    }
    return true;
}

bool terminateBase(FilterCommon& filter) {
    filter.FilterCommon::Terminate();
    if (!filter.IsInit()) {
        PM_LOGE("It is not initialized.");
        return false;
    }
    return true;
}

// A full-size working picture: four channels, linear, clamped, no mipmaps.
void createWorkingBuffer(pmGL::FrameBuffer& fb) {
    pmGL::TextureOpts opts;
    opts.mipmap = false;
    const pmUtil::ImageData<unsigned char> empty(1920, 1080, 4, nullptr);
    pmGL::createFrameBuffer(fb, empty, opts, 1, false, false, 1);
}

// Draws `draw` into `fb` and gives back the caller's framebuffer.
template <typename Draw>
void drawInto(pmGL::FrameBuffer& fb, Draw&& draw) {
    const bool bound = pmGL::bindFrameBuffer(fb);
    draw();
    if (bound) pmGL::unbindFrameBuffer(fb);
}

// Paints every tenth diagonal dark, more lattices the darker the picture.
// The samplers are never set, so both read unit 0: the one input given twice.
const char* const crossHatchingShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uSrcTexture;
uniform sampler2D uDstTexture;
void main() {
    fragColor = texture(uSrcTexture, vTexCoord);
    float lum = length(texture(uDstTexture, vTexCoord).rgb);
    vec4 ink = vec4(0.1, 0.1, 0.1, 1.0);
    if (lum < 1.0 && mod(gl_FragCoord.x + gl_FragCoord.y, 10.0) == 0.0) fragColor = ink;
    if (lum < 0.75 && mod(gl_FragCoord.x - gl_FragCoord.y, 10.0) == 0.0) fragColor = ink;
    if (lum < 0.5 && mod(gl_FragCoord.x + gl_FragCoord.y - 5.0, 10.0) == 0.0) fragColor = ink;
    if (lum < 0.3 && mod(gl_FragCoord.x - gl_FragCoord.y - 5.0, 10.0) == 0.0) fragColor = ink;
}
)";

}  // namespace

// ---- Sepia

void Sepia::Initialize() {
    if (initializeBase(*this)) pmDraw::createSepia(sepia);
}

void Sepia::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteSepia(sepia);
}

void Sepia::Draw(int, int) {
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    pmDraw::setTexture(sepia, inputBuffer, flip);
    pmDraw::runSepia(sepia);
}

// ---- Bloom

void BloomPhoto::Initialize() {
    if (initializeBase(*this)) pmDraw::createBloom(bloom, kernelSize);
}

void BloomPhoto::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteBloom(bloom);
}

void BloomPhoto::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(bloom, InputTexture(), flip);
    pmDraw::drawBloom(bloom);
}

// ---- Monotonous blur

void MonotonousBlur::Initialize() {
    if (!initializeBase(*this)) return;
    pmDraw::createGrey(grey);
    pmDraw::createCustomGaussianBlur(blur, kernelSize);
    createWorkingBuffer(greyBuffer);
    pmDraw::setScaleFactor(blur, 1.0f / blurDivisor);
    pmDraw::setColor(blur, glm::vec4(dim, dim, dim, 1.0f));
}

void MonotonousBlur::Terminate() {
    if (!terminateBase(*this)) return;
    pmDraw::deleteGrey(grey);
    pmDraw::deleteCustomGaussianBlur(blur);
    pmGL::deleteFrameBuffer(greyBuffer);
}

void MonotonousBlur::Draw(int, int) {
    if (!IsInit()) return;
    // Grey at a fixed 1920 x 1080 first; the flip acts on the way out.
    drawInto(greyBuffer, [&] {
        pmDraw::setTexture(grey, inputBuffer, glm::vec2(0.0f, 0.0f));
        pmDraw::runGrey(grey);
    });
    pmDraw::setTexture(blur, greyBuffer.colorTex[0], flip);
    pmDraw::drawCustomGaussianBlur(blur);
}

// ---- Cartoon

void CartoonPhoto::Initialize() {
    if (initializeBase(*this)) pmDraw::createCartoon(cartoon);
}

void CartoonPhoto::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteCartoon(cartoon);
}

void CartoonPhoto::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(cartoon, InputTexture(), flip);
    pmDraw::drawCartoon(cartoon);
}

// ---- Chromatic distortion

void DistortionChroma::Initialize() {
    if (!initializeBase(*this)) return;
    pmDraw::createDistortionChroma(distortion);
    pmDraw::setParameters(distortion, maxDistort);
}

void DistortionChroma::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteDistortionChroma(distortion);
}

void DistortionChroma::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(distortion, inputBuffer, flip);
    pmDraw::runDistortionChroma(distortion);
}

// ---- Night vision

int NightVisionPhoto::frameCount = 0;

void NightVisionPhoto::Initialize() {
    if (initializeBase(*this)) pmDraw::createNightVision(nightVision);
}

void NightVisionPhoto::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteNightVision(nightVision);
}

void NightVisionPhoto::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(nightVision, inputBuffer, flip);
    ++frameCount;
    pmDraw::setParameters(nightVision, static_cast<float>(frameCount) * 0.5f);
    pmDraw::runNightVision(nightVision);
}

// ---- Cross stitching

void CrossStitchingPhoto::Initialize() {
    if (!initializeBase(*this)) return;
    pmDraw::createCrossStitching(crossStitching);
    pmDraw::setParameters(crossStitching, size);
}

void CrossStitchingPhoto::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteCrossStitching(crossStitching);
}

void CrossStitchingPhoto::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(crossStitching, inputBuffer, flip);
    pmDraw::runCrossStitching(crossStitching);
}

// ---- Painting

void PaintingPhoto::Initialize() {
    if (!initializeBase(*this)) return;
    pmDraw::createKuwaharaFilter(kuwahara);
    pmDraw::setParameters(kuwahara, radius, static_cast<float>(width), static_cast<float>(height));
}

void PaintingPhoto::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteKuwaharaFilter(kuwahara);
}

void PaintingPhoto::Draw(int drawWidth, int drawHeight) {
    if (!IsInit()) return;
    pmDraw::setTexture(kuwahara, inputBuffer, flip);
    pmDraw::setParameters(kuwahara, radius, static_cast<float>(drawWidth),
                          static_cast<float>(drawHeight));
    pmDraw::runKuwaharaFilter(kuwahara);
}

// ---- Cross hatching

void CrossHatchingFilter::Initialize() {
    if (!initializeBase(*this)) return;
    pmDraw::createDualTextureFilter(hatching, crossHatchingShader);
    pmGL::setBlendAlpha(hatching.renderOpts.blend);
}

void CrossHatchingFilter::Terminate() {
    if (terminateBase(*this)) pmDraw::deleteDualTextureFilter(hatching);
}

void CrossHatchingFilter::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(hatching, inputBuffer, inputBuffer, flip);
    pmDraw::runDualTextureFilter(hatching);
}

// ---- Bloom, then blur

void BloomBlurPhoto::Initialize() {
    if (!initializeBase(*this)) return;
    pmDraw::createBloom(bloom, kernelSize);
    pmDraw::createCustomGaussianBlur(blur, kernelSize);
    createWorkingBuffer(bloomBuffer);
    pmDraw::setScaleFactor(blur, 1.0f / blurDivisor);
    pmDraw::setColor(blur, glm::vec4(dim, dim, dim, 1.0f));
}

void BloomBlurPhoto::Terminate() {
    if (!terminateBase(*this)) return;
    pmDraw::deleteBloom(bloom);
    pmDraw::deleteCustomGaussianBlur(blur);
    pmGL::deleteFrameBuffer(bloomBuffer);
}

void BloomBlurPhoto::Draw(int, int) {
    if (!IsInit()) return;
    // The flip sits on the first pass here.
    drawInto(bloomBuffer, [&] {
        pmDraw::setTexture(bloom, InputTexture(), flip);
        pmDraw::drawBloom(bloom);
    });
    pmDraw::setTexture(blur, bloomBuffer.colorTex[0], glm::vec2(0.0f, 0.0f));
    pmDraw::drawCustomGaussianBlur(blur);
}

}  // namespace pmFilters
