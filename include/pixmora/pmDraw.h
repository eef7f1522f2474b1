// pmDraw: the GPU passes the filter objects are built from. A pass is a
// fragment shader plus a create/delete/run family of free functions; the
// classes keep the state, the free functions forward to one virtual slot.
// Every call needs a current GL context on the calling thread.
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

}  // namespace pmDraw

#endif
