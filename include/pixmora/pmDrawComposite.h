/**
 * @file pmDrawComposite.h
 * @brief Composite stylising passes of pmDraw: bloom and the cartoon looks.
 *
 * Each joins two passes through a private framebuffer (a Gaussian blur held by
 * value and a blend for Bloom and Cartoonify, a contrast curve and a disc blur
 * for Cartoon) and draws its last pass into the framebuffer bound at the call.
 * Every call needs a current GL context on the calling thread.
 */
#ifndef PIXMORA_PMDRAWCOMPOSITE_H
#define PIXMORA_PMDRAWCOMPOSITE_H

#include "GaussianBlur.h"
#include "pmDraw.h"

namespace PM_VISIBLE pmDraw {

// The screen blend of the picture and its Gaussian blur.
struct Bloom {
    GaussianBlur blur;
    DualTextureFilter screen;
    // The blur's output, at the source's size.
    pmGL::FrameBuffer buffer;
};

// Contrast curve into a buffer at least 1920 wide, then a golden-angle disc
// whose radius grows with the brightness of the pixel, weighted by colour.
struct Cartoon {
    pmGL::FrameBuffer buffer;
    // Borrowed: the caller keeps it alive until the draw is done. Null until
    // setTexture.
    pmGL::Texture* source = nullptr;
    glm::vec2 flip = glm::vec2(0.0f, 0.0f);
    ContrastFilter contrast;
    TextureFilter cartoon;
};

// A blur at a width of 480, darken-blended with the picture, lightness
// quantised into soft bands.
struct Cartoonify {
    pmGL::FrameBuffer buffer;
    // Borrowed, as in Cartoon.
    pmGL::Texture* source = nullptr;
    glm::vec2 flip = glm::vec2(0.0f, 0.0f);
    GaussianBlur blur;
    DualTextureFilter blend;
};

bool createBloom(Bloom& bloom, int kernelSize);
void deleteBloom(Bloom& bloom);
// Resizes the buffer to the source if needed and feeds both passes; the flip
// acts on the final blend only.
void setTexture(Bloom& bloom, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(Bloom& bloom, pmGL::Texture& tex, float flip);
void setArea(Bloom& bloom, const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
             const glm::vec2& tex1);
void drawBloom(Bloom& bloom);

bool createCartoon(Cartoon& cartoon);
void deleteCartoon(Cartoon& cartoon);
// Stores the source and flip; the buffer is rebuilt unless it already has the
// source's size, which a source narrower than 1920 never has.
void setTexture(Cartoon& cartoon, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(Cartoon& cartoon, pmGL::Texture& tex, float flip);
void drawCartoon(Cartoon& cartoon);

bool createCartoonify(Cartoonify& cartoonify);
// Leaves the buffer alone: the next setTexture or the end of the context
// disposes of it.
void deleteCartoonify(Cartoonify& cartoonify);
// As for Cartoon, with a buffer always 480 wide.
void setTexture(Cartoonify& cartoonify, pmGL::Texture& tex, glm::vec2 flip);
void setTexture(Cartoonify& cartoonify, pmGL::Texture& tex, float flip);
void drawCartoonify(Cartoonify& cartoonify);

}  // namespace pmDraw

#endif
