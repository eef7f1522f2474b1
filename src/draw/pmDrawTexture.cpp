// TextureRenderer: a texture drawn as a positioned quad with any fragment
// shader, and the setters shared by all the texture renderers.
#include <stdexcept>
#include <string>

#include "pmDrawTexture.h"
#include "pmDrawTexture.shaders.h"

namespace pmDraw {

using pmGL::FrameBuffer;
using pmGL::Texture;

namespace {

// A framebuffer stands for its first colour texture; one that was never
// created stands for an empty texture.
const Texture& firstColorTexture(const FrameBuffer& fb) {
    static const Texture none;
    return fb.colorTex.empty() ? none : fb.colorTex[0];
}

}  // namespace

bool createTextureRenderer(TextureRenderer& renderer, const char* fragShaderSrc) {
    PM_ASSERT(fragShaderSrc);
    if (fragShaderSrc == nullptr) {
        // A string cannot be built from a null pointer: the caller's error.
        throw std::logic_error("basic_string: construction from null is not valid");
    }
    if (!pmGL::createProgram(renderer.program, std::string(textureShaders::rendererVertex),
                             std::string(fragShaderSrc))) {
        return false;
    }
    pmGL::TriangleStripMesh<pmMesh::TexturingVertex> mesh;
    pmMesh::createQuad(mesh, glm::vec2(0.0f, 0.0f), glm::vec2(1.0f, 1.0f), 0.0f,
                       glm::vec2(0.5f, 0.5f), glm::vec2(1.0f, 1.0f));
    pmGL::createVertexBuffer(renderer.vertexBuffer, mesh, GL_STATIC_DRAW);
    pmGL::createVertexArray(renderer.vertexArray, renderer.vertexBuffer, renderer.program);
    resetTransform(renderer);
    setFlipTexCoordY(renderer, 0.0f);
    setAlphaMultiplier(renderer, 1.0f);
    return true;
}

bool createSingleTextureCopyRenderer(TextureRenderer& renderer) {
    return createTextureRenderer(renderer, textureShaders::copyFragment);
}

bool createTripleTextureMergeRenderer(TextureRenderer& renderer) {
    return createTextureRenderer(renderer, textureShaders::mergeFragment);
}

void deleteTextureRenderer(TextureRenderer& renderer) {
    pmGL::deleteVertexArray(renderer.vertexArray);
    pmGL::deleteVertexBuffer(renderer.vertexBuffer);
    pmGL::deleteProgram(renderer.program);
}

// Draws into whatever framebuffer is bound; uniforms go to the program just
// made current.
void runTextureRenderer(TextureRenderer& renderer) {
    if (renderer.program.id == 0) {
        PM_LOGE("Call createTextureRenderer() first.");
        return;
    }
    pmGL::useRenderOptions(renderer.renderOpts);
    pmGL::useProgram(renderer.program);
    pmGL::useUniformData(renderer.uniforms, renderer.program);
    pmGL::bindTexture(renderer.uniforms);
    pmGL::drawVertexArray(renderer.vertexArray, 1);
}

void setSingleTexture(TextureRenderer& renderer, const Texture& texture, float flipY) {
    pmGL::setUniformData(renderer.uniforms, "uTexture", texture);
    pmGL::setUniformData(renderer.uniforms, "uFlipTexCoordY", flipY);
}

void setSingleTexture(TextureRenderer& renderer, const FrameBuffer& frameBuffer, float flipY) {
    setSingleTexture(renderer, firstColorTexture(frameBuffer), flipY);
}

void setMultipleTexture(TextureRenderer& renderer, const std::vector<Texture>& textures,
                        float flipY) {
    for (std::size_t i = 0; i < textures.size(); ++i) {
        pmGL::setUniformData(renderer.uniforms, "uTexture" + std::to_string(i + 1), textures[i]);
    }
    pmGL::setUniformData(renderer.uniforms, "uFlipTexCoordY", flipY);
}

void setAlphaMultiplier(TextureRenderer& renderer, float alpha) {
    pmGL::setUniformData(renderer.uniforms, "uAlphaMultiplier", alpha);
}

void setFlipTexCoordY(TextureRenderer& renderer, float flipY) {
    pmGL::setUniformData(renderer.uniforms, "uFlipTexCoordY", flipY);
}

void setTransform(TextureRenderer& renderer, const glm::vec2& size, const glm::mat4& mvp) {
    pmGL::setUniformData(renderer.uniforms, "uSize", size);
    pmGL::setUniformData(renderer.uniforms, "uMVP", mvp);
}

// The unit square onto the whole of clip space: x and y times 2 minus 1, and
// z negated as an orthographic projection from -1 to 1 does.
void resetTransform(TextureRenderer& renderer) {
    const glm::mat4 unitToClip(glm::vec4(2.0f, 0.0f, 0.0f, 0.0f), glm::vec4(0.0f, 2.0f, 0.0f, 0.0f),
                               glm::vec4(0.0f, 0.0f, -1.0f, 0.0f),
                               glm::vec4(-1.0f, -1.0f, 0.0f, 1.0f));
    setTransform(renderer, glm::vec2(1.0f, 1.0f), unitToClip);
}

// Positions are clamped to the unit square; the texture corners are kept, so a
// range outside [0, 1] reaches the sampler's wrap mode.
void setArea(TextureRenderer& renderer, const glm::vec2& a, const glm::vec2& b, const glm::vec2& c,
             const glm::vec2& d) {
    const glm::vec2 min = glm::clamp(a, 0.0f, 1.0f);
    const glm::vec2 max = glm::clamp(b, 0.0f, 1.0f);
    pmGL::TriangleStripMesh<pmMesh::TexturingVertex> mesh;
    pmMesh::createQuad(mesh, min, max, 0.0f, (c + d) * 0.5f, d - c);
    if (pmGL::isExist(renderer.vertexBuffer)) {
        pmGL::updateVertexBuffer(renderer.vertexBuffer, mesh);
    } else {
        pmGL::createVertexBuffer(renderer.vertexBuffer, mesh, GL_STATIC_DRAW);
    }
}

}  // namespace pmDraw
