// Shared by the exported functions: the context bracket around each entry
// point's GL work, and the flip modes.
#ifndef PIXMORA_SRC_API_PIXMORAWRAPPER_H
#define PIXMORA_SRC_API_PIXMORAWRAPPER_H

#include "pmFilters.h"
#include "pmGLContextManager.h"

namespace pmWrapper {

// Objects handed out by Create and not yet deleted. An object is registered
// when Create returns it and unregistered before Delete destroys it.
void registerObject(const pmFilters::FilterCommon* filter);
// False when the handler was not live: nothing is to be deleted then.
bool unregisterObject(const void* handler);
bool isLiveObject(const void* handler);

// The object behind a record; null for a null handler, and null with a log
// line for one that Create did not hand out or whose object is deleted.
pmFilters::FilterCommon* objectOf(const pmFilterObject& object);

// Runs an entry point's GL work between Bind and Unbind of the calling
// thread's private context. Bind does nothing while the internal context is
// disabled or the thread has none; the work then runs on the caller's context.
template <typename Work>
void inContext(Work&& work) {
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    if (manager) manager->Bind();
    work();
    if (manager) manager->Unbind();
}

// Registers the calling thread with the context manager, then builds and
// initialises an object inside the bracket. The thread's reference is taken
// even when no object comes of it; only Delete gives references back.
template <typename Make>
pmFilters::FilterCommon* createInContext(Make&& make) {
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    if (manager) manager->Initialize();
    pmFilters::FilterCommon* filter = nullptr;
    inContext([&] {
        filter = make();
        // A failed Initialize still yields a handler; the object stays inert.
        if (filter) filter->Initialize();
    });
    registerObject(filter);
    return filter;
}

// Terminates and destroys the object inside the bracket, then gives the
// thread's reference back to the context manager.
void deleteInContext(pmFilters::FilterCommon* filter);

// The flip vector of a mode, logged at the given priority.
glm::vec2 flipForMode(int mode, int priority);

}  // namespace pmWrapper

#endif
