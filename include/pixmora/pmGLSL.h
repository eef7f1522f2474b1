// pmGLSL: GLSL ES 3.00 source chunks that the passes splice into their shaders.
// GLSL ES has no include mechanism, so a shader is a plain concatenation of a
// header chunk, further chunks and its main. Only the two headers carry a
// version line; every other chunk starts with a line break.
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

}  // namespace pmGLSL

#endif
