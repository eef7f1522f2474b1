// Shader sources of the texture renderers, shared by their source files. All
// are GLSL ES 3.00 with high float precision, and every fragment shader writes
// premultiplied colour, to match the default blend (one, one minus source alpha).
#ifndef PIXMORA_SRC_DRAW_PMDRAWTEXTURE_SHADERS_H
#define PIXMORA_SRC_DRAW_PMDRAWTEXTURE_SHADERS_H

namespace pmDraw {
namespace textureShaders {

// The unit quad is scaled by uSize and taken into clip space by uMVP.
// uFlipTexCoordY blends the texture coordinate with its vertical mirror.
const char* const rendererVertex = R"(#version 300 es
precision highp float;
in vec2 aPosition;
in vec2 aTexCoord;
uniform mat4 uMVP;
uniform vec2 uSize;
uniform float uFlipTexCoordY;
out vec2 vTexCoord;
out vec2 vPosition;
void main() {
    vTexCoord = aTexCoord * (1.0 - uFlipTexCoordY)
              + vec2(aTexCoord.x, 1.0 - aTexCoord.y) * uFlipTexCoordY;
    vPosition = aPosition * uSize;
    gl_Position = uMVP * vec4(vPosition, 0.0, 1.0);
}
)";

// The nine patch's vertices hold pixel positions already: no uSize.
const char* const ninePatchVertex = R"(#version 300 es
precision highp float;
in vec2 aPosition;
in vec2 aTexCoord;
uniform mat4 uMVP;
uniform float uFlipTexCoordY;
out vec2 vTexCoord;
void main() {
    vTexCoord = aTexCoord * (1.0 - uFlipTexCoordY)
              + vec2(aTexCoord.x, 1.0 - aTexCoord.y) * uFlipTexCoordY;
    gl_Position = uMVP * vec4(aPosition, 0.0, 1.0);
}
)";

// The sample, its alpha times uAlphaMultiplier, RGB times that alpha.
const char* const copyFragment = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform float uAlphaMultiplier;
out vec4 fragColor;
void main() {
    vec4 color = texture(uTexture, vTexCoord);
    color.a *= uAlphaMultiplier;
    color.rgb *= color.a;
    fragColor = color;
}
)";

// Three one-channel planes, read from their red channels, become r, g and b;
// alpha is uAlphaMultiplier.
const char* const mergeFragment = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture1;
uniform sampler2D uTexture2;
uniform sampler2D uTexture3;
uniform float uAlphaMultiplier;
out vec4 fragColor;
void main() {
    vec4 color = vec4(texture(uTexture1, vTexCoord).r, texture(uTexture2, vTexCoord).r,
                      texture(uTexture3, vTexCoord).r, uAlphaMultiplier);
    color.rgb *= color.a;
    fragColor = color;
}
)";

// The front picture masked by the distance m in the red channel of
// uVectorTexture: alpha fades in over [0, uSoftEdgeWidth], and an outline of
// uOutlineColor covers m up to uOutlineWidth, softened over the same width.
// uAlphaMultiplier is declared for the shared setter and not used.
const char* const distanceFieldFragment = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uFrontTexture;
uniform sampler2D uVectorTexture;
uniform float uAlphaMultiplier;
uniform float uSoftEdgeWidth;
uniform float uOutlineWidth;
uniform vec4 uOutlineColor;
out vec4 fragColor;
void main() {
    vec4 color = texture(uFrontTexture, vTexCoord);
    float m = texture(uVectorTexture, vTexCoord).r;
    if (uOutlineWidth > 0.0001 && m <= uOutlineWidth) {
        float f = smoothstep(uOutlineWidth, uOutlineWidth - uSoftEdgeWidth, m);
        color = mix(color, uOutlineColor, f);
    }
    color.a *= smoothstep(0.0, uSoftEdgeWidth, m);
    color.rgb *= color.a;
    fragColor = color;
}
)";

}  // namespace textureShaders
}  // namespace pmDraw

#endif
