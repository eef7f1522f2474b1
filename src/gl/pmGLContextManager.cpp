#include "pmGLContextManager.h"

#include <sstream>
#include <string>

namespace pmGL {

namespace {

void printThreadId(const std::string& title, const std::thread::id& id) {
    std::ostringstream text;
    text << id;
    PM_LOGI("%s = %s\n", title.c_str(), text.str().c_str());
}

}  // namespace

GLContextManager* GLContextManager::pInstance = nullptr;

GLContextManager* GLContextManager::GetInstancePtr() {
    static std::mutex instanceMutex;
    std::lock_guard<std::mutex> lock(instanceMutex);
    if (pInstance == nullptr) pInstance = pmUtil::safeNew<GLContextManager>();
    return pInstance;
}

void GLContextManager::ReleaseInstance() {
    if (pInstance == nullptr) return;
    delete pInstance;
    pInstance = nullptr;
}

void GLContextManager::Initialize() {
    std::lock_guard<std::mutex> lock(mutex);
    const std::thread::id self = std::this_thread::get_id();
    printThreadId("current thread id", self);
    for (GLContext& context : contexts) {
        if (context.threadId == self) {
            ++context.refCount;
            PM_LOGI("reference counter = %d\n", context.refCount);
            return;
        }
    }
    // A thread that already has an entry counts references even while the
    // manager is disabled; a new one gets nothing.
    if (!enabled) return;
    if (display == nullptr) display = eglGetCurrentDisplay();
    if (display == nullptr) {
        PM_LOGE("Failed to get egl display.\n");
        return;
    }
    void* readSurface = eglGetCurrentSurface(EGL_READ);
    void* drawSurface = eglGetCurrentSurface(EGL_DRAW);
    GLContext entry;
    entry.threadId = self;
    if (!setEGLInfo(entry.info, display, drawSurface, readSurface, nullptr)) return;
    if (!createEGLContext(entry.info)) {
        PM_LOGI("Fail to create egl context.\n");
        return;
    }
    entry.refCount = 1;
    contexts.push_back(entry);
    PM_LOGI("A new GLContext was successfully initialized (%zd).\n", contexts.size());
}

void GLContextManager::Terminate() {
    std::lock_guard<std::mutex> lock(mutex);
    auto entry = findContext();
    if (entry == contexts.end()) return;
    --entry->refCount;
    if (entry->refCount != 0) {
        PM_LOGI("reference counter = %d\n", entry->refCount);
        return;
    }
    deleteEGLContext(entry->info);
    contexts.erase(entry);
    PM_LOGI("A GLContext was successfully terminated (%zd).\n", contexts.size());
}

EGLInfo* GLContextManager::findOwnInfo() {
    std::lock_guard<std::mutex> lock(mutex);
    auto entry = findContext();
    return entry == contexts.end() ? nullptr : &entry->info;
}

bool GLContextManager::Bind() {
    if (!enabled) return false;
    EGLInfo* info = findOwnInfo();
    return info != nullptr && bindEGLContext(*info);
}

bool GLContextManager::Unbind() {
    if (!enabled) return false;
    EGLInfo* info = findOwnInfo();
    return info != nullptr && unbindEGLContext(*info);
}

void GLContextManager::Enable() {
    enabled = true;
}
void GLContextManager::Disable() {
    enabled = false;
}
bool GLContextManager::IsEnalbed() {
    return enabled;
}
void GLContextManager::SetEGLDisplay(void* eglDisplay) {
    display = eglDisplay;
}

std::list<GLContext>::iterator GLContextManager::findContext() {
    const std::thread::id self = std::this_thread::get_id();
    for (auto it = contexts.begin(); it != contexts.end(); ++it) {
        if (it->threadId == self) return it;
    }
    PM_LOGE("failed to find a valid context.\n");
    printThreadId("current thread id", self);
    for (const GLContext& context : contexts) printThreadId("\tbuffer thread id", context.threadId);
    return contexts.end();
}

}  // namespace pmGL
