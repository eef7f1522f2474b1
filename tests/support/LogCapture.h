// Captures the library's log lines: the test programs define __dlog_print
// themselves, which takes precedence over the platform's.
#ifndef PIXMORA_TESTS_LOGCAPTURE_H
#define PIXMORA_TESTS_LOGCAPTURE_H

#include <string>
#include <vector>

struct LogLine {
    int priority = 0;
    std::string tag;
    std::string format;
    std::string text;
};

// Records every line logged while it lives. Captures may nest or overlap:
// each sees every line logged during its own life.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    void clear();
    // Number of lines whose text contains `part`.
    int count(const std::string& part) const;
    bool contains(const std::string& part) const { return count(part) > 0; }
    // Number of lines whose text ends with `tail` (the text after the prefix).
    int countEndingWith(const std::string& tail) const;
    std::string dump() const;

private:
    std::vector<LogLine>* own;
};

#endif
