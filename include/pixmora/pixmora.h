/**
 * @file pixmora.h
 * @brief The C interface of Pixmora: GPU image filters for photographs and
 *        video frames.
 *
 * A filter object is created with a type code, fed with an image and drawn
 * into whatever framebuffer is bound on the calling thread, with the caller's
 * viewport: the library clears nothing and reads nothing back, except
 * pmBlurFilterSetOutputBuffer(). Every call runs on the caller's thread; drive
 * one object from the thread that created it. The header is plain C99 and C++.
 *
 * @anchor pm_handles
 * @par Handles
 * A Create function returns a bare handler, or null on failure; the caller
 * keeps it in a pmFilterObject together with the type code it asked for. Every
 * other function takes that record by value and does nothing when its
 * `handler` is null (a few say so in the log). No function but Create reports
 * failure to its caller: bad input is refused with a line in the log.
 *
 * @anchor pm_contexts
 * @par Contexts
 * By default each thread that creates a filter object gets a private EGL
 * context of the library, reference-counted per thread (one reference per
 * object). A function marked "bracketed" binds that context, does its GL work
 * and makes the caller's own context current again before it returns. The
 * private context shares no GL objects with the application's and renders on
 * the surfaces that were current at the thread's first Create. After
 * pmDisableInternalGLContext(), bracketed functions run on the context the
 * caller has current, which must then exist at every call.
 */
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

/**
 * @brief The caller's record of one filter object.
 *
 * Fill `handler` with what a Create function returned and `type` with the type
 * code asked for. A copy taken before Delete dangles afterwards.
 */
typedef struct {
    /** The type code given to Create: a photo effect code for the photo
     *  functions (which ignore it), PM_BLUR_PHOTO or PM_BLUR_VIDEO for the
     *  blur functions (which branch on it, so it must match the handler). */
    int type;
    /** The object returned by Create; null means "no object". */
    void* handler;
} pmFilterObject;

/**
 * @brief Pixel layouts.
 *
 * Even codes have four channels, odd codes three; codes outside 0 to 5 are
 * treated as COLOR_TYPE_RGBA.
 */
typedef enum {
    COLOR_TYPE_RGBA = 0,        /**< Interleaved RGBA, 4 bytes a pixel; the default. */
    COLOR_TYPE_RGB = 1,         /**< Interleaved RGB, 3 bytes a pixel. */
    COLOR_TYPE_YUVA = 2,        /**< Blur output kept in the luma and chroma domain. */
    COLOR_TYPE_YUV = 3,         /**< Interleaved luma and chroma, 3 bytes a pixel. */
    COLOR_TYPE_YUVA_PLANAR = 4, /**< Accepted as a four-channel code, never produced. */
    COLOR_TYPE_YUV444P = 5      /**< Three full-size planes of one byte a pixel. */
} __ColorType;

/** @brief Blur type codes for pmBlurFilterCreate() and pmFilterObject::type. */
enum {
    PM_BLUR_PHOTO = 0, /**< A single still, drawn or read back. */
    PM_BLUR_VIDEO = 1  /**< A stream of frames, cross-faded at the draw rate. */
};

/**
 * @brief A picture of the caller's for the blur, passed by value.
 *
 * The caller owns the memory; it need only live until the call returns.
 */
typedef struct {
    /** A __ColorType code; see the function it is given to. */
    int colorType;
    /** The pixels, rows tightly packed. An output buffer must hold
     *  width * height * 4 bytes whatever the colour type. */
    unsigned char* buffer;
    /** Width in pixels. */
    int width;
    /** Height in pixels. */
    int height;
} pmBlurBuffer;

/** @brief Three full-size planes of one byte per pixel each, owned by the caller. */
typedef struct {
    unsigned char* y; /**< Luma plane, width * height bytes. */
    unsigned char* u; /**< First chroma plane, width * height bytes. */
    unsigned char* v; /**< Second chroma plane, width * height bytes. */
    int width;        /**< Width of each plane in pixels. */
    int height;       /**< Height of each plane in pixels. */
} pmBlurBufferYUV444;

/** @brief A point in normalised units, 0.0 to 1.0 across the picture. */
typedef struct {
    float x; /**< Horizontal position, 0.0 at the left edge. */
    float y; /**< Vertical position, 0.0 at the bottom edge as GL counts. */
} pmVec2;

/** @brief Photo effect type codes for pmPhotoFilterCreate(). */
enum {
    PM_PHOTO_GREY = 0,                 /**< Grey scale. */
    PM_PHOTO_SEPIA = 1,                /**< Sepia tone. */
    PM_PHOTO_BLOOM = 2,                /**< Screen blend of the picture and its blur. */
    PM_PHOTO_MONOTONOUS_BLUR = 3,      /**< The grey picture, blurred. */
    PM_PHOTO_CARTOON = 4,              /**< Cartoon look. */
    PM_PHOTO_CHROMATIC_DISTORTION = 5, /**< Chromatic distortion. */
    PM_PHOTO_NIGHT_VISION = 6,         /**< Night vision; moves on with each draw. */
    PM_PHOTO_CROSS_STITCHING = 7,      /**< Cross-stitch pattern. */
    PM_PHOTO_PAINTING = 8,             /**< Painted look; uses the draw size. */
    PM_PHOTO_CROSS_HATCHING = 9        /**< Cross hatching. */
};

/**
 * @brief Flip modes for pmPhotoFilterSetFlipMode() and pmBlurFilterSetFlipMode().
 *
 * With PM_FLIP_NONE the picture is sampled with its vertical axis inverted, so
 * top-row-first pixels appear upright in a framebuffer, and a read-back of it
 * returns them bottom row first. PM_FLIP_V keeps the row order of the input.
 */
enum {
    PM_FLIP_NONE = 0, /**< Upright in GL's bottom-up framebuffer; any unknown mode too. */
    PM_FLIP_H = 1,    /**< Mirrored left to right, as well as the vertical inversion. */
    PM_FLIP_V = 2,    /**< Sampled as stored: the rows keep their order. */
    PM_FLIP_HV = 3    /**< Mirrored left to right, rows kept in order. */
};

/**
 * @brief Creates a photo effect object.
 *
 * While private contexts are enabled, the first Create on a thread makes its
 * private context (see @ref pm_contexts "Contexts"), on the display given to
 * pmSetEGLDisplay() or else the one current on the thread; each Create, even
 * a failed one, then takes a reference on it that only a Delete gives back.
 * @param type A PM_PHOTO_... code, 0 to 9.
 * @return The handler, or null for an unknown type or when memory runs out. A
 *         handler whose GL set-up failed is still returned and does nothing.
 */
PM_API void* pmPhotoFilterCreate(unsigned type);

/**
 * @brief Destroys a photo effect object and clears `object->handler`.
 *
 * Bracketed: deletes the GL objects on the thread's context, then releases the
 * thread's reference (the last one destroys the private context). A null
 * record or an empty handler is logged and ignored, so a second Delete through
 * the same record is harmless.
 * @param object The caller's record; may be null.
 */
PM_API void pmPhotoFilterDelete(pmFilterObject* object);

/**
 * @brief Uploads the input picture, copying it into a texture of the object.
 *
 * Bracketed. Rows are tightly packed, top row first for an upright result with
 * PM_FLIP_NONE. A null buffer is logged and refused. A width or height below 1
 * is logged and the earlier size and layout are kept (1920 x 1080, 3 channels
 * at first), and the buffer is then read at that size: always pass its true
 * size.
 * @param object The photo effect; ignored when its handler is null.
 * @param buffer width * height * channels bytes; needed only during the call.
 * @param width Width in pixels.
 * @param height Height in pixels.
 * @param channels 3 for interleaved RGB; any other value means RGBA.
 */
PM_API void pmPhotoFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                   int height, int channels);

/**
 * @brief Chooses how the input is sampled; takes effect at the next draw.
 *
 * Bracketed. The default is PM_FLIP_NONE.
 * @param object The photo effect; ignored when its handler is null.
 * @param mode A PM_FLIP_... code; unknown values mean PM_FLIP_NONE.
 */
PM_API void pmPhotoFilterSetFlipMode(pmFilterObject object, int mode);

/**
 * @brief Draws the effect into the framebuffer bound on this thread.
 *
 * Bracketed. One full quad with the caller's viewport and blending; nothing is
 * cleared. Before any input the pass has nothing to sample and logs that.
 * @param object The photo effect; ignored when its handler is null.
 * @param width Width of the picture on the target, in pixels; only
 *        PM_PHOTO_PAINTING uses it (0 gives no useful picture there).
 * @param height Height of the picture on the target, in pixels; as @p width.
 */
PM_API void pmPhotoFilterDraw(pmFilterObject object, int width, int height);

/**
 * @brief Copies a native surface of the platform into the object as its input.
 *
 * Bracketed. The surface is imported through the EGL display given with
 * pmPhotoFilterSetNativeDisplayInfo() and copied; it is never drawn into or
 * kept. A surface that cannot be imported is logged and the input stays as it
 * was. A null handler is logged and ignored.
 * @param object The photo effect.
 * @param surface The platform surface (a tbm_surface_h).
 */
PM_API void pmPhotoFilterSetNativeBuffer(pmFilterObject object, struct _tbm_surface* surface);

/**
 * @brief Gives the object the EGL display that native surfaces are imported on.
 *
 * Needs no context and binds none, so it may be called at any time. A null
 * handler is logged and ignored.
 * @param object The photo effect.
 * @param display An EGLDisplay.
 */
PM_API void pmPhotoFilterSetNativeDisplayInfo(pmFilterObject object, void* display);

/**
 * @brief Creates a blur object with the default kernel of 35 taps.
 *
 * The same as pmBlurFilterCreateWithKernelSize(type, 35).
 * @param type PM_BLUR_PHOTO or PM_BLUR_VIDEO.
 * @return The handler, or null for an unknown type or when memory runs out.
 */
PM_API void* pmBlurFilterCreate(unsigned type);

/**
 * @brief Creates a blur object with a chosen kernel width.
 *
 * Contexts as for pmPhotoFilterCreate(): a reference on the thread's private
 * context is taken even when Create fails. Logs "Blur Version 1.0.12 ".
 * @param type PM_BLUR_PHOTO or PM_BLUR_VIDEO; an unknown type is logged.
 * @param kernelSize Taps of the Gaussian kernel, rounded to the nearest of 7,
 *        11, 15, ...; use 7 to 407. The still blur clamps to that range; a
 *        video blur far outside it (negative, say) ends the process on an
 *        assertion.
 * @return The handler, or null for an unknown type or when memory runs out.
 */
PM_API void* pmBlurFilterCreateWithKernelSize(unsigned type, int kernelSize);

/**
 * @brief Destroys a blur object and clears `object->handler`.
 *
 * As pmPhotoFilterDelete(): bracketed, releases the thread's reference, and
 * ignores a null record or an empty handler with a log line.
 * @param object The caller's record; may be null.
 */
PM_API void pmBlurFilterDelete(pmFilterObject* object);

/**
 * @brief Uploads an RGB or RGBA input picture.
 *
 * Bracketed. For a video blur each call is a new frame, captured at the next
 * due draw. A null buffer and a size below 1 are handled as in
 * pmPhotoFilterSetBuffer(): always pass the buffer's true size.
 * @param object The blur; ignored when its handler is null.
 * @param buffer width * height * channels bytes, rows tightly packed.
 * @param width Width in pixels.
 * @param height Height in pixels.
 * @param channels 3 for interleaved RGB; any other value means RGBA.
 */
PM_API void pmBlurFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                  int height, int channels);

/**
 * @brief Takes a GL 2D texture as input; it is copied, never kept or deleted.
 *
 * Bracketed, so the texture must be a name of the context the call runs on:
 * the caller's own after pmDisableInternalGLContext(), since the private
 * context shares no objects. A name that cannot be bound is ignored. The input
 * size that pmBlurFilterSetOutputBuffer() scales by is not changed. For a
 * video blur each call is a new frame.
 * @param object The blur; ignored when its handler is null.
 * @param textureId The GL texture name.
 * @param width Width of the texture in pixels.
 * @param height Height of the texture in pixels.
 * @param format Its GL pixel format, e.g. GL_RGBA.
 * @param type Its GL component type, e.g. GL_UNSIGNED_BYTE.
 */
PM_API void pmBlurFilterSetBufferWithTexture(pmFilterObject object, unsigned textureId, int width,
                                             int height, unsigned format, unsigned type);

/**
 * @brief Planar 4:4:4 input for the still blur.
 *
 * Bracketed. The planes are uploaded and reach the picture only through
 * pmBlurFilterSetOutputBuffer() with colorType COLOR_TYPE_YUVA; no colour
 * conversion is made. Null planes are refused with a log line. A video blur
 * stores the size only. A null handler is logged and ignored.
 * @param object The blur.
 * @param planes The three planes and their size in pixels.
 */
PM_API void pmBlurFilterSetBufferYUV444(pmFilterObject object, pmBlurBufferYUV444 planes);

/**
 * @brief Interleaved three-channel luma and chroma input, whatever colorType says.
 *
 * Bracketed; uploaded as three channels like RGB, with the size rules of
 * pmPhotoFilterSetBuffer(). For a video blur each call is a new frame. A null
 * handler is logged and ignored.
 * @param object The blur.
 * @param input width * height * 3 bytes in @c input.buffer; @c colorType is
 *        ignored.
 */
PM_API void pmBlurFilterSetInputBuffer(pmFilterObject object, pmBlurBuffer input);

/**
 * @brief Still blur only: blurs at the output size and reads the result back.
 *
 * Bracketed. Reads width * height * 4 bytes into @c output.buffer, bottom row
 * first with PM_FLIP_NONE (see the flip modes). With colorType
 * COLOR_TYPE_YUVA or COLOR_TYPE_YUV the blur runs in the luma and chroma
 * domain without conversion, and later draws show this result rather than a
 * fresh blur. A null buffer is logged and nothing is read. A video blur logs
 * the colour type and does nothing; a null handler is logged and ignored.
 * @param object The blur.
 * @param output Size of the result in pixels, its colour type
 *        (COLOR_TYPE_YUVA, COLOR_TYPE_YUV, or anything else for RGBA) and the
 *        memory to fill.
 */
PM_API void pmBlurFilterSetOutputBuffer(pmFilterObject object, pmBlurBuffer output);

/**
 * @brief Video blur only: the part of the target drawn and of the picture sampled.
 *
 * Bracketed. The area drawn is clamped to the target; the same corners select
 * the part of the picture shown. Has no effect on a still blur.
 * @param object The blur; ignored when its handler is null.
 * @param lower Lower left corner, in normalised units.
 * @param upper Upper right corner, in normalised units.
 */
PM_API void pmBlurFilterSetRenderArea(pmFilterObject object, pmVec2 lower, pmVec2 upper);

/**
 * @brief Copies a native surface of the platform into the blur as its input.
 *
 * As pmPhotoFilterSetNativeBuffer(), except that a null handler is ignored in
 * silence. For a video blur each call is a new frame.
 * @param object The blur.
 * @param surface The platform surface (a tbm_surface_h).
 */
PM_API void pmBlurFilterSetNativeBuffer(pmFilterObject object, struct _tbm_surface* surface);

/**
 * @brief Gives the blur the EGL display that native surfaces are imported on.
 *
 * Needs no context. A null handler is ignored.
 * @param object The blur.
 * @param display An EGLDisplay.
 */
PM_API void pmBlurFilterSetNativeDisplayInfo(pmFilterObject object, void* display);

/**
 * @brief Draws the blur into the framebuffer bound on this thread.
 *
 * Bracketed; the caller's viewport, nothing cleared. A still blur draws a fresh
 * blur of its input, or the last read-back result once
 * pmBlurFilterSetOutputBuffer() was given COLOR_TYPE_YUVA or COLOR_TYPE_YUV. A
 * video blur captures the waiting frame when due and draws the cross-fade of
 * its last two captures; before any frame it logs and draws nothing.
 * @param object The blur; ignored when its handler is null.
 * @param width Not used.
 * @param height Not used.
 */
PM_API void pmBlurFilterDraw(pmFilterObject object, int width, int height);

/**
 * @brief Sets the blur degree; larger is softer.
 *
 * Bracketed. The value is logged and clamped to 1.0 to 50.0 (default 40 for
 * the still, 10 for the video blur). It acts at the next draw or read-back,
 * or for video at the next captured frame.
 * @param object The blur; a null handler is ignored, an unknown type logged.
 * @param intensity 1.0 to 50.0.
 */
PM_API void pmBlurFilterSetBlurIntensity(pmFilterObject object, float intensity);

/**
 * @brief Sets the brightness of the blur.
 *
 * Bracketed. Clamped to 0.0 to 1.0: 1.0 (the default) leaves it unchanged,
 * 0.0 makes it black.
 * @param object The blur; a null handler is ignored, an unknown type logged.
 * @param dimming 0.0 to 1.0.
 */
PM_API void pmBlurFilterSetBlurDimming(pmFilterObject object, float dimming);

/**
 * @brief Sets a colour mixed into the blur by its own alpha.
 *
 * Bracketed. Each component is clamped to 0.0 to 1.0. An alpha of 0 (the
 * default) leaves the blur as it is, 1 replaces it by the colour.
 * @param object The blur; a null handler is ignored, an unknown type logged.
 * @param r Red, 0.0 to 1.0.
 * @param g Green, 0.0 to 1.0.
 * @param b Blue, 0.0 to 1.0.
 * @param a Share of the colour in the mix, 0.0 to 1.0.
 */
PM_API void pmBlurFilterSetBlurMixColor(pmFilterObject object, float r, float g, float b, float a);

/**
 * @brief Video blur only: dithering against banding, on by default.
 *
 * Bracketed. A still blur always dithers and logs that it cannot change it.
 * @param object The blur; a null handler is ignored, an unknown type logged.
 * @param enabled true to dither the output.
 */
PM_API void pmBlurFilterSetDithering(pmFilterObject object, bool enabled);

/**
 * @brief Video blur only: cross-fading between frames, on by default.
 *
 * Bracketed. When off, each new frame shows at full weight at its first draw.
 * A still blur logs that it has no frames to interpolate.
 * @param object The blur; a null handler is ignored, an unknown type logged.
 * @param enabled true to cross-fade.
 */
PM_API void pmBlurFilterSetInterpolation(pmFilterObject object, bool enabled);

/**
 * @brief Chooses how the input is sampled, as pmPhotoFilterSetFlipMode().
 *
 * Bracketed.
 * @param object The blur; ignored when its handler is null.
 * @param mode A PM_FLIP_... code; unknown values mean PM_FLIP_NONE.
 */
PM_API void pmBlurFilterSetFlipMode(pmFilterObject object, int mode);

/** @brief Quality codes for pmBlurFilterSetQuality(). */
enum {
    PM_BLUR_QUALITY_DEFAULT = 0, /**< The scaled Gaussian passes; the starting quality. */
    PM_BLUR_QUALITY_SMOOTH = 1   /**< Box pyramid, short Gaussian, B-spline stretch. */
};

/**
 * @brief Chooses how a blur object (still or video) makes its blur.
 *
 * - PM_BLUR_QUALITY_DEFAULT (0), the starting value: the scaled Gaussian
 *   passes, output unchanged to the byte from earlier releases.
 * - PM_BLUR_QUALITY_SMOOTH (1): a Gaussian of the same width from a box
 *   pyramid, a short Gaussian at the pyramid's top and a cubic B-spline
 *   stretch back to full size, in half-float buffers where the renderer can
 *   draw into them (RGBA8 otherwise). Smooth areas show no steps of the
 *   working grid, and low intensities cost far less than in the default.
 *   It needs a few more small buffers, made at the first draw in it.
 *
 * Bracketed: runs on the thread's private context, or on the caller's current
 * context when the internal context is disabled. A still blur uses the new
 * quality at its next draw or read-back; a video blur blurs the waiting frame
 * again at its next Draw.
 *
 * @param object  A blur object; a null handler is ignored, an unknown type is logged.
 * @param quality PM_BLUR_QUALITY_DEFAULT or PM_BLUR_QUALITY_SMOOTH; any other
 *                value logs a line and keeps the current quality.
 */
PM_API void pmBlurFilterSetQuality(pmFilterObject object, int quality);

/**
 * @brief Names the display on which private contexts are made.
 *
 * Needs no context. Without it, the display current at a thread's first
 * Create is used; a thread with no context of its own must call this first.
 * Contexts that exist keep their display.
 * @param display An EGLDisplay.
 */
PM_API void pmSetEGLDisplay(void* display);

/**
 * @brief Turns the private per-thread contexts back on (the default).
 *
 * Needs no context. Bracketed functions then run on the thread's private
 * context and leave the caller's current context as it was. A thread whose
 * objects were created while disabled has no private context and keeps
 * running on its current one.
 */
PM_API void pmEnableInternalGLContext(void);

/**
 * @brief Turns the private per-thread contexts off, for all threads.
 *
 * Needs no context. From then on every function runs on the context that the
 * caller has current, drawing into the framebuffer the caller has bound.
 * Private contexts that exist are kept for pmEnableInternalGLContext().
 */
PM_API void pmDisableInternalGLContext(void);

/**
 * @brief Writes a message to the library's log at error priority.
 *
 * Needs no context. A null message writes an empty message.
 * @param message A NUL-terminated string.
 */
PM_API void PrintLog(char const* message);

#ifdef __cplusplus
}
#endif

#endif
