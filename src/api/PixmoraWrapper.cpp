// The exported C entry points of the photo effects. Each one that touches GL
// puts its work inside the context bracket and never lets a failure reach
// the caller other than as a null result from Create.
#include "PhotoEffects.h"
#include "PixmoraWrapper.h"
#include "pixmora.h"

namespace pmWrapper {

void deleteInContext(pmFilters::FilterCommon* filter) {
    if (filter == nullptr || !unregisterObject(filter)) return;
    inContext([&] {
        filter->Terminate();
        delete filter;
    });
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    if (manager) manager->Terminate();
}

glm::vec2 flipForMode(int mode, int priority) {
    switch (mode) {
        case PM_FLIP_H:
            PM_LOG_AT(priority, "FlipMode [H Flip]");
            return glm::vec2(1.0f, 1.0f);
        case PM_FLIP_V:
            PM_LOG_AT(priority, "FlipMode [V Flip]");
            return glm::vec2(0.0f, 0.0f);
        case PM_FLIP_HV:
            PM_LOG_AT(priority, "FlipMode [HV Flip]");
            return glm::vec2(1.0f, 0.0f);
        default:
            PM_LOG_AT(priority, "FlipMode [None]");
            return glm::vec2(0.0f, 1.0f);
    }
}

}  // namespace pmWrapper

namespace {

using pmFilters::FilterCommon;
using pmWrapper::inContext;
using pmWrapper::objectOf;

FilterCommon* newPhotoFilter(unsigned type) {
    switch (type) {
        case PM_PHOTO_GREY:
            return pmUtil::safeNew<pmFilters::GrayFilter>();
        case PM_PHOTO_SEPIA:
            return pmUtil::safeNew<pmFilters::Sepia>();
        case PM_PHOTO_BLOOM:
            return pmUtil::safeNew<pmFilters::BloomPhoto>();
        case PM_PHOTO_MONOTONOUS_BLUR:
            return pmUtil::safeNew<pmFilters::MonotonousBlur>();
        case PM_PHOTO_CARTOON:
            return pmUtil::safeNew<pmFilters::CartoonPhoto>();
        case PM_PHOTO_CHROMATIC_DISTORTION:
            return pmUtil::safeNew<pmFilters::DistortionChroma>();
        case PM_PHOTO_NIGHT_VISION:
            return pmUtil::safeNew<pmFilters::NightVisionPhoto>();
        case PM_PHOTO_CROSS_STITCHING:
            return pmUtil::safeNew<pmFilters::CrossStitchingPhoto>();
        case PM_PHOTO_PAINTING:
            return pmUtil::safeNew<pmFilters::PaintingPhoto>();
        case PM_PHOTO_CROSS_HATCHING:
            return pmUtil::safeNew<pmFilters::CrossHatchingFilter>();
        default:
            PM_LOGE("pmPhotoFilterCreate() - Wrong Type. return nullptr.");
            return nullptr;
    }
}

}  // namespace

extern "C" {

PM_API void* pmPhotoFilterCreate(unsigned type) {
    PM_LOGE("pmPhotoFilterCreate() - Type : %d", type);
    return pmWrapper::createInContext([type] { return newPhotoFilter(type); });
}

PM_API void pmPhotoFilterDelete(pmFilterObject* object) {
    if (object == nullptr || object->handler == nullptr) {
        PM_LOGI("This object is empty.");
        return;
    }
    FilterCommon* filter = objectOf(*object);
    object->handler = nullptr;
    if (filter == nullptr) return;
    PM_LOGE("pmPhotoFilterDelete() - start to delete");
    pmWrapper::deleteInContext(filter);
    PM_LOGE("pmPhotoFilterDelete() - finish to delete");
}

PM_API void pmPhotoFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                   int height, int channels) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    const __ColorType type = channels == 3 ? COLOR_TYPE_RGB : COLOR_TYPE_RGBA;
    inContext([&] {
        // A size of no pixels keeps the old one and the new pixels go up at
        // it; an oversized one is refused with nothing uploaded.
        if (filter->SetInputBufferInfo(type, width, height) ||
            !pmFilters::isOversizedPicture(width, height)) {
            filter->SetInputBuffer(buffer);
        }
    });
}

PM_API void pmPhotoFilterSetFlipMode(pmFilterObject object, int mode) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    const glm::vec2 flip = pmWrapper::flipForMode(mode, PM_PRIO_INFO);
    inContext([&] { filter->SetFlip(flip); });
}

PM_API void pmPhotoFilterDraw(pmFilterObject object, int width, int height) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    inContext([&] { filter->Draw(width, height); });
}

PM_API void pmPhotoFilterSetNativeBuffer(pmFilterObject object, struct _tbm_surface* surface) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) {
        PM_LOGE("Object Handler is NULL");
        return;
    }
    inContext([&] { filter->SetNativeBuffer(surface); });
}

PM_API void pmPhotoFilterSetNativeDisplayInfo(pmFilterObject object, void* display) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) {
        PM_LOGE("Object Handler is NULL");
        return;
    }
    filter->SetDisplayInfo(display);
}

PM_API void pmSetEGLDisplay(void* display) {
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    if (manager) manager->SetEGLDisplay(display);
}

PM_API void pmEnableInternalGLContext(void) {
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    if (manager) manager->Enable();
    PM_LOGE("Enable internal GLContext.");
}

PM_API void pmDisableInternalGLContext(void) {
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    if (manager) manager->Disable();
    PM_LOGE("Disable internal GLContext.");
}

PM_API void PrintLog(char const* message) {
    PM_LOGE("%s", message ? message : "");
}

}  // extern "C"
