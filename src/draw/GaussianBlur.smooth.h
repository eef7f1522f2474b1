// The smooth quality of CustomGaussianBlur, kept apart from its default
// passes, which it never touches.
#ifndef PIXMORA_SRC_DRAW_GAUSSIANBLUR_SMOOTH_H
#define PIXMORA_SRC_DRAW_GAUSSIANBLUR_SMOOTH_H

#include "GaussianBlur.h"

namespace pmDraw {

bool hasSmoothStill(const CustomGaussianBlur& context);
void deleteSmoothStill(CustomGaussianBlur& context);
// Pyramid, working Gaussian, then the B-spline stretch with colour, mix
// colour, alpha and dither into the caller's framebuffer.
void drawSmoothStill(CustomGaussianBlur& context, pmGL::Texture& input);

}  // namespace pmDraw

#endif
