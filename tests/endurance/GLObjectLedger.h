// A ledger of the GL objects and EGL contexts alive in this test program. The
// program defines the glGen*, glCreate*, glDelete* entry points and
// eglCreateContext / eglDestroyContext itself; each notes the names handed out
// or given back, per context, and forwards to the driver's own.
#ifndef PIXMORA_TESTS_ENDURANCE_GLOBJECTLEDGER_H
#define PIXMORA_TESTS_ENDURANCE_GLOBJECTLEDGER_H

#include <string>

namespace glLedger {

// GL objects made and not yet deleted, over all contexts and kinds. An object
// whose context was destroyed before it was deleted stays counted: the
// library deletes what it made, it does not leave it to the context's end.
long liveObjects();
// GL object names handed out since the program started.
long madeObjects();
// EGL contexts made and not yet destroyed.
long liveContexts();
// The live objects by kind, for a failure message.
std::string describe();

// While one lives, the calling thread's GL objects are not entered: the test's
// own render targets are not the library's.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

private:
    bool wasPaused;
};

}  // namespace glLedger

#endif
