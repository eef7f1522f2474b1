/**
 * @file GaussianBlur.h
 * @brief The separable Gaussian blur pass, its kernel, and the two blurs built on it.
 *
 * The kernel is computed on the CPU for one size and written into the shader
 * text as constant arrays: the loop has a constant count and no kernel data is
 * uploaded per frame. A horizontal program draws into an internal framebuffer,
 * a vertical one into the framebuffer bound at the call. CustomGaussianBlur gets
 * a variable strength by blurring a scaled-down copy and stretching it back
 * through a dithering stage; VideoGaussianBlur captures blurred frames now and
 * then and cross-fades between the last two at every draw. Every call needs a
 * current GL context on the calling thread.
 */
#ifndef PIXMORA_GAUSSIANBLUR_H
#define PIXMORA_GAUSSIANBLUR_H

#include <glm/glm.hpp>

#include <string>
#include <vector>

#include "pmDraw.h"
#include "pmExport.h"
#include "pmGL.h"
#include "SmoothGaussianBlur.h"

// The normalised kernel of width kernelSize, with the standard deviation
// searched so that the outermost tap still has a visible weight. The size
// must be odd; anything else ends the process.
PM_VISIBLE std::vector<float> GetAppropriateSeparableGauss(int kernelSize);

// GLSL text of the folded kernel (constants stepCount, gWeights, gOffsets)
// and the function GaussianBlur(sampler2D, vec2 centreUV, vec2 pixelOffset).
// The size must be of the form 4k + 3; anything else ends the process.
PM_VISIBLE std::string GenerateGaussShaderKernelWeightsAndOffsets(int kernelSize);

namespace PM_VISIBLE pmDraw {

// The kernel as the search found it, and folded for the shader: symmetric
// taps share one weight and offset, neighbouring texels share one bilinear read.
struct GaussKernel {
    double sigma = 0.0;
    std::vector<float> taps;
    std::vector<float> weights;
    std::vector<float> offsets;
};

// The same search and folding as the shader text uses, for inspection.
GaussKernel describeGaussKernel(int kernelSize);

class GaussianBlur : public BaseFilter {
public:
    GaussianBlur() = default;
    ~GaussianBlur() override;

    pmGL::Program programs[2];
    pmGL::VertexArray vertexArrays[2];
    pmGL::FrameBuffer buffer;
    pmGL::Texture* inputTexture = nullptr;
    glm::vec2 flip = glm::vec2(0.0f, 0.0f);
    int wrap = GL_CLAMP_TO_EDGE;
};

bool createGaussianBlur(GaussianBlur& blur, int kernelSize);
void deleteGaussianBlur(GaussianBlur& blur);
// Remember the input (not owned: it must outlive the last draw) and size the
// internal buffer to it; the uniforms are set at draw time.
void setTexture(GaussianBlur& blur, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(GaussianBlur& blur, pmGL::FrameBuffer& fb, glm::vec2 flip);
void setTexture(GaussianBlur& blur, pmGL::Texture& tex, float flip);
void setTexture(GaussianBlur& blur, pmGL::FrameBuffer& fb, float flip);
// Horizontal pass into the internal buffer, vertical pass into the
// framebuffer the caller has bound.
void drawGaussianBlur(GaussianBlur& blur);

// A blur of variable strength from the fixed kernel: the input is drawn into
// a smaller buffer, blurred there, and stretched back by the final pass, which
// also applies colour, mix colour, alpha and dither. Strength comes from
// resolution, which cuts the cost of the blur passes by the square of the scale.
struct PM_VISIBLE CustomGaussianBlur {
    NoFilter composite;
    GaussianBlur blur;
    RandomDithering dither;
    pmGL::FrameBuffer blurBuffer;
    pmGL::FrameBuffer downBuffer;
    pmGL::Texture* inputTexture = nullptr;
    glm::vec2 flip = glm::vec2(0.0f, 0.0f);
    float scaleFactor = 1.0f;
    bool dithering = true;
    // The smooth quality's passes exist only once it was asked for; the
    // default quality never touches them.
    int quality = BLUR_QUALITY_DEFAULT;
    int kernelSize = 35;
    SmoothGaussianBlur smooth;
    TextureFilter smoothOutput;
    pmGL::FrameBuffer smoothResult;
    // The final pass's area, kept for a smooth output built later.
    glm::vec2 area[4] = {glm::vec2(0.0f), glm::vec2(1.0f), glm::vec2(0.0f), glm::vec2(1.0f)};
};

// The kernel size CustomGaussianBlur uses for a wanted one: the nearest of
// 7, 11, 15, ... 407, a tie going to the larger.
int snapCustomKernelSize(int kernelSize);
bool createCustomGaussianBlur(CustomGaussianBlur& context, int kernelSize);
void deleteCustomGaussianBlur(CustomGaussianBlur& context);
// Only stores the input (not owned) and the flip, clamped to [0, 1]; the
// buffers are sized at draw time.
void setTexture(CustomGaussianBlur& context, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(CustomGaussianBlur& context, pmGL::FrameBuffer& fb, glm::vec2 flip);
void setTexture(CustomGaussianBlur& context, pmGL::Texture& tex, float flip);
void setTexture(CustomGaussianBlur& context, pmGL::FrameBuffer& fb, float flip);
void setScaleFactor(CustomGaussianBlur& context, float scaleFactor);
// The area, colour, mix colour and alpha belong to the final pass only.
void setAlphaMultiplier(CustomGaussianBlur& context, float alpha);
void setArea(CustomGaussianBlur& context, const glm::vec2& pos0, const glm::vec2& pos1,
             const glm::vec2& tex0, const glm::vec2& tex1);
void setColor(CustomGaussianBlur& context, const glm::vec4& color);
void setMixColor(CustomGaussianBlur& context, const glm::vec4& color);
void drawCustomGaussianBlur(CustomGaussianBlur& context);
// BLUR_QUALITY_DEFAULT or BLUR_QUALITY_SMOOTH; the smooth passes are built at
// the first switch to it. False, with the quality unchanged, for another
// value or when the smooth passes cannot be built.
bool setQuality(CustomGaussianBlur& context, int quality);

// Blurs a video at a lower rate than the screen is drawn. setVideoCapture
// scales one frame down, blurs it and keeps the result in the latest of three
// rotating buffers; draw only mixes the previous capture with the latest one,
// so a display faster than the blur still gets a smooth picture. All three
// buffers follow the scaled size together and start black.
class PM_VISIBLE VideoGaussianBlur {
public:
    bool initialize(int kernelSize);
    void finalize();
    // Capture from a texture, from colorTex[0] of a framebuffer, or from
    // pixels uploaded into captureTexture first. The flip is applied once, in
    // the blur; the float forms flip the vertical axis only.
    void setVideoCapture(pmGL::Texture& tex, glm::vec2 flip);
    void setVideoCapture(pmGL::FrameBuffer& fb, glm::vec2 flip);
    void setVideoCapture(const pmUtil::ImageData<unsigned char>& image, glm::vec2 flip);
    void setVideoCapture(pmGL::Texture& tex, float flip);
    void setVideoCapture(pmGL::FrameBuffer& fb, float flip);
    void setVideoCapture(const pmUtil::ImageData<unsigned char>& image, float flip);
    // Draws into the bound framebuffer: weight 0 shows the previous capture,
    // 1 the latest; with one capture only, the latest at full weight.
    void draw(float weight);
    // Forgets the captures; the buffers and their pictures stay.
    void reset();
    void setScaleFactor(float value);
    void setArea(const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
                 const glm::vec2& tex1);
    void setColor(const glm::vec4& color);
    void setMixColor(const glm::vec4& color);
    void setAlphaMultiplier(float alpha);
    // BLUR_QUALITY_DEFAULT or BLUR_QUALITY_SMOOTH; the smooth passes are
    // built at the first switch to it. A switch forgets the captures. False,
    // with the quality unchanged, for another value or a failed build.
    bool setQuality(int value);
    // The smooth quality's capture and draw, and its release.
    void captureSmooth(const pmGL::Texture& tex, glm::vec2 flip);
    void drawSmooth(float weight);
    void deleteSmooth();

    NoFilter singleCompositing;
    DualTextureFilter dualCompositing;
    GaussianBlur blur;
    pmGL::Texture captureTexture;
    pmGL::FrameBuffer previousBuffer;
    pmGL::FrameBuffer latestBuffer;
    pmGL::FrameBuffer scaledBuffer;
    // 2: nothing captured yet, 1: one capture, 0: two or more.
    int pendingCaptures = 2;
    float scaleFactor = 1.0f;
    // The "uDithering" switch of the output pass; the owner writes it directly.
    bool dithering = true;
    // The smooth quality's passes and working-size captures, built only
    // once it was asked for; the default quality never touches them.
    int quality = BLUR_QUALITY_DEFAULT;
    int kernelSize = 35;
    SmoothGaussianBlur smooth;
    TextureFilter smoothCrossFade;
    TextureFilter smoothOutput;
    pmGL::FrameBuffer smoothCaptures[2];
    pmGL::FrameBuffer smoothMixed;
    glm::vec2 area[4] = {glm::vec2(0.0f), glm::vec2(1.0f), glm::vec2(0.0f), glm::vec2(1.0f)};
};

}  // namespace pmDraw

#endif
