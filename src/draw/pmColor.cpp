// Colour converters between RGB and YUV 4:4:4 as three plain channels.
#include "pmColor.h"

#include "pmMesh.h"

namespace pmColor {

namespace {

// The quad is in clip space already; no texture coordinate is passed on, the
// fragment stage samples at its window position.
const char* const vertexShader = R"(#version 300 es
precision highp float;
in vec3 aPosition;
void main() {
    gl_Position = vec4(aPosition, 1.0);
}
)";

// Chroma is read centred at 0.5.
const char* const yuvToRgbShader = R"(#version 300 es
precision highp float;
uniform sampler2D uInputTex;
uniform vec2 uInvResolution;
out vec4 fragColor;
void main() {
    vec3 yuv = texture(uInputTex, gl_FragCoord.xy * uInvResolution).rgb;
    float y = yuv.r;
    float u = yuv.g - 0.5;
    float v = yuv.b - 0.5;
    float r = y + 1.402 * v;
    float g = y - 0.344 * u - 0.714 * v;
    float b = y + 1.772 * u;
    fragColor = vec4(r, g, b, 1.0);
}
)";

// Chroma is written centred at 0.0: the negative half clips in an unsigned
// target. Not the inverse of the shader above, on purpose.
const char* const rgbToYuvShader = R"(#version 300 es
precision highp float;
uniform sampler2D uInputTex;
uniform vec2 uInvResolution;
out vec4 fragColor;
void main() {
    vec3 rgb = texture(uInputTex, gl_FragCoord.xy * uInvResolution).rgb;
    float y = 0.299 * rgb.r + 0.587 * rgb.g + 0.114 * rgb.b;
    float u = (rgb.b - y) * 0.565;
    float v = (rgb.r - y) * 0.713;
    fragColor = vec4(y, u, v, 1.0);
}
)";

}  // namespace

void ColorConverter::Initialize(const std::string& fragmentShader) {
    pmGL::createProgram(program, vertexShader, fragmentShader.c_str());
    pmGL::TriangleStripMesh<pmMesh::PositionVertex> mesh;
    pmMesh::createQuad(mesh, glm::vec2(-1.0f, -1.0f), glm::vec2(1.0f, 1.0f));
    pmGL::createVertexBuffer(vertexBuffer, sizeof(pmMesh::PositionVertex), mesh.vertices.size(),
                             mesh.vertices.data(), GL_STATIC_DRAW, GL_TRIANGLE_STRIP,
                             mesh.attributes);
    pmGL::createVertexArray(vertexArray, vertexBuffer, program);
    pmGL::disableBlend(renderOpts.blend);
}

void ColorConverter::SetInputTexture(const pmGL::Texture& texture) {
    pmGL::setUniformData(uniforms, "uInputTex", texture);
}

void ColorConverter::SetOutputResolution(int width, int height) {
    pmGL::setUniformData(
        uniforms, "uInvResolution",
        glm::vec2(1.0f / static_cast<float>(width), 1.0f / static_cast<float>(height)));
}

void ColorConverter::Render() {
    if (program.id == 0) return;
    if (uniforms.textures.count("uInputTex") == 0) return;
    pmGL::useRenderOptions(renderOpts);
    pmGL::useProgram(program);
    pmGL::useUniformData(uniforms, program);
    pmGL::bindTexture(uniforms);
    pmGL::drawVertexArray(vertexArray, 1);
}

void ColorConverter::Terminate() {
    pmGL::deleteVertexArray(vertexArray);
    pmGL::deleteVertexBuffer(vertexBuffer);
    pmGL::deleteProgram(program);
}

void YUV444ToRGB888Converter::Initialize() {
    ColorConverter::Initialize(yuvToRgbShader);
}

void RGB888ToYUV444Converter::Initialize() {
    ColorConverter::Initialize(rgbToYuvShader);
}

}  // namespace pmColor
