#include "GLObjectLedger.h"

#include <EGL/egl.h>
#include <GLES3/gl3.h>
#include <dlfcn.h>

#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <tuple>

namespace {

enum Kind { kTexture, kFramebuffer, kRenderbuffer, kBuffer, kVertexArray, kProgram, kShader };
const char* const kKindNames[] = {"texture",      "framebuffer", "renderbuffer", "buffer",
                                  "vertex array", "program",     "shader"};

using Key = std::tuple<EGLContext, int, GLuint>;

struct Ledger {
    std::mutex mutex;
    std::set<Key> live;
    std::set<EGLContext> contexts;
    long made = 0;
};

Ledger& ledger() {
    static Ledger* instance = new Ledger();  // outlives every static destructor
    return *instance;
}

thread_local bool paused = false;

template <typename Function>
Function driverEntry(const char* name) {
    void* entry = dlsym(RTLD_NEXT, name);
    if (entry == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function>(entry);
}

void noteMade(Kind kind, GLsizei n, const GLuint* names) {
    if (paused || names == nullptr) return;
    Ledger& l = ledger();
    const EGLContext context = eglGetCurrentContext();
    std::lock_guard<std::mutex> lock(l.mutex);
    for (GLsizei i = 0; i < n; ++i) {
        if (names[i] == 0) continue;
        l.live.insert(Key(context, kind, names[i]));
        ++l.made;
    }
}

void noteDeleted(Kind kind, GLsizei n, const GLuint* names) {
    if (names == nullptr) return;
    Ledger& l = ledger();
    const EGLContext context = eglGetCurrentContext();
    std::lock_guard<std::mutex> lock(l.mutex);
    for (GLsizei i = 0; i < n; ++i) l.live.erase(Key(context, kind, names[i]));
}

}  // namespace

namespace glLedger {

long liveObjects() {
    std::lock_guard<std::mutex> lock(ledger().mutex);
    return static_cast<long>(ledger().live.size());
}

long madeObjects() {
    std::lock_guard<std::mutex> lock(ledger().mutex);
    return ledger().made;
}

long liveContexts() {
    std::lock_guard<std::mutex> lock(ledger().mutex);
    return static_cast<long>(ledger().contexts.size());
}

std::string describe() {
    std::lock_guard<std::mutex> lock(ledger().mutex);
    std::map<int, int> byKind;
    for (const Key& key : ledger().live) ++byKind[std::get<1>(key)];
    std::ostringstream text;
    for (const auto& entry : byKind) text << entry.second << " " << kKindNames[entry.first] << " ";
    return text.str();
}

Pause::Pause() : wasPaused(paused) {
    paused = true;
}

Pause::~Pause() {
    paused = wasPaused;
}

}  // namespace glLedger

// Each entry point below replaces the driver's for the whole program; the
// library is linked in statically and calls these.
extern "C" {

#define PIXMORA_LEDGER_GEN(name, kind)                                             \
    GL_APICALL void GL_APIENTRY name(GLsizei n, GLuint* names) {                   \
        static const auto driver = driverEntry<void (*)(GLsizei, GLuint*)>(#name); \
        driver(n, names);                                                          \
        noteMade(kind, n, names);                                                  \
    }
#define PIXMORA_LEDGER_DELETE(name, kind)                                                \
    GL_APICALL void GL_APIENTRY name(GLsizei n, const GLuint* names) {                   \
        static const auto driver = driverEntry<void (*)(GLsizei, const GLuint*)>(#name); \
        noteDeleted(kind, n, names);                                                     \
        driver(n, names);                                                                \
    }

PIXMORA_LEDGER_GEN(glGenTextures, kTexture)
PIXMORA_LEDGER_GEN(glGenFramebuffers, kFramebuffer)
PIXMORA_LEDGER_GEN(glGenRenderbuffers, kRenderbuffer)
PIXMORA_LEDGER_GEN(glGenBuffers, kBuffer)
PIXMORA_LEDGER_GEN(glGenVertexArrays, kVertexArray)
PIXMORA_LEDGER_DELETE(glDeleteTextures, kTexture)
PIXMORA_LEDGER_DELETE(glDeleteFramebuffers, kFramebuffer)
PIXMORA_LEDGER_DELETE(glDeleteRenderbuffers, kRenderbuffer)
PIXMORA_LEDGER_DELETE(glDeleteBuffers, kBuffer)
PIXMORA_LEDGER_DELETE(glDeleteVertexArrays, kVertexArray)

GL_APICALL GLuint GL_APIENTRY glCreateProgram(void) {
    static const auto driver = driverEntry<GLuint (*)()>("glCreateProgram");
    const GLuint name = driver();
    noteMade(kProgram, 1, &name);
    return name;
}

GL_APICALL GLuint GL_APIENTRY glCreateShader(GLenum type) {
    static const auto driver = driverEntry<GLuint (*)(GLenum)>("glCreateShader");
    const GLuint name = driver(type);
    noteMade(kShader, 1, &name);
    return name;
}

GL_APICALL void GL_APIENTRY glDeleteProgram(GLuint name) {
    static const auto driver = driverEntry<void (*)(GLuint)>("glDeleteProgram");
    noteDeleted(kProgram, 1, &name);
    driver(name);
}

GL_APICALL void GL_APIENTRY glDeleteShader(GLuint name) {
    static const auto driver = driverEntry<void (*)(GLuint)>("glDeleteShader");
    noteDeleted(kShader, 1, &name);
    driver(name);
}

EGLAPI EGLContext EGLAPIENTRY eglCreateContext(EGLDisplay display, EGLConfig config,
                                               EGLContext share, const EGLint* attributes) {
    static const auto driver =
        driverEntry<EGLContext (*)(EGLDisplay, EGLConfig, EGLContext, const EGLint*)>(
            "eglCreateContext");
    const EGLContext context = driver(display, config, share, attributes);
    if (context != EGL_NO_CONTEXT && !paused) {
        std::lock_guard<std::mutex> lock(ledger().mutex);
        ledger().contexts.insert(context);
    }
    return context;
}

EGLAPI EGLBoolean EGLAPIENTRY eglDestroyContext(EGLDisplay display, EGLContext context) {
    static const auto driver =
        driverEntry<EGLBoolean (*)(EGLDisplay, EGLContext)>("eglDestroyContext");
    {
        std::lock_guard<std::mutex> lock(ledger().mutex);
        ledger().contexts.erase(context);
    }
    return driver(display, context);
}

}  // extern "C"
