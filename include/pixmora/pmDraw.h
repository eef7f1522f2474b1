/**
 * @file pmDraw.h
 * @brief The GPU passes (pmDraw) that the filter objects are built from.
 *
 * A pass is a fragment shader plus a create/delete/run family of free functions;
 * the classes keep the state (program, quad, uniform data, private framebuffers),
 * and the free functions forward to one virtual slot. `BaseFilter` owns what any
 * full-screen pass needs, `TextureFilter` adds one program, so a single-pass
 * filter is nothing more than its shader. A pass draws into the framebuffer bound
 * at the call. Every call needs a current GL context on the calling thread.
 */
#ifndef PIXMORA_PMDRAW_H
#define PIXMORA_PMDRAW_H

#include <glm/glm.hpp>

#include <string>

#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmDraw {

// What every full-screen pass owns: its uniform values, its render state and
// one quad. Constructing it touches no GL object.
class BaseFilter {
public:
    BaseFilter() = default;
    virtual ~BaseFilter();

    virtual bool initialize();
    virtual void finalize();
    virtual void setTexture(const pmGL::Texture& tex, glm::vec2 flip);
    virtual void setTexture(const pmGL::FrameBuffer& fb, glm::vec2 flip);
    virtual void setTexture(const pmGL::Texture& tex, float flip);
    virtual void setTexture(const pmGL::FrameBuffer& fb, float flip);
    // Places the quad: positions in the target's unit square, clamped to it;
    // texture corners kept as given.
    virtual void setArea(const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
                         const glm::vec2& tex1);
    virtual void setArea(const glm::vec2& pos0, const glm::vec2& pos1);
    virtual void setAlphaMultiplier(float alpha);

    pmGL::UniformData ud;
    pmGL::RenderOpts renderOpts;
    pmGL::VertexBuffer quad;
    bool useExternalTexture = false;
};

// A single-program pass: a concrete filter is nothing more than a fragment shader.
class TextureFilter : public BaseFilter {
public:
    TextureFilter() = default;
    ~TextureFilter() override;

    using BaseFilter::initialize;
    void finalize() override;
    virtual bool initialize(const std::string& fragmentSource);
    virtual void draw();

    pmGL::Program program;
    pmGL::VertexArray vertexArray;
};

// Copies a 2D or external texture, with a factor on alpha.
class NoFilter : public TextureFilter {
public:
    NoFilter() = default;
    ~NoFilter() override;

    bool initialize(bool external);
};

// Luminance with alpha forced to 1.
class Grey : public TextureFilter {
public:
    Grey() = default;
    ~Grey() override;
};

// The two-input form of a pass: its shader reads "uTexture1" and "uTexture2".
class DualTextureFilter : public BaseFilter {
public:
    DualTextureFilter() = default;
    ~DualTextureFilter() override;

    pmGL::Program program;
    pmGL::VertexArray vertexArray;
};

// Colour factor, mix colour and alpha factor, premultiplied, then a random
// shift of under half an 8-bit level per pixel against banding.
class RandomDithering : public TextureFilter {
public:
    RandomDithering() = default;
    ~RandomDithering() override;

    using TextureFilter::initialize;
    bool initialize() override;
    void finalize() override;
    void setColor(const glm::vec4& color);
    // Mixed in by its own alpha; unset, it reads as zero and changes nothing.
    void setMixColor(const glm::vec4& color);
};

// Ordered dithering by an 8 x 8 pattern addressed in window pixels, with an
// optional second texture giving the alpha. setTexture picks the program.
class PatternDithering : public TextureFilter {
public:
    PatternDithering() = default;
    ~PatternDithering() override;

    pmGL::Program* activeProgram = nullptr;
    pmGL::VertexArray* activeVertexArray = nullptr;
    pmGL::Program alphaProgram;
    pmGL::VertexArray alphaVertexArray;
    pmGL::Texture pattern;
};

// Links fragmentSource with the shared vertex stage, assembled once.
bool createFilterProgram(pmGL::Program& program, const std::string& fragmentSource);

bool createBaseFilter(BaseFilter& filter);
void deleteBaseFilter(BaseFilter& filter);
void setArea(BaseFilter& filter, const glm::vec2& pos0, const glm::vec2& pos1,
             const glm::vec2& tex0, const glm::vec2& tex1);
void setArea(BaseFilter& filter, const glm::vec2& pos0, const glm::vec2& pos1);
void setAlphaMultiplier(BaseFilter& filter, float alpha);
void setTexture(BaseFilter& filter, const pmGL::Texture& tex, glm::vec2 flip);
void setTexture(BaseFilter& filter, const pmGL::FrameBuffer& fb, glm::vec2 flip);
void setTexture(BaseFilter& filter, const pmGL::Texture& tex, float flip);
void setTexture(BaseFilter& filter, const pmGL::FrameBuffer& fb, float flip);

bool createTextureFilter(TextureFilter& filter, const std::string& fragmentSource);
void deleteTextureFilter(TextureFilter& filter);
void runTextureFilter(TextureFilter& filter);

bool createNoFilter(NoFilter& filter, bool external);
void deleteNoFilter(NoFilter& filter);
void runNoFilter(NoFilter& filter);

bool createGrey(Grey& filter);
void deleteGrey(Grey& filter);
void runGrey(Grey& filter);

// A null source is a programming error: it is logged and throws std::logic_error.
bool createDualTextureFilter(DualTextureFilter& filter, const char* fragShaderSrc);
void deleteDualTextureFilter(DualTextureFilter& filter);
// Sets both inputs and the flip; the sizes of the two may differ.
void setTexture(DualTextureFilter& filter, const pmGL::Texture& tex1, const pmGL::Texture& tex2,
                glm::vec2 flip);
void setTexture(DualTextureFilter& filter, const pmGL::FrameBuffer& fb1,
                const pmGL::FrameBuffer& fb2, glm::vec2 flip);
void setTexture(DualTextureFilter& filter, const pmGL::Texture& tex1, const pmGL::Texture& tex2,
                float flip);
void setTexture(DualTextureFilter& filter, const pmGL::FrameBuffer& fb1,
                const pmGL::FrameBuffer& fb2, float flip);
void runDualTextureFilter(DualTextureFilter& filter);

bool createDithering(PatternDithering& filter);
void deleteDithering(PatternDithering& filter);
// With an alpha texture the alpha variant draws next, without it the plain one.
void setTexture(PatternDithering& filter, const pmGL::Texture& colour, pmGL::Texture* alpha,
                glm::vec2 flip);
void setTexture(PatternDithering& filter, const pmGL::FrameBuffer& colour, pmGL::Texture* alpha,
                glm::vec2 flip);
void setColor(PatternDithering& filter, const glm::vec4& color);
void drawDithering(PatternDithering& filter);

// ---- Stylising passes. Each is one fragment shader on the full-screen quad;
// the parameters are uniforms kept in `ud` and sent when the pass runs.
// Calling order: create, setParameters if any, setTexture, run as often as
// wanted, delete.

// Sepia tone matrix, alpha forced to 1. Overwrites the target.
class Sepia : public TextureFilter {
public:
    Sepia() = default;
    ~Sepia() override;
};

// Contrast curve: pow(rgb, uPowerFactor) * uConstFactor, alpha kept. Made for
// a 2D or an external texture. Overwrites the target.
class ContrastFilter : public TextureFilter {
public:
    ContrastFilter() = default;
    ~ContrastFilter() override;
};

// Green and blue read further and further out along a barrel distortion of
// the position; red and alpha stay. Blends with the alpha blend.
class DistortionChroma : public TextureFilter {
public:
    DistortionChroma() = default;
    ~DistortionChroma() override;
};

// Green monochrome with a vignette and a grain that moves with uTime.
// Blends with the alpha blend.
class NightVision : public TextureFilter {
public:
    NightVision() = default;
    ~NightVision() override;
};

// An X per cell of uSize pixels in the cell's top-left colour, brightened by
// 1.4 (alpha too), on opaque black. Blends with the alpha blend.
class CrossStitching : public TextureFilter {
public:
    CrossStitching() = default;
    ~CrossStitching() override;
};

// Painting look: of the four overlapping squares around a pixel, the mean of
// the one with the least colour variance. The step is 1 / (uWidth, uHeight),
// which the caller must set. Overwrites the target.
class KuwaharaFilter : public TextureFilter {
public:
    KuwaharaFilter() = default;
    ~KuwaharaFilter() override;
};

// Black dots on white, larger where the picture is darker. The caller must
// set the cell width and aspect ratio. Overwrites the target.
class Halftone : public TextureFilter {
public:
    Halftone() = default;
    ~Halftone() override;
};

// Dark diagonal lines in window coordinates, more sets the darker the
// picture. Overwrites the target.
class CrossHatching : public TextureFilter {
public:
    CrossHatching() = default;
    ~CrossHatching() override;
};

bool createSepia(Sepia& filter);
void deleteSepia(Sepia& filter);
void runSepia(Sepia& filter);

// `external` selects the form that samples a GL_TEXTURE_EXTERNAL_OES texture.
bool createContrastFilter(ContrastFilter& filter, bool external);
void deleteContrastFilter(ContrastFilter& filter);
void runContrastFilter(ContrastFilter& filter);
void setParameters(ContrastFilter& filter, float constFactor, float powerFactor);

bool createDistortionChroma(DistortionChroma& filter);
void deleteDistortionChroma(DistortionChroma& filter);
void runDistortionChroma(DistortionChroma& filter);
void setParameters(DistortionChroma& filter, float maxDistort);

bool createNightVision(NightVision& filter);
void deleteNightVision(NightVision& filter);
void runNightVision(NightVision& filter);
// The grain is a function of time: write a new value before each run.
void setParameters(NightVision& filter, float time);

bool createCrossStitching(CrossStitching& filter);
void deleteCrossStitching(CrossStitching& filter);
void runCrossStitching(CrossStitching& filter);
void setParameters(CrossStitching& filter, float size);

bool createKuwaharaFilter(KuwaharaFilter& filter);
void deleteKuwaharaFilter(KuwaharaFilter& filter);
void runKuwaharaFilter(KuwaharaFilter& filter);
void setParameters(KuwaharaFilter& filter, int radius, float width, float height);

bool createHalftone(Halftone& filter);
void deleteHalftone(Halftone& filter);
void runHalftone(Halftone& filter);
void setParameters(Halftone& filter, float fractionWidthOfPixel, float aspectRatio);

bool createCrossHatching(CrossHatching& filter);
void deleteCrossHatching(CrossHatching& filter);
void runCrossHatching(CrossHatching& filter);

}  // namespace pmDraw

#endif
