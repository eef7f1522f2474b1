// The exported functions of the background blur. Like the photo functions
// they bracket their GL work with the thread's context; unlike them they read
// the record's type, since the two blur classes have operations of their own.
#include "PhotoFilterBlur.h"
#include "PhotoFilterVideoBlur.h"
#include "PixmoraWrapper.h"
#include "pixmora.h"

namespace {

using pmFilters::FilterCommon;
using pmFilters::PhotoFilterBlur;
using pmFilters::PhotoFilterVideoBlur;
using pmWrapper::inContext;
using pmWrapper::objectOf;

FilterCommon* newBlurFilter(unsigned type, int kernelSize) {
    if (type == PM_BLUR_PHOTO) {
        PM_LOGE("pmBlurFilterCreate() - NEW PHOTO BLUR ");
        return pmUtil::safeNew<PhotoFilterBlur>(kernelSize);
    }
    if (type == PM_BLUR_VIDEO) {
        PM_LOGE("pmBlurFilterCreate() NEW VIDEO BLUR ");
        return pmUtil::safeNew<PhotoFilterVideoBlur>(kernelSize);
    }
    PM_LOGE("pmBlurFilterCreate()  - unknown type. returns nullptr.");
    return nullptr;
}

// The object behind a record as the class its type names. A record whose
// type disagrees with its object, or whose object is not live, gives null
// with a log line: no object is ever used as a class it is not.
template <typename Blur>
Blur* blurOf(const pmFilterObject& object) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return nullptr;
    Blur* blur = dynamic_cast<Blur*>(filter);
    if (blur == nullptr) PM_LOGE("Object type %d does not match its handler.", object.type);
    return blur;
}

// The shape of the five functions that name a class: bracket first, then the
// type decides; a null handler of a known type is a silent no-op.
template <typename Photo, typename Video>
void byType(const pmFilterObject& object, const char* unknownTypeWords, Photo&& photo,
            Video&& video) {
    inContext([&] {
        if (object.type == PM_BLUR_PHOTO) {
            if (PhotoFilterBlur* blur = blurOf<PhotoFilterBlur>(object)) photo(blur);
        } else if (object.type == PM_BLUR_VIDEO) {
            if (PhotoFilterVideoBlur* blur = blurOf<PhotoFilterVideoBlur>(object)) video(blur);
        } else {
            PM_LOGE("%s", unknownTypeWords);
        }
    });
}

// Runs `work` on the object inside the bracket; a null handler does nothing.
template <typename Work>
void onObject(const pmFilterObject& object, Work&& work) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    inContext([&] { work(filter); });
}

}  // namespace

extern "C" {

PM_API void* pmBlurFilterCreate(unsigned type) {
    return pmBlurFilterCreateWithKernelSize(type, 35);
}

PM_API void* pmBlurFilterCreateWithKernelSize(unsigned type, int kernelSize) {
    PM_LOGE("Blur Version 1.0.12 ");
    return pmWrapper::createInContext([&] { return newBlurFilter(type, kernelSize); });
}

PM_API void pmBlurFilterDelete(pmFilterObject* object) {
    if (object == nullptr || object->handler == nullptr) {
        PM_LOGI("This object is empty.");
        return;
    }
    FilterCommon* filter = objectOf(*object);
    object->handler = nullptr;
    if (filter == nullptr) return;
    pmWrapper::deleteInContext(filter);
    PM_LOGI("pmBlurFilterDelete() - delete object.handler");
}

PM_API void pmBlurFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                  int height, int channels) {
    const __ColorType type = channels == 3 ? COLOR_TYPE_RGB : COLOR_TYPE_RGBA;
    onObject(object, [&](FilterCommon* filter) {
        if (filter->SetInputBufferInfo(type, width, height)) filter->SetInputBuffer(buffer);
    });
}

PM_API void pmBlurFilterSetBufferWithTexture(pmFilterObject object, unsigned textureId, int width,
                                             int height, unsigned format, unsigned type) {
    onObject(object, [&](FilterCommon* filter) {
        filter->SetInputBufferWithTexture(textureId, width, height, format, type);
    });
}

PM_API void pmBlurFilterSetBufferYUV444(pmFilterObject object, pmBlurBufferYUV444 planes) {
    if (object.handler == nullptr) {
        PM_LOGE("Object Handler is NULL");
        return;
    }
    onObject(object, [&](FilterCommon* filter) {
        if (filter->SetInputBufferInfo(COLOR_TYPE_YUV444P, planes.width, planes.height)) {
            filter->SetInputBufferYUV444(planes.y, planes.u, planes.v);
        }
    });
}

PM_API void pmBlurFilterSetInputBuffer(pmFilterObject object, pmBlurBuffer input) {
    if (object.handler == nullptr) {
        PM_LOGE("Object Handler is NULL");
        return;
    }
    onObject(object, [&](FilterCommon* filter) {
        if (filter->SetInputBufferInfo(COLOR_TYPE_YUV, input.width, input.height)) {
            filter->SetInputBuffer(input.buffer);
        }
    });
}

PM_API void pmBlurFilterSetOutputBuffer(pmFilterObject object, pmBlurBuffer output) {
    if (object.handler == nullptr) {
        PM_LOGE("Object Handler is NULL");
        return;
    }
    PM_LOGE("pmBlurFilterSetOutputBuffer_SetColorType[%d]", output.colorType);
    const __ColorType type = output.colorType == COLOR_TYPE_YUVA  ? COLOR_TYPE_YUVA
                             : output.colorType == COLOR_TYPE_YUV ? COLOR_TYPE_YUV
                                                                  : COLOR_TYPE_RGBA;
    onObject(object, [&](FilterCommon* filter) {
        const bool stored = filter->SetOutputBufferInfo(type, output.width, output.height);
        PM_LOGE("pmBlurFilterSetOutputBuffer_SetColorType[%d] - end", output.colorType);
        if (stored) filter->SetOutputBuffer(output.buffer);
    });
}

PM_API void pmBlurFilterSetRenderArea(pmFilterObject object, pmVec2 lower, pmVec2 upper) {
    const glm::vec2 low(lower.x, lower.y);
    const glm::vec2 up(upper.x, upper.y);
    onObject(object, [&](FilterCommon* filter) { filter->SetArea(low, up, low, up); });
}

PM_API void pmBlurFilterSetNativeBuffer(pmFilterObject object, struct _tbm_surface* surface) {
    onObject(object, [&](FilterCommon* filter) { filter->SetNativeBuffer(surface); });
}

PM_API void pmBlurFilterSetNativeDisplayInfo(pmFilterObject object, void* display) {
    FilterCommon* filter = objectOf(object);
    if (filter) filter->SetDisplayInfo(display);
}

PM_API void pmBlurFilterDraw(pmFilterObject object, int width, int height) {
    onObject(object, [&](FilterCommon* filter) { filter->Draw(width, height); });
}

PM_API void pmBlurFilterSetBlurIntensity(pmFilterObject object, float intensity) {
    byType(
        object, "pmBlurFilterSetBlurIntensity() - unknown type.",
        [&](PhotoFilterBlur* photo) { photo->SetIntensity(intensity); },
        [&](PhotoFilterVideoBlur* video) { video->SetIntensity(intensity); });
}

PM_API void pmBlurFilterSetBlurDimming(pmFilterObject object, float dimming) {
    byType(
        object, "pmBlurFilterSetBlurDimming() - unknown type.",
        [&](PhotoFilterBlur* photo) { photo->SetDimming(dimming); },
        [&](PhotoFilterVideoBlur* video) { video->SetDimming(dimming); });
}

PM_API void pmBlurFilterSetBlurMixColor(pmFilterObject object, float r, float g, float b, float a) {
    const glm::vec4 color(r, g, b, a);
    byType(
        object, "pmBlurFilterSetBlurMixColor() - unknown type.",
        [&](PhotoFilterBlur* photo) { photo->SetMixColor(color); },
        [&](PhotoFilterVideoBlur* video) { video->SetMixColor(color); });
}

PM_API void pmBlurFilterSetDithering(pmFilterObject object, bool enabled) {
    inContext([&] {
        if (object.type == PM_BLUR_PHOTO) {
            PM_LOGE("Photo blur can not disable dithering.");
        } else if (object.type == PM_BLUR_VIDEO) {
            if (PhotoFilterVideoBlur* blur = blurOf<PhotoFilterVideoBlur>(object)) {
                blur->SetDithering(enabled);
            }
        } else {
            PM_LOGE("pmBlurFilterSetDithering() - unknown type.");
        }
    });
}

PM_API void pmBlurFilterSetInterpolation(pmFilterObject object, bool enabled) {
    inContext([&] {
        if (object.type == PM_BLUR_PHOTO) {
            PM_LOGE("Frame interpolation not supported.");
        } else if (object.type == PM_BLUR_VIDEO) {
            if (PhotoFilterVideoBlur* blur = blurOf<PhotoFilterVideoBlur>(object)) {
                blur->SetInterpolation(enabled);
            }
        } else {
            // The words name the dithering function on purpose.
            PM_LOGE("pmBlurFilterSetDithering() - unknown type.");
        }
    });
}

PM_API void pmBlurFilterSetQuality(pmFilterObject object, int quality) {
    byType(
        object, "pmBlurFilterSetQuality() - unknown type.",
        [&](PhotoFilterBlur* photo) { photo->SetQuality(quality); },
        [&](PhotoFilterVideoBlur* video) { video->SetQuality(quality); });
}

PM_API void pmBlurFilterSetFlipMode(pmFilterObject object, int mode) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    const glm::vec2 flip = pmWrapper::flipForMode(mode, PM_PRIO_ERROR);
    inContext([&] { filter->SetFlip(flip); });
}

}  // extern "C"
