// PentagonBokeh and CircleBokeh: lens blurs on linearised colour.
#include "draw/pmDrawFilterEffect.bokeh.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "draw/pmDrawFilterEffect.frameBuffer.h"
#include "pmDrawBokeh.h"
#include "pmGLSL.h"

namespace pmDraw {

using pmGL::FrameBuffer;
using pmGL::Texture;

namespace {

// +45 degrees in radians, as the line blurs use it.
constexpr float quarterPi = 0.7853982f;
// PentagonBokeh works at this width whatever the source's.
constexpr float pentagonWidth = 960.0f;
// CircleBokeh works at least at this width.
constexpr float circleMinWidth = 960.0f;

const char* const lineIndent = "\t\t\t";

// Declarations ahead of the generated sample line.
const char* const bokehHead = R"(#version 300 es
precision highp float;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
in vec2 vTexCoord;
out vec4 fragColor;
)";

// The average along the line, each sample weighted per channel by its own
// square, so that bright samples win over dark ones. No guard on a zero sum.
const char* const bokehTail = R"(
vec3 Bokeh(sampler2D tex0, vec2 centreUV, vec2 pixelOffset) {
    vec3 acc = vec3(0.0);
    vec3 div = vec3(0.0);
    for (int i = 0; i < stepCount; ++i) {
        vec2 texCoordOffset = vec2(gXOffsets[i], gYOffsets[i]) * pixelOffset;
        vec3 color = texture(tex0, centreUV + texCoordOffset).rgb;
        vec3 weight = pow(color, vec3(2.0));
        acc += color * weight;
        div += weight;
    }
    return acc / div;
}

void main() {
    fragColor = vec4(Bokeh(uTexture, vTexCoord, uPixelStep), 1.0);
}
)";

// Per-channel minimum of the two sheared blurs, alpha included.
const char* const darkenShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture1;
uniform sampler2D uTexture2;
out vec4 fragColor;
void main() {
    vec4 color1 = texture(uTexture1, vTexCoord);
    vec4 color2 = texture(uTexture2, vTexCoord);
    fragColor = min(color1, color2);
}
)";

const char* const circleHead = R"(#version 300 es
precision highp float;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
uniform float uRadius;
in vec2 vTexCoord;
out vec4 fragColor;
)";

// A golden-angle spiral whose radius grows with the distance from the centre
// (through the barrel distortion scaled by the texture's larger side); the
// average is weighted by the colour itself, then the gamma is put back.
const char* const circleMain = R"(
const float goldenAngle = 2.39996;
const float PI = 3.141592;

void main() {
    vec2 texSize = vec2(textureSize(uTexture, 0));
    vec2 direction = barrelDistort(vTexCoord, max(texSize.x, texSize.y));
    float radius = uRadius * length(direction) * 0.001;
    float R = PI * radius;
    float sampleCount = R * R;
    vec2 pixelStep = uPixelStep / PI;
    float theta = 0.0;
    vec3 acc = vec3(0.0);
    vec3 div = vec3(0.0);
    for (float i = 0.0; i < sampleCount; i += 1.0) {
        theta += goldenAngle;
        vec2 offset = sqrt(i) * vec2(cos(theta), sin(theta)) * pixelStep;
        vec3 color = texture(uTexture, vTexCoord + offset).rgb;
        acc += color * color;
        div += color;
    }
    vec3 col = acc / div;
    fragColor = vec4(pow(col, vec3(1.0 / 2.2)), 1.0);
}
)";

// The working size: the source's scaled by `scale`, each side truncated.
int scaledSide(int side, float scale) {
    return static_cast<int>(static_cast<float>(side) * scale);
}

void appendLine(std::string& text, const char* line) {
    text += lineIndent;
    text += line;
    text += '\n';
}

void appendArray(std::string& text, const char* declaration, const float* values, int count) {
    appendLine(text, declaration);
    char buffer[64];
    for (int i = 0; i < count; ++i) {
        std::snprintf(buffer, sizeof(buffer), "   %.5f", static_cast<double>(values[i]));
        std::string line = buffer;
        if (i != count - 1) line += ',';
        appendLine(text, line.c_str());
    }
    appendLine(text, ");");
}

bool buildLineProgram(pmGL::Program& program, float rotation, float radius) {
    return createFilterProgram(program, GenerateBokehCode(rotation, radius));
}

}  // namespace

std::string GenerateBokehOffsets(float rotation, float radius) {
    const glm::vec2 d = glm::vec2(std::cos(rotation), std::sin(rotation)) * radius;
    const int stepCount = static_cast<int>(3.0f * radius);
    std::vector<float> xs;
    std::vector<float> ys;
    for (int i = 0; i < stepCount; ++i) {
        // With one step this is 0 / 0: the line then prints as no number and
        // the shader does not compile, which the caller sees as a failure.
        const float t = static_cast<float>(i) / static_cast<float>(stepCount - 1);
        const glm::vec2 point = t * d + (1.0f - t) * (-d);
        xs.push_back(point.x);
        ys.push_back(point.y);
    }
    std::string text;
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "const int stepCount = %d;", stepCount);
    appendLine(text, buffer);
    appendArray(text, "const float gXOffsets[stepCount] = float[](", xs.data(), stepCount);
    appendArray(text, "const float gYOffsets[stepCount] = float[](", ys.data(), stepCount);
    return text;
}

std::string GenerateBokehCode(float rotation, float radius) {
    return bokehHead + GenerateBokehOffsets(rotation, radius) + bokehTail;
}

// ---- PentagonBokeh

PentagonBokeh::~PentagonBokeh() {
    for (pmGL::VertexArray& va : vertexArrays) pmGL::deleteVertexArray(va);
    for (pmGL::Program& program : programs) pmGL::deleteProgram(program);
}

bool createPentagonBokeh(PentagonBokeh& bokeh, float radius) {
    if (!buildLineProgram(bokeh.programs[0], 0.0f, radius)) return false;
    // The other three lines are of the same length; program 2 repeats
    // program 0 for its own vertex array.
    buildLineProgram(bokeh.programs[1], quarterPi, radius);
    buildLineProgram(bokeh.programs[2], 0.0f, radius);
    buildLineProgram(bokeh.programs[3], -quarterPi, radius);

    createContrastFilter(bokeh.contrast, false);
    createDualTextureFilter(bokeh.merge, darkenShader);
    pmGL::disableBlend(bokeh.merge.renderOpts.blend);

    createBaseFilter(bokeh);
    for (int k = 0; k < 4; ++k) {
        pmGL::createVertexArray(bokeh.vertexArrays[k], bokeh.quad, bokeh.programs[k]);
    }
    return true;
}

void deletePentagonBokeh(PentagonBokeh& bokeh) {
    for (FrameBuffer& fb : bokeh.buffers) pmGL::deleteFrameBuffer(fb);
    for (pmGL::VertexArray& va : bokeh.vertexArrays) pmGL::deleteVertexArray(va);
    for (pmGL::Program& program : bokeh.programs) pmGL::deleteProgram(program);
    deleteContrastFilter(bokeh.contrast);
    deleteDualTextureFilter(bokeh.merge);
    deleteBaseFilter(bokeh);
}

// The comparison is with the source's own size, not the working size, so only
// a source 960 wide keeps its frame buffers from one call to the next.
void setTexture(PentagonBokeh& bokeh, Texture& tex, glm::vec2 flip) {
    bokeh.source = &tex;
    bokeh.flip = flip;
    const FrameBuffer& first = bokeh.buffers[0];
    if (first.width == tex.width && first.height == tex.height) return;
    const float scale = pentagonWidth / static_cast<float>(tex.width);
    const int width = scaledSide(tex.width, scale);
    const int height = scaledSide(tex.height, scale);
    for (FrameBuffer& fb : bokeh.buffers) rebuildEffectBuffer(fb, width, height);
}

void setTexture(PentagonBokeh& bokeh, Texture& tex, float flip) {
    setTexture(bokeh, tex, glm::vec2(0.0f, flip));
}

namespace {

// One line blur from `input` into `output` with program k.
void runLinePass(PentagonBokeh& bokeh, int k, FrameBuffer& input, FrameBuffer& output) {
    pmGL::bindFrameBuffer(output);
    pmGL::useProgram(bokeh.programs[k]);
    bokeh.BaseFilter::setTexture(input, glm::vec2(0.0f, 0.0f));
    pmGL::useUniformData(bokeh.ud, bokeh.programs[k]);
    pmGL::bindTexture(bokeh.ud);
    pmGL::drawVertexArray(bokeh.vertexArrays[k], 1);
}

}  // namespace

void drawPentagonBokeh(PentagonBokeh& bokeh) {
    if (bokeh.merge.program.id == 0) {
        PM_LOGE("Call createPentagonBokeh() first.");
        return;
    }
    if (bokeh.source == nullptr) {
        PM_LOGE("no input texture.");
        return;
    }
    FrameBuffer* fbs = bokeh.buffers;

    // Binding 3 saves the caller's framebuffer and viewport; the passes below
    // move between the private buffers, all of one size, and unbinding 3 at
    // the end goes back to what the caller had bound.
    pmGL::bindFrameBuffer(fbs[3]);
    BaseFilter& contrast = bokeh.contrast;
    pmDraw::setTexture(contrast, *bokeh.source, bokeh.flip);
    runContrastFilter(bokeh.contrast);

    const bool blend = bokeh.renderOpts.blend.enabled;
    bokeh.renderOpts.blend.enabled = false;
    pmGL::useRenderOptions(bokeh.renderOpts);

    // Horizontal then +45 degrees into 0, horizontal then -45 degrees into 1.
    runLinePass(bokeh, 0, fbs[3], fbs[2]);
    runLinePass(bokeh, 1, fbs[2], fbs[0]);
    runLinePass(bokeh, 2, fbs[3], fbs[2]);
    runLinePass(bokeh, 3, fbs[2], fbs[1]);

    pmGL::unbindFrameBuffer(fbs[3]);
    if (bokeh.renderOpts.blend.enabled != blend) {
        bokeh.renderOpts.blend.enabled = blend;
        pmGL::useBlendOptions(bokeh.renderOpts.blend);
    }

    setTexture(bokeh.merge, fbs[0], fbs[1], glm::vec2(0.0f, 0.0f));
    runDualTextureFilter(bokeh.merge);
}

// ---- CircleBokeh

bool createCircleBokeh(CircleBokeh& bokeh, float radius) {
    if (!createContrastFilter(bokeh.contrast, false)) return false;
    // Factor 1: a pure linearisation, undone by the gamma of the last pass.
    setParameters(bokeh.contrast, 1.0f, 2.2f);
    createTextureFilter(bokeh.filter, std::string(circleHead) + pmGLSL::barrelDistort + circleMain);
    pmGL::setUniformData(bokeh.filter.ud, "uRadius", radius);
    pmGL::setBlendAlpha(bokeh.filter.renderOpts.blend);
    return true;
}

void deleteCircleBokeh(CircleBokeh& bokeh) {
    pmGL::deleteFrameBuffer(bokeh.buffer);
    deleteContrastFilter(bokeh.contrast);
    deleteTextureFilter(bokeh.filter);
}

// As with PentagonBokeh the comparison is with the source's own size: any
// source 960 wide or wider keeps its buffer, a narrower one rebuilds it.
void setTexture(CircleBokeh& bokeh, Texture& tex, glm::vec2 flip) {
    bokeh.source = &tex;
    bokeh.flip = flip;
    FrameBuffer& fb = bokeh.buffer;
    if (fb.width == tex.width && fb.height == tex.height) return;
    const float scale = std::max(1.0f, circleMinWidth / static_cast<float>(tex.width));
    rebuildEffectBuffer(fb, scaledSide(tex.width, scale), scaledSide(tex.height, scale));
}

void setTexture(CircleBokeh& bokeh, Texture& tex, float flip) {
    setTexture(bokeh, tex, glm::vec2(0.0f, flip));
}

void drawCircleBokeh(CircleBokeh& bokeh) {
    if (bokeh.filter.program.id == 0) {
        PM_LOGE("Call createCircleBokeh() first.");
        return;
    }
    if (bokeh.source == nullptr) {
        PM_LOGE("Call setTexture() first.");
        return;
    }
    const bool bound = pmGL::bindFrameBuffer(bokeh.buffer);
    BaseFilter& contrast = bokeh.contrast;
    pmDraw::setTexture(contrast, *bokeh.source, bokeh.flip);
    runContrastFilter(bokeh.contrast);
    if (bound) pmGL::unbindFrameBuffer(bokeh.buffer);
    BaseFilter& filter = bokeh.filter;
    pmDraw::setTexture(filter, bokeh.buffer, glm::vec2(0.0f, 0.0f));
    runTextureFilter(bokeh.filter);
}

}  // namespace pmDraw
