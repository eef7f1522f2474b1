// The native import layer: wraps a TBM surface in an EGLImage. The device's
// EGL takes the surface itself; desktop EGL does not, so there the surface's
// pixels go through a 2D texture kept in the SurfaceTexture.
#ifndef PIXMORA_SRC_GL_PMGL_EGLIMAGE_H
#define PIXMORA_SRC_GL_PMGL_EGLIMAGE_H

#include <tbm_surface.h>

#include "pmGL.h"

namespace pmGL {

// The new EGLImage, or null with the reason logged. Needs a current context on
// desktop, where the copy of the pixels lives in `st.source`.
void* createEGLImage(SurfaceTexture& st, const EGLInfo& info, tbm_surface_h surface);

}  // namespace pmGL

#endif
