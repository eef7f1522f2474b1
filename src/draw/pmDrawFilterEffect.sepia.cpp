// Sepia: a fixed colour matrix towards brown, alpha forced to 1.
#include "pmDraw.h"

namespace pmDraw {

namespace {

// The matrix can push a channel past 1; the RGBA8 target clamps it.
const char* const sepiaShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
out vec4 fragColor;
void main() {
    vec4 color = texture(uTexture, vTexCoord);
    fragColor.r = color.r * 0.393 + color.g * 0.769 + color.b * 0.189;
    fragColor.g = color.r * 0.349 + color.g * 0.686 + color.b * 0.168;
    fragColor.b = color.r * 0.272 + color.g * 0.534 + color.b * 0.131;
    fragColor.a = 1.0;
}
)";

}  // namespace

Sepia::~Sepia() = default;

bool createSepia(Sepia& filter) {
    const bool result = createTextureFilter(filter, sepiaShader);
    // A full-frame effect overwrites the target rather than compositing over it.
    if (result) pmGL::disableBlend(filter.renderOpts.blend);
    return result;
}

void deleteSepia(Sepia& filter) {
    deleteTextureFilter(filter);
}

void runSepia(Sepia& filter) {
    runTextureFilter(filter);
}

}  // namespace pmDraw
