// Grey: the luminance of the input, alpha forced to 1.
#include "pmDraw.h"

namespace pmDraw {

namespace {

const char* const greyShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
out vec4 fragColor;
void main() {
    vec4 color = texture(uTexture, vTexCoord);
    float mono = color.r * 0.2125 + color.g * 0.7154 + color.b * 0.0721;
    fragColor = vec4(mono, mono, mono, 1.0);
}
)";

}  // namespace

Grey::~Grey() = default;

bool createGrey(Grey& filter) {
    const bool result = createTextureFilter(filter, greyShader);
    // A full-frame effect overwrites the target rather than compositing over it.
    if (result) pmGL::disableBlend(filter.renderOpts.blend);
    return result;
}

void deleteGrey(Grey& filter) {
    deleteTextureFilter(filter);
}
void runGrey(Grey& filter) {
    runTextureFilter(filter);
}

}  // namespace pmDraw
