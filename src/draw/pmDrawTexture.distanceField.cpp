// DFTexture: a quad masked, and optionally outlined, by a distance field.
#include "pmDrawTexture.h"
#include "pmDrawTexture.shaders.h"

namespace pmDraw {

// A soft edge of 1/16 of the field's range and no outline until asked.
bool createDFTexture(DFTexture& renderer) {
    if (!createTextureRenderer(renderer, textureShaders::distanceFieldFragment)) return false;
    setSoftEdgeWidth(renderer, 0.0625f);
    setOutlineWidth(renderer, 0.0f);
    setOutlineColor(renderer, glm::vec4(0.0f));
    return true;
}

void deleteDFTexture(DFTexture& renderer) {
    deleteTextureRenderer(renderer);
}

void drawDFTexture(DFTexture& renderer) {
    runTextureRenderer(renderer);
}

void setFrontTexture(DFTexture& renderer, const pmGL::Texture& texture) {
    pmGL::setUniformData(renderer.uniforms, "uFrontTexture", texture);
}

void setDistanceFieldTexture(DFTexture& renderer, const pmGL::Texture& texture) {
    pmGL::setUniformData(renderer.uniforms, "uVectorTexture", texture);
}

void setSoftEdgeWidth(DFTexture& renderer, float width) {
    pmGL::setUniformData(renderer.uniforms, "uSoftEdgeWidth", width);
}

void setOutlineWidth(DFTexture& renderer, float width) {
    pmGL::setUniformData(renderer.uniforms, "uOutlineWidth", width);
}

void setOutlineColor(DFTexture& renderer, const glm::vec4& color) {
    pmGL::setUniformData(renderer.uniforms, "uOutlineColor", color);
}

}  // namespace pmDraw
