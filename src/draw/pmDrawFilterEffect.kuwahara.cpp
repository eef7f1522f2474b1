// KuwaharaFilter: a painting look. Of four overlapping squares of
// (r + 1) x (r + 1) samples around the pixel, the mean colour of the one with
// the smallest variance wins, which flattens areas and keeps edges.
#include "pmDraw.h"

namespace pmDraw {

namespace {

// The step comes from uWidth and uHeight, not from the texture: the caller
// chooses how coarse the painting is. The four squares share the centre
// sample. A strict comparison lets the earlier square win a tie; colours in
// [0, 1] always have a variance below the starting 100.0.
const char* const kuwaharaShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform int uRadius;
uniform float uWidth;
uniform float uHeight;
out vec4 fragColor;
void main() {
    vec2 texelStep = vec2(1.0 / uWidth, 1.0 / uHeight);
    float n = float((uRadius + 1) * (uRadius + 1));
    vec3 m[4];
    vec3 s[4];
    for (int k = 0; k < 4; ++k) {
        m[k] = vec3(0.0);
        s[k] = vec3(0.0);
    }
    vec3 c;
    for (int j = -uRadius; j <= 0; ++j) {
        for (int i = -uRadius; i <= 0; ++i) {
            c = texture(uTexture, vTexCoord + vec2(i, j) * texelStep).rgb;
            m[0] += c;
            s[0] += c * c;
        }
    }
    for (int j = -uRadius; j <= 0; ++j) {
        for (int i = 0; i <= uRadius; ++i) {
            c = texture(uTexture, vTexCoord + vec2(i, j) * texelStep).rgb;
            m[1] += c;
            s[1] += c * c;
        }
    }
    for (int j = 0; j <= uRadius; ++j) {
        for (int i = 0; i <= uRadius; ++i) {
            c = texture(uTexture, vTexCoord + vec2(i, j) * texelStep).rgb;
            m[2] += c;
            s[2] += c * c;
        }
    }
    for (int j = 0; j <= uRadius; ++j) {
        for (int i = -uRadius; i <= 0; ++i) {
            c = texture(uTexture, vTexCoord + vec2(i, j) * texelStep).rgb;
            m[3] += c;
            s[3] += c * c;
        }
    }
    float minSigma2 = 1e+2;
    for (int k = 0; k < 4; ++k) {
        m[k] /= n;
        s[k] = abs(s[k] / n - m[k] * m[k]);
        float sigma2 = s[k].r + s[k].g + s[k].b;
        if (sigma2 < minSigma2) {
            minSigma2 = sigma2;
            fragColor = vec4(m[k], 1.0);
        }
    }
}
)";

}  // namespace

KuwaharaFilter::~KuwaharaFilter() = default;

// No parameter has a default: until setParameters the uniforms keep GL's
// initial value of zero.
bool createKuwaharaFilter(KuwaharaFilter& filter) {
    const bool result = createTextureFilter(filter, kuwaharaShader);
    if (result) pmGL::disableBlend(filter.renderOpts.blend);
    return result;
}

void deleteKuwaharaFilter(KuwaharaFilter& filter) {
    deleteTextureFilter(filter);
}

void runKuwaharaFilter(KuwaharaFilter& filter) {
    runTextureFilter(filter);
}

void setParameters(KuwaharaFilter& filter, int radius, float width, float height) {
    pmGL::setUniformData(filter.ud, "uRadius", radius);
    pmGL::setUniformData(filter.ud, "uWidth", width);
    pmGL::setUniformData(filter.ud, "uHeight", height);
}

}  // namespace pmDraw
