#include "LibraryLog.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace {

bool shownOnStderr = false;
std::function<void(const std::string&)> lineListener;

}  // namespace

bool& libraryLogShownFlag() {
    return shownOnStderr;
}

void setLibraryLogListener(std::function<void(const std::string&)> listener) {
    lineListener = std::move(listener);
}

// The library's log sink. The library reports its progress through it at every
// call; the tool passes those lines on only with --verbose, so that a run
// prints nothing but its own result or error. It is declared here rather than
// taken from the platform's header, which is not part of the installed API:
// the log id is an int-sized enum there.
extern "C" int __dlog_print(int, int prio, const char* tag, const char* fmt, ...) {
    if ((!shownOnStderr && !lineListener) || fmt == nullptr) return 0;
    char message[4096];
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(message, sizeof(message), fmt, args);
    va_end(args);
    std::string line(message);
    while (!line.empty() && line.back() == '\n') line.pop_back();
    if (lineListener) lineListener(line);
    if (!shownOnStderr) return 0;
    return std::fprintf(stderr, "%c/%s: %s\n", prio == 4 ? 'I' : 'E', tag ? tag : "", line.c_str());
}
