// NightVision: green monochrome through an image intensifier, with a
// vignette and a grain driven by uTime.
#include "pmDraw.h"

namespace pmDraw {

namespace {

// The vignette's smoothstep has the computed length as its first edge and 1.0
// as its second; in the far corners of a wide picture the length passes 1.0
// and the edges come in reverse order. That is left as the GPU computes it.
const char* const nightVisionShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform float uTime;
out vec4 fragColor;
float hash(float n) {
    return fract(sin(n) * 43758.5453123);
}
void main() {
    vec2 texSize = vec2(textureSize(uTexture, 0));
    vec4 texColor = texture(uTexture, vTexCoord);
    vec2 u = vTexCoord * 2.0 - 1.0;
    vec2 n = u * vec2(texSize.x / texSize.y, 1.0);
    vec3 c = texColor.rgb;
    c += sin(hash(uTime)) * 0.01;
    c += hash((hash(n.x) + n.y) * uTime) * 0.5;
    c *= smoothstep(length(n * n * n * vec2(0.075, 0.4)), 1.0, 0.4);
    c *= 1.5;
    c = dot(c, vec3(0.2126, 0.7152, 0.0722)) * vec3(0.2, 1.5 - hash(uTime) * 0.1, 0.4);
    fragColor = vec4(c, texColor.a);
}
)";

}  // namespace

NightVision::~NightVision() = default;

bool createNightVision(NightVision& filter) {
    const bool result = createTextureFilter(filter, nightVisionShader);
    if (result) {
        setParameters(filter, 1000.0f);
        pmGL::setBlendAlpha(filter.renderOpts.blend);
    }
    return result;
}

void deleteNightVision(NightVision& filter) {
    deleteTextureFilter(filter);
}

void runNightVision(NightVision& filter) {
    runTextureFilter(filter);
}

void setParameters(NightVision& filter, float time) {
    pmGL::setUniformData(filter.ud, "uTime", time);
}

}  // namespace pmDraw
