// Reading a colour attachment into tightly packed rows, whatever the
// context's pack alignment and whether or not GL reads the texture's own
// format.
#ifndef PIXMORA_PMGLUTIL_READBACK_H
#define PIXMORA_PMGLUTIL_READBACK_H

#include "pmGL.h"

namespace pmGL {

// Fills `image` (the framebuffer's size, the attachment's channel count) from
// colour texture `index`. Returns false, with a log line, when GL refuses the
// read; the image then holds zeros, never what the heap held before.
bool readColorTexture(FrameBuffer& fb, unsigned index, ImageData<unsigned char>& image);
bool readColorTexture(FrameBuffer& fb, unsigned index, ImageData<float>& image);

}  // namespace pmGL

#endif
