// The shader generator of PentagonBokeh, kept inside the library.
#ifndef PIXMORA_SRC_DRAW_PMDRAWFILTEREFFECT_BOKEH_H
#define PIXMORA_SRC_DRAW_PMDRAWFILTEREFFECT_BOKEH_H

#include <string>

namespace pmDraw {

// The sample line of one pass as GLSL constants: "stepCount" and the arrays
// "gXOffsets" and "gYOffsets", 3 x radius points (truncated) in equal steps
// from -d to +d, d = (cos rotation, sin rotation) x radius, five decimals.
__attribute__((visibility("hidden"))) std::string GenerateBokehOffsets(float rotation,
                                                                       float radius);

// The whole fragment shader of one line blur: head, the sample line and the
// weighted average along it.
__attribute__((visibility("hidden"))) std::string GenerateBokehCode(float rotation, float radius);

}  // namespace pmDraw

#endif
