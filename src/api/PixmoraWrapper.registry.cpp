// The objects that Create has handed out and Delete has not yet taken back.
// A handler is a caller's pointer: one that was never handed out, or whose
// object is gone, is refused before anything is read through it.
#include <mutex>
#include <unordered_set>

#include "PixmoraWrapper.h"

namespace pmWrapper {

namespace {

std::mutex& registryMutex() {
    static std::mutex mutex;
    return mutex;
}

std::unordered_set<const void*>& liveObjects() {
    static std::unordered_set<const void*> objects;
    return objects;
}

}  // namespace

void registerObject(const pmFilters::FilterCommon* filter) {
    if (filter == nullptr) return;
    std::lock_guard<std::mutex> lock(registryMutex());
    liveObjects().insert(static_cast<const void*>(filter));
}

bool unregisterObject(const void* handler) {
    std::lock_guard<std::mutex> lock(registryMutex());
    return liveObjects().erase(handler) == 1;
}

bool isLiveObject(const void* handler) {
    std::lock_guard<std::mutex> lock(registryMutex());
    return liveObjects().count(handler) == 1;
}

pmFilters::FilterCommon* objectOf(const pmFilterObject& object) {
    if (object.handler == nullptr) return nullptr;
    if (!isLiveObject(object.handler)) {
        PM_LOGE("Object Handler is not a live object.");
        return nullptr;
    }
    return static_cast<pmFilters::FilterCommon*>(object.handler);
}

}  // namespace pmWrapper
