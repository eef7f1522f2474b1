// NinePatchRenderer: a 4 x 4 grid of vertices whose outer rows and columns
// keep the texture's borders at their pixel size while the middle stretches.
#include "pmDrawTexture.h"
#include "pmDrawTexture.shaders.h"

namespace pmDraw {

namespace {

constexpr std::size_t GRID_LINES = 4;
constexpr std::size_t GRID_VERTICES = GRID_LINES * GRID_LINES;

}  // namespace

// The grid starts as the unit square in equal thirds with the whole texture
// on it; positions in pixels come with the first setTransform after a texture.
bool createNinePatchRenderer(NinePatchRenderer& renderer, const char* fragShaderSrc) {
    PM_ASSERT(fragShaderSrc);
    if (!pmGL::createProgram(renderer.program, textureShaders::ninePatchVertex, fragShaderSrc)) {
        return false;
    }
    pmMesh::createPlane(renderer.mesh, glm::vec2(0.0f, 0.0f), glm::vec2(1.0f, 1.0f),
                        glm::ivec2(3, 3), 0.0f, glm::vec2(0.5f, 0.5f), glm::vec2(1.0f, 1.0f));
    pmGL::createVertexBuffer(
        renderer.vertexBuffer, sizeof(pmMesh::TexturingVertex), renderer.mesh.vertices.size(),
        renderer.mesh.vertices.data(), sizeof(unsigned short), renderer.mesh.indices.size(),
        renderer.mesh.indices.data(), GL_STATIC_DRAW, GL_TRIANGLE_STRIP, renderer.mesh.attributes);
    pmGL::createVertexArray(renderer.vertexArray, renderer.vertexBuffer, renderer.program);
    resetTransform(renderer);
    setAlphaMultiplier(renderer, 1.0f);
    return true;
}

bool createNinePatchRenderer(NinePatchRenderer& renderer) {
    return createNinePatchRenderer(renderer, textureShaders::copyFragment);
}

void deleteNinePatchRenderer(NinePatchRenderer& renderer) {
    deleteTextureRenderer(renderer);
}

void runNinePatchRenderer(NinePatchRenderer& renderer) {
    runTextureRenderer(renderer);
}

// Texture grid lines: 0, start / size, end / size, 1 on each axis, written row
// by row. A grid of another size is reported and left untouched.
void setSingleTexture(NinePatchRenderer& context, const pmGL::Texture& texture,
                      const glm::vec2& start, const glm::vec2& end, float flipY) {
    pmGL::setUniformData(context.uniforms, "uTexture", texture);
    pmGL::setUniformData(context.uniforms, "uFlipTexCoordY", flipY);
    PM_ASSERT(context.mesh.vertices.size() == 16);
    const glm::vec2 textureSize(static_cast<float>(texture.width),
                                static_cast<float>(texture.height));
    if (context.mesh.vertices.size() == GRID_VERTICES) {
        const glm::vec2 lines[GRID_LINES] = {glm::vec2(0.0f), start / textureSize,
                                             end / textureSize, glm::vec2(1.0f)};
        for (std::size_t y = 0; y < GRID_LINES; ++y) {
            for (std::size_t x = 0; x < GRID_LINES; ++x) {
                context.mesh.vertices[y * GRID_LINES + x].texCoord =
                    glm::vec2(lines[x].x, lines[y].y);
            }
        }
    }
    context.startBorder = start;
    context.endBorder = textureSize - end;
}

// Position grid lines: 0, startBorder, size - endBorder, size on each axis.
// Nothing clamps a size below the sum of the borders: the grid folds over.
void setTransform(NinePatchRenderer& context, const glm::vec2& size, const glm::mat4& mvp) {
    pmGL::setUniformData(context.uniforms, "uMVP", mvp);
    PM_ASSERT(context.mesh.vertices.size() == 16);
    if (context.mesh.vertices.size() != GRID_VERTICES) return;
    const glm::vec2 lines[GRID_LINES] = {glm::vec2(0.0f), context.startBorder,
                                         size - context.endBorder, size};
    for (std::size_t y = 0; y < GRID_LINES; ++y) {
        for (std::size_t x = 0; x < GRID_LINES; ++x) {
            context.mesh.vertices[y * GRID_LINES + x].position =
                glm::vec3(lines[x].x, lines[y].y, 0.0f);
        }
    }
    pmGL::updateVertexBuffer(context.vertexBuffer, sizeof(pmMesh::TexturingVertex),
                             context.mesh.vertices.size(), context.mesh.vertices.data());
}

void setArea(NinePatchRenderer&, const glm::vec2&, const glm::vec2&, const glm::vec2&,
             const glm::vec2&) {
    PM_LOGE("Not supported.");
}

}  // namespace pmDraw
