/**
 * @file pmDrawBokeh.h
 * @brief Lens-blur passes of pmDraw: PentagonBokeh and CircleBokeh.
 *
 * Both work on linearised colour, made by a ContrastFilter first, so that
 * bright points dominate the blur. No filter object uses them.
 *
 * PentagonBokeh: four directional line blurs at a width of 960, whose sample
 * lines are constants written into the shader text at creation; two sheared
 * blurs (horizontal then +45 degrees, horizontal then -45 degrees) are merged
 * by a per-channel minimum. The result stays linear.
 *
 * CircleBokeh: a disc of golden-angle samples whose radius grows from the
 * picture's centre to its corners, with the gamma put back.
 *
 * Calling order: create, setTexture, draw as often as wanted, delete. Every
 * call needs a current GL context on the calling thread.
 */
#ifndef PIXMORA_PMDRAWBOKEH_H
#define PIXMORA_PMDRAWBOKEH_H

#include <glm/glm.hpp>

#include "pmDraw.h"
#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmDraw {

class PentagonBokeh : public BaseFilter {
public:
    PentagonBokeh() = default;
    // Releases the four programs and vertex arrays; the base releases the quad.
    ~PentagonBokeh() override;

    // One line blur each: rotations 0, +45 degrees, 0 and -45 degrees.
    pmGL::Program programs[4];
    // Program k's binding of the base filter's quad.
    pmGL::VertexArray vertexArrays[4];
    // All of one size: 0 and 1 hold the two sheared blurs, 2 and 3 the
    // intermediates (3 the linearised source).
    pmGL::FrameBuffer buffers[4];
    // Borrowed: the caller keeps it alive until the draw is done. Null until
    // setTexture.
    pmGL::Texture* source = nullptr;
    glm::vec2 flip = glm::vec2(0.0f, 0.0f);
    ContrastFilter contrast;
    // Darken merge of frame buffers 0 and 1.
    DualTextureFilter merge;
};

struct CircleBokeh {
    pmGL::FrameBuffer buffer;
    // Borrowed, null until setTexture.
    pmGL::Texture* source = nullptr;
    glm::vec2 flip = glm::vec2(0.0f, 0.0f);
    ContrastFilter contrast;
    TextureFilter filter;
};

// `radius` is the blur radius in pixels of the 960-wide frame buffers; the
// line of each pass holds three samples a pixel of radius. A radius below 2/3
// gives no usable line and the creation fails.
bool createPentagonBokeh(PentagonBokeh& bokeh, float radius);
void deletePentagonBokeh(PentagonBokeh& bokeh);
// Rebuilds the frame buffers at a width of 960 unless frame buffer 0 already
// has the source's own size.
void setTexture(PentagonBokeh& bokeh, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(PentagonBokeh& bokeh, pmGL::Texture& tex, float flip);
// Draws into the framebuffer bound at the call.
void drawPentagonBokeh(PentagonBokeh& bokeh);

// `radius` is the shader's "uRadius": the disc radius grows with it and with
// the distance from the centre.
bool createCircleBokeh(CircleBokeh& bokeh, float radius);
void deleteCircleBokeh(CircleBokeh& bokeh);
// Rebuilds the frame buffer at a width of at least 960 unless it already has
// the source's own size.
void setTexture(CircleBokeh& bokeh, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(CircleBokeh& bokeh, pmGL::Texture& tex, float flip);
void drawCircleBokeh(CircleBokeh& bokeh);

}  // namespace pmDraw

#endif
