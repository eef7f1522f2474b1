// Halftone: black dots on white, one per cell, whose size grows as the
// cell's centre colour gets darker.
#include "pmDraw.h"

namespace pmDraw {

namespace {

// Cells are uFractionWidthOfPixel wide in texture units and as tall as the
// aspect ratio makes them square on the output; distances are measured with
// y scaled by the aspect ratio about the centre.
const char* const halftoneShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform float uFractionWidthOfPixel;
uniform float uAspectRatio;
out vec4 fragColor;
const vec3 W = vec3(0.2125, 0.7154, 0.0721);
void main() {
    vec2 sampleDivisor = vec2(uFractionWidthOfPixel, uFractionWidthOfPixel / uAspectRatio);
    vec2 samplePos = vTexCoord - mod(vTexCoord, sampleDivisor) + 0.5 * sampleDivisor;
    vec2 texCoordToUse = vec2(vTexCoord.x, vTexCoord.y * uAspectRatio + 0.5 - 0.5 * uAspectRatio);
    vec2 adjustedSamplePos = vec2(samplePos.x, samplePos.y * uAspectRatio + 0.5 - 0.5 * uAspectRatio);
    float distanceFromSamplePoint = distance(adjustedSamplePos, texCoordToUse);
    vec3 sampledColor = texture(uTexture, samplePos).rgb;
    float dotScaling = 1.0 - dot(sampledColor, W);
    float checkForPresenceWithinDot =
        1.0 - step(distanceFromSamplePoint, (uFractionWidthOfPixel * 0.5) * dotScaling);
    fragColor = vec4(vec3(checkForPresenceWithinDot), 1.0);
}
)";

}  // namespace

Halftone::~Halftone() = default;

// No parameter has a default: until setParameters the uniforms keep GL's
// initial value of zero.
bool createHalftone(Halftone& filter) {
    const bool result = createTextureFilter(filter, halftoneShader);
    if (result) pmGL::disableBlend(filter.renderOpts.blend);
    return result;
}

void deleteHalftone(Halftone& filter) {
    deleteTextureFilter(filter);
}

void runHalftone(Halftone& filter) {
    runTextureFilter(filter);
}

void setParameters(Halftone& filter, float fractionWidthOfPixel, float aspectRatio) {
    pmGL::setUniformData(filter.ud, "uFractionWidthOfPixel", fractionWidthOfPixel);
    pmGL::setUniformData(filter.ud, "uAspectRatio", aspectRatio);
}

}  // namespace pmDraw
