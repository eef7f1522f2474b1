/* Writes each log call as one line on stderr: "<P>/<tag>: <message>". */
#include "dlog.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

static char priorityLetter(int prio) {
    static const char letters[] = "??VDIWEFS";
    if (prio < 0 || prio >= (int)(sizeof(letters) - 1)) return '?';
    return letters[prio];
}

int __dlog_print(log_id_t log_id, int prio, const char* tag, const char* fmt, ...) {
    (void)log_id;
    char message[4096];
    va_list args;
    va_start(args, fmt);
    int length = vsnprintf(message, sizeof(message), fmt ? fmt : "", args);
    va_end(args);
    if (length < 0) return -1;
    size_t used = strlen(message);
    while (used > 0 && message[used - 1] == '\n') message[--used] = '\0';
    return fprintf(stderr, "%c/%s: %s\n", priorityLetter(prio), tag ? tag : "", message);
}
