// Headless GL for the tool: a display, a context of the tool's own, and a
// framebuffer to draw into and read back.
#ifndef PIXMORA_TOOL_HEADLESS_H
#define PIXMORA_TOOL_HEADLESS_H

#include <EGL/egl.h>
#include <GLES3/gl3.h>

#include <vector>

// Mesa's surfaceless display, for runs that let the library make its own
// private context.
class HeadlessDisplay {
public:
    HeadlessDisplay();
    ~HeadlessDisplay();
    HeadlessDisplay(const HeadlessDisplay&) = delete;
    HeadlessDisplay& operator=(const HeadlessDisplay&) = delete;

    EGLDisplay display = EGL_NO_DISPLAY;
};

// An ES 3 context on the surfaceless display, current on this thread for its
// whole life.
class HeadlessContext {
public:
    HeadlessContext();
    ~HeadlessContext();
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

private:
    HeadlessDisplay headless;
    EGLContext context = EGL_NO_CONTEXT;
};

// An RGBA8 framebuffer of a picture's size, bound with a matching viewport.
class RenderTarget {
public:
    RenderTarget(int width, int height);
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    // Makes this framebuffer and its viewport the target of drawing again.
    void bind() const;
    // RGBA pixels in the order GL gives them: bottom row first.
    std::vector<unsigned char> read() const;
    // The same into a buffer of width * height * 4 bytes, for frame loops
    // that reuse one buffer.
    void readInto(std::vector<unsigned char>& pixels) const;

private:
    void checkSize() const;

    int width;
    int height;
    GLuint texture = 0;
    GLuint framebuffer = 0;
};

#endif
