// CrossStitching: the picture as cross stitches, one X per cell of uSize
// pixels, on black.
#include "pmDraw.h"

namespace pmDraw {

namespace {

// remX == remY draws one diagonal of the cell, the second test the other.
// The cell's first pixel keeps its own position as the sample point, so it
// shows its own colour. The 1.4 brightens alpha as well.
const char* const crossStitchingShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform vec2 uPixelStep;
uniform float uSize;
out vec4 fragColor;
void main() {
    vec4 color = vec4(0.0, 0.0, 0.0, 1.0);
    vec2 cPos = vTexCoord * vec2(textureSize(uTexture, 0));
    vec2 tlPos = floor(cPos / uSize) * uSize;
    int remX = int(mod(cPos.x, uSize));
    int remY = int(mod(cPos.y, uSize));
    if (remX == 0 && remY == 0) {
        tlPos = cPos;
    }
    vec2 blPos = tlPos;
    blPos.y += (uSize - 1.0);
    if ((remX == remY) || ((int(cPos.x) - int(blPos.x)) == (int(blPos.y) - int(cPos.y)))) {
        color = texture(uTexture, tlPos * uPixelStep) * 1.4;
    }
    fragColor = color;
}
)";

}  // namespace

CrossStitching::~CrossStitching() = default;

bool createCrossStitching(CrossStitching& filter) {
    const bool result = createTextureFilter(filter, crossStitchingShader);
    if (result) {
        setParameters(filter, 6.0f);
        pmGL::setBlendAlpha(filter.renderOpts.blend);
    }
    return result;
}

void deleteCrossStitching(CrossStitching& filter) {
    deleteTextureFilter(filter);
}

void runCrossStitching(CrossStitching& filter) {
    runTextureFilter(filter);
}

void setParameters(CrossStitching& filter, float size) {
    pmGL::setUniformData(filter.ud, "uSize", size);
}

}  // namespace pmDraw
