// Rendering one still picture through the library, shared by the commands
// that write image files.
#ifndef PIXMORA_TOOL_STILLRENDER_H
#define PIXMORA_TOOL_STILLRENDER_H

#include <vector>

#include "BlurLook.h"

// Draws a photo effect over top-row-first RGBA pixels on the tool's own
// context and reads the framebuffer back. With flip mode none the library
// samples the picture with its vertical axis inverted, which shows it upright
// in GL's bottom-up framebuffer: the rows read back come bottom row first.
std::vector<unsigned char> renderEffect(unsigned type, int flipMode,
                                        std::vector<unsigned char>& rgba, int width, int height);

// Blurs RGBA pixels and reads the result back through the library, bottom
// row first as GL keeps it.
std::vector<unsigned char> renderBlur(const BlurLook& look, int flipMode,
                                      std::vector<unsigned char>& rgba, int width, int height);

#endif
