// The smooth quality of the blur objects: a Gaussian of a given sigma made
// from a box pyramid, a short linear-sampled Gaussian at the pyramid's top
// and a cubic B-spline stretch back to full size. The working data keeps
// more than 8 bits where the renderer can draw into half floats, so the
// stretch has no steps at the working grid and the dither acts on a value
// that still has its fraction.
#ifndef PIXMORA_SMOOTHGAUSSIANBLUR_H
#define PIXMORA_SMOOTHGAUSSIANBLUR_H

#include <glm/glm.hpp>

#include "pmDraw.h"
#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmDraw {

// Quality codes shared by both blur objects; the values are those of the
// exported PM_BLUR_QUALITY_ constants.
enum BlurQuality { BLUR_QUALITY_DEFAULT = 0, BLUR_QUALITY_SMOOTH = 1 };

// Halvings of the pyramid at most, and bilinear read pairs per side of the
// working Gaussian at most.
constexpr int kSmoothMaxLevels = 8;
constexpr int kSmoothMaxPairs = 8;

// How a Gaussian of `sigma` full-size pixels is reached: `levels` halvings by
// box filters, then a Gaussian of `workingSigma` texels at that size, folded
// into a centre weight and symmetric bilinear read pairs; the B-spline stretch
// adds the rest.
struct SmoothBlurPlan {
    int levels = 0;
    // Halvings of the stretched picture: the B-spline fills a picture this
    // much smaller than the input, and the owner's full-size pass reads it
    // with one bilinear read (four dependent reads per full-size pixel are the
    // dearest work there is on a software renderer).
    int stretchLevels = 0;
    float workingSigma = 0.0f;
    int pairCount = 0;
    float centreWeight = 1.0f;
    float weights[kSmoothMaxPairs] = {};
    float offsets[kSmoothMaxPairs] = {};
};

// The plan for `sigma` on an input of `inputSize`: as many halvings as leave
// the working Gaussian at least 1.5 texels wide (1.25 down to level 2) (the pyramid and the stretch
// are then a small part of the whole) and the working picture at least 4
// texels on its shorter side.
PM_VISIBLE SmoothBlurPlan planSmoothBlur(float sigma, glm::ivec2 inputSize);

// The sigma, in working texels, of the default quality's Gaussian of a
// kernel size (searched once, so not for every frame).
PM_VISIBLE float defaultKernelSigma(int kernelSize);
// The full-size sigma of the default quality's passes at a scale factor, for
// its kernel's sigma: the smooth quality blurs by the same amount.
PM_VISIBLE float defaultQualitySigma(float scaleFactor, float kernelSigma);

// The size of the working picture after `levels` halvings of `inputSize`.
PM_VISIBLE glm::ivec2 smoothWorkingSize(glm::ivec2 inputSize, int levels);

// The passes and buffers of the smooth quality. The buffers follow the
// input size and the plan; at an unchanged size a run creates nothing.
struct PM_VISIBLE SmoothGaussianBlur {
    TextureFilter reduce;
    // One working-Gaussian program for each count of read pairs, made the
    // first time its count is wanted.
    TextureFilter blurPasses[kSmoothMaxPairs + 1];
    TextureFilter stretch;
    pmGL::FrameBuffer stretched;
    pmGL::FrameBuffer pyramid[kSmoothMaxLevels];
    pmGL::FrameBuffer across;
    pmGL::TextureOpts workingOpts;
    glm::ivec2 inputSize = glm::ivec2(0, 0);
    SmoothBlurPlan plan;
    // defaultKernelSigma of the owner's kernel, set when the owner builds this.
    float kernelSigma = 1.0f;
};

// Whether the renderer can draw into RGBA16F textures (half or full float
// colour buffers); without it the working buffers are RGBA8.
PM_VISIBLE bool canRenderHalfFloat();

bool createSmoothGaussianBlur(SmoothGaussianBlur& smooth);
void deleteSmoothGaussianBlur(SmoothGaussianBlur& smooth);
// Makes the working buffers for the input size and plan, and a target of the
// working size in `result` when it does not fit; creates nothing when all fit.
// The pyramid is reduced from the input's base level, mipmapped or not.
void fitSmoothBuffers(SmoothGaussianBlur& smooth, glm::ivec2 inputSize, const SmoothBlurPlan& plan);
void fitWorkingBuffer(const SmoothGaussianBlur& smooth, pmGL::FrameBuffer& result);
// Blurs `input` into `result`, which has the working size. The flip is
// applied once, in the first pass that reads the input.
void runSmoothGaussianBlur(SmoothGaussianBlur& smooth, const pmGL::Texture& input, glm::vec2 flip,
                           pmGL::FrameBuffer& result);
// Stretches a working-size picture with the B-spline into `stretched`, of
// the plan's stretch size, for the owner's full-size pass to read. When that
// size is the working size the B-spline is part of the working Gaussian and
// the working picture itself is returned.
const pmGL::FrameBuffer& stretchSmooth(SmoothGaussianBlur& smooth,
                                       const pmGL::FrameBuffer& working);

// The GLSL of the stretch: vec4 bsplineTexture(sampler2D, vec2 uv, vec2
// texelSize), a cubic B-spline from four bilinear reads.
extern const char* const bsplineSampling;
// The GLSL of vec3 applySmoothDithering(vec3): a dither of half an 8-bit
// level each way from an integer hash of the window position.
extern const char* const smoothDithering;

}  // namespace pmDraw

#endif
