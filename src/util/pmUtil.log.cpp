// The exported way into the platform's log for code built against the public
// headers alone: the line gets the same prefix as the library's own lines.
#include <dlog.h>

#include <cstdarg>
#include <string>

#include "pmUtil.h"

namespace pmUtil {

void logLine(int prio, const char* source, const char* function, int line, const char* fmt, ...) {
    char message[1024];
    va_list args;
    va_start(args, fmt);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(message, sizeof(message), fmt, args);
    va_end(args);
    std::string longMessage;
    if (length >= static_cast<int>(sizeof(message))) {
        // Shader texts and long paths outgrow the stack buffer.
        longMessage.resize(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(&longMessage[0], longMessage.size(), fmt, again);
    }
    va_end(again);
    if (length < 0) return;
    __dlog_print(static_cast<log_id_t>(PM_LOG_ID), prio, PM_LOG_TAG, "%s: %s(%d) > %s", source,
                 function, line, longMessage.empty() ? message : longMessage.c_str());
}

}  // namespace pmUtil
