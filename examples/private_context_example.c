/* Turns a small synthetic picture grey on the library's private context.
 *
 * The program keeps the library's internal context enabled (the default). Its
 * own context is current on a pbuffer surface made with the configuration the
 * library uses for its private contexts, so the private context made at Create
 * renders on that same surface. Every library call binds the private context
 * and makes the program's context current again before it returns; the program
 * then reads the surface back with its own context and checks the luminance.
 *
 * Usage: private_context_example */
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>
#include <stdio.h>
#include <stdlib.h>

#include <pixmora/pixmora.h>

enum { WIDTH = 20, HEIGHT = 12, CHANNELS = 4 };

typedef struct {
    EGLDisplay display;
    EGLSurface surface;
    EGLContext context;
} Application;

/* The configuration the library asks for: the pbuffer must match it. */
static const EGLint libraryConfig[] = {EGL_RED_SIZE,
                                       8,
                                       EGL_GREEN_SIZE,
                                       8,
                                       EGL_BLUE_SIZE,
                                       8,
                                       EGL_ALPHA_SIZE,
                                       8,
                                       EGL_DEPTH_SIZE,
                                       16,
                                       EGL_STENCIL_SIZE,
                                       0,
                                       EGL_SURFACE_TYPE,
                                       EGL_PBUFFER_BIT,
                                       EGL_RENDERABLE_TYPE,
                                       EGL_OPENGL_ES2_BIT,
                                       EGL_SAMPLE_BUFFERS,
                                       1,
                                       EGL_SAMPLES,
                                       4,
                                       EGL_NONE};

static int openApplication(Application* app) {
    const EGLint surfaceAttribs[] = {EGL_WIDTH, WIDTH, EGL_HEIGHT, HEIGHT, EGL_NONE};
    const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    EGLConfig config = NULL;
    EGLint count = 0;

    app->display =
        eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, (void*)EGL_DEFAULT_DISPLAY, NULL);
    if (app->display == EGL_NO_DISPLAY || !eglInitialize(app->display, NULL, NULL)) return 0;
    eglBindAPI(EGL_OPENGL_ES_API);
    if (!eglChooseConfig(app->display, libraryConfig, &config, 1, &count) || count < 1) return 0;
    app->surface = eglCreatePbufferSurface(app->display, config, surfaceAttribs);
    app->context = eglCreateContext(app->display, config, EGL_NO_CONTEXT, contextAttribs);
    if (app->surface == EGL_NO_SURFACE || app->context == EGL_NO_CONTEXT) return 0;
    return eglMakeCurrent(app->display, app->surface, app->surface, app->context);
}

static void closeApplication(Application* app) {
    eglMakeCurrent(app->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(app->display, app->context);
    eglDestroySurface(app->display, app->surface);
    eglTerminate(app->display);
}

/* Opaque colour gradients, top row first. */
static void makePicture(unsigned char* rgba) {
    int x, y;
    for (y = 0; y < HEIGHT; ++y) {
        for (x = 0; x < WIDTH; ++x) {
            unsigned char* p = rgba + (y * WIDTH + x) * CHANNELS;
            p[0] = (unsigned char)(x * 255 / (WIDTH - 1));
            p[1] = (unsigned char)(255 - y * 255 / (HEIGHT - 1));
            p[2] = (unsigned char)((x * y) % 256);
            p[3] = 255;
        }
    }
}

static int luminance(const unsigned char* p) {
    const float mono = p[0] / 255.0f * 0.2125f + p[1] / 255.0f * 0.7154f + p[2] / 255.0f * 0.0721f;
    return (int)(mono * 255.0f + 0.5f);
}

/* Every call runs on the private context; the application's context is
 * current again after each one, which the program checks. */
static int drawGrey(Application* app, unsigned char* rgba) {
    pmFilterObject filter;
    int ownContextBack;
    filter.type = PM_PHOTO_GREY;
    filter.handler = pmPhotoFilterCreate(PM_PHOTO_GREY);
    if (filter.handler == NULL) return 0;
    pmPhotoFilterSetBuffer(filter, rgba, WIDTH, HEIGHT, CHANNELS);
    pmPhotoFilterDraw(filter, WIDTH, HEIGHT);
    ownContextBack = eglGetCurrentContext() == app->context;
    pmPhotoFilterDelete(&filter);
    return ownContextBack && eglGetCurrentContext() == app->context;
}

/* The surface holds the picture upright, so GL's bottom-first read-back row r
 * is picture row HEIGHT-1-r. */
static int countMismatches(const unsigned char* rgba) {
    static unsigned char out[WIDTH * HEIGHT * 4];
    int x, y, mismatches = 0;
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, WIDTH, HEIGHT, GL_RGBA, GL_UNSIGNED_BYTE, out);
    for (y = 0; y < HEIGHT; ++y) {
        for (x = 0; x < WIDTH; ++x) {
            const int expected = luminance(rgba + ((HEIGHT - 1 - y) * WIDTH + x) * CHANNELS);
            if (abs(out[(y * WIDTH + x) * 4] - expected) > 1) ++mismatches;
        }
    }
    return mismatches;
}

int main(void) {
    static unsigned char rgba[WIDTH * HEIGHT * CHANNELS];
    Application app;
    int mismatches;

    if (!openApplication(&app)) {
        fprintf(stderr, "private_context_example: cannot make the application's context\n");
        return 1;
    }
    makePicture(rgba);
    if (!drawGrey(&app, rgba)) {
        fprintf(stderr, "private_context_example: the grey effect could not be drawn\n");
        closeApplication(&app);
        return 1;
    }
    printf("Drew the grey effect on the library's private context into the shared surface.\n");
    mismatches = countMismatches(rgba);
    printf(
        "Read back with the application's context: %d of %d pixels differ from the CPU "
        "luminance.\n",
        mismatches, WIDTH * HEIGHT);
    closeApplication(&app);
    return mismatches == 0 ? 0 : 1;
}
