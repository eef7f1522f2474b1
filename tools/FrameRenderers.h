// What the video command does to each frame: the video blur, drawn several
// times per input frame so that it cross-fades, or one photo effect. Both
// draw into the framebuffer bound on the tool's own context.
#ifndef PIXMORA_TOOL_FRAMERENDERERS_H
#define PIXMORA_TOOL_FRAMERENDERERS_H

#include <memory>

#include "BlurLook.h"
#include "FilterObjects.h"
#include "Pictures.h"

class FrameRenderer {
public:
    virtual ~FrameRenderer() = default;
    // Hands one RGB input frame, top row first, to the library.
    virtual void submit(Image& frame) = 0;
    // Draws one output picture into the bound framebuffer.
    virtual void draw(int width, int height) = 0;
};

struct VideoBlurOptions {
    BlurLook look;
    bool interpolation = true;
    bool dithering = true;
};

// Both renderers sample the picture mirrored vertically, so that the
// framebuffer read back bottom row first gives the frame top row first.
std::unique_ptr<FrameRenderer> makeVideoBlurRenderer(const VideoBlurOptions& options);
std::unique_ptr<FrameRenderer> makeEffectRenderer(unsigned effectType);

#endif
