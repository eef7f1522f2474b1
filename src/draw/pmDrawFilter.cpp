// BaseFilter and TextureFilter, the shared vertex stage, and the procedural
// shims through which the filter objects drive every pass.
#include "pmDraw.h"
#include "pmGLSL.h"
#include "pmMesh.h"

namespace pmDraw {

using pmGL::FrameBuffer;
using pmGL::Texture;

namespace {

// The quad is in clip space, so there is no matrix; uFlipTexCoord mirrors
// each axis where it is 1 and cross-fades for values in between.
const char* const vertexShaderBody = R"(
in vec2 aPosition;
in vec2 aTexCoord;
uniform vec2 uFlipTexCoord;
out vec2 vTexCoord;
void main() {
    vTexCoord = aTexCoord * (1.0 - uFlipTexCoord) + (1.0 - aTexCoord) * uFlipTexCoord;
    gl_Position = vec4(aPosition, 0.0, 1.0);
}
)";

// A framebuffer stands for its first colour texture; one that was never
// created stands for an empty texture, which the draw then reports.
const Texture& firstColorTexture(const FrameBuffer& fb) {
    static const Texture none;
    return fb.colorTex.empty() ? none : fb.colorTex[0];
}

}  // namespace

bool createFilterProgram(pmGL::Program& program, const std::string& fragmentSource) {
    static const std::string vertexShaderSrc = pmGLSL::defaultHeader + vertexShaderBody;
    return pmGL::createProgram(program, vertexShaderSrc, fragmentSource);
}

BaseFilter::~BaseFilter() {
    BaseFilter::finalize();
}

bool BaseFilter::initialize() {
    PM_LOGE("BaseFilter::initialize()");
    if (quad.id != 0) return false;
    pmGL::TriangleStripMesh<pmMesh::TexturingVertex> mesh;
    pmMesh::createQuad(mesh, glm::vec2(-1.0f, -1.0f), glm::vec2(1.0f, 1.0f), 0.0f,
                       glm::vec2(0.5f, 0.5f), glm::vec2(1.0f, 1.0f));
    pmGL::createVertexBuffer(quad, mesh, GL_STATIC_DRAW);
    PM_LOGE("BaseFilter::initialize() end.");
    return true;
}

void BaseFilter::finalize() {
    PM_LOGE("BaseFilter::finalize()");
    pmGL::deleteVertexBuffer(quad);
    PM_LOGE("BaseFilter::finalize() end.");
}

void BaseFilter::setTexture(const Texture& tex, glm::vec2 flip) {
    if (useExternalTexture) {
        PM_ASSERT(tex.opts.target == GL_TEXTURE_EXTERNAL_OES);
    } else {
        PM_ASSERT(tex.opts.target == GL_TEXTURE_2D);
    }
    pmGL::setUniformData(ud, "uTexture", tex);
    pmGL::setUniformData(ud, "uFlipTexCoord", flip);
    pmGL::setUniformData(
        ud, "uPixelStep",
        glm::vec2(1.0f / static_cast<float>(tex.width), 1.0f / static_cast<float>(tex.height)));
}

void BaseFilter::setTexture(const FrameBuffer& fb, glm::vec2 flip) {
    setTexture(firstColorTexture(fb), flip);
}

void BaseFilter::setTexture(const Texture& tex, float flip) {
    setTexture(tex, glm::vec2(0.0f, flip));
}

void BaseFilter::setTexture(const FrameBuffer& fb, float flip) {
    setTexture(firstColorTexture(fb), glm::vec2(0.0f, flip));
}

void BaseFilter::setArea(const glm::vec2& pos0, const glm::vec2& pos1, const glm::vec2& tex0,
                         const glm::vec2& tex1) {
    const glm::vec2 clip0 = glm::clamp(pos0, 0.0f, 1.0f) * 2.0f - 1.0f;
    const glm::vec2 clip1 = glm::clamp(pos1, 0.0f, 1.0f) * 2.0f - 1.0f;
    pmGL::TriangleStripMesh<pmMesh::TexturingVertex> mesh;
    pmMesh::createQuad(mesh, clip0, clip1, 0.0f, (tex0 + tex1) * 0.5f, tex1 - tex0);
    if (quad.id == 0) {
        pmGL::createVertexBuffer(quad, mesh, GL_STATIC_DRAW);
    } else {
        pmGL::updateVertexBuffer(quad, mesh);
    }
}

void BaseFilter::setArea(const glm::vec2& pos0, const glm::vec2& pos1) {
    setArea(pos0, pos1, pos0, pos1);
}

void BaseFilter::setAlphaMultiplier(float alpha) {
    pmGL::setUniformData(ud, "uAlphaMultiplier", alpha);
}

TextureFilter::~TextureFilter() {
    TextureFilter::finalize();
}

bool TextureFilter::initialize(const std::string& fragmentSource) {
    PM_LOGE("TextureFilter::initialize()");
    if (!createFilterProgram(program, fragmentSource)) {
        PM_LOGE("createFilterProgram failed.");
        return false;
    }
    if (!BaseFilter::initialize()) {
        PM_LOGE("___super::initialize() failed.");
        return false;
    }
    pmGL::createVertexArray(vertexArray, quad, program);
    PM_LOGE("TextureFilter::initialize() end.");
    return true;
}

void TextureFilter::finalize() {
    PM_LOGE("TextureFilter::finalize()");
    BaseFilter::finalize();
    pmGL::deleteVertexArray(vertexArray);
    pmGL::deleteProgram(program);
    PM_LOGE("TextureFilter::finalize() end.");
}

void TextureFilter::draw() {
    if (program.id == 0) {
        PM_LOGE("Call createTextureFilter() first.\n");
        return;
    }
    if (ud.textures.count("uTexture") == 0) {
        PM_LOGE("context.ud.texData.count() = 0.\n");
        return;
    }
    pmGL::useRenderOptions(renderOpts);
    pmGL::useProgram(program);
    pmGL::useUniformData(ud, program);
    pmGL::bindTexture(ud);
    pmGL::drawVertexArray(vertexArray, 1);
}

bool createBaseFilter(BaseFilter& filter) {
    return filter.initialize();
}
void deleteBaseFilter(BaseFilter& filter) {
    filter.finalize();
}

void setArea(BaseFilter& filter, const glm::vec2& pos0, const glm::vec2& pos1,
             const glm::vec2& tex0, const glm::vec2& tex1) {
    filter.setArea(pos0, pos1, tex0, tex1);
}

void setArea(BaseFilter& filter, const glm::vec2& pos0, const glm::vec2& pos1) {
    filter.setArea(pos0, pos1);
}

void setAlphaMultiplier(BaseFilter& filter, float alpha) {
    filter.setAlphaMultiplier(alpha);
}

void setTexture(BaseFilter& filter, const Texture& tex, glm::vec2 flip) {
    filter.setTexture(tex, flip);
}
void setTexture(BaseFilter& filter, const FrameBuffer& fb, glm::vec2 flip) {
    filter.setTexture(fb, flip);
}
void setTexture(BaseFilter& filter, const Texture& tex, float flip) {
    filter.setTexture(tex, flip);
}
void setTexture(BaseFilter& filter, const FrameBuffer& fb, float flip) {
    filter.setTexture(fb, flip);
}

bool createTextureFilter(TextureFilter& filter, const std::string& fragmentSource) {
    return filter.initialize(fragmentSource);
}
void deleteTextureFilter(TextureFilter& filter) {
    filter.finalize();
}
void runTextureFilter(TextureFilter& filter) {
    filter.draw();
}

}  // namespace pmDraw
