/**
 * @file pmColor.h
 * @brief GPU colour conversion (pmColor): RGB to and from luma and chroma.
 *
 * The conversion (YUV 4:4:4 as three plain channels) runs on the GPU, in one
 * render into the framebuffer bound at the call. The sampling position comes
 * from the window, so input and output map 1 to 1 in normalised units. No filter
 * object uses these classes; they serve code that needs the conversion alone.
 *
 * The two conversions are deliberately not inverse to each other:
 * RGB888ToYUV444Converter writes chroma centred at 0.0 (negative chroma clips in
 * an unsigned target), YUV444ToRGB888Converter reads it centred at 0.5.
 *
 * Calling order: Initialize, SetOutputResolution and SetInputTexture in any
 * order, Render as often as wanted, Terminate; all with a current GL context.
 */
#ifndef PIXMORA_PMCOLOR_H
#define PIXMORA_PMCOLOR_H

#include <string>

#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmColor {

class ColorConverter {
public:
    // Builds the program from the shared vertex stage and `fragmentShader`,
    // the quad and its vertex array; failures show as an empty program.
    void Initialize(const std::string& fragmentShader);
    // Stored as the uniform "uInputTex".
    void SetInputTexture(const pmGL::Texture& texture);
    // The size of the target framebuffer, stored as (1 / width, 1 / height) in
    // "uInvResolution"; a zero size stores infinities.
    void SetOutputResolution(int width, int height);
    // Draws one quad; silently nothing without a program or an input.
    void Render();
    void Terminate();

    pmGL::UniformData uniforms;
    pmGL::RenderOpts renderOpts;
    pmGL::Program program;
    pmGL::VertexBuffer vertexBuffer;
    pmGL::VertexArray vertexArray;
};

// (y, u, v) with chroma centred at 0.5 to (r, g, b, 1).
class YUV444ToRGB888Converter : public ColorConverter {
public:
    void Initialize();
};

// (r, g, b) to (y, u, v, 1) with chroma centred at 0.0.
class RGB888ToYUV444Converter : public ColorConverter {
public:
    void Initialize();
};

}  // namespace pmColor

#endif
