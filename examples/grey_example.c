/* Turns a small synthetic picture grey with the library's photo effect.
 *
 * The program makes its own headless GL ES 3 context and framebuffer, hands the
 * library RGB pixels, draws the grey effect into the framebuffer, reads it back,
 * checks it against the luminance computed here, and saves it as a PGM file.
 *
 * Usage: grey_example [OUTPUT.pgm] */
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>
#include <stdio.h>
#include <stdlib.h>

#include <pixmora/pixmora.h>

enum { WIDTH = 24, HEIGHT = 16, CHANNELS = 3 };

typedef struct {
    EGLDisplay display;
    EGLContext context;
} Headless;

typedef struct {
    GLuint texture;
    GLuint framebuffer;
} Target;

static int openHeadless(Headless* gl) {
    const EGLint configAttribs[] = {EGL_RED_SIZE,     8, EGL_GREEN_SIZE,      8,
                                    EGL_BLUE_SIZE,    8, EGL_ALPHA_SIZE,      8,
                                    EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT,
                                    EGL_NONE};
    const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    EGLConfig config = NULL;
    EGLint count = 0;

    gl->display =
        eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, (void*)EGL_DEFAULT_DISPLAY, NULL);
    if (gl->display == EGL_NO_DISPLAY || !eglInitialize(gl->display, NULL, NULL)) return 0;
    eglBindAPI(EGL_OPENGL_ES_API);
    if (!eglChooseConfig(gl->display, configAttribs, &config, 1, &count) || count < 1) return 0;
    gl->context = eglCreateContext(gl->display, config, EGL_NO_CONTEXT, contextAttribs);
    if (gl->context == EGL_NO_CONTEXT) return 0;
    return eglMakeCurrent(gl->display, EGL_NO_SURFACE, EGL_NO_SURFACE, gl->context);
}

static void closeHeadless(Headless* gl) {
    eglMakeCurrent(gl->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(gl->display, gl->context);
    eglTerminate(gl->display);
}

/* An RGBA8 framebuffer of the picture's size, bound, with its viewport. */
static int createTarget(Target* target) {
    glGenTextures(1, &target->texture);
    glBindTexture(GL_TEXTURE_2D, target->texture);
    glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, WIDTH, HEIGHT);
    glGenFramebuffers(1, &target->framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, target->framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target->texture, 0);
    glViewport(0, 0, WIDTH, HEIGHT);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

static void deleteTarget(Target* target) {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &target->framebuffer);
    glDeleteTextures(1, &target->texture);
}

/* Colour gradients, top row first: red across, green down, blue diagonal. */
static void makePicture(unsigned char* rgb) {
    int x, y;
    for (y = 0; y < HEIGHT; ++y) {
        for (x = 0; x < WIDTH; ++x) {
            unsigned char* p = rgb + (y * WIDTH + x) * CHANNELS;
            p[0] = (unsigned char)(x * 255 / (WIDTH - 1));
            p[1] = (unsigned char)(y * 255 / (HEIGHT - 1));
            p[2] = (unsigned char)((x + y) * 255 / (WIDTH + HEIGHT - 2));
        }
    }
}

static int luminance(const unsigned char* p) {
    const float mono = p[0] / 255.0f * 0.2125f + p[1] / 255.0f * 0.7154f + p[2] / 255.0f * 0.0721f;
    return (int)(mono * 255.0f + 0.5f);
}

/* Draws the grey effect into the bound framebuffer; 0 if it cannot be made. */
static int drawGrey(unsigned char* rgb) {
    pmFilterObject filter;
    /* This program draws into its own framebuffer on its own context. */
    pmDisableInternalGLContext();
    filter.type = PM_PHOTO_GREY;
    filter.handler = pmPhotoFilterCreate(PM_PHOTO_GREY);
    if (filter.handler == NULL) return 0;
    pmPhotoFilterSetBuffer(filter, rgb, WIDTH, HEIGHT, CHANNELS);
    pmPhotoFilterSetFlipMode(filter, PM_FLIP_NONE);
    pmPhotoFilterDraw(filter, WIDTH, HEIGHT);
    pmPhotoFilterDelete(&filter);
    return 1;
}

/* GL reads bottom row first; flip mode none shows the picture upright in that
 * bottom-up framebuffer, so read-back row r holds picture row HEIGHT-1-r. */
static int readGrey(unsigned char* grey) {
    static unsigned char rgba[WIDTH * HEIGHT * 4];
    int x, y;
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, WIDTH, HEIGHT, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    if (glGetError() != GL_NO_ERROR) return 0;
    for (y = 0; y < HEIGHT; ++y) {
        for (x = 0; x < WIDTH; ++x) {
            grey[y * WIDTH + x] = rgba[((HEIGHT - 1 - y) * WIDTH + x) * 4];
        }
    }
    return 1;
}

static int countMismatches(const unsigned char* rgb, const unsigned char* grey) {
    int i, mismatches = 0;
    for (i = 0; i < WIDTH * HEIGHT; ++i) {
        if (abs(grey[i] - luminance(rgb + i * CHANNELS)) > 1) ++mismatches;
    }
    return mismatches;
}

static int savePgm(const char* path, const unsigned char* grey) {
    FILE* file = fopen(path, "wb");
    size_t written;
    if (file == NULL) return 0;
    fprintf(file, "P5\n%d %d\n255\n", WIDTH, HEIGHT);
    written = fwrite(grey, 1, WIDTH * HEIGHT, file);
    return fclose(file) == 0 && written == (size_t)(WIDTH * HEIGHT);
}

static int fail(const char* message) {
    fprintf(stderr, "grey_example: %s\n", message);
    return 1;
}

int main(int argc, char** argv) {
    static unsigned char rgb[WIDTH * HEIGHT * CHANNELS];
    static unsigned char grey[WIDTH * HEIGHT];
    const char* output = argc > 1 ? argv[1] : "grey_example.pgm";
    Headless gl;
    Target target;
    int ok, mismatches;

    if (!openHeadless(&gl)) return fail("cannot make a headless OpenGL ES 3 context");
    makePicture(rgb);
    printf("Made a %d x %d RGB picture of colour gradients.\n", WIDTH, HEIGHT);
    ok = createTarget(&target) && drawGrey(rgb) && readGrey(grey);
    deleteTarget(&target);
    closeHeadless(&gl);
    if (!ok) return fail("the grey effect could not be drawn");
    printf("Drew the grey effect into an RGBA8 framebuffer and read it back.\n");

    mismatches = countMismatches(rgb, grey);
    printf("Compared with the luminance computed on the CPU: %d of %d pixels differ.\n", mismatches,
           WIDTH * HEIGHT);
    if (!savePgm(output, grey)) return fail("cannot write the output file");
    printf("Saved the grey picture to %s.\n", output);
    return mismatches == 0 ? 0 : 1;
}
