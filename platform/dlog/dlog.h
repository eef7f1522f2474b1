/* Desktop stand-in for the device's dlog interface: the subset Pixmora uses. */
#ifndef PIXMORA_PLATFORM_DLOG_H
#define PIXMORA_PLATFORM_DLOG_H

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    LOG_ID_INVALID = -1,
    LOG_ID_MAIN = 0,
    LOG_ID_RADIO,
    LOG_ID_SYSTEM,
    LOG_ID_APPS,
    LOG_ID_MAX
} log_id_t;

typedef enum {
    DLOG_UNKNOWN = 0,
    DLOG_DEFAULT,
    DLOG_VERBOSE,
    DLOG_DEBUG,
    DLOG_INFO,
    DLOG_WARN,
    DLOG_ERROR,
    DLOG_FATAL,
    DLOG_SILENT,
    DLOG_PRIO_MAX
} log_priority;

int __dlog_print(log_id_t log_id, int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif

#endif
