// The dithering passes: RandomDithering, the last stage of the blur, and
// PatternDithering, an ordered dither by the 8 x 8 Bayer matrix. Both apply a
// colour and an alpha factor and write premultiplied colour.
#include "pmDraw.h"
#include "pmGLSL.h"

namespace pmDraw {

using pmGL::FrameBuffer;
using pmGL::Texture;

namespace {

// "uSampler" is declared so that both dithering passes share one interface;
// nothing reads it here.
const char* const randomDitheringHead = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform sampler2D uSampler;
uniform vec4 uColor;
uniform vec4 uMixColor;
uniform float uAlphaMultiplier;
)";

// The dither comes last, after the premultiplication, so even a fully
// transparent pixel carries the shift.
const char* const randomDitheringMain = R"(
void main() {
    fragColor = uColor * texture(uTexture, vTexCoord);
    fragColor = mix(fragColor, uMixColor, uMixColor.a);
    fragColor.a *= uAlphaMultiplier;
    fragColor.rgb *= fragColor.a;
    fragColor.rgb = applyDithering(fragColor.rgb);
}
)";

const char* const patternDitheringShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform sampler2D uSampler;
uniform vec4 uColor;
uniform float uAlphaMultiplier;
void main() {
    fragColor = uColor * texture(uTexture, vTexCoord);
    fragColor.a *= uAlphaMultiplier;
    fragColor.rgb *= fragColor.a;
    fragColor.rgb += vec3(texture(uSampler, gl_FragCoord.xy / 8.0).r / 32.0 - (1.0 / 128.0));
}
)";

// Same as the plain shader except that alpha comes from a second texture.
const char* const patternDitheringAlphaShader = R"(#version 300 es
precision highp float;
in vec2 vTexCoord;
out vec4 fragColor;
uniform sampler2D uTexture;
uniform sampler2D uAlphaTexture;
uniform sampler2D uSampler;
uniform vec4 uColor;
uniform float uAlphaMultiplier;
void main() {
    fragColor = uColor * texture(uTexture, vTexCoord);
    fragColor.a = texture(uAlphaTexture, vTexCoord).a * uAlphaMultiplier;
    fragColor.rgb *= fragColor.a;
    fragColor.rgb += vec3(texture(uSampler, gl_FragCoord.xy / 8.0).r / 32.0 - (1.0 / 128.0));
}
)";

// The 8 x 8 Bayer ordered-dither matrix, row 0 first. As bytes the shader reads
// value / 255, so the shift runs from -1/128 to just below zero.
const unsigned char bayerPattern[8 * 8] = {
    0,  32, 8,  40, 2,  34, 10, 42,  //
    48, 16, 56, 24, 50, 18, 58, 26,  //
    12, 44, 4,  36, 14, 46, 6,  38,  //
    60, 28, 52, 20, 62, 30, 54, 22,  //
    3,  35, 11, 43, 1,  33, 9,  41,  //
    51, 19, 59, 27, 49, 17, 57, 25,  //
    15, 47, 7,  39, 13, 45, 5,  37,  //
    63, 31, 55, 23, 61, 29, 53, 21,  //
};

const Texture& firstColorTexture(const FrameBuffer& fb) {
    static const Texture none;
    return fb.colorTex.empty() ? none : fb.colorTex[0];
}

}  // namespace

// ---- RandomDithering

RandomDithering::~RandomDithering() = default;

bool RandomDithering::initialize() {
    PM_LOGE("RandomDithering::initialize()");
    const std::string fragmentShader = std::string(randomDitheringHead) + pmGLSL::nrand +
                                       "\n\t\t\t" + pmGLSL::ditheringV1 + randomDitheringMain;
    if (!TextureFilter::initialize(fragmentShader)) {
        PM_LOGE("___super::initialize(fragmentShader) failed.");
        return false;
    }
    PM_LOGE("___super::initialize(fragmentShader) success.");
    setColor(glm::vec4(1.0f, 1.0f, 1.0f, 1.0f));
    setAlphaMultiplier(1.0f);
    PM_LOGE("RandomDithering::initialize() will return true.");
    return true;
}

void RandomDithering::finalize() {
    PM_LOGE("RandomDithering::finalize()");
    TextureFilter::finalize();
    PM_LOGE("RandomDithering::finalize() end.");
}

void RandomDithering::setColor(const glm::vec4& color) {
    pmGL::setUniformData(ud, "uColor", color);
}

void RandomDithering::setMixColor(const glm::vec4& color) {
    pmGL::setUniformData(ud, "uMixColor", color);
}

// ---- PatternDithering

// The TextureFilter destructor releases the plain program, its vertex array
// and the quad; the alpha variant and the pattern are released here.
PatternDithering::~PatternDithering() {
    activeProgram = nullptr;
    activeVertexArray = nullptr;
    pmGL::deleteVertexArray(alphaVertexArray);
    pmGL::deleteProgram(alphaProgram);
    pmGL::deleteTexture(pattern);
}

bool createDithering(PatternDithering& filter) {
    PM_LOGE("createDithering()");
    if (!createTextureFilter(filter, patternDitheringShader)) {
        PM_LOGE("createTextureFilter() failed.");
        return false;
    }
    if (!createFilterProgram(filter.alphaProgram, patternDitheringAlphaShader)) {
        PM_LOGE("createFilterProgram() failed.");
        return false;
    }
    pmGL::createVertexArray(filter.alphaVertexArray, filter.quad, filter.alphaProgram);

    // NEAREST and REPEAT: each window pixel reads one entry, tiling every 8 pixels.
    pmGL::TextureOpts opts;
    opts.target = GL_TEXTURE_2D;
    opts.type = GL_UNSIGNED_BYTE;
    opts.internalFormat = GL_RGBA8;
    opts.format = GL_RGBA;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    opts.wrapS = GL_REPEAT;
    opts.wrapT = GL_REPEAT;
    opts.wrapR = GL_REPEAT;
    opts.mipmap = false;
    opts.linear = true;
    const pmUtil::ImageData<unsigned char> image(8, 8, 1, const_cast<unsigned char*>(bayerPattern));
    pmGL::createTexture(filter.pattern, image, opts);

    pmGL::setUniformData(filter.ud, "uSampler", filter.pattern);
    pmGL::setUniformData(filter.ud, "uColor", glm::vec4(1.0f, 1.0f, 1.0f, 1.0f));
    filter.setAlphaMultiplier(1.0f);
    PM_LOGE("createDithering() end.");
    return true;
}

void deleteDithering(PatternDithering& filter) {
    PM_LOGE("deleteDithering()");
    filter.activeProgram = nullptr;
    filter.activeVertexArray = nullptr;
    pmGL::deleteVertexArray(filter.alphaVertexArray);
    pmGL::deleteProgram(filter.alphaProgram);
    deleteTextureFilter(filter);
    pmGL::deleteTexture(filter.pattern);
    PM_LOGE("deleteDithering() end.");
}

// The variant is chosen anew at each call; an earlier alpha texture stays in
// the uniform data, unused by the plain program.
void setTexture(PatternDithering& filter, const Texture& colour, Texture* alpha, glm::vec2 flip) {
    setTexture(static_cast<BaseFilter&>(filter), colour, flip);
    if (alpha != nullptr) {
        pmGL::setUniformData(filter.ud, "uAlphaTexture", *alpha);
        filter.activeProgram = &filter.alphaProgram;
        filter.activeVertexArray = &filter.alphaVertexArray;
    } else {
        filter.activeProgram = &filter.program;
        filter.activeVertexArray = &filter.vertexArray;
    }
}

void setTexture(PatternDithering& filter, const FrameBuffer& colour, Texture* alpha,
                glm::vec2 flip) {
    setTexture(filter, firstColorTexture(colour), alpha, flip);
}

void setColor(PatternDithering& filter, const glm::vec4& color) {
    pmGL::setUniformData(filter.ud, "uColor", color);
}

void drawDithering(PatternDithering& filter) {
    if (filter.activeProgram == nullptr || filter.activeVertexArray == nullptr) {
        PM_LOGE("Please set texture first.\n");
        return;
    }
    pmGL::useRenderOptions(filter.renderOpts);
    pmGL::useProgram(*filter.activeProgram);
    pmGL::useUniformData(filter.ud, *filter.activeProgram);
    pmGL::bindTexture(filter.ud);
    pmGL::drawVertexArray(*filter.activeVertexArray, 1);
}

}  // namespace pmDraw
