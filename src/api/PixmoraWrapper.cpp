// The exported C entry points of the photo effects. Each one that touches GL
// puts its work inside the context bracket and never lets a failure reach
// the caller other than as a null result from Create.
#include "pixmora.h"
#include "pmFilters.h"
#include "pmGLContextManager.h"

namespace {

using pmFilters::FilterCommon;

FilterCommon* objectOf(const pmFilterObject& object) {
    return static_cast<FilterCommon*>(object.handler);
}

using pmGL::GLContextManager;

// Runs an entry point's GL work between Bind and Unbind of the calling
// thread's private context. Bind does nothing while the internal context is
// disabled or the thread has none; the work then runs on the caller's context.
template <typename Work>
void inContext(Work&& work) {
    GLContextManager* manager = GLContextManager::GetInstancePtr();
    if (manager) manager->Bind();
    work();
    if (manager) manager->Unbind();
}

FilterCommon* newPhotoFilter(unsigned type) {
    switch (type) {
        case PM_PHOTO_GREY:
            return pmUtil::safeNew<pmFilters::GrayFilter>();
        default:
            break;
    }
    if (type > PM_PHOTO_CROSS_HATCHING) {
        PM_LOGE("pmPhotoFilterCreate() - Wrong Type. return nullptr.");
    } else {
        PM_LOGE("pmPhotoFilterCreate() - Type %u is not available. return nullptr.", type);
    }
    return nullptr;
}

glm::vec2 flipForMode(int mode) {
    switch (mode) {
        case PM_FLIP_H:
            PM_LOGI("FlipMode [H Flip]");
            return glm::vec2(1.0f, 1.0f);
        case PM_FLIP_V:
            PM_LOGI("FlipMode [V Flip]");
            return glm::vec2(0.0f, 0.0f);
        case PM_FLIP_HV:
            PM_LOGI("FlipMode [HV Flip]");
            return glm::vec2(1.0f, 0.0f);
        default:
            PM_LOGI("FlipMode [None]");
            return glm::vec2(0.0f, 1.0f);
    }
}

}  // namespace

extern "C" {

PM_API void* pmPhotoFilterCreate(unsigned type) {
    PM_LOGE("pmPhotoFilterCreate() - Type : %d", type);
    // The thread's reference is taken even when no object comes of it; only
    // Delete gives references back.
    GLContextManager* manager = GLContextManager::GetInstancePtr();
    if (manager) manager->Initialize();
    FilterCommon* filter = nullptr;
    inContext([&] {
        filter = newPhotoFilter(type);
        // A failed Initialize still yields a handler; the object stays inert.
        if (filter) filter->Initialize();
    });
    return filter;
}

PM_API void pmPhotoFilterDelete(pmFilterObject* object) {
    if (object == nullptr || object->handler == nullptr) {
        PM_LOGI("This object is empty.");
        return;
    }
    PM_LOGE("pmPhotoFilterDelete() - start to delete");
    FilterCommon* filter = objectOf(*object);
    inContext([&] {
        filter->Terminate();
        delete filter;
    });
    GLContextManager* manager = GLContextManager::GetInstancePtr();
    if (manager) manager->Terminate();
    object->handler = nullptr;
    PM_LOGE("pmPhotoFilterDelete() - finish to delete");
}

PM_API void pmPhotoFilterSetBuffer(pmFilterObject object, unsigned char* buffer, int width,
                                   int height, int channels) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    const __ColorType type = channels == 3 ? COLOR_TYPE_RGB : COLOR_TYPE_RGBA;
    inContext([&] {
        filter->SetInputBufferInfo(type, width, height);
        filter->SetInputBuffer(buffer);
    });
}

PM_API void pmPhotoFilterSetFlipMode(pmFilterObject object, int mode) {
    FilterCommon* filter = objectOf(object);
    if (filter == nullptr) return;
    const glm::vec2 flip = flipForMode(mode);
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
    GLContextManager* manager = GLContextManager::GetInstancePtr();
    if (manager) manager->SetEGLDisplay(display);
}

PM_API void pmEnableInternalGLContext(void) {
    GLContextManager* manager = GLContextManager::GetInstancePtr();
    if (manager) manager->Enable();
    PM_LOGE("Enable internal GLContext.");
}

PM_API void pmDisableInternalGLContext(void) {
    GLContextManager* manager = GLContextManager::GetInstancePtr();
    if (manager) manager->Disable();
    PM_LOGE("Disable internal GLContext.");
}

PM_API void PrintLog(char const* message) {
    PM_LOGE("%s", message ? message : "");
}

}  // extern "C"
