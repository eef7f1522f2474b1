// LUTFilter: a three-dimensional colour table held as a strip of slices.
#include <cmath>
#include <string>

#include "pmDrawLUT.h"
#include "pmGLSL.h"

namespace pmDraw {

namespace {

// The interpolating form of colorGrading: two slice reads blended along blue.
const char* const lutHead = R"(#version 300 es
#define HIGH_QUALITY_COLOR_GRADING
precision highp float;
in vec2 vTexCoord;
uniform sampler2D uTexture;
uniform sampler2D uTexLUT;
uniform float uMapSize;
out vec4 fragColor;
)";

// Alpha passes through untouched.
const char* const lutMain = R"(
void main() {
    vec4 srcColor = texture(uTexture, vTexCoord);
    fragColor = vec4(colorGrading(srcColor.rgb, uTexLUT, uMapSize), srcColor.a);
}
)";

// One third as a float, widened: the exponent of the cube root below.
const double oneThird = static_cast<double>(0.33333334f);

}  // namespace

LUTFilter::~LUTFilter() = default;

bool LUTFilter::initialize() {
    PM_LOGE("LUTFilter::initialize()");
    const std::string source = std::string(lutHead) + pmGLSL::colorGrading + lutMain;
    PM_LOGE("LUTFilter::initialize() end.");
    return TextureFilter::initialize(source);
}

// The step count is the cube root of the entry count, computed in double from
// the integer product with a single-precision third: very slightly above the
// exact root for a proper table (64.00001 for 4096 x 64), never rounded, so
// its integer part is exact. A table that is not a cube gives a fractional
// size and wrong reads, without a report.
void LUTFilter::setLUT(const pmGL::Texture& lut) {
    pmGL::setUniformData(ud, "uTexLUT", lut);
    const float mapSize =
        static_cast<float>(std::pow(static_cast<double>(lut.width * lut.height), oneThird));
    pmGL::setUniformData(ud, "uMapSize", mapSize);
    PM_LOGI("LUT_3D_SIZE = %d", static_cast<int>(mapSize));
}

void LUTFilter::draw() {
    if (ud.textures.count("uTexLUT") == 0) {
        PM_LOGE("please set texture first.");
        return;
    }
    TextureFilter::draw();
}

}  // namespace pmDraw
