// Shader text of the smooth quality's stretch and dither, shared by the
// still and the video blur's output passes.
#include "SmoothGaussianBlur.h"

namespace pmDraw {

// Four bilinear reads placed so that their weights give the cubic B-spline
// of the 4 x 4 texels around the point: smooth to the second derivative,
// so the working grid leaves no kinks in a gradient.
const char* const bsplineSampling = R"(
vec4 bsplineTexture(sampler2D tex, vec2 uv, vec2 texelSize) {
    vec2 position = uv / texelSize - 0.5;
    vec2 index = floor(position);
    vec2 f = position - index;
    vec2 f2 = f * f;
    vec2 f3 = f2 * f;
    vec2 w0 = (1.0 - 3.0 * f + 3.0 * f2 - f3) / 6.0;
    vec2 w1 = (4.0 - 6.0 * f2 + 3.0 * f3) / 6.0;
    vec2 w2 = (1.0 + 3.0 * f + 3.0 * f2 - 3.0 * f3) / 6.0;
    vec2 w3 = f3 / 6.0;
    vec2 g0 = w0 + w1;
    vec2 g1 = w2 + w3;
    vec2 h0 = (index - 0.5 + w1 / g0) * texelSize;
    vec2 h1 = (index + 1.5 + w3 / g1) * texelSize;
    return g0.y * (g0.x * texture(tex, h0) + g1.x * texture(tex, vec2(h1.x, h0.y))) +
           g1.y * (g0.x * texture(tex, vec2(h0.x, h1.y)) + g1.x * texture(tex, h1));
}
)";

// Noise of half an 8-bit level each way, the amplitude of the default
// quality's dither, from an integer hash of the pixel: no sine.
const char* const smoothDithering = R"(
vec3 applySmoothDithering(vec3 rgb) {
    highp uvec2 v = uvec2(gl_FragCoord.xy) * uvec2(1664525u, 1013904223u) + uvec2(1013904223u, 1664525u);
    v.x += v.y * 1664525u;
    v.y += v.x * 1664525u;
    v ^= v >> 16u;
    v.x += v.y * 1664525u;
    highp float noise = float(v.x >> 8u) * (1.0 / 16777216.0) - 0.5;
    return rgb + noise / 255.0;
}
)";

}  // namespace pmDraw
