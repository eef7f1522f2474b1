// CrossHatching: the picture with dark diagonal lines drawn over it, one more
// set of lines for each threshold its brightness falls below.
#include "pmDraw.h"

namespace pmDraw {

namespace {

// The brightness is the length of rgb, up to sqrt(3), so white gets no line
// and mid-grey only the first set. gl_FragCoord lies on pixel centres, so the
// sums and differences of x and y are whole numbers and the exact
// comparisons hold on every tenth diagonal.
const char* const crossHatchingShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
out vec4 fragColor;
void main() {
    vec4 color = texture(uTexture, vTexCoord);
    float lum = length(color.rgb);
    fragColor = color;
    if (lum < 1.00) {
        if (mod(gl_FragCoord.x + gl_FragCoord.y, 10.0) == 0.0) {
            fragColor = vec4(0.1, 0.1, 0.1, 1.0);
        }
    }
    if (lum < 0.75) {
        if (mod(gl_FragCoord.x - gl_FragCoord.y, 10.0) == 0.0) {
            fragColor = vec4(0.1, 0.1, 0.1, 1.0);
        }
    }
    if (lum < 0.50) {
        if (mod(gl_FragCoord.x + gl_FragCoord.y - 5.0, 10.0) == 0.0) {
            fragColor = vec4(0.1, 0.1, 0.1, 1.0);
        }
    }
    if (lum < 0.3) {
        if (mod(gl_FragCoord.x - gl_FragCoord.y - 5.0, 10.0) == 0.0) {
            fragColor = vec4(0.1, 0.1, 0.1, 1.0);
        }
    }
}
)";

}  // namespace

CrossHatching::~CrossHatching() = default;

bool createCrossHatching(CrossHatching& filter) {
    const bool result = createTextureFilter(filter, crossHatchingShader);
    if (result) pmGL::disableBlend(filter.renderOpts.blend);
    return result;
}

void deleteCrossHatching(CrossHatching& filter) {
    deleteTextureFilter(filter);
}

void runCrossHatching(CrossHatching& filter) {
    runTextureFilter(filter);
}

}  // namespace pmDraw
