/**
 * @file pmGLContextManager.h
 * @brief GLContextManager: a private EGL context for each thread that creates filter objects.
 *
 * A process-wide singleton keeps one entry per thread with a reference count:
 * the exported Create functions register the calling thread, Delete releases
 * it, and every entry point binds the thread's context around its GL work so
 * that the application's own context is current again afterwards. The private
 * context shares no objects with the application's and renders on the surfaces
 * that were current at the thread's first registration. When disabled
 * (pmDisableInternalGLContext), binding does nothing and all GL work runs on the
 * caller's current context.
 */
#ifndef PIXMORA_PMGLCONTEXTMANAGER_H
#define PIXMORA_PMGLCONTEXTMANAGER_H

#include <list>
#include <mutex>
#include <thread>

#include "pmExport.h"
#include "pmGL.h"

namespace PM_VISIBLE pmGL {

struct GLContext {
    int refCount = 0;
    std::thread::id threadId;
    EGLInfo info;
};

class GLContextManager {
public:
    // The process-wide manager, created at first use; null if that failed.
    static GLContextManager* GetInstancePtr();
    // Destroys the manager. Contexts still listed are forgotten, not
    // destroyed; call only when no other thread is in the manager.
    static void ReleaseInstance();

    // Registers the calling thread or raises its reference count.
    void Initialize();
    // Lowers the calling thread's count and destroys its context at zero.
    void Terminate();
    bool Bind();
    bool Unbind();
    void Enable();
    void Disable();
    bool IsEnalbed();
    void SetEGLDisplay(void* eglDisplay);

    // For inspection: the entries, one per registered thread.
    const std::list<GLContext>& Contexts() const { return contexts; }
    void* Display() const { return display; }

private:
    GLContextManager() = default;
    std::list<GLContext>::iterator findContext();
    // Finds the calling thread's entry under the lock. Entries live in a list,
    // so the one returned stays put while other threads add or remove theirs.
    EGLInfo* findOwnInfo();

    std::mutex mutex;
    std::list<GLContext> contexts;
    void* display = nullptr;
    bool enabled = true;

    static GLContextManager* pInstance;

    template <typename T, typename... Args>
    friend T* pmUtil::safeNew(Args&&... args);
};

}  // namespace pmGL

#endif
