// DualTextureFilter: a pass with two inputs, "uTexture1" and "uTexture2", whose
// shader the owner supplies (the final mixes of the two-stage effects).
#include <stdexcept>

#include "pmDraw.h"

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

// The base destructor releases the quad; the program and the vertex array
// are this class's own. Deleting empty records is harmless.
DualTextureFilter::~DualTextureFilter() {
    pmGL::deleteVertexArray(vertexArray);
    pmGL::deleteProgram(program);
}

bool createDualTextureFilter(DualTextureFilter& filter, const char* fragShaderSrc) {
    PM_LOGE("createDualTextureFilter()");
    PM_ASSERT(fragShaderSrc);
    if (fragShaderSrc == nullptr) {
        // A string cannot be built from a null pointer: the caller's error.
        throw std::logic_error("basic_string: construction from null is not valid");
    }
    const bool result = createFilterProgram(filter.program, std::string(fragShaderSrc));
    if (result) {
        // A quad left from before (setArea) is kept and serves as well.
        createBaseFilter(filter);
        pmGL::createVertexArray(filter.vertexArray, filter.quad, filter.program);
    }
    PM_LOGE("createDualTextureFilter() will return %s", result ? "true" : "false");
    return result;
}

void deleteDualTextureFilter(DualTextureFilter& filter) {
    PM_LOGE("deleteDualTextureFilter()");
    pmGL::deleteVertexArray(filter.vertexArray);
    pmGL::deleteProgram(filter.program);
    deleteBaseFilter(filter);
    PM_LOGE("deleteDualTextureFilter() end.");
}

void setTexture(DualTextureFilter& filter, const Texture& tex1, const Texture& tex2,
                glm::vec2 flip) {
    pmGL::setUniformData(filter.ud, "uTexture1", tex1);
    pmGL::setUniformData(filter.ud, "uTexture2", tex2);
    pmGL::setUniformData(filter.ud, "uFlipTexCoord", flip);
}

void setTexture(DualTextureFilter& filter, const FrameBuffer& fb1, const FrameBuffer& fb2,
                glm::vec2 flip) {
    setTexture(filter, firstColorTexture(fb1), firstColorTexture(fb2), flip);
}

// The scalar flip acts on the vertical axis only.
void setTexture(DualTextureFilter& filter, const Texture& tex1, const Texture& tex2, float flip) {
    setTexture(filter, tex1, tex2, glm::vec2(0.0f, flip));
}

void setTexture(DualTextureFilter& filter, const FrameBuffer& fb1, const FrameBuffer& fb2,
                float flip) {
    setTexture(filter, firstColorTexture(fb1), firstColorTexture(fb2), glm::vec2(0.0f, flip));
}

void runDualTextureFilter(DualTextureFilter& filter) {
    if (filter.program.id == 0) {
        PM_LOGE("Call createDualTextureFilter() first.\n");
        return;
    }
    if (filter.ud.textures.count("uTexture1") == 0 || filter.ud.textures.count("uTexture2") == 0) {
        PM_LOGE("uTexture1 or uTexture2 has 0 count.\n");
        return;
    }
    pmGL::useRenderOptions(filter.renderOpts);
    pmGL::useProgram(filter.program);
    pmGL::useUniformData(filter.ud, filter.program);
    pmGL::bindTexture(filter.ud);
    pmGL::drawVertexArray(filter.vertexArray, 1);
}

}  // namespace pmDraw
