// The shader chunk library: every chunk compiles where a shader splices it,
// the texts obey the splicing rule, and the functions given by formula are
// rendered into the test's framebuffer, read back bit for bit and compared
// with the same formula on the CPU.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <glm/glm.hpp>

#include "GLTestContext.h"
#include "pmDraw.h"
#include "pmGL.h"
#include "pmGLSL.h"

namespace {

struct NamedChunk {
    const char* name;
    const std::string* text;
};

// Every chunk in the order of the library, the two headers first.
const std::vector<NamedChunk>& allChunks() {
    static const std::vector<NamedChunk> chunks = {
        {"defaultHeader", &pmGLSL::defaultHeader},
        {"EGLImageHeader", &pmGLSL::EGLImageHeader},
        {"saturate", &pmGLSL::saturate},
        {"nrand", &pmGLSL::nrand},
        {"transform2d", &pmGLSL::transform2d},
        {"quadraticBezier", &pmGLSL::quadraticBezier},
        {"cubicBezier", &pmGLSL::cubicBezier},
        {"cubicBezierNearlyThroughTwoPoints", &pmGLSL::cubicBezierNearlyThroughTwoPoints},
        {"rgb2hsb", &pmGLSL::rgb2hsb},
        {"hsb2rgb", &pmGLSL::hsb2rgb},
        {"colorConversions", &pmGLSL::colorConversions},
        {"colorLab", &pmGLSL::colorLab},
        {"colorGrading", &pmGLSL::colorGrading},
        {"distanceFieldLine", &pmGLSL::distanceFieldLine},
        {"distanceFieldRectangle", &pmGLSL::distanceFieldRectangle},
        {"distanceFieldRoundRect", &pmGLSL::distanceFieldRoundRect},
        {"distanceFieldCircle", &pmGLSL::distanceFieldCircle},
        {"distanceFieldPolygon", &pmGLSL::distanceFieldPolygon},
        {"distanceFieldGear", &pmGLSL::distanceFieldGear},
        {"sRGBEncodings", &pmGLSL::sRGBEncodings},
        {"sRGBEncodings_Simple", &pmGLSL::sRGBEncodings_Simple},
        {"RGBEEncodings", &pmGLSL::RGBEEncodings},
        {"RGBMEncodings", &pmGLSL::RGBMEncodings},
        {"RGBDEncodings", &pmGLSL::RGBDEncodings},
        {"logLuvEncodings", &pmGLSL::logLuvEncodings},
        {"radialDistort", &pmGLSL::radialDistort},
        {"barrelDistort", &pmGLSL::barrelDistort},
        {"toneMapping", &pmGLSL::toneMapping},
        {"ditheringV1", &pmGLSL::ditheringV1},
        {"ditheringV2", &pmGLSL::ditheringV2},
    };
    return chunks;
}

// No chunk defines `constrain`, which cubicBezier calls: a shader that
// splices cubicBezier brings its own, as this one does.
const char* const constrainFunction = R"(
float constrain(float value, float low, float high) { return clamp(value, low, high); }
)";

const char* const toneMappingMacros[] = {
    "TONEMAP_SIMPLE",        "TONEMAP_LINEAR",         "TONEMAP_REINHARD",
    "TONEMAP_REINHARD_LUMA", "TONEMAP_REINHARD_WHITE", "TONEMAP_FILMIC",
    "TONEMAP_FILMIC_2015",   "TONEMAP_PHOTOGRAPHIC",   "TONEMAP_UNCHARTED",
};

// Compiles a fragment shader by itself, for its info log on failure.
std::string compileErrors(const std::string& source) {
    GLuint shader = glCreateShader(GL_FRAGMENT_SHADER);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    std::string log;
    if (ok != GL_TRUE) {
        GLint length = 0;
        glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
        log.resize(std::max(length, 1));
        glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size()), nullptr, &log[0]);
        log = "compile failed: " + log;
    }
    glDeleteShader(shader);
    return log;
}

// Compiles the fragment shader, then links it with the library's vertex
// stage as a filter's program is.
::testing::AssertionResult buildsAsFilter(const std::string& fragment) {
    const std::string errors = compileErrors(fragment);
    if (!errors.empty()) {
        return ::testing::AssertionFailure() << errors << "\n--- source ---\n" << fragment;
    }
    pmGL::Program program;
    const bool built = pmDraw::createFilterProgram(program, fragment);
    const bool hasId = program.id != 0;
    pmGL::deleteProgram(program);
    if (!built || !hasId) {
        return ::testing::AssertionFailure() << "link failed\n--- source ---\n" << fragment;
    }
    return ::testing::AssertionSuccess();
}

// A minimal fragment shader: the default header, the head, the chunks, and a
// main that writes `expression`, which may use uv (the texture coordinate)
// and c (a colour made from it), so that the chunk's functions are called.
std::string minimalShader(const std::string& head, const std::string& chunks,
                          const std::string& expression) {
    return pmGLSL::defaultHeader + head + "in vec2 vTexCoord;\nout vec4 fragColor;\n" + chunks +
           "\nvoid main() {\n    vec2 uv = vTexCoord;\n    vec3 c = vec3(uv, 0.5);\n"
           "    fragColor = " +
           expression + ";\n}\n";
}

// ---------------------------------------------------------------- compiling

struct CompileCase {
    std::string name;
    std::string head;
    std::string prerequisites;
    const std::string* chunk;
    std::string expression;
};

std::vector<CompileCase> compileCases() {
    using namespace pmGLSL;
    const std::string nrandFirst = nrand;
    const std::string lutHead = "uniform sampler2D uTexLUT;\nuniform float uMapSize;\n";
    std::vector<CompileCase> cases = {
        {"saturate", "", "", &saturate, "vec4(saturate(c * 2.0 - 0.5), saturate(uv.x - 0.5))"},
        {"nrand", "", "", &nrand, "vec4(nrand(gl_FragCoord.xy))"},
        {"transform2d", "", "", &transform2d,
         "vec4(rotate(uv.x) * xShear(0.2) * yShear(0.3) * uv, 0.0, 1.0) +"
         " vec4(transform(uv, vec2(0.1), 2.0, 0.5) +"
         " transform(uv, vec2(0.1), vec2(2.0, 3.0), 0.5) +"
         " transform(uv, vec2(0.1), 2.0, 0.5, vec2(0.5)) +"
         " transform(uv, vec2(0.1), vec2(2.0, 3.0), 0.5, vec2(0.5)) +"
         " transform(uv, vec4(0.1, 0.2, 2.0, 0.5)), 0.0, 0.0)"},
        {"quadraticBezier", "", "", &quadraticBezier, "vec4(quadraticBezier(uv.x, uv.y, 0.8))"},
        {"cubicBezier", "", constrainFunction, &cubicBezier,
         "vec4(cubicBezier(uv.x, 0.2, uv.y, 0.8, 0.9))"},
        {"cubicBezierNearlyThroughTwoPoints", "", std::string(constrainFunction) + cubicBezier,
         &cubicBezierNearlyThroughTwoPoints,
         "vec4(cubicBezierNearlyThroughTwoPoints(uv.x, 0.3, 0.6, 0.7, uv.y),"
         " findx(uv.x, 0.0, 0.2, 0.8, 1.0), findy(uv.y, 0.0, 0.2, 0.8, 1.0), 1.0)"},
        {"rgb2hsb", "", "", &rgb2hsb, "vec4(rgb2hsb(c), 1.0)"},
        {"hsb2rgb", "", "", &hsb2rgb, "vec4(hsb2rgb(c), 1.0)"},
        {"colorConversions", "", colorLab, &colorConversions,
         "vec4(hue2rgb(uv.x) + hsv2rgb(c) + rgb2hsv(c) + rgb2hsv_2(c) + rgb2hsl(c) +"
         " hsl2rgb(c) + rgb2ycbcr(c) + ycbcr2rgb(c) +"
         " vec3(linear2srgb(uv.x), srgb2linear(uv.y), 0.0) + rgb2srgb(c) + srgb2rgb(c) +"
         " xyz2yxy(c) + yxy2xyz(c) + rgb2yxy(c) + yxy2rgb(c) + cmyk2rgb(rgb2cmyk(c)),"
         " rgb2cmyk(c).w)"},
        {"colorLab", "", "", &colorLab,
         "vec4(rgb2lab(c) + lab2rgb(c) + xyz2lab(rgb2xyz(c)) + xyz2rgb(lab2xyz(c)), 1.0)"},
        {"colorGrading_HighQuality", "#define HIGH_QUALITY_COLOR_GRADING\n" + lutHead, "",
         &colorGrading, "vec4(colorGrading(c, uTexLUT, uMapSize), 1.0)"},
        {"colorGrading_Fast", lutHead, "", &colorGrading,
         "vec4(colorGrading(c, uTexLUT, uMapSize), 1.0)"},
        {"distanceFieldLine", "", "", &distanceFieldLine,
         "vec4(line(uv, vec2(0.1), vec2(0.9), 0.1, 0.01),"
         " line0(uv, vec2(0.1), vec2(0.9), 0.1, 0.01), 0.0, 1.0)"},
        {"distanceFieldRectangle", "", "", &distanceFieldRectangle,
         "vec4(rectangle(uv, vec2(0.5), vec2(0.5, 0.25), 0.01))"},
        {"distanceFieldRoundRect", "", "", &distanceFieldRoundRect,
         "vec4(roundRect(uv, vec2(0.5), vec2(0.5, 0.25), 0.05, 0.01))"},
        {"distanceFieldCircle", "", "", &distanceFieldCircle, "vec4(circle(uv, 0.01))"},
        {"distanceFieldPolygon", "", "", &distanceFieldPolygon,
         "vec4(polygon(uv, 5, 0.01), PI, TWO_PI, 1.0)"},
        {"distanceFieldGear", "", "", &distanceFieldGear, "vec4(gear(uv, 8, 0.1, 0.01))"},
        {"sRGBEncodings", "", "", &sRGBEncodings,
         "linearTosRGB(sRGBToLinear(vec4(c, 1.0))) + vec4(linearTosRGB(sRGBToLinear(c)), 0.0)"},
        {"sRGBEncodings_Simple", "", "", &sRGBEncodings_Simple,
         "linearTosRGB(sRGBToLinear(vec4(c, 1.0))) + vec4(linearTosRGB(sRGBToLinear(c)), 0.0)"},
        {"RGBEEncodings", "", "", &RGBEEncodings, "RGBEToLinear(linearToRGBE(vec4(c * 4.0, 1.0)))"},
        {"RGBMEncodings", "", "", &RGBMEncodings,
         "RGBMToLinear(linearToRGBM(vec4(c * 4.0, 1.0), 6.0), 6.0)"},
        {"RGBDEncodings", "", "", &RGBDEncodings,
         "RGBDToLinear(linearToRGBD(vec4(c * 4.0, 1.0), 6.0), 6.0)"},
        {"logLuvEncodings", "", "", &logLuvEncodings,
         "logLuvToLinear(linearToLogLuv(vec4(c * 4.0, 1.0)))"},
        {"radialDistort", "", "", &radialDistort, "vec4(radialDistort(uv, 0.1), 0.0, 1.0)"},
        {"barrelDistort", "", "", &barrelDistort, "vec4(barrelDistort(uv, 0.1), 0.0, 1.0)"},
        {"toneMapping_NoMacro", "", "", &toneMapping,
         "vec4(inverseTonemapping(applyTonemapping(c * 4.0)), 1.0)"},
        {"ditheringV1", "", nrandFirst, &ditheringV1, "vec4(applyDithering(c), 1.0)"},
        {"ditheringV2", "", nrandFirst, &ditheringV2, "vec4(applyDithering(c), 1.0)"},
    };
    for (const char* macro : toneMappingMacros) {
        cases.push_back({std::string("toneMapping_") + macro,
                         std::string("#define ") + macro + "\n", "", &toneMapping,
                         "vec4(inverseTonemapping(applyTonemapping(c * 4.0)), 1.0)"});
    }
    return cases;
}

class GLSLChunkCompileTest : public GLTest, public ::testing::WithParamInterface<CompileCase> {};

TEST_P(GLSLChunkCompileTest, CompilesAfterDefaultHeaderAndItsPrerequisites) {
    const CompileCase& param = GetParam();
    EXPECT_TRUE(buildsAsFilter(
        minimalShader(param.head, param.prerequisites + *param.chunk, param.expression)));
}

INSTANTIATE_TEST_SUITE_P(EveryChunk, GLSLChunkCompileTest, ::testing::ValuesIn(compileCases()),
                         [](const ::testing::TestParamInfo<CompileCase>& info) {
                             return info.param.name;
                         });

// ------------------------------------------------------------ splicing rule

TEST(GLSLSplicingTest, OnlyTheHeadersCarryTheVersionLine) {
    const std::string version = "#version 300 es\n";
    EXPECT_EQ(allChunks().size(), 30u);
    for (const NamedChunk& chunk : allChunks()) {
        SCOPED_TRACE(chunk.name);
        const std::string& text = *chunk.text;
        ASSERT_FALSE(text.empty());
        const bool header = &text == &pmGLSL::defaultHeader || &text == &pmGLSL::EGLImageHeader;
        if (header) {
            EXPECT_EQ(text.compare(0, version.size(), version), 0);
            EXPECT_EQ(text.find("#version", 1), std::string::npos);
        } else {
            EXPECT_EQ(text.front(), '\n') << "a chunk starts on a line of its own";
            EXPECT_EQ(text.find("#version"), std::string::npos);
        }
        EXPECT_EQ(text.back(), '\n') << "what follows a chunk starts on a new line";
    }
}

TEST(GLSLSplicingTest, HeadersDefineTheSamplerMacro) {
    EXPECT_NE(pmGLSL::defaultHeader.find("#define TEXTURE_2D sampler2D\n"), std::string::npos);
    EXPECT_NE(pmGLSL::EGLImageHeader.find("#define TEXTURE_2D samplerExternalOES\n"),
              std::string::npos);
    EXPECT_NE(pmGLSL::EGLImageHeader.find("#extension GL_OES_EGL_image_external_essl3 : require\n"),
              std::string::npos);
    EXPECT_NE(pmGLSL::defaultHeader.find("precision highp float;"), std::string::npos);
    EXPECT_NE(pmGLSL::EGLImageHeader.find("precision highp float;"), std::string::npos);
}

class GLSLSplicingGLTest : public GLTest {};

TEST_F(GLSLSplicingGLTest, ChunkAfterAHeadThatEndsMidLine) {
    // The head's last line is a comment without a line break: the chunk's
    // leading line break ends it, so the chunk's code is not commented out.
    const std::string source =
        pmGLSL::defaultHeader + "in vec2 vTexCoord;\nout vec4 fragColor; // no line break" +
        pmGLSL::barrelDistort + pmGLSL::nrand + "\t\t\t" + pmGLSL::ditheringV1 +
        "void main() { fragColor = vec4(applyDithering("
        "vec3(barrelDistort(vTexCoord, 0.2), 0.5)), 1.0); }";
    EXPECT_TRUE(buildsAsFilter(source));
}

TEST_F(GLSLSplicingGLTest, AllChunksTogetherExceptTheAlternativesDefineNoNameTwice) {
    using namespace pmGLSL;
    const std::string chunks =
        std::string(constrainFunction) + saturate + nrand + transform2d + quadraticBezier +
        cubicBezier + cubicBezierNearlyThroughTwoPoints + rgb2hsb + hsb2rgb + colorLab +
        colorConversions + colorGrading + distanceFieldLine + distanceFieldRectangle +
        distanceFieldRoundRect + distanceFieldCircle + distanceFieldPolygon + distanceFieldGear +
        sRGBEncodings + RGBEEncodings + RGBMEncodings + RGBDEncodings + logLuvEncodings +
        radialDistort + barrelDistort + toneMapping + ditheringV1;
    const std::string head =
        "#define HIGH_QUALITY_COLOR_GRADING\n#define TONEMAP_FILMIC\n"
        "uniform sampler2D uTexLUT;\nuniform float uMapSize;\n";
    EXPECT_TRUE(buildsAsFilter(minimalShader(
        head, chunks,
        "vec4(applyDithering(applyTonemapping(colorGrading(rgb2hsb(c), uTexLUT, uMapSize))) +"
        " lab2rgb(rgb2lab(c)) * circle(uv, 0.01) * polygon(uv, 6, 0.01), 1.0)")));
}

TEST_F(GLSLSplicingGLTest, BothHeadersServeOneBodyWrittenAgainstTheSamplerMacro) {
    const std::string body =
        "in vec2 vTexCoord;\nout vec4 fragColor;\nuniform TEXTURE_2D uTexture;\n"
        "void main() { fragColor = texture(uTexture, vTexCoord); }\n";
    EXPECT_TRUE(buildsAsFilter(pmGLSL::defaultHeader + body));
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    if (extensions == nullptr ||
        std::strstr(extensions, "GL_OES_EGL_image_external_essl3") == nullptr) {
        GTEST_SKIP() << "no GL_OES_EGL_image_external_essl3 here";
    }
    EXPECT_TRUE(buildsAsFilter(pmGLSL::EGLImageHeader + body));
}

// -------------------------------------------------------- numeric harness

// One triangle that covers the viewport, without vertex attributes.
const char* const fullScreenVertex = R"(#version 300 es
void main() {
    vec2 p = vec2(float((gl_VertexID & 1) * 4 - 1), float((gl_VertexID & 2) * 2 - 1));
    gl_Position = vec4(p, 0.0, 1.0);
}
)";

class GLSLNumericTest : public GLTest {
protected:
    // Evaluates `expression`, a vec4 that may use `inputs` (uInputs[i]) and i,
    // for every input on the GPU. Column i of the target holds sample i, row k
    // its component k, each written as the four bytes of its float bits, so
    // the RGBA8 target returns the shader's floats exactly.
    std::vector<glm::vec4> evaluate(const std::string& chunks, const std::vector<glm::vec4>& inputs,
                                    const std::string& expression, const std::string& head = "",
                                    const std::function<void(GLuint)>& setUniforms = {}) {
        const int n = static_cast<int>(inputs.size());
        const std::string fragment = pmGLSL::defaultHeader + head +
                                     "precision highp int;\nout vec4 fragColor;\n" +
                                     "uniform vec4 uInputs[" + std::to_string(n) + "];\n" + chunks +
                                     R"(
vec4 packFloat(float v) {
    highp uint bits = floatBitsToUint(v);
    return vec4(float(bits >> 24u), float((bits >> 16u) & 255u), float((bits >> 8u) & 255u),
                float(bits & 255u)) / 255.0;
}
vec4 evaluateSample(int i, vec4 inputs) {
    return )" + expression + R"(;
}
void main() {
    int i = int(gl_FragCoord.x);
    int component = int(gl_FragCoord.y);
    fragColor = packFloat(evaluateSample(i, uInputs[i])[component]);
}
)";
        std::vector<glm::vec4> result(inputs.size(), glm::vec4(NAN));
        const std::string errors = compileErrors(fragment);
        if (!errors.empty()) {
            ADD_FAILURE() << errors << "\n--- source ---\n" << fragment;
            return result;
        }
        pmGL::Program program;
        if (!pmGL::createProgram(program, std::string(fullScreenVertex), fragment)) {
            ADD_FAILURE() << "link failed";
            return result;
        }
        gl->resizeTarget(n, 4);
        glDisable(GL_BLEND);
        glUseProgram(program.id);
        glUniform4fv(glGetUniformLocation(program.id, "uInputs"), n, &inputs[0].x);
        if (setUniforms) setUniforms(program.id);
        GLuint vertexArray = 0;
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &vertexArray);
        glUseProgram(0);
        pmGL::deleteProgram(program);
        const std::vector<uint8_t> pixels = gl->readTarget();
        for (int i = 0; i < n; ++i) {
            for (int k = 0; k < 4; ++k) {
                const uint8_t* p = &pixels[(static_cast<size_t>(k) * n + i) * 4];
                const uint32_t bits = (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) |
                                      (uint32_t(p[2]) << 8) | uint32_t(p[3]);
                float v;
                std::memcpy(&v, &bits, sizeof v);
                result[i][k] = v;
            }
        }
        return result;
    }
};

void expectVec3Near(const glm::vec4& actual, const glm::dvec3& expected, double tolerance,
                    size_t sample) {
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(actual[k], expected[k], tolerance) << "sample " << sample << " component " << k;
    }
}

// ------------------------------------------------------------------- nrand

// The formula in single precision, as the shader computes it; sin is taken
// correctly rounded, which the GPU's sine approximates within a few ulps.
float nrandCpu(float x, float y) {
    const float pi = 3.141592653589793f;
    const float dt = x * 12.9898f + y * 78.233f;
    const float sn = dt - pi * std::floor(dt / pi);
    const float s = static_cast<float>(std::sin(static_cast<double>(sn)));
    const float v = s * 43758.5453f;
    return v - std::floor(v);
}

TEST_F(GLSLNumericTest, NrandFollowsItsFormula) {
    // With one coordinate zero the dot product is one rounding on either side,
    // and the result differs only through the sine: one ulp of the sine moves
    // it by about ulp * 43758.
    const std::vector<glm::vec4> inputs = {
        {0.01f, 0.0f, 0, 0}, {0.1f, 0.0f, 0, 0},   {0.2f, 0.0f, 0, 0},  {0.3f, 0.0f, 0, 0},
        {0.45f, 0.0f, 0, 0}, {0.0f, 0.005f, 0, 0}, {0.0f, 0.02f, 0, 0}, {0.0f, 0.035f, 0, 0},
        {0.0f, 0.05f, 0, 0}, {0.0f, 0.07f, 0, 0},
    };
    const std::vector<glm::vec4> out = evaluate(pmGLSL::nrand, inputs, "vec4(nrand(inputs.xy))");
    for (size_t i = 0; i < inputs.size(); ++i) {
        const float expected = nrandCpu(inputs[i].x, inputs[i].y);
        float diff = std::fabs(out[i].x - expected);
        diff = std::min(diff, 1.0f - diff);  // the values wrap at 1
        EXPECT_LT(diff, 0.004f) << "at " << inputs[i].x << "," << inputs[i].y << ": " << out[i].x
                                << " vs " << expected;
    }
}

TEST_F(GLSLNumericTest, NrandStaysInUnitRangeAtPixelCentres) {
    std::vector<glm::vec4> inputs;
    for (int i = 0; i < 16; ++i) {
        inputs.push_back({0.5f + 131.0f * i, 1079.5f - 67.0f * i, 0, 0});
    }
    const std::vector<glm::vec4> out = evaluate(pmGLSL::nrand, inputs, "vec4(nrand(inputs.xy))");
    float lo = 1.0f, hi = 0.0f;
    for (size_t i = 0; i < inputs.size(); ++i) {
        EXPECT_GE(out[i].x, 0.0f);
        EXPECT_LT(out[i].x, 1.0f);
        lo = std::min(lo, out[i].x);
        hi = std::max(hi, out[i].x);
    }
    EXPECT_GT(hi - lo, 0.3f) << "values spread over the range";
}

// --------------------------------------------------------------- dithering

TEST_F(GLSLNumericTest, DitheringV1ShiftsAllChannelsByNrandOfTheFragment) {
    // Each component is written by a fragment of its own row, so the shader
    // compares the shift with nrand of the same fragment: xyz hold the
    // difference per channel, w the expected shift.
    const std::vector<glm::vec4> inputs(12, glm::vec4(0.2f, 0.5f, 0.8f, 0.0f));
    const std::vector<glm::vec4> out = evaluate(
        pmGLSL::nrand + pmGLSL::ditheringV1, inputs,
        "vec4(applyDithering(inputs.rgb) - inputs.rgb -"
        " (nrand(gl_FragCoord.xy) - 0.5) / 255.0, (nrand(gl_FragCoord.xy) - 0.5) / 255.0)");
    float lo = 1.0f, hi = -1.0f;
    for (size_t i = 0; i < inputs.size(); ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(out[i][k], 0.0f, 1e-6f) << "sample " << i << " channel " << k;
        }
        EXPECT_LE(std::fabs(out[i].w), 0.5f / 255.0f);
        lo = std::min(lo, out[i].w);
        hi = std::max(hi, out[i].w);
    }
    EXPECT_GT(hi - lo, 0.1f / 255.0f) << "the shift changes from pixel to pixel";
}

TEST_F(GLSLNumericTest, DitheringV2ShiftsGreenAgainstRedAndBlue) {
    // As above: xyz hold the difference from the expected shift per channel,
    // w the size of the shift.
    const std::vector<glm::vec4> inputs(12, glm::vec4(0.2f, 0.5f, 0.8f, 0.0f));
    const std::vector<glm::vec4> out =
        evaluate(pmGLSL::nrand + pmGLSL::ditheringV2, inputs,
                 "vec4(applyDithering(inputs.rgb) - inputs.rgb -"
                 " vec3(1.0, -1.0, 1.0) * (0.25 - 0.5 * nrand(gl_FragCoord.xy)) / 255.0,"
                 " abs(applyDithering(inputs.rgb) - inputs.rgb).g)");
    for (size_t i = 0; i < inputs.size(); ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(out[i][k], 0.0f, 1e-6f) << "sample " << i << " channel " << k;
        }
        EXPECT_LE(out[i].w, 0.25f / 255.0f + 1e-6f);
    }
}

// ------------------------------------------------------------- distortions

TEST_F(GLSLNumericTest, BarrelDistortFollowsItsFormulaAndKeepsTheCentre) {
    const std::vector<glm::vec4> inputs = {
        {0.5f, 0.5f, 3.0f, 0}, {0.0f, 0.0f, 0.1f, 0},  {1.0f, 0.25f, 0.1f, 0},
        {0.3f, 0.8f, 0.5f, 0}, {0.9f, 0.6f, -0.2f, 0}, {0.75f, 0.1f, 0.0f, 0},
    };
    const std::vector<glm::vec4> out = evaluate(
        pmGLSL::barrelDistort, inputs, "vec4(barrelDistort(inputs.xy, inputs.z), 0.0, 0.0)");
    for (size_t i = 0; i < inputs.size(); ++i) {
        const double u = inputs[i].x * 2.0 - 1.0, v = inputs[i].y * 2.0 - 1.0;
        const double r2 = u * u + v * v;
        const double f = 1.0 + (1.0 + -0.25 * r2) * inputs[i].z * r2;
        expectVec3Near(out[i], {u * f * 0.5 + 0.5, v * f * 0.5 + 0.5, 0.0}, 1e-5, i);
    }
    EXPECT_EQ(out[0].x, 0.5f);
    EXPECT_EQ(out[0].y, 0.5f);
}

TEST_F(GLSLNumericTest, RadialDistortFollowsItsFormula) {
    const std::vector<glm::vec4> inputs = {
        {0.5f, 0.5f, 1.0f, 0},
        {0.0f, 1.0f, 0.1f, 0},
        {0.3f, 0.8f, -0.25f, 0},
        {0.9f, 0.2f, 2.0f, 0},
    };
    const std::vector<glm::vec4> out = evaluate(
        pmGLSL::radialDistort, inputs, "vec4(radialDistort(inputs.xy, inputs.z), 0.0, 0.0)");
    for (size_t i = 0; i < inputs.size(); ++i) {
        const double a = inputs[i].z;
        expectVec3Near(out[i],
                       {inputs[i].x + 2.0 * (inputs[i].x - 0.5) * a,
                        inputs[i].y + 2.0 * (inputs[i].y - 0.5) * a, 0.0},
                       1e-6, i);
    }
}

// --------------------------------------------------------------- colorLab

double toLinear(double v) {
    return v > 0.04045 ? std::pow((v + 0.055) / 1.055, 2.4) : v / 12.92;
}
double toGamma(double v) {
    return v > 0.0031308 ? 1.055 * std::pow(v, 1.0 / 2.4) - 0.055 : 12.92 * v;
}

glm::dvec3 rgb2xyzCpu(glm::dvec3 c) {
    const glm::dvec3 v(toLinear(c.x), toLinear(c.y), toLinear(c.z));
    return 100.0 * glm::dvec3(0.4124 * v.x + 0.3576 * v.y + 0.1805 * v.z,
                              0.2126 * v.x + 0.7152 * v.y + 0.0722 * v.z,
                              0.0193 * v.x + 0.1192 * v.y + 0.9505 * v.z);
}

glm::dvec3 xyz2labCpu(glm::dvec3 c) {
    const glm::dvec3 n = c / glm::dvec3(95.047, 100.0, 108.883);
    glm::dvec3 v;
    for (int k = 0; k < 3; ++k) {
        v[k] = n[k] > 0.008856 ? std::cbrt(n[k]) : 7.787 * n[k] + 16.0 / 116.0;
    }
    return {116.0 * v.y - 16.0, 500.0 * (v.x - v.y), 200.0 * (v.y - v.z)};
}

glm::dvec3 rgb2labCpu(glm::dvec3 c) {
    const glm::dvec3 lab = xyz2labCpu(rgb2xyzCpu(c));
    return {lab.x / 100.0, 0.5 + 0.5 * (lab.y / 127.0), 0.5 + 0.5 * (lab.z / 127.0)};
}

glm::dvec3 lab2xyzCpu(glm::dvec3 c) {
    const double fy = (c.x + 16.0) / 116.0;
    const glm::dvec3 f(c.y / 500.0 + fy, fy, fy - c.z / 200.0);
    glm::dvec3 v;
    for (int k = 0; k < 3; ++k) {
        v[k] = f[k] > 0.206897 ? f[k] * f[k] * f[k] : (f[k] - 16.0 / 116.0) / 7.787;
    }
    return v * glm::dvec3(95.047, 100.0, 108.883);
}

glm::dvec3 xyz2rgbCpu(glm::dvec3 c) {
    const glm::dvec3 v = c / 100.0;
    return {toGamma(3.2406 * v.x - 1.5372 * v.y - 0.4986 * v.z),
            toGamma(-0.9689 * v.x + 1.8758 * v.y + 0.0415 * v.z),
            toGamma(0.0557 * v.x - 0.2040 * v.y + 1.0570 * v.z)};
}

glm::dvec3 lab2rgbCpu(glm::dvec3 c) {
    return xyz2rgbCpu(
        lab2xyzCpu({100.0 * c.x, 2.0 * 127.0 * (c.y - 0.5), 2.0 * 127.0 * (c.z - 0.5)}));
}

const std::vector<glm::vec4>& testColours() {
    static const std::vector<glm::vec4> colours = {
        {0.0f, 0.0f, 0.0f, 0}, {1.0f, 1.0f, 1.0f, 0},    {1.0f, 0.0f, 0.0f, 0},
        {0.0f, 1.0f, 0.0f, 0}, {0.0f, 0.0f, 1.0f, 0},    {0.02f, 0.03f, 0.04f, 0},
        {0.5f, 0.5f, 0.5f, 0}, {0.25f, 0.6f, 0.85f, 0},  {0.9f, 0.45f, 0.1f, 0},
        {0.7f, 0.2f, 0.6f, 0}, {0.33f, 0.33f, 0.34f, 0}, {0.1f, 0.8f, 0.3f, 0},
    };
    return colours;
}

TEST_F(GLSLNumericTest, ColorLabFollowsItsFormulas) {
    const std::vector<glm::vec4>& inputs = testColours();
    const std::vector<glm::vec4> xyz =
        evaluate(pmGLSL::colorLab, inputs, "vec4(rgb2xyz(inputs.rgb), 0.0)");
    const std::vector<glm::vec4> lab =
        evaluate(pmGLSL::colorLab, inputs, "vec4(rgb2lab(inputs.rgb), 0.0)");
    const std::vector<glm::vec4> round =
        evaluate(pmGLSL::colorLab, inputs, "vec4(lab2rgb(rgb2lab(inputs.rgb)), 0.0)");
    std::vector<glm::vec4> labInputs;
    for (const glm::vec4& c : inputs) {
        const glm::dvec3 l = rgb2labCpu(c);
        labInputs.push_back(glm::vec4(l.x, l.y, l.z, 0.0));
    }
    const std::vector<glm::vec4> rgb =
        evaluate(pmGLSL::colorLab, labInputs, "vec4(lab2rgb(inputs.rgb), 0.0)");
    for (size_t i = 0; i < inputs.size(); ++i) {
        const glm::dvec3 c(inputs[i]);
        expectVec3Near(xyz[i], rgb2xyzCpu(c), 2e-3, i);
        expectVec3Near(lab[i], rgb2labCpu(c), 1e-4, i);
        expectVec3Near(rgb[i], lab2rgbCpu(glm::dvec3(labInputs[i])), 1e-4, i);
        expectVec3Near(round[i], c, 1e-3, i);
    }
    // White lands at lightness 1 with neutral a and b, near the squeezed 0.5.
    EXPECT_NEAR(lab[1].x, 1.0f, 1e-3f);
    EXPECT_NEAR(lab[1].y, 0.5f, 2e-3f);
    EXPECT_NEAR(lab[1].z, 0.5f, 2e-3f);
}

// ----------------------------------------------------------- colorGrading

// An identity table of size 4 laid out as a 16 x 4 strip, filtered linearly.
GLuint makeIdentityStrip(int size) {
    std::vector<uint8_t> texels(static_cast<size_t>(size) * size * size * 4);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size * size; ++x) {
            uint8_t* p = &texels[(static_cast<size_t>(y) * size * size + x) * 4];
            const double scale = 255.0 / (size - 1);
            p[0] = static_cast<uint8_t>(std::lround((x % size) * scale));
            p[1] = static_cast<uint8_t>(std::lround(y * scale));
            p[2] = static_cast<uint8_t>(std::lround((x / size) * scale));
            p[3] = 255;
        }
    }
    GLuint tex = 0;
    glGenTextures(1, &tex);
    glBindTexture(GL_TEXTURE_2D, tex);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size * size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 texels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return tex;
}

TEST_F(GLSLNumericTest, ColorGradingWithAnIdentityTable) {
    const int size = 4;
    const GLuint strip = makeIdentityStrip(size);
    const std::string lutHead = "uniform sampler2D uTexLUT;\nuniform float uMapSize;\n";
    // Bound here, after the target (whose texture binding it replaces) is made.
    const auto setUniforms = [&](GLuint program) {
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, strip);
        glUniform1i(glGetUniformLocation(program, "uTexLUT"), 0);
        glUniform1f(glGetUniformLocation(program, "uMapSize"), float(size));
    };
    const std::vector<glm::vec4> inputs = {
        {0.1f, 0.2f, 0.3f, 0}, {0.9f, 0.5f, 0.05f, 0},  {1.0f, 1.0f, 1.0f, 0},
        {0.0f, 0.0f, 0.0f, 0}, {0.33f, 0.67f, 0.5f, 0}, {0.6f, 0.05f, 0.95f, 0},
    };
    const std::string expression = "vec4(colorGrading(inputs.rgb, uTexLUT, uMapSize), 0.0)";
    // The interpolating form reproduces the colour, within the table's 8 bits
    // and the filter's weights.
    const std::vector<glm::vec4> high =
        evaluate(pmGLSL::colorGrading, inputs, expression,
                 "#define HIGH_QUALITY_COLOR_GRADING\n" + lutHead, setUniforms);
    // The fast form reads the slice below blue alone.
    const std::vector<glm::vec4> fast =
        evaluate(pmGLSL::colorGrading, inputs, expression, lutHead, setUniforms);
    for (size_t i = 0; i < inputs.size(); ++i) {
        const glm::dvec3 c(inputs[i]);
        expectVec3Near(high[i], c, 2.0 / 255.0, i);
        expectVec3Near(fast[i], {c.x, c.y, std::floor(c.z * (size - 1)) / (size - 1)}, 2.0 / 255.0,
                       i);
    }
    glDeleteTextures(1, &strip);
}

// ---------------------------------------------------------- shaping curves

TEST_F(GLSLNumericTest, BezierCurvesMeetTheirControlPoints) {
    const std::vector<glm::vec4> xs = {
        {0.0f, 0, 0, 0}, {0.1f, 0, 0, 0}, {0.3f, 0, 0, 0}, {0.5f, 0, 0, 0},
        {0.7f, 0, 0, 0}, {0.9f, 0, 0, 0}, {1.0f, 0, 0, 0},
    };
    const std::string chunks = std::string(constrainFunction) + pmGLSL::quadraticBezier +
                               pmGLSL::cubicBezier + pmGLSL::cubicBezierNearlyThroughTwoPoints;
    // Control points on the diagonal make each curve the identity; a = 0.5 is
    // nudged, which costs precision in single floats.
    const std::vector<glm::vec4> out =
        evaluate(chunks, xs,
                 "vec4(quadraticBezier(inputs.x, 0.3, 0.3), quadraticBezier(inputs.x, 0.5, 0.5),"
                 " cubicBezier(inputs.x, 1.0 / 3.0, 1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0),"
                 " cubicBezierNearlyThroughTwoPoints(inputs.x, 0.3, 0.3, 0.7, 0.7))");
    for (size_t i = 0; i < xs.size(); ++i) {
        EXPECT_NEAR(out[i].x, xs[i].x, 1e-5f) << "quadratic at " << xs[i].x;
        EXPECT_NEAR(out[i].y, xs[i].x, 1e-2f) << "nudged quadratic at " << xs[i].x;
        EXPECT_NEAR(out[i].z, xs[i].x, 1e-5f) << "cubic at " << xs[i].x;
        EXPECT_NEAR(out[i].w, xs[i].x, 1e-3f) << "through two points at " << xs[i].x;
    }
    const std::vector<glm::vec4> bent =
        evaluate(chunks, xs,
                 "vec4(quadraticBezier(inputs.x, 0.2, 0.9), cubicBezier(inputs.x, 0.1, 0.6, 0.4,"
                 " 0.95), cubicBezierNearlyThroughTwoPoints(inputs.x, 0.3, 0.6, 0.7, 0.8), 0.0)");
    for (size_t i = 0; i < xs.size(); ++i) {
        const double x = xs[i].x;
        // Quadratic: x = 2 a t (1 - t) + t^2, solved for t.
        const double a = 0.2, b = 0.9;
        const double t = (std::sqrt(a * a + (1.0 - 2.0 * a) * x) - a) / (1.0 - 2.0 * a);
        EXPECT_NEAR(bent[i].x, (1.0 - 2.0 * b) * t * t + 2.0 * b * t, 1e-5) << "at " << x;
        EXPECT_GE(bent[i].y, 0.0f);
        EXPECT_LE(bent[i].y, 1.0f);
    }
    EXPECT_NEAR(bent[0].y, 0.0f, 1e-6f);
    EXPECT_NEAR(bent[6].y, 1.0f, 1e-6f);
    EXPECT_NEAR(bent[2].z, 0.6f, 2e-3f) << "through (0.3, 0.6)";
    EXPECT_NEAR(bent[4].z, 0.8f, 2e-3f) << "through (0.7, 0.8)";
}

// ------------------------------------------------------------ transform2d

TEST_F(GLSLNumericTest, TransformsScaleRotateAboutThePivotThenTranslate) {
    const std::vector<glm::vec4> points = {
        {1.0f, 0.0f, 0, 0}, {0.25f, 0.75f, 0, 0}, {-0.5f, 2.0f, 0, 0}};
    const std::vector<glm::vec4> out =
        evaluate(pmGLSL::transform2d, points,
                 "vec4(rotate(1.5707963) * inputs.xy, xShear(0.5) * inputs.xy)");
    const std::vector<glm::vec4> out2 = evaluate(
        pmGLSL::transform2d, points,
        "vec4(yShear(0.5) * inputs.xy, transform(inputs.xy, vec2(0.1, -0.2), vec2(2.0, 3.0),"
        " 0.7, vec2(0.5, 0.25)))");
    const std::vector<glm::vec4> out3 = evaluate(
        pmGLSL::transform2d, points,
        "vec4(transform(inputs.xy, vec4(0.1, -0.2, 1.5, 0.7)) - transform(inputs.xy,"
        " vec2(0.1, -0.2), 1.5, 0.7), transform(inputs.xy, vec2(0.0), 1.0, 0.3, vec2(0.5)) -"
        " transform(inputs.xy, vec2(0.0), vec2(1.0), 0.3, vec2(0.5)))");
    for (size_t i = 0; i < points.size(); ++i) {
        const double x = points[i].x, y = points[i].y;
        EXPECT_NEAR(out[i].x, -y, 1e-6);
        EXPECT_NEAR(out[i].y, x, 1e-6);
        EXPECT_NEAR(out[i].z, x + 0.5 * y, 1e-6);
        EXPECT_NEAR(out[i].w, y, 1e-6);
        EXPECT_NEAR(out2[i].x, x, 1e-6);
        EXPECT_NEAR(out2[i].y, y + 0.5 * x, 1e-6);
        const double sx = (x - 0.5) * 2.0, sy = (y - 0.25) * 3.0;
        const double c = std::cos(0.7), s = std::sin(0.7);
        EXPECT_NEAR(out2[i].z, c * sx - s * sy + 0.5 + 0.1, 1e-5);
        EXPECT_NEAR(out2[i].w, s * sx + c * sy + 0.25 - 0.2, 1e-5);
        for (int k = 0; k < 4; ++k) EXPECT_NEAR(out3[i][k], 0.0f, 1e-6f);
    }
}

// ---------------------------------------------------------------- shapes

TEST_F(GLSLNumericTest, DistanceFieldShapesCoverTheirInsideOnly) {
    const std::string chunks = pmGLSL::distanceFieldLine + pmGLSL::distanceFieldRectangle +
                               pmGLSL::distanceFieldRoundRect + pmGLSL::distanceFieldCircle +
                               pmGLSL::distanceFieldPolygon + pmGLSL::distanceFieldGear;
    // Points: the centre, a corner of the unit square, a point near the middle
    // of the right edge, a point just past the end of the diagonal segment, and points at
    // radius 0.4 towards a gear tooth and between two teeth.
    const float root = 3.14159265f / 8.0f;
    const std::vector<glm::vec4> points = {
        {0.5f, 0.5f, 0, 0},  {0.02f, 0.02f, 0, 0},
        {0.95f, 0.5f, 0, 0}, {0.92f, 0.92f, 0, 0},
        {0.9f, 0.5f, 0, 0},  {0.5f + 0.4f * std::cos(root), 0.5f + 0.4f * std::sin(root), 0, 0},
    };
    const std::vector<glm::vec4> lines =
        evaluate(chunks, points,
                 "vec4(line(inputs.xy, vec2(0.1), vec2(0.9), 0.1, 0.01),"
                 " line0(inputs.xy, vec2(0.1), vec2(0.9), 0.1, 0.01),"
                 " rectangle(inputs.xy, vec2(0.5), vec2(0.6, 0.4), 0.01),"
                 " roundRect(inputs.xy, vec2(0.5), vec2(0.96), 0.3, 0.01))");
    const std::vector<glm::vec4> round = evaluate(
        chunks, points,
        "vec4(circle(inputs.xy, 0.01), polygon(inputs.xy, 4, 0.01), gear(inputs.xy, 8, 0.2,"
        " 0.01), TWO_PI - 2.0 * PI)");
    // Centre: inside every shape.
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(lines[0][k], 1.0f, 1e-6f) << "shape " << k;
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(round[0][k], 1.0f, 1e-6f) << "shape " << k;
    EXPECT_NEAR(round[0].w, 0.0f, 1e-6f);
    // Corner: near the end of the segment, outside the rest.
    EXPECT_EQ(lines[1].z, 0.0f);
    EXPECT_EQ(lines[1].w, 0.0f) << "rounded off";
    EXPECT_EQ(round[1].x, 0.0f);
    EXPECT_EQ(round[1].z, 0.0f);
    // Near the right edge: outside the rectangle, inside the circle, which
    // fills the unit square.
    EXPECT_EQ(lines[2].z, 0.0f);
    EXPECT_NEAR(round[2].x, 1.0f, 1e-6f);
    // Past the segment's end: the round end reaches it, the flat end not.
    EXPECT_GT(lines[3].x, 0.9f);
    EXPECT_EQ(lines[3].y, 0.0f);
    // The gear reaches 0.4 along a tooth, not between teeth.
    EXPECT_NEAR(round[4].z, 1.0f, 1e-6f);
    EXPECT_EQ(round[5].z, 0.0f);
}

// -------------------------------------------------------------- encodings

TEST_F(GLSLNumericTest, SRGBCurvesMatchTheStandardAndInvertEachOther) {
    const std::vector<glm::vec4>& inputs = testColours();
    const std::vector<glm::vec4> exact = evaluate(
        pmGLSL::sRGBEncodings, inputs, "vec4(sRGBToLinear(inputs.rgb), linearTosRGB(vec3(0.5)).x)");
    const std::vector<glm::vec4> back = evaluate(
        pmGLSL::sRGBEncodings, inputs, "linearTosRGB(sRGBToLinear(vec4(inputs.rgb, 0.25)))");
    const std::vector<glm::vec4> simple = evaluate(
        pmGLSL::sRGBEncodings_Simple, inputs,
        "vec4(sRGBToLinear(inputs.rgb), linearTosRGB(sRGBToLinear(vec4(inputs.rgb, 0.25))).a)");
    for (size_t i = 0; i < inputs.size(); ++i) {
        const glm::dvec3 c(inputs[i]);
        expectVec3Near(exact[i], {toLinear(c.x), toLinear(c.y), toLinear(c.z)}, 1e-5, i);
        EXPECT_NEAR(exact[i].w, toGamma(0.5), 1e-5);
        expectVec3Near(back[i], c, 1e-5, i);
        EXPECT_EQ(back[i].w, 0.25f) << "alpha passes through";
        expectVec3Near(simple[i], {std::pow(c.x, 2.2), std::pow(c.y, 2.2), std::pow(c.z, 2.2)},
                       1e-5, i);
        EXPECT_EQ(simple[i].w, 0.25f);
    }
}

TEST_F(GLSLNumericTest, HdrEncodingsRoundTrip) {
    std::vector<glm::vec4> inputs;
    for (const glm::vec4& c : testColours()) {
        if (c.x + c.y + c.z > 0.0f) inputs.push_back(c * 5.0f);
    }
    const std::string chunks = pmGLSL::RGBEEncodings + pmGLSL::RGBMEncodings +
                               pmGLSL::RGBDEncodings + pmGLSL::logLuvEncodings;
    const char* const roundTrips[] = {
        "RGBEToLinear(linearToRGBE(vec4(inputs.rgb, 1.0)))",
        "RGBMToLinear(linearToRGBM(vec4(inputs.rgb, 1.0), 8.0), 8.0)",
        "RGBDToLinear(linearToRGBD(vec4(inputs.rgb, 1.0), 8.0), 8.0)",
        "logLuvToLinear(linearToLogLuv(vec4(inputs.rgb, 1.0)))",
    };
    const char* const bounds[] = {
        "vec4(lessThanEqual(linearToRGBE(vec4(inputs.rgb, 1.0)), vec4(1.0)))",
        "vec4(lessThanEqual(linearToRGBM(vec4(inputs.rgb, 1.0), 8.0), vec4(1.0)))",
        "vec4(lessThanEqual(linearToRGBD(vec4(inputs.rgb, 1.0), 8.0), vec4(1.0)))",
        "vec4(lessThanEqual(linearToLogLuv(vec4(inputs.rgb, 1.0)), vec4(1.0)))",
    };
    for (int e = 0; e < 4; ++e) {
        SCOPED_TRACE(roundTrips[e]);
        const std::vector<glm::vec4> out = evaluate(chunks, inputs, roundTrips[e]);
        const std::vector<glm::vec4> inRange = evaluate(chunks, inputs, bounds[e]);
        for (size_t i = 0; i < inputs.size(); ++i) {
            // LogLuv's matrices are given to four places.
            const double tolerance = e == 3 ? 2e-3 * 5.0 : 1e-5 * 5.0;
            expectVec3Near(out[i], glm::dvec3(inputs[i]), tolerance, i);
            EXPECT_EQ(out[i].w, 1.0f);
            EXPECT_EQ(inRange[i], glm::vec4(1.0f)) << "the encoding fits 8-bit channels";
        }
    }
}

TEST_F(GLSLNumericTest, ColourModelsRoundTripAndAgree) {
    const std::vector<glm::vec4>& inputs = testColours();
    const std::string chunks =
        pmGLSL::colorLab + pmGLSL::colorConversions + pmGLSL::rgb2hsb + pmGLSL::hsb2rgb;
    const char* const roundTrips[] = {
        "vec4(hsv2rgb(rgb2hsv(inputs.rgb)), 0.0)",   "vec4(hsv2rgb(rgb2hsv_2(inputs.rgb)), 0.0)",
        "vec4(hsl2rgb(rgb2hsl(inputs.rgb)), 0.0)",   "vec4(ycbcr2rgb(rgb2ycbcr(inputs.rgb)), 0.0)",
        "vec4(srgb2rgb(rgb2srgb(inputs.rgb)), 0.0)", "vec4(yxy2rgb(rgb2yxy(inputs.rgb)), 0.0)",
        "vec4(cmyk2rgb(rgb2cmyk(inputs.rgb)), 0.0)",
    };
    for (const char* roundTrip : roundTrips) {
        SCOPED_TRACE(roundTrip);
        const std::vector<glm::vec4> out = evaluate(chunks, inputs, roundTrip);
        for (size_t i = 0; i < inputs.size(); ++i) {
            expectVec3Near(out[i], glm::dvec3(inputs[i]), 1e-3, i);
        }
    }
    // The three RGB to HSV forms agree wherever the hue is defined; the hue
    // of a grey is 0 in each.
    const std::vector<glm::vec4> hsv = evaluate(chunks, inputs, "vec4(rgb2hsv(inputs.rgb), 0.0)");
    const std::vector<glm::vec4> hsv2 =
        evaluate(chunks, inputs, "vec4(rgb2hsv_2(inputs.rgb), 0.0)");
    const std::vector<glm::vec4> hsb = evaluate(chunks, inputs, "vec4(rgb2hsb(inputs.rgb), 0.0)");
    for (size_t i = 0; i < inputs.size(); ++i) {
        expectVec3Near(hsv2[i], glm::dvec3(hsv[i]), 1e-5, i);
        expectVec3Near(hsb[i], glm::dvec3(hsv[i]), 1e-5, i);
    }
    expectVec3Near(hsv[2], {0.0, 1.0, 1.0}, 1e-6, 2);
    expectVec3Near(hsv[3], {1.0 / 3.0, 1.0, 1.0}, 1e-6, 3);
    expectVec3Near(hsv[4], {2.0 / 3.0, 1.0, 1.0}, 1e-6, 4);
    // The smoothed ramp still hits the primaries and keeps greys grey.
    const std::vector<glm::vec4> hues = {{0.0f, 1.0f, 1.0f, 0},
                                         {1.0f / 3.0f, 1.0f, 1.0f, 0},
                                         {2.0f / 3.0f, 1.0f, 1.0f, 0},
                                         {0.4f, 0.0f, 0.6f, 0}};
    const std::vector<glm::vec4> rgb = evaluate(chunks, hues, "vec4(hsb2rgb(inputs.rgb), 0.0)");
    expectVec3Near(rgb[0], {1.0, 0.0, 0.0}, 1e-5, 0);
    expectVec3Near(rgb[1], {0.0, 1.0, 0.0}, 1e-5, 1);
    expectVec3Near(rgb[2], {0.0, 0.0, 1.0}, 1e-5, 2);
    expectVec3Near(rgb[3], {0.6, 0.6, 0.6}, 1e-6, 3);
}

// ------------------------------------------------------------ toneMapping

double lumaOf(glm::dvec3 c) {
    return c.x * 0.2126 + c.y * 0.7152 + c.z * 0.0722;
}
glm::dvec3 gammaOf(glm::dvec3 c) {
    return {std::pow(c.x, 1.0 / 2.2), std::pow(c.y, 1.0 / 2.2), std::pow(c.z, 1.0 / 2.2)};
}
glm::dvec3 unchartedCurve(glm::dvec3 x) {
    const double A = 0.15, B = 0.50, C = 0.10, D = 0.20, E = 0.02, F = 0.30;
    return ((x * (A * x + C * B) + D * E) / (x * (A * x + B) + D * F)) - E / F;
}

// The operators as the chunk documents them, in double precision.
glm::dvec3 tonemapCpu(const std::string& macro, glm::dvec3 color, double brightness, double white) {
    const glm::dvec3 x = color * brightness;
    if (macro == "TONEMAP_SIMPLE") return gammaOf(x);
    if (macro == "TONEMAP_LINEAR") return x;
    if (macro == "TONEMAP_REINHARD") return gammaOf(x / (1.0 + x));
    if (macro == "TONEMAP_REINHARD_LUMA") return gammaOf(x / (1.0 + lumaOf(x)));
    if (macro == "TONEMAP_REINHARD_WHITE") {
        const double l = lumaOf(x);
        return gammaOf(x * (1.0 + l / (white * white)) / (1.0 + l));
    }
    if (macro == "TONEMAP_FILMIC") {
        const glm::dvec3 y = glm::max(x - 0.004, 0.0);
        return (y * (6.2 * y + 0.5)) / (y * (6.2 * y + 1.7) + 0.06);
    }
    if (macro == "TONEMAP_FILMIC_2015") {
        return gammaOf(
            glm::clamp((x * (2.51 * x + 0.03)) / (x * (2.43 * x + 0.59) + 0.14), 0.0, 1.0));
    }
    if (macro == "TONEMAP_PHOTOGRAPHIC") return gammaOf(1.0 - glm::exp(-x));
    if (macro == "TONEMAP_UNCHARTED") {
        return gammaOf(unchartedCurve(2.0 * x) / unchartedCurve(glm::dvec3(white)));
    }
    return color;
}

TEST_F(GLSLNumericTest, ToneMappingOperatorsAndTheirInverses) {
    const double brightness = 1.5, white = 4.0;
    const std::vector<glm::vec4> inputs = {
        {0.05f, 0.2f, 0.9f, 0}, {0.5f, 0.5f, 0.5f, 0},  {1.0f, 0.3f, 0.01f, 0},
        {0.8f, 0.9f, 0.7f, 0},  {0.02f, 0.6f, 0.4f, 0},
    };
    const auto setUniforms = [&](GLuint program) {
        glUniform1f(glGetUniformLocation(program, "uBrightness"), float(brightness));
        glUniform1f(glGetUniformLocation(program, "uWhitePoint"), float(white));
    };
    std::vector<std::string> macros(std::begin(toneMappingMacros), std::end(toneMappingMacros));
    macros.push_back("");
    for (const std::string& macro : macros) {
        SCOPED_TRACE(macro.empty() ? "no macro" : macro);
        const std::string head = macro.empty() ? "" : "#define " + macro + "\n";
        const std::vector<glm::vec4> mapped =
            evaluate(pmGLSL::toneMapping, inputs, "vec4(applyTonemapping(inputs.rgb), 0.0)", head,
                     setUniforms);
        const std::vector<glm::vec4> back = evaluate(
            pmGLSL::toneMapping, inputs,
            "vec4(inverseTonemapping(applyTonemapping(inputs.rgb)), 0.0)", head, setUniforms);
        for (size_t i = 0; i < inputs.size(); ++i) {
            const glm::dvec3 c(inputs[i]);
            expectVec3Near(mapped[i], tonemapCpu(macro, c, brightness, white), 1e-4, i);
            expectVec3Near(back[i], c, 2e-3, i);
        }
    }
}

}  // namespace
