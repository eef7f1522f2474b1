/**
 * @file pmDrawTexture.h
 * @brief Texture renderers of pmDraw: a texture drawn as a positioned quad.
 *
 * The quad goes into the bound framebuffer, as opposed to the filters, which
 * work on a whole picture. Three plain records share one set of free
 * functions: TextureRenderer (any fragment shader), NinePatchRenderer (a 4 x 4
 * grid whose borders keep their pixel size) and DFTexture (a quad masked and
 * outlined by a distance field). Every call needs a current GL context on the
 * calling thread.
 *
 * Vertex stage of the renderers: vTexCoord = aTexCoord, mirrored vertically by
 * "uFlipTexCoordY"; the position is aPosition * "uSize" taken through "uMVP".
 * The nine patch's vertices hold pixel positions already and have no uSize.
 * All fragment shaders write premultiplied colour, for the default blending.
 */
#ifndef PIXMORA_PMDRAWTEXTURE_H
#define PIXMORA_PMDRAWTEXTURE_H

#include <glm/glm.hpp>

#include <vector>

#include "pmDraw.h"
#include "pmExport.h"
#include "pmGL.h"
#include "pmMesh.h"

namespace PM_VISIBLE pmDraw {

// A textured quad with a fragment shader of the caller's choice. A program id
// of 0 means not built.
struct TextureRenderer {
    pmGL::UniformData uniforms;
    pmGL::RenderOpts renderOpts;
    pmGL::VertexBuffer vertexBuffer;
    pmGL::Program program;
    pmGL::VertexArray vertexArray;
};

// The members of TextureRenderer in the same places, so that its functions
// serve this record as well, plus the grid kept on the CPU, whose vertices
// change with the texture and the size.
struct NinePatchRenderer : TextureRenderer {
    pmGL::IndexedTriangleStripMesh<pmMesh::TexturingVertex> mesh;
    // Left and top border, in pixels of the texture.
    glm::vec2 startBorder = glm::vec2(0.0f);
    // Right and bottom border, in pixels of the texture.
    glm::vec2 endBorder = glm::vec2(0.0f);
};

// A TextureRenderer with the distance-field shader.
struct DFTexture : TextureRenderer {};

// A null source is a programming error: it is logged and throws std::logic_error.
bool createTextureRenderer(TextureRenderer& renderer, const char* fragShaderSrc);
// Copy: the sample, alpha times "uAlphaMultiplier", RGB times that alpha.
bool createSingleTextureCopyRenderer(TextureRenderer& renderer);
// Merge: the red channels of "uTexture1", "uTexture2", "uTexture3" become r, g
// and b; alpha is "uAlphaMultiplier"; RGB times that alpha.
bool createTripleTextureMergeRenderer(TextureRenderer& renderer);
void deleteTextureRenderer(TextureRenderer& renderer);
void runTextureRenderer(TextureRenderer& renderer);

// A null source is logged and the build goes on, and then fails.
bool createNinePatchRenderer(NinePatchRenderer& renderer, const char* fragShaderSrc);
// The same with the copy shader.
bool createNinePatchRenderer(NinePatchRenderer& renderer);
void deleteNinePatchRenderer(NinePatchRenderer& renderer);
void runNinePatchRenderer(NinePatchRenderer& renderer);

bool createDFTexture(DFTexture& renderer);
void deleteDFTexture(DFTexture& renderer);
void drawDFTexture(DFTexture& renderer);

void setSingleTexture(TextureRenderer& renderer, const pmGL::Texture& texture, float flipY);
// A framebuffer stands for its first colour texture.
void setSingleTexture(TextureRenderer& renderer, const pmGL::FrameBuffer& frameBuffer, float flipY);
// "uTexture1", "uTexture2", ... in the order given, then "uFlipTexCoordY".
void setMultipleTexture(TextureRenderer& renderer, const std::vector<pmGL::Texture>& textures,
                        float flipY);
// `start` and `end` are the pixel corners of the texture's stretchable middle.
// The borders reach the vertices at the next setTransform.
void setSingleTexture(NinePatchRenderer& renderer, const pmGL::Texture& texture,
                      const glm::vec2& start, const glm::vec2& end, float flipY);
void setFrontTexture(DFTexture& renderer, const pmGL::Texture& texture);
void setDistanceFieldTexture(DFTexture& renderer, const pmGL::Texture& texture);

void setAlphaMultiplier(TextureRenderer& renderer, float alpha);
// 0 leaves the picture, 1 mirrors it vertically, values between blend.
void setFlipTexCoordY(TextureRenderer& renderer, float flipY);
void setSoftEdgeWidth(DFTexture& renderer, float width);
// 0.0001 or less switches the outline off.
void setOutlineWidth(DFTexture& renderer, float width);
void setOutlineColor(DFTexture& renderer, const glm::vec4& color);

// The unit quad scaled by `size`, then taken through `mvp`.
void setTransform(TextureRenderer& renderer, const glm::vec2& size, const glm::mat4& mvp);
// Lays the grid out in pixels: borders keep their size, the middle stretches
// to fill `size`. Nothing clamps a size below the sum of the borders.
void setTransform(NinePatchRenderer& renderer, const glm::vec2& size, const glm::mat4& mvp);
// In pixels of the bound viewport: `position` is the quad's corner, `pivot`
// the point it turns around by `rotation` radians.
void setTransform(TextureRenderer& renderer, glm::vec2 position, glm::vec2 size, float rotation,
                  glm::vec2 pivot);
void setTransform(NinePatchRenderer& renderer, glm::vec2 position, glm::vec2 size, float rotation,
                  glm::vec2 pivot);
// The unit quad fills the target.
void resetTransform(TextureRenderer& renderer);

// Places the quad from `a` to `b` (clamped to the unit square) showing the
// texture from `c` to `d` (as given).
void setArea(TextureRenderer& renderer, const glm::vec2& a, const glm::vec2& b, const glm::vec2& c,
             const glm::vec2& d);
// Not supported by the nine patch: logs and does nothing.
void setArea(NinePatchRenderer& renderer, const glm::vec2& a, const glm::vec2& b,
             const glm::vec2& c, const glm::vec2& d);

}  // namespace pmDraw

#endif
