#include "LogCapture.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

std::mutex logMutex;
// One list per live capture, innermost last: every capture records each line,
// and each frees only its own list.
std::vector<std::vector<LogLine>*> captures;

bool verbose() {
    static const bool value = std::getenv("PIXMORA_TEST_VERBOSE") != nullptr;
    return value;
}

}  // namespace

extern "C" int __dlog_print(int, int prio, const char* tag, const char* fmt, ...) {
    char buffer[8192];
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(buffer, sizeof(buffer), fmt ? fmt : "", args);
    va_end(args);
    std::lock_guard<std::mutex> lock(logMutex);
    if (verbose()) std::fprintf(stderr, "%c/%s: %s\n", prio == 4 ? 'I' : 'E', tag, buffer);
    for (std::vector<LogLine>* lines : captures) {
        lines->push_back({prio, tag ? tag : "", fmt ? fmt : "", buffer});
    }
    return 0;
}

LogCapture::LogCapture() : own(new std::vector<LogLine>()) {
    std::lock_guard<std::mutex> lock(logMutex);
    captures.push_back(own);
}

LogCapture::~LogCapture() {
    std::lock_guard<std::mutex> lock(logMutex);
    captures.erase(std::remove(captures.begin(), captures.end(), own), captures.end());
    delete own;
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(logMutex);
    return *own;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(logMutex);
    own->clear();
}

int LogCapture::count(const std::string& part) const {
    int n = 0;
    for (const LogLine& line : lines()) {
        if (line.text.find(part) != std::string::npos) ++n;
    }
    return n;
}

int LogCapture::countEndingWith(const std::string& tail) const {
    int n = 0;
    for (const LogLine& line : lines()) {
        const std::string& t = line.text;
        if (t.size() >= tail.size() && t.compare(t.size() - tail.size(), tail.size(), tail) == 0) {
            ++n;
        }
    }
    return n;
}

std::string LogCapture::dump() const {
    std::string all;
    for (const LogLine& line : lines()) all += line.text + "\n";
    return all;
}
