/**
 * @file pmGLSL.h
 * @brief Shader text (pmGLSL): GLSL ES 3.00 chunks that the passes splice together.
 *
 * GLSL ES has no include mechanism, so a shader is a plain concatenation of a
 * header chunk, further chunks and its main, handed to the program builders of
 * pmDraw. Only the two headers carry a version line; every other chunk starts
 * with a line break.
 */
#ifndef PIXMORA_PMGLSL_H
#define PIXMORA_PMGLSL_H

#include <string>

namespace pmGLSL {

// Defines TEXTURE_2D as the sampler type so one shader body serves plain 2D
// textures and external images alike.
static const std::string defaultHeader =
    "#version 300 es\n"
    "precision highp float;\n"
    "#define TEXTURE_2D sampler2D\n";

static const std::string EGLImageHeader =
    "#version 300 es\n"
    "#extension GL_OES_EGL_image_external_essl3 : require\n"
    "precision highp float;\n"
    "#define TEXTURE_2D samplerExternalOES\n";

// Clamps to [0, 1]; GLSL ES has no such built-in.
static const std::string saturate = R"(
float saturate(float x) { return clamp(x, 0.0, 1.0); }
vec3 saturate(vec3 x) { return clamp(x, 0.0, 1.0); }
)";

// One pseudo-random value in [0, 1) per coordinate. The dot product is folded
// into [0, pi) before the sine, so that large coordinates such as
// gl_FragCoord keep their precision on highp-only hardware.
static const std::string nrand = R"(
highp float nrand(highp vec2 uv) {
    highp float a = 12.9898;
    highp float b = 78.233;
    highp float c = 43758.5453;
    highp float pi = 3.141592653589793;
    highp float dt = dot(uv, vec2(a, b));
    highp float sn = mod(dt, pi);
    return fract(sin(sn) * c);
}
)";

// 2D transforms of a point. The matrices act on column vectors; `transform`
// scales about the pivot (the origin where none is given), rotates by the
// angle in radians about it, then translates.
static const std::string transform2d = R"(
mat2 rotate(float angle) {
    float s = sin(angle);
    float c = cos(angle);
    return mat2(c, s, -s, c);
}
mat2 xShear(float k) { return mat2(1.0, 0.0, k, 1.0); }
mat2 yShear(float k) { return mat2(1.0, k, 0.0, 1.0); }
vec2 transform(vec2 p, vec2 translation, vec2 scale, float angle, vec2 pivot) {
    return rotate(angle) * ((p - pivot) * scale) + pivot + translation;
}
vec2 transform(vec2 p, vec2 translation, float scale, float angle, vec2 pivot) {
    return transform(p, translation, vec2(scale), angle, pivot);
}
vec2 transform(vec2 p, vec2 translation, vec2 scale, float angle) {
    return transform(p, translation, scale, angle, vec2(0.0));
}
vec2 transform(vec2 p, vec2 translation, float scale, float angle) {
    return transform(p, translation, vec2(scale), angle, vec2(0.0));
}
// xy: translation, z: uniform scale, w: angle.
vec2 transform(vec2 p, vec4 t) {
    return transform(p, t.xy, vec2(t.z), t.w, vec2(0.0));
}
)";

// Quadratic Bezier shaping curve from (0, 0) to (1, 1) with the control point
// (a, b): t is solved from x in closed form, then y is evaluated. a = 0.5
// makes the x polynomial linear, hence the nudge.
static const std::string quadraticBezier = R"(
float quadraticBezier(float x, float a, float b) {
    float epsilon = 0.00001;
    a = clamp(a, 0.0, 1.0);
    b = clamp(b, 0.0, 1.0);
    if (a == 0.5) {
        a += epsilon;
    }
    float om2a = 1.0 - 2.0 * a;
    float t = (sqrt(a * a + om2a * x) - a) / om2a;
    return (1.0 - 2.0 * b) * (t * t) + (2.0 * b) * t;
}
)";

// Cubic Bezier shaping curve from (0, 0) to (1, 1) with the control points
// (a, b) and (c, d). t is found from x by Newton's method, starting at t = x;
// the caller provides constrain(value, low, high), which keeps t in [0, 1].
static const std::string cubicBezier = R"(
float cubicBezier(float x, float a, float b, float c, float d) {
    // Power-basis coefficients of x(t) and y(t).
    float xA = 1.0 - 3.0 * c + 3.0 * a;
    float xB = 3.0 * c - 6.0 * a;
    float xC = 3.0 * a;
    float yA = 1.0 - 3.0 * d + 3.0 * b;
    float yB = 3.0 * d - 6.0 * b;
    float yC = 3.0 * b;
    float t = x;
    for (int i = 0; i < 5; i++) {
        float currentX = ((xA * t + xB) * t + xC) * t;
        float slope = 1.0 / ((3.0 * xA * t + 2.0 * xB) * t + xC);
        t -= (currentX - x) * slope;
        t = constrain(t, 0.0, 1.0);
    }
    return ((yA * t + yB) * t + yC) * t;
}
)";

// A cubic Bezier shaping curve through (a, b) at t = 0.3 and (c, d) at t = 0.7:
// the inner control points are solved for those two points, and the curve is
// then read through cubicBezier. Clamping the control points keeps x(t)
// monotonic, which is why the curve passes only nearly through the points.
static const std::string cubicBezierNearlyThroughTwoPoints = R"(
float B0(float t) { return (1.0 - t) * (1.0 - t) * (1.0 - t); }
float B1(float t) { return 3.0 * t * (1.0 - t) * (1.0 - t); }
float B2(float t) { return 3.0 * t * t * (1.0 - t); }
float B3(float t) { return t * t * t; }
float findx(float t, float x0, float x1, float x2, float x3) {
    return x0 * B0(t) + x1 * B1(t) + x2 * B2(t) + x3 * B3(t);
}
float findy(float t, float y0, float y1, float y2, float y3) {
    return y0 * B0(t) + y1 * B1(t) + y2 * B2(t) + y3 * B3(t);
}
float cubicBezierNearlyThroughTwoPoints(float x, float a, float b, float c, float d) {
    float epsilon = 0.00001;
    a = clamp(a, epsilon, 1.0 - epsilon);
    b = clamp(b, epsilon, 1.0 - epsilon);
    float t1 = 0.3;
    float t2 = 0.7;
    // The end points (0, 0) and (1, 1) leave B1 and B2 terms to solve.
    float ccx = a - B3(t1);
    float ccy = b - B3(t1);
    float ffx = c - B3(t2);
    float ffy = d - B3(t2);
    float den = B2(t1) - B1(t1) * B2(t2) / B1(t2);
    float x2 = (ccx - ffx * B1(t1) / B1(t2)) / den;
    float y2 = (ccy - ffy * B1(t1) / B1(t2)) / den;
    float x1 = (ccx - x2 * B2(t1)) / B1(t1);
    float y1 = (ccy - y2 * B2(t1)) / B1(t1);
    x1 = clamp(x1, epsilon, 1.0 - epsilon);
    x2 = clamp(x2, epsilon, 1.0 - epsilon);
    return clamp(cubicBezier(x, x1, y1, x2, y2), 0.0, 1.0);
}
)";

// RGB to hue, saturation, brightness without branches: two conditional swaps
// order the channels; e keeps grey and black from dividing by zero.
static const std::string rgb2hsb = R"(
vec3 rgb2hsb(vec3 c) {
    vec4 K = vec4(0.0, -1.0 / 3.0, 2.0 / 3.0, -1.0);
    vec4 p = mix(vec4(c.bg, K.wz), vec4(c.gb, K.xy), step(c.b, c.g));
    vec4 q = mix(vec4(p.xyw, c.r), vec4(c.r, p.yzx), step(p.x, c.r));
    float d = q.x - min(q.w, q.y);
    float e = 1.0e-10;
    return vec3(abs(q.z + (q.w - q.y) / (6.0 * d + e)), d / (q.x + e), q.x);
}
)";

// Hue, saturation, brightness to RGB; the piecewise-linear hue ramp is eased
// with a smoothstep so that the hue wheel has no visible seams.
static const std::string hsb2rgb = R"(
vec3 hsb2rgb(vec3 c) {
    vec3 rgb = clamp(abs(mod(c.x * 6.0 + vec3(0.0, 4.0, 2.0), 6.0) - 3.0) - 1.0, 0.0, 1.0);
    rgb = rgb * rgb * (3.0 - 2.0 * rgb);
    return c.z * mix(vec3(1.0), rgb, c.y);
}
)";

// Further colour models, all with channels in [0, 1]. Hue is a fraction of a
// turn. YCbCr is full-range BT.601. The sRGB pair works per channel
// (linear2srgb, srgb2linear) and per colour (rgb2srgb, srgb2rgb). Yxy goes
// through the XYZ of colorLab (scaled to Y = 100 for white), which must be
// spliced before this chunk.
static const std::string colorConversions = R"(
vec3 hue2rgb(float hue) {
    float r = abs(hue * 6.0 - 3.0) - 1.0;
    float g = 2.0 - abs(hue * 6.0 - 2.0);
    float b = 2.0 - abs(hue * 6.0 - 4.0);
    return clamp(vec3(r, g, b), 0.0, 1.0);
}
vec3 hsv2rgb(vec3 hsv) {
    return ((hue2rgb(hsv.x) - 1.0) * hsv.y + 1.0) * hsv.z;
}
vec3 rgb2hsv(vec3 rgb) {
    float cMax = max(rgb.r, max(rgb.g, rgb.b));
    float cMin = min(rgb.r, min(rgb.g, rgb.b));
    float delta = cMax - cMin;
    float h = 0.0;
    if (delta > 0.0) {
        if (cMax == rgb.r) {
            h = mod((rgb.g - rgb.b) / delta, 6.0);
        } else if (cMax == rgb.g) {
            h = (rgb.b - rgb.r) / delta + 2.0;
        } else {
            h = (rgb.r - rgb.g) / delta + 4.0;
        }
    }
    float s = cMax > 0.0 ? delta / cMax : 0.0;
    return vec3(h / 6.0, s, cMax);
}
// The same model without branches, from hue, chroma and value.
vec3 rgb2hsv_2(vec3 rgb) {
    float epsilon = 1.0e-10;
    vec4 p = (rgb.g < rgb.b) ? vec4(rgb.bg, -1.0, 2.0 / 3.0) : vec4(rgb.gb, 0.0, -1.0 / 3.0);
    vec4 q = (rgb.r < p.x) ? vec4(p.xyw, rgb.r) : vec4(rgb.r, p.yzx);
    float chroma = q.x - min(q.w, q.y);
    float h = abs((q.w - q.y) / (6.0 * chroma + epsilon) + q.z);
    return vec3(h, chroma / (q.x + epsilon), q.x);
}
vec3 rgb2hsl(vec3 rgb) {
    float cMax = max(rgb.r, max(rgb.g, rgb.b));
    float cMin = min(rgb.r, min(rgb.g, rgb.b));
    float l = (cMax + cMin) * 0.5;
    float delta = cMax - cMin;
    float s = delta > 0.0 ? delta / (1.0 - abs(2.0 * l - 1.0)) : 0.0;
    return vec3(rgb2hsv(rgb).x, s, l);
}
vec3 hsl2rgb(vec3 hsl) {
    float chroma = (1.0 - abs(2.0 * hsl.z - 1.0)) * hsl.y;
    return (hue2rgb(hsl.x) - 0.5) * chroma + hsl.z;
}
vec3 rgb2ycbcr(vec3 rgb) {
    float y = dot(rgb, vec3(0.299, 0.587, 0.114));
    float cb = 0.5 + dot(rgb, vec3(-0.168736, -0.331264, 0.5));
    float cr = 0.5 + dot(rgb, vec3(0.5, -0.418688, -0.081312));
    return vec3(y, cb, cr);
}
vec3 ycbcr2rgb(vec3 ycc) {
    float cb = ycc.y - 0.5;
    float cr = ycc.z - 0.5;
    return vec3(ycc.x + 1.402 * cr, ycc.x - 0.344136 * cb - 0.714136 * cr, ycc.x + 1.772 * cb);
}
float linear2srgb(float c) {
    return c <= 0.0031308 ? 12.92 * c : 1.055 * pow(c, 1.0 / 2.4) - 0.055;
}
vec3 rgb2srgb(vec3 rgb) {
    return vec3(linear2srgb(rgb.r), linear2srgb(rgb.g), linear2srgb(rgb.b));
}
float srgb2linear(float c) {
    return c <= 0.04045 ? c / 12.92 : pow((c + 0.055) / 1.055, 2.4);
}
vec3 srgb2rgb(vec3 srgb) {
    return vec3(srgb2linear(srgb.r), srgb2linear(srgb.g), srgb2linear(srgb.b));
}
// Yxy holds the luminance Y first, then the chromaticity x, y.
vec3 xyz2yxy(vec3 xyz) {
    float sum = max(xyz.x + xyz.y + xyz.z, 1.0e-10);
    return vec3(xyz.y, xyz.x / sum, xyz.y / sum);
}
vec3 yxy2xyz(vec3 yxy) {
    float ratio = yxy.x / max(yxy.z, 1.0e-10);
    return vec3(ratio * yxy.y, yxy.x, ratio * (1.0 - yxy.y - yxy.z));
}
vec3 rgb2yxy(vec3 rgb) { return xyz2yxy(rgb2xyz(rgb)); }
vec3 yxy2rgb(vec3 yxy) { return xyz2rgb(yxy2xyz(yxy)); }
vec4 rgb2cmyk(vec3 rgb) {
    float k = 1.0 - max(rgb.r, max(rgb.g, rgb.b));
    vec3 cmy = (1.0 - rgb - k) / max(1.0 - k, 1.0e-10);
    return vec4(cmy, k);
}
vec3 cmyk2rgb(vec4 cmyk) {
    return (1.0 - cmyk.rgb) * (1.0 - cmyk.a);
}
)";

// sRGB (D65) to CIE XYZ and L*a*b*, and back. XYZ is scaled so that white has
// Y = 100; rgb2lab and lab2rgb carry L*a*b* squeezed into about [0, 1].
static const std::string colorLab = R"(
vec3 rgb2xyz(vec3 c) {
    vec3 v;
    v.r = c.r > 0.04045 ? pow((c.r + 0.055) / 1.055, 2.4) : c.r / 12.92;
    v.g = c.g > 0.04045 ? pow((c.g + 0.055) / 1.055, 2.4) : c.g / 12.92;
    v.b = c.b > 0.04045 ? pow((c.b + 0.055) / 1.055, 2.4) : c.b / 12.92;
    vec3 xyz = vec3(0.4124 * v.r + 0.3576 * v.g + 0.1805 * v.b,
                    0.2126 * v.r + 0.7152 * v.g + 0.0722 * v.b,
                    0.0193 * v.r + 0.1192 * v.g + 0.9505 * v.b);
    return xyz * 100.0;
}
vec3 xyz2lab(vec3 c) {
    vec3 n = c / vec3(95.047, 100.0, 108.883);
    vec3 v;
    v.x = n.x > 0.008856 ? pow(n.x, 1.0 / 3.0) : 7.787 * n.x + 16.0 / 116.0;
    v.y = n.y > 0.008856 ? pow(n.y, 1.0 / 3.0) : 7.787 * n.y + 16.0 / 116.0;
    v.z = n.z > 0.008856 ? pow(n.z, 1.0 / 3.0) : 7.787 * n.z + 16.0 / 116.0;
    return vec3(116.0 * v.y - 16.0, 500.0 * (v.x - v.y), 200.0 * (v.y - v.z));
}
vec3 rgb2lab(vec3 c) {
    vec3 lab = xyz2lab(rgb2xyz(c));
    return vec3(lab.x / 100.0, 0.5 + 0.5 * (lab.y / 127.0), 0.5 + 0.5 * (lab.z / 127.0));
}
vec3 lab2xyz(vec3 c) {
    float fy = (c.x + 16.0) / 116.0;
    float fx = c.y / 500.0 + fy;
    float fz = fy - c.z / 200.0;
    vec3 v;
    v.x = fx > 0.206897 ? fx * fx * fx : (fx - 16.0 / 116.0) / 7.787;
    v.y = fy > 0.206897 ? fy * fy * fy : (fy - 16.0 / 116.0) / 7.787;
    v.z = fz > 0.206897 ? fz * fz * fz : (fz - 16.0 / 116.0) / 7.787;
    return v * vec3(95.047, 100.0, 108.883);
}
vec3 xyz2rgb(vec3 c) {
    vec3 v = c / 100.0;
    vec3 r = vec3(3.2406 * v.x - 1.5372 * v.y - 0.4986 * v.z,
                  -0.9689 * v.x + 1.8758 * v.y + 0.0415 * v.z,
                  0.0557 * v.x - 0.2040 * v.y + 1.0570 * v.z);
    vec3 o;
    o.r = r.r > 0.0031308 ? 1.055 * pow(r.r, 1.0 / 2.4) - 0.055 : 12.92 * r.r;
    o.g = r.g > 0.0031308 ? 1.055 * pow(r.g, 1.0 / 2.4) - 0.055 : 12.92 * r.g;
    o.b = r.b > 0.0031308 ? 1.055 * pow(r.b, 1.0 / 2.4) - 0.055 : 12.92 * r.b;
    return o;
}
vec3 lab2rgb(vec3 c) {
    vec3 lab = vec3(100.0 * c.x, 2.0 * 127.0 * (c.y - 0.5), 2.0 * 127.0 * (c.z - 0.5));
    return xyz2rgb(lab2xyz(lab));
}
)";

// Colour look-up in a strip texture of mapSize slices of mapSize x mapSize
// texels laid side by side, blue choosing the slice, red the column within
// it and green the row. The head defines HIGH_QUALITY_COLOR_GRADING for the
// form that reads two slices and blends them along blue; otherwise one read
// of the nearest lower slice.
static const std::string colorGrading = R"(
#ifdef HIGH_QUALITY_COLOR_GRADING
vec3 colorGrading(vec3 color, sampler2D lookupTable, float mapSize) {
    float innerWidth = mapSize - 1.0;
    float sliceSize = 1.0 / mapSize;
    float slicePixelSize = sliceSize / mapSize;
    float sliceInnerSize = slicePixelSize * innerWidth;
    float zSlice0 = min(floor(color.z * innerWidth), innerWidth);
    float zSlice1 = min(zSlice0 + 1.0, innerWidth);
    // Red spans the centres of the first and last texel of a slice.
    float xOffset = slicePixelSize * 0.5 + color.x * sliceInnerSize;
    float s0 = xOffset + zSlice0 * sliceSize;
    float s1 = xOffset + zSlice1 * sliceSize;
    float yPixelSize = sliceSize;
    float yOffset = yPixelSize * 0.5 + color.y * (1.0 - yPixelSize);
    vec3 slice0Color = texture(lookupTable, vec2(s0, yOffset)).rgb;
    vec3 slice1Color = texture(lookupTable, vec2(s1, yOffset)).rgb;
    float zOffset = fract(color.z * innerWidth);
    return mix(slice0Color, slice1Color, zOffset);
}
#else
vec3 colorGrading(vec3 color, sampler2D lookupTable, float mapSize) {
    vec2 texSize = vec2(textureSize(lookupTable, 0));
    float maxColor = mapSize - 1.0;
    float halfColX = 0.5 / texSize.x;
    float halfColY = 0.5 / texSize.y;
    float threshold = maxColor / mapSize;
    float xOffset = halfColX + color.r * threshold / mapSize;
    float yOffset = halfColY + color.g * threshold;
    float cell = floor(color.b * maxColor);
    return texture(lookupTable, vec2(cell / mapSize + xOffset, yOffset)).rgb;
}
#endif
)";

// Anti-aliased shapes as coverage in [0, 1]. Every shape is full inside and
// falls to zero over `border` at its outline, inside the shape's extent, so
// border must be above zero. `line` is the segment from a to b with round
// ends, `line0` the same with flat ends; width is the full thickness.
static const std::string distanceFieldLine = R"(
float line(vec2 p, vec2 a, vec2 b, float width, float border) {
    vec2 pa = p - a;
    vec2 ba = b - a;
    float h = clamp(dot(pa, ba) / max(dot(ba, ba), 1.0e-10), 0.0, 1.0);
    float d = length(pa - ba * h);
    float halfWidth = width * 0.5;
    return 1.0 - smoothstep(halfWidth - border, halfWidth, d);
}
float line0(vec2 p, vec2 a, vec2 b, float width, float border) {
    vec2 ba = b - a;
    float len = length(ba);
    vec2 dir = ba / max(len, 1.0e-10);
    vec2 pa = p - a;
    float along = dot(pa, dir);
    float across = abs(dot(pa, vec2(-dir.y, dir.x)));
    float halfWidth = width * 0.5;
    float side = 1.0 - smoothstep(halfWidth - border, halfWidth, across);
    float ends = smoothstep(0.0, border, along) * (1.0 - smoothstep(len - border, len, along));
    return side * ends;
}
)";

// Axis-aligned rectangle given by its centre and size.
static const std::string distanceFieldRectangle = R"(
float rectangle(vec2 p, vec2 center, vec2 size, float border) {
    vec2 lo = center - size * 0.5;
    vec2 hi = center + size * 0.5;
    return smoothstep(lo.x, lo.x + border, p.x) * smoothstep(lo.y, lo.y + border, p.y) *
           (1.0 - smoothstep(hi.x - border, hi.x, p.x)) *
           (1.0 - smoothstep(hi.y - border, hi.y, p.y));
}
)";

// Rectangle given by its centre and size, with corners rounded to `radius`.
static const std::string distanceFieldRoundRect = R"(
float roundRect(vec2 p, vec2 center, vec2 size, float radius, float border) {
    vec2 q = abs(p - center) - size * 0.5 + radius;
    float d = length(max(q, 0.0)) + min(max(q.x, q.y), 0.0) - radius;
    return 1.0 - smoothstep(-border, 0.0, d);
}
)";

// Circle of radius 0.5 about (0.5, 0.5): it fills the unit square that p is
// measured in; transform2d places and sizes it.
static const std::string distanceFieldCircle = R"(
float circle(vec2 p, float border) {
    float d = length(p - vec2(0.5));
    return 1.0 - smoothstep(0.5 - border, 0.5, d);
}
)";

// Regular polygon with `edges` sides about (0.5, 0.5), at distance 0.5 from
// the centre to each side, one side facing -y.
static const std::string distanceFieldPolygon = R"(
const float PI = 3.14159265359;
const float TWO_PI = 6.28318530718;
float polygon(vec2 p, int edges, float border) {
    vec2 q = p - vec2(0.5);
    float a = atan(q.x, q.y) + PI;
    float sector = TWO_PI / float(edges);
    float d = cos(floor(0.5 + a / sector) * sector - a) * length(q);
    return 1.0 - smoothstep(0.5 - border, 0.5, d);
}
)";

// Gear about (0.5, 0.5): `teeth` teeth whose tips reach 0.5 from the centre
// and whose roots lie toothLength further in.
static const std::string distanceFieldGear = R"(
float gear(vec2 p, int teeth, float toothLength, float border) {
    vec2 q = p - vec2(0.5);
    float a = atan(q.y, q.x);
    float tooth = smoothstep(-0.5, 0.5, cos(a * float(teeth)));
    float radius = 0.5 - toothLength * (1.0 - tooth);
    return 1.0 - smoothstep(radius - border, radius, length(q));
}
)";

// sRGB transfer curve, exact piecewise form; alpha passes through.
static const std::string sRGBEncodings = R"(
vec3 sRGBToLinear(vec3 value) {
    vec3 lo = value / 12.92;
    vec3 hi = pow((max(value, 0.0) + 0.055) / 1.055, vec3(2.4));
    return mix(hi, lo, lessThanEqual(value, vec3(0.04045)));
}
vec4 sRGBToLinear(vec4 value) { return vec4(sRGBToLinear(value.rgb), value.a); }
vec3 linearTosRGB(vec3 value) {
    vec3 lo = value * 12.92;
    vec3 hi = 1.055 * pow(max(value, 0.0), vec3(1.0 / 2.4)) - 0.055;
    return mix(hi, lo, lessThanEqual(value, vec3(0.0031308)));
}
vec4 linearTosRGB(vec4 value) { return vec4(linearTosRGB(value.rgb), value.a); }
)";

// sRGB approximated by a plain gamma of 2.2; alpha passes through.
static const std::string sRGBEncodings_Simple = R"(
vec3 sRGBToLinear(vec3 value) { return pow(max(value, 0.0), vec3(2.2)); }
vec4 sRGBToLinear(vec4 value) { return vec4(sRGBToLinear(value.rgb), value.a); }
vec3 linearTosRGB(vec3 value) { return pow(max(value, 0.0), vec3(1.0 / 2.2)); }
vec4 linearTosRGB(vec4 value) { return vec4(linearTosRGB(value.rgb), value.a); }
)";

// HDR colour in 8-bit RGBA: a shared exponent in alpha, biased by 128.
static const std::string RGBEEncodings = R"(
vec4 RGBEToLinear(vec4 value) {
    return vec4(value.rgb * exp2(value.a * 255.0 - 128.0), 1.0);
}
vec4 linearToRGBE(vec4 value) {
    float maxComponent = max(max(value.r, value.g), value.b);
    float exponent = clamp(ceil(log2(max(maxComponent, 1.0e-30))), -128.0, 127.0);
    return vec4(value.rgb / exp2(exponent), (exponent + 128.0) / 255.0);
}
)";

// HDR colour in 8-bit RGBA: rgb times the multiplier in alpha times maxRange.
// The multiplier is rounded up to a whole 1/255 step, so that rgb stays within
// [0, 1], and is at least 1/255.
static const std::string RGBMEncodings = R"(
vec4 RGBMToLinear(vec4 value, float maxRange) {
    return vec4(value.rgb * value.a * maxRange, 1.0);
}
vec4 linearToRGBM(vec4 value, float maxRange) {
    float maxRGB = max(max(value.r, value.g), value.b);
    float m = clamp(maxRGB / maxRange, 0.0, 1.0);
    m = max(ceil(m * 255.0) / 255.0, 1.0 / 255.0);
    return vec4(value.rgb / (m * maxRange), m);
}
)";

// HDR colour in 8-bit RGBA: rgb divided by the value in alpha, scaled so that
// alpha = 1/255 stands for maxRange.
static const std::string RGBDEncodings = R"(
vec4 RGBDToLinear(vec4 value, float maxRange) {
    return vec4(value.rgb * ((maxRange / 255.0) / value.a), 1.0);
}
vec4 linearToRGBD(vec4 value, float maxRange) {
    float maxRGB = max(max(value.r, value.g), value.b);
    float d = max(maxRange / max(maxRGB, 1.0e-10), 1.0);
    d = clamp(floor(d) / 255.0, 1.0 / 255.0, 1.0);
    return vec4(value.rgb * (d * (255.0 / maxRange)), d);
}
)";

// HDR colour in 8-bit RGBA as LogLuv: chromaticity in x, y and the log of
// luminance split over z (whole part) and w (fraction).
static const std::string logLuvEncodings = R"(
const mat3 cLogLuvM =
    mat3(0.2209, 0.3390, 0.4184, 0.1138, 0.6780, 0.7319, 0.0102, 0.1130, 0.2969);
const mat3 cLogLuvInverseM =
    mat3(6.0014, -2.7008, -1.7996, -1.3320, 3.1029, -5.7721, 0.3008, -1.0882, 5.6268);
vec4 linearToLogLuv(vec4 value) {
    vec3 xpYXYZp = max(cLogLuvM * value.rgb, vec3(1.0e-6));
    vec4 result;
    result.xy = xpYXYZp.xy / xpYXYZp.z;
    float le = 2.0 * log2(xpYXYZp.y) + 127.0;
    result.w = fract(le);
    result.z = (le - result.w) / 255.0;
    return result;
}
vec4 logLuvToLinear(vec4 value) {
    float le = value.z * 255.0 + value.w;
    vec3 xpYXYZp;
    xpYXYZp.y = exp2((le - 127.0) / 2.0);
    xpYXYZp.z = xpYXYZp.y / value.y;
    xpYXYZp.x = value.x * xpYXYZp.z;
    return vec4(max(cLogLuvInverseM * xpYXYZp, 0.0), 1.0);
}
)";

// Pushes uv away from the centre (0.5, 0.5) in proportion to amt.
static const std::string radialDistort = R"(
vec2 radialDistort(vec2 uv, float amt) {
    return uv + 2.0 * (uv - 0.5) * amt;
}
)";

// Barrel distortion about the centre; uv in and out in the same space.
static const std::string barrelDistort = R"(
vec2 barrelDistort(vec2 uv, float dist) {
    uv = uv * 2.0 - 1.0;
    float r2 = dot(uv, uv);
    uv *= 1.0 + (1.0 + -0.25 * r2) * dist * r2;
    return uv * 0.5 + 0.5;
}
)";

// Tone mapping of linear HDR colour, chosen by one TONEMAP_* macro in the
// head. uBrightness is the exposure; uWhitePoint is the linear value that maps
// to white for the white-preserving Reinhard and the Uncharted curve.
// TONEMAP_LINEAR applies the exposure alone and stays linear; every other
// operator returns display values (gamma 2.2, built into the TONEMAP_FILMIC
// curve). inverseTonemapping undoes applyTonemapping within the range the
// curve reaches. With no macro both functions pass the colour through.
static const std::string toneMapping = R"(
uniform float uBrightness;
uniform float uWhitePoint;

float tonemapLuma(vec3 color) { return dot(color, vec3(0.2126, 0.7152, 0.0722)); }
vec3 tonemapGamma(vec3 color) { return pow(max(color, 0.0), vec3(1.0 / 2.2)); }
vec3 tonemapDegamma(vec3 color) { return pow(max(color, 0.0), vec3(2.2)); }
// The larger root of a x^2 + b x + c = 0, per channel; with a > 0 and c <= 0
// it is the root at or above zero.
vec3 tonemapRoot(vec3 a, vec3 b, vec3 c) {
    return (-b + sqrt(max(b * b - 4.0 * a * c, 0.0))) / (2.0 * a);
}
// The Uncharted curve with its shoulder, linear, toe and end constants.
const float tonemapA = 0.15;
const float tonemapB = 0.50;
const float tonemapC = 0.10;
const float tonemapD = 0.20;
const float tonemapE = 0.02;
const float tonemapF = 0.30;
vec3 tonemapUncharted(vec3 x) {
    return (x * (tonemapA * x + tonemapC * tonemapB) + tonemapD * tonemapE) /
               (x * (tonemapA * x + tonemapB) + tonemapD * tonemapF) -
           tonemapE / tonemapF;
}

vec3 applyTonemapping(vec3 color) {
#if defined(TONEMAP_SIMPLE)
    return tonemapGamma(color * uBrightness);
#elif defined(TONEMAP_LINEAR)
    return color * uBrightness;
#elif defined(TONEMAP_REINHARD)
    vec3 x = color * uBrightness;
    return tonemapGamma(x / (1.0 + x));
#elif defined(TONEMAP_REINHARD_LUMA)
    vec3 x = color * uBrightness;
    return tonemapGamma(x / (1.0 + tonemapLuma(x)));
#elif defined(TONEMAP_REINHARD_WHITE)
    vec3 x = color * uBrightness;
    float luma = tonemapLuma(x);
    return tonemapGamma(x * (1.0 + luma / (uWhitePoint * uWhitePoint)) / (1.0 + luma));
#elif defined(TONEMAP_FILMIC)
    vec3 x = max(color * uBrightness - 0.004, 0.0);
    return (x * (6.2 * x + 0.5)) / (x * (6.2 * x + 1.7) + 0.06);
#elif defined(TONEMAP_FILMIC_2015)
    vec3 x = color * uBrightness;
    return tonemapGamma(clamp((x * (2.51 * x + 0.03)) / (x * (2.43 * x + 0.59) + 0.14), 0.0, 1.0));
#elif defined(TONEMAP_PHOTOGRAPHIC)
    return tonemapGamma(1.0 - exp(-color * uBrightness));
#elif defined(TONEMAP_UNCHARTED)
    // The toe and shoulder are made for an exposure bias of 2.
    vec3 x = 2.0 * color * uBrightness;
    return tonemapGamma(tonemapUncharted(x) / tonemapUncharted(vec3(uWhitePoint)));
#else
    return color;
#endif
}

vec3 inverseTonemapping(vec3 color) {
#if defined(TONEMAP_SIMPLE)
    return tonemapDegamma(color) / uBrightness;
#elif defined(TONEMAP_LINEAR)
    return color / uBrightness;
#elif defined(TONEMAP_REINHARD)
    vec3 y = min(tonemapDegamma(color), 0.999999);
    return y / (1.0 - y) / uBrightness;
#elif defined(TONEMAP_REINHARD_LUMA)
    // The mapped luma m is L / (1 + L), so the scale 1 / (1 + L) is 1 - m.
    vec3 y = tonemapDegamma(color);
    return y / max(1.0 - tonemapLuma(y), 1.0e-6) / uBrightness;
#elif defined(TONEMAP_REINHARD_WHITE)
    // Solves m = L (1 + L / W^2) / (1 + L) for the luma L.
    vec3 y = tonemapDegamma(color);
    float mapped = max(tonemapLuma(y), 1.0e-10);
    float luma = tonemapRoot(vec3(1.0 / (uWhitePoint * uWhitePoint)), vec3(1.0 - mapped),
                             vec3(-mapped)).x;
    return y * (luma / mapped) / uBrightness;
#elif defined(TONEMAP_FILMIC)
    vec3 y = min(color, 0.999);
    return (tonemapRoot(6.2 * (1.0 - y), 0.5 - 1.7 * y, -0.06 * y) + 0.004) / uBrightness;
#elif defined(TONEMAP_FILMIC_2015)
    vec3 y = min(tonemapDegamma(color), 0.999);
    return tonemapRoot(2.51 - 2.43 * y, 0.03 - 0.59 * y, -0.14 * y) / uBrightness;
#elif defined(TONEMAP_PHOTOGRAPHIC)
    return -log(max(1.0 - tonemapDegamma(color), 1.0e-10)) / uBrightness;
#elif defined(TONEMAP_UNCHARTED)
    // Solves g = f(x) + E / F, a quadratic in x, then removes the bias of 2.
    vec3 g = tonemapDegamma(color) * tonemapUncharted(vec3(uWhitePoint)) + tonemapE / tonemapF;
    vec3 x = tonemapRoot(tonemapA * (1.0 - g), tonemapB * (tonemapC - g),
                         tonemapD * (tonemapE - g * tonemapF));
    return x * 0.5 / uBrightness;
#else
    return color;
#endif
}
)";

// Dithers by a random shift of up to half an 8-bit level either way, so that
// smooth gradients do not band. Needs nrand before it.
static const std::string ditheringV1 = R"(
vec3 applyDithering(vec3 rgb) {
    float rnd = nrand(gl_FragCoord.xy) - 0.5;
    rgb += rnd / 255.0;
    return rgb;
}
)";

// Dithers each channel by its own shift of up to 0.25 of an 8-bit level, green
// against red and blue, blended from + to - by nrand, which comes before it.
static const std::string ditheringV2 = R"(
vec3 applyDithering(vec3 rgb) {
    vec3 shift = vec3(0.25, -0.25, 0.25) / 255.0;
    return rgb + mix(shift, -shift, nrand(gl_FragCoord.xy));
}
)";

}  // namespace pmGLSL

#endif
