/* Pixmora: GPU image filters for photographs and video frames.
 *
 * A filter object is created with a type code, fed with an image and drawn into
 * whatever framebuffer is bound on the calling thread. Every call runs on the
 * caller's thread; drive one object from the thread that created it. */
#ifndef PIXMORA_H
#define PIXMORA_H

#include "pmExport.h"

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
