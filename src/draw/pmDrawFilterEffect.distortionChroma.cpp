// DistortionChroma: chromatic aberration. Green and blue are read displaced
// along a barrel distortion of the position, blue twice as far as green.
#include "pmDraw.h"
#include "pmGLSL.h"

namespace pmDraw {

namespace {

const char* const distortionHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform float uMaxDistort;
out vec4 fragColor;
)";

// The distorted position itself serves as the direction of the shift, so the
// shift grows towards the top right of the texture.
const char* const distortionMain = R"(
vec4 cromaticAberration(sampler2D tex, vec2 uv) {
    vec2 texSize = vec2(textureSize(tex, 0));
    vec2 direction = barrelDistort(uv, max(texSize.x, texSize.y) * uMaxDistort);
    vec2 off = 1.3333333333333333 * direction / texSize;
    vec4 color = texture(tex, uv);
    color.g = texture(tex, uv - off).g;
    color.b = texture(tex, uv - 2.0 * off).b;
    return color;
}
void main() {
    fragColor = cromaticAberration(uTexture, vTexCoord);
}
)";

}  // namespace

DistortionChroma::~DistortionChroma() = default;

bool createDistortionChroma(DistortionChroma& filter) {
    const bool result =
        createTextureFilter(filter, distortionHead + pmGLSL::barrelDistort + distortionMain);
    if (result) {
        setParameters(filter, 0.01f);
        pmGL::setBlendAlpha(filter.renderOpts.blend);
    }
    return result;
}

void deleteDistortionChroma(DistortionChroma& filter) {
    deleteTextureFilter(filter);
}

void runDistortionChroma(DistortionChroma& filter) {
    runTextureFilter(filter);
}

void setParameters(DistortionChroma& filter, float maxDistort) {
    pmGL::setUniformData(filter.ud, "uMaxDistort", maxDistort);
}

}  // namespace pmDraw
