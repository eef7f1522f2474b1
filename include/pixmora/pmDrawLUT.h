/**
 * @file pmDrawLUT.h
 * @brief LUTFilter: applies a three-dimensional colour table to a texture in one pass.
 *
 * The table of N steps is a strip texture N x N wide and N high: slice b (blue)
 * is the square whose left edge is at pixel b x N, red runs along x and green
 * along y within it. The shader interpolates red and green through the sampler
 * and blue itself, so the strip texture needs GL_LINEAR. It is the pmDraw pass
 * for colour grading; no filter object uses it. Every call needs a current GL
 * context.
 */
#ifndef PIXMORA_PMDRAWLUT_H
#define PIXMORA_PMDRAWLUT_H

#include "pmDraw.h"
#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmDraw {

// Calling order: initialize, setTexture for the input, setLUT, draw. Blend and
// area are those of the base class. The filter does not own the table.
class LUTFilter : public TextureFilter {
public:
    LUTFilter() = default;
    ~LUTFilter() override;

    using TextureFilter::initialize;
    // Builds the interpolating program; true when it linked.
    bool initialize() override;
    // Sets the table and "uMapSize", the cube root of its entry count. It may
    // be called again at any time with another table, of another size.
    void setLUT(const pmGL::Texture& lut);
    // Draws nothing and logs until a table is set.
    void draw() override;
};

}  // namespace pmDraw

#endif
