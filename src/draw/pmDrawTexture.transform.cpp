// Placement of a texture renderer in pixels of the bound viewport: a corner
// position, a size and a rotation around a pivot.
#include "pmDrawTexture.h"
#include "pmMath.h"

namespace pmDraw {

namespace {

// Window projection of the current viewport, then the turn about `pivot`:
// the quad is moved to `position` relative to the pivot, rotated about the z
// axis and moved back by the pivot.
glm::mat4 placementMatrix(const glm::vec2& position, float rotation, const glm::vec2& pivot) {
    const glm::ivec4 viewport = pmGL::getViewport();
    const glm::mat4 projection = pmMath::ortho(viewport.z, viewport.w, -1.0f, 1.0f);
    return projection * pmMath::translate(pivot) *
           pmMath::rotate(rotation, glm::vec3(0.0f, 0.0f, 1.0f)) *
           pmMath::translate(position - pivot);
}

}  // namespace

void setTransform(TextureRenderer& renderer, glm::vec2 position, glm::vec2 size, float rotation,
                  glm::vec2 pivot) {
    setTransform(renderer, size, placementMatrix(position, rotation, pivot));
}

void setTransform(NinePatchRenderer& renderer, glm::vec2 position, glm::vec2 size, float rotation,
                  glm::vec2 pivot) {
    setTransform(renderer, size, placementMatrix(position, rotation, pivot));
}

}  // namespace pmDraw
