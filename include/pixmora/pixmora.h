/* Pixmora: GPU image filters for photographs and video frames.
 *
 * A filter object is created with a type code, fed with an image and drawn into
 * whatever framebuffer is bound on the calling thread. Every call runs on the
 * caller's thread; drive one object from the thread that created it. */
#ifndef PIXMORA_H
#define PIXMORA_H

#include "pmExport.h"

#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A native buffer surface of the platform (tbm_surface_h points to one). */
struct _tbm_surface;

/* The caller's record of one filter object. Fill `handler` with what a Create
 * function returned and `type` with the type code asked for. */
typedef struct {
    int type;
    void* handler;
} pmFilterObject;

/* Pixel layouts. Even codes have four channels, odd codes three; codes outside
 * 0 to 5 are treated as COLOR_TYPE_RGBA. */
typedef enum {
    COLOR_TYPE_RGBA = 0,
    COLOR_TYPE_RGB = 1,
    COLOR_TYPE_YUVA = 2,
    COLOR_TYPE_YUV = 3,
    COLOR_TYPE_YUVA_PLANAR = 4,
    COLOR_TYPE_YUV444P = 5
} __ColorType;

/* Blur type codes for pmBlurFilterCreate. */
enum { PM_BLUR_PHOTO = 0, PM_BLUR_VIDEO = 1 };

/* A picture of the caller's for the blur: `colorType` is a __ColorType code;
 * an output buffer must hold width * height * 4 bytes whatever the type. */
typedef struct {
    int colorType;
    unsigned char* buffer;
    int width;
    int height;
} pmBlurBuffer;

/* Three full-size planes of one byte per pixel each. */
typedef struct {
    unsigned char* y;
    unsigned char* u;
    unsigned char* v;
    int width;
    int height;
} pmBlurBufferYUV444;

/* A point in normalised units, 0.0 to 1.0 across the picture. */
typedef struct {
    float x;
    float y;
} pmVec2;

/* Photo effect type codes for pmPhotoFilterCreate. */
enum {
    PM_PHOTO_GREY = 0,
    PM_PHOTO_SEPIA = 1,
    PM_PHOTO_BLOOM = 2,
    PM_PHOTO_MONOTONOUS_BLUR = 3,
    PM_PHOTO_CARTOON = 4,
    PM_PHOTO_CHROMATIC_DISTORTION = 5,
    PM_PHOTO_NIGHT_VISION = 6,
    PM_PHOTO_CROSS_STITCHING = 7,
    PM_PHOTO_PAINTING = 8,
    PM_PHOTO_CROSS_HATCHING = 9
};

/* Flip modes for pmPhotoFilterSetFlipMode. With PM_FLIP_NONE the picture is
 * sampled with its vertical axis inverted, so top-row-first pixels appear
 * upright in a framebuffer read back bottom row first. */
enum { PM_FLIP_NONE = 0, PM_FLIP_H = 1, PM_FLIP_V = 2, PM_FLIP_HV = 3 };

/* Creates a photo effect object; null for an unknown type or on failure. */
PM_API void* pmPhotoFilterCreate(unsigned type);
/* Destroys the object and clears object->handler. Safe on an empty record. */
PM_API void pmPhotoFilterDelete(pmFilterObject* object);
/* Uploads width x height pixels, interleaved RGB when channels is 3 and RGBA
 * otherwise, rows tightly packed. */
PM_API void pmPhotoFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                   int height, int channels);
PM_API void pmPhotoFilterSetFlipMode(pmFilterObject object, int mode);
/* Draws the effect into the framebuffer bound on this thread, with its viewport. */
PM_API void pmPhotoFilterDraw(pmFilterObject object, int width, int height);
/* Copies a native surface of the platform into the object as its input. */
PM_API void pmPhotoFilterSetNativeBuffer(pmFilterObject object, struct _tbm_surface* surface);
/* Gives the object the EGL display that native surfaces are imported on.
 * Touches no context, so it may be called at any time. */
PM_API void pmPhotoFilterSetNativeDisplayInfo(pmFilterObject object, void* display);

/* Background blur of a still (PM_BLUR_PHOTO) or of a stream of frames
 * (PM_BLUR_VIDEO). Create returns null for an unknown type. The kernel size is
 * rounded to the nearest of 7, 11, 15, ...; 35 is the default. */
PM_API void* pmBlurFilterCreate(unsigned type);
PM_API void* pmBlurFilterCreateWithKernelSize(unsigned type, int kernelSize);
PM_API void pmBlurFilterDelete(pmFilterObject* object);
/* Input pixels, RGB when channels is 3 and RGBA otherwise; for a video blur
 * each input call is a new frame. */
PM_API void pmBlurFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                  int height, int channels);
/* A GL texture of the caller's context as input; it is copied, not kept. */
PM_API void pmBlurFilterSetBufferWithTexture(pmFilterObject object, unsigned textureId, int width,
                                             int height, unsigned format, unsigned type);
PM_API void pmBlurFilterSetBufferYUV444(pmFilterObject object, pmBlurBufferYUV444 planes);
/* Interleaved three-channel luma and chroma input, whatever colorType says. */
PM_API void pmBlurFilterSetInputBuffer(pmFilterObject object, pmBlurBuffer input);
/* Still blur only: blurs at width x height and reads the result, four bytes a
 * pixel, into output.buffer. */
PM_API void pmBlurFilterSetOutputBuffer(pmFilterObject object, pmBlurBuffer output);
/* Video blur only: the part of the target drawn and of the picture sampled. */
PM_API void pmBlurFilterSetRenderArea(pmFilterObject object, pmVec2 lower, pmVec2 upper);
PM_API void pmBlurFilterSetNativeBuffer(pmFilterObject object, struct _tbm_surface* surface);
PM_API void pmBlurFilterSetNativeDisplayInfo(pmFilterObject object, void* display);
/* Draws the blur into the framebuffer bound on this thread. */
PM_API void pmBlurFilterDraw(pmFilterObject object, int width, int height);
/* Intensity 1 to 50, dimming 0 to 1 (0 is black), mix colour components 0 to 1. */
PM_API void pmBlurFilterSetBlurIntensity(pmFilterObject object, float intensity);
PM_API void pmBlurFilterSetBlurDimming(pmFilterObject object, float dimming);
PM_API void pmBlurFilterSetBlurMixColor(pmFilterObject object, float r, float g, float b, float a);
/* Video blur only: dithering against banding, cross-fading between frames. */
PM_API void pmBlurFilterSetDithering(pmFilterObject object, bool enabled);
PM_API void pmBlurFilterSetInterpolation(pmFilterObject object, bool enabled);
PM_API void pmBlurFilterSetFlipMode(pmFilterObject object, int mode);

/* Quality codes for pmBlurFilterSetQuality. */
enum { PM_BLUR_QUALITY_DEFAULT = 0, PM_BLUR_QUALITY_SMOOTH = 1 };

/**
 * Chooses how a blur object (still or video) makes its blur.
 *
 * - PM_BLUR_QUALITY_DEFAULT (0), the starting value: the scaled Gaussian
 *   passes, as in every earlier release, output unchanged to the byte.
 * - PM_BLUR_QUALITY_SMOOTH (1): a Gaussian of the same width from a box
 *   pyramid, a short Gaussian at the pyramid's top and a cubic B-spline
 *   stretch back to full size, in half-float buffers where the renderer can
 *   draw into them (RGBA8 otherwise). Smooth areas show no steps of the
 *   working grid, and low intensities cost far less than in the default.
 *   It needs a few more small buffers, made at the first draw in it.
 *
 * Any other value logs a line and keeps the current quality. A null handler
 * is ignored; an unknown type is logged. Like the other blur setters it runs
 * on the thread's private context, or on the caller's current context when
 * the internal context is disabled. A still blur uses the new quality at its
 * next draw or read-back; a video blur blurs the waiting frame again at its
 * next Draw.
 */
PM_API void pmBlurFilterSetQuality(pmFilterObject object, int quality);

/* The display on which the library makes its private per-thread contexts.
 * Without it, the display current at a thread's first Create is used. */
PM_API void pmSetEGLDisplay(void* display);
/* The private per-thread context is enabled by default: each call then runs
 * on it and the caller's own context is current again when the call returns.
 * When it is disabled, every call runs on the context the caller has current. */
PM_API void pmEnableInternalGLContext(void);
PM_API void pmDisableInternalGLContext(void);

/* Writes a message to the library's log. */
PM_API void PrintLog(char const* message);

#ifdef __cplusplus
}
#endif

#endif
