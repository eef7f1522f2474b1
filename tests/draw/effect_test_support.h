// Helpers of the stylising effect tests: pictures kept as GL stores them
// (bottom row first), a CPU sampler that reads them as the software renderer
// does, and comparison of what a pass drew with a CPU result.
#ifndef PIXMORA_TESTS_EFFECT_TEST_SUPPORT_H
#define PIXMORA_TESTS_EFFECT_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "pmGL.h"

namespace effecttest {

// 8-bit RGBA pixels, bottom row first, as a texture holds them and as
// readTarget returns them.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgba;

    // Channel c at (x, y), clamped to the edge, in 0..255.
    int at(int x, int y, int c) const {
        x = std::min(std::max(x, 0), width - 1);
        y = std::min(std::max(y, 0), height - 1);
        return rgba[(static_cast<size_t>(y) * width + x) * 4 + c];
    }
    // Channel c at (x, y) in 0..1.
    float unit(int x, int y, int c) const { return at(x, y, c) / 255.0f; }
};

// Random pixels, alpha included.
inline Picture makePicture(int width, int height, unsigned seed) {
    Picture p;
    p.width = width;
    p.height = height;
    p.rgba = makeTestPixels(width, height, 4, seed);
    return p;
}

inline Picture constantPicture(int width, int height, uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
    Picture p;
    p.width = width;
    p.height = height;
    p.rgba.resize(static_cast<size_t>(width) * height * 4);
    for (size_t i = 0; i < p.rgba.size(); i += 4) {
        p.rgba[i] = r;
        p.rgba[i + 1] = g;
        p.rgba[i + 2] = b;
        p.rgba[i + 3] = a;
    }
    return p;
}

// A texture of the picture, with linear or nearest filters, clamped to edge.
inline pmGL::Texture upload(Picture& p, bool nearest) {
    pmGL::Texture tex;
    pmGL::TextureOpts opts;
    if (nearest) {
        opts.minFilter = GL_NEAREST;
        opts.magFilter = GL_NEAREST;
    }
    pmUtil::ImageData<unsigned char> image(p.width, p.height, 4, p.rgba.data());
    pmGL::createTexture(tex, image, opts);
    return tex;
}

// GL_LINEAR with clamp to edge at a texture coordinate in [0, 1], channel c,
// in 0..255, as the software renderer filters 8-bit textures: the weight
// rounded to 1/256 and each blend done in 8-bit fixed point.
inline float bilinear(const Picture& p, float s, float t, int c) {
    const float xf = s * p.width - 0.5f, yf = t * p.height - 0.5f;
    const int x0 = static_cast<int>(std::floor(xf)), y0 = static_cast<int>(std::floor(yf));
    auto lerp = [](int a, int b, float w) {
        const int weight = static_cast<int>(std::round(w * 256.0f));
        return a + (((b - a) * weight + 128) >> 8);
    };
    const int bottom = lerp(p.at(x0, y0, c), p.at(x0 + 1, y0, c), xf - x0);
    const int top = lerp(p.at(x0, y0 + 1, c), p.at(x0 + 1, y0 + 1, c), xf - x0);
    return static_cast<float>(lerp(bottom, top, yf - y0));
}

inline float bilinearUnit(const Picture& p, float s, float t, int c) {
    return bilinear(p, s, t, c) / 255.0f;
}

// A value in [0, 1] as the RGBA8 target stores it.
inline int toByte(float v) {
    if (std::isnan(v)) return 0;
    return static_cast<int>(std::lround(std::min(std::max(v, 0.0f), 1.0f) * 255.0f));
}

struct Expected {
    int rgba[4];
    bool check = true;  // false: the pixel sits on a knife edge and is skipped
};

// Compares every pixel of what was drawn with `expected(x, y)`; reports the
// first few differences only, and how many pixels were compared.
inline int expectPicture(const std::vector<uint8_t>& drawn, int width, int height,
                         const std::function<Expected(int, int)>& expected, int tolerance,
                         const std::string& what) {
    int failures = 0, compared = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Expected e = expected(x, y);
            if (!e.check) continue;
            ++compared;
            const uint8_t* d = &drawn[(static_cast<size_t>(y) * width + x) * 4];
            for (int c = 0; c < 4; ++c) {
                if (std::abs(d[c] - e.rgba[c]) > tolerance) {
                    if (++failures <= 8) {
                        ADD_FAILURE() << what << ": at " << x << "," << y << " channel " << c
                                      << " drawn " << int(d[c]) << " expected " << e.rgba[c];
                    }
                    break;
                }
            }
        }
    }
    EXPECT_EQ(failures, 0) << what << ": pixels off";
    return compared;
}

// The alpha preset of the GL layer: straight alpha over, blending on.
inline bool isAlphaBlend(const pmGL::BlendOpts& b) {
    return b.enabled && b.equationRGB == GL_FUNC_ADD && b.equationAlpha == GL_FUNC_ADD &&
           b.srcRGB == GL_SRC_ALPHA && b.dstRGB == GL_ONE_MINUS_SRC_ALPHA && b.srcAlpha == GL_ONE &&
           b.dstAlpha == GL_ONE_MINUS_SRC_ALPHA;
}

}  // namespace effecttest

#endif
