// A headless GL ES 3 context on Mesa's surfaceless EGL platform, with the
// test's own RGBA8 framebuffer bound, for reading back what a pass drew.
#ifndef PIXMORA_TESTS_GLTESTCONTEXT_H
#define PIXMORA_TESTS_GLTESTCONTEXT_H

#include <EGL/egl.h>
#include <GLES3/gl3.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

EGLDisplay testDisplay();

class GLTestContext {
public:
    // Makes a context current on the calling thread and binds a framebuffer of
    // the given size with its viewport.
    GLTestContext(int width = 16, int height = 16);
    ~GLTestContext();
    GLTestContext(const GLTestContext&) = delete;
    GLTestContext& operator=(const GLTestContext&) = delete;

    // Replaces the test framebuffer with one of another size and binds it.
    void resizeTarget(int width, int height);
    void clearTarget(float r, float g, float b, float a);
    // Reads the bound test framebuffer, bottom row first as GL gives it.
    std::vector<uint8_t> readTarget() const;

    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    GLuint fbo = 0;
    GLuint colorTex = 0;
    int width = 0;
    int height = 0;

private:
    void deleteTarget();
};

// An application context current on a pbuffer surface made with the
// configuration of the library's private contexts, so that a private context
// made while it is current renders on the same surface.
class SurfaceTestContext {
public:
    SurfaceTestContext(int width, int height);
    ~SurfaceTestContext();
    SurfaceTestContext(const SurfaceTestContext&) = delete;
    SurfaceTestContext& operator=(const SurfaceTestContext&) = delete;

    void makeCurrent();
    // Reads the surface with this context, bottom row first.
    std::vector<uint8_t> readSurface() const;

    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface surface = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;
    int width = 0;
    int height = 0;
};

class GLTest : public ::testing::Test {
protected:
    void SetUp() override { gl = std::make_unique<GLTestContext>(); }
    void TearDown() override { gl.reset(); }
    std::unique_ptr<GLTestContext> gl;
};

// The names GL hands out next, one each of texture, framebuffer, buffer,
// vertex array and program.
std::vector<GLuint> nextGLNames();

// Whether `work` leaves a new GL object behind: the names GL hands out move
// on by the same step with and without it only when it made none.
template <typename Work>
bool makesNoGLObject(Work&& work) {
    const std::vector<GLuint> first = nextGLNames();
    const std::vector<GLuint> second = nextGLNames();
    work();
    const std::vector<GLuint> third = nextGLNames();
    for (size_t i = 0; i < first.size(); ++i) {
        if (third[i] - second[i] != second[i] - first[i]) return false;
    }
    return true;
}

// Deterministic test pixels: width * height * channels bytes.
std::vector<uint8_t> makeTestPixels(int width, int height, int channels, unsigned seed = 1);

#endif
